// SPDX-License-Identifier: MIT
// Values as text, the way the drivers hand them over and take them: strict
// readers of numbers, booleans and date-times in driver text, the calendar
// stamp they are read into (without QDateTime's time-zone look-ups), and the
// writers of display and parameter text. Fields and parameters convert
// through it on access, the same way for every driver.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringView>

#include "qalpack/db/Backend.h"

namespace qal::backend {

// A calendar date and wall-clock time as a database returns it, without the
// cost of QDateTime's time-zone look-ups.
struct Stamp
{
    int year = 1899;
    int month = 12;
    int day = 30;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int microsecond = 0;
    int offsetSeconds = 0;
    bool hasOffset = false;
};

// Strict readers of driver text; blanks around the value are allowed. False
// when the text is not such a value.
[[nodiscard]] bool parseInteger(const char* text, qsizetype size, qint64& value);
[[nodiscard]] bool parseReal(const char* text, qsizetype size, double& value);
// "t"/"true"/"1"/"y"/"yes"/"on" and their opposites, case-insensitive.
[[nodiscard]] bool parseBoolean(const char* text, qsizetype size, bool& value);
// "yyyy-mm-dd", "yyyy-mm-dd hh:nn[:ss[.ffffff]]" (or 'T' between), or a time
// alone, each optionally followed by "Z" or a UTC offset ("+08", "-05:30").
[[nodiscard]] bool parseStamp(const char* text, qsizetype size, Stamp& stamp);
[[nodiscard]] Stamp stampFromUnixSeconds(double seconds);
[[nodiscard]] Stamp stampFromJulianDay(double day);
[[nodiscard]] Stamp stampFromDateTime(const QDateTime& value);
// Local time, or a fixed offset when the stamp carries one. A time of day
// alone lies on 1899-12-30.
[[nodiscard]] QDateTime toDateTime(const Stamp& stamp);
// `stamp` laid out by a date-time format ("hh:nn:ss", "yyyy-mm-dd", ...).
[[nodiscard]] QString formatStamp(QStringView format, const Stamp& stamp);
// "yyyy-mm-dd hh:nn:ss" (".zzz" added when there are milliseconds); the date
// or the time alone for date and time fields.
[[nodiscard]] QString stampText(const Stamp& stamp, ValueClass kind);
// A float as the desk shows numbers: up to 15 significant digits, "2" for
// 2.0, exponents as "1E20".
[[nodiscard]] QString formatFloat(double value);
// The text form of a parameter value that drivers bind as text: numbers in
// their shortest exact form, booleans as "true"/"false", date-times as
// "yyyy-mm-dd hh:nn:ss[.zzz]". Empty for null.
[[nodiscard]] QByteArray valueText(const Value& value);

} // namespace qal::backend
