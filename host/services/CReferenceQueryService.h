#pragma once

#include "CMiravaInterface.h"

namespace MV {
namespace Host {

class CHostContext;
struct CSceneObject;

// Scene queries of the reference host, answered from the scene.
class CReferenceQueryService : public CQueryService
{
public:
    explicit CReferenceQueryService(CHostContext& context);
    ~CReferenceQueryService() override;

    QWidget* GetMainWindow() override;
    bool IsPlaying() override;
    void GetSelectedObjects(QV::Result& result, QV::CArrayList<QV::CHandle*>& list, int flag) override;
    void GetAvatarType(QV::Result& result, QV::CHandle* handle, int& type) override;
    void GetObjectKind(QV::Result& result, QV::CHandle* handle, unsigned int& kind) override;
    bool HasNodeType(QV::CHandle* handle) override;
    bool IsExpressionEditing(QV::CHandle* handle) override;
    void CollectChildObjects(QV::Result& result, QV::CHandle* parent, int typeCode, int flag,
                             QV::CArrayList<QV::CHandle*>& list) override;
    std::wstring HandleName(QV::Result& result, QV::CHandle* handle) override;
    QV::CHandle* GetOwningCharacter(QV::CHandle* handle) override;
    void GetLodMeshes(QV::Result& result, QV::CHandle* handle, QV::CArrayList<std::wstring>& names) override;
    bool IsGoZPolygonSupported(QV::CHandle* handle) override;
    void ListSceneObjectsOfKind(QV::Result& result, QV::CHandle* root, int kind, QV::CArrayList<QV::CHandle*>& list,
                                int flag) override;
    QV::CArrayList<QV::CHandle*> GetObjectMeshes(QV::CHandle* handle) override;
    int GetObjectType(QV::CHandle* handle) override;
    QV::CHandle* GetParentObject(QV::CHandle* handle) override;
    std::wstring GetHostDataFolder(QV::Result& result, int folderCode) override;

    void GetPickedObjects(QV::Result& result, QV::CArrayList<QV::CHandle*>& list, int flag) override;
    void GetPickOwner(QV::Result& result, QV::CHandle* pick, int flag, QV::CHandle*& owner) override;
    void GetNodeType(QV::Result& result, QV::CHandle* handle, int& type) override;
    void FindRelatedObjects(QV::Result& result, QV::CHandle* handle, int nodeType, int flag,
                            QV::CArrayList<QV::CHandle*>& list) override;
    void ListMeshObjects(QV::CArrayList<QV::CHandle*>& list, QV::CHandle* handle) override;
    void ListMeshObjectsType6(QV::CArrayList<QV::CHandle*>& list, QV::CHandle* handle) override;
    std::wstring MakeUniqueName(QV::Result& result, QV::CHandle* handle, const std::wstring& baseName) override;
    bool IsSkinSplitSupported(QV::CHandle* avatar) override;
    bool IsBindPoseLocked(QV::CHandle* parent) override;
    bool IsBlendShapeEditing(QV::CHandle* avatar) override;
    void GetBoundNode(QV::Result& result, QV::CHandle* handle, int flag, QV::CHandle*& node) override;
    CNodeController* GetNodeController(QV::CHandle* node) override;
    bool ShouldSkipReceiveDialog(QV::CHandle* avatar) override;
    QV::Result AdjustEyeElement(QV::CHandle* avatar, int type) override;
    QV::Result AutoRigAvatar(QV::CHandle* avatar, int flag) override;
    QV::Result UpdateAvatarAfterGoZ(QV::CHandle* avatar) override;
    void FinishGoZImport(QV::Result& result, QV::CHandle* avatar, const QV::CArrayList<QV::CHandle*>& list) override;
    void GetMaterialCount(QV::Result& result, QV::CHandle* handle, int& count) override;
    void GetTextureSize(QV::Result& result, QV::CHandle* handle, int channel, int& size) override;

private:
    // Appends the descendants of object whose node type is nodeType.
    QV::Result AppendDescendantsOfType(const CSceneObject& object, int nodeType, QV::CArrayList<QV::CHandle*>& list);
    // A flag of the object; false when the call fails or the handle is unknown.
    bool ObjectFlag(const char* operation, QV::CHandle* handle, bool CSceneObject::*flag);
    // The two mesh listings differ only in name.
    void AppendMeshes(const char* operation, QV::CArrayList<QV::CHandle*>& list, QV::CHandle* handle);

    CHostContext& m_rContext;
};

} // namespace Host
} // namespace MV
