#include "CReferenceEditService.h"

#include "CHostContext.h"

namespace MV {
namespace Host {

using C = CHostContext;

CReferenceEditService::CReferenceEditService(CHostContext& context) : m_rContext(context) {}

CReferenceEditService::~CReferenceEditService() = default;

void CReferenceEditService::RemoveLods(QV::Result& result, const QV::CArrayList<QV::CHandle*>& objects, int a, int b,
                                       unsigned int flags)
{
    if (m_rContext.Enter("RemoveLods", {m_rContext.Ids(objects), C::Number(a), C::Number(b), C::Number(flags)},
                         result)) {
        return;
    }
    CScene& scene = m_rContext.Scene();
    for (const QV::CHandle* handle : objects) {
        if (scene.Find(handle) == nullptr) {
            result = QV::kInvalidArg;
            return;
        }
    }
    for (const QV::CHandle* handle : objects) {
        scene.Object(scene.IndexOf(handle)).m_kLodMeshes.clear();
    }
    result = QV::kOk;
}

void CReferenceEditService::PrepareObjectUpdate(QV::Result& result, QV::CHandle* object)
{
    m_rContext.EnterOn("PrepareObjectUpdate", object, result);
}

void CReferenceEditService::RefreshAvatar(QV::Result& result, QV::CHandle* avatar)
{
    m_rContext.EnterOn("RefreshAvatar", avatar, result);
}

void CReferenceEditService::UpdateAvatarMorph(QV::Result& result, QV::CHandle* avatar, bool flag)
{
    m_rContext.EnterOn("UpdateAvatarMorph", avatar, result, {C::Flag(flag)});
}

} // namespace Host
} // namespace MV
