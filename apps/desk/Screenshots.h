// SPDX-License-Identifier: MIT
// Pictures of the desk for its documentation, drawn from the real windows
// (run on the offscreen platform): the log-on dialog, the ticket with the
// Account Explorer open, and the whole desk with the day's blotter.
#pragma once

#include <QDir>
#include <QLocale>
#include <QString>

namespace qal {
namespace desk {

// Logs on as `userId`, draws desk-logon-<lang>.png, desk-ticket-<lang>.png
// and desk-blotter-<lang>.png into `outDir` (<lang> is "zh_HK" for Chinese,
// "en" otherwise) and returns 0; 1 when a picture cannot be written. Writes
// nothing to the order database.
int RenderScreenshots(
    const QString& outDir, const QString& userId, const QLocale& locale, const QDir& configDir);

} // namespace desk
} // namespace qal
