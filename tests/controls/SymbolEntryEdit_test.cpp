// SPDX-License-Identifier: MIT
// The symbol box: padding of stock codes by exchange mode, the suffix list,
// the mapping table and symbolExit on leaving.
#include "qalpack/controls/SymbolEntryEdit.h"

#include <QComboBox>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include "qalpack/omslib/ConvertSymbolMgr.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/WidgetForm.h"

namespace qal {
namespace {

using Form = test::WidgetForm<TSymbolEntryEdit>;

TEST(SymbolEntryEdit, PadsStockCodesToFiveDigitsWhenTheExchangeAsks)
{
    const struct
    {
        const char* name;
        bool exchangeMode;
        const char* exchange;
        const char* suffix;
        const char* code;
        const char* normalised;
    } rows[] = {
        { "mode off pads", false, "", "", "5", "00005" },
        { "mode off pads 700", false, "HKFE", "", "700", "00700" },
        { "five digits stay", false, "", "", "12345", "12345" },
        { "letters stay", false, "", "", "ABC", "ABC" },
        { "futures leave codes alone", true, "HKFE", "", "5", "5" },
        { "the stock exchange pads", true, "SEHK", "", "5", "00005" },
        { "the HK suffix pads", true, "", "HK", "5", "00005" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TSymbolEntryEdit box;
        box.setExchangeMode(row.exchangeMode);
        box.setExchagne(QString::fromLatin1(row.exchange));
        box.setExchagneSuffix(QString::fromLatin1(row.suffix));
        EXPECT_EQ(box.IsValidSymbol(QString::fromLatin1(row.code)), QString::fromLatin1(row.normalised));
    }
}

TEST(SymbolEntryEdit, LeavingNormalisesAndReportsTheFullSymbolOnce)
{
    const struct
    {
        const char* name;
        const char* suffix;
        const char* typed;
        const char* shown;
        const char* reported;
    } rows[] = {
        { "no suffix", "", "5", "00005", "00005" },
        { "typed lower case", "", "abc", "ABC", "ABC" },
        { "a suffix makes the padding see 5.HK", "HK", "5", "5.HK", "5.HK" },
        { "a symbol with its own dot", "HK", "00700.HK", "00700.HK", "00700.HK" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Form form;
        form.box->setExchagneSuffix(QString::fromLatin1(row.suffix));
        form.enter();
        form.box->clear();
        form.type(QString::fromLatin1(row.typed));
        QSignalSpy exits(form.box, &TSymbolEntryEdit::symbolExit);
        form.leave();
        EXPECT_EQ(form.box->text(), QString::fromLatin1(row.shown));
        ASSERT_EQ(exits.count(), 1);
        EXPECT_EQ(exits.at(0).at(0).toString(), QString::fromLatin1(row.reported));
    }
}

TEST(SymbolEntryEdit, LeavingMapsThroughTheDesksSymbolTable)
{
    auto table = std::make_unique<TConvertSymbolMgr>();
    table->AddSymbol(QStringLiteral("00005"), QStringLiteral("0005.HK"));
    SetSymbolMapCtrl(std::move(table));
    Form form;
    form.enter();
    form.box->setText(QStringLiteral("5"));
    QSignalSpy exits(form.box, &TSymbolEntryEdit::symbolExit);
    form.leave();
    EXPECT_EQ(form.box->text(), u"0005.HK");
    EXPECT_EQ(exits.at(0).at(0).toString(), u"0005.HK");
    internal::ResetSymbolMapCtrl();
}

TEST(SymbolEntryEdit, ASuffixNotInTheListIsAppendedAndSelected)
{
    TSymbolEntryEdit box;
    QComboBox* list = box.findChild<QComboBox*>(QStringLiteral("cbxList"));
    ASSERT_NE(list, nullptr);
    EXPECT_TRUE(list->isHidden()) << "the list starts hidden";
    box.setExchagneSuffix(QStringLiteral("HK"));
    box.setExchagneSuffix(QStringLiteral("SS"));
    EXPECT_EQ(list->count(), 2);
    EXPECT_EQ(list->currentText(), u"SS");
    box.setExchagneSuffix(QStringLiteral("HK"));
    EXPECT_EQ(list->count(), 2);
    EXPECT_EQ(list->currentText(), u"HK");
    box.setExchagneSuffix(QStringLiteral(" HK "));
    EXPECT_EQ(box.getExchangeSuffix(), u"HK") << "read back trimmed";

    box.settext(QStringLiteral("600000.ss"));
    EXPECT_EQ(box.gettext(), u"600000");
    EXPECT_EQ(list->currentText(), u"SS") << "the suffix part selects its item";
}

} // namespace
} // namespace qal
