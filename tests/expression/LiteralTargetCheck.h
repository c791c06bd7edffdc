#pragma once

#include "CZBrushToFMMeshInfo.h"

#include <cstdint>

namespace MV {
namespace Test {

// The duplicate-target rule of the expression dialog, written out as the rule reads, copies
// and all. It is the reference that the fast version is compared with, and the benchmark's
// baseline. Do not optimise it.
namespace Literal {

// The scene-mesh position that a candidate of the record selects; -1 when it selects none.
inline std::int64_t SelectedPosition(const CZBrushToFMMeshInfo& info, int candidate)
{
    if (candidate < 0 || candidate >= info.m_kOfferedTargets.GetCount()) {
        return -1;
    }
    return info.m_kOfferedTargets[candidate];
}

inline bool HasChosenCandidate(const CZBrushToFMMeshInfo& info)
{
    return info.m_iChosenTarget != -1 && SelectedPosition(info, info.m_iChosenTarget) != -1;
}

inline bool AimAtSameTarget(const CZBrushToFMMeshInfo& a, const CZBrushToFMMeshInfo& b)
{
    return HasChosenCandidate(a) && HasChosenCandidate(b) && a.m_eAction == ActionUpdate &&
           b.m_eAction == ActionUpdate &&
           SelectedPosition(a, a.m_iChosenTarget) == SelectedPosition(b, b.m_iChosenTarget);
}

inline QV::Result CheckUpdateGozTargetObject(CZBrushToFMMeshInfoList& infos)
{
    for (int i = 0; i < infos.GetCount(); ++i) {
        for (int j = i + 1; j < infos.GetCount(); ++j) {
            if (!AimAtSameTarget(infos[i], infos[j])) {
                continue;
            }
            CZBrushToFMMeshInfoList copy = infos;
            const QV::Result erased = copy.RemoveAt(i);
            if (QV::Failed(erased)) {
                return erased;
            }
            CZBrushToFMMeshInfo& later = infos[j];
            int chosen = -1;
            for (int k = 0; k < later.m_kOfferedTargets.GetCount(); ++k) {
                if (later.m_eAction != ActionUpdate) {
                    chosen = k;
                    break;
                }
                const std::int64_t position = later.m_kOfferedTargets[k];
                bool collides = false;
                for (const CZBrushToFMMeshInfo& other : copy) {
                    if (HasChosenCandidate(other) && other.m_eAction == ActionUpdate &&
                        SelectedPosition(other, other.m_iChosenTarget) == position) {
                        collides = true;
                        break;
                    }
                }
                if (!collides) {
                    chosen = k;
                    break;
                }
            }
            later.m_iChosenTarget = chosen;
        }
    }
    return QV::kOk;
}

} // namespace Literal
} // namespace Test
} // namespace MV
