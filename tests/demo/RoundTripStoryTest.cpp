// The round-trip parts of the demo's story that the demo itself does not reach, told from
// hand-made reports: tables and what a choice changed in them, ZBrush's return, the scene
// before and after an import.
#include "CDumpedTable.h"
#include "CRoundTripStory.h"
#include "QtPrinters.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace MV::Host;

namespace {

QJsonObject Json(const char* text)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray(text), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString() << "\n" << text;
    return document.object();
}

QJsonArray JsonArray(const char* text)
{
    return QJsonDocument::fromJson(QByteArray(text)).array();
}

TEST(demoStory, CellsTellWhatTheyHoldAndWhatElseTheyOffer)
{
    const struct
    {
        const char* m_szCell;
        const char* m_szText;
        const char* m_szValue;
    } cases[] = {
        {R"({"text": null})", "", "\"\""},
        {R"({"text": "Create", "enabled": false})", "Create (fixed)", "\"Create\""}, // a plain item's flag
        {R"({"widget": "QCheckBox", "text": "", "checked": false, "enabled": false})", "[ ] (fixed)", "[ ] (disabled)"},
        {R"({"widget": "QComboBox", "text": "A", "enabled": true, "items": ["A", "B", "C", "D", "E"]})", "A (or 4 others)",
         "\"A\""},
        {R"({"widget": "QComboBox", "text": "Desk Lamp", "enabled": false, "items": ["Desk Lamp"]})",
         "Desk Lamp (fixed)", "\"Desk Lamp\" (disabled)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_szCell);
        EXPECT_EQ(CDumpedTable::CellText(Json(c.m_szCell)), QString::fromUtf8(c.m_szText));
        EXPECT_EQ(CDumpedTable::CellValue(Json(c.m_szCell)), QString::fromUtf8(c.m_szValue));
    }
}

QString TableDump(const char* target0, const char* target1, bool textureChecked)
{
    return QStringLiteral(R"({"table": "T", "headers": ["Mesh", "Action", "Target", "Mesh", "Texture"], "rows": [
        {"row": 0, "cells": [{"text": "Lamp", "enabled": true}, {"widget": "C", "text": "Update", "enabled": true},
                             {"widget": "C", "text": "%1", "enabled": true}, {"widget": "B", "text": "", "checked": true},
                             {"text": null, "enabled": false}]},
        {"row": 1, "cells": [{"text": "Vase", "enabled": true}, {"widget": "C", "text": "Update", "enabled": true},
                             {"widget": "C", "text": "%2", "enabled": true}, {"widget": "B", "text": "", "checked": true},
                             {"widget": "B", "text": "", "checked": %3, "enabled": true}]}]})")
        .arg(QLatin1String(target0), QLatin1String(target1), textureChecked ? QStringLiteral("true") : QStringLiteral("false"));
}

TEST(demoStory, AChangedTableTellsEachChangedCellInRowOrder)
{
    const CDumpedTable before =
        CDumpedTable::FromTableDump(QJsonDocument::fromJson(TableDump("Lamp", "Vase", false).toUtf8()).object());
    const struct
    {
        const char* m_szCase;
        QString m_strAfter;
        QStringList m_kLines;
    } cases[] = {
        {"a check box", TableDump("Lamp", "Vase", true), {"    The table changed: row 1 (Vase) Texture: [ ] -> [x]."}},
        {"nothing", TableDump("Lamp", "Vase", false), {"    The table did not change."}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_szCase);
        QStringList out;
        CDumpedTable::FromTableDump(QJsonDocument::fromJson(c.m_strAfter.toUtf8()).object()).TellChangeFrom(before, out);
        EXPECT_EQ(out, c.m_kLines);
    }

    // Rows that came or went: the whole table again, a plain item's flag left out.
    QStringList out;
    CDumpedTable::FromTableDump(Json(R"({"table": "T", "headers": ["Mesh"], "rows": [
        {"row": 0, "cells": [{"text": "Rock", "enabled": false}]}]})"))
        .TellChangeFrom(before, out);
    EXPECT_EQ(out, (QStringList{"    Table T, 1 row(s):", "      Mesh", "      Rock"}));
}

TEST(demoStory, ReturnSettingsReadAsASentence)
{
    const struct
    {
        const char* m_szSettings;
        const char* m_szText;
    } cases[] = {
        {"null", "nothing"},
        {"{}", "every mesh it gets, scaled by 1.1"},
        {R"({"meshes": "none", "extra": [{"name": "Rock"}, {"name": "Cape"}]})",
         "none of what it gets, scaled by 1.1; \"Rock\", \"Cape\", which nobody sent, comes along"},
        {R"({"meshes": ["Vase"], "scale": 2, "offset": [0, 1.5, 0], "rename": {"Vase": "Urn"}})",
         "only \"Vase\" of what it gets, scaled by 2 and moved by (0, 1.5, 0); \"Vase\" comes back as \"Urn\""},
        {R"({"truncate": ["A"], "malformed": ["B"], "missing": ["C"], "launch": false})",
         "every mesh it gets, scaled by 1.1; \"A\" comes back cut short; \"B\" comes back holding no mesh; \"C\" comes back "
         "listed without a file; the return launcher is not started, so the host hears nothing"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_szSettings);
        const QJsonValue settings = QJsonDocument::fromJson(QByteArray("[") + c.m_szSettings + "]").array().at(0);
        EXPECT_EQ(CRoundTripStory::ReturnSettingsText(settings), QString::fromUtf8(c.m_szText));
    }
}

TEST(demoStory, TheReturnTellsEachMeshItsFileAndTheLauncher)
{
    const char* project = "C:/Users/Public/Pixologic/GoZProjects/Default/";
    const QJsonArray processes = JsonArray(QStringLiteral(R"([
        {"program": "GoZMakeObjectPath.exe", "object_list": ["%1Lamp"]},
        {"program": "GoZBrushFromApp.exe", "object_list": ["%1Lamp", "%1Vase"], "return": {"launcher": "exit 0", "files": [
            {"name": "Lamp", "state": "written", "mesh": {"vertices": 4, "faces": 4, "bbox": [[0, 1, 0], [2, 3, 2.5]]}},
            {"name": "Vase", "state": "truncated", "mesh": {"vertices": 1, "faces": 0, "bbox": [[0, 0, 0], [0, 0, 0]]}},
            {"name": "Rock", "state": "missing", "mesh": {"vertices": 0, "faces": 0, "bbox": null}}]}},
        {"program": "GoZBrushToFM.exe", "object_list": ["Lamp", "Vase", "Rock"], "host_notice": "no host socket"}
    ])").arg(QLatin1String(project)).toUtf8().constData());
    QStringList out;
    CRoundTripStory::TellReturn(processes, out);
    EXPECT_EQ(out, (QStringList{
                       "  ZBrush (the stand-in) sculpted what it got and sent back 3 meshes:",
                       "    - Lamp: 4 vertices, 4 faces in (0, 1, 0) to (2, 3, 2.5)",
                       "    - Vase: 1 vertex, 0 faces in (0, 0, 0) to (0, 0, 0); its file was cut short",
                       "    - Rock: no geometry (not a name it was sent); listed, but no file was written",
                       "  ZBrush then ran the return launcher GoZBrushToFM.exe, which read Lamp, Vase, Rock from the "
                       "object list and could not tell the host (no host socket).",
                   }));

    out.clear();
    CRoundTripStory::TellReturn(JsonArray(R"json([{"program": "GoZBrushFromApp.exe", "object_list": [],
        "return": {"launcher": "not started (launch is false)", "files": []}}])json"),
                                out);
    EXPECT_EQ(out, (QStringList{"  ZBrush (the stand-in) sent nothing back.",
                                "  ZBrush started no return launcher (not started (launch is false))."}));
}

TEST(demoStory, TheSceneIsComparedAroundTheStepThatChangedIt)
{
    const QJsonObject report = Json(R"({"scene_dumps": [
        {"step": 2, "objects": [
            {"id": "hero", "name": "Hero", "pose": "Idle", "summary": {"vertices": 0, "faces": 0, "bbox": null}},
            {"id": "lamp", "name": "Lamp", "summary": {"vertices": 1, "faces": 0, "bbox": [[0, 0, 0], [0, 0, 0]]}}]},
        {"step": 4, "objects": [
            {"id": "hero", "name": "Hero", "pose": "Idle", "summary": {"vertices": 0, "faces": 0, "bbox": null}},
            {"id": "lamp", "name": "Lamp", "summary": {"vertices": 1, "faces": 0, "bbox": [[0, 0, 0], [0, 0, 0]]}}]},
        {"step": 6, "objects": [
            {"id": "hero", "name": "Hero", "pose": "reset", "finished_imports": 1, "last_imported": ["lamp", "rock"],
             "summary": {"vertices": 0, "faces": 0, "bbox": null}},
            {"id": "lamp", "name": "Lamp", "goz_imports": 1, "last_goz_file": "C:/P/Lamp.GoZ",
             "summary": {"vertices": 2, "faces": 0, "bbox": [[0, 0, 0], [1, 2, 0]]}},
            {"id": "rock", "name": "Rock", "goz_imports": 1, "summary": {"vertices": 0, "faces": 0, "bbox": null}}]},
        {"step": 9, "objects": []}
    ]})");
    QStringList out;
    CRoundTripStory::TellSceneChange(report, 5, 8, out);
    EXPECT_EQ(out, (QStringList{
                       "  What changed in the scene (compared at steps 4 and 6):",
                       "    - \"Hero\" (hero): pose \"Idle\" -> \"reset\"; finished GoZ imports 0 -> 1; the import "
                       "finished with \"Lamp\", \"Rock\"",
                       "    - \"Lamp\" (lamp): mesh 1 vertex, 0 faces in (0, 0, 0) to (0, 0, 0) -> 2 vertices, 0 faces in "
                       "(0, 0, 0) to (1, 2, 0); GoZ imports 0 -> 1; mesh from Lamp.GoZ",
                       "  What the scene gained:",
                       "    - \"Rock\" (rock): no geometry; GoZ imports 1",
                   }));

    out.clear();
    CRoundTripStory::TellSceneChange(report, 3, 4, out);
    EXPECT_TRUE(out.isEmpty()) << "no dump after the step, before the next press";
    out.clear();
    CRoundTripStory::TellSceneChange(report, 3, 5, out);
    EXPECT_EQ(out, QStringList{"  Nothing in the scene changed (compared at steps 2 and 4)."}) << "no object changed";
}

TEST(demoStory, MotionLoadsSayWhetherTheHostCouldLoadThem)
{
    const QJsonObject report = Json(R"({"call_log": [
        {"operation": "LoadFile", "args": ["C:/P/Face.mvMotionPlus", "33"], "step": 7},
        {"operation": "LoadMotionFile", "args": ["C:/D/Goz.mvmotion"], "step": 7, "note": "no file C:/D/Goz.mvmotion"},
        {"operation": "LoadFile", "args": ["C:/P/Other.mvMotionPlus"], "step": 7, "injected": "0x80000000"},
        {"operation": "LoadFile", "args": ["C:/P/Elsewhere.mvMotionPlus"], "step": 8}
    ]})");
    QStringList out;
    CRoundTripStory::TellLoads(report, 7, out);
    EXPECT_EQ(out, (QStringList{"  The host loaded the motion C:/P/Face.mvMotionPlus.",
                                "  The host could not load the motion C:/D/Goz.mvmotion: no file C:/D/Goz.mvmotion.",
                                "  The host could not load the motion C:/P/Other.mvMotionPlus."}));
}

} // namespace
