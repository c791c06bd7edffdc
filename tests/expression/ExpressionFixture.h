#pragma once

#include "CReferenceHost.h"
#include "CSandbox.h"
#include "CScene.h"
#include "ExpressionZBrushToFMDlg.h"
#include "QtPrinters.h"
#include "ZBrushToFMDlg.h"

#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QResource>
#include <QStringList>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace MV {
namespace Test {

// Where ZBrush leaves what it hands back, relative to the sandbox.
constexpr char kAppFolder[] = "C:/Users/Public/Pixologic/GoZApps/Figmora/";
constexpr char kProjectFolder[] = "C:/Users/Public/Pixologic/GoZProjects/Default/";

// A character whose face meshes are named unlike it, another character, a prop, and a
// spring node the brow is bound to. Each face element can be left out.
struct FaceScene
{
    bool m_bEyeOcclusion = true;
    bool m_bTearLine = true;
    bool m_bTeeth = true;
    bool m_bBrow = true;
    bool m_bEditing = true;
    int m_iAvatarKind = 4;
    // The brow's picks belong to this object kind (0: the brow is its own object).
    int m_iBrowOwnerKind = 0;

    QByteArray Json() const
    {
        QJsonArray objects;
        objects.append(QJsonObject{{"id", "ava"}, {"name", "Ava"}, {"kind", m_iAvatarKind}, {"node_type", 4},
                                   {"avatar_type", 4}, {"character_tag", "Standard"},
                                   {"blend_shape_editing", m_bEditing}});
        // Listed against the order the face meshes are gathered in (35, 49, 50, 36).
        if (m_bTeeth) {
            objects.append(QJsonObject{{"id", "ava_teeth"}, {"name", "Teeth_Mesh"}, {"kind", 2}, {"node_type", 36},
                                       {"parent", "ava"}, {"object_type", 104}});
        }
        if (m_bTearLine) {
            objects.append(QJsonObject{{"id", "ava_tear"}, {"name", "Tear_Mesh"}, {"kind", 2}, {"node_type", 50},
                                       {"parent", "ava"}, {"object_type", 103}});
        }
        if (m_bEyeOcclusion) {
            objects.append(QJsonObject{{"id", "ava_occlusion"}, {"name", "Occlusion_Mesh"}, {"kind", 2},
                                       {"node_type", 49}, {"parent", "ava"}, {"object_type", 102}});
        }
        QJsonObject brow{{"id", "ava_brow"}, {"name", "Brow_Mesh"}, {"kind", 2}, {"node_type", 35},
                         {"parent", "ava"}, {"object_type", 101}, {"bound_node", "ava_spring"}};
        if (m_iBrowOwnerKind != 0) {
            objects.append(QJsonObject{{"id", "ava_brow_group"}, {"name", "Brow_Group"}, {"kind", m_iBrowOwnerKind},
                                       {"parent", "ava"}, {"meshes", QJsonArray{}}});
            brow.insert("pick_owner", "ava_brow_group");
        }
        if (m_bBrow) {
            objects.append(brow);
        }
        objects.append(QJsonObject{{"id", "ava_spring"}, {"name", "Ava_Spring"}, {"node_type", 51},
                                   {"parent", "ava"}, {"meshes", QJsonArray{}}});
        objects.append(QJsonObject{{"id", "hat"}, {"name", "Hat"}, {"kind", 3}, {"object_type", 200}});
        objects.append(QJsonObject{{"id", "bob"}, {"name", "Bob"}, {"kind", 1}, {"node_type", 4},
                                   {"avatar_type", 4}});
        objects.append(QJsonObject{{"id", "bob_brow"}, {"name", "Bob_Brow"}, {"kind", 2}, {"node_type", 35},
                                   {"parent", "bob"}, {"object_type", 301}});
        QJsonObject scene{
            {"objects", objects},
            {"current_avatar", "ava"},
            {"supported_character_tags", QJsonArray{"Standard"}},
            {"split_mesh_names", QJsonArray{QJsonObject{{"name", "Ava_Body"}}}},
            {"extra_mesh_names", QJsonArray{"FM_Base_Upper_Teeth", "FM_Base_Lower_Teeth"}},
            {"host_data_folder", "C:/ProgramData/Figmora"},
            {"registry",
             QJsonObject{{"SOFTWARE\\Quorvane\\Figmora\\4.0",
                          QJsonObject{{"Main Program", "C:\\Program Files\\Figmora\\Figmora.exe"}}}}},
        };
        return QJsonDocument(scene).toJson(QJsonDocument::Compact);
    }
};

// The names a full return of FaceScene's character holds: its face meshes, the teeth under
// the extra part names they were sent as.
inline QStringList FullFaceReturn()
{
    return {QStringLiteral("Brow_Mesh"), QStringLiteral("Occlusion_Mesh"), QStringLiteral("Tear_Mesh"),
            QStringLiteral("FM_Base_Upper_Teeth"), QStringLiteral("FM_Base_Lower_Teeth")};
}

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

// A Pixologic sandbox and a reference host, with the expression dialog and, where a test
// wants it, the receive dialog over the same host.
class ExpressionFixture : public ::testing::Test
{
public:
    static QString PluginFolder() { return QStringLiteral(MVGOZ_PLUGIN_DIR "/"); }

    void SetUp() override
    {
        QString error;
        m_kSandbox.SetInstallZBrush(m_bInstallZBrush);
        ASSERT_EQ(m_kSandbox.Create(error), QV::kOk) << error.toStdString();
        ASSERT_TRUE(QResource::registerResource(PluginFolder() + QStringLiteral("MVGoZBrush.rcc")));
        m_bResource = true;
    }

    void TearDown() override
    {
        m_pDialog.reset();
        m_pReceive.reset();
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

    void MakeExpressionDialog()
    {
        m_pDialog = std::make_unique<ExpressionZBrushToFMDlg>(nullptr);
        ASSERT_EQ(m_pDialog->Initialize(PluginFolder(), QString(), m_pHost.get()), QV::kOk);
    }

    void MakeReceiveDialog()
    {
        m_pReceive = std::make_unique<ZBrushToFMDlg>(nullptr);
        ASSERT_EQ(m_pReceive->Initialize(PluginFolder(), QString(), m_pHost.get()), QV::kOk);
    }

    void Start(const FaceScene& scene = FaceScene())
    {
        StartHost(scene.Json());
        if (!HasFatalFailure()) {
            MakeExpressionDialog();
        }
    }

    // A returned mesh in the GoZ stand-in format the reference host reads: one triangle.
    static QByteArray SculptedFile(const QString& name)
    {
        return "GOZ-STANDIN 1\nname=" + name.toUtf8() +
               "\nvertices=3\nv 0 0 0\nv 1 0 0\nv 0 1 0\nfaces=1\nf 0 1 2\nend\n";
    }

    // What ZBrush leaves: the information file, the object list, a GoZ file per name and the
    // named motions beside them.
    static void WriteReturn(const QStringList& names, const QStringList& motions = {})
    {
        WriteFile(QLatin1String(kAppFolder) + QStringLiteral("GoZ_Info.txt"),
                  "GOZ_OBJECT_LIST = \"GoZ_ObjectList.txt\"\n");
        WriteFile(QLatin1String(kAppFolder) + QStringLiteral("GoZ_ObjectList.txt"),
                  names.join(QLatin1Char('\n')).toUtf8() + '\n');
        for (const QString& name : names) {
            WriteFile(QLatin1String(kProjectFolder) + name + QStringLiteral(".GoZ"), SculptedFile(name));
        }
        for (const QString& motion : motions) {
            WriteFile(QLatin1String(kProjectFolder) + motion + QStringLiteral(".mvMotionPlus"), "MOTION");
        }
    }

    QList<Host::CCallRecord> Calls(const char* operation) const
    {
        return m_pHost->CallLog().Of(QLatin1String(operation));
    }
    int Count(const char* operation) const { return m_pHost->CallLog().Count(QLatin1String(operation)); }
    // Operations in call order with their arguments: "Op(a, b)".
    QStringList CallSequence(const QStringList& operations) const
    {
        QStringList out;
        for (const Host::CCallRecord& record : m_pHost->CallLog().Records()) {
            if (operations.contains(record.m_strOperation)) {
                out << record.m_strOperation + QLatin1Char('(') + record.m_kArgs.join(QStringLiteral(", ")) +
                           QLatin1Char(')');
            }
        }
        return out;
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
    std::unique_ptr<ExpressionZBrushToFMDlg> m_pDialog;
    std::unique_ptr<ZBrushToFMDlg> m_pReceive;
    bool m_bResource = false;
};

} // namespace Test
} // namespace MV
