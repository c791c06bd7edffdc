#pragma once

#include "QVResult.h"

#include <QHash>
#include <QString>
#include <QStringList>

namespace MV {
namespace Host {

// Makes chosen host operations fail with a chosen result, on every call or on one call.
class CFaultInjector
{
public:
    // nth 0: every call from now on; nth > 0: only the nth call from now on.
    void Set(const QString& operation, QV::Result code, int nth = 0);
    void Clear(const QString& operation);
    void ClearAll();

    // Counts one call of the operation; true (with the code) when this call must fail.
    bool Check(const QString& operation, QV::Result& code);

    QStringList Operations() const { return m_kFaults.keys(); }

private:
    struct CFault
    {
        QV::Result m_iCode = QV::kFail;
        int m_iNth = 0;
        int m_iCalls = 0;
    };
    QHash<QString, CFault> m_kFaults;
};

} // namespace Host
} // namespace MV
