// SPDX-License-Identifier: MIT
// What order screens and the order database rely on in the client order:
// its own message tags, the instruction remark, quantities, and who frees
// which exchange order.
#include "qalpack/model/omsData.h"

#include <iterator>
#include <memory>

#include <QMetaProperty>
#include <QPointer>
#include <QStringList>

#include <gtest/gtest.h>

#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

// The exchange order's part (in its own write order), then every tag of the
// client order in the order the client order writes them.
const QString kFullImage = QStringLiteral(
    "6|OMS001|0|0700.HK|10|C0001|11|0|13|D01|4|2000|3|345.600000|5|2|34|400|35|0|40|1048576|489|8|"
    "44|0|43|0|487|InvestorID=77,OriginalOrderNum=OMS000|502|TRADE|"
    "455|BK1|456|WV2|460|APR|462|REJ|486|SYS9|458|5000000|400|WEB|188|over limit|503|1234.500000|"
    "1116|3|1113|T77|530|RQ5|1304|12.5,2000,\"1 lot\"|495|20240301|440|OAOGroup=7;SEQ=2|"
    "187|a187|402|a402|403|a403|404|a404|405|a405|407|a407|421|a421|422|a422|423|a423|457|a457|"
    "463|a463|485|a485|488|a488|1000|a1000|401|-4|442|442|1109|1109|"
    "71|0.250000|95|-1.500000|459|459.125000|1117|7.750000|");

TEST(ClientOrder, BuiltFromAMessageReadsItsOwnTags)
{
    const TomsOrder order(QStringLiteral("H|0|0005.HK|455|BK1|1304|12.5,2000,2|503|1.25|440|EXEUP=5|1116|x"));
    EXPECT_EQ(order.Symbol, u"0005.HK");
    EXPECT_EQ(order.BASKET_ID, u"BK1");
    EXPECT_EQ(order.GTCDetails.Count(), 3);
    EXPECT_EQ(order.Held, 1.25L);
    EXPECT_EQ(order.AlgoCommand, u"EXEUP=5");
    EXPECT_EQ(order.ReqStatus, 0) << "a malformed number stores 0";
}

// The comma-text fields are read straight from the message text: their
// items must be strings of their own.
TEST(ClientOrder, CommaTextFieldsOutliveTheMessage)
{
    std::unique_ptr<TomsOrder> order;
    {
        QString message = QStringLiteral("H|487|InvestorID=77,PTA=A1/B2|1304|20240131,345.6,2000|");
        order = std::make_unique<TomsOrder>(message);
        message.fill(u'#');
    }
    EXPECT_EQ(order->getInvestorID(), u"77");
    EXPECT_EQ(order->Attributes.Values("PTA"), u"A1/B2");
    EXPECT_EQ(order->GTCDetails.toQStringList(), (QStringList { "20240131", "345.6", "2000" }));
}

TEST(ClientOrder, FullRecordRoundTripsThroughItsMessage)
{
    const TomsOrder first(QStringLiteral("H|") + kFullImage);
    EXPECT_EQ(first.DDSImageMessage(), kFullImage);

    const TomsOrder second(QStringLiteral("H|") + first.DDSImageMessage());
    EXPECT_EQ(second.DDSImageMessage(), kFullImage);
    EXPECT_EQ(second.GTCDetails.Strings(2), u"1 lot");
    EXPECT_EQ(second.AppReason, u"over limit");
    EXPECT_EQ(second.Price459, 459.125L);
    EXPECT_EQ(second.Field401, -4);
    EXPECT_EQ(second.GetOriginalOrderNum(), u"OMS000");
}

TEST(ClientOrder, ResetEmptiesTheOrderAndFreesItsExchangeOrders)
{
    TomsOrder order(QStringLiteral("H|") + kFullImage);
    QPointer<TexchOrder> exch = new TexchOrder(QStringLiteral("H|7|E1"));
    order.addExchOrder(exch);
    TomsOrder child;
    order.AddChildWorkOrder(&child);
    order.Currency = QStringLiteral("HKD");
    order.CompSysRef.Add(QStringLiteral("S1"));

    order.reset();

    EXPECT_EQ(order.DDSImageMessage(), TexchOrder().DDSImageMessage());
    EXPECT_TRUE(exch.isNull());
    EXPECT_TRUE(order.ExchOrders.empty());
    EXPECT_TRUE(order.ChildWorkOrders.empty());
    EXPECT_TRUE(order.Currency.isEmpty());
    EXPECT_EQ(order.CompSysRef.Count(), 0);
}

TEST(ClientOrderRemark, ListsPiecesInBlotterOrder)
{
    // Each row's fields as message pairs: 40 option word, 489 second word,
    // 101 short sell, 12 open/close, 46 principal, 25 remark, 74 user
    // reference, 487 attributes, 440 algorithm command.
    const std::pair<const char*, const char16_t*> rows[] = {
        { "40|0x60003", u"OddTrd;BookTrd;" },
        { "40|0x80007A3|489|0x804101|101|1|12|2|46|13",
            u"Work;SS;Manual;AO;Enhanced;Odd;FOK;FAK;Open End;APP;Void;Close;RT;CD Order;" },
        { "40|0xA0001|12|1|46|12", u"MO;ManuTrd;Open;House;" },
        { "40|0x800800|489|0x100000", u"STU:9.500;STP:9.500;" },
        { "40|0x1000800|25|call back;|74|SPT:1", u"STD:9.500;call back;REV:A123;" },
        { "40|0x800|74|SPT:2", u"STP:9.500;ALO:A123;" },
        { "74|SPT:0", u"ALD;" },
        { "74|SPT:3", u"" },
        { "487|PTA=P1,MSEQ=12,DLR=D01", u"mSEQ:12;Dealer=D01;" },
        { "489|8|487|PTA=P1,MSEQ=12,DLR=D01", u"PTA:P1;mSEQ:12;Dealer=D01;" },
        { "40|0x100080|489|0x8004000|440|OCOGroup=3;SEQ=1", u"FAK;GTC[20240301];CD Order;OCO ID:3,SEQ=1;" },
    };
    for (const auto& [fields, expected] : rows) {
        SCOPED_TRACE(fields);
        const TomsOrder order(QStringLiteral("H|41|9.5|15|A123|495|20240301|") + QString::fromLatin1(fields));
        EXPECT_EQ(order.GetRemark(), QStringView(expected));
    }
}

TEST(ClientOrderRemark, GoodTillDateTextHasAnAttributeFormAndADetailsForm)
{
    // 40 option word, 495 GTC date, 1304 details, 487 attributes.
    const std::pair<const char*, const char16_t*> rows[] = {
        { "495|20240301", u"" },
        { "40|0x100000|495|20240301", u"[20240301]" },
        { "40|0x100000|495|20240301|487|InvestorID=77,GTC=20240131_OMS123_5000,DLR=D01",
            u"[20240301];date_time[20240131];original order number[OMS123];original qty[5000]" },
        { "40|0x100000|487|GTC=20240131_OMS123_5000",
            u";date_time[20240131];original order number[OMS123];original qty[]" },
        { "40|0x100000|1304|12.5,2000,2", u"[OMS9@12.5,2000X2]" },
        { "40|0x100000|495|20240301|1304|12.5,2000,2|487|OriginalOrderNum=OMS1",
            u"[20240301,OMS1@12.5,2000X2]" },
        { "40|0x100000|1304|12.5", u"[OMS9@12.5,X]" },
    };
    for (const auto& [fields, expected] : rows) {
        SCOPED_TRACE(fields);
        const TomsOrder order(QStringLiteral("H|6|OMS9|") + QString::fromLatin1(fields));
        EXPECT_EQ(order.GetGTCRemark(), QStringView(expected));
    }
}

TEST(ClientOrderRemark, AlgorithmPiecesFollowTheirOwnOrder)
{
    const std::pair<const char*, const char16_t*> rows[] = {
        { "OAOGroup=7;SEQ=2;ACTDATE=20240131;ACTTIME=093000",
            u"OAO ID:7,SEQ=2;Time-to-Send:<2024/01/31> <09:30:00>;" },
        { "EXEDOWN=9.5", u"STOP:PRICE 9.5,TOLER 0;" },
        { "EXEUP=10.2;EXEDOWN=9.5;TOLER=0.1;STEP=0.05", u"STOP:PRICE 10.2,TOLER 0.1, STEP 0.05;" },
        { "VWAP;AGGR=H;ACTDATE=2024131;ACTTIME=0930;EXEUP=5;OCOGroup=4;SEQ=9;OAOGroup=8",
            u"OAO ID:8,SEQ=9;OCO ID:4,SEQ=9;STOP:PRICE 5,TOLER 0;Time-to-Send:<2024131> <0930>;VWAP:AGGR=H" },
        { "ACTDATE=20240131;ACTTIME=09:30:00", u"Time-to-Send:<2024/01/31> <09>;" },
        { "VWAP;SEQ=1", u"" },
    };
    TomsOrder order;
    for (const auto& [command, expected] : rows) {
        SCOPED_TRACE(command);
        order.Option489 = Opt489Algo;
        order.AlgoCommand = QString::fromLatin1(command);
        EXPECT_EQ(order.GetAlgoCmdRemark(), QStringView(expected));
        order.Option489 = Opt489WorkOrder;
        EXPECT_EQ(order.GetAlgoCmdRemark(), u"") << "not an algorithm order";
    }
}

TEST(ClientOrder, RemainingQuantityByStatus)
{
    struct Row
    {
        int status;
        int filled;
        int expected;
    };
    const Row rows[] = { { -1, 300, 0 }, { 0, 300, 700 }, { 1, 300, 700 }, { 2, 300, 700 }, { 3, 1000, 0 },
        { 4, 300, 0 }, { 5, 0, 1000 }, { 7, 0, 0 }, { 2, 1200, 0 } };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "status " << row.status << ", filled " << row.filled);
        TomsOrder order;
        order.Quantity = 1000;
        order.Status = row.status;
        order.Fill_Qty = row.filled;
        EXPECT_EQ(order.GetRemainingQty(), row.expected);
    }
}

TEST(ClientOrder, StatusTextsDecodeBackAsTheDatabaseKeepsThem)
{
    for (const int code : { -1, 1, 2, 3, 4, 5, 7 }) {
        SCOPED_TRACE(code);
        TomsOrder order;
        order.Status = code;
        EXPECT_EQ(order.RawStatus(order.statusMessage().left(4)), order.statusNumber());
    }
}

// An exchange order of `quantity` at status `status`, owned by nobody.
TexchOrder* exchangeOrder(const char* number, int quantity, int status)
{
    auto* exch = new TexchOrder();
    exch->Order_No = QString::fromLatin1(number);
    exch->Quantity = quantity;
    exch->Status = status;
    return exch;
}

TEST(ClientOrderQueue, SumsItsExchangeOrdersWhileWorking)
{
    TomsOrder order;
    order.Side = 0;
    order.addExchOrder(exchangeOrder("E1", 500, 1));
    order.addExchOrder(exchangeOrder("E2", 300, 2));
    order.addExchOrder(exchangeOrder("E3", 900, 3));
    const std::pair<int, int> rows[] = { { 1, 800 }, { 2, 800 }, { 3, 0 }, { 7, 0 } };
    for (const auto& [status, queued] : rows) {
        SCOPED_TRACE(status);
        order.Status = status;
        EXPECT_EQ(order.CalculateQueuQty(), queued);
        EXPECT_EQ(order.property("RBuyQueuQty").toInt(), queued);
    }
}

TEST(ClientOrderQueue, WorkOrderSumsTheExchangeOrdersOfItsChildren)
{
    TomsOrder work;
    work.Status = 1;
    work.Option489 = Opt489WorkOrder | Opt489ChildQueue;
    work.addExchOrder(exchangeOrder("W1", 5000, 1));
    TomsOrder first;
    first.addExchOrder(exchangeOrder("C1", 100, 1));
    first.addExchOrder(exchangeOrder("C2", 200, 2));
    TomsOrder second;
    second.addExchOrder(exchangeOrder("C3", 40, 1));
    auto gone = std::make_unique<TomsOrder>();
    gone->addExchOrder(exchangeOrder("C4", 7, 1));
    for (TomsOrder* child : { &first, &second, gone.get(), &first })
        work.AddChildWorkOrder(child);
    gone.reset();

    EXPECT_EQ(work.GetChildWorkOrderList().size(), 2);
    EXPECT_EQ(work.CalculateQueuQty(), 340) << "children's own status does not matter, the work order's does";
    work.Option489 = Opt489WorkOrder;
    EXPECT_EQ(work.CalculateQueuQty(), 5000);
}

TEST(ClientOrder, AveragePriceComesFromTheDoneTradesOnItsSide)
{
    TomsOrder order;
    order.Side = 0;
    order.Fill_Qty = 400;
    TexchOrder* exch = exchangeOrder("E1", 1000, 2);
    order.addExchOrder(exch);
    TomsTrade first(QStringLiteral("H|8|E1|4|100|3|10|11|0|5|3"));
    TomsTrade second(QStringLiteral("H|8|E1|4|300|3|11|11|0|5|3"));
    TomsTrade otherSide(QStringLiteral("H|8|E1|4|50|3|99|11|1|5|3"));
    TomsTrade pending(QStringLiteral("H|8|E1|4|70|3|99|11|0|5|1"));
    for (TomsTrade* trade : { &first, &second, &otherSide, &pending })
        exch->addTrade(trade);
    order.addTrade(&first);

    order.calAveragePrice();

    EXPECT_EQ(order.FillAmount, 4300.0L) << "a trade kept twice counts once";
    EXPECT_EQ(order.AveragePrice, 10.75L);
    EXPECT_EQ(order.property("RFill_Price").toDouble(), 10.75);
    order.Fill_Qty = 0;
    EXPECT_EQ(order.getAveragePrice(), 0.0L);
}

TEST(ClientOrderExchangeOrders, AdoptsUnownedOnesAndFreesThemWhenReplaced)
{
    TomsOrder order;
    QPointer<TexchOrder> first = exchangeOrder("E1", 100, 1);
    order.addExchOrder(first);
    EXPECT_EQ(first->parent(), &order);

    TexchOrder* newer = exchangeOrder("E1", 100, 2);
    order.addExchOrder(newer);
    EXPECT_TRUE(first.isNull());
    EXPECT_EQ(order.GetExchOrder(QStringLiteral("E1")), newer);

    QObject host;
    auto* hostOwned = new TexchOrder(&host);
    hostOwned->Order_No = QStringLiteral("E2");
    order.addExchOrder(hostOwned);
    EXPECT_EQ(hostOwned->parent(), &host);

    TexchOrder* unacked = exchangeOrder("", 50, 0);
    order.addExchOrder(unacked);
    unacked->Order_No = QStringLiteral("E3");
    order.addExchOrder(unacked);
    EXPECT_EQ(order.ExchOrders.size(), 3U) << "a re-keyed exchange order keeps one entry";
    EXPECT_EQ(order.GetExchOrder(QStringLiteral("E3")), unacked);
}

TEST(ClientOrderExchangeOrders, NakDropsANewExchangeOrderButNotARefusedChange)
{
    TomsOrder order;
    QPointer<TexchOrder> working = exchangeOrder("E1", 100, 1);
    QPointer<TexchOrder> fresh = exchangeOrder("E2", 100, 0);
    order.addExchOrder(working);
    order.addExchOrder(fresh);

    TexchOrder nak;
    nak.Order_No = QStringLiteral("E1");
    nak.Status = -1;
    EXPECT_TRUE(order.isChangeError(nak));
    order.nakExchOrder(nak);
    ASSERT_FALSE(working.isNull());
    EXPECT_EQ(order.GetExchOrder(QStringLiteral("E1")), working.data());

    EXPECT_FALSE(order.isChangeError(*fresh));
    order.nakExchOrder(*fresh);
    EXPECT_TRUE(fresh.isNull());
    EXPECT_EQ(order.GetExchOrder(QStringLiteral("E2")), nullptr);
}

TEST(ClientOrderExchangeOrders, CopiesReferToTheOriginalsExchangeOrders)
{
    auto order = std::make_unique<TomsOrder>(QStringLiteral("H|6|OMS1|4|800"));
    QPointer<TexchOrder> exch = exchangeOrder("E1", 800, 1);
    order->addExchOrder(exch);

    const std::unique_ptr<TomsOrder> copy = order->shallowCopy();
    EXPECT_EQ(copy->Quantity, 800);
    EXPECT_EQ(copy->GetExchOrder(QStringLiteral("E1")), exch.data());

    TomsOrder edited;
    edited.assign(*copy);
    edited.Quantity = 600;
    order->assignNoMarket(edited);
    EXPECT_EQ(order->Quantity, 600);
    EXPECT_EQ(exch->parent(), order.get()) << "the original keeps owning its exchange order";

    TomsOrder other;
    QPointer<TexchOrder> otherExch = exchangeOrder("E9", 1, 1);
    other.addExchOrder(otherExch);
    other.assign(*order);
    EXPECT_TRUE(otherExch.isNull()) << "assign frees the adopted exchange orders it drops";

    order.reset();
    EXPECT_TRUE(exch.isNull());
    EXPECT_EQ(copy->GetExchOrder(QStringLiteral("E1")), nullptr);
    EXPECT_TRUE(other.exchOrderList().isEmpty());
}

TEST(ClientOrder, ComponentReferencesAndHeldAmount)
{
    TomsOrder combined;
    TomsOrder component;
    component.SysRefValue = QStringLiteral("SR1");
    combined.setcompSysRef(component);
    combined.setcompSysRef(component);
    combined.setcompSysRef(TomsOrder());
    EXPECT_EQ(combined.CompSysRef.CommaText(), u"SR1");

    combined.Quantity = 1000;
    combined.Fill_Qty = 400;
    combined.Price = 2.5L;
    combined.Status = 2;
    combined.toHold();
    EXPECT_EQ(combined.Held, 1500.0L);
}

TEST(ClientOrder, PublishesEveryPropertyByName)
{
    TomsOrder order(QStringLiteral("H|") + kFullImage
        + QStringLiteral("33|09:00:00|501|09:31:05|1119|09:40:00|74|SPT:0"));
    order.Order_Date = QStringLiteral("2024-03-01");
    order.EXE_Time = QStringLiteral("09:32:00");
    order.Currency = QStringLiteral("HKD");
    order.FillAmount = 400 * 345.5L;
    order.setAttribute(OrderAttribute::CDMRemark, QStringLiteral("cdm"));
    order.setAttribute(OrderAttribute::BBAction, QStringLiteral("BUYBACK"));
    order.setAttribute(OrderAttribute::UUID, QStringLiteral("u-1"));
    TomsOrder child;
    order.AddChildWorkOrder(&child);

    const std::pair<const char*, QVariant> rows[] = { { "RBASKET_ID", "BK1" }, { "RWAVE_ID", "WV2" },
        { "RApproval_ID", "APR" }, { "RReject_ID", "REJ" }, { "RSysRefValue", "SYS9" },
        { "RAPPROVAL_LIMIT", "5000000" }, { "ROrder_Source", "WEB" }, { "RAppReason", "over limit" },
        { "RHeld", 1234.5 }, { "RReqStatus", 3 }, { "RLastTrdNum", "T77" }, { "RreqNum", "RQ5" },
        { "RAlgoCommand", "OAOGroup=7;SEQ=2" }, { "RFill_Qty", 400 }, { "RFill_Price", 345.5 },
        { "RRemain", 1600 }, { "ROrder_Time", "09:31:05" }, { "ROrder_Date", "2024-03-01" },
        { "RCurrency", "HKD" }, { "REXE_Time", "09:32:00" }, { "RRef_ID", "SPT:0" }, { "RInvestor_ID", "77" },
        { "RBB_ACTION", "BUYBACK" }, { "Last_MOD_Time", "09:40:00" }, { "RCDMRemark", "cdm" },
        { "RUUID", "u-1" }, { "ROriginalOrdNum", "OMS000" },
        { "RRemark", "GTC[20240301,OMS000@12.5,2000X1 lot];ALD;" } };
    const QMetaObject* meta = order.metaObject();
    for (const auto& [name, expected] : rows) {
        SCOPED_TRACE(name);
        const int index = meta->indexOfProperty(name);
        ASSERT_GE(index, 0);
        EXPECT_EQ(meta->property(index).read(&order), expected);
    }
    const QVariant children = meta->property(meta->indexOfProperty("RChildWorkOrder")).read(&order);
    EXPECT_EQ(children.value<QObjectList>(), QObjectList { &child });
}

TEST(ClientOrder, LabelsKeepTheirExactTexts)
{
    const std::pair<Label, const char*> rows[] = { { orderManualOrderLabel, "Manual;" },
        { orderOddTradeLabel, "OddTrd;" }, { orderManualTradeLabel, "ManuTrd;" },
        { orderBookTradeLabel, "BookTrd;" }, { orderAllocatedOrder, "ALD;" },
        { orderAllocateReverse, "REV:%s;" }, { orderAllocateNewOrder, "ALO:%s;" },
        { orderMarketOrderLabel, "MO;" }, { orderReqApprovalLabel, "APP;" },
        { orderTTSLabel, "Time-to-Send:<%s> <%s>;" }, { orderESOLabel, "STOP:PRICE %s,TOLER %s, STEP %s;" },
        { orderESONoStepLabel, "STOP:PRICE %s,TOLER %s;" }, { orderOAOLabel, "OAO ID:%s,SEQ=%s;" },
        { orderOCOLabel, "OCO ID:%s,SEQ=%s;" } };
    ASSERT_EQ(omsDataLabels().size(), std::size(rows));
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        SCOPED_TRACE(rows[i].second);
        EXPECT_EQ(rows[i].first(), QString::fromLatin1(rows[i].second));
        EXPECT_STREQ(omsDataLabels()[i].source(), rows[i].second);
        EXPECT_STREQ(omsDataLabels()[i].context(), "omsData");
    }
}

} // namespace
} // namespace qal
