// SPDX-License-Identifier: MIT
// A stored procedure on an open database: parameters declared with their
// direction and data type (usually from the procedure's INI definition), set
// by name, and output parameters read back after ExecProc. On PostgreSQL the
// procedure is a server function called with named arguments; on SQLite it is
// a procedure registered in C++ (SqliteBackend::RegisterProcedure).
#pragma once

#include <QObject>
#include <QString>

#include "qalpack/db/Query.h"
#include "qalpack/qalpack_export.h"

namespace qal {

class QALPACK_EXPORT TStoredProc : public QObject
{
    Q_OBJECT

public:
    explicit TStoredProc(QObject* owner = nullptr);
    ~TStoredProc() override;

    // The database, found by name in the default session as TQuery does.
    [[nodiscard]] const QString& DatabaseName() const;
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
    QString databaseName_;
    QString procName_;
    TParams params_;
};

} // namespace qal
