// SPDX-License-Identifier: MIT
// The order-entry controls in Qt Designer: a widget collection whose widgets
// are the rows of the controls' palette table, all in group "OMS11".
#pragma once

#include <QList>
#include <QObject>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

#include "qalpack/controls/ComponentPalette.h"

namespace qal::designer {

// One row of the palette table as Designer sees it.
class PaletteWidget : public QObject, public QDesignerCustomWidgetInterface
{
    Q_OBJECT
    Q_INTERFACES(QDesignerCustomWidgetInterface)

public:
    PaletteWidget(TPaletteEntry entry, QObject* parent);

    QString name() const override { return entry_.className; }
    QString group() const override { return entry_.page; }
    QString toolTip() const override { return entry_.toolTip; }
    QString whatsThis() const override { return entry_.toolTip; }
    QString includeFile() const override { return entry_.includeFile; }
    QIcon icon() const override { return {}; }
    bool isContainer() const override { return false; }
    QWidget* createWidget(QWidget* parent) override { return entry_.create(parent); }
    bool isInitialized() const override { return initialized_; }
    void initialize(QDesignerFormEditorInterface*) override { initialized_ = true; }
    QString domXml() const override;

private:
    TPaletteEntry entry_;
    bool initialized_ = false;
};

class QalpackDesignerPlugin : public QObject, public QDesignerCustomWidgetCollectionInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QDesignerCustomWidgetCollectionInterface")
    Q_INTERFACES(QDesignerCustomWidgetCollectionInterface)

public:
    explicit QalpackDesignerPlugin(QObject* parent = nullptr);

    QList<QDesignerCustomWidgetInterface*> customWidgets() const override { return widgets_; }

private:
    QList<QDesignerCustomWidgetInterface*> widgets_;
};

} // namespace qal::designer
