// SPDX-License-Identifier: MIT
// The library's translations: one call switches every screen text of the
// library (labels, statuses, controls, forms, message boxes) and of the desk
// into a desk's language.
#pragma once

#include <QLocale>

#include "qalpack/qalpack_export.h"

namespace qal {

// Installs the compiled translation "qalpack_<locale>.qm" (zh_HK for Hong
// Kong desks; Traditional Chinese of Taiwan or Macau reads it too) on the
// running application, replacing one this call installed before. The
// translations are built into the library; a directory named by
// QALPACK_TRANSLATIONS_DIR is searched first, so a desk can try a new
// translation without a rebuild.
//
// Returns true when a translation is in use afterwards; false for English
// (the labels' own language), the C locale and a language the library has
// no translation for, the previous translation being removed in every case.
// Needs a QCoreApplication; without one it does nothing and returns false.
// Call before building the screens, or retranslate them afterwards: labels
// are read when they are shown.
QALPACK_EXPORT bool LoadTranslations(const QLocale& locale);

} // namespace qal
