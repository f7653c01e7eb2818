// SPDX-License-Identifier: MIT
// The desk's message boxes ("System Alert"), through one replaceable hook so
// that tests and unattended hosts never wait for a click.
#pragma once

#include <functional>

#include <QMessageBox>
#include <QString>

#include "qalpack/model/ResourceLabel.h"
#include "qalpack/qalpack_widgets_export.h"

class QWidget;

namespace qal {

// The title of every message box the account box and explorer show.
inline constexpr Label resStrSystemAlert { "SystemAlert", QT_TRANSLATE_NOOP("SystemAlert", "System Alert") };

// One message box as asked for: its owner (may be null), text, title, icon
// and buttons.
struct TAlert
{
    QWidget* owner = nullptr;
    QString text;
    QString title;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QMessageBox::StandardButtons buttons = QMessageBox::Ok;
};

// Shows an alert and returns the button pressed. The default runs a modal
// QMessageBox owned by the alert's owner; tests install a hook that records
// the alert and answers at once. An empty hook restores the default.
using TMessageBoxHook = std::function<QMessageBox::StandardButton(const TAlert& alert)>;
QALPACK_WIDGETS_EXPORT void SetMessageBoxHook(TMessageBoxHook hook);

// Shows `alert` through the installed hook.
QALPACK_WIDGETS_EXPORT QMessageBox::StandardButton ShowAlert(const TAlert& alert);

} // namespace qal
