#pragma once

#include "CReferenceHost.h"
#include "CSandbox.h"
#include "CScene.h"
#include "CZBrushToFMMeshInfo.h"
#include "QtPrinters.h"
#include "ZBrushToFMDlg.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QResource>
#include <QStringList>
#include <QTableWidget>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace MV {
namespace Test {

// Where ZBrush leaves what it hands back, relative to the sandbox.
constexpr char kAppFolder[] = "C:/Users/Public/Pixologic/GoZApps/Figmora/";
constexpr char kProjectFolder[] = "C:/Users/Public/Pixologic/GoZProjects/Default/";
// The scenes' host data folder is "C:\ProgramData\Figmora", inside the sandbox.
constexpr char kTextureSizeFile[] = "C:/ProgramData/Figmora/MVGoZBrush/GoZTextureSize.ini";

// A character whose body and head are rigged, two shelf rocks of one object type, and
// returned meshes of every kind. Candidates: 0 Hero_Body, 1 Hero_Head, 2 Rock A, 3 Rock B.
const QByteArray kDialogScene = R"({
  "objects": [
    {"id": "hero", "name": "Hero", "kind": 1, "node_type": 4, "avatar_type": 4, "meshes": ["hero_body", "hero_head"],
     "rig_mesh_names": ["Hero_Body", "Hero_Head"], "bind_pose_locked": true},
    {"id": "hero_body", "name": "Hero_Body", "parent": "hero", "object_type": 10},
    {"id": "hero_head", "name": "Hero_Head", "parent": "hero", "object_type": 11},
    {"id": "hero_eye", "name": "Hero_EyeOcclusion", "parent": "hero", "node_type": 49, "meshes": []},
    {"id": "hero_tear", "name": "Hero_TearLine", "parent": "hero", "node_type": 50, "meshes": []},
    {"id": "hero_teeth", "name": "Hero_Teeth", "parent": "hero", "node_type": 36, "meshes": ["hero_teeth_mesh"]},
    {"id": "hero_teeth_mesh", "name": "Hero_TeethMesh", "parent": "hero_teeth"},
    {"id": "shelf", "name": "Shelf", "kind": 3, "character": false, "meshes": ["rock_a", "rock_b"]},
    {"id": "rock_a", "name": "Rock A", "parent": "shelf", "object_type": 7},
    {"id": "rock_b", "name": "Rock B", "parent": "shelf", "object_type": 7},
    {"id": "rock_one", "name": "RockOne", "object_type": 7, "materials": 1, "texture_sizes": {"0": 1024, "2": 1024}},
    {"id": "rock_two", "name": "RockTwo", "object_type": 7},
    {"id": "lamp", "name": "Lamp", "object_type": 20, "materials": 1, "texture_sizes": {"0": 1024, "2": 1024}},
    {"id": "vase", "name": "Vase", "object_type": 21}
  ],
  "current_avatar": "hero",
  "split_mesh_names": [{"name": "Hero_Skin"}],
  "extra_mesh_names": ["FM_Teeth"],
  "host_data_folder": "C:\\ProgramData\\Figmora"
})";

// Rows of a receive of kDialogScene, in object-list order.
enum EDialogRow : int
{
    BodyRow = 0,    // Update Hero_Body
    RockOneRow = 1, // Update, Rock A or Rock B, textured
    RockTwoRow = 2, // Update, Rock A or Rock B
    LampRow = 3,    // Create Cloth, textured
    VaseRow = 4,    // Create Cloth
};
const QByteArray kDialogReturn = "Hero_Body\nRockOne\nRockTwo\nLamp\nVase\n";
const QByteArray kTextureSizes = "[GoZTextureSize]\nCount=3\nSize0=512\nSize1=1024\nSize2=2048\n";

inline void WriteFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    ASSERT_EQ(file.write(bytes), bytes.size());
}

inline QStringList ToStrings(const QV::CArrayList<std::wstring>& list)
{
    QStringList out;
    for (const std::wstring& text : list) {
        out << QString::fromStdWString(text);
    }
    return out;
}

// A Pixologic sandbox without ZBrush's programs and, when a scene is given, a reference
// host over it with a receive dialog on its form.
class ReceiveFixture : public ::testing::Test
{
public:
    static QString PluginFolder() { return QStringLiteral(MVGOZ_PLUGIN_DIR "/"); }

    void SetUp() override
    {
        QString error;
        m_kSandbox.SetInstallZBrush(false);
        ASSERT_EQ(m_kSandbox.Create(error), QV::kOk) << error.toStdString();
    }

    void TearDown() override
    {
        m_pDialog.reset();
        // Replaced cell widgets are deleted later; let that happen while the host is alive.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_pHost.reset();
        if (m_bResource) {
            QResource::unregisterResource(PluginFolder() + QStringLiteral("MVGoZBrush.rcc"));
        }
    }

    void StartHost(const QByteArray& sceneJson)
    {
        QString error;
        auto scene = std::make_unique<Host::CScene>();
        ASSERT_EQ(scene->Parse(sceneJson, error), QV::kOk) << error.toStdString();
        m_pHost = std::make_unique<Host::CReferenceHost>(std::move(scene));
    }

    void StartDialog(const QByteArray& sceneJson)
    {
        StartHost(sceneJson);
        if (::testing::Test::HasFatalFailure()) {
            return;
        }
        ASSERT_TRUE(QResource::registerResource(PluginFolder() + QStringLiteral("MVGoZBrush.rcc")));
        m_bResource = true;
        m_pDialog = std::make_unique<ZBrushToFMDlg>(nullptr);
        ASSERT_EQ(m_pDialog->Initialize(PluginFolder(), QString(), m_pHost.get()), QV::kOk);
    }

    void SetAvatar(const QString& id)
    {
        QString error;
        ASSERT_EQ(m_pHost->SetCurrentAvatar(id, error), QV::kOk) << error.toStdString();
    }

    // The information file and an object list, as ZBrush leaves them.
    static void WriteReturn(const QByteArray& objectList,
                            const QByteArray& infoLine = "GOZ_OBJECT_LIST = \"GoZ_ObjectList.txt\"\n",
                            const QString& listName = QStringLiteral("GoZ_ObjectList.txt"))
    {
        WriteFile(QLatin1String(kAppFolder) + QStringLiteral("GoZ_Info.txt"), infoLine);
        WriteFile(QLatin1String(kAppFolder) + listName, objectList);
    }

    static void WriteProjectFile(const QString& name)
    {
        WriteFile(QLatin1String(kProjectFolder) + name, "x");
    }

    static void WriteTextureSizes(const QByteArray& ini) { WriteFile(QLatin1String(kTextureSizeFile), ini); }

    // A small sculpt for every name of the list, where ZBrush leaves them.
    static void WriteReturnedMeshes(const QByteArray& objectList)
    {
        for (const QByteArray& name : objectList.simplified().split(' ')) {
            if (!name.isEmpty()) {
                WriteFile(QLatin1String(kProjectFolder) + QString::fromLatin1(name) + QStringLiteral(".GoZ"),
                          "GOZ-STANDIN 1\nname=" + name +
                              "\nvertices=3\nv 0 0 0\nv 1 0 0\nv 0 1 0\nfaces=1\nf 0 1 2\nend\n");
            }
        }
    }

    // ZBrush hands the list and its meshes back and the host says so.
    QV::Result Receive(const QByteArray& objectList = kDialogReturn)
    {
        WriteReturn(objectList);
        WriteReturnedMeshes(objectList);
        WriteTextureSizes(kTextureSizes);
        return m_pDialog->GoZDataUpdated();
    }

    void SetObjectFlag(const char* id, bool Host::CSceneObject::*flag, bool value)
    {
        Host::CScene& scene = m_pHost->Scene();
        scene.Object(scene.IndexOf(QLatin1String(id))).*flag = value;
    }

    QTableWidget* Table() const { return m_pDialog->Ui().qtFMGoZBackFromZBrushTableWidget; }
    template <typename T>
    T* Cell(int row, int column) const
    {
        return qobject_cast<T*>(Table()->cellWidget(row, column));
    }
    QComboBox* ActionCombo(int row) const { return Cell<QComboBox>(row, ZBrushToFMDlg::ActionColumn); }
    QComboBox* TargetCombo(int row) const { return Cell<QComboBox>(row, ZBrushToFMDlg::TargetColumn); }
    QCheckBox* MeshBox(int row) const { return Cell<QCheckBox>(row, ZBrushToFMDlg::MeshColumn); }
    QCheckBox* TextureBox(int row) const { return Cell<QCheckBox>(row, ZBrushToFMDlg::TextureColumn); }
    QComboBox* SizeCombo(int row) const { return Cell<QComboBox>(row, ZBrushToFMDlg::TextureSizeColumn); }
    const CZBrushToFMMeshInfo& Record(int row) const { return m_pDialog->Records()[row]; }

    int Calls(const char* operation) const { return m_pHost->CallLog().Count(QLatin1String(operation)); }
    QList<Host::CCallRecord> CallsOf(const char* operation) const
    {
        return m_pHost->CallLog().Of(QLatin1String(operation));
    }
    // Operations in call order, with their first argument: "Op(arg)".
    QStringList CallSequence(const QStringList& operations) const
    {
        QStringList out;
        for (const Host::CCallRecord& record : m_pHost->CallLog().Records()) {
            if (operations.contains(record.m_strOperation)) {
                out << record.m_strOperation + QLatin1Char('(') + record.m_kArgs.value(0) + QLatin1Char(')');
            }
        }
        return out;
    }

    Host::CSandbox m_kSandbox;
    std::unique_ptr<Host::CReferenceHost> m_pHost;
    std::unique_ptr<ZBrushToFMDlg> m_pDialog;
    bool m_bResource = false;
};

} // namespace Test
} // namespace MV
