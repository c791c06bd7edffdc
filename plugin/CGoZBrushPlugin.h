#pragma once

#include "CAbstractPlugin.h"
#include "CGoZPluginUiComponent.h"
#include "CPluginTranslator.h"

#include <QMetaObject>
#include <QPointer>
#include <QWidget>

#include <vector>

class CBaseEvent;

namespace MV {

class ExpressionZBrushToFMDlg;
class FMToZBrushDlg;
class ZBrushToFMDlg;

// The module's one plug-in object: builds the GoZ commands, creates the three dialogs and
// decides when each command is available.
class CGoZBrushPlugin : public QWidget, public CAbstractPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID MV_PLUGIN_INTERFACE_IID)
    Q_INTERFACES(CPluginInterface)

public:
    CGoZBrushPlugin();
    ~CGoZBrushPlugin() override;

    QV::Result Initialize(const QString& pluginFolder, const QString& secondPath, CMiravaInterface* host) override;
    QV::Result Finalize() override;
    QV::Result Activate() override;
    QV::Result Deactivate() override;
    QV::Result GetContextList(QList<QAction*>& actions) override;
    QV::Result GetMenusList(QList<QMenu*>& menus) override;
    QV::Result GetToolBarsList(QList<QToolBar*>& toolBars) override;
    bool IsValid(CMiravaInterface* host) override;
    quint32 GetCompatibleApps() override;

    // Read-only views for the host's self-test and for tests.
    const CGoZPluginUiComponent& Ui() const { return m_kUi; }
    FMToZBrushDlg* SendDialog() const { return m_pSendDialog; }
    ZBrushToFMDlg* ReceiveDialog() const { return m_pReceiveDialog; }
    ExpressionZBrushToFMDlg* ExpressionDialog() const { return m_pExpressionDialog; }
    QString PluginFolder() const { return m_strPluginFolder; }
    QString PixologicRoot() const { return m_strPixologicRoot; }

private:
    QV::Result CheckExportGozObject(bool expression);
    void OnExpressionGoz();
    void OnObjectDataChanged2(CBaseEvent* event);
    QV::Result UpdateUi();
    QV::Result CopyRequiredFilesBeforeSave();

    void OnPlaybackChanged();
    QV::Result RunSelfTest(const QString& pluginName);
    void ShowWarning(const QString& text);
    void SetActionsEnabled(bool goz, bool expression);

    CGoZPluginUiComponent m_kUi;
    // Installed before any form or text is loaded, removed on Finalize.
    CPluginTranslator m_kTranslator;
    // The host's main window owns the dialogs and may destroy them first.
    QPointer<ZBrushToFMDlg> m_pReceiveDialog;
    QPointer<ExpressionZBrushToFMDlg> m_pExpressionDialog;
    QPointer<FMToZBrushDlg> m_pSendDialog;
    QString m_strPluginFolder;
    QString m_strPixologicRoot;
    // Functor connections live on the host's sender; they must not outlive this object.
    std::vector<QMetaObject::Connection> m_kSenderConnections;
};

} // namespace MV
