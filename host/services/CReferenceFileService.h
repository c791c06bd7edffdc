#pragma once

#include "CMiravaInterface.h"

#include <QString>

namespace MV {
namespace Host {

class CGoZStandInFile;
class CHostContext;

// File operations of the reference host: GoZ export writes small stand-in files, the
// import operations are answered from the scene and recorded.
class CReferenceFileService : public CFileService
{
public:
    // The split bit the send side passes alone for a teeth record.
    static constexpr unsigned int kExtraMeshBit = 16777216u;

    explicit CReferenceFileService(CHostContext& context);
    ~CReferenceFileService() override;

    QV::Result GetFileHandle(QV::CHandle*& handle, const std::wstring& path, const CGetFileHandleOption& option) override;
    void ExportGoZ(QV::Result& result, QV::CHandle* handle, const std::wstring& folder, unsigned int splitMask,
                   QV::CArrayList<std::wstring>& names, int poseOption) override;
    quint64 GetPluginValue(QObject* plugin) override;
    void ImportGoZToObject(QV::Result& result, QV::CHandle* target, const std::wstring& gozName,
                           const CGoZImportOption& options) override;
    void CreatePropFromGoZ(QV::Result& result, const std::wstring& gozName, const CGoZCreateOption& options,
                           QV::CHandle*& created) override;
    void FindObjectByName(QV::Result& result, QV::CHandle*& handle, const std::wstring& name) override;
    void UpdateMeshFromGoZ(QV::Result& result, const CGoZMeshUpdateInfo& info, QV::CHandle* object) override;
    void SaveMotionFile(QV::Result& result, QV::CHandle* handle, const std::wstring& path) override;
    QV::Result SaveAvatarMotion(QV::CHandle* avatar, const std::wstring& path, int flag) override;
    QV::Result LoadMotionFile(const std::wstring& path, int kind, unsigned int flags, int dropX, int dropY) override;
    void LoadFile(QV::Result& result, const std::wstring& path, int kind, const CLoadFileOption& options) override;

    // True when a file of this name can exist in a folder of the host's file system.
    static bool IsValidFileName(const QString& name);

    // Where a returned GoZ file is read from: a bare name (with or without ".GoZ"/".goz")
    // lies in the GoZ project folder; backslashes separate folders.
    static QString ReturnedFilePath(const std::wstring& gozName);

private:
    QV::Result WriteMotionFile(QV::CHandle* handle, const QString& path);
    // Reads the returned file whole; on failure the call log notes why.
    bool ReadReturned(const std::wstring& gozName, CGoZStandInFile& file, QString& path);
    void ApplyMesh(int index, const CGoZStandInFile& file, const QString& path);
    // A stand-in motion names its object and pose; loading it sets that pose.
    void ApplyMotion(const QString& path);

    CHostContext& m_rContext;
    int m_iNextPropSerial = 1;
};

} // namespace Host
} // namespace MV
