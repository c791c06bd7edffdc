#include "DialogForm.h"

#include "CWidgetBuilder.h"

namespace MV {

QV::Result LoadDialogForm(CWidgetBuilder& builder, CPluginDialog* dialog, CUiComponent* ui, CMiravaInterface* host,
                          const char* formFile, const QString& secondPath)
{
    builder.SetFormPath(QStringLiteral(":/plugin/MVGoZBrush/") + QLatin1String(formFile));
    builder.SetSecondPath(secondPath);
    builder.SetLayoutIniPath(QStringLiteral(":/plugin/MVGoZBrush/LayoutUI.ini"));
    return builder.InitUi(dialog, ui, host, true, true);
}

} // namespace MV
