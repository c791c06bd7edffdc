#pragma once

#include "QVResult.h"

#include <QString>

class CMiravaInterface;
class CPluginDialog;
class CUiComponent;
class CWidgetBuilder;

namespace MV {

// Loads one of the module's dialog forms (":/plugin/MVGoZBrush/<formFile>") into the dialog,
// with the module's shared layout settings.
QV::Result LoadDialogForm(CWidgetBuilder& builder, CPluginDialog* dialog, CUiComponent* ui, CMiravaInterface* host,
                          const char* formFile, const QString& secondPath);

} // namespace MV
