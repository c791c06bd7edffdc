#pragma once

#include "MVPluginQtExport.h"
#include "QVResult.h"

#include <QHash>
#include <QString>

namespace QV {

// Read-only INI settings file: [Section] groups of key=value lines, ';' and '#' comments.
class MVPLUGINQT_EXPORT CProfile
{
public:
    CProfile();
    ~CProfile();

    // kOutOfMemory when the file cannot be opened (that is the settings-file failure code).
    Result Open(const QString& path);
    Result Parse(const QByteArray& bytes);
    bool IsOpen() const;

    // kFail when the section or key is missing or the value is not a number.
    Result ReadString(const QString& section, const QString& key, QString& value) const;
    Result ReadUint64(const QString& section, const QString& key, unsigned long long& value) const;
    Result ReadInt(const QString& section, const QString& key, int& value) const;

private:
    bool m_bOpen = false;
    QHash<QString, QString> m_kValues; // "section\nkey" (both lower-case) -> value
};

} // namespace QV
