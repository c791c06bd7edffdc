#include "CSendRecordBuilder.h"

#include "CMiravaInterface.h"
#include "Platform.h"

#include <QDir>
#include <QFileInfo>

#include <unordered_map>
#include <unordered_set>

namespace MV {

namespace {

constexpr int kMeshGroupNodeType = 6;
constexpr int kTeethNodeType = 36;

} // namespace

CSendRecordBuilder::CSendRecordBuilder(CMiravaInterface* host) : m_pHost(host) {}

void CSendRecordBuilder::ListMeshes(QV::CHandle* object, int nodeType, QV::CArrayList<QV::CHandle*>& meshes) const
{
    if (nodeType == kMeshGroupNodeType) {
        m_pHost->Query()->ListMeshObjectsType6(meshes, object);
    } else {
        m_pHost->Query()->ListMeshObjects(meshes, object);
    }
}

QV::Result CSendRecordBuilder::BuildMeshInfo(QV::CHandle* pick, CFMToZBrushMeshInfoList& meshInfo) const
{
    CQueryService* query = m_pHost->Query();
    QV::Result result = QV::kOk;
    QV::CHandle* owner = nullptr;
    query->GetPickOwner(result, pick, 0, owner);
    if (QV::Failed(result)) {
        return result;
    }
    int nodeType = 0;
    query->GetNodeType(result, pick, nodeType);
    if (QV::Failed(result)) {
        return result;
    }
    QV::CArrayList<QV::CHandle*> meshes;
    ListMeshes(pick, nodeType, meshes);
    for (QV::CHandle* mesh : meshes) {
        CFMToZBrushMeshInfo info;
        info.m_pObject = owner;
        info.m_eNodeType = static_cast<ENodeType>(nodeType);
        info.m_kObjectList.push_back(mesh);
        QV::Result nameResult = QV::kOk;
        info.m_strObjectName = query->HandleName(nameResult, mesh);
        if (QV::Failed(nameResult)) {
            return nameResult;
        }
        const QV::Result added = info.SetActiveAction(Create, NoInfo);
        if (QV::Failed(added)) {
            return added;
        }
        info.SelectAction(Create);
        meshInfo.push_back(std::move(info));
    }
    return QV::kOk;
}

QV::Result CSendRecordBuilder::MarkTeethMesh(CFMToZBrushMeshInfoList& meshInfo) const
{
    QV::CHandle* avatar = m_pHost->Avatar()->GetCurrentAvatar();
    if (avatar == nullptr) {
        return QV::kOk;
    }
    QV::Result result = QV::kOk;
    QV::CArrayList<QV::CHandle*> related;
    m_pHost->Query()->FindRelatedObjects(result, avatar, kTeethNodeType, 1, related);
    if (QV::Failed(result)) {
        return result;
    }
    QV::CHandle* teeth = nullptr;
    for (QV::CHandle* object : related) {
        int nodeType = 0;
        QV::Result typeResult = QV::kOk;
        m_pHost->Query()->GetNodeType(typeResult, object, nodeType);
        QV::CArrayList<QV::CHandle*> meshes;
        ListMeshes(object, nodeType, meshes);
        if (meshes.GetCount() > 0) {
            teeth = meshes[0];
            break;
        }
    }
    if (teeth == nullptr) {
        return QV::kOk;
    }
    for (CFMToZBrushMeshInfo& info : meshInfo) {
        if (!info.m_kObjectList.empty() && info.m_kObjectList.front() == teeth) {
            info.m_bTeethMesh = true;
        }
    }
    return QV::kOk;
}

QV::Result CSendRecordBuilder::SetGozActionInfo(CFMToZBrushMeshInfoList& meshInfo,
                                                const QStringList& gozFileList) const
{
    CQueryService* query = m_pHost->Query();

    // Each gathered name remembers its record; sets keep this linear in the mesh count.
    std::vector<std::pair<std::wstring, std::size_t>> names;
    for (std::size_t record = 0; record < meshInfo.size(); ++record) {
        for (QV::CHandle* object : meshInfo[record].m_kObjectList) {
            QV::Result ignored = QV::kOk;
            names.emplace_back(query->HandleName(ignored, object), record);
        }
    }

    std::unordered_set<std::wstring> sentBefore;
    for (const QString& file : gozFileList) {
        sentBefore.insert(QFileInfo(file).completeBaseName().toStdWString());
    }
    for (const auto& name : names) {
        if (sentBefore.count(name.first) == 0) {
            continue;
        }
        CFMToZBrushMeshInfo& info = meshInfo[name.second];
        QV::Result result = info.SetActiveAction(Create, AutoRename);
        if (QV::Failed(result)) {
            return result;
        }
        result = info.SetActiveAction(Relink, NoInfo);
        if (QV::Failed(result)) {
            return result;
        }
    }

    std::unordered_map<std::wstring, int> counts;
    for (const auto& name : names) {
        ++counts[name.first];
    }
    for (const auto& name : names) {
        if (counts[name.first] < 2) {
            continue;
        }
        const QV::Result result = meshInfo[name.second].SetActiveAction(Create, SameNameMesh);
        if (QV::Failed(result)) {
            return result;
        }
    }

    for (CFMToZBrushMeshInfo& info : meshInfo) {
        for (QV::CHandle* object : info.m_kObjectList) {
            if (query->IsGoZPolygonSupported(object)) {
                continue;
            }
            const QV::Result result = info.SetActiveAction(Skip, PolygonOver4Sides);
            if (QV::Failed(result)) {
                return result;
            }
            info.SelectAction(Skip);
            break;
        }
    }

    // Told now, in the row, rather than lost on the way back.
    for (const auto& name : names) {
        CFMToZBrushMeshInfo& info = meshInfo[name.second];
        if (Platform::IsNarrowText(name.first) || info.ActiveAction() == Skip) {
            continue;
        }
        const QV::Result result = info.SetActiveAction(Skip, NameNotCarried);
        if (QV::Failed(result)) {
            return result;
        }
        info.SelectAction(Skip);
    }
    return QV::kOk;
}

QStringList CSendRecordBuilder::ListProjectFiles(const QString& folder)
{
    const QDir dir(folder);
    if (!dir.exists()) {
        return {};
    }
    return dir.entryList(QDir::Files | QDir::Hidden, QDir::Unsorted);
}

} // namespace MV
