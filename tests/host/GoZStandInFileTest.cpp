// The stand-in .GoZ file that host and ZBrush stand-in exchange, and the JSON forms of meshes and
// of the stand-in's return settings in a scene.
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
    ASSERT_TRUE(CGoZStandInFile::Parse(QByteArray(kValid).replace("\n", "\r\n"), crlf, error)) << error.toStdString();
    EXPECT_EQ(file.m_kMesh, crlf.m_kMesh);

    // A file cut anywhere must never read as a smaller mesh.
    for (int size = 0; size < kValid.size(); ++size) {
        CGoZStandInFile cut;
        cut.SetValue(QStringLiteral("kept"), QStringLiteral("yes"));
        EXPECT_FALSE(CGoZStandInFile::Parse(kValid.left(size), cut, error)) << "cut at " << size;
        EXPECT_EQ(QStringLiteral("yes"), cut.Value(QStringLiteral("kept"))) << "a refused parse changes nothing";
    }

    QTemporaryDir folder;
    EXPECT_FALSE(CGoZStandInFile::Read(folder.filePath(QStringLiteral("None.GoZ")), file, error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("no file "))) << error.toStdString();
    ASSERT_TRUE(CGoZStandInFile::Save(folder.filePath(QStringLiteral("sub/Good.GoZ")), kValid, error));
    EXPECT_TRUE(CGoZStandInFile::Read(folder.filePath(QStringLiteral("sub/Good.GoZ")), file, error)) << error.toStdString();
}

TEST(hostGoZFile, SummaryFollowsTheContent)
{
    const CGoZMesh mesh = CZBrushReturn::Tetrahedron();
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
    EXPECT_TRUE(CGoZMesh().Summary().value(QStringLiteral("bbox")).isNull());
}

// Each reader names what is wrong (the line of a file) and leaves what it would have filled as it
// was; accepted JSON meshes read back.
TEST(hostGoZFile, MalformedInputIsRefusedWithItsReason)
{
    // 'f' a stand-in file, 'm' a JSON mesh, 'r' JSON return settings; an empty error: accepted.
    const struct { char m_cKind; const char* m_szInput; const char* m_szError; } cases[] = {
        {'f', "GOZ-STANDIN 1\nobject=a\nname=a\n", "no \"vertices=\" line"},
        {'f', "this is no mesh\n", "line 1: not a GoZ stand-in file"},
        {'f', "GOZ-STANDIN 1\nname\nvertices=0\nfaces=0\nend\n", "line 2: expected key=value"},
        {'f', "GOZ-STANDIN 1\nvertices=-1\nfaces=0\nend\n", "line 2: \"vertices=\" needs a count"},
        {'f', "GOZ-STANDIN 1\nvertices=99999999999\nfaces=0\nend\n", "\"vertices=\" needs a count"},
        {'f', "GOZ-STANDIN 1\nvertices=1000\nv 0 0 0\nend\n", "1000 vertices announced"},
        {'f', "GOZ-STANDIN 1\nvertices=1\nv 0 0\nfaces=0\nend\n", "line 3: expected \"v x y z\""},
        {'f', "GOZ-STANDIN 1\nvertices=1\nv 0 zero 0\nfaces=0\nend\n", "not a finite number"},
        {'f', "GOZ-STANDIN 1\nvertices=1\nv 0 inf 0\nfaces=0\nend\n", "not a finite number"},
        {'f', "GOZ-STANDIN 1\nvertices=3\nv 0 0 0\nv 1 0 0\nv 0 1 0\nfaces=1\nf 0 1 3\nend\n", "line 7: face 0 names vertex \"3\"; there are 3"},
        {'f', "GOZ-STANDIN 1\nvertices=2\nv 0 0 0\nv 1 0 0\nfaces=1\nf 0 1\nend\n", "three or more"},
        {'f', "GOZ-STANDIN 1\nvertices=0\nfaces=0\n", "no \"end\" line"},
        {'f', "GOZ-STANDIN 1\nvertices=0\nfaces=0\nend\nmore\n", "text after \"end\""},
        {'f', "GOZ-STANDIN 1\nvertices=0\nfaces=0\nend", "the last line has no line end"},
        {'f', "", "truncated"},
        {'m', R"({"vertices": [[0,0,0],[1,0,0],[0,1,0]], "faces": [[0,1,2]]})", ""},
        {'m', R"({"vertices": []})", ""},
        {'m', R"({"vertices": [[0,0]]})", "vertex 0 must be an array of three numbers"},
        {'m', R"({"vertices": [[0,0,0]], "faces": [[0,0]]})", "face 0 has fewer than three vertices"},
        {'m', R"({"vertices": [[0,0,0]], "faces": [[0,0,1]]})", "face 0 names vertex 1, but there are 1"},
        {'m', R"({"vertices": [[0,0,0]], "faces": [[0,0,-1]]})", "face 0 must hold vertex indices"},
        {'m', R"({"vertices": {}, "faces": []})", "\"vertices\" must be an array"},
        {'m', R"({"points": []})", "unknown key \"points\""},
        {'m', R"([])", "must be an object"},
        {'r', R"({"meshes": "none", "launch": false})", ""},
        {'r', R"({"meshes": ["A"], "rename": {"A": "B"}, "truncate": ["B"], "missing": ["C"], "malformed": ["D"]})", ""},
        {'r', R"({"extra": [{"name": "Rock", "mesh": {"vertices": [[0,0,0]]}}], "scale": 0.5, "offset": [1, 2, 3]})", ""},
        {'r', R"({"meshes": "some"})", "\"meshes\" must be \"all\", \"none\" or an array"},
        {'r', R"({"rename": {"A": "x/y"}})", "\"rename\" entry \"A\" must be a name"},
        {'r', R"({"rename": ["A"]})", "\"rename\" must map sent names"},
        {'r', R"({"extra": [{"mesh": {}}]})", "\"extra\"[0] must be {\"name\""},
        {'r', R"({"extra": [{"name": "R", "mesh": {"vertices": [[0]]}}]})", "\"extra\"[0] \"mesh\": vertex 0"},
        {'r', R"({"scale": 0})", "\"scale\" must be a number above 0"},
        {'r', R"({"offset": [1, 2]})", "\"offset\" must be three numbers"},
        {'r', R"({"launch": 1})", "\"launch\" must be true or false"},
        {'r', R"({"sculpt": true})", "unknown key \"sculpt\""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_szInput);
        const QJsonDocument document = QJsonDocument::fromJson(c.m_szInput);
        const QJsonValue value = document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
        CGoZStandInFile file;
        file.SetValue(QStringLiteral("kept"), QStringLiteral("yes"));
        CGoZMesh mesh = CZBrushReturn::Tetrahedron();
        CZBrushReturn settings;
        settings.m_dScale = 7.0;
        QString error;
        const bool ok = c.m_cKind == 'f'   ? CGoZStandInFile::Parse(c.m_szInput, file, error)
                        : c.m_cKind == 'm' ? mesh.FromJson(value, error)
                                           : CZBrushReturn::FromJson(value, settings, error);
        const bool accepted = QByteArray(c.m_szError).isEmpty();
        EXPECT_EQ(accepted, ok) << error.toStdString();
        EXPECT_TRUE(error.contains(QString::fromUtf8(c.m_szError))) << error.toStdString();
        if (c.m_cKind == 'm' && accepted) {
            QJsonObject expected = document.object();
            expected.insert(QStringLiteral("faces"), expected.value(QStringLiteral("faces")).toArray());
            EXPECT_EQ(expected, mesh.ToJson());
        } else if (!accepted) {
            EXPECT_EQ(QStringLiteral("yes"), file.Value(QStringLiteral("kept")));
            EXPECT_EQ(CZBrushReturn::Tetrahedron(), mesh) << "a refused mesh leaves the old one";
            EXPECT_EQ(7.0, settings.m_dScale) << "refused settings leave the old ones";
        }
    }
}

} // namespace
