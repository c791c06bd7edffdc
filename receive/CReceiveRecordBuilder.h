#pragma once

#include "CZBrushToFMMeshInfo.h"
#include "ENodeType.h"

#include <QString>

#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class CMiravaInterface;

namespace QV {
class CProfile;
}

namespace MV {

// Builds the receive records of the returned GoZ files and decides which actions, targets
// and texture sizes each row offers. Host calls grow with the returned and the scene meshes,
// never with their product: the candidates' object types and parents are asked once.
class CReceiveRecordBuilder
{
public:
    explicit CReceiveRecordBuilder(CMiravaInterface* host);
    ~CReceiveRecordBuilder();
    CReceiveRecordBuilder(const CReceiveRecordBuilder&) = delete;
    CReceiveRecordBuilder& operator=(const CReceiveRecordBuilder&) = delete;

    // Refills both lists of the avatar's part mesh names from the host.
    QV::Result InitialAvatarPartMeshName();
    const QV::CArrayList<std::wstring>& BodyPartMeshNames() const { return m_kBodyPartNames; }
    const QV::CArrayList<std::wstring>& OtherPartMeshNames() const { return m_kOtherPartNames; }
    bool IsBodyPartMesh(const std::wstring& name) const;
    bool IsOtherPartMesh(const std::wstring& name) const;

    // Appends the meshes of the scene objects of kinds 1, 14, 3 and 2 to the candidates.
    QV::Result CollectSceneMeshInfo(CZBrushToFMMeshInfo& info) const;
    // "Create Prop" without an avatar, "Create Acc" for avatar types 2 and 3, else
    // "Create Cloth"; a failed avatar query gives its failure code.
    int GetDefaultActionOption() const;
    QV::Result RemoveActionOption(CZBrushToFMMeshInfo* info) const;
    // Name of the current avatar's first element of that node type; empty when none.
    std::wstring GetMeshName(const ENodeType& nodeType) const;
    QV::CHandle* GetAvatarTeeth(QV::CHandle* avatar) const;

    // Fresh values, the four actions and the scene's target candidates.
    QV::Result MakeTemplateRecord(CZBrushToFMMeshInfo& record) const;
    // One record per returned GoZ file, copied from the template and matched to the scene.
    // The first failing host call ends it with its failure.
    QV::Result BuildRecords(const CZBrushToFMMeshInfo& templateRecord, const QV::CArrayList<std::wstring>& gozFiles,
                            CZBrushToFMMeshInfoList& records);
    // A chosen target or texture size that names nothing becomes -1.
    static QV::Result CheckRows(CZBrushToFMMeshInfoList& records);

    // Candidate index of the row's linked object: the first candidate whose host object type
    // is the row's. -1 when there is none (an object type of 0 links nothing).
    int LinkedCandidate(const CZBrushToFMMeshInfo& info);

    // Where the texture sizes are read: <host data folder>\MVGoZBrush\GoZTextureSize.ini.
    QV::Result TextureSizeFilePath(QString& path) const;
    // The sizes of the texture-size settings file, in file order; sizes below 1 are dropped.
    static QV::Result ReadTextureSizes(const QV::CProfile& profile, std::vector<std::int32_t>& sizes);

private:
    struct CAvatarState
    {
        QV::CHandle* m_pAvatar = nullptr;
        QV::Result m_iTypeResult = QV::kOk;
        int m_iType = 0;
    };

    // Object types and parent avatar types of one candidate list, asked once per candidate.
    struct CCandidateIndex
    {
        std::shared_ptr<const CTargetCandidateList> m_pList;
        bool m_bTypesRead = false;
        std::unordered_map<std::int32_t, std::vector<std::uint32_t>> m_kByType;
        std::unordered_map<std::uint32_t, std::int32_t> m_kParentTypes;
    };

    CAvatarState ReadAvatarState() const;
    static int DefaultAction(const CAvatarState& avatar);
    static QV::Result RemoveActions(CZBrushToFMMeshInfo& info, const CAvatarState& avatar);
    QV::Result IndexCandidates(const std::shared_ptr<const CTargetCandidateList>& list);
    QV::Result ParentTypeOf(std::uint32_t candidate, std::int32_t& type);
    QV::Result OwnerNameOf(QV::CHandle* object, std::wstring& name) const;
    QV::Result SetUpTexture(CZBrushToFMMeshInfo& record, QV::CHandle* object);
    QV::Result LoadTextureSizes();
    std::wstring MapPartName(const std::wstring& name) const;

    CMiravaInterface* m_pHost;
    QV::CArrayList<std::wstring> m_kBodyPartNames;
    QV::CArrayList<std::wstring> m_kOtherPartNames;
    std::unordered_set<std::wstring> m_kBodyPartSet;
    std::unordered_set<std::wstring> m_kOtherPartSet;
    // Lower-case part name -> its spelling in the lists.
    std::unordered_map<std::wstring, std::wstring> m_kPartSpelling;
    CCandidateIndex m_kCandidates;
    // Read once per BuildRecords, when the first textured mesh needs them.
    bool m_bTextureSizesRead = false;
    std::vector<std::int32_t> m_kTextureSizes;
};

} // namespace MV
