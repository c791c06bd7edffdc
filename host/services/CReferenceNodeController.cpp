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
    m_rContext.Enter("ResetController", {m_strNodeId, CHostContext::Number(mode)});
}

void CReferenceNodeController::Release()
{
    m_rContext.Enter("Release", {m_strNodeId});
    m_bReleased = true;
}

} // namespace Host
} // namespace MV
