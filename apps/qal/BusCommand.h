// SPDX-License-Identifier: MIT
// `qal watch`, `qal publish` and `qal logoff`: desk support's view of the
// desk-wide bus ([OMS_LOCAL] BusAlias): see what the desks say to each other,
// and steer them (end a user's desk).
#pragma once

#include <QStringList>

class QTextStream;

namespace qal::tool {

// Each runs its command with its own arguments and returns the process exit
// code: 0 done, 1 failed (configuration, bus), 2 usage.
int runWatch(const QStringList& arguments, QTextStream& out, QTextStream& err);
int runPublish(const QStringList& arguments, QTextStream& out, QTextStream& err);
int runLogoff(const QStringList& arguments, QTextStream& out, QTextStream& err);

} // namespace qal::tool
