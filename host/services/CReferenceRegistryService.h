#pragma once

#include "CMiravaInterface.h"

namespace MV {
namespace Host {

class CHostContext;

// Keeps the plug-ins that registered themselves.
class CReferenceRegistryService : public CRegistryService
{
public:
    explicit CReferenceRegistryService(CHostContext& context);
    ~CReferenceRegistryService() override;

    void RegisterPluginValue(QObject* plugin, quint64 value) override;

private:
    CHostContext& m_rContext;
};

} // namespace Host
} // namespace MV
