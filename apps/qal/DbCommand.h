// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

class QTextStream;

namespace qal::tool {

// Runs `qal db` with its own arguments; returns the process exit code.
int runDb(const QStringList& arguments, QTextStream& out, QTextStream& err);

} // namespace qal::tool
