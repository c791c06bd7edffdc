#include "CDebugLogRecorder.h"

#include <QJsonObject>
#include <QMutexLocker>

#include <atomic>

namespace MV {
namespace Host {

namespace {

std::atomic<CDebugLogRecorder*> g_pRecorder{nullptr};

} // namespace

CDebugLogRecorder::CDebugLogRecorder(std::function<int()> step) : m_fnStep(std::move(step))
{
    g_pRecorder = this;
    m_pPrevious = qInstallMessageHandler(&CDebugLogRecorder::Handle);
}

CDebugLogRecorder::~CDebugLogRecorder()
{
    qInstallMessageHandler(m_pPrevious);
    g_pRecorder = nullptr;
}

void CDebugLogRecorder::Handle(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    CDebugLogRecorder* recorder = g_pRecorder;
    if (recorder == nullptr) {
        return;
    }
    if (type == QtDebugMsg || type == QtInfoMsg) {
        CLine line;
        line.m_iStep = recorder->m_fnStep ? recorder->m_fnStep() : -1;
        line.m_strType = type == QtDebugMsg ? QStringLiteral("debug") : QStringLiteral("info");
        line.m_strText = text;
        QMutexLocker lock(&recorder->m_kMutex);
        recorder->m_kLines << line;
        return;
    }
    if (recorder->m_pPrevious != nullptr) {
        recorder->m_pPrevious(type, context, text);
    } else {
        // Qt's default output, which a null handler stands for.
        fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, text)));
    }
}

QList<CDebugLogRecorder::CLine> CDebugLogRecorder::Lines() const
{
    QMutexLocker lock(&m_kMutex);
    return m_kLines;
}

QJsonArray CDebugLogRecorder::ToJson() const
{
    QJsonArray lines;
    for (const CLine& line : Lines()) {
        QJsonObject entry{{QStringLiteral("type"), line.m_strType}, {QStringLiteral("text"), line.m_strText}};
        if (line.m_iStep >= 0) {
            entry.insert(QStringLiteral("step"), line.m_iStep);
        }
        lines.append(entry);
    }
    return lines;
}

} // namespace Host
} // namespace MV
