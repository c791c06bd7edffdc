#include "CGoZStandInFile.h"
#include "CZBrushReturn.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace MV::Host;

namespace {

const QByteArray kValid = "GOZ-STANDIN 1\nobject=lamp\nname=Desk_Lamp\nsplit=0\npose=2\n"
                          "vertices=4\nv 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1.5\n"
                          "faces=2\nf 0 1 2\nf 0 1 2 3\nend\n";

TEST(hostGoZFile, ReadsKeysMeshAndWritesTheSameBytesBack)
{
    CGoZStandInFile file;
    QString error;
    ASSERT_TRUE(CGoZStandInFile::Parse(kValid, file, error)) << error.toStdString();
    EXPECT_EQ(QStringLiteral("Desk_Lamp"), file.Value(QStringLiteral("name")));
    EXPECT_EQ(QStringLiteral("2"), file.Value(QStringLiteral("pose")));
    ASSERT_EQ(4, file.m_kMesh.m_kVertices.size());
    EXPECT_EQ(1.5, file.m_kMesh.m_kVertices[3][2]);
    EXPECT_EQ((QVector<int>{0, 1, 2, 3}), file.m_kMesh.m_kFaces[1]);
    EXPECT_EQ(kValid, file.Write());

    // CR LF line ends, as an editor on the other system may leave them, read the same.
    CGoZStandInFile crlf;
    QByteArray withCr = kValid;
    withCr.replace("\n", "\r\n");
    ASSERT_TRUE(CGoZStandInFile::Parse(withCr, crlf, error)) << error.toStdString();
    EXPECT_EQ(file.m_kMesh, crlf.m_kMesh);
}

TEST(hostGoZFile, EveryCutOfAValidFileIsRefused)
{
    // A file cut anywhere must never read as a smaller mesh.
    for (int size = 0; size < kValid.size(); ++size) {
        CGoZStandInFile file;
        file.SetValue(QStringLiteral("kept"), QStringLiteral("yes"));
        QString error;
        EXPECT_FALSE(CGoZStandInFile::Parse(kValid.left(size), file, error)) << "cut at " << size;
        EXPECT_EQ(QStringLiteral("yes"), file.Value(QStringLiteral("kept"))) << "a refused parse changes nothing";
    }
}

TEST(hostGoZFile, MalformedContentIsRefusedNamingTheLine)
{
    const struct
    {
        const char* m_szCase;
        QByteArray m_kBytes;
        const char* m_szError;
    } cases[] = {
        {"old header only", "GOZ-STANDIN 1\nobject=a\nname=a\n", "no \"vertices=\" line"},
        {"another format", "this is no mesh\n", "line 1: not a GoZ stand-in file"},
        {"key without value sign", "GOZ-STANDIN 1\nname\nvertices=0\nfaces=0\nend\n", "line 2: expected key=value"},
        {"negative count", "GOZ-STANDIN 1\nvertices=-1\nfaces=0\nend\n", "line 2: \"vertices=\" needs a count"},
        {"huge count", "GOZ-STANDIN 1\nvertices=99999999999\nfaces=0\nend\n", "\"vertices=\" needs a count"},
        {"count beyond the lines", "GOZ-STANDIN 1\nvertices=1000\nv 0 0 0\nend\n", "1000 vertices announced"},
        {"two coordinates", "GOZ-STANDIN 1\nvertices=1\nv 0 0\nfaces=0\nend\n", "line 3: expected \"v x y z\""},
        {"not a number", "GOZ-STANDIN 1\nvertices=1\nv 0 zero 0\nfaces=0\nend\n", "not a finite number"},
        {"infinite", "GOZ-STANDIN 1\nvertices=1\nv 0 inf 0\nfaces=0\nend\n", "not a finite number"},
        {"index out of range", "GOZ-STANDIN 1\nvertices=3\nv 0 0 0\nv 1 0 0\nv 0 1 0\nfaces=1\nf 0 1 3\nend\n",
         "line 7: face 0 names vertex \"3\"; there are 3"},
        {"two-sided face", "GOZ-STANDIN 1\nvertices=2\nv 0 0 0\nv 1 0 0\nfaces=1\nf 0 1\nend\n", "three or more"},
        {"missing end", "GOZ-STANDIN 1\nvertices=0\nfaces=0\n", "no \"end\" line"},
        {"text after end", "GOZ-STANDIN 1\nvertices=0\nfaces=0\nend\nmore\n", "text after \"end\""},
        {"no final line end", "GOZ-STANDIN 1\nvertices=0\nfaces=0\nend", "the last line has no line end"},
        {"empty", "", "truncated"},
    };
    for (const auto& c : cases) {
        CGoZStandInFile file;
        QString error;
        EXPECT_FALSE(CGoZStandInFile::Parse(c.m_kBytes, file, error)) << c.m_szCase;
        EXPECT_TRUE(error.contains(QString::fromUtf8(c.m_szError))) << c.m_szCase << ": " << error.toStdString();
    }
}

TEST(hostGoZFile, ReadNamesAMissingFile)
{
    QTemporaryDir folder;
    CGoZStandInFile file;
    QString error;
    EXPECT_FALSE(CGoZStandInFile::Read(folder.filePath(QStringLiteral("None.GoZ")), file, error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("no file "))) << error.toStdString();
    ASSERT_TRUE(CGoZStandInFile::Save(folder.filePath(QStringLiteral("sub/Good.GoZ")), kValid, error));
    EXPECT_TRUE(CGoZStandInFile::Read(folder.filePath(QStringLiteral("sub/Good.GoZ")), file, error)) << error.toStdString();
}

TEST(hostGoZMesh, SummaryFollowsTheContent)
{
    CGoZMesh mesh = CZBrushReturn::Tetrahedron();
    const QJsonObject summary = mesh.Summary();
    EXPECT_EQ(4, summary.value(QStringLiteral("vertices")).toInt());
    EXPECT_EQ(4, summary.value(QStringLiteral("faces")).toInt());
    EXPECT_EQ(QJsonDocument::fromJson("[[0,0,0],[1,1,1]]").array(), summary.value(QStringLiteral("bbox")).toArray());

    CGoZMesh moved = mesh;
    moved.m_kVertices[1][0] = 1.0000001;
    EXPECT_NE(summary.value(QStringLiteral("checksum")), moved.Summary().value(QStringLiteral("checksum")));
    CGoZMesh turned = mesh;
    std::swap(turned.m_kFaces[0][0], turned.m_kFaces[0][1]);
    EXPECT_NE(summary.value(QStringLiteral("checksum")), turned.Summary().value(QStringLiteral("checksum")));
    EXPECT_EQ(summary, CGoZMesh(mesh).Summary()) << "the same mesh, the same summary";
    EXPECT_TRUE(CGoZMesh().Summary().value(QStringLiteral("bbox")).isNull());
}

TEST(hostGoZMesh, JsonFormIsCheckedAndReadBack)
{
    const struct
    {
        const char* m_szJson;
        const char* m_szError; // empty: accepted
    } cases[] = {
        {R"({"vertices": [[0,0,0],[1,0,0],[0,1,0]], "faces": [[0,1,2]]})", ""},
        {R"({"vertices": []})", ""},
        {R"({"vertices": [[0,0]]})", "vertex 0 must be an array of three numbers"},
        {R"({"vertices": [[0,0,"1"]]})", "vertex 0 must be an array of three numbers"},
        {R"({"vertices": [[0,0,0]], "faces": [[0,0]]})", "face 0 has fewer than three vertices"},
        {R"({"vertices": [[0,0,0]], "faces": [[0,0,1]]})", "face 0 names vertex 1, but there are 1"},
        {R"({"vertices": [[0,0,0]], "faces": [[0,0,-1]]})", "face 0 must hold vertex indices"},
        {R"({"vertices": [[0,0,0]], "faces": [[0,0,0.5]]})", "face 0 must hold vertex indices"},
        {R"({"vertices": {}, "faces": []})", "\"vertices\" must be an array"},
        {R"({"points": []})", "unknown key \"points\""},
        {R"([])", "must be an object"},
    };
    for (const auto& c : cases) {
        CGoZMesh mesh = CZBrushReturn::Tetrahedron();
        QString error;
        const QJsonDocument document = QJsonDocument::fromJson(c.m_szJson);
        const QJsonValue value = document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
        const bool ok = mesh.FromJson(value, error);
        if (QByteArray(c.m_szError).isEmpty()) {
            EXPECT_TRUE(ok) << c.m_szJson << ": " << error.toStdString();
            const QJsonObject given = document.object();
            const QJsonObject expected{{QStringLiteral("vertices"), given.value(QStringLiteral("vertices"))},
                                       {QStringLiteral("faces"), given.contains(QStringLiteral("faces"))
                                                                     ? given.value(QStringLiteral("faces"))
                                                                     : QJsonValue(QJsonArray())}};
            EXPECT_EQ(expected, mesh.ToJson()) << c.m_szJson;
        } else {
            EXPECT_FALSE(ok) << c.m_szJson;
            EXPECT_TRUE(error.contains(QString::fromUtf8(c.m_szError))) << c.m_szJson << ": " << error.toStdString();
            EXPECT_EQ(CZBrushReturn::Tetrahedron(), mesh) << "a refused mesh leaves the old one";
        }
    }
}

TEST(hostZBrushReturn, SettingsAreCheckedKeyByKey)
{
    const struct
    {
        const char* m_szJson;
        const char* m_szError; // empty: accepted
    } cases[] = {
        {R"({})", ""},
        {R"({"meshes": "none", "launch": false})", ""},
        {R"({"meshes": ["A"], "rename": {"A": "B"}, "truncate": ["B"], "missing": ["C"], "malformed": ["D"]})", ""},
        {R"({"extra": [{"name": "Rock", "mesh": {"vertices": [[0,0,0]]}}], "scale": 0.5, "offset": [1, 2, 3]})", ""},
        {R"({"meshes": "some"})", "\"meshes\" must be \"all\", \"none\" or an array"},
        {R"({"meshes": [""]})", "\"meshes\" must hold non-empty names"},
        {R"({"rename": {"A": "x/y"}})", "\"rename\" entry \"A\" must be a name"},
        {R"({"rename": ["A"]})", "\"rename\" must map sent names"},
        {R"({"extra": [{"mesh": {}}]})", "\"extra\"[0] must be {\"name\""},
        {R"({"extra": [{"name": "R", "mesh": {"vertices": [[0]]}}]})", "\"extra\"[0] \"mesh\": vertex 0"},
        {R"({"extra": [{"name": "R", "colour": 1}]})", "\"extra\"[0] must be"},
        {R"({"scale": 0})", "\"scale\" must be a number above 0"},
        {R"({"scale": "big"})", "\"scale\" must be a number"},
        {R"({"offset": [1, 2]})", "\"offset\" must be three numbers"},
        {R"({"launch": 1})", "\"launch\" must be true or false"},
        {R"({"sculpt": true})", "unknown key \"sculpt\""},
    };
    for (const auto& c : cases) {
        CZBrushReturn settings;
        settings.m_dScale = 7.0;
        QString error;
        const bool ok = CZBrushReturn::FromJson(QJsonDocument::fromJson(c.m_szJson).object(), settings, error);
        if (QByteArray(c.m_szError).isEmpty()) {
            EXPECT_TRUE(ok) << c.m_szJson << ": " << error.toStdString();
        } else {
            EXPECT_FALSE(ok) << c.m_szJson;
            EXPECT_TRUE(error.contains(QString::fromUtf8(c.m_szError))) << c.m_szJson << ": " << error.toStdString();
            EXPECT_EQ(7.0, settings.m_dScale) << "refused settings leave the old ones";
        }
    }
}

TEST(hostZBrushReturn, SculptScalesThenMovesEveryVertex)
{
    CZBrushReturn settings;
    QString error;
    ASSERT_TRUE(CZBrushReturn::FromJson(QJsonDocument::fromJson(R"({"scale": 2, "offset": [0, 1, -1]})").object(),
                                        settings, error));
    const CGoZMesh sculpted = settings.Sculpt(CZBrushReturn::Tetrahedron());
    EXPECT_EQ(CZBrushReturn::Tetrahedron().m_kFaces, sculpted.m_kFaces);
    const std::array<double, 3> expected[] = {{{0, 1, -1}}, {{2, 1, -1}}, {{0, 3, -1}}, {{0, 1, 1}}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(expected[i], sculpted.m_kVertices[i]) << "vertex " << i;
    }
    // The default sculpt changes a mesh visibly.
    EXPECT_NE(CZBrushReturn::Tetrahedron(), CZBrushReturn().Sculpt(CZBrushReturn::Tetrahedron()));
}

} // namespace
