#include "CReferenceCharacterService.h"

#include "CHostContext.h"

namespace MV {
namespace Host {

CReferenceCharacterService::CReferenceCharacterService(CHostContext& context) : m_rContext(context) {}

CReferenceCharacterService::~CReferenceCharacterService() = default;

void CReferenceCharacterService::GetCharacterTag(QV::Result& result, QV::CHandle* handle, std::wstring& tag)
{
    if (m_rContext.Enter("GetCharacterTag", {m_rContext.Id(handle)}, result)) {
        return;
    }
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    if (object == nullptr) {
        result = QV::kInvalidArg;
        return;
    }
    tag = object->m_strCharacterTag.toStdWString();
    result = QV::kOk;
}

} // namespace Host
} // namespace MV
