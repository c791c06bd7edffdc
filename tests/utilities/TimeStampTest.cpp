#include "TimeStamp.h"

#include <gtest/gtest.h>

#include <QDateTime>

namespace {

TEST(TimeStamp, FormatsDateAndClockWithDoubleColon)
{
    const struct
    {
        QDateTime when;
        const char* text;
    } cases[] = {
        {QDateTime(QDate(2026, 11, 15), QTime(17, 5, 9)), "Date:2026/11/15 Time:17:05::09"},
        {QDateTime(QDate(1999, 12, 31), QTime(23, 59, 59, 999)), "Date:1999/12/31 Time:23:59::59"},
        {QDateTime(QDate(2000, 2, 29), QTime(0, 0, 0)), "Date:2000/02/29 Time:00:00::00"},
        {QDateTime(QDate(2026, 6, 1), QTime(12, 0, 0), Qt::UTC), "Date:2026/06/01 Time:12:00::00"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(FormatTimeStamp(c.when).toStdString(), c.text);
    }
}

TEST(TimeStamp, CurrentTextIsTheLocalClock)
{
    // The clock may tick during the call: the text must match one second in the window.
    const QDateTime before = QDateTime::currentDateTime();
    const QString text = GetTimeStampText();
    const QDateTime after = QDateTime::currentDateTime();

    QStringList candidates;
    for (QDateTime t = before.addMSecs(-before.time().msec()); t <= after; t = t.addSecs(1)) {
        candidates << FormatTimeStamp(t);
    }
    EXPECT_TRUE(candidates.contains(text)) << text.toStdString() << " not in "
                                           << candidates.join(QStringLiteral(", ")).toStdString();
}

} // namespace
