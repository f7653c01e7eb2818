// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

class QTextStream;

namespace qal::tool {

// Runs `qal whoami` with its own arguments; returns the process exit code.
int runWhoami(const QStringList& arguments, QTextStream& out, QTextStream& err);

} // namespace qal::tool
