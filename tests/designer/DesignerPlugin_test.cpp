// SPDX-License-Identifier: MIT
// Across the plugin boundary: the built Designer plugin loaded as Designer
// loads it, and a .ui form of every control loaded through it with
// QUiLoader, as a host loads a form at run time.
#include <QComboBox>
#include <QFile>
#include <QFileInfo>
#include <QMetaProperty>
#include <QPluginLoader>
#include <QUiLoader>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

#include <gtest/gtest.h>

#include "qalpack/controls/ComboEdit.h"
#include "qalpack/controls/OpenCloseSelect.h"
#include "qalpack/controls/PriceEntryEdit.h"
#include "qalpack/controls/PrincipalSelect.h"
#include "qalpack/controls/QuantityEditView.h"
#include "qalpack/controls/SymbolEntryEdit.h"
#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

TEST(DesignerPlugin, OffersEveryControlOnPageOMS11)
{
    QPluginLoader loader(QStringLiteral(QAL_DESIGNER_PLUGIN_PATH));
    auto* collection = qobject_cast<QDesignerCustomWidgetCollectionInterface*>(loader.instance());
    ASSERT_NE(collection, nullptr) << qPrintable(loader.errorString());

    QStringList names;
    QWidget form;
    for (QDesignerCustomWidgetInterface* widget : collection->customWidgets()) {
        SCOPED_TRACE(qPrintable(widget->name()));
        names.append(widget->name());
        EXPECT_EQ(widget->group(), u"OMS11");
        EXPECT_FALSE(widget->toolTip().isEmpty());
        EXPECT_TRUE(QFileInfo::exists(qEnvironmentVariable("QALPACK_SOURCE_DIR") + u'/' + widget->includeFile()));
        EXPECT_TRUE(widget->domXml().contains(QStringLiteral("class=\"%1\"").arg(widget->name())));
        QWidget* created = widget->createWidget(&form);
        ASSERT_NE(created, nullptr);
        EXPECT_EQ(QString::fromLatin1(created->metaObject()->className()), widget->name());
        EXPECT_EQ(created->parentWidget(), &form);
    }
    EXPECT_EQ(names,
        QStringList({ "qal::TPriceEntryEdit", "qal::TQuantityEdit", "qal::TComboEdit", "qal::TSymbolEntryEdit",
            "qal::TOpenCloseSelect", "qal::TPrincipalSelect", "qal::TAccountEdit" }));
}

TEST(DesignerPlugin, ShowsPublishedPropertiesButNotTheSpreadTable)
{
    const struct
    {
        const QMetaObject* meta;
        const char* property;
        bool designable;
    } rows[] = {
        { &TPriceEntryEdit::staticMetaObject, "Spread", false },
        { &TPriceEntryEdit::staticMetaObject, "text", false },
        { &TPriceEntryEdit::staticMetaObject, "Value", true },
        { &TPriceEntryEdit::staticMetaObject, "Negative", true },
        { &TQuantityEdit::staticMetaObject, "LotSize", true },
        { &TQuantityEdit::staticMetaObject, "readOnly", false },
        { &TQuantityEdit::staticMetaObject, "ReadOnly", true },
        { &TComboEdit::staticMetaObject, "Text", true },
        { &TComboEdit::staticMetaObject, "CharCase", true },
        { &TSymbolEntryEdit::staticMetaObject, "ExchangeSuffix", true },
        { &TPrincipalSelect::staticMetaObject, "Value", true },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.meta->className()) + "::" + row.property);
        const int index = row.meta->indexOfProperty(row.property);
        ASSERT_GE(index, 0);
        EXPECT_EQ(row.meta->property(index).isDesignable(), row.designable);
    }
}

TEST(DesignerPlugin, AFormOfEveryControlLoadsWithItsSettings)
{
    QUiLoader loader;
    loader.clearPluginPaths();
    loader.addPluginPath(QStringLiteral(QAL_DESIGNER_PLUGIN_DIR));
    QFile ui(QStringLiteral(QAL_TEST_FORMS_DIR "/order_entry.ui"));
    ASSERT_TRUE(ui.open(QIODevice::ReadOnly));
    std::unique_ptr<QWidget> form(loader.load(&ui));
    ASSERT_NE(form, nullptr) << qPrintable(loader.errorString());

    auto* price = form->findChild<TPriceEntryEdit*>(QStringLiteral("price"));
    ASSERT_NE(price, nullptr);
    EXPECT_FALSE(price->EditorEnabled());
    EXPECT_DOUBLE_EQ(price->Increment(), 0.5);
    EXPECT_DOUBLE_EQ(price->MinValue(), 1);
    EXPECT_DOUBLE_EQ(price->MaxValue(), 100);
    EXPECT_TRUE(price->Negative());
    EXPECT_EQ(price->text(), u"100") << "the stored value, clamped by the stored bounds";

    auto* quantity = form->findChild<TQuantityEdit*>(QStringLiteral("quantity"));
    ASSERT_NE(quantity, nullptr);
    EXPECT_TRUE(quantity->isReadOnly());
    EXPECT_EQ(quantity->Increment(), 5);
    EXPECT_EQ(quantity->LotSize(), 500);
    EXPECT_EQ(quantity->MinValue(), 100);
    EXPECT_EQ(quantity->MaxValue(), 1000000);
    EXPECT_EQ(quantity->text(), u"2,000");

    auto* combo = form->findChild<TComboEdit*>(QStringLiteral("comboEdit"));
    ASSERT_NE(combo, nullptr);
    EXPECT_EQ(combo->CharCase(), TComboEdit::ecUpperCase);
    EXPECT_EQ(combo->MaxLength(), 8);
    EXPECT_EQ(combo->text(), u"ABC");

    auto* symbol = form->findChild<TSymbolEntryEdit*>(QStringLiteral("symbol"));
    ASSERT_NE(symbol, nullptr);
    EXPECT_TRUE(symbol->ExchangeMode());
    EXPECT_EQ(symbol->getExchange(), u"SEHK");
    EXPECT_EQ(symbol->getExchangeSuffix(), u"HK");
    EXPECT_EQ(symbol->list()->currentText(), u"HK");

    auto* openClose = form->findChild<TOpenCloseSelect*>(QStringLiteral("openClose"));
    ASSERT_NE(openClose, nullptr);
    form->ensurePolished();
    EXPECT_EQ(openClose->count(), 3) << "the items Designer wrote are not added twice";
    EXPECT_EQ(openClose->GetValue(), 2);
    EXPECT_EQ(openClose->currentText(), u"Close");

    auto* principal = form->findChild<TPrincipalSelect*>(QStringLiteral("principal"));
    ASSERT_NE(principal, nullptr);
    EXPECT_EQ(principal->GetValue(), 12);
    EXPECT_EQ(principal->currentText(), u"House");
}

} // namespace
} // namespace qal
