#include "DoctorSandbox.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

// The built mvgoz-doctor, run as a user runs it: in a folder that holds C:/Users/Public, as
// the fixed Windows paths resolve on Linux.
namespace {

struct CRun
{
    int m_nExitCode = -1;
    QByteArray m_kOut;
    QByteArray m_kErr;
};

// publicVariable: the value of PUBLIC, or null to leave every spelling of it unset.
CRun RunDoctor(const QStringList& arguments, const CDoctorSandbox& sandbox, const char* publicVariable = nullptr)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"PUBLIC", "Public", "public"}) {
        environment.remove(QString::fromLatin1(name));
    }
    if (publicVariable != nullptr) {
        environment.insert(QStringLiteral("PUBLIC"), QString::fromUtf8(publicVariable));
    }
    environment.insert(QStringLiteral("MVGOZ_REGISTRY_FILE"), QString::fromStdString(sandbox.RegistryFile().string()));
    QProcess doctor;
    doctor.setProcessEnvironment(environment);
    doctor.setWorkingDirectory(QString::fromStdString(sandbox.Folder().string()));
    doctor.start(QStringLiteral(MVGOZ_DOCTOR_PROGRAM), arguments);
    CRun run;
    if (doctor.waitForFinished(60000) && doctor.exitStatus() == QProcess::NormalExit) {
        run.m_nExitCode = doctor.exitCode();
    }
    run.m_kOut = doctor.readAllStandardOutput();
    run.m_kErr = doctor.readAllStandardError();
    return run;
}

// --json output parses and tells the verdict, which the exit code repeats; sentences and
// command-line errors go to their own streams.
TEST(DoctorProgram, OutputAndExitCodeOnSandboxes)
{
    const struct
    {
        const char* arguments;
        const char* publicVariable;
        bool breakIt; // a stale launcher
        int exitCode;
        const char* says; // with --json: the public folder's source
    } cases[] = {
        {"--json --public C:/Users/Public", nullptr, false, 0, "override"},
        {"--json", "C:/Users/Public", false, 0, "variable"},
        {"--json", "C:/Users/Public", true, 1, "variable"},
        {"--json", nullptr, false, 1, "default"},
        {"--help", nullptr, false, 0, "Usage: mvgoz-doctor"},
        {"--public C:/Users/Public", nullptr, false, 0, "Public folder: C:/Users/Public (given with --public)."},
        {"--json --public", nullptr, false, 2, "--public needs a folder"},
        {"--jsn", nullptr, false, 2, "unknown argument --jsn"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        CDoctorSandbox sandbox("C:/Users/Public");
        ASSERT_TRUE(sandbox.IsValid());
        if (c.breakIt) {
            sandbox.SetModified(sandbox.InRoot("GoZApps/Figmora/GoZBrushToFM.exe"), 2017, 3, 1, 9, 0);
        }
        const CRun run = RunDoctor(QString(c.arguments).split(' '), sandbox, c.publicVariable);
        EXPECT_EQ(run.m_nExitCode, c.exitCode) << run.m_kOut.toStdString() << run.m_kErr.toStdString();
        if (c.exitCode == 2) {
            EXPECT_TRUE(run.m_kErr.contains(c.says)) << run.m_kErr.toStdString();
            continue;
        }
        if (!QByteArray(c.arguments).startsWith("--json")) {
            EXPECT_TRUE(run.m_kOut.startsWith(c.says)) << run.m_kOut.toStdString();
            continue;
        }
        QJsonParseError error {};
        const QJsonObject json = QJsonDocument::fromJson(run.m_kOut, &error).object();
        ASSERT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString() << "\n"
                                                         << run.m_kOut.toStdString();
        EXPECT_EQ(json["exitCode"].toInt(-1), c.exitCode);
        EXPECT_EQ(json["canRoundTrip"].toBool(), c.exitCode == 0);
        EXPECT_EQ(json["publicFolder"]["source"].toString(), c.says);
        EXPECT_EQ(json["returnRoot"]["sameAsRoot"].toString(), c.exitCode == 0 || c.breakIt ? "yes" : "not checked");
        bool stale = false;
        for (const QJsonValue& problem : json["problems"].toArray()) {
            stale = stale || problem["id"].toString() == "launcher-stale";
        }
        EXPECT_EQ(stale, c.breakIt);
    }
}

} // namespace
