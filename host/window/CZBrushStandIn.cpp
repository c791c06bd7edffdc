#include "CZBrushStandIn.h"

#include "CGoZStandInFile.h"
#include "KeyValueFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <vector>

namespace MV {
namespace Host {

namespace {

// Mesh files above this size are listed without being read: the panel must stay responsive.
constexpr qint64 kMaxReadBytes = 64 * 1024 * 1024;
constexpr int kLauncherWaitMs = 20000;

bool IsSentLine(const QString& line)
{
    return line.contains(QLatin1Char('/')) || line.contains(QLatin1Char('\\'));
}

QString BaseNameOfLine(const QString& line)
{
    QString name = line;
    name.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return name.mid(name.lastIndexOf(QLatin1Char('/')) + 1);
}

QStringList ReadLines(const QString& path)
{
    QFile file(path);
    QStringList lines;
    if (!file.open(QIODevice::ReadOnly)) {
        return lines;
    }
    for (QByteArray line : file.readAll().split('\n')) {
        if (line.endsWith('\r')) {
            line.chop(1);
        }
        if (!line.isEmpty()) {
            lines << QString::fromUtf8(line);
        }
    }
    return lines;
}

} // namespace

QString CProjectFile::KindText(EKind kind)
{
    switch (kind) {
    case EKind::Sent:
        return QStringLiteral("sent");
    case EKind::Returned:
        return QStringLiteral("returned");
    case EKind::Pose:
        return QStringLiteral("pose");
    case EKind::Other:
        break;
    }
    return QStringLiteral("other");
}

CZBrushStandIn::CZBrushStandIn(const QString& publicFolder, QObject* parent)
    : QObject(parent), m_strPublicFolder(publicFolder)
{
    m_kLauncher.setProcessChannelMode(QProcess::ForwardedChannels);
    connect(&m_kLauncher, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this](int code, QProcess::ExitStatus status) {
                emit LauncherFinished(status == QProcess::NormalExit ? QStringLiteral("exit %1").arg(code)
                                                                     : QStringLiteral("crashed"));
            });
    connect(&m_kLauncher, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            emit LauncherFinished(QStringLiteral("failed to start: ") + m_kLauncher.errorString());
        }
    });
}

CZBrushStandIn::~CZBrushStandIn()
{
    if (IsLauncherRunning() && !m_kLauncher.waitForFinished(kLauncherWaitMs)) {
        m_kLauncher.kill();
        m_kLauncher.waitForFinished(5000);
    }
}

QString CZBrushStandIn::ProjectFolder() const
{
    return m_strPublicFolder + QStringLiteral("/Pixologic/GoZProjects/Default/");
}

QString CZBrushStandIn::AppFolder() const
{
    return m_strPublicFolder + QStringLiteral("/Pixologic/GoZApps/Figmora/");
}

QString CZBrushStandIn::ObjectListPath() const
{
    const QByteArray info = QFile::encodeName(AppFolder() + QStringLiteral("GoZ_Info.txt"));
    std::vector<char> value(4096, '\0');
    if (!GetKeyValue(info.constData(), "GOZ_OBJECT_LIST", value.data(), static_cast<int>(value.size())) ||
        value.front() == '\0') {
        return QString();
    }
    // Appended to the folder as it stands, as the bridge programs do.
    return AppFolder() + QFile::decodeName(value.data());
}

QList<CProjectFile> CZBrushStandIn::ProjectFiles() const
{
    QList<CProjectFile> files;
    const QFileInfoList entries = QDir(ProjectFolder()).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo& entry : entries) {
        CProjectFile file;
        file.m_strName = entry.fileName();
        file.m_iSize = entry.size();
        file.m_kModified = entry.lastModified();
        const QString suffix = entry.suffix();
        if (suffix == QLatin1String("goz")) {
            file.m_eKind = CProjectFile::EKind::Sent;
        } else if (suffix == QLatin1String("GoZ")) {
            file.m_eKind = CProjectFile::EKind::Returned;
        } else if (suffix == QLatin1String("mvMotionPlus")) {
            file.m_eKind = CProjectFile::EKind::Pose;
        }
        const bool mesh = file.m_eKind == CProjectFile::EKind::Sent || file.m_eKind == CProjectFile::EKind::Returned;
        if (mesh && entry.size() > kMaxReadBytes) {
            file.m_strProblem = QStringLiteral("too big to look into");
        } else if (mesh) {
            CGoZStandInFile content;
            if (CGoZStandInFile::Read(entry.filePath(), content, file.m_strProblem)) {
                file.m_iVertices = content.m_kMesh.m_kVertices.size();
                file.m_iFaces = content.m_kMesh.m_kFaces.size();
            }
        }
        files << file;
    }
    return files;
}

QStringList CZBrushStandIn::SentMeshes()
{
    const QString listPath = ObjectListPath();
    const QStringList lines = listPath.isEmpty() ? QStringList() : ReadLines(listPath);
    bool sent = !lines.isEmpty();
    for (const QString& line : lines) {
        sent = sent && IsSentLine(line);
    }
    if (sent) {
        m_kSentLines = lines;
    }
    QStringList names;
    for (const QString& line : m_kSentLines) {
        names << BaseNameOfLine(line);
    }
    return names;
}

CSculptOutcome CZBrushStandIn::SculptAndSendBack(const QStringList& meshes, const CZBrushReturn& settings)
{
    CSculptOutcome outcome;
    const QStringList sent = SentMeshes();
    if (sent.isEmpty()) {
        outcome.m_kProblems << QStringLiteral("nothing was sent to ZBrush yet");
        return outcome;
    }
    for (const QString& name : meshes) {
        if (!sent.contains(name)) {
            outcome.m_kProblems << QStringLiteral("\"%1\" was not sent").arg(name);
        }
    }
    if (IsLauncherRunning()) {
        outcome.m_kProblems << QStringLiteral("the return launcher of the last return still runs");
    }
    const QString listPath = ObjectListPath();
    if (listPath.isEmpty()) {
        outcome.m_kProblems << QStringLiteral("GoZ_Info.txt names no object list");
    }
    if (!outcome.m_kProblems.isEmpty()) {
        return outcome;
    }

    struct CReturned
    {
        QString m_strName;
        CGoZStandInFile m_kFile;
    };
    QList<CReturned> returned;
    for (const QString& line : m_kSentLines) {
        const QString name = BaseNameOfLine(line);
        if (!meshes.contains(name)) {
            continue;
        }
        CReturned item;
        item.m_strName = settings.m_kRenames.value(name, name);
        QString path = line;
        path.replace(QLatin1Char('\\'), QLatin1Char('/'));
        QString error;
        if (!CGoZStandInFile::Read(path + QStringLiteral(".goz"), item.m_kFile, error)) {
            outcome.m_kProblems << QStringLiteral("cannot sculpt %1: %2").arg(name, error);
            continue;
        }
        item.m_kFile.SetValue(QStringLiteral("name"), item.m_strName);
        item.m_kFile.m_kMesh = settings.Sculpt(item.m_kFile.m_kMesh);
        returned << item;
    }
    for (const CZBrushReturn::CExtraMesh& extra : settings.m_kExtras) {
        CReturned item;
        item.m_strName = extra.m_strName;
        item.m_kFile.SetValue(QStringLiteral("name"), extra.m_strName);
        item.m_kFile.m_kMesh = extra.m_kMesh;
        returned << item;
    }

    QByteArray objectList;
    for (const CReturned& item : returned) {
        outcome.m_kReturned << item.m_strName;
        objectList += item.m_strName.toUtf8() + '\n';
        if (settings.m_kMissing.contains(item.m_strName)) {
            continue;
        }
        QByteArray bytes = item.m_kFile.Write();
        if (settings.m_kMalformed.contains(item.m_strName)) {
            bytes = "this is no mesh\n";
        } else if (settings.m_kTruncated.contains(item.m_strName)) {
            bytes = bytes.left(bytes.size() / 2);
        }
        QString error;
        if (CGoZStandInFile::Save(ProjectFolder() + item.m_strName + QStringLiteral(".GoZ"), bytes, error)) {
            outcome.m_kWritten << item.m_strName + QStringLiteral(".GoZ");
        } else {
            outcome.m_kProblems << error;
        }
    }
    QString error;
    if (!CGoZStandInFile::Save(listPath, objectList, error)) {
        outcome.m_kProblems << error;
        return outcome; // the host would read the sent list as a return
    }
    if (!settings.m_bLaunch) {
        return outcome;
    }
    const QString launcher = AppFolder() + QStringLiteral("GoZBrushToFM.exe");
    if (!QFileInfo(launcher).isFile()) {
        outcome.m_kProblems << QStringLiteral("no return launcher %1 (the bridge is installed by the first send)")
                                   .arg(launcher);
        return outcome;
    }
    m_kLauncher.start(launcher, QStringList());
    outcome.m_bLauncherStarted = true;
    return outcome;
}

} // namespace Host
} // namespace MV
