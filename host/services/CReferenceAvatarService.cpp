#include "CReferenceAvatarService.h"

#include "CHostContext.h"

namespace MV {
namespace Host {

using C = CHostContext;

CReferenceAvatarService::CReferenceAvatarService(CHostContext& context) : m_rContext(context) {}

CReferenceAvatarService::~CReferenceAvatarService() = default;

QV::CHandle* CReferenceAvatarService::GetCurrentAvatar()
{
    return m_rContext.Enter("GetCurrentAvatar") ? nullptr
                                                : m_rContext.Scene().HandleOf(m_rContext.Scene().State().m_strCurrentAvatar);
}

void CReferenceAvatarService::GetGozSplitMeshNames(QV::Result& result, QV::CArrayList<std::wstring>& names,
                                                   unsigned int splitMask)
{
    if (m_rContext.Enter("GetGozSplitMeshNames", {C::Number(splitMask)}, result)) {
        return;
    }
    result = C::FillNames(m_rContext.Scene().SplitMeshNames(splitMask), names);
}

void CReferenceAvatarService::GetGozExtraMeshNames(QV::Result& result, QV::CArrayList<std::wstring>& names)
{
    if (m_rContext.Enter("GetGozExtraMeshNames", {}, result)) {
        return;
    }
    result = C::FillNames(m_rContext.Scene().State().m_kExtraMeshNames, names);
}

bool CReferenceAvatarService::IsCharacterTagSupported(const std::wstring& tag, int code)
{
    return !m_rContext.Enter("IsCharacterTagSupported", {C::Text(tag), C::Number(code)}) &&
           m_rContext.Scene().State().m_kSupportedCharacterTags.contains(QString::fromStdWString(tag));
}

QV::CHandle* CReferenceAvatarService::GetBlendShapeEditingAvatar()
{
    if (m_rContext.Enter("GetBlendShapeEditingAvatar")) {
        return nullptr;
    }
    const CScene& scene = m_rContext.Scene();
    const CSceneObject* current = scene.Find(scene.State().m_strCurrentAvatar);
    if (current != nullptr && current->m_bBlendShapeEditing) {
        return scene.HandleOf(current->m_strId);
    }
    for (int i = 0; i < scene.ObjectCount(); ++i) {
        if (scene.Object(i).m_bBlendShapeEditing) {
            return scene.Handle(i);
        }
    }
    return nullptr;
}

QV::Result CReferenceAvatarService::CommitAvatarChange(QV::CHandle* avatar)
{
    QV::Result result = QV::kOk;
    if (const CSceneObject* object = m_rContext.EnterOn("CommitAvatarChange", avatar, result)) {
        ++m_rContext.Edit(*object).m_iCommits;
    }
    return result;
}

} // namespace Host
} // namespace MV
