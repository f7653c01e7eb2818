// SPDX-License-Identifier: MIT
// Queries on an open database: SQL given as lines, ":name" parameters bound by
// the driver (never spliced into the text), rows read first to last, and
// fields (Field.h) looked up by name without regard to case.
#pragma once

#include <memory>
#include <vector>

#include <QAnyStringView>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include "qalpack/db/Backend.h"
#include "qalpack/db/DatabaseLink.h"
#include "qalpack/db/Field.h"
#include "qalpack/db/Param.h"
#include "qalpack/qalpack_export.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

class TDatabase;

// A query on one database: the TDatabase it is bound to, or the database
// its DatabaseName names (a connected TDatabase of the default session, or
// an alias the session opens). Binding is the sure way when two databases
// share a name; a query whose bound database is deleted raises
// DatabaseError when it next runs.
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
    // Bound to `database` from the start (see SetDatabase).
    explicit TQuery(TDatabase& database, QObject* owner = nullptr);
    ~TQuery() override;

    // The bound database's name, or the name given to SetDatabaseName.
    [[nodiscard]] const QString& DatabaseName() const;
    // Runs the query on `database` itself, whatever other database shares
    // its name; `database` need not outlive the query. Closes the query
    // first when it is open.
    void SetDatabase(TDatabase& database);
    // Finds the database by name in the default session when the query
    // runs; drops a binding made with SetDatabase. Closes the query first
    // when it is open.
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
    // be found or opened (or the bound one has been deleted), a parameter has
    // no value, the server refuses the statement, or the statement returns no
    // rows (use ExecSQL for those).
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
    [[nodiscard]] std::vector<backend::Value> boundValues(const Statement& statement) const;
    [[nodiscard]] QString errorName() const;

    internal::DatabaseLink link_;
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
