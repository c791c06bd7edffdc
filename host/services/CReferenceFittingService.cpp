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
    if (const CSceneObject* object =
            m_rContext.EnterOn("RebuildAvatarConform", avatar, result, {C::Number(flag), m_rContext.Ids(list)})) {
        ++m_rContext.Edit(*object).m_iConformRebuilds;
    }
}

QV::Result CReferenceFittingService::ResetAvatarPose(QV::CHandle* avatar, QV::CHandle* reference, int flags)
{
    QV::Result result = QV::kOk;
    if (const CSceneObject* object =
            m_rContext.EnterOn("ResetAvatarPose", avatar, result, {m_rContext.Id(reference), C::Number(flags)})) {
        m_rContext.Edit(*object).m_strPose = QLatin1String(kResetPose);
    }
    return result;
}

void CReferenceFittingService::ListAvatarRigMeshNames(QV::Result& result, QV::CHandle* avatar,
                                                      QV::CArrayList<std::wstring>& names)
{
    if (const CSceneObject* object = m_rContext.EnterOn("ListAvatarRigMeshNames", avatar, result)) {
        result = C::FillNames(object->m_kRigMeshNames, names);
    }
}

void CReferenceFittingService::FitElements(const char* operation, QV::CHandle* avatar, int nodeType, QV::Result& result)
{
    if (const CSceneObject* object = m_rContext.EnterOn(operation, avatar, result)) {
        CScene& scene = m_rContext.Scene();
        for (const QString& id : scene.Descendants(object->m_strId)) {
            CSceneObject& element = scene.Object(scene.IndexOf(id));
            if (element.m_bHasNodeType && element.m_iNodeType == nodeType) {
                ++element.m_iFittings;
            }
        }
    }
}

void CReferenceFittingService::AdjustEyeOcclusion(QV::Result& result, QV::CHandle* avatar)
{
    FitElements("AdjustEyeOcclusion", avatar, 49, result);
}

void CReferenceFittingService::AdjustEyeOcclusionBlend(QV::Result& result, QV::CHandle* avatar)
{
    FitElements("AdjustEyeOcclusionBlend", avatar, 49, result);
}

void CReferenceFittingService::AdjustTearline(QV::Result& result, QV::CHandle* avatar)
{
    FitElements("AdjustTearline", avatar, 50, result);
}

QV::Result CReferenceFittingService::CreateEyeElement(QV::CHandle* avatar, int nodeType)
{
    QV::Result result = QV::kOk;
    const CSceneObject* owner = m_rContext.EnterOn("CreateEyeElement", avatar, result, {C::Number(nodeType)});
    if (owner == nullptr) {
        return result;
    }
    // Copied first: adding an object moves the scene's objects.
    const QString ownerId = owner->m_strId;
    const QString ownerName = owner->m_strName;
    CScene& scene = m_rContext.Scene();
    CSceneObject element;
    element.m_strId = ownerId + QStringLiteral("_element_%1").arg(nodeType);
    for (int serial = 1; scene.IndexOf(element.m_strId) >= 0; ++serial) {
        element.m_strId = ownerId + QStringLiteral("_element_%1_%2").arg(nodeType).arg(serial);
    }
    element.m_strName = ownerName + QStringLiteral("_Element%1").arg(nodeType);
    element.m_uKind = 2;
    element.m_bHasNodeType = true;
    element.m_iNodeType = nodeType;
    element.m_strParent = ownerId;
    element.m_kMeshes = QStringList{element.m_strId};
    return scene.AddObject(element) < 0 ? QV::kFail : QV::kOk;
}

} // namespace Host
} // namespace MV
