#include "CReferenceNodeController.h"

#include "CHostContext.h"

namespace MV {
namespace Host {

CReferenceNodeController::CReferenceNodeController(CHostContext& context, const QString& nodeId)
    : m_rContext(context), m_strNodeId(nodeId)
{
}

CReferenceNodeController::~CReferenceNodeController() = default;

void CReferenceNodeController::ResetController(int mode)
{
    QV::Result injected = QV::kOk;
    m_rContext.Enter("ResetController", {m_strNodeId, CHostContext::Number(mode)}, injected);
}

void CReferenceNodeController::Release()
{
    QV::Result injected = QV::kOk;
    m_rContext.Enter("Release", {m_strNodeId}, injected);
    m_bReleased = true;
}

} // namespace Host
} // namespace MV
