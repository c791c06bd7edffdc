#include "CReferenceQueryService.h"

#include "CHostContext.h"

#include <QHash>
#include <QMainWindow>
#include <QSet>

namespace MV {
namespace Host {

using C = CHostContext;

CReferenceQueryService::CReferenceQueryService(CHostContext& context) : m_rContext(context) {}

CReferenceQueryService::~CReferenceQueryService() = default;

QWidget* CReferenceQueryService::GetMainWindow()
{
    return m_rContext.Enter("GetMainWindow") ? nullptr : m_rContext.MainWindow();
}

bool CReferenceQueryService::IsPlaying()
{
    return !m_rContext.Enter("IsPlaying") && m_rContext.Scene().State().m_bPlaying;
}

void CReferenceQueryService::GetSelectedObjects(QV::Result& result, QV::CArrayList<QV::CHandle*>& list, int flag)
{
    if (m_rContext.Enter("GetSelectedObjects", {C::Number(flag)}, result)) {
        return;
    }
    result = m_rContext.AppendHandles(m_rContext.Scene().State().m_kSelection, list);
}

void CReferenceQueryService::GetAvatarType(QV::Result& result, QV::CHandle* handle, int& type)
{
    if (const CSceneObject* object = m_rContext.EnterOn("GetAvatarType", handle, result)) {
        type = object->m_iAvatarType;
    }
}

void CReferenceQueryService::GetObjectKind(QV::Result& result, QV::CHandle* handle, unsigned int& kind)
{
    if (const CSceneObject* object = m_rContext.EnterOn("GetObjectKind", handle, result)) {
        kind = object->m_uKind;
    }
}

bool CReferenceQueryService::HasNodeType(QV::CHandle* handle)
{
    return ObjectFlag("HasNodeType", handle, &CSceneObject::m_bHasNodeType);
}

bool CReferenceQueryService::IsExpressionEditing(QV::CHandle* handle)
{
    return ObjectFlag("IsExpressionEditing", handle, &CSceneObject::m_bExpressionEditing);
}

bool CReferenceQueryService::ObjectFlag(const char* operation, QV::CHandle* handle, bool CSceneObject::*flag)
{
    const CSceneObject* object = m_rContext.EnterOn(operation, handle);
    return object != nullptr && object->*flag;
}

QV::Result CReferenceQueryService::AppendDescendantsOfType(const CSceneObject& object, int nodeType,
                                                           QV::CArrayList<QV::CHandle*>& list)
{
    for (const QString& id : m_rContext.Scene().Descendants(object.m_strId)) {
        const CSceneObject* child = m_rContext.Scene().Find(id);
        if (child->m_bHasNodeType && child->m_iNodeType == nodeType) {
            const QV::Result added = list.Add(m_rContext.Scene().HandleOf(id));
            if (QV::Failed(added)) {
                return added;
            }
        }
    }
    return QV::kOk;
}

void CReferenceQueryService::CollectChildObjects(QV::Result& result, QV::CHandle* parent, int typeCode, int flag,
                                                 QV::CArrayList<QV::CHandle*>& list)
{
    if (const CSceneObject* object =
            m_rContext.EnterOn("CollectChildObjects", parent, result, {C::Number(typeCode), C::Number(flag)})) {
        result = AppendDescendantsOfType(*object, typeCode, list);
    }
}

std::wstring CReferenceQueryService::HandleName(QV::Result& result, QV::CHandle* handle)
{
    const CSceneObject* object = m_rContext.EnterOn("HandleName", handle, result);
    return object == nullptr ? std::wstring() : object->m_strName.toStdWString();
}

QV::CHandle* CReferenceQueryService::GetOwningCharacter(QV::CHandle* handle)
{
    const CSceneObject* object = m_rContext.EnterOn("GetOwningCharacter", handle);
    return object == nullptr ? nullptr : m_rContext.Scene().HandleOf(m_rContext.Scene().OwningCharacter(object->m_strId));
}

void CReferenceQueryService::GetLodMeshes(QV::Result& result, QV::CHandle* handle, QV::CArrayList<std::wstring>& names)
{
    if (const CSceneObject* object = m_rContext.EnterOn("GetLodMeshes", handle, result)) {
        result = C::FillNames(object->m_kLodMeshes, names);
    }
}

bool CReferenceQueryService::IsGoZPolygonSupported(QV::CHandle* handle)
{
    return ObjectFlag("IsGoZPolygonSupported", handle, &CSceneObject::m_bPolygonSupported);
}

void CReferenceQueryService::ListSceneObjectsOfKind(QV::Result& result, QV::CHandle* root, int kind,
                                                    QV::CArrayList<QV::CHandle*>& list, int flag)
{
    if (m_rContext.Enter("ListSceneObjectsOfKind", {m_rContext.Id(root), C::Number(kind), C::Number(flag)},
                         result)) {
        return;
    }
    const CScene& scene = m_rContext.Scene();
    QStringList ids;
    if (root == nullptr) {
        for (int i = 0; i < scene.ObjectCount(); ++i) {
            ids << scene.Object(i).m_strId;
        }
    } else {
        const CSceneObject* object = scene.Find(root);
        if (object == nullptr) {
            result = QV::kInvalidArg;
            return;
        }
        ids = scene.Descendants(object->m_strId);
    }
    QStringList ofKind;
    for (const QString& id : ids) {
        if (scene.Find(id)->m_uKind == static_cast<unsigned int>(kind)) {
            ofKind << id;
        }
    }
    result = m_rContext.AppendHandles(ofKind, list);
}

QV::CArrayList<QV::CHandle*> CReferenceQueryService::GetObjectMeshes(QV::CHandle* handle)
{
    const CSceneObject* object = m_rContext.EnterOn("GetObjectMeshes", handle);
    return object == nullptr ? QV::CArrayList<QV::CHandle*>() : m_rContext.HandlesOf(object->m_kMeshes);
}

int CReferenceQueryService::GetObjectType(QV::CHandle* handle)
{
    // Unlike the other answers, an injected failure comes back as the type itself.
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("GetObjectType", {m_rContext.Id(handle)}, injected)) {
        return injected;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    return object == nullptr ? 0 : object->m_iObjectType;
}

QV::CHandle* CReferenceQueryService::GetParentObject(QV::CHandle* handle)
{
    const CSceneObject* object = m_rContext.EnterOn("GetParentObject", handle);
    return object == nullptr ? nullptr : m_rContext.Scene().HandleOf(object->m_strParent);
}

std::wstring CReferenceQueryService::GetHostDataFolder(QV::Result& result, int folderCode)
{
    if (m_rContext.Enter("GetHostDataFolder", {C::Number(folderCode)}, result)) {
        return std::wstring();
    }
    result = QV::kOk;
    return m_rContext.Scene().State().m_strHostDataFolder.toStdWString();
}

void CReferenceQueryService::GetPickedObjects(QV::Result& result, QV::CArrayList<QV::CHandle*>& list, int flag)
{
    if (m_rContext.Enter("GetPickedObjects", {C::Number(flag)}, result)) {
        return;
    }
    result = m_rContext.AppendHandles(m_rContext.Scene().PickedIds(), list);
}

void CReferenceQueryService::GetPickOwner(QV::Result& result, QV::CHandle* pick, int flag, QV::CHandle*& owner)
{
    if (const CSceneObject* object = m_rContext.EnterOn("GetPickOwner", pick, result, {C::Number(flag)})) {
        owner = object->m_strPickOwner.isEmpty() ? pick : m_rContext.Scene().HandleOf(object->m_strPickOwner);
    }
}

void CReferenceQueryService::GetNodeType(QV::Result& result, QV::CHandle* handle, int& type)
{
    if (const CSceneObject* object = m_rContext.EnterOn("GetNodeType", handle, result)) {
        type = object->m_bHasNodeType ? object->m_iNodeType : 0;
    }
}

void CReferenceQueryService::FindRelatedObjects(QV::Result& result, QV::CHandle* handle, int nodeType, int flag,
                                                QV::CArrayList<QV::CHandle*>& list)
{
    if (const CSceneObject* object =
            m_rContext.EnterOn("FindRelatedObjects", handle, result, {C::Number(nodeType), C::Number(flag)})) {
        result = AppendDescendantsOfType(*object, nodeType, list);
    }
}

void CReferenceQueryService::AppendMeshes(const char* operation, QV::CArrayList<QV::CHandle*>& list,
                                          QV::CHandle* handle)
{
    // These listings have no result: a failing add leaves the list short.
    if (const CSceneObject* object = m_rContext.EnterOn(operation, handle)) {
        m_rContext.AppendHandles(object->m_kMeshes, list);
    }
}

void CReferenceQueryService::ListMeshObjects(QV::CArrayList<QV::CHandle*>& list, QV::CHandle* handle)
{
    AppendMeshes("ListMeshObjects", list, handle);
}

void CReferenceQueryService::ListMeshObjectsType6(QV::CArrayList<QV::CHandle*>& list, QV::CHandle* handle)
{
    AppendMeshes("ListMeshObjectsType6", list, handle);
}

std::wstring CReferenceQueryService::MakeUniqueName(QV::Result& result, QV::CHandle* handle,
                                                    const std::wstring& baseName)
{
    if (m_rContext.Enter("MakeUniqueName", {m_rContext.Id(handle), C::Text(baseName)}, result)) {
        return std::wstring();
    }
    CScene& scene = m_rContext.Scene();
    const CSceneObject* owner = scene.Find(handle);
    const QString base = QString::fromStdWString(baseName);
    if (base.isEmpty()) {
        result = QV::kInvalidArg;
        return std::wstring();
    }
    // The object's own name and its meshes' names are no conflict: they are what is being named.
    QHash<QString, int> ownNames;
    QString ownerId;
    if (owner != nullptr) {
        ownerId = owner->m_strId;
        QSet<QString> ownIds{owner->m_strId};
        for (const QString& mesh : owner->m_kMeshes) {
            ownIds.insert(mesh);
        }
        for (const QString& id : ownIds) {
            if (const CSceneObject* own = scene.Find(id)) {
                ++ownNames[own->m_strName];
            }
        }
    }
    const QString name = scene.Names().MakeUnique(base, ownNames, ownerId);
    result = QV::kOk;
    return name.toStdWString();
}

bool CReferenceQueryService::IsSkinSplitSupported(QV::CHandle* avatar)
{
    return !m_rContext.Enter("IsSkinSplitSupported", {m_rContext.Id(avatar)}) &&
           m_rContext.Scene().State().m_bSkinSplitSupported;
}

bool CReferenceQueryService::IsBindPoseLocked(QV::CHandle* parent)
{
    return ObjectFlag("IsBindPoseLocked", parent, &CSceneObject::m_bBindPoseLocked);
}

bool CReferenceQueryService::IsBlendShapeEditing(QV::CHandle* avatar)
{
    return ObjectFlag("IsBlendShapeEditing", avatar, &CSceneObject::m_bBlendShapeEditing);
}

void CReferenceQueryService::GetBoundNode(QV::Result& result, QV::CHandle* handle, int flag, QV::CHandle*& node)
{
    if (const CSceneObject* object = m_rContext.EnterOn("GetBoundNode", handle, result, {C::Number(flag)})) {
        node = m_rContext.Scene().HandleOf(object->m_strBoundNode);
    }
}

CNodeController* CReferenceQueryService::GetNodeController(QV::CHandle* node)
{
    const CSceneObject* object = m_rContext.EnterOn("GetNodeController", node);
    // Only spring and physics nodes carry a runtime controller.
    if (object == nullptr || !object->m_bHasNodeType || (object->m_iNodeType != 51 && object->m_iNodeType != 52)) {
        return nullptr;
    }
    return m_rContext.NewNodeController(object->m_strId);
}

bool CReferenceQueryService::ShouldSkipReceiveDialog(QV::CHandle* avatar)
{
    return ObjectFlag("ShouldSkipReceiveDialog", avatar, &CSceneObject::m_bSkipReceiveDialog);
}

QV::Result CReferenceQueryService::AdjustEyeElement(QV::CHandle* avatar, int type)
{
    QV::Result result = QV::kOk;
    if (const CSceneObject* object = m_rContext.EnterOn("AdjustEyeElement", avatar, result, {C::Number(type)})) {
        // The element is the character's child of that node type; a character without one has nothing to fit.
        CScene& scene = m_rContext.Scene();
        for (const QString& id : scene.Descendants(object->m_strId)) {
            CSceneObject& element = scene.Object(scene.IndexOf(id));
            if (element.m_bHasNodeType && element.m_iNodeType == type) {
                ++element.m_iFittings;
            }
        }
    }
    return result;
}

QV::Result CReferenceQueryService::AutoRigAvatar(QV::CHandle* avatar, int flag)
{
    QV::Result result = QV::kOk;
    if (const CSceneObject* object = m_rContext.EnterOn("AutoRigAvatar", avatar, result, {C::Number(flag)})) {
        CSceneObject& character = m_rContext.Edit(*object);
        character.m_bRigged = true;
        ++character.m_iAutoRigs;
    }
    return result;
}

QV::Result CReferenceQueryService::UpdateAvatarAfterGoZ(QV::CHandle* avatar)
{
    QV::Result result = QV::kOk;
    if (const CSceneObject* object = m_rContext.EnterOn("UpdateAvatarAfterGoZ", avatar, result)) {
        ++m_rContext.Edit(*object).m_iGoZUpdates;
    }
    return result;
}

void CReferenceQueryService::FinishGoZImport(QV::Result& result, QV::CHandle* avatar,
                                             const QV::CArrayList<QV::CHandle*>& list)
{
    if (m_rContext.Enter("FinishGoZImport", {m_rContext.Id(avatar), m_rContext.Ids(list)}, result)) {
        return;
    }
    QStringList ids;
    for (const QV::CHandle* handle : list) {
        ids << m_rContext.Id(handle);
    }
    CScene& scene = m_rContext.Scene();
    ++scene.State().m_iFinishedImports;
    scene.State().m_kLastImported = ids;
    // Props alone are imported without a character: the run is closed all the same.
    if (CSceneObject* character = scene.Find(avatar)) {
        ++character->m_iFinishedImports;
        character->m_kLastImported = ids;
    }
    result = QV::kOk;
}

void CReferenceQueryService::GetMaterialCount(QV::Result& result, QV::CHandle* handle, int& count)
{
    if (const CSceneObject* object = m_rContext.EnterOn("GetMaterialCount", handle, result)) {
        count = object->m_iMaterials;
    }
}

void CReferenceQueryService::GetTextureSize(QV::Result& result, QV::CHandle* handle, int channel, int& size)
{
    if (const CSceneObject* object = m_rContext.EnterOn("GetTextureSize", handle, result, {C::Number(channel)})) {
        size = object->m_kTextureSizes.value(channel, 0);
    }
}

} // namespace Host
} // namespace MV
