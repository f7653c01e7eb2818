// SPDX-License-Identifier: MIT
// The server database driver over libpq. A query's rows stream one at a time
// (libpq's single-row mode, text format): the desk reads the first rows while
// the server still sends the rest, and a 100k-row blotter load never holds
// the whole result. While a query streams, its connection is busy; any other
// statement on the connection first takes the query's remaining rows into
// memory, so open queries and other work mix freely. Parameters travel
// separately from the SQL text, untyped, so the server infers their types.
#pragma once

#include <memory>

#include <QString>

#include "qalpack/qalpack_export.h"

namespace qal {

class TStringList;

namespace backend {
class Connection;
}

class QALPACK_EXPORT PostgresBackend
{
public:
    // Connects with the parameter lines "HOST" (or "SERVER NAME"), "PORT",
    // "DATABASE" (or "DATABASE NAME"), "USER NAME" and "PASSWORD"; any other
    // line is handed to libpq as a connection keyword in lower case with '_'
    // for blanks ("CONNECT TIMEOUT=5", "OPTIONS=-c search_path=oms"). The
    // connect timeout defaults to 10 seconds. Throws DatabaseError naming
    // `database`, the server and libpq's reason when the connection fails.
    //
    // Stored procedures are server functions, called as
    // "select * from name(arg => $1, ...)" with the bound input parameters
    // only (a leading '@' of a parameter name is dropped), so that unset
    // parameters take the function's defaults; output parameters are read
    // from the result columns of the same names.
    [[nodiscard]] static std::unique_ptr<backend::Connection> Open(
        const TStringList& params, const QString& database);
};

} // namespace qal
