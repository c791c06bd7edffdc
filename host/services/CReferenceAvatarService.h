#pragma once

#include "CMiravaInterface.h"

namespace MV {
namespace Host {

class CHostContext;

// Character-level answers of the reference host.
class CReferenceAvatarService : public CAvatarService
{
public:
    explicit CReferenceAvatarService(CHostContext& context);
    ~CReferenceAvatarService() override;

    QV::CHandle* GetCurrentAvatar() override;
    // Replaces names with the scene's split names for the mask.
    void GetGozSplitMeshNames(QV::Result& result, QV::CArrayList<std::wstring>& names, unsigned int splitMask) override;
    void GetGozExtraMeshNames(QV::Result& result, QV::CArrayList<std::wstring>& names) override;
    bool IsCharacterTagSupported(const std::wstring& tag, int code) override;
    // The current avatar when it is in blend-shape editing, else the first such object.
    QV::CHandle* GetBlendShapeEditingAvatar() override;
    QV::Result CommitAvatarChange(QV::CHandle* avatar) override;

private:
    CHostContext& m_rContext;
};

} // namespace Host
} // namespace MV
