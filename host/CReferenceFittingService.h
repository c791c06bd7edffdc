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

private:
    CHostContext& m_rContext;
};

} // namespace Host
} // namespace MV
