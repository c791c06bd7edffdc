#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

// Reading a host run's report for the demo's story: small helpers the story's parts share.
namespace MV {
namespace Host {
namespace DemoJson {

const QString kPixologic = QStringLiteral("C:/Users/Public/Pixologic/");
const QString kProjectFolder = kPixologic + QStringLiteral("GoZProjects/Default/");

inline QString Quoted(const QString& text)
{
    return QStringLiteral("\"") + text + QStringLiteral("\"");
}

inline QJsonArray Array(const QJsonObject& object, const char* key)
{
    return object.value(QLatin1String(key)).toArray();
}

inline QString Text(const QJsonObject& object, const char* key)
{
    return object.value(QLatin1String(key)).toString();
}

inline QString FileName(const QString& path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

inline QStringList Strings(const QJsonArray& array)
{
    QStringList items;
    for (const QJsonValue& item : array) {
        items << item.toString();
    }
    return items;
}

inline QString JoinQuoted(const QStringList& names)
{
    QStringList quoted;
    for (const QString& name : names) {
        quoted << Quoted(name);
    }
    return quoted.join(QStringLiteral(", "));
}

inline QList<QJsonObject> CallsOfStep(const QJsonObject& report, int step, const QStringList& operations)
{
    QList<QJsonObject> calls;
    for (const QJsonValue& value : Array(report, "call_log")) {
        const QJsonObject call = value.toObject();
        if (call.value(QStringLiteral("step")).toInt(-1) == step && operations.contains(Text(call, "operation"))) {
            calls << call;
        }
    }
    return calls;
}

} // namespace DemoJson
} // namespace Host
} // namespace MV
