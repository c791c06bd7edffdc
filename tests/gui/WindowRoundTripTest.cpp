// One round trip through the window on a real X server, as a person makes it: select the
// character in the tree, GoZ from the plug-in's tool bar, OK in the send dialog, sculpt and send
// back in the ZBrush panel, Import in the receive dialog; then the same for an expression.
// Screenshots of the window and each dialog go to <build>/screenshots/.

#include "CMeshView.h"
#include "CZBrushPanel.h"
#include "GuiTestSupport.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QListWidget>
#include <QMainWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QWindow>

#include <algorithm>
#include <cstdio>
#include <functional>

using namespace MV;
using namespace MV::Host;
using namespace MV::Test;

namespace {

constexpr int kWaitMs = 30000;
// A window must have been on screen this long before the screen is grabbed: grabbing reads
// the X server's pixels, which the application paints after it is exposed.
constexpr int kSettleMs = 400;
const QString kScreenshots = QStringLiteral(MVGOZ_SCREENSHOT_DIR);

// Saves the widget as it paints itself and, with screen, the whole screen as the X server shows it.
void Shoot(QWidget* widget, const QString& name, bool screen)
{
    QDir().mkpath(kScreenshots);
    EXPECT_TRUE(widget->grab().save(kScreenshots + "/" + name + ".png")) << name.toStdString();
    if (screen) {
        const QPixmap pixels = QGuiApplication::primaryScreen()->grabWindow(0);
        EXPECT_TRUE(pixels.save(kScreenshots + "/screen-" + name + ".png")) << name.toStdString();
    }
}

QDialog* ModalNamed(const char* name)
{
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    return dialog != nullptr && dialog->objectName() == QLatin1String(name) && dialog->isVisible() &&
                   dialog->windowHandle() != nullptr && dialog->windowHandle()->isExposed()
               ? dialog
               : nullptr;
}

void Click(QWidget* widget)
{
    ASSERT_NE(widget, nullptr);
    ASSERT_TRUE(widget->isEnabled() && widget->isVisible()) << widget->objectName().toStdString();
    QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, widget->rect().center());
}

// Clicks opener, then acts from inside the modal loop of the dialog named name once it has been
// on screen kSettleMs. A failed act leaves the dialog open: it is closed so the walk goes on.
void Through(QWidget* opener, const char* name, const std::function<void(QDialog*)>& act)
{
    QTimer poll;
    QElapsedTimer shown;
    bool acted = false;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        QDialog* dialog = acted ? nullptr : ModalNamed(name);
        if (dialog == nullptr) {
            shown.invalidate();
        } else if (!shown.isValid()) {
            shown.start();
        } else if (shown.elapsed() >= kSettleMs) {
            acted = true;
            act(dialog);
            if (dialog->isVisible()) {
                dialog->reject();
            }
        }
    });
    poll.start(20);
    Click(opener); // returns when the dialog has closed, or before it opens when it opens later
    EXPECT_TRUE(QTest::qWaitFor([&] { return acted && QApplication::activeModalWidget() == nullptr; }, kWaitMs))
        << name << " did not open and close";
}

QStringList Column(const QTableWidget* table, int column)
{
    QStringList texts;
    for (int row = 0; row < table->rowCount(); ++row) {
        texts << (table->item(row, column) != nullptr ? table->item(row, column)->text() : QString());
    }
    return texts;
}

// The table can show five rows without scrolling.
void ExpectRoomForFiveRows(const QTableWidget* table)
{
    const int row =
        std::max(table->verticalHeader()->defaultSectionSize(), table->rowCount() > 0 ? table->rowHeight(0) : 0);
    EXPECT_GE(table->viewport()->height(), 5 * row) << table->objectName().toStdString();
}

class WindowRoundTrip : public WindowFixture
{
public:
    QWidget* ToolButton(const char* action)
    {
        QAction* found = PluginAction(action);
        found = found != nullptr ? found : m_pWindow->MainWindow()->findChild<QAction*>(QString::fromLatin1(action));
        for (QToolBar* bar : m_pWindow->MainWindow()->findChildren<QToolBar*>()) {
            if (QWidget* button = bar->widgetForAction(found)) {
                return button;
            }
        }
        return nullptr;
    }

    // Every tool button shows its whole text and none went behind the overflow arrow.
    void ExpectToolBarsWhole()
    {
        for (QToolBar* bar : m_pWindow->MainWindow()->findChildren<QToolBar*>()) {
            for (QToolButton* button : bar->findChildren<QToolButton*>()) {
                if (button->objectName() == QLatin1String("qt_toolbar_ext_button")) {
                    EXPECT_FALSE(button->isVisible()) << bar->windowTitle().toStdString() << " overflows";
                } else if (button->defaultAction() != nullptr && button->isVisible()) {
                    EXPECT_GE(button->width(), button->sizeHint().width()) << button->text().toStdString();
                    EXPECT_LE(button->geometry().right(), bar->width()) << button->text().toStdString();
                }
            }
        }
        for (QAction* menu : m_pWindow->MainWindow()->menuBar()->actions()) {
            EXPECT_TRUE(m_pWindow->MainWindow()->menuBar()->actionGeometry(menu).isValid())
                << menu->text().toStdString();
        }
    }

    bool ChangedAndShown(const QString& id, const CGoZMesh& before)
    {
        return Object(id).m_kMesh != before &&
               m_pWindow->Property("Mesh") == QLatin1String("changed since the scene was loaded");
    }
};

TEST_F(WindowRoundTrip, CharacterGoesToZBrushAndComesBackSculptedThenAnExpressionDoes)
{
    QMainWindow* window = m_pWindow->MainWindow();
    CZBrushPanel* panel = m_pWindow->ZBrushPanel();
    m_pWindow->Show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    ASSERT_EQ(window->size(), QSize(CHostWindow::kWidth, CHostWindow::kHeight));
    const CGoZMesh heroAtStart = Object("hero").m_kMesh;
    ASSERT_FALSE(heroAtStart.m_kVertices.isEmpty());

    QTreeWidget* tree = m_pWindow->SceneTree();
    QTreeWidgetItem* hero = TreeItem(tree, "hero");
    ASSERT_NE(hero, nullptr);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, Qt::NoModifier, tree->visualItemRect(hero).center());
    ASSERT_TRUE(QTest::qWaitFor([&] { return PluginAction("qtGoZAction")->isEnabled(); }, kWaitMs)) << "GoZ for Hero";
    QTest::qWait(kSettleMs);
    EXPECT_EQ(Host().Scene().State().m_kSelection, QStringList{"hero"});
    EXPECT_EQ(m_pWindow->Property("Name"), QStringLiteral("Hero"));
    EXPECT_EQ(m_pWindow->MeshView()->Meshes().size(), 1);
    ExpectToolBarsWhole();
    ExpectRoomForFiveRows(panel->ProjectFilesTable());
    ExpectRoomForFiveRows(panel->SentMeshesTable());
    const QTableWidget* properties = m_pWindow->PropertiesTable();
    EXPECT_GE(properties->viewport()->height(), properties->rowCount() * properties->rowHeight(0)) << "all properties";
    Shoot(window, "main-window", true);

    Through(ToolButton("qtGoZAction"), "FMtoZBrushDlg", [&](QDialog* dialog) {
        EXPECT_EQ(dialog->parentWidget(), window);
        auto* table = dialog->findChild<QTableWidget*>("qtFMGoZToZBrushTableWidget");
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(Column(table, 0), QStringList{"Hero"});
        Shoot(dialog, "send-dialog", true);
        Click(dialog->findChild<QPushButton*>("qtGoZButton"));
    });
    ASSERT_TRUE(QTest::qWaitFor([&] {
        return Column(panel->ProjectFilesTable(), 0).contains("Hero.goz") &&
               Column(panel->SentMeshesTable(), 0) == QStringList{"Hero"};
    }, kWaitMs)) << "the ZBrush panel lists what arrived";
    const int row = Column(panel->ProjectFilesTable(), 0).indexOf("Hero.goz");
    EXPECT_EQ(panel->ProjectFilesTable()->item(row, 1)->text(), QStringLiteral("sent"));
    EXPECT_EQ(panel->ProjectFilesTable()->item(row, 2)->text(), QString::number(heroAtStart.m_kVertices.size()));
    Shoot(window, "main-window-sent", false);

    Through(panel->SculptButton(), "ZBrushToFMDlg", [&](QDialog* dialog) {
        EXPECT_EQ(dialog->parentWidget(), window);
        auto* table = dialog->findChild<QTableWidget*>("qtFMGoZBackFromZBrushTableWidget");
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(Column(table, 0), QStringList{"Hero"});
        EXPECT_TRUE(Column(panel->ProjectFilesTable(), 0).contains("Hero.GoZ"));
        Shoot(dialog, "receive-dialog", true);
        Click(dialog->findChild<QPushButton*>("qtImportButton"));
    });
    ASSERT_TRUE(QTest::qWaitFor([&] { return ChangedAndShown("hero", heroAtStart); }, kWaitMs)) << "Hero changed";
    EXPECT_FALSE(m_pWindow->MessagesList()
                     ->findItems("GoZ data came back: the host told the plug-in (GoZDataUpdated).", Qt::MatchExactly)
                     .isEmpty());
    const CMeshView::CShownMesh shown = m_pWindow->MeshView()->Meshes().value(0);
    EXPECT_EQ(shown.m_strName, QStringLiteral("Hero"));
    EXPECT_EQ(shown.m_kMesh, Object("hero").m_kMesh);
    EXPECT_EQ(shown.m_kAsLoaded, heroAtStart);
    const double scale = m_kSession.ZBrushSettings().m_dScale;
    EXPECT_NEAR(shown.m_kMesh.m_kVertices.first()[0], heroAtStart.m_kVertices.first()[0] * scale, 1e-9);
    EXPECT_EQ(m_pWindow->Property("GoZ imports"), QStringLiteral("1"));
    EXPECT_EQ(m_kSession.RaisedNotices(), 1);
    Shoot(window, "main-window-after-import", false);

    Click(ToolButton("qtExpressionEditingAction"));
    Click(ToolButton("qtBlendShapeEditingAction"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return PluginAction("qtExpressionGoZAction")->isEnabled(); }, kWaitMs));
    EXPECT_TRUE(Object("hero").m_bExpressionEditing);
    EXPECT_TRUE(Object("hero").m_bBlendShapeEditing);
    Through(ToolButton("qtExpressionGoZAction"), "FMtoZBrushDlg", [&](QDialog* dialog) {
        const QStringList face{"hero_eye_occlusion", "hero_tearline", "hero_hair", "hero_teeth"};
        QStringList selection = Host().Scene().State().m_kSelection;
        EXPECT_TRUE(std::is_permutation(selection.begin(), selection.end(), face.begin(), face.end()))
            << "the plug-in selected the face: " << selection.join(' ').toStdString();
        EXPECT_EQ(m_pWindow->TreeSelection(), face) << "and the tree follows";
        Shoot(dialog, "send-dialog-expression", false);
        Click(dialog->findChild<QPushButton*>("qtGoZButton"));
    });
    ASSERT_TRUE(QTest::qWaitFor([&] { return panel->SentMeshesTable()->rowCount() == 5; }, kWaitMs)) << "face sent";
    EXPECT_EQ(Column(panel->SentMeshesTable(), 0),
              (QStringList{"Hero_EyeOcclusion", "Hero_Tearline", "Hero_Hair", "FM_Base_Upper_Teeth",
                           "FM_Base_Lower_Teeth"}));
    EXPECT_TRUE(Column(panel->ProjectFilesTable(), 0).contains("Hero_EyeOcclusion.mvMotionPlus"));
    Shoot(window, "main-window-expression-sent", false);

    const CGoZMesh occlusionAtStart = Object("hero_eye_occlusion").m_kMesh;
    Through(panel->SculptButton(), "ExpressionZBrushToFMDlg", [&](QDialog* dialog) {
        EXPECT_EQ(dialog->parentWidget(), window);
        EXPECT_EQ(m_kSession.RaisedNotices(), 2);
        Shoot(dialog, "expression-dialog", true);
        Click(dialog->findChild<QPushButton*>("qtImportButton"));
    });
    ASSERT_TRUE(QTest::qWaitFor([&] { return ChangedAndShown("hero_eye_occlusion", occlusionAtStart); }, kWaitMs));
    const QList<CMeshView::CShownMesh> face = m_pWindow->MeshView()->Meshes();
    EXPECT_EQ(face.size(), 4) << "the face the plug-in selected";
    EXPECT_TRUE(std::any_of(face.begin(), face.end(), [](const CMeshView::CShownMesh& m) { return m.IsChanged(); }));
    Shoot(window, "main-window-after-expression", false);
    if (HasFailure()) {
        std::printf("the screenshots are in %s\n", qPrintable(kScreenshots));
    }
}

} // namespace
