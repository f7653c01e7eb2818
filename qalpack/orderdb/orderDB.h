// SPDX-License-Identifier: MIT
// The order database's plain functions for hosts: the connection that the
// order loaders and the saving of new orders work on.
#pragma once

#include "qalpack/qalpack_export.h"

namespace qal {

class TDatabase;

// The connection of the logical database "omsdata" (TOmsDM::GetDatabase, so
// its alias and login come from the data map), opened on the first call.
// nullptr when it cannot be opened; a later call tries again. The data
// module owns it.
[[nodiscard]] QALPACK_EXPORT TDatabase* orderDatabase();

} // namespace qal
