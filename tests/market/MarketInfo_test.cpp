// SPDX-License-Identifier: MIT
// Market information: the view the factory picks for an order, the properties
// screens find by name, and how instructions move between view and order.
#include "qalpack/market/MarketInfo.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <QMetaProperty>
#include <QStringList>

#include <gtest/gtest.h>

#include "qalpack/model/omsData.h"
#include "qalpack/profile/EntitlementData.h"
#include "qalpack/runtime/Exception.h"
#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

using Names = std::vector<std::string>;
using Make = std::unique_ptr<TmarketInfo> (*)(TomsOrder&);

template<class Info>
std::unique_ptr<TmarketInfo> make(TomsOrder& order)
{
    return std::make_unique<Info>(order);
}

constexpr Make kSEHK = &make<SEHKinfo>;
constexpr Make kHKFE = &make<HKFEinfo>;
constexpr Make kDefault = &make<DefaultInfo>;
constexpr Make kOddLotTrade = &make<SEHKOddLotTradeInfo>;

// The class's own properties in declared order, as "name rw" or "name r"
// (with "-" appended to one that cannot be read); or only the names of the
// W... flags that read true.
Names published(const QObject& info, bool flagsSetOnly = false)
{
    Names names;
    const QMetaObject* meta = info.metaObject();
    for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i) {
        const QMetaProperty p = meta->property(i);
        if (!flagsSetOnly)
            names.push_back(
                p.name() + std::string(p.isWritable() ? " rw" : " r") + (p.isReadable() ? "" : "-"));
        else if (p.typeId() == QMetaType::Bool && p.name()[0] == 'W' && p.read(&info).toBool())
            names.emplace_back(p.name());
    }
    return names;
}

TEST(MarketInfo, FactoryPicksViewByExchangeAndInstructionWord)
{
    const struct
    {
        const char* name;
        bool gobal;
        const char* exch;
        int option;
        const char* view;
    } cases[] = {
        { "SEHKOrder", false, "SEHK", 0, "qal::SEHKinfo" },
        { "SEHKOddLotOrder", false, "SEHK", 0x3, "qal::SEHKinfo" },
        { "SEHKOddLotTradeReport", false, "SEHK", 0x20003, "qal::SEHKOddLotTradeInfo" },
        { "SEHKMarketTradeReport", false, "SEHK", 0x20001, "qal::SEHKinfo" },
        { "SEHKKindSevenHasOddLotBits", false, "SEHK", 0x20007, "qal::SEHKOddLotTradeInfo" },
        { "HKFEOrder", false, "HKFE", 0x20003, "qal::HKFEinfo" },
        { "LowerCaseCode", false, "sehk", 0, "qal::DefaultInfo" },
        { "OtherExchange", false, "SHSE", 0, "qal::DefaultInfo" },
        { "NoExchange", false, "", 0, "qal::DefaultInfo" },
        { "GobalNoExchange", true, "", 0, "qal::SEHKinfo" },
        { "GobalOtherExchange", true, "SHSE", 0, "qal::SEHKinfo" },
        { "GobalHKFE", true, "HKFE", 0, "qal::HKFEinfo" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        GobalMarket() = c.gobal;
        TomsOrder order;
        order.Exch = QString::fromLatin1(c.exch);
        order.OrderOption = c.option;
        const std::unique_ptr<TmarketInfo> info = MarketInfoFactory(order);
        GobalMarket() = false;
        EXPECT_STREQ(info->metaObject()->className(), c.view);
        EXPECT_EQ(&info->order(), &order);
        EXPECT_STREQ(info->createObject(order)->metaObject()->className(), c.view);
    }
}

TEST(MarketInfo, PublishesPropertiesByExactNameAndAccess)
{
    const struct
    {
        const char* name;
        Make make;
        Names properties;
    } cases[] = {
        { "SEHK", kSEHK,
            { "WStop_Price rw", "WSTOP_LIMIT rw", "WManual rw", "WOddlot rw", "WShort_Sell rw", "WFOK rw",
                "WFAK rw", "WAO rw", "WEnhancedOrder rw", "WGoodtillWeek rw", "WMarketorder rw",
                "RStop_Price r", "RManual r", "ROddlot r", "RShort_Sell r", "RFOK r", "RFAK r", "RAO r",
                "REnhancedOrder r", "RGoodtillWeek r", "RMarketorder r" } },
        { "HKFE", kHKFE,
            { "WStop_Price rw", "WOpen_Close rw", "WPrincipal_Type rw", "WManual rw", "WAO rw", "WFOK rw",
                "WFAK rw", "WSTOP_LIMIT rw", "RStop_Price r", "ROpen_Close r", "RPrincipal_Type r",
                "RManual r", "RAO r", "RFOK r", "RFAK r", "RSTOP_LIMIT rw" } },
        { "Default", kDefault,
            { "WStop_Price rw", "WManual rw", "WFOK rw", "WFAK rw", "WSTOP_LIMIT rw", "RFOK r", "RFAK r",
                "RSTOP_LIMIT rw" } },
        { "OddLotTrade", kOddLotTrade, { "RRefNum r", "RBroker r", "WRefNum rw", "WBroker rw" } },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TomsOrder order;
        EXPECT_EQ(published(*c.make(order)), c.properties);
    }
}

TEST(MarketInfo, RFAKShowsTheFOKFlagOnFuturesAndOtherMarkets)
{
    for (const Make make : { kHKFE, kDefault }) {
        TomsOrder fok;
        fok.OrderOption = 0x100;
        TomsOrder fak;
        fak.OrderOption = 0x80;
        EXPECT_TRUE(make(fok)->property("RFAK").toBool());
        EXPECT_FALSE(make(fak)->property("RFAK").toBool());
    }
}

TEST(MarketInfo, EachInstructionBitMapsToOneFlagBothWays)
{
    const struct
    {
        const char* name;
        Make make;
        int bits;
        const char* flag; // nullptr: the market has no such instruction
    } cases[] = {
        { "SEHKManual", kSEHK, 0x20, "WManual" },
        { "SEHKFAK", kSEHK, 0x80, "WFAK" },
        { "SEHKFOK", kSEHK, 0x100, "WFOK" },
        { "SEHKAO", kSEHK, 0x200, "WAO" },
        { "SEHKEnhanced", kSEHK, 0x400, "WEnhancedOrder" },
        { "SEHKStopLimit", kSEHK, 0x800, "WSTOP_LIMIT" },
        { "SEHKGoodTillWeek", kSEHK, 0x100000, "WGoodtillWeek" },
        { "SEHKMarketOrderKind", kSEHK, 0x1, "WMarketorder" },
        { "SEHKOddLotKind", kSEHK, 0x3, "WOddlot" },
        { "SEHKOtherKind", kSEHK, 0x2, nullptr },
        { "HKFEManual", kHKFE, 0x20, "WManual" },
        { "HKFEAO", kHKFE, 0x200, "WAO" },
        { "HKFEFOK", kHKFE, 0x100, "WFOK" },
        { "HKFEFAK", kHKFE, 0x80, "WFAK" },
        { "HKFEStopLimit", kHKFE, 0x800, "WSTOP_LIMIT" },
        { "HKFENoEnhanced", kHKFE, 0x400, nullptr },
        { "DefaultManual", kDefault, 0x20, "WManual" },
        { "DefaultFOK", kDefault, 0x100, "WFOK" },
        { "DefaultFAK", kDefault, 0x80, "WFAK" },
        { "DefaultStopLimit", kDefault, 0x800, "WSTOP_LIMIT" },
        { "DefaultNoAO", kDefault, 0x200, nullptr },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TomsOrder order;
        order.OrderOption = c.bits;
        EXPECT_EQ(published(*c.make(order), true), c.flag ? Names { c.flag } : Names {});
        if (c.flag == nullptr)
            continue;
        TomsOrder fresh;
        const auto info = c.make(fresh);
        ASSERT_TRUE(info->setProperty(c.flag, true));
        info->syncOut();
        EXPECT_EQ(fresh.OrderOption, c.bits);
        EXPECT_EQ(fresh.Option489, 0);
    }
}

TEST(MarketInfo, SEHKShortSellCodeFollowsTheSide)
{
    TomsOrder marked;
    marked.ShortSell = 2;
    EXPECT_TRUE(SEHKinfo(marked).Short_Sell);
    for (const auto& [side, code] : { std::pair { 0, 3 }, { 1, 1 }, { -1, 0 } }) {
        SCOPED_TRACE(side);
        TomsOrder order;
        order.Side = side;
        SEHKinfo info(order);
        info.Short_Sell = true;
        info.syncOut();
        EXPECT_EQ(order.ShortSell, code);
    }
}

TEST(MarketInfo, SEHKCodeOnlyFlagsChangeHowMarketAndStopLimitAreSent)
{
    TomsOrder order;
    SEHKinfo info(order);
    info.Marketorder = info.MarketOrderManual = true;
    info.STOP_LIMIT = info.StopLimitTrigger = true;
    info.syncOut();
    EXPECT_EQ(order.OrderOption, 0x21);
    EXPECT_EQ(order.Option489, 0x00100001);
}

TEST(MarketInfo, FlagsAndOrderBitsOnlyAccumulate)
{
    for (const Make make : { kSEHK, kHKFE, kDefault }) {
        TomsOrder order;
        order.OrderOption = 0x100; // FOK
        const auto info = make(order);
        SCOPED_TRACE(info->metaObject()->className());
        order.OrderOption = 0;
        info->syncIn();
        EXPECT_TRUE(info->property("WFOK").toBool());
        info->setProperty("WFOK", false);
        order.OrderOption = 0x120; // FOK and manual
        info->syncOut();
        EXPECT_EQ(order.OrderOption, 0x120);
    }
}

TEST(MarketInfo, OrderFieldsAreReadAndWrittenThroughTheOrder)
{
    TomsOrder order;
    HKFEinfo futures(order);
    futures.setProperty("WStop_Price", 101.5);
    futures.setProperty("WOpen_Close", 2);
    futures.setProperty("WPrincipal_Type", 12);
    SEHKOddLotTradeInfo trade(order);
    trade.setProperty("WRefNum", "R77");
    trade.setProperty("WBroker", "B123");
    EXPECT_EQ(order.StopPrice, 101.5L);
    EXPECT_EQ(order.OpenClose, 2);
    EXPECT_EQ(order.PrincipalType, 12);
    EXPECT_EQ(order.ref_no, "R77");
    EXPECT_EQ(order.CounterParty, "B123");
}

TEST(MarketInfo, DeepCopyCarriesInstructionsButNeverStopLimit)
{
    const struct
    {
        const char* name;
        Make make;
        int targetOption;
        Names flags;
    } cases[] = {
        { "SEHK", kSEHK, 0,
            { "WManual", "WOddlot", "WShort_Sell", "WFOK", "WFAK", "WAO", "WEnhancedOrder", "WGoodtillWeek",
                "WMarketorder" } },
        { "SEHKStopLimitFromOwnOrder", kSEHK, 0x800,
            { "WSTOP_LIMIT", "WManual", "WOddlot", "WShort_Sell", "WFOK", "WFAK", "WAO", "WEnhancedOrder",
                "WGoodtillWeek", "WMarketorder" } },
        { "HKFE", kHKFE, 0, { "WManual", "WAO", "WFOK", "WFAK" } },
        { "Default", kDefault, 0, { "WManual", "WFOK", "WFAK" } },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TomsOrder sourceOrder;
        const auto source = c.make(sourceOrder);
        for (const std::string& flag : published(*source))
            source->setProperty(flag.substr(0, flag.find(' ')).c_str(), true);
        TomsOrder order;
        order.OrderOption = c.targetOption;
        const auto copy = source->deepCopy(*source, order);
        ASSERT_NE(copy, nullptr);
        EXPECT_EQ(&copy->order(), &order);
        EXPECT_EQ(published(*copy, true), c.flags);
    }
}

TEST(MarketInfo, DeepCopyWritesCarriedOrderFieldsIntoTheNewOrder)
{
    TomsOrder sourceOrder;
    sourceOrder.StopPrice = 9.5;
    sourceOrder.OpenClose = 1;
    sourceOrder.PrincipalType = 13;
    sourceOrder.ref_no = "R1";
    sourceOrder.CounterParty = "B9";
    TomsOrder order;
    HKFEinfo futures(sourceOrder);
    EXPECT_NE(futures.deepCopy(futures, order), nullptr);
    SEHKOddLotTradeInfo trade(sourceOrder);
    EXPECT_NE(trade.deepCopy(trade, order), nullptr);
    EXPECT_EQ(order.StopPrice, 9.5L);
    EXPECT_EQ(order.OpenClose, 1);
    EXPECT_EQ(order.PrincipalType, 13);
    EXPECT_EQ(order.ref_no, "R1");
    EXPECT_EQ(order.CounterParty, "B9");
}

TEST(MarketInfo, DeepCopyFromAnotherMarketGivesNull)
{
    TomsOrder order;
    const Make makes[] = { kSEHK, kHKFE, kDefault, kOddLotTrade };
    for (const Make receiver : makes) {
        for (const Make source : makes) {
            if (receiver != source) {
                EXPECT_EQ(receiver(order)->deepCopy(*source(order), order), nullptr);
            }
        }
    }
}

TEST(MarketInfo, IsEntitleMapsPropertyNamesToEntitlementKeys)
{
    // "property=key": the user holding only that key may use the property;
    // without keys only an empty key is granted. An empty property asks for
    // the market. Rows ending in "!" are refused even with the key.
    const struct
    {
        const char* name;
        Make make;
        QStringList rules;
    } cases[] = {
        { "SEHK", kSEHK,
            { "=SEHKTrade", "WStop_Price=OEStopL", "WSTOP_LIMIT=OEStopL", "WOddlot=OEOddLot",
                "WShort_Sell=OEShortS", "WManual=", "WFOK=OEFOK", "WFAK=OEFAK", "WAO=OEAO",
                "WEnhancedOrder=OEEnhanced", "WGoodtillWeek=OEGoodtillWeek", "WMarketorder=OEMarketOrder",
                "=HKFETrade!", "WFOK=OEFAK!", "RFOK=OEFOK!", "wfok=OEFOK!" } },
        { "HKFE", kHKFE,
            { "=HKFETrade", "WStop_Price=OEStopL", "WSTOP_LIMIT=OEStopL", "WOpen_Close=OEOpenC",
                "WPrincipal_Type=OEPrin", "WManual=", "WAO=OEAO", "WFOK=OEFOK", "WFAK=OEFAK", "=SEHKTrade!",
                "WOddlot=OEOddLot!" } },
        { "Default", kDefault,
            { "WStop_Price=OEStopL", "WSTOP_LIMIT=OEStopL", "WManual=", "WFOK=OEFOK", "WFAK=OEFAK",
                "=SEHKTrade!", "WAO=OEAO!" } },
        { "OddLotTrade", kOddLotTrade, { "=", "WAnything=" } },
    };
    for (const auto& c : cases) {
        TomsOrder order;
        const auto info = c.make(order);
        for (QString rule : c.rules) {
            SCOPED_TRACE(std::string(c.name) + " " + rule.toStdString());
            const bool refused = rule.endsWith(u'!');
            rule.remove(u'!');
            const QString property = rule.section(u'=', 0, 0);
            const QString key = rule.section(u'=', 1);
            TEntitlement granted("D001");
            granted.AddEntitle(key);
            EXPECT_EQ(info->isEntitle(property, granted), !refused);
            EXPECT_EQ(info->isEntitle(property, TEntitlement("D002")), key.isEmpty());
        }
    }
}

TEST(MarketInfo, ReachingADestroyedOrderThrows)
{
    auto order = std::make_unique<TomsOrder>();
    order->OrderOption = 0x100;
    HKFEinfo info(*order);
    order.reset();
    EXPECT_TRUE(info.FOK);
    EXPECT_THROW(info.syncOut(), Error);
    EXPECT_THROW((void)info.getOC(), Error);
}

} // namespace
} // namespace qal
