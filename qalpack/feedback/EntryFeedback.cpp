// SPDX-License-Identifier: MIT
#include "qalpack/feedback/EntryFeedback.h"

#include <QApplication>
#include <QPalette>
#include <QWidget>

#include "qalpack/profile/UserProfile.h"

namespace qal {

namespace {

TBeepHook& beepHook()
{
    static TBeepHook hook;
    return hook;
}

} // namespace

QColor ColorFromProfile(int value)
{
    if (value < 0)
        return {};
    return QColor(value & 0xFF, (value >> 8) & 0xFF, (value >> 16) & 0xFF);
}

int ProfileFromColor(const QColor& color)
{
    if (!color.isValid())
        return -1;
    return color.red() | (color.green() << 8) | (color.blue() << 16);
}

QColor EntryColor(const QString& item)
{
    const TUserProfile* profile = TUserProfile::CurrentInstance();
    return profile != nullptr ? ColorFromProfile(profile->getCustomColor(item)) : QColor();
}

void ApplyEntryColor(QWidget* box, const QString& item)
{
    if (box == nullptr)
        return;
    QColor color = EntryColor(item);
    if (!color.isValid()) {
        const QWidget* parent = box->parentWidget();
        color = (parent != nullptr ? parent->palette() : QApplication::palette(box)).color(QPalette::Base);
    }
    QPalette palette = box->palette();
    if (palette.color(QPalette::Base) == color)
        return;
    palette.setColor(QPalette::Base, color);
    box->setPalette(palette);
}

void SetBeepHook(TBeepHook hook)
{
    beepHook() = std::move(hook);
}

void Beep()
{
    if (beepHook())
        beepHook()();
    else
        QApplication::beep();
}

} // namespace qal
