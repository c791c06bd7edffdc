#include "CHostContext.h"

#include "CEventSender.h"
#include "CReferenceNodeController.h"

#include <QMainWindow>

namespace MV {
namespace Host {

CHostContext::CHostContext(std::unique_ptr<CScene> scene)
    : m_pScene(scene ? std::move(scene) : std::make_unique<CScene>()),
      m_pEventSender(std::make_unique<CEventSender>()),
      m_pFigmoraEventSender(std::make_unique<CFigmoraEventSender>()),
      m_pMainWindow(std::make_unique<QMainWindow>())
{
    m_pMainWindow->setObjectName(QStringLiteral("ReferenceHostMainWindow"));
    m_pMainWindow->setWindowTitle(QStringLiteral("Reference host"));
}

CHostContext::~CHostContext()
{
    // Plug-in dialogs are children of the main window; they go before the senders they listen to.
    m_pMainWindow.reset();
}

const QStringList& CHostContext::OperationNames()
{
    static const QStringList names = {
        // interface
        QStringLiteral("GetEventSender"), QStringLiteral("GetFigmoraEventSender"),
        // query
        QStringLiteral("GetMainWindow"), QStringLiteral("IsPlaying"), QStringLiteral("GetSelectedObjects"),
        QStringLiteral("GetAvatarType"), QStringLiteral("GetObjectKind"), QStringLiteral("HasNodeType"),
        QStringLiteral("IsExpressionEditing"), QStringLiteral("CollectChildObjects"), QStringLiteral("HandleName"),
        QStringLiteral("GetOwningCharacter"), QStringLiteral("GetLodMeshes"), QStringLiteral("IsGoZPolygonSupported"),
        QStringLiteral("ListSceneObjectsOfKind"), QStringLiteral("GetObjectMeshes"), QStringLiteral("GetObjectType"),
        QStringLiteral("GetParentObject"), QStringLiteral("GetHostDataFolder"), QStringLiteral("GetPickedObjects"),
        QStringLiteral("GetPickOwner"), QStringLiteral("GetNodeType"), QStringLiteral("FindRelatedObjects"),
        QStringLiteral("ListMeshObjects"), QStringLiteral("ListMeshObjectsType6"), QStringLiteral("MakeUniqueName"),
        QStringLiteral("IsSkinSplitSupported"), QStringLiteral("IsBindPoseLocked"), QStringLiteral("IsBlendShapeEditing"),
        QStringLiteral("GetBoundNode"), QStringLiteral("GetNodeController"), QStringLiteral("ShouldSkipReceiveDialog"),
        QStringLiteral("AdjustEyeElement"), QStringLiteral("AutoRigAvatar"), QStringLiteral("UpdateAvatarAfterGoZ"),
        QStringLiteral("FinishGoZImport"), QStringLiteral("GetMaterialCount"), QStringLiteral("GetTextureSize"),
        // file
        QStringLiteral("GetFileHandle"), QStringLiteral("ExportGoZ"), QStringLiteral("GetPluginValue"),
        QStringLiteral("ImportGoZToObject"), QStringLiteral("CreatePropFromGoZ"), QStringLiteral("FindObjectByName"),
        QStringLiteral("UpdateMeshFromGoZ"), QStringLiteral("SaveMotionFile"), QStringLiteral("SaveAvatarMotion"),
        QStringLiteral("LoadMotionFile"), QStringLiteral("LoadFile"),
        // edit
        QStringLiteral("RemoveLods"), QStringLiteral("PrepareObjectUpdate"), QStringLiteral("RefreshAvatar"),
        QStringLiteral("UpdateAvatarMorph"),
        // ui
        QStringLiteral("ShowMessageBox"), QStringLiteral("SelectObjects"), QStringLiteral("ReadyForCommand"),
        QStringLiteral("RecordUsageStep"), QStringLiteral("RefreshView"), QStringLiteral("GetLanguage"),
        // avatar
        QStringLiteral("GetCurrentAvatar"), QStringLiteral("GetGozSplitMeshNames"),
        QStringLiteral("GetGozExtraMeshNames"), QStringLiteral("IsCharacterTagSupported"),
        QStringLiteral("GetBlendShapeEditingAvatar"), QStringLiteral("CommitAvatarChange"),
        // character
        QStringLiteral("GetCharacterTag"),
        // fitting
        QStringLiteral("RebuildAvatarConform"), QStringLiteral("ResetAvatarPose"),
        QStringLiteral("ListAvatarRigMeshNames"), QStringLiteral("AdjustEyeOcclusion"),
        QStringLiteral("AdjustEyeOcclusionBlend"), QStringLiteral("AdjustTearline"),
        QStringLiteral("CreateEyeElement"),
        // registry, plug-ins
        QStringLiteral("RegisterPluginValue"), QStringLiteral("IsPluginSupported"),
        // node controller
        QStringLiteral("ResetController"), QStringLiteral("Release"),
    };
    return names;
}

bool CHostContext::Enter(const char* operation, const QStringList& args, QV::Result& injected)
{
    CCallRecord record;
    record.m_strOperation = QString::fromLatin1(operation);
    record.m_kArgs = args;
    record.m_iStep = m_iStep;
    record.m_bInjected = m_kFaults.Check(record.m_strOperation, injected);
    if (record.m_bInjected) {
        record.m_iInjectedResult = injected;
    }
    m_kLog.Append(record);
    return record.m_bInjected;
}

bool CHostContext::Enter(const char* operation, const QStringList& args)
{
    QV::Result dropped = QV::kOk;
    return Enter(operation, args, dropped);
}

const CSceneObject* CHostContext::EnterOn(const char* operation, const QV::CHandle* handle, QV::Result& result,
                                          const QStringList& moreArgs)
{
    if (Enter(operation, QStringList{Id(handle)} + moreArgs, result)) {
        return nullptr;
    }
    const CSceneObject* object = m_pScene->Find(handle);
    result = object == nullptr ? QV::kInvalidArg : QV::kOk;
    return object;
}

const CSceneObject* CHostContext::EnterOn(const char* operation, const QV::CHandle* handle)
{
    QV::Result dropped = QV::kOk;
    return EnterOn(operation, handle, dropped);
}

QString CHostContext::Id(const QV::CHandle* handle) const
{
    if (handle == nullptr) {
        return QStringLiteral("null");
    }
    const CSceneObject* object = m_pScene->Find(handle);
    return object == nullptr ? QStringLiteral("<unknown handle>") : object->m_strId;
}

QString CHostContext::Ids(const QV::CArrayList<QV::CHandle*>& handles) const
{
    QStringList ids;
    for (const QV::CHandle* handle : handles) {
        ids << Id(handle);
    }
    return QStringLiteral("[") + ids.join(QStringLiteral(", ")) + QStringLiteral("]");
}

QString CHostContext::Text(const std::wstring& text)
{
    return QString::fromStdWString(text);
}

QString CHostContext::Texts(const QV::CArrayList<std::wstring>& texts)
{
    QStringList items;
    for (const std::wstring& text : texts) {
        items << QString::fromStdWString(text);
    }
    return QStringLiteral("[") + items.join(QStringLiteral(", ")) + QStringLiteral("]");
}

QString CHostContext::Number(qint64 value)
{
    return QString::number(value);
}

QString CHostContext::Flag(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

QString CHostContext::ClassName(const QObject* object)
{
    return object == nullptr ? QStringLiteral("null") : QString::fromLatin1(object->metaObject()->className());
}

QString CHostContext::HostPath(const std::wstring& path)
{
    return QString::fromStdWString(path).replace(QLatin1Char('\\'), QLatin1Char('/'));
}

QV::CArrayList<QV::CHandle*> CHostContext::HandlesOf(const QStringList& ids) const
{
    QV::CArrayList<QV::CHandle*> handles;
    for (const QString& id : ids) {
        QV::CHandle* handle = m_pScene->HandleOf(id);
        if (handle != nullptr) {
            handles.Add(handle);
        }
    }
    return handles;
}

QV::Result CHostContext::AppendHandles(const QStringList& ids, QV::CArrayList<QV::CHandle*>& list) const
{
    for (QV::CHandle* handle : HandlesOf(ids)) {
        const QV::Result added = list.Add(handle);
        if (QV::Failed(added)) {
            return added;
        }
    }
    return QV::kOk;
}

QV::Result CHostContext::FillNames(const QStringList& source, QV::CArrayList<std::wstring>& names)
{
    names.Clear();
    for (const QString& name : source) {
        const QV::Result added = names.Add(name.toStdWString());
        if (QV::Failed(added)) {
            return added;
        }
    }
    return QV::kOk;
}

CNodeController* CHostContext::NewNodeController(const QString& nodeId)
{
    m_kControllers.push_back(std::make_unique<CReferenceNodeController>(*this, nodeId));
    return m_kControllers.back().get();
}

void CHostContext::ReplaceSelection(const QStringList& ids)
{
    m_pScene->State().m_kSelection = ids;
    m_pScene->State().m_bPicksFollowSelection = true;
    emit m_pEventSender->ObjectSelectionChanged();
}

} // namespace Host
} // namespace MV
