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
class CScene;

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
    void AddTableDump(int step, QJsonObject dump);
    void AddSceneDump(int step, QJsonObject dump);
    // The plug-in's debug log lines, as the run session recorded them.
    void SetDebugLog(const QJsonArray& lines) { m_kDebugLog = lines; }
    // The return launcher's notices (CGoZReturnChannel::ToJson).
    void SetGoZReturns(const QJsonArray& notices) { m_kGoZReturns = notices; }
    // Call log, message boxes, plug-in registrations and the final selection.
    void CaptureHost(const CReferenceHost& host);
    // excluded: paths relative to root that are shown elsewhere (the process log).
    void CaptureFiles(const QString& root, const QStringList& excluded = QStringList());
    void CaptureProcesses(const QString& logPath);

    // The plug-in loaded, no run error, and no failed step.
    bool Succeeded() const;
    QStringList RunErrors() const { return m_kRunErrors; }
    // Why the run did not succeed: plug-in refusals, run errors, failed steps.
    QStringList Problems() const;
    QJsonObject ToJson() const;
    QV::Result Save(const QString& path, QString& error) const;

    // Every file below root, by relative path: size, and the text, base64 or a note.
    static QJsonArray FilesToJson(const QString& root, const QStringList& excluded = QStringList());
    // Each line of the stand-ins' process log; a line that is no JSON object is kept as text.
    static QJsonArray ProcessesToJson(const QString& logPath);
    // The same entries in the order the plug-in started them: by the script step of the send,
    // then make-object-path, hand-to-ZBrush, return launcher. Entries of one kind keep log order.
    static QJsonArray InStartOrder(const QJsonArray& processes);
    // Every object (or those of ids) with its whole mesh, summary and character state.
    static QJsonObject SceneDump(const CScene& scene, const QStringList& ids = QStringList());
    // Every object with its mesh summary before and after the run and its changed state.
    static QJsonArray SceneSummary(const CScene& scene);

private:
    QJsonObject m_kPlugin;
    bool m_bPluginLoaded = false;
    QStringList m_kRunErrors;
    QMap<int, QJsonObject> m_kSteps;
    QJsonArray m_kSnapshots;
    QJsonArray m_kDumps;
    QJsonArray m_kTableDumps;
    QJsonArray m_kSceneDumps;
    QJsonArray m_kDebugLog;
    QJsonArray m_kGoZReturns;
    QJsonArray m_kScene;
    QJsonObject m_kImports;
    QJsonArray m_kCallLog;
    QJsonArray m_kMessageBoxes;
    QJsonArray m_kRegistrations;
    QJsonObject m_kFinalState;
    QJsonArray m_kFiles;
    QJsonArray m_kProcesses;
};

} // namespace Host
} // namespace MV
