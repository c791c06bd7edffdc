#include "CTsCatalog.h"

#include <QFile>
#include <QXmlStreamReader>

namespace MV {
namespace Test {

QString CTsEntry::Describe() const
{
    return m_strContext + QStringLiteral(" | ") + m_strSource +
           (m_strComment.isEmpty() ? QString() : QStringLiteral(" | ") + m_strComment);
}

QString CTsCatalog::Key(const QString& context, const QString& source, const QString& comment)
{
    return context + QChar(4) + source + QChar(4) + comment;
}

bool CTsCatalog::Load(const QString& path, QString& error)
{
    m_kEntries.clear();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    QXmlStreamReader xml(&file);
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("TS")) {
        error = QStringLiteral("%1 is not a .ts file").arg(path);
        return false;
    }
    QString context;
    CTsEntry entry;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            const QStringRef name = xml.name();
            if (name == QLatin1String("context")) {
                context.clear();
            } else if (name == QLatin1String("name")) {
                context = xml.readElementText();
            } else if (name == QLatin1String("message")) {
                entry = CTsEntry();
                entry.m_strContext = context;
            } else if (name == QLatin1String("source")) {
                entry.m_strSource = xml.readElementText();
            } else if (name == QLatin1String("comment")) {
                entry.m_strComment = xml.readElementText();
            } else if (name == QLatin1String("translation")) {
                entry.m_strType = xml.attributes().value(QLatin1String("type")).toString();
                entry.m_strTranslation = xml.readElementText(QXmlStreamReader::IncludeChildElements);
            }
        } else if (xml.isEndElement() && xml.name() == QLatin1String("message")) {
            m_kEntries.insert(Key(entry.m_strContext, entry.m_strSource, entry.m_strComment), entry);
        }
    }
    if (xml.hasError()) {
        error = QStringLiteral("%1: line %2: %3").arg(path).arg(xml.lineNumber()).arg(xml.errorString());
        return false;
    }
    return true;
}

const CTsEntry* CTsCatalog::Find(const QString& context, const QString& source, const QString& comment) const
{
    const auto it = m_kEntries.constFind(Key(context, source, comment));
    return it == m_kEntries.constEnd() ? nullptr : &it.value();
}

QStringList CTsCatalog::Sources() const
{
    QStringList sources;
    for (const CTsEntry& entry : m_kEntries) {
        sources << entry.m_strSource;
    }
    return sources;
}

} // namespace Test
} // namespace MV
