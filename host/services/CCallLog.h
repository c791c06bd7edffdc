#pragma once

#include "QVResult.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace MV {
namespace Host {

// A file the host wrote while answering a call.
struct CFileWrite
{
    QString m_strPath;
    bool m_bReplaced = false; // a file of that name was there when the host wrote it
};

// One host operation as the plug-in called it.
struct CCallRecord
{
    QString m_strOperation;
    QStringList m_kArgs; // handles as object ids, wide strings as text
    bool m_bInjected = false;
    QV::Result m_iInjectedResult = QV::kOk;
    int m_iStep = -1; // the script step that was running; -1 outside any step
    QList<CFileWrite> m_kWrites;
    QString m_strNote; // why the host refused the call (a returned file it could not read, ...)
};

// Every host operation the plug-in called, in call order.
class CCallLog
{
public:
    void Append(const CCallRecord& record) { m_kRecords.append(record); }
    void Clear() { m_kRecords.clear(); }
    // Adds the write to the latest call, which is the one being answered.
    void NoteWrite(const CFileWrite& write);
    // Says, on the latest call, why the host answered as it did.
    void NoteProblem(const QString& note);

    const QList<CCallRecord>& Records() const { return m_kRecords; }
    QList<CCallRecord> Of(const QString& operation) const;
    int Count(const QString& operation) const;

private:
    QList<CCallRecord> m_kRecords;
};

} // namespace Host
} // namespace MV
