#pragma once

#include "CPluginHost.h"
#include "CReferenceHost.h"
#include "CReport.h"
#include "CSandbox.h"
#include "CScene.h"
#include "QtPrinters.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>


namespace MV {
namespace Host {
namespace Test {

// A character with face parts and hair, three props, a spring node and a non-ASCII name.
extern const char* const kBasicScene;

// A malformed input of a table-driven parser test and a piece of the message it must give.
struct CBadInput
{
    const char* m_szJson;
    const char* m_szError;
};

// Names each case by its position and expected message, so that test names stay stable and unique.
std::string BadInputName(const ::testing::TestParamInfo<CBadInput>& info);
void PrintTo(const CBadInput& item, std::ostream* out);

// The scene, or null after reporting the parse error as a test failure.
std::unique_ptr<CScene> ParseScene(const QByteArray& json);

// The text arguments of every RecordUsageStep call with this tag, as "text|id".
QStringList UsageSteps(const CReferenceHost& host, const QString& tag);

// A sandbox, a host over a scene and the fake plug-in, as a run has them.
class CHostRun
{
public:
    explicit CHostRun(const QByteArray& scene = kBasicScene);

    bool Ready() const { return m_bReady; }
    // Loads a fake plug-in (the class name check set for it).
    bool Load(const QString& path = QStringLiteral(MVGOZ_FAKE_PLUGIN));
    // Parses and runs a script; a parse error is a test failure and gives kInvalidArg.
    QV::Result Run(const QByteArray& script);
    QJsonObject Report() const { return m_kReport.ToJson(); }
    QJsonObject Step(int index) const;

    CSandbox m_kSandbox;
    std::unique_ptr<CReferenceHost> m_pHost;
    std::unique_ptr<CPluginHost> m_pPlugins;
    CReport m_kReport;

private:
    bool m_bReady = false;
};

} // namespace Test
} // namespace Host
} // namespace MV
