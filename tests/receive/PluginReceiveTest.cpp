// The built module, loaded as a host loads it: the host's data event reaches its receive dialog.
#include "CPluginHost.h"
#include "ReceiveFixture.h"

#include <QDialog>
#include <QMainWindow>

using namespace MV;
using namespace MV::Test;

namespace {

// The module's dialog, found by class name: the module has its own copy of the class.
QDialog* ModuleReceiveDialog(QMainWindow* window)
{
    for (QDialog* dialog : window->findChildren<QDialog*>()) {
        if (QLatin1String(dialog->metaObject()->className()) == QLatin1String("MV::ZBrushToFMDlg")) {
            return dialog;
        }
    }
    return nullptr;
}

TEST_F(ReceiveFixture, TheHostsDataEventReachesTheLoadedModulesReceiveDialog)
{
    StartHost(kDialogScene);
    Host::CPluginHost plugins(*m_pHost);
    ASSERT_EQ(plugins.Load(QStringLiteral(MVGOZ_PLUGIN_MODULE)), QV::kOk) << plugins.Errors().join(' ').toStdString();
    QDialog* dialog = ModuleReceiveDialog(m_pHost->MainWindow());
    ASSERT_NE(dialog, nullptr);
    auto* table = dialog->findChild<QTableWidget*>(QStringLiteral("qtFMGoZBackFromZBrushTableWidget"));
    ASSERT_NE(table, nullptr);

    WriteReturn(kDialogReturn);
    WriteFile(QLatin1String(kTextureSizeFile), kTextureSizes);
    m_pHost->RaiseGoZDataUpdated();
    EXPECT_EQ(table->rowCount(), 5);
    EXPECT_TRUE(dialog->isVisible());
    dialog->hide();
    EXPECT_EQ(plugins.Unload(), QV::kOk);
}

} // namespace
