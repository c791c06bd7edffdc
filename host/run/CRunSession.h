#pragma once

#include "CScript.h"
#include "QVResult.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace MV {
namespace Host {

class CReport;
class CScene;

// What a run needs besides the scene and the script.
struct CRunOptions
{
    QString m_strPlugin; // absolute path of the module
    QString m_strWorkFolder; // empty: a temporary folder
    bool m_bInstallZBrush = true;
    QString m_strToolsFolder; // empty: CSandbox::DefaultToolsFolder()
    QString m_strClassName; // empty: the plug-in host's default
    int m_iWatchdogMs = 0; // 0: the script's
    QString m_strLanguage; // empty: the scene's "language"
};

// One headless host run: sandbox, host over the scene, plug-in, script, report.
class CRunSession
{
public:
    CRunSession();
    ~CRunSession();

    // Checks the scene and the script; error says which one is wrong and why.
    QV::Result Prepare(const QByteArray& scene, const QByteArray& script, QString& error);
    // Runs once; the report holds everything seen. kOk when the run succeeded.
    QV::Result Execute(const CRunOptions& options, CReport& report);

    int WatchdogMs() const { return m_kScript.WatchdogMs(); }

private:
    std::unique_ptr<CScene> m_pScene;
    CScript m_kScript;
};

} // namespace Host
} // namespace MV
