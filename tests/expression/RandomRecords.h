#pragma once

#include "CZBrushToFMMeshInfo.h"

#include <memory>
#include <random>
#include <string>

namespace MV {
namespace Test {

// Record lists as a return could give them, and worse: shared scene meshes, few or no
// candidates per record, mostly Update, chosen candidates from -1 to one past the end.
inline CZBrushToFMMeshInfoList MakeRandomRecords(std::mt19937& random, int records, int targets, int maxCandidates)
{
    auto candidates = std::make_shared<CTargetCandidateList>();
    for (int t = 0; t < targets; ++t) {
        candidates->Add(CTargetCandidate(L"Mesh_" + std::to_wstring(t), nullptr));
    }
    std::uniform_int_distribution<int> candidateCount(0, maxCandidates);
    std::uniform_int_distribution<int> target(0, targets > 0 ? targets - 1 : 0);
    std::uniform_int_distribution<int> percent(0, 99);
    std::uniform_int_distribution<int> otherAction(ActionCreateAcc, ActionCreateProp);

    CZBrushToFMMeshInfoList list;
    list.Reserve(records);
    for (int r = 0; r < records; ++r) {
        CZBrushToFMMeshInfo info;
        info.m_strMeshName = L"Returned_" + std::to_wstring(r);
        for (int action = ActionUpdate; action <= ActionCreateProp; ++action) {
            info.m_kActionNames.Add(GetStringByActionOption(static_cast<EActionOption>(action)));
        }
        info.m_pTargetCandidates = candidates;
        const int count = targets > 0 ? candidateCount(random) : 0;
        for (int c = 0; c < count; ++c) {
            info.m_kOfferedTargets.Add(static_cast<std::uint32_t>(target(random)));
        }
        info.m_eAction = percent(random) < 75 ? ActionUpdate : otherAction(random);
        if (percent(random) < 15) {
            info.m_iChosenTarget = -1;
        } else {
            info.m_iChosenTarget = std::uniform_int_distribution<int>(0, count)(random);
        }
        list.Add(std::move(info));
    }
    return list;
}

} // namespace Test
} // namespace MV
