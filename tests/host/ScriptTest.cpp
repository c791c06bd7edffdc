#include "CScript.h"
#include "HostTestSupport.h"

#include <gtest/gtest.h>

using namespace MV::Host;
using MV::Host::Test::CBadInput;

namespace {

class hostScriptErrors : public ::testing::TestWithParam<CBadInput>
{
};

TEST_P(hostScriptErrors, RejectsTheScriptNamingTheStep)
{
    CScript script;
    QString error;
    EXPECT_EQ(QV::kInvalidArg, script.Parse(GetParam().m_szJson, error));
    EXPECT_TRUE(error.contains(QString::fromUtf8(GetParam().m_szError))) << error.toStdString();
    EXPECT_TRUE(script.Steps().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, hostScriptErrors,
    ::testing::Values(
        CBadInput{"{\"steps\": [", "not valid JSON"},
        CBadInput{"[]", "must be a JSON object"},
        CBadInput{"{}", "\"steps\" must be an array"},
        CBadInput{R"({"steps": [], "watchdog": 5})", "unknown script key \"watchdog\""},
        CBadInput{R"({"steps": [], "watchdog_ms": 0})", "\"watchdog_ms\" must be an integer from 1 to 3600000"},
        CBadInput{R"({"steps": [], "watchdog_ms": 3600001})", "\"watchdog_ms\" must be an integer from 1 to 3600000"},
        CBadInput{R"({"steps": [], "watchdog_ms": 2147483647})", "\"watchdog_ms\" must be an integer from 1"},
        CBadInput{R"({"steps": [], "watchdog_ms": 2147483648})", "\"watchdog_ms\" must be an integer from 1"},
        CBadInput{R"({"steps": [], "watchdog_ms": 1e300})", "\"watchdog_ms\" must be an integer from 1"},
        CBadInput{R"({"steps": ["select"]})", "step 0: must be an object"},
        CBadInput{R"({"steps": [{"ids": []}]})", "step 0: \"step\" must name the step"},
        CBadInput{R"({"steps": [{"step": "clear_log"}, {"step": "selec", "ids": []}]})", "step 1: unknown step \"selec\""},
        CBadInput{R"({"steps": [{"step": "select"}]})", "step 0: select: missing \"ids\""},
        CBadInput{R"({"steps": [{"step": "select", "ids": "a"}]})", "step 0: select: \"ids\" must be an array of strings"},
        CBadInput{R"({"steps": [{"step": "select", "ids": [], "id": "a"}]})", "step 0: select: unknown argument \"id\""},
        CBadInput{R"({"steps": [{"step": "set_playing", "playing": 1}]})", "\"playing\" must be true or false"},
        CBadInput{R"({"steps": [{"step": "set_current_avatar", "id": 3}]})", "\"id\" must be a string or null"},
        CBadInput{R"({"steps": [{"step": "wait_processes", "count": -1}]})", "\"count\" must be an integer of 0 or more"},
        CBadInput{R"({"steps": [{"step": "set_combo_index", "widget": "w", "index": 1.5}]})", "\"index\" must be an integer"},
        CBadInput{R"({"steps": [{"step": "fail", "operation": "ExportGoz", "code": 1}]})",
                   "fail: the host has no operation \"ExportGoz\""},
        CBadInput{R"({"steps": [{"step": "fail", "operation": "ExportGoZ", "code": "-1"}]})", "\"code\" must be a 32-bit result code"},
        CBadInput{R"({"steps": [{"step": "fail", "operation": "ExportGoZ", "code": "0x100000000"}]})", "\"code\" must be"},
        CBadInput{R"({"steps": [{"step": "fail", "operation": "ExportGoZ", "code": 1, "nth": 0}]})", "\"nth\" must be an integer of 1 or more"},
        CBadInput{R"({"steps": [{"step": "answer_messages"}]})", "answer_messages: give \"button\" or \"buttons\""},
        CBadInput{R"({"steps": [{"step": "answer_messages", "buttons": [1, "2"]}]})", "\"buttons\" must be an array of integers"},
        CBadInput{R"({"steps": [{"step": "table_combo_choose", "table": "t", "row": 0, "column": 1}]})", "missing \"text\""},
        CBadInput{R"({"steps": [{"step": "click", "widget": "w", "only_if_clicked": true}]})", "\"only_if_clicked\" must be a string"},
        CBadInput{R"({"steps": [{"step": "table_set_checked", "table": "t", "row": 0, "column": 1}]})", "table_set_checked: missing \"checked\""},
        CBadInput{R"({"steps": [{"step": "dump_table"}]})", "dump_table: missing \"table\""},
        CBadInput{R"({"steps": [{"step": "dump_scene", "ids": "hero"}]})", "dump_scene: \"ids\" must be an array of strings"},
        CBadInput{R"({"steps": [{"step": "wait_goz_return", "timeout_ms": -5}]})", "wait_goz_return: \"timeout_ms\" must be an integer of 0"},
        CBadInput{R"({"steps": [{"step": "set_zbrush_return"}]})", "set_zbrush_return: missing \"settings\""},
        CBadInput{R"({"steps": [{"step": "set_zbrush_return", "settings": "all"}]})", "\"settings\" must be an object or null"},
        CBadInput{R"({"steps": [{"step": "set_zbrush_return", "settings": {"meshes": 3}}]})",
                   "set_zbrush_return: \"settings\": \"meshes\" must be"}),
    MV::Host::Test::BadInputName);

TEST(hostScript, ReadsStepsWatchdogAndResultCodes)
{
    // Steps are read in the runner's tests; here the default watchdog and comments anywhere.
    CScript script;
    QString error;
    ASSERT_EQ(QV::kOk, script.Parse(R"({"comment": "x", "steps": [{"step": "clear_log", "comment": "why"}]})", error))
        << error.toStdString();
    EXPECT_EQ(CScript::kDefaultWatchdogMs, script.WatchdogMs());
    ASSERT_EQ(QV::kOk, script.Parse(R"({"watchdog_ms": 3600000, "steps": []})", error)) << error.toStdString();
    EXPECT_EQ(CScript::kMaxWatchdogMs, script.WatchdogMs());
    const struct
    {
        QJsonValue m_kValue;
        bool m_bOk;
        QV::Result m_iCode;
    } codes[] = {
        {QJsonValue(QStringLiteral("0x80000005")), true, QV::kOutOfMemory},
        {QJsonValue(QStringLiteral("0X1")), true, 1},
        {QJsonValue(-2147483648.0), true, QV::kFail},
        {QJsonValue(2147483648.0), true, QV::kFail},
        {QJsonValue(4294967296.0), false, 0},
        {QJsonValue(1.5), false, 0},
        {QJsonValue(QStringLiteral("12")), false, 0},
        {QJsonValue(true), false, 0},
    };
    for (const auto& item : codes) {
        QV::Result code = 0;
        EXPECT_EQ(item.m_bOk, CScript::ReadCode(item.m_kValue, code));
        if (item.m_bOk) {
            EXPECT_EQ(item.m_iCode, code);
        }
    }
}

} // namespace
