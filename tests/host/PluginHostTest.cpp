#include "CEventSender.h"
#include "CPluginHost.h"
#include "CReferenceHost.h"
#include "HostTestSupport.h"

#include <QAction>
#include <QDir>
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

std::unique_ptr<CReferenceHost> NewHost(const char* scene = MV::Host::Test::kBasicScene)
{
    auto parsed = MV::Host::Test::ParseScene(scene);
    return parsed ? std::make_unique<CReferenceHost>(std::move(parsed)) : nullptr;
}

// A host over the basic scene and a plug-in host that expects the fake plug-in's class.
class hostPluginHost : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_pHost = NewHost();
        ASSERT_TRUE(m_pHost);
        m_pPlugins = std::make_unique<CPluginHost>(*m_pHost);
        m_pPlugins->SetExpectedClassName(QStringLiteral("CFakePlugin"));
    }

    // Declared after the host: the plug-in host unloads through it when it goes.
    std::unique_ptr<CReferenceHost> m_pHost;
    std::unique_ptr<CPluginHost> m_pPlugins;
};

TEST_F(hostPluginHost, LoadsAPluginAndHandsItsMenusAndToolBarsToTheMainWindow)
{
    CReferenceHost* host = m_pHost.get();
    CPluginHost& plugins = *m_pPlugins;
    plugins.SetSecondPath(QStringLiteral("second"));
    const QString path = QStringLiteral(MVGOZ_FAKE_PLUGIN);
    ASSERT_EQ(QV::kOk, plugins.Load(path)) << plugins.Errors().join(QStringLiteral("; ")).toStdString();
    ASSERT_TRUE(plugins.IsLoaded());
    EXPECT_TRUE(plugins.Errors().isEmpty());
    EXPECT_EQ(QV::kOk, plugins.InitializeResult());
    EXPECT_EQ(0x01800007u, plugins.CompatibleApps());

    QObject* instance = plugins.Instance();
    ASSERT_NE(nullptr, instance);
    EXPECT_EQ(QFileInfo(path).absolutePath() + QLatin1Char('/'), instance->property("pluginFolder").toString());
    EXPECT_EQ(QStringLiteral("second"), instance->property("secondPath").toString());

    // The host asks IsValid before Initialize, which then registers the plug-in.
    const QList<CCallRecord>& log = host->CallLog().Records();
    ASSERT_FALSE(log.isEmpty());
    EXPECT_EQ(QStringLiteral("IsPluginSupported"), log.first().m_strOperation);
    ASSERT_EQ(1, host->Registrations().size());
    EXPECT_EQ(QStringLiteral("CFakePlugin"), host->Registrations().first().m_strClassName);

    ASSERT_EQ(1, plugins.Menus().size());
    EXPECT_TRUE(host->MainWindow()->menuBar()->actions().contains(plugins.Menus().first()->menuAction()));
    ASSERT_EQ(1, plugins.ToolBars().size());
    EXPECT_EQ(host->MainWindow(), plugins.ToolBars().first()->parentWidget());

    for (const char* name : {"fakeDialogAction", "fakeCallAction", "fakeNestedMenuAction", "fakeDisabledAction"}) {
        QAction* action = plugins.FindAction(QString::fromLatin1(name));
        ASSERT_NE(nullptr, action) << name;
        EXPECT_EQ(QString::fromLatin1(name), action->objectName());
    }
    EXPECT_EQ(nullptr, plugins.FindAction(QStringLiteral("noSuchAction")));
    EXPECT_EQ(nullptr, plugins.FindAction(QString()));
}

struct CRefusal
{
    const char* m_szCase;
    std::function<QString(const QString& scratch)> m_kPath;
    const char* m_szClassName;
    std::function<void(CReferenceHost&)> m_kPrepare;
    const char* m_szError;
};

TEST_F(hostPluginHost, RefusesModulesItMustNotLoadAndSaysWhy)
{
    QTemporaryDir scratch;
    ASSERT_TRUE(scratch.isValid());
    auto fake = [](const QString&) { return QStringLiteral(MVGOZ_FAKE_PLUGIN); };
    auto nothing = [](CReferenceHost&) {};
    const CRefusal cases[] = {
        {"relative path", [](const QString&) { return QStringLiteral("fake/mvgoz_fakeplugin.so"); }, "CFakePlugin", nothing,
         "the plug-in path must be absolute"},
        {"missing file", [](const QString& dir) { return dir + QStringLiteral("/missing.so"); }, "CFakePlugin", nothing,
         "no plug-in file at"},
        {"not a plug-in",
         [](const QString& dir) {
             QFile file(dir + QStringLiteral("/text.so"));
             file.open(QIODevice::WriteOnly);
             file.write("not a library");
             return file.fileName();
         },
         "CFakePlugin", nothing, "is not a Qt plug-in"},
        {"wrong interface", [](const QString&) { return QStringLiteral(MVGOZ_FAKE_PLUGIN_WRONG_IID); }, "CFakePlugin", nothing,
         "implements interface \"Other.Vendor.Interface/1.0\", not \"Quorvane.Mirava.CPluginInterface/7.0\""},
        {"wrong class", fake, "CGoZBrushPlugin", nothing, "the plug-in class is \"CFakePlugin\", not \"CGoZBrushPlugin\""},
        {"IsValid false", fake, "CFakePlugin", [](CReferenceHost& host) { host.Scene().State().m_bPluginSupported = false; },
         "the plug-in refused this host (IsValid returned false)"},
        {"other application", [](const QString&) { return QStringLiteral(MVGOZ_FAKE_PLUGIN_OTHER_APP); }, "CFakePlugin",
         nothing, "the plug-in is for applications 0x00000001, none of them this host (0x01800000)"},
        {"Initialize fails", fake, "CFakePlugin",
         [](CReferenceHost& host) { host.SetFailure(QStringLiteral("GetMainWindow"), QV::kFail); },
         "Initialize failed with 0x80000000"},
    };
    for (const CRefusal& item : cases) {
        auto host = NewHost();
        ASSERT_TRUE(host);
        item.m_kPrepare(*host);
        CPluginHost plugins(*host);
        plugins.SetExpectedClassName(QString::fromLatin1(item.m_szClassName));
        EXPECT_TRUE(QV::Failed(plugins.Load(item.m_kPath(scratch.path())))) << item.m_szCase;
        EXPECT_FALSE(plugins.IsLoaded()) << item.m_szCase;
        EXPECT_EQ(nullptr, plugins.Instance()) << item.m_szCase << ": a refused plug-in must not stay alive";
        const QString errors = plugins.Errors().join(QStringLiteral("; "));
        EXPECT_TRUE(errors.contains(QString::fromLatin1(item.m_szError))) << item.m_szCase << ": " << errors.toStdString();
        EXPECT_TRUE(host->MainWindow()->menuBar()->actions().isEmpty()) << item.m_szCase;
    }
}

TEST_F(hostPluginHost, UnloadDeletesThePluginAndCutsItsConnections)
{
    CReferenceHost* host = m_pHost.get();
    CPluginHost& plugins = *m_pPlugins;
    ASSERT_EQ(QV::kOk, plugins.Load(QStringLiteral(MVGOZ_FAKE_PLUGIN)));
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

    ASSERT_EQ(QV::kOk, plugins.Load(QStringLiteral(MVGOZ_FAKE_PLUGIN)));
    ASSERT_NE(nullptr, plugins.Instance());
    EXPECT_FALSE(plugins.Instance()->property("played").isValid()) << "a reload gives a fresh instance";
    host->SetPlaying(true);
    EXPECT_EQ(1, plugins.Instance()->property("played").toInt());
}

TEST_F(hostPluginHost, RefusesASecondModuleWhileOneIsLoaded)
{
    CPluginHost& plugins = *m_pPlugins;
    ASSERT_EQ(QV::kOk, plugins.Load(QStringLiteral(MVGOZ_FAKE_PLUGIN)));
    EXPECT_EQ(QV::kFail, plugins.Load(QStringLiteral(MVGOZ_FAKE_PLUGIN)));
    EXPECT_TRUE(plugins.IsLoaded());
    EXPECT_TRUE(plugins.Errors().last().contains(QStringLiteral("already loaded")));
}

} // namespace
