// SPDX-License-Identifier: MIT
#include "qalpack/model/exchData.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <type_traits>

#include "qalpack/model/RecordFields_p.h"
#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/Exception.h"
#include "qalpack/runtime/Format.h"

namespace qal {
namespace {

constexpr int kTerminatorTag = 502;
constexpr QStringView kTerminatorValue = u"TRADE";

// Texts shared by orders and trades: the untranslated status words, and the
// side labels.
QString rawStatusText(int code)
{
    switch (code) {
    case StatusRejected:
        return QStringLiteral("Reje");
    case StatusNone:
        return QString();
    case StatusPending:
        return QStringLiteral("Pend");
    case StatusPartial:
        return QStringLiteral("Part");
    case StatusCompleted:
        return QStringLiteral("Comp");
    case StatusCancelled:
        return QStringLiteral("Canc");
    case StatusInactive:
        return QStringLiteral("Inac");
    case StatusConfirmed:
        return QStringLiteral("Conf");
    default:
        return QStringLiteral("Unknown");
    }
}

int rawStatusCode(const QString& text)
{
    if (text.isEmpty())
        return StatusNone;
    const QStringView head = QStringView(text).left(4);
    static constexpr std::array<std::pair<QStringView, int>, 7> kWords { {
        { u"Reje", StatusRejected },
        { u"Pend", StatusPending },
        { u"Part", StatusPartial },
        { u"Comp", StatusCompleted },
        { u"Canc", StatusCancelled },
        { u"Inac", StatusInactive },
        { u"Conf", StatusConfirmed },
    } };
    for (const auto& [word, code] : kWords) {
        if (head == word)
            return code;
    }
    return StatusNone;
}

QString sideText(int side)
{
    switch (side) {
    case 0:
        return resLabelOrderTypeBuy();
    case 1:
        return resLabelOrderTypeSell();
    default:
        return resLabelOrderTypeUnknown();
    }
}

// The stop-price label an order's option word asks for, or none.
const Label* stopLabel(int orderOption)
{
    if (!(orderOption & OptionStop))
        return nullptr;
    if (orderOption & OptionStopUp)
        return &orderStopPriceUpTriggerLabel;
    if (orderOption & OptionStopDown)
        return &orderStopPriceDownTriggerLabel;
    return &orderStopPriceLabel;
}

// The contra side of a cross order or cross trade: account (110) and user (113).
void updateContra(QStringView key, QStringView value, QString& account, QString& user)
{
    switch (MessageTag(key)) {
    case 110:
        AssignMessageText(account, value);
        break;
    case 113:
        AssignMessageText(user, value);
        break;
    default:
        break;
    }
}

void addContra(QString& s, const QString& account, const QString& user)
{
    DDSAddStringIfSet(s, 110, account);
    DDSAddStringIfSet(s, 113, user);
}

} // namespace

const std::vector<Label>& exchDataLabels()
{
    static const std::vector<Label> labels(std::begin(exchDataLabelTable), std::end(exchDataLabelTable));
    return labels;
}

int CompareSuffixalSymbol(const QString& a, const QString& b)
{
    const qsizetype dotA = a.indexOf(u'.');
    const qsizetype dotB = b.indexOf(u'.');
    if (dotA < 0 && dotB < 0)
        return QString::localeAwareCompare(a, b);
    if (dotA < 0)
        return -1;
    if (dotB < 0)
        return 1;
    const int bySuffix = QStringView(a).mid(dotA + 1).localeAwareCompare(QStringView(b).mid(dotB + 1));
    if (bySuffix != 0)
        return bySuffix;
    return QStringView(a).left(dotA).localeAwareCompare(QStringView(b).left(dotB));
}

SymbolNameSource::~SymbolNameSource() = default;

// ---------------------------------------------------------------- TomsTrade

TomsTrade::TomsTrade(QObject* owner)
    : TChangeNotifier(owner)
{ }

TomsTrade::TomsTrade(const QString& message, QObject* owner)
    : TomsTrade(owner)
{
    applyMessage(message);
}

TomsTrade::TomsTrade(const TexchOrder& order, QObject* owner)
    : TomsTrade(owner)
{
    Exch_No = order.Order_No;
    Account = order.Account;
    User = order.User;
    Symbol = order.Symbol;
    Side = order.Side;
    Fill_Qty = order.Quantity;
    Fill_Price = order.Price;
    Runner = order.Runner;
}

TomsTrade::~TomsTrade() = default;

void TomsTrade::applyMessage(QStringView message)
{
    forEachTaggedPair(message, [this](QStringView key, QStringView value) { updateField(key, value); });
}

void TomsTrade::updateField(QStringView key, QStringView value)
{
    switch (MessageTag(key)) {
    case 7:
        AssignMessageText(Exch_No, value);
        break;
    case 8:
        AssignMessageText(Order_No, value);
        break;
    case 0:
        AssignMessageText(Symbol, value);
        break;
    case 10:
        AssignMessageText(Account, value);
        break;
    case 13:
        AssignMessageText(User, value);
        break;
    case 3:
        Fill_Price = StrToFloatDef(value);
        break;
    case 4:
        Fill_Qty = MessageInteger(value);
        break;
    case 11:
        Side = MessageInteger(value);
        break;
    case 47:
        Hedge = MessageInteger(value);
        break;
    case 46:
        Principal = MessageInteger(value);
        break;
    case 101:
        ShortSell = MessageInteger(value);
        break;
    case 45:
        AssignMessageText(BrokerID, value);
        break;
    case 43:
        TradeType = MessageInteger(value);
        break;
    case 44:
        Field44 = MessageInteger(value);
        break;
    case 5:
        Status = MessageInteger(value);
        break;
    case 25:
        AssignMessageText(Remark, value);
        break;
    case 33:
        AssignMessageText(EXE_Time, value);
        break;
    case 20:
        AssignMessageText(Exch, value);
        break;
    case 78:
        AssignMessageText(Field78, value);
        break;
    case 6:
        AssignMessageText(OmsOrder_No, value);
        break;
    case 418:
        AssignMessageText(Runner, value);
        break;
    default:
        break;
    }
}

QString TomsTrade::DDSImageMessage() const
{
    QString s;
    {
        // The writer cuts the text to length when it goes, before the return.
        TaggedMessageWriter w(s, 256);
        w.addString(7, Exch_No);
        w.addString(8, Order_No);
        w.addString(6, OmsOrder_No);
        w.addString(0, Symbol);
        w.addString(10, Account);
        w.addInteger(11, Side);
        w.addString(13, User);
        w.addInteger(4, Fill_Qty);
        w.addDouble(3, double(Fill_Price));
        w.addIntegerIfSet(5, Status);
        w.addIntegerIfSet(47, Hedge);
        w.addIntegerIfSet(46, Principal);
        w.addIntegerIfSet(101, ShortSell);
        w.addStringIfSet(45, BrokerID);
        w.addInteger(43, TradeType);
        if (Field44 > 0)
            w.addInteger(44, Field44);
        w.addStringIfSet(33, EXE_Time);
        w.addStringIfSet(20, Exch);
        w.addStringIfSet(78, Field78);
        w.addStringIfSet(25, Remark);
        w.addStringIfSet(418, Runner);
        w.addString(kTerminatorTag, kTerminatorValue);
    }
    return s;
}

void TomsTrade::assign(const TomsTrade& other)
{
    Exch_No = other.Exch_No;
    Order_No = other.Order_No;
    Symbol = other.Symbol;
    Account = other.Account;
    User = other.User;
    Fill_Price = other.Fill_Price;
    Fill_Qty = other.Fill_Qty;
    Side = other.Side;
    Hedge = other.Hedge;
    Principal = other.Principal;
    ShortSell = other.ShortSell;
    BrokerID = other.BrokerID;
    TradeType = other.TradeType;
    Field44 = other.Field44;
    Status = other.Status;
    Remark = other.Remark;
    EXE_Time = other.EXE_Time;
    Exch = other.Exch;
    Field78 = other.Field78;
    OmsOrder_No = other.OmsOrder_No;
    Runner = other.Runner;
    SymbolEng = other.SymbolEng;
    SymbolChi = other.SymbolChi;
}

QString TomsTrade::exchTradeNum() const
{
    return Order_No.mid(1);
}

QString TomsTrade::statusMessage() const
{
    switch (Status) {
    case StatusRejected:
        return resLabelOrderStatusReject();
    case StatusNone:
        return resLabelOrderStatusNull();
    case StatusPending:
        return resLabelOrderStatusPending();
    case StatusCompleted:
        return resLabelOrderStatusFill();
    case StatusCancelled:
        return resLabelOrderStatusCancel();
    case StatusInactive:
        return resLabelOrderStatusInactive();
    default:
        return resLabelOrderStatusUnknown();
    }
}

QString TomsTrade::RawStatus(int code) const
{
    return rawStatusText(code);
}

int TomsTrade::RawStatus(const QString& text) const
{
    return rawStatusCode(text);
}

QString TomsTrade::GetBuySellText() const
{
    return sideText(Side);
}

QString TomsTrade::getPrincipal() const
{
    switch (Principal) {
    case 11:
        return resStrPrincipalTypeAgent();
    case 12:
        return resStrPrincipalTypePrincipal();
    case 13:
        return resStrPrincipalTypeRT();
    default:
        return resStrPrincipalTypeUnclassified();
    }
}

QString TomsTrade::getTradeType() const
{
    switch (TradeType) {
    case 0:
        return QString();
    case 1:
        return resStrTradeTypeOddLot();
    case 2:
        return resStrTradeTypeManual();
    case 3:
        return resStrTradeTypePreopen();
    case 4:
        return resStrTradeTypeOversea();
    default:
        return resStrTradeTypeUnclassified();
    }
}

QString TomsTrade::getHedge() const
{
    switch (Hedge) {
    case 1:
        return resStrNonHedge();
    case 2:
        return resStrOrderHedge();
    case 3:
        return resStrLiquidHedge();
    default:
        return QString();
    }
}

QString TomsTrade::getShortSell() const
{
    switch (ShortSell) {
    case 0:
        return resStrNotShortSell();
    case 1:
        return resStrShortSell();
    case 2:
        return resStrMMShortSell();
    case 3:
        return resStrCoverShortSell();
    default:
        return QString();
    }
}

void TomsTrade::AssignName(const SymbolNameSource& source)
{
    SymbolEng = source.englishName(Symbol);
    SymbolChi = source.chineseName(Symbol);
}

// --------------------------------------------------------------- TexchOrder

TexchOrder::TexchOrder(QObject* owner)
    : TChangeNotifier(owner)
{
    zeroPrices(Price, StopPrice, Price42, Price493, Price494);
}

TexchOrder::TexchOrder(const QString& message, QObject* owner)
    : TexchOrder(owner)
{
    applyMessage(message);
}

TexchOrder::~TexchOrder() = default;

void TexchOrder::applyMessage(QStringView message)
{
    forEachTaggedPair(message, [this](QStringView key, QStringView value) { updateField(key, value); });
}

void TexchOrder::updateField(QStringView key, QStringView value)
{
    storeField(MessageTag(key), value);
}

bool TexchOrder::storeField(int tag, QStringView value)
{
    switch (tag) {
    case 6:
        AssignMessageText(OmsOrder_No, value);
        break;
    case 7:
        AssignMessageText(Order_No, value);
        break;
    case 15:
        AssignMessageText(ref_no, value);
        break;
    case 0:
        AssignMessageText(Symbol, value);
        break;
    case 10:
        AssignMessageText(Account, value);
        break;
    case 13:
        AssignMessageText(User, value);
        break;
    case 3:
        Price = StrToFloatDef(value);
        break;
    case 4:
        Quantity = MessageInteger(value);
        break;
    case 11:
        Side = MessageInteger(value);
        break;
    case 5:
        Status = MessageInteger(value);
        break;
    case 40:
        OrderOption = MessageInteger(value);
        break;
    case 489:
        Option489 = MessageInteger(value);
        break;
    case 490:
        Option490 = MessageInteger(value);
        break;
    case 491:
        Option491 = MessageInteger(value);
        break;
    case 492:
        Option492 = MessageInteger(value);
        break;
    case 47:
        Field47 = MessageInteger(value);
        break;
    case 46:
        PrincipalType = MessageInteger(value);
        break;
    case 101:
        ShortSell = MessageInteger(value);
        break;
    case 45:
        AssignMessageText(CounterParty, value);
        break;
    case 25:
        AssignMessageText(Remark, value);
        break;
    case 34:
        Fill_Qty = MessageInteger(value);
        break;
    case 35:
        Field35 = MessageInteger(value);
        break;
    case 48:
        Field48 = MessageInteger(value);
        break;
    case 33:
        AssignMessageText(Order_Time, value);
        break;
    case 501:
        AssignMessageText(Order_Time501, value);
        break;
    case 41:
        StopPrice = StrToFloatDef(value);
        break;
    case 42:
        Price42 = StrToFloatDef(value);
        break;
    case 493:
        Price493 = StrToFloatDef(value);
        break;
    case 494:
        Price494 = StrToFloatDef(value);
        break;
    case 1105:
        Field1105 = MessageInteger(value);
        break;
    case 1106:
        Field1106 = MessageInteger(value);
        break;
    case 1107:
        Field1107 = MessageInteger(value);
        break;
    case 1108:
        Field1108 = MessageInteger(value);
        break;
    case 12:
        OpenClose = MessageInteger(value);
        break;
    case 39:
        Field39 = MessageInteger(value);
        break;
    case 464:
        Field464 = MessageInteger(value);
        break;
    case 20:
        AssignMessageText(Exch, value);
        break;
    case 78:
        AssignMessageText(BrokerID, value);
        break;
    case 43:
        Field43 = MessageInteger(value);
        break;
    case 44:
        Field44 = MessageInteger(value);
        break;
    case 74:
        AssignMessageText(User_Ref, value);
        break;
    case 418:
        AssignMessageText(Runner, value);
        break;
    case 2020:
        AssignMessageText(riskCtrlLevel, value);
        break;
    case 1119:
        AssignMessageText(Last_MOD_Time, value);
        break;
    case 487:
        AssignMessageCommaText(Attributes, value);
        break;
    case 191:
        AssignMessageText(Field191, value);
        break;
    default:
        return false;
    }
    return true;
}

QString TexchOrder::DDSImageMessage() const
{
    QString s;
    {
        // The writer cuts the text to length when it goes, before the return.
        TaggedMessageWriter w(s, 512);
        w.addStringIfSet(6, OmsOrder_No);
        w.addStringIfSet(7, Order_No);
        w.addString(0, Symbol);
        w.addStringIfSet(10, Account);
        if (Side >= 0)
            w.addInteger(11, Side);
        w.addStringIfSet(13, User);
        w.addInteger(4, Quantity);
        w.addDouble(3, double(Price));
        w.addStringIfSet(15, ref_no);
        w.addIntegerIfSet(5, Status);
        w.addIntegerIfSet(39, Field39);
        w.addIntegerIfSet(464, Field464);
        w.addStringIfSet(33, Order_Time);
        w.addStringIfSet(501, Order_Time501);
        w.addStringIfSet(25, Remark);
        w.addInteger(34, Fill_Qty);
        w.addInteger(35, Field35);
        if (Status == StatusCancelled)
            w.addInteger(48, Field48);
        w.addIntegerIfSet(40, OrderOption);
        w.addIntegerIfSet(489, Option489);
        w.addIntegerIfSet(490, Option490);
        w.addIntegerIfSet(491, Option491);
        w.addIntegerIfSet(492, Option492);
        w.addDoubleIfSet(41, StopPrice);
        w.addDoubleIfSet(42, Price42);
        w.addDoubleIfSet(493, Price493);
        w.addDoubleIfSet(494, Price494);
        if (OpenClose > 0)
            w.addInteger(12, OpenClose);
        w.addIntegerIfSet(47, Field47);
        w.addIntegerIfSet(46, PrincipalType);
        w.addIntegerIfSet(101, ShortSell);
        w.addStringIfSet(45, CounterParty);
        w.addStringIfSet(20, Exch);
        w.addStringIfSet(78, BrokerID);
        w.addIntegerIfSet(1105, Field1105);
        w.addIntegerIfSet(1106, Field1106);
        w.addIntegerIfSet(1107, Field1107);
        w.addIntegerIfSet(1108, Field1108);
        if (Field44 >= 0)
            w.addInteger(44, Field44);
        if (Field43 >= 0)
            w.addInteger(43, Field43);
        w.addStringIfSet(74, User_Ref);
        w.addStringIfSet(418, Runner);
        w.addStringIfSet(2020, riskCtrlLevel);
        w.addStringIfSet(487, Attributes.CommaText());
        w.addStringIfSet(191, Field191);
        w.addString(kTerminatorTag, kTerminatorValue);
    }
    return s;
}

QString TexchOrder::statusMessage() const
{
    switch (Status) {
    case StatusRejected:
        return resLabelOrderStatusReject();
    case StatusNone:
        return resLabelOrderStatusNull();
    case StatusPending:
        return resLabelOrderStatusPending();
    case StatusPartial:
        return resLabelOrderStatusPartial();
    case StatusCompleted:
        return resLabelOrderStatusFill();
    case StatusCancelled:
        return resLabelOrderStatusCancel();
    case StatusInactive:
        return resLabelOrderStatusInactive();
    case StatusConfirmed:
        return resLabelOrderStatusConfirm();
    default:
        return resLabelOrderStatusUnknown();
    }
}

void TexchOrder::reset()
{
    const int keep43 = Field43;
    const int keep44 = Field44;
    assignFields(TexchOrder());
    Trades.clear();
    Field43 = keep43;
    Field44 = keep44;
}

QString TexchOrder::GetBuySellText() const
{
    return sideText(Side);
}

QString TexchOrder::GetRemark() const
{
    return Remark;
}

QString TexchOrder::RawStatus(int code) const
{
    return rawStatusText(code);
}

int TexchOrder::RawStatus(const QString& text) const
{
    return rawStatusCode(text);
}

namespace {
// A 64-bit quantity cut to 32 bits as the old desks' 32-bit arithmetic left
// it: modulo 2^32, read as signed (4,000,000,000 gives -294,967,296).
int wrapQuantity(std::int64_t quantity)
{
    return static_cast<int>(static_cast<std::int32_t>(static_cast<std::uint32_t>(quantity)));
}
} // namespace

int TexchOrder::CalculateFillQty() const
{
    // Summed wide and wrapped once: a trade list cannot overflow 64 bits.
    std::int64_t filled = 0;
    for (const TradeEntry& entry : Trades) {
        if (entry.trade && entry.trade->Status == StatusCompleted && entry.trade->Side == Side)
            filled += entry.trade->Fill_Qty;
    }
    return wrapQuantity(filled);
}

int TexchOrder::CalculateQueuQty() const
{
    if (Status == StatusPending || Status == StatusPartial)
        return wrapQuantity(std::int64_t(Quantity) - std::int64_t(CalculateFillQty()));
    return 0;
}

void TexchOrder::NotifierUpdate()
{
    FireEvent(this);
}

void TexchOrder::assignFields(const TexchOrder& other)
{
    OmsOrder_No = other.OmsOrder_No;
    Order_No = other.Order_No;
    ref_no = other.ref_no;
    Symbol = other.Symbol;
    Account = other.Account;
    User = other.User;
    Price = other.Price;
    Quantity = other.Quantity;
    Side = other.Side;
    Status = other.Status;
    OrderOption = other.OrderOption;
    Option489 = other.Option489;
    Option490 = other.Option490;
    Option491 = other.Option491;
    Option492 = other.Option492;
    Field47 = other.Field47;
    PrincipalType = other.PrincipalType;
    ShortSell = other.ShortSell;
    CounterParty = other.CounterParty;
    Remark = other.Remark;
    Fill_Qty = other.Fill_Qty;
    Field35 = other.Field35;
    Field48 = other.Field48;
    Order_Time = other.Order_Time;
    Order_Time501 = other.Order_Time501;
    Order_Date = other.Order_Date;
    EXE_Time = other.EXE_Time;
    StopPrice = other.StopPrice;
    Price42 = other.Price42;
    Price493 = other.Price493;
    Price494 = other.Price494;
    Field1105 = other.Field1105;
    Field1106 = other.Field1106;
    Field1107 = other.Field1107;
    Field1108 = other.Field1108;
    OpenClose = other.OpenClose;
    Field39 = other.Field39;
    Field464 = other.Field464;
    ManualSelector = other.ManualSelector;
    Exch = other.Exch;
    BrokerID = other.BrokerID;
    Field43 = other.Field43;
    Field44 = other.Field44;
    User_Ref = other.User_Ref;
    Runner = other.Runner;
    riskCtrlLevel = other.riskCtrlLevel;
    Last_MOD_Time = other.Last_MOD_Time;
    Attributes.Assign(other.Attributes);
    Field191 = other.Field191;
    SymbolEng = other.SymbolEng;
    SymbolChi = other.SymbolChi;
}

void TexchOrder::assign(const TexchOrder& other)
{
    if (&other == this)
        return;
    assignFields(other);
    Trades = other.Trades;
}

void TexchOrder::assign(const TomsTrade& trade)
{
    OmsOrder_No = trade.OmsOrder_No;
    Order_No = trade.Order_No;
    Symbol = trade.Symbol;
    Account = trade.Account;
    User = trade.User;
    Side = trade.Side;
    Status = trade.Status;
    Price = trade.Fill_Price;
    Quantity = trade.Fill_Qty;
    Fill_Qty = trade.Fill_Qty;
    PrincipalType = trade.Principal;
    Field47 = trade.Hedge;
    ShortSell = trade.ShortSell;
    Field43 = trade.TradeType;
    Field44 = trade.Field44;
    Exch = trade.Exch;
    Remark = trade.Remark;
    Order_Time = trade.EXE_Time;
    Runner = trade.Runner;
}

TomsTrade* TexchOrder::addTrade(TomsTrade* trade)
{
    if (trade)
        Trades.push_back({ trade->Order_No, trade });
    return trade;
}

TomsTrade* TexchOrder::GetTrade(const QString& key) const
{
    for (const TradeEntry& entry : Trades) {
        if (entry.key == key)
            return entry.trade.data();
    }
    return nullptr;
}

void TexchOrder::copyTradesFrom(const TexchOrder& other)
{
    if (&other == this)
        return;
    for (const TradeEntry& entry : other.Trades) {
        if (entry.trade)
            addTrade(entry.trade.data());
    }
}

int TexchOrder::betterPrice(double price) const
{
    const double d = double(Price) - price;
    const int r = d > 0.0001 ? 1 : (d < -0.0001 ? -1 : 0);
    switch (Side) {
    case 0:
        return r;
    case 1:
        return -r;
    default:
        throw InvalidOrderType();
    }
}

QString TexchOrder::GetOrderOptionInfo() const
{
    QString s;
    if (OrderOption & OptionAuction)
        s += orderAOLabel();
    if (const Label* stop = stopLabel(OrderOption))
        s += Format((*stop)(), { StopPrice });
    if (PrincipalType == 12)
        s += orderPrincipalTypeHouse();
    else if (PrincipalType == 13)
        s += orderPrincipalTypeRT();
    if (OrderOption & OptionFOK)
        s += orderFOKLabel();
    if (OrderOption & OptionFAK)
        s += orderFAKLabel();
    s += User_Ref;
    if ((OrderOption & OrderKindMask) == OrderKindOddLot)
        s += orderOddLotLabel();
    return s;
}

void TexchOrder::AssignName(const SymbolNameSource& source)
{
    SymbolEng = source.englishName(Symbol);
    SymbolChi = source.chineseName(Symbol);
}

// ----------------------------------------------------------- amsManualTrade

amsManualTrade::amsManualTrade(QObject* owner)
    : TexchOrder(owner)
{ }

amsManualTrade::amsManualTrade(const QString& message, QObject* owner)
    : TexchOrder(owner)
{
    applyMessage(message);
}

amsManualTrade::~amsManualTrade() = default;

void amsManualTrade::updateField(QStringView key, QStringView value)
{
    TexchOrder::updateField(key, value);
    switch (MessageTag(key)) {
    case 8:
        AssignMessageText(Trade_No, value);
        break;
    case 43:
        TradeType = MessageInteger(value);
        break;
    case 44:
        TradeField44 = MessageInteger(value);
        break;
    default:
        break;
    }
}

QString amsManualTrade::DDSImageMessage() const
{
    QString s = TexchOrder::DDSImageMessage();
    DDSAddInteger(s, 43, TradeType);
    DDSAddInteger(s, 44, TradeField44);
    return s;
}

void amsManualTrade::reset()
{
    TexchOrder::reset();
    Trade_No.clear();
    TradeType = 0;
    TradeField44 = 0;
}

QString amsManualTrade::exchTradeNum() const
{
    return Trade_No.mid(1);
}

// ---------------------------------------------------------- amsOrderHistory

amsOrderHistory::amsOrderHistory(QObject* owner)
    : TexchOrder(owner)
{ }

amsOrderHistory::amsOrderHistory(const QString& message, QObject* owner)
    : TexchOrder(owner)
{
    applyMessage(message);
}

amsOrderHistory::~amsOrderHistory() = default;

void amsOrderHistory::updateField(QStringView key, QStringView value)
{
    TexchOrder::updateField(key, value);
    if (MessageTag(key) == 9)
        AssignMessageText(Action, value);
}

QString amsOrderHistory::DDSImageMessage() const
{
    QString s = TexchOrder::DDSImageMessage();
    DDSAddString(s, 9, Action);
    return s;
}

void amsOrderHistory::reset()
{
    TexchOrder::reset();
    Action.clear();
}

// ------------------------------------------------------------ amsCrossOrder

amsCrossOrder::amsCrossOrder(QObject* owner)
    : TexchOrder(owner)
{ }

amsCrossOrder::amsCrossOrder(const QString& message, QObject* owner)
    : TexchOrder(owner)
{
    applyMessage(message);
}

amsCrossOrder::~amsCrossOrder() = default;

void amsCrossOrder::updateField(QStringView key, QStringView value)
{
    TexchOrder::updateField(key, value);
    updateContra(key, value, ContraAccount, ContraUser);
}

QString amsCrossOrder::DDSImageMessage() const
{
    QString s = TexchOrder::DDSImageMessage();
    addContra(s, ContraAccount, ContraUser);
    return s;
}

void amsCrossOrder::reset()
{
    TexchOrder::reset();
    ContraAccount.clear();
    ContraUser.clear();
}

// -------------------------------------------------------------- amsCTFTrade

amsCTFTrade::amsCTFTrade(QObject* owner)
    : TomsTrade(owner)
{ }

amsCTFTrade::amsCTFTrade(const QString& message, QObject* owner)
    : TomsTrade(owner)
{
    applyMessage(message);
}

amsCTFTrade::~amsCTFTrade() = default;

void amsCTFTrade::updateField(QStringView key, QStringView value)
{
    TomsTrade::updateField(key, value);
    if (MessageTag(key) == 76)
        AssignMessageText(CTFBroker, value);
}

QString amsCTFTrade::DDSImageMessage() const
{
    QString s = TomsTrade::DDSImageMessage();
    DDSAddStringIfSet(s, 76, CTFBroker);
    return s;
}

// ------------------------------------------------------------ amsCrossTrade

amsCrossTrade::amsCrossTrade(QObject* owner)
    : TomsTrade(owner)
{ }

amsCrossTrade::amsCrossTrade(const QString& message, QObject* owner)
    : TomsTrade(owner)
{
    applyMessage(message);
}

amsCrossTrade::~amsCrossTrade() = default;

void amsCrossTrade::updateField(QStringView key, QStringView value)
{
    TomsTrade::updateField(key, value);
    updateContra(key, value, ContraAccount, ContraUser);
}

QString amsCrossTrade::DDSImageMessage() const
{
    QString s = TomsTrade::DDSImageMessage();
    addContra(s, ContraAccount, ContraUser);
    return s;
}

} // namespace qal
