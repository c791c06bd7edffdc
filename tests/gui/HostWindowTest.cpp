#include "CCommandLine.h"
#include "CEventSender.h"
#include "CMeshView.h"
#include "CPluginHost.h"
#include "GuiTestSupport.h"
#include "WindowNames.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QListWidget>
#include <QLocalSocket>
#include <QMainWindow>
#include <QMenuBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QToolBar>

#include <ostream>

using namespace MV;
using namespace MV::Host;
using namespace MV::Test;

namespace {

// ---------------------------------------------------------------------------------------
// The gui command line.

struct GuiArgsCase
{
    const char* m_pName;
    QStringList m_kArgs;
    bool m_bAccepted;
    const char* m_pError; // part of the message when refused
};

void PrintTo(const GuiArgsCase& c, std::ostream* out)
{
    *out << c.m_pName;
}

const GuiArgsCase kGuiArgs[] = {
    {"Bare", {"gui"}, true, ""},
    {"SceneAndPlugin", {"gui", "--scene", "s.json", "--plugin", "/p/MVGoZBrush.so", "--workdir", "w"}, true, ""},
    {"NoScript", {"gui", "--script", "x.json"}, false, "unknown option \"--script\" for gui"},
    {"NoReport", {"gui", "--report", "r.json"}, false, "unknown option \"--report\" for gui"},
    {"NoZBrushIsForRun", {"gui", "--no-zbrush"}, false, "unknown option \"--no-zbrush\" for gui"},
    {"SceneWithoutValue", {"gui", "--scene"}, false, "--scene needs a value"},
    {"Twice", {"gui", "--scene", "a.json", "--scene", "b.json"}, false, "--scene is given twice"},
};

class GuiArgs : public ::testing::TestWithParam<GuiArgsCase>
{
};

TEST_P(GuiArgs, AreCheckedBeforeAWindowOpens)
{
    const GuiArgsCase& c = GetParam();
    CHostCommand command;
    QString error;
    const QV::Result result = CCommandLine::Parse(c.m_kArgs, command, error);
    if (!c.m_bAccepted) {
        EXPECT_TRUE(QV::Failed(result));
        EXPECT_TRUE(error.contains(QString::fromUtf8(c.m_pError))) << error.toStdString();
        return;
    }
    ASSERT_EQ(result, QV::kOk) << error.toStdString();
    EXPECT_EQ(command.m_eKind, CHostCommand::EKind::Gui);
    if (c.m_kArgs.size() > 1) {
        EXPECT_EQ(command.m_strScene, QDir::current().absoluteFilePath("s.json"));
        EXPECT_EQ(command.m_strPlugin, QStringLiteral("/p/MVGoZBrush.so"));
        EXPECT_EQ(command.m_strWorkFolder, QDir::current().absoluteFilePath("w"));
    } else {
        EXPECT_TRUE(command.m_strPlugin.isEmpty()) << "the program fills in its default";
    }
}

INSTANTIATE_TEST_SUITE_P(Window, GuiArgs, ::testing::ValuesIn(kGuiArgs),
                         [](const ::testing::TestParamInfo<GuiArgsCase>& info) { return info.param.m_pName; });

TEST(WindowCommandLine, DefaultPluginIsThePluginFolderBesideTheProgramFolder)
{
    EXPECT_EQ(CCommandLine::DefaultPluginPath("/work/build/bin"), QStringLiteral("/work/build/plugin-folder/MVGoZBrush.so"));
}

// ---------------------------------------------------------------------------------------
// The session.

TEST(WindowSession, RefusesABadSceneAndAMissingPluginAndLeavesTheProcessAsItWas)
{
    const QString before = QDir::currentPath();
    CGuiSession bad;
    QString error;
    EXPECT_EQ(bad.Prepare("{\"objects\": 3}", error), QV::kInvalidArg);
    EXPECT_TRUE(error.startsWith("scene: ")) << error.toStdString();

    CGuiSession session;
    ASSERT_EQ(session.Prepare(CHostWindow::DefaultScene(), error), QV::kOk) << error.toStdString();
    CGuiOptions options;
    options.m_strPlugin = QDir::temp().absoluteFilePath("no-such-plugin.so");
    EXPECT_EQ(session.Start(options, error), QV::kFail);
    EXPECT_TRUE(error.contains("no-such-plugin.so")) << error.toStdString();
    EXPECT_FALSE(session.IsStarted());
    EXPECT_EQ(QDir::currentPath(), before);
    EXPECT_TRUE(qEnvironmentVariableIsEmpty("MVGOZ_HOST_SOCKET"));
}

TEST(WindowSession, SceneReturnSettingsBecomeThePanelsSculpt)
{
    CGuiSession session;
    QString error;
    ASSERT_EQ(session.Prepare(R"({"zbrush_return": {"scale": 3, "rename": {"A": "B"}}})", error), QV::kOk);
    EXPECT_EQ(session.ZBrushSettings().m_dScale, 3.0);
    EXPECT_EQ(session.ZBrushSettings().m_kRenames.value("A"), QStringLiteral("B"));
    ASSERT_EQ(session.Prepare("{}", error), QV::kOk);
    EXPECT_EQ(session.ZBrushSettings().m_dScale, CZBrushReturn().m_dScale);
}

class WindowHost : public WindowFixture
{
};

TEST_F(WindowHost, LauncherNoticeIsRaisedAsSoonAsItArrives)
{
    QSignalSpy raised(&m_kSession, &CGuiSession::GoZNoticeRaised);
    QSignalSpy updated(Host().EventSender(), &CEventSender::GoZDataUpdated);
    // Nothing came back, so the plug-in has nothing to show; should a dialog open all the same, it goes.
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [] {
        if (QWidget* modal = QApplication::activeModalWidget()) {
            modal->close();
        }
    });
    closer.start(50);

    QLocalSocket socket;
    socket.connectToServer(qEnvironmentVariable("MVGOZ_HOST_SOCKET"));
    ASSERT_TRUE(socket.waitForConnected(5000)) << socket.errorString().toStdString();
    socket.write("{\"notice\": \"GoZDataUpdated\", \"step\": null, \"object_list\": [\"Hero\"]}\n");
    socket.flush();
    ASSERT_TRUE(raised.wait(5000));
    EXPECT_EQ(updated.count(), 1);
    EXPECT_EQ(m_kSession.RaisedNotices(), 1);
    EXPECT_EQ(m_pWindow->MessagesList()->item(m_pWindow->MessagesList()->count() - 1)->text(),
              QStringLiteral("GoZ data came back: the host told the plug-in (GoZDataUpdated)."));
}

// ---------------------------------------------------------------------------------------
// The window and the host.

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

TEST_F(WindowHost, TreeSelectionIsTheHostsAndTellsThePlugin)
{
    QSignalSpy changed(Host().EventSender(), &CEventSender::ObjectSelectionChanged);
    QAction* goz = m_kSession.Plugins().FindAction("qtGoZAction");
    ASSERT_NE(goz, nullptr);
    EXPECT_FALSE(goz->isEnabled());

    TreeItem(m_pWindow->SceneTree(), "vase")->setSelected(true);
    EXPECT_EQ(Host().Scene().State().m_kSelection, QStringList{"vase"});
    EXPECT_EQ(changed.count(), 1);
    EXPECT_TRUE(goz->isEnabled()) << "the plug-in heard of the selection";
    EXPECT_EQ(m_pWindow->Property("Name"), QStringLiteral("Vase"));
    EXPECT_EQ(m_pWindow->Property("Vertices"), QString::number(Object("vase").m_kMesh.m_kVertices.size()));
    EXPECT_EQ(m_pWindow->Property("Mesh"), QStringLiteral("as loaded"));
    ASSERT_EQ(m_pWindow->MeshView()->Meshes().size(), 1);
    EXPECT_EQ(m_pWindow->MeshView()->Meshes().first().m_strName, QStringLiteral("Vase"));

    QString error;
    ASSERT_EQ(Host().SetSelection({"hero_teeth", "lamp"}, error), QV::kOk);
    EXPECT_EQ(m_pWindow->TreeSelection(), (QStringList{"hero_teeth", "lamp"})) << "the tree follows the host";
    EXPECT_EQ(changed.count(), 2) << "following the host raises nothing more";
}

TEST_F(WindowHost, ChangesTheHostMakesAreShownWithoutAsking)
{
    QString error;
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

// ---------------------------------------------------------------------------------------
// The switches: what the host then holds, and which commands the plug-in offers.

struct SwitchCase
{
    const char* m_pName;
    const char* m_pSwitch;
    bool m_bGoZ; // with "hero" selected
    bool m_bExpressionGoZ;
};

void PrintTo(const SwitchCase& c, std::ostream* out)
{
    *out << c.m_pName;
}

const SwitchCase kSwitches[] = {
    {"None", "", true, false},
    {"Playback", WindowNames::kPlayingAction, false, false},
    {"ExpressionEditing", WindowNames::kExpressionEditingAction, false, true},
    {"BlendShapeEditing", WindowNames::kBlendShapeEditingAction, true, false},
};

class Switches : public WindowFixture, public ::testing::WithParamInterface<SwitchCase>
{
};

TEST_P(Switches, ReachTheHostAndThePlugin)
{
    const SwitchCase& c = GetParam();
    QString error;
    ASSERT_EQ(Host().SetSelection({"hero"}, error), QV::kOk);
    QAction* toggle = m_pWindow->MainWindow()->findChild<QAction*>(QString::fromLatin1(c.m_pSwitch));
    if (toggle != nullptr) {
        toggle->trigger();
        EXPECT_TRUE(toggle->isChecked());
    }
    const CSceneState& state = Host().Scene().State();
    EXPECT_EQ(state.m_bPlaying, toggle == m_pWindow->PlayingAction());
    EXPECT_EQ(Object("hero").m_bExpressionEditing, toggle == m_pWindow->ExpressionEditingAction());
    EXPECT_EQ(Object("hero").m_bBlendShapeEditing, toggle == m_pWindow->BlendShapeEditingAction());
    EXPECT_EQ(m_kSession.Plugins().FindAction("qtGoZAction")->isEnabled(), c.m_bGoZ);
    EXPECT_EQ(m_kSession.Plugins().FindAction("qtExpressionGoZAction")->isEnabled(), c.m_bExpressionGoZ);
    if (toggle != nullptr) {
        toggle->trigger();
        EXPECT_FALSE(toggle->isChecked());
        EXPECT_TRUE(m_kSession.Plugins().FindAction("qtGoZAction")->isEnabled()) << "switched off again";
    }
}

INSTANTIATE_TEST_SUITE_P(Window, Switches, ::testing::ValuesIn(kSwitches),
                         [](const ::testing::TestParamInfo<SwitchCase>& info) { return info.param.m_pName; });

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
