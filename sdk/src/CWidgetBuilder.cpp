#include "CWidgetBuilder.h"

#include "CPluginDialog.h"
#include "CUiComponent.h"
#include "QVProfile.h"

#include <QDebug>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <QUiLoader>
#include <QVBoxLayout>

namespace {

QWidget* LoadForm(const QString& path, QWidget* parent)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning().noquote() << "Cannot open form" << path;
        return nullptr;
    }
    QUiLoader loader;
    QWidget* form = loader.load(&file, parent);
    if (form == nullptr) {
        qWarning().noquote() << "Cannot load form" << path << loader.errorString();
    }
    return form;
}

} // namespace

CWidgetBuilder::CWidgetBuilder() = default;

CWidgetBuilder::~CWidgetBuilder()
{
    if (m_bOwnsForm && m_pForm) {
        delete m_pForm.data();
    }
}

void CWidgetBuilder::SetFormPath(const QString& path)
{
    m_strFormPath = path;
    const int dot = path.lastIndexOf(QLatin1Char('.'));
    m_strPresetPath = dot < 0 ? path : path.left(dot) + QStringLiteral(".preset");
}

QWidget* CWidgetBuilder::LoadedForm() const
{
    return m_pForm.data();
}

QV::Result CWidgetBuilder::InitToolbarAndMenuUi(CUiComponent* ui, QV::CArrayList<QPointer<QToolBar>>& toolBars,
                                                QV::CArrayList<QPointer<QMenu>>& menus, CMiravaInterface* host)
{
    if (ui == nullptr || host == nullptr) {
        return QV::kInvalidArg;
    }
    QWidget* form = LoadForm(m_strFormPath, nullptr);
    if (form == nullptr) {
        return QV::kFail;
    }
    if (m_bOwnsForm && m_pForm) {
        delete m_pForm.data();
    }
    m_pForm = form;
    m_bOwnsForm = true;

    const QV::Result setup = ui->SetupUi(form);
    if (QV::Failed(setup)) {
        qWarning().noquote() << "Form" << m_strFormPath << "lacks" << ui->MissingNames().join(QStringLiteral(", "));
        return setup;
    }
    for (QToolBar* toolBar : form->findChildren<QToolBar*>(QString(), Qt::FindDirectChildrenOnly)) {
        const QV::Result added = toolBars.Add(QPointer<QToolBar>(toolBar));
        if (QV::Failed(added)) {
            return added;
        }
    }
    for (QMenuBar* menuBar : form->findChildren<QMenuBar*>()) {
        for (QAction* action : menuBar->actions()) {
            if (action->menu() == nullptr) {
                continue;
            }
            const QV::Result added = menus.Add(QPointer<QMenu>(action->menu()));
            if (QV::Failed(added)) {
                return added;
            }
        }
    }
    return QV::kOk;
}

QV::Result CWidgetBuilder::InitUi(CPluginDialog* dialog, CUiComponent* ui, CMiravaInterface* host, bool applyLayout,
                                  bool copyWindowTitle)
{
    Q_UNUSED(host);
    if (dialog == nullptr || ui == nullptr) {
        return QV::kInvalidArg;
    }
    QWidget* form = LoadForm(m_strFormPath, dialog);
    if (form == nullptr) {
        return QV::kFail;
    }
    m_pForm = form;
    m_bOwnsForm = false; // the dialog owns it now

    auto* layout = qobject_cast<QVBoxLayout*>(dialog->layout());
    if (layout == nullptr) {
        delete dialog->layout();
        layout = new QVBoxLayout(dialog);
        layout->setContentsMargins(0, 0, 0, 0);
    }
    layout->addWidget(form);
    dialog->setObjectName(form->objectName());
    if (copyWindowTitle) {
        dialog->setWindowTitle(form->windowTitle());
    }
    dialog->resize(form->size());

    const QV::Result setup = ui->SetupUi(form);
    if (QV::Failed(setup)) {
        qWarning().noquote() << "Form" << m_strFormPath << "lacks" << ui->MissingNames().join(QStringLiteral(", "));
        return setup;
    }
    if (applyLayout && !m_strLayoutIniPath.isEmpty()) {
        QV::CProfile profile;
        const QV::Result opened = profile.Open(m_strLayoutIniPath);
        if (QV::Failed(opened)) {
            return opened;
        }
        const QString section = form->objectName();
        int width = 0;
        int height = 0;
        if (QV::Succeeded(profile.ReadInt(section, QStringLiteral("MinimumWidth"), width)) &&
            QV::Succeeded(profile.ReadInt(section, QStringLiteral("MinimumHeight"), height))) {
            dialog->setMinimumSize(width, height);
        }
        if (QV::Succeeded(profile.ReadInt(section, QStringLiteral("Width"), width)) &&
            QV::Succeeded(profile.ReadInt(section, QStringLiteral("Height"), height))) {
            dialog->resize(width, height);
        }
    }
    return QV::kOk;
}
