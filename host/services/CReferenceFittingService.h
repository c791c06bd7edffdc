#pragma once

#include "CMiravaInterface.h"

namespace MV {
namespace Host {

class CHostContext;

// Fitting operations of the reference host: recorded, answered for known characters.
class CReferenceFittingService : public CFittingService
{
public:
    explicit CReferenceFittingService(CHostContext& context);
    ~CReferenceFittingService() override;

    void RebuildAvatarConform(QV::Result& result, QV::CHandle* avatar, int flag,
                              const QV::CArrayList<QV::CHandle*>& list) override;
    QV::Result ResetAvatarPose(QV::CHandle* avatar, QV::CHandle* reference, int flags) override;
    void ListAvatarRigMeshNames(QV::Result& result, QV::CHandle* avatar, QV::CArrayList<std::wstring>& names) override;
    void AdjustEyeOcclusion(QV::Result& result, QV::CHandle* avatar) override;
    void AdjustEyeOcclusionBlend(QV::Result& result, QV::CHandle* avatar) override;
    void AdjustTearline(QV::Result& result, QV::CHandle* avatar) override;
    // Adds a child of that node type under the avatar.
    QV::Result CreateEyeElement(QV::CHandle* avatar, int nodeType) override;

    // The pose a reset leaves a character in, until a motion is loaded onto it.
    static constexpr const char* kResetPose = "reset";

private:
    // Counts a fitting on every element of that node type below the character.
    void FitElements(const char* operation, QV::CHandle* avatar, int nodeType, QV::Result& result);

    CHostContext& m_rContext;
};

} // namespace Host
} // namespace MV
