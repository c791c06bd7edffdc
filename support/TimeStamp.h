#pragma once

#include <QString>

class QDateTime;

// Local date and time as "Date:2026/11/15 Time:17:05::09".
QString GetTimeStampText();

// The same text for a given date and time (its date and clock fields, no zone conversion).
QString FormatTimeStamp(const QDateTime& dateTime);
