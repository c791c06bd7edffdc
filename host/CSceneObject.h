#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

namespace MV {
namespace Host {

// One object of the reference host's scene, as the scene file describes it.
struct CSceneObject
{
    QString m_strId;
    QString m_strName;
    unsigned int m_uKind = 0;
    bool m_bHasNodeType = false;
    int m_iNodeType = 0;
    int m_iAvatarType = 0;
    int m_iObjectType = 0;
    bool m_bCharacter = false;
    QString m_strParent;
    QStringList m_kChildren; // derived from the parents, in scene order
    QStringList m_kMeshes;
    int m_iMaterials = 0;
    QMap<int, int> m_kTextureSizes; // channel -> edge length
    QStringList m_kLodMeshes;
    bool m_bPolygonSupported = true;
    QString m_strCharacterTag;
    bool m_bExpressionEditing = false;
    bool m_bBlendShapeEditing = false;
    QString m_strPickOwner;
    QStringList m_kRigMeshNames;
    bool m_bBindPoseLocked = false;
    bool m_bSkipReceiveDialog = false;
    QString m_strBoundNode;
    QString m_strFile;
};

} // namespace Host
} // namespace MV
