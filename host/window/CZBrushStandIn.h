#pragma once

#include "CZBrushReturn.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace MV {
namespace Host {

// A file in the GoZ project folder, as the ZBrush panel lists it.
struct CProjectFile
{
    enum class EKind
    {
        Sent, // ".goz": the host exported it for ZBrush
        Returned, // ".GoZ": ZBrush handed it back
        Pose, // ".mvMotionPlus"
        Other,
    };
    QString m_strName; // file name
    EKind m_eKind = EKind::Other;
    qint64 m_iSize = 0;
    QDateTime m_kModified;
    int m_iVertices = -1; // -1: not a readable mesh file
    int m_iFaces = -1;
    QString m_strProblem; // why a mesh file could not be read

    static QString KindText(EKind kind);
};

// What one sculpt-and-send-back did.
struct CSculptOutcome
{
    QStringList m_kReturned; // the names listed in the returned object list, in order
    QStringList m_kWritten; // the .GoZ files written whole
    QStringList m_kProblems;
    bool m_bLauncherStarted = false;
};

// ZBrush's side of the way back, on demand: the meshes the plug-in sent are "sculpted" as the
// session's return settings say and handed back through the GoZ project folder and the object
// list; then the return launcher the bridge installed tells the host, as the ZBrush stand-in
// does after a send. The launcher runs in the background, since the host must stay free to
// answer it.
class CZBrushStandIn : public QObject
{
    Q_OBJECT
public:
    // publicFolder: the folder PUBLIC names (absolute).
    explicit CZBrushStandIn(const QString& publicFolder, QObject* parent = nullptr);
    ~CZBrushStandIn() override; // waits for a launcher still running

    QString ProjectFolder() const; // ends with '/'
    QString AppFolder() const; // GoZApps/Figmora/, ends with '/'
    // The object list that GOZ_OBJECT_LIST of GoZ_Info.txt names; empty when there is none.
    QString ObjectListPath() const;

    // The files of the project folder by name; meshes are read for their counts.
    QList<CProjectFile> ProjectFiles() const;

    // The meshes of the last send, by name. The object list holds the sent paths until a return
    // replaces them with the returned names; the sent ones are remembered across that.
    QStringList SentMeshes();

    // Sculpts the chosen sent meshes (the settings' own choice of meshes is replaced by it) and
    // hands them back with the settings' renames, extra meshes and faults, then starts the
    // launcher unless the settings say not to. Nothing is written when nothing was sent, a
    // chosen name was not sent, or the last launcher still runs.
    CSculptOutcome SculptAndSendBack(const QStringList& meshes, const CZBrushReturn& settings);

    bool IsLauncherRunning() const { return m_kLauncher.state() != QProcess::NotRunning; }

signals:
    // status: "exit <code>", or why it did not run to its end.
    void LauncherFinished(const QString& status);

private:
    QString m_strPublicFolder;
    QStringList m_kSentLines; // as the object list held them: paths without ".goz"
    QProcess m_kLauncher;
};

} // namespace Host
} // namespace MV
