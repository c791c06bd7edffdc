#pragma once

#include "MVPluginQtExport.h"

#include <QByteArray>
#include <QList>

// Event carried by CEventSender::ObjectDataChanged2. Each event class registers its type
// name and its base types' names once; tests compare names, not C++ types, so that an
// event built in another module answers the same way.
class MVPLUGINQT_EXPORT CBaseEvent
{
public:
    CBaseEvent();
    virtual ~CBaseEvent();

    virtual QByteArray TypeName() const;
    // True when other's type name is this event's type name or one of its base types'.
    bool IsKindOf(const CBaseEvent& other) const;
    bool IsExactType(const CBaseEvent& other) const;

protected:
    // This type's name first, then its bases, nearest first.
    virtual const QList<QByteArray>& TypeChain() const;
    static const QList<QByteArray>& RegisterChain(const QList<QByteArray>& chain);
};

// Raised while a character's blend shapes (expressions) are being edited.
class MVPLUGINQT_EXPORT CEditBlendShapeEvent : public CBaseEvent
{
public:
    CEditBlendShapeEvent();
    ~CEditBlendShapeEvent() override;

    QByteArray TypeName() const override;

protected:
    const QList<QByteArray>& TypeChain() const override;
};

// Any other change of object data; used by the host to raise non-editing events.
class MVPLUGINQT_EXPORT CObjectDataEvent : public CBaseEvent
{
public:
    CObjectDataEvent();
    ~CObjectDataEvent() override;

    QByteArray TypeName() const override;

protected:
    const QList<QByteArray>& TypeChain() const override;
};
