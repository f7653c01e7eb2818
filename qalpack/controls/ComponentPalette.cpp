// SPDX-License-Identifier: MIT
#include "qalpack/controls/ComponentPalette.h"

#include <algorithm>

#include "qalpack/controls/AcctEdit.h"
#include "qalpack/controls/ComboEdit.h"
#include "qalpack/controls/OpenCloseSelect.h"
#include "qalpack/controls/PriceEntryEdit.h"
#include "qalpack/controls/PrincipalSelect.h"
#include "qalpack/controls/QuantityEditView.h"
#include "qalpack/controls/SymbolEntryEdit.h"

namespace qal {

namespace {

std::vector<TPaletteEntry>& palette()
{
    static std::vector<TPaletteEntry> entries;
    return entries;
}

} // namespace

void RegisterComponent(TPaletteEntry entry)
{
    auto& entries = palette();
    const auto same = std::find_if(entries.begin(), entries.end(),
        [&](const TPaletteEntry& e) { return e.className == entry.className; });
    if (same != entries.end())
        *same = std::move(entry);
    else
        entries.push_back(std::move(entry));
}

const std::vector<TPaletteEntry>& PaletteEntries()
{
    return palette();
}

void RegisterAllControls()
{
    PriceEntryEdit::Register();
    QuantityEditView::Register();
    ComboEdit::Register();
    SymbolEntryEdit::Register();
    OpenCloseSelect::Register();
    PrincipalSelect::Register();
    AcctEdit::Register();
}

} // namespace qal
