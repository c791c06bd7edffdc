#include "CSandbox.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <utime.h>

namespace MV {
namespace Host {

namespace {

bool LayOutGoZAppFolder(const QDir& work, CSandbox::EGoZAppFolder state)
{
    const QString folder = work.filePath(QLatin1String(CSandbox::kGoZAppFolder));
    switch (state) {
    case CSandbox::EGoZAppFolder::Absent:
        return true;
    case CSandbox::EGoZAppFolder::File: {
        QFile file(folder);
        return work.mkpath(QFileInfo(folder).path()) && file.open(QIODevice::WriteOnly) && file.write("not a folder") > 0;
    }
    case CSandbox::EGoZAppFolder::LockedLauncher: {
        // A folder where the launcher goes, dated long ago, so the bridge counts as stale and
        // must replace it, and a folder can not be removed like a file. Holds for root too.
        const QString launcher = folder + QStringLiteral("/GoZBrushToFM.exe");
        if (!work.mkpath(launcher)) {
            return false;
        }
        const QDateTime longAgo(QDate(2000, 1, 1), QTime(0, 0));
        struct utimbuf times;
        times.actime = static_cast<time_t>(longAgo.toSecsSinceEpoch());
        times.modtime = times.actime;
        return ::utime(QFile::encodeName(launcher).constData(), &times) == 0;
    }
    }
    return false;
}

} // namespace

const QStringList& CSandbox::ZBrushProgramNames()
{
    static const QStringList names = {QStringLiteral("GoZBrushFromApp.exe"), QStringLiteral("GoZMakeObjectPath.exe")};
    return names;
}

CSandbox::CSandbox() = default;

CSandbox::~CSandbox()
{
    Restore();
}

QString CSandbox::DefaultToolsFolder()
{
    const QString fromEnvironment = qEnvironmentVariable("MVGOZ_TOOLS_DIR");
    if (!fromEnvironment.isEmpty()) {
        return fromEnvironment;
    }
    if (QCoreApplication::instance() != nullptr) {
        const QString own = QCoreApplication::applicationDirPath();
        if (QFileInfo(own + QLatin1Char('/') + ZBrushProgramNames().first()).isFile()) {
            return own;
        }
    }
#ifdef MVGOZ_TOOLS_DIR
    return QStringLiteral(MVGOZ_TOOLS_DIR);
#else
    return QString();
#endif
}

QString CSandbox::ProcessLogPath() const
{
    return m_strWorkFolder + QStringLiteral("/processes.jsonl");
}

QString CSandbox::RegistryFilePath() const
{
    return m_strWorkFolder + QStringLiteral("/registry.txt");
}

void CSandbox::SetVariable(const char* name, const QByteArray& value)
{
    CSavedVariable saved;
    saved.m_kName = name;
    saved.m_bWasSet = qEnvironmentVariableIsSet(name);
    saved.m_kValue = qgetenv(name);
    m_kSaved.append(saved);
    qputenv(name, value);
}

QV::Result CSandbox::Create(QString& error)
{
    if (m_bActive) {
        error = QStringLiteral("the sandbox is already active");
        return QV::kFail;
    }
    QString folder = m_strRequestedFolder;
    if (folder.isEmpty()) {
        m_pTemporary = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/mvgoz-host-XXXXXX"));
        if (!m_pTemporary->isValid()) {
            error = QStringLiteral("cannot create a temporary folder: %1").arg(m_pTemporary->errorString());
            m_pTemporary.reset();
            return QV::kFail;
        }
        folder = m_pTemporary->path();
    }
    if (!QDir().mkpath(folder)) {
        error = QStringLiteral("cannot create the work folder %1").arg(folder);
        m_pTemporary.reset();
        return QV::kFail;
    }
    const QDir work(QFileInfo(folder).absoluteFilePath());
    // The public folder exists on every machine; the Pixologic folder only where ZBrush was installed.
    const QString pixologic = m_bPixologicFolder ? QStringLiteral("C:/Users/Public/Pixologic") : QLatin1String(kPublic);
    if (!work.mkpath(pixologic)) {
        error = QStringLiteral("cannot create %1 in %2").arg(pixologic, work.path());
        m_pTemporary.reset();
        return QV::kFail;
    }
    if (m_bPixologicFolder && !LayOutGoZAppFolder(work, m_eGoZAppFolder)) {
        error = QStringLiteral("cannot lay out %1").arg(work.filePath(QLatin1String(kGoZAppFolder)));
        m_pTemporary.reset();
        return QV::kFail;
    }
    if (m_bInstallZBrush && m_bPixologicFolder) {
        const QString zbrush = work.filePath(QLatin1String(kZBrushFolder));
        if (!work.mkpath(QLatin1String(kZBrushFolder))) {
            error = QStringLiteral("cannot create %1").arg(zbrush);
            m_pTemporary.reset();
            return QV::kFail;
        }
        const QString tools = m_strToolsFolder.isEmpty() ? DefaultToolsFolder() : m_strToolsFolder;
        for (const QString& name : ZBrushProgramNames()) {
            const QString source = tools + QLatin1Char('/') + name;
            const QString target = zbrush + QLatin1Char('/') + name;
            if (!QFileInfo(source).isFile()) {
                error = QStringLiteral("stand-in program not found: %1 (build the mvgoz_standins target or set "
                                       "MVGOZ_TOOLS_DIR)")
                            .arg(source);
                m_pTemporary.reset();
                return QV::kFail;
            }
            QFile::remove(target);
            if (!QFile::copy(source, target) ||
                !QFile::setPermissions(target, QFile::permissions(source) | QFileDevice::ExeOwner |
                                                   QFileDevice::ReadOwner)) {
                error = QStringLiteral("cannot install %1 as %2").arg(source, target);
                m_pTemporary.reset();
                return QV::kFail;
            }
        }
    }

    m_strWorkFolder = work.path();
    m_strCurrentPath = m_strWorkFolder;
    QString relative = m_strCurrentDirectory;
    relative.replace(QLatin1Char('\\'), QLatin1Char('/'));
    while (relative.endsWith(QLatin1Char('/'))) {
        relative.chop(1);
    }
    if (!relative.isEmpty()) {
        if (relative.startsWith(QLatin1Char('/')) || relative.split(QLatin1Char('/')).contains(QStringLiteral(".."))) {
            error = QStringLiteral("the current directory %1 is not inside the sandbox").arg(m_strCurrentDirectory);
            m_pTemporary.reset();
            return QV::kFail;
        }
        m_strCurrentPath = work.filePath(relative);
        const QString drive = m_strCurrentPath + QStringLiteral("/C:");
        // "C:/..." is relative to the current directory: a link there keeps it naming the sandbox's C: folder.
        if (!work.mkpath(relative) || (!QFileInfo(drive).exists() && !QFile::link(work.filePath(QStringLiteral("C:")), drive))) {
            error = QStringLiteral("cannot lay out the current directory %1").arg(m_strCurrentPath);
            m_pTemporary.reset();
            return QV::kFail;
        }
    }
    m_strPreviousDirectory = QDir::currentPath();
    if (!QDir::setCurrent(m_strCurrentPath)) {
        error = QStringLiteral("cannot enter %1").arg(m_strCurrentPath);
        m_pTemporary.reset();
        return QV::kFail;
    }
    // Both spellings: Windows looks names up without case, some readers here do not.
    SetVariable("PUBLIC", kPublic);
    SetVariable("public", kPublic);
    SetVariable("MVGOZ_PROCESS_LOG", ProcessLogPath().toLocal8Bit());
    SetVariable("MVGOZ_REGISTRY_FILE", RegistryFilePath().toLocal8Bit());
    m_bActive = true;
    return QV::kOk;
}

void CSandbox::Restore()
{
    if (!m_bActive) {
        return;
    }
    for (int i = m_kSaved.size() - 1; i >= 0; --i) {
        const CSavedVariable& saved = m_kSaved.at(i);
        if (saved.m_bWasSet) {
            qputenv(saved.m_kName.constData(), saved.m_kValue);
        } else {
            qunsetenv(saved.m_kName.constData());
        }
    }
    m_kSaved.clear();
    QDir::setCurrent(m_strPreviousDirectory);
    m_bActive = false;
    m_pTemporary.reset();
}

} // namespace Host
} // namespace MV
