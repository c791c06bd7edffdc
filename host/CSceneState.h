#pragma once

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
    QString m_strHostDataFolder;
};

} // namespace Host
} // namespace MV
