#include "CReceiveRecordBuilder.h"

#include "CMiravaInterface.h"
#include "QVProfile.h"

#include <QDebug>

#include <algorithm>

namespace MV {

namespace {

constexpr unsigned int kAllBodyParts = 2047; // the eleven part bits
const int kCandidateKinds[] = {1, 14, 3, 2};
constexpr int kTeethNodeType = 36;
constexpr int kStandardCharacterType = 4;
constexpr int kHairType = 35;
constexpr int kTextureChannelWidth = 0;
constexpr int kTextureChannelHeight = 2;

// Kept as one literal: the settings file sits below the host's data folder under this name.
constexpr char kTextureSizeFile[] = "\\MVGoZBrush\\GoZTextureSize.ini";
constexpr char kTextureSizeSection[] = "GoZTextureSize";
constexpr wchar_t kGoZSuffix[] = L".GoZ";

std::wstring Lower(const std::wstring& text)
{
    return QString::fromStdWString(text).toLower().toStdWString();
}

std::wstring WithoutGoZSuffix(const std::wstring& file)
{
    const std::size_t suffix = std::char_traits<wchar_t>::length(kGoZSuffix);
    if (file.size() >= suffix && file.compare(file.size() - suffix, suffix, kGoZSuffix) == 0) {
        return file.substr(0, file.size() - suffix);
    }
    return file;
}

} // namespace

CReceiveRecordBuilder::CReceiveRecordBuilder(CMiravaInterface* host) : m_pHost(host) {}

CReceiveRecordBuilder::~CReceiveRecordBuilder() = default;

QV::Result CReceiveRecordBuilder::InitialAvatarPartMeshName()
{
    m_kBodyPartNames.Clear();
    m_kOtherPartNames.Clear();
    m_kBodyPartSet.clear();
    m_kOtherPartSet.clear();
    m_kPartSpelling.clear();
    QV::Result result = QV::kOk;
    m_pHost->Avatar()->GetGozSplitMeshNames(result, m_kBodyPartNames, kAllBodyParts);
    if (QV::Failed(result)) {
        return result;
    }
    m_pHost->Avatar()->GetGozExtraMeshNames(result, m_kOtherPartNames);
    if (QV::Failed(result)) {
        return result;
    }
    for (const std::wstring& name : m_kBodyPartNames) {
        m_kBodyPartSet.insert(name);
        m_kPartSpelling.emplace(Lower(name), name);
    }
    for (const std::wstring& name : m_kOtherPartNames) {
        m_kOtherPartSet.insert(name);
        m_kPartSpelling.emplace(Lower(name), name);
    }
    return QV::kOk;
}

bool CReceiveRecordBuilder::IsBodyPartMesh(const std::wstring& name) const
{
    return m_kBodyPartSet.count(name) != 0;
}

bool CReceiveRecordBuilder::IsOtherPartMesh(const std::wstring& name) const
{
    return m_kOtherPartSet.count(name) != 0;
}

std::wstring CReceiveRecordBuilder::MapPartName(const std::wstring& name) const
{
    // ZBrush may hand a part back in another case; the part's own spelling is the row's name.
    if (m_kPartSpelling.empty()) {
        return name;
    }
    const auto found = m_kPartSpelling.find(Lower(name));
    return found == m_kPartSpelling.end() ? name : found->second;
}

QV::Result CReceiveRecordBuilder::CollectSceneMeshInfo(CZBrushToFMMeshInfo& info) const
{
    CQueryService* query = m_pHost->Query();
    auto candidates = std::make_shared<CTargetCandidateList>(info.TargetCandidates());
    // What was gathered stays in the record even when a later call fails.
    const auto keep = [&](QV::Result result) {
        info.m_pTargetCandidates = candidates;
        return result;
    };

    QV::Result result = QV::kOk;
    QV::CArrayList<QV::CHandle*> objects;
    for (int kind : kCandidateKinds) {
        query->ListSceneObjectsOfKind(result, nullptr, kind, objects, 1);
        if (QV::Failed(result)) {
            return keep(result);
        }
    }
    for (QV::CHandle* object : objects) {
        const QV::CArrayList<QV::CHandle*> meshes = query->GetObjectMeshes(object);
        for (QV::CHandle* mesh : meshes) {
            std::wstring name = query->HandleName(result, mesh);
            if (QV::Failed(result)) {
                return keep(result);
            }
            result = candidates->Add(CTargetCandidate(std::move(name), mesh));
            if (QV::Failed(result)) {
                return keep(result);
            }
        }
    }
    return keep(QV::kOk);
}

CReceiveRecordBuilder::CAvatarState CReceiveRecordBuilder::ReadAvatarState() const
{
    CAvatarState state;
    state.m_pAvatar = m_pHost->Avatar()->GetCurrentAvatar();
    if (state.m_pAvatar != nullptr) {
        m_pHost->Query()->GetAvatarType(state.m_iTypeResult, state.m_pAvatar, state.m_iType);
    }
    return state;
}

int CReceiveRecordBuilder::DefaultAction(const CAvatarState& avatar)
{
    if (avatar.m_pAvatar == nullptr) {
        return ActionCreateProp;
    }
    if (QV::Failed(avatar.m_iTypeResult)) {
        return avatar.m_iTypeResult;
    }
    return avatar.m_iType == 2 || avatar.m_iType == 3 ? ActionCreateAcc : ActionCreateCloth;
}

int CReceiveRecordBuilder::GetDefaultActionOption() const
{
    return DefaultAction(ReadAvatarState());
}

QV::Result CReceiveRecordBuilder::RemoveActions(CZBrushToFMMeshInfo& info, const CAvatarState& avatar)
{
    bool removeAcc = false;
    bool removeCloth = info.m_iParentType == kStandardCharacterType || info.m_iParentType == kHairType ||
                       info.m_iParentType == kTeethNodeType;
    if (avatar.m_pAvatar == nullptr) {
        removeAcc = true;
        removeCloth = true;
    } else if (QV::Failed(avatar.m_iTypeResult)) {
        return avatar.m_iTypeResult;
    } else if (avatar.m_iType == 2 || avatar.m_iType == 3) {
        removeCloth = true;
    }
    const std::wstring acc = GetStringByActionOption(ActionCreateAcc);
    const std::wstring cloth = GetStringByActionOption(ActionCreateCloth);
    QV::CArrayList<std::wstring> kept;
    for (const std::wstring& name : info.m_kActionNames) {
        if ((removeAcc && name == acc) || (removeCloth && name == cloth)) {
            continue;
        }
        const QV::Result added = kept.Add(name);
        if (QV::Failed(added)) {
            return added;
        }
    }
    info.m_kActionNames = std::move(kept);
    return QV::kOk;
}

QV::Result CReceiveRecordBuilder::RemoveActionOption(CZBrushToFMMeshInfo* info) const
{
    if (info == nullptr) {
        return QV::kInvalidArg;
    }
    return RemoveActions(*info, ReadAvatarState());
}

std::wstring CReceiveRecordBuilder::GetMeshName(const ENodeType& nodeType) const
{
    QV::CHandle* avatar = m_pHost->Avatar()->GetCurrentAvatar();
    if (avatar == nullptr) {
        return std::wstring();
    }
    QV::Result result = QV::kOk;
    QV::CArrayList<QV::CHandle*> elements;
    m_pHost->Query()->CollectChildObjects(result, avatar, nodeType, 1, elements);
    if (QV::Failed(result) || elements.IsEmpty()) {
        return std::wstring();
    }
    std::wstring name = m_pHost->Query()->HandleName(result, elements[0]);
    return QV::Failed(result) ? std::wstring() : name;
}

QV::CHandle* CReceiveRecordBuilder::GetAvatarTeeth(QV::CHandle* avatar) const
{
    if (avatar == nullptr) {
        return nullptr;
    }
    QV::Result result = QV::kOk;
    QV::CArrayList<QV::CHandle*> related;
    m_pHost->Query()->FindRelatedObjects(result, avatar, kTeethNodeType, 1, related);
    if (QV::Failed(result) || related.IsEmpty()) {
        return nullptr;
    }
    return related[0];
}

QV::Result CReceiveRecordBuilder::MakeTemplateRecord(CZBrushToFMMeshInfo& record) const
{
    record = CZBrushToFMMeshInfo();
    for (int action = ActionUpdate; action <= ActionCreateProp; ++action) {
        const QV::Result added = record.m_kActionNames.Add(GetStringByActionOption(static_cast<EActionOption>(action)));
        if (QV::Failed(added)) {
            return added;
        }
    }
    return CollectSceneMeshInfo(record);
}

QV::Result CReceiveRecordBuilder::IndexCandidates(const std::shared_ptr<const CTargetCandidateList>& list)
{
    if (m_kCandidates.m_pList != list) {
        m_kCandidates = CCandidateIndex();
        m_kCandidates.m_pList = list;
    }
    if (m_kCandidates.m_bTypesRead || !list) {
        return QV::kOk;
    }
    m_kCandidates.m_kByType.clear();
    CQueryService* query = m_pHost->Query();
    for (int i = 0; i < list->GetCount(); ++i) {
        const int type = query->GetObjectType((*list)[i].second);
        if (QV::Failed(type)) {
            return type; // the host answers a failure in place of the type
        }
        if (type != 0) {
            m_kCandidates.m_kByType[type].push_back(static_cast<std::uint32_t>(i));
        }
    }
    m_kCandidates.m_bTypesRead = true;
    return QV::kOk;
}

int CReceiveRecordBuilder::LinkedCandidate(const CZBrushToFMMeshInfo& info)
{
    if (info.m_iObjectType == 0 || QV::Failed(IndexCandidates(info.m_pTargetCandidates))) {
        return -1;
    }
    const auto found = m_kCandidates.m_kByType.find(info.m_iObjectType);
    return found == m_kCandidates.m_kByType.end() ? -1 : static_cast<int>(found->second.front());
}

QV::Result CReceiveRecordBuilder::ParentTypeOf(std::uint32_t candidate, std::int32_t& type)
{
    const auto known = m_kCandidates.m_kParentTypes.find(candidate);
    if (known != m_kCandidates.m_kParentTypes.end()) {
        type = known->second;
        return QV::kOk;
    }
    QV::CHandle* parent = m_pHost->Query()->GetParentObject((*m_kCandidates.m_pList)[static_cast<int>(candidate)].second);
    int avatarType = 0;
    // A top-level mesh has no parent to ask about.
    if (parent != nullptr) {
        QV::Result result = QV::kOk;
        m_pHost->Query()->GetAvatarType(result, parent, avatarType);
        if (QV::Failed(result)) {
            return result;
        }
    }
    m_kCandidates.m_kParentTypes.emplace(candidate, avatarType);
    type = avatarType;
    return QV::kOk;
}

QV::Result CReceiveRecordBuilder::OwnerNameOf(QV::CHandle* object, std::wstring& name) const
{
    // An expression send names its pose file after the character; the owner name is what
    // the returned motions are compared with.
    CQueryService* query = m_pHost->Query();
    QV::CHandle* owner = query->GetOwningCharacter(object);
    if (owner == nullptr) {
        owner = query->GetParentObject(object);
    }
    if (owner == nullptr) {
        owner = object;
    }
    QV::Result result = QV::kOk;
    name = query->HandleName(result, owner);
    return result;
}

QV::Result CReceiveRecordBuilder::TextureSizeFilePath(QString& path) const
{
    QV::Result result = QV::kOk;
    const std::wstring folder = m_pHost->Query()->GetHostDataFolder(result, 8);
    if (QV::Failed(result)) {
        return result;
    }
    path = QString::fromStdWString(folder) + QLatin1String(kTextureSizeFile);
    // The host names a Windows folder; QFile takes '/' everywhere but '\' only on Windows.
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return QV::kOk;
}

QV::Result CReceiveRecordBuilder::ReadTextureSizes(const QV::CProfile& profile, std::vector<std::int32_t>& sizes)
{
    const QString section = QLatin1String(kTextureSizeSection);
    int count = 0;
    QV::Result result = profile.ReadInt(section, QStringLiteral("Count"), count);
    if (QV::Failed(result)) {
        return result;
    }
    sizes.clear();
    // A key missing before Count is reached ends the read, so a huge Count costs nothing.
    for (int i = 0; i < count; ++i) {
        int size = 0;
        result = profile.ReadInt(section, QStringLiteral("Size%1").arg(i), size);
        if (QV::Failed(result)) {
            return result;
        }
        if (size < 1) {
            qDebug().noquote() << "Ignoring texture size" << size << "of Size" + QString::number(i);
            continue;
        }
        sizes.push_back(size);
    }
    return QV::kOk;
}

QV::Result CReceiveRecordBuilder::LoadTextureSizes()
{
    if (m_bTextureSizesRead) {
        return QV::kOk;
    }
    QString path;
    QV::Result result = TextureSizeFilePath(path);
    if (QV::Failed(result)) {
        return result;
    }
    QV::CProfile profile;
    result = profile.Open(path);
    if (QV::Failed(result)) {
        qDebug().noquote() << "Can't open texture size settings" << path;
        return QV::kOutOfMemory; // the settings-file failure code
    }
    result = ReadTextureSizes(profile, m_kTextureSizes);
    if (QV::Failed(result)) {
        return result;
    }
    m_bTextureSizesRead = true;
    return QV::kOk;
}

QV::Result CReceiveRecordBuilder::SetUpTexture(CZBrushToFMMeshInfo& record, QV::CHandle* object)
{
    if (object == nullptr || record.m_iParentType == kStandardCharacterType || record.m_iParentType == kTeethNodeType) {
        return QV::kOk;
    }
    CQueryService* query = m_pHost->Query();
    QV::Result result = QV::kOk;
    int materials = 0;
    query->GetMaterialCount(result, object, materials);
    if (QV::Failed(result)) {
        return result;
    }
    if (materials != 1) {
        return QV::kOk;
    }
    int width = 0;
    int height = 0;
    query->GetTextureSize(result, object, kTextureChannelWidth, width);
    if (QV::Failed(result)) {
        return result;
    }
    query->GetTextureSize(result, object, kTextureChannelHeight, height);
    if (QV::Failed(result)) {
        return result;
    }
    if (width == 0 || height == 0) {
        return QV::kOk;
    }
    result = LoadTextureSizes();
    if (QV::Failed(result)) {
        return result;
    }
    const int smaller = std::min(width, height);
    QV::CArrayList<std::int32_t> sizes;
    for (std::int32_t size : m_kTextureSizes) {
        if (size <= smaller) {
            result = sizes.Add(size);
            if (QV::Failed(result)) {
                return result;
            }
        }
    }
    result = sizes.Add(kCustomTextureSize);
    if (QV::Failed(result)) {
        return result;
    }
    // The largest size the texture fills keeps the most detail; "Custom" when none fits.
    record.m_iChosenTextureSize = sizes.GetCount() > 1 ? sizes.GetCount() - 2 : 0;
    record.m_kTextureSizes = std::move(sizes);
    return QV::kOk;
}

QV::Result CReceiveRecordBuilder::BuildRecords(const CZBrushToFMMeshInfo& templateRecord,
                                               const QV::CArrayList<std::wstring>& gozFiles,
                                               CZBrushToFMMeshInfoList& records)
{
    CQueryService* query = m_pHost->Query();
    m_bTextureSizesRead = false;
    const CAvatarState avatar = ReadAvatarState();
    const int defaultAction = DefaultAction(avatar);
    bool avatarNameRead = false;
    std::wstring avatarName;

    QV::Result result = records.Reserve(records.GetCount() + gozFiles.GetCount());
    if (QV::Failed(result)) {
        return result;
    }
    for (const std::wstring& file : gozFiles) {
        CZBrushToFMMeshInfo record = templateRecord;
        record.m_strMeshName = MapPartName(WithoutGoZSuffix(file));

        QV::CHandle* object = nullptr;
        if (IsBodyPartMesh(record.m_strMeshName) || IsOtherPartMesh(record.m_strMeshName)) {
            // Parts are not scene objects of their own: they belong to the current avatar.
            if (!avatarNameRead && avatar.m_pAvatar != nullptr) {
                avatarName = query->HandleName(result, avatar.m_pAvatar);
                if (QV::Failed(result)) {
                    return result;
                }
            }
            avatarNameRead = true;
            record.m_strOwnerName = avatarName;
        } else {
            m_pHost->File()->FindObjectByName(result, object, record.m_strMeshName);
            if (QV::Failed(result)) {
                return result;
            }
            if (object != nullptr) {
                const int type = query->GetObjectType(object);
                if (QV::Failed(type)) {
                    return type;
                }
                record.m_iObjectType = type;
                result = OwnerNameOf(object, record.m_strOwnerName);
                if (QV::Failed(result)) {
                    return result;
                }
            }
        }
        record.m_iParentType = 0;
        record.m_eAction = defaultAction;

        if (record.m_iObjectType != 0) {
            result = IndexCandidates(record.m_pTargetCandidates);
            if (QV::Failed(result)) {
                return result;
            }
            const auto matches = m_kCandidates.m_kByType.find(record.m_iObjectType);
            if (matches != m_kCandidates.m_kByType.end()) {
                for (std::uint32_t candidate : matches->second) {
                    result = record.m_kOfferedTargets.Add(candidate);
                    if (QV::Failed(result)) {
                        return result;
                    }
                    record.m_eAction = ActionUpdate;
                    record.m_iChosenTarget = record.m_kOfferedTargets.GetCount() - 1;
                    result = ParentTypeOf(candidate, record.m_iParentType);
                    if (QV::Failed(result)) {
                        return result;
                    }
                }
            }
        }

        result = RemoveActions(record, avatar);
        if (QV::Failed(result)) {
            return result;
        }
        result = SetUpTexture(record, object);
        if (QV::Failed(result)) {
            return result;
        }
        result = records.Add(std::move(record));
        if (QV::Failed(result)) {
            return result;
        }
    }
    return QV::kOk;
}

QV::Result CReceiveRecordBuilder::CheckRows(CZBrushToFMMeshInfoList& records)
{
    for (CZBrushToFMMeshInfo& record : records) {
        if (record.m_iChosenTarget != -1 && record.ChosenCandidate() < 0) {
            record.m_iChosenTarget = -1;
        }
        if (record.m_iChosenTextureSize < -1 || record.m_iChosenTextureSize >= record.m_kTextureSizes.GetCount()) {
            record.m_iChosenTextureSize = -1;
        }
    }
    return QV::kOk;
}

} // namespace MV
