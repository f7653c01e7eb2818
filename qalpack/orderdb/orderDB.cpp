// SPDX-License-Identifier: MIT
#include "qalpack/orderdb/orderDB.h"

#include <cstddef>
#include <exception>
#include <initializer_list>
#include <optional>
#include <vector>

#include "qalpack/db/Database.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/Query.h"
#include "qalpack/db/StoredProc.h"
#include "qalpack/model/exchData.h"
#include "qalpack/model/omsData.h"
#include "qalpack/omslib/omsLog.h"
#include "qalpack/orderdb/DatabaseAccess.h"
#include "qalpack/orderdb/OrderSchema.h"
#include "qalpack/orderdb/omsDBTools.h"
#include "qalpack/runtime/Exception.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

TDatabase* orderDatabase()
{
    return TOmsDM::GetInstance()->GetDatabase(QStringLiteral("omsdata"));
}

TDatabase& RequireOrderDatabase()
{
    if (TDatabase* database = orderDatabase())
        return *database;
    throw DatabaseError(QStringLiteral("OMSDATA"),
        QStringLiteral("the order database cannot be opened: ")
            + TOmsDM::GetInstance()->OpenError(QStringLiteral("omsdata")));
}

namespace internal {

void AppendQuotedSqlValue(QString& out, QStringView value)
{
    out += u'\'';
    for (const QChar c : value) {
        if (c == u'\'')
            out += u'\'';
        out += c;
    }
    out += u'\'';
}

} // namespace internal

QString FormatStringListAsQuotedString(const TStringList* list)
{
    if (!list || list->Count() == 0)
        return QStringLiteral("''");
    QString quoted;
    for (int i = 0; i < list->Count(); ++i) {
        if (i > 0)
            quoted += u',';
        internal::AppendQuotedSqlValue(quoted, list->Strings(i));
    }
    return quoted;
}

namespace {

// Time columns are kept on the records as wall-clock text, whatever the
// machine's own time format.
const QString& timeFormat()
{
    static const QString format = QStringLiteral("hh:nn:ss");
    return format;
}

const QString& saveFailedPrefix()
{
    static const QString prefix = QStringLiteral("Cannot save order: ");
    return prefix;
}

// A filter line with every "%s" filled by the quoted list.
QString filterLine(QStringView line, const QString& list)
{
    return line.toString().replace(QStringLiteral("%s"), list);
}

// Opens `query` on the order database with one SQL line per entry.
void openQuery(TQuery& query, std::initializer_list<QStringView> lines)
{
    query.SetDatabase(RequireOrderDatabase());
    query.SQL().Clear();
    for (const QStringView line : lines)
        query.SQL().Add(line.toString());
    query.Open();
}

template<class Record, class Factory>
std::unique_ptr<Record> obtain(const Factory& factory)
{
    if (!factory)
        return std::make_unique<Record>();
    std::unique_ptr<Record> record = factory();
    if (!record)
        throw Error(QStringLiteral("the order database's record factory returned no record"));
    return record;
}

template<class Record, class Receiver>
void handOver(const Receiver& receiver, std::unique_ptr<Record> record)
{
    if (receiver)
        receiver(std::move(record));
}

// Readers of a column that is only read when not null, so the record keeps
// what its constructor or factory gave it.
void guarded(const TField& field, QString& into)
{
    if (std::optional<QString> value = field.AsOptionalString())
        into = std::move(*value);
}

void guarded(const TField& field, int& into)
{
    if (const std::optional<int> value = field.AsOptionalInteger())
        into = *value;
}

void guarded(const TField& field, long double& into)
{
    if (const std::optional<double> value = field.AsOptionalFloat())
        into = *value;
}

// How one column of a result fills a record: the member it goes to (or a
// function for the columns that need more than a store), whether a null
// leaves the record's value alone (guarded), and whether a result may lack
// the column (optional). Time columns are stored as their "hh:nn:ss" text.
template<class Record>
struct Column
{
    enum Kind : quint8 { Text, Integer, Float, Time, Custom };
    using Reader = void (*)(const TField& field, Record& record);

    static constexpr Column text(QStringView name, QString Record::*member, bool keepOnNull = false)
    {
        return { name, Text, keepOnNull, false, member, nullptr, nullptr, nullptr };
    }
    static constexpr Column integer(QStringView name, int Record::*member, bool keepOnNull = false)
    {
        return { name, Integer, keepOnNull, false, nullptr, member, nullptr, nullptr };
    }
    static constexpr Column real(QStringView name, long double Record::*member, bool keepOnNull = false)
    {
        return { name, Float, keepOnNull, false, nullptr, nullptr, member, nullptr };
    }
    static constexpr Column time(QStringView name, QString Record::*member)
    {
        return { name, Time, false, false, member, nullptr, nullptr, nullptr };
    }
    static constexpr Column custom(QStringView name, Reader reader, bool keepOnNull = false)
    {
        return { name, Custom, keepOnNull, false, nullptr, nullptr, nullptr, reader };
    }
    [[nodiscard]] constexpr Column optional() const
    {
        Column column = *this;
        column.isOptional = true;
        return column;
    }

    QStringView name;
    Kind kind;
    bool guarded;
    bool isOptional;
    QString Record::*textMember;
    int Record::*integerMember;
    long double Record::*realMember;
    Reader reader;
};

constexpr bool kGuarded = true;

// The columns of a result a reader fills, looked up once per query before
// the first row. A column the reader needs and the result lacks raises
// DatabaseError naming it; a missing optional column is skipped.
template<class Record>
class BoundColumns
{
public:
    template<std::size_t N>
    BoundColumns(const TQuery& query, const Column<Record> (&columns)[N])
    {
        bound_.reserve(N);
        for (const Column<Record>& column : columns) {
            TField* field
                = column.isOptional ? query.FindField(column.name) : &query.FieldByName(column.name);
            if (!field)
                continue;
            if (column.kind == Column<Record>::Time)
                field->SetDisplayFormat(timeFormat());
            else if (column.kind == Column<Record>::Text || column.kind == Column<Record>::Custom)
                field->SetShareRepeatedText(true);
            bound_.push_back({ field, &column });
        }
    }

    // Fills `record` from the current row, column by column in table order.
    void read(Record& record) const
    {
        for (const Binding& binding : bound_) {
            const TField& field = *binding.field;
            const Column<Record>& column = *binding.column;
            switch (column.kind) {
            case Column<Record>::Text:
                if (column.guarded)
                    guarded(field, record.*column.textMember);
                else
                    record.*column.textMember = field.AsString();
                break;
            case Column<Record>::Integer:
                if (column.guarded)
                    guarded(field, record.*column.integerMember);
                else
                    record.*column.integerMember = field.AsInteger();
                break;
            case Column<Record>::Float:
                if (column.guarded)
                    guarded(field, record.*column.realMember);
                else
                    record.*column.realMember = field.AsFloat();
                break;
            case Column<Record>::Time:
                record.*column.textMember = field.DisplayText();
                break;
            case Column<Record>::Custom:
                if (!column.guarded || !field.IsNull())
                    column.reader(field, record);
                break;
            }
        }
    }

private:
    struct Binding
    {
        const TField* field;
        const Column<Record>* column;
    };
    std::vector<Binding> bound_;
};

template<class Record>
void decodeStatus(const TField& field, Record& record)
{
    record.Status = record.RawStatus(field.AsString());
}

// Client orders (OMSTrade_File).
using OrderColumn = Column<TomsOrder>;
constexpr OrderColumn kOrderColumns[] = {
    OrderColumn::text(u"Order_No", &TomsOrder::OmsOrder_No),
    OrderColumn::text(u"Account", &TomsOrder::Account),
    OrderColumn::integer(u"Order_Type", &TomsOrder::Side),
    OrderColumn::text(u"Symbol", &TomsOrder::Symbol),
    OrderColumn::integer(u"Quantity", &TomsOrder::Quantity),
    OrderColumn::real(u"Limit_Price", &TomsOrder::Price),
    OrderColumn::text(u"User_No", &TomsOrder::User),
    OrderColumn::integer(u"Hedge", &TomsOrder::Field47),
    OrderColumn::integer(u"Origin", &TomsOrder::Origin),
    OrderColumn::integer(u"Fill", &TomsOrder::Fill_Qty, kGuarded),
    OrderColumn::integer(u"short_sell", &TomsOrder::ShortSell, kGuarded),
    OrderColumn::integer(u"instruction", &TomsOrder::OrderOption, kGuarded),
    OrderColumn::integer(u"instruction1", &TomsOrder::Option489, kGuarded),
    OrderColumn::real(u"price1", &TomsOrder::StopPrice, kGuarded),
    OrderColumn::real(u"price2", &TomsOrder::Price42, kGuarded),
    OrderColumn::real(u"price4", &TomsOrder::Price494, kGuarded),
    OrderColumn::text(u"operatorflag", &TomsOrder::OperatorFlag, kGuarded),
    OrderColumn::time(u"DateTime_Modified", &TomsOrder::Last_MOD_Time),
    OrderColumn::time(u"DateTime_Created", &TomsOrder::Order_Time501),
    OrderColumn::integer(u"working", &TomsOrder::Working),
    OrderColumn::real(u"creditchange", &TomsOrder::CreditChange),
    OrderColumn::real(u"netproceed", &TomsOrder::NetProceed),
    OrderColumn::text(u"reference", &TomsOrder::ref_no, kGuarded),
    OrderColumn::text(u"Exchange", &TomsOrder::Exch, kGuarded),
    OrderColumn::custom(
        u"Original_no",
        [](const TField& f, TomsOrder& o) { o.setAttribute(OrderAttribute::OriginalOrderNum, f.AsString()); },
        kGuarded),
    OrderColumn::text(u"BasketID", &TomsOrder::BASKET_ID, kGuarded),
    OrderColumn::text(u"WaveID", &TomsOrder::WAVE_ID, kGuarded),
    OrderColumn::text(u"SystemRef", &TomsOrder::SysRefValue, kGuarded),
    OrderColumn::real(u"approvalChange", &TomsOrder::ApprovalChange, kGuarded),
    OrderColumn::real(u"approvalApplied", &TomsOrder::ApprovalApplied, kGuarded),
    OrderColumn::text(u"approvalID", &TomsOrder::Approval_ID, kGuarded),
    OrderColumn::text(u"rejectID", &TomsOrder::Reject_ID, kGuarded),
    OrderColumn::text(u"Message", &TomsOrder::Message, kGuarded),
    OrderColumn::text(u"currency", &TomsOrder::Currency, kGuarded),
    OrderColumn::real(u"held", &TomsOrder::Held, kGuarded),
    OrderColumn::integer(u"reqStatus", &TomsOrder::ReqStatus, kGuarded),
    OrderColumn::custom(
        u"CompSystemRef", [](const TField& f, TomsOrder& o) { o.CompSysRef.SetCommaText(f.AsString()); },
        kGuarded),
    OrderColumn::custom(u"Status", &decodeStatus<TomsOrder>),
    OrderColumn::integer(u"StatusFlags", &TomsOrder::StatusFlags, kGuarded).optional(),
};

// Order requests (omsREQ): no status.
constexpr OrderColumn kRequestColumns[] = {
    OrderColumn::text(u"Order_No", &TomsOrder::OmsOrder_No, kGuarded),
    OrderColumn::text(u"Account", &TomsOrder::Account, kGuarded),
    OrderColumn::integer(u"Order_Type", &TomsOrder::Side, kGuarded),
    OrderColumn::text(u"Symbol", &TomsOrder::Symbol, kGuarded),
    OrderColumn::integer(u"Quantity", &TomsOrder::Quantity),
    OrderColumn::real(u"Limit_Price", &TomsOrder::Price),
    OrderColumn::text(u"User_No", &TomsOrder::User, kGuarded),
    OrderColumn::text(u"command", &TomsOrder::Command, kGuarded),
    OrderColumn::text(u"lastuser", &TomsOrder::LastUser),
    OrderColumn::time(u"DateTime_Modified", &TomsOrder::Last_MOD_Time),
    OrderColumn::time(u"DateTime_Created", &TomsOrder::Order_Time501),
    OrderColumn::integer(u"instruction", &TomsOrder::OrderOption, kGuarded),
    OrderColumn::integer(u"instruction1", &TomsOrder::Option489, kGuarded),
    OrderColumn::text(u"req_No", &TomsOrder::reqNum, kGuarded),
    OrderColumn::text(u"Exchange", &TomsOrder::Exch, kGuarded),
    OrderColumn::text(u"Message", &TomsOrder::Message, kGuarded),
    OrderColumn::text(u"operatorflag", &TomsOrder::OperatorFlag, kGuarded),
    OrderColumn::text(u"SystemRef", &TomsOrder::SysRefValue, kGuarded),
    OrderColumn::integer(u"Short_sell", &TomsOrder::ShortSell, kGuarded),
};

// Futures request states (mftsorder_state); the reader decodes the status.
constexpr OrderColumn kFuturesRequestColumns[] = {
    OrderColumn::text(u"Order_No", &TomsOrder::OmsOrder_No),
    OrderColumn::text(u"SubOrderNo", &TomsOrder::SubOrderNo),
    OrderColumn::text(u"Account", &TomsOrder::Account),
    OrderColumn::integer(u"Order_Type", &TomsOrder::Side),
    OrderColumn::text(u"Symbol", &TomsOrder::Symbol),
    OrderColumn::integer(u"Quantity", &TomsOrder::Quantity),
    OrderColumn::real(u"Price", &TomsOrder::Price),
    OrderColumn::text(u"user_no", &TomsOrder::User),
    OrderColumn::integer(u"Hedge", &TomsOrder::Field47),
    OrderColumn::integer(u"Origin", &TomsOrder::Origin),
    OrderColumn::text(u"Last_Operation", &TomsOrder::LastOperation, kGuarded),
    OrderColumn::integer(u"Shortsell", &TomsOrder::ShortSell, kGuarded),
    OrderColumn::time(u"DateTime_Modified", &TomsOrder::Last_MOD_Time),
    OrderColumn::time(u"DateTime_Created", &TomsOrder::Order_Time501),
    OrderColumn::text(u"Exchange", &TomsOrder::Exch),
    OrderColumn::text(u"ExchangeDest", &TomsOrder::ExchangeDest, kGuarded),
};

// Exchange orders, joined to their client order for its side. The exchange
// order has no field for the destination exchange: it is kept among the
// order's attributes.
using ExchColumn = Column<TexchOrder>;
constexpr ExchColumn kExchOrderColumns[] = {
    ExchColumn::text(u"Order_No", &TexchOrder::OmsOrder_No),
    ExchColumn::text(u"Exch_No", &TexchOrder::Order_No),
    ExchColumn::text(u"Account", &TexchOrder::Account),
    ExchColumn::integer(u"Order_Type", &TexchOrder::Side),
    ExchColumn::text(u"Symbol", &TexchOrder::Symbol),
    ExchColumn::integer(u"Quantity", &TexchOrder::Quantity),
    ExchColumn::real(u"Price", &TexchOrder::Price),
    ExchColumn::text(u"user_no", &TexchOrder::User),
    ExchColumn::integer(u"Hedge", &TexchOrder::Field47),
    ExchColumn::integer(u"Origin", &TexchOrder::PrincipalType),
    ExchColumn::integer(u"Shortsell", &TexchOrder::ShortSell, kGuarded),
    ExchColumn::time(u"DateTime_Modified", &TexchOrder::Last_MOD_Time),
    ExchColumn::time(u"DateTime_Created", &TexchOrder::Order_Time),
    ExchColumn::text(u"Exchange", &TexchOrder::Exch, kGuarded),
    ExchColumn::custom(
        u"ExchangeDest",
        [](const TField& f, TexchOrder& e) {
            e.Attributes.SetValue(QStringLiteral("ExchangeDest"), f.AsString());
        },
        kGuarded),
    ExchColumn::text(u"remark", &TexchOrder::Remark, kGuarded).optional(),
    ExchColumn::custom(u"Status", &decodeStatus<TexchOrder>),
};

// Exchange orders with a manually booked trade: the trade's type in tag 43.
constexpr ExchColumn kManualExchOrderColumns[] = {
    ExchColumn::text(u"Order_No", &TexchOrder::OmsOrder_No),
    ExchColumn::text(u"Exch_No", &TexchOrder::Order_No),
    ExchColumn::text(u"Account", &TexchOrder::Account),
    ExchColumn::integer(u"Order_Type", &TexchOrder::Side),
    ExchColumn::text(u"Symbol", &TexchOrder::Symbol),
    ExchColumn::integer(u"Quantity", &TexchOrder::Quantity),
    ExchColumn::real(u"Price", &TexchOrder::Price),
    ExchColumn::text(u"user_no", &TexchOrder::User),
    ExchColumn::integer(u"Hedge", &TexchOrder::Field47),
    ExchColumn::integer(u"Origin", &TexchOrder::PrincipalType),
    ExchColumn::integer(u"Shortsell", &TexchOrder::ShortSell),
    ExchColumn::time(u"DateTime_Modified", &TexchOrder::Last_MOD_Time),
    ExchColumn::text(u"Exchange", &TexchOrder::Exch, kGuarded),
    ExchColumn::integer(u"trade_type", &TexchOrder::Field43),
    ExchColumn::custom(u"Status", &decodeStatus<TexchOrder>),
};

// Trades. The exchange code comes only with the by-exchange query's join.
using TradeColumn = Column<TomsTrade>;
constexpr TradeColumn kTradeColumns[] = {
    TradeColumn::text(u"Exch_No", &TomsTrade::Exch_No),
    TradeColumn::text(u"Tran_No", &TomsTrade::Order_No),
    TradeColumn::text(u"Account", &TomsTrade::Account, kGuarded),
    TradeColumn::text(u"Symbol", &TomsTrade::Symbol),
    TradeColumn::integer(u"Quantity", &TomsTrade::Fill_Qty),
    TradeColumn::real(u"Trans_Price", &TomsTrade::Fill_Price),
    TradeColumn::text(u"user_no", &TomsTrade::User, kGuarded),
    TradeColumn::integer(u"Order_Type", &TomsTrade::Side),
    TradeColumn::integer(u"Hedge", &TomsTrade::Hedge),
    TradeColumn::integer(u"Origin", &TomsTrade::Principal),
    TradeColumn::integer(u"Shortsell", &TomsTrade::ShortSell, kGuarded),
    TradeColumn::integer(u"Trade_Type", &TomsTrade::TradeType),
    TradeColumn::text(u"BrokerID", &TomsTrade::BrokerID, kGuarded),
    TradeColumn::text(u"exchange", &TomsTrade::Exch).optional(),
    TradeColumn::time(u"DateTime_Created", &TomsTrade::EXE_Time),
    TradeColumn::custom(u"Status", &decodeStatus<TomsTrade>),
};

// Manually booked trades, with their exchange order's exchange code.
constexpr TradeColumn kManualTradeColumns[] = {
    TradeColumn::text(u"Exch_No", &TomsTrade::Exch_No),
    TradeColumn::text(u"Tran_No", &TomsTrade::Order_No),
    TradeColumn::text(u"Account", &TomsTrade::Account),
    TradeColumn::text(u"Symbol", &TomsTrade::Symbol),
    TradeColumn::integer(u"Quantity", &TomsTrade::Fill_Qty),
    TradeColumn::real(u"Trans_Price", &TomsTrade::Fill_Price),
    TradeColumn::text(u"user_no", &TomsTrade::User),
    TradeColumn::integer(u"Order_Type", &TomsTrade::Side),
    TradeColumn::integer(u"Hedge", &TomsTrade::Hedge),
    TradeColumn::integer(u"Origin", &TomsTrade::Principal),
    TradeColumn::integer(u"Shortsell", &TomsTrade::ShortSell),
    TradeColumn::integer(u"Trade_Type", &TomsTrade::TradeType),
    TradeColumn::custom(u"Status", &decodeStatus<TomsTrade>),
    TradeColumn::time(u"DateTime_Created", &TomsTrade::EXE_Time),
    TradeColumn::text(u"BrokerID", &TomsTrade::BrokerID),
    TradeColumn::text(u"exchange", &TomsTrade::Exch, kGuarded),
};

// --- readers -------------------------------------------------------------

// Walks the open query's rows: each row is read into a record from `make` and
// handed to `receiver`. Columns are looked up only when there is a row, so an
// empty result needs none of them.
template<class Record, std::size_t N, class Make, class Receiver>
void readRows(TQuery& query, const Column<Record> (&columns)[N], const Make& make, const Receiver& receiver)
{
    if (query.Eof())
        return;
    const BoundColumns<Record> bound(query, columns);
    for (; !query.Eof(); query.Next()) {
        std::unique_ptr<Record> record = make();
        bound.read(*record);
        handOver(receiver, std::move(record));
    }
}

template<class Record, class Factory>
auto maker(const Factory& factory)
{
    return [&factory] { return obtain<Record>(factory); };
}

// Futures requests: a record the factory marks as not to be loaded is freed
// unread, and the status is cleared when it moves away from the previous
// row's before the row's status is decoded.
void readFuturesRequests(TQuery& query, const TOrderReceiver& receiver, const TOrderFactory& factory)
{
    if (query.Eof())
        return;
    const BoundColumns<TomsOrder> bound(query, kFuturesRequestColumns);
    const TField& status = query.FieldByName(u"Status");
    QString previousStatus;
    for (; !query.Eof(); query.Next()) {
        std::unique_ptr<TomsOrder> record = obtain<TomsOrder>(factory);
        if (record->LoadMarker == TomsOrder::kSkipOnLoad)
            continue;
        bound.read(*record);
        if (QStringView(record->statusMessage()).left(4) != previousStatus)
            record->Status = StatusNone;
        QString statusText = status.AsString();
        record->Status = record->RawStatus(statusText);
        previousStatus = std::move(statusText);
        handOver(receiver, std::move(record));
    }
}

constexpr QStringView kOrdersSelect = u"select * from OMSTrade_File ";
constexpr QStringView kOrdersOrder = u"order by Order_No ";
constexpr QStringView kExchOrdersSelect
    = u"select e.*, o.Order_Type from Exch_File e, OMSTrade_File o where e.Order_No = o.Order_No ";
constexpr QStringView kExchOrdersOrder = u"order by e.order_no, e.datetime_created ";

} // namespace

void orderLoadOrders(const TOrderReceiver& receiver, const TOrderFactory& factory)
{
    TQuery query;
    openQuery(query, { u"select * from OMSTrade_File", kOrdersOrder });
    readRows(query, kOrderColumns, maker<TomsOrder>(factory), receiver);
}

void orderLoadExchOrders(const TExchOrderReceiver& receiver, const TExchOrderFactory& factory)
{
    TQuery query;
    openQuery(query, { kExchOrdersSelect, kExchOrdersOrder });
    readRows(query, kExchOrderColumns, maker<TexchOrder>(factory), receiver);
}

void orderLoadTrades(const TTradeReceiver& receiver)
{
    TQuery query;
    openQuery(query, { u"select * from Trans_File", u"order by DateTime_Created " });
    readRows(
        query, kTradeColumns, [] { return std::make_unique<TomsTrade>(); }, receiver);
}

namespace internal {

void LoadUserOrders(
    const TOrderReceiver& receiver, const TOrderFactory& factory, const std::optional<QString>& users)
{
    TQuery query;
    if (users) {
        openQuery(query,
            { kOrdersSelect, filterLine(u"where user_no in (%s) or runner in (%s) ", *users), kOrdersOrder });
    } else {
        openQuery(query, { kOrdersSelect, kOrdersOrder });
    }
    readRows(query, kOrderColumns, maker<TomsOrder>(factory), receiver);
}

void LoadUserRequests(
    const TOrderReceiver& receiver, const TOrderFactory& factory, const std::optional<QString>& users)
{
    const QStringView select = u"select * from omsREQ ";
    const QStringView order = u"order by req_No ";
    TQuery query;
    if (users)
        openQuery(query, { select, filterLine(u"where user_no in (%s) ", *users), order });
    else
        openQuery(query, { select, order });
    readRows(query, kRequestColumns, maker<TomsOrder>(factory), receiver);
}

void LoadUserExchOrders(
    const TExchOrderReceiver& receiver, const TExchOrderFactory& factory, const std::optional<QString>& users)
{
    TQuery query;
    if (users) {
        openQuery(query,
            { kExchOrdersSelect, filterLine(u"and (e.user_no in (%s) or o.runner in (%s))", *users),
                kExchOrdersOrder });
    } else {
        openQuery(query, { kExchOrdersSelect, kExchOrdersOrder });
    }
    readRows(query, kExchOrderColumns, maker<TexchOrder>(factory), receiver);
}

void LoadUserTrades(const TTradeReceiver& receiver, const std::optional<QString>& users)
{
    const QStringView select = u"select * from Trans_File ";
    const QStringView order = u"order by DateTime_Created ";
    TQuery query;
    if (users) {
        openQuery(query,
            { select, filterLine(u"where user_no in (%s) ", *users),
                filterLine(u" OR exch_no IN (SELECT e.exch_no FROM exch_file e, OMSTrade_file o "
                           "WHERE e.order_no = o.order_no AND o.runner IN (%s))",
                    *users),
                order });
    } else {
        openQuery(query, { select, order });
    }
    readRows(
        query, kTradeColumns, [] { return std::make_unique<TomsTrade>(); }, receiver);
}

} // namespace internal

void orderLoadOrdersByExchange(
    const TOrderReceiver& receiver, const TOrderFactory& factory, const TStringList* exchanges)
{
    TQuery query;
    openQuery(query,
        { kOrdersSelect, filterLine(u"where exchange in (%s) ", FormatStringListAsQuotedString(exchanges)),
            kOrdersOrder });
    readRows(query, kOrderColumns, maker<TomsOrder>(factory), receiver);
}

void orderLoadExchOrdersByExchange(
    const TExchOrderReceiver& receiver, const TExchOrderFactory& factory, const TStringList* exchanges)
{
    TQuery query;
    openQuery(query,
        { kExchOrdersSelect,
            filterLine(u"and o.exchange in (%s) ", FormatStringListAsQuotedString(exchanges)),
            kExchOrdersOrder });
    readRows(query, kExchOrderColumns, maker<TexchOrder>(factory), receiver);
}

void orderLoadTradesByExchange(const TTradeReceiver& receiver, const TStringList* exchanges)
{
    TQuery query;
    openQuery(query,
        { u"select e.exchange, t.* from trans_file t left join exch_file e on t.exch_no = e.exch_no ",
            filterLine(u"where e.exchange in (%s) ", FormatStringListAsQuotedString(exchanges)),
            u"order by t.DateTime_Created " });
    readRows(
        query, kTradeColumns, [] { return std::make_unique<TomsTrade>(); }, receiver);
}

void orderLoadMFTSReqByExchange(
    const TOrderReceiver& receiver, const TOrderFactory& factory, const TStringList* exchanges)
{
    TQuery query;
    openQuery(query,
        { u"select * from mftsorder_state ",
            filterLine(u"where exchange in (%s) ", FormatStringListAsQuotedString(exchanges)),
            u"order by datetime_created " });
    readFuturesRequests(query, receiver, factory);
}

void orderLoadManuExches(const TExchOrderReceiver& receiver)
{
    TQuery query;
    openQuery(query,
        { u"select e.*, o.Order_Type, t.trade_type from Exch_File e, OMSTrade_File o, trans_file t "
          "where e.Order_No = o.Order_No and t.exch_no = e.exch_no and t.trade_type <> 0 order "
          "by e.order_no, e.datetime_created " });
    readRows(
        query, kManualExchOrderColumns, [] { return std::make_unique<TexchOrder>(); }, receiver);
}

void orderLoadManuTrades(const TTradeReceiver& receiver, const TTradeFactory& factory)
{
    TQuery query;
    openQuery(query,
        { u"select trans_file.*, exch_file.exchange",
            u"from exch_file, trans_file where trans_file.trade_type <> 0",
            u"and trans_file.exch_no = exch_file.exch_no", u"order by trans_file.DateTime_Created" });
    readRows(query, kManualTradeColumns, maker<TomsTrade>(factory), receiver);
}

// --- saving ----------------------------------------------------------------

namespace {

// The parameters of "sp_insert_new_order", in the order the desk has always
// set them. Each name must be declared by STORPROC.INI.
void setSaveParameters(TStoredProc& proc, const TomsOrder& order)
{
    auto text
        = [&proc](QStringView name, const QString& value) { proc.ParamByName(name).SetAsString(value); };
    auto textIfSet = [&text](QStringView name, const QString& value) {
        if (!value.isEmpty())
            text(name, value);
    };
    auto integer = [&proc](QStringView name, int value) { proc.ParamByName(name).SetAsInteger(value); };
    auto integerIfSet = [&integer](QStringView name, int value) {
        if (value != 0)
            integer(name, value);
    };
    auto number
        = [&proc](QStringView name, long double value) { proc.ParamByName(name).SetAsFloat(double(value)); };
    auto numberIfSet = [&number](QStringView name, long double value) {
        if (value != 0.0L)
            number(name, value);
    };

    text(u"@m_account", order.Account);
    text(u"@m_symbol", order.Symbol);
    integer(u"@m_order_type", order.Side);
    integer(u"@m_quantity", order.Quantity);
    number(u"@m_limit_price", order.Price);
    text(u"@m_user_no", order.User);
    // The untranslated status text: a desk running in Chinese stores what
    // every desk's loader decodes (RawStatus), never its own screen text.
    text(u"@m_status", order.RawStatus(order.Status).left(4));
    text(u"@m_operatorflag", order.OperatorFlag.left(1));
    if (order.Fill_Qty > 0)
        integer(u"@m_filled", order.Fill_Qty);
    textIfSet(u"@m_order_no", order.OmsOrder_No);
    integer(u"@m_open_close", order.OpenClose);
    integerIfSet(u"@m_short_sell", order.ShortSell);
    integerIfSet(u"@m_instruction", order.OrderOption);
    numberIfSet(u"@m_price1", order.StopPrice);
    numberIfSet(u"@m_price2", order.Price42);
    integerIfSet(u"@m_hedge", order.Field47);
    integerIfSet(u"@m_origin", order.Origin);
    number(u"@m_working", order.Working);
    number(u"@m_netproceed", order.NetProceed);
    number(u"@m_creditChange", order.CreditChange);
    textIfSet(u"@m_reference", order.ref_no);
    textIfSet(u"@m_exchange", order.Exch);
    textIfSet(u"@m_original_no", order.GetOriginalOrderNum());
    textIfSet(u"@m_basket_id", order.BASKET_ID);
    textIfSet(u"@m_wave_id", order.WAVE_ID);
    textIfSet(u"@m_system_ref", order.SysRefValue);
}

// The record shows one line: the desk's CR LF pairs go without a trace, any
// other line break becomes a blank.
QString oneLine(QString text)
{
    text.remove(QStringLiteral("\r\n"));
    text.replace(u'\n', u' ');
    text.replace(u'\r', u' ');
    return text;
}

void markSaveFailed(TomsOrder& order, const QString& why)
{
    omsLogMsg(saveFailedPrefix() + why, omsLogError);
    order.Message = saveFailedPrefix() + oneLine(why);
    order.Status = StatusRejected;
    order.ErrorCode = TomsOrder::kSaveFailed;
}

} // namespace

void orderSaveOrder(TomsOrder& order)
{
    TDatabase& database = RequireOrderDatabase();
    // The embedded database has no server-side procedures: make sure its
    // C++ "sp_insert_new_order" is there.
    EnsureOrderProcedures();
    TStoredProc proc(database);
    proc.SetStoredProcName(QStringLiteral("sp_insert_new_order"));
    PrepareStoredProc(proc.StoredProcName(), proc);
    setSaveParameters(proc, order);

    try {
        proc.ExecProc();
        order.Last_MOD_Time = FormatDateTime(timeFormat(), proc.ParamByName(u"@m_createtime").AsDateTime());
        if (order.Order_Time501.isEmpty())
            order.Order_Time501 = order.Last_MOD_Time;
        if (order.OmsOrder_No.isEmpty()) {
            order.OmsOrder_No = proc.ParamByName(u"@m_order_no").AsString();
            order.Order_Time501 = order.Last_MOD_Time;
        }
    } catch (const Error& error) {
        markSaveFailed(order, error.message());
    } catch (const std::exception& error) {
        markSaveFailed(order, QString::fromLocal8Bit(error.what()));
    }
}

} // namespace qal
