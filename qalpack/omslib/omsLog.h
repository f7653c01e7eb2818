// SPDX-License-Identifier: MIT
// The OMS log: omsLogMsg records what the desk did and what went wrong, with a
// severity level, in the log file that the application profile opens; raw
// message traffic goes to a separate dump file through omsDumpMsg.
#pragma once

#include <QString>

#include "qalpack/qalpack_export.h"

namespace qal {

// Levels as omsLogMsg takes them: 0 is the most severe, higher numbers add
// detail. A negative level counts as omsLogError, one above omsLogTrace as
// omsLogTrace.
enum omsLogLevel : int {
    omsLogError = 0,
    omsLogWarning = 1,
    omsLogInfo = 2,
    omsLogDebug = 3,
    omsLogTrace = 4,
};

// Records `text` at `level` with the date and time, when `level` is at or
// below the threshold (omsLogSetLevel); a message above it costs one integer
// comparison. Before omsLogOpen, and after omsLogClose, messages go to
// standard error. Never throws: a message that cannot be written is lost.
// Every message is flushed at once, so the log is complete after a crash.
QALPACK_EXPORT void omsLogMsg(const QString& text, int level) noexcept;

// Whether a message at `level` would be recorded; lets a caller skip building
// an expensive text.
[[nodiscard]] QALPACK_EXPORT bool omsLogEnabled(int level) noexcept;

// Sets the threshold: messages with a higher level are dropped. The default
// is omsLogInfo.
QALPACK_EXPORT void omsLogSetLevel(int level) noexcept;
[[nodiscard]] QALPACK_EXPORT int omsLogGetLevel() noexcept;

// Opens `logFile` as the log and, when `dumpFile` is not empty, `dumpFile` as
// the dump file, both appended to and their directories created as needed.
// They replace the files opened before. Returns false, leaving logging as it
// was and recording why in the current log, when either cannot be opened.
QALPACK_EXPORT bool omsLogOpen(const QString& logFile, const QString& dumpFile) noexcept;

// Closes the log and dump files; messages go to standard error again.
QALPACK_EXPORT void omsLogClose() noexcept;

// The log file now open, or empty while messages go to standard error.
[[nodiscard]] QALPACK_EXPORT QString omsLogFileName();
// The dump file now open, or empty.
[[nodiscard]] QALPACK_EXPORT QString omsDumpFileName();

// Writes `text` (typically a message as it crossed the wire) to the dump
// file with the date and time, whatever the threshold. Without a dump file it
// goes to the log at omsLogDebug. Never throws.
QALPACK_EXPORT void omsDumpMsg(const QString& text) noexcept;

} // namespace qal
