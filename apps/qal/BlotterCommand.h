// SPDX-License-Identifier: MIT
// `qal blotter`: the day's client orders, exchange orders or trades loaded
// from the configured order database and shown as a dealer's blotter.
#pragma once

#include <QStringList>

class QTextStream;

namespace qal::tool {

// Runs `qal blotter` with its own arguments; returns the process exit code.
int runBlotter(const QStringList& arguments, QTextStream& out, QTextStream& err);

} // namespace qal::tool
