#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

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
    // "context | source | comment", as failure messages show it.
    QString Describe() const;
};

// The messages of a .ts file, keyed by context, source and disambiguation.
class CTsCatalog
{
public:
    static QString Key(const QString& context, const QString& source, const QString& comment = QString());

    // False with error set when the file cannot be read or is no .ts file.
    bool Load(const QString& path, QString& error);

    const QMap<QString, CTsEntry>& Entries() const { return m_kEntries; }
    const CTsEntry* Find(const QString& context, const QString& source, const QString& comment = QString()) const;
    // Every source text, whatever its context.
    QStringList Sources() const;

private:
    QMap<QString, CTsEntry> m_kEntries;
};

} // namespace Test
} // namespace MV
