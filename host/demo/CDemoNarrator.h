#pragma once

#include <QJsonObject>
#include <QString>

namespace MV {
namespace Host {

// Tells in plain words what a host run did, from its report alone.
class CDemoNarrator
{
public:
    static QString Narrate(const QJsonObject& report);
};

} // namespace Host
} // namespace MV
