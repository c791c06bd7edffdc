// The plug-in's translator over the MVGoZBrush.rcc the build made: which host languages
// install the English translation, and that the .qm in it carries every entry of the .ts.
#include "CPluginTranslator.h"
#include "CTsCatalog.h"

#include <QCoreApplication>
#include <QResource>
#include <QTranslator>

#include <gtest/gtest.h>

using MV::CPluginTranslator;
using namespace MV::Test;

namespace {

const char kContext[] = "MV::CGoZBrushPlugin";
const char kKey[] = "[MVGoZBursh] Please install ZBrush";

class translationsTranslator : public ::testing::Test
{
protected:
    // Registered as the plug-in does, so the translator finds its folder.
    void SetUp() override { ASSERT_TRUE(QResource::registerResource(m_strRcc)) << m_strRcc.toStdString(); }
    void TearDown() override { QResource::unregisterResource(m_strRcc); }
    static QString Shown() { return QCoreApplication::translate(kContext, kKey); }

    const QString m_strRcc = QStringLiteral(MVGOZ_PLUGIN_DIR "/MVGoZBrush.rcc");
};

TEST_F(translationsTranslator, HostLanguagePicksTheTranslationOrNoneAndEachReplacesTheOneBefore)
{
    const QString english = English(kContext, kKey);
    ASSERT_FALSE(english.isEmpty());
    const struct { const char* m_szLanguage; bool m_bInstalled; } cases[] = {
        {"", false},
        {"en", true},
        {"de", false}, // no German translation: the keys show
        {"en_GB", true}, // no British file: the English one
        {"../translations/MVGoZBrush_en", false},
        {"en-US", true},
        {"en/../en", false},
        {"EN ", false},
    };
    {
        CPluginTranslator translator;
        for (const auto& c : cases) {
            SCOPED_TRACE(c.m_szLanguage);
            EXPECT_EQ(c.m_bInstalled, translator.Install(QString::fromUtf8(c.m_szLanguage)));
            EXPECT_EQ(c.m_bInstalled, translator.IsInstalled());
            EXPECT_EQ(c.m_bInstalled ? english : QString::fromLatin1(kKey), Shown());
        }
        ASSERT_TRUE(translator.Install(QStringLiteral("en")));
        translator.Remove();
        EXPECT_EQ(QString::fromLatin1(kKey), Shown()) << "removed, the key shows again";
        ASSERT_TRUE(translator.Install(QStringLiteral("en")));
    }
    EXPECT_EQ(QString::fromLatin1(kKey), Shown()) << "a destroyed translator is no longer installed";
}

TEST_F(translationsTranslator, TheBuiltQmCarriesEveryEntryOfTheTs)
{
    QTranslator qm;
    ASSERT_TRUE(qm.load(QStringLiteral("MVGoZBrush_en"), CPluginTranslator::Folder()));
    const QMap<QString, CTsEntry> entries = CommittedTs();
    ASSERT_GT(entries.size(), 50);
    QStringList problems;
    for (const CTsEntry& entry : entries) {
        const QByteArray comment = entry.m_strComment.toUtf8();
        const QString shown = qm.translate(entry.m_strContext.toUtf8(), entry.m_strSource.toUtf8(),
                                           comment.isEmpty() ? nullptr : comment.constData());
        if (shown != entry.m_strTranslation) {
            problems << entry.Describe() + QStringLiteral(" -> \"") + shown + QLatin1Char('"');
        }
    }
    EXPECT_TRUE(problems.isEmpty()) << "the .qm in MVGoZBrush.rcc is not the .ts:\n"
                                    << problems.join(QLatin1Char('\n')).toStdString();
}

} // namespace
