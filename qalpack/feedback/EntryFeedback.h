// SPDX-License-Identifier: MIT
// What a dealer sees and hears from the order-entry boxes besides their text:
// the background colours of the user's colour scheme while a box has focus
// and after it, and the beep of a step refused on a read-only box.
#pragma once

#include <functional>

#include <QColor>
#include <QString>

#include "qalpack/qalpack_widgets_export.h"

class QWidget;

namespace qal {

// Colour-scheme items of the entry boxes' backgrounds.
inline constexpr char coEntryActiveBground[] = "coEntryActiveBground";
inline constexpr char coEntryInactiveBground[] = "coEntryInactiveBground";

// A colour as the user profile stores it (TUserProfile::getCustomColor), in
// the old desks' layout 0x00BBGGRR, red in the low byte: 0x0000FF is red,
// 0xC0FFFF pale yellow. A negative value (the profile has no such item) gives
// an invalid QColor. The high byte is ignored.
[[nodiscard]] QALPACK_WIDGETS_EXPORT QColor ColorFromProfile(int value);
// The inverse: `color` in the profile's layout.
[[nodiscard]] QALPACK_WIDGETS_EXPORT int ProfileFromColor(const QColor& color);

// The colour of `item` in the logged-on user's colour scheme, or an invalid
// QColor when nobody is logged on (Qt Designer, a test, a host before its
// log-on) or the scheme has no such item. Never asks the host to log on and
// never ends the application.
[[nodiscard]] QALPACK_WIDGETS_EXPORT QColor EntryColor(const QString& item);

// Paints the background of `box` with the colour
// of `item`; without one (see EntryColor) the box takes its parent's palette
// colour back, so it looks as any other box of the form.
QALPACK_WIDGETS_EXPORT void ApplyEntryColor(QWidget* box, const QString& item);

// The beep of a refused step. The default is QApplication::beep; tests
// install a hook that counts instead. An empty hook restores the default.
using TBeepHook = std::function<void()>;
QALPACK_WIDGETS_EXPORT void SetBeepHook(TBeepHook hook);
QALPACK_WIDGETS_EXPORT void Beep();

} // namespace qal
