#pragma once

#include "QVArrayList.h"
#include "QVResult.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace MV {

// What a returned mesh is to become.
enum EActionOption : std::int32_t
{
    ActionUpdate = 0,
    ActionCreateAcc = 1,
    ActionCreateCloth = 2,
    ActionCreateProp = 3,
};

// The texture size that stands for "Custom".
constexpr std::int32_t kCustomTextureSize = 2147483647;

using CTargetCandidate = std::pair<std::wstring, QV::CHandle*>;
using CTargetCandidateList = QV::CArrayList<CTargetCandidate>;

// One returned mesh: one row of a receive table.
struct CZBrushToFMMeshInfo
{
    std::wstring m_strMeshName;
    std::int32_t m_iObjectType = 0;
    std::int32_t m_iParentType = 0;
    QV::CArrayList<std::wstring> m_kActionNames;
    // Every row offers the same scene meshes: the rows share one list instead of a copy each.
    std::shared_ptr<const CTargetCandidateList> m_pTargetCandidates;
    std::int32_t m_eAction = ActionUpdate;
    QV::CArrayList<std::uint32_t> m_kOfferedTargets;
    std::int32_t m_iChosenTarget = 0;
    bool m_bTakeMesh = true;
    bool m_bTakeTexture = false;
    QV::CArrayList<std::int32_t> m_kTextureSizes;
    std::int32_t m_iChosenTextureSize = -1;
    std::wstring m_strOwnerName;

    const CTargetCandidateList& TargetCandidates() const;
    // The candidates the target combo box lists: the offered ones when the row narrows them.
    bool NarrowsTargets() const { return !m_kOfferedTargets.IsEmpty(); }
    int TargetListCount() const;
    // Candidate index behind a position of the listed targets; -1 when out of range.
    int CandidateAt(int listIndex) const;
    // Position of a candidate in the listed targets; -1 when the row does not list it.
    int ListIndexOf(int candidate) const;
    // Candidate index of the chosen target; -1 when there is none.
    int ChosenCandidate() const { return CandidateAt(m_iChosenTarget); }
    QV::CHandle* ChosenTargetHandle() const;
    // The texture edge length chosen; 0 without a texture.
    std::int32_t ChosenTextureSize() const;

    bool operator==(const CZBrushToFMMeshInfo& other) const;
    bool operator!=(const CZBrushToFMMeshInfo& other) const { return !(*this == other); }
};

using CZBrushToFMMeshInfoList = QV::CArrayList<CZBrushToFMMeshInfo>;

// Display strings of the actions; they are not translated. Any other value gives "".
std::wstring GetStringByActionOption(const EActionOption& option);
// The action of a display string; -1 for any other text.
EActionOption GetActionOption(const std::wstring& text);
// "Custom" for kCustomTextureSize, else "<n> x <n>".
std::wstring GetTextureOptionName(int size);
bool GetTextureEnable(const CZBrushToFMMeshInfo& info);
bool HasTarget(const CZBrushToFMMeshInfo& info);

} // namespace MV
