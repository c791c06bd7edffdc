// The English catalog against the code: every text the plug-in shows has a finished
// entry, and no entry outlives its text.
#include "CTsCatalog.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

using MV::Test::CTsCatalog;
using MV::Test::CTsEntry;

namespace {

const QStringList kTags = {QStringLiteral("[MVGoZBursh]"), QStringLiteral("[MVGOZBursh]")};

QStringList TranslationInputs()
{
    return QStringLiteral(MVGOZ_TRANSLATION_INPUTS).split(QLatin1Char('|'), Qt::SkipEmptyParts);
}

bool HasTag(const QString& text)
{
    for (const QString& tag : kTags) {
        if (text.contains(tag)) {
            return true;
        }
    }
    return false;
}

// lupdate's view of the code: every text that goes through Qt's translation.
bool ExtractFromCode(CTsCatalog& catalog, QString& error)
{
    QTemporaryDir folder;
    if (!folder.isValid()) {
        error = folder.errorString();
        return false;
    }
    const QString ts = folder.filePath(QStringLiteral("code_en.ts"));
    QProcess lupdate;
    lupdate.setProcessChannelMode(QProcess::MergedChannels);
    lupdate.start(QStringLiteral(MVGOZ_LUPDATE),
                  QStringList{QStringLiteral("-silent"), QStringLiteral("-locations"), QStringLiteral("none"),
                              QStringLiteral("-no-obsolete")} +
                      TranslationInputs() + QStringList{QStringLiteral("-ts"), ts});
    if (!lupdate.waitForFinished(120000) || lupdate.exitStatus() != QProcess::NormalExit || lupdate.exitCode() != 0) {
        error = QStringLiteral("lupdate failed: ") + QString::fromLocal8Bit(lupdate.readAll()) + lupdate.errorString();
        return false;
    }
    return catalog.Load(ts, error);
}

// The string literals of C++ source text with their lines, comments left out. Escapes are
// kept as written, which is how lupdate and the .ts file spell the keys here.
QList<QPair<int, QString>> StringLiterals(const QString& code)
{
    QList<QPair<int, QString>> literals;
    int line = 1;
    for (int i = 0; i < code.size(); ++i) {
        const QChar c = code.at(i);
        if (c == QLatin1Char('\n')) {
            ++line;
        } else if (code.midRef(i, 2) == QLatin1String("//")) {
            while (i + 1 < code.size() && code.at(i + 1) != QLatin1Char('\n')) {
                ++i;
            }
        } else if (code.midRef(i, 2) == QLatin1String("/*")) {
            const int end = code.indexOf(QLatin1String("*/"), i + 2);
            const int stop = end < 0 ? code.size() : end + 2;
            line += code.midRef(i, stop - i).count(QLatin1Char('\n'));
            i = stop - 1;
        } else if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
            QString text;
            int j = i + 1;
            for (; j < code.size() && code.at(j) != c && code.at(j) != QLatin1Char('\n'); ++j) {
                if (code.at(j) == QLatin1Char('\\') && j + 1 < code.size()) {
                    text += code.at(j);
                    ++j;
                }
                text += code.at(j);
            }
            if (c == QLatin1Char('"')) {
                literals.append({line, text});
            }
            i = j;
        }
    }
    return literals;
}

class translationsCatalog : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_pCode = std::make_unique<CTsCatalog>();
        s_pCommitted = std::make_unique<CTsCatalog>();
        s_strError.clear();
        if (ExtractFromCode(*s_pCode, s_strError)) {
            s_pCommitted->Load(QStringLiteral(MVGOZ_TS_FILE), s_strError);
        }
    }
    static void TearDownTestSuite()
    {
        s_pCode.reset();
        s_pCommitted.reset();
    }
    void SetUp() override { ASSERT_TRUE(s_strError.isEmpty()) << s_strError.toStdString(); }

    static std::unique_ptr<CTsCatalog> s_pCode;
    static std::unique_ptr<CTsCatalog> s_pCommitted;
    static QString s_strError;
};

std::unique_ptr<CTsCatalog> translationsCatalog::s_pCode;
std::unique_ptr<CTsCatalog> translationsCatalog::s_pCommitted;
QString translationsCatalog::s_strError;

TEST_F(translationsCatalog, EveryTextInTheCodeHasAFinishedEnglishEntry)
{
    // The forms alone hold dozens of texts: an extraction that finds few is broken, not done.
    ASSERT_GT(s_pCode->Entries().size(), 50);
    QStringList problems;
    for (const CTsEntry& text : s_pCode->Entries()) {
        const CTsEntry* entry = s_pCommitted->Find(text.m_strContext, text.m_strSource, text.m_strComment);
        if (entry == nullptr) {
            problems << QStringLiteral("no entry: ") + text.Describe();
        } else if (!entry->IsFinished()) {
            problems << QStringLiteral("not finished (%1): ").arg(entry->m_strType.isEmpty() ? QStringLiteral("empty") : entry->m_strType) +
                            text.Describe();
        }
    }
    EXPECT_TRUE(problems.isEmpty()) << "Run the MVGoZBrush_lupdate target and translate these in "
                                    << MVGOZ_TS_FILE << ":\n"
                                    << problems.join(QLatin1Char('\n')).toStdString();
}

TEST_F(translationsCatalog, NoEntryOutlivesItsText)
{
    QStringList stale;
    for (const CTsEntry& entry : s_pCommitted->Entries()) {
        if (s_pCode->Find(entry.m_strContext, entry.m_strSource, entry.m_strComment) == nullptr) {
            stale << entry.Describe();
        }
    }
    EXPECT_TRUE(stale.isEmpty()) << "entries whose text the code no longer has (run MVGoZBrush_lupdate):\n"
                                 << stale.join(QLatin1Char('\n')).toStdString();
}

TEST_F(translationsCatalog, EnglishTurnsEveryKeyIntoReadableText)
{
    static const QRegularExpression kPlaceholder(QStringLiteral("%L?\\d+"));
    auto placeholders = [](const QString& text) {
        QStringList found;
        for (auto it = kPlaceholder.globalMatch(text); it.hasNext();) {
            found << it.next().captured();
        }
        found.sort();
        return found;
    };
    QStringList problems;
    for (const CTsEntry& entry : s_pCommitted->Entries()) {
        const QString& english = entry.m_strTranslation;
        if (HasTag(english)) {
            problems << QStringLiteral("keeps the tag: ") + entry.Describe();
        }
        if (HasTag(entry.m_strSource) && english == entry.m_strSource) {
            problems << QStringLiteral("repeats the key: ") + entry.Describe();
        }
        if (english != english.trimmed()) {
            problems << QStringLiteral("starts or ends with white space: ") + entry.Describe();
        }
        if (placeholders(english) != placeholders(entry.m_strSource)) {
            problems << QStringLiteral("placeholders differ: ") + entry.Describe();
        }
    }
    EXPECT_TRUE(problems.isEmpty()) << problems.join(QLatin1Char('\n')).toStdString();
}

// lupdate sees only texts that reach Qt's translation; a tagged text handed to the host
// any other way would show as a raw key in every language.
TEST_F(translationsCatalog, EveryTaggedTextInTheCodeIsATranslationKey)
{
    const QStringList keys = s_pCommitted->Sources();
    QStringList problems;
    int tagged = 0;
    for (const QString& input : TranslationInputs()) {
        if (!QFileInfo(input).isDir()) {
            continue;
        }
        QDirIterator files(input, {QStringLiteral("*.cpp"), QStringLiteral("*.h")}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
            for (const auto& literal : StringLiterals(QString::fromUtf8(file.readAll()))) {
                if (!HasTag(literal.second)) {
                    continue;
                }
                ++tagged;
                if (!keys.contains(literal.second)) {
                    problems << QStringLiteral("%1:%2: \"%3\"").arg(file.fileName()).arg(literal.first).arg(literal.second);
                }
            }
        }
    }
    // The send table alone has seven tagged texts: finding fewer means the scan is broken.
    EXPECT_GE(tagged, 7);
    EXPECT_TRUE(problems.isEmpty()) << "tagged texts that do not go through tr()/translate():\n"
                                    << problems.join(QLatin1Char('\n')).toStdString();
}

} // namespace
