#include "HostTestSupport.h"

#include <QFile>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QTemporaryDir>
#include <QToolBar>

#include <gtest/gtest.h>

#include <functional>

using namespace MV::Host;

namespace {

// A host over the basic scene and a plug-in host that expects the fake plug-in's class.
class hostPluginHost : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_kRun.Ready()); }

    MV::Host::Test::CHostRun m_kRun;
};

TEST_F(hostPluginHost, LoadsAPluginAndHandsItsMenusAndToolBarsToTheMainWindow)
{
    // What the report says of a loaded plug-in is checked with the real one in the integration tests.
    CPluginHost& plugins = *m_kRun.m_pPlugins;
    plugins.SetSecondPath(QStringLiteral("second"));
    ASSERT_TRUE(m_kRun.Load());
    EXPECT_EQ(QStringLiteral("second"), plugins.Instance()->property("secondPath").toString());
    EXPECT_EQ(QStringLiteral("IsPluginSupported"), m_kRun.m_pHost->CallLog().Records().value(0).m_strOperation)
        << "the host asks IsValid before Initialize";
    QMainWindow* window = m_kRun.m_pHost->MainWindow();
    ASSERT_EQ(1, plugins.Menus().size());
    EXPECT_TRUE(window->menuBar()->actions().contains(plugins.Menus().first()->menuAction()));
    ASSERT_EQ(1, plugins.ToolBars().size());
    EXPECT_EQ(window, plugins.ToolBars().first()->parentWidget());
    // Actions are found in menus, sub-menus and tool bars.
    for (const char* name : {"fakeDialogAction", "fakeCallAction", "fakeNestedMenuAction"}) {
        EXPECT_NE(nullptr, plugins.FindAction(QString::fromLatin1(name))) << name;
    }
    EXPECT_EQ(nullptr, plugins.FindAction(QString()));
}

TEST_F(hostPluginHost, RefusesModulesItMustNotLoadAndSaysWhy)
{
    QTemporaryDir scratch;
    ASSERT_TRUE(scratch.isValid());
    QFile text(scratch.path() + QStringLiteral("/text.so"));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("not a library");
    text.close();
    const QString fake = QStringLiteral(MVGOZ_FAKE_PLUGIN);
    const struct
    {
        const char* m_szCase;
        QString m_strPath;
        const char* m_szClassName;
        std::function<void(CReferenceHost&)> m_kPrepare;
        const char* m_szError;
    } cases[] = {
        {"relative path", QStringLiteral("fake/mvgoz_fakeplugin.so"), "CFakePlugin", nullptr, "the plug-in path must be absolute"},
        {"missing file", scratch.path() + QStringLiteral("/missing.so"), "CFakePlugin", nullptr, "no plug-in file at"},
        {"not a plug-in", text.fileName(), "CFakePlugin", nullptr, "is not a Qt plug-in"},
        {"wrong interface", QStringLiteral(MVGOZ_FAKE_PLUGIN_WRONG_IID), "CFakePlugin", nullptr,
         "implements interface \"Other.Vendor.Interface/1.0\", not \"Quorvane.Mirava.CPluginInterface/7.0\""},
        {"wrong class", fake, "CGoZBrushPlugin", nullptr, "the plug-in class is \"CFakePlugin\", not \"CGoZBrushPlugin\""},
        {"IsValid false", fake, "CFakePlugin", [](CReferenceHost& host) { host.Scene().State().m_bPluginSupported = false; },
         "the plug-in refused this host (IsValid returned false)"},
        {"other application", QStringLiteral(MVGOZ_FAKE_PLUGIN_OTHER_APP), "CFakePlugin", nullptr,
         "the plug-in is for applications 0x00000001, none of them this host (0x01800000)"},
        {"Initialize fails", fake, "CFakePlugin",
         [](CReferenceHost& host) { host.SetFailure(QStringLiteral("GetMainWindow"), QV::kFail); },
         "Initialize failed with 0x80000000"},
    };
    for (const auto& item : cases) {
        auto scene = MV::Host::Test::ParseScene(MV::Host::Test::kBasicScene);
        ASSERT_TRUE(scene);
        CReferenceHost host(std::move(scene));
        if (item.m_kPrepare) {
            item.m_kPrepare(host);
        }
        CPluginHost plugins(host);
        plugins.SetExpectedClassName(QString::fromLatin1(item.m_szClassName));
        EXPECT_TRUE(QV::Failed(plugins.Load(item.m_strPath))) << item.m_szCase;
        EXPECT_FALSE(plugins.IsLoaded()) << item.m_szCase;
        EXPECT_EQ(nullptr, plugins.Instance()) << item.m_szCase << ": a refused plug-in must not stay alive";
        const QString errors = plugins.Errors().join(QStringLiteral("; "));
        EXPECT_TRUE(errors.contains(QString::fromLatin1(item.m_szError))) << item.m_szCase << ": " << errors.toStdString();
        EXPECT_TRUE(host.MainWindow()->menuBar()->actions().isEmpty()) << item.m_szCase;
    }
}

TEST_F(hostPluginHost, UnloadDeletesThePluginAndCutsItsConnections)
{
    CReferenceHost* host = m_kRun.m_pHost.get();
    CPluginHost& plugins = *m_kRun.m_pPlugins;
    ASSERT_TRUE(m_kRun.Load());
    QPointer<QObject> first = plugins.Instance();
    QPointer<QToolBar> toolBar = plugins.ToolBars().first();
    host->SetPlaying(true);
    EXPECT_EQ(1, first->property("played").toInt());

    EXPECT_EQ(QV::kOk, plugins.Unload());
    EXPECT_EQ(QV::kNothingDone, plugins.FinalizeResult()) << "Finalize is called before the instance goes";
    EXPECT_TRUE(first.isNull());
    EXPECT_TRUE(toolBar.isNull());
    EXPECT_FALSE(plugins.IsLoaded());
    EXPECT_TRUE(host->MainWindow()->menuBar()->actions().isEmpty());
    // The plug-in's functor was connected with the sender as context: it must be gone.
    host->SetPlaying(true);
    host->SetPlaying(false);
    EXPECT_EQ(QV::kNothingDone, plugins.Unload());

    ASSERT_TRUE(m_kRun.Load());
    EXPECT_FALSE(plugins.Instance()->property("played").isValid()) << "a reload gives a fresh instance";
    host->SetPlaying(true);
    EXPECT_EQ(1, plugins.Instance()->property("played").toInt());
}

TEST_F(hostPluginHost, RefusesASecondModuleWhileOneIsLoaded)
{
    ASSERT_TRUE(m_kRun.Load());
    EXPECT_EQ(QV::kFail, m_kRun.m_pPlugins->Load(QStringLiteral(MVGOZ_FAKE_PLUGIN)));
    EXPECT_TRUE(m_kRun.m_pPlugins->IsLoaded());
    EXPECT_TRUE(m_kRun.m_pPlugins->Errors().last().contains(QStringLiteral("already loaded")));
}

} // namespace
