#include "CReferenceFittingService.h"

#include "CHostContext.h"

namespace MV {
namespace Host {

using C = CHostContext;

CReferenceFittingService::CReferenceFittingService(CHostContext& context) : m_rContext(context) {}

CReferenceFittingService::~CReferenceFittingService() = default;

void CReferenceFittingService::RebuildAvatarConform(QV::Result& result, QV::CHandle* avatar, int flag,
                                                    const QV::CArrayList<QV::CHandle*>& list)
{
    m_rContext.EnterOn("RebuildAvatarConform", avatar, result, {C::Number(flag), m_rContext.Ids(list)});
}

QV::Result CReferenceFittingService::ResetAvatarPose(QV::CHandle* avatar, QV::CHandle* reference, int flags)
{
    QV::Result result = QV::kOk;
    m_rContext.EnterOn("ResetAvatarPose", avatar, result, {m_rContext.Id(reference), C::Number(flags)});
    return result;
}

void CReferenceFittingService::ListAvatarRigMeshNames(QV::Result& result, QV::CHandle* avatar,
                                                      QV::CArrayList<std::wstring>& names)
{
    if (const CSceneObject* object = m_rContext.EnterOn("ListAvatarRigMeshNames", avatar, result)) {
        result = C::FillNames(object->m_kRigMeshNames, names);
    }
}

void CReferenceFittingService::AdjustEyeOcclusion(QV::Result& result, QV::CHandle* avatar)
{
    m_rContext.EnterOn("AdjustEyeOcclusion", avatar, result);
}

void CReferenceFittingService::AdjustEyeOcclusionBlend(QV::Result& result, QV::CHandle* avatar)
{
    m_rContext.EnterOn("AdjustEyeOcclusionBlend", avatar, result);
}

void CReferenceFittingService::AdjustTearline(QV::Result& result, QV::CHandle* avatar)
{
    m_rContext.EnterOn("AdjustTearline", avatar, result);
}

} // namespace Host
} // namespace MV
