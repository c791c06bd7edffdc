#pragma once

#include "CFMToZBrushMeshInfo.h"
#include "CRelinkSetAside.h"
#include "GoZTypes.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

class CMiravaInterface;

namespace MV {

// What the send dialog's option widgets say at the moment GoZ is pressed.
struct CSendOptions
{
    bool m_bSplitGroupEnabled = false;
    bool m_bAnySplitChecked = false;
    unsigned int m_uSplitState = 0;
    bool m_bBindPose = false;
    bool m_bTPose = false;
    bool m_bCurrentPose = false;
};

// Exports the send records as GoZ files and hands them to ZBrush's bridge programs.
class CGoZSendPipeline
{
public:
    static constexpr unsigned int kTeethSplit = 16777216; // bit 24: the extra meshes alone

    CGoZSendPipeline(CMiravaInterface* host, const QString& pixologicRoot);
    ~CGoZSendPipeline();

    // Steps before the exchange files: LODs, split, export, pose file, usage step.
    // Skip records are removed from records; exportedNames receives what the host wrote.
    // Files replaced by Relink rows stay set aside until WriteGoZExchangeFiles has written
    // the new object list; a failure before that puts them back.
    QV::Result Export(CFMToZBrushMeshInfoList& records, const QStringList& projectFiles, const CSendOptions& options,
                      bool exportPose, QV::CArrayList<std::wstring>& exportedNames);

    QV::Result RemoveLodMeshes(const CFMToZBrushMeshInfoList& records);
    QV::Result PrepareSplit(const CSendOptions& options);
    // Application file, PATH of the config, object list, then both bridge programs.
    void WriteGoZExchangeFiles(QV::Result& result, const QV::CArrayList<std::wstring>& names);
    void ReadPreviousObjectList(QV::Result& result, QStringList& files) const;
    void FindPreviouslySentNames(QV::Result& result, std::vector<std::wstring>& names) const;

    // Pose handed to the receive dialog: T-pose wins here, bind pose wins for the export.
    static EGozPoseOption ReceivePoseOption(const CSendOptions& options);
    static EGozPoseOption ExportPoseOption(bool hasCharacter, const CSendOptions& options);

    QString ProjectFolder() const;
    QString ApplicationFolder() const;
    QString PoseFilePath() const { return m_strPoseFilePath; }
    void ClearPoseFilePath() { m_strPoseFilePath.clear(); }
    unsigned int SplitState() const { return m_uSplitState; }
    EGozPoseOption PoseOption() const { return m_ePoseOption; }
    QV::CHandle* SplitCharacter() const { return m_pSplitCharacter; }

    // Called with every new name a Create send gives a mesh, before the export.
    void SetRenameCallback(std::function<void(const std::wstring&)> callback) { m_fnRenamed = std::move(callback); }

private:
    QV::Result GatherNames(const CFMToZBrushMeshInfo& info, QV::CHandle* object, std::vector<std::wstring>& names);
    QV::Result ExportSteps(CFMToZBrushMeshInfoList& records, const QStringList& projectFiles,
                           const CSendOptions& options, bool exportPose, QV::CArrayList<std::wstring>& exportedNames);
    void WriteExchangeFileSteps(QV::Result& result, const QV::CArrayList<std::wstring>& names, bool& listWritten);
    QV::Result StartBridgeProgram(const QString& infoFile, const char* key, bool logMissing);

    CMiravaInterface* m_pHost;
    QString m_strPixologicRoot;
    QString m_strPoseFilePath;
    QV::CHandle* m_pSplitCharacter = nullptr;
    unsigned int m_uSplitState = 0;
    QV::CArrayList<std::wstring> m_kSplitNames;
    QV::CArrayList<std::wstring> m_kExtraNames;
    EGozPoseOption m_ePoseOption = EGozPoseOption::None;
    std::function<void(const std::wstring&)> m_fnRenamed;
    std::unique_ptr<CRelinkSetAside> m_pSetAside;
};

} // namespace MV
