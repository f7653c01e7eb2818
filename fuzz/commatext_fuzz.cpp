// SPDX-License-Identifier: MIT
// Comma text both ways: any text read into a string list gives strings whose
// comma text reads back to the same strings, and that text is stable.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <QString>

#include "qalpack/runtime/StringList.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    qal::TStringList first;
    first.SetCommaText(text);
    const QString written = first.CommaText();
    qal::TStringList second;
    second.SetCommaText(written);
    bool same = second.Count() == first.Count();
    for (int i = 0; same && i < first.Count(); ++i)
        same = first.Strings(i) == second.Strings(i);
    if (!same || second.CommaText() != written) {
        std::fprintf(stderr, "comma text round trip: %d strings became %d\n  written: %s\n  again:   %s\n",
            first.Count(), second.Count(), qPrintable(written), qPrintable(second.CommaText()));
        std::abort();
    }
    return 0;
}
