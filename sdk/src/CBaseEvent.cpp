#include "CBaseEvent.h"

#include <QMutex>
#include <QMutexLocker>
#include <QSet>

#include <deque>

namespace {

QMutex& RegistryMutex()
{
    static QMutex mutex;
    return mutex;
}

// Registered chains live for the process and events keep references into it, so a chain
// must never move: a deque keeps its elements in place when more are appended.
std::deque<QList<QByteArray>>& Registry()
{
    static std::deque<QList<QByteArray>> chains;
    return chains;
}

} // namespace

const QList<QByteArray>& CBaseEvent::RegisterChain(const QList<QByteArray>& chain)
{
    QMutexLocker lock(&RegistryMutex());
    for (const QList<QByteArray>& known : Registry()) {
        if (known == chain) {
            return known;
        }
    }
    Registry().push_back(chain);
    return Registry().back();
}

CBaseEvent::CBaseEvent() = default;
CBaseEvent::~CBaseEvent() = default;

QByteArray CBaseEvent::TypeName() const
{
    return TypeChain().first();
}

const QList<QByteArray>& CBaseEvent::TypeChain() const
{
    static const QList<QByteArray>& chain = RegisterChain({QByteArrayLiteral("CBaseEvent")});
    return chain;
}

bool CBaseEvent::IsKindOf(const CBaseEvent& other) const
{
    const QByteArray wanted = other.TypeName();
    for (const QByteArray& name : TypeChain()) {
        if (name.size() == wanted.size() && name == wanted) {
            return true;
        }
    }
    return false;
}

bool CBaseEvent::IsExactType(const CBaseEvent& other) const
{
    return TypeName() == other.TypeName();
}

CEditBlendShapeEvent::CEditBlendShapeEvent() = default;
CEditBlendShapeEvent::~CEditBlendShapeEvent() = default;

QByteArray CEditBlendShapeEvent::TypeName() const
{
    return TypeChain().first();
}

const QList<QByteArray>& CEditBlendShapeEvent::TypeChain() const
{
    static const QList<QByteArray>& chain =
        RegisterChain({QByteArrayLiteral("CEditBlendShapeEvent"), QByteArrayLiteral("CBaseEvent")});
    return chain;
}

CObjectDataEvent::CObjectDataEvent() = default;
CObjectDataEvent::~CObjectDataEvent() = default;

QByteArray CObjectDataEvent::TypeName() const
{
    return TypeChain().first();
}

const QList<QByteArray>& CObjectDataEvent::TypeChain() const
{
    static const QList<QByteArray>& chain =
        RegisterChain({QByteArrayLiteral("CObjectDataEvent"), QByteArrayLiteral("CBaseEvent")});
    return chain;
}
