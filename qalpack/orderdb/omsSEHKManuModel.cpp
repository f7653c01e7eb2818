// SPDX-License-Identifier: MIT
#include "qalpack/orderdb/omsSEHKManuModel.h"

#include <utility>

#include <QPointer>
#include <QScopeGuard>

#include "qalpack/model/omsData.h"
#include "qalpack/omslib/subMgr.h"
#include "qalpack/orderdb/orderDB.h"

namespace qal {

TomsSEHKManuTrade::TomsSEHKManuTrade(QObject* owner)
    : TomsTrade(owner)
{ }

TomsSEHKManuTrade::TomsSEHKManuTrade(const QString& message, QObject* owner)
    : TomsTrade(owner)
{
    applyMessage(message);
}

TomsSEHKManuTrade::~TomsSEHKManuTrade() = default;

bool TomsSEHKManuTrade::isBookedTrade() const
{
    const auto* list = qobject_cast<const TOMSSEHKManuList*>(TOMSSEHKManuBaseList::GetInstance());
    if (!list)
        return false;
    const TexchOrder* exch = list->getExchByTradeNum(Exch_No);
    return exch && !exch->OmsOrder_No.isEmpty();
}

namespace {

TOMSSEHKManuList::TCurrentUsersSource& currentUsersSource()
{
    static TOMSSEHKManuList::TCurrentUsersSource source;
    return source;
}

} // namespace

void TOMSSEHKManuList::SetCurrentUsersSource(TCurrentUsersSource source)
{
    currentUsersSource() = std::move(source);
}

TOMSSEHKManuList::TOMSSEHKManuList(QObject* owner)
    : TOMSSEHKManuList(QStringList(), QString(), owner)
{
    if (const TCurrentUsersSource& source = currentUsersSource()) {
        const TCurrentUsers users = source();
        for (const QString& user : users.accessibleUsers)
            addAccessibleUser(user);
        addAccessibleUser(users.userNo);
    }
}

TOMSSEHKManuList::TOMSSEHKManuList(const QStringList& accessibleUsers, const QString& userNo, QObject* owner)
    : TOMSSEHKManuBaseList(owner)
    , subscription_(TsubMgr::last())
{
    trades_.SetSorted(true);
    exchanges_.SetSorted(true);
    accessibleUsers_.SetCaseSensitive(true);
    accessibleUsers_.SetSorted(true);
    for (const QString& user : accessibleUsers)
        addAccessibleUser(user);
    addAccessibleUser(userNo);
}

TOMSSEHKManuList::~TOMSSEHKManuList() = default;

void TOMSSEHKManuList::addAccessibleUser(const QString& user)
{
    if (!user.isEmpty())
        accessibleUsers_.Add(user); // a sorted list ignores a number it has
}

void TOMSSEHKManuList::recoverFromDB()
{
    loading_ = true;
    const auto done = qScopeGuard([this] { loading_ = false; });
    clearTrades();
    clearExches();
    orderLoadManuExches([this](std::unique_ptr<TexchOrder> exch) { loadExch(std::move(exch)); });
    orderLoadManuTrades([this](std::unique_ptr<TomsTrade> trade) { loadTrade(std::move(trade)); },
        [] { return std::make_unique<TomsSEHKManuTrade>(); });
}

void TOMSSEHKManuList::loadExch(std::unique_ptr<TexchOrder> exch)
{
    AddExch(exch.get()); // stores a copy; the record handed over is freed here
}

void TOMSSEHKManuList::loadTrade(std::unique_ptr<TomsTrade> trade)
{
    TomsTrade* const passed = trade.get();
    if (AddTrade(passed) && getTradeByTradeNum(passed->Order_No) == passed)
        (void)trade.release(); // stored: the list owns it now
}

void TOMSSEHKManuList::watch(TomsTrade& trade)
{
    // Once per trade, however often it is passed in. The guard keeps a trade
    // that outlives the list (one the caller kept) from calling into it.
    trade.RemoveCallback(this);
    trade.RegisterCallback(
        [list = QPointer<TOMSSEHKManuList>(this)](void* data, void* custom) {
            if (list)
                list->TradeUpdate(data, custom);
        },
        this);
}

TomsTrade* TOMSSEHKManuList::AddTrade(TomsTrade* trade)
{
    auto* const manual = qobject_cast<TomsSEHKManuTrade*>(trade);
    if (!manual)
        return nullptr;
    watch(*manual);
    if (manual->Exch.isEmpty())
        manual->Exch = QStringLiteral("SEHK");
    int index = -1;
    if (trades_.Find(manual->Order_No, index)) {
        TomsSEHKManuTrade* const stored = trades_.Object(index);
        if (stored != manual)
            stored->assign(*manual);
    } else {
        trades_.AddObject(manual->Order_No, manual);
    }
    return trade;
}

TexchOrder* TOMSSEHKManuList::AddExch(TexchOrder* exch)
{
    if (!exch)
        return nullptr;
    int index = -1;
    if (exchanges_.Find(exch->Order_No, index)) {
        TexchOrder* const stored = exchanges_.Object(index);
        if (stored != exch)
            stored->assign(*exch);
        return stored;
    }
    auto copy = std::make_unique<TexchOrder>();
    copy->assign(*exch);
    exchanges_.AddObject(exch->Order_No, copy.release());
    return exch;
}

void TOMSSEHKManuList::ReceiveManuTrade(QObject* /*sender*/, QObject* data)
{
    if (const auto* trade = qobject_cast<const TomsTrade*>(data)) {
        if (trade->TradeType == 0)
            return;
        auto copy = std::make_unique<TomsSEHKManuTrade>();
        copy->assign(*trade);
        AddTrade(copy.get());
        TomsSEHKManuTrade* const held = getTradeByTradeNum(copy->Order_No);
        if (held == copy.get())
            (void)copy.release(); // stored: the list owns it now
        // A copy that only updated the stored trade is freed after the fire;
        // watchers are given the trade that stays in the list.
        FireEvent(held);
        return;
    }
    auto* const exch = qobject_cast<TexchOrder*>(data);
    if (!exch || qobject_cast<const TomsOrder*>(data))
        return;
    if (exch->ManualSelector != 0) {
        AddExch(exch);
        return;
    }
    const TomsSEHKManuTrade* const trade = getTradeByTradeNum(exch->Order_No);
    if (trade && trade->TradeType != 0)
        AddExch(exch);
}

void TOMSSEHKManuList::TradeUpdate(void* sender, void* data)
{
    if (onTradeUpdate_)
        onTradeUpdate_(sender, data);
}

void TOMSSEHKManuList::setOnTradeUpdate(TTradeUpdateEvent handler)
{
    onTradeUpdate_ = std::move(handler);
}

int TOMSSEHKManuList::getTradeCount() const
{
    return trades_.Count();
}

TomsSEHKManuTrade* TOMSSEHKManuList::getTradeByIndex(int index) const
{
    return index < trades_.Count() ? trades_.Object(index) : nullptr;
}

TomsSEHKManuTrade* TOMSSEHKManuList::getTradeByTradeNum(const QString& tradeNo) const
{
    int index = -1;
    return trades_.Find(tradeNo, index) ? trades_.Object(index) : nullptr;
}

TexchOrder* TOMSSEHKManuList::getExchByTradeNum(const QString& no) const
{
    int index = -1;
    return exchanges_.Find(no, index) ? exchanges_.Object(index) : nullptr;
}

int TOMSSEHKManuList::getExchCount() const
{
    return exchanges_.Count();
}

QString TOMSSEHKManuList::getAccessableUserAsString() const
{
    QString quoted;
    for (const QString& user : accessibleUsers_) {
        if (!quoted.isEmpty())
            quoted += u',';
        internal::AppendQuotedSqlValue(quoted, user);
    }
    return quoted;
}

bool TOMSSEHKManuList::isMyUser(const QString& user) const
{
    int index = -1;
    return accessibleUsers_.Find(user, index);
}

void TOMSSEHKManuList::clearTrades()
{
    trades_.Clear();
}

void TOMSSEHKManuList::clearExches()
{
    exchanges_.Clear();
}

int TOMSSEHKManuList::SubscribeOMSTradeByExchange(const QString& /*exchange*/)
{
    return 0;
}

void TOMSSEHKManuList::subscribeUpdate() { }

} // namespace qal
