// SPDX-License-Identifier: MIT
#include "QalpackDesignerPlugin.h"

namespace qal::designer {

PaletteWidget::PaletteWidget(TPaletteEntry entry, QObject* parent)
    : QObject(parent)
    , entry_(std::move(entry))
{ }

QString PaletteWidget::domXml() const
{
    // The object name Designer gives a new control: the class without its
    // namespace and "T", first letter lower case ("priceEntryEdit").
    QString objectName = entry_.className.section(QStringLiteral("::"), -1);
    if (objectName.startsWith(u'T'))
        objectName.remove(0, 1);
    if (!objectName.isEmpty())
        objectName[0] = objectName[0].toLower();
    return QStringLiteral("<ui language=\"c++\"><widget class=\"%1\" name=\"%2\"/></ui>")
        .arg(entry_.className, objectName);
}

QalpackDesignerPlugin::QalpackDesignerPlugin(QObject* parent)
    : QObject(parent)
{
    RegisterAllControls();
    for (const TPaletteEntry& entry : PaletteEntries())
        widgets_.append(new PaletteWidget(entry, this));
}

} // namespace qal::designer
