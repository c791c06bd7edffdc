#include "CReport.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace MV::Host;

namespace {

class hostStandIn : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_kFolder.isValid());
        m_strApps = m_kFolder.path() + QStringLiteral("/pub/Pixologic/GoZApps/Figmora/");
        ASSERT_TRUE(QDir().mkpath(m_strApps));
        m_strLog = m_kFolder.path() + QStringLiteral("/log.jsonl");
    }

    void Write(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    // Runs a stand-in; the process log is read back.
    QJsonArray Start(const QString& program, const QStringList& args, bool withLog = true, bool withPublic = true)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("PUBLIC"));
        environment.remove(QStringLiteral("public"));
        environment.remove(QStringLiteral("MVGOZ_PROCESS_LOG"));
        if (withPublic) {
            // Lower case on purpose: the lookup ignores case, as on the system these stand in for.
            environment.insert(QStringLiteral("Public"), m_kFolder.path() + QStringLiteral("/pub"));
        }
        if (withLog) {
            environment.insert(QStringLiteral("MVGOZ_PROCESS_LOG"), m_strLog);
        }
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(m_kFolder.path());
        process.start(program, args);
        EXPECT_TRUE(process.waitForFinished(30000)) << program.toStdString();
        EXPECT_EQ(0, process.exitCode()) << process.readAllStandardError().toStdString();
        return CReport::ProcessesToJson(withLog ? m_strLog : QFileInfo(program).absolutePath() + QStringLiteral("/processes.jsonl"));
    }

    static QString Tool(const char* name) { return QStringLiteral(MVGOZ_TOOLS_DIR "/") + QString::fromLatin1(name); }

    QTemporaryDir m_kFolder;
    QString m_strApps;
    QString m_strLog;
};

TEST_F(hostStandIn, RecordsItsRunAndTheObjectListTheInfoFileNames)
{
    Write(m_strApps + QStringLiteral("GoZ_Info.txt"), "GOZBRUSH_COMMAND = x\r\n  goz_object_list\t=  \"list.txt\"  \r\n");
    // Line ends of both kinds, a blank line, a Latin-1 byte, a tab and UTF-8 must all give valid JSON.
    Write(m_strApps + QStringLiteral("list.txt"), "C:/P/Body\r\nCaf\xe9\n\nTab\there\n\xc3\xa9t\xc3\xa9");
    Start(Tool("GoZMakeObjectPath.exe"), {});
    const QJsonArray runs = Start(Tool("GoZBrushFromApp.exe"), {QStringLiteral("a b"), QStringLiteral("\"q\"")});
    ASSERT_EQ(2, runs.size()) << "the second run must append, not replace";
    EXPECT_EQ(QStringLiteral("GoZMakeObjectPath.exe"), runs.at(0).toObject().value(QStringLiteral("program")).toString());
    const QJsonObject run = runs.at(1).toObject();
    EXPECT_EQ(QStringLiteral("GoZBrushFromApp.exe"), run.value(QStringLiteral("program")).toString());
    EXPECT_EQ(QJsonArray({QStringLiteral("a b"), QStringLiteral("\"q\"")}), run.value(QStringLiteral("args")).toArray());
    EXPECT_EQ(QDir(m_kFolder.path()).canonicalPath(), QDir(run.value(QStringLiteral("cwd")).toString()).canonicalPath());
    EXPECT_EQ(m_strApps + QStringLiteral("list.txt"), run.value(QStringLiteral("object_list_file")).toString());
    EXPECT_EQ(QJsonArray({QStringLiteral("C:/P/Body"), QStringLiteral("Café"), QStringLiteral("Tab\there"), QStringLiteral("été")}),
              run.value(QStringLiteral("object_list")).toArray());
    EXPECT_TRUE(run.value(QStringLiteral("problems")).toArray().isEmpty());
    EXPECT_FALSE(run.contains(QStringLiteral("config_path"))) << "only the return launcher reads its config";
}

TEST_F(hostStandIn, SaysWhatItCouldNotFind)
{
    const struct
    {
        const char* m_szCase;
        QByteArray m_kInfo; // empty: no info file
        bool m_bPublic;
        const char* m_szProblem;
    } cases[] = {
        {"no PUBLIC", QByteArray(), false, "PUBLIC is not set"},
        {"no info file", QByteArray(), true, "no GOZ_OBJECT_LIST in"},
        {"key missing", QByteArray("GOZ_OBJECT = list.txt\n"), true, "no GOZ_OBJECT_LIST in"},
        {"list missing", QByteArray("GOZ_OBJECT_LIST = missing.txt\n"), true, "cannot read"},
    };
    for (const auto& item : cases) {
        QFile::remove(m_strApps + QStringLiteral("GoZ_Info.txt"));
        QFile::remove(m_strLog);
        if (!item.m_kInfo.isEmpty()) {
            Write(m_strApps + QStringLiteral("GoZ_Info.txt"), item.m_kInfo);
        }
        const QJsonArray runs = Start(Tool("GoZBrushFromApp.exe"), {}, true, item.m_bPublic);
        ASSERT_EQ(1, runs.size()) << item.m_szCase;
        const QJsonObject run = runs.first().toObject();
        EXPECT_TRUE(run.value(QStringLiteral("object_list")).isNull()) << item.m_szCase;
        const QString problems = run.value(QStringLiteral("problems")).toArray().first().toString();
        EXPECT_TRUE(problems.contains(QString::fromLatin1(item.m_szProblem))) << item.m_szCase << ": " << problems.toStdString();
    }
}

TEST_F(hostStandIn, TheReturnLauncherReadsItsConfigAndLogsBesideItselfByDefault)
{
    const QString launcher = m_strApps + QStringLiteral("GoZBrushToFM.exe");
    ASSERT_TRUE(QFile::copy(Tool("GoZBrushToFM.exe"), launcher));
    Write(m_strApps + QStringLiteral("GoZ_Config.txt"), "OTHER = 1\r\nPATH = \"C:\\Apps\\Host\\Figmora.exe\"\r\n");
    Write(m_strApps + QStringLiteral("GoZ_Info.txt"), "GOZ_OBJECT_LIST = list.txt\n");
    Write(m_strApps + QStringLiteral("list.txt"), "Body\n");
    const QJsonArray runs = Start(launcher, {}, false);
    ASSERT_EQ(1, runs.size());
    const QJsonObject run = runs.first().toObject();
    EXPECT_EQ(QStringLiteral("GoZBrushToFM.exe"), run.value(QStringLiteral("program")).toString());
    EXPECT_EQ(QStringLiteral("C:\\Apps\\Host\\Figmora.exe"), run.value(QStringLiteral("config_path")).toString());
    EXPECT_EQ(QJsonArray({QStringLiteral("Body")}), run.value(QStringLiteral("object_list")).toArray());
}

} // namespace
