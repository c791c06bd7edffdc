#pragma once

#include "CUiComponent.h"

class QAction;
class QLayout;
class QMainWindow;
class QMenu;
class QMenuBar;
class QToolBar;
class QWidget;

namespace MV {

// Named parts of MVGoZPlugin.ui.
class CGoZPluginUiComponent : public CUiComponent
{
public:
    QV::Result SetupUi(QWidget* root) override;

    QMainWindow* GoZPlugin = nullptr;
    QMenu* menuGoZ = nullptr;
    QMenu* qtExporttoMenu = nullptr;
    QMenu* qtFileMenu = nullptr;
    QMenuBar* menuBar = nullptr;
    QToolBar* qtPluginsToolBar = nullptr;
    QWidget* centralwidget = nullptr;
    QLayout* horizontalLayout = nullptr;
    QAction* qtGoZAction = nullptr;
    QAction* qtExpressionGoZAction = nullptr;
    QAction* qtGoZAction_2 = nullptr;
    QAction* qtExpressionGoZAction_2 = nullptr;
};

} // namespace MV
