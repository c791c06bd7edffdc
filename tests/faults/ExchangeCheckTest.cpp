// The campaign's judge: each rule of CExchangeCheck fires on the damage it is there for, and
// the files a sound round trip leaves pass.
#include "CExchangeCheck.h"
#include "QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

using namespace MV::Faults;

namespace {

const QString kPluginFolder = QStringLiteral(MVGOZ_PLUGIN_DIR);
const QString kProject = QLatin1String(CExchangeCheck::kProject);
const QString kApp = QLatin1String(CExchangeCheck::kApp);

QByteArray Mesh(const char* name)
{
    return QByteArray("GOZ-STANDIN 1\nname=") + name +
           "\nvertices=3\nv 0 0 0\nv 1 0 0\nv 0 1 0\nfaces=1\nf 0 1 2\nend\n";
}

QByteArray Shipped(const QString& name)
{
    QFile file(kPluginFolder + QStringLiteral("/Figmora/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class CWork
{
public:
    CWork()
    {
        Write(kApp + QStringLiteral("GoZ_Info.txt"), Shipped(QStringLiteral("GoZ_Info.txt")));
        Write(kApp + QStringLiteral("GoZBrushToFM.exe"), Shipped(QStringLiteral("GoZBrushToFM.exe")));
        QByteArray config;
        for (const QByteArray& line : Shipped(QStringLiteral("GoZ_Config.txt")).split('\n')) {
            if (!line.isEmpty() && !line.startsWith("PATH")) {
                config += line + '\n';
            }
        }
        Write(kApp + QStringLiteral("GoZ_Config.txt"), config + "PATH = \"C:\\Program Files\\Figmora\\Figmora.exe\"\n");
        Write(QLatin1String(CExchangeCheck::kPixologic) + QStringLiteral("GoZBrush/GoZ_Application.txt"), "Figmora");
        Write(kApp + QStringLiteral("GoZ_ObjectList.txt"), (kProject + QStringLiteral("Vase\n")).toUtf8());
        Write(kProject + QStringLiteral("Vase.goz"), Mesh("Vase"));
        Write(kProject + QStringLiteral("Vase.GoZ"), Mesh("Vase"));
        Write(kProject + QStringLiteral("Vase.mvMotionPlus"), "MOTION-STANDIN 1\nobject=vase\npose=Idle\n");
    }

    void Write(const QString& relative, const QByteArray& bytes) const
    {
        const QString path = m_kFolder.filePath(relative);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
        file.write(bytes);
    }

    QString Path() const { return m_kFolder.path(); }

private:
    QTemporaryDir m_kFolder;
};

// A report whose stand-ins read list and returned file as given.
QJsonObject Report(const QStringList& listRead, const QString& cutReturn = QString())
{
    QJsonObject fromApp{{QStringLiteral("program"), QStringLiteral("GoZBrushFromApp.exe")},
                        {QStringLiteral("object_list"), QJsonArray::fromStringList(listRead)}};
    if (!cutReturn.isEmpty()) {
        fromApp.insert(QStringLiteral("return"),
                       QJsonObject{{QStringLiteral("files"),
                                    QJsonArray{QJsonObject{{QStringLiteral("name"), cutReturn},
                                                           {QStringLiteral("state"), QStringLiteral("truncated")}}}}});
    }
    return QJsonObject{{QStringLiteral("processes"), QJsonArray{fromApp}}};
}

struct CDamage
{
    const char* m_szCase;
    std::function<void(const CWork&)> m_fnDamage;
    QJsonObject m_kReport;
    QSet<QString> m_kExempt;
    const char* m_szProblem; // a piece of the one problem expected; null: none
};

// A damage that writes bytes to a file of the work folder.
std::function<void(const CWork&)> Put(const QString& relative, const QByteArray& bytes)
{
    return [relative, bytes](const CWork& work) { work.Write(relative, bytes); };
}

TEST(ExchangeCheck, EachRuleCatchesItsDamageAndOnlyThat)
{
    const QString list = kApp + QStringLiteral("GoZ_ObjectList.txt");
    const QString config = kApp + QStringLiteral("GoZ_Config.txt");
    const QString application = QLatin1String(CExchangeCheck::kPixologic) + QStringLiteral("GoZBrush/GoZ_Application.txt");
    const QByteArray shippedConfig = Shipped(QStringLiteral("GoZ_Config.txt"));
    const QJsonObject sent = Report({kProject + QStringLiteral("Vase")});
    const CDamage cases[] = {
        {"a sound exchange", [](const CWork&) {}, sent, {}, nullptr},
        {"list cut in a line", Put(list, (kProject + QStringLiteral("Vase")).toUtf8()), sent, {},
         "ends in the middle of a line"},
        {"list names a mesh that is not there", Put(list, (kProject + QStringLiteral("Rock\n")).toUtf8()), sent, {},
         "no Rock.goz is there"},
        {"a missing mesh the fault removed", Put(list, (kProject + QStringLiteral("Rock\n")).toUtf8()), sent,
         {kProject + QStringLiteral("Rock.goz")}, nullptr},
        {"list names a folder elsewhere", Put(list, "C:/Elsewhere/Vase\n"), sent, {}, "outside the project folder"},
        {"returned list of names", Put(list, "Vase\n"), sent, {}, nullptr},
        {"cut mesh", Put(kProject + QStringLiteral("Vase.goz"), Mesh("Vase").left(30)), sent, {}, "Vase.goz is not whole"},
        {"mesh ZBrush cut on purpose", Put(kProject + QStringLiteral("Vase.GoZ"), Mesh("Vase").left(30)),
         Report({kProject + QStringLiteral("Vase")}, QStringLiteral("Vase")), {}, nullptr},
        {"cut pose", Put(kProject + QStringLiteral("Vase.mvMotionPlus"), "MOTION-STANDIN 1\nobj"), sent, {},
         "not a whole pose file"},
        {"Qt's temporary file", Put(list + QStringLiteral(".aB3dE9"), "x"), sent, {}, "temporary file"},
        {"a key file's staged copy", Put(config + QStringLiteral(".~mvgoz12-3"), "x"), sent, {}, "temporary file"},
        {"a Relink copy left aside", Put(kProject + QStringLiteral(".mvgoz-relink/Vase.goz"), Mesh("Vase")), sent, {},
         "stayed aside: Vase.goz"},
        {"a Relink copy that a folder keeps out", Put(kProject + QStringLiteral(".mvgoz-relink/Vase.goz"), Mesh("Vase")),
         sent, {kProject + QStringLiteral("Vase.goz")}, nullptr},
        {"two PATH lines", Put(config, shippedConfig + "PATH = \"x\"\n"), sent, {}, "GoZ_Config.txt is not whole"},
        {"config cut", Put(config, shippedConfig.left(40)), sent, {}, "GoZ_Config.txt is not whole"},
        {"the template as installed", Put(config, shippedConfig), sent, {}, nullptr},
        {"cut application file", Put(application, "Fig"), sent, {}, "holds \"Fig\""},
        {"cut bridge launcher", Put(kApp + QStringLiteral("GoZBrushToFM.exe"), "MZ"), sent, {}, "GoZBrushToFM.exe differs"},
        {"ZBrush read a cut list", [](const CWork&) {}, Report({QStringLiteral("C:/Users/Public/Pixologic/GoZProj")}), {},
         "never exported"},
    };
    for (const CDamage& c : cases) {
        SCOPED_TRACE(c.m_szCase);
        const CWork work;
        c.m_fnDamage(work);
        CExchangeCheck check(kPluginFolder);
        check.SetExempt(c.m_kExempt);
        const QStringList problems = check.Check(work.Path(), c.m_kReport);
        if (c.m_szProblem == nullptr) {
            EXPECT_EQ(QStringList(), problems);
        } else {
            ASSERT_EQ(1, problems.size()) << problems.join(QStringLiteral("\n")).toStdString();
            EXPECT_TRUE(problems.first().contains(QLatin1String(c.m_szProblem))) << problems.first().toStdString();
        }
    }
}

} // namespace
