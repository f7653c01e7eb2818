// SPDX-License-Identifier: MIT
// The shared OMS INI file and the configuration files it names. Its location
// comes from one place, the OMS_INI environment variable, so that a desk, a
// test or a demo points the whole library at its configuration at once.
#pragma once

#include <QString>

#include "qalpack/qalpack_export.h"
#include "qalpack/runtime/IniFile.h"

namespace qal {

// The path of the shared OMS INI file: the OMS_INI environment variable,
// made absolute against the current directory. The variable is read afresh
// on every call, so a test may point it at a temporary file with qputenv.
// Empty when the variable is unset or empty.
[[nodiscard]] QALPACK_EXPORT QString omsIniPath();

// The INI file `fileName`, or the shared OMS INI file (omsIniPath) when
// `fileName` is empty. With OMS_INI unset the shared file has no name: it
// reads as empty and refuses writes; a warning is logged each time.
[[nodiscard]] QALPACK_EXPORT TIniFile omsIniFile(const QString& fileName = QString());

// Where a file named in the configuration lies: `path` itself when absolute,
// otherwise `path` taken from the directory of the shared OMS INI file (from
// the current directory when OMS_INI is unset). Empty for an empty `path`.
[[nodiscard]] QALPACK_EXPORT QString omsConfigPath(const QString& path);

} // namespace qal
