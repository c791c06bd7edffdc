#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

namespace MV {
namespace Host {

// A split mesh name the host reports when its bit is in the requested mask; bit 0 means
// the name is reported for every mask.
struct CSplitMeshName
{
    unsigned int m_uBit = 0;
    QString m_strName;
};

// One REG_SZ value of the local-machine hive stand-in.
struct CRegistryValue
{
    QString m_strSubKey;
    QString m_strName;
    QString m_strData;
    QString m_strType; // empty: REG_SZ
};

// Scene-wide state of the reference host.
struct CSceneState
{
    QString m_strCurrentAvatar; // empty: none
    QStringList m_kSelection;
    QStringList m_kPicks;
    // Until picks are set on their own, the picked objects are the selected ones.
    bool m_bPicksFollowSelection = true;
    bool m_bPlaying = false;
    QStringList m_kSupportedCharacterTags;
    bool m_bReadyForCommand = true;
    bool m_bPluginSupported = true;
    bool m_bSkinSplitSupported = true;
    QList<CSplitMeshName> m_kSplitMeshNames;
    QStringList m_kExtraMeshNames;
    QList<CRegistryValue> m_kRegistry;
    QString m_strHostDataFolder = QStringLiteral("C:\\ProgramData\\Figmora");
    // GetLanguage; empty: the host asks for no translation.
    QString m_strLanguage;

    // The run's sandbox (docs/scene-format.md, "Sandbox").
    bool m_bPixologicFolder = true;
    bool m_bZBrushInstalled = true;
    QString m_strCurrentDirectory; // relative to the work folder; empty: the work folder itself
    // What stands where the bridge is installed (GoZApps/Figmora) before the run.
    enum class EGoZAppFolder { Absent, File, LockedLauncher };
    EGoZAppFolder m_eGoZAppFolder = EGoZAppFolder::Absent;
    enum class ETextureSizeFile
    {
        FromPlugin, // copied from the plug-in folder, as the host's installer does
        Missing,
        Given,
    };
    ETextureSizeFile m_eTextureSizeFile = ETextureSizeFile::FromPlugin;
    QByteArray m_kTextureSizeFile; // for Given

    // FinishGoZImport calls, and the objects of the last one.
    int m_iFinishedImports = 0;
    QStringList m_kLastImported;

    // What the ZBrush stand-in sends back after a send; none when not set.
    bool m_bZBrushReturns = false;
    QJsonObject m_kZBrushReturn;
};

} // namespace Host
} // namespace MV
