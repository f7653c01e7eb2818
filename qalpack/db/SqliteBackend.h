// SPDX-License-Identifier: MIT
// The embedded database driver over libsqlite3. Rows are stepped straight
// from the prepared statement, so a query holds one row at a time. SQLite has
// no stored procedures: C++ code registers them here under the server's name
// and contract, and TStoredProc runs them inside one transaction.
#pragma once

#include <functional>
#include <memory>

#include <QString>

#include "qalpack/qalpack_export.h"

namespace qal {

class TDatabase;
class TParams;
class TStringList;

namespace backend {
class Connection;
}

// A procedure of the embedded database: reads the bound input parameters
// (unbound ones mean "use the default"), works on `database` (queries name
// database.DatabaseName()) and sets the output parameters, which start out
// null. Throwing undoes everything it did.
using TSqliteProcedure = std::function<void(TParams& params, TDatabase& database)>;

class QALPACK_EXPORT SqliteBackend
{
public:
    // Registers `procedure` under `name` (without regard to case) for every
    // SQLite database of the process, replacing one of the same name.
    static void RegisterProcedure(const QString& name, TSqliteProcedure procedure);
    static void UnregisterProcedure(const QString& name);
    [[nodiscard]] static bool IsProcedureRegistered(const QString& name);

    // Opens the database file of the "DATABASE" line (":memory:" and "file:"
    // URIs allowed). Other lines: "BUSY TIMEOUT" (milliseconds to wait for a
    // lock, default 5000; 0 fails at once when another program writes),
    // "JOURNAL MODE" (default WAL, so that readers never block a save; DELETE,
    // TRUNCATE, PERSIST, MEMORY and OFF are SQLite's other modes), "CREATE"
    // (true: create a missing file; default false, so a mistyped path fails
    // instead of giving an empty database);
    // "USER NAME" and "PASSWORD" are ignored. Throws DatabaseError naming
    // `database` for an unknown line or a file that cannot be opened as a
    // database.
    [[nodiscard]] static std::unique_ptr<backend::Connection> Open(
        const TStringList& params, const QString& database);
};

} // namespace qal
