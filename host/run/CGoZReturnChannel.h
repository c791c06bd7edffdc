#pragma once

#include <QJsonArray>
#include <QJsonValue>
#include <QList>
#include <QLocalServer>
#include <QObject>
#include <QString>
#include <QStringList>

class QLocalSocket;

namespace MV {
namespace Host {

// One "GoZ data is ready" notice from the return launcher.
struct CGoZNotice
{
    int m_iIndex = 0;
    QJsonValue m_kStep; // the script step whose send the return answers, as the launcher saw it
    QStringList m_kObjectList; // the returned object list, as the launcher read it
    int m_iConsumedByStep = -1; // the wait_goz_return step that raised it; -1: not raised
};

// The local socket through which the return launcher tells the running host that ZBrush has
// sent GoZ data back. Its name goes to the processes the host starts in MVGOZ_HOST_SOCKET.
// Notices are queued in arrival order and only raised by a script step, so a run does not
// depend on when a process gets round to calling.
class CGoZReturnChannel : public QObject
{
    Q_OBJECT
public:
    static constexpr const char* kSocketVariable = "MVGOZ_HOST_SOCKET";

    explicit CGoZReturnChannel(QObject* parent = nullptr);
    ~CGoZReturnChannel() override; // stops listening and restores the variable

    // Listens at folder/host.sock and publishes the name; error says why not.
    bool Listen(const QString& folder, QString& error);
    QString ServerName() const { return m_kServer.fullServerName(); }

    bool HasPending() const { return m_iNextPending < m_kNotices.size(); }
    // The oldest notice not raised yet, marked as raised by step; call only when HasPending().
    CGoZNotice TakeNext(int step);
    const QList<CGoZNotice>& Notices() const { return m_kNotices; }
    // Lines that were no notice, kept for the report.
    const QStringList& InvalidLines() const { return m_kInvalid; }
    QJsonArray ToJson() const;

signals:
    void NoticeReceived();

private:
    void OnNewConnection();
    void OnReadyRead(QLocalSocket* socket);

    QLocalServer m_kServer;
    QList<CGoZNotice> m_kNotices;
    QStringList m_kInvalid;
    int m_iNextPending = 0;
    bool m_bVariableWasSet = false;
    QByteArray m_kPreviousVariable;
    bool m_bPublished = false;
};

} // namespace Host
} // namespace MV
