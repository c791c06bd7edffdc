#pragma once

#include "QVResult.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

namespace MV {
namespace Host {

// One step of a host script: its position, name and arguments (checked when parsed).
struct CScriptStep
{
    int m_iIndex = 0;
    QString m_strName;
    QJsonObject m_kArgs;
};

// A host script (see docs/script-format.md): the steps, checked as a whole before any runs.
class CScript
{
public:
    static constexpr int kDefaultWatchdogMs = 20000;
    // One hour: the program adds a last-resort margin to the watchdog, which must stay an int.
    static constexpr int kMaxWatchdogMs = 3600000;
    static constexpr int kDefaultWaitTimeoutMs = 10000;

    static const QStringList& StepNames();

    // On failure the script is unchanged and error names the step index and the problem.
    QV::Result Parse(const QByteArray& json, QString& error);

    const QList<CScriptStep>& Steps() const { return m_kSteps; }
    int WatchdogMs() const { return m_iWatchdogMs; }

    // A result code given as a number or as a "0x..." text.
    static bool ReadCode(const QJsonValue& value, QV::Result& code);

private:
    QList<CScriptStep> m_kSteps;
    int m_iWatchdogMs = kDefaultWatchdogMs;
};

} // namespace Host
} // namespace MV
