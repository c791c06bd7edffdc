#pragma once

#include "CMiravaInterface.h"

#include <QString>

namespace MV {
namespace Host {

class CHostContext;

// Runtime controller of a spring or physics node; its calls go to the call log.
class CReferenceNodeController : public CNodeController
{
public:
    CReferenceNodeController(CHostContext& context, const QString& nodeId);
    ~CReferenceNodeController() override;

    void ResetController(int mode) override;
    void Release() override;

    bool IsReleased() const { return m_bReleased; }

private:
    CHostContext& m_rContext;
    QString m_strNodeId;
    bool m_bReleased = false;
};

} // namespace Host
} // namespace MV
