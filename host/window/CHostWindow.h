#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>

class QAction;
class QComboBox;
class QDockWidget;
class QLabel;
class QListWidget;
class QMainWindow;
class QMenu;
class QTableWidget;
class QToolBar;
class QTreeWidget;
class QWidget;

namespace MV {
namespace Host {

class CGuiSession;
class CMeshView;
class CZBrushPanel;
struct CSceneObject;

// The reference host as a desktop window. It furnishes the host's own main window, the one
// the plug-in parents its dialogs to and whose menu bar and tool bars hold the plug-in's
// menus and tool bar: the host's switches and current avatar, the scene tree (its selection
// is the host's), the selected meshes and their properties, the plug-in's messages, and the
// ZBrush panel that plays the other side of the round trip.
class CHostWindow : public QObject
{
    Q_OBJECT
public:
    static constexpr int kWidth = 1280;
    static constexpr int kHeight = 800;

    // The session must be started and outlive the window.
    explicit CHostWindow(CGuiSession& session, QObject* parent = nullptr);
    ~CHostWindow() override; // takes its widgets out of the host's main window

    // The scene the window opens without one given, and its name.
    static QByteArray DefaultScene();
    static QString DefaultSceneName();

    void SetSceneName(const QString& name);
    void Show();

    QMainWindow* MainWindow() const;
    QTreeWidget* SceneTree() const { return m_pTree; }
    CMeshView* MeshView() const { return m_pMeshView; }
    QTableWidget* PropertiesTable() const { return m_pProperties; }
    CZBrushPanel* ZBrushPanel() const { return m_pPanel; }
    QListWidget* MessagesList() const { return m_pMessages; }
    QAction* PlayingAction() const { return m_pPlaying; }
    QAction* ExpressionEditingAction() const { return m_pExpressionEditing; }
    QAction* BlendShapeEditingAction() const { return m_pBlendShapeEditing; }
    QComboBox* AvatarComboBox() const { return m_pAvatar; }
    QToolBar* HostToolBar() const { return m_pToolBar; }
    // The ids of the objects selected in the tree, in scene order.
    QStringList TreeSelection() const;
    // The text of a property row ("Vertices", ...); empty when there is no such row.
    QString Property(const QString& name) const;

    // Shows the scene as the host holds it now.
    void RefreshScene();

private:
    void BuildMenusAndToolBar();
    void BuildSceneDock();
    void BuildCentre();
    void BuildZBrushDock();
    void ConnectHost();

    QString Fingerprint() const;
    void RebuildTree();
    void UpdateTreeColumns();
    void SyncTreeSelection();
    void UpdateAvatarList();
    void UpdateSwitches();
    void UpdateShownObjects();
    void FillProperties(const CSceneObject* object);
    void SyncMessages();
    void AddMessage(const QString& text, bool warning);
    void Poll();

    void OnTreeSelectionChanged();
    void OnAvatarChosen(int index);
    void OnEditingSwitch(bool expression, bool on);

    CGuiSession& m_rSession;
    QTreeWidget* m_pTree = nullptr;
    QListWidget* m_pMessages = nullptr;
    CMeshView* m_pMeshView = nullptr;
    QComboBox* m_pProjection = nullptr;
    QLabel* m_pShownLabel = nullptr;
    QTableWidget* m_pProperties = nullptr;
    CZBrushPanel* m_pPanel = nullptr;
    QAction* m_pPlaying = nullptr;
    QAction* m_pExpressionEditing = nullptr;
    QAction* m_pBlendShapeEditing = nullptr;
    QComboBox* m_pAvatar = nullptr;
    QToolBar* m_pToolBar = nullptr;
    QList<QPointer<QMenu>> m_kMenus;
    QList<QPointer<QDockWidget>> m_kDocks;
    QPointer<QWidget> m_pCentre;
    QTimer m_kPoll;
    QString m_strStructure; // ids, names and parents the tree was built from
    QString m_strFingerprint;
    int m_iMessagesSeen = 0;
    bool m_bSyncing = false;
};

} // namespace Host
} // namespace MV
