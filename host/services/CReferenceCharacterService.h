#pragma once

#include "CMiravaInterface.h"

namespace MV {
namespace Host {

class CHostContext;

// Character tags of the reference host.
class CReferenceCharacterService : public CCharacterService
{
public:
    explicit CReferenceCharacterService(CHostContext& context);
    ~CReferenceCharacterService() override;

    void GetCharacterTag(QV::Result& result, QV::CHandle* handle, std::wstring& tag) override;

private:
    CHostContext& m_rContext;
};

} // namespace Host
} // namespace MV
