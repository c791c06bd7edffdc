#include "CReferenceRegistryService.h"

#include "CHostContext.h"

namespace MV {
namespace Host {

using C = CHostContext;

CReferenceRegistryService::CReferenceRegistryService(CHostContext& context) : m_rContext(context) {}

CReferenceRegistryService::~CReferenceRegistryService() = default;

void CReferenceRegistryService::RegisterPluginValue(QObject* plugin, quint64 value)
{
    if (m_rContext.Enter("RegisterPluginValue", {C::ClassName(plugin), QString::number(value)})) {
        return;
    }
    m_rContext.Registrations().append(CPluginRegistration{C::ClassName(plugin), value});
}

} // namespace Host
} // namespace MV
