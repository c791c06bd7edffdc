#pragma once

#include <QFile>
#include <QMap>
#include <QString>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

namespace MV {
namespace Test {

// One message of a Qt Linguist .ts file.
struct CTsEntry
{
    QString m_strContext;
    QString m_strSource;
    QString m_strComment; // the disambiguation
    QString m_strTranslation;
    QString m_strType; // "" (finished), "unfinished", "vanished", "obsolete"

    bool IsFinished() const { return m_strType.isEmpty() && !m_strTranslation.isEmpty(); }
    QString Key() const { return m_strContext + QChar(4) + m_strSource + QChar(4) + m_strComment; }
    // As failure messages show it.
    QString Describe() const { return QStringList{m_strContext, m_strSource, m_strComment}.join(" | "); }
};

// The messages of a .ts file by CTsEntry::Key(); false with error set when it cannot be read.
inline bool LoadTs(const QString& path, QMap<QString, CTsEntry>& entries, QString& error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    QXmlStreamReader xml(&file);
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("TS")) {
        error = path + QStringLiteral(" is not a .ts file");
        return false;
    }
    QString context;
    CTsEntry entry;
    while (!xml.atEnd()) {
        xml.readNext();
        const QStringRef name = xml.name();
        if (xml.isStartElement() && name == QLatin1String("name")) {
            context = xml.readElementText();
        } else if (xml.isStartElement() && name == QLatin1String("message")) {
            entry = {context, {}, {}, {}, {}};
        } else if (xml.isStartElement() && name == QLatin1String("source")) {
            entry.m_strSource = xml.readElementText();
        } else if (xml.isStartElement() && name == QLatin1String("comment")) {
            entry.m_strComment = xml.readElementText();
        } else if (xml.isStartElement() && name == QLatin1String("translation")) {
            entry.m_strType = xml.attributes().value(QLatin1String("type")).toString();
            entry.m_strTranslation = xml.readElementText(QXmlStreamReader::IncludeChildElements);
        } else if (xml.isEndElement() && name == QLatin1String("message")) {
            entries.insert(entry.Key(), entry);
        }
    }
    error = xml.hasError() ? QStringLiteral("%1: line %2: %3").arg(path).arg(xml.lineNumber()).arg(xml.errorString())
                           : QString();
    return !xml.hasError();
}

// The committed English catalog.
inline QMap<QString, CTsEntry> CommittedTs()
{
    QMap<QString, CTsEntry> entries;
    QString error;
    EXPECT_TRUE(LoadTs(QStringLiteral(MVGOZ_TS_FILE), entries, error)) << error.toStdString();
    return entries;
}

// The English text of a key in the committed catalog.
inline QString English(const char* context, const char* key)
{
    return CommittedTs().value(CTsEntry {context, key, {}, {}, {}}.Key()).m_strTranslation;
}

} // namespace Test
} // namespace MV
