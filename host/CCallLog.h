#pragma once

#include "QVResult.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace MV {
namespace Host {

// One host operation as the plug-in called it.
struct CCallRecord
{
    QString m_strOperation;
    QStringList m_kArgs; // handles as object ids, wide strings as text
    bool m_bInjected = false;
    QV::Result m_iInjectedResult = QV::kOk;
};

// Every host operation the plug-in called, in call order.
class CCallLog
{
public:
    void Append(const CCallRecord& record) { m_kRecords.append(record); }
    void Clear() { m_kRecords.clear(); }

    const QList<CCallRecord>& Records() const { return m_kRecords; }
    QList<CCallRecord> Of(const QString& operation) const;
    int Count(const QString& operation) const;

private:
    QList<CCallRecord> m_kRecords;
};

} // namespace Host
} // namespace MV
