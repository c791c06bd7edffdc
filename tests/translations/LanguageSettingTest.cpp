// The reference host's language setting: the scene's "language" and --language.
#include "CCommandLine.h"
#include "CReferenceHost.h"
#include "CScene.h"

#include <gtest/gtest.h>

#include <memory>

using namespace MV::Host;

namespace {

QStringList Args(std::initializer_list<const char*> args)
{
    QStringList list;
    for (const char* arg : args) {
        list << QString::fromUtf8(arg);
    }
    return list;
}

TEST(translationsSetting, CommandLineTakesALanguageCodeAsItIs)
{
    const struct
    {
        QStringList m_kArgs;
        QV::Result m_eResult;
        const char* m_szLanguage; // or the error
    } cases[] = {
        {Args({"run", "--plugin", "/m.so", "--scene", "s", "--script", "t", "--report", "r", "--language", "en"}), QV::kOk, "en"},
        {Args({"demo", "--plugin", "/m.so", "--language", "pt-BR"}), QV::kOk, "pt-BR"},
        {Args({"demo", "--plugin", "/m.so"}), QV::kOk, ""},
        {Args({"demo", "--plugin", "/m.so", "--language"}), QV::kInvalidArg, "--language needs a value"},
        {Args({"demo", "--plugin", "/m.so", "--language", "../en"}), QV::kInvalidArg, "--language needs a language code"},
        {Args({"demo", "--plugin", "/m.so", "--language", "en", "--language", "de"}), QV::kInvalidArg,
         "--language is given twice"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_kArgs.join(QLatin1Char(' ')).toStdString());
        CHostCommand command;
        QString error;
        ASSERT_EQ(c.m_eResult, CCommandLine::Parse(c.m_kArgs, command, error)) << error.toStdString();
        if (c.m_eResult == QV::kOk) {
            // Not a path: the run changes folders, a language must not become one.
            EXPECT_EQ(QString::fromUtf8(c.m_szLanguage), command.m_strLanguage);
        } else {
            EXPECT_TRUE(error.contains(QString::fromUtf8(c.m_szLanguage))) << error.toStdString();
        }
    }
}

TEST(translationsSetting, SceneLanguageIsWhatTheHostAnswers)
{
    const struct
    {
        const char* m_szScene;
        const char* m_szLanguage; // or the error
        bool m_bValid;
    } cases[] = {
        {R"({})", "", true},
        {R"({"language": "en"})", "en", true},
        {R"({"language": "zh_TW"})", "zh_TW", true},
        {R"({"language": ""})", "", true},
        {R"({"language": 7})", "top level: \"language\" must be a string", false},
        {R"({"language": "en/../x"})", "\"language\" must be empty or a language code", false},
        {R"({"language": "_en"})", "\"language\" must be empty or a language code", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_szScene);
        auto scene = std::make_unique<CScene>();
        QString error;
        const QV::Result result = scene->Parse(QByteArray(c.m_szScene), error);
        if (!c.m_bValid) {
            EXPECT_EQ(QV::kInvalidArg, result);
            EXPECT_TRUE(error.contains(QString::fromUtf8(c.m_szLanguage))) << error.toStdString();
            continue;
        }
        ASSERT_EQ(QV::kOk, result) << error.toStdString();
        CReferenceHost host(std::move(scene));
        EXPECT_EQ(QString::fromUtf8(c.m_szLanguage), host.Ui()->GetLanguage());
    }
}

TEST(translationsSetting, AFailingLanguageQueryAnswersNone)
{
    auto scene = std::make_unique<CScene>();
    QString error;
    ASSERT_EQ(QV::kOk, scene->Parse(R"({"language": "en"})", error));
    CReferenceHost host(std::move(scene));
    ASSERT_EQ(QV::kOk, host.SetFailure(QStringLiteral("GetLanguage"), QV::kFail));
    EXPECT_TRUE(host.Ui()->GetLanguage().isEmpty());
    EXPECT_EQ(QStringLiteral("GetLanguage"), host.CallLog().Records().last().m_strOperation);
}

} // namespace
