// One round trip through the window on a real X server, as a person makes it: select the
// character in the tree, GoZ from the plug-in's tool bar, OK in the send dialog, sculpt and send
// back in the ZBrush panel, Import in the receive dialog; then the same for an expression.
// Screenshots of the window and each dialog go to <build>/screenshots/.

#include "CMeshView.h"
#include "CPluginHost.h"
#include "CZBrushPanel.h"
#include "GuiTestSupport.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QHeaderView>
#include <QLabel>
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
#include <vector>

using namespace MV;
using namespace MV::Host;
using namespace MV::Test;

namespace {

constexpr int kWatchdogMs = 90000;
// A window must have been on screen this long before the screen is grabbed: grabbing reads
// the X server's pixels, which the application paints after it is exposed.
constexpr int kSettleMs = 400;

QString ScreenshotFolder()
{
    return QStringLiteral(MVGOZ_SCREENSHOT_DIR);
}

// Saves the widget as it paints itself and the whole screen as the X server shows it.
void Shoot(QWidget* widget, const QString& name, bool screen)
{
    QDir().mkpath(ScreenshotFolder());
    EXPECT_TRUE(widget->grab().save(ScreenshotFolder() + "/" + name + ".png")) << name.toStdString();
    if (screen) {
        const QPixmap pixels = QGuiApplication::primaryScreen()->grabWindow(0);
        EXPECT_TRUE(pixels.save(ScreenshotFolder() + "/screen-" + name + ".png")) << name.toStdString();
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

QStringList Column(const QTableWidget* table, int column)
{
    QStringList texts;
    for (int row = 0; row < table->rowCount(); ++row) {
        texts << (table->item(row, column) != nullptr ? table->item(row, column)->text() : QString());
    }
    return texts;
}

// Steps that wait for what a person would wait for, then act. A step that opens a modal dialog
// does not return until it closes; the following steps run meanwhile from the dialog's loop.
class CWalk : public QObject
{
public:
    struct CStep
    {
        QString m_strName;
        std::function<bool()> m_kReady;
        std::function<void()> m_kAct;
    };

    void Add(const QString& name, std::function<bool()> ready, std::function<void()> act)
    {
        m_kSteps.push_back({name, std::move(ready), std::move(act)});
    }

    // Ready only once the condition has held for ms without a break.
    static std::function<bool()> HeldFor(std::function<bool()> condition, int ms)
    {
        auto since = std::make_shared<QElapsedTimer>();
        return [condition, ms, since] {
            if (!condition()) {
                since->invalidate();
                return false;
            }
            if (!since->isValid()) {
                since->start();
            }
            return since->elapsed() >= ms;
        };
    }

    void Run()
    {
        QEventLoop loop;
        m_pLoop = &loop;
        QTimer watchdog;
        watchdog.setSingleShot(true);
        QObject::connect(&watchdog, &QTimer::timeout, &loop, [&] {
            const QString waiting = m_iNext < static_cast<int>(m_kSteps.size())
                                        ? m_kSteps[static_cast<size_t>(m_iNext)].m_strName
                                        : QStringLiteral("the end");
            QWidget* modal = QApplication::activeModalWidget();
            ADD_FAILURE() << "the walk did not finish within " << kWatchdogMs << " ms; waiting for \""
                          << waiting.toStdString() << "\"; the modal window is "
                          << (modal == nullptr ? std::string("none")
                                               : QStringLiteral("%1 \"%2\" (%3, %4)")
                                                     .arg(QString::fromLatin1(modal->metaObject()->className()),
                                                          modal->objectName(),
                                                          modal->isVisible() ? "visible" : "hidden",
                                                          modal->windowHandle() != nullptr &&
                                                                  modal->windowHandle()->isExposed()
                                                              ? "exposed"
                                                              : "not exposed")
                                                     .toStdString());
            Abandon();
        });
        watchdog.start(kWatchdogMs);
        ScheduleTick();
        loop.exec();
        m_pLoop = nullptr;
        // A dialog left open by an abandoned walk would block the steps' callers forever.
        while (QWidget* modal = QApplication::activeModalWidget()) {
            modal->close();
            QCoreApplication::processEvents();
        }
    }

private:
    // A fresh timer each time: Qt does not fire a timer again while its own handler still runs,
    // and a step that opens a dialog runs until the dialog closes.
    void ScheduleTick() { QTimer::singleShot(20, this, &CWalk::Tick); }

    void Tick()
    {
        if (m_iNext >= static_cast<int>(m_kSteps.size()) || m_bStopped) {
            if (m_pLoop != nullptr) {
                m_pLoop->quit();
            }
            return;
        }
        ScheduleTick();
        CStep& step = m_kSteps[static_cast<size_t>(m_iNext)];
        if (!step.m_kReady()) {
            return;
        }
        ++m_iNext;
        const QString name = step.m_strName;
        SCOPED_TRACE(name.toStdString());
        step.m_kAct();
        if (::testing::Test::HasFatalFailure()) {
            Abandon();
        }
    }

    void Abandon()
    {
        m_bStopped = true;
        // Closing the open dialogs lets the steps blocked in them return.
        QTimer::singleShot(0, [] {
            while (QWidget* modal = QApplication::activeModalWidget()) {
                modal->close();
            }
        });
    }

    std::vector<CStep> m_kSteps;
    int m_iNext = 0;
    bool m_bStopped = false;
    QEventLoop* m_pLoop = nullptr;
};

class WindowRoundTrip : public WindowFixture
{
public:
    QWidget* ToolButton(const char* action)
    {
        QAction* found = m_kSession.Plugins().FindAction(QString::fromLatin1(action));
        if (found == nullptr) {
            found = m_pWindow->MainWindow()->findChild<QAction*>(QString::fromLatin1(action));
        }
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
                    continue;
                }
                if (button->defaultAction() == nullptr || !button->isVisible()) {
                    continue;
                }
                EXPECT_GE(button->width(), button->sizeHint().width()) << button->text().toStdString();
                EXPECT_LE(button->geometry().right(), bar->width()) << button->text().toStdString();
            }
        }
        for (QAction* menu : m_pWindow->MainWindow()->menuBar()->actions()) {
            EXPECT_TRUE(m_pWindow->MainWindow()->menuBar()->actionGeometry(menu).isValid()) << menu->text().toStdString();
        }
    }

    // The table can show five rows without scrolling.
    static void ExpectRoomForFiveRows(const QTableWidget* table)
    {
        const int row = std::max(table->verticalHeader()->defaultSectionSize(),
                                 table->rowCount() > 0 ? table->rowHeight(0) : 0);
        const int needed = 5 * row;
        EXPECT_GE(table->viewport()->height(), needed) << table->objectName().toStdString();
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

    CWalk walk;
    walk.Add(
        "select Hero in the scene tree", [] { return true; },
        [&] {
            QTreeWidget* tree = m_pWindow->SceneTree();
            QTreeWidgetItem* hero = TreeItem(tree, "hero");
            ASSERT_NE(hero, nullptr);
            QTest::mouseClick(tree->viewport(), Qt::LeftButton, Qt::NoModifier, tree->visualItemRect(hero).center());
        });
    walk.Add(
        "GoZ is offered for Hero",
        CWalk::HeldFor([&] { return m_kSession.Plugins().FindAction("qtGoZAction")->isEnabled(); }, kSettleMs),
        [&] {
            EXPECT_EQ(Host().Scene().State().m_kSelection, QStringList{"hero"});
            EXPECT_EQ(m_pWindow->Property("Name"), QStringLiteral("Hero"));
            EXPECT_EQ(m_pWindow->MeshView()->Meshes().size(), 1);
            ExpectToolBarsWhole();
            ExpectRoomForFiveRows(panel->ProjectFilesTable());
            ExpectRoomForFiveRows(panel->SentMeshesTable());
            const QTableWidget* properties = m_pWindow->PropertiesTable();
            EXPECT_GE(properties->viewport()->height(), properties->rowCount() * properties->rowHeight(0))
                << "every property row is in sight";
            Shoot(window, "main-window", true);
            Click(ToolButton("qtGoZAction")); // returns when the send dialog has closed
        });
    walk.Add(
        "the send dialog opens over the window", CWalk::HeldFor([] { return ModalNamed("FMtoZBrushDlg"); }, kSettleMs),
        [&] {
            QDialog* dialog = ModalNamed("FMtoZBrushDlg");
            EXPECT_EQ(dialog->parentWidget(), window);
            auto* table = dialog->findChild<QTableWidget*>("qtFMGoZToZBrushTableWidget");
            ASSERT_NE(table, nullptr);
            EXPECT_EQ(Column(table, 0), QStringList{"Hero"});
            Shoot(dialog, "send-dialog", true);
            Click(dialog->findChild<QPushButton*>("qtGoZButton"));
        });
    walk.Add(
        "the ZBrush panel lists what arrived",
        [&] {
            return QApplication::activeModalWidget() == nullptr &&
                   Column(panel->ProjectFilesTable(), 0).contains("Hero.goz") &&
                   Column(panel->SentMeshesTable(), 0) == QStringList{"Hero"};
        },
        [&] {
            const int row = Column(panel->ProjectFilesTable(), 0).indexOf("Hero.goz");
            EXPECT_EQ(panel->ProjectFilesTable()->item(row, 1)->text(), QStringLiteral("sent"));
            EXPECT_EQ(panel->ProjectFilesTable()->item(row, 2)->text(), QString::number(heroAtStart.m_kVertices.size()));
            Shoot(window, "main-window-sent", false);
            Click(panel->SculptButton());
        });
    walk.Add(
        "the receive dialog opens", CWalk::HeldFor([] { return ModalNamed("ZBrushToFMDlg"); }, kSettleMs), [&] {
            QDialog* dialog = ModalNamed("ZBrushToFMDlg");
            EXPECT_EQ(dialog->parentWidget(), window);
            auto* table = dialog->findChild<QTableWidget*>("qtFMGoZBackFromZBrushTableWidget");
            ASSERT_NE(table, nullptr);
            EXPECT_EQ(Column(table, 0), QStringList{"Hero"});
            EXPECT_TRUE(Column(panel->ProjectFilesTable(), 0).contains("Hero.GoZ"));
            Shoot(dialog, "receive-dialog", true);
            Click(dialog->findChild<QPushButton*>("qtImportButton"));
        });
    walk.Add(
        "the mesh view shows Hero changed",
        [&] {
            return QApplication::activeModalWidget() == nullptr && Object("hero").m_kMesh != heroAtStart &&
                   m_pWindow->Property("Mesh") == QLatin1String("changed since the scene was loaded");
        },
        [&] {
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
        });
    walk.Add(
        "Expression GoZ is offered while the expression is edited",
        [&] { return m_kSession.Plugins().FindAction("qtExpressionGoZAction")->isEnabled(); },
        [&] {
            EXPECT_TRUE(Object("hero").m_bExpressionEditing);
            EXPECT_TRUE(Object("hero").m_bBlendShapeEditing);
            Click(ToolButton("qtExpressionGoZAction"));
        });
    walk.Add(
        "the face is sent", CWalk::HeldFor([] { return ModalNamed("FMtoZBrushDlg"); }, kSettleMs), [&] {
            const QStringList face{"hero_eye_occlusion", "hero_tearline", "hero_hair", "hero_teeth"};
            QStringList selection = Host().Scene().State().m_kSelection;
            selection.sort();
            QStringList sortedFace = face;
            sortedFace.sort();
            EXPECT_EQ(selection, sortedFace) << "the plug-in selected the face";
            EXPECT_EQ(m_pWindow->TreeSelection(), face) << "and the tree follows";
            QDialog* dialog = ModalNamed("FMtoZBrushDlg");
            Shoot(dialog, "send-dialog-expression", false);
            Click(dialog->findChild<QPushButton*>("qtGoZButton"));
        });
    walk.Add(
        "the face meshes arrive",
        [&] { return QApplication::activeModalWidget() == nullptr && panel->SentMeshesTable()->rowCount() == 5; },
        [&] {
            EXPECT_EQ(Column(panel->SentMeshesTable(), 0),
                      (QStringList{"Hero_EyeOcclusion", "Hero_Tearline", "Hero_Hair", "FM_Base_Upper_Teeth",
                                   "FM_Base_Lower_Teeth"}));
            EXPECT_TRUE(Column(panel->ProjectFilesTable(), 0).contains("Hero_EyeOcclusion.mvMotionPlus"));
            Shoot(window, "main-window-expression-sent", false);
            Click(panel->SculptButton());
        });
    walk.Add(
        "the expression dialog opens",
        CWalk::HeldFor([] { return ModalNamed("ExpressionZBrushToFMDlg"); }, kSettleMs), [&] {
            QDialog* dialog = ModalNamed("ExpressionZBrushToFMDlg");
            EXPECT_EQ(dialog->parentWidget(), window);
            EXPECT_EQ(m_kSession.RaisedNotices(), 2);
            Shoot(dialog, "expression-dialog", true);
            Click(dialog->findChild<QPushButton*>("qtImportButton"));
        });
    const CGoZMesh occlusionAtStart = Object("hero_eye_occlusion").m_kMesh;
    walk.Add(
        "the face meshes changed",
        [&] {
            return QApplication::activeModalWidget() == nullptr &&
                   Object("hero_eye_occlusion").m_kMesh != occlusionAtStart &&
                   m_pWindow->Property("Mesh") == QLatin1String("changed since the scene was loaded");
        },
        [&] {
            const QList<CMeshView::CShownMesh> shown = m_pWindow->MeshView()->Meshes();
            EXPECT_EQ(shown.size(), 4) << "the face the plug-in selected";
            EXPECT_TRUE(std::any_of(shown.begin(), shown.end(),
                                    [](const CMeshView::CShownMesh& mesh) { return mesh.IsChanged(); }));
            Shoot(window, "main-window-after-expression", false);
        });
    walk.Run();
    if (HasFailure()) {
        std::printf("the screenshots are in %s\n", qPrintable(ScreenshotFolder()));
    }
}

} // namespace
