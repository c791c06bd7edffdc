#include "CReferencePluginsService.h"

#include "CHostContext.h"

namespace MV {
namespace Host {

CReferencePluginsService::CReferencePluginsService(CHostContext& context) : m_rContext(context) {}

CReferencePluginsService::~CReferencePluginsService() = default;

bool CReferencePluginsService::IsPluginSupported()
{
    return !m_rContext.Enter("IsPluginSupported") && m_rContext.Scene().State().m_bPluginSupported;
}

} // namespace Host
} // namespace MV
