#include "TimeStamp.h"

#include <QDate>
#include <QDateTime>
#include <QTime>

namespace {

// The double colon before the seconds is deliberate: the GoZ files have always carried it.
constexpr char kTimeStampFormat[] = "'Date:'yyyy/MM/dd 'Time:'hh:mm::ss";

} // namespace

QString GetTimeStampText()
{
    // UTC only as a container: the fields are local already, and a local QDateTime could
    // shift a clock time that falls into a daylight-saving gap.
    return FormatTimeStamp(QDateTime(QDate::currentDate(), QTime::currentTime(), Qt::UTC));
}

QString FormatTimeStamp(const QDateTime& dateTime)
{
    return dateTime.toString(QString::fromLatin1(kTimeStampFormat));
}
