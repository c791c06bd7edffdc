#include "CExpressionMatcher.h"

#include "CGoZReturnReader.h"
#include "CMiravaInterface.h"
#include "CReceiveRecordBuilder.h"

#include <QCoreApplication>
#include <QDebug>

#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace MV {

namespace {

constexpr wchar_t kGoZSuffix[] = L".GoZ";

std::wstring BaseNameOf(const std::wstring& path)
{
    const std::size_t slash = path.find_last_of(L"/\\");
    std::wstring name = slash == std::wstring::npos ? path : path.substr(slash + 1);
    const std::size_t dot = name.rfind(L'.');
    if (dot != std::wstring::npos) {
        name.erase(dot);
    }
    return name;
}

} // namespace

const int CExpressionMatcher::kFaceNodeTypes[4] = {35, 49, 50, 36};

CExpressionMatcher::CExpressionMatcher(CMiravaInterface* host, const CGoZReturnReader& reader,
                                       CReceiveRecordBuilder& builder)
    : m_pHost(host), m_rReader(reader), m_rBuilder(builder),
      m_fnListMotions([&reader](QV::CArrayList<std::wstring>& motions) { return reader.GetGoZRelatedMotionName(motions); })
{
}

bool CExpressionMatcher::IsInBlendShapeEditingMode() const
{
    QV::CHandle* avatar = m_pHost->Avatar()->GetBlendShapeEditingAvatar();
    return avatar != nullptr && m_pHost->Query()->IsBlendShapeEditing(avatar);
}

bool CExpressionMatcher::CheckIsExpressionGoZ(const CZBrushToFMMeshInfoList& infos)
{
    m_strExpressionName.clear();
    std::vector<const std::wstring*> names;
    for (const CZBrushToFMMeshInfo& info : infos) {
        if (!info.m_kOfferedTargets.IsEmpty()) {
            names.push_back(&info.m_strMeshName);
        }
    }
    QV::CArrayList<std::wstring> motions;
    if (QV::Failed(m_fnListMotions(motions))) {
        // A folder that can't be listed counts as an expression return. Deliberate.
        return true;
    }
    const std::unordered_set<std::wstring> motionNames(motions.begin(), motions.end());
    for (const std::wstring* name : names) {
        if (motionNames.count(*name) != 0) {
            m_strExpressionName = *name;
            return true;
        }
    }
    return false;
}

QV::Result CExpressionMatcher::GetAvatarMeshName(QV::CHandle* avatar, QV::CArrayList<std::wstring>& names) const
{
    CQueryService* query = m_pHost->Query();
    QV::Result result = QV::kOk;
    QV::CArrayList<QV::CHandle*> objects;
    for (int type : kFaceNodeTypes) {
        query->CollectChildObjects(result, avatar, type, 1, objects);
        if (QV::Failed(result)) {
            return result;
        }
    }
    for (QV::CHandle* object : objects) {
        // An object whose meshes can't be listed answers none and is skipped.
        for (QV::CHandle* mesh : query->GetObjectMeshes(object)) {
            std::wstring name = query->HandleName(result, mesh);
            if (QV::Failed(result)) {
                return result;
            }
            result = names.Add(std::move(name));
            if (QV::Failed(result)) {
                return result;
            }
        }
    }
    return QV::kOk;
}

bool CExpressionMatcher::CheckAvatarMeshMatch(QV::CHandle* avatar, CZBrushToFMMeshInfoList& infos,
                                              QWidget* parent) const
{
    QV::CArrayList<std::wstring> faceMeshes;
    if (QV::Failed(GetAvatarMeshName(avatar, faceMeshes))) {
        qDebug() << "Can't list the face meshes of the avatar being edited";
        return false;
    }
    const std::unordered_set<std::wstring> faceNames(faceMeshes.begin(), faceMeshes.end());
    int matches = 0;
    for (CZBrushToFMMeshInfo& info : infos) {
        const CTargetCandidateList& candidates = info.TargetCandidates();
        for (int i = 0; i < info.m_kOfferedTargets.GetCount(); ++i) {
            const std::uint32_t target = info.m_kOfferedTargets[i];
            if (target >= static_cast<std::uint32_t>(candidates.GetCount())) {
                continue;
            }
            if (faceNames.count(candidates[static_cast<int>(target)].first) != 0) {
                info.m_iChosenTarget = i;
                ++matches;
                break;
            }
        }
    }
    // Counts, not pairs: two records naming one face mesh count twice.
    if (matches == faceMeshes.GetCount()) {
        return true;
    }
    // The count never falls below 0, so the second text is never shown; both stay. Deliberate.
    // The texts belong to the expression dialog, whatever class shows them; lupdate needs the literals.
    ShowMessage(matches != -1 ? QCoreApplication::translate("MV::ExpressionZBrushToFMDlg",
                                                            "[MVGOZBursh] Expression GoZ: Please return all Mesh")
                              : QCoreApplication::translate("MV::ExpressionZBrushToFMDlg",
                                                            "[MVGOZBursh] Expression GoZ: Please return Avatar Mesh"),
                parent);
    return false;
}

QV::CHandle* CExpressionMatcher::GetAvatarTeeth(QV::CHandle* avatar) const
{
    if (avatar == nullptr) {
        return nullptr;
    }
    QV::Result result = QV::kOk;
    QV::CArrayList<QV::CHandle*> teeth;
    m_pHost->Query()->CollectChildObjects(result, avatar, kTeethNodeType, 1, teeth);
    return QV::Failed(result) || teeth.IsEmpty() ? nullptr : teeth[0];
}

QV::Result CExpressionMatcher::InitialAvatarPartMeshName()
{
    return m_rBuilder.InitialAvatarPartMeshName();
}

QV::Result CExpressionMatcher::GatherTeethReturn(QV::CHandle* avatar, QV::CArrayList<std::wstring>& files,
                                                 std::wstring& teethMeshName,
                                                 QV::CArrayList<std::wstring>& teethFiles) const
{
    teethMeshName.clear();
    teethFiles.Clear();
    QV::CHandle* teeth = GetAvatarTeeth(avatar);
    if (teeth == nullptr) {
        return QV::kOk;
    }
    CQueryService* query = m_pHost->Query();
    const QV::CArrayList<QV::CHandle*> meshes = query->GetObjectMeshes(teeth);
    if (meshes.IsEmpty()) {
        return QV::kOk;
    }
    QV::Result result = QV::kOk;
    std::wstring name = query->HandleName(result, meshes[0]);
    if (QV::Failed(result)) {
        return result;
    }
    QV::CArrayList<std::wstring> returned;
    result = m_rReader.ReadGoZMesh(returned);
    if (QV::Failed(result)) {
        return result;
    }
    QV::CArrayList<std::wstring> candidates;
    result = GetGozFilePathCandidate(returned, m_rBuilder.OtherPartMeshNames(), candidates);
    if (QV::Failed(result)) {
        return result;
    }
    for (const std::wstring& candidate : candidates) {
        if (teethFiles.Contains(candidate)) {
            continue; // a file that holds two part names is one file
        }
        result = teethFiles.Add(candidate);
        if (QV::Succeeded(result)) {
            result = RemoveGozFilePathNoUsedToDisplay(candidate, files);
        }
        if (QV::Failed(result)) {
            return result;
        }
    }
    if (teethFiles.IsEmpty()) {
        return QV::kOk;
    }
    result = files.Add(name + kGoZSuffix);
    if (QV::Failed(result)) {
        return result;
    }
    teethMeshName = std::move(name);
    return QV::kOk;
}

QV::Result CExpressionMatcher::CheckReturn(QV::CHandle* avatar, CZBrushToFMMeshInfoList& infos, QWidget* parent,
                                           EVerdict& verdict)
{
    // Both are asked every time, whatever the first answers.
    const bool expression = CheckIsExpressionGoZ(infos);
    const bool editing = IsInBlendShapeEditingMode();
    if (!editing && !expression) {
        verdict = EVerdict::NotExpression;
        return QV::kNothingDone;
    }
    if (!editing) {
        verdict = EVerdict::NotInEditMode;
        ShowMessage(QCoreApplication::translate("MV::ExpressionZBrushToFMDlg",
                                                "[MVGOZBursh] Expression GoZ: Not in Edit Expression Mode.",
                                                "Expression goz"),
                    parent);
        return QV::kNothingDone;
    }
    if (!expression) {
        verdict = EVerdict::NoExpressionGoZ;
        ShowMessage(QCoreApplication::translate("MV::ExpressionZBrushToFMDlg",
                                                "[MVGOZBursh] Expression GoZ: No Expression Goz.", "Expression goz"),
                    parent);
        return QV::kNothingDone;
    }
    if (!CheckAvatarMeshMatch(avatar, infos, parent)) {
        verdict = EVerdict::NoMatch;
        return QV::kOk;
    }
    verdict = EVerdict::Accepted;
    return CheckUpdateGozTargetObject(infos);
}

void CExpressionMatcher::ShowMessage(const QString& text, QWidget* parent) const
{
    m_pHost->Ui()->ShowMessageBox(text, QString(), parent, kMessageWarning, kMessageButtonOk, 0);
}

bool CExpressionMatcher::Contain(const std::wstring& text, const std::wstring& part)
{
    return text.find(part) != std::wstring::npos;
}

QV::Result CExpressionMatcher::GetGozFilePathCandidate(QV::CArrayList<std::wstring> paths,
                                                       QV::CArrayList<std::wstring> names,
                                                       QV::CArrayList<std::wstring>& candidates)
{
    for (const std::wstring& path : paths) {
        const std::wstring base = BaseNameOf(path);
        for (const std::wstring& name : names) {
            if (!Contain(base, name)) {
                continue;
            }
            const QV::Result result = candidates.Add(path);
            if (QV::Failed(result)) {
                return result;
            }
        }
    }
    return QV::kOk;
}

QV::Result CExpressionMatcher::RemoveGozFilePathNoUsedToDisplay(std::wstring path, QV::CArrayList<std::wstring>& paths)
{
    const int index = paths.IndexOf(path);
    return index < 0 ? QV::kOk : paths.RemoveAt(index);
}

std::int64_t CExpressionMatcher::CandidateTarget(const CZBrushToFMMeshInfo& info, int candidate)
{
    if (candidate < 0 || candidate >= info.m_kOfferedTargets.GetCount()) {
        return kNoTarget;
    }
    return info.m_kOfferedTargets[candidate];
}

QV::CHandle* CExpressionMatcher::TargetMesh(const CZBrushToFMMeshInfo& info)
{
    const std::int64_t target = CandidateTarget(info, info.m_iChosenTarget);
    const CTargetCandidateList& candidates = info.TargetCandidates();
    if (target == kNoTarget || target >= candidates.GetCount()) {
        return nullptr;
    }
    return candidates[static_cast<int>(target)].second;
}

namespace {

// The target an Update record holds; kNoTarget for any other record.
std::int64_t HeldTarget(const CZBrushToFMMeshInfo& info)
{
    if (info.m_eAction != ActionUpdate || info.m_iChosenTarget == -1) {
        return CExpressionMatcher::kNoTarget;
    }
    return CExpressionMatcher::CandidateTarget(info, info.m_iChosenTarget);
}

} // namespace

QV::Result CExpressionMatcher::CheckUpdateGozTargetObject(CZBrushToFMMeshInfoList& infos)
{
    // The rule as first written copies the list for every contested pair and scans it per
    // candidate. The same outcome, kept in counts: how many records hold each target, and
    // which records held it at the start. A record that moves always moves to a target no one
    // holds, so the records that contest a target are some of those that held it at the start.
    const int count = infos.GetCount();
    std::unordered_map<std::int64_t, int> holders;
    std::unordered_map<std::int64_t, std::vector<int>> firstHolders;
    holders.reserve(static_cast<std::size_t>(count));
    firstHolders.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const std::int64_t target = HeldTarget(infos[i]);
        if (target != kNoTarget) {
            ++holders[target];
            firstHolders[target].push_back(i);
        }
    }

    for (int i = 0; i < count; ++i) {
        const std::int64_t contested = HeldTarget(infos[i]);
        if (contested == kNoTarget || holders[contested] < 2) {
            continue;
        }
        for (int j : firstHolders[contested]) {
            if (j <= i || HeldTarget(infos[j]) != contested) {
                continue;
            }
            CZBrushToFMMeshInfo& later = infos[j];
            int chosen = -1;
            for (int k = 0; k < later.m_kOfferedTargets.GetCount(); ++k) {
                // Free when nobody holds it. Leaving record i out changes nothing: record j
                // still counts with its old target, the contested one.
                const auto held = holders.find(later.m_kOfferedTargets[k]);
                if (held == holders.end() || held->second == 0) {
                    chosen = k;
                    break;
                }
            }
            --holders[contested];
            later.m_iChosenTarget = chosen;
            const std::int64_t moved = HeldTarget(later);
            if (moved != kNoTarget) {
                ++holders[moved];
            }
        }
    }
    return QV::kOk;
}

bool CExpressionMatcher::CheckUiStateCanGoz(const CZBrushToFMMeshInfoList& infos)
{
    for (const CZBrushToFMMeshInfo& info : infos) {
        if (info.m_eAction == ActionUpdate && info.m_iChosenTarget == -1) {
            return false;
        }
    }
    return true;
}

} // namespace MV
