#include "CReferenceQueryService.h"

#include "CHostContext.h"

#include <QMainWindow>

namespace MV {
namespace Host {

using C = CHostContext;

CReferenceQueryService::CReferenceQueryService(CHostContext& context) : m_rContext(context) {}

CReferenceQueryService::~CReferenceQueryService() = default;

QWidget* CReferenceQueryService::GetMainWindow()
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("GetMainWindow", {}, injected)) {
        return nullptr;
    }
    return m_rContext.MainWindow();
}

bool CReferenceQueryService::IsPlaying()
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("IsPlaying", {}, injected)) {
        return false;
    }
    return m_rContext.Scene().State().m_bPlaying;
}

void CReferenceQueryService::GetSelectedObjects(QV::Result& result, QV::CArrayList<QV::CHandle*>& list, int flag)
{
    if (m_rContext.Enter("GetSelectedObjects", {C::Number(flag)}, result)) {
        return;
    }
    for (QV::CHandle* handle : m_rContext.HandlesOf(m_rContext.Scene().State().m_kSelection)) {
        result = list.Add(handle);
        if (QV::Failed(result)) {
            return;
        }
    }
    result = QV::kOk;
}

void CReferenceQueryService::GetAvatarType(QV::Result& result, QV::CHandle* handle, int& type)
{
    if (m_rContext.Enter("GetAvatarType", {m_rContext.Id(handle)}, result)) {
        return;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    if (object == nullptr) {
        result = QV::kInvalidArg;
        return;
    }
    type = object->m_iAvatarType;
    result = QV::kOk;
}

void CReferenceQueryService::GetObjectKind(QV::Result& result, QV::CHandle* handle, unsigned int& kind)
{
    if (m_rContext.Enter("GetObjectKind", {m_rContext.Id(handle)}, result)) {
        return;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    if (object == nullptr) {
        result = QV::kInvalidArg;
        return;
    }
    kind = object->m_uKind;
    result = QV::kOk;
}

bool CReferenceQueryService::HasNodeType(QV::CHandle* handle)
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("HasNodeType", {m_rContext.Id(handle)}, injected)) {
        return false;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    return object != nullptr && object->m_bHasNodeType;
}

bool CReferenceQueryService::IsExpressionEditing(QV::CHandle* handle)
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("IsExpressionEditing", {m_rContext.Id(handle)}, injected)) {
        return false;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    return object != nullptr && object->m_bExpressionEditing;
}

QV::Result CReferenceQueryService::AppendDescendantsOfType(QV::CHandle* handle, int nodeType,
                                                           QV::CArrayList<QV::CHandle*>& list)
{
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    if (object == nullptr) {
        return QV::kInvalidArg;
    }
    for (const QString& id : m_rContext.Scene().Descendants(object->m_strId)) {
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
    if (m_rContext.Enter("CollectChildObjects",
                         {m_rContext.Id(parent), C::Number(typeCode), C::Number(flag)}, result)) {
        return;
    }
    result = AppendDescendantsOfType(parent, typeCode, list);
}

std::wstring CReferenceQueryService::HandleName(QV::Result& result, QV::CHandle* handle)
{
    if (m_rContext.Enter("HandleName", {m_rContext.Id(handle)}, result)) {
        return std::wstring();
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    if (object == nullptr) {
        result = QV::kInvalidArg;
        return std::wstring();
    }
    result = QV::kOk;
    return object->m_strName.toStdWString();
}

QV::CHandle* CReferenceQueryService::GetOwningCharacter(QV::CHandle* handle)
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("GetOwningCharacter", {m_rContext.Id(handle)}, injected)) {
        return nullptr;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    if (object == nullptr) {
        return nullptr;
    }
    return m_rContext.Scene().HandleOf(m_rContext.Scene().OwningCharacter(object->m_strId));
}

void CReferenceQueryService::GetLodMeshes(QV::Result& result, QV::CHandle* handle, QV::CArrayList<std::wstring>& names)
{
    if (m_rContext.Enter("GetLodMeshes", {m_rContext.Id(handle)}, result)) {
        return;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    if (object == nullptr) {
        result = QV::kInvalidArg;
        return;
    }
    names.Clear();
    for (const QString& name : object->m_kLodMeshes) {
        result = names.Add(name.toStdWString());
        if (QV::Failed(result)) {
            return;
        }
    }
    result = QV::kOk;
}

bool CReferenceQueryService::IsGoZPolygonSupported(QV::CHandle* handle)
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("IsGoZPolygonSupported", {m_rContext.Id(handle)}, injected)) {
        return false;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    return object != nullptr && object->m_bPolygonSupported;
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
    for (const QString& id : ids) {
        if (scene.Find(id)->m_uKind == static_cast<unsigned int>(kind)) {
            result = list.Add(scene.HandleOf(id));
            if (QV::Failed(result)) {
                return;
            }
        }
    }
    result = QV::kOk;
}

QV::CArrayList<QV::CHandle*> CReferenceQueryService::GetObjectMeshes(QV::CHandle* handle)
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("GetObjectMeshes", {m_rContext.Id(handle)}, injected)) {
        return {};
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    return object == nullptr ? QV::CArrayList<QV::CHandle*>() : m_rContext.HandlesOf(object->m_kMeshes);
}

int CReferenceQueryService::GetObjectType(QV::CHandle* handle)
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("GetObjectType", {m_rContext.Id(handle)}, injected)) {
        return injected;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    return object == nullptr ? 0 : object->m_iObjectType;
}

QV::CHandle* CReferenceQueryService::GetParentObject(QV::CHandle* handle)
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("GetParentObject", {m_rContext.Id(handle)}, injected)) {
        return nullptr;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
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
    for (QV::CHandle* handle : m_rContext.HandlesOf(m_rContext.Scene().PickedIds())) {
        result = list.Add(handle);
        if (QV::Failed(result)) {
            return;
        }
    }
    result = QV::kOk;
}

void CReferenceQueryService::GetPickOwner(QV::Result& result, QV::CHandle* pick, int flag, QV::CHandle*& owner)
{
    if (m_rContext.Enter("GetPickOwner", {m_rContext.Id(pick), C::Number(flag)}, result)) {
        return;
    }
    const CSceneObject* object = m_rContext.Scene().Find(pick);
    if (object == nullptr) {
        result = QV::kInvalidArg;
        return;
    }
    owner = object->m_strPickOwner.isEmpty() ? pick : m_rContext.Scene().HandleOf(object->m_strPickOwner);
    result = QV::kOk;
}

void CReferenceQueryService::GetNodeType(QV::Result& result, QV::CHandle* handle, int& type)
{
    if (m_rContext.Enter("GetNodeType", {m_rContext.Id(handle)}, result)) {
        return;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    if (object == nullptr) {
        result = QV::kInvalidArg;
        return;
    }
    type = object->m_bHasNodeType ? object->m_iNodeType : 0;
    result = QV::kOk;
}

void CReferenceQueryService::FindRelatedObjects(QV::Result& result, QV::CHandle* handle, int nodeType, int flag,
                                                QV::CArrayList<QV::CHandle*>& list)
{
    if (m_rContext.Enter("FindRelatedObjects", {m_rContext.Id(handle), C::Number(nodeType), C::Number(flag)},
                         result)) {
        return;
    }
    result = AppendDescendantsOfType(handle, nodeType, list);
}

void CReferenceQueryService::ListMeshObjects(QV::CArrayList<QV::CHandle*>& list, QV::CHandle* handle)
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("ListMeshObjects", {m_rContext.Id(handle)}, injected)) {
        return;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    if (object == nullptr) {
        return;
    }
    for (QV::CHandle* mesh : m_rContext.HandlesOf(object->m_kMeshes)) {
        list.Add(mesh);
    }
}

void CReferenceQueryService::ListMeshObjectsType6(QV::CArrayList<QV::CHandle*>& list, QV::CHandle* handle)
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("ListMeshObjectsType6", {m_rContext.Id(handle)}, injected)) {
        return;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    if (object == nullptr) {
        return;
    }
    for (QV::CHandle* mesh : m_rContext.HandlesOf(object->m_kMeshes)) {
        list.Add(mesh);
    }
}

std::wstring CReferenceQueryService::MakeUniqueName(QV::Result& result, QV::CHandle* handle,
                                                    const std::wstring& baseName)
{
    if (m_rContext.Enter("MakeUniqueName", {m_rContext.Id(handle), C::Text(baseName)}, result)) {
        return std::wstring();
    }
    const CScene& scene = m_rContext.Scene();
    const CSceneObject* owner = scene.Find(handle);
    const QString base = QString::fromStdWString(baseName);
    if (base.isEmpty()) {
        result = QV::kInvalidArg;
        return std::wstring();
    }
    // The object's own name and its meshes' names are no conflict: they are what is being named.
    QStringList own;
    if (owner != nullptr) {
        own << owner->m_strId << owner->m_kMeshes;
    }
    auto taken = [&](const QString& name) {
        if (m_rContext.UsedNames().contains(name)) {
            return true;
        }
        for (int i = 0; i < scene.ObjectCount(); ++i) {
            const CSceneObject& object = scene.Object(i);
            if (object.m_strName == name && !own.contains(object.m_strId)) {
                return true;
            }
        }
        return false;
    };
    QString name = base;
    for (int suffix = 1; taken(name); ++suffix) {
        name = base + QStringLiteral("_%1").arg(suffix);
    }
    m_rContext.UsedNames().insert(name);
    result = QV::kOk;
    return name.toStdWString();
}

bool CReferenceQueryService::IsSkinSplitSupported(QV::CHandle* avatar)
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("IsSkinSplitSupported", {m_rContext.Id(avatar)}, injected)) {
        return false;
    }
    return m_rContext.Scene().State().m_bSkinSplitSupported;
}

bool CReferenceQueryService::IsBindPoseLocked(QV::CHandle* parent)
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("IsBindPoseLocked", {m_rContext.Id(parent)}, injected)) {
        return false;
    }
    const CSceneObject* object = m_rContext.Scene().Find(parent);
    return object != nullptr && object->m_bBindPoseLocked;
}

bool CReferenceQueryService::IsBlendShapeEditing(QV::CHandle* avatar)
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("IsBlendShapeEditing", {m_rContext.Id(avatar)}, injected)) {
        return false;
    }
    const CSceneObject* object = m_rContext.Scene().Find(avatar);
    return object != nullptr && object->m_bBlendShapeEditing;
}

void CReferenceQueryService::GetBoundNode(QV::Result& result, QV::CHandle* handle, int flag, QV::CHandle*& node)
{
    if (m_rContext.Enter("GetBoundNode", {m_rContext.Id(handle), C::Number(flag)}, result)) {
        return;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    if (object == nullptr) {
        result = QV::kInvalidArg;
        return;
    }
    node = m_rContext.Scene().HandleOf(object->m_strBoundNode);
    result = QV::kOk;
}

CNodeController* CReferenceQueryService::GetNodeController(QV::CHandle* node)
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("GetNodeController", {m_rContext.Id(node)}, injected)) {
        return nullptr;
    }
    const CSceneObject* object = m_rContext.Scene().Find(node);
    // Only spring and physics nodes carry a runtime controller.
    if (object == nullptr || !object->m_bHasNodeType || (object->m_iNodeType != 51 && object->m_iNodeType != 52)) {
        return nullptr;
    }
    return m_rContext.NewNodeController(object->m_strId);
}

bool CReferenceQueryService::ShouldSkipReceiveDialog(QV::CHandle* avatar)
{
    QV::Result injected = QV::kOk;
    if (m_rContext.Enter("ShouldSkipReceiveDialog", {m_rContext.Id(avatar)}, injected)) {
        return false;
    }
    const CSceneObject* object = m_rContext.Scene().Find(avatar);
    return object != nullptr && object->m_bSkipReceiveDialog;
}

QV::Result CReferenceQueryService::AdjustEyeElement(QV::CHandle* avatar, int type)
{
    QV::Result result = QV::kOk;
    if (m_rContext.Enter("AdjustEyeElement", {m_rContext.Id(avatar), C::Number(type)}, result)) {
        return result;
    }
    return m_rContext.Scene().Find(avatar) == nullptr ? QV::kInvalidArg : QV::kOk;
}

QV::Result CReferenceQueryService::AutoRigAvatar(QV::CHandle* avatar, int flag)
{
    QV::Result result = QV::kOk;
    if (m_rContext.Enter("AutoRigAvatar", {m_rContext.Id(avatar), C::Number(flag)}, result)) {
        return result;
    }
    return m_rContext.Scene().Find(avatar) == nullptr ? QV::kInvalidArg : QV::kOk;
}

QV::Result CReferenceQueryService::UpdateAvatarAfterGoZ(QV::CHandle* avatar)
{
    QV::Result result = QV::kOk;
    if (m_rContext.Enter("UpdateAvatarAfterGoZ", {m_rContext.Id(avatar)}, result)) {
        return result;
    }
    return m_rContext.Scene().Find(avatar) == nullptr ? QV::kInvalidArg : QV::kOk;
}

void CReferenceQueryService::FinishGoZImport(QV::Result& result, QV::CHandle* avatar,
                                             const QV::CArrayList<QV::CHandle*>& list)
{
    if (m_rContext.Enter("FinishGoZImport", {m_rContext.Id(avatar), m_rContext.Ids(list)}, result)) {
        return;
    }
    result = QV::kOk;
}

void CReferenceQueryService::GetMaterialCount(QV::Result& result, QV::CHandle* handle, int& count)
{
    if (m_rContext.Enter("GetMaterialCount", {m_rContext.Id(handle)}, result)) {
        return;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    if (object == nullptr) {
        result = QV::kInvalidArg;
        return;
    }
    count = object->m_iMaterials;
    result = QV::kOk;
}

void CReferenceQueryService::GetTextureSize(QV::Result& result, QV::CHandle* handle, int channel, int& size)
{
    if (m_rContext.Enter("GetTextureSize", {m_rContext.Id(handle), C::Number(channel)}, result)) {
        return;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    if (object == nullptr) {
        result = QV::kInvalidArg;
        return;
    }
    size = object->m_kTextureSizes.value(channel, 0);
    result = QV::kOk;
}

} // namespace Host
} // namespace MV
