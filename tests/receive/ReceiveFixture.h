#pragma once

#include "CEventSender.h"
#include "CReferenceHost.h"
#include "CSandbox.h"
#include "CScene.h"
#include "CZBrushToFMMeshInfo.h"
#include "ExpressionZBrushToFMDlg.h"
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
const QByteArray kTextureSizes = "[GoZTextureSize]\nCount=3\nSize0=512\nSize1=1024\nSize2=2048\n";

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

// Rows of a receive of kDialogScene: Update Hero_Body; Update RockOne (textured) and RockTwo,
// each Rock A or Rock B; Create Cloth Lamp (textured) and Vase.
enum EDialogRow : int { BodyRow, RockOneRow, RockTwoRow, LampRow, VaseRow };
const QStringList kDialogReturn{"Hero_Body", "RockOne", "RockTwo", "Lamp", "Vase"};

inline void WriteFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    ASSERT_EQ(file.write(bytes), bytes.size());
}

inline QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

inline QStringList ToStrings(const QV::CArrayList<std::wstring>& list)
{
    QStringList out;
    for (const std::wstring& text : list) {
        out << QString::fromStdWString(text);
    }
    return out;
}

inline QV::CArrayList<std::wstring> ToList(const QStringList& strings)
{
    QV::CArrayList<std::wstring> list;
    for (const QString& text : strings) {
        list.Add(text.toStdWString());
    }
    return list;
}

// A Pixologic sandbox and, once started, a reference host with the receive and the
// expression dialog over it.
class ReceiveFixture : public ::testing::Test
{
public:
    static QString PluginFolder() { return QStringLiteral(MVGOZ_PLUGIN_DIR "/"); }

    void SetUp() override
    {
        QString error;
        m_kSandbox.SetInstallZBrush(m_bInstallZBrush);
        ASSERT_EQ(m_kSandbox.Create(error), QV::kOk) << error.toStdString();
    }

    void TearDown() override
    {
        m_pExpression.reset();
        m_pDialog.reset();
        // Replaced widgets are deleted later; let that happen while the host is alive.
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

    template <typename Dialog>
    void MakeDialog(std::unique_ptr<Dialog>& dialog)
    {
        if (!m_bResource) {
            ASSERT_TRUE(QResource::registerResource(PluginFolder() + QStringLiteral("MVGoZBrush.rcc")));
            m_bResource = true;
        }
        dialog = std::make_unique<Dialog>(nullptr);
        ASSERT_EQ(dialog->Initialize(PluginFolder(), QString(), m_pHost.get()), QV::kOk);
    }
    void MakeReceiveDialog() { MakeDialog(m_pDialog); }
    void MakeExpressionDialog() { MakeDialog(m_pExpression); }

    void StartDialog(const QByteArray& sceneJson)
    {
        StartHost(sceneJson);
        if (!HasFatalFailure()) {
            MakeReceiveDialog();
        }
    }

    void SetAvatar(const QString& id)
    {
        QString error;
        ASSERT_EQ(m_pHost->SetCurrentAvatar(id, error), QV::kOk) << error.toStdString();
    }

    void SetObjectFlag(const char* id, bool Host::CSceneObject::*flag, bool value)
    {
        Host::CScene& scene = m_pHost->Scene();
        scene.Object(scene.IndexOf(QLatin1String(id))).*flag = value;
    }

    // The information file and an object list, as ZBrush leaves them.
    static void WriteList(const QByteArray& objectList,
                          const QByteArray& infoLine = "GOZ_OBJECT_LIST = \"GoZ_ObjectList.txt\"\n",
                          const QString& listName = QStringLiteral("GoZ_ObjectList.txt"))
    {
        WriteFile(QLatin1String(kAppFolder) + QStringLiteral("GoZ_Info.txt"), infoLine);
        WriteFile(QLatin1String(kAppFolder) + listName, objectList);
    }

    // What ZBrush hands back: the list, a one-triangle sculpt per name and the named motions.
    static void WriteReturn(const QStringList& names, const QStringList& motions = {})
    {
        WriteList(names.join(QLatin1Char('\n')).toUtf8() + '\n');
        for (const QString& name : names) {
            WriteFile(QLatin1String(kProjectFolder) + name + QStringLiteral(".GoZ"),
                      "GOZ-STANDIN 1\nname=" + name.toUtf8() +
                          "\nvertices=3\nv 0 0 0\nv 1 0 0\nv 0 1 0\nfaces=1\nf 0 1 2\nend\n");
        }
        for (const QString& motion : motions) {
            WriteFile(QLatin1String(kProjectFolder) + motion + QStringLiteral(".mvMotionPlus"), "MOTION");
        }
    }

    // ZBrush hands the meshes back and the host tells the receive dialog.
    QV::Result Receive(const QStringList& names = kDialogReturn)
    {
        WriteReturn(names);
        WriteFile(QLatin1String(kTextureSizeFile), kTextureSizes);
        return m_pDialog->GoZDataUpdated();
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

    int Count(const char* operation) const { return m_pHost->CallLog().Count(QLatin1String(operation)); }
    QList<Host::CCallRecord> CallsOf(const char* operation) const
    {
        return m_pHost->CallLog().Of(QLatin1String(operation));
    }
    // Operations in call order with their first `args` arguments: "Op(a, b)".
    QStringList CallSequence(const QStringList& operations, int args = -1) const
    {
        QStringList out;
        for (const Host::CCallRecord& record : m_pHost->CallLog().Records()) {
            if (operations.contains(record.m_strOperation)) {
                out << record.m_strOperation + QLatin1Char('(') +
                           record.m_kArgs.mid(0, args).join(QStringLiteral(", ")) + QLatin1Char(')');
            }
        }
        return out;
    }
    // Records each ObjectAdded announcement as the ids it names, comma-separated.
    void ListenForAdded(QObject* context)
    {
        QObject::connect(m_pHost->EventSender(), &CEventSender::ObjectAdded, context,
                         [this](const QV::CArrayList<QV::CHandle*>& objects) {
                             QStringList ids;
                             for (QV::CHandle* object : objects) {
                                 const Host::CSceneObject* found = m_pHost->Scene().Find(object);
                                 ids << (found != nullptr ? found->m_strId : QStringLiteral("?"));
                             }
                             m_kAdded << ids.join(QLatin1Char(','));
                         });
    }
    QStringList MessageTexts() const
    {
        QStringList texts;
        for (const Host::CMessageBoxRecord& box : m_pHost->MessageBoxes()) {
            texts << box.m_strText;
        }
        return texts;
    }

    bool m_bInstallZBrush = false;
    Host::CSandbox m_kSandbox;
    std::unique_ptr<Host::CReferenceHost> m_pHost;
    std::unique_ptr<ZBrushToFMDlg> m_pDialog;
    std::unique_ptr<ExpressionZBrushToFMDlg> m_pExpression;
    bool m_bResource = false;
    QStringList m_kAdded;
};

} // namespace Test
} // namespace MV
