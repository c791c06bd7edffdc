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

    QStringList Motions() const
    {
        QV::CArrayList<std::wstring> motions;
        EXPECT_EQ(m_kReader.GetGoZRelatedMotionName(motions), QV::kOk);
        QStringList names = ToStrings(motions);
        names.sort();
        return names;
    }

    CGoZReturnReader m_kReader;
};

TEST_F(ReturnReader, ObjectListsGiveOneGoZFilePerWordInFileOrder)
{
    const QByteArray name95(95, 'n');
    struct Case
    {
        const char* what;
        QByteArray list;
        QStringList expected;
    };
    const Case cases[] = {
        {"three lines", "Body\nEye\nTeeth\n", {"Body.GoZ", "Eye.GoZ", "Teeth.GoZ"}},
        {"blank inside a line", "My Mesh\n", {"My.GoZ", "Mesh.GoZ"}},
        {"empty list", "", {}},
        {"tabs, CR LF and runs of blanks", "\t A\r\n\r\n B \t\vC", {"A.GoZ", "B.GoZ", "C.GoZ"}},
        {"duplicates kept", "Rock\nRock\n", {"Rock.GoZ", "Rock.GoZ"}},
        {"Latin-1 bytes", "Zo\xEB\n", {QStringLiteral("Zo\u00EB.GoZ")}},
        {"95 bytes fit", name95 + "\n", {QString::fromLatin1(name95) + ".GoZ"}},
        {"96 bytes are skipped whole", "A " + name95 + "x B", {"A.GoZ", "B.GoZ"}},
        {"200 bytes are skipped, never cut", "Before " + QByteArray(200, 'L') + " After",
         {"Before.GoZ", "After.GoZ"}},
        {"a NUL byte skips its word", QByteArray("Ok Ba\0d Fine", 12), {"Ok.GoZ", "Fine.GoZ"}},
    };
    for (const Case& c : cases) {
        WriteReturn(c.list);
        QStringList names;
        EXPECT_EQ(Read(names), QV::kOk) << c.what;
        EXPECT_EQ(names, c.expected) << c.what;
    }
}

TEST_F(ReturnReader, InformationFileRulesDecideWhichListIsRead)
{
    struct Case
    {
        const char* what;
        QByteArray info;
        QString listName;
        QV::Result result;
        QStringList expected;
    };
    const Case cases[] = {
        {"lower-case key, quoted value", "goz_object_list = \"My List.txt\"\n", "My List.txt", QV::kOk, {"Body.GoZ"}},
        {"value with a sub-folder", "GOZ_OBJECT_LIST = sub/list.txt\n", "sub/list.txt", QV::kOk,
         {"Body.GoZ"}},
        {"no such key", "OTHER_KEY = GoZ_ObjectList.txt\n", "GoZ_ObjectList.txt", QV::kFail, {}},
        {"list file missing", "GOZ_OBJECT_LIST = Missing.txt\n", "GoZ_ObjectList.txt", QV::kFail, {}},
    };
    for (const Case& c : cases) {
        QDir(QLatin1String(kAppFolder)).removeRecursively();
        WriteReturn("Body\n", c.info, c.listName);
        QStringList names;
        EXPECT_EQ(Read(names), c.result) << c.what;
        EXPECT_EQ(names, c.expected) << c.what;
    }
}

TEST_F(ReturnReader, MissingInformationFileFailsAndLeavesTheListAlone)
{
    QV::CArrayList<std::wstring> files{L"Earlier.GoZ"};
    EXPECT_EQ(m_kReader.ReadGoZMesh(files), QV::kFail);
    EXPECT_EQ(ToStrings(files), QStringList{"Earlier.GoZ"});
}

TEST_F(ReturnReader, NamesAreAppendedAfterWhatTheListHeld)
{
    WriteReturn("Body\n");
    QV::CArrayList<std::wstring> files{L"Earlier.GoZ"};
    EXPECT_EQ(m_kReader.ReadGoZMesh(files), QV::kOk);
    EXPECT_EQ(ToStrings(files), (QStringList{"Earlier.GoZ", "Body.GoZ"}));
}

TEST_F(ReturnReader, TenMegabyteListsAreReadWithoutOverrun)
{
    // A million short names, then one word of ten megabytes.
    QByteArray many;
    many.reserve(10 * 1024 * 1024);
    for (int i = 0; i < 1000000; ++i) {
        many += "Mesh" + QByteArray::number(i % 100000).rightJustified(5, '0') + '\n';
    }
    WriteReturn(many);
    QStringList names;
    ASSERT_EQ(Read(names), QV::kOk);
    ASSERT_EQ(names.size(), 1000000);
    EXPECT_EQ(names.first(), "Mesh00000.GoZ");
    EXPECT_EQ(names.last(), "Mesh99999.GoZ");

    WriteReturn("First " + QByteArray(10 * 1024 * 1024, 'w') + " Last");
    ASSERT_EQ(Read(names), QV::kOk);
    EXPECT_EQ(names, (QStringList{"First.GoZ", "Last.GoZ"}));
}

TEST_F(ReturnReader, MotionNamesAreTheBaseNamesOfExactMvMotionPlusFiles)
{
    EXPECT_EQ(Motions(), QStringList()) << "no project folder";

    for (const char* file : {"A.mvMotionPlus", "B.GoZ", "C.mvmotionplus", "D.MVMOTIONPLUS", "x.y.mvMotionPlus",
                             "mvMotionPlus", "E.mvMotionPlus.bak"}) {
        WriteProjectFile(QLatin1String(file));
    }
    QDir().mkpath(QLatin1String(kProjectFolder) + QStringLiteral("Folder.mvMotionPlus"));
    EXPECT_EQ(Motions(), (QStringList{"A", "x.y"}));
}

} // namespace
