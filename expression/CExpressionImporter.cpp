#include "CExpressionImporter.h"

#include "CEventSender.h"
#include "CExpressionMatcher.h"
#include "CGoZReturnReader.h"
#include "CMiravaInterface.h"
#include "GoZPaths.h"

#include <QDebug>
#include <QString>

#include <unordered_map>

namespace MV {

namespace {

constexpr wchar_t kGoZSuffix[] = L".GoZ";
constexpr wchar_t kMotionSuffix[] = L".mvMotionPlus";
constexpr int kSpringNode = 51;
constexpr int kPhysicsNode = 52;

std::wstring WithoutGoZSuffix(const std::wstring& file)
{
    const std::size_t suffix = std::char_traits<wchar_t>::length(kGoZSuffix);
    if (file.size() >= suffix && file.compare(file.size() - suffix, suffix, kGoZSuffix) == 0) {
        return file.substr(0, file.size() - suffix);
    }
    return file;
}

QString ToQString(const std::wstring& text)
{
    return QString::fromStdWString(text);
}

} // namespace

CExpressionImporter::CExpressionImporter(CMiravaInterface* host, const CGoZReturnReader& reader,
                                         const CExpressionMatcher& matcher)
    : m_pHost(host), m_rReader(reader), m_rMatcher(matcher)
{
}

std::wstring CExpressionImporter::MotionPath(const std::wstring& expressionName)
{
    // The fixed public path, not the computed root: the send side's pose lies there. Deliberate.
    const QString folder = QLatin1String(GoZPaths::kFixedPixologicRoot) + QLatin1String(GoZPaths::kProjectsDefault);
    return folder.toStdWString() + expressionName + kMotionSuffix;
}

QV::Result CExpressionImporter::ImportMotion(const std::wstring& expressionName)
{
    if (CFigmoraEventSender* events = m_pHost->GetFigmoraEventSender()) {
        emit events->LoadExpressionGozMotion();
    }
    const std::wstring path = MotionPath(expressionName);
    CLoadFileOption options;
    options.m_bFlag = true;
    options.m_iStartFrame = -1;
    options.m_iEndFrame = -1;
    QV::Result result = QV::kOk;
    m_pHost->File()->LoadFile(result, path, kExpressionMotionKind, options);
    // Ignored on purpose: the sculpted meshes are worth taking without their motion.
    if (QV::Failed(result)) {
        qDebug().noquote() << "Expression motion not loaded:" << ToQString(path);
    }
    return QV::kOk;
}

QV::Result CExpressionImporter::Import(const CZBrushToFMMeshInfoList& records, const std::wstring& expressionName,
                                       const CExpressionImportOptions& options)
{
    m_kUpdated.Clear();
    m_kAdded.Clear();

    QV::CArrayList<std::wstring> files;
    QV::Result result = m_rReader.ReadGoZMesh(files);
    if (QV::Failed(result)) {
        return result;
    }
    result = ImportMotion(expressionName);
    if (QV::Failed(result)) {
        return result;
    }
    QV::CHandle* avatar = m_pHost->Avatar()->GetBlendShapeEditingAvatar();
    if (avatar == nullptr) {
        return QV::kOk;
    }
    result = UpdateMeshes(avatar, records, files);
    if (QV::Failed(result)) {
        return result;
    }
    result = UpdateAvatar(avatar);
    if (QV::Failed(result)) {
        return result;
    }
    if (options.m_bAdjustEyeOcclusion) {
        result = AdjustEyeElement(avatar, kEyeOcclusion);
        if (QV::Failed(result)) {
            return Finish(result);
        }
    }
    if (options.m_bAdjustTearline) {
        result = AdjustEyeElement(avatar, kTearLine);
        if (QV::Failed(result)) {
            return Finish(result);
        }
    }
    return Finish(QV::kOk);
}

QV::Result CExpressionImporter::UpdateMeshes(QV::CHandle* avatar, const CZBrushToFMMeshInfoList& records,
                                             QV::CArrayList<std::wstring> const& returned)
{
    QV::CArrayList<std::wstring> files = returned;
    std::wstring teethMeshName;
    QV::CArrayList<std::wstring> teethFiles;
    QV::Result result = m_rMatcher.GatherTeethReturn(avatar, files, teethMeshName, teethFiles);
    if (QV::Failed(result)) {
        return result;
    }
    std::unordered_map<std::wstring, std::wstring> fileByName;
    for (const std::wstring& file : files) {
        fileByName.emplace(WithoutGoZSuffix(file), file);
    }
    const int mode = m_rMatcher.IsInBlendShapeEditingMode() ? kBlendShapeUpdateMode : 0;

    for (const CZBrushToFMMeshInfo& record : records) {
        const auto file = fileByName.find(record.m_strMeshName);
        if (file == fileByName.end()) {
            qDebug().noquote() << "No returned GoZ file for" << ToQString(record.m_strMeshName);
            continue;
        }
        if (!teethMeshName.empty() && record.m_strMeshName == teethMeshName) {
            // The teeth came back as the extra part meshes: each one updates the teeth.
            for (const std::wstring& teethFile : teethFiles) {
                result = UpdateMesh(record, teethFile, mode);
                if (QV::Failed(result)) {
                    return result;
                }
            }
            continue;
        }
        result = UpdateMesh(record, file->second, mode);
        if (QV::Failed(result)) {
            return result;
        }
    }
    return QV::kOk;
}

QV::Result CExpressionImporter::UpdateMesh(const CZBrushToFMMeshInfo& record, const std::wstring& file, int mode)
{
    QV::CHandle* mesh = CExpressionMatcher::TargetMesh(record);
    if (mesh == nullptr) {
        // Only meshes that matched a face mesh have somewhere to go.
        qDebug().noquote() << "No target for the returned mesh" << ToQString(record.m_strMeshName);
        return QV::kOk;
    }
    CQueryService* query = m_pHost->Query();
    QV::Result result = QV::kOk;
    QV::CHandle* object = nullptr;
    query->GetPickOwner(result, mesh, 0, object);
    if (QV::Failed(result)) {
        return result;
    }
    if (object == nullptr) {
        object = mesh;
    }
    unsigned int kind = 0;
    query->GetObjectKind(result, object, kind);
    if (QV::Failed(result)) {
        return result;
    }
    if (kind == kPreparedKind) {
        m_pHost->Edit()->PrepareObjectUpdate(result, object);
        if (QV::Failed(result)) {
            return result;
        }
    }
    CGoZMeshUpdateInfo info;
    info.m_strGoZFile = file;
    info.m_bTakeMesh = record.m_bTakeMesh;
    info.m_bTakeTexture = GetTextureEnable(record) && record.m_bTakeTexture;
    info.m_iTextureWidth = record.ChosenTextureSize();
    info.m_iTextureHeight = info.m_iTextureWidth;
    info.m_iMode = mode;
    m_pHost->File()->UpdateMeshFromGoZ(result, info, object);
    if (QV::Failed(result)) {
        return result;
    }
    return m_kUpdated.Contains(object) ? QV::kOk : m_kUpdated.Add(object);
}

QV::Result CExpressionImporter::UpdateAvatar(QV::CHandle* avatar)
{
    QV::Result result = QV::kOk;
    m_pHost->Edit()->RefreshAvatar(result, avatar);
    if (QV::Failed(result)) {
        return result;
    }
    unsigned int kind = 0;
    m_pHost->Query()->GetObjectKind(result, avatar, kind);
    if (QV::Failed(result)) {
        return result;
    }
    if (kind == kConformKind) {
        result = RebuildConform(avatar, m_kUpdated);
        if (QV::Failed(result)) {
            return result;
        }
    }
    m_pHost->Edit()->UpdateAvatarMorph(result, avatar, true);
    return result;
}

QV::Result CExpressionImporter::RebuildConform(QV::CHandle* avatar, const QV::CArrayList<QV::CHandle*>& objects)
{
    CQueryService* query = m_pHost->Query();
    QV::Result result = QV::kOk;
    m_pHost->Fitting()->RebuildAvatarConform(result, avatar, 0, objects);
    if (QV::Failed(result)) {
        return result;
    }
    for (QV::CHandle* object : objects) {
        QV::CHandle* node = nullptr;
        query->GetBoundNode(result, object, 0, node);
        if (QV::Failed(result) || node == nullptr) {
            continue; // nothing bound, nothing to reset
        }
        int type = 0;
        query->GetNodeType(result, node, type);
        if (QV::Failed(result) || (type != kSpringNode && type != kPhysicsNode)) {
            continue;
        }
        // The controllers still hold the old shape; they start again from the new one.
        if (CNodeController* controller = query->GetNodeController(node)) {
            controller->ResetController(0);
            controller->Release();
        }
    }
    return QV::kOk;
}

QV::Result CExpressionImporter::AdjustEyeElement(QV::CHandle* avatar, int nodeType)
{
    CQueryService* query = m_pHost->Query();
    QV::Result result = QV::kOk;
    QV::CArrayList<QV::CHandle*> elements;
    query->CollectChildObjects(result, avatar, nodeType, 1, elements);
    if (QV::Failed(result)) {
        return result;
    }
    if (elements.IsEmpty()) {
        result = m_pHost->Fitting()->CreateEyeElement(avatar, nodeType);
        if (QV::Failed(result)) {
            return result;
        }
        query->CollectChildObjects(result, avatar, nodeType, 1, elements);
        if (QV::Failed(result)) {
            return result;
        }
        for (QV::CHandle* element : elements) {
            result = m_kAdded.Add(element);
            if (QV::Failed(result)) {
                return result;
            }
        }
        if (elements.IsEmpty()) {
            qDebug() << "The host made no eye element of node type" << nodeType << "; nothing to fit";
            return QV::kOk;
        }
    }
    CFittingService* fitting = m_pHost->Fitting();
    if (nodeType == kEyeOcclusion) {
        fitting->AdjustEyeOcclusion(result, avatar);
        if (QV::Failed(result)) {
            return result;
        }
        fitting->AdjustEyeOcclusionBlend(result, avatar);
        return result;
    }
    fitting->AdjustTearline(result, avatar);
    return result;
}

QV::Result CExpressionImporter::Finish(QV::Result outcome)
{
    // Whatever was made is in the scene now, even when a later step failed.
    if (!m_kAdded.IsEmpty()) {
        if (CEventSender* events = m_pHost->GetEventSender()) {
            emit events->ObjectAdded(m_kAdded);
        }
    }
    return outcome;
}

} // namespace MV
