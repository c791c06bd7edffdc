#include "CStandInTracker.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QThread>

#include <atomic>

#include <signal.h>

namespace MV {
namespace Host {

CStandInTracker::CStandInTracker() = default;

CStandInTracker::~CStandInTracker()
{
    for (int i = m_kSaved.size() - 1; i >= 0; --i) {
        const CSaved& saved = m_kSaved.at(i);
        if (saved.m_bWasSet) {
            qputenv(saved.m_kName.constData(), saved.m_kValue);
        } else {
            qunsetenv(saved.m_kName.constData());
        }
    }
}

bool CStandInTracker::Start(const QString& folder, QString& error)
{
    static std::atomic<int> serial{0};
    m_strFolder = folder + QStringLiteral("/running");
    if (!QDir().mkpath(m_strFolder)) {
        error = QStringLiteral("cannot create %1").arg(m_strFolder);
        return false;
    }
    m_kRunId = QByteArray::number(QCoreApplication::applicationPid()) + '-' +
               QByteArray::number(QDateTime::currentMSecsSinceEpoch()) + '-' + QByteArray::number(++serial);
    for (const auto& variable : {qMakePair(QByteArray(kFolderVariable), QFile::encodeName(m_strFolder)),
                                 qMakePair(QByteArray(kRunVariable), m_kRunId)}) {
        m_kSaved << CSaved{variable.first, qEnvironmentVariableIsSet(variable.first.constData()),
                           qgetenv(variable.first.constData())};
        qputenv(variable.first.constData(), variable.second);
    }
    return true;
}

bool CStandInTracker::IsOurs(qint64 pid) const
{
    if (pid <= 0 || ::kill(static_cast<pid_t>(pid), 0) != 0) {
        return false;
    }
    // A process id can be reused: only a process with this run's id in its environment is ours.
    QFile environ(QStringLiteral("/proc/%1/environ").arg(pid));
    if (!environ.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray wanted = QByteArray(kRunVariable) + '=' + m_kRunId;
    for (const QByteArray& entry : environ.readAll().split('\0')) {
        if (entry == wanted) {
            return true;
        }
    }
    return false;
}

QStringList CStandInTracker::Running() const
{
    QStringList running;
    if (m_strFolder.isEmpty()) {
        return running;
    }
    for (const QString& name : QDir(m_strFolder).entryList(QDir::Files, QDir::Name)) {
        bool ok = false;
        const qint64 pid = name.toLongLong(&ok);
        if (ok && IsOurs(pid)) {
            running << name;
        } else {
            QFile::remove(m_strFolder + QLatin1Char('/') + name); // the process has gone
        }
    }
    return running;
}

QStringList CStandInTracker::WaitForAll(int timeoutMs) const
{
    QElapsedTimer waited;
    waited.start();
    QStringList running = Running();
    while (!running.isEmpty() && waited.elapsed() < timeoutMs) {
        // The stand-ins may be waiting for the host to answer on its socket.
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(10);
        running = Running();
    }
    return running;
}

QStringList CStandInTracker::Stop(const QStringList& pids) const
{
    QStringList stopped;
    for (const QString& text : pids) {
        const qint64 pid = text.toLongLong();
        if (IsOurs(pid) && ::kill(static_cast<pid_t>(pid), SIGKILL) == 0) {
            stopped << text;
            QFile::remove(m_strFolder + QLatin1Char('/') + text);
        }
    }
    return stopped;
}

} // namespace Host
} // namespace MV
