#pragma once

#include "CSceneState.h"
#include "QVResult.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>

class QTemporaryDir;

namespace MV {
namespace Host {

// A folder laid out like the public folders of a Windows machine with ZBrush installed.
// While it exists the process runs inside it: the current directory is the work folder and
// PUBLIC is "C:/Users/Public", so the fixed "C:/Users/Public/..." paths and the paths built
// from PUBLIC name the same folder. Everything is restored on destruction.
class CSandbox
{
public:
    static constexpr const char* kPublic = "C:/Users/Public";
    static constexpr const char* kZBrushFolder = "C:/Users/Public/Pixologic/GoZBrush";
    static constexpr const char* kGoZAppFolder = "C:/Users/Public/Pixologic/GoZApps/Figmora";
    // Installed names of the stand-ins and the tool each is copied from.
    static const QStringList& ZBrushProgramNames();

    CSandbox();
    ~CSandbox();
    CSandbox(const CSandbox&) = delete;
    CSandbox& operator=(const CSandbox&) = delete;

    // Empty: a fresh temporary folder, removed afterwards. Otherwise that folder is used and kept.
    void SetWorkFolder(const QString& folder) { m_strRequestedFolder = folder; }
    // Leaves ZBrush's GoZBrush folder out (the Pixologic folder is still made).
    void SetInstallZBrush(bool install) { m_bInstallZBrush = install; }
    // Where the stand-in programs were built.
    void SetToolsFolder(const QString& folder) { m_strToolsFolder = folder; }
    // Leaves the whole Pixologic folder out, as on a machine that never had ZBrush.
    void SetPixologicFolder(bool make) { m_bPixologicFolder = make; }
    // The folder the run works in, relative to the work folder (empty: the work folder). The
    // fixed "C:/..." paths still lead to the sandbox's C: folder from there.
    void SetCurrentDirectory(const QString& relative) { m_strCurrentDirectory = relative; }
    // What stands where the bridge goes before the run: nothing, a file in the folder's place
    // (it cannot be made), or an old folder in the launcher's place (it cannot be replaced).
    using EGoZAppFolder = CSceneState::EGoZAppFolder;
    void SetGoZAppFolder(EGoZAppFolder state) { m_eGoZAppFolder = state; }

    // Lays the folder out and enters it. On failure nothing stays changed and error says why.
    QV::Result Create(QString& error);
    bool IsActive() const { return m_bActive; }

    QString WorkFolder() const { return m_strWorkFolder; }
    // The run's current directory (the work folder unless SetCurrentDirectory said otherwise).
    QString CurrentDirectory() const { return m_strCurrentPath; }
    QString ProcessLogPath() const;
    QString RegistryFilePath() const;

    // The folder of the stand-ins: the environment's MVGOZ_TOOLS_DIR, else the program's own
    // folder when they are there, else the build's tools folder.
    static QString DefaultToolsFolder();

    // Sets a variable for the processes of the run; restored with everything else.
    void SetEnvironment(const char* name, const QByteArray& value) { SetVariable(name, value); }

private:
    struct CSavedVariable
    {
        QByteArray m_kName;
        bool m_bWasSet = false;
        QByteArray m_kValue;
    };

    void SetVariable(const char* name, const QByteArray& value);
    void Restore();

    QString m_strRequestedFolder;
    QString m_strToolsFolder;
    bool m_bInstallZBrush = true;
    bool m_bPixologicFolder = true;
    EGoZAppFolder m_eGoZAppFolder = EGoZAppFolder::Absent;
    QString m_strCurrentDirectory;
    QString m_strCurrentPath;
    bool m_bActive = false;
    QString m_strWorkFolder;
    QString m_strPreviousDirectory;
    std::unique_ptr<QTemporaryDir> m_pTemporary;
    QList<CSavedVariable> m_kSaved;
};

} // namespace Host
} // namespace MV
