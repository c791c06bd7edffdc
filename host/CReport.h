#pragma once

#include "QVResult.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QString>
#include <QStringList>

namespace MV {
namespace Host {

class CPluginHost;
class CReferenceHost;

// The JSON report of one host run (see docs/report-format.md).
class CReport
{
public:
    // Texts larger than this are left out of the file list.
    static constexpr qint64 kMaxInlineBytes = 64 * 1024;

    static QString Hex(QV::Result code);

    void SetPlugin(const CPluginHost& plugins);
    void SetPluginError(const QString& path, const QString& error);
    void SetFinalizeResult(QV::Result code);
    void SetStep(int index, const QJsonObject& step);
    void AddRunError(const QString& error) { m_kRunErrors << error; }
    void AddActionSnapshot(int step, QJsonObject snapshot);
    void AddDialogDump(int step, QJsonObject dump);
    // Call log, message boxes, plug-in registrations and the final selection.
    void CaptureHost(const CReferenceHost& host);
    void CaptureFiles(const QString& root);
    void CaptureProcesses(const QString& logPath);

    // The plug-in loaded, no run error, and no failed step.
    bool Succeeded() const;
    QStringList RunErrors() const { return m_kRunErrors; }
    // Why the run did not succeed: plug-in refusals, run errors, failed steps.
    QStringList Problems() const;
    QJsonObject ToJson() const;
    QV::Result Save(const QString& path, QString& error) const;

    // Every file below root, by relative path: size, and the text, base64 or a note.
    static QJsonArray FilesToJson(const QString& root);
    // Each line of the stand-ins' process log; a line that is no JSON object is kept as text.
    static QJsonArray ProcessesToJson(const QString& logPath);

private:
    QJsonObject m_kPlugin;
    bool m_bPluginLoaded = false;
    QStringList m_kRunErrors;
    QMap<int, QJsonObject> m_kSteps;
    QJsonArray m_kSnapshots;
    QJsonArray m_kDumps;
    QJsonArray m_kCallLog;
    QJsonArray m_kMessageBoxes;
    QJsonArray m_kRegistrations;
    QJsonObject m_kFinalState;
    QJsonArray m_kFiles;
    QJsonArray m_kProcesses;
};

} // namespace Host
} // namespace MV
