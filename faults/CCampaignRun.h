#pragma once

#include "FileFaultShim.h"
#include "QVResult.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QTemporaryDir>

#include <memory>
#include <string>
#include <vector>

namespace MV {
namespace Faults {

// A scene and a script the campaign runs again and again. Step 0 is a placeholder
// (clear_failures, which does nothing) that a faulted run replaces by its fail step, so the
// step indices of every run line up.
struct CScenario
{
    QString m_strName;
    QByteArray m_kScene;
    QJsonArray m_kSteps; // with the placeholder
    int m_iWatchdogMs = 30000;
    // The waits of a faulted run: one whose send failed waits for a return that never comes.
    // Clean runs wait as the script says.
    int m_iFaultWaitMs = 0;

    static CScenario Load(const QString& name, const QString& scenePath, const QString& scriptPath, int faultWaitMs);
    // faulted: with the placeholder replaced by firstStep (when given) and the waits cut.
    QByteArray Script(bool faulted, const QJsonObject& firstStep = QJsonObject()) const;

    QJsonObject ToJson() const;
    static CScenario FromJson(const QJsonObject& json);
};

struct CFileFaultPlan
{
    QString m_strFile; // "work/<path>" or "plugin/<path>"
    EFileFault m_eFault = EFileFault::Missing;
    int m_iNth = 0;
};

// One run and all it left.
struct CRunRecord
{
    QString m_strLabel;
    QV::Result m_iResult = QV::kFail;
    QJsonObject m_kReport;
    QString m_strWork;               // the work folder, as the run left it
    std::vector<CTouch> m_kTouches;  // file calls below the campaign folder, in order
    CFired m_kFired;
    qint64 m_iElapsedMs = 0;
};

// Runs scenarios in this process with the built plug-in, each in a fresh work folder. The
// plug-in folder is a private copy, so file faults may break it; it is mended after each run.
class CCampaignRun
{
public:
    CCampaignRun();
    ~CCampaignRun();

    bool IsReady(QString& why) const;
    QString Root() const { return m_strRoot; }
    QString PluginFolder() const;

    // A CBackstopWatchdog ends the process (naming label) when a run never comes back.
    CRunRecord Run(const QString& label, const CScenario& scenario, const QJsonObject& firstStep = QJsonObject(),
                   const CFileFaultPlan* fileFault = nullptr);
    // Removes a run's work folder (kept until then for the checks).
    static void Discard(const CRunRecord& record);
    // What the process prints when a run never comes back, before it ends with exit code 3.
    static std::string NeverCameBack(const QString& label);

private:
    bool CopyPluginFolder(QString& error);
    void MendPluginFolder();

    QTemporaryDir m_kRoot;
    QString m_strRoot; // without links, as the current directory shows it
    QString m_strSource;
    QString m_strError;
    int m_iRuns = 0;
};

} // namespace Faults
} // namespace MV
