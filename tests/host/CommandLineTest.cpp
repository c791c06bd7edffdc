#include "CCommandLine.h"

#include <QDir>

#include <gtest/gtest.h>

using namespace MV::Host;

namespace {

TEST(hostCommandLine, ReadsRunAndDemoAndMakesPathsAbsolute)
{
    CHostCommand command;
    QString error;
    ASSERT_EQ(QV::kOk, CCommandLine::Parse({QStringLiteral("run"), QStringLiteral("--plugin"), QStringLiteral("/p/M.so"),
                                            QStringLiteral("--scene"), QStringLiteral("s.json"), QStringLiteral("--script"),
                                            QStringLiteral("t.json"), QStringLiteral("--report"), QStringLiteral("r.json"),
                                            QStringLiteral("--no-zbrush")},
                                           command, error))
        << error.toStdString();
    EXPECT_EQ(CHostCommand::EKind::Run, command.m_eKind);
    EXPECT_EQ(QStringLiteral("/p/M.so"), command.m_strPlugin);
    EXPECT_EQ(QDir::current().absoluteFilePath(QStringLiteral("s.json")), command.m_strScene);
    EXPECT_TRUE(command.m_bNoZBrush);
    EXPECT_TRUE(command.m_strWorkFolder.isEmpty());

    ASSERT_EQ(QV::kOk, CCommandLine::Parse({QStringLiteral("demo"), QStringLiteral("--plugin"), QStringLiteral("/p/M.so")},
                                           command, error));
    EXPECT_EQ(CHostCommand::EKind::Demo, command.m_eKind);
    EXPECT_TRUE(command.m_strReport.isEmpty());
}

TEST(hostCommandLine, RejectsWhatItCannotRun)
{
    const struct
    {
        QStringList m_kArgs;
        const char* m_szError;
    } cases[] = {
        {{}, "no command given"},
        {{QStringLiteral("runn")}, "unknown command \"runn\""},
        {{QStringLiteral("run"), QStringLiteral("--plugin")}, "--plugin needs a value"},
        {{QStringLiteral("run"), QStringLiteral("--plugin"), QStringLiteral("--scene")}, "--plugin needs a value"},
        {{QStringLiteral("run"), QStringLiteral("--plugin"), QStringLiteral("a"), QStringLiteral("--plugin"), QStringLiteral("b")},
         "--plugin is given twice"},
        {{QStringLiteral("run"), QStringLiteral("--plgin"), QStringLiteral("a")}, "unknown option \"--plgin\" for run"},
        {{QStringLiteral("demo"), QStringLiteral("--plugin"), QStringLiteral("a"), QStringLiteral("--no-zbrush")},
         "unknown option \"--no-zbrush\" for demo"},
        {{QStringLiteral("demo"), QStringLiteral("--scene"), QStringLiteral("a")}, "unknown option \"--scene\" for demo"},
        {{QStringLiteral("run"), QStringLiteral("--plugin"), QStringLiteral("a"), QStringLiteral("--report"), QStringLiteral("r")},
         "run needs --scene, --script"},
        {{QStringLiteral("demo")}, "demo needs --plugin"},
    };
    for (const auto& item : cases) {
        CHostCommand command;
        QString error;
        EXPECT_EQ(QV::kInvalidArg, CCommandLine::Parse(item.m_kArgs, command, error)) << item.m_szError;
        EXPECT_TRUE(error.contains(QString::fromUtf8(item.m_szError))) << error.toStdString();
    }
}

} // namespace
