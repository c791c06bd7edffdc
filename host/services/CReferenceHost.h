#pragma once

#include "CCallLog.h"
#include "CMessageBoxRecord.h"
#include "CMiravaInterface.h"
#include "CPluginRegistration.h"
#include "CScene.h"
#include "ECompatibleApp.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class QMainWindow;

namespace MV {
namespace Host {

class CHostContext;
class CReferenceAvatarService;
class CReferenceCharacterService;
class CReferenceEditService;
class CReferenceFileService;
class CReferenceFittingService;
class CReferencePluginsService;
class CReferenceQueryService;
class CReferenceRegistryService;
class CReferenceUiService;

// The reference host: every host service over an in-memory scene, a call log of what the
// plug-in asked, injectable failures, recorded message boxes, and the host's events.
class CReferenceHost : public CMiravaInterface
{
public:
    // The application this host is, as plug-ins see it.
    static constexpr quint32 kHostApps = CompatibleApp_Figmora | CompatibleApp_FigmoraPipeline;

    explicit CReferenceHost(std::unique_ptr<CScene> scene = nullptr);
    ~CReferenceHost() override;
    CReferenceHost(const CReferenceHost&) = delete;
    CReferenceHost& operator=(const CReferenceHost&) = delete;

    CEventSender* GetEventSender() override;
    CFigmoraEventSender* GetFigmoraEventSender() override;
    CQueryService* Query() override;
    CFileService* File() override;
    CEditService* Edit() override;
    CUiService* Ui() override;
    CAvatarService* Avatar() override;
    CCharacterService* Character() override;
    CFittingService* Fitting() override;
    CRegistryService* Registry() override;
    CPluginsService* Plugins() override;

    CScene& Scene();
    const CScene& Scene() const;
    CCallLog& CallLog();
    const CCallLog& CallLog() const;
    QMainWindow* MainWindow() const;
    // The senders without a call-log entry, for the host's own use.
    CEventSender* EventSender() const;
    CFigmoraEventSender* FigmoraEventSender() const;

    static const QStringList& OperationNames();
    // kInvalidArg for an operation the host does not have. nth 0: every call, else only the nth from now.
    QV::Result SetFailure(const QString& operation, QV::Result code, int nth = 0);
    void ClearFailure(const QString& operation);
    void ClearFailures();

    // The script step now running (-1: none), for the call log.
    void SetCurrentStep(int index);
    int CurrentStep() const;

    void QueueMessageAnswer(int button);
    const QList<CMessageBoxRecord>& MessageBoxes() const;
    const QList<CPluginRegistration>& Registrations() const;

    // Host-side changes, as a user would make them. Unknown ids give kInvalidArg and a message.
    QV::Result SetSelection(const QStringList& ids, QString& error);
    QV::Result SetPicks(const QStringList& ids, QString& error);
    QV::Result SetCurrentAvatar(const QString& id, QString& error); // empty: none
    QV::Result SetExpressionEditing(const QString& id, bool editing, QString& error);
    QV::Result SetBlendShapeEditing(const QString& id, bool editing, QString& error);
    void SetPlaying(bool playing);
    void RaiseDataChanged(bool editBlendShape);
    void RaiseExpressionGoZ();
    void RaiseGoZDataUpdated();
    void RaiseLoadExpressionGozMotion();

    // Writes the scene's registry values for the platform layer's stand-in: one value a line,
    // "<sub-key>\t<value name>\t<data>", UTF-8.
    QV::Result WriteRegistryFile(const QString& path, QString& error) const;

private:
    QV::Result CheckIds(const QStringList& ids, QString& error) const;
    QV::Result SetObjectFlag(const QString& id, bool CSceneObject::*flag, bool value, QString& error);

    std::unique_ptr<CHostContext> m_pContext;
    std::unique_ptr<CReferenceQueryService> m_pQuery;
    std::unique_ptr<CReferenceFileService> m_pFile;
    std::unique_ptr<CReferenceEditService> m_pEdit;
    std::unique_ptr<CReferenceUiService> m_pUi;
    std::unique_ptr<CReferenceAvatarService> m_pAvatar;
    std::unique_ptr<CReferenceCharacterService> m_pCharacter;
    std::unique_ptr<CReferenceFittingService> m_pFitting;
    std::unique_ptr<CReferenceRegistryService> m_pRegistry;
    std::unique_ptr<CReferencePluginsService> m_pPlugins;
};

} // namespace Host
} // namespace MV
