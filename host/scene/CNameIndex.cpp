#include "CNameIndex.h"

#include <algorithm>
#include <limits>

namespace MV {
namespace Host {

void CNameIndex::ClearScene()
{
    m_kHolders.clear();
    m_kNextSuffix.clear();
}

void CNameIndex::AddSceneName(const QString& name, int index)
{
    std::vector<int>& holders = m_kHolders[name];
    holders.insert(std::upper_bound(holders.begin(), holders.end(), index), index);
}

void CNameIndex::RemoveSceneName(const QString& name, int index)
{
    const auto found = m_kHolders.find(name);
    if (found == m_kHolders.end()) {
        return;
    }
    std::vector<int>& holders = found.value();
    const auto at = std::lower_bound(holders.begin(), holders.end(), index);
    if (at != holders.end() && *at == index) {
        holders.erase(at);
    }
    if (!holders.empty()) {
        return;
    }
    m_kHolders.erase(found);
    // The name is free again: a hint that passed over it would now skip a free suffix.
    const int underscore = name.lastIndexOf(QLatin1Char('_'));
    if (underscore < 0) {
        return;
    }
    const QString base = name.left(underscore);
    const int suffix = SuffixOf(name, base);
    const auto hint = m_kNextSuffix.find(base);
    if (suffix > 0 && hint != m_kNextSuffix.end() && hint.value() > suffix) {
        hint.value() = suffix;
    }
}

const std::vector<int>& CNameIndex::Holders(const QString& name) const
{
    static const std::vector<int> none;
    const auto found = m_kHolders.constFind(name);
    return found == m_kHolders.constEnd() ? none : found.value();
}

int CNameIndex::FirstHolder(const QString& name) const
{
    const std::vector<int>& holders = Holders(name);
    return holders.empty() ? -1 : holders.front();
}

void CNameIndex::MarkUsed(const QString& name, const QString& ownerId)
{
    m_kUsed.insert(name);
    if (!ownerId.isEmpty()) {
        m_kUsedOwners.insert(name, ownerId);
    }
}

QString CNameIndex::Suffixed(const QString& base, int suffix)
{
    return base + QStringLiteral("_%1").arg(suffix);
}

int CNameIndex::SuffixOf(const QString& name, const QString& base)
{
    const int start = base.size() + 1;
    if (name.size() <= start || !name.startsWith(base) || name.at(base.size()) != QLatin1Char('_') ||
        name.at(start) == QLatin1Char('0')) {
        return 0;
    }
    qint64 suffix = 0;
    for (int i = start; i < name.size(); ++i) {
        const QChar c = name.at(i);
        if (c < QLatin1Char('0') || c > QLatin1Char('9')) {
            return 0;
        }
        suffix = suffix * 10 + (c.unicode() - '0');
        if (suffix > std::numeric_limits<int>::max()) {
            return 0;
        }
    }
    return static_cast<int>(suffix);
}

QString CNameIndex::MakeUnique(const QString& base, const QHash<QString, int>& ownNames, const QString& ownerId)
{
    auto taken = [&](const QString& name) {
        return IsUsed(name) || static_cast<int>(Holders(name).size()) > ownNames.value(name, 0);
    };
    QString name = base;
    if (taken(base)) {
        // Every suffix below the hint is used or held by some object: only the caller's own
        // objects can hold one of those and still leave it free for this caller.
        int& hint = m_kNextSuffix[base];
        hint = std::max(hint, 1);
        while (TakenForAll(Suffixed(base, hint))) {
            ++hint;
        }
        int best = hint;
        for (auto it = ownNames.constBegin(); it != ownNames.constEnd(); ++it) {
            const int suffix = SuffixOf(it.key(), base);
            if (suffix > 0 && suffix < best && !taken(it.key())) {
                best = suffix;
            }
        }
        name = Suffixed(base, best);
    }
    MarkUsed(name, ownerId);
    return name;
}

} // namespace Host
} // namespace MV
