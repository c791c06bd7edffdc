#include "CReferenceHost.h"

#include "CBaseEvent.h"
#include "CEventSender.h"
#include "CHostContext.h"
#include "CReferenceAvatarService.h"
#include "CReferenceCharacterService.h"
#include "CReferenceEditService.h"
#include "CReferenceFileService.h"
#include "CReferenceFittingService.h"
#include "CReferencePluginsService.h"
#include "CReferenceQueryService.h"
#include "CReferenceRegistryService.h"
#include "CReferenceUiService.h"

#include <QDir>
#include <QFileInfo>
#include <QMainWindow>
#include <QSaveFile>

namespace MV {
namespace Host {

CReferenceHost::CReferenceHost(std::unique_ptr<CScene> scene)
    : m_pContext(std::make_unique<CHostContext>(std::move(scene))),
      m_pQuery(std::make_unique<CReferenceQueryService>(*m_pContext)),
      m_pFile(std::make_unique<CReferenceFileService>(*m_pContext)),
      m_pEdit(std::make_unique<CReferenceEditService>(*m_pContext)),
      m_pUi(std::make_unique<CReferenceUiService>(*m_pContext)),
      m_pAvatar(std::make_unique<CReferenceAvatarService>(*m_pContext)),
      m_pCharacter(std::make_unique<CReferenceCharacterService>(*m_pContext)),
      m_pFitting(std::make_unique<CReferenceFittingService>(*m_pContext)),
      m_pRegistry(std::make_unique<CReferenceRegistryService>(*m_pContext)),
      m_pPlugins(std::make_unique<CReferencePluginsService>(*m_pContext))
{
}

CReferenceHost::~CReferenceHost() = default;

CEventSender* CReferenceHost::GetEventSender()
{
    return m_pContext->Enter("GetEventSender") ? nullptr : m_pContext->EventSender();
}

CFigmoraEventSender* CReferenceHost::GetFigmoraEventSender()
{
    return m_pContext->Enter("GetFigmoraEventSender") ? nullptr : m_pContext->FigmoraEventSender();
}

CQueryService* CReferenceHost::Query()
{
    return m_pQuery.get();
}

CFileService* CReferenceHost::File()
{
    return m_pFile.get();
}

CEditService* CReferenceHost::Edit()
{
    return m_pEdit.get();
}

CUiService* CReferenceHost::Ui()
{
    return m_pUi.get();
}

CAvatarService* CReferenceHost::Avatar()
{
    return m_pAvatar.get();
}

CCharacterService* CReferenceHost::Character()
{
    return m_pCharacter.get();
}

CFittingService* CReferenceHost::Fitting()
{
    return m_pFitting.get();
}

CRegistryService* CReferenceHost::Registry()
{
    return m_pRegistry.get();
}

CPluginsService* CReferenceHost::Plugins()
{
    return m_pPlugins.get();
}

CScene& CReferenceHost::Scene()
{
    return m_pContext->Scene();
}

const CScene& CReferenceHost::Scene() const
{
    return m_pContext->Scene();
}

CCallLog& CReferenceHost::CallLog()
{
    return m_pContext->Log();
}

const CCallLog& CReferenceHost::CallLog() const
{
    return m_pContext->Log();
}

QMainWindow* CReferenceHost::MainWindow() const
{
    return m_pContext->MainWindow();
}

CEventSender* CReferenceHost::EventSender() const
{
    return m_pContext->EventSender();
}

CFigmoraEventSender* CReferenceHost::FigmoraEventSender() const
{
    return m_pContext->FigmoraEventSender();
}

const QStringList& CReferenceHost::OperationNames()
{
    return CHostContext::OperationNames();
}

QV::Result CReferenceHost::SetFailure(const QString& operation, QV::Result code, int nth)
{
    if (!OperationNames().contains(operation) || nth < 0) {
        return QV::kInvalidArg;
    }
    m_pContext->Faults().Set(operation, code, nth);
    return QV::kOk;
}

void CReferenceHost::ClearFailure(const QString& operation)
{
    m_pContext->Faults().Clear(operation);
}

void CReferenceHost::ClearFailures()
{
    m_pContext->Faults().ClearAll();
}

int CReferenceHost::CurrentStep() const
{
    return m_pContext->Step();
}

void CReferenceHost::SetCurrentStep(int index)
{
    m_pContext->SetStep(index);
}

void CReferenceHost::QueueMessageAnswer(int button)
{
    m_pContext->QueuedAnswers().append(button);
}

const QList<CMessageBoxRecord>& CReferenceHost::MessageBoxes() const
{
    return m_pContext->MessageBoxes();
}

const QList<CPluginRegistration>& CReferenceHost::Registrations() const
{
    return m_pContext->Registrations();
}

QV::Result CReferenceHost::CheckIds(const QStringList& ids, QString& error) const
{
    for (const QString& id : ids) {
        if (Scene().IndexOf(id) < 0) {
            error = QStringLiteral("unknown object \"%1\"").arg(id);
            return QV::kInvalidArg;
        }
    }
    return QV::kOk;
}

QV::Result CReferenceHost::SetObjectFlag(const QString& id, bool CSceneObject::*flag, bool value, QString& error)
{
    const QV::Result checked = CheckIds({id}, error);
    if (QV::Failed(checked)) {
        return checked;
    }
    Scene().Object(Scene().IndexOf(id)).*flag = value;
    return QV::kOk;
}

QV::Result CReferenceHost::SetSelection(const QStringList& ids, QString& error)
{
    const QV::Result checked = CheckIds(ids, error);
    if (QV::Failed(checked)) {
        return checked;
    }
    m_pContext->ReplaceSelection(ids);
    return QV::kOk;
}

QV::Result CReferenceHost::SetPicks(const QStringList& ids, QString& error)
{
    const QV::Result checked = CheckIds(ids, error);
    if (QV::Failed(checked)) {
        return checked;
    }
    Scene().State().m_kPicks = ids;
    Scene().State().m_bPicksFollowSelection = false;
    return QV::kOk;
}

QV::Result CReferenceHost::SetCurrentAvatar(const QString& id, QString& error)
{
    if (!id.isEmpty()) {
        const QV::Result checked = CheckIds({id}, error);
        if (QV::Failed(checked)) {
            return checked;
        }
    }
    Scene().State().m_strCurrentAvatar = id;
    return QV::kOk;
}

QV::Result CReferenceHost::SetExpressionEditing(const QString& id, bool editing, QString& error)
{
    return SetObjectFlag(id, &CSceneObject::m_bExpressionEditing, editing, error);
}

QV::Result CReferenceHost::SetBlendShapeEditing(const QString& id, bool editing, QString& error)
{
    return SetObjectFlag(id, &CSceneObject::m_bBlendShapeEditing, editing, error);
}

void CReferenceHost::SetPlaying(bool playing)
{
    Scene().State().m_bPlaying = playing;
    if (playing) {
        emit m_pContext->EventSender()->Played();
    } else {
        emit m_pContext->EventSender()->Stopped();
    }
}

void CReferenceHost::RaiseDataChanged(bool editBlendShape)
{
    if (editBlendShape) {
        CEditBlendShapeEvent event;
        emit m_pContext->EventSender()->ObjectDataChanged2(&event);
    } else {
        CObjectDataEvent event;
        emit m_pContext->EventSender()->ObjectDataChanged2(&event);
    }
}

void CReferenceHost::RaiseExpressionGoZ()
{
    emit m_pContext->FigmoraEventSender()->ExpressionGoZBrushDialog();
}

void CReferenceHost::RaiseGoZDataUpdated()
{
    emit m_pContext->EventSender()->GoZDataUpdated();
}

void CReferenceHost::RaiseLoadExpressionGozMotion()
{
    emit m_pContext->FigmoraEventSender()->LoadExpressionGozMotion();
}

QV::Result CReferenceHost::WriteRegistryFile(const QString& path, QString& error) const
{
    QByteArray bytes;
    for (const CRegistryValue& value : Scene().State().m_kRegistry) {
        bytes += value.m_strSubKey.toUtf8() + '\t' + value.m_strName.toUtf8() + '\t' + value.m_strData.toUtf8();
        if (!value.m_strType.isEmpty()) {
            bytes += '\t' + value.m_strType.toUtf8();
        }
        bytes += '\n';
    }
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush() ||
        !file.commit()) { // commit() overlooks an error of its own final flush
        error = QStringLiteral("cannot write the registry file %1: %2").arg(path, file.errorString());
        return QV::kFail;
    }
    return QV::kOk;
}

} // namespace Host
} // namespace MV
