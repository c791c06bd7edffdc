#include "CGoZReturnReader.h"
#include "ReceiveFixture.h"

using namespace MV;
using namespace MV::Test;

namespace {

class ReturnReader : public ReceiveFixture
{
public:
    QV::Result Read(QStringList& names) const
    {
        QV::CArrayList<std::wstring> files;
        const QV::Result result = m_kReader.ReadGoZMesh(files);
        names = ToStrings(files);
        return result;
    }

    CGoZReturnReader m_kReader;
};

TEST_F(ReturnReader, ObjectListsGiveOneGoZFilePerWordInFileOrder)
{
    const QByteArray name95(95, 'n');
    const struct {
        const char* what;
        QByteArray list;
        QStringList expected;
    } cases[] = {
        {"three lines", "Body\nEye\nTeeth\n", {"Body.GoZ", "Eye.GoZ", "Teeth.GoZ"}},
        {"blank inside a line", "My Mesh\n", {"My.GoZ", "Mesh.GoZ"}},
        {"empty list", "", {}},
        {"tabs, CR LF and runs of blanks", "\t A\r\n\r\n B \t\vC", {"A.GoZ", "B.GoZ", "C.GoZ"}},
        {"duplicates kept", "Rock\nRock\n", {"Rock.GoZ", "Rock.GoZ"}},
        {"Latin-1 bytes", "Zo\xEB\n", {QStringLiteral("Zo\u00EB.GoZ")}},
        {"95 bytes fit", name95 + "\n", {QString::fromLatin1(name95) + ".GoZ"}},
        {"96 bytes are skipped whole", "A " + name95 + "x B", {"A.GoZ", "B.GoZ"}},
        {"200 bytes are skipped, never cut", "Before " + QByteArray(200, 'L') + " After", {"Before.GoZ", "After.GoZ"}},
        {"a NUL byte skips its word", QByteArray("Ok Ba\0d Fine", 12), {"Ok.GoZ", "Fine.GoZ"}},
    };
    for (const auto& c : cases) {
        WriteList(c.list);
        QStringList names;
        EXPECT_EQ(Read(names), QV::kOk) << c.what;
        EXPECT_EQ(names, c.expected) << c.what;
    }
}

TEST_F(ReturnReader, InformationFileRulesDecideWhichListIsRead)
{
    const struct {
        const char* what;
        QByteArray info;
        QString listName;
        QV::Result result;
        QStringList expected;
    } cases[] = {
        {"lower-case key, quoted value", "goz_object_list = \"My List.txt\"\n", "My List.txt", QV::kOk, {"Body.GoZ"}},
        {"value with a sub-folder", "GOZ_OBJECT_LIST = sub/list.txt\n", "sub/list.txt", QV::kOk, {"Body.GoZ"}},
        {"no such key", "OTHER_KEY = GoZ_ObjectList.txt\n", "GoZ_ObjectList.txt", QV::kFail, {}},
        {"list file missing", "GOZ_OBJECT_LIST = Missing.txt\n", "GoZ_ObjectList.txt", QV::kFail, {}},
    };
    for (const auto& c : cases) {
        QDir(QLatin1String(kAppFolder)).removeRecursively();
        WriteList("Body\n", c.info, c.listName);
        QStringList names;
        EXPECT_EQ(Read(names), c.result) << c.what;
        EXPECT_EQ(names, c.expected) << c.what;
    }
}

TEST_F(ReturnReader, NamesAreAppendedAfterWhatTheListHeldAndAFailureAddsNone)
{
    QV::CArrayList<std::wstring> files{L"Earlier.GoZ"};
    EXPECT_EQ(m_kReader.ReadGoZMesh(files), QV::kFail) << "no information file";
    EXPECT_EQ(ToStrings(files), QStringList{"Earlier.GoZ"});
    WriteList("Body\n");
    EXPECT_EQ(m_kReader.ReadGoZMesh(files), QV::kOk);
    EXPECT_EQ(ToStrings(files), (QStringList{"Earlier.GoZ", "Body.GoZ"}));
}

TEST_F(ReturnReader, ATenMegabyteWordIsSkippedWithoutOverrun)
{
    WriteList("First " + QByteArray(10 * 1024 * 1024, 'w') + " Last");
    QStringList names;
    ASSERT_EQ(Read(names), QV::kOk);
    EXPECT_EQ(names, (QStringList{"First.GoZ", "Last.GoZ"}));
}

TEST_F(ReturnReader, MotionNamesAreTheBaseNamesOfExactMvMotionPlusFiles)
{
    const auto motions = [this]() {
        QV::CArrayList<std::wstring> list;
        EXPECT_EQ(m_kReader.GetGoZRelatedMotionName(list), QV::kOk);
        QStringList names = ToStrings(list);
        names.sort();
        return names;
    };
    EXPECT_EQ(motions(), QStringList()) << "no project folder";
    for (const char* file : {"A.mvMotionPlus", "B.GoZ", "C.mvmotionplus", "D.MVMOTIONPLUS", "x.y.mvMotionPlus",
                             "mvMotionPlus", "E.mvMotionPlus.bak"}) {
        WriteFile(QLatin1String(kProjectFolder) + QLatin1String(file), "x");
    }
    QDir().mkpath(QLatin1String(kProjectFolder) + QStringLiteral("Folder.mvMotionPlus"));
    EXPECT_EQ(motions(), (QStringList{"A", "x.y"}));
}

} // namespace
