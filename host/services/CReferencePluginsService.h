#pragma once

#include "CMiravaInterface.h"

namespace MV {
namespace Host {

class CHostContext;

// Whether this host accepts plug-ins at all, as the scene says.
class CReferencePluginsService : public CPluginsService
{
public:
    explicit CReferencePluginsService(CHostContext& context);
    ~CReferencePluginsService() override;

    bool IsPluginSupported() override;

private:
    CHostContext& m_rContext;
};

} // namespace Host
} // namespace MV
