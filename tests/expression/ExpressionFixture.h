#pragma once

#include "ReceiveFixture.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

namespace MV {
namespace Test {

// A character whose face meshes are named unlike it, another character, a prop, and a
// spring node the brow is bound to. Listed against the order the face meshes are gathered in
// (35, 49, 50, 36).
const QByteArray kFaceScene = R"({
  "objects": [
    {"id": "ava", "name": "Ava", "kind": 4, "node_type": 4, "avatar_type": 4, "character_tag": "Standard",
     "blend_shape_editing": true},
    {"id": "ava_teeth", "name": "Teeth_Mesh", "kind": 2, "node_type": 36, "parent": "ava", "object_type": 104},
    {"id": "ava_tear", "name": "Tear_Mesh", "kind": 2, "node_type": 50, "parent": "ava", "object_type": 103},
    {"id": "ava_occlusion", "name": "Occlusion_Mesh", "kind": 2, "node_type": 49, "parent": "ava", "object_type": 102},
    {"id": "ava_brow_group", "name": "Brow_Group", "parent": "ava", "meshes": []},
    {"id": "ava_brow", "name": "Brow_Mesh", "kind": 2, "node_type": 35, "parent": "ava", "object_type": 101,
     "bound_node": "ava_spring"},
    {"id": "ava_spring", "name": "Ava_Spring", "node_type": 51, "parent": "ava", "meshes": []},
    {"id": "hat", "name": "Hat", "kind": 3, "object_type": 200},
    {"id": "bob", "name": "Bob", "kind": 1, "node_type": 4, "avatar_type": 4},
    {"id": "bob_brow", "name": "Bob_Brow", "kind": 2, "node_type": 35, "parent": "bob", "object_type": 301}
  ],
  "current_avatar": "ava",
  "supported_character_tags": ["Standard"],
  "split_mesh_names": [{"name": "Ava_Body"}],
  "extra_mesh_names": ["FM_Base_Upper_Teeth", "FM_Base_Lower_Teeth"],
  "host_data_folder": "C:/ProgramData/Figmora",
  "registry": {"SOFTWARE\\Quorvane\\Figmora\\4.0": {"Main Program": "C:\\Program Files\\Figmora\\Figmora.exe"}}
})";

// kFaceScene with each face element present or left out.
struct FaceScene
{
    bool m_bEyeOcclusion = true;
    bool m_bTearLine = true;
    bool m_bTeeth = true;
    bool m_bBrow = true;
    bool m_bEditing = true;
    int m_iAvatarKind = 4;
    // The brow's picks belong to a group of this object kind (0: the brow is its own object).
    int m_iBrowOwnerKind = 0;

    QByteArray Json() const
    {
        QJsonObject scene = QJsonDocument::fromJson(kFaceScene).object();
        const QMap<QString, bool> present{{"ava_teeth", m_bTeeth}, {"ava_tear", m_bTearLine},
                                          {"ava_occlusion", m_bEyeOcclusion}, {"ava_brow", m_bBrow},
                                          {"ava_brow_group", m_iBrowOwnerKind != 0}};
        QJsonArray objects;
        for (const QJsonValue& value : scene.value("objects").toArray()) {
            QJsonObject object = value.toObject();
            const QString id = object.value("id").toString();
            if (id == "ava") {
                object.insert("kind", m_iAvatarKind);
                object.insert("blend_shape_editing", m_bEditing);
            } else if (id == "ava_brow_group") {
                object.insert("kind", m_iBrowOwnerKind);
            } else if (id == "ava_brow" && m_iBrowOwnerKind != 0) {
                object.insert("pick_owner", "ava_brow_group");
            }
            if (present.value(id, true)) {
                objects.append(object);
            }
        }
        scene.insert("objects", objects);
        return QJsonDocument(scene).toJson(QJsonDocument::Compact);
    }

    // The names a full return of the character holds: the face meshes it has, the teeth under
    // the extra part names they were sent as.
    QStringList FullReturn() const
    {
        QStringList names{"Brow_Mesh"};
        if (m_bEyeOcclusion) {
            names << "Occlusion_Mesh";
        }
        if (m_bTearLine) {
            names << "Tear_Mesh";
        }
        return names + QStringList{"FM_Base_Upper_Teeth", "FM_Base_Lower_Teeth"};
    }
};

inline FaceScene Without(bool FaceScene::*part)
{
    FaceScene scene;
    scene.*part = false;
    return scene;
}

inline QStringList FullFaceReturn()
{
    return FaceScene().FullReturn();
}

class ExpressionFixture : public ReceiveFixture
{
public:
    void Start(const FaceScene& scene = FaceScene())
    {
        StartHost(scene.Json());
        if (!HasFatalFailure()) {
            MakeExpressionDialog();
        }
    }

    QV::CHandle* Handle(const char* id) const { return m_pHost->Scene().HandleOf(QLatin1String(id)); }
};

} // namespace Test
} // namespace MV
