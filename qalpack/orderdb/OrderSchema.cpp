// SPDX-License-Identifier: MIT
#include "qalpack/orderdb/OrderSchema.h"

#include <algorithm>
#include <array>
#include <exception>

#include <QDateTime>
#include <QFile>
#include <QVariant>

#include "qalpack/db/Database.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/Query.h"
#include "qalpack/db/Session.h"
#include "qalpack/db/SqliteBackend.h"
#include "qalpack/runtime/Exception.h"

namespace qal {

namespace {

constexpr auto kProcName = "sp_insert_new_order";
constexpr int kOrderNoDigits = 8;

// How the embedded procedure passes a parameter on to its column.
enum class Kind { Text, Integer, Float, RoundedInteger };

// One input of sp_insert_new_order: the parameter (without "@"), the column
// of OMSTrade_File it fills and the value used when the caller leaves it
// unset. The defaults are those of the PostgreSQL function.
struct InputParam
{
    const char16_t* name;
    const char16_t* column;
    Kind kind;
    QVariant fallback;
};

const std::array<InputParam, 26>& inputParams()
{
    static const std::array<InputParam, 26> params { {
        { u"m_account", u"Account", Kind::Text, {} },
        { u"m_symbol", u"Symbol", Kind::Text, {} },
        { u"m_order_type", u"Order_Type", Kind::Integer, 0 },
        { u"m_quantity", u"Quantity", Kind::Integer, {} },
        { u"m_limit_price", u"Limit_Price", Kind::Float, 0.0 },
        { u"m_user_no", u"User_No", Kind::Text, {} },
        { u"m_status", u"Status", Kind::Text, QStringLiteral("Pend") },
        { u"m_operatorflag", u"operatorflag", Kind::Text, QStringLiteral("C") },
        { u"m_filled", u"Fill", Kind::Integer, 0 },
        { u"m_order_no", u"Order_No", Kind::Text, {} },
        { u"m_open_close", u"Open_Close", Kind::Integer, 0 },
        { u"m_short_sell", u"short_sell", Kind::Integer, 0 },
        { u"m_instruction", u"instruction", Kind::Integer, 0 },
        { u"m_price1", u"price1", Kind::Float, 0.0 },
        { u"m_price2", u"price2", Kind::Float, 0.0 },
        { u"m_hedge", u"Hedge", Kind::Integer, 0 },
        { u"m_origin", u"Origin", Kind::Integer, 0 },
        { u"m_working", u"working", Kind::RoundedInteger, 0.0 },
        { u"m_netproceed", u"netproceed", Kind::Float, 0.0 },
        { u"m_creditChange", u"creditchange", Kind::Float, 0.0 },
        { u"m_reference", u"reference", Kind::Text, {} },
        { u"m_exchange", u"Exchange", Kind::Text, {} },
        { u"m_original_no", u"Original_no", Kind::Text, {} },
        { u"m_basket_id", u"BasketID", Kind::Text, {} },
        { u"m_wave_id", u"WaveID", Kind::Text, {} },
        { u"m_system_ref", u"SystemRef", Kind::Text, {} },
    } };
    return params;
}

// A parameter's name as the server knows it: without the "@" that the
// stored-procedure definitions put in front.
QStringView bareName(const TParam& param)
{
    QStringView name = QStringView(param.Name()).trimmed();
    if (name.startsWith(u'@'))
        name = name.mid(1);
    return name;
}

TParam* findParam(TParams& params, QStringView name)
{
    for (int i = 0; i < params.Count(); ++i) {
        TParam& param = params.Items(i);
        if (bareName(param).compare(name, Qt::CaseInsensitive) == 0)
            return &param;
    }
    return nullptr;
}

// Binds the column parameter `target` from the caller's `given` parameter,
// or from the default when the caller left it unset. An explicit null stays
// null.
void bindInput(TParam& target, const InputParam& input, const TParam* given)
{
    if (!given || !given->Bound()) {
        target.SetValue(input.fallback);
        return;
    }
    if (given->IsNull()) {
        target.SetValue(QVariant());
        return;
    }
    switch (input.kind) {
    case Kind::Text:
        target.SetAsString(given->AsString());
        break;
    case Kind::Integer:
        target.SetAsInteger(given->AsLargeInt());
        break;
    case Kind::Float:
        target.SetAsFloat(given->AsFloat());
        break;
    case Kind::RoundedInteger:
        target.SetAsInteger(qRound64(given->AsFloat()));
        break;
    }
}

QString padOrderNo(qint64 number)
{
    return QString::number(number).rightJustified(kOrderNoDigits, u'0');
}

// The next order number of the embedded database, advanced inside the
// procedure's transaction (so a failed save hands the number out again) and
// stepping over numbers that an order already carries.
QString nextOrderNo(TDatabase& database)
{
    TQuery advance(database);
    advance.SQL().Add(
        QStringLiteral("update oms_sequence set Last_Value = Last_Value + 1 where Name = 'order_no'"));
    TQuery current(database);
    current.SQL().Add(QStringLiteral("select Last_Value from oms_sequence where Name = 'order_no'"));
    TQuery taken(database);
    taken.SQL().Add(QStringLiteral("select count(*) from OMSTrade_File where Order_No = :no"));
    for (;;) {
        advance.ExecSQL();
        if (advance.RowsAffected() == 0) {
            TQuery start(database);
            start.SQL().Add(
                QStringLiteral("insert into oms_sequence (Name, Last_Value) values ('order_no', 1)"));
            start.ExecSQL();
        }
        current.Open();
        const QString number = padOrderNo(current.Fields(0).AsLargeInt());
        current.Close();
        taken.ParamByName(u"no").SetAsString(number);
        taken.Open();
        const bool free = taken.Fields(0).AsLargeInt() == 0;
        taken.Close();
        if (free)
            return number;
    }
}

// The embedded sp_insert_new_order. The SQLite driver runs it in one
// transaction and undoes everything when it throws.
void insertNewOrder(TParams& params, TDatabase& database)
{
    for (int i = 0; i < params.Count(); ++i) {
        const TParam& param = params.Items(i);
        if (!param.IsInput() || !param.Bound())
            continue;
        const QStringView name = bareName(param);
        const bool known = std::any_of(inputParams().begin(), inputParams().end(),
            [&](const InputParam& input) { return name.compare(input.name, Qt::CaseInsensitive) == 0; });
        if (!known)
            throw Error(
                QStringLiteral("%1 has no parameter \"%2\"").arg(QLatin1StringView(kProcName), param.Name()));
    }

    TQuery insert(database);
    QStringList columns;
    QStringList values;
    for (const InputParam& input : inputParams()) {
        columns << QString::fromUtf16(input.column);
        values << QStringLiteral(":") + QString::fromUtf16(input.column);
    }
    insert.SQL().Add(QStringLiteral("insert into OMSTrade_File (%1, DateTime_Created, DateTime_Modified)")
                         .arg(columns.join(u", ")));
    insert.SQL().Add(QStringLiteral("values (%1, :created, :created)").arg(values.join(u", ")));

    for (const InputParam& input : inputParams())
        bindInput(insert.ParamByName(QString::fromUtf16(input.column)), input, findParam(params, input.name));

    TParam& orderNo = insert.ParamByName(u"Order_No");
    if (orderNo.IsNull() || orderNo.AsString().isEmpty())
        orderNo.SetAsString(nextOrderNo(database));
    const QString number = orderNo.AsString();
    // Milliseconds, as the server keeps them.
    const QDateTime created = QDateTime::fromMSecsSinceEpoch(QDateTime::currentMSecsSinceEpoch());
    insert.ParamByName(u"created").SetAsDateTime(created);
    insert.ExecSQL();

    if (TParam* out = findParam(params, u"m_order_no"); out && out->IsOutput())
        out->SetAsString(number);
    if (TParam* out = findParam(params, u"m_createtime"); out && out->IsOutput())
        out->SetAsDateTime(created);
}

QString readScript(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(QStringLiteral("the order database script %1 is missing from the library").arg(path));
    return QString::fromUtf8(file.readAll());
}

QString schemaScript(const QString& driver)
{
    if (driver == u"SQLITE")
        return readScript(QStringLiteral(":/qalpack/db/sqlite/order_schema.sql"));
    if (driver == u"POSTGRES") {
        return readScript(QStringLiteral(":/qalpack/db/postgres/order_schema.sql"))
            + readScript(QStringLiteral(":/qalpack/db/postgres/sp_insert_new_order.sql"));
    }
    throw Error(QStringLiteral("there is no order database for the driver \"%1\"").arg(driver));
}

// The order tables `database` holds, asked of the database itself: a query
// by name could reach another open database of the same name, outside this
// one's transaction.
TStringList existingTables(TDatabase& database)
{
    TStringList tables;
    database.GetTableNames(tables);
    return tables;
}

// Runs `work` in a transaction of its own, or in the caller's when one is
// open.
template<typename Work>
void inTransaction(TDatabase& database, Work work)
{
    database.Open();
    const bool own = !database.InTransaction();
    if (own)
        database.StartTransaction();
    try {
        work();
        if (own)
            database.Commit();
    } catch (...) {
        if (own && database.InTransaction())
            database.Rollback();
        throw;
    }
}

} // namespace

const QStringList& OrderSchemaTables()
{
    static const QStringList tables { QStringLiteral("OMSTrade_File"), QStringLiteral("Exch_File"),
        QStringLiteral("Trans_File"), QStringLiteral("omsREQ"), QStringLiteral("mftsorder_state"),
        QStringLiteral("User_File"), QStringLiteral("AccountEntitle"), QStringLiteral("orsconfig"),
        QStringLiteral("Account_File"), QStringLiteral("Account_ShortCut") };
    return tables;
}

QString OrderDatabaseDriver(const TDatabase& database)
{
    if (!database.AliasName().isEmpty())
        return TSession::Default().GetAliasDriverName(database.AliasName()).toUpper();
    return database.DriverName().toUpper();
}

void CreateOrderSchema(TDatabase& database)
{
    const QString driver = OrderDatabaseDriver(database);
    const QString script = schemaScript(driver);
    if (driver == u"SQLITE")
        RegisterOrderProcedures();
    inTransaction(database, [&] {
        // "already exists, skipping" notices are no news on a second run.
        if (driver == u"POSTGRES")
            database.Execute(QStringLiteral("set local client_min_messages = warning"));
        database.Execute(script);
    });
}

void RegisterOrderProcedures()
{
    SqliteBackend::RegisterProcedure(QLatin1StringView(kProcName), insertNewOrder);
}

void EnsureOrderProcedures()
{
    if (!SqliteBackend::IsProcedureRegistered(QLatin1StringView(kProcName)))
        RegisterOrderProcedures();
}

std::vector<TOrderTableRows> OrderTableRowCounts(TDatabase& database)
{
    database.Open();
    const TStringList tables = existingTables(database);
    std::vector<TOrderTableRows> counts;
    for (const QString& table : OrderSchemaTables()) {
        if (tables.IndexOf(table) < 0)
            continue;
        TQuery query(database);
        query.SQL().Add(QStringLiteral("select count(*) from %1").arg(table));
        query.Open();
        counts.push_back({ table, query.Fields(0).AsLargeInt() });
    }
    return counts;
}

void ClearOrderData(TDatabase& database)
{
    database.Open();
    const QString driver = OrderDatabaseDriver(database);
    inTransaction(database, [&] {
        const TStringList tables = existingTables(database);
        for (const QString& table : OrderSchemaTables()) {
            if (tables.IndexOf(table) >= 0)
                database.Execute(QStringLiteral("delete from %1").arg(table));
        }
        if (driver == u"POSTGRES") {
            database.Execute(QStringLiteral("do $$ begin if to_regclass('oms_order_no_seq') is not null then "
                                            "alter sequence oms_order_no_seq restart; end if; end $$"));
        } else if (tables.IndexOf(QStringLiteral("oms_sequence")) >= 0) {
            database.Execute(QStringLiteral("update oms_sequence set Last_Value = 0"));
        }
    });
}

} // namespace qal
