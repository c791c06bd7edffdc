#include "CFakePlugin.h"

#include "CEventSender.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QListView>
#include <QMenu>
#include <QProcess>
#include <QPushButton>
#include <QTableWidget>
#include <QToolBar>
#include <QVBoxLayout>

namespace {

// A widget of the layout's parent, named.
template <typename T>
T* Add(QLayout* layout, const char* name, T* widget)
{
    widget->setObjectName(QString::fromLatin1(name));
    layout->addWidget(widget);
    return widget;
}

QPushButton* AddButton(QDialog* dialog, QLayout* layout, const char* name)
{
    return Add(layout, name, new QPushButton(QString::fromLatin1(name), dialog));
}

QAction* AddAction(QWidget* parent, const char* name)
{
    auto* action = new QAction(QString::fromLatin1(name), parent);
    action->setObjectName(QString::fromLatin1(name));
    parent->addAction(action);
    return action;
}

} // namespace

CFakePlugin::~CFakePlugin()
{
    for (const QPointer<QMenu>& menu : m_kMenus) {
        delete menu.data();
    }
    for (const QPointer<QToolBar>& toolBar : m_kToolBars) {
        delete toolBar.data();
    }
}

QV::Result CFakePlugin::Initialize(const QString&, const QString& secondPath, CMiravaInterface* host)
{
    if (host == nullptr) {
        return QV::kInvalidArg;
    }
    m_pHost = host;
    setProperty("secondPath", secondPath);
    // Lets a test make Initialize fail through the host.
    if (host->Query()->GetMainWindow() == nullptr) {
        return QV::kFail;
    }

    auto* menu = new QMenu(QStringLiteral("Fake"));
    menu->setObjectName(QStringLiteral("fakeMenu"));
    connect(AddAction(menu, "fakeDialogAction"), &QAction::triggered, this, &CFakePlugin::OnDialog);
    connect(AddAction(menu, "fakeStartAction"), &QAction::triggered, this, &CFakePlugin::OnStartProgram);
    AddAction(menu, "fakeDisabledAction")->setEnabled(false);
    AddAction(menu->addMenu(QStringLiteral("More")), "fakeNestedMenuAction");
    m_kMenus.Add(QPointer<QMenu>(menu));

    auto* toolBar = new QToolBar(QStringLiteral("Fake tools"));
    toolBar->setObjectName(QStringLiteral("fakeToolBar"));
    connect(AddAction(toolBar, "fakeCallAction"), &QAction::triggered, this, &CFakePlugin::OnCallHost);
    m_kToolBars.Add(QPointer<QToolBar>(toolBar));

    CEventSender* sender = host->GetEventSender();
    connect(sender, &CEventSender::ObjectSelectionChanged, this,
            [this] { setProperty("selectionChanges", property("selectionChanges").toInt() + 1); });
    // Context is the sender, as the real plug-in does it: this outlives the plug-in unless the host disconnects.
    CFakePlugin* self = this;
    connect(sender, &CEventSender::Played, sender, [self] { self->setProperty("played", self->property("played").toInt() + 1); });
    host->Registry()->RegisterPluginValue(this, host->File()->GetPluginValue(this));
    return QV::kOk;
}

QV::Result CFakePlugin::GetMenusList(QList<QMenu*>& menus)
{
    for (const QPointer<QMenu>& menu : m_kMenus) {
        menus.append(menu.data());
    }
    return QV::kOk;
}

QV::Result CFakePlugin::GetToolBarsList(QList<QToolBar*>& toolBars)
{
    for (const QPointer<QToolBar>& toolBar : m_kToolBars) {
        toolBars.append(toolBar.data());
    }
    return QV::kOk;
}

void CFakePlugin::Record(const QString& tag, const QString& text, int id)
{
    QV::Result result = QV::kOk;
    m_pHost->Ui()->RecordUsageStep(result, tag, text.toStdWString(), id);
}

void CFakePlugin::OnDialog()
{
    QDialog dialog(m_pHost->Query()->GetMainWindow());
    dialog.setObjectName(QStringLiteral("FakeDialog"));
    dialog.setWindowTitle(QStringLiteral("Fake dialog"));
    auto* layout = new QVBoxLayout(&dialog);
    auto* check = Add(layout, "fakeCheck", new QCheckBox(QStringLiteral("Check me"), &dialog));
    auto* combo = Add(layout, "fakeCombo", new QComboBox(&dialog));
    combo->addItems({QStringLiteral("Alpha"), QStringLiteral("Beta"), QStringLiteral("Gamma")});
    qobject_cast<QListView*>(combo->view())->setRowHidden(1, true);
    int activated = -1;
    connect(combo, QOverload<int>::of(&QComboBox::activated), &dialog, [&activated](int index) { activated = index; });

    auto* table = Add(layout, "fakeTable", new QTableWidget(2, 2, &dialog));
    table->setHorizontalHeaderLabels({QStringLiteral("Name"), QStringLiteral("Action")});
    table->setItem(0, 0, new QTableWidgetItem(QStringLiteral("Row A")));
    table->setItem(1, 0, new QTableWidgetItem(QStringLiteral("Row B")));
    auto* rowCombo = new QComboBox();
    rowCombo->addItems({QStringLiteral("Create"), QStringLiteral("Relink")});
    table->setCellWidget(0, 1, rowCombo);
    auto* fixedCombo = new QComboBox();
    fixedCombo->addItem(QStringLiteral("Skip"));
    fixedCombo->setEnabled(false);
    table->setCellWidget(1, 1, fixedCombo);
    Add(layout, "fakeHiddenCheck", new QCheckBox(QStringLiteral("Hidden"), &dialog))->setVisible(false);
    connect(AddButton(&dialog, layout, "fakeOkButton"), &QPushButton::clicked, &dialog, &QDialog::accept);
    connect(AddButton(&dialog, layout, "fakeCancelButton"), &QPushButton::clicked, &dialog, &QDialog::reject);
    AddButton(&dialog, layout, "fakeDisabledButton")->setEnabled(false);
    connect(AddButton(&dialog, layout, "fakeNestedButton"), &QPushButton::clicked, &dialog, [this, &dialog] {
        QDialog nested(&dialog);
        nested.setObjectName(QStringLiteral("FakeNestedDialog"));
        auto* nestedLayout = new QVBoxLayout(&nested);
        connect(AddButton(&nested, nestedLayout, "fakeNestedClose"), &QPushButton::clicked, &nested, &QDialog::accept);
        Record(QStringLiteral("FakeNestedClosed"), QString(), nested.exec());
    });

    const int code = dialog.exec();
    Record(QStringLiteral("FakeDialogClosed"),
           QStringLiteral("check=%1;combo=%2;activated=%3;row0=%4")
               .arg(check->isChecked() ? 1 : 0)
               .arg(combo->currentIndex())
               .arg(activated)
               .arg(rowCombo->currentText()),
           code);
}

void CFakePlugin::OnCallHost()
{
    QV::Result result = QV::kOk;
    QV::CArrayList<QV::CHandle*> selection;
    m_pHost->Query()->GetSelectedObjects(result, selection, 1);
    int exported = 0;
    for (QV::CHandle* handle : selection) {
        QV::CArrayList<std::wstring> names;
        m_pHost->File()->ExportGoZ(result, handle, L"C:/Users/Public/Pixologic/GoZProjects/Default/", 0, names, 0);
        if (QV::Succeeded(result)) {
            exported += names.GetCount();
        }
    }
    const int answer = m_pHost->Ui()->ShowMessageBox(QStringLiteral("Fake: exported %1").arg(exported), QString(), this,
                                                     kMessageWarning, kMessageButtonOk, kMessageButtonOk);
    Record(QStringLiteral("FakeAnswer"), QString::number(answer), answer);
}

void CFakePlugin::OnStartProgram()
{
    // Relative, as the real plug-in's paths are: the host's current directory is the sandbox.
    const bool started = QProcess::startDetached(QStringLiteral("C:/Users/Public/Pixologic/GoZBrush/GoZBrushFromApp.exe"),
                                                 {QStringLiteral("--fake")});
    Record(QStringLiteral("FakeStarted"), started ? QStringLiteral("yes") : QStringLiteral("no"), 0);
}
