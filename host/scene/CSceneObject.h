#pragma once

#include "CGoZStandInFile.h"

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

    // Geometry: what the GoZ export writes and a GoZ import replaces.
    CGoZMesh m_kMesh;
    CGoZMesh m_kMeshAtStart; // as the scene gave it, for the report's before/after
    bool m_bCreated = false; // added by the host during the run (CreatePropFromGoZ, ...)

    // Character state the receive side changes (docs/scene-format.md, "Character state").
    QString m_strPose; // the pose the character stands in
    bool m_bRigged = false;
    int m_iAutoRigs = 0;
    int m_iConformRebuilds = 0;
    int m_iGoZUpdates = 0; // UpdateAvatarAfterGoZ
    int m_iCommits = 0; // CommitAvatarChange
    int m_iFinishedImports = 0; // FinishGoZImport on this character
    QStringList m_kLastImported; // the objects of the last FinishGoZImport
    int m_iFittings = 0; // eye elements: AdjustEyeElement and the fitting calls on this object
    int m_iGoZImports = 0; // GoZ files applied to this object
    QString m_strLastGoZFile; // the last GoZ file applied, as the host found it
};

} // namespace Host
} // namespace MV
