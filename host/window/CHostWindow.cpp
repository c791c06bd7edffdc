#include "CHostWindow.h"

#include "CEventSender.h"
#include "CGuiSession.h"
#include "CMeshView.h"
#include "CPluginHost.h"
#include "CReferenceHost.h"
#include "CZBrushPanel.h"
#include "WindowLayout.h"
#include "WindowNames.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDockWidget>
#include <QFile>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QScrollBar>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>
#include <QTableWidget>
#include <QToolBar>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

// Resources of a static library are registered by name, outside any namespace.
static void InitWindowResources()
{
    Q_INIT_RESOURCE(window);
}

namespace MV {
namespace Host {

namespace {

constexpr int kPollMs = 300;
constexpr int kIdRole = Qt::UserRole;
constexpr int kMessageRows = 5;

const QStringList& PropertyNames()
{
    static const QStringList names = {
        QStringLiteral("Name"),        QStringLiteral("Id"),           QStringLiteral("Type"),
        QStringLiteral("Kind"),        QStringLiteral("Node type"),    QStringLiteral("Object type"),
        QStringLiteral("Vertices"),    QStringLiteral("Faces"),        QStringLiteral("Extent"),
        QStringLiteral("GoZ imports"), QStringLiteral("Last GoZ file"), QStringLiteral("Mesh"),
    };
    return names;
}

// What a person calls the object, from what the scene says of it.
QString Describe(const CSceneObject& object)
{
    if (object.m_bCharacter) {
        return QStringLiteral("Character");
    }
    if (object.m_bHasNodeType) {
        switch (object.m_iNodeType) {
        case 35:
            return QStringLiteral("Face part");
        case 36:
            return QStringLiteral("Teeth");
        case 49:
            return QStringLiteral("Eye occlusion");
        case 50:
            return QStringLiteral("Tear line");
        case 51:
        case 52:
            return QStringLiteral("Controller");
        default:
            break;
        }
    }
    if (object.m_bCreated) {
        return QStringLiteral("Created by GoZ");
    }
    if (object.m_uKind == 3) {
        return QStringLiteral("Prop");
    }
    return QStringLiteral("Object (kind %1)").arg(object.m_uKind);
}

QString Extent(const CGoZMesh& mesh)
{
    if (mesh.m_kVertices.isEmpty()) {
        return QStringLiteral("-");
    }
    std::array<double, 3> low = mesh.m_kVertices.first();
    std::array<double, 3> high = low;
    for (const std::array<double, 3>& vertex : mesh.m_kVertices) {
        for (size_t axis = 0; axis < 3; ++axis) {
            low[axis] = std::min(low[axis], vertex[axis]);
            high[axis] = std::max(high[axis], vertex[axis]);
        }
    }
    return QStringLiteral("%1 x %2 x %3")
        .arg(high[0] - low[0], 0, 'g', 4)
        .arg(high[1] - low[1], 0, 'g', 4)
        .arg(high[2] - low[2], 0, 'g', 4);
}

QString Mark(bool on)
{
    return on ? QStringLiteral("on") : QStringLiteral("off");
}

} // namespace

QByteArray CHostWindow::DefaultScene()
{
    InitWindowResources();
    QFile file(QStringLiteral(":/mvgoz-host/window/window-scene.json"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString CHostWindow::DefaultSceneName()
{
    return QStringLiteral("window-scene.json");
}

CHostWindow::CHostWindow(CGuiSession& session, QObject* parent) : QObject(parent), m_rSession(session)
{
    QMainWindow* window = MainWindow();
    window->setToolButtonStyle(Qt::ToolButtonTextOnly);
    window->setDockOptions(QMainWindow::AnimatedDocks);
    BuildMenusAndToolBar();
    BuildSceneDock();
    BuildCentre();
    BuildZBrushDock();
    ConnectHost();
    SetSceneName(DefaultSceneName());
    for (const QString& problem : m_rSession.Problems()) {
        AddMessage(problem, true);
    }
    RefreshScene();
    connect(&m_kPoll, &QTimer::timeout, this, &CHostWindow::Poll);
    m_kPoll.start(kPollMs);
}

CHostWindow::~CHostWindow()
{
    m_kPoll.stop();
    QMainWindow* window = m_rSession.IsStarted() ? MainWindow() : nullptr;
    if (window == nullptr) {
        return;
    }
    window->hide();
    for (const QPointer<QDockWidget>& dock : m_kDocks) {
        if (dock) {
            window->removeDockWidget(dock);
            delete dock.data();
        }
    }
    if (m_pCentre && window->centralWidget() == m_pCentre) {
        delete window->takeCentralWidget();
    }
    if (m_pToolBar != nullptr) {
        window->removeToolBar(m_pToolBar);
        delete m_pToolBar;
    }
    for (const QPointer<QMenu>& menu : m_kMenus) {
        if (menu) {
            window->menuBar()->removeAction(menu->menuAction());
            delete menu.data();
        }
    }
}

QMainWindow* CHostWindow::MainWindow() const
{
    return m_rSession.Host().MainWindow();
}

void CHostWindow::SetSceneName(const QString& name)
{
    MainWindow()->setWindowTitle(QStringLiteral("Reference host - %1").arg(name));
}

void CHostWindow::Show()
{
    QMainWindow* window = MainWindow();
    window->resize(kWidth, kHeight);
    window->show();
}

void CHostWindow::BuildMenusAndToolBar()
{
    QMainWindow* window = MainWindow();
    auto* hostMenu = new QMenu(QStringLiteral("&Host"), window);
    hostMenu->setObjectName(QLatin1String(WindowNames::kHostMenu));
    m_pPlaying = hostMenu->addAction(QStringLiteral("Playback"));
    m_pPlaying->setObjectName(QLatin1String(WindowNames::kPlayingAction));
    m_pPlaying->setToolTip(QStringLiteral("Plays or stops the timeline; the host tells the plug-ins"));
    m_pExpressionEditing = hostMenu->addAction(QStringLiteral("Expression editing"));
    m_pExpressionEditing->setObjectName(QLatin1String(WindowNames::kExpressionEditingAction));
    m_pExpressionEditing->setToolTip(QStringLiteral("Edits an expression of the current avatar"));
    m_pBlendShapeEditing = hostMenu->addAction(QStringLiteral("Blend-shape editing"));
    m_pBlendShapeEditing->setObjectName(QLatin1String(WindowNames::kBlendShapeEditingAction));
    m_pBlendShapeEditing->setToolTip(QStringLiteral("Edits the blend shapes of the current avatar"));
    for (QAction* action : {m_pPlaying, m_pExpressionEditing, m_pBlendShapeEditing}) {
        action->setCheckable(true);
    }
    hostMenu->addSeparator();
    QAction* quit = hostMenu->addAction(QStringLiteral("&Quit"));
    quit->setObjectName(QLatin1String(WindowNames::kQuitAction));
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, window, &QWidget::close);

    connect(m_pPlaying, &QAction::triggered, this, [this](bool on) {
        m_rSession.Host().SetPlaying(on);
        RefreshScene();
    });
    connect(m_pExpressionEditing, &QAction::triggered, this, [this](bool on) { OnEditingSwitch(true, on); });
    connect(m_pBlendShapeEditing, &QAction::triggered, this, [this](bool on) { OnEditingSwitch(false, on); });

    auto* viewMenu = new QMenu(QStringLiteral("&View"), window);
    m_kMenus << hostMenu << viewMenu;
    // The host's menus lead; the plug-in's were added when it loaded.
    QAction* first = window->menuBar()->actions().isEmpty() ? nullptr : window->menuBar()->actions().first();
    window->menuBar()->insertMenu(first, hostMenu);
    window->menuBar()->insertMenu(first, viewMenu);

    m_pToolBar = new QToolBar(QStringLiteral("Host"), window);
    m_pToolBar->setObjectName(QLatin1String(WindowNames::kHostToolBar));
    m_pToolBar->setMovable(false);
    m_pToolBar->addActions({m_pPlaying, m_pExpressionEditing, m_pBlendShapeEditing});
    m_pToolBar->addSeparator();
    auto* avatarLabel = new QLabel(QStringLiteral(" Current avatar: "), m_pToolBar);
    m_pToolBar->addWidget(avatarLabel);
    m_pAvatar = new QComboBox(m_pToolBar);
    m_pAvatar->setObjectName(QLatin1String(WindowNames::kAvatarComboBox));
    m_pAvatar->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_pAvatar->setMinimumContentsLength(14);
    avatarLabel->setBuddy(m_pAvatar);
    m_pToolBar->addWidget(m_pAvatar);
    m_pToolBar->addSeparator();
    connect(m_pAvatar, qOverload<int>(&QComboBox::activated), this, &CHostWindow::OnAvatarChosen);
    const QList<QToolBar*> pluginBars = m_rSession.Plugins().ToolBars();
    if (pluginBars.isEmpty()) {
        window->addToolBar(Qt::TopToolBarArea, m_pToolBar);
    } else {
        window->insertToolBar(pluginBars.first(), m_pToolBar);
    }
}

void CHostWindow::BuildSceneDock()
{
    QMainWindow* window = MainWindow();
    auto* dock = new QDockWidget(QStringLiteral("Scene"), window);
    dock->setObjectName(QLatin1String(WindowNames::kSceneDock));
    dock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetClosable);
    auto* content = new QWidget(dock);
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(4, 4, 4, 4);

    m_pTree = new QTreeWidget(content);
    m_pTree->setObjectName(QLatin1String(WindowNames::kSceneTree));
    m_pTree->setColumnCount(2);
    m_pTree->setHeaderLabels({QStringLiteral("Object"), QStringLiteral("Type")});
    m_pTree->setTextElideMode(Qt::ElideMiddle);
    m_pTree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_pTree->setUniformRowHeights(true);
    m_pTree->header()->setStretchLastSection(false);
    m_pTree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_pTree->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    connect(m_pTree, &QTreeWidget::itemSelectionChanged, this, &CHostWindow::OnTreeSelectionChanged);
    layout->addWidget(m_pTree, 3);

    auto* messagesLabel = new QLabel(QStringLiteral("Messages"), content);
    QFont bold = messagesLabel->font();
    bold.setBold(true);
    messagesLabel->setFont(bold);
    layout->addWidget(messagesLabel);
    m_pMessages = new QListWidget(content);
    m_pMessages->setObjectName(QLatin1String(WindowNames::kMessagesList));
    m_pMessages->setWordWrap(true);
    new CMetricsFollower(m_pMessages, [this] {
        m_pMessages->setMinimumHeight(kMessageRows * (m_pMessages->fontMetrics().height() + 4) +
                                      2 * m_pMessages->frameWidth());
    });
    layout->addWidget(m_pMessages, 1);

    dock->setWidget(content);
    dock->setMinimumWidth(300);
    window->addDockWidget(Qt::LeftDockWidgetArea, dock);
    m_kDocks << dock;
    m_kMenus.at(1)->addAction(dock->toggleViewAction());
}

void CHostWindow::BuildCentre()
{
    QMainWindow* window = MainWindow();
    auto* centre = new QSplitter(Qt::Vertical, window);
    auto* viewPane = new QWidget(centre);
    auto* viewLayout = new QVBoxLayout(viewPane);
    viewLayout->setContentsMargins(4, 4, 4, 0);
    auto* viewBar = new QHBoxLayout();
    m_pShownLabel = new QLabel(viewPane);
    viewBar->addWidget(m_pShownLabel, 1);
    auto* projectionLabel = new QLabel(QStringLiteral("View:"), viewPane);
    m_pProjection = new QComboBox(viewPane);
    m_pProjection->setObjectName(QLatin1String(WindowNames::kProjectionComboBox));
    for (CMeshView::EProjection projection : {CMeshView::EProjection::ThreeQuarter, CMeshView::EProjection::Front,
                                              CMeshView::EProjection::Side, CMeshView::EProjection::Top}) {
        m_pProjection->addItem(CMeshView::ProjectionName(projection), static_cast<int>(projection));
    }
    projectionLabel->setBuddy(m_pProjection);
    viewBar->addWidget(projectionLabel);
    viewBar->addWidget(m_pProjection);
    viewLayout->addLayout(viewBar);
    m_pMeshView = new CMeshView(viewPane);
    m_pMeshView->setObjectName(QLatin1String(WindowNames::kMeshView));
    viewLayout->addWidget(m_pMeshView, 1);
    connect(m_pProjection, qOverload<int>(&QComboBox::currentIndexChanged), this, [this](int index) {
        m_pMeshView->SetProjection(static_cast<CMeshView::EProjection>(m_pProjection->itemData(index).toInt()));
    });

    m_pProperties = new QTableWidget(centre);
    m_pProperties->setObjectName(QLatin1String(WindowNames::kPropertiesTable));
    SetUpListTable(m_pProperties, {QStringLiteral("Property"), QStringLiteral("Value")});
    m_pProperties->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_pProperties->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    m_pProperties->setSelectionMode(QAbstractItemView::NoSelection);
    m_pProperties->setRowCount(PropertyNames().size());
    for (int row = 0; row < PropertyNames().size(); ++row) {
        m_pProperties->setItem(row, 0, new QTableWidgetItem(PropertyNames().at(row)));
        m_pProperties->setItem(row, 1, new QTableWidgetItem());
    }
    m_pProperties->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    KeepRoomForRows(m_pProperties, PropertyNames().size(), true);

    centre->addWidget(viewPane);
    centre->addWidget(m_pProperties);
    centre->setStretchFactor(0, 1);
    centre->setStretchFactor(1, 0);
    centre->setChildrenCollapsible(false);
    window->setCentralWidget(centre);
    m_pCentre = centre;
}

void CHostWindow::BuildZBrushDock()
{
    QMainWindow* window = MainWindow();
    auto* dock = new QDockWidget(QStringLiteral("ZBrush (stand-in)"), window);
    dock->setObjectName(QLatin1String(WindowNames::kZBrushDock));
    dock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetClosable);
    m_pPanel = new CZBrushPanel(m_rSession.PublicFolder(), m_rSession.ZBrushSettings(), dock);
    dock->setWidget(m_pPanel);
    dock->setMinimumWidth(400);
    window->addDockWidget(Qt::RightDockWidgetArea, dock);
    m_kDocks << dock;
    m_kMenus.at(1)->addAction(dock->toggleViewAction());
    connect(m_pPanel, &CZBrushPanel::Report, this, [this](const QString& text) { AddMessage(text, false); });
}

void CHostWindow::ConnectHost()
{
    CReferenceHost& host = m_rSession.Host();
    // Connected after the plug-in: these run once its handlers have returned.
    connect(host.EventSender(), &CEventSender::ObjectSelectionChanged, this, &CHostWindow::RefreshScene);
    connect(host.EventSender(), &CEventSender::ObjectAdded, this, [this] { RefreshScene(); });
    for (QAction* action : m_rSession.Plugins().Actions()) {
        connect(action, &QAction::triggered, this, [this] {
            RefreshScene();
            m_pPanel->Refresh();
        });
    }
    connect(&m_rSession, &CGuiSession::GoZNoticeRaised, this, [this] {
        AddMessage(QStringLiteral("GoZ data came back: the host told the plug-in (GoZDataUpdated)."), false);
        RefreshScene();
        m_pPanel->Refresh();
    });
    connect(&m_rSession, &CGuiSession::ProblemAdded, this, [this](const QString& problem) { AddMessage(problem, true); });
}

QString CHostWindow::Fingerprint() const
{
    const CScene& scene = m_rSession.Host().Scene();
    const CSceneState& state = scene.State();
    // Every change the plug-in makes goes through a host call: a new call may have changed
    // a mesh in place, which no count below would tell.
    QString print = QString::number(m_rSession.Host().CallLog().Records().size()) + QLatin1Char('|') +
                    state.m_kSelection.join(QLatin1Char(',')) + QLatin1Char('|') + state.m_strCurrentAvatar +
                    QLatin1Char('|') + Mark(state.m_bPlaying) + QLatin1Char('|');
    for (int i = 0; i < scene.ObjectCount(); ++i) {
        const CSceneObject& object = scene.Object(i);
        print += QStringLiteral("%1:%2:%3:%4:%5:%6:%7:%8;")
                     .arg(object.m_strId, object.m_strName)
                     .arg(object.m_iGoZImports)
                     .arg(object.m_kMesh.m_kVertices.size())
                     .arg(object.m_kMesh.m_kFaces.size())
                     .arg(object.m_strPose)
                     .arg(Mark(object.m_bExpressionEditing), Mark(object.m_bBlendShapeEditing));
    }
    return print;
}

void CHostWindow::Poll()
{
    if (Fingerprint() != m_strFingerprint) {
        RefreshScene();
    } else {
        SyncMessages();
    }
    m_pPanel->Refresh();
}

void CHostWindow::RefreshScene()
{
    const CScene& scene = m_rSession.Host().Scene();
    QString structure;
    for (int i = 0; i < scene.ObjectCount(); ++i) {
        const CSceneObject& object = scene.Object(i);
        structure += object.m_strId + QLatin1Char('\t') + object.m_strName + QLatin1Char('\t') + object.m_strParent +
                     QLatin1Char('\n');
    }
    if (structure != m_strStructure) {
        m_strStructure = structure;
        RebuildTree();
        UpdateAvatarList();
    }
    UpdateTreeColumns();
    SyncTreeSelection();
    UpdateSwitches();
    UpdateShownObjects();
    SyncMessages();
    m_strFingerprint = Fingerprint();
}

void CHostWindow::RebuildTree()
{
    const CScene& scene = m_rSession.Host().Scene();
    const QSignalBlocker blocker(m_pTree);
    m_pTree->clear();
    QHash<QString, QTreeWidgetItem*> items;
    // Parents come first in scene order only by chance: place every item once its parent is there.
    QList<int> pending;
    for (int i = 0; i < scene.ObjectCount(); ++i) {
        pending << i;
    }
    while (!pending.isEmpty()) {
        QList<int> later;
        for (int index : pending) {
            const CSceneObject& object = scene.Object(index);
            QTreeWidgetItem* parent = object.m_strParent.isEmpty() ? nullptr : items.value(object.m_strParent);
            if (!object.m_strParent.isEmpty() && parent == nullptr) {
                later << index;
                continue;
            }
            auto* item = parent == nullptr ? new QTreeWidgetItem(m_pTree) : new QTreeWidgetItem(parent);
            item->setText(0, object.m_strName);
            item->setData(0, kIdRole, object.m_strId);
            item->setToolTip(0, QStringLiteral("id: %1").arg(object.m_strId));
            items.insert(object.m_strId, item);
        }
        if (later.size() == pending.size()) {
            break; // the scene refuses cycles; this only guards the loop
        }
        pending = later;
    }
    m_pTree->expandAll();
}

void CHostWindow::UpdateTreeColumns()
{
    const CScene& scene = m_rSession.Host().Scene();
    for (QTreeWidgetItemIterator it(m_pTree); *it != nullptr; ++it) {
        const CSceneObject* object = scene.Find((*it)->data(0, kIdRole).toString());
        if (object == nullptr) {
            continue;
        }
        (*it)->setText(1, Describe(*object));
    }
}

void CHostWindow::SyncTreeSelection()
{
    const QStringList& selection = m_rSession.Host().Scene().State().m_kSelection;
    m_bSyncing = true;
    {
        const QSignalBlocker blocker(m_pTree);
        QTreeWidgetItem* first = nullptr;
        for (QTreeWidgetItemIterator it(m_pTree); *it != nullptr; ++it) {
            const bool selected = selection.contains((*it)->data(0, kIdRole).toString());
            (*it)->setSelected(selected);
            if (selected && first == nullptr) {
                first = *it;
            }
        }
        if (first != nullptr) {
            m_pTree->scrollToItem(first);
        }
    }
    m_pTree->viewport()->update();
    m_bSyncing = false;
}

QStringList CHostWindow::TreeSelection() const
{
    QStringList ids;
    for (QTreeWidgetItemIterator it(m_pTree, QTreeWidgetItemIterator::Selected); *it != nullptr; ++it) {
        ids << (*it)->data(0, kIdRole).toString();
    }
    const CScene& scene = m_rSession.Host().Scene();
    std::sort(ids.begin(), ids.end(),
              [&scene](const QString& a, const QString& b) { return scene.IndexOf(a) < scene.IndexOf(b); });
    return ids;
}

void CHostWindow::OnTreeSelectionChanged()
{
    if (m_bSyncing) {
        return;
    }
    QString error;
    // As a script's select step: the selection is replaced and the plug-ins are told.
    if (QV::Failed(m_rSession.Host().SetSelection(TreeSelection(), error))) {
        AddMessage(error, true);
    }
}

void CHostWindow::UpdateAvatarList()
{
    const CScene& scene = m_rSession.Host().Scene();
    const QSignalBlocker blocker(m_pAvatar);
    m_pAvatar->clear();
    m_pAvatar->addItem(QStringLiteral("(none)"), QString());
    for (int i = 0; i < scene.ObjectCount(); ++i) {
        const CSceneObject& object = scene.Object(i);
        if (object.m_bCharacter || object.m_strId == scene.State().m_strCurrentAvatar) {
            m_pAvatar->addItem(object.m_strName, object.m_strId);
        }
    }
}

void CHostWindow::UpdateSwitches()
{
    const CScene& scene = m_rSession.Host().Scene();
    const CSceneState& state = scene.State();
    {
        const QSignalBlocker blocker(m_pAvatar);
        const int index = m_pAvatar->findData(state.m_strCurrentAvatar);
        m_pAvatar->setCurrentIndex(std::max(index, 0));
    }
    m_pPlaying->setChecked(state.m_bPlaying);
    const CSceneObject* avatar = state.m_strCurrentAvatar.isEmpty() ? nullptr : scene.Find(state.m_strCurrentAvatar);
    m_pExpressionEditing->setEnabled(avatar != nullptr);
    m_pBlendShapeEditing->setEnabled(avatar != nullptr);
    m_pExpressionEditing->setChecked(avatar != nullptr && avatar->m_bExpressionEditing);
    m_pBlendShapeEditing->setChecked(avatar != nullptr && avatar->m_bBlendShapeEditing);
}

void CHostWindow::OnAvatarChosen(int index)
{
    QString error;
    if (QV::Failed(m_rSession.Host().SetCurrentAvatar(m_pAvatar->itemData(index).toString(), error))) {
        AddMessage(error, true);
    }
    // The plug-in weighs the current avatar's editing mode; a host tells it of the change.
    m_rSession.Host().RaiseDataChanged(true);
    RefreshScene();
}

void CHostWindow::OnEditingSwitch(bool expression, bool on)
{
    CReferenceHost& host = m_rSession.Host();
    const QString avatar = host.Scene().State().m_strCurrentAvatar;
    QString error;
    const QV::Result result = expression ? host.SetExpressionEditing(avatar, on, error)
                                         : host.SetBlendShapeEditing(avatar, on, error);
    if (QV::Failed(result)) {
        AddMessage(error, true);
    }
    // An editing mode that starts or ends is a blend-shape edit event to the plug-ins.
    host.RaiseDataChanged(true);
    RefreshScene();
}

void CHostWindow::UpdateShownObjects()
{
    const CScene& scene = m_rSession.Host().Scene();
    const QStringList& selection = scene.State().m_kSelection;
    QList<CMeshView::CShownMesh> meshes;
    QStringList names;
    bool changed = false;
    for (const QString& id : selection) {
        const CSceneObject* object = scene.Find(id);
        if (object == nullptr) {
            continue;
        }
        CMeshView::CShownMesh shown;
        shown.m_strName = object->m_strName;
        shown.m_kMesh = object->m_kMesh;
        shown.m_kAsLoaded = object->m_kMeshAtStart;
        changed = changed || shown.IsChanged();
        meshes << shown;
        names << object->m_strName;
    }
    m_pMeshView->SetMeshes(meshes);
    QString caption = names.isEmpty() ? QStringLiteral("Nothing selected")
                                      : QStringLiteral("Showing %1").arg(names.join(QStringLiteral(", ")));
    if (changed) {
        caption += QStringLiteral(" (changed since the scene was loaded)");
    }
    m_pShownLabel->setText(m_pShownLabel->fontMetrics().elidedText(caption, Qt::ElideRight,
                                                                    std::max(m_pShownLabel->width(), 200)));
    m_pShownLabel->setToolTip(caption);
    FillProperties(selection.isEmpty() ? nullptr : scene.Find(selection.first()));
}

void CHostWindow::FillProperties(const CSceneObject* object)
{
    QStringList values;
    if (object != nullptr) {
        values = QStringList{
            object->m_strName,
            object->m_strId,
            Describe(*object),
            QString::number(object->m_uKind),
            object->m_bHasNodeType ? QString::number(object->m_iNodeType) : QStringLiteral("-"),
            QString::number(object->m_iObjectType),
            QString::number(object->m_kMesh.m_kVertices.size()),
            QString::number(object->m_kMesh.m_kFaces.size()),
            Extent(object->m_kMesh),
            QString::number(object->m_iGoZImports),
            object->m_strLastGoZFile.isEmpty() ? QStringLiteral("-") : object->m_strLastGoZFile,
            object->m_kMesh == object->m_kMeshAtStart ? QStringLiteral("as loaded")
                                                      : QStringLiteral("changed since the scene was loaded"),
        };
    }
    for (int row = 0; row < m_pProperties->rowCount(); ++row) {
        QTableWidgetItem* item = m_pProperties->item(row, 1);
        const QString value = row < values.size() ? values.at(row) : QString();
        item->setText(value);
        item->setToolTip(value);
    }
}

QString CHostWindow::Property(const QString& name) const
{
    const int row = PropertyNames().indexOf(name);
    return row < 0 ? QString() : m_pProperties->item(row, 1)->text();
}

void CHostWindow::SyncMessages()
{
    const QList<CMessageBoxRecord>& boxes = m_rSession.Host().MessageBoxes();
    for (; m_iMessagesSeen < boxes.size(); ++m_iMessagesSeen) {
        AddMessage(QStringLiteral("Plug-in: ") + boxes.at(m_iMessagesSeen).m_strText, true);
    }
}

void CHostWindow::AddMessage(const QString& text, bool warning)
{
    auto* item = new QListWidgetItem(text, m_pMessages);
    item->setToolTip(text);
    if (warning) {
        item->setIcon(m_pMessages->style()->standardIcon(QStyle::SP_MessageBoxWarning));
    }
    m_pMessages->scrollToBottom();
    MainWindow()->statusBar()->showMessage(text);
}

} // namespace Host
} // namespace MV
