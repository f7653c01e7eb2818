// SPDX-License-Identifier: MIT
#include "qalpack/model/omsData.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "qalpack/model/RecordFields_p.h"
#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/Format.h"

namespace qal {
namespace {

// The GTC attribute is cut up by position the way the OMS servers write it:
// positions count from 1, 0 means "not there", and a piece with a negative or
// zero length is empty.
int position(QChar c, QStringView s)
{
    return int(s.indexOf(c)) + 1;
}

QString piece(QStringView s, int from, int count)
{
    from = std::max(from, 1);
    if (count <= 0 || from > s.size())
        return {};
    return s.mid(from - 1, count).toString();
}

// "yyyymmdd" as "yyyy/mm/dd"; any other text as it stands.
QString slashedDate(const QString& date)
{
    if (date.size() != 8)
        return date;
    return date.left(4) + u'/' + date.mid(4, 2) + u'/' + date.mid(6, 2);
}

// "hhmmss" as "hh:mm:ss"; any other text as it stands.
QString colonTime(const QString& time)
{
    if (time.size() != 6)
        return time;
    return time.left(2) + u':' + time.mid(2, 2) + u':' + time.mid(4, 2);
}

bool isAncestorOf(const QObject* candidate, const QObject* object)
{
    for (const QObject* p = object; p; p = p->parent()) {
        if (p == candidate)
            return true;
    }
    return false;
}

// Stores one of the client order's own tags; other tags are ignored.
void storeOwnField(TomsOrder& order, int tag, QStringView value)
{
    switch (tag) {
    case 455:
        AssignMessageText(order.BASKET_ID, value);
        break;
    case 456:
        AssignMessageText(order.WAVE_ID, value);
        break;
    case 460:
        AssignMessageText(order.Approval_ID, value);
        break;
    case 462:
        AssignMessageText(order.Reject_ID, value);
        break;
    case 486:
        AssignMessageText(order.SysRefValue, value);
        break;
    case 458:
        AssignMessageText(order.APPROVAL_LIMIT, value);
        break;
    case 400:
        AssignMessageText(order.Order_Source, value);
        break;
    case 188:
        AssignMessageText(order.AppReason, value);
        break;
    case 503:
        order.Held = StrToFloatDef(value);
        break;
    case 1116:
        order.ReqStatus = StrToIntDef(value);
        break;
    case 1113:
        AssignMessageText(order.LastTrdNum, value);
        break;
    case 530:
        AssignMessageText(order.reqNum, value);
        break;
    case 1304:
        AssignMessageCommaText(order.GTCDetails, value);
        break;
    case 495:
        AssignMessageText(order.GTCDate, value);
        break;
    case 440:
        AssignMessageText(order.AlgoCommand, value);
        break;
    case 187:
        AssignMessageText(order.Field187, value);
        break;
    case 402:
        AssignMessageText(order.Field402, value);
        break;
    case 403:
        AssignMessageText(order.Field403, value);
        break;
    case 404:
        AssignMessageText(order.Field404, value);
        break;
    case 405:
        AssignMessageText(order.Field405, value);
        break;
    case 407:
        AssignMessageText(order.Field407, value);
        break;
    case 421:
        AssignMessageText(order.Field421, value);
        break;
    case 422:
        AssignMessageText(order.Field422, value);
        break;
    case 423:
        AssignMessageText(order.Field423, value);
        break;
    case 457:
        AssignMessageText(order.Field457, value);
        break;
    case 463:
        AssignMessageText(order.Field463, value);
        break;
    case 485:
        AssignMessageText(order.Field485, value);
        break;
    case 488:
        AssignMessageText(order.Field488, value);
        break;
    case 1000:
        AssignMessageText(order.Field1000, value);
        break;
    case 401:
        order.Field401 = StrToIntDef(value);
        break;
    case 442:
        order.Field442 = StrToIntDef(value);
        break;
    case 1109:
        order.Field1109 = StrToIntDef(value);
        break;
    case 71:
        order.Price71 = StrToFloatDef(value);
        break;
    case 95:
        order.Price95 = StrToFloatDef(value);
        break;
    case 459:
        order.Price459 = StrToFloatDef(value);
        break;
    case 1117:
        order.Price1117 = StrToFloatDef(value);
        break;
    default:
        break;
    }
}

bool refersTo(const std::vector<TomsOrder::ExchOrderEntry>& entries, const TexchOrder* exch)
{
    return std::any_of(entries.begin(), entries.end(), [exch](const auto& e) { return e.order == exch; });
}

} // namespace

const std::vector<Label>& omsDataLabels()
{
    static const std::vector<Label> labels {
        orderManualOrderLabel,
        orderOddTradeLabel,
        orderManualTradeLabel,
        orderBookTradeLabel,
        orderAllocatedOrder,
        orderAllocateReverse,
        orderAllocateNewOrder,
        orderMarketOrderLabel,
        orderReqApprovalLabel,
        orderTTSLabel,
        orderESOLabel,
        orderESONoStepLabel,
        orderOAOLabel,
        orderOCOLabel,
    };
    return labels;
}

TomsOrder::TomsOrder(QObject* owner)
    : TexchOrder(owner)
{
    zeroPrices(Held, Price71, Price95, Price459, Price1117, FillAmount, AveragePrice, CreditChange,
        NetProceed, ApprovalChange, ApprovalApplied);
}

TomsOrder::TomsOrder(const QString& message, QObject* owner)
    : TomsOrder(owner)
{
    applyMessage(message);
}

// Adopted exchange orders are QObject children and go with the order.
TomsOrder::~TomsOrder() = default;

void TomsOrder::updateField(QStringView key, QStringView value)
{
    // The exchange order's tags and this order's own are disjoint. Most
    // pairs of a message are the exchange order's: those go first, with the
    // tag read once.
    const int tag = MessageTag(key);
    if (!storeField(tag, value))
        storeOwnField(*this, tag, value);
}

QString TomsOrder::DDSImageMessage() const
{
    QString s = TexchOrder::DDSImageMessage();
    // Most of these fields are unset on any one order: test them here, call
    // the writers only for the ones that are written.
    const auto text = [&s](int tag, const QString& value) {
        if (!value.isEmpty())
            DDSAddString(s, tag, value);
    };
    const auto integer = [&s](int tag, int value) {
        if (value != 0)
            DDSAddInteger(s, tag, value);
    };
    const auto number = [&s](int tag, long double value) { DDSAddDoubleIfSet(s, tag, value); };
    text(455, BASKET_ID);
    text(456, WAVE_ID);
    text(460, Approval_ID);
    text(462, Reject_ID);
    text(486, SysRefValue);
    text(458, APPROVAL_LIMIT);
    text(400, Order_Source);
    text(188, AppReason);
    number(503, Held);
    integer(1116, ReqStatus);
    text(1113, LastTrdNum);
    text(530, reqNum);
    text(1304, GTCDetails.CommaText());
    text(495, GTCDate);
    text(440, AlgoCommand);
    text(187, Field187);
    text(402, Field402);
    text(403, Field403);
    text(404, Field404);
    text(405, Field405);
    text(407, Field407);
    text(421, Field421);
    text(422, Field422);
    text(423, Field423);
    text(457, Field457);
    text(463, Field463);
    text(485, Field485);
    text(488, Field488);
    text(1000, Field1000);
    integer(401, Field401);
    integer(442, Field442);
    integer(1109, Field1109);
    number(71, Price71);
    number(95, Price95);
    number(459, Price459);
    number(1117, Price1117);
    return s;
}

void TomsOrder::reset()
{
    TexchOrder::reset();
    assignOwnFields(TomsOrder());
    releaseExchOrders();
    ChildWorkOrders.clear();
}

int TomsOrder::statusNumber() const
{
    return Status;
}

QString TomsOrder::GetRemark() const
{
    const int kind = OrderOption & OrderKindMask;
    const auto has = [](int word, int bits) { return (word & bits) == bits; };

    QString s;
    if (has(Option489, Opt489WorkOrder))
        s += orderWorkLabel();
    if (ShortSell != 0)
        s += orderShortSellLabel();
    if (has(OrderOption, OptionManualOrder))
        s += orderManualOrderLabel();
    if (has(OrderOption, OptionAuction))
        s += orderAOLabel();
    if (has(OrderOption, OptionEnhanced))
        s += orderEnhancedLabel();
    if (kind == OrderKindOddLot)
        s += has(OrderOption, OptionTradeReport) ? orderOddTradeLabel() : orderOddLotLabel();
    if (has(OrderOption, OptionFOK))
        s += orderFOKLabel();
    if (has(OrderOption, OptionFAK))
        s += orderFAKLabel();
    if (has(OrderOption, OptionGoodTillDate))
        s += Format(orderGoodtillWeekLabel(), { GetGTCRemark() });
    if (has(Option489, Opt489OpenEnd))
        s += orderOpenEndLabel();
    if (has(OrderOption, OptionApprovalRequested))
        s += orderReqApprovalLabel();
    if (has(OrderOption, OptionTradeReport | OptionBookedTrade))
        s += orderBookTradeLabel();
    if (has(Option489, Opt489Void))
        s += orderVoidLabel();
    if (kind == OrderKindMarket)
        s += orderMarketOrderLabel();
    if (has(OrderOption, OptionTradeReport | OptionManualTrade))
        s += orderManualTradeLabel();
    if (OpenClose == 1)
        s += orderOpenLabel();
    else if (OpenClose == 2)
        s += orderCloseLabel();
    if (PrincipalType == 12)
        s += orderPrincipalTypeHouse();
    else if (PrincipalType == 13)
        s += orderPrincipalTypeRT();
    if (has(OrderOption, OptionStop)) {
        const Label& stop = has(OrderOption, OptionStopUp) ? orderStopPriceUpTriggerLabel
            : has(OrderOption, OptionStopDown)             ? orderStopPriceDownTriggerLabel
                                                           : orderStopPriceLabel;
        s += Format(stop(), { StopPrice });
    }
    // A stop price attached through the second word shows again even when
    // the option word already showed it.
    if (has(Option489, Opt489StopPrice))
        s += Format(orderStopPriceLabel(), { StopPrice });
    s += Remark;
    // Allocation instructions travel in the user reference.
    if (User_Ref == u"SPT:0")
        s += orderAllocatedOrder();
    else if (User_Ref == u"SPT:1")
        s += Format(orderAllocateReverse(), { ref_no });
    else if (User_Ref == u"SPT:2")
        s += Format(orderAllocateNewOrder(), { ref_no });
    if (has(Option489, Opt489PreTradeAllocation)) {
        if (const QString pta = attribute(OrderAttribute::PreTradeAllocation); !pta.isEmpty())
            s += Format(orderPreTradeLabel(), { pta });
    }
    if (const QString mseq = attribute(OrderAttribute::MarketSequence); !mseq.isEmpty())
        s += Format(orderMSEQLabel(), { mseq });
    if (const QString dealer = attribute(OrderAttribute::Dealer); !dealer.isEmpty())
        s += Format(orderDealerLabel(), { dealer });
    if (has(Option489, Opt489CDOrder))
        s += orderCDOrderLabel();
    if (has(Option489, Opt489Algo))
        s += GetAlgoCmdRemark();
    return s;
}

QString TomsOrder::GetGTCRemark() const
{
    if (!(OrderOption & OptionGoodTillDate))
        return {};

    if (GTCDetails.Count() > 0) {
        QString original = GetOriginalOrderNum();
        if (original.isEmpty())
            original = OmsOrder_No;
        const auto item
            = [this](int i) { return i < GTCDetails.Count() ? GTCDetails.Strings(i) : QString(); };
        const QString body = original + u'@' + item(0) + u',' + item(1) + u'X' + item(2);
        if (GTCDate.isEmpty())
            return u'[' + body + u']';
        return u'[' + GTCDate + u',' + body + u']';
    }

    QString s;
    if (!GTCDate.isEmpty())
        s += u'[' + GTCDate + u']';
    // "GTC=<date_time>_<original order>_<original qty>", read from the comma
    // text of the attributes up to the next attribute.
    const QString attributes = Attributes.CommaText();
    const qsizetype at = attributes.indexOf(OrderAttribute::GoodTillDate);
    if (at < 0)
        return s;
    QString rest = attributes.mid(at);
    const int equals = position(u'=', rest);
    const int firstBreak = position(u'_', rest);
    s += QStringLiteral(";date_time[") + piece(rest, equals + 1, firstBreak - equals - 1) + u']';
    rest.remove(0, firstBreak);
    const int secondBreak = position(u'_', rest);
    s += QStringLiteral(";original order number[") + piece(rest, 1, secondBreak - 1) + u']';
    const int comma = position(u',', rest);
    s += QStringLiteral(";original qty[") + piece(rest, secondBreak + 1, comma - secondBreak - 1) + u']';
    return s;
}

QString TomsOrder::GetAlgoCmdRemark() const
{
    if (!(Option489 & Opt489Algo) || AlgoCommand.isEmpty())
        return {};

    QString command = AlgoCommand;
    command.replace(u';', u',').replace(u':', u',');
    TStringList items;
    items.SetCommaText(command);
    const auto value = [&items](const char16_t* name) { return items.Values(QString::fromUtf16(name)); };

    QString s;
    if (const QString group = value(u"OAOGroup"); !group.isEmpty())
        s += Format(orderOAOLabel(), { group, value(u"SEQ") });
    if (const QString group = value(u"OCOGroup"); !group.isEmpty())
        s += Format(orderOCOLabel(), { group, value(u"SEQ") });

    QString trigger = value(u"EXEUP");
    if (trigger.isEmpty())
        trigger = value(u"EXEDOWN");
    if (!trigger.isEmpty()) {
        QString tolerance = value(u"TOLER");
        if (tolerance.isEmpty())
            tolerance = QStringLiteral("0");
        if (const QString step = value(u"STEP"); !step.isEmpty())
            s += Format(orderESOLabel(), { trigger, tolerance, step });
        else
            s += Format(orderESONoStepLabel(), { trigger, tolerance });
    }

    if (const QString date = value(u"ACTDATE"); !date.isEmpty())
        s += Format(orderTTSLabel(), { slashedDate(date), colonTime(value(u"ACTTIME")) });

    // The VWAP piece has no closing ";".
    if (items.IndexOf(QStringLiteral("VWAP")) >= 0) {
        if (const QString aggression = value(u"AGGR"); !aggression.isEmpty())
            s += QStringLiteral("VWAP:AGGR=") + aggression;
    }
    return s;
}

int TomsOrder::CalculateQueuQty() const
{
    if (Status != StatusPending && Status != StatusPartial)
        return 0;
    // Wraps like every quantity of the record rather than overflowing.
    std::int64_t queued = 0;
    const auto addQueues = [&queued](const std::vector<ExchOrderEntry>& entries) {
        for (const ExchOrderEntry& e : entries) {
            if (e.order)
                queued += e.order->CalculateQueuQty();
        }
    };
    if (Option489 & Opt489ChildQueue) {
        for (const QPointer<TomsOrder>& child : ChildWorkOrders) {
            if (child)
                addQueues(child->ExchOrders);
        }
    } else {
        addQueues(ExchOrders);
    }
    return static_cast<int>(static_cast<std::int32_t>(queued));
}

void TomsOrder::assignOwnFields(const TomsOrder& other)
{
    BASKET_ID = other.BASKET_ID;
    WAVE_ID = other.WAVE_ID;
    Approval_ID = other.Approval_ID;
    Reject_ID = other.Reject_ID;
    SysRefValue = other.SysRefValue;
    APPROVAL_LIMIT = other.APPROVAL_LIMIT;
    Order_Source = other.Order_Source;
    AppReason = other.AppReason;
    Held = other.Held;
    ReqStatus = other.ReqStatus;
    LastTrdNum = other.LastTrdNum;
    reqNum = other.reqNum;
    GTCDetails.Assign(other.GTCDetails);
    GTCDate = other.GTCDate;
    AlgoCommand = other.AlgoCommand;
    Field187 = other.Field187;
    Field402 = other.Field402;
    Field403 = other.Field403;
    Field404 = other.Field404;
    Field405 = other.Field405;
    Field407 = other.Field407;
    Field421 = other.Field421;
    Field422 = other.Field422;
    Field423 = other.Field423;
    Field457 = other.Field457;
    Field463 = other.Field463;
    Field485 = other.Field485;
    Field488 = other.Field488;
    Field1000 = other.Field1000;
    Field401 = other.Field401;
    Field442 = other.Field442;
    Field1109 = other.Field1109;
    Price71 = other.Price71;
    Price95 = other.Price95;
    Price459 = other.Price459;
    Price1117 = other.Price1117;
    FillAmount = other.FillAmount;
    AveragePrice = other.AveragePrice;
    Origin = other.Origin;
    Working = other.Working;
    CreditChange = other.CreditChange;
    NetProceed = other.NetProceed;
    OperatorFlag = other.OperatorFlag;
    Currency = other.Currency;
    ApprovalChange = other.ApprovalChange;
    ApprovalApplied = other.ApprovalApplied;
    Message = other.Message;
    StatusFlags = other.StatusFlags;
    CompSysRef.Assign(other.CompSysRef);
    ErrorCode = other.ErrorCode;
    Command = other.Command;
    LastUser = other.LastUser;
    SubOrderNo = other.SubOrderNo;
    LastOperation = other.LastOperation;
    ExchangeDest = other.ExchangeDest;
    LoadMarker = other.LoadMarker;
}

void TomsOrder::assign(const TomsOrder& other)
{
    if (&other == this)
        return;
    TexchOrder::assign(other);
    assignOwnFields(other);
    std::vector<ExchOrderEntry> shared;
    for (const ExchOrderEntry& e : other.ExchOrders) {
        if (e.order && e.order != this)
            shared.push_back(e);
    }
    releaseExchOrders(shared);
    ExchOrders = std::move(shared);
    CopyChildWorkOrderList(other);
}

void TomsOrder::assignNoMarket(const TomsOrder& other)
{
    if (&other == this)
        return;
    assignFields(other);
    assignOwnFields(other);
    CopyChildWorkOrderList(other);
}

std::unique_ptr<TomsOrder> TomsOrder::shallowCopy() const
{
    auto copy = std::make_unique<TomsOrder>();
    copy->assign(*this);
    return copy;
}

bool TomsOrder::adopted(const TexchOrder* exch) const
{
    return exch && exch->parent() == this;
}

void TomsOrder::releaseExchOrders(const std::vector<ExchOrderEntry>& keep)
{
    std::vector<ExchOrderEntry> old;
    old.swap(ExchOrders);
    for (const ExchOrderEntry& e : old) {
        if (adopted(e.order) && !refersTo(keep, e.order))
            delete e.order.data();
    }
}

void TomsOrder::addExchOrder(TexchOrder* exch)
{
    if (exch)
        addExchOrderbyKey(exch, exch->Order_No);
}

void TomsOrder::addExchOrderbyKey(TexchOrder* exch, const QString& key)
{
    if (!exch || exch == this)
        return;
    std::erase_if(ExchOrders, [exch](const ExchOrderEntry& e) { return e.order == exch; });
    if (!exch->parent() && !isAncestorOf(exch, this))
        exch->setParent(this);
    if (!key.isEmpty()) {
        const auto same = std::find_if(
            ExchOrders.begin(), ExchOrders.end(), [&key](const ExchOrderEntry& e) { return e.key == key; });
        if (same != ExchOrders.end()) {
            TexchOrder* replaced = same->order.data();
            same->order = exch;
            if (adopted(replaced))
                delete replaced;
            return;
        }
    }
    ExchOrders.push_back({ key, exch });
}

TexchOrder* TomsOrder::GetExchOrder(const QString& key) const
{
    for (const ExchOrderEntry& e : ExchOrders) {
        if (e.order && e.key == key)
            return e.order.data();
    }
    return nullptr;
}

QList<TexchOrder*> TomsOrder::exchOrderList() const
{
    QList<TexchOrder*> list;
    for (const ExchOrderEntry& e : ExchOrders) {
        if (e.order)
            list.append(e.order.data());
    }
    return list;
}

bool TomsOrder::isChangeError(const TexchOrder& exch) const
{
    for (const ExchOrderEntry& e : ExchOrders) {
        if (!e.order)
            continue;
        if (e.order == &exch || (!exch.Order_No.isEmpty() && e.key == exch.Order_No))
            return e.order->Status != StatusNone && e.order->Status != StatusRejected;
    }
    return false;
}

void TomsOrder::nakExchOrder(const TexchOrder& exch)
{
    if (isChangeError(exch))
        return;
    const QString key = exch.Order_No;
    const TexchOrder* target = &exch;
    std::vector<ExchOrderEntry> dropped;
    std::vector<ExchOrderEntry> kept;
    for (ExchOrderEntry& e : ExchOrders) {
        const bool refused = e.order == target || (!key.isEmpty() && e.key == key);
        (refused ? dropped : kept).push_back(std::move(e));
    }
    ExchOrders = std::move(kept);
    for (const ExchOrderEntry& e : dropped) {
        if (adopted(e.order) && !refersTo(ExchOrders, e.order))
            delete e.order.data();
    }
}

void TomsOrder::AddChildWorkOrder(TomsOrder* child)
{
    if (!child || child == this)
        return;
    if (std::find(ChildWorkOrders.begin(), ChildWorkOrders.end(), child) != ChildWorkOrders.end())
        return;
    ChildWorkOrders.emplace_back(child);
}

void TomsOrder::CopyChildWorkOrderList(const TomsOrder& other)
{
    if (&other == this)
        return;
    ChildWorkOrders.clear();
    for (const QPointer<TomsOrder>& child : other.ChildWorkOrders)
        AddChildWorkOrder(child.data());
}

QList<TomsOrder*> TomsOrder::GetChildWorkOrderList() const
{
    QList<TomsOrder*> list;
    for (const QPointer<TomsOrder>& child : ChildWorkOrders) {
        if (child)
            list.append(child.data());
    }
    return list;
}

QObjectList TomsOrder::RChildWorkOrder() const
{
    QObjectList list;
    for (TomsOrder* child : GetChildWorkOrderList())
        list.append(child);
    return list;
}

int TomsOrder::GetRemainingQty() const
{
    if (Status == StatusCancelled || Status == StatusRejected || Status == StatusConfirmed)
        return 0;
    const auto remaining = static_cast<std::int32_t>(std::int64_t(Quantity) - std::int64_t(Fill_Qty));
    return std::max<int>(remaining, 0);
}

long double TomsOrder::getAveragePrice() const
{
    return Fill_Qty >= 1 ? FillAmount / Fill_Qty : 0.0L;
}

void TomsOrder::calAveragePrice()
{
    std::vector<const TomsTrade*> seen;
    long double amount = 0;
    const auto addTrades = [&](const TexchOrder& order) {
        for (const TradeEntry& entry : order.trades()) {
            const TomsTrade* trade = entry.trade.data();
            if (!trade || std::find(seen.begin(), seen.end(), trade) != seen.end())
                continue;
            seen.push_back(trade);
            if (trade->Status == StatusCompleted && trade->Side == Side)
                amount += trade->Fill_Qty * trade->Fill_Price;
        }
    };
    addTrades(*this);
    for (const ExchOrderEntry& e : ExchOrders) {
        if (e.order)
            addTrades(*e.order);
    }
    if (!seen.empty())
        FillAmount = amount;
    AveragePrice = getAveragePrice();
}

void TomsOrder::toHold()
{
    Held = GetRemainingQty() * Price;
}

void TomsOrder::setcompSysRef(const TomsOrder& other)
{
    if (!other.SysRefValue.isEmpty() && CompSysRef.IndexOf(other.SysRefValue) < 0)
        CompSysRef.Add(other.SysRefValue);
}

QString TomsOrder::attribute(QStringView name) const
{
    return Attributes.Values(name.toString());
}

void TomsOrder::setAttribute(QStringView name, const QString& value)
{
    Attributes.SetValue(name.toString(), value);
}

QString TomsOrder::getInvestorID() const
{
    return attribute(OrderAttribute::InvestorID);
}

QString TomsOrder::GetCDMRemark() const
{
    return attribute(OrderAttribute::CDMRemark);
}

QString TomsOrder::GetBBAction() const
{
    return attribute(OrderAttribute::BBAction);
}

QString TomsOrder::GetUUID() const
{
    return attribute(OrderAttribute::UUID);
}

QString TomsOrder::GetOriginalOrderNum() const
{
    return attribute(OrderAttribute::OriginalOrderNum);
}

} // namespace qal
