#pragma once

#include <QJsonObject>
#include <QSet>
#include <QString>
#include <QStringList>

namespace MV {
namespace Faults {

// What the files ZBrush and the plug-in exchange must look like after any run, however it
// failed: each whole (the old one or the new one), and the object list naming only files that
// are there.
class CExchangeCheck
{
public:
    // pluginSource: the pristine plug-in folder the bridge files are copied from.
    explicit CExchangeCheck(const QString& pluginSource);

    // Files a fault itself deleted or replaced by a folder, relative to the work folder; the
    // object list may still name them.
    void SetExempt(const QSet<QString>& paths) { m_kExempt = paths; }

    // The broken rules, one sentence each; empty when all hold. report: the run's report,
    // for the files ZBrush's stand-in returned cut or malformed on purpose.
    QStringList Check(const QString& workFolder, const QJsonObject& report) const;

    static constexpr const char* kPixologic = "C:/Users/Public/Pixologic/";
    static constexpr const char* kProject = "C:/Users/Public/Pixologic/GoZProjects/Default/";
    static constexpr const char* kApp = "C:/Users/Public/Pixologic/GoZApps/Figmora/";

private:
    void CheckObjectList(const QString& work, QStringList& problems) const;
    void CheckListsZBrushRead(const QString& work, const QJsonObject& report, QStringList& problems) const;
    void CheckGoZFiles(const QString& work, const QJsonObject& report, QStringList& problems) const;
    void CheckLeftovers(const QString& work, QStringList& problems) const;
    void CheckBridgeFiles(const QString& work, QStringList& problems) const;

    QString m_strPluginSource;
    QSet<QString> m_kExempt;
};

} // namespace Faults
} // namespace MV
