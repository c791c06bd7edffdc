#pragma once

#include "CBridgeInstaller.h"
#include "CReferenceHost.h"
#include "CSandbox.h"
#include "CScene.h"
#include "FMToZBrushDlg.h"
#include "GoZPaths.h"
#include "QtPrinters.h"
#include "TestFiles.h"
#include "ZBrushToFMDlg.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QResource>
#include <QTableWidget>
#include <QThread>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>

namespace MV {
namespace Test {

// A standard character with teeth and face parts, a legacy character, and props that cover
// the send rules: a LOD mesh, equal names, a five-sided mesh, non-ASCII and long names.
const QByteArray kSendScene = R"({
  "objects": [
    {"id": "hero", "name": "Hero", "kind": 1, "node_type": 4, "avatar_type": 4, "character_tag": "Standard"},
    {"id": "hero_teeth", "name": "Hero_Teeth", "kind": 2, "node_type": 36, "parent": "hero"},
    {"id": "hero_brow", "name": "Hero_Brow", "kind": 2, "node_type": 49, "parent": "hero"},
    {"id": "hero_hair", "name": "Hero_Hair", "kind": 2, "node_type": 35, "parent": "hero"},
    {"id": "lamp", "name": "Desk Lamp", "kind": 3, "lod_meshes": ["Desk Lamp_LOD1"]},
    {"id": "crate", "name": "Crate", "kind": 3},
    {"id": "box1", "name": "Box", "kind": 3},
    {"id": "box2", "name": "Box", "kind": 3},
    {"id": "star", "name": "Star", "kind": 3, "polygon_supported": false},
    {"id": "statue", "name": "Zoë Statue", "kind": 3},
    {"id": "idol", "name": "雕像", "kind": 3},
    {"id": "shelf", "name": "Shelf", "kind": 3, "node_type": 5},
    {"id": "old", "name": "Old Hero", "kind": 1, "node_type": 1, "avatar_type": 1},
    {"id": "doll", "name": "Doll", "kind": 1, "node_type": 3, "avatar_type": 3},
    {"id": "long", "name": "A_very_long_mesh_name_that_goes_on_and_on_past_ninety_five_bytes_of_text_for_the_object_list_x", "kind": 3}
  ],
  "supported_character_tags": ["Standard"],
  "split_mesh_names": [{"name": "Hero_Body"}, {"bit": 1, "name": "Hero_EyeWinker"}, {"bit": 1024, "name": "Hero_SkinRest"}],
  "extra_mesh_names": ["FM_Base_Upper_Teeth", "FM_Base_Lower_Teeth"],
  "registry": {"SOFTWARE\\Quorvane\\Figmora\\4.0": {"Main Program": "C:\\Program Files\\Figmora\\Figmora.exe"}}
})";

// A sandbox with ZBrush and the installed bridge, a reference host over a scene, and the
// send dialog linked to a receive dialog, all in this process.
class SendFixture : public ::testing::Test
{
public:
    static QString PluginFolder() { return QStringLiteral(MVGOZ_PLUGIN_DIR "/"); }

    void Start(const QByteArray& sceneJson)
    {
        QString error;
        ASSERT_EQ(m_kSandbox.Create(error), QV::kOk) << error.toStdString();
        auto scene = std::make_unique<Host::CScene>();
        ASSERT_EQ(scene->Parse(sceneJson, error), QV::kOk) << error.toStdString();
        m_pHost = std::make_unique<Host::CReferenceHost>(std::move(scene));
        ASSERT_EQ(m_pHost->WriteRegistryFile(m_kSandbox.RegistryFilePath(), error), QV::kOk) << error.toStdString();
        ASSERT_TRUE(QResource::registerResource(PluginFolder() + QStringLiteral("MVGoZBrush.rcc")));
        m_bResource = true;
        ASSERT_EQ(CBridgeInstaller(Root(), PluginFolder()).Install(QDir::currentPath()),
                  CBridgeInstaller::EStatus::Installed);
        m_pReceive = std::make_unique<ZBrushToFMDlg>(nullptr);
        ASSERT_EQ(m_pReceive->Initialize(PluginFolder(), QString(), m_pHost.get()), QV::kOk);
        m_pDialog = std::make_unique<FMToZBrushDlg>(nullptr);
        ASSERT_EQ(m_pDialog->Initialize(PluginFolder(), QString(), m_pHost.get()), QV::kOk);
        m_pDialog->SetReceiveDialog(m_pReceive.get());
    }

    void TearDown() override
    {
        m_pDialog.reset();
        m_pReceive.reset();
        if (m_bResource) {
            QResource::unregisterResource(PluginFolder() + QStringLiteral("MVGoZBrush.rcc"));
        }
    }

    void Pick(const QStringList& ids)
    {
        QString error;
        ASSERT_EQ(m_pHost->SetPicks(ids, error), QV::kOk) << error.toStdString();
    }

    void SetAvatar(const QString& id)
    {
        QString error;
        ASSERT_EQ(m_pHost->SetCurrentAvatar(id, error), QV::kOk) << error.toStdString();
    }

    // Shows the dialog as the GoZ command does, without the modal loop.
    void Open()
    {
        m_pDialog->hide();
        m_pDialog->show();
    }

    QString Root() const { return GoZPaths::PixologicRoot(); }
    QString Project() const { return Root() + QLatin1String(GoZPaths::kProjectsDefault); }
    QString App() const { return Root() + QLatin1String(GoZPaths::kFigmoraApp); }
    QTableWidget* Table() const { return m_pDialog->Ui().qtFMGoZToZBrushTableWidget; }
    QComboBox* RowCombo(int row) const { return qobject_cast<QComboBox*>(Table()->cellWidget(row, 1)); }
    QString Cell(int row, int column) const
    {
        if (column == 1) {
            return RowCombo(row) != nullptr ? RowCombo(row)->currentText() : QStringLiteral("<no combo>");
        }
        QTableWidgetItem* item = Table()->item(row, column);
        return item != nullptr ? item->text() : QStringLiteral("<no item>");
    }

    QList<Host::CCallRecord> Calls(const char* operation) const
    {
        return m_pHost->CallLog().Of(QLatin1String(operation));
    }

    // The stand-in programs run detached; wait until count of them have logged their run.
    QJsonArray WaitForProcesses(int count) const
    {
        QElapsedTimer timer;
        timer.start();
        QJsonArray entries;
        while (timer.elapsed() < 10000) {
            entries = QJsonArray();
            const QList<QByteArray> lines = ReadFile(m_kSandbox.ProcessLogPath()).split('\n');
            for (const QByteArray& line : lines) {
                const QJsonDocument doc = QJsonDocument::fromJson(line);
                if (doc.isObject()) {
                    entries.append(doc.object());
                }
            }
            if (entries.size() >= count) {
                break;
            }
            QThread::msleep(20);
        }
        return entries;
    }

    Host::CSandbox m_kSandbox;
    std::unique_ptr<Host::CReferenceHost> m_pHost;
    std::unique_ptr<ZBrushToFMDlg> m_pReceive;
    std::unique_ptr<FMToZBrushDlg> m_pDialog;
    bool m_bResource = false;
};

} // namespace Test
} // namespace MV
