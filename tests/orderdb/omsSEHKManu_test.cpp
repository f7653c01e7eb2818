// SPDX-License-Identifier: MIT
// The manual trade list: which trades and exchange orders it keeps and who
// owns them afterwards, the live-data rules, the accessible users as an SQL
// list, whether a manual trade was booked against a client order, and the
// recovery of the day's manual trades from the order database.
#include "qalpack/orderdb/omsSEHKManuModel.h"

#include <memory>
#include <vector>

#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "qalpack/db/Database.h"
#include "qalpack/model/omsData.h"
#include "qalpack/orderdb/DatabaseAccess.h"
#include "qalpack/orderdb/OrderSchema.h"
#include "qalpack/orderdb/orderDB.h"
#include "qalpack/profile/QalApplicationProfile.h"
#include "qalpack/profile/UserProfile.h"
#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

std::unique_ptr<TomsSEHKManuTrade> manualTrade(const QString& tradeNo, int qty, int tradeType = 2)
{
    auto trade = std::make_unique<TomsSEHKManuTrade>();
    trade->Order_No = tradeNo;
    trade->Exch_No = QStringLiteral("E") + tradeNo;
    trade->Fill_Qty = qty;
    trade->TradeType = tradeType;
    return trade;
}

std::unique_ptr<TexchOrder> exchOrder(const QString& exchNo, const QString& omsOrderNo, int selector = 0)
{
    auto exch = std::make_unique<TexchOrder>();
    exch->Order_No = exchNo;
    exch->OmsOrder_No = omsOrderNo;
    exch->ManualSelector = selector;
    exch->Quantity = 1000;
    return exch;
}

TEST(ManuList, SameTradeNumberTwiceKeepsOneTradeWithTheSecondValues)
{
    TOMSSEHKManuList list({}, QString());
    auto first = manualTrade("T1", 100);
    TomsSEHKManuTrade* const stored = first.get();
    ASSERT_EQ(list.AddTrade(first.release()), stored);

    auto second = manualTrade("t1", 300);
    second->Account = "C001";
    EXPECT_EQ(list.AddTrade(second.get()), second.get()); // handed back, not stored: still ours

    ASSERT_EQ(list.getTradeCount(), 1);
    EXPECT_EQ(list.getTradeByTradeNum("T1"), stored);
    EXPECT_EQ(stored->Fill_Qty, 300);
    EXPECT_EQ(stored->Account, "C001");
}

TEST(ManuList, OnlyManualTradesAreStoredAndAnEmptyExchangeIsSEHK)
{
    const struct
    {
        const char* name;
        QString exchange;
        QString stored;
    } rows[] = {
        { "EmptyBecomesSEHK", "", "SEHK" },
        { "OtherExchangeKept", "HKFE", "HKFE" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TOMSSEHKManuList list({}, QString());
        auto trade = manualTrade("T1", 100);
        trade->Exch = row.exchange;
        list.AddTrade(trade.release());
        EXPECT_EQ(list.getTradeByTradeNum("T1")->Exch, row.stored);
    }
    TOMSSEHKManuList list({}, QString());
    TomsTrade plain; // not a manual trade: refused
    plain.Order_No = "T1";
    EXPECT_EQ(list.AddTrade(&plain), nullptr);
    EXPECT_EQ(list.AddTrade(nullptr), nullptr);
    EXPECT_EQ(list.getTradeCount(), 0);
}

TEST(ManuList, TradesAreReachedInTradeNumberOrder)
{
    TOMSSEHKManuList list({}, QString());
    for (const char* no : { "T3", "T1", "T2" })
        list.AddTrade(manualTrade(no, 1).release());
    ASSERT_EQ(list.getTradeCount(), 3);
    EXPECT_EQ(list.getTradeByIndex(0)->Order_No, "T1");
    EXPECT_EQ(list.getTradeByIndex(2)->Order_No, "T3");
    EXPECT_EQ(list.getTradeByIndex(list.getTradeCount()), nullptr);
    EXPECT_THROW((void)list.getTradeByIndex(-1), Error);
    EXPECT_EQ(list.getTradeByTradeNum("T9"), nullptr);
}

TEST(ManuList, ExchangeOrdersAreStoredAsCopiesThatLaterOrdersUpdate)
{
    TOMSSEHKManuList list({}, QString());
    auto first = exchOrder("E1", "O1");
    EXPECT_EQ(list.AddExch(first.get()), first.get());
    TexchOrder* const stored = list.getExchByTradeNum("E1");
    ASSERT_NE(stored, nullptr);
    EXPECT_NE(stored, first.get());
    first.reset(); // the caller's to free; the copy stays

    auto second = exchOrder("E1", "O1");
    second->Quantity = 2000;
    EXPECT_EQ(list.AddExch(second.get()), stored);
    EXPECT_EQ(stored->Quantity, 2000);
    EXPECT_EQ(list.getExchCount(), 1);
    EXPECT_EQ(list.AddExch(nullptr), nullptr);

    list.clearExches();
    EXPECT_EQ(list.getExchByTradeNum("E1"), nullptr);
}

TEST(ManuList, ReceivedLiveDataIsKeptByKindAndTradeType)
{
    enum Kind { ManualTrade, ExchOrder, ClientOrder, Nothing };
    const struct
    {
        const char* name;
        Kind kind;
        int tradeType; // of the trade received, or of a trade stored under "E1"
        int selector;
        int trades; // kept afterwards
        int exches;
        int fires;
    } rows[] = {
        { "ManualTradeIsCopiedAndAnnounced", ManualTrade, 2, 0, 1, 0, 1 },
        { "ExchangeTradeIsIgnored", ManualTrade, 0, 0, 0, 0, 0 },
        { "SelectedExchangeOrderIsKept", ExchOrder, -1, 1, 0, 1, 0 },
        { "ExchangeOrderOfStoredManualTradeIsKept", ExchOrder, 2, 0, 1, 1, 0 },
        { "ExchangeOrderOfStoredType0TradeIsIgnored", ExchOrder, 0, 0, 1, 0, 0 },
        { "UnselectedExchangeOrderWithoutTradeIsIgnored", ExchOrder, -1, 0, 0, 0, 0 },
        { "ClientOrderIsIgnoredEvenWhenSelected", ClientOrder, -1, 1, 0, 0, 0 },
        { "NullIsIgnored", Nothing, -1, 0, 0, 0, 0 },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TOMSSEHKManuList list({}, QString());
        std::vector<void*> fired;
        list.RegisterCallback([&fired](void* data, void*) { fired.push_back(data); }, nullptr);

        std::unique_ptr<QObject> data;
        if (row.kind == ManualTrade) {
            auto trade = std::make_unique<TomsTrade>(); // any trade: the list keeps its own copy
            trade->Order_No = "T1";
            trade->TradeType = row.tradeType;
            data = std::move(trade);
        } else if (row.kind == ExchOrder || row.kind == ClientOrder) {
            if (row.tradeType >= 0)
                list.AddTrade(manualTrade("E1", 1, row.tradeType).release());
            auto exch
                = row.kind == ClientOrder ? std::make_unique<TomsOrder>() : std::make_unique<TexchOrder>();
            exch->Order_No = "E1";
            exch->ManualSelector = row.selector;
            data = std::move(exch);
        }
        list.ReceiveManuTrade(nullptr, data.get());

        EXPECT_EQ(list.getTradeCount(), row.trades);
        EXPECT_EQ(list.getExchCount(), row.exches);
        ASSERT_EQ(int(fired.size()), row.fires);
        if (row.fires > 0) {
            EXPECT_EQ(fired.front(), list.getTradeByTradeNum("T1"));
            EXPECT_NE(fired.front(), data.get());
        }
    }
}

TEST(ManuList, ReceivingAKnownTradeUpdatesAndAnnouncesTheStoredTrade)
{
    TOMSSEHKManuList list({}, QString());
    std::vector<void*> fired;
    list.RegisterCallback([&fired](void* data, void*) { fired.push_back(data); }, nullptr);
    TomsTrade live;
    live.Order_No = "T1";
    live.TradeType = 2;
    live.Fill_Qty = 100;
    list.ReceiveManuTrade(nullptr, &live);
    live.Fill_Qty = 400;
    list.ReceiveManuTrade(nullptr, &live);

    ASSERT_EQ(list.getTradeCount(), 1);
    TomsSEHKManuTrade* const stored = list.getTradeByIndex(0);
    EXPECT_EQ(stored->Fill_Qty, 400);
    EXPECT_EQ(fired, std::vector<void*>({ stored, stored }));
}

TEST(ManuList, TradeUpdatesReachTheHandlerOnceAndNeverAFreedList)
{
    auto kept = manualTrade("T1", 1);
    {
        TOMSSEHKManuList list({}, QString());
        std::vector<std::pair<void*, void*>> calls;
        list.setOnTradeUpdate([&calls](void* sender, void* data) { calls.emplace_back(sender, data); });
        auto trade = manualTrade("T1", 5);
        TomsSEHKManuTrade* const stored = trade.get();
        list.AddTrade(trade.release());
        list.AddTrade(stored); // again: still watched once
        stored->FireEvent(stored);
        EXPECT_EQ(calls, (std::vector<std::pair<void*, void*>> { { stored, &list } }));
        list.AddTrade(kept.get()); // updates the stored trade; `kept` stays ours but is watched
    }
    kept->FireEvent(kept.get()); // the list is gone: nobody is called
}

TEST(ManuList, AccessibleUsersFormAQuotedSqlList)
{
    const struct
    {
        const char* name;
        QStringList members;
        QString own;
        QString quoted;
    } rows[] = {
        { "MembersAndOwnNumberSorted", { "D002", "D003" }, "D001", "'D001','D002','D003'" },
        { "RepeatsAndEmptyItemsDropped", { "D002", "", "D002" }, "D002", "'D002'" },
        { "NoUsersGivesEmptyTextNotQuotes", {}, "", "" },
        { "QuoteInsideANumberIsDoubled", { "O'NEIL" }, "", "'O''NEIL'" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const TOMSSEHKManuList list(row.members, row.own);
        EXPECT_EQ(list.getAccessableUserAsString(), row.quoted);
    }
    const TOMSSEHKManuList list({ "D002" }, "D001");
    EXPECT_TRUE(list.isMyUser("D002"));
    EXPECT_FALSE(list.isMyUser("d002"));
    EXPECT_FALSE(list.isMyUser(""));
}

class IsBookedTradeTest : public testing::Test
{
protected:
    void TearDown() override { TOMSSEHKManuBaseList::SetInstance(nullptr); }
};

// A manual trade list of another kind, which keeps no exchange orders.
class OtherManuList : public TOMSSEHKManuBaseList
{
public:
    int getTradeCount() const override { return 0; }
    TomsSEHKManuTrade* getTradeByIndex(int) const override { return nullptr; }
    TomsSEHKManuTrade* getTradeByTradeNum(const QString&) const override { return nullptr; }
};

TEST_F(IsBookedTradeTest, BookedWhenTheCurrentListHasItsExchangeOrderOfAClientOrder)
{
    const auto trade = manualTrade("T1", 100); // exchange order number "ET1"
    EXPECT_FALSE(trade->isBookedTrade()) << "no current list";

    const struct
    {
        const char* name;
        const char* exchNo;
        const char* omsOrderNo;
        bool booked;
    } rows[] = {
        { "ExchangeOrderOfClientOrder", "ET1", "00000042", true },
        { "ExchangeOrderWithoutClientOrder", "ET1", "", false },
        { "OnlyAnotherExchangeOrder", "ET2", "00000042", false },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TOMSSEHKManuList list({}, QString());
        list.AddExch(exchOrder(row.exchNo, row.omsOrderNo).get());
        TOMSSEHKManuBaseList::SetInstance(&list);
        EXPECT_EQ(trade->isBookedTrade(), row.booked);
    }
    EXPECT_EQ(TOMSSEHKManuBaseList::GetInstance(), nullptr) << "a freed list stops being current";

    OtherManuList other;
    TOMSSEHKManuBaseList::SetInstance(&other);
    EXPECT_FALSE(trade->isBookedTrade());
}

// The day's manual trades recovered from the order database, and the
// accessible users of the logged-on user, on both servers.
class ManuListDatabaseTest : public test::DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        ASSERT_TRUE(config_.isValid());
        QFile ini(config_.filePath("oms.ini"));
        ASSERT_TRUE(ini.open(QIODevice::WriteOnly));
        ini.write(QStringLiteral("[OMS_DATAMAP]\nOMSDATA=OMSDATA_DSN\n[OMSDATA_DSN]\nDSN_Source=TESTDB\n"
                                 "DSN_user=%1\n")
                      .arg(user())
                      .toUtf8());
        ini.close();
        savedOmsIni_ = qgetenv("OMS_INI");
        qputenv("OMS_INI", ini.fileName().toLocal8Bit());
        resetUnits();
        TDatabase* const db = orderDatabase();
        ASSERT_NE(db, nullptr);
        CreateOrderSchema(*db);
    }

    void TearDown() override
    {
        TUserProfile::setInstance(nullptr);
        resetUnits();
        qputenv("OMS_INI", savedOmsIni_);
        DatabaseTest::TearDown();
    }

    static void resetUnits()
    {
        internal::ResetDatabaseAccess();
        internal::ResetApplicationProfile();
    }

    static void sql(const QString& text) { orderDatabase()->Execute(text); }

private:
    QTemporaryDir config_;
    QByteArray savedOmsIni_;
};

TEST_P(ManuListDatabaseTest, RecoversTheDaysManualTradesAndTheirExchangeOrders)
{
    sql("insert into OMSTrade_File (Order_No, Account, Symbol, Quantity, User_No, Status) "
        "values ('00000001', 'C001', '0005.HK', 4000, 'D001', 'Comp')");
    // E1 belongs to the client order; E2's client order is not in the file.
    sql("insert into Exch_File (Exch_No, Order_No, Account, Symbol, Quantity, Price, User_No, Status) values "
        "('E1', '00000001', 'C001', '0005.HK', 4000, 61.5, 'D001', 'Comp'), "
        "('E2', '00000009', 'C002', '0011.HK', 1000, 120, 'D002', 'Comp')");
    sql("insert into Trans_File (Tran_No, Exch_No, Account, Symbol, Quantity, Trans_Price, User_No, "
        "Trade_Type, Status) values "
        "('T1', 'E1', 'C001', '0005.HK', 4000, 61.5, 'D001', 2, 'Comp'), "
        "('T2', 'E2', 'C002', '0011.HK', 1000, 120, 'D002', 1, 'Comp'), "
        "('T3', 'E1', 'C001', '0005.HK', 400, 61.5, 'D001', 0, 'Comp')");

    TOMSSEHKManuList list({}, "D001");
    list.AddTrade(manualTrade("OLD", 1).release());
    list.AddExch(exchOrder("OLDE", "O").get());
    TOMSSEHKManuBaseList::SetInstance(&list);
    list.recoverFromDB();
    EXPECT_FALSE(list.loading());

    ASSERT_EQ(list.getTradeCount(), 2) << "only trades of a type other than 0, and nothing from before";
    EXPECT_EQ(list.getTradeByTradeNum("OLD"), nullptr);
    TomsSEHKManuTrade* const t1 = list.getTradeByTradeNum("T1");
    TomsSEHKManuTrade* const t2 = list.getTradeByTradeNum("T2");
    ASSERT_NE(t1, nullptr);
    ASSERT_NE(t2, nullptr);
    EXPECT_EQ(t1->Fill_Qty, 4000);
    EXPECT_EQ(t1->Exch, "SEHK") << "exchange orders without an exchange code";
    EXPECT_EQ(list.getExchCount(), 1);
    ASSERT_NE(list.getExchByTradeNum("E1"), nullptr);
    EXPECT_EQ(list.getExchByTradeNum("E1")->OmsOrder_No, "00000001");
    EXPECT_TRUE(t1->isBookedTrade());
    EXPECT_FALSE(t2->isBookedTrade());
    TOMSSEHKManuBaseList::SetInstance(nullptr);
}

TEST_P(ManuListDatabaseTest, DatabaseFailureLeavesLoadingOff)
{
    sql("drop table Trans_File");
    TOMSSEHKManuList list({}, "D001");
    EXPECT_THROW(list.recoverFromDB(), Error);
    EXPECT_FALSE(list.loading());
}

TEST_P(ManuListDatabaseTest, AccessibleUsersComeFromTheLoggedOnUsersProfile)
{
    sql("insert into User_File (User_No, Full_name, member) values ('D003', 'Dealer Three', 'D005,D004')");
    TUserProfile::setInstance(std::make_unique<TUserProfile>("D003", QString()));
    const TOMSSEHKManuList list;
    EXPECT_EQ(list.getAccessableUserAsString(), "'D003','D004','D005'");
}

INSTANTIATE_TEST_SUITE_P(Drivers, ManuListDatabaseTest,
    testing::Values(test::Driver::Sqlite, test::Driver::Postgres), test::driverName);

} // namespace
} // namespace qal
