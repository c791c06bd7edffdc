#include "CZBrushToFMMeshInfo.h"

namespace MV {

namespace {

constexpr EActionOption kNoAction = static_cast<EActionOption>(-1);

const wchar_t* const kActionStrings[] = {L"Update", L"Create Acc", L"Create Cloth", L"Create Prop"};

} // namespace

const CTargetCandidateList& CZBrushToFMMeshInfo::TargetCandidates() const
{
    static const CTargetCandidateList kNone;
    return m_pTargetCandidates ? *m_pTargetCandidates : kNone;
}

int CZBrushToFMMeshInfo::TargetListCount() const
{
    return NarrowsTargets() ? m_kOfferedTargets.GetCount() : TargetCandidates().GetCount();
}

int CZBrushToFMMeshInfo::CandidateAt(int listIndex) const
{
    if (listIndex < 0 || listIndex >= TargetListCount()) {
        return -1;
    }
    if (!NarrowsTargets()) {
        return listIndex;
    }
    const std::uint32_t candidate = m_kOfferedTargets[listIndex];
    return candidate < static_cast<std::uint32_t>(TargetCandidates().GetCount()) ? static_cast<int>(candidate) : -1;
}

int CZBrushToFMMeshInfo::ListIndexOf(int candidate) const
{
    if (candidate < 0 || candidate >= TargetCandidates().GetCount()) {
        return -1;
    }
    if (!NarrowsTargets()) {
        return candidate;
    }
    return m_kOfferedTargets.IndexOf(static_cast<std::uint32_t>(candidate));
}

QV::CHandle* CZBrushToFMMeshInfo::ChosenTargetHandle() const
{
    const int candidate = ChosenCandidate();
    return candidate < 0 ? nullptr : TargetCandidates()[candidate].second;
}

std::int32_t CZBrushToFMMeshInfo::ChosenTextureSize() const
{
    if (m_iChosenTextureSize < 0 || m_iChosenTextureSize >= m_kTextureSizes.GetCount()) {
        return 0;
    }
    return m_kTextureSizes[m_iChosenTextureSize];
}

bool CZBrushToFMMeshInfo::operator==(const CZBrushToFMMeshInfo& other) const
{
    return m_strMeshName == other.m_strMeshName && m_iObjectType == other.m_iObjectType &&
           m_iParentType == other.m_iParentType && m_kActionNames == other.m_kActionNames &&
           TargetCandidates() == other.TargetCandidates() && m_eAction == other.m_eAction &&
           m_kOfferedTargets == other.m_kOfferedTargets && m_iChosenTarget == other.m_iChosenTarget &&
           m_bTakeMesh == other.m_bTakeMesh && m_bTakeTexture == other.m_bTakeTexture &&
           m_kTextureSizes == other.m_kTextureSizes && m_iChosenTextureSize == other.m_iChosenTextureSize &&
           m_strOwnerName == other.m_strOwnerName;
}

std::wstring GetStringByActionOption(const EActionOption& option)
{
    if (option < ActionUpdate || option > ActionCreateProp) {
        return std::wstring();
    }
    return kActionStrings[option];
}

EActionOption GetActionOption(const std::wstring& text)
{
    for (int option = ActionUpdate; option <= ActionCreateProp; ++option) {
        if (text == kActionStrings[option]) {
            return static_cast<EActionOption>(option);
        }
    }
    return kNoAction;
}

std::wstring GetTextureOptionName(int size)
{
    if (size == kCustomTextureSize) {
        return L"Custom";
    }
    const std::wstring number = std::to_wstring(size);
    return number + L" x " + number;
}

bool GetTextureEnable(const CZBrushToFMMeshInfo& info)
{
    return info.m_iChosenTextureSize != -1;
}

bool HasTarget(const CZBrushToFMMeshInfo& info)
{
    return info.m_iChosenTarget != -1;
}

} // namespace MV
