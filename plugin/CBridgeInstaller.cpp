#include "CBridgeInstaller.h"

#include "GoZPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace MV {

namespace {

const QString kConfigName = QStringLiteral("GoZ_Config.txt");
const QString kLauncherName = QStringLiteral("GoZBrushToFM.exe");

} // namespace

CBridgeInstaller::CBridgeInstaller(const QString& root, const QString& pluginFolder)
    : m_strRoot(root), m_strPluginFolder(pluginFolder)
{
}

QDateTime CBridgeInstaller::StaleCutOff()
{
    return QDateTime(QDate(2018, 8, 14), QTime(0, 0), Qt::LocalTime);
}

QByteArray CBridgeInstaller::PathLine(const QString& currentDirectory)
{
    QString folder = currentDirectory;
    folder.replace(QLatin1Char('/'), QLatin1Char('\\'));
    // A drive root such as C:/ gives a doubled backslash; the launcher copes with it.
    return QByteArrayLiteral("PATH = \"") + folder.toLatin1() + QByteArrayLiteral("\\Figmora.exe\"");
}

bool CBridgeInstaller::IsPathKeyLine(const QByteArray& line)
{
    const int eq = line.indexOf('=');
    const QByteArray key = eq < 0 ? line : line.left(eq);
    return key.trimmed() == "PATH";
}

CBridgeInstaller::EStatus CBridgeInstaller::Install(const QString& currentDirectory) const
{
    if (!QDir(m_strRoot).exists() || !QFileInfo::exists(m_strRoot + QLatin1String(GoZPaths::kZBrushFromApp))) {
        return EStatus::ZBrushMissing;
    }
    const QString destination = m_strRoot + QLatin1String(GoZPaths::kFigmoraApp);
    if (!QDir(destination).exists() && !QDir(m_strRoot).mkpath(QLatin1String(GoZPaths::kFigmoraApp))) {
        return EStatus::CannotCreateFolder;
    }
    const QString source = m_strPluginFolder + QStringLiteral("Figmora/");

    bool stale = false;
    const QFileInfo launcher(destination + kLauncherName);
    if (launcher.exists()) {
        stale = launcher.lastModified() < StaleCutOff();
    }

    const QStringList names = QDir(source).entryList(QDir::Files | QDir::Hidden, QDir::Unsorted);
    for (const QString& name : names) {
        const QString target = destination + name;
        const bool exists = QFileInfo::exists(target);
        if (!stale && exists) {
            continue; // an earlier install or the user's own edits stay
        }
        if (name != kConfigName) {
            if (exists) {
                QFile::remove(target);
            }
            if (!QFile::copy(source + name, target)) {
                return EStatus::CopyFailed;
            }
            continue;
        }
        if (!InstallConfig(source + name, target, currentDirectory)) {
            return EStatus::CopyFailed;
        }
    }
    return EStatus::Installed;
}

bool CBridgeInstaller::InstallConfig(const QString& source, const QString& target,
                                     const QString& currentDirectory) const
{
    // Binary on both sides: text mode drops or keeps a lone CR depending on where Qt's read
    // buffer splits, and the template's own lines are not ours to change.
    QFile in(source);
    if (!in.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray bytes = in.readAll();
    if (in.error() != QFileDevice::NoError) {
        return false;
    }
    // Written beside the target and renamed over it, so a failure never leaves half a file.
    QSaveFile out(target);
    out.setDirectWriteFallback(true); // a folder we may not create files in
    if (!out.open(QIODevice::WriteOnly)) {
        return false;
    }
    const QByteArray rewritten = RewriteConfig(bytes, PathLine(currentDirectory));
    // commit() overlooks a write error of its own final flush and would put a cut file in place.
    return out.write(rewritten) == rewritten.size() && out.flush() && out.commit();
}

QByteArray CBridgeInstaller::RewriteConfig(const QByteArray& bytes, const QByteArray& pathLine)
{
    QByteArray result;
    result.reserve(bytes.size() + pathLine.size());
    int start = 0;
    while (start < bytes.size()) {
        const int newline = bytes.indexOf('\n', start);
        const int end = newline < 0 ? bytes.size() : newline + 1;
        const QByteArray line = bytes.mid(start, end - start);
        // Only LF ends a line; a CR before it belongs to the line end, any other CR to the text.
        int endingSize = 0;
        if (line.endsWith("\r\n")) {
            endingSize = 2;
        } else if (line.endsWith('\n')) {
            endingSize = 1;
        }
        const QByteArray text = line.left(line.size() - endingSize);
        if (IsPathKeyLine(text)) {
            result += pathLine;
            result += line.right(endingSize); // the template's own line end, or none on a last line
        } else {
            result += line;
        }
        start = end;
    }
    return result;
}

} // namespace MV
