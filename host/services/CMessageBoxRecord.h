#pragma once

#include <QString>

namespace MV {
namespace Host {

// A message box the plug-in asked the host to show, and the button it got back.
struct CMessageBoxRecord
{
    QString m_strText;
    QString m_strTitle;
    int m_iKind = 0;
    int m_iButtons = 0;
    int m_iDefaultButton = 0;
    int m_iAnswer = 0;
};

} // namespace Host
} // namespace MV
