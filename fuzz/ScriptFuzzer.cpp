#include "CScript.h"
#include "FuzzQt.h"
#include "FuzzSupport.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

using namespace MV::Fuzz;
using MV::Host::CScript;

// Input: a script of the reference host. A refused script leaves the loaded one as it was
// and says why; an accepted one holds only known steps, numbered in order, and a watchdog
// within its range.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    SilenceQt();
    CScript script;
    QString error;
    Check(script.Parse(R"({"steps": [{"step": "clear_log"}], "watchdog_ms": 1234})", error) == QV::kOk,
          "the base script loads");

    const QByteArray json(reinterpret_cast<const char*>(data), static_cast<int>(size));
    if (QV::Failed(script.Parse(json, error))) {
        Check(!error.isEmpty(), "a refused script says why");
        Check(script.Steps().size() == 1 && script.Steps().at(0).m_strName == QLatin1String("clear_log")
                  && script.WatchdogMs() == 1234,
              "a refused script leaves the loaded one as it was");
        return 0;
    }
    Check(script.WatchdogMs() >= 1 && script.WatchdogMs() <= CScript::kMaxWatchdogMs, "the watchdog is in range");
    for (int i = 0; i < script.Steps().size(); ++i) {
        const MV::Host::CScriptStep& step = script.Steps().at(i);
        Check(step.m_iIndex == i && CScript::StepNames().contains(step.m_strName), "steps are known and in order");
    }
    return 0;
}
