#include "CGoZImporter.h"

#include "CEventSender.h"
#include "CGoZReturnReader.h"
#include "CMiravaInterface.h"
#include "CReceiveRecordBuilder.h"

#include <QDebug>

#include <unordered_map>
#include <unordered_set>

namespace MV {

namespace {

constexpr wchar_t kGoZSuffix[] = L".GoZ";
constexpr wchar_t kPoseMotionFile[] = L"\\Goz.mvmotion";
constexpr int kPoseFolderCode = 0;
constexpr int kResetPoseFlags = 15;
constexpr int kMotionFileKind = 13;
constexpr unsigned int kMotionLoadFlags = 0x4004;

std::wstring BaseName(const std::wstring& file)
{
    const std::size_t suffix = std::char_traits<wchar_t>::length(kGoZSuffix);
    if (file.size() >= suffix && file.compare(file.size() - suffix, suffix, kGoZSuffix) == 0) {
        return file.substr(0, file.size() - suffix);
    }
    return file;
}

// A row gathered for the avatar, applied after the loop.
struct CAvatarPart
{
    std::wstring m_strFile;
    const CZBrushToFMMeshInfo* m_pRecord = nullptr;
};

} // namespace

CGoZImporter::CGoZImporter(CMiravaInterface* host, const CGoZReturnReader& reader, const CReceiveRecordBuilder& builder)
    : m_pHost(host), m_rReader(reader), m_rBuilder(builder)
{
}

QV::Result CGoZImporter::ImportRows(const CZBrushToFMMeshInfoList& records, const CImportOptions& options)
{
    m_kImported.Clear();
    m_kAdded.Clear();
    m_strAvatarName.clear();
    m_strTeethMeshName.clear();

    QV::CArrayList<std::wstring> files;
    QV::Result result = m_rReader.ReadGoZMesh(files);
    if (QV::Failed(result)) {
        return result;
    }

    CQueryService* query = m_pHost->Query();
    m_pAvatar = m_pHost->Avatar()->GetCurrentAvatar();
    if (m_pAvatar != nullptr) {
        // A character sent whole comes back under its own name, its teeth under theirs.
        m_strAvatarName = query->HandleName(result, m_pAvatar);
        if (QV::Failed(result)) {
            return result;
        }
        QV::CHandle* teeth = m_rBuilder.GetAvatarTeeth(m_pAvatar);
        if (teeth != nullptr) {
            const QV::CArrayList<QV::CHandle*> meshes = query->GetObjectMeshes(teeth);
            if (!meshes.IsEmpty()) {
                m_strTeethMeshName = query->HandleName(result, meshes[0]);
                if (QV::Failed(result)) {
                    return result;
                }
            }
        }
    }

    std::unordered_map<std::wstring, std::wstring> fileByName;
    for (const std::wstring& file : files) {
        fileByName.emplace(BaseName(file), file);
    }

    std::vector<CAvatarPart> bodyParts;
    std::vector<CAvatarPart> otherParts;
    // Whatever was added before a failure is in the scene now and is announced all the same.
    const auto finish = [&](QV::Result outcome) {
        if (!m_kAdded.IsEmpty() && m_pHost->GetEventSender() != nullptr) {
            emit m_pHost->GetEventSender()->ObjectAdded(m_kAdded);
        }
        return outcome;
    };

    for (const CZBrushToFMMeshInfo& record : records) {
        const auto file = fileByName.find(record.m_strMeshName);
        if (file == fileByName.end()) {
            qDebug().noquote() << "No returned GoZ file for" << QString::fromStdWString(record.m_strMeshName);
            continue;
        }
        const std::wstring& name = record.m_strMeshName;
        const bool textured = GetTextureEnable(record) && record.m_bTakeTexture;
        if (m_rBuilder.IsBodyPartMesh(name) || (!m_strAvatarName.empty() && name == m_strAvatarName)) {
            bodyParts.push_back({file->second, &record});
            continue;
        }
        if (m_rBuilder.IsOtherPartMesh(name) || (!m_strTeethMeshName.empty() && name == m_strTeethMeshName)) {
            otherParts.push_back({file->second, &record});
            continue;
        }
        if (record.m_eAction != ActionCreateProp) {
            CGoZImportOption importOption;
            importOption.m_bTakeTexture = textured;
            importOption.m_iPoseOption = options.m_ePoseOption;
            importOption.m_bIsCloth = record.m_eAction == ActionCreateCloth;
            importOption.m_iTextureSize = record.ChosenTextureSize();
            importOption.m_iFlag = 1;
            QV::CHandle* target = record.ChosenTargetHandle();
            m_pHost->File()->ImportGoZToObject(result, target, file->second, importOption);
            if (QV::Failed(result)) {
                return finish(result);
            }
            if (target != nullptr && !m_kImported.Contains(target)) {
                result = m_kImported.Add(target);
                if (QV::Failed(result)) {
                    return finish(result);
                }
            }
        } else if (record.m_bTakeMesh) {
            CGoZCreateOption createOption;
            createOption.m_bTakeTexture = textured;
            createOption.m_iTextureSize = record.ChosenTextureSize();
            createOption.m_iFlag = 1;
            QV::CHandle* created = nullptr;
            m_pHost->File()->CreatePropFromGoZ(result, file->second, createOption, created);
            if (QV::Failed(result)) {
                return finish(result);
            }
            if (created != nullptr) {
                result = m_kAdded.Add(created);
                if (QV::Succeeded(result)) {
                    result = m_kImported.Add(created);
                }
                if (QV::Failed(result)) {
                    return finish(result);
                }
            }
        }
    }

    for (const std::vector<CAvatarPart>* group : {&bodyParts, &otherParts}) {
        if (group->empty()) {
            continue;
        }
        if (m_pAvatar == nullptr) {
            qDebug() << "Avatar parts came back, but there is no avatar to apply them to";
            continue;
        }
        for (const CAvatarPart& part : *group) {
            CGoZImportOption partOption;
            partOption.m_bTakeTexture = GetTextureEnable(*part.m_pRecord) && part.m_pRecord->m_bTakeTexture;
            partOption.m_iPoseOption = options.m_ePoseOption;
            partOption.m_iTextureSize = part.m_pRecord->ChosenTextureSize();
            partOption.m_iFlag = 1;
            m_pHost->File()->ImportGoZToObject(result, m_pAvatar, part.m_strFile, partOption);
            if (QV::Failed(result)) {
                return finish(result);
            }
        }
        if (!m_kImported.Contains(m_pAvatar)) {
            result = m_kImported.Add(m_pAvatar);
            if (QV::Failed(result)) {
                return finish(result);
            }
        }
    }

    finish(QV::kOk);
    query->FinishGoZImport(result, m_pAvatar, m_kImported);
    return result;
}

QV::Result CGoZImporter::RebuildConform(QV::CHandle* avatar, const QV::CArrayList<QV::CHandle*>& objects)
{
    QV::Result result = QV::kOk;
    m_pHost->Fitting()->RebuildAvatarConform(result, avatar, 0, objects);
    return result;
}

QV::Result CGoZImporter::UpdateAvatar(const CImportOptions& options)
{
    // Rigging, fitting and the pose all act on the avatar; props alone need none of it.
    if (m_pAvatar == nullptr) {
        return QV::kOk;
    }
    CQueryService* query = m_pHost->Query();
    QV::Result result = QV::kOk;
    if (!options.m_bAutoRig) {
        result = query->UpdateAvatarAfterGoZ(m_pAvatar);
        if (QV::Failed(result)) {
            return result;
        }
    } else {
        int type = 0;
        query->GetAvatarType(result, m_pAvatar, type);
        if (QV::Failed(result)) {
            return result;
        }
        result = RebuildConform(m_pAvatar, m_kImported);
        if (QV::Failed(result)) {
            return result;
        }
        result = query->AutoRigAvatar(m_pAvatar, 1);
        if (QV::Failed(result)) {
            return result;
        }
    }

    CFittingService* fitting = m_pHost->Fitting();
    if (options.m_bAdjustEyeOcclusion) {
        result = query->AdjustEyeElement(m_pAvatar, kEyeOcclusion);
        if (QV::Failed(result)) {
            return result;
        }
        fitting->AdjustEyeOcclusion(result, m_pAvatar);
        if (QV::Failed(result)) {
            return result;
        }
        fitting->AdjustEyeOcclusionBlend(result, m_pAvatar);
        if (QV::Failed(result)) {
            return result;
        }
    }
    if (options.m_bAdjustTearline) {
        result = query->AdjustEyeElement(m_pAvatar, kTearLine);
        if (QV::Failed(result)) {
            return result;
        }
        fitting->AdjustTearline(result, m_pAvatar);
        if (QV::Failed(result)) {
            return result;
        }
    }
    return ReloadPose(options);
}

QV::Result CGoZImporter::ReloadPose(const CImportOptions& options)
{
    QV::Result result = QV::kOk;
    std::wstring path = m_pHost->Query()->GetHostDataFolder(result, kPoseFolderCode);
    if (QV::Failed(result)) {
        path.clear();
    } else {
        // A host path: the host takes '\' as its separator.
        path += kPoseMotionFile;
        if (QV::Failed(m_pHost->File()->SaveAvatarMotion(m_pAvatar, path, 0))) {
            path.clear();
        }
    }
    if (options.m_bBindPose) {
        return QV::kOk;
    }
    result = m_pHost->Fitting()->ResetAvatarPose(m_pAvatar, m_pAvatar, kResetPoseFlags);
    if (QV::Failed(result)) {
        return result;
    }
    if (!path.empty()) {
        result = m_pHost->File()->LoadMotionFile(path, kMotionFileKind, kMotionLoadFlags, -1, -1);
        if (QV::Failed(result)) {
            return result;
        }
    }
    return m_pHost->Avatar()->CommitAvatarChange(m_pAvatar);
}

QV::Result CGoZImporter::CheckIsExpressionGoZ(const CGoZReturnReader& reader, const CZBrushToFMMeshInfoList& records,
                                              bool& isExpression)
{
    isExpression = false;
    // An expression send names its pose after the owning character or after the first mesh
    // it sent; the expression dialog goes by the mesh names. Either name marks the return,
    // so both dialogs agree on which one takes it.
    std::unordered_set<std::wstring> owners;
    for (const CZBrushToFMMeshInfo& record : records) {
        if (!record.m_kOfferedTargets.IsEmpty()) {
            owners.insert(record.m_strOwnerName);
            owners.insert(record.m_strMeshName);
        }
    }
    QV::CArrayList<std::wstring> motions;
    const QV::Result result = reader.GetGoZRelatedMotionName(motions);
    if (QV::Failed(result)) {
        return result;
    }
    for (const std::wstring& motion : motions) {
        if (owners.count(motion) != 0) {
            isExpression = true;
            break;
        }
    }
    return QV::kOk;
}

} // namespace MV
