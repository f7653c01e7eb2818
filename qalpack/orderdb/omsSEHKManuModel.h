// SPDX-License-Identifier: MIT
// The working list of trades booked by hand on the stock exchange, with the
// exchange orders they belong to: recovered from the order database at start
// and kept up to date from live trades and exchange orders the host feeds it.
#pragma once

#include <functional>
#include <memory>

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include "qalpack/model/exchData.h"
#include "qalpack/orderdb/omsSEHKManuBaseModel.h"
#include "qalpack/qalpack_export.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

class TsubMgr;

// A trade a dealer booked by hand (trade type not 0). It is declared here,
// not with TomsTrade in the record layer (model/exchData), because
// isBookedTrade asks the manual trade list: the records stay free of any
// dependency on the order database units.
class QALPACK_EXPORT TomsSEHKManuTrade : public TomsTrade
{
    Q_OBJECT

public:
    explicit TomsSEHKManuTrade(QObject* owner = nullptr);
    // Parses a tagged trade message, as TomsTrade does.
    explicit TomsSEHKManuTrade(const QString& message, QObject* owner = nullptr);
    ~TomsSEHKManuTrade() override;

    // True when the current manual trade list (TOMSSEHKManuBaseList::
    // GetInstance, if it is a TOMSSEHKManuList) holds an exchange order under
    // this trade's Exch_No and that order belongs to a client order (its
    // OmsOrder_No is set). False when there is no such list or order.
    [[nodiscard]] bool isBookedTrade() const;
};

// The manual trades and their exchange orders.
//
// Trades are stored themselves: AddTrade keeps the object it is given (the
// list then owns it), unless a trade with the same number is stored already,
// in which case the stored trade takes the new values and the caller keeps
// its object. Exchange orders are stored as copies: AddExch never keeps the
// object it is given. Hand trades over without a QObject owner.
//
// Trades are keyed by their trade number (TomsTrade::Order_No, the trade
// file's Tran_No), exchange orders by their exchange order number
// (TexchOrder::Order_No, the exchange order file's Exch_No); keys compare
// without regard to letter case and are kept in sorted order.
class QALPACK_EXPORT TOMSSEHKManuList : public TOMSSEHKManuBaseList
{
    Q_OBJECT

public:
    // Called by TradeUpdate with the trade that fired and the list.
    using TTradeUpdateEvent = std::function<void(void* sender, void* data)>;

    // Who is logged on, as a list made without users needs it: the user's
    // accessible users and own number.
    struct TCurrentUsers
    {
        QStringList accessibleUsers;
        QString userNo;
    };
    using TCurrentUsersSource = std::function<TCurrentUsers()>;
    // The user profile installs its source as soon as the desk sets up its
    // logon (TUserProfile::SetCustomLogin and friends), so that this unit
    // does not reach up to the profile itself.
    static void SetCurrentUsersSource(TCurrentUsersSource source);

    // A list for the logged-on user: the accessible users are the current
    // user profile's (TUserProfile::GetInstance) accessible users and the
    // user's own number. With no profile (no logon) there are none. Throws
    // what TUserProfile::GetInstance throws.
    explicit TOMSSEHKManuList(QObject* owner = nullptr);
    // A list whose accessible users are `accessibleUsers` and `userNo`; empty
    // and repeated numbers are left out.
    TOMSSEHKManuList(const QStringList& accessibleUsers, const QString& userNo, QObject* owner = nullptr);
    // Frees every trade and exchange order held.
    ~TOMSSEHKManuList() override;

    // Empties both lists, then loads the day's manual exchange orders and
    // manual trades from the order database (orderLoadManuExches,
    // orderLoadManuTrades). Database errors propagate with the lists partly
    // filled; loading() is true only while this runs.
    void recoverFromDB();
    // The loaders' receivers: each takes the record it is handed, stores it
    // (loadTrade) or a copy of it (loadExch) as AddTrade and AddExch do, and
    // frees whatever the list did not keep.
    void loadExch(std::unique_ptr<TexchOrder> exch);
    void loadTrade(std::unique_ptr<TomsTrade> trade);

    // Stores `trade` under its trade number and returns it; see the class
    // comment for who owns it afterwards. A trade that is not a
    // TomsSEHKManuTrade (or nullptr) is refused: nullptr, nothing stored.
    // The list watches every trade passed in (TradeUpdate), and a trade with
    // an empty exchange code is given "SEHK" before it is stored or copied.
    TomsTrade* AddTrade(TomsTrade* trade);
    // With an exchange order stored under the same number: that order takes
    // the values of `exch` and is returned. Otherwise a copy of `exch` is
    // stored and `exch` is returned (it stays the caller's). nullptr gives
    // nullptr.
    TexchOrder* AddExch(TexchOrder* exch);

    // Live data from the host: `data` is a record.
    // - A TomsTrade whose TradeType is not 0: a copy is added as a
    //   TomsSEHKManuTrade and the list fires its change event with the trade
    //   it now holds under that number (the copy, or the stored trade that
    //   took the copy's values). Trades of type 0 are ignored.
    // - A TexchOrder that is not a client order (TomsOrder): added (as a
    //   copy) when its ManualSelector is non-zero, or when a stored trade
    //   under its exchange order number has a TradeType other than 0.
    // Anything else, nullptr included, is ignored. `sender` is not used.
    void ReceiveManuTrade(QObject* sender, QObject* data);
    // Called when a watched trade fires: passes both on to the trade-update
    // handler, when one is set.
    void TradeUpdate(void* sender, void* data);
    void setOnTradeUpdate(TTradeUpdateEvent handler);

    [[nodiscard]] int getTradeCount() const override;
    [[nodiscard]] TomsSEHKManuTrade* getTradeByIndex(int index) const override;
    [[nodiscard]] TomsSEHKManuTrade* getTradeByTradeNum(const QString& tradeNo) const override;
    // The exchange order stored under exchange order number `no`, or nullptr.
    [[nodiscard]] TexchOrder* getExchByTradeNum(const QString& no) const;
    [[nodiscard]] int getExchCount() const;

    // The accessible users as an SQL list, "'D001','D002'", in sorted order;
    // a quote inside a number is doubled. Empty (not "''") when there are none.
    [[nodiscard]] QString getAccessableUserAsString() const;
    // Whether `user` is one of the accessible users (letter case counts).
    [[nodiscard]] bool isMyUser(const QString& user) const;

    // Free every trade, or every exchange order, and empty that list.
    void clearTrades();
    void clearExches();

    // Live subscriptions are not made by the list: the host feeds
    // ReceiveManuTrade itself. Both do nothing; the first returns 0.
    int SubscribeOMSTradeByExchange(const QString& exchange);
    void subscribeUpdate();

    [[nodiscard]] bool loading() const { return loading_; }

private:
    void addAccessibleUser(const QString& user);
    void watch(TomsTrade& trade);

    TObjectStringList<TomsSEHKManuTrade> trades_ { true };
    TObjectStringList<TexchOrder> exchanges_ { true };
    TStringList accessibleUsers_;
    QPointer<TsubMgr> subscription_; // the bus live updates would come from; not owned
    bool loading_ = false;
    TTradeUpdateEvent onTradeUpdate_;
};

} // namespace qal
