#pragma once

#include "QVArrayList.h"
#include "QVResult.h"

#include <QString>

#include <string>

class CEventSender;
class CFigmoraEventSender;
class QObject;
class QWidget;

// Host application interface. Every service is implemented by the host; the plug-in only
// calls. Operations that fill data take the result as their first argument.

// Kinds of host files that GetFileHandle opens.
enum class EFileType : int
{
    Unknown = 0,
    Character = 1,
};

struct CGetFileHandleOption
{
    EFileType m_eFileType = EFileType::Character;
    bool m_bReadOnly = true;
};

// Options of ImportGoZToObject.
struct CGoZImportOption
{
    bool m_bTakeTexture = false;
    int m_iPoseOption = 0;
    bool m_bIsCloth = false;
    int m_iTextureSize = 0;
    int m_iFlag = 1;
};

// Options of CreatePropFromGoZ.
struct CGoZCreateOption
{
    bool m_bTakeTexture = false;
    int m_iTextureSize = 0;
    int m_iFlag = 1;
};

// Import info of UpdateMeshFromGoZ.
struct CGoZMeshUpdateInfo
{
    std::wstring m_strGoZFile;
    bool m_bTakeMesh = true;
    bool m_bTakeTexture = false;
    int m_iTextureWidth = 0;
    int m_iTextureHeight = 0;
    int m_iMode = 0;
};

// Options of LoadFile.
struct CLoadFileOption
{
    bool m_bFlag = true;
    int m_iStartFrame = -1;
    int m_iEndFrame = -1;
};

// Runtime controller of a node of type 51 or 52.
class CNodeController
{
public:
    virtual void ResetController(int mode) = 0;
    virtual void Release() = 0;

protected:
    virtual ~CNodeController() = default;
};

class CQueryService
{
public:
    virtual ~CQueryService() = default;

    virtual QWidget* GetMainWindow() = 0;
    virtual bool IsPlaying() = 0;
    virtual void GetSelectedObjects(QV::Result& result, QV::CArrayList<QV::CHandle*>& list, int flag) = 0;
    virtual void GetAvatarType(QV::Result& result, QV::CHandle* handle, int& type) = 0;
    virtual void GetObjectKind(QV::Result& result, QV::CHandle* handle, unsigned int& kind) = 0;
    virtual bool HasNodeType(QV::CHandle* handle) = 0;
    virtual bool IsExpressionEditing(QV::CHandle* handle) = 0;
    virtual void CollectChildObjects(QV::Result& result, QV::CHandle* parent, int typeCode, int flag,
                                     QV::CArrayList<QV::CHandle*>& list) = 0;
    virtual std::wstring HandleName(QV::Result& result, QV::CHandle* handle) = 0;
    virtual QV::CHandle* GetOwningCharacter(QV::CHandle* handle) = 0;
    virtual void GetLodMeshes(QV::Result& result, QV::CHandle* handle, QV::CArrayList<std::wstring>& names) = 0;
    virtual bool IsGoZPolygonSupported(QV::CHandle* handle) = 0;
    virtual void ListSceneObjectsOfKind(QV::Result& result, QV::CHandle* root, int kind,
                                        QV::CArrayList<QV::CHandle*>& list, int flag) = 0;
    virtual QV::CArrayList<QV::CHandle*> GetObjectMeshes(QV::CHandle* handle) = 0;
    virtual int GetObjectType(QV::CHandle* handle) = 0;
    virtual QV::CHandle* GetParentObject(QV::CHandle* handle) = 0;
    virtual std::wstring GetHostDataFolder(QV::Result& result, int folderCode) = 0;

    virtual void GetPickedObjects(QV::Result& result, QV::CArrayList<QV::CHandle*>& list, int flag) = 0;
    virtual void GetPickOwner(QV::Result& result, QV::CHandle* pick, int flag, QV::CHandle*& owner) = 0;
    virtual void GetNodeType(QV::Result& result, QV::CHandle* handle, int& type) = 0;
    virtual void FindRelatedObjects(QV::Result& result, QV::CHandle* handle, int nodeType, int flag,
                                    QV::CArrayList<QV::CHandle*>& list) = 0;
    virtual void ListMeshObjects(QV::CArrayList<QV::CHandle*>& list, QV::CHandle* handle) = 0;
    virtual void ListMeshObjectsType6(QV::CArrayList<QV::CHandle*>& list, QV::CHandle* handle) = 0;
    virtual std::wstring MakeUniqueName(QV::Result& result, QV::CHandle* handle, const std::wstring& baseName) = 0;
    // The one yes/no answer that enables the four skin split boxes for a character.
    virtual bool IsSkinSplitSupported(QV::CHandle* avatar) = 0;
    // The host check on a target's parent that hides the bind pose on receive.
    virtual bool IsBindPoseLocked(QV::CHandle* parent) = 0;
    virtual bool IsBlendShapeEditing(QV::CHandle* avatar) = 0;
    virtual void GetBoundNode(QV::Result& result, QV::CHandle* handle, int flag, QV::CHandle*& node) = 0;
    virtual CNodeController* GetNodeController(QV::CHandle* node) = 0;
    virtual bool ShouldSkipReceiveDialog(QV::CHandle* avatar) = 0;
    virtual QV::Result AdjustEyeElement(QV::CHandle* avatar, int type) = 0;
    virtual QV::Result AutoRigAvatar(QV::CHandle* avatar, int flag) = 0;
    virtual QV::Result UpdateAvatarAfterGoZ(QV::CHandle* avatar) = 0;
    virtual void FinishGoZImport(QV::Result& result, QV::CHandle* avatar, const QV::CArrayList<QV::CHandle*>& list) = 0;
    virtual void GetMaterialCount(QV::Result& result, QV::CHandle* handle, int& count) = 0;
    virtual void GetTextureSize(QV::Result& result, QV::CHandle* handle, int channel, int& size) = 0;
};

class CFileService
{
public:
    virtual ~CFileService() = default;

    virtual QV::Result GetFileHandle(QV::CHandle*& handle, const std::wstring& path, const CGetFileHandleOption& option) = 0;
    virtual void ExportGoZ(QV::Result& result, QV::CHandle* handle, const std::wstring& folder, unsigned int splitMask,
                           QV::CArrayList<std::wstring>& names, int poseOption) = 0;
    virtual quint64 GetPluginValue(QObject* plugin) = 0;
    virtual void ImportGoZToObject(QV::Result& result, QV::CHandle* target, const std::wstring& gozName,
                                   const CGoZImportOption& options) = 0;
    virtual void CreatePropFromGoZ(QV::Result& result, const std::wstring& gozName, const CGoZCreateOption& options,
                                   QV::CHandle*& created) = 0;
    virtual void FindObjectByName(QV::Result& result, QV::CHandle*& handle, const std::wstring& name) = 0;
    virtual void UpdateMeshFromGoZ(QV::Result& result, const CGoZMeshUpdateInfo& info, QV::CHandle* object) = 0;
    virtual void SaveMotionFile(QV::Result& result, QV::CHandle* handle, const std::wstring& path) = 0;
    virtual QV::Result SaveAvatarMotion(QV::CHandle* avatar, const std::wstring& path, int flag) = 0;
    virtual QV::Result LoadMotionFile(const std::wstring& path, int kind, unsigned int flags, int dropX, int dropY) = 0;
    virtual void LoadFile(QV::Result& result, const std::wstring& path, int kind, const CLoadFileOption& options) = 0;
};

class CEditService
{
public:
    virtual ~CEditService() = default;

    virtual void RemoveLods(QV::Result& result, const QV::CArrayList<QV::CHandle*>& objects, int a, int b,
                            unsigned int flags) = 0;
    virtual void PrepareObjectUpdate(QV::Result& result, QV::CHandle* object) = 0;
    virtual void RefreshAvatar(QV::Result& result, QV::CHandle* avatar) = 0;
    virtual void UpdateAvatarMorph(QV::Result& result, QV::CHandle* avatar, bool flag) = 0;
};

// Message box kinds and buttons, as the host numbers them.
constexpr int kMessageWarning = 2;
constexpr int kMessageButtonOk = 0x400;

class CUiService
{
public:
    virtual ~CUiService() = default;

    // Returns the button pressed.
    virtual int ShowMessageBox(const QString& text, const QString& title, QWidget* parent, int kind, int buttons,
                               int defaultButton) = 0;
    virtual void SelectObjects(QV::Result& result, const QV::CArrayList<QV::CHandle*>& list, int a, int b) = 0;
    virtual bool ReadyForCommand(int a, int b) = 0;
    virtual void RecordUsageStep(QV::Result& result, const QString& tag, const std::wstring& text, int id) = 0;
    virtual void RefreshView(QV::Result& result, int flag) = 0;
    // The language of the host's user interface ("en", "de", "zh_TW"); empty when the host
    // sets none, and plug-ins then show their texts untranslated. Not pure, so hosts built
    // before it existed still compile.
    virtual QString GetLanguage() { return QString(); }
};

class CAvatarService
{
public:
    virtual ~CAvatarService() = default;

    virtual QV::CHandle* GetCurrentAvatar() = 0;
    virtual void GetGozSplitMeshNames(QV::Result& result, QV::CArrayList<std::wstring>& names, unsigned int splitMask) = 0;
    virtual void GetGozExtraMeshNames(QV::Result& result, QV::CArrayList<std::wstring>& names) = 0;
    virtual bool IsCharacterTagSupported(const std::wstring& tag, int code) = 0;
    virtual QV::CHandle* GetBlendShapeEditingAvatar() = 0;
    virtual QV::Result CommitAvatarChange(QV::CHandle* avatar) = 0;
};

class CCharacterService
{
public:
    virtual ~CCharacterService() = default;

    virtual void GetCharacterTag(QV::Result& result, QV::CHandle* handle, std::wstring& tag) = 0;
};

class CFittingService
{
public:
    virtual ~CFittingService() = default;

    virtual void RebuildAvatarConform(QV::Result& result, QV::CHandle* avatar, int flag,
                                      const QV::CArrayList<QV::CHandle*>& list) = 0;
    virtual QV::Result ResetAvatarPose(QV::CHandle* avatar, QV::CHandle* reference, int flags) = 0;
    virtual void ListAvatarRigMeshNames(QV::Result& result, QV::CHandle* avatar, QV::CArrayList<std::wstring>& names) = 0;
    virtual void AdjustEyeOcclusion(QV::Result& result, QV::CHandle* avatar) = 0;
    virtual void AdjustEyeOcclusionBlend(QV::Result& result, QV::CHandle* avatar) = 0;
    virtual void AdjustTearline(QV::Result& result, QV::CHandle* avatar) = 0;
    // Adds the avatar's eye element of that node type (49 eye occlusion, 50 tear line).
    virtual QV::Result CreateEyeElement(QV::CHandle* avatar, int nodeType) = 0;
};

class CRegistryService
{
public:
    virtual ~CRegistryService() = default;

    virtual void RegisterPluginValue(QObject* plugin, quint64 value) = 0;
};

class CPluginsService
{
public:
    virtual ~CPluginsService() = default;

    virtual bool IsPluginSupported() = 0;
};

class CMiravaInterface
{
public:
    virtual ~CMiravaInterface() = default;

    virtual CEventSender* GetEventSender() = 0;
    virtual CFigmoraEventSender* GetFigmoraEventSender() = 0;
    virtual CQueryService* Query() = 0;
    virtual CFileService* File() = 0;
    virtual CEditService* Edit() = 0;
    virtual CUiService* Ui() = 0;
    virtual CAvatarService* Avatar() = 0;
    virtual CCharacterService* Character() = 0;
    virtual CFittingService* Fitting() = 0;
    virtual CRegistryService* Registry() = 0;
    virtual CPluginsService* Plugins() = 0;
};
