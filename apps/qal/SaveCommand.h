// SPDX-License-Identifier: MIT
// `qal save`: a new client order, given as a tagged message, saved to the
// configured order database, which numbers it.
#pragma once

#include <QStringList>

class QTextStream;

namespace qal::tool {

// Runs `qal save` with its own arguments; returns the process exit code.
int runSave(const QStringList& arguments, QTextStream& out, QTextStream& err);

} // namespace qal::tool
