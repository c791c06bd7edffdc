#include "CNameIndex.h"
#include "CScene.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

using namespace MV::Host;

namespace {

// An index beside the plain rule walked the slow way: base, then base_1, base_2, ... until a
// name is neither used nor carried by a scene object outside the caller's own ones.
struct CNames
{
    CNameIndex m_kIndex;
    std::vector<QString> m_kNames;
    QSet<QString> m_kUsed;

    void Add(const QString& name)
    {
        m_kIndex.AddSceneName(name, static_cast<int>(m_kNames.size()));
        m_kNames.push_back(name);
    }
    void Use(const QString& name)
    {
        m_kIndex.MarkUsed(name);
        m_kUsed.insert(name);
    }
    QString Walk(const QSet<int>& own, const QString& base) const
    {
        const auto taken = [&](const QString& name) {
            for (size_t i = 0; i < m_kNames.size(); ++i) {
                if (m_kNames[i] == name && !own.contains(static_cast<int>(i))) {
                    return true;
                }
            }
            return m_kUsed.contains(name);
        };
        QString name = base;
        for (int suffix = 1; taken(name); ++suffix) {
            name = base + QStringLiteral("_%1").arg(suffix);
        }
        return name;
    }
    // The index's answer, which the walk must have given too; marks it used in both.
    QString Unique(const QSet<int>& own, const QString& base)
    {
        QHash<QString, int> ownNames;
        for (int index : own) {
            ++ownNames[m_kNames[static_cast<size_t>(index)]];
        }
        const QString walked = Walk(own, base);
        const QString answer = m_kIndex.MakeUnique(base, ownNames, QString());
        EXPECT_EQ(walked, answer);
        m_kUsed.insert(walked);
        return answer;
    }
};

TEST(hostNameIndex, AnswersLikeTheFullWalk)
{
    const struct { const char* m_szCase; QStringList m_kScene; QList<int> m_kOwn; QStringList m_kUsed; const char* m_szBase, *m_szExpected; } cases[] = {
        {"base held by the caller", {"A"}, {0}, {}, "A", "A"},
        {"base held by the caller and another", {"A", "A"}, {0}, {}, "A", "A_1"},
        {"base used though the caller holds it", {"A"}, {0}, {"A"}, "A", "A_1"},
        {"gap in the scene", {"A", "A_1", "A_3"}, {}, {}, "A", "A_2"},
        {"caller's own suffix below the others", {"A", "A_1", "A_2"}, {1}, {}, "A", "A_1"},
        {"caller's own suffix that is used", {"A", "A_1", "A_2"}, {1}, {"A_1"}, "A", "A_3"},
        {"leading zero, overflow and nesting are other names", {"A", "A_01", "A_99999999999", "A_1_1"}, {}, {}, "A", "A_1"},
        {"nested suffix", {"A_1"}, {}, {}, "A_1", "A_1_1"},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(item.m_szCase);
        CNames names;
        for (const QString& name : item.m_kScene) {
            names.Add(name);
        }
        for (const QString& name : item.m_kUsed) {
            names.Use(name);
        }
        const QString answer = names.Unique(QSet<int>(item.m_kOwn.begin(), item.m_kOwn.end()), QString::fromUtf8(item.m_szBase));
        EXPECT_EQ(QString::fromUtf8(item.m_szExpected), answer);
        EXPECT_TRUE(names.m_kIndex.IsUsed(answer));
    }
}

// Renames free names below a hint, owners change from call to call, exports mark names:
// the index must answer exactly as the full walk. Many short runs over small scenes, so that
// names are often freed again after a call passed over them.
TEST(hostNameIndex, KeepsTheWalksAnswersThroughRenamesAddsAndExports)
{
    const QStringList pool = {"A", "A_1", "A_2", "A_3", "A_5", "A_1_1", "B", "B_1", "A_01", "A_1x", "X", "Y"};
    const QStringList bases = {"A", "B", "A_1"};
    std::mt19937 random(20240611u);
    auto pick = [&](int count) { return static_cast<int>(random() % static_cast<unsigned int>(count)); };
    int answers = 0;
    int freedBelowAnAnswer = 0;
    for (int run = 0; run < 400 && !::testing::Test::HasFailure(); ++run) {
        CNames names;
        QString lastAnswer;
        for (int round = 0; round < 30; ++round) {
            SCOPED_TRACE(QStringLiteral("run %1, round %2").arg(run).arg(round).toStdString());
            const int what = pick(10);
            if ((what < 2 && names.m_kNames.size() < 6) || names.m_kNames.empty()) {
                names.Add(pool.at(pick(pool.size())));
            } else if (what < 6) {
                const int at = pick(static_cast<int>(names.m_kNames.size()));
                QString& held = names.m_kNames[static_cast<size_t>(at)];
                names.m_kIndex.RemoveSceneName(held, at);
                freedBelowAnAnswer += !lastAnswer.isEmpty() && held < lastAnswer && !names.m_kUsed.contains(held) ? 1 : 0;
                held = pool.at(pick(pool.size()));
                names.m_kIndex.AddSceneName(held, at);
            } else if (what < 7) {
                names.Use(pool.at(pick(pool.size())));
            } else {
                QSet<int> own;
                for (int n = pick(3); n > 0; --n) {
                    own.insert(pick(static_cast<int>(names.m_kNames.size())));
                }
                lastAnswer = names.Unique(own, bases.at(pick(bases.size())));
                ++answers;
            }
            const QString probe = pool.at(pick(pool.size()));
            const auto first = std::find(names.m_kNames.begin(), names.m_kNames.end(), probe);
            EXPECT_EQ(first == names.m_kNames.end() ? -1 : static_cast<int>(first - names.m_kNames.begin()),
                      names.m_kIndex.FirstHolder(probe));
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
    scene.RenameObject(0, QStringLiteral("Other"));
    EXPECT_EQ(1, scene.Names().FirstHolder(QStringLiteral("Same")));
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
