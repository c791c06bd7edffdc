#include "CFaultInjector.h"

namespace MV {
namespace Host {

void CFaultInjector::Set(const QString& operation, QV::Result code, int nth)
{
    CFault fault;
    fault.m_iCode = code;
    fault.m_iNth = nth < 0 ? 0 : nth;
    m_kFaults.insert(operation, fault);
}

void CFaultInjector::Clear(const QString& operation)
{
    m_kFaults.remove(operation);
}

void CFaultInjector::ClearAll()
{
    m_kFaults.clear();
}

bool CFaultInjector::Check(const QString& operation, QV::Result& code)
{
    const auto it = m_kFaults.find(operation);
    if (it == m_kFaults.end()) {
        return false;
    }
    CFault& fault = it.value();
    ++fault.m_iCalls;
    if (fault.m_iNth == 0 || fault.m_iCalls == fault.m_iNth) {
        code = fault.m_iCode;
        return true;
    }
    return false;
}

} // namespace Host
} // namespace MV
