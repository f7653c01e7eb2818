// SPDX-License-Identifier: MIT
#include "qalpack/market/MarketInfo.h"

#include <span>

#include <QStringView>

#include "qalpack/model/exchData.h"
#include "qalpack/model/omsData.h"
#include "qalpack/profile/EntitlementData.h"
#include "qalpack/runtime/Exception.h"

namespace qal {
namespace {

// An odd-lot order that reports a trade already done rather than going to
// the market. The word is tested bit by bit, so any kind whose low two bits
// are set (3, 7, 11, ...) counts as odd lot here.
constexpr int kOddLotTradeReport = int { OptionTradeReport } | OrderKindOddLot;

// Short-sell codes that SEHKinfo writes: a buy closes a short position
// (covered short), a sell opens one.
constexpr int kCoveredShortSell = 3;
constexpr int kShortSell = 1;

// A flag that stands for one bit of the instruction word, both ways.
template<class Info>
struct FlagBit
{
    TOrderInstruct Info::*flag;
    int bit;
};

template<class Info>
void readFlags(Info& info, std::span<const FlagBit<Info>> flags, int word)
{
    for (const FlagBit<Info>& f : flags) {
        if ((word & f.bit) != 0)
            info.*f.flag = true;
    }
}

template<class Info>
void writeFlags(const Info& info, std::span<const FlagBit<Info>> flags, int& word)
{
    for (const FlagBit<Info>& f : flags) {
        if (info.*f.flag)
            word |= f.bit;
    }
}

// Stop-limit is not here: SEHKinfo writes it in its own way.
constexpr FlagBit<SEHKinfo> kSEHKFlags[] = {
    { &SEHKinfo::Manual, OptionManualOrder },
    { &SEHKinfo::FAK, OptionFAK },
    { &SEHKinfo::FOK, OptionFOK },
    { &SEHKinfo::AO, OptionAuction },
    { &SEHKinfo::EnhancedOrder, OptionEnhanced },
    { &SEHKinfo::GoodtillWeek, OptionGoodTillDate },
};

constexpr FlagBit<HKFEinfo> kHKFEFlags[] = {
    { &HKFEinfo::Manual, OptionManualOrder },
    { &HKFEinfo::FAK, OptionFAK },
    { &HKFEinfo::FOK, OptionFOK },
    { &HKFEinfo::AO, OptionAuction },
    { &HKFEinfo::STOP_LIMIT, OptionStop },
};

constexpr FlagBit<DefaultInfo> kDefaultFlags[] = {
    { &DefaultInfo::Manual, OptionManualOrder },
    { &DefaultInfo::FAK, OptionFAK },
    { &DefaultInfo::FOK, OptionFOK },
    { &DefaultInfo::STOP_LIMIT, OptionStop },
};

// A published property and the entitlement key that allows it; an empty key
// allows it to every user. An empty property stands for trading on the market.
struct EntitleRule
{
    QStringView property;
    QStringView key;
};

constexpr EntitleRule kSEHKRules[] = {
    { u"", u"SEHKTrade" },
    { u"WStop_Price", u"OEStopL" },
    { u"WSTOP_LIMIT", u"OEStopL" },
    { u"WOddlot", u"OEOddLot" },
    { u"WShort_Sell", u"OEShortS" },
    { u"WManual", u"" },
    { u"WFOK", u"OEFOK" },
    { u"WFAK", u"OEFAK" },
    { u"WAO", u"OEAO" },
    { u"WEnhancedOrder", u"OEEnhanced" },
    { u"WGoodtillWeek", u"OEGoodtillWeek" },
    { u"WMarketorder", u"OEMarketOrder" },
};

constexpr EntitleRule kHKFERules[] = {
    { u"", u"HKFETrade" },
    { u"WStop_Price", u"OEStopL" },
    { u"WSTOP_LIMIT", u"OEStopL" },
    { u"WOpen_Close", u"OEOpenC" },
    { u"WPrincipal_Type", u"OEPrin" },
    { u"WManual", u"" },
    { u"WAO", u"OEAO" },
    { u"WFOK", u"OEFOK" },
    { u"WFAK", u"OEFAK" },
};

constexpr EntitleRule kDefaultRules[] = {
    { u"WStop_Price", u"OEStopL" },
    { u"WSTOP_LIMIT", u"OEStopL" },
    { u"WManual", u"" },
    { u"WFOK", u"OEFOK" },
    { u"WFAK", u"OEFAK" },
};

bool entitledBy(std::span<const EntitleRule> rules, const QString& property, const TEntitlement& entitlement)
{
    for (const EntitleRule& rule : rules) {
        if (property != rule.property)
            continue;
        if (rule.key.isEmpty() || entitlement.isEntitledCheck(rule.key.toString()))
            return true;
    }
    return false;
}

} // namespace

// ---------------------------------------------------------------------------
// TmarketInfo

TmarketInfo::TmarketInfo(TomsOrder& order, QObject* parent)
    : QObject(parent)
    , order_(&order)
{ }

TmarketInfo::~TmarketInfo() = default;

TomsOrder& TmarketInfo::order() const
{
    if (order_.isNull()) {
        throw Error(QStringLiteral("%1: the order it views has been destroyed")
                        .arg(QString::fromLatin1(metaObject()->className())));
    }
    return *order_;
}

// ---------------------------------------------------------------------------
// SEHKinfo

SEHKinfo::SEHKinfo(TomsOrder& order, QObject* parent)
    : TmarketInfo(order, parent)
{
    SEHKinfo::syncIn();
}

SEHKinfo::~SEHKinfo() = default;

void SEHKinfo::syncIn()
{
    const TomsOrder& o = order();
    readFlags<SEHKinfo>(*this, kSEHKFlags, o.OrderOption);
    if ((o.OrderOption & OptionStop) != 0)
        STOP_LIMIT = true;
    const int kind = o.OrderOption & OrderKindMask;
    if (kind == OrderKindMarket)
        Marketorder = true;
    if (kind == OrderKindOddLot)
        Oddlot = true;
    if (o.ShortSell != 0)
        Short_Sell = true;
}

void SEHKinfo::syncOut()
{
    TomsOrder& o = order();
    writeFlags<SEHKinfo>(*this, kSEHKFlags, o.OrderOption);
    if (Marketorder)
        o.OrderOption
            |= MarketOrderManual ? (int { OrderKindMarket } | OptionManualOrder) : int { OrderKindMarket };
    if (Short_Sell) {
        if (o.Side == 0)
            o.ShortSell = kCoveredShortSell;
        else if (o.Side == 1)
            o.ShortSell = kShortSell;
    }
    if (Oddlot)
        o.OrderOption |= OrderKindOddLot;
    if (STOP_LIMIT) {
        if (StopLimitTrigger)
            o.Option489 |= kStopLimitTriggerOption489;
        else
            o.OrderOption |= OptionStop;
    }
}

std::unique_ptr<TmarketInfo> SEHKinfo::createObject(TomsOrder& order) const
{
    return std::make_unique<SEHKinfo>(order);
}

std::unique_ptr<TmarketInfo> SEHKinfo::deepCopy(const TmarketInfo& source, TomsOrder& order) const
{
    const auto* from = qobject_cast<const SEHKinfo*>(&source);
    if (from == nullptr)
        return nullptr;
    auto copy = std::make_unique<SEHKinfo>(order);
    copy->Manual = from->Manual;
    copy->Oddlot = from->Oddlot;
    copy->Short_Sell = from->Short_Sell;
    copy->FOK = from->FOK;
    copy->FAK = from->FAK;
    copy->AO = from->AO;
    copy->EnhancedOrder = from->EnhancedOrder;
    copy->GoodtillWeek = from->GoodtillWeek;
    copy->Marketorder = from->Marketorder;
    return copy;
}

bool SEHKinfo::isEntitle(const QString& propertyName, const TEntitlement& entitlement) const
{
    return entitledBy(kSEHKRules, propertyName, entitlement);
}

double SEHKinfo::RStop_Price() const
{
    return static_cast<double>(order().StopPrice);
}

void SEHKinfo::setWStop_Price(double value)
{
    order().StopPrice = value;
}

// ---------------------------------------------------------------------------
// HKFEinfo

HKFEinfo::HKFEinfo(TomsOrder& order, QObject* parent)
    : TmarketInfo(order, parent)
{
    HKFEinfo::syncIn();
}

HKFEinfo::~HKFEinfo() = default;

void HKFEinfo::syncIn()
{
    readFlags<HKFEinfo>(*this, kHKFEFlags, order().OrderOption);
}

void HKFEinfo::syncOut()
{
    writeFlags<HKFEinfo>(*this, kHKFEFlags, order().OrderOption);
}

std::unique_ptr<TmarketInfo> HKFEinfo::createObject(TomsOrder& order) const
{
    return std::make_unique<HKFEinfo>(order);
}

std::unique_ptr<TmarketInfo> HKFEinfo::deepCopy(const TmarketInfo& source, TomsOrder& order) const
{
    const auto* from = qobject_cast<const HKFEinfo*>(&source);
    if (from == nullptr)
        return nullptr;
    auto copy = std::make_unique<HKFEinfo>(order);
    order.StopPrice = from->order().StopPrice;
    copy->setOC(from->getOC());
    copy->setPrinType(from->getPrinType());
    copy->AO = from->AO;
    copy->Manual = from->Manual;
    copy->FOK = from->FOK;
    copy->FAK = from->FAK;
    return copy;
}

bool HKFEinfo::isEntitle(const QString& propertyName, const TEntitlement& entitlement) const
{
    return entitledBy(kHKFERules, propertyName, entitlement);
}

int HKFEinfo::getOC() const
{
    return order().OpenClose;
}

void HKFEinfo::setOC(int value)
{
    order().OpenClose = value;
}

int HKFEinfo::getPrinType() const
{
    return order().PrincipalType;
}

void HKFEinfo::setPrinType(int value)
{
    order().PrincipalType = value;
}

double HKFEinfo::RStop_Price() const
{
    return static_cast<double>(order().StopPrice);
}

void HKFEinfo::setWStop_Price(double value)
{
    order().StopPrice = value;
}

// ---------------------------------------------------------------------------
// DefaultInfo

DefaultInfo::DefaultInfo(TomsOrder& order, QObject* parent)
    : TmarketInfo(order, parent)
{
    DefaultInfo::syncIn();
}

DefaultInfo::~DefaultInfo() = default;

void DefaultInfo::syncIn()
{
    readFlags<DefaultInfo>(*this, kDefaultFlags, order().OrderOption);
}

void DefaultInfo::syncOut()
{
    writeFlags<DefaultInfo>(*this, kDefaultFlags, order().OrderOption);
}

std::unique_ptr<TmarketInfo> DefaultInfo::createObject(TomsOrder& order) const
{
    return std::make_unique<DefaultInfo>(order);
}

std::unique_ptr<TmarketInfo> DefaultInfo::deepCopy(const TmarketInfo& source, TomsOrder& order) const
{
    const auto* from = qobject_cast<const DefaultInfo*>(&source);
    if (from == nullptr)
        return nullptr;
    auto copy = std::make_unique<DefaultInfo>(order);
    copy->Manual = from->Manual;
    copy->FOK = from->FOK;
    copy->FAK = from->FAK;
    return copy;
}

bool DefaultInfo::isEntitle(const QString& propertyName, const TEntitlement& entitlement) const
{
    return entitledBy(kDefaultRules, propertyName, entitlement);
}

double DefaultInfo::RStop_Price() const
{
    return static_cast<double>(order().StopPrice);
}

void DefaultInfo::setWStop_Price(double value)
{
    order().StopPrice = value;
}

// ---------------------------------------------------------------------------
// SEHKOddLotTradeInfo

SEHKOddLotTradeInfo::SEHKOddLotTradeInfo(TomsOrder& order, QObject* parent)
    : TmarketInfo(order, parent)
{ }

SEHKOddLotTradeInfo::~SEHKOddLotTradeInfo() = default;

void SEHKOddLotTradeInfo::syncIn() { }

void SEHKOddLotTradeInfo::syncOut() { }

std::unique_ptr<TmarketInfo> SEHKOddLotTradeInfo::createObject(TomsOrder& order) const
{
    return std::make_unique<SEHKOddLotTradeInfo>(order);
}

std::unique_ptr<TmarketInfo> SEHKOddLotTradeInfo::deepCopy(const TmarketInfo& source, TomsOrder& order) const
{
    const auto* from = qobject_cast<const SEHKOddLotTradeInfo*>(&source);
    if (from == nullptr)
        return nullptr;
    auto copy = std::make_unique<SEHKOddLotTradeInfo>(order);
    copy->SetRefNum(from->GetRefNum());
    copy->SetBroker(from->GetBroker());
    return copy;
}

bool SEHKOddLotTradeInfo::isEntitle(
    const QString& /*propertyName*/, const TEntitlement& /*entitlement*/) const
{
    return true;
}

QString SEHKOddLotTradeInfo::GetRefNum() const
{
    return order().ref_no;
}

void SEHKOddLotTradeInfo::SetRefNum(const QString& value)
{
    order().ref_no = value;
}

QString SEHKOddLotTradeInfo::GetBroker() const
{
    return order().CounterParty;
}

void SEHKOddLotTradeInfo::SetBroker(const QString& value)
{
    order().CounterParty = value;
}

// ---------------------------------------------------------------------------
// The factory

bool& GobalMarket() noexcept
{
    static bool gobalMarket = false;
    return gobalMarket;
}

std::unique_ptr<TmarketInfo> MarketInfoFactory(TomsOrder& order)
{
    std::unique_ptr<TmarketInfo> result;
    if (GobalMarket())
        result = std::make_unique<SEHKinfo>(order);
    if (order.Exch == u"SEHK") {
        if ((order.OrderOption & kOddLotTradeReport) == kOddLotTradeReport)
            result = std::make_unique<SEHKOddLotTradeInfo>(order);
        else
            result = std::make_unique<SEHKinfo>(order);
    } else if (order.Exch == u"HKFE") {
        result = std::make_unique<HKFEinfo>(order);
    }
    if (!result)
        result = std::make_unique<DefaultInfo>(order);
    result->syncIn();
    return result;
}

} // namespace qal
