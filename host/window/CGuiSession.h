#pragma once

#include "CZBrushReturn.h"
#include "QVResult.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

class QTemporaryDir;

namespace MV {
namespace Host {

class CGoZReturnChannel;
class CPluginHost;
class CReferenceHost;
class CSandbox;
class CScene;
class CStandInTracker;

// What an interactive session needs besides the scene.
struct CGuiOptions
{
    QString m_strPlugin; // absolute path of the module
    QString m_strWorkFolder; // empty: a temporary folder
    QString m_strToolsFolder; // empty: CSandbox::DefaultToolsFolder()
};

// The reference host for a person at the window: the sandbox, the host over the scene, the
// loaded plug-in and the channel on which the return launcher tells that ZBrush sent data
// back. Unlike a scripted run, a notice is raised as soon as it comes in, as a host would.
// ZBrush's programs only log here: the window's ZBrush panel plays the way back on demand.
class CGuiSession : public QObject
{
    Q_OBJECT
public:
    // How long Stop waits for the stand-ins to end on their own before it stops them.
    static constexpr int kStandInGraceMs = 8000;

    explicit CGuiSession(QObject* parent = nullptr);
    ~CGuiSession() override; // stops

    // Checks the scene; error says what is wrong and where.
    QV::Result Prepare(const QByteArray& scene, QString& error);
    // Lays out the sandbox, builds the host and loads the plug-in. On failure everything is
    // undone and error says why; kInvalidArg when not prepared.
    QV::Result Start(const CGuiOptions& options, QString& error);
    // Waits for the stand-ins, unloads the plug-in and restores the process. Safe to repeat.
    void Stop();

    bool IsStarted() const { return m_pPlugins != nullptr; }
    CReferenceHost& Host() const { return *m_pHost; }
    CPluginHost& Plugins() const { return *m_pPlugins; }
    // Absolute path of the sandbox's public folder ("C:/Users/Public" in the work folder).
    QString PublicFolder() const { return m_strPublicFolder; }
    QString WorkFolder() const;
    // How the ZBrush panel sculpts: the scene's zbrush_return, else the defaults.
    const CZBrushReturn& ZBrushSettings() const { return m_kZBrushSettings; }
    // What went wrong around the plug-in without stopping the session.
    const QStringList& Problems() const { return m_kProblems; }
    // How many GoZ notices the host raised.
    int RaisedNotices() const { return m_iRaised; }

signals:
    // After the host raised a GoZ notice and the plug-in returned from it (its dialogs closed).
    void GoZNoticeRaised();
    void ProblemAdded(const QString& problem);

private:
    void AddProblem(const QString& problem);
    void RaisePendingNotices();
    void LayOutHostData(const QString& pluginPath);

    std::unique_ptr<CScene> m_pScene;
    CZBrushReturn m_kZBrushSettings;
    std::unique_ptr<CSandbox> m_pSandbox;
    std::unique_ptr<QTemporaryDir> m_pPrivateFolder;
    std::unique_ptr<CStandInTracker> m_pTracker;
    std::unique_ptr<CGoZReturnChannel> m_pChannel;
    std::unique_ptr<CReferenceHost> m_pHost;
    std::unique_ptr<CPluginHost> m_pPlugins;
    QString m_strPublicFolder;
    QStringList m_kProblems;
    bool m_bRaising = false;
    int m_iRaised = 0;
};

} // namespace Host
} // namespace MV
