// SPDX-License-Identifier: MIT
#include "qalpack/controls/PrincipalSelect.h"

#include <iterator>

#include <QEvent>

#include "qalpack/controls/ComponentPalette.h"

namespace qal {

namespace {

// The code of each item, by item index.
constexpr int kCodes[] = { 0, 11, 12, 13 };
constexpr int kItemCount = int(std::size(kCodes));

} // namespace

TPrincipalSelect::TPrincipalSelect(QWidget* parent)
    : QComboBox(parent)
{
    connect(this, &QComboBox::currentIndexChanged, this, [this] { emit ValueChanged(GetValue()); });
    // A parent given here arrives before this class can see its ParentChange.
    if (parent != nullptr)
        rebuildItems();
}

TPrincipalSelect::~TPrincipalSelect() = default;

void TPrincipalSelect::rebuildItems()
{
    clear();
    addItems({ resPrincipalNotSpecify(), resPrincipalClient(), resPrincipalHouse(), resPrincipalRT() });
    setCurrentIndex(0);
}

bool TPrincipalSelect::event(QEvent* event)
{
    const bool handled = QComboBox::event(event);
    if (event->type() == QEvent::ParentChange && parentWidget() != nullptr)
        rebuildItems();
    // A form written by Designer lists the items once more after the
    // selector's own; they are dropped before it is first shown, keeping the
    // form's Value.
    if (event->type() == QEvent::Polish) {
        while (count() > kItemCount)
            removeItem(count() - 1);
    }
    return handled;
}

int TPrincipalSelect::GetValue() const
{
    const int index = currentIndex();
    return index >= 0 && index < kItemCount ? kCodes[index] : 0;
}

void TPrincipalSelect::SetValue(int code)
{
    int index = 0;
    for (int i = 0; i < kItemCount; ++i) {
        if (kCodes[i] == code)
            index = i;
    }
    setCurrentIndex(index);
}

namespace PrincipalSelect {

void Register()
{
    RegisterComponent({ QString::fromLatin1(PalettePageOMS11), QStringLiteral("qal::TPrincipalSelect"),
        QStringLiteral("qalpack/controls/PrincipalSelect.h"),
        QStringLiteral("Order principal: client, house or RT"),
        [](QWidget* parent) { return new TPrincipalSelect(parent); } });
}

} // namespace PrincipalSelect

} // namespace qal
