// SPDX-License-Identifier: MIT
#include "qalpack/controls/OpenCloseSelect.h"

#include <QEvent>

#include "qalpack/controls/ComponentPalette.h"

namespace qal {

TOpenCloseSelect::TOpenCloseSelect(QWidget* parent)
    : QComboBox(parent)
{
    connect(this, &QComboBox::currentIndexChanged, this, [this] { emit ValueChanged(GetValue()); });
    // A parent given here arrives before this class can see its ParentChange.
    if (parent != nullptr)
        rebuildItems();
}

TOpenCloseSelect::~TOpenCloseSelect() = default;

void TOpenCloseSelect::rebuildItems()
{
    clear();
    addItems({ resOpenCloseNotSpecify(), resOpenCloseOpen(), resOpenCloseClose() });
    setCurrentIndex(0);
}

bool TOpenCloseSelect::event(QEvent* event)
{
    const bool handled = QComboBox::event(event);
    if (event->type() == QEvent::ParentChange && parentWidget() != nullptr)
        rebuildItems();
    // A form written by Designer lists the items once more after the
    // selector's own; they are dropped before it is first shown, keeping the
    // form's Value.
    if (event->type() == QEvent::Polish) {
        while (count() > 3)
            removeItem(count() - 1);
    }
    return handled;
}

int TOpenCloseSelect::GetValue() const
{
    // The item index is the code.
    const int index = currentIndex();
    return index >= 0 && index <= 2 ? index : 0;
}

void TOpenCloseSelect::SetValue(int code)
{
    setCurrentIndex(code >= 0 && code <= 2 ? code : 0);
}

namespace OpenCloseSelect {

void Register()
{
    RegisterComponent({ QString::fromLatin1(PalettePageOMS11), QStringLiteral("qal::TOpenCloseSelect"),
        QStringLiteral("qalpack/controls/OpenCloseSelect.h"),
        QStringLiteral("Futures order opens or closes a position"),
        [](QWidget* parent) { return new TOpenCloseSelect(parent); } });
}

} // namespace OpenCloseSelect

} // namespace qal
