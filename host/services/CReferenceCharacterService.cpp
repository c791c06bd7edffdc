#include "CReferenceCharacterService.h"

#include "CHostContext.h"

namespace MV {
namespace Host {

CReferenceCharacterService::CReferenceCharacterService(CHostContext& context) : m_rContext(context) {}

CReferenceCharacterService::~CReferenceCharacterService() = default;

void CReferenceCharacterService::GetCharacterTag(QV::Result& result, QV::CHandle* handle, std::wstring& tag)
{
    if (const CSceneObject* object = m_rContext.EnterOn("GetCharacterTag", handle, result)) {
        tag = object->m_strCharacterTag.toStdWString();
    }
}

} // namespace Host
} // namespace MV
