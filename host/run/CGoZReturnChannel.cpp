#include "CGoZReturnChannel.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>

namespace MV {
namespace Host {

namespace {

// A notice is one short JSON line; anything longer is no notice.
constexpr qint64 kMaxNoticeBytes = 1 << 20;

} // namespace

CGoZReturnChannel::CGoZReturnChannel(QObject* parent) : QObject(parent)
{
    connect(&m_kServer, &QLocalServer::newConnection, this, &CGoZReturnChannel::OnNewConnection);
}

CGoZReturnChannel::~CGoZReturnChannel()
{
    m_kServer.close();
    if (m_bPublished) {
        if (m_bVariableWasSet) {
            qputenv(kSocketVariable, m_kPreviousVariable);
        } else {
            qunsetenv(kSocketVariable);
        }
    }
}

bool CGoZReturnChannel::Listen(const QString& folder, QString& error)
{
    const QString path = folder + QStringLiteral("/host.sock");
    QLocalServer::removeServer(path);
    m_kServer.setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_kServer.listen(path)) {
        error = QStringLiteral("cannot listen at %1: %2").arg(path, m_kServer.errorString());
        return false;
    }
    m_bVariableWasSet = qEnvironmentVariableIsSet(kSocketVariable);
    m_kPreviousVariable = qgetenv(kSocketVariable);
    qputenv(kSocketVariable, QFile::encodeName(m_kServer.fullServerName()));
    m_bPublished = true;
    return true;
}

CGoZNotice CGoZReturnChannel::TakeNext(int step)
{
    CGoZNotice& notice = m_kNotices[m_iNextPending++];
    notice.m_iConsumedByStep = step;
    return notice;
}

void CGoZReturnChannel::OnNewConnection()
{
    while (QLocalSocket* socket = m_kServer.nextPendingConnection()) {
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { OnReadyRead(socket); });
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        if (socket->bytesAvailable() > 0) {
            OnReadyRead(socket);
        }
    }
}

void CGoZReturnChannel::OnReadyRead(QLocalSocket* socket)
{
    while (socket->canReadLine()) {
        const QByteArray line = socket->readLine(kMaxNoticeBytes).trimmed();
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        if (object.value(QStringLiteral("notice")).toString() != QLatin1String("GoZDataUpdated")) {
            m_kInvalid << QString::fromUtf8(line.left(200));
            socket->write("error\n");
            continue;
        }
        CGoZNotice notice;
        notice.m_iIndex = m_kNotices.size();
        notice.m_kStep = object.value(QStringLiteral("step"));
        for (const QJsonValue& name : object.value(QStringLiteral("object_list")).toArray()) {
            notice.m_kObjectList << name.toString();
        }
        m_kNotices << notice;
        socket->write("ok\n");
        socket->flush();
        emit NoticeReceived();
    }
    if (socket->bytesAvailable() > kMaxNoticeBytes) {
        m_kInvalid << QStringLiteral("a line of more than %1 bytes").arg(kMaxNoticeBytes);
        socket->abort();
    }
}

QJsonArray CGoZReturnChannel::ToJson() const
{
    QJsonArray notices;
    for (const CGoZNotice& notice : m_kNotices) {
        notices.append(QJsonObject{
            {QStringLiteral("index"), notice.m_iIndex},
            {QStringLiteral("send_step"), notice.m_kStep},
            {QStringLiteral("object_list"), QJsonArray::fromStringList(notice.m_kObjectList)},
            {QStringLiteral("raised_by_step"),
             notice.m_iConsumedByStep < 0 ? QJsonValue() : QJsonValue(notice.m_iConsumedByStep)}});
    }
    for (const QString& line : m_kInvalid) {
        notices.append(QJsonObject{{QStringLiteral("invalid_line"), line}});
    }
    return notices;
}

} // namespace Host
} // namespace MV
