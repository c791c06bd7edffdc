// The reference host's language setting: the scene's "language" and --language.
#include "CCommandLine.h"
#include "CReferenceHost.h"
#include "CScene.h"

#include <gtest/gtest.h>

#include <memory>

using namespace MV::Host;

namespace {

TEST(translationsSetting, CommandLineTakesALanguageCodeAsItIs)
{
    const struct
    {
        const char* m_szArgs;
        QV::Result m_eResult;
        const char* m_szLanguage; // or the error
    } cases[] = {
        {"run --plugin /m.so --scene s --script t --report r --language en", QV::kOk, "en"},
        {"demo --plugin /m.so --language pt-BR", QV::kOk, "pt-BR"},
        {"demo --plugin /m.so", QV::kOk, ""},
        {"demo --plugin /m.so --language", QV::kInvalidArg, "--language needs a value"},
        {"demo --plugin /m.so --language ../en", QV::kInvalidArg, "--language needs a language code"},
        {"gui --language en", QV::kInvalidArg, "unknown option \"--language\" for gui"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_szArgs);
        CHostCommand command;
        QString error;
        ASSERT_EQ(c.m_eResult, CCommandLine::Parse(QString(c.m_szArgs).split(' '), command, error)) << error.toStdString();
        // Not a path: the run changes folders, a language must not become one.
        EXPECT_EQ(c.m_szLanguage, c.m_eResult == QV::kOk ? command.m_strLanguage : error.left(qstrlen(c.m_szLanguage)));
    }
}

TEST(translationsSetting, SceneLanguageIsWhatTheHostAnswersUnlessTheQueryFails)
{
    const struct
    {
        const char* m_szScene;
        const char* m_szLanguage; // or the error
        bool m_bValid;
    } cases[] = {
        {R"({})", "", true},
        {R"({"language": "zh_TW"})", "zh_TW", true},
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
        ASSERT_EQ(QV::kOk, host.SetFailure(QStringLiteral("GetLanguage"), QV::kFail));
        EXPECT_TRUE(host.Ui()->GetLanguage().isEmpty()) << "a failing query answers none";
        EXPECT_EQ(QStringLiteral("GetLanguage"), host.CallLog().Records().last().m_strOperation);
    }
}

} // namespace
