// The demo as a user runs it: after the two sends it tells the whole round trip of the props
// and the expression round trip of the character's face.
#include "QtPrinters.h"

#include <QProcess>
#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

TEST(demoProgram, TellsBothRoundTripsAfterTheSends)
{
    QProcess host;
    host.start(QStringLiteral(MVGOZ_HOST_PROGRAM), {QStringLiteral("demo"), QStringLiteral("--plugin"),
                                                    QStringLiteral(MVGOZ_PLUGIN_MODULE)});
    ASSERT_TRUE(host.waitForFinished(120000));
    EXPECT_EQ(host.exitCode(), 0) << host.readAllStandardError().toStdString();
    const QString story = QString::fromUtf8(host.readAllStandardOutput());
    const QStringList lines = story.split(QLatin1Char('\n'));
    const auto has = [&lines](const QString& text) {
        return std::any_of(lines.begin(), lines.end(), [&text](const QString& line) { return line.contains(text); });
    };
    // In the order the story tells them.
    const QStringList expected = {
        QStringLiteral("Send 2 (step 29)"),
        QStringLiteral("ZBrush (the stand-in) sculpted what it got and sent back 3 meshes:"),
        QStringLiteral("    - Rock: 4 vertices, 4 faces in (0, 0, 0) to (1, 1, 1) (not a name it was sent)"),
        QStringLiteral("told the host, which acknowledged it."),
        QStringLiteral("Step 46: import what ZBrush sent back"), // an import is no send
        QStringLiteral("  At step 35 ZBrush's return came in: the return launcher told the host that"),
        QStringLiteral("    Table qtFMGoZBackFromZBrushTableWidget, 3 row(s):"),
        QStringLiteral("Hero (or 7 others)"),
        QStringLiteral("The table changed: row 2 (Rock) Action: \"Create Cloth\" -> \"Create Prop\"."),
        QStringLiteral("    - \"Desk Lamp\" (lamp): mesh 4 vertices, 4 faces in (0, 0, 0) to (1, 1, 1) -> 4 vertices, 4 faces in "
                       "(0, 1, 0) to (2, 3, 2)"),
        QStringLiteral("  What the scene gained:"),
        QStringLiteral("    - \"Rock\" (goz_prop_1): 4 vertices, 4 faces in (0, 0, 0) to (1, 1, 1)"),
        QStringLiteral("  At step 48 the demo told ZBrush (the stand-in) what to send back from now on: every mesh it gets, "
                       "scaled by 1.5 and moved by (0, 0, 0.25)."),
        QStringLiteral("the plug-in selected \"Hero_EyeOcclusion\", \"Hero_Hair\", \"Hero_Teeth\"."),
        QStringLiteral("    - Hero_EyeOcclusion.mvMotionPlus (object hero, its pose): new"),
        QStringLiteral("Dialog \"ZBrushToFMDlg\" (Receive from ZBrush) at step 57 is hidden"),
        QStringLiteral("  The host loaded the motion C:/Users/Public/Pixologic/GoZProjects/Default/Hero_EyeOcclusion.mvMotionPlus."),
        QStringLiteral("    - \"Hero_Hair\" (hero_hair): mesh 5 vertices, 5 faces"),
        QStringLiteral("    - \"Hero_Element50\" (hero_element_50): no geometry; eye-element fittings 1"),
        QStringLiteral("  - returned by ZBrush: Desk_Lamp_2.GoZ, "),
        QStringLiteral("Every step succeeded."),
    };
    int from = 0;
    for (const QString& text : expected) {
        const auto found = std::find_if(lines.begin() + from, lines.end(), [&text](const QString& line) { return line.contains(text); });
        ASSERT_NE(found, lines.end()) << "missing after line " << from << ": " << text.toStdString() << "\n" << story.toStdString();
        from = static_cast<int>(found - lines.begin());
    }
    // The bridge programs belong to the send that started them.
    EXPECT_FALSE(has(QStringLiteral("Other bridge programs"))) << story.toStdString();
    // The vase row's target goes to the lamp and back, the lamp row's the other way: they swap.
    EXPECT_TRUE(has(QStringLiteral("Target: \"Desk Lamp\" -> \"Vase\"; row 1 (")) &&
                has(QStringLiteral("Target: \"Vase\" -> \"Desk Lamp\"; row 1 (")))
        << story.toStdString();
}

} // namespace
