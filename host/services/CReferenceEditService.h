#pragma once

#include "CMiravaInterface.h"

namespace MV {
namespace Host {

class CHostContext;

// Scene edits of the reference host.
class CReferenceEditService : public CEditService
{
public:
    explicit CReferenceEditService(CHostContext& context);
    ~CReferenceEditService() override;

    // Clears the LOD meshes of every object; an unknown handle fails the call before any change.
    void RemoveLods(QV::Result& result, const QV::CArrayList<QV::CHandle*>& objects, int a, int b,
                    unsigned int flags) override;
    void PrepareObjectUpdate(QV::Result& result, QV::CHandle* object) override;
    void RefreshAvatar(QV::Result& result, QV::CHandle* avatar) override;
    void UpdateAvatarMorph(QV::Result& result, QV::CHandle* avatar, bool flag) override;

private:
    CHostContext& m_rContext;
};

} // namespace Host
} // namespace MV
