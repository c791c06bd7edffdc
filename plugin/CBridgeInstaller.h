#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace MV {

// Installs the bridge payload (the plug-in's Figmora/ folder) into GoZApps/Figmora/.
class CBridgeInstaller
{
public:
    enum class EStatus
    {
        Installed,
        ZBrushMissing,
        CannotCreateFolder,
        CopyFailed,
    };

    // root: the Pixologic root; pluginFolder ends with a separator.
    CBridgeInstaller(const QString& root, const QString& pluginFolder);

    EStatus Install(const QString& currentDirectory) const;

    // "PATH = "<dir with backslashes>\Figmora.exe"": where the launcher finds the host.
    static QByteArray PathLine(const QString& currentDirectory);
    static bool IsPathKeyLine(const QByteArray& line);
    // The template with each PATH line replaced; every other byte is copied as it stands.
    static QByteArray RewriteConfig(const QByteArray& bytes, const QByteArray& pathLine);
    // Launchers older than this mark the installed folder as stale; the date is fixed on purpose.
    static QDateTime StaleCutOff();

private:
    bool InstallConfig(const QString& source, const QString& target, const QString& currentDirectory) const;

    QString m_strRoot;
    QString m_strPluginFolder;
};

} // namespace MV
