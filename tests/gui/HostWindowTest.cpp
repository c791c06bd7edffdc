#include "CCommandLine.h"
#include "CEventSender.h"
#include "CMeshView.h"
#include "GuiTestSupport.h"
#include "WindowNames.h"

#include <QComboBox>
#include <QDir>
#include <QListWidget>
#include <QMainWindow>
#include <QMenuBar>
#include <QSignalSpy>
#include <QTest>
#include <QToolBar>

using namespace MV;
using namespace MV::Host;
using namespace MV::Test;

namespace {

TEST(WindowCommandLine, GuiTakesSceneAndPluginAndLeavesTheDefaultPluginToTheProgram)
{
    CHostCommand command;
    QString error;
    ASSERT_EQ(CCommandLine::Parse({"gui"}, command, error), QV::kOk) << error.toStdString();
    EXPECT_EQ(command.m_eKind, CHostCommand::EKind::Gui);
    EXPECT_TRUE(command.m_strPlugin.isEmpty());
    ASSERT_EQ(CCommandLine::Parse({"gui", "--scene", "s.json", "--plugin", "/p/M.so", "--workdir", "w"}, command, error),
              QV::kOk)
        << error.toStdString();
    EXPECT_EQ(command.m_strScene, QDir::current().absoluteFilePath("s.json"));
    EXPECT_EQ(command.m_strPlugin, QStringLiteral("/p/M.so"));
    EXPECT_EQ(command.m_strWorkFolder, QDir::current().absoluteFilePath("w"));
    EXPECT_EQ(CCommandLine::DefaultPluginPath("/w/bin"), QStringLiteral("/w/plugin-folder/MVGoZBrush.so"));
}

TEST(WindowSession, RefusesABadSceneAndAMissingPluginAndLeavesTheProcessAsItWas)
{
    const QString before = QDir::currentPath();
    CGuiSession session;
    QString error;
    EXPECT_EQ(session.Prepare("{\"objects\": 3}", error), QV::kInvalidArg);
    EXPECT_TRUE(error.startsWith("scene: ")) << error.toStdString();
    ASSERT_EQ(session.Prepare(CHostWindow::DefaultScene(), error), QV::kOk) << error.toStdString();
    CGuiOptions options;
    options.m_strPlugin = QDir::temp().absoluteFilePath("no-such-plugin.so");
    EXPECT_EQ(session.Start(options, error), QV::kFail);
    EXPECT_TRUE(error.contains("no-such-plugin.so")) << error.toStdString();
    EXPECT_FALSE(session.IsStarted());
    EXPECT_EQ(QDir::currentPath(), before);
    EXPECT_TRUE(qEnvironmentVariableIsEmpty("MVGOZ_HOST_SOCKET"));

    // The scene's return settings become the panel's sculpt; a scene without them, the defaults.
    ASSERT_EQ(session.Prepare(R"({"zbrush_return": {"scale": 3, "rename": {"A": "B"}}})", error), QV::kOk);
    EXPECT_EQ(session.ZBrushSettings().m_dScale, 3.0);
    EXPECT_EQ(session.ZBrushSettings().m_kRenames.value("A"), QStringLiteral("B"));
    ASSERT_EQ(session.Prepare("{}", error), QV::kOk);
    EXPECT_EQ(session.ZBrushSettings().m_dScale, CZBrushReturn().m_dScale);
}

using WindowHost = WindowFixture;

TEST_F(WindowHost, HostMenusAndToolBarLeadThePluginsOwn)
{
    QStringList menus;
    for (QAction* action : m_pWindow->MainWindow()->menuBar()->actions()) {
        menus << action->text();
    }
    EXPECT_EQ(menus, (QStringList{"&Host", "&View", "File", "GoZ"}));
    const QList<QToolBar*> pluginBars = m_kSession.Plugins().ToolBars();
    ASSERT_EQ(pluginBars.size(), 1);
    m_pWindow->Show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(m_pWindow->MainWindow()));
    EXPECT_EQ(m_pWindow->MainWindow()->toolBarArea(m_pWindow->HostToolBar()), Qt::TopToolBarArea);
    EXPECT_EQ(m_pWindow->MainWindow()->toolBarArea(pluginBars.first()), Qt::TopToolBarArea);
    EXPECT_EQ(m_pWindow->HostToolBar()->y(), pluginBars.first()->y()) << "one row";
    EXPECT_LT(m_pWindow->HostToolBar()->x(), pluginBars.first()->x());
    EXPECT_EQ(pluginBars.first()->parentWidget(), m_pWindow->MainWindow());
}

TEST_F(WindowHost, TreeAndHostShareTheSelectionAndTheHostsChangesAreShownWithoutAsking)
{
    QSignalSpy changed(Host().EventSender(), &CEventSender::ObjectSelectionChanged);
    EXPECT_FALSE(PluginAction("qtGoZAction")->isEnabled());
    TreeItem(m_pWindow->SceneTree(), "vase")->setSelected(true);
    EXPECT_EQ(Host().Scene().State().m_kSelection, QStringList{"vase"});
    EXPECT_EQ(changed.count(), 1);
    EXPECT_TRUE(PluginAction("qtGoZAction")->isEnabled()) << "the plug-in heard of the selection";
    EXPECT_EQ(m_pWindow->Property("Name"), QStringLiteral("Vase"));
    EXPECT_EQ(m_pWindow->Property("Vertices"), QString::number(Object("vase").m_kMesh.m_kVertices.size()));
    EXPECT_EQ(m_pWindow->Property("Mesh"), QStringLiteral("as loaded"));
    ASSERT_EQ(m_pWindow->MeshView()->Meshes().size(), 1);
    EXPECT_EQ(m_pWindow->MeshView()->Meshes().first().m_strName, QStringLiteral("Vase"));

    QString error;
    ASSERT_EQ(Host().SetSelection({"hero_teeth", "lamp"}, error), QV::kOk);
    EXPECT_EQ(m_pWindow->TreeSelection(), (QStringList{"hero_teeth", "lamp"})) << "the tree follows the host";
    EXPECT_EQ(changed.count(), 2) << "following the host raises nothing more";
    ASSERT_EQ(Host().SetSelection({"crate"}, error), QV::kOk);
    CSceneObject& crate = Host().Scene().Object(Host().Scene().IndexOf("crate"));
    for (std::array<double, 3>& vertex : crate.m_kMesh.m_kVertices) {
        vertex[1] += 1.0;
    }
    crate.m_iGoZImports = 1;
    Host().Ui()->ShowMessageBox("[MVGoZBursh] Something to say", QString(), nullptr, 2, 0x400, 0);
    QTest::qWait(700);
    EXPECT_EQ(m_pWindow->Property("Mesh"), QStringLiteral("changed since the scene was loaded"));
    EXPECT_EQ(m_pWindow->Property("GoZ imports"), QStringLiteral("1"));
    EXPECT_EQ(m_pWindow->MeshView()->Meshes().first().m_kMesh, crate.m_kMesh);
    EXPECT_EQ(m_pWindow->MeshView()->Meshes().first().m_kAsLoaded, crate.m_kMeshAtStart);
    const QListWidget* messages = m_pWindow->MessagesList();
    EXPECT_EQ(messages->item(messages->count() - 1)->text(), QStringLiteral("Plug-in: [MVGoZBursh] Something to say"));
}

// The switches: what the host then holds, and which commands the plug-in offers for "hero".
TEST_F(WindowHost, SwitchesReachTheHostAndThePlugin)
{
    const struct { const char* m_pSwitch; bool m_bGoZ; bool m_bExpressionGoZ; } cases[] = {
        {"", true, false},
        {WindowNames::kPlayingAction, false, false},
        {WindowNames::kExpressionEditingAction, false, true},
        {WindowNames::kBlendShapeEditingAction, true, false},
    };
    QString error;
    ASSERT_EQ(Host().SetSelection({"hero"}, error), QV::kOk);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_pSwitch);
        QAction* toggle = *c.m_pSwitch ? m_pWindow->MainWindow()->findChild<QAction*>(c.m_pSwitch) : nullptr;
        if (toggle != nullptr) {
            toggle->trigger();
            EXPECT_TRUE(toggle->isChecked());
        }
        EXPECT_EQ(Host().Scene().State().m_bPlaying, toggle == m_pWindow->PlayingAction());
        EXPECT_EQ(Object("hero").m_bExpressionEditing, toggle == m_pWindow->ExpressionEditingAction());
        EXPECT_EQ(Object("hero").m_bBlendShapeEditing, toggle == m_pWindow->BlendShapeEditingAction());
        EXPECT_EQ(PluginAction("qtGoZAction")->isEnabled(), c.m_bGoZ);
        EXPECT_EQ(PluginAction("qtExpressionGoZAction")->isEnabled(), c.m_bExpressionGoZ);
        if (toggle != nullptr) {
            toggle->trigger();
            EXPECT_FALSE(toggle->isChecked());
            EXPECT_TRUE(PluginAction("qtGoZAction")->isEnabled()) << "switched off again";
        }
    }
}

TEST_F(WindowHost, WithoutCurrentAvatarTheEditingSwitchesHaveNothingToSwitch)
{
    QComboBox* avatar = m_pWindow->AvatarComboBox();
    EXPECT_EQ(avatar->currentText(), QStringLiteral("Hero"));
    ASSERT_EQ(avatar->itemText(0), QStringLiteral("(none)"));
    avatar->setCurrentIndex(0);
    emit avatar->activated(0);
    EXPECT_TRUE(Host().Scene().State().m_strCurrentAvatar.isEmpty());
    EXPECT_FALSE(m_pWindow->ExpressionEditingAction()->isEnabled());
    EXPECT_FALSE(m_pWindow->BlendShapeEditingAction()->isEnabled());

    const int legacy = avatar->findText("Legacy Figure");
    ASSERT_GT(legacy, 0);
    avatar->setCurrentIndex(legacy);
    emit avatar->activated(legacy);
    EXPECT_EQ(Host().Scene().State().m_strCurrentAvatar, QStringLiteral("legacy"));
    m_pWindow->ExpressionEditingAction()->trigger();
    EXPECT_TRUE(Object("legacy").m_bExpressionEditing);
    EXPECT_FALSE(Object("hero").m_bExpressionEditing);
}

} // namespace
