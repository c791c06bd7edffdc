#pragma once

#include <QJsonArray>
#include <QList>
#include <QMutex>
#include <QString>
#include <QtGlobal>

#include <functional>

namespace MV {
namespace Host {

// Records the debug and info lines of Qt's message log (the plug-in's diagnostics go there)
// while it exists, with the script step that was running; other messages pass on untouched.
// One recorder at a time; the previous handler is restored on destruction.
class CDebugLogRecorder
{
public:
    struct CLine
    {
        int m_iStep = -1;
        QString m_strType;
        QString m_strText;
    };

    // step tells the running script step (-1: none).
    explicit CDebugLogRecorder(std::function<int()> step);
    ~CDebugLogRecorder();
    CDebugLogRecorder(const CDebugLogRecorder&) = delete;
    CDebugLogRecorder& operator=(const CDebugLogRecorder&) = delete;

    QList<CLine> Lines() const;
    QJsonArray ToJson() const;

private:
    static void Handle(QtMsgType type, const QMessageLogContext& context, const QString& text);

    std::function<int()> m_fnStep;
    QtMessageHandler m_pPrevious = nullptr;
    mutable QMutex m_kMutex;
    QList<CLine> m_kLines;
};

} // namespace Host
} // namespace MV
