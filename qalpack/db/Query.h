// SPDX-License-Identifier: MIT
// Queries on an open database: SQL given as lines, ":name" parameters bound by
// the driver (never spliced into the text), rows read first to last, and
// fields looked up by name without regard to case. A field converts its value
// only when it is read, so a loader pays only for the columns it uses.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <QAnyStringView>
#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVariant>

#include "qalpack/db/Backend.h"
#include "qalpack/qalpack_export.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

namespace backend {
class RepeatedText;
}

class TDatabase;
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

// A parameter of a query or a stored procedure. A parameter nobody has set
// is unbound: a query refuses to run with it, a stored procedure leaves it
// out so that the server's default applies. Setting a null value (SetValue
// with an invalid QVariant) binds an explicit NULL.
class QALPACK_EXPORT TParam
{
public:
    TParam(const QString& name, TFieldType dataType, TParamType paramType);

    [[nodiscard]] const QString& Name() const;
    [[nodiscard]] TFieldType DataType() const;
    void SetDataType(TFieldType type);
    [[nodiscard]] TParamType ParamType() const;
    void SetParamType(TParamType type);

    [[nodiscard]] bool Bound() const;
    [[nodiscard]] bool IsNull() const;
    // Back to unbound and null.
    void Clear();

    // Each setter binds the parameter and, while its data type is unknown,
    // gives it the setter's type.
    void SetAsString(const QString& value);
    void SetAsInteger(qint64 value);
    void SetAsFloat(double value);
    void SetAsBoolean(bool value);
    void SetAsDateTime(const QDateTime& value);
    // Takes text, integers, floats, booleans and date-times; an invalid or
    // null QVariant binds NULL. Throws DatabaseError for other types.
    void SetValue(const QVariant& value);

    // Readers convert like a field's do: "" / 0 / false / invalid for null;
    // DatabaseError naming the parameter for text that is not a number.
    [[nodiscard]] QString AsString() const;
    [[nodiscard]] int AsInteger() const;
    [[nodiscard]] qint64 AsLargeInt() const;
    [[nodiscard]] double AsFloat() const;
    [[nodiscard]] bool AsBoolean() const;
    [[nodiscard]] QDateTime AsDateTime() const;
    [[nodiscard]] QVariant Value() const;

    // The value as it is handed to a driver (monostate for null).
    [[nodiscard]] const backend::Value& RawValue() const;
    // Sets the value from what a driver returned, converted to DataType (or
    // to `columnType` while DataType is unknown). For output parameters.
    void SetFromRaw(const backend::RawValue& value, TFieldType columnType);

private:
    void assign(backend::Value value, TFieldType type);

    QString name_;
    backend::Value value_;
    TFieldType dataType_;
    TParamType paramType_;
    bool bound_ = false;
};

// The parameters of a query or stored procedure, in order. Names match
// without regard to case.
class QALPACK_EXPORT TParams
{
public:
    TParams();
    ~TParams();
    TParams(const TParams&) = delete;
    TParams& operator=(const TParams&) = delete;

    [[nodiscard]] int Count() const;
    // Throws DatabaseError for an index outside 0..Count-1.
    [[nodiscard]] TParam& Items(int index);
    [[nodiscard]] const TParam& Items(int index) const;
    // Appends a parameter and returns it; the list owns it.
    TParam& CreateParam(TFieldType dataType, const QString& name, TParamType paramType);
    // nullptr when there is no parameter of that name.
    [[nodiscard]] TParam* FindParam(QStringView name);
    [[nodiscard]] const TParam* FindParam(QStringView name) const;
    // Throws DatabaseError naming the parameter when there is none.
    [[nodiscard]] TParam& ParamByName(QStringView name);
    void Clear();

private:
    friend class TQuery;
    std::vector<std::unique_ptr<TParam>> items_;
};

// A query on the database whose DatabaseName it names (a connected
// TDatabase of the default session, or an alias the session opens).
//
// Parameters: ":name" in the SQL (outside quotes and comments; "::" casts
// are left alone) becomes a parameter; the same name twice is one
// parameter. The list follows the SQL: after the lines change, Params and
// ParamByName see the new names, keeping the values of names that stayed.
class QALPACK_EXPORT TQuery : public QObject
{
    Q_OBJECT

public:
    explicit TQuery(QObject* owner = nullptr);
    ~TQuery() override;

    [[nodiscard]] const QString& DatabaseName() const;
    // Closes the query first when it is open.
    void SetDatabaseName(const QString& name);

    // The statement, one line per string; change it only while closed.
    [[nodiscard]] TStringList& SQL();
    [[nodiscard]] const TStringList& SQL() const;

    [[nodiscard]] TParams& Params();
    // Throws DatabaseError naming the database and parameter when the SQL
    // has no such parameter.
    [[nodiscard]] TParam& ParamByName(QStringView name);

    // Runs the statement and moves to its first row; does nothing when the
    // query is open already. Throws DatabaseError when the database cannot
    // be found or opened, a parameter has no value, the server refuses the
    // statement, or the statement returns no rows (use ExecSQL for those).
    void Open();
    // Runs a statement that returns no rows (insert, update, DDL).
    void ExecSQL();
    // The number of rows the last ExecSQL changed.
    [[nodiscard]] qint64 RowsAffected() const;
    void Close();
    [[nodiscard]] bool Active() const;

    // Back to the first row (the statement runs again where the driver
    // streams rows). Throws DatabaseError when the query is closed.
    void First();
    // The next row; at the end Eof turns true and stays so.
    void Next();
    // True when there is no current row: past the last or no rows at all.
    [[nodiscard]] bool Eof() const;

    [[nodiscard]] int FieldCount() const;
    // Throws DatabaseError for an index outside 0..FieldCount-1.
    [[nodiscard]] TField& Fields(int index) const;
    // The field of that name, compared without regard to case; nullptr when
    // the result has none (or the query is closed).
    [[nodiscard]] TField* FindField(QAnyStringView name) const;
    // As FindField, throwing DatabaseError naming the field when missing.
    [[nodiscard]] TField& FieldByName(QAnyStringView name) const;
    // The field names in result order (cleared first).
    void GetFieldNames(TStringList& into) const;
    [[nodiscard]] QStringList FieldNames() const;

private:
    friend class TField;
    friend class TDatabase;

    struct Statement;
    const Statement& statement();
    TDatabase& database();
    [[nodiscard]] std::vector<backend::Value> boundValues(const Statement& statement) const;
    [[nodiscard]] QString errorName() const;

    QString databaseName_;
    TStringList sql_;
    TParams params_;
    std::unique_ptr<Statement> statement_;
    QPointer<TDatabase> database_;
    std::unique_ptr<backend::Cursor> cursor_;
    std::vector<std::unique_ptr<TField>> fields_;
    mutable std::size_t nextField_ = 0;
    qint64 rowsAffected_ = 0;
    bool eof_ = true;
    bool atFirst_ = false;
};

} // namespace qal
