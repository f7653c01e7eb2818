// SPDX-License-Identifier: MIT
// The driver interface under TDatabase, TQuery and TStoredProc: a connection
// that runs statements with positional parameters and a cursor that steps
// through rows and hands out each column as the driver holds it. Conversions
// happen in the field, on access, the same way for every driver.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <variant>

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QStringView>

#include "qalpack/qalpack_export.h"

namespace qal {

class TDatabase;
class TParams;
class TStringList;

// Data types of fields and parameters, named as stored-procedure definitions
// spell them ("ftString", "ftInteger", ...).
enum class TFieldType {
    ftUnknown,
    ftString,
    ftSmallint,
    ftInteger,
    ftWord,
    ftBoolean,
    ftFloat,
    ftCurrency,
    ftBCD,
    ftDate,
    ftTime,
    ftDateTime,
    ftBytes,
    ftVarBytes,
    ftAutoInc,
    ftBlob,
    ftMemo,
    ftFixedChar,
    ftWideString,
    ftLargeint,
    ftTimeStamp,
    ftFMTBcd,
    ftWideMemo,
    ftLongWord,
    ftShortint,
    ftByte,
    ftExtended,
    ftSingle,
};

// Directions of stored-procedure parameters.
enum class TParamType { ptUnknown, ptInput, ptOutput, ptInputOutput, ptResult };

// The type named `name` ("ftDateTime", case-insensitive), or ftUnknown when
// no type has that name.
[[nodiscard]] QALPACK_EXPORT TFieldType FieldTypeFromName(QStringView name);
[[nodiscard]] QALPACK_EXPORT QString FieldTypeName(TFieldType type);
// The direction named `name` ("ptInputOutput", case-insensitive), or
// ptUnknown when no direction has that name.
[[nodiscard]] QALPACK_EXPORT TParamType ParamTypeFromName(QStringView name);
[[nodiscard]] QALPACK_EXPORT QString ParamTypeName(TParamType type);

namespace backend {

// How a field's values are read, whatever the driver's own column type.
enum class ValueClass { Text, Integer, Float, Boolean, Date, Time, DateTime, Binary };
[[nodiscard]] ValueClass classOf(TFieldType type);

// One column of the current row as the driver holds it. Text points into the
// driver's buffer (UTF-8, not terminated) and stays valid until the cursor
// moves or closes.
struct RawValue
{
    enum class Kind : std::uint8_t { Null, Integer, Real, Text };
    Kind kind = Kind::Null;
    qint64 integer = 0;
    double real = 0;
    const char* text = nullptr;
    qsizetype size = 0;
};

// A parameter value on its way to a driver: unset/null, integer, float,
// boolean, text or date-time.
using Value = std::variant<std::monostate, qint64, double, bool, QString, QDateTime>;

// The rows of one statement, read forward.
class Cursor
{
public:
    virtual ~Cursor();
    // Moves to the next row (the first, after opening or rewind); false once
    // past the last row, after which every value reads as null.
    virtual bool next() = 0;
    // Back to before the first row; a driver that streams runs the statement
    // again.
    virtual void rewind() = 0;
    [[nodiscard]] virtual int columnCount() const = 0;
    [[nodiscard]] virtual QString columnName(int column) const = 0;
    // Meaningful once next() has been called: a driver without declared types
    // for computed columns takes the type of the first row's value.
    [[nodiscard]] virtual TFieldType columnType(int column) const = 0;
    [[nodiscard]] virtual RawValue value(int column) const = 0;
};

// An open connection of one driver. Every failure throws DatabaseError
// naming the database the connection was opened for.
class Connection
{
public:
    virtual ~Connection();
    // The text that stands for parameter `index` (0-based) in this driver's
    // SQL: "$1" or "?1".
    [[nodiscard]] virtual QString placeholder(int index) const = 0;
    // Runs one statement and returns its rows; `params` are bound by
    // position. Throws when the statement fails.
    [[nodiscard]] virtual std::unique_ptr<Cursor> openCursor(
        const QString& sql, std::span<const Value> params)
        = 0;
    // Runs statements that return no rows and gives the number of rows the
    // last one changed. Without parameters `sql` may hold several statements.
    virtual qint64 execute(const QString& sql, std::span<const Value> params) = 0;
    // Runs the stored procedure `name` with the bound input parameters of
    // `params` and fills its output parameters; `database` is the connection's
    // owner, handed to procedures that run on the client.
    virtual void callProcedure(const QString& name, TParams& params, TDatabase& database) = 0;
    [[nodiscard]] virtual bool inTransaction() const = 0;
    // Commits the open transaction. When the commit fails the transaction is
    // rolled back and the connection is left in autocommit, then the failure
    // is thrown: nothing of it can be committed later by accident.
    virtual void commit() = 0;
    // The tables a plain table name reaches: SQLite's own tables left out,
    // the first schema of the server's search path.
    [[nodiscard]] virtual QStringList tableNames() = 0;

protected:
    // The first column of every row of `sql`, as text.
    [[nodiscard]] QStringList firstColumn(const QString& sql);
};

// Opens a connection of `driver` ("SQLITE", "POSTGRES"; case-insensitive)
// with its "name=value" parameter lines. `database` names the database in
// error messages. Throws DatabaseError for an unknown driver or parameter
// and when the connection cannot be opened.
[[nodiscard]] std::unique_ptr<Connection> openConnection(
    const QString& driver, const TStringList& params, const QString& database);

} // namespace backend
} // namespace qal
