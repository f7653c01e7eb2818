// SPDX-License-Identifier: MIT
// One column of an open query: its value in the current row, converted only
// when it is read (so a loader pays only for the columns it uses), and the
// display text screens show, laid out by a date-time format.
#pragma once

#include <memory>
#include <optional>

#include <QAnyStringView>
#include <QDateTime>
#include <QString>
#include <QVariant>

#include "qalpack/db/Backend.h"
#include "qalpack/qalpack_export.h"

namespace qal {

namespace backend {
class RepeatedText;
}

class TQuery;

// `value` laid out by a date-time format: "yyyy" "yy" year, "mm" "m" month
// (minutes right after an hour), "mmm" "mmmm" month name, "dd" "d" day,
// "ddd" "dddd" weekday name, "hh" "h" hour, "nn" "n" minutes, "ss" "s"
// seconds, "zzz" "z" milliseconds, "am/pm" "a/p" "ampm" (12-hour clock),
// "c" the whole date and time, "t" "tt" the time; text in quotes and any
// other character as it stands. FormatDateTime("hh:nn:ss", 14:05:09) is
// "14:05:09".
[[nodiscard]] QALPACK_EXPORT QString FormatDateTime(QStringView format, const QDateTime& value);

// One column of an open query. Values are those of the current row and are
// converted when read; at the end of the rows every field reads as null.
// Owned by its query and valid until the query closes.
class QALPACK_EXPORT TField
{
public:
    TField(const TField&) = delete;
    TField& operator=(const TField&) = delete;
    ~TField();

    [[nodiscard]] const QString& FieldName() const;
    [[nodiscard]] TFieldType DataType() const;
    // Position in the result, from 0.
    [[nodiscard]] int Index() const;

    // Null is kept apart from empty text and from 0.
    [[nodiscard]] bool IsNull() const;
    // Text of the value; "" for null. Numbers of float fields read as the
    // desk shows them ("2", "12.5"), booleans as "True"/"False", date-times
    // as "yyyy-mm-dd hh:nn:ss" whatever the driver's own text.
    [[nodiscard]] QString AsString() const;
    // 0 for null; floats are rounded. Throws DatabaseError naming the field
    // when the value is text that is not a number, or does not fit.
    [[nodiscard]] int AsInteger() const;
    [[nodiscard]] qint64 AsLargeInt() const;
    // 0 for null. Throws DatabaseError when the value is not a number.
    [[nodiscard]] double AsFloat() const;
    // AsString, AsInteger and AsFloat, or nothing for null: one look at the
    // value where a reader that keeps what it has on null would otherwise
    // also ask IsNull.
    [[nodiscard]] std::optional<QString> AsOptionalString() const;
    [[nodiscard]] std::optional<int> AsOptionalInteger() const;
    [[nodiscard]] std::optional<double> AsOptionalFloat() const;
    // false for null. Throws DatabaseError when the value is not a truth value.
    [[nodiscard]] bool AsBoolean() const;
    // Invalid for null; local time unless the server sent an offset. Throws
    // DatabaseError when the value is not a date or time.
    [[nodiscard]] QDateTime AsDateTime() const;
    // The value boxed by the field's type: an invalid QVariant for null, int,
    // qlonglong, double, bool, QDateTime, QDate, QTime or QString.
    [[nodiscard]] QVariant Value() const;

    // The layout of the display text of date and time fields (see
    // FormatDateTime); empty means the full "yyyy-mm-dd hh:nn:ss".
    [[nodiscard]] const QString& DisplayFormat() const;
    void SetDisplayFormat(const QString& format);
    // The value as a screen shows it: date-times laid out by DisplayFormat,
    // everything else as AsString; "" for null.
    [[nodiscard]] QString DisplayText() const;

    // Text values that repeat down the column (an account, a dealer, an
    // exchange, a status) come back from AsString as one shared string
    // instead of a new copy per row: less work and less memory over a large
    // result. A column whose values turn out not to repeat stops trying after
    // a few hundred rows. Off by default.
    void SetShareRepeatedText(bool share);
    [[nodiscard]] bool ShareRepeatedText() const { return repeated_ != nullptr; }

private:
    friend class TQuery;
    TField(const TQuery& query, const backend::Cursor& cursor, int index);

    [[nodiscard]] backend::RawValue raw() const;
    [[nodiscard]] QString textOf(const backend::RawValue& value) const;
    [[nodiscard]] qint64 integerValue(const backend::RawValue& value) const;
    [[nodiscard]] int intValue(const backend::RawValue& value) const;
    [[nodiscard]] double floatValue(const backend::RawValue& value) const;
    [[noreturn]] void conversionFailed(const backend::RawValue& value, const char* target) const;

    const TQuery& query_;
    const backend::Cursor& cursor_;
    QString name_;
    QString displayFormat_;
    TFieldType type_;
    backend::ValueClass class_;
    int index_;
    quint32 hash_;
    std::unique_ptr<backend::RepeatedText> repeated_;
};

// End of public API.

namespace internal {

// A hash of a name that ignores the case of ASCII letters, equal for a name
// in UTF-16, UTF-8 or Latin-1. Other characters do not take part; a look-up
// that misses compares every name in full before giving up.
[[nodiscard]] quint32 foldedHash(QAnyStringView name);
// Whether a field name equals `name` without regard to case.
[[nodiscard]] bool sameName(const QString& fieldName, QAnyStringView name);

} // namespace internal

} // namespace qal
