// The plug-in's translator over the MVGoZBrush.rcc the build made: which host languages
// install the English translation, and that the .qm in it carries every entry of the .ts.
#include "CPluginTranslator.h"
#include "CTsCatalog.h"

#include <QCoreApplication>
#include <QResource>
#include <QTranslator>

#include <gtest/gtest.h>

using MV::CPluginTranslator;
using MV::Test::CTsCatalog;
using MV::Test::CTsEntry;

namespace {

const char kContext[] = "MV::CGoZBrushPlugin";
const char kKey[] = "[MVGoZBursh] Please install ZBrush";

QString Shown()
{
    return QCoreApplication::translate(kContext, kKey);
}

class translationsTranslator : public ::testing::Test
{
protected:
    void SetUp() override
    {
        // Registered as the plug-in does, so the translator finds its folder.
        ASSERT_TRUE(QResource::registerResource(m_strRcc)) << m_strRcc.toStdString();
        QString error;
        ASSERT_TRUE(m_kCatalog.Load(QStringLiteral(MVGOZ_TS_FILE), error)) << error.toStdString();
        const CTsEntry* entry = m_kCatalog.Find(QString::fromLatin1(kContext), QString::fromLatin1(kKey));
        ASSERT_NE(nullptr, entry);
        m_strEnglish = entry->m_strTranslation;
    }
    void TearDown() override { QResource::unregisterResource(m_strRcc); }

    const QString m_strRcc = QStringLiteral(MVGOZ_PLUGIN_DIR "/MVGoZBrush.rcc");
    CTsCatalog m_kCatalog;
    QString m_strEnglish;
};

TEST_F(translationsTranslator, HostLanguagePicksTheTranslationOrNone)
{
    const struct
    {
        const char* m_szLanguage;
        bool m_bInstalled;
    } cases[] = {
        {"", false},
        {"en", true},
        {"en_GB", true}, // no British file: the English one
        {"en-US", true},
        {"de", false}, // no German translation: the keys show
        {"../translations/MVGoZBrush_en", false},
        {"en/../en", false},
        {"EN ", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_szLanguage);
        CPluginTranslator translator;
        EXPECT_EQ(c.m_bInstalled, translator.Install(QString::fromUtf8(c.m_szLanguage)));
        EXPECT_EQ(c.m_bInstalled, translator.IsInstalled());
        EXPECT_EQ(c.m_bInstalled ? m_strEnglish : QString::fromLatin1(kKey), Shown());
        translator.Remove();
        EXPECT_EQ(QString::fromLatin1(kKey), Shown()) << "removed, the key shows again";
    }
}

TEST_F(translationsTranslator, AnotherLanguageReplacesTheInstalledOne)
{
    CPluginTranslator translator;
    ASSERT_TRUE(translator.Install(QStringLiteral("en")));
    ASSERT_EQ(m_strEnglish, Shown());
    EXPECT_FALSE(translator.Install(QStringLiteral("de")));
    EXPECT_EQ(QString::fromLatin1(kKey), Shown());
    {
        CPluginTranslator scoped;
        ASSERT_TRUE(scoped.Install(QStringLiteral("en")));
    }
    EXPECT_EQ(QString::fromLatin1(kKey), Shown()) << "a destroyed translator is no longer installed";
}

TEST_F(translationsTranslator, TheBuiltQmCarriesEveryEntryOfTheTs)
{
    QTranslator qm;
    ASSERT_TRUE(qm.load(QStringLiteral("MVGoZBrush_en"), CPluginTranslator::Folder()));
    ASSERT_GT(m_kCatalog.Entries().size(), 50);
    QStringList problems;
    for (const CTsEntry& entry : m_kCatalog.Entries()) {
        const QString shown = qm.translate(entry.m_strContext.toUtf8().constData(), entry.m_strSource.toUtf8().constData(),
                                           entry.m_strComment.isEmpty() ? nullptr : entry.m_strComment.toUtf8().constData());
        if (shown != entry.m_strTranslation) {
            problems << entry.Describe() + QStringLiteral(" -> \"") + shown + QLatin1Char('"');
        }
    }
    EXPECT_TRUE(problems.isEmpty()) << "the .qm in MVGoZBrush.rcc is not the .ts:\n"
                                    << problems.join(QLatin1Char('\n')).toStdString();
}

} // namespace
