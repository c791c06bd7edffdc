#include "CCallLog.h"

namespace MV {
namespace Host {

QList<CCallRecord> CCallLog::Of(const QString& operation) const
{
    QList<CCallRecord> found;
    for (const CCallRecord& record : m_kRecords) {
        if (record.m_strOperation == operation) {
            found << record;
        }
    }
    return found;
}

void CCallLog::NoteWrite(const CFileWrite& write)
{
    if (!m_kRecords.isEmpty()) {
        m_kRecords.last().m_kWrites.append(write);
    }
}

void CCallLog::NoteProblem(const QString& note)
{
    if (!m_kRecords.isEmpty()) {
        m_kRecords.last().m_strNote = note;
    }
}

int CCallLog::Count(const QString& operation) const
{
    return Of(operation).size();
}

} // namespace Host
} // namespace MV
