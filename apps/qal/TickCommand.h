// SPDX-License-Identifier: MIT
// `qal tick`: where prices stand on an exchange's price-spread ladder, for
// dealers' support staff answering "why was this price refused?".
#pragma once

#include <QStringList>

class QTextStream;

namespace qal::tool {

// Runs the command with its own arguments (after "tick"). Returns 0 when
// every price was read, 1 when one was not, 2 for a usage error.
int runTick(const QStringList& arguments, QTextStream& out, QTextStream& err);

} // namespace qal::tool
