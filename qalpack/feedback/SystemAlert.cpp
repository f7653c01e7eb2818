// SPDX-License-Identifier: MIT
#include "qalpack/feedback/SystemAlert.h"

#include <utility>

namespace qal {

namespace {

TMessageBoxHook& messageBoxHook()
{
    static TMessageBoxHook hook;
    return hook;
}

} // namespace

void SetMessageBoxHook(TMessageBoxHook hook)
{
    messageBoxHook() = std::move(hook);
}

QMessageBox::StandardButton ShowAlert(const TAlert& alert)
{
    if (messageBoxHook())
        return messageBoxHook()(alert);
    QMessageBox box(alert.icon, alert.title, alert.text, alert.buttons, alert.owner);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

} // namespace qal
