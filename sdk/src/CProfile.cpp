#include "QVProfile.h"

#include <QFile>

namespace QV {

namespace {

QString KeyOf(const QString& section, const QString& key)
{
    return section.trimmed().toLower() + QLatin1Char('\n') + key.trimmed().toLower();
}

} // namespace

CProfile::CProfile() = default;
CProfile::~CProfile() = default;

Result CProfile::Open(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        m_bOpen = false;
        m_kValues.clear();
        return kOutOfMemory;
    }
    return Parse(file.readAll());
}

Result CProfile::Parse(const QByteArray& bytes)
{
    m_kValues.clear();
    QString section;
    for (const QByteArray& rawLine : bytes.split('\n')) {
        const QString line = QString::fromUtf8(rawLine).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char(';')) || line.startsWith(QLatin1Char('#'))) {
            continue;
        }
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'))) {
            section = line.mid(1, line.size() - 2);
            continue;
        }
        const int eq = line.indexOf(QLatin1Char('='));
        if (eq <= 0) {
            continue;
        }
        const QString key = KeyOf(section, line.left(eq));
        if (!m_kValues.contains(key)) {
            m_kValues.insert(key, line.mid(eq + 1).trimmed());
        }
    }
    m_bOpen = true;
    return kOk;
}

bool CProfile::IsOpen() const
{
    return m_bOpen;
}

Result CProfile::ReadString(const QString& section, const QString& key, QString& value) const
{
    const auto it = m_kValues.constFind(KeyOf(section, key));
    if (it == m_kValues.constEnd()) {
        return kFail;
    }
    value = it.value();
    return kOk;
}

Result CProfile::ReadUint64(const QString& section, const QString& key, unsigned long long& value) const
{
    QString text;
    const Result read = ReadString(section, key, text);
    if (Failed(read)) {
        return read;
    }
    bool ok = false;
    const qulonglong number = text.toULongLong(&ok);
    if (!ok) {
        return kFail;
    }
    value = number;
    return kOk;
}

Result CProfile::ReadInt(const QString& section, const QString& key, int& value) const
{
    QString text;
    const Result read = ReadString(section, key, text);
    if (Failed(read)) {
        return read;
    }
    bool ok = false;
    const int number = text.toInt(&ok);
    if (!ok) {
        return kFail;
    }
    value = number;
    return kOk;
}

} // namespace QV
