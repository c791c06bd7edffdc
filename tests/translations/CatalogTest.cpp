// The English catalog against the code: every text the plug-in shows has a finished
// entry, and no entry outlives its text.
#include "CTsCatalog.h"

#include <QDirIterator>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace MV::Test;

namespace {

const QStringList kInputs = QStringLiteral(MVGOZ_TRANSLATION_INPUTS).split(QLatin1Char('|'), Qt::SkipEmptyParts);

bool HasTag(const QString& text)
{
    return text.contains(QLatin1String("[MVGoZBursh]")) || text.contains(QLatin1String("[MVGOZBursh]"));
}

QStringList Placeholders(const QString& text)
{
    static const QRegularExpression kPlaceholder(QStringLiteral("%L?\\d+"));
    QStringList found;
    for (auto it = kPlaceholder.globalMatch(text); it.hasNext();) {
        found << it.next().captured();
    }
    found.sort();
    return found;
}

TEST(translationsCatalog, EveryTextInTheCodeHasAFinishedReadableEntryAndNoEntryOutlivesItsText)
{
    // lupdate's view of the code: every text that goes through Qt's translation.
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const QString ts = folder.filePath(QStringLiteral("code_en.ts"));
    QProcess lupdate;
    lupdate.setProcessChannelMode(QProcess::MergedChannels);
    const QStringList options{"-silent", "-locations", "none", "-no-obsolete"};
    lupdate.start(QStringLiteral(MVGOZ_LUPDATE), options + kInputs + QStringList{"-ts", ts});
    ASSERT_TRUE(lupdate.waitForFinished(120000) && lupdate.exitStatus() == QProcess::NormalExit &&
                lupdate.exitCode() == 0)
        << lupdate.readAll().toStdString() << lupdate.errorString().toStdString();
    QMap<QString, CTsEntry> code;
    QString error;
    ASSERT_TRUE(LoadTs(ts, code, error)) << error.toStdString();
    const QMap<QString, CTsEntry> committed = CommittedTs();
    // The forms alone hold dozens of texts: an extraction that finds few is broken, not done.
    ASSERT_GT(code.size(), 50);

    QStringList problems;
    for (const CTsEntry& text : code) {
        const auto entry = committed.constFind(text.Key());
        if (entry == committed.constEnd() || !entry->IsFinished()) {
            problems << QStringLiteral("no finished entry: ") + text.Describe();
        }
    }
    for (const CTsEntry& entry : committed) {
        const QString& english = entry.m_strTranslation;
        const QStringList faults{
            code.contains(entry.Key()) ? QString() : QStringLiteral("the code no longer has the text"),
            HasTag(english) ? QStringLiteral("keeps the tag") : QString(),
            HasTag(entry.m_strSource) && english == entry.m_strSource ? QStringLiteral("repeats the key") : QString(),
            english != english.trimmed() ? QStringLiteral("starts or ends with white space") : QString(),
            Placeholders(english) != Placeholders(entry.m_strSource) ? QStringLiteral("other placeholders") : QString(),
        };
        for (const QString& fault : faults) {
            if (!fault.isEmpty()) {
                problems << fault + QStringLiteral(": ") + entry.Describe();
            }
        }
    }
    EXPECT_TRUE(problems.isEmpty()) << "Run the MVGoZBrush_lupdate target and translate in " << MVGOZ_TS_FILE << ":\n"
                                    << problems.join(QLatin1Char('\n')).toStdString();
}

// lupdate sees only texts that reach Qt's translation; a tagged text handed to the host
// any other way would show as a raw key in every language.
TEST(translationsCatalog, EveryTaggedTextInTheCodeIsATranslationKey)
{
    QStringList keys;
    for (const CTsEntry& entry : CommittedTs()) {
        keys << entry.m_strSource;
    }
    // Comments, character literals, and string literals with their escapes kept as written,
    // which is how lupdate and the .ts file spell the keys here.
    static const QRegularExpression kToken(
        QStringLiteral(R"re(//[^\n]*|/\*.*?\*/|'(?:[^'\\\n]|\\.)*'|"((?:[^"\\\n]|\\.)*)")re"),
        QRegularExpression::DotMatchesEverythingOption);
    QStringList problems;
    int tagged = 0;
    for (const QString& input : kInputs) {
        for (QDirIterator files(input, {"*.cpp", "*.h"}, QDir::Files, QDirIterator::Subdirectories); files.hasNext();) {
            QFile file(files.next());
            ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
            const QString source = QString::fromUtf8(file.readAll());
            for (auto it = kToken.globalMatch(source); it.hasNext();) {
                const QRegularExpressionMatch token = it.next();
                if (!HasTag(token.captured(1))) {
                    continue;
                }
                ++tagged;
                if (!keys.contains(token.captured(1))) {
                    problems << QStringLiteral("%1:%2: \"%3\"")
                                    .arg(file.fileName())
                                    .arg(source.leftRef(token.capturedStart()).count(QLatin1Char('\n')) + 1)
                                    .arg(token.captured(1));
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
