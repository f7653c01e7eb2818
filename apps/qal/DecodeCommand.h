// SPDX-License-Identifier: MIT
// `qal decode`: reads tagged order or trade messages and shows what the
// records make of them, as a blotter would, plus the message written back.
#pragma once

#include <QStringList>

class QTextStream;

namespace qal::tool {

// Runs the command with its own arguments (after "decode"). Writes results
// to `out`, problems to `err`; returns the process exit code: 0 when every
// message was read, 1 when at least one was not, 2 for a usage error.
int runDecode(const QStringList& arguments, QTextStream& out, QTextStream& err);

} // namespace qal::tool
