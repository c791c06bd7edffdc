#include "CScene.h"
#include "FuzzQt.h"
#include "FuzzSupport.h"

#include <QByteArray>
#include <QSet>
#include <QString>

#include <cstddef>
#include <cstdint>

using namespace MV::Fuzz;
using MV::Host::CScene;
using MV::Host::CSceneObject;

namespace {

const QByteArray kBaseScene = R"({"objects": [{"id": "base", "kind": 1, "avatar_type": 4},
                                              {"id": "base-mesh", "parent": "base"}]})";

} // namespace

// Input: a scene file of the reference host. A refused scene leaves the loaded one as it was
// and says why; an accepted one is a consistent tree whose lookups agree with each other.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    SilenceQt();
    CScene scene;
    QString error;
    Check(scene.Parse(kBaseScene, error) == QV::kOk, "the base scene loads");
    QV::CHandle* const baseHandle = scene.Handle(0);

    const QByteArray json(reinterpret_cast<const char*>(data), static_cast<int>(size));
    if (QV::Failed(scene.Parse(json, error))) {
        Check(!error.isEmpty(), "a refused scene says why");
        Check(scene.ObjectCount() == 2 && scene.Object(0).m_strId == QLatin1String("base")
                  && scene.Handle(0) == baseHandle && scene.Descendants(QStringLiteral("base")).size() == 1,
              "a refused scene leaves the loaded one as it was");
        return 0;
    }
    Check(error.isEmpty(), "an accepted scene reports no problem");
    Check(scene.IndexOf(baseHandle) == -1 && scene.Find(baseHandle) == nullptr,
          "a handle of the old content resolves to nothing");

    const int count = scene.ObjectCount();
    for (int i = 0; i < count; ++i) {
        const CSceneObject& object = scene.Object(i);
        QV::CHandle* handle = scene.Handle(i);
        Check(handle != nullptr && scene.IndexOf(handle) == i && scene.HandleOf(object.m_strId) == handle
                  && scene.IndexOf(object.m_strId) == i && scene.Find(object.m_strId) == &object,
              "ids, handles and indexes agree");
        const QStringList below = scene.Descendants(object.m_strId);
        Check(!below.contains(object.m_strId) && below.size() < count, "parents form a tree");
        for (const QString& id : below + scene.MeshesOf(object.m_strId)) {
            Check(scene.Find(id) != nullptr, "descendants and meshes are objects of the scene");
        }
        const QString owner = scene.OwningCharacter(object.m_strId);
        Check(owner.isEmpty() || (scene.Find(owner) != nullptr && scene.Find(owner)->m_bCharacter),
              "the owning character is a character of the scene");
        if (!object.m_kMesh.IsEmpty()) {
            Check(object.m_kMesh.Check().isEmpty(), "a loaded mesh is sound");
        }
    }
    for (const QString& id : scene.PickedIds()) {
        Check(scene.Find(id) != nullptr, "picks name objects of the scene");
    }
    Check(scene.SplitMeshNames(~0u).size() == scene.State().m_kSplitMeshNames.size(),
          "every split name answers the full mask");
    return 0;
}
