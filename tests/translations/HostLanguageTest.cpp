// The plug-in in the reference host: the language of the scene or of --language decides
// whether messages and forms show the English text or the keys.
#include "CTsCatalog.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace MV::Test;

namespace {

// One mvgoz-host run of the real module over one object, a lamp; its report, or {} after
// a failed run. sceneLanguage null: no "language" key; option "": no --language.
QJsonObject RunHost(const char* sceneLanguage, const QString& option, bool zbrush, const QString& steps)
{
    QTemporaryDir folder;
    QJsonObject scene{{"objects", QJsonArray{QJsonObject{{"id", "lamp"}, {"name", "Desk Lamp"}, {"kind", 3}}}},
                      {"sandbox", QJsonObject{{"pixologic_folder", zbrush}}}};
    if (sceneLanguage != nullptr) {
        scene.insert("language", sceneLanguage);
    }
    const QString script =
        R"({"steps": [{"step": "select", "ids": ["lamp"]}, {"step": "trigger", "action": "qtGoZAction"})" + steps + "]}";
    for (const auto& [name, bytes] : {qMakePair(QString("scene.json"), QJsonDocument(scene).toJson()),
                                      qMakePair(QString("script.json"), script.toUtf8())}) {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()) << name.toStdString();
    }
    QStringList args{"run", "--plugin", MVGOZ_MODULE, "--scene", folder.filePath("scene.json"), "--script",
                     folder.filePath("script.json"), "--report", folder.filePath("report.json")};
    if (!option.isEmpty()) {
        args << "--language" << option;
    }
    QProcess host;
    host.setProcessChannelMode(QProcess::MergedChannels);
    host.start(QStringLiteral(MVGOZ_HOST_PROGRAM), args);
    const bool finished = host.waitForFinished(90000);
    const bool succeeded = finished && host.exitStatus() == QProcess::NormalExit && host.exitCode() == 0;
    EXPECT_TRUE(succeeded) << host.readAll().toStdString();
    QFile report(folder.filePath("report.json"));
    return succeeded && report.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(report.readAll()).object()
                                                         : QJsonObject();
}

// With ZBrush the send dialog opens: the form is translated by the form loader, the action
// column by the plug-in's own tables; without ZBrush a message box says so.
TEST(translationsHost, LanguageOfTheSceneOrCommandLinePicksMessageAndFormTexts)
{
    const char kMessageKey[] = "[MVGoZBursh] Please install ZBrush";
    const char kTitleKey[] = "Split body parts into meshes of their own";
    const char kActionKey[] = "[MVGoZBursh] Create";
    const QString message = English("MV::CGoZBrushPlugin", kMessageKey);
    ASSERT_NE(message, QString::fromLatin1(kMessageKey));
    ASSERT_NE(kTitleKey, English("FMtoZBrushDlg", kTitleKey));
    const struct
    {
        const char* m_szName;
        const char* m_szSceneLanguage;
        const char* m_szOption;
        bool m_bZBrush;
        bool m_bEnglish;
    } cases[] = {
        {"no language anywhere: the key, as scripts compare it", nullptr, "", false, false},
        {"the scene asks for English", "en", "", false, true},
        {"--language en", nullptr, "en", false, true},
        {"--language wins over the scene", "de", "en", false, true},
        {"an empty scene language: the form's keys", "", "", true, false},
        {"the scene asks for English: the form's texts", "en", "", true, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_szName);
        const QJsonObject report = RunHost(c.m_szSceneLanguage, c.m_szOption, c.m_bZBrush,
                                           c.m_bZBrush ? R"(, {"step": "dump_dialog"}, {"step": "close_dialog"})" : "");
        if (!c.m_bZBrush) {
            const QJsonArray boxes = report["message_boxes"].toArray();
            ASSERT_EQ(1, boxes.size());
            EXPECT_EQ(c.m_bEnglish ? message : QString::fromLatin1(kMessageKey), boxes[0]["text"].toString());
            continue;
        }
        const QJsonArray dumps = report["dialog_dumps"].toArray();
        ASSERT_EQ(1, dumps.size());
        QString title;
        QString action;
        for (const QJsonValue& widget : dumps[0]["widgets"].toArray()) {
            if (widget["name"] == "qtSplitBodyPartGroupBox") {
                title = widget["title"].toString();
            } else if (widget["name"] == "qtFMGoZToZBrushTableWidget") {
                action = widget["cells"][0][1]["text"].toString();
            }
        }
        EXPECT_EQ(c.m_bEnglish ? English("FMtoZBrushDlg", kTitleKey) : kTitleKey, title);
        EXPECT_EQ(c.m_bEnglish ? English("MV::FMToZBrushDlg", kActionKey) : kActionKey, action);
    }
}

} // namespace
