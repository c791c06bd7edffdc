#pragma once

#include "ENodeType.h"
#include "QVArrayList.h"
#include "QVResult.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace MV {

enum EGozExportAction : std::size_t
{
    Create = 0,
    Relink = 1,
    Skip = 2,
};

enum EGozExportActionInfo : std::size_t
{
    NoInfo = 0,
    AutoRename = 1,
    SameNameMesh = 2,
    PolygonOver4Sides = 3,
    // The exchange files carry 8-bit names: a name they can't carry would never come back.
    NameNotCarried = 4,
};

// One row of the send table: the mesh objects sent together and the actions offered.
class CFMToZBrushMeshInfo
{
public:
    using ActionPair = std::pair<std::size_t, std::size_t>;

    // Replaces the reason of the first pair with this action, or appends the pair.
    QV::Result SetActiveAction(std::size_t action, std::size_t info);
    // Makes the last pair with this action the active one; unknown actions change nothing.
    void SelectAction(std::size_t action);
    int GetActionMapIndex() const { return m_iActionMapIndex; }
    bool IsCheckable() const;
    bool HasAction(std::size_t action) const;

    std::size_t ActiveAction() const;
    std::size_t ActiveInfo() const;

    QV::CHandle* m_pObject = nullptr;
    ENodeType m_eNodeType = NODE_TYPE_NONE;
    std::vector<QV::CHandle*> m_kObjectList;
    std::wstring m_strObjectName;
    std::vector<ActionPair> m_kActionMap;
    bool m_bTeethMesh = false;
    int m_iActionMapIndex = 0;
};

using CFMToZBrushMeshInfoList = std::vector<CFMToZBrushMeshInfo>;

// Table texts, translated once and indexed by the enumeration values.
const std::vector<std::wstring>& GozExportActionTexts();
const std::vector<std::wstring>& GozExportActionInfoTexts();
std::wstring GozExportActionText(std::size_t action);
std::wstring GozExportActionInfoText(std::size_t info);

} // namespace MV
