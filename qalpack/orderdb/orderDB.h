// SPDX-License-Identifier: MIT
// The order database's plain functions for hosts: the connection, the loaders
// that fill the blotters with the day's client orders, exchange orders, trades
// and requests, and the saving of a new order through "sp_insert_new_order".
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QString>
#include <QStringView>

#include "qalpack/omslib/ElHashList.h"
#include "qalpack/qalpack_export.h"

namespace qal {

class TDatabase;
class TStringList;
class TexchOrder;
class TomsOrder;
class TomsTrade;

// The connection of the logical database "omsdata" (TOmsDM::GetDatabase, so
// its alias and login come from the data map), opened on the first call.
// nullptr when it cannot be opened; a later call tries again. The data
// module owns it.
[[nodiscard]] QALPACK_EXPORT TDatabase* orderDatabase();

// orderDatabase(), or a DatabaseError for "OMSDATA" that carries the driver's
// reason when it cannot be opened (a missing or corrupt file, a server that
// is down, a refused login).
[[nodiscard]] QALPACK_EXPORT TDatabase& RequireOrderDatabase();

// Callbacks of the loaders. A receiver is called once per row with the filled
// record and owns it from then on. A factory makes the record a row is read
// into, so that a host can load into its own subclass or preset defaults that
// null columns keep; it must return a record with no QObject owner (a null
// record makes the loader throw qal::Error). An empty function is "unset":
// without a factory the loader makes the base record itself, without a
// receiver every record is freed after its row.
using TOrderReceiver = std::function<void(std::unique_ptr<TomsOrder> order)>;
using TOrderFactory = std::function<std::unique_ptr<TomsOrder>()>;
using TExchOrderReceiver = std::function<void(std::unique_ptr<TexchOrder> order)>;
using TExchOrderFactory = std::function<std::unique_ptr<TexchOrder>()>;
using TTradeReceiver = std::function<void(std::unique_ptr<TomsTrade> trade)>;
using TTradeFactory = std::function<std::unique_ptr<TomsTrade>()>;

namespace internal {

// Appends `value` in single quotes to `out`, a quote inside it doubled, so a
// value can never end the SQL text it goes into.
QALPACK_EXPORT void AppendQuotedSqlValue(QString& out, QStringView value);

// The user-filtered loaders behind the templates below. `users` is the quoted
// list of FormatStringListAsQuotedString, or nothing to load every user.
QALPACK_EXPORT void LoadUserOrders(
    const TOrderReceiver& receiver, const TOrderFactory& factory, const std::optional<QString>& users);
QALPACK_EXPORT void LoadUserRequests(
    const TOrderReceiver& receiver, const TOrderFactory& factory, const std::optional<QString>& users);
QALPACK_EXPORT void LoadUserExchOrders(const TExchOrderReceiver& receiver, const TExchOrderFactory& factory,
    const std::optional<QString>& users);
QALPACK_EXPORT void LoadUserTrades(const TTradeReceiver& receiver, const std::optional<QString>& users);

} // namespace internal

// The values of a list as an SQL "in (...)" list: each wrapped in single
// quotes, joined by "," without blanks ("'D001','D002'"), a quote inside a
// value doubled ("O'Hara" gives 'O''Hara'). A null or empty list gives "''",
// which matches no row (or only rows whose column is the empty text).
// Strings of a TStringList in order; keys of a TElHashList in index order.
[[nodiscard]] QALPACK_EXPORT QString FormatStringListAsQuotedString(const TStringList* list);

template<class V>
[[nodiscard]] QString FormatStringListAsQuotedString(const TElHashList<V>* list)
{
    if (!list || list->Count() == 0)
        return QStringLiteral("''");
    QString quoted;
    for (int i = 0; i < list->Count(); ++i) {
        if (i > 0)
            quoted += u',';
        internal::AppendQuotedSqlValue(quoted, list->KeyByIndex(i));
    }
    return quoted;
}

// The loaders. Each runs one query on orderDatabase() and hands every row, in
// the query's order, to the receiver as a new record. Rows of an empty result
// need no columns at all; otherwise a column a record needs that the result
// lacks, an SQL error, a lost connection or an order database that cannot be
// opened raise qal::DatabaseError out of the loader (records already handed
// over stay with the receiver). A receiver's or factory's exception leaves the
// loader as it is. Nothing else is kept: the query is freed on every path.
//
// How the columns fill the records is set in one place: the column tables
// of orderDB.cpp (kOrderColumns, kRequestColumns, kFuturesRequestColumns,
// kExchOrderColumns, kManualExchOrderColumns, kTradeColumns,
// kManualTradeColumns), one row per column naming the member it fills. Times
// are stored as "hh:nn:ss" text, a null time as empty text. A guarded column
// is read only when it is not null, so a null leaves the value the factory
// gave; a result may lack an optional column. Status text is decoded last
// with the record's RawStatus into Status. The futures request loader frees
// unread a record whose LoadMarker is TomsOrder::kSkipOnLoad when the factory
// hands it over, and resets Status to 0 when the record's status text differs
// from the previous row's before the row's Status is decoded.

// Every client order, by order number.
QALPACK_EXPORT void orderLoadOrders(const TOrderReceiver& receiver, const TOrderFactory& factory = {});
// Every exchange order with its client order's side, by client order number
// and creation time.
QALPACK_EXPORT void orderLoadExchOrders(
    const TExchOrderReceiver& receiver, const TExchOrderFactory& factory = {});
// Every trade, by creation time. Trades are always TomsTrade.
QALPACK_EXPORT void orderLoadTrades(const TTradeReceiver& receiver);

// The user-filtered loaders. With `allUsers` every row is loaded and `users`
// is not looked at (it may be null). Otherwise a null `users` loads nothing
// and calls nothing; an empty one matches only rows whose user is empty text.
// The users are the keys of `users`.
//
// Client orders entered by one of the users (user_no) or run by one (runner).
template<class V>
void orderLoadUserOrders(
    const TOrderReceiver& receiver, const TOrderFactory& factory, bool allUsers, const TElHashList<V>* users)
{
    if (allUsers || users)
        internal::LoadUserOrders(receiver, factory,
            allUsers ? std::nullopt : std::optional(FormatStringListAsQuotedString(users)));
}
// Requests (omsREQ) of the users, by request number.
template<class V>
void orderLoadUserRequests(
    const TOrderReceiver& receiver, const TOrderFactory& factory, bool allUsers, const TElHashList<V>* users)
{
    if (allUsers || users)
        internal::LoadUserRequests(receiver, factory,
            allUsers ? std::nullopt : std::optional(FormatStringListAsQuotedString(users)));
}
// Exchange orders entered by the users or whose client order they run.
template<class V>
void orderLoadUserExchOrders(const TExchOrderReceiver& receiver, const TExchOrderFactory& factory,
    bool allUsers, const TElHashList<V>* users)
{
    if (allUsers || users)
        internal::LoadUserExchOrders(receiver, factory,
            allUsers ? std::nullopt : std::optional(FormatStringListAsQuotedString(users)));
}
// Trades of the users, or of exchange orders whose client order they run.
template<class V>
void orderLoadUserTrades(const TTradeReceiver& receiver, bool allUsers, const TElHashList<V>* users)
{
    if (allUsers || users)
        internal::LoadUserTrades(
            receiver, allUsers ? std::nullopt : std::optional(FormatStringListAsQuotedString(users)));
}

// The exchange-filtered loaders: rows whose exchange code is one of the
// strings of `exchanges`. A null or empty list matches only rows whose
// exchange is empty text.
QALPACK_EXPORT void orderLoadOrdersByExchange(
    const TOrderReceiver& receiver, const TOrderFactory& factory, const TStringList* exchanges);
QALPACK_EXPORT void orderLoadExchOrdersByExchange(
    const TExchOrderReceiver& receiver, const TExchOrderFactory& factory, const TStringList* exchanges);
// Trades whose exchange order is on one of the exchanges; the exchange code
// is filled from the exchange order.
QALPACK_EXPORT void orderLoadTradesByExchange(const TTradeReceiver& receiver, const TStringList* exchanges);
// Futures order requests (mftsorder_state) by creation time.
QALPACK_EXPORT void orderLoadMFTSReqByExchange(
    const TOrderReceiver& receiver, const TOrderFactory& factory, const TStringList* exchanges);

// Exchange orders that have a manually booked trade (trade_type not 0), once
// per such trade. Always TexchOrder.
QALPACK_EXPORT void orderLoadManuExches(const TExchOrderReceiver& receiver);
// Manually booked trades with their exchange order's exchange code. The
// manual trade list passes the factory of its own trade record; without one
// the records are TomsTrade.
QALPACK_EXPORT void orderLoadManuTrades(const TTradeReceiver& receiver, const TTradeFactory& factory = {});

// Saves a new client order through the stored procedure "sp_insert_new_order"
// of orderDatabase(), its parameters declared by STORPROC.INI.
//
// Sent: account, symbol, side, quantity, limit price, user, the first four
// characters of the untranslated status text (RawStatus of Status, which is
// statusMessage() without a translator installed) and the first character of OperatorFlag,
// OpenClose, and Working, NetProceed and CreditChange as floats, always; the
// filled quantity when above 0; the order number, reference, exchange,
// original order number, basket, wave and system reference when not empty;
// short sell, instruction (OrderOption), StopPrice, Price42, hedge (Field47)
// and Origin when not zero. Unsent parameters take the procedure's defaults.
//
// On success Last_MOD_Time becomes the procedure's creation time as
// "hh:nn:ss" and, when empty, so does Order_Time501; an order without a
// number gets the number the procedure gave and Order_Time501 equal to
// Last_MOD_Time. When the procedure fails (server error, lost connection) the
// order is marked instead and nothing is raised: Message becomes
// "Cannot save order: " and the error in one line, Status -1, ErrorCode
// TomsOrder::kSaveFailed; the error is logged at level 0.
//
// Throws qal::DatabaseError, with nothing sent, when STORPROC.INI does not
// declare one of the parameters, and when the order database cannot be
// opened at all.
QALPACK_EXPORT void orderSaveOrder(TomsOrder& order);

} // namespace qal
