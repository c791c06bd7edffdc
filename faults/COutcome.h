#pragma once

#include "CFaultPlan.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace MV {
namespace Faults {

// How a faulted run ended, compared with the clean run of the same script.
enum class EOutcome
{
    Unaffected,   // the same story as the clean run
    MessageShown, // the plug-in told the user (a message box the clean run has not)
    NotLoaded,    // loading or Initialize refused the plug-in
    Logged,       // the plug-in said why in its log and stopped or went on
    Stopped,      // the command ended early without a word (the failure was returned)
    WentOn,       // the command carried on with something else than the clean run
    NotFired,     // the file fault never happened (the run went elsewhere before it)
};

const char* Name(EOutcome outcome);
EOutcome OutcomeFromName(const QString& name);

struct CVerdict
{
    EOutcome m_eOutcome = EOutcome::Unaffected;
    QStringList m_kViolations; // broken invariants
    QStringList m_kNew;        // the messages or log lines the clean run has not
};

// Judges one faulted run against the clean run.
class COutcome
{
public:
    COutcome(const QJsonObject& cleanReport, const QString& pluginSource);

    CVerdict Judge(const CPlannedRun& planned, const CRunRecord& run) const;

    // The parts of a report that tell what a run did: steps, messages, scene, files, processes.
    static QJsonObject Story(const QJsonObject& report);

private:
    EOutcome Classify(const CPlannedRun& planned, const CRunRecord& run, QStringList& fresh) const;

    QJsonObject m_kClean;
    QJsonObject m_kCleanStory;
    QString m_strPluginSource;
};

} // namespace Faults
} // namespace MV
