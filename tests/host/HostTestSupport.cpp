#include "HostTestSupport.h"

#include "CScript.h"
#include "CScriptRunner.h"

#include <QJsonArray>

#include <cctype>

namespace MV {
namespace Host {
namespace Test {

const char* const kBasicScene = R"({
    "objects": [
        {"id": "hero", "name": "Hero", "kind": 1, "node_type": 4, "avatar_type": 4, "character_tag": "Standard",
         "materials": 3, "texture_sizes": {"0": 2048, "2": 512}},
        {"id": "hero_eye", "name": "Hero_EyeOcclusion", "kind": 2, "node_type": 49, "parent": "hero"},
        {"id": "hero_hair", "name": "Hero_Hair", "kind": 2, "node_type": 35, "parent": "hero"},
        {"id": "hero_clip", "name": "Hair_Clip", "kind": 2, "node_type": 36, "parent": "hero_hair"},
        {"id": "hero_teeth", "name": "Hero_Teeth", "kind": 2, "node_type": 36, "parent": "hero"},
        {"id": "box", "name": "Box", "kind": 1},
        {"id": "lamp", "name": "Desk Lamp", "kind": 3, "lod_meshes": ["Lamp_LOD1", "Lamp_LOD2"], "pick_owner": "box"},
        {"id": "crate", "name": "Crate", "kind": 7, "polygon_supported": false},
        {"id": "spring", "name": "Spring", "kind": 2, "node_type": 51, "parent": "hero_hair"},
        {"id": "statue", "name": "Ünïcödé Statue", "kind": 1}
    ],
    "current_avatar": "hero",
    "selection": ["box"],
    "supported_character_tags": ["Standard"],
    "split_mesh_names": [
        {"name": "Body"},
        {"bit": 1, "name": "EyeWinker"},
        {"bit": 64, "name": "SkinHead"}
    ],
    "extra_mesh_names": ["FM_Base_Upper_Teeth", "FM_Base_Lower_Teeth"],
    "registry": {"SOFTWARE\\Quorvane\\Figmora\\4.0": {"Main Program": "C:\\Program Files\\Figmora\\Figmora.exe"}}
})";

namespace {

std::string Identifier(const char* text)
{
    std::string name;
    for (const char* c = text; *c != '\0' && name.size() < 56; ++c) {
        name += std::isalnum(static_cast<unsigned char>(*c)) ? *c : '_';
    }
    return name;
}

} // namespace

std::string BadInputName(const ::testing::TestParamInfo<CBadInput>& info)
{
    return "c" + std::to_string(info.index) + "_" + Identifier(info.param.m_szError);
}

void PrintTo(const CBadInput& item, std::ostream* out)
{
    *out << Identifier(item.m_szError);
}

std::unique_ptr<CScene> ParseScene(const QByteArray& json)
{
    auto scene = std::make_unique<CScene>();
    QString error;
    if (QV::Failed(scene->Parse(json, error))) {
        ADD_FAILURE() << "scene: " << error.toStdString();
        return nullptr;
    }
    return scene;
}

QStringList UsageSteps(const CReferenceHost& host, const QString& tag)
{
    QStringList found;
    for (const CCallRecord& record : host.CallLog().Of(QStringLiteral("RecordUsageStep"))) {
        if (record.m_kArgs.value(0) == tag) {
            found << record.m_kArgs.value(1) + QLatin1Char('|') + record.m_kArgs.value(2);
        }
    }
    return found;
}

CHostRun::CHostRun(const QByteArray& scene)
{
    QString error;
    if (QV::Failed(m_kSandbox.Create(error))) {
        ADD_FAILURE() << "sandbox: " << error.toStdString();
        return;
    }
    std::unique_ptr<CScene> parsed = ParseScene(scene);
    if (!parsed) {
        return;
    }
    m_pHost = std::make_unique<CReferenceHost>(std::move(parsed));
    m_pPlugins = std::make_unique<CPluginHost>(*m_pHost);
    m_pPlugins->SetExpectedClassName(QStringLiteral("CFakePlugin"));
    m_bReady = true;
}

bool CHostRun::Load(const QString& path)
{
    if (!m_bReady) {
        return false;
    }
    if (QV::Failed(m_pPlugins->Load(path))) {
        ADD_FAILURE() << "load: " << m_pPlugins->Errors().join(QStringLiteral("; ")).toStdString();
        return false;
    }
    m_kReport.SetPlugin(*m_pPlugins);
    return true;
}

QV::Result CHostRun::Run(const QByteArray& script)
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

QJsonObject CHostRun::Step(int index) const
{
    for (const QJsonValue& step : Report().value(QStringLiteral("steps")).toArray()) {
        if (step.toObject().value(QStringLiteral("index")).toInt(-1) == index) {
            return step.toObject();
        }
    }
    return QJsonObject();
}

} // namespace Test
} // namespace Host
} // namespace MV
