#pragma once

#include "CScript.h"
#include "QVResult.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

namespace MV {
namespace Host {

class CGoZReturnChannel;
class CPluginHost;
class CReferenceHost;
class CReport;

// Runs a script against the host and the loaded plug-in, one step per pass of the event
// loop. A step that opens a modal dialog does not block the script: the steps after it run
// inside the dialog's own event loop. A watchdog ends a run that does not finish.
class CScriptRunner : public QObject
{
    Q_OBJECT
public:
    CScriptRunner(CReferenceHost& host, CPluginHost& plugins, CReport& report, QObject* parent = nullptr);
    ~CScriptRunner() override;

    // Default: the MVGOZ_PROCESS_LOG of the environment.
    void SetProcessLogPath(const QString& path) { m_strProcessLog = path; }
    // Overrides the script's watchdog (0: use the script's).
    void SetWatchdogMs(int milliseconds) { m_iWatchdogOverrideMs = milliseconds; }
    // Where wait_goz_return takes the return launcher's notices from (none: the step fails).
    void SetReturnChannel(CGoZReturnChannel* channel) { m_pChannel = channel; }
    // The file set_zbrush_return writes for the ZBrush stand-in (MVGOZ_ZBRUSH_RETURN).
    void SetZBrushReturnFile(const QString& path) { m_strZBrushReturnFile = path; }

    // The variable through which the processes the plug-in starts learn the running step.
    static constexpr const char* kStepVariable = "MVGOZ_STEP";

    // Returns when every step ran or the watchdog fired: kOk when every step succeeded.
    QV::Result Run(const CScript& script);

private:
    void RunNextStep();
    void RunStep(const CScriptStep& step);
    // Empty on success; fills detail with what the step saw or did.
    QString Execute(const CScriptStep& step, QJsonObject& detail);
    QString WaitForProcesses(int count, int timeoutMs, QJsonObject& detail);
    QString WaitForReturn(int timeoutMs, int step, QJsonObject& detail);
    QString WriteZBrushReturn(const QJsonValue& settings);
    // Makes index the running step for the host's call log and the processes started meanwhile.
    void EnterStep(int index);
    QJsonObject SnapshotActions() const;
    void FinishRun();
    void OnWatchdog();
    int ProcessCount() const;

    CReferenceHost& m_rHost;
    CPluginHost& m_rPlugins;
    CReport& m_rReport;
    QString m_strProcessLog;
    CGoZReturnChannel* m_pChannel = nullptr;
    QString m_strZBrushReturnFile;
    bool m_bRaiseReturn = false; // set by a wait_goz_return that got its notice
    int m_iWatchdogOverrideMs = 0;
    const CScript* m_pScript = nullptr;
    int m_iNext = 0;
    int m_iCurrentStep = -1;
    bool m_bFinished = false;
    bool m_bStepFailed = false;
    QString m_strLastClicked;
    QEventLoop m_kLoop;
    QPointer<QEventLoop> m_pWaitLoop;
    QTimer m_kWatchdog;
    QTimer m_kCloser;
    QElapsedTimer m_kSinceStart; // for record_usage
};

} // namespace Host
} // namespace MV
