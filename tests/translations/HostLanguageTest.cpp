// The plug-in in the reference host: the language of the scene or of --language decides
// whether messages and forms show the English text or the keys.
#include "CTsCatalog.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using MV::Test::CTsCatalog;
using MV::Test::CTsEntry;

namespace {

struct CHostRun
{
    int m_iExitCode = -1;
    QString m_strOutput;
    QJsonObject m_kReport;
};

// One mvgoz-host run of the real module; language "" leaves --language out.
CHostRun RunHost(const QByteArray& scene, const QByteArray& script, const QString& language)
{
    CHostRun run;
    QTemporaryDir folder;
    if (!folder.isValid()) {
        run.m_strOutput = folder.errorString();
        return run;
    }
    const QString scenePath = folder.filePath(QStringLiteral("scene.json"));
    const QString scriptPath = folder.filePath(QStringLiteral("script.json"));
    const QString reportPath = folder.filePath(QStringLiteral("report.json"));
    for (const auto& file : {qMakePair(scenePath, scene), qMakePair(scriptPath, script)}) {
        QFile out(file.first);
        if (!out.open(QIODevice::WriteOnly) || out.write(file.second) != file.second.size()) {
            run.m_strOutput = out.errorString();
            return run;
        }
    }
    QStringList args{QStringLiteral("run"),    QStringLiteral("--plugin"), QStringLiteral(MVGOZ_MODULE),
                     QStringLiteral("--scene"), scenePath,                 QStringLiteral("--script"),
                     scriptPath,               QStringLiteral("--report"), reportPath};
    if (!language.isEmpty()) {
        args << QStringLiteral("--language") << language;
    }
    QProcess host;
    host.setProcessChannelMode(QProcess::MergedChannels);
    host.start(QStringLiteral(MVGOZ_HOST_PROGRAM), args);
    if (!host.waitForFinished(90000)) {
        host.kill();
        host.waitForFinished();
        run.m_strOutput = QStringLiteral("mvgoz-host did not finish");
        return run;
    }
    run.m_iExitCode = host.exitStatus() == QProcess::NormalExit ? host.exitCode() : -1;
    run.m_strOutput = QString::fromLocal8Bit(host.readAll());
    QFile report(reportPath);
    if (report.open(QIODevice::ReadOnly)) {
        run.m_kReport = QJsonDocument::fromJson(report.readAll()).object();
    }
    return run;
}

QByteArray Scene(const char* language, bool zbrush)
{
    QJsonObject scene{
        {QStringLiteral("objects"),
         QJsonArray{QJsonObject{{QStringLiteral("id"), QStringLiteral("lamp")},
                                {QStringLiteral("name"), QStringLiteral("Desk Lamp")},
                                {QStringLiteral("kind"), 3}}}},
        {QStringLiteral("sandbox"), QJsonObject{{QStringLiteral("pixologic_folder"), zbrush}}},
    };
    if (language != nullptr) {
        scene.insert(QStringLiteral("language"), QString::fromUtf8(language));
    }
    return QJsonDocument(scene).toJson();
}

class translationsHost : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QString error;
        ASSERT_TRUE(m_kCatalog.Load(QStringLiteral(MVGOZ_TS_FILE), error)) << error.toStdString();
    }
    // The English text of a key, from the committed catalog.
    QString English(const char* context, const char* key) const
    {
        const CTsEntry* entry = m_kCatalog.Find(QString::fromLatin1(context), QString::fromUtf8(key));
        return entry == nullptr ? QStringLiteral("<no entry>") : entry->m_strTranslation;
    }

    CTsCatalog m_kCatalog;
};

TEST_F(translationsHost, LanguageOfTheSceneOrCommandLinePicksTheMessageText)
{
    const char kKey[] = "[MVGoZBursh] Please install ZBrush";
    const QString english = English("MV::CGoZBrushPlugin", kKey);
    ASSERT_NE(english, QString::fromLatin1(kKey));
    const QByteArray script = R"({"steps": [{"step": "select", "ids": ["lamp"]},
                                           {"step": "trigger", "action": "qtGoZAction"}]})";
    const struct
    {
        const char* m_szName;
        const char* m_szSceneLanguage; // null: no "language" key
        const char* m_szOption;
        bool m_bEnglish;
    } cases[] = {
        {"no language anywhere: the key, as scripts compare it", nullptr, "", false},
        {"an empty scene language", "", "", false},
        {"the scene asks for English", "en", "", true},
        {"--language en", nullptr, "en", true},
        {"a regional English falls back to English", "en_GB", "", true},
        {"a language without a translation shows the key", "de", "", false},
        {"--language wins over the scene", "de", "en", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_szName);
        const CHostRun run = RunHost(Scene(c.m_szSceneLanguage, false), script, QString::fromUtf8(c.m_szOption));
        ASSERT_EQ(0, run.m_iExitCode) << run.m_strOutput.toStdString();
        const QJsonArray boxes = run.m_kReport.value(QStringLiteral("message_boxes")).toArray();
        ASSERT_EQ(1, boxes.size()) << run.m_strOutput.toStdString();
        EXPECT_EQ(c.m_bEnglish ? english : QString::fromLatin1(kKey),
                  boxes.at(0).toObject().value(QStringLiteral("text")).toString());
    }
}

TEST_F(translationsHost, FormsAndTableTextsFollowTheLanguage)
{
    const QByteArray script = R"({"steps": [{"step": "select", "ids": ["lamp"]},
                                           {"step": "trigger", "action": "qtGoZAction"},
                                           {"step": "dump_dialog"},
                                           {"step": "close_dialog"}]})";
    const QString titleKey = QStringLiteral("Split body parts into meshes of their own");
    const QString actionKey = QStringLiteral("[MVGoZBursh] Create");
    for (const char* language : {"", "en"}) {
        SCOPED_TRACE(language);
        const bool english = *language != '\0';
        const CHostRun run = RunHost(Scene(language, true), script, QString());
        ASSERT_EQ(0, run.m_iExitCode) << run.m_strOutput.toStdString();
        const QJsonArray dumps = run.m_kReport.value(QStringLiteral("dialog_dumps")).toArray();
        ASSERT_EQ(1, dumps.size());
        QString title;
        QString action;
        for (const QJsonValue& widget : dumps.at(0).toObject().value(QStringLiteral("widgets")).toArray()) {
            const QJsonObject object = widget.toObject();
            const QString name = object.value(QStringLiteral("name")).toString();
            if (name == QLatin1String("qtSplitBodyPartGroupBox")) {
                title = object.value(QStringLiteral("title")).toString();
            } else if (name == QLatin1String("qtFMGoZToZBrushTableWidget")) {
                const QJsonArray row = object.value(QStringLiteral("cells")).toArray().at(0).toArray();
                action = row.at(1).toObject().value(QStringLiteral("text")).toString();
            }
        }
        // The form is translated by the form loader, the action by the plug-in's own tables.
        EXPECT_EQ(english ? English("FMtoZBrushDlg", "Split body parts into meshes of their own") : titleKey, title);
        EXPECT_EQ(english ? English("MV::FMToZBrushDlg", "[MVGoZBursh] Create") : actionKey, action);
        EXPECT_NE(titleKey, English("FMtoZBrushDlg", "Split body parts into meshes of their own"));
    }
}

} // namespace
