#include "COutcome.h"

#include "CExchangeCheck.h"

#include <QJsonArray>

namespace MV {
namespace Faults {

namespace {

struct CName
{
    EOutcome m_eOutcome;
    const char* m_szName;
};

const CName kNames[] = {
    {EOutcome::Unaffected, "unaffected"},   {EOutcome::MessageShown, "message shown"},
    {EOutcome::NotLoaded, "not loaded"},    {EOutcome::Logged, "failure logged"},
    {EOutcome::Stopped, "stopped quietly"}, {EOutcome::WentOn, "went on"},
    {EOutcome::NotFired, "fault not reached"},
};

QStringList Texts(const QJsonObject& report, const char* list)
{
    QStringList texts;
    for (const QJsonValue& value : report.value(QLatin1String(list)).toArray()) {
        texts << value.toObject().value(QStringLiteral("text")).toString();
    }
    return texts;
}

// What run has that clean has not, counting repeats.
QStringList Fresh(QStringList clean, const QStringList& run)
{
    QStringList fresh;
    for (const QString& text : run) {
        if (!clean.removeOne(text)) {
            fresh << text;
        }
    }
    return fresh;
}

// The host calls made in the injected call's step after it; -1 without an injected call.
int CallsAfterInjection(const QJsonArray& calls, int injected)
{
    if (injected < 0 || injected >= calls.size()) {
        return -1;
    }
    const QJsonValue step = calls.at(injected).toObject().value(QStringLiteral("step"));
    int count = 0;
    for (int i = injected + 1; i < calls.size(); ++i) {
        count += calls.at(i).toObject().value(QStringLiteral("step")) == step ? 1 : 0;
    }
    return count;
}

int InjectedIndex(const QJsonArray& calls)
{
    for (int i = 0; i < calls.size(); ++i) {
        if (calls.at(i).toObject().contains(QStringLiteral("injected"))) {
            return i;
        }
    }
    return -1;
}

} // namespace

const char* Name(EOutcome outcome)
{
    for (const CName& name : kNames) {
        if (name.m_eOutcome == outcome) {
            return name.m_szName;
        }
    }
    return "?";
}

EOutcome OutcomeFromName(const QString& text)
{
    for (const CName& name : kNames) {
        if (text == QLatin1String(name.m_szName)) {
            return name.m_eOutcome;
        }
    }
    return EOutcome::WentOn;
}

COutcome::COutcome(const QJsonObject& cleanReport, const QString& pluginSource)
    : m_kClean(cleanReport), m_kCleanStory(Story(cleanReport)), m_strPluginSource(pluginSource)
{
}

QJsonObject COutcome::Story(const QJsonObject& report)
{
    QJsonArray steps;
    for (const QJsonValue& value : report.value(QStringLiteral("steps")).toArray()) {
        const QJsonObject step = value.toObject();
        steps.append(QStringLiteral("%1 %2").arg(step.value(QStringLiteral("index")).toInt()).arg(
            step.value(QStringLiteral("status")).toString()));
    }
    QJsonArray programs;
    for (const QJsonValue& value : report.value(QStringLiteral("processes")).toArray()) {
        programs.append(value.toObject().value(QStringLiteral("program")));
    }
    return QJsonObject{{QStringLiteral("steps"), steps},
                       {QStringLiteral("messages"), QJsonArray::fromStringList(Texts(report, "message_boxes"))},
                       {QStringLiteral("scene"), report.value(QStringLiteral("scene"))},
                       {QStringLiteral("files"), report.value(QStringLiteral("files"))},
                       {QStringLiteral("processes"), programs}};
}

EOutcome COutcome::Classify(const CPlannedRun& planned, const CRunRecord& run, QStringList& fresh) const
{
    const QJsonObject& report = run.m_kReport;
    if (planned.m_eKind == CPlannedRun::EKind::File && !run.m_kFired.m_bFired) {
        return EOutcome::NotFired;
    }
    if (!report.value(QStringLiteral("plugin")).toObject().value(QStringLiteral("loaded")).toBool()) {
        fresh = report.value(QStringLiteral("plugin")).toObject().value(QStringLiteral("errors")).toVariant().toStringList();
        return EOutcome::NotLoaded;
    }
    if (Story(report) == m_kCleanStory) {
        return EOutcome::Unaffected;
    }
    fresh = Fresh(Texts(m_kClean, "message_boxes"), Texts(report, "message_boxes"));
    if (!fresh.isEmpty()) {
        return EOutcome::MessageShown;
    }
    fresh = Fresh(Texts(m_kClean, "debug_log"), Texts(report, "debug_log"));
    if (!fresh.isEmpty()) {
        return EOutcome::Logged;
    }
    const QJsonArray calls = report.value(QStringLiteral("call_log")).toArray();
    const QJsonArray cleanCalls = m_kClean.value(QStringLiteral("call_log")).toArray();
    if (planned.m_eKind == CPlannedRun::EKind::Host) {
        const int injected = InjectedIndex(calls);
        if (CallsAfterInjection(calls, injected) < CallsAfterInjection(cleanCalls, injected)) {
            return EOutcome::Stopped;
        }
    } else if (calls.size() < cleanCalls.size()) {
        return EOutcome::Stopped;
    }
    return EOutcome::WentOn;
}

CVerdict COutcome::Judge(const CPlannedRun& planned, const CRunRecord& run) const
{
    CVerdict verdict;
    verdict.m_eOutcome = Classify(planned, run, verdict.m_kNew);
    if (run.m_iResult != QV::kOk && run.m_iResult != QV::kFail) {
        verdict.m_kViolations << QStringLiteral("the run ended with result %1").arg(run.m_iResult);
    }
    for (const QJsonValue& value : run.m_kReport.value(QStringLiteral("errors")).toArray()) {
        const QString error = value.toString();
        if (error.startsWith(QLatin1String("watchdog")) || error.contains(QLatin1String("still ran"))) {
            verdict.m_kViolations << QStringLiteral("hang: ") + error;
        }
    }
    CExchangeCheck check(m_strPluginSource);
    if (planned.m_eKind == CPlannedRun::EKind::File && run.m_kFired.m_bFired && planned.m_strFile.startsWith(QLatin1String("work/")) &&
        (planned.m_eFault == EFileFault::Missing || planned.m_eFault == EFileFault::Directory)) {
        check.SetExempt({planned.m_strFile.mid(5)});
    }
    verdict.m_kViolations << check.Check(run.m_strWork, run.m_kReport);
    return verdict;
}

} // namespace Faults
} // namespace MV
