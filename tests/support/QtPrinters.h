#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <ostream>

// Readable failure messages for Qt strings and bytes.
QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QStringList& list, std::ostream* out)
{
    *out << '[' << list.join(QStringLiteral(", ")).toStdString() << ']';
}
inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    *out << '"' << bytes.toPercentEncoding(" /:._-\"").constData() << '"';
}
QT_END_NAMESPACE
