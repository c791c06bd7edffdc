#include "CReferenceFileService.h"

#include "CHostContext.h"

#include "CGoZStandInFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>

namespace MV {
namespace Host {

using C = CHostContext;

namespace {

// Notes the write in the call log, and whether it replaced a file: the report tells from
// that whether the plug-in cleared the way before an export.
QV::Result WriteBytes(CHostContext& context, const QString& path, const QByteArray& bytes)
{
    const QFileInfo info(path);
    const bool replaced = info.exists();
    if (!QDir().mkpath(info.absolutePath())) {
        return QV::kFail;
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return QV::kFail;
    }
    const bool written = file.write(bytes) == bytes.size();
    file.close();
    if (!written || file.error() != QFileDevice::NoError) {
        file.remove();
        return QV::kFail;
    }
    context.Log().NoteWrite(CFileWrite{path, replaced});
    return QV::kOk;
}

QString BaseName(const QString& path)
{
    QString name = path;
    name.replace(QLatin1Char('\\'), QLatin1Char('/'));
    name = name.mid(name.lastIndexOf(QLatin1Char('/')) + 1);
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? name.left(dot) : name;
}

// Where ZBrush leaves returned meshes.
const QString kProjectFolder = QStringLiteral("C:/Users/Public/Pixologic/GoZProjects/Default/");

// The object among root, its meshes and its descendants that carries name; root when none does.
int MeshHolder(const CScene& scene, int root, const QString& name)
{
    const CSceneObject& object = scene.Object(root);
    if (object.m_strName == name) {
        return root;
    }
    for (const QString& id : object.m_kMeshes + scene.Descendants(object.m_strId)) {
        const int index = scene.IndexOf(id);
        if (index >= 0 && scene.Object(index).m_strName == name) {
            return index;
        }
    }
    return root;
}

} // namespace

CReferenceFileService::CReferenceFileService(CHostContext& context) : m_rContext(context) {}

CReferenceFileService::~CReferenceFileService() = default;

bool CReferenceFileService::IsValidFileName(const QString& name)
{
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..")) {
        return false;
    }
    for (const QChar c : name) {
        if (c.unicode() < 0x20 || QStringLiteral("/\\:*?\"<>|").contains(c)) {
            return false;
        }
    }
    return true;
}

QV::Result CReferenceFileService::GetFileHandle(QV::CHandle*& handle, const std::wstring& path,
                                                const CGetFileHandleOption& option)
{
    QV::Result result = QV::kOk;
    if (m_rContext.Enter("GetFileHandle",
                         {C::Text(path), C::Number(static_cast<int>(option.m_eFileType)), C::Flag(option.m_bReadOnly)},
                         result)) {
        handle = nullptr;
        return result;
    }
    const QString wanted = C::HostPath(path);
    const CScene& scene = m_rContext.Scene();
    for (int i = 0; i < scene.ObjectCount(); ++i) {
        const QString file = scene.Object(i).m_strFile;
        if (!file.isEmpty() && C::HostPath(file.toStdWString()) == wanted) {
            handle = scene.Handle(i);
            return QV::kOk;
        }
    }
    handle = nullptr;
    return QV::kFail;
}

void CReferenceFileService::ExportGoZ(QV::Result& result, QV::CHandle* handle, const std::wstring& folder,
                                      unsigned int splitMask, QV::CArrayList<std::wstring>& names, int poseOption)
{
    const CSceneObject* object = m_rContext.EnterOn(
        "ExportGoZ", handle, result, {C::Text(folder), C::Number(splitMask), C::Texts(names), C::Number(poseOption)});
    if (object == nullptr) {
        return;
    }
    CScene& scene = m_rContext.Scene();
    QStringList wanted;
    if (!names.IsEmpty()) {
        for (const std::wstring& name : names) {
            wanted << QString::fromStdWString(name);
        }
    } else if ((splitMask & ~kExtraMeshBit) != 0 && object->m_bCharacter) {
        wanted = scene.SplitMeshNames(splitMask);
    } else if (splitMask == kExtraMeshBit) {
        wanted = scene.State().m_kExtraMeshNames;
    } else {
        wanted << object->m_strName;
    }

    names.Clear();
    QString directory = C::HostPath(folder);
    if (directory.isEmpty() || !QDir().mkpath(directory)) {
        result = QV::kFail;
        return;
    }
    if (!directory.endsWith(QLatin1Char('/'))) {
        directory += QLatin1Char('/');
    }
    for (const QString& name : wanted) {
        if (!IsValidFileName(name)) {
            result = QV::kFail;
            return;
        }
        CGoZStandInFile file;
        file.m_kKeys = {qMakePair(QStringLiteral("object"), object->m_strId), qMakePair(QStringLiteral("name"), name),
                        qMakePair(QStringLiteral("split"), QString::number(splitMask)),
                        qMakePair(QStringLiteral("pose"), QString::number(poseOption))};
        file.m_kMesh = scene.Object(MeshHolder(scene, scene.IndexOf(object->m_strId), name)).m_kMesh;
        result = WriteBytes(m_rContext, directory + name + QStringLiteral(".goz"), file.Write());
        if (QV::Failed(result)) {
            return;
        }
        result = names.Add(name.toStdWString());
        if (QV::Failed(result)) {
            return;
        }
        scene.Names().MarkUsed(name, object->m_strId);
    }
    result = QV::kOk;
}

quint64 CReferenceFileService::GetPluginValue(QObject* plugin)
{
    if (m_rContext.Enter("GetPluginValue", {C::ClassName(plugin)})) {
        return 0;
    }
    return m_rContext.NextPluginValue();
}

QString CReferenceFileService::ReturnedFilePath(const std::wstring& gozName)
{
    QString path = C::HostPath(gozName);
    if (!path.contains(QLatin1Char('/'))) {
        path = kProjectFolder + path;
    }
    if (!path.endsWith(QLatin1String(".goz"), Qt::CaseInsensitive)) {
        path += QStringLiteral(".GoZ");
    }
    return path;
}

bool CReferenceFileService::ReadReturned(const std::wstring& gozName, CGoZStandInFile& file, QString& path)
{
    path = ReturnedFilePath(gozName);
    QString error;
    if (!CGoZStandInFile::Read(path, file, error)) {
        // Read whole before anything changes: a bad file leaves the scene as it was.
        m_rContext.Log().NoteProblem(error);
        return false;
    }
    return true;
}

void CReferenceFileService::ApplyMesh(int index, const CGoZStandInFile& file, const QString& path)
{
    CSceneObject& target = m_rContext.Scene().Object(index);
    target.m_kMesh = file.m_kMesh;
    ++target.m_iGoZImports;
    target.m_strLastGoZFile = path;
}

void CReferenceFileService::ImportGoZToObject(QV::Result& result, QV::CHandle* target, const std::wstring& gozName,
                                              const CGoZImportOption& options)
{
    const CSceneObject* object =
        m_rContext.EnterOn("ImportGoZToObject", target, result,
                           {C::Text(gozName), C::Flag(options.m_bTakeTexture), C::Number(options.m_iPoseOption),
                            C::Flag(options.m_bIsCloth), C::Number(options.m_iTextureSize), C::Number(options.m_iFlag)});
    if (object == nullptr) {
        return;
    }
    CGoZStandInFile file;
    QString path;
    if (!ReadReturned(gozName, file, path)) {
        result = QV::kFail;
        return;
    }
    const CScene& scene = m_rContext.Scene();
    ApplyMesh(MeshHolder(scene, scene.IndexOf(object->m_strId), BaseName(path)), file, path);
    result = QV::kOk;
}

void CReferenceFileService::CreatePropFromGoZ(QV::Result& result, const std::wstring& gozName,
                                              const CGoZCreateOption& options, QV::CHandle*& created)
{
    created = nullptr;
    if (m_rContext.Enter("CreatePropFromGoZ",
                         {C::Text(gozName), C::Flag(options.m_bTakeTexture), C::Number(options.m_iTextureSize),
                          C::Number(options.m_iFlag)},
                         result)) {
        return;
    }
    CGoZStandInFile file;
    QString path;
    if (!ReadReturned(gozName, file, path)) {
        result = QV::kFail;
        return;
    }
    CScene& scene = m_rContext.Scene();
    CSceneObject object;
    while (scene.IndexOf(QStringLiteral("goz_prop_%1").arg(m_iNextPropSerial)) >= 0) {
        ++m_iNextPropSerial;
    }
    object.m_strId = QStringLiteral("goz_prop_%1").arg(m_iNextPropSerial++);
    object.m_strName = BaseName(QString::fromStdWString(gozName));
    object.m_uKind = 1;
    object.m_kMeshes = QStringList{object.m_strId};
    object.m_bCreated = true;
    const int index = scene.AddObject(object);
    created = scene.Handle(index);
    if (created == nullptr) {
        result = QV::kFail;
        return;
    }
    ApplyMesh(index, file, path);
    result = QV::kOk;
}

void CReferenceFileService::FindObjectByName(QV::Result& result, QV::CHandle*& handle, const std::wstring& name)
{
    if (m_rContext.Enter("FindObjectByName", {C::Text(name)}, result)) {
        handle = nullptr;
        return;
    }
    const CScene& scene = m_rContext.Scene();
    const QString wanted = QString::fromStdWString(name);
    handle = scene.Handle(scene.Names().FirstHolder(wanted));
    if (handle == nullptr) {
        // A name the host gave out for a GoZ copy (or an export wrote) leads back to its object.
        handle = scene.HandleOf(scene.Names().OwnerOfUsed(wanted));
    }
    // Nothing of that name is no failure: the mesh is new to the scene.
    result = QV::kOk;
}

void CReferenceFileService::UpdateMeshFromGoZ(QV::Result& result, const CGoZMeshUpdateInfo& info, QV::CHandle* object)
{
    const CSceneObject* target =
        m_rContext.EnterOn("UpdateMeshFromGoZ", object, result,
                           {C::Text(info.m_strGoZFile), C::Flag(info.m_bTakeMesh), C::Flag(info.m_bTakeTexture),
                            C::Number(info.m_iTextureWidth), C::Number(info.m_iTextureHeight), C::Number(info.m_iMode)});
    if (target == nullptr) {
        return;
    }
    CGoZStandInFile file;
    QString path;
    if (!ReadReturned(info.m_strGoZFile, file, path)) {
        result = QV::kFail;
        return;
    }
    if (info.m_bTakeMesh) {
        ApplyMesh(m_rContext.Scene().IndexOf(target->m_strId), file, path);
    }
    result = QV::kOk;
}

QV::Result CReferenceFileService::WriteMotionFile(QV::CHandle* handle, const QString& path)
{
    const CSceneObject* object = m_rContext.Scene().Find(handle);
    if (object == nullptr) {
        return QV::kInvalidArg;
    }
    if (path.isEmpty()) {
        return QV::kFail;
    }
    // The pose travels in the file, so loading it back puts the character in that pose again.
    return WriteBytes(m_rContext, path,
                      QStringLiteral("MOTION-STANDIN 1\nobject=%1\npose=%2\n").arg(object->m_strId, object->m_strPose).toUtf8());
}

void CReferenceFileService::SaveMotionFile(QV::Result& result, QV::CHandle* handle, const std::wstring& path)
{
    if (m_rContext.Enter("SaveMotionFile", {m_rContext.Id(handle), C::Text(path)}, result)) {
        return;
    }
    result = WriteMotionFile(handle, C::HostPath(path));
}

QV::Result CReferenceFileService::SaveAvatarMotion(QV::CHandle* avatar, const std::wstring& path, int flag)
{
    QV::Result result = QV::kOk;
    if (m_rContext.Enter("SaveAvatarMotion", {m_rContext.Id(avatar), C::Text(path), C::Number(flag)}, result)) {
        return result;
    }
    return WriteMotionFile(avatar, C::HostPath(path));
}

QV::Result CReferenceFileService::LoadMotionFile(const std::wstring& path, int kind, unsigned int flags, int dropX,
                                                 int dropY)
{
    QV::Result result = QV::kOk;
    if (m_rContext.Enter("LoadMotionFile",
                         {C::Text(path), C::Number(kind), C::Number(flags), C::Number(dropX), C::Number(dropY)},
                         result)) {
        return result;
    }
    const QString file = C::HostPath(path);
    if (!QFileInfo(file).isFile()) {
        m_rContext.Log().NoteProblem(QStringLiteral("no file %1").arg(file));
        return QV::kFail;
    }
    ApplyMotion(file);
    return QV::kOk;
}

void CReferenceFileService::ApplyMotion(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    const QList<QByteArray> lines = file.readAll().split('\n');
    if (lines.value(0).trimmed() != "MOTION-STANDIN 1") {
        return; // another kind of motion: loaded, but it carries no pose the scene keeps
    }
    QString id;
    QString pose;
    bool hasPose = false;
    for (const QByteArray& line : lines) {
        if (line.startsWith("object=")) {
            id = QString::fromUtf8(line.mid(7)).trimmed();
        } else if (line.startsWith("pose=")) {
            pose = QString::fromUtf8(line.mid(5)).trimmed();
            hasPose = true;
        }
    }
    CScene& scene = m_rContext.Scene();
    const int index = scene.IndexOf(id);
    if (index >= 0 && hasPose) {
        scene.Object(index).m_strPose = pose;
    }
}

void CReferenceFileService::LoadFile(QV::Result& result, const std::wstring& path, int kind,
                                     const CLoadFileOption& options)
{
    if (m_rContext.Enter("LoadFile",
                         {C::Text(path), C::Number(kind), C::Flag(options.m_bFlag), C::Number(options.m_iStartFrame),
                          C::Number(options.m_iEndFrame)},
                         result)) {
        return;
    }
    result = QFileInfo(C::HostPath(path)).isFile() ? QV::kOk : QV::kFail;
}

} // namespace Host
} // namespace MV
