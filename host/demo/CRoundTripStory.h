#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace MV {
namespace Host {

// What a round trip adds to the demo's story, from the run's report: what the ZBrush
// stand-in was told and what it sent back, what an import changed in the scene and which
// motions the host loaded.
class CRoundTripStory
{
public:
    // The ZBrush stand-in's settings as a sentence: what it sends back from now on.
    static QString ReturnSettingsText(const QJsonValue& settings);
    // "4 vertices, 4 faces in (0, 0, 0) to (1, 1, 1)" for a mesh summary.
    static QString MeshText(const QJsonObject& summary);

    // The meshes ZBrush sent back for a send, from the processes the send started, and its
    // return launcher.
    static void TellReturn(const QJsonArray& processes, QStringList& out);
    // What changed between the last scene dump before step and the first one after it
    // (before nextStep), object by object in scene order, then what was added.
    static void TellSceneChange(const QJsonObject& report, int step, int nextStep, QStringList& out);
    // The motions the plug-in had the host load during step.
    static void TellLoads(const QJsonObject& report, int step, QStringList& out);
};

} // namespace Host
} // namespace MV
