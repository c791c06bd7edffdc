// A stress run through the reference host: a large scene, many meshes sent, sculpted and sent
// back, imported, then sent again with Relink, round after round, while ZBrush's object list
// is padded to a large size with names that have no file. After each send and each import
// the host records its time and memory, and this program prints them round by round, so
// growth from one round trip to the next shows. Run it on the sanitizer build to have the
// leak checker look at the same path.
//
//   mvgoz_stress [--objects N] [--sent N] [--rounds N] [--list-mb N] [--wait-s N] [--report FILE]
#include "CReport.h"
#include "CRunSession.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QFont>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

using namespace MV::Host;

namespace {

struct CStressSize
{
    int m_iObjects = 10000;
    int m_iSent = 1000;
    int m_iRounds = 5;
    int m_iListMegabytes = 0;
    int m_iWaitSeconds = 1200; // for each return
};

QString Id(int i)
{
    return QStringLiteral("prop_%1").arg(i, 5, 10, QLatin1Char('0'));
}

// A 10 x 10 grid of quads, lifted a little per object so no two meshes are equal.
QJsonObject GridMesh(int seed)
{
    QJsonArray vertices;
    QJsonArray faces;
    constexpr int kSide = 10;
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            vertices.append(QJsonArray{x, y, (seed % 97) * 0.01 + (x * y) * 0.001});
        }
    }
    for (int y = 0; y + 1 < kSide; ++y) {
        for (int x = 0; x + 1 < kSide; ++x) {
            const int corner = y * kSide + x;
            faces.append(QJsonArray{corner, corner + 1, corner + kSide + 1, corner + kSide});
        }
    }
    return QJsonObject{{QStringLiteral("vertices"), vertices}, {QStringLiteral("faces"), faces}};
}

// ZBrush lists the sent meshes and then names that get no file, up to listBytes in all.
QJsonObject PaddedReturn(const CStressSize& size)
{
    QJsonArray extra;
    QJsonArray missing;
    const qint64 target = qint64(size.m_iListMegabytes) * 1024 * 1024;
    qint64 bytes = 0;
    for (int i = 0; bytes < target; ++i) {
        const QString name = QStringLiteral("Unsent_Sculpt_Fragment_With_A_Long_Name_%1").arg(i, 8, 10, QLatin1Char('0'));
        extra.append(QJsonObject{{QStringLiteral("name"), name}});
        missing.append(name);
        bytes += name.size() + 1;
    }
    return QJsonObject{{QStringLiteral("extra"), extra}, {QStringLiteral("missing"), missing},
                       {QStringLiteral("scale"), 1.01}};
}

QByteArray Scene(const CStressSize& size)
{
    QJsonArray objects;
    for (int i = 0; i < size.m_iObjects; ++i) {
        objects.append(QJsonObject{{QStringLiteral("id"), Id(i)},
                                   {QStringLiteral("name"), QStringLiteral("Prop_%1").arg(i)},
                                   {QStringLiteral("kind"), 3},
                                   {QStringLiteral("mesh"), GridMesh(i)}});
    }
    const QJsonObject registry{
        {QStringLiteral("SOFTWARE\\Quorvane\\Figmora\\4.0"),
         QJsonObject{{QStringLiteral("Main Program"), QStringLiteral("C:\\Program Files\\Figmora\\Figmora.exe")}}}};
    return QJsonDocument(QJsonObject{{QStringLiteral("objects"), objects},
                                     {QStringLiteral("registry"), registry},
                                     {QStringLiteral("zbrush_return"), PaddedReturn(size)}})
        .toJson(QJsonDocument::Compact);
}

QJsonObject Step(const char* name, const QString& comment = QString())
{
    QJsonObject step{{QStringLiteral("step"), QLatin1String(name)}};
    if (!comment.isEmpty()) {
        step.insert(QStringLiteral("comment"), comment);
    }
    return step;
}

QByteArray Script(const CStressSize& size)
{
    QJsonArray ids;
    for (int i = 0; i < size.m_iSent; ++i) {
        ids.append(Id(i));
    }
    QJsonArray steps{Step("record_usage", QStringLiteral("loaded"))};
    for (int round = 1; round <= size.m_iRounds; ++round) {
        QJsonObject select = Step("select");
        select.insert(QStringLiteral("ids"), ids);
        QJsonObject trigger = Step("trigger");
        trigger.insert(QStringLiteral("action"), QStringLiteral("qtGoZAction"));
        steps << select << trigger;
        if (round > 1) {
            // Every row was sent before: relink them all through the all-rows choice.
            QJsonObject relink = Step("set_combo_index");
            relink.insert(QStringLiteral("widget"), QStringLiteral("qtTemplateComboBox"));
            relink.insert(QStringLiteral("index"), 1);
            steps << relink;
        }
        QJsonObject send = Step("click");
        send.insert(QStringLiteral("widget"), QStringLiteral("qtGoZButton"));
        QJsonObject wait = Step("wait_goz_return");
        wait.insert(QStringLiteral("timeout_ms"), size.m_iWaitSeconds * 1000);
        QJsonObject import = Step("click");
        import.insert(QStringLiteral("widget"), QStringLiteral("qtImportButton"));
        import.insert(QStringLiteral("dialog"), QStringLiteral("ZBrushToFMDlg"));
        // The host's call log would otherwise grow with every round and hide what the
        // plug-in keeps.
        steps << send << wait << Step("clear_log") << Step("record_usage", QStringLiteral("round %1 received").arg(round))
              << import << Step("clear_log") << Step("record_usage", QStringLiteral("round %1 imported").arg(round));
        // The padded names have no file, so the import stops at the first of them and the
        // dialog stays open; the user closes it before the next send.
        QJsonObject close = Step("close_dialog");
        close.insert(QStringLiteral("dialog"), QStringLiteral("ZBrushToFMDlg"));
        steps << close;
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("watchdog_ms"), 3600000}, {QStringLiteral("steps"), steps}})
        .toJson(QJsonDocument::Compact);
}

double Number(const QJsonObject& detail, const char* key)
{
    return detail.value(QLatin1String(key)).toDouble(-1);
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption objects(QStringLiteral("objects"), QStringLiteral("scene objects"), QStringLiteral("N"), QStringLiteral("10000"));
    const QCommandLineOption sent(QStringLiteral("sent"), QStringLiteral("meshes sent each round"), QStringLiteral("N"), QStringLiteral("1000"));
    const QCommandLineOption rounds(QStringLiteral("rounds"), QStringLiteral("round trips"), QStringLiteral("N"), QStringLiteral("5"));
    const QCommandLineOption listMb(QStringLiteral("list-mb"), QStringLiteral("pad ZBrush's object list to N MB"), QStringLiteral("N"), QStringLiteral("0"));
    const QCommandLineOption wait(QStringLiteral("wait-s"), QStringLiteral("how long to wait for each return"), QStringLiteral("N"), QStringLiteral("1200"));
    const QCommandLineOption reportFile(QStringLiteral("report"), QStringLiteral("where to save the host's report"), QStringLiteral("FILE"));
    parser.addOptions({objects, sent, rounds, listMb, wait, reportFile});
    parser.process(app);
    CStressSize size;
    size.m_iObjects = parser.value(objects).toInt();
    size.m_iSent = parser.value(sent).toInt();
    size.m_iRounds = parser.value(rounds).toInt();
    size.m_iListMegabytes = parser.value(listMb).toInt();
    size.m_iWaitSeconds = parser.value(wait).toInt();
    if (size.m_iObjects < 1 || size.m_iSent < 1 || size.m_iSent > size.m_iObjects || size.m_iRounds < 1 ||
        size.m_iListMegabytes < 0 || size.m_iWaitSeconds < 1 || size.m_iWaitSeconds > 3000) {
        std::fprintf(stderr, "mvgoz_stress: need 1 <= --sent <= --objects, --rounds >= 1, --list-mb >= 0, 1 <= --wait-s <= 3000\n");
        return 2;
    }
    const QString plugin = QStringLiteral(MVGOZ_PLUGIN_DIR "/MVGoZBrush.so");
    if (!QFileInfo(plugin).isFile()) {
        std::fprintf(stderr, "mvgoz_stress: the plug-in module is not built (%s)\n", qPrintable(plugin));
        return 2;
    }

    QElapsedTimer total;
    total.start();
    CRunSession session;
    QString error;
    if (QV::Failed(session.Prepare(Scene(size), Script(size), error))) {
        std::fprintf(stderr, "mvgoz_stress: %s\n", qPrintable(error));
        return 1;
    }
    CRunOptions options;
    options.m_strPlugin = plugin;
    CReport report;
    const QV::Result result = session.Execute(options, report);
    if (parser.isSet(reportFile) && QV::Failed(report.Save(parser.value(reportFile), error))) {
        std::fprintf(stderr, "mvgoz_stress: %s\n", qPrintable(error));
    }

    std::printf("%d objects, %d sent and returned per round, %d rounds, object list padded to %d MB\n",
                size.m_iObjects, size.m_iSent, size.m_iRounds, size.m_iListMegabytes);
    std::printf("%-20s %12s %12s %12s %14s\n", "after", "elapsed ms", "cpu ms", "rss kB", "peak rss kB");
    for (const QJsonValue& value : report.ToJson().value(QStringLiteral("steps")).toArray()) {
        const QJsonObject step = value.toObject();
        if (step.value(QStringLiteral("step")).toString() != QLatin1String("record_usage")) {
            continue;
        }
        const QJsonObject detail = step.value(QStringLiteral("detail")).toObject();
        std::printf("%-20s %12.0f %12.0f %12.0f %14.0f\n", qPrintable(step.value(QStringLiteral("comment")).toString()),
                    Number(detail, "elapsed_ms"), Number(detail, "cpu_ms"), Number(detail, "rss_kb"),
                    Number(detail, "peak_rss_kb"));
    }
    std::printf("whole run including the report: %lld ms\n", static_cast<long long>(total.elapsed()));
    if (QV::Failed(result)) {
        std::fprintf(stderr, "mvgoz_stress: the run failed: %s\n", qPrintable(report.Problems().join(QStringLiteral("; "))));
        return 1;
    }
    return 0;
}
