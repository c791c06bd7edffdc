#include "DoctorChecks.h"
#include "DoctorJson.h"
#include "DoctorSandbox.h"
#include "DoctorStrings.h"
#include "DoctorText.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <string>

// The two renderings: sentences for people, one JSON object for scripts.
namespace {

using MV::Doctor::CDoctorFindings;
using MV::Doctor::CProblem;
using MV::Doctor::ESeverity;
namespace fs = std::filesystem;

QString Q(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

TEST(DoctorStrings, JsonQuoteEscapesAndKeepsUtf8Valid)
{
    const std::pair<std::string, std::string> cases[] = {
        {"a\"b\\c", "\"a\\\"b\\\\c\""},
        {"tab\tline\nreturn\r", "\"tab\\tline\\nreturn\\r\""},
        {std::string("nul\0bell\x07", 9), "\"nul\\u0000bell\\u0007\""},
        {"del\x7f", "\"del\\u007f\""},
        {"caf\xc3\xa9 \xe4\xb8\xad", "\"caf\xc3\xa9 \xe4\xb8\xad\""}, // valid UTF-8 stays
        {"caf\xe9", "\"caf\xc3\xa9\""},                              // a stray byte is its Latin-1 letter
        {"\xe4\xb8", "\"\xc3\xa4\xc2\xb8\""},                         // a cut sequence too
        {"\xed\xa0\x80", "\"\xc3\xad\xc2\xa0\xc2\x80\""},             // an encoded surrogate is not UTF-8
    };
    for (const auto& c : cases) {
        EXPECT_EQ(MV::Doctor::JsonQuote(c.first), c.second) << c.first;
    }
}

TEST(DoctorStrings, WideTextBecomesUtf8)
{
    const std::pair<std::wstring, std::string> cases[] = {
        {L"K\u00f6rper \u4e2d", "K\xc3\xb6rper \xe4\xb8\xad"},
        {L"x\U0001F600y", "x\xf0\x9f\x98\x80y"},
        {std::wstring(1, wchar_t(0xD800)) + L"a", "\xef\xbf\xbd" "a"}, // lone surrogate
    };
    for (const auto& c : cases) {
        EXPECT_EQ(MV::Doctor::EncodeUtf8(c.first), c.second);
    }
    EXPECT_EQ(MV::Doctor::Printable("a\nb\x1b[31m"), "a\\x0Ab\\x1B[31m");
}

QJsonObject Json(const CDoctorFindings& findings)
{
    QJsonParseError error {};
    const QByteArray json = QByteArray::fromStdString(MV::Doctor::RenderJson(findings));
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString() << " at " << error.offset;
    return document.object();
}

TEST(DoctorRendering, JsonHoldsWhatTheChecksFound)
{
    CDoctorSandbox healthy;
    CDoctorSandbox broken;
    ASSERT_TRUE(healthy.IsValid() && broken.IsValid());
    healthy.Write(healthy.InRoot("GoZProjects/Default/Extra.GoZ"), "mesh");
    healthy.Write(healthy.InRoot("GoZProjects/Default/notes.txt"), "not a mesh");
    broken.SetModified(broken.InRoot("GoZApps/Figmora/GoZBrushToFM.exe"), 2017, 1, 2, 3, 4);
    broken.Remove(broken.InRoot("GoZProjects/Default/Eye.goz"));
    broken.Chmod(broken.InRoot("GoZProjects/Default"), 0755);
    const CDoctorFindings brokenFindings = broken.Check();
    EXPECT_EQ(brokenFindings.m_strLauncherTime, "2017-01-02 03:04");
    for (const char* id : {"launcher-stale", "object-list-files-missing", "projects-not-shared"}) {
        EXPECT_TRUE(brokenFindings.HasProblem(id)) << id;
    }

    for (CDoctorSandbox* sandbox : {&healthy, &broken}) {
        const CDoctorFindings f = sandbox->Check();
        const QJsonObject json = Json(f);
        EXPECT_EQ(json["canRoundTrip"].toBool(), f.CanRoundTrip());
        EXPECT_EQ(json["exitCode"].toInt(-1), f.ExitCode());
        EXPECT_EQ(json["publicFolder"]["path"].toString(), Q(sandbox->Public().string()));
        EXPECT_EQ(json["publicFolder"]["source"].toString(), "override");
        EXPECT_TRUE(json["publicFolder"]["variable"].isNull());
        EXPECT_EQ(json["pixologicRoot"]["kind"].toString(), "folder");
        EXPECT_EQ(json["zbrush"]["fromApp"]["kind"].toString(), "file");
        const QJsonObject app = json["applicationFolder"].toObject();
        EXPECT_EQ(app["launcher"]["stale"].toBool(), f.m_bLauncherStale);
        EXPECT_EQ(app["launcher"]["modified"].toString(), Q(f.m_strLauncherTime));
        EXPECT_EQ(app["config"]["PATH"]["value"].toString(), Q(sandbox->HostProgram().string()));
        const QJsonValue keys = app["info"]["keys"];
        EXPECT_EQ(keys["GOZ_OBJECT_LIST"]["value"].toString(), "GoZ_ObjectList.txt"); // quotes removed
        EXPECT_EQ(keys["MAKEOBJECTPATH_COMMAND"]["target"]["path"].toString(),
                  Q(sandbox->InRoot("GoZApps/Figmora/").string() + "../../GoZBrush/GoZMakeObjectPath.exe"));
        EXPECT_EQ(keys["GOZBRUSH_COMMAND"]["target"]["kind"].toString(), "file");
        EXPECT_EQ(json["registry"]["result"].toInt(-1), 0);
        EXPECT_EQ(json["registry"]["data"].toString(), Q(sandbox->HostProgram().string()));
        ASSERT_EQ(json["folders"].toArray().size(), 3);
        for (const QJsonValue folder : json["folders"].toArray()) {
            const bool projects = folder["name"] == "GoZProjects/Default/";
            EXPECT_EQ(folder["userWritable"].toString(), "yes");
            EXPECT_EQ(folder["everyoneWritable"].toString(), projects && sandbox == &broken ? "no" : "yes");
        }
        EXPECT_EQ(json["folders"][1]["name"].toString(), "GoZProjects/Default/");
        // The user-write probe leaves nothing behind.
        EXPECT_EQ(std::distance(fs::directory_iterator(sandbox->InRoot("GoZApps/Figmora")), fs::directory_iterator()), 4);
        const QJsonValue exchange = json["lastExchange"];
        EXPECT_EQ(exchange["listed"].toInt(-1), 2);
        EXPECT_EQ(exchange["found"].toInt(-1), sandbox == &healthy ? 2 : 1);
        EXPECT_EQ(exchange["missing"].toInt(-1), static_cast<int>(f.m_nMissingNames));
        EXPECT_EQ(exchange["projectFiles"].toInt(-1), sandbox == &healthy ? 3 : 1);
        EXPECT_EQ(exchange["unlistedFiles"].toInt(-1), sandbox == &healthy ? 1 : 0);
        const QJsonArray problems = json["problems"].toArray();
        ASSERT_EQ(problems.size(), static_cast<int>(f.m_kProblems.size()));
        for (int i = 0; i < problems.size(); ++i) {
            EXPECT_EQ(problems[i]["id"].toString(), Q(f.m_kProblems[i].m_strId));
            EXPECT_EQ(problems[i]["text"].toString(), Q(f.m_kProblems[i].m_strText));
        }
    }
}

TEST(DoctorRendering, HostileTextStaysValidJsonAndOneLinePerFact)
{
    CDoctorSandbox sandbox;
    ASSERT_TRUE(sandbox.IsValid());
    const std::string hostile = std::string("x\"\\\t\x01\x1b[2J\xff\xfe\0y", 13);
    sandbox.Write(sandbox.InRoot("GoZApps/Figmora/GoZ_Info.txt"),
                  "GOZ_OBJECT_LIST = GoZ_ObjectList.txt\nMAKEOBJECTPATH_COMMAND = " + hostile
                      + "\nGOZBRUSH_COMMAND = ../../GoZBrush/GoZBrushFromApp.exe\n");
    sandbox.Write(sandbox.InRoot("GoZApps/Figmora/GoZ_ObjectList.txt"), "\x01\x1b\xff" + std::string(50, 'q'));
    const CDoctorFindings f = sandbox.Check();
    ASSERT_TRUE(f.HasProblem("make-object-path-program-missing"));
    ASSERT_TRUE(f.HasProblem("object-list-files-missing"));

    const QJsonObject json = Json(f);
    // The value ends at the zero byte, as the plug-in reads it; stray bytes come back as Latin-1.
    EXPECT_EQ(json["applicationFolder"]["info"]["keys"]["MAKEOBJECTPATH_COMMAND"]["value"].toString(),
              QString::fromUtf8("x\"\\\t\x01\x1b[2J\xc3\xbf\xc3\xbe"));
    EXPECT_EQ(json["lastExchange"]["missingNames"][0].toString(),
              QString::fromUtf8("\x01\x1b\xc3\xbf") + QString(50, QLatin1Char('q')));
    for (const char c : MV::Doctor::RenderText(f)) {
        ASSERT_TRUE(static_cast<unsigned char>(c) >= 0x20 || c == '\n') << "raw control byte " << int(c);
    }
}

TEST(DoctorText, ProblemsAreNumberedAndWarningsKeptApart)
{
    const struct
    {
        const char* name;
        std::vector<CProblem> problems;
        std::vector<std::string> lines; // in this order
        int exitCode;
    } cases[] = {
        {"none", {}, {"Result: a round trip can work."}, 0},
        {"two and a warning",
         {{"a", ESeverity::Problem, "First."}, {"w", ESeverity::Warning, "Careful."},
          {"b", ESeverity::Problem, "Second."}},
         {"Result: 2 problems stop a round trip:", "  1. First.", "  2. Second.", "Warnings:", "  - Careful."}, 1},
        {"one", {{"z", ESeverity::Problem, "Zed."}}, {"Result: 1 problem stops a round trip:", "  1. Zed."}, 1},
        {"warning only", {{"w", ESeverity::Warning, "Careful."}}, {"Result: a round trip can work.", "Warnings:"}, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CDoctorFindings f;
        f.m_kProblems = c.problems;
        const std::string text = MV::Doctor::RenderText(f);
        std::size_t at = 0;
        for (const std::string& line : c.lines) {
            const std::size_t found = text.find("\n" + line + "\n", at);
            ASSERT_NE(found, std::string::npos) << line << "\n" << text;
            at = found + 1;
        }
        EXPECT_EQ(f.ExitCode(), c.exitCode);
    }
}

} // namespace
