#include "CGoZPluginUiComponent.h"

#include <QAction>
#include <QLayout>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

namespace MV {

QV::Result CGoZPluginUiComponent::SetupUi(QWidget* root)
{
    ClearMissing();
    GoZPlugin = Find<QMainWindow>(root, "GoZPlugin");
    menuGoZ = Find<QMenu>(root, "menuGoZ");
    qtExporttoMenu = Find<QMenu>(root, "qtExporttoMenu");
    qtFileMenu = Find<QMenu>(root, "qtFileMenu");
    menuBar = Find<QMenuBar>(root, "menuBar");
    qtPluginsToolBar = Find<QToolBar>(root, "qtPluginsToolBar");
    centralwidget = Find<QWidget>(root, "centralwidget");
    horizontalLayout = Find<QLayout>(root, "horizontalLayout");
    qtGoZAction = Find<QAction>(root, "qtGoZAction");
    qtExpressionGoZAction = Find<QAction>(root, "qtExpressionGoZAction");
    qtGoZAction_2 = Find<QAction>(root, "qtGoZAction_2");
    qtExpressionGoZAction_2 = Find<QAction>(root, "qtExpressionGoZAction_2");
    return MissingResult();
}

} // namespace MV
