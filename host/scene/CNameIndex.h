#pragma once

#include <QHash>
#include <QSet>
#include <QString>

#include <vector>

namespace MV {
namespace Host {

// The names the host must not hand out twice, kept so that MakeUniqueName costs O(1)
// amortised instead of a walk over the scene: the names scene objects carry (with the
// scene positions of their holders), the names handed out or exported, and for each base
// name the first suffix that may still be free.
class CNameIndex
{
public:
    // Forgets the scene names (and the suffix hints); handed-out names are kept.
    void ClearScene();
    void AddSceneName(const QString& name, int index);
    void RemoveSceneName(const QString& name, int index);
    // Scene positions of the objects with exactly this name, ascending.
    const std::vector<int>& Holders(const QString& name) const;
    int FirstHolder(const QString& name) const; // -1 when none

    // name was handed out or written by an export; ownerId (may be empty) is the object
    // it was handed out for, so that the name can be resolved back to it.
    void MarkUsed(const QString& name, const QString& ownerId = QString());
    bool IsUsed(const QString& name) const { return m_kUsed.contains(name); }
    // The object a used name was last handed out or exported for; empty when none.
    QString OwnerOfUsed(const QString& name) const { return m_kUsedOwners.value(name); }

    // base itself when it is free, else the first free base_1, base_2, ... A name is taken
    // when it was used, or when a scene object other than the caller's own objects has it;
    // ownNames counts, per name, how many of the caller's own objects carry it. The answer
    // is marked as used (for ownerId).
    QString MakeUnique(const QString& base, const QHash<QString, int>& ownNames, const QString& ownerId);

    static QString Suffixed(const QString& base, int suffix);
    // suffix when name is base + "_" + suffix in the form Suffixed writes; 0 otherwise.
    static int SuffixOf(const QString& name, const QString& base);

private:
    bool TakenForAll(const QString& name) const { return IsUsed(name) || m_kHolders.contains(name); }

    QHash<QString, std::vector<int>> m_kHolders;
    QSet<QString> m_kUsed;
    QHash<QString, QString> m_kUsedOwners;
    // base -> every base_k below it is taken for any caller (used or held in the scene).
    QHash<QString, int> m_kNextSuffix;
};

} // namespace Host
} // namespace MV
