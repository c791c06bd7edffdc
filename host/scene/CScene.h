#pragma once

#include "CNameIndex.h"
#include "CSceneObject.h"
#include "CSceneState.h"
#include "QVHandle.h"
#include "QVResult.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace MV {
namespace Host {

// The reference host's in-memory scene: objects with stable handles and the scene-wide
// state, loaded from JSON (see docs/scene-format.md).
class CScene
{
public:
    CScene();
    ~CScene();
    CScene(const CScene&) = delete;
    CScene& operator=(const CScene&) = delete;

    // True for "" (no language) and for codes such as "en", "de" or "pt_BR".
    static bool IsLanguageCode(const QString& language);

    // Replaces the content with the scene in json. On failure the scene is unchanged,
    // error says what is wrong and where, and the result is kInvalidArg.
    QV::Result Parse(const QByteArray& json, QString& error);

    int ObjectCount() const { return static_cast<int>(m_kObjects.size()); }
    const CSceneObject& Object(int index) const { return m_kObjects[static_cast<size_t>(index)]; }
    CSceneObject& Object(int index) { return m_kObjects[static_cast<size_t>(index)]; }

    // -1 when unknown.
    int IndexOf(const QString& id) const;
    // -1 for null and for handles that are not this scene's.
    int IndexOf(const QV::CHandle* handle) const;
    const CSceneObject* Find(const QString& id) const;
    const CSceneObject* Find(const QV::CHandle* handle) const;
    CSceneObject* Find(const QV::CHandle* handle);

    QV::CHandle* Handle(int index) const;
    QV::CHandle* HandleOf(const QString& id) const; // null when unknown or empty

    // Adds an object (its id must be new, its parent known or empty); returns its index.
    // Amortised O(1): handles, children and names are extended, not rebuilt.
    int AddObject(const CSceneObject& object);
    // Gives the object a new display name and keeps the name index right.
    void RenameObject(int index, const QString& name);

    // Scene names and the names the host handed out or exported (MakeUniqueName).
    CNameIndex& Names() { return m_kNames; }
    const CNameIndex& Names() const { return m_kNames; }

    // Ids below the object, depth first, in scene order.
    QStringList Descendants(const QString& id) const;
    // The mesh objects of an object.
    QStringList MeshesOf(const QString& id) const;
    // The object itself or its nearest ancestor that is a character; empty when none.
    QString OwningCharacter(const QString& id) const;

    CSceneState& State() { return m_kState; }
    const CSceneState& State() const { return m_kState; }

    // The split mesh names whose bit is in the mask, and those without a bit, in scene order.
    QStringList SplitMeshNames(unsigned int mask) const;

    // The ids the host reports as picked (the selection while picks follow it).
    QStringList PickedIds() const;

private:
    void RebuildIndex();

    std::vector<CSceneObject> m_kObjects;
    std::vector<std::unique_ptr<QV::CHandle>> m_kHandles;
    std::vector<std::unique_ptr<QV::CHandle>> m_kRetiredHandles;
    QHash<QString, int> m_kIdIndex;
    QHash<const QV::CHandle*, int> m_kHandleIndex;
    CSceneState m_kState;
    CNameIndex m_kNames;
};

} // namespace Host
} // namespace MV
