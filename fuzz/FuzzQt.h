#pragma once

#include <QtGlobal>

namespace MV {
namespace Fuzz {

// The readers log every odd input through qDebug; at thousands of inputs a second that is
// only noise, and slow.
inline void SilenceQt()
{
    static const bool s_bSilenced = [] {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        return true;
    }();
    (void)s_bSilenced;
}

} // namespace Fuzz
} // namespace MV
