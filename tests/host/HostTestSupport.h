#pragma once

#include "CPluginHost.h"
#include "CReferenceHost.h"
#include "CReport.h"
#include "CSandbox.h"
#include "CScene.h"
#include "CScript.h"
#include "CScriptRunner.h"
#include "QtPrinters.h"

#include <QJsonArray>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace MV {
namespace Host {
namespace Test {

// A character with face parts and hair, three props, a spring node and a non-ASCII name.
inline constexpr const char* kBasicScene = R"({"objects": [
    {"id": "hero", "name": "Hero", "kind": 1, "node_type": 4, "avatar_type": 4, "character_tag": "Standard", "materials": 3,
     "texture_sizes": {"0": 2048, "2": 512}},
    {"id": "hero_eye", "name": "Hero_EyeOcclusion", "kind": 2, "node_type": 49, "parent": "hero"},
    {"id": "hero_hair", "name": "Hero_Hair", "kind": 2, "node_type": 35, "parent": "hero"},
    {"id": "hero_clip", "name": "Hair_Clip", "kind": 2, "node_type": 36, "parent": "hero_hair"},
    {"id": "hero_teeth", "name": "Hero_Teeth", "kind": 2, "node_type": 36, "parent": "hero"},
    {"id": "box", "name": "Box", "kind": 1},
    {"id": "lamp", "name": "Desk Lamp", "kind": 3, "lod_meshes": ["Lamp_LOD1", "Lamp_LOD2"], "pick_owner": "box"},
    {"id": "crate", "name": "Crate", "kind": 7, "polygon_supported": false},
    {"id": "spring", "name": "Spring", "kind": 2, "node_type": 51, "parent": "hero_hair"}, {"id": "statue", "name": "Ünïcödé Statue", "kind": 1}
  ], "current_avatar": "hero", "selection": ["box"], "supported_character_tags": ["Standard"],
  "split_mesh_names": [{"name": "Body"}, {"bit": 1, "name": "EyeWinker"}, {"bit": 64, "name": "SkinHead"}],
  "extra_mesh_names": ["FM_Base_Upper_Teeth", "FM_Base_Lower_Teeth"],
  "registry": {"SOFTWARE\\Quorvane\\Figmora\\4.0": {"Main Program": "C:\\Program Files\\Figmora\\Figmora.exe"}}})";

// The scene, or null after reporting the parse error as a test failure.
inline std::unique_ptr<CScene> ParseScene(const QByteArray& json)
{
    auto scene = std::make_unique<CScene>();
    QString error;
    if (QV::Failed(scene->Parse(json, error))) {
        ADD_FAILURE() << "scene: " << error.toStdString();
        return nullptr;
    }
    return scene;
}

// The text arguments of every RecordUsageStep call with this tag, as "text|id".
inline QStringList UsageSteps(const CReferenceHost& host, const QString& tag)
{
    QStringList found;
    for (const CCallRecord& record : host.CallLog().Of(QStringLiteral("RecordUsageStep"))) {
        if (record.m_kArgs.value(0) == tag) {
            found << record.m_kArgs.value(1) + QLatin1Char('|') + record.m_kArgs.value(2);
        }
    }
    return found;
}

// A sandbox, a host over the basic scene and a plug-in host set for the fake plug-in, as a run has them.
class CHostRun
{
public:
    CHostRun()
    {
        QString error;
        EXPECT_EQ(QV::kOk, m_kSandbox.Create(error)) << error.toStdString();
        m_pPlugins->SetExpectedClassName(QStringLiteral("CFakePlugin"));
    }

    bool Load()
    {
        if (!m_kSandbox.IsActive() || QV::Failed(m_pPlugins->Load(QStringLiteral(MVGOZ_FAKE_PLUGIN)))) {
            ADD_FAILURE() << "load: " << m_pPlugins->Errors().join(QStringLiteral("; ")).toStdString();
            return false;
        }
        m_kReport.SetPlugin(*m_pPlugins);
        return true;
    }

    // Parses and runs a script; a parse error is a test failure and gives kInvalidArg.
    QV::Result Run(const QByteArray& script)
    {
        CScript parsed;
        QString error;
        if (QV::Failed(parsed.Parse(script, error))) {
            ADD_FAILURE() << "script: " << error.toStdString();
            return QV::kInvalidArg;
        }
        CScriptRunner runner(*m_pHost, *m_pPlugins, m_kReport);
        runner.SetProcessLogPath(m_kSandbox.ProcessLogPath());
        return runner.Run(parsed);
    }

    QJsonObject Report() const { return m_kReport.ToJson(); }
    // The report's entry of the step with this index; empty when none.
    QJsonObject Step(int index) const
    {
        for (const QJsonValue& step : Report().value(QStringLiteral("steps")).toArray()) {
            if (step.toObject().value(QStringLiteral("index")).toInt(-1) == index) {
                return step.toObject();
            }
        }
        return QJsonObject();
    }

    CSandbox m_kSandbox;
    std::unique_ptr<CReferenceHost> m_pHost = std::make_unique<CReferenceHost>(ParseScene(kBasicScene));
    std::unique_ptr<CPluginHost> m_pPlugins = std::make_unique<CPluginHost>(*m_pHost);
    CReport m_kReport;
};

} // namespace Test
} // namespace Host
} // namespace MV
