#pragma once

#include "CCallLog.h"
#include "CFaultInjector.h"
#include "CMessageBoxRecord.h"
#include "CPluginRegistration.h"
#include "CScene.h"
#include "QVArrayList.h"
#include "QVHandle.h"

#include <QList>
#include <QPair>
#include <QSet>
#include <QString>
#include <QStringList>

#include <memory>
#include <string>
#include <vector>

class CEventSender;
class CFigmoraEventSender;
class QMainWindow;
class QObject;
class CNodeController;

namespace MV {
namespace Host {

class CReferenceNodeController;

// What the host's service objects share: the scene, the call log, the injected failures,
// the message boxes, the event senders and the main window.
class CHostContext
{
public:
    explicit CHostContext(std::unique_ptr<CScene> scene);
    ~CHostContext();
    CHostContext(const CHostContext&) = delete;
    CHostContext& operator=(const CHostContext&) = delete;

    // Every operation name the host answers; failures can be injected into these only.
    static const QStringList& OperationNames();

    // Logs the call. True when a failure is injected into it; injected then holds the code.
    bool Enter(const char* operation, const QStringList& args, QV::Result& injected);
    // For operations without a result to pass an injected code on: true when one is injected.
    bool Enter(const char* operation, const QStringList& args = {});
    // Logs a call on one object, whose id leads the arguments. The object when the call goes
    // on (result kOk); null when a failure is injected (result holds it) or the handle is not
    // in the scene (kInvalidArg).
    const CSceneObject* EnterOn(const char* operation, const QV::CHandle* handle, QV::Result& result,
                                const QStringList& moreArgs = {});
    // The same for operations without a result: either failure gives null.
    const CSceneObject* EnterOn(const char* operation, const QV::CHandle* handle);

    // The scene's own, changeable copy of an object that EnterOn handed out.
    CSceneObject& Edit(const CSceneObject& object) { return m_pScene->Object(m_pScene->IndexOf(object.m_strId)); }

    QString Id(const QV::CHandle* handle) const;
    QString Ids(const QV::CArrayList<QV::CHandle*>& handles) const;
    static QString Text(const std::wstring& text);
    static QString Texts(const QV::CArrayList<std::wstring>& texts);
    static QString Number(qint64 value);
    static QString Flag(bool value);
    static QString ClassName(const QObject* object);
    // A path as the host's file system sees it: backslashes separate folders, as on Windows.
    static QString HostPath(const std::wstring& path);

    // Handles of the ids, in order; ids the scene does not know are left out.
    QV::CArrayList<QV::CHandle*> HandlesOf(const QStringList& ids) const;
    // Adds the handles of the ids to list; a failing add ends it with its code.
    QV::Result AppendHandles(const QStringList& ids, QV::CArrayList<QV::CHandle*>& list) const;
    // names becomes source; a failing add ends it with its code.
    static QV::Result FillNames(const QStringList& source, QV::CArrayList<std::wstring>& names);

    CScene& Scene() { return *m_pScene; }
    const CScene& Scene() const { return *m_pScene; }
    CCallLog& Log() { return m_kLog; }
    // The script step now running (-1: none); every call logged from now on carries it.
    void SetStep(int index) { m_iStep = index; }
    int Step() const { return m_iStep; }
    CFaultInjector& Faults() { return m_kFaults; }
    CEventSender* EventSender() const { return m_pEventSender.get(); }
    CFigmoraEventSender* FigmoraEventSender() const { return m_pFigmoraEventSender.get(); }
    QMainWindow* MainWindow() const { return m_pMainWindow.get(); }

    QList<CMessageBoxRecord>& MessageBoxes() { return m_kMessageBoxes; }
    QList<int>& QueuedAnswers() { return m_kQueuedAnswers; }
    QList<CPluginRegistration>& Registrations() { return m_kRegistrations; }
    quint64 NextPluginValue() { return ++m_uLastPluginValue; }

    // The host keeps every controller it handed out; Release only marks it released.
    CNodeController* NewNodeController(const QString& nodeId);

    // Replaces the selection (the picks follow it again) and tells the plug-ins.
    void ReplaceSelection(const QStringList& ids);

private:
    std::unique_ptr<CScene> m_pScene;
    CCallLog m_kLog;
    CFaultInjector m_kFaults;
    std::unique_ptr<CEventSender> m_pEventSender;
    std::unique_ptr<CFigmoraEventSender> m_pFigmoraEventSender;
    std::unique_ptr<QMainWindow> m_pMainWindow;
    QList<CMessageBoxRecord> m_kMessageBoxes;
    QList<int> m_kQueuedAnswers;
    QList<CPluginRegistration> m_kRegistrations;
    quint64 m_uLastPluginValue = 0;
    int m_iStep = -1;
    std::vector<std::unique_ptr<CReferenceNodeController>> m_kControllers;
};

} // namespace Host
} // namespace MV
