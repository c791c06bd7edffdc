#pragma once

#include "QVResult.h"

#include <QString>
#include <QStringList>

namespace MV {
namespace Host {

// What mvgoz-host was asked to do.
struct CHostCommand
{
    enum class EKind
    {
        Help,
        Run,
        Demo,
        Gui,
    };
    EKind m_eKind = EKind::Help;
    QString m_strPlugin; // absolute; for gui empty when not given (see DefaultPluginPath)
    QString m_strScene;
    QString m_strScript;
    QString m_strReport;
    QString m_strWorkFolder;
    bool m_bNoZBrush = false;
    QString m_strLanguage; // --language; empty: the scene's
};

// The command line of mvgoz-host; see Usage().
class CCommandLine
{
public:
    static constexpr int kExitOk = 0;
    static constexpr int kExitFailed = 1;
    static constexpr int kExitBadArguments = 2;

    // args without the program name. Relative paths are made absolute against the current directory.
    static QV::Result Parse(const QStringList& args, CHostCommand& command, QString& error);
    static QString Usage();
    // Where gui finds the plug-in when none is given: the plug-in folder the build lays out
    // beside the program's bin/ folder, as the demo is run.
    static QString DefaultPluginPath(const QString& programFolder);
};

} // namespace Host
} // namespace MV
