#include "CCampaignRun.h"

#include "CBackstopWatchdog.h"
#include "CReport.h"
#include "CRunSession.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

namespace MV {
namespace Faults {

namespace {

// Beyond the script's own watchdog: the host's watchdog reports a stuck script, this one
// catches plug-in code that never returns to an event loop.
constexpr int kBackstopMarginMs = 15000;

QByteArray ReadAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

CScenario CScenario::Load(const QString& name, const QString& scenePath, const QString& scriptPath, int faultWaitMs)
{
    CScenario scenario;
    scenario.m_strName = name;
    scenario.m_kScene = ReadAll(scenePath);
    scenario.m_iFaultWaitMs = faultWaitMs;
    const QJsonObject script = QJsonDocument::fromJson(ReadAll(scriptPath)).object();
    scenario.m_iWatchdogMs = script.value(QStringLiteral("watchdog_ms")).toInt(30000);
    scenario.m_kSteps.append(QJsonObject{{QStringLiteral("step"), QStringLiteral("clear_failures")}});
    for (const QJsonValue& step : script.value(QStringLiteral("steps")).toArray()) {
        scenario.m_kSteps.append(step);
    }
    return scenario;
}

QByteArray CScenario::Script(bool faulted, const QJsonObject& firstStep) const
{
    QJsonArray steps;
    for (const QJsonValue& value : m_kSteps) {
        QJsonObject step = value.toObject();
        const QString kind = step.value(QStringLiteral("step")).toString();
        if (faulted && (kind == QLatin1String("wait_goz_return") || kind == QLatin1String("wait_processes"))) {
            step.insert(QStringLiteral("timeout_ms"), m_iFaultWaitMs);
        }
        steps.append(step);
    }
    if (!firstStep.isEmpty() && !steps.isEmpty()) {
        steps.replace(0, firstStep);
    }
    const QJsonObject script{{QStringLiteral("watchdog_ms"), m_iWatchdogMs}, {QStringLiteral("steps"), steps}};
    return QJsonDocument(script).toJson(QJsonDocument::Compact);
}

QJsonObject CScenario::ToJson() const
{
    return QJsonObject{{QStringLiteral("name"), m_strName},
                       {QStringLiteral("scene"), QString::fromUtf8(m_kScene)},
                       {QStringLiteral("steps"), m_kSteps},
                       {QStringLiteral("watchdog_ms"), m_iWatchdogMs},
                       {QStringLiteral("fault_wait_ms"), m_iFaultWaitMs}};
}

CScenario CScenario::FromJson(const QJsonObject& json)
{
    CScenario scenario;
    scenario.m_strName = json.value(QStringLiteral("name")).toString();
    scenario.m_kScene = json.value(QStringLiteral("scene")).toString().toUtf8();
    scenario.m_kSteps = json.value(QStringLiteral("steps")).toArray();
    scenario.m_iWatchdogMs = json.value(QStringLiteral("watchdog_ms")).toInt(30000);
    scenario.m_iFaultWaitMs = json.value(QStringLiteral("fault_wait_ms")).toInt();
    return scenario;
}

CCampaignRun::CCampaignRun()
    : m_kRoot(QDir::tempPath() + QStringLiteral("/mvgoz-faults-XXXXXX")), m_strSource(QStringLiteral(MVGOZ_PLUGIN_DIR))
{
    if (!m_kRoot.isValid()) {
        m_strError = QStringLiteral("no temporary folder: ") + m_kRoot.errorString();
        return;
    }
    m_strRoot = QFileInfo(m_kRoot.path()).canonicalFilePath();
    if (!QFileInfo(m_strSource + QStringLiteral("/MVGoZBrush.so")).isFile()) {
        m_strError = QStringLiteral("the plug-in module is not built");
        return;
    }
    CopyPluginFolder(m_strError);
}

CCampaignRun::~CCampaignRun() = default;

bool CCampaignRun::IsReady(QString& why) const
{
    why = m_strError;
    return m_strError.isEmpty();
}

QString CCampaignRun::PluginFolder() const
{
    return m_strRoot + QStringLiteral("/plugin");
}

bool CCampaignRun::CopyPluginFolder(QString& error)
{
    const QDir source(m_strSource);
    QDirIterator it(m_strSource, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString from = it.next();
        const QString to = PluginFolder() + QLatin1Char('/') + source.relativeFilePath(from);
        if (!QDir().mkpath(QFileInfo(to).absolutePath()) || !QFile::copy(from, to) ||
            !QFile::setPermissions(to, QFile::permissions(from))) {
            error = QStringLiteral("cannot copy %1 to %2").arg(from, to);
            return false;
        }
    }
    return true;
}

void CCampaignRun::MendPluginFolder()
{
    // A fault may have deleted a file, made it read-only or put a folder in its place.
    const QDir source(m_strSource);
    QDirIterator it(m_strSource, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString from = it.next();
        const QString to = PluginFolder() + QLatin1Char('/') + source.relativeFilePath(from);
        const QFileInfo target(to);
        if (target.isFile() && target.size() == QFileInfo(from).size() &&
            target.permissions() == QFileInfo(from).permissions()) {
            continue;
        }
        if (target.isDir()) {
            QDir(to).removeRecursively();
        } else if (target.exists()) {
            QFile::setPermissions(to, QFileDevice::WriteOwner | QFileDevice::ReadOwner);
            QFile::remove(to);
        }
        QFile::copy(from, to);
        QFile::setPermissions(to, QFile::permissions(from));
    }
}

CRunRecord CCampaignRun::Run(const QString& label, const CScenario& scenario, const QJsonObject& firstStep,
                             const CFileFaultPlan* fileFault)
{
    CRunRecord record;
    record.m_strLabel = label;
    record.m_strWork = m_strRoot + QStringLiteral("/run-%1").arg(++m_iRuns);

    Host::CRunSession session;
    QString error;
    const bool faulted = !firstStep.isEmpty() || fileFault != nullptr;
    if (QV::Failed(session.Prepare(scenario.m_kScene, scenario.Script(faulted, firstStep), error))) {
        record.m_kReport.insert(QStringLiteral("errors"), QJsonArray{QStringLiteral("not prepared: ") + error});
        return record;
    }
    Host::CRunOptions options;
    options.m_strPlugin = PluginFolder() + QStringLiteral("/MVGoZBrush.so");
    options.m_strWorkFolder = record.m_strWork;
    Host::CReport report;

    QElapsedTimer timer;
    timer.start();
    {
        const Host::CBackstopWatchdog backstop(
            scenario.m_iWatchdogMs + kBackstopMarginMs,
            NeverCameBack(label), 3);
        StartRecording(m_strRoot.toStdString());
        if (fileFault != nullptr) {
            const QString& file = fileFault->m_strFile;
            const QString path = file.startsWith(QLatin1String("plugin/")) ? PluginFolder() + file.mid(6)
                                                                           : QDir(record.m_strWork).absolutePath() + file.mid(4);
            Arm(path.toStdString(), fileFault->m_eFault, fileFault->m_iNth);
        }
        record.m_iResult = session.Execute(options, report);
        record.m_kFired = Fired();
        record.m_kTouches = StopRecording();
    }
    record.m_iElapsedMs = timer.elapsed();
    record.m_kReport = report.ToJson();
    if (fileFault != nullptr) {
        MendPluginFolder();
    }
    return record;
}

std::string CCampaignRun::NeverCameBack(const QString& label)
{
    return ("fault campaign: the run \"" + label + "\" never came back").toStdString();
}

void CCampaignRun::Discard(const CRunRecord& record)
{
    // Read-only files and folders left by a fault must not stop the clean-up.
    QDirIterator it(record.m_strWork, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        QFile::setPermissions(path, QFile::permissions(path) | QFileDevice::WriteOwner | QFileDevice::ReadOwner |
                                        (QFileInfo(path).isDir() ? QFileDevice::ExeOwner : QFileDevice::Permissions()));
    }
    QDir(record.m_strWork).removeRecursively();
}

} // namespace Faults
} // namespace MV
