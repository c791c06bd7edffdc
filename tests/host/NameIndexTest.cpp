#include "CNameIndex.h"
#include "CScene.h"

#include <QHash>
#include <QSet>
#include <QStringList>

#include <gtest/gtest.h>

#include <random>
#include <vector>

using namespace MV::Host;

namespace {

// The plain rule, walked the slow way: base, then base_1, base_2, ... until a name is neither
// used nor carried by a scene object outside the caller's own ones.
QString NaiveUnique(const std::vector<QString>& names, const QSet<int>& own, const QSet<QString>& used,
                    const QString& base)
{
    auto taken = [&](const QString& name) {
        if (used.contains(name)) {
            return true;
        }
        for (int i = 0; i < static_cast<int>(names.size()); ++i) {
            if (names[static_cast<size_t>(i)] == name && !own.contains(i)) {
                return true;
            }
        }
        return false;
    };
    QString name = base;
    for (int suffix = 1; taken(name); ++suffix) {
        name = base + QStringLiteral("_%1").arg(suffix);
    }
    return name;
}

QHash<QString, int> OwnNames(const std::vector<QString>& names, const QSet<int>& own)
{
    QHash<QString, int> counts;
    for (int index : own) {
        ++counts[names[static_cast<size_t>(index)]];
    }
    return counts;
}

TEST(hostNameIndex, SuffixesAreReadOnlyInTheFormTheyAreWritten)
{
    const struct
    {
        const char* m_szName;
        const char* m_szBase;
        int m_iSuffix;
    } cases[] = {
        {"A_1", "A", 1},     {"A_12", "A", 12}, {"A_1_1", "A_1", 1}, {"A_1_1", "A", 0},
        {"A_01", "A", 0},    {"A_0", "A", 0},   {"A_", "A", 0},      {"A1", "A", 0},
        {"B_1", "A", 0},     {"A_1x", "A", 0},  {"A_99999999999", "A", 0}, {"A", "A", 0},
        {"Ä b_3", "Ä b", 3},
    };
    for (const auto& item : cases) {
        EXPECT_EQ(item.m_iSuffix, CNameIndex::SuffixOf(QString::fromUtf8(item.m_szName), QString::fromUtf8(item.m_szBase)))
            << item.m_szName << " / " << item.m_szBase;
    }
}

TEST(hostNameIndex, AnswersLikeTheFullWalk)
{
    const struct
    {
        const char* m_szCase;
        QStringList m_kSceneNames;
        QList<int> m_kOwn;
        QStringList m_kUsed;
        const char* m_szBase;
        const char* m_szExpected;
    } cases[] = {
        {"free base", {"X"}, {}, {}, "A", "A"},
        {"base held by another", {"A"}, {}, {}, "A", "A_1"},
        {"base held by the caller", {"A"}, {0}, {}, "A", "A"},
        {"base held by the caller and another", {"A", "A"}, {0}, {}, "A", "A_1"},
        {"base used", {}, {}, {"A"}, "A", "A_1"},
        {"base used though the caller holds it", {"A"}, {0}, {"A"}, "A", "A_1"},
        {"gap in the scene", {"A", "A_1", "A_3"}, {}, {}, "A", "A_2"},
        {"caller's own suffix below the others", {"A", "A_1", "A_2"}, {1}, {}, "A", "A_1"},
        {"caller's own suffix that is used", {"A", "A_1", "A_2"}, {1}, {"A_1"}, "A", "A_3"},
        {"leading zero is another name", {"A", "A_01"}, {}, {}, "A", "A_1"},
        {"nested suffix", {"A_1"}, {}, {}, "A_1", "A_1_1"},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(item.m_szCase);
        CNameIndex index;
        std::vector<QString> names;
        for (const QString& name : item.m_kSceneNames) {
            index.AddSceneName(name, static_cast<int>(names.size()));
            names.push_back(name);
        }
        QSet<QString> used;
        for (const QString& name : item.m_kUsed) {
            index.MarkUsed(name);
            used.insert(name);
        }
        const QSet<int> own(item.m_kOwn.begin(), item.m_kOwn.end());
        const QString base = QString::fromUtf8(item.m_szBase);
        EXPECT_EQ(NaiveUnique(names, own, used, base), QString::fromUtf8(item.m_szExpected));
        EXPECT_EQ(index.MakeUnique(base, OwnNames(names, own), QString()), QString::fromUtf8(item.m_szExpected));
        EXPECT_TRUE(index.IsUsed(QString::fromUtf8(item.m_szExpected)));
    }
}

// Renames free names below a hint, owners change from call to call, exports mark names:
// the index must answer exactly as the full walk. Many short runs over small scenes, so that
// names are often freed again after a call passed over them.
TEST(hostNameIndex, KeepsTheWalksAnswersThroughRenamesAddsAndExports)
{
    const QStringList pool = {QStringLiteral("A"),   QStringLiteral("A_1"), QStringLiteral("A_2"),
                              QStringLiteral("A_3"), QStringLiteral("A_5"), QStringLiteral("A_1_1"),
                              QStringLiteral("B"),   QStringLiteral("B_1"), QStringLiteral("A_01"),
                              QStringLiteral("X"),   QStringLiteral("Y")};
    const QStringList bases = {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("A_1")};
    std::mt19937 random(20240611u);
    auto pick = [&](int count) { return static_cast<int>(random() % static_cast<unsigned int>(count)); };

    int answers = 0;
    int freedBelowAnAnswer = 0;
    for (int run = 0; run < 400; ++run) {
        CNameIndex index;
        std::vector<QString> names;
        QSet<QString> used;
        QString lastAnswer;
        for (int round = 0; round < 30; ++round) {
            const int what = pick(10);
            if ((what < 2 && names.size() < 6) || names.empty()) {
                const QString name = pool.at(pick(pool.size()));
                index.AddSceneName(name, static_cast<int>(names.size()));
                names.push_back(name);
            } else if (what < 6) {
                const int at = pick(static_cast<int>(names.size()));
                const QString name = pool.at(pick(pool.size()));
                const QString old = names[static_cast<size_t>(at)];
                index.RemoveSceneName(old, at);
                names[static_cast<size_t>(at)] = name;
                index.AddSceneName(name, at);
                if (!lastAnswer.isEmpty() && old < lastAnswer && !used.contains(old)) {
                    ++freedBelowAnAnswer;
                }
            } else if (what < 7) {
                const QString name = pool.at(pick(pool.size()));
                index.MarkUsed(name);
                used.insert(name);
            } else {
                QSet<int> own;
                for (int n = pick(3); n > 0; --n) {
                    own.insert(pick(static_cast<int>(names.size())));
                }
                const QString base = bases.at(pick(bases.size()));
                const QString expected = NaiveUnique(names, own, used, base);
                ASSERT_EQ(expected, index.MakeUnique(base, OwnNames(names, own), QString()))
                    << "run " << run << ", round " << round;
                used.insert(expected);
                lastAnswer = expected;
                ++answers;
            }
            const QString probe = pool.at(pick(pool.size()));
            int first = -1;
            for (int i = 0; i < static_cast<int>(names.size()) && first < 0; ++i) {
                if (names[static_cast<size_t>(i)] == probe) {
                    first = i;
                }
            }
            ASSERT_EQ(first, index.FirstHolder(probe)) << "run " << run << ", round " << round;
        }
    }
    // The mix must really exercise what it is for.
    EXPECT_GT(answers, 2000);
    EXPECT_GT(freedBelowAnAnswer, 100);
}

TEST(hostNameIndex, SceneKeepsTheIndexThroughAddsAndRenames)
{
    CScene scene;
    QString error;
    ASSERT_EQ(QV::kOk, scene.Parse(R"({"objects": [{"id": "a", "name": "Same"}, {"id": "b", "name": "Same"}]})", error));
    EXPECT_EQ(0, scene.Names().FirstHolder(QStringLiteral("Same")));
    scene.RenameObject(0, QStringLiteral("Other"));
    EXPECT_EQ(1, scene.Names().FirstHolder(QStringLiteral("Same")));
    EXPECT_EQ(0, scene.Names().FirstHolder(QStringLiteral("Other")));

    CSceneObject added;
    added.m_strId = QStringLiteral("c");
    added.m_strName = QStringLiteral("Other");
    ASSERT_EQ(2, scene.AddObject(added));
    EXPECT_EQ((std::vector<int>{0, 2}), scene.Names().Holders(QStringLiteral("Other")));
    scene.Names().MarkUsed(QStringLiteral("Handed"), QStringLiteral("c"));
    EXPECT_EQ(QStringLiteral("c"), scene.Names().OwnerOfUsed(QStringLiteral("Handed")));

    // A new content replaces the scene names; names handed out stay handed out.
    ASSERT_EQ(QV::kOk, scene.Parse(R"({"objects": [{"id": "x", "name": "Fresh"}]})", error));
    EXPECT_EQ(-1, scene.Names().FirstHolder(QStringLiteral("Other")));
    EXPECT_EQ(0, scene.Names().FirstHolder(QStringLiteral("Fresh")));
    EXPECT_TRUE(scene.Names().IsUsed(QStringLiteral("Handed")));
}

} // namespace
