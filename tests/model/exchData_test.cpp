// SPDX-License-Identifier: MIT
// What blotters rely on in the exchange order and trade records.
#include "qalpack/model/exchData.h"

#include <bit>
#include <cmath>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <QMetaProperty>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include "qalpack/omslib/CodePage950.h"
#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/Exception.h"
#include "qalpack/runtime/Format.h"
#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

// A fully populated, cancelled order written in the order's own field order,
// so that its image must reproduce it byte for byte.
const QString kFullImage = QStringLiteral(
    "6|OMS001|7|EX778|0|0700.HK|10|C0001|11|0|13|D01|4|2000|3|345.600000|15|R9|5|4|39|3|464|5|"
    "33|09:31:02|501|09:31:05|25|call client|34|400|35|7|48|1600|40|2179|489|1048585|490|2|491|3|492|4|"
    "41|340.000000|42|1.500000|493|2.250000|494|3.125000|12|1|47|1|46|12|101|1|45|CP1|20|SEHK|78|B77|"
    "1105|1|1106|2|1107|3|1108|4|44|9|43|8|74|U-REF|418|RN1|2020|L2|"
    "487|InvestorID=77,DLR=D01,\"NAME=Chan Tai Man\"|191|X191|502|TRADE|");

TEST(ExchangeOrder, ReadsTheHeaderlessFieldsOfAMessage)
{
    const TexchOrder order(QStringLiteral("H|0|0005.HK|4|1000|3|12.5|11|1"));
    EXPECT_EQ(order.Symbol, u"0005.HK");
    EXPECT_EQ(order.Quantity, 1000);
    EXPECT_EQ(order.Price, 12.5L);
    EXPECT_EQ(order.Side, 1);
    EXPECT_EQ(order.GetBuySellText(), u"SELL");
}

TEST(ExchangeOrder, IgnoresNonNumericKeysAndADanglingKey)
{
    const TexchOrder order(QStringLiteral("H|X|Y|0|ABC|4|12x|5"));
    EXPECT_EQ(order.Symbol, u"ABC");
    EXPECT_EQ(order.Quantity, 0) << "a malformed number stores 0";
    EXPECT_EQ(order.Status, 0) << "the last key has no value";
}

// Tags and quantities of plain digits are read in place; every key and value
// must still read as StrToIntDef reads it.
TEST(ExchangeOrder, ReadsTagsAndNumbersAsStrToIntDefDoes)
{
    const char* const texts[] = { "0", "00", "7", "42", "487", "1119", "0487", "16393", "123456789",
        "0000000000", "1234567890", "2147483647", "2147483648", "-0", "-5", "+5", " 5", "5 ", "", "x", "1a",
        "/", ":", "9:", ":9", "x12", "12:4", "1234x", "$1F", "0x1f", "１２" };
    for (const char* text : texts) {
        SCOPED_TRACE(text);
        const QString s = QString::fromUtf8(text);
        EXPECT_EQ(MessageTag(s), StrToIntDef(s, -1));
        const TexchOrder order(QStringLiteral("H|") + s + QStringLiteral("|0700.HK|4|") + s + u'|');
        EXPECT_EQ(order.Quantity, StrToIntDef(s));
        EXPECT_EQ(order.Symbol == u"0700.HK", StrToIntDef(s, -1) == 0) << "the key read as tag 0";
    }
}

// Prices of plain digits are read in place: to the last bit they must be
// what StrToFloatDef reads, and any other text must be read by it.
TEST(ExchangeOrder, ReadsPricesExactlyAsStrToFloatDefDoes)
{
    std::vector<QString> texts { "345.6", "340.2", "0.1", "0.3", "2.675", "1.", ".5", ".", "", "1.2.3",
        "-1.5", "+1.5", "1e3", " 1.5", "1.5 ", "0.000000", "123456789012345678", "1234567890123456789",
        "99999999999999999.9", ".000000000000000001", "１.５" };
    std::mt19937_64 rng(20240131);
    for (int i = 0; i < 20000; ++i) {
        std::string digits = std::to_string(rng()).substr(0, 1 + rng() % 18);
        digits.insert(rng() % (digits.size() + 1), ".");
        texts.push_back(QString::fromStdString(digits));
    }
    for (const QString& text : texts) {
        const TexchOrder order(QStringLiteral("H|3|") + text + u'|');
        ASSERT_EQ(order.Price, StrToFloatDef(text)) << text.toStdString();
    }
}

// An update writes a changed text into the field's own string where it
// fits; a copy a blotter holds of the old text keeps it.
TEST(ExchangeOrder, UpdatedTextsLeaveCopiesOfTheOldOnesAlone)
{
    TexchOrder order(QStringLiteral("H|0|0700.HK|25|call client|"));
    const QString symbol = order.Symbol;
    order.applyMessage(QStringLiteral("H|0|5.HK|25|call|"));
    EXPECT_EQ(order.Symbol, u"5.HK");
    EXPECT_EQ(symbol, u"0700.HK");
    EXPECT_EQ(order.Remark, u"call");
    order.applyMessage(QStringLiteral("H|25||"));
    EXPECT_TRUE(order.Remark.isEmpty());
    order.applyMessage(QStringLiteral("H|25|call the client back|"));
    EXPECT_EQ(order.Remark, u"call the client back");
}

TEST(ExchangeOrder, FreshRecordWritesOnlyWhatIsAlwaysWritten)
{
    EXPECT_EQ(TexchOrder().DDSImageMessage(), u"0||4|0|3|0.000000|34|0|35|0|44|0|43|0|502|TRADE|");
}

TEST(ExchangeOrder, FullRecordRoundTripsThroughItsMessage)
{
    const TexchOrder first(QStringLiteral("H|") + kFullImage);
    EXPECT_EQ(first.DDSImageMessage(), kFullImage);

    const TexchOrder second(QStringLiteral("H|") + first.DDSImageMessage());
    EXPECT_EQ(second.DDSImageMessage(), kFullImage);
    EXPECT_EQ(second.Price, first.Price);
    EXPECT_EQ(second.StopPrice, first.StopPrice);
    EXPECT_EQ(second.Attributes.Values(QStringLiteral("name")), u"Chan Tai Man");
    EXPECT_EQ(second.Option489, 0x100009);
}

TEST(ExchangeOrder, OmitsFieldsUnderTheirConditions)
{
    TexchOrder order;
    order.Side = -1;
    order.Field43 = -1;
    order.Field44 = -5;
    order.OpenClose = -1;
    order.Status = 2;
    order.Field48 = 9;
    EXPECT_EQ(order.DDSImageMessage(), u"0||4|0|3|0.000000|5|2|34|0|35|0|502|TRADE|")
        << "no side when unset, no 48 unless cancelled, no 12 unless above 0, no 43/44 below 0";
}

TEST(ExchangeOrder, ResetEmptiesTheRecordButKeeps43And44)
{
    TexchOrder order(QStringLiteral("H|") + kFullImage);
    TomsTrade trade;
    order.addTrade(&trade);
    order.ManualSelector = 1;

    order.reset();

    EXPECT_EQ(order.DDSImageMessage(), u"0||4|0|3|0.000000|34|0|35|0|44|9|43|8|502|TRADE|");
    EXPECT_EQ(order.Side, -1);
    EXPECT_EQ(order.ManualSelector, 0);
    EXPECT_TRUE(order.trades().empty());
    EXPECT_EQ(order.Attributes.Count(), 0);
}

TEST(ExchangeOrder, StatusTextsAndRawTextsDifferOnlyWhereTheyShould)
{
    struct Row
    {
        int code;
        const char16_t* label;
        const char16_t* raw;
    };
    const Row rows[] = {
        { -1, u"Reje", u"Reje" },
        { 0, u"", u"" },
        { 1, u"Pend", u"Pend" },
        { 2, u"Part", u"Part" },
        { 3, u"Comp", u"Comp" },
        { 4, u"Canc", u"Canc" },
        { 5, u"Inac", u"Inac" },
        { 6, u"Unkn", u"Unknown" },
        { 7, u"Conf", u"Conf" },
        { 8, u"Unkn", u"Unknown" },
        { -2, u"Unkn", u"Unknown" },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.code);
        TexchOrder order;
        order.Status = row.code;
        EXPECT_EQ(order.statusMessage(), QStringView(row.label));
        EXPECT_EQ(order.RawStatus(row.code), QStringView(row.raw));
    }
}

TEST(ExchangeOrder, RawStatusReadsTheFirstFourCharactersCaseSensitively)
{
    const std::pair<QString, int> rows[] = {
        { "Reje", -1 },
        { "", 0 },
        { "Pend", 1 },
        { "Part", 2 },
        { "Part Canc", 2 },
        { "Comp", 3 },
        { "Canc", 4 },
        { "Inac", 5 },
        { "Conf", 7 },
        { "reje", 0 },
        { "Unknown", 0 },
        { "Pen", 0 },
        { "Confirmed", 7 },
    };
    const TexchOrder order;
    for (const auto& [text, code] : rows) {
        SCOPED_TRACE(text.toStdString());
        EXPECT_EQ(order.RawStatus(text), code);
    }
}

TEST(ExchangeOrder, OptionInfoListsInstructionsInBlotterOrder)
{
    struct Row
    {
        const char* name;
        int option;
        int principal;
        QString userRef;
        const char16_t* expected;
    };
    const Row rows[] = {
        { "nothing", 0, 0, {}, u"" },
        { "odd lot FAK", 3 | 0x80, 0, {}, u"FAK;Odd;" },
        { "auction stop up house", 0x200 | 0x800 | 0x800000, 12, {}, u"AO;STU:9.876;House;" },
        { "stop down RT FOK", 0x800 | 0x1000000 | 0x100, 13, {}, u"STD:9.876;RT;FOK;" },
        { "plain stop with reference", 0x800 | 0x180, 0, "REF;", u"STP:9.876;FOK;FAK;REF;" },
        { "trigger bit without stop bit", 0x800000, 0, {}, u"" },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TexchOrder order;
        order.OrderOption = row.option;
        order.PrincipalType = row.principal;
        order.User_Ref = row.userRef;
        order.StopPrice = 9.8755L;
        EXPECT_EQ(order.GetOrderOptionInfo(), QStringView(row.expected));
    }
}

TEST(ExchangeOrder, FillAndQueueCountOnlyDoneTradesOnTheOrdersSide)
{
    TexchOrder order(QStringLiteral("H|7|E1|4|1000|11|0|5|2"));
    TomsTrade done(QStringLiteral("H|8|E1|4|300|11|0|5|3"));
    TomsTrade doneOtherSide(QStringLiteral("H|8|E1|4|50|11|1|5|3"));
    TomsTrade pending(QStringLiteral("H|8|E1|4|70|11|0|5|1"));
    auto destroyed = std::make_unique<TomsTrade>(QStringLiteral("H|8|E1|4|99|11|0|5|3"));
    for (TomsTrade* trade : { &done, &doneOtherSide, &pending, destroyed.get() })
        order.addTrade(trade);
    destroyed.reset();

    EXPECT_EQ(order.CalculateFillQty(), 300);
    EXPECT_EQ(order.CalculateQueuQty(), 700);
    EXPECT_EQ(order.getBuyQueuQty(), 700);
    EXPECT_EQ(order.getSellQueuQty(), 0);

    for (const int status : { 0, 3, 4, 5, 7, -1 }) {
        SCOPED_TRACE(status);
        order.Status = status;
        EXPECT_EQ(order.CalculateQueuQty(), 0);
    }
}

// Quantities are 32-bit and their sums wrap as the old desks' arithmetic did.
TEST(ExchangeOrder, FillAndQueueSumsWrapAt32Bits)
{
    const struct
    {
        const char* name;
        int quantity;
        std::vector<int> fills;
        int fillQty;
        int queueQty;
    } cases[] = {
        { "TwoBigFillsWrapNegative", 1000, { 2000000000, 2000000000 }, -294967296, 294968296 },
        { "SumJustFits", 2147483647, { 2147483646, 1 }, 2147483647, 0 },
        { "NegativeFillsWrapPositive", 0, { -2147483647 - 1, -1 }, 2147483647, -2147483647 },
        { "QueueOfAMinimalQuantityWraps", -2147483647 - 1, { 1 }, 1, 2147483647 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TexchOrder order(QStringLiteral("H|7|E1|11|0|5|2"));
        order.Quantity = c.quantity;
        std::vector<std::unique_ptr<TomsTrade>> trades;
        for (const int fill : c.fills) {
            trades.push_back(std::make_unique<TomsTrade>(QStringLiteral("H|8|E1|11|0|5|3")));
            trades.back()->Fill_Qty = fill;
            order.addTrade(trades.back().get());
        }
        EXPECT_EQ(order.CalculateFillQty(), c.fillQty);
        EXPECT_EQ(order.CalculateQueuQty(), c.queueQty);
    }
}

TEST(ExchangeOrder, KeepsTradesUnderTheirOrderNumber)
{
    TexchOrder order;
    TomsTrade first(QStringLiteral("H|8|E1|4|1"));
    TomsTrade second(QStringLiteral("H|8|E1|4|2"));
    TomsTrade third(QStringLiteral("H|8|E2|4|3"));
    EXPECT_EQ(order.addTrade(&first), &first);
    order.addTrade(&second);
    order.addTrade(&third);
    EXPECT_EQ(order.GetTrade(QStringLiteral("E1")), &first);
    EXPECT_EQ(order.GetTrade(QStringLiteral("E2")), &third);
    EXPECT_EQ(order.GetTrade(QStringLiteral("E3")), nullptr);

    TexchOrder copy;
    copy.copyTradesFrom(order);
    EXPECT_EQ(copy.trades().size(), 3U);
    EXPECT_EQ(copy.GetTrade(QStringLiteral("E2")), &third);
}

TEST(ExchangeOrder, BetterPriceDependsOnSideWithATenthOfABasisPointTolerance)
{
    struct Row
    {
        int side;
        double price;
        int expected;
    };
    const Row rows[] = {
        { 0, 9.99, 1 },
        { 0, 10.01, -1 },
        { 0, 10.0001, 0 },
        { 0, 9.9999, 0 },
        { 0, 10.0, 0 },
        { 1, 9.99, -1 },
        { 1, 10.01, 1 },
        { 1, 10.0001, 0 },
    };
    TexchOrder order;
    order.Price = 10.0L;
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "side " << row.side << " against " << row.price);
        order.Side = row.side;
        EXPECT_EQ(order.betterPrice(row.price), row.expected);
    }
    order.Side = -1;
    EXPECT_THROW(static_cast<void>(order.betterPrice(9.0)), InvalidOrderType);
    try {
        static_cast<void>(order.betterPrice(9.0));
    } catch (const Error& e) {
        EXPECT_EQ(e.message(), u"Invalid order type");
    }
}

TEST(ExchangeOrder, AssignCopiesEveryFieldAndTheTradeList)
{
    TexchOrder source(QStringLiteral("H|") + kFullImage);
    TomsTrade trade(QStringLiteral("H|8|EX778"));
    source.addTrade(&trade);
    source.Order_Date = QStringLiteral("2026-11-20");

    TexchOrder target;
    target.assign(source);
    EXPECT_EQ(target.DDSImageMessage(), kFullImage);
    EXPECT_EQ(target.Order_Date, source.Order_Date);
    EXPECT_EQ(target.GetTrade(QStringLiteral("EX778")), &trade);
}

TEST(ExchangeOrder, AssignFromATradeTakesTheTradesFieldsByMeaning)
{
    const TomsTrade trade(QStringLiteral("H|7|T900|8|E55|6|OMS9|0|0388.HK|10|C7|13|D2|3|301.2|4|200|11|1|5|3|"
                                         "46|13|47|2|101|3|43|2|44|6|20|SEHK|25|note|33|10:00:01|418|RUN"));
    TexchOrder order;
    order.assign(trade);
    EXPECT_EQ(order.Order_No, u"E55");
    EXPECT_EQ(order.OmsOrder_No, u"OMS9");
    EXPECT_EQ(order.Symbol, u"0388.HK");
    EXPECT_EQ(order.Price, trade.Fill_Price);
    EXPECT_EQ(order.Quantity, 200);
    EXPECT_EQ(order.Fill_Qty, 200);
    EXPECT_EQ(order.Side, 1);
    EXPECT_EQ(order.PrincipalType, 13);
    EXPECT_EQ(order.Field47, 2);
    EXPECT_EQ(order.ShortSell, 3);
    EXPECT_EQ(order.Order_Time, u"10:00:01");
    EXPECT_EQ(order.Runner, u"RUN");
}

TEST(ExchangeOrder, NotifierUpdatePassesTheRecordItself)
{
    TexchOrder order;
    int calls = 0;
    void* seen = nullptr;
    int key = 0;
    order.RegisterCallback(
        [&](void* data, void* custom) {
            ++calls;
            seen = data;
            EXPECT_EQ(custom, &key);
        },
        &key);
    order.updateField(u"5", u"1");
    order.NotifierUpdate();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(seen, &order);
}

TEST(ExchangeOrder, SymbolNamesComeFromTheHostsSource)
{
    struct Master : SymbolNameSource
    {
        QString englishName(const QString& symbol) const override
        {
            return symbol == u"0005.HK" ? "HSBC HOLDINGS" : "";
        }
        QString chineseName(const QString& symbol) const override
        {
            return symbol == u"0005.HK" ? "滙豐控股" : "";
        }
    } master;
    TexchOrder order(QStringLiteral("H|0|0005.HK"));
    order.AssignName(master);
    EXPECT_EQ(order.property("RSymbolEng").toString(), u"HSBC HOLDINGS");
    EXPECT_EQ(order.property("RSymbolChi").toString(), u"滙豐控股");
}

// The wire carries code page 950. 四 is A5 7C there: its second byte is "|".
// 峯 exists only in the Hong Kong supplementary set.
TEST(ExchangeOrder, ChineseNameSurvivesTheWireParseAndWriteBack)
{
    const QString name = QStringLiteral("李四峯");
    const QByteArray wire = cp950::encode(
        QStringLiteral("H|0|0005.HK|10|C0001|25|") + name + QStringLiteral("|487|NAME=") + name);
    ASSERT_TRUE(wire.contains(QByteArray("\xA5\x7C", 2))) << "the test needs a second byte equal to '|'";

    const TexchOrder order(cp950::decode(wire));
    EXPECT_EQ(order.Remark, name);
    EXPECT_EQ(order.Account, u"C0001");
    EXPECT_EQ(order.Attributes.Values(QStringLiteral("NAME")), name);

    const QByteArray back = cp950::encode(order.DDSImageMessage());
    EXPECT_TRUE(back.contains(cp950::encode(QStringLiteral("|25|") + name + QStringLiteral("|"))));
    const TexchOrder again(cp950::decode(QByteArray("H|") + back));
    EXPECT_EQ(again.Remark, name);
    EXPECT_EQ(again.Attributes.Values(QStringLiteral("name")), name);
}

struct PropertyRow
{
    const char* name;
    bool writable;
};

void expectProperties(const QMetaObject& meta, std::initializer_list<PropertyRow> rows)
{
    for (const PropertyRow& row : rows) {
        SCOPED_TRACE(row.name);
        const int index = meta.indexOfProperty(row.name);
        ASSERT_GE(index, 0) << "not published";
        EXPECT_EQ(meta.property(index).isWritable(), row.writable);
    }
}

TEST(ExchangeOrder, PublishesEveryPropertyByName)
{
    expectProperties(TexchOrder::staticMetaObject,
        { { "ROmsOrder_No", false }, { "ROrder_No", false }, { "Rref_no", false }, { "WSymbol", true },
            { "RSymbol", false }, { "WAccount", true }, { "RAccount", false }, { "RUser", false },
            { "WPrice", true }, { "CPrice", true }, { "RPrice", false }, { "WQuantity", true },
            { "CQuantity", true }, { "RQty", false }, { "WOrder_Side", true }, { "RSide", false },
            { "RStatus", false }, { "ROrderOptionInfo", false }, { "RCounterParty", false },
            { "RRemark", false }, { "ROrder_Time", false }, { "RExch", false }, { "RBrokerID", false },
            { "RUser_Ref", false }, { "RRunner", false }, { "RriskCtrlLevel", false },
            { "RLast_MOD_Time", false }, { "RBuyQty", false }, { "RSellQty", false },
            { "RBuyQueuQty", false }, { "RSellQueuQty", false }, { "RQueu_Qty", false },
            { "RSymbolEng", false }, { "RSymbolChi", false } });
}

TEST(ExchangeOrder, WritablePropertiesEditTheFields)
{
    TexchOrder order;
    ASSERT_TRUE(order.setProperty("WSymbol", QStringLiteral("0011.HK")));
    ASSERT_TRUE(order.setProperty("CPrice", 101.5));
    ASSERT_TRUE(order.setProperty("CQuantity", 400));
    ASSERT_TRUE(order.setProperty("WOrder_Side", 0));
    EXPECT_EQ(order.Symbol, u"0011.HK");
    EXPECT_EQ(order.Price, 101.5L);
    EXPECT_EQ(order.property("RBuyQty").toInt(), 400);
    EXPECT_EQ(order.property("RSide").toString(), u"BUY");
}

TEST(Trade, PublishesEveryPropertyByName)
{
    expectProperties(TomsTrade::staticMetaObject,
        { { "RExch_No", false }, { "ROrder_No", false }, { "RSymbol", false }, { "RAccount", false },
            { "RUser", false }, { "RFill_Price", false }, { "RFill_Qty", false }, { "RSide", false },
            { "RHedge", false }, { "RPrincipal", false }, { "RShortsell", false }, { "RBrokerID", false },
            { "RTradeType", false }, { "RStatus", false }, { "RRemark", false }, { "REXE_Time", false },
            { "RExch", false }, { "RRunner", false }, { "RBuyQty", false }, { "RSellQty", false },
            { "RSymbolEng", false }, { "RSymbolChi", false } });
}

TEST(Trade, StatusTableIsNarrowerThanTheOrders)
{
    const std::pair<int, const char16_t*> rows[] = {
        { -1, u"Reje" },
        { 0, u"" },
        { 1, u"Pend" },
        { 2, u"Unkn" },
        { 3, u"Comp" },
        { 4, u"Canc" },
        { 5, u"Inac" },
        { 6, u"Unkn" },
        { 7, u"Unkn" },
    };
    TomsTrade trade;
    for (const auto& [code, text] : rows) {
        SCOPED_TRACE(code);
        trade.Status = code;
        EXPECT_EQ(trade.statusMessage(), QStringView(text));
    }
    EXPECT_EQ(trade.RawStatus(2), u"Part");
    EXPECT_EQ(trade.RawStatus(QStringLiteral("Part Canc")), 2);
}

TEST(Trade, ClassificationTexts)
{
    struct Row
    {
        int value;
        const char16_t* principal;
        const char16_t* tradeType;
        const char16_t* hedge;
        const char16_t* shortSell;
    };
    const Row rows[] = {
        { 0, u"U", u"", u"", u"N" },
        { 1, u"U", u"O.Lot", u"N.H.", u"S.S." },
        { 2, u"U", u"Manu", u"O.H.", u"M.S.S" },
        { 3, u"U", u"PO", u"L.H.", u"C.S.S" },
        { 4, u"U", u"OS", u"", u"" },
        { 7, u"U", u"U", u"", u"" },
        { 11, u"C", u"U", u"", u"" },
        { 12, u"H", u"U", u"", u"" },
        { 13, u"RT", u"U", u"", u"" },
    };
    TomsTrade trade;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.value);
        trade.Principal = trade.TradeType = trade.Hedge = trade.ShortSell = row.value;
        EXPECT_EQ(trade.property("RPrincipal").toString(), QStringView(row.principal));
        EXPECT_EQ(trade.property("RTradeType").toString(), QStringView(row.tradeType));
        EXPECT_EQ(trade.property("RHedge").toString(), QStringView(row.hedge));
        EXPECT_EQ(trade.property("RShortsell").toString(), QStringView(row.shortSell));
    }
}

TEST(Trade, BuiltFromAnOrderPutsTheOrderNumberIntoTheExchangeTradeNumber)
{
    const TexchOrder order(QStringLiteral("H|7|E42|10|C1|13|D1|0|0001.HK|11|0|4|500|3|88.85|418|R1"));
    const TomsTrade trade(order);
    EXPECT_EQ(trade.Exch_No, u"E42");
    EXPECT_TRUE(trade.Order_No.isEmpty());
    EXPECT_EQ(trade.Fill_Qty, 500);
    EXPECT_EQ(trade.Fill_Price, order.Price);
    EXPECT_EQ(trade.getBuyQty(), 500);
    EXPECT_EQ(trade.Runner, u"R1");
}

TEST(Trade, RoundTripsThroughItsMessage)
{
    const QString image
        = QStringLiteral("7|T1|8|T12345|6|OMS1|0|0005.HK|10|C1|11|1|13|D1|4|800|3|62.350000|5|3|"
                         "47|1|46|11|101|2|45|BK1|43|1|44|3|33|10:15:00|20|SEHK|78|F78|25|rm|"
                         "418|RUN|502|TRADE|");
    const TomsTrade trade(QStringLiteral("H|") + image);
    EXPECT_EQ(trade.DDSImageMessage(), image);
    EXPECT_EQ(trade.exchTradeNum(), u"12345");
    EXPECT_EQ(TomsTrade().DDSImageMessage(), u"7||8||6||0||10||11|-1|13||4|0|3|0.000000|43|0|502|TRADE|");
}

TEST(DerivedRecords, ParseTheirOwnTagsAndWriteThemAfterTheTerminator)
{
    const amsManualTrade manual(QStringLiteral("H|0|0005.HK|8|T777|43|2|44|5"));
    EXPECT_EQ(manual.Trade_No, u"T777");
    EXPECT_EQ(manual.exchTradeNum(), u"777");
    EXPECT_EQ(manual.Field43, 2) << "the exchange order's own rules apply first";
    EXPECT_TRUE(manual.DDSImageMessage().endsWith(u"|44|5|43|2|502|TRADE|43|2|44|5|"));

    const amsOrderHistory history(QStringLiteral("H|0|0005.HK|9|AMEND"));
    EXPECT_TRUE(history.DDSImageMessage().endsWith(u"502|TRADE|9|AMEND|"));

    const amsCrossOrder cross(QStringLiteral("H|10|C1|110|C2|113|D9"));
    EXPECT_TRUE(cross.DDSImageMessage().endsWith(u"502|TRADE|110|C2|113|D9|"));
    const amsCrossTrade crossTrade(
        QStringLiteral("H|") + amsCrossTrade(QStringLiteral("H|110|C2")).DDSImageMessage());
    EXPECT_EQ(crossTrade.ContraAccount, u"C2");

    const amsCTFTrade ctf(QStringLiteral("H|8|T1|76|BRK"));
    EXPECT_TRUE(ctf.DDSImageMessage().endsWith(u"502|TRADE|76|BRK|"));
}

TEST(Symbols, SuffixIsTheMajorSortKey)
{
    struct Row
    {
        const char* a;
        const char* b;
        int sign;
    };
    const Row rows[] = {
        { "0005", "0005.HK", -1 },
        { "0005.HK", "0005", 1 },
        { "0005.HK", "0001.SZ", -1 },
        { "0700.HK", "0005.HK", 1 },
        { "0005.HK", "0005.HK", 0 },
        { "ABC", "ABD", -1 },
        { "HSIZ6.HKFE", "0005.HK", 1 },
    };
    auto sign = [](int v) { return (v > 0) - (v < 0); };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.a << " vs " << row.b);
        EXPECT_EQ(
            sign(CompareSuffixalSymbol(QString::fromLatin1(row.a), QString::fromLatin1(row.b))), row.sign);
    }
}

TEST(Labels, InstructionAndClassificationTextsAreExact)
{
    const std::pair<Label, const char*> rows[] = {
        { resStrPrincipalTypeAgent, "C" },
        { resStrTradeTypeOddLot, "O.Lot" },
        { resStrMMShortSell, "M.S.S" },
        { resStrSettleBuyIn, "Buy In" },
        { orderStopPriceUpTriggerLabel, "STU:%.3f;" },
        { orderGoodtillWeekLabel, "GTC%s;" },
        { orderMSEQLabel, "mSEQ:%s;" },
        { orderPASSLabel, "PASS:%s;" },
        { orderCDOrderLabel, "CD Order;" },
        { orderOpenEndLabel, "Open End;" },
        { orderDealerLabel, "Dealer=%s;" },
    };
    for (const auto& [label, text] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(label(), QString::fromLatin1(text));
    }
    EXPECT_EQ(exchDataLabels().size(), 41U);
}

// A price that no double holds, or no number at all, reads as 0 like any
// other bad number; the largest doubles still read.
TEST(ExchangeOrder, PricesBeyondTheDoubleRangeReadAsZero)
{
    const struct
    {
        const char* text;
        long double expected;
    } cases[] = {
        { "1e309", 0 },
        { "-1e400", 0 },
        { "inf", 0 },
        { "nan", 0 },
        { "1e121", 1e121L },
        { "1.7976931348623157e308", 1.7976931348623157e308L },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const QString text = QString::fromLatin1(c.text);
        const TexchOrder order(QStringLiteral("H|0|X|3|%1|41|%1|4|5").arg(text));
        EXPECT_EQ(order.Price, c.expected);
        EXPECT_EQ(order.StopPrice, c.expected);
        EXPECT_EQ(order.Quantity, 5);
        const TomsTrade trade(QStringLiteral("H|8|X|3|%1").arg(text));
        EXPECT_EQ(trade.Fill_Price, c.expected);
    }
}

// A tiny negative stop price is written as "-0.000000" and reads back as -0:
// the record read back must write it again, so that the order shows the same
// stop text however often its message goes round.
TEST(ExchangeOrder, ATinyNegativeStopPriceGoesRoundUnchanged)
{
    const TexchOrder first(QStringLiteral("H|40|2560|41|-4e-10"));
    const TexchOrder second(QStringLiteral("H|") + first.DDSImageMessage());
    const TexchOrder third(QStringLiteral("H|") + second.DDSImageMessage());
    EXPECT_EQ(second.GetOrderOptionInfo(), third.GetOrderOptionInfo());
    EXPECT_EQ(second.DDSImageMessage(), third.DDSImageMessage());
}

// Every finite price the writer writes reads back: the text is the price at
// six decimals, reading it gives that value, and writing that value again
// gives the same text, for random bit patterns and the extremes alike.
TEST(ExchangeOrderMessage, EveryFinitePriceWrittenReadsBackToTheSameText)
{
    std::vector<double> values { 0.0, -0.0, 12.5, 1e121, -1e121, std::numeric_limits<double>::max(),
        -std::numeric_limits<double>::max(), std::numeric_limits<double>::min(),
        std::numeric_limits<double>::denorm_min(), 0.0000005, 0.0000015, 9.9999995, 4294967296.0000005,
        9007199254740993.0, 1e22, 1e23 };
    std::mt19937_64 rng(121);
    while (values.size() < 50000) {
        const double value = std::bit_cast<double>(rng());
        if (std::isfinite(value))
            values.push_back(value);
    }
    for (int e = -30; e <= 308; ++e)
        values.push_back(std::pow(10.0, e) * (1 + double(rng() % 1000) / 1000));
    int mismatches = 0;
    for (const double value : values) {
        QString written;
        DDSAddDouble(written, 3, value);
        const TexchOrder order(QStringLiteral("H|") + written);
        QString again;
        DDSAddDouble(again, 3, double(order.Price));
        const bool close = std::fabs(double(order.Price) - value) <= 5e-7 + std::fabs(value) * 1e-15;
        if (again != written || !close) {
            ADD_FAILURE() << written.toStdString() << " read back as " << again.toStdString();
            if (++mismatches == 10)
                return;
        }
    }
}

} // namespace
} // namespace qal
