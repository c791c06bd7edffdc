#pragma once

#include <QString>

namespace MV {
namespace Host {

// A plug-in that registered itself with the host.
struct CPluginRegistration
{
    QString m_strClassName;
    quint64 m_uValue = 0;
};

} // namespace Host
} // namespace MV
