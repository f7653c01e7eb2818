// SPDX-License-Identifier: MIT
// The component palette: the one table of the controls that form designers
// offer, filled by each control unit's Register function. The Qt Designer
// plugin (page "OMS11") is generated from it, so a control added here shows
// up there with no code of its own.
#pragma once

#include <functional>
#include <vector>

#include <QString>

#include "qalpack/qalpack_widgets_export.h"

class QWidget;

namespace qal {

// The palette page of the order-entry controls.
inline constexpr char PalettePageOMS11[] = "OMS11";

// One control of the palette.
struct TPaletteEntry
{
    QString page; // palette page (Designer's widget group)
    QString className; // C++ class with its namespace: "qal::TPriceEntryEdit"
    QString includeFile; // "qalpack/controls/PriceEntryEdit.h"
    QString toolTip;
    // Builds the control as a child of `parent` (may be null); the caller
    // owns the result through `parent` or directly.
    std::function<QWidget*(QWidget* parent)> create;
};

// Adds `entry` to the palette, replacing an entry of the same class, so that
// calling a unit's Register twice leaves one row.
QALPACK_WIDGETS_EXPORT void RegisterComponent(TPaletteEntry entry);

// The palette's rows in the order they were first registered.
[[nodiscard]] QALPACK_WIDGETS_EXPORT const std::vector<TPaletteEntry>& PaletteEntries();

// Calls every control unit's Register: the price, quantity, combo, symbol,
// open/close, principal and account controls, in that order.
QALPACK_WIDGETS_EXPORT void RegisterAllControls();

} // namespace qal
