// SPDX-License-Identifier: MIT
// The order database's connection cache: one open connection per logical
// database name ("omsdata", ...), its alias, user and password resolved at run
// time from the redirection map, the shared OMS INI and the database
// settings file, never written into the library.
#pragma once

#include <QObject>
#include <QString>

#include "qalpack/qalpack_export.h"

namespace qal {

class TDatabase;

namespace internal {

// For tests: frees the data module and every connection it opened, and
// empties the connection cache and the redirection map, as at process start.
// The next GetInstance creates a new data module.
QALPACK_EXPORT void ResetDatabaseAccess();

} // namespace internal

// The data module that owns the order database's connections. One per
// process, reached through GetInstance; every connection is a child of it.
//
// How GetDatabase(name) resolves a connection the first time it is asked for
// `name` (later calls return the cached connection at once, connected or not;
// the cache key is `name` in upper case):
// 1. The data-map key is the redirection map's entry for the key (AddDataMap),
//    or else the value of the key in section "OMS_DATAMAP" of the OMS INI
//    (read from the file itself, below the application profile).
// 2. Without a data-map key the connection uses the alias named by the key
//    itself, as user "sa" with an empty password.
// 3. With one, the database settings file (GetDatabaseSetting) gives the
//    alias, user and password. When it has nothing for the key, the OMS INI
//    section named by the data-map key is read: "DSN_Source" (the alias),
//    "DSN_user" and "DSN_password"; an empty "DSN_Source" keeps the defaults
//    of step 2. The alias found is recorded in the redirection map with the
//    same data-map key.
// 4. An empty user, from either source, means user "sa" with an empty
//    password, whatever password was given.
// The connection's AliasName is the alias, its DatabaseName the alias
// followed by "DB" (OMSDATA gives OMSDATADB; queries and stored procedures
// reach it by that name), its Params "user name" and "password", and it never
// prompts for a login.
class QALPACK_EXPORT TOmsDM : public QObject
{
    Q_OBJECT

public:
    ~TOmsDM() override;

    // The process-wide data module, created on the first call. The library
    // owns it; do not delete it.
    [[nodiscard]] static TOmsDM* GetInstance();

    // The open connection for the logical database `name` (any case),
    // resolved, created and opened on the first request. Returns nullptr when
    // it cannot be opened (unknown alias, server down, login refused): the
    // failure is not thrown and leaves nothing cached, so the next request
    // resolves and tries again; OpenError tells why. The data module owns
    // the connection. A cached PostgreSQL connection that the server dropped
    // is opened again by its next statement (the statement that met the drop
    // fails).
    [[nodiscard]] TDatabase* GetDatabase(const QString& name);

    // Why the last GetDatabase of `name` (any case) returned nullptr: the
    // driver's own message, naming the alias. Empty once it succeeded.
    [[nodiscard]] QString OpenError(const QString& name) const;

    // Sends the logical database `name` to the data-map key `mapKey` for
    // connections not yet opened. The first mapping of a name wins: a later
    // call for a name that already has a non-empty key is ignored, and an
    // empty `mapKey` records nothing. Hosts call it before the first
    // GetDatabase of a name to override the OMS INI's "OMS_DATAMAP".
    void AddDataMap(const QString& name, const QString& mapKey);

private:
    friend void internal::ResetDatabaseAccess();
    TOmsDM();
    TDatabase* forget(const QString& cacheKey, TDatabase* database, const QString& why);
};

} // namespace qal
