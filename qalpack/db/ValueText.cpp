// SPDX-License-Identifier: MIT
#include "qalpack/db/ValueText.h"

#include <charconv>
#include <cmath>
#include <cstring>

#include <QLocale>

namespace qal::backend {

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// Narrows [begin, end) to the text between surrounding blanks.
void trim(const char*& begin, const char*& end)
{
    while (begin < end && isBlank(*begin))
        ++begin;
    while (end > begin && isBlank(end[-1]))
        --end;
}

bool equalsNoCase(const char* begin, const char* end, const char* word)
{
    const std::size_t length = std::strlen(word);
    if (std::size_t(end - begin) != length)
        return false;
    for (std::size_t i = 0; i < length; ++i) {
        char c = begin[i];
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
        if (c != word[i])
            return false;
    }
    return true;
}

// Reads one to `maxDigits` decimal digits at `p`.
bool readNumber(const char*& p, const char* end, int maxDigits, int& value)
{
    int digits = 0;
    value = 0;
    while (p < end && digits < maxDigits && *p >= '0' && *p <= '9') {
        value = value * 10 + (*p - '0');
        ++p;
        ++digits;
    }
    return digits > 0;
}

bool readExactDigits(const char*& p, const char* end, int count, int& value)
{
    const char* start = p;
    return readNumber(p, end, count, value) && p - start == count;
}

bool readTime(const char*& p, const char* end, Stamp& stamp)
{
    if (!readNumber(p, end, 2, stamp.hour) || p == end || *p != ':')
        return false;
    ++p;
    if (!readExactDigits(p, end, 2, stamp.minute))
        return false;
    if (p < end && *p == ':') {
        ++p;
        if (!readExactDigits(p, end, 2, stamp.second))
            return false;
        if (p < end && (*p == '.' || *p == ',')) {
            ++p;
            int scale = 100000;
            const char* start = p;
            while (p < end && *p >= '0' && *p <= '9') {
                stamp.microsecond += (*p - '0') * scale;
                scale /= 10;
                ++p;
            }
            if (p == start)
                return false;
        }
    }
    return stamp.hour < 24 && stamp.minute < 60 && stamp.second < 61;
}

bool readOffset(const char*& p, const char* end, Stamp& stamp)
{
    if (p < end && *p == ' ')
        ++p;
    if (p == end)
        return true;
    if (*p == 'Z' || *p == 'z') {
        ++p;
        stamp.hasOffset = true;
        return true;
    }
    if (*p != '+' && *p != '-')
        return false;
    const int sign = *p == '-' ? -1 : 1;
    ++p;
    int hours = 0;
    int minutes = 0;
    int seconds = 0;
    if (!readExactDigits(p, end, 2, hours))
        return false;
    if (p < end && *p == ':')
        ++p;
    if (p < end && *p >= '0' && *p <= '9') {
        if (!readExactDigits(p, end, 2, minutes))
            return false;
        if (p < end && *p == ':')
            ++p;
        if (p < end && *p >= '0' && *p <= '9' && !readExactDigits(p, end, 2, seconds))
            return false;
    }
    stamp.hasOffset = true;
    stamp.offsetSeconds = sign * (hours * 3600 + minutes * 60 + seconds);
    return true;
}

int daysInMonth(int year, int month)
{
    static constexpr int days[] = { 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31 };
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : days[month - 1];
}

// Days since 1970-01-01 of a proleptic Gregorian date, and back.
qint64 daysFromCivil(qint64 y, int m, int d)
{
    y -= m <= 2;
    const qint64 era = (y >= 0 ? y : y - 399) / 400;
    const qint64 yoe = y - era * 400;
    const qint64 doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const qint64 doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

void civilFromDays(qint64 z, Stamp& stamp)
{
    z += 719468;
    const qint64 era = (z >= 0 ? z : z - 146096) / 146097;
    const qint64 doe = z - era * 146097;
    const qint64 yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const qint64 doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const qint64 mp = (5 * doy + 2) / 153;
    const int d = int(doy - (153 * mp + 2) / 5 + 1);
    const int m = int(mp < 10 ? mp + 3 : mp - 9);
    stamp.year = int(yoe + era * 400 + (m <= 2));
    stamp.month = m;
    stamp.day = d;
}

// Appends `value` with at least `width` digits, without allocating.
void appendPadded(QString& out, qint64 value, int width)
{
    char16_t digits[24];
    int count = 0;
    const bool negative = value < 0;
    quint64 rest = negative ? quint64(0) - quint64(value) : quint64(value);
    do {
        digits[count++] = char16_t(u'0' + rest % 10);
        rest /= 10;
    } while (rest != 0);
    while (count < width && count < 20)
        digits[count++] = u'0';
    if (negative)
        out += u'-';
    while (count > 0)
        out += QChar(digits[--count]);
}

constexpr const char* shortMonths[]
    = { "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec" };
constexpr const char* longMonths[] = { "January", "February", "March", "April", "May", "June", "July",
    "August", "September", "October", "November", "December" };
constexpr const char* shortDays[] = { "Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat" };
constexpr const char* longDays[]
    = { "Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday" };

int weekday(const Stamp& stamp)
{
    const qint64 days = daysFromCivil(stamp.year, stamp.month, stamp.day);
    return int(((days % 7) + 11) % 7); // 1970-01-01 was a Thursday
}

char16_t asciiLower(char16_t c)
{
    return c >= u'A' && c <= u'Z' ? char16_t(c - u'A' + u'a') : c;
}

bool startsWithNoCase(QStringView text, qsizetype at, QStringView word)
{
    return text.size() - at >= word.size()
        && text.mid(at, word.size()).compare(word, Qt::CaseInsensitive) == 0;
}

// Whether a format shows the hour on a 12-hour clock.
bool hasHalfDayMarker(QStringView format)
{
    if (!format.contains(u'a') && !format.contains(u'A'))
        return false;
    return format.contains(u"am/pm", Qt::CaseInsensitive) || format.contains(u"a/p", Qt::CaseInsensitive)
        || format.contains(u"ampm", Qt::CaseInsensitive);
}

} // namespace

bool parseInteger(const char* text, qsizetype size, qint64& value)
{
    const char* begin = text;
    const char* end = text + size;
    trim(begin, end);
    if (begin < end && *begin == '+')
        ++begin;
    if (begin == end)
        return false;
    const auto [ptr, error] = std::from_chars(begin, end, value);
    return error == std::errc() && ptr == end;
}

bool parseReal(const char* text, qsizetype size, double& value)
{
    const char* begin = text;
    const char* end = text + size;
    trim(begin, end);
    if (begin < end && *begin == '+')
        ++begin;
    if (begin == end)
        return false;
    const auto [ptr, error] = std::from_chars(begin, end, value);
    return error == std::errc() && ptr == end;
}

bool parseBoolean(const char* text, qsizetype size, bool& value)
{
    const char* begin = text;
    const char* end = text + size;
    trim(begin, end);
    for (const char* word : { "t", "true", "1", "y", "yes", "on" }) {
        if (equalsNoCase(begin, end, word)) {
            value = true;
            return true;
        }
    }
    for (const char* word : { "f", "false", "0", "n", "no", "off" }) {
        if (equalsNoCase(begin, end, word)) {
            value = false;
            return true;
        }
    }
    return false;
}

bool parseStamp(const char* text, qsizetype size, Stamp& stamp)
{
    const char* p = text;
    const char* end = text + size;
    trim(p, end);
    stamp = Stamp();

    const char* scan = p;
    while (scan < end && *scan >= '0' && *scan <= '9')
        ++scan;
    const bool timeOnly = scan < end && *scan == ':';
    if (!timeOnly) {
        if (!readNumber(p, end, 6, stamp.year) || p == end || *p != '-')
            return false;
        ++p;
        if (!readNumber(p, end, 2, stamp.month) || p == end || *p != '-')
            return false;
        ++p;
        if (!readNumber(p, end, 2, stamp.day))
            return false;
        if (stamp.month < 1 || stamp.month > 12 || stamp.day < 1
            || stamp.day > daysInMonth(stamp.year, stamp.month))
            return false;
        if (p == end)
            return true;
        if (*p != ' ' && *p != 'T' && *p != 't')
            return false;
        ++p;
    }
    return readTime(p, end, stamp) && readOffset(p, end, stamp) && p == end;
}

Stamp stampFromUnixSeconds(double seconds)
{
    Stamp stamp;
    const double micros = std::round(seconds * 1e6);
    const qint64 total = qint64(micros);
    qint64 days = total / 86400000000LL;
    qint64 rest = total % 86400000000LL;
    if (rest < 0) {
        rest += 86400000000LL;
        --days;
    }
    civilFromDays(days, stamp);
    stamp.microsecond = int(rest % 1000000);
    rest /= 1000000;
    stamp.second = int(rest % 60);
    stamp.minute = int(rest / 60 % 60);
    stamp.hour = int(rest / 3600);
    return stamp;
}

Stamp stampFromJulianDay(double day)
{
    // A Julian day number carries about ten microseconds of precision here:
    // round to the millisecond so that 14:05:09 never shows as 14:05:08.
    const double seconds = (day - 2440587.5) * 86400.0;
    return stampFromUnixSeconds(std::round(seconds * 1000.0) / 1000.0);
}

Stamp stampFromDateTime(const QDateTime& value)
{
    Stamp stamp;
    const QDate date = value.date();
    const QTime time = value.time();
    stamp.year = date.year();
    stamp.month = date.month();
    stamp.day = date.day();
    stamp.hour = time.hour();
    stamp.minute = time.minute();
    stamp.second = time.second();
    stamp.microsecond = time.msec() * 1000;
    if (value.timeSpec() != Qt::LocalTime) {
        stamp.hasOffset = true;
        stamp.offsetSeconds = value.offsetFromUtc();
    }
    return stamp;
}

QDateTime toDateTime(const Stamp& stamp)
{
    const QDate date(stamp.year, stamp.month, stamp.day);
    const QTime time(stamp.hour, stamp.minute, stamp.second, stamp.microsecond / 1000);
    if (stamp.hasOffset)
        return QDateTime(date, time, Qt::OffsetFromUTC, stamp.offsetSeconds);
    return QDateTime(date, time, Qt::LocalTime);
}

namespace {

// "hh:nn:ss", the time of day every blotter row shows: written straight
// into a string of its final size, which is most of a reload's date work.
bool isClockFormat(QStringView format)
{
    return format.size() == 8
        && (format.compare(u"hh:nn:ss", Qt::CaseInsensitive) == 0
            || format.compare(u"hh:mm:ss", Qt::CaseInsensitive) == 0);
}

QString clockText(const Stamp& stamp)
{
    QString out(8, Qt::Uninitialized);
    QChar* at = out.data();
    const auto two = [&at](int value) {
        *at++ = QChar(u'0' + value / 10 % 10);
        *at++ = QChar(u'0' + value % 10);
    };
    two(stamp.hour);
    *at++ = u':';
    two(stamp.minute);
    *at++ = u':';
    two(stamp.second);
    return out;
}

} // namespace

QString formatStamp(QStringView format, const Stamp& stamp)
{
    if (isClockFormat(format) && stamp.hour >= 0 && stamp.hour < 100)
        return clockText(stamp);
    QString out;
    out.reserve(format.size() + 8);
    const bool halfDay = hasHalfDayMarker(format);
    const int clockHour = halfDay ? (stamp.hour % 12 == 0 ? 12 : stamp.hour % 12) : stamp.hour;
    const bool pm = stamp.hour >= 12;
    bool afterHour = false;

    qsizetype i = 0;
    while (i < format.size()) {
        const QChar c = format[i];
        const char16_t lower = asciiLower(c.unicode());
        if (c == u'"' || c == u'\'') {
            const qsizetype close = format.indexOf(c, i + 1);
            const qsizetype stop = close < 0 ? format.size() : close;
            out += format.mid(i + 1, stop - i - 1);
            i = stop + 1;
            continue;
        }
        if (lower == u'a') {
            if (startsWithNoCase(format, i, u"am/pm")) {
                const bool upper = format[i].isUpper();
                out += pm ? (upper ? u"PM" : u"pm") : (upper ? u"AM" : u"am");
                i += 5;
            } else if (startsWithNoCase(format, i, u"a/p")) {
                const bool upper = format[i].isUpper();
                out += pm ? (upper ? u"P" : u"p") : (upper ? u"A" : u"a");
                i += 3;
            } else if (startsWithNoCase(format, i, u"ampm")) {
                out += pm ? u"PM" : u"AM";
                i += 4;
            } else {
                out += c;
                ++i;
            }
            continue;
        }
        qsizetype run = 1;
        while (i + run < format.size() && asciiLower(format[i + run].unicode()) == lower)
            ++run;
        switch (lower) {
        case u'y':
            if (run <= 2)
                appendPadded(out, stamp.year % 100, 2);
            else
                appendPadded(out, stamp.year, 4);
            break;
        case u'm':
            if (afterHour && run <= 2)
                appendPadded(out, stamp.minute, int(run));
            else if (run <= 2)
                appendPadded(out, stamp.month, int(run));
            else
                out += QLatin1String(run == 3 ? shortMonths[stamp.month - 1] : longMonths[stamp.month - 1]);
            break;
        case u'd':
            if (run <= 2)
                appendPadded(out, stamp.day, int(run));
            else if (run == 3)
                out += QLatin1String(shortDays[weekday(stamp)]);
            else if (run == 4)
                out += QLatin1String(longDays[weekday(stamp)]);
            else
                out += stampText(stamp, ValueClass::Date);
            break;
        case u'h':
            appendPadded(out, clockHour, run >= 2 ? 2 : 1);
            break;
        case u'n':
            appendPadded(out, stamp.minute, run >= 2 ? 2 : 1);
            break;
        case u's':
            appendPadded(out, stamp.second, run >= 2 ? 2 : 1);
            break;
        case u'z':
            appendPadded(out, stamp.microsecond / 1000, run >= 3 ? 3 : 1);
            break;
        case u'c':
            out += formatStamp(u"yyyy-mm-dd hh:nn:ss", stamp);
            break;
        case u't':
            out += formatStamp(run >= 2 ? u"hh:nn:ss" : u"hh:nn", stamp);
            break;
        default:
            out += format.mid(i, run);
            i += run;
            continue; // literal text keeps an hour's claim on a following "m"
        }
        afterHour = lower == u'h';
        i += run;
    }
    return out;
}

QString stampText(const Stamp& stamp, ValueClass kind)
{
    if (kind == ValueClass::Date)
        return formatStamp(u"yyyy-mm-dd", stamp);
    QString text = formatStamp(kind == ValueClass::Time ? u"hh:nn:ss" : u"yyyy-mm-dd hh:nn:ss", stamp);
    if (stamp.microsecond / 1000 != 0)
        text += formatStamp(u".zzz", stamp);
    return text;
}

QString formatFloat(double value)
{
    if (std::isnan(value))
        return QStringLiteral("NAN");
    if (std::isinf(value))
        return value < 0 ? QStringLiteral("-INF") : QStringLiteral("INF");
    QString text = QString::number(value, 'g', 15);
    const qsizetype e = text.indexOf(u'e');
    if (e < 0)
        return text;
    // "1.5e-05" -> "1.5E-5", "1e+20" -> "1E20"
    QString exponent = text.mid(e + 1);
    const bool negative = exponent.startsWith(u'-');
    exponent.remove(0, 1);
    while (exponent.size() > 1 && exponent.startsWith(u'0'))
        exponent.remove(0, 1);
    return text.left(e) + (negative ? QStringLiteral("E-") : QStringLiteral("E")) + exponent;
}

QByteArray valueText(const Value& value)
{
    struct Visitor
    {
        QByteArray operator()(std::monostate) const { return {}; }
        QByteArray operator()(qint64 v) const { return QByteArray::number(v); }
        QByteArray operator()(double v) const
        {
            return QString::number(v, 'g', QLocale::FloatingPointShortest).toLatin1();
        }
        QByteArray operator()(bool v) const
        {
            return v ? QByteArrayLiteral("true") : QByteArrayLiteral("false");
        }
        QByteArray operator()(const QString& v) const { return v.toUtf8(); }
        QByteArray operator()(const QDateTime& v) const
        {
            const Stamp stamp = stampFromDateTime(v);
            QString text = stampText(stamp, ValueClass::DateTime);
            if (stamp.hasOffset) {
                const int offset = std::abs(stamp.offsetSeconds);
                text += QString::asprintf(
                    "%c%02d:%02d", stamp.offsetSeconds < 0 ? '-' : '+', offset / 3600, offset / 60 % 60);
            }
            return text.toUtf8();
        }
    };
    return std::visit(Visitor {}, value);
}

} // namespace qal::backend
