#pragma once

#include "CGuiSession.h"
#include "CHostWindow.h"
#include "CPluginHost.h"
#include "CReferenceHost.h"
#include "CScene.h"

#include <QAction>
#include <QCoreApplication>
#include <QEvent>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

#include <gtest/gtest.h>

#include <memory>

namespace MV {
namespace Test {

inline QTreeWidgetItem* TreeItem(QTreeWidget* tree, const QString& id)
{
    for (QTreeWidgetItemIterator it(tree); *it != nullptr; ++it) {
        if ((*it)->data(0, Qt::UserRole).toString() == id) {
            return *it;
        }
    }
    return nullptr;
}

// The window over its own scene with the real plug-in, as mvgoz-host gui opens it.
class WindowFixture : public ::testing::Test
{
public:
    void SetUp() override
    {
        QString error;
        ASSERT_EQ(m_kSession.Prepare(Host::CHostWindow::DefaultScene(), error), QV::kOk) << error.toStdString();
        Host::CGuiOptions options;
        options.m_strPlugin = QStringLiteral(MVGOZ_PLUGIN_DIR "/MVGoZBrush.so");
        ASSERT_EQ(m_kSession.Start(options, error), QV::kOk) << error.toStdString();
        m_pWindow = std::make_unique<Host::CHostWindow>(m_kSession);
    }

    void TearDown() override
    {
        m_pWindow.reset();
        m_kSession.Stop();
        // Widgets the plug-in replaced are deleted later; let that happen while the application lives.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    Host::CReferenceHost& Host() { return m_kSession.Host(); }
    const Host::CSceneObject& Object(const QString& id) { return *Host().Scene().Find(id); }
    QAction* PluginAction(const char* name) { return m_kSession.Plugins().FindAction(QString::fromLatin1(name)); }

    Host::CGuiSession m_kSession;
    std::unique_ptr<Host::CHostWindow> m_pWindow;
};

} // namespace Test
} // namespace MV
