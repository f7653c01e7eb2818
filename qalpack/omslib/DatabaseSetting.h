// SPDX-License-Identifier: MIT
// Database credentials kept out of the shared configuration: a data-map key
// resolves to an alias, a user and a password in a settings file that only
// its owner may read, as PostgreSQL treats its password file.
#pragma once

#include <QString>

#include "qalpack/qalpack_export.h"

namespace qal {

// The database settings file: the "DatabaseSettings" key of section
// "OMS_LOCAL" in the shared OMS INI file, taken from that file's directory
// unless absolute. Empty when OMS_INI or the key is not set.
[[nodiscard]] QALPACK_EXPORT QString DatabaseSettingFile();

// Resolves the data-map `key` to the connection's `alias`, `user` and
// `password`, read from the section named `key` of the database settings
// file (keys "Alias", "User", "Password"; names without regard to case):
//
//   [OMSDATA_LIVE]
//   Alias=OMSLIVE
//   User=dealer
//   Password=secret
//
// Returns true and sets all three (user and password may be empty) when the
// section gives a non-empty alias. Returns false, leaving the three as they
// were, when it has nothing: no file configured, no such file, no such
// section, or an empty alias. It also returns false when the file is not a
// regular file, when it belongs to another user than the one running the desk
// (the effective user id), or when its group or others have any access to it
// (it must be u=rw, 0600, or less); that refusal is logged as a warning
// naming the file.
// The file is read afresh on every call.
[[nodiscard]] QALPACK_EXPORT bool GetDatabaseSetting(
    QString& alias, QString& user, QString& password, const QString& key);

} // namespace qal
