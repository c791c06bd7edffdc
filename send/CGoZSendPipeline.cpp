#include "CGoZSendPipeline.h"

#include "CMiravaInterface.h"
#include "GoZPaths.h"
#include "KeyValueFile.h"
#include "Platform.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSaveFile>

#include <algorithm>
#include <unordered_set>

namespace MV {

namespace {

constexpr int kValueBufferSize = 1024;
constexpr int kUsageDialogId = 1;
const wchar_t kRegistryKey[] = L"SOFTWARE\\Quorvane\\Figmora\\4.0";
const wchar_t kRegistryValue[] = L"Main Program";

QByteArray PathBytes(const QString& path)
{
    return QFile::encodeName(path);
}

bool ReadKey(const QString& file, const char* key, QByteArray& value)
{
    char buffer[kValueBufferSize] = {};
    if (!GetKeyValue(PathBytes(file).constData(), key, buffer, kValueBufferSize)) {
        return false;
    }
    value = QByteArray(buffer);
    return true;
}

// Registry errors are Win32 codes (positive); they travel on as failing results.
QV::Result RegistryFailure(long error)
{
    return static_cast<QV::Result>(0x80070000u | (static_cast<unsigned long>(error) & 0xFFFFu));
}

std::wstring BaseName(const QString& path)
{
    return QFileInfo(path).completeBaseName().toStdWString();
}

} // namespace

CGoZSendPipeline::CGoZSendPipeline(CMiravaInterface* host, const QString& pixologicRoot)
    : m_pHost(host), m_strPixologicRoot(pixologicRoot)
{
}

QString CGoZSendPipeline::ProjectFolder() const
{
    return m_strPixologicRoot + QLatin1String(GoZPaths::kProjectsDefault);
}

QString CGoZSendPipeline::ApplicationFolder() const
{
    return m_strPixologicRoot + QLatin1String(GoZPaths::kFigmoraApp);
}

EGozPoseOption CGoZSendPipeline::ReceivePoseOption(const CSendOptions& options)
{
    if (options.m_bTPose) {
        return EGozPoseOption::TPose;
    }
    if (options.m_bBindPose) {
        return EGozPoseOption::BindPose;
    }
    if (options.m_bCurrentPose) {
        return EGozPoseOption::CurrentPose;
    }
    return EGozPoseOption::None;
}

EGozPoseOption CGoZSendPipeline::ExportPoseOption(bool hasCharacter, const CSendOptions& options)
{
    if (!hasCharacter) {
        return EGozPoseOption::None;
    }
    if (options.m_bBindPose) {
        return EGozPoseOption::BindPose;
    }
    if (options.m_bTPose) {
        return EGozPoseOption::TPose;
    }
    if (options.m_bCurrentPose) {
        return EGozPoseOption::CurrentPose;
    }
    return EGozPoseOption::BindPose;
}

QV::Result CGoZSendPipeline::RemoveLodMeshes(const CFMToZBrushMeshInfoList& records)
{
    QV::CArrayList<QV::CHandle*> withLods;
    std::unordered_set<QV::CHandle*> collected;
    for (const CFMToZBrushMeshInfo& info : records) {
        for (QV::CHandle* object : info.m_kObjectList) {
            QV::Result result = QV::kOk;
            QV::CArrayList<std::wstring> lods;
            m_pHost->Query()->GetLodMeshes(result, object, lods);
            if (QV::Failed(result)) {
                return result;
            }
            if (lods.GetCount() > 0 && collected.insert(object).second) {
                result = withLods.Add(object);
                if (QV::Failed(result)) {
                    return result;
                }
            }
        }
    }
    if (withLods.IsEmpty()) {
        return QV::kOk;
    }
    m_pHost->Ui()->ShowMessageBox(QCoreApplication::translate("MV::FMToZBrushDlg", "[MVGoZBursh] Lod mesh will remove."),
                                  QString(), nullptr, kMessageWarning, kMessageButtonOk, 0);
    QV::Result result = QV::kOk;
    m_pHost->Edit()->RemoveLods(result, withLods, 1, 1, 0x401);
    return result;
}

QV::Result CGoZSendPipeline::PrepareSplit(const CSendOptions& options)
{
    QV::CHandle* avatar = m_pHost->Avatar()->GetCurrentAvatar();
    QV::CHandle* character = avatar != nullptr ? m_pHost->Query()->GetOwningCharacter(avatar) : nullptr;

    const unsigned int split =
        (options.m_bSplitGroupEnabled && options.m_bAnySplitChecked) ? options.m_uSplitState : 0U;

    QV::Result result = QV::kOk;
    QV::CArrayList<std::wstring> splitNames;
    m_pHost->Avatar()->GetGozSplitMeshNames(result, splitNames, split);
    if (QV::Failed(result)) {
        return result;
    }
    QV::CArrayList<std::wstring> extraNames;
    m_pHost->Avatar()->GetGozExtraMeshNames(result, extraNames);
    if (QV::Failed(result)) {
        return result;
    }
    m_pSplitCharacter = character;
    m_uSplitState = split;
    m_kSplitNames = std::move(splitNames);
    m_kExtraNames = std::move(extraNames);
    m_ePoseOption = ExportPoseOption(avatar != nullptr, options);
    return QV::kOk;
}

QV::Result CGoZSendPipeline::GatherNames(const CFMToZBrushMeshInfo& info, QV::CHandle* object,
                                        std::vector<std::wstring>& names)
{
    if (object == m_pSplitCharacter && object != nullptr && m_uSplitState != 0) {
        names.assign(m_kSplitNames.begin(), m_kSplitNames.end());
        return QV::kOk;
    }
    if (info.m_bTeethMesh) {
        names.assign(m_kExtraNames.begin(), m_kExtraNames.end());
        return QV::kOk;
    }
    QV::Result result = QV::kOk;
    names.assign(1, m_pHost->Query()->HandleName(result, object));
    return result;
}

CGoZSendPipeline::~CGoZSendPipeline() = default;

QV::Result CGoZSendPipeline::Export(CFMToZBrushMeshInfoList& records, const QStringList& projectFiles,
                                    const CSendOptions& options, bool exportPose,
                                    QV::CArrayList<std::wstring>& exportedNames)
{
    // An earlier run that never reached the object list: its list still names the old files.
    if (m_pSetAside) {
        m_pSetAside->Restore();
    }
    m_pSetAside = std::make_unique<CRelinkSetAside>(ProjectFolder());
    const QV::Result result = ExportSteps(records, projectFiles, options, exportPose, exportedNames);
    if (QV::Failed(result)) {
        m_pSetAside->Restore();
    }
    return result;
}

QV::Result CGoZSendPipeline::ExportSteps(CFMToZBrushMeshInfoList& records, const QStringList& projectFiles,
                                         const CSendOptions& options, bool exportPose,
                                         QV::CArrayList<std::wstring>& exportedNames)
{
    QV::Result result = RemoveLodMeshes(records);
    if (QV::Failed(result)) {
        return result;
    }
    result = PrepareSplit(options);
    if (QV::Failed(result)) {
        return result;
    }

    // Names sent before are only looked up when earlier sends left GoZ files behind.
    std::vector<std::wstring> previouslySent;
    bool hasGozFiles = false;
    for (const QString& file : projectFiles) {
        hasGozFiles = hasGozFiles || file.endsWith(QLatin1String(".goz"), Qt::CaseInsensitive);
    }
    if (hasGozFiles) {
        for (const CFMToZBrushMeshInfo& info : records) {
            for (QV::CHandle* object : info.m_kObjectList) {
                std::vector<std::wstring> names;
                result = GatherNames(info, object, names);
                if (QV::Failed(result)) {
                    return result;
                }
                previouslySent.insert(previouslySent.end(), names.begin(), names.end());
            }
        }
        FindPreviouslySentNames(result, previouslySent);
        if (QV::Failed(result)) {
            return result;
        }
    }
    const std::unordered_set<std::wstring> sentBefore(previouslySent.begin(), previouslySent.end());

    records.erase(std::remove_if(records.begin(), records.end(),
                                 [](const CFMToZBrushMeshInfo& info) { return info.ActiveAction() == Skip; }),
                  records.end());

    const QString projectFolder = ProjectFolder();
    if (!QDir(projectFolder).exists() && !QDir().mkpath(projectFolder)) {
        qDebug().noquote() << "Can't create the GoZ project folder" << projectFolder;
        return QV::kFail;
    }

    for (const CFMToZBrushMeshInfo& info : records) {
        for (QV::CHandle* object : info.m_kObjectList) {
            const bool isSplitCharacter = object != nullptr && object == m_pSplitCharacter && m_uSplitState != 0;
            const std::size_t action = info.ActiveAction();
            std::vector<std::wstring> names;
            result = GatherNames(info, object, names);
            if (QV::Failed(result)) {
                return result;
            }
            QV::CArrayList<std::wstring> exportNames;
            for (std::wstring& name : names) {
                if (action == Relink) {
                    if (sentBefore.count(name) != 0) {
                        const QString base = QString::fromStdWString(name);
                        m_pSetAside->Take(base + QStringLiteral(".goz"));
                        m_pSetAside->Take(base + QStringLiteral(".mvMotionPlus"));
                    }
                } else {
                    QV::Result nameResult = QV::kOk;
                    std::wstring unique = m_pHost->Query()->MakeUniqueName(nameResult, object, name);
                    if (QV::Failed(nameResult)) {
                        return nameResult;
                    }
                    for (wchar_t& c : unique) {
                        if (c == L' ') {
                            c = L'_';
                        }
                    }
                    name = unique;
                    if (m_fnRenamed) {
                        m_fnRenamed(name);
                    }
                }
                result = exportNames.Add(name);
                if (QV::Failed(result)) {
                    return result;
                }
            }
            const unsigned int split = isSplitCharacter ? m_uSplitState : (info.m_bTeethMesh ? kTeethSplit : 0U);
            result = QV::kOk;
            m_pHost->File()->ExportGoZ(result, object, projectFolder.toStdWString(), split, exportNames,
                                       static_cast<int>(m_ePoseOption));
            if (QV::Failed(result)) {
                return result;
            }
            for (const std::wstring& written : exportNames) {
                result = exportedNames.Add(written);
                if (QV::Failed(result)) {
                    return result;
                }
            }
        }
    }

    if (exportPose) {
        QV::CHandle* avatar = m_pHost->Avatar()->GetCurrentAvatar();
        if (avatar == nullptr) {
            qDebug() << "No current character: no pose file is saved";
        } else {
            // Named after the first mesh sent, under the name ZBrush returns it by: the way back
            // tells an expression from a sculpt by a returned mesh with a pose of its name,
            // loads the pose by that name, and a Relink of that mesh replaces it.
            std::wstring name;
            if (exportedNames.GetCount() > 0) {
                name = exportedNames[0];
            } else {
                QV::Result nameResult = QV::kOk;
                name = m_pHost->Query()->HandleName(nameResult, avatar);
                if (QV::Failed(nameResult)) {
                    return nameResult;
                }
            }
            const QString path = projectFolder + QString::fromStdWString(name) + QStringLiteral(".mvMotionPlus");
            result = QV::kOk;
            m_pHost->File()->SaveMotionFile(result, avatar, path.toStdWString());
            if (QV::Failed(result)) {
                return result;
            }
            m_strPoseFilePath = path;
        }
    }

    QV::Result ignored = QV::kOk;
    m_pHost->Ui()->RecordUsageStep(ignored, QStringLiteral("AP-Step41"), std::wstring(), kUsageDialogId);
    return QV::kOk;
}

void CGoZSendPipeline::ReadPreviousObjectList(QV::Result& result, QStringList& files) const
{
    // The previous list is found through the fixed public path, not the computed root.
    const QString appFolder = QLatin1String(GoZPaths::kFixedPixologicRoot) + QLatin1String(GoZPaths::kFigmoraApp);
    QByteArray listName;
    if (!ReadKey(appFolder + QStringLiteral("GoZ_Info.txt"), "GOZ_OBJECT_LIST", listName)) {
        qDebug() << "Cant' read Object list path";
        result = QV::kFail;
        return;
    }
    QFile list(appFolder + QFile::decodeName(listName));
    if (!list.open(QIODevice::ReadOnly)) {
        qDebug() << "Can't open object list ...";
        result = QV::kFail;
        return;
    }
    // Whole words of any length: long names are read, never cut into pieces.
    const QByteArray bytes = list.readAll();
    for (const QByteArray& word : bytes.simplified().split(' ')) {
        if (!word.isEmpty()) {
            files << QString::fromStdWString(Platform::NarrowToWide(word.toStdString())) + QStringLiteral(".GoZ");
        }
    }
    result = QV::kOk;
}

void CGoZSendPipeline::FindPreviouslySentNames(QV::Result& result, std::vector<std::wstring>& names) const
{
    QStringList files;
    ReadPreviousObjectList(result, files);
    if (QV::Failed(result)) {
        return;
    }
    std::unordered_set<std::wstring> previous;
    for (const QString& file : files) {
        previous.insert(BaseName(file));
    }
    std::vector<std::wstring> kept;
    for (const std::wstring& name : names) {
        if (previous.count(name) != 0) {
            kept.push_back(name);
        }
    }
    names.swap(kept);
}

QV::Result CGoZSendPipeline::StartBridgeProgram(const QString& infoFile, const char* key, bool logMissing)
{
    QByteArray command;
    if (!ReadKey(infoFile, key, command)) {
        if (logMissing) {
            qDebug() << "Cant' read make object list exe path";
        }
        return QV::kFail;
    }
    const QString program = ApplicationFolder() + QFile::decodeName(command);
    if (!QProcess::startDetached(program, QStringList())) {
        qDebug().noquote() << "Can't start" << program;
        return QV::kFail;
    }
    return QV::kOk;
}

void CGoZSendPipeline::WriteGoZExchangeFiles(QV::Result& result, const QV::CArrayList<std::wstring>& names)
{
    bool listWritten = false;
    WriteExchangeFileSteps(result, names, listWritten);
    if (m_pSetAside) {
        // Until the new list is in place, ZBrush reads the old one: it gets its files back.
        if (listWritten) {
            m_pSetAside->Discard();
        } else {
            m_pSetAside->Restore();
        }
        m_pSetAside.reset();
    }
}

void CGoZSendPipeline::WriteExchangeFileSteps(QV::Result& result, const QV::CArrayList<std::wstring>& names,
                                              bool& listWritten)
{
    const QString appFolder = ApplicationFolder();
    const QString infoFile = appFolder + QStringLiteral("GoZ_Info.txt");

    QByteArray listName;
    if (!ReadKey(infoFile, "GOZ_OBJECT_LIST", listName)) {
        result = QV::kFail;
        return;
    }

    std::wstring hostProgram;
    const long error = Platform::ReadLocalMachineString(kRegistryKey, kRegistryValue, hostProgram);
    if (error != Platform::kErrorSuccess) {
        result = RegistryFailure(error);
        return;
    }
    const QString configFile = appFolder + QStringLiteral("GoZ_Config.txt");
    const std::string quoted = "\"" + Platform::WideToNarrow(hostProgram) + "\"";
    if (!QFileInfo(configFile).isFile()) {
        result = QV::kFail;
        return;
    }
    SetKeyValue(PathBytes(configFile).constData(), "PATH", quoted.c_str());
    {
        QFile config(configFile);
        const QByteArray expected = QByteArray("PATH = ") + QByteArray::fromStdString(quoted) + '\n';
        if (!config.open(QIODevice::ReadOnly) || !config.readAll().endsWith(expected)) {
            result = QV::kFail;
            return;
        }
    }

    QSaveFile application(m_strPixologicRoot + QLatin1String(GoZPaths::kApplicationFile));
    application.setDirectWriteFallback(true); // a folder we may not create files in
    // commit() overlooks a write error of its own final flush and would put a cut file in
    // place: the flush is made and checked first, here and for the object list.
    if (!application.open(QIODevice::WriteOnly) || application.write("Figmora", 7) != 7 || !application.flush() ||
        !application.commit()) {
        qDebug() << "Can't open application txt ...\n";
        result = QV::kFail;
        return;
    }

    const QString listPath = appFolder + QFile::decodeName(listName);
    const std::string projectFolder = Platform::WideToNarrow(ProjectFolder().toStdWString());
    QByteArray lines;
    for (const std::wstring& name : names) {
        lines += QByteArray::fromStdString(projectFolder + Platform::WideToNarrow(name)) + '\n';
    }
    // Always through a temporary file (no direct-write fallback): the bridge programs read this
    // list, and a write failing halfway must leave the previous list, not a cut one. We install
    // the bridge into this folder, so we may create files in it.
    QSaveFile objectList(listPath);
    if (!objectList.open(QIODevice::WriteOnly) || objectList.write(lines) != lines.size() || !objectList.flush() ||
        !objectList.commit()) {
        qDebug().noquote() << "open object list " + listPath + " fail...";
        result = QV::kFail;
        return;
    }
    listWritten = true;

    result = StartBridgeProgram(infoFile, "MAKEOBJECTPATH_COMMAND", true);
    if (QV::Failed(result)) {
        return;
    }
    result = StartBridgeProgram(infoFile, "GOZBRUSH_COMMAND", false);
}

} // namespace MV
