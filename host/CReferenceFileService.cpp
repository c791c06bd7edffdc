#include "CReferenceFileService.h"

#include "CHostContext.h"

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
QV::Result WriteText(CHostContext& context, const QString& path, const QString& text)
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
    const QByteArray bytes = text.toUtf8();
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
    const CScene& scene = m_rContext.Scene();
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
        const QString header = QStringLiteral("GOZ-STANDIN 1\nobject=%1\nname=%2\nsplit=%3\npose=%4\n")
                                   .arg(object->m_strId, name)
                                   .arg(splitMask)
                                   .arg(poseOption);
        result = WriteText(m_rContext, directory + name + QStringLiteral(".goz"), header);
        if (QV::Failed(result)) {
            return;
        }
        result = names.Add(name.toStdWString());
        if (QV::Failed(result)) {
            return;
        }
        m_rContext.UsedNames().insert(name);
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

void CReferenceFileService::ImportGoZToObject(QV::Result& result, QV::CHandle* target, const std::wstring& gozName,
                                              const CGoZImportOption& options)
{
    m_rContext.EnterOn("ImportGoZToObject", target, result,
                       {C::Text(gozName), C::Flag(options.m_bTakeTexture), C::Number(options.m_iPoseOption),
                        C::Flag(options.m_bIsCloth), C::Number(options.m_iTextureSize), C::Number(options.m_iFlag)});
}

void CReferenceFileService::CreatePropFromGoZ(QV::Result& result, const std::wstring& gozName,
                                              const CGoZCreateOption& options, QV::CHandle*& created)
{
    if (m_rContext.Enter("CreatePropFromGoZ",
                         {C::Text(gozName), C::Flag(options.m_bTakeTexture), C::Number(options.m_iTextureSize),
                          C::Number(options.m_iFlag)},
                         result)) {
        created = nullptr;
        return;
    }
    CScene& scene = m_rContext.Scene();
    CSceneObject object;
    int serial = 1;
    while (scene.IndexOf(QStringLiteral("goz_prop_%1").arg(serial)) >= 0) {
        ++serial;
    }
    object.m_strId = QStringLiteral("goz_prop_%1").arg(serial);
    object.m_strName = BaseName(QString::fromStdWString(gozName));
    object.m_uKind = 1;
    object.m_kMeshes = QStringList{object.m_strId};
    const int index = scene.AddObject(object);
    created = scene.Handle(index);
    result = created == nullptr ? QV::kFail : QV::kOk;
}

void CReferenceFileService::FindObjectByName(QV::Result& result, QV::CHandle*& handle, const std::wstring& name)
{
    if (m_rContext.Enter("FindObjectByName", {C::Text(name)}, result)) {
        handle = nullptr;
        return;
    }
    const QString wanted = QString::fromStdWString(name);
    const CScene& scene = m_rContext.Scene();
    for (int i = 0; i < scene.ObjectCount(); ++i) {
        if (scene.Object(i).m_strName == wanted) {
            handle = scene.Handle(i);
            result = QV::kOk;
            return;
        }
    }
    handle = nullptr;
    result = QV::kFail;
}

void CReferenceFileService::UpdateMeshFromGoZ(QV::Result& result, const CGoZMeshUpdateInfo& info, QV::CHandle* object)
{
    m_rContext.EnterOn("UpdateMeshFromGoZ", object, result,
                       {C::Text(info.m_strGoZFile), C::Flag(info.m_bTakeMesh), C::Flag(info.m_bTakeTexture),
                        C::Number(info.m_iTextureWidth), C::Number(info.m_iTextureHeight), C::Number(info.m_iMode)});
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
    return WriteText(m_rContext, path, QStringLiteral("MOTION-STANDIN 1\nobject=%1\n").arg(object->m_strId));
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
    return QFileInfo(C::HostPath(path)).isFile() ? QV::kOk : QV::kFail;
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
