#include "CReferenceFittingService.h"

#include "CHostContext.h"

namespace MV {
namespace Host {

using C = CHostContext;

CReferenceFittingService::CReferenceFittingService(CHostContext& context) : m_rContext(context) {}

CReferenceFittingService::~CReferenceFittingService() = default;

QV::Result CReferenceFittingService::Known(QV::CHandle* avatar) const
{
    return m_rContext.Scene().Find(avatar) == nullptr ? QV::kInvalidArg : QV::kOk;
}

void CReferenceFittingService::RebuildAvatarConform(QV::Result& result, QV::CHandle* avatar, int flag,
                                                    const QV::CArrayList<QV::CHandle*>& list)
{
    if (m_rContext.Enter("RebuildAvatarConform", {m_rContext.Id(avatar), C::Number(flag), m_rContext.Ids(list)},
                         result)) {
        return;
    }
    result = Known(avatar);
}

QV::Result CReferenceFittingService::ResetAvatarPose(QV::CHandle* avatar, QV::CHandle* reference, int flags)
{
    QV::Result result = QV::kOk;
    if (m_rContext.Enter("ResetAvatarPose", {m_rContext.Id(avatar), m_rContext.Id(reference), C::Number(flags)},
                         result)) {
        return result;
    }
    return Known(avatar);
}

void CReferenceFittingService::ListAvatarRigMeshNames(QV::Result& result, QV::CHandle* avatar,
                                                      QV::CArrayList<std::wstring>& names)
{
    if (m_rContext.Enter("ListAvatarRigMeshNames", {m_rContext.Id(avatar)}, result)) {
        return;
    }
    const CSceneObject* object = m_rContext.Scene().Find(avatar);
    if (object == nullptr) {
        result = QV::kInvalidArg;
        return;
    }
    names.Clear();
    for (const QString& name : object->m_kRigMeshNames) {
        result = names.Add(name.toStdWString());
        if (QV::Failed(result)) {
            return;
        }
    }
    result = QV::kOk;
}

void CReferenceFittingService::AdjustEyeOcclusion(QV::Result& result, QV::CHandle* avatar)
{
    if (m_rContext.Enter("AdjustEyeOcclusion", {m_rContext.Id(avatar)}, result)) {
        return;
    }
    result = Known(avatar);
}

void CReferenceFittingService::AdjustEyeOcclusionBlend(QV::Result& result, QV::CHandle* avatar)
{
    if (m_rContext.Enter("AdjustEyeOcclusionBlend", {m_rContext.Id(avatar)}, result)) {
        return;
    }
    result = Known(avatar);
}

void CReferenceFittingService::AdjustTearline(QV::Result& result, QV::CHandle* avatar)
{
    if (m_rContext.Enter("AdjustTearline", {m_rContext.Id(avatar)}, result)) {
        return;
    }
    result = Known(avatar);
}

} // namespace Host
} // namespace MV
