#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QStringList>

// Reading a run's report: its arrays of objects, looked up by one of their fields.
namespace MV {
namespace Test {

inline QJsonArray Array(const QJsonObject& object, const char* key)
{
    return object.value(QLatin1String(key)).toArray();
}

inline QString Text(const QJsonObject& object, const char* key)
{
    return object.value(QLatin1String(key)).toString();
}

inline QStringList Strings(const QJsonValue& value)
{
    QStringList items;
    for (const QJsonValue& item : value.toArray()) {
        items << item.toString();
    }
    return items;
}

// One field of every entry of an array: Field(report, "message_boxes", "text").
inline QStringList Field(const QJsonObject& object, const char* array, const char* key)
{
    QStringList values;
    for (const QJsonValue& entry : Array(object, array)) {
        values << Text(entry.toObject(), key);
    }
    return values;
}

// The first entry of an array whose field key holds value; empty when none does.
inline QJsonObject Entry(const QJsonObject& object, const char* array, const char* key, const QString& value)
{
    for (const QJsonValue& entry : Array(object, array)) {
        if (Text(entry.toObject(), key) == value) {
            return entry.toObject();
        }
    }
    return QJsonObject();
}

inline QStringList Messages(const QJsonObject& report)
{
    return Field(report, "message_boxes", "text");
}

inline QStringList Operations(const QJsonObject& report)
{
    return Field(report, "call_log", "operation");
}

} // namespace Test
} // namespace MV
