// SPDX-License-Identifier: MIT
// A stored procedure on an open database: parameters declared with their
// direction and data type (usually from the procedure's INI definition), set
// by name, and output parameters read back after ExecProc. On PostgreSQL the
// procedure is a server function called with named arguments; on SQLite it is
// a procedure registered in C++ (SqliteBackend::RegisterProcedure).
#pragma once

#include <QObject>
#include <QString>

#include "qalpack/db/DatabaseLink.h"
#include "qalpack/db/Param.h"
// Hosts have always reached TQuery and TField through this header.
#include "qalpack/db/Query.h"
#include "qalpack/qalpack_export.h"

namespace qal {

class TDatabase;

class QALPACK_EXPORT TStoredProc : public QObject
{
    Q_OBJECT

public:
    explicit TStoredProc(QObject* owner = nullptr);
    // Bound to `database` from the start (see SetDatabase).
    explicit TStoredProc(TDatabase& database, QObject* owner = nullptr);
    ~TStoredProc() override;

    // The database, bound or found by name, as TQuery reaches it: the bound
    // database's name, or the name given to SetDatabaseName.
    [[nodiscard]] const QString& DatabaseName() const;
    // Runs the procedure on `database` itself; `database` need not outlive
    // the procedure (ExecProc then raises DatabaseError).
    void SetDatabase(TDatabase& database);
    // Finds the database by name in the default session at ExecProc; drops
    // a binding made with SetDatabase.
    void SetDatabaseName(const QString& name);
    [[nodiscard]] const QString& StoredProcName() const;
    void SetStoredProcName(const QString& name);

    // Declared by the caller (CreateParam), in the procedure's order.
    [[nodiscard]] TParams& Params();
    // Throws DatabaseError naming the database, procedure and parameter when
    // no parameter of that name is declared.
    [[nodiscard]] TParam& ParamByName(QStringView name);

    // Runs the procedure. Input and input-output parameters that are bound
    // are passed; unbound ones are left out, so the procedure's defaults
    // apply. Output, input-output and result parameters are set from what
    // the procedure returns (null when it returns no row). Throws
    // DatabaseError naming the database and procedure when the database
    // cannot be opened, the procedure is unknown or fails; the procedure's
    // work is then undone.
    void ExecProc();

private:
    internal::DatabaseLink link_;
    QString procName_;
    TParams params_;
};

} // namespace qal
