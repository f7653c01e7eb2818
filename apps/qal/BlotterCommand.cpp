// SPDX-License-Identifier: MIT
#include "apps/qal/BlotterCommand.h"
#include "apps/qal/CommandLine.h"
#include "apps/qal/ToolConfig.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QHash>
#include <QJsonObject>
#include <QJsonValue>
#include <QTextStream>

#include "qalpack/model/exchData.h"
#include "qalpack/model/omsData.h"
#include "qalpack/omslib/ElHashList.h"
#include "qalpack/omslib/omsIniFile.h"
#include "qalpack/orderdb/orderDB.h"
#include "qalpack/runtime/Exception.h"
#include "qalpack/runtime/Format.h"
#include "qalpack/runtime/StringList.h"

namespace qal::tool {

namespace {

enum class View { Orders, ExchOrders, Trades };

// Which rows: every user's, those of some users (entered or run by them), or
// those of some exchanges.
struct Filter
{
    TElHashList<int> users;
    TStringList exchanges;
    bool byUser = false;
    bool byExchange = false;
};

// One column of the blotter: its caption, the key of its value in a JSON
// line (the names `qal decode --json` and `qal save --json` use), and
// whether numbers line it up on the right.
struct Column
{
    const char* caption;
    const char* key;
    bool rightAligned = false;
};

// One cell: the text the blotter prints and the value a JSON line carries
// (quantities and prices as numbers).
struct Cell
{
    QString text;
    QJsonValue value;
};

Cell text(const QString& value)
{
    return { value, value };
}

// Prices are kept in long double and read from the database through it, so
// 112.3 may come back as 112.30000000000001; the JSON value is rounded to the
// six decimals order messages carry, which gives the price as entered.
Cell price(long double value)
{
    return { FixedText(double(value), 3), QString::number(double(value), 'f', 6).toDouble() };
}

Cell number(int value)
{
    return { QString::number(value), value };
}

struct Table
{
    // The record class a row comes from, as `qal decode --json` names it.
    QString type;
    std::vector<Column> columns;
    std::vector<std::vector<Cell>> rows;
};

// The records a blotter holds. Trades are referred to by their exchange
// orders, exchange orders adopted by their client orders; what has no parent
// on the blotter stays in its own list.
struct Blotter
{
    std::vector<std::unique_ptr<TomsTrade>> trades;
    std::vector<std::unique_ptr<TexchOrder>> exchOrders;
    std::vector<std::unique_ptr<TomsOrder>> orders;
};

void loadTrades(const Filter& filter, Blotter& blotter)
{
    auto receive
        = [&blotter](std::unique_ptr<TomsTrade> trade) { blotter.trades.push_back(std::move(trade)); };
    if (filter.byUser)
        orderLoadUserTrades(receive, false, &filter.users);
    else if (filter.byExchange)
        orderLoadTradesByExchange(receive, &filter.exchanges);
    else
        orderLoadTrades(receive);
}

void loadExchOrders(const Filter& filter, Blotter& blotter)
{
    auto receive
        = [&blotter](std::unique_ptr<TexchOrder> order) { blotter.exchOrders.push_back(std::move(order)); };
    if (filter.byUser)
        orderLoadUserExchOrders(receive, {}, false, &filter.users);
    else if (filter.byExchange)
        orderLoadExchOrdersByExchange(receive, {}, &filter.exchanges);
    else
        orderLoadExchOrders(receive);
}

void loadOrders(const Filter& filter, Blotter& blotter)
{
    auto receive
        = [&blotter](std::unique_ptr<TomsOrder> order) { blotter.orders.push_back(std::move(order)); };
    if (filter.byUser)
        orderLoadUserOrders(receive, {}, false, &filter.users);
    else if (filter.byExchange)
        orderLoadOrdersByExchange(receive, {}, &filter.exchanges);
    else
        orderLoadOrders(receive);
}

// Trades go to their exchange orders, so that fills and queues add up.
void attachTrades(Blotter& blotter)
{
    QHash<QString, TexchOrder*> byExchNo;
    for (const auto& exch : blotter.exchOrders)
        byExchNo.insert(exch->Order_No, exch.get());
    for (const auto& trade : blotter.trades) {
        if (TexchOrder* exch = byExchNo.value(trade->Exch_No))
            exch->addTrade(trade.get());
    }
}

// A trade row carries no exchange of its own: the trade is on its exchange
// order's exchange. The exchange-filtered loader joins it in; otherwise it is
// looked up among all the day's exchange orders, since a dealer's trades may
// fill an exchange order another dealer entered.
void fillTradeExchanges(Blotter& blotter)
{
    const bool missing = std::any_of(blotter.trades.begin(), blotter.trades.end(),
        [](const auto& trade) { return trade->Exch.isEmpty(); });
    if (!missing)
        return;
    QHash<QString, QString> exchangeOf;
    orderLoadExchOrders(
        [&exchangeOf](std::unique_ptr<TexchOrder> exch) { exchangeOf.insert(exch->Order_No, exch->Exch); });
    for (const auto& trade : blotter.trades) {
        if (trade->Exch.isEmpty())
            trade->Exch = exchangeOf.value(trade->Exch_No);
    }
}

// Exchange orders go to their client orders, which then own them.
void attachExchOrders(Blotter& blotter)
{
    QHash<QString, TomsOrder*> byOrderNo;
    for (const auto& order : blotter.orders)
        byOrderNo.insert(order->OmsOrder_No, order.get());
    std::vector<std::unique_ptr<TexchOrder>> orphans;
    for (auto& exch : blotter.exchOrders) {
        if (TomsOrder* order = byOrderNo.value(exch->OmsOrder_No))
            order->addExchOrder(exch.release());
        else
            orphans.push_back(std::move(exch));
    }
    blotter.exchOrders = std::move(orphans);
}

Table ordersTable(const Blotter& blotter)
{
    Table table { QStringLiteral("TomsOrder"),
        { { "Order No", "orderNo" }, { "Account", "account" }, { "Side", "side" }, { "Symbol", "symbol" },
            { "Qty", "quantity", true }, { "Price", "price", true }, { "Status", "status" },
            { "Filled", "fillQty", true }, { "Remaining", "remainingQty", true },
            { "Queued", "queueQty", true }, { "Exch", "exchange" }, { "Created", "created" },
            { "Remark", "remark" } },
        {} };
    for (const auto& o : blotter.orders) {
        table.rows.push_back({ text(o->OmsOrder_No), text(o->Account), text(o->GetBuySellText()),
            text(o->Symbol), number(o->Quantity), price(o->Price), text(o->statusMessage()),
            number(o->Fill_Qty), number(o->GetRemainingQty()), number(o->CalculateQueuQty()), text(o->Exch),
            text(o->Order_Time501), text(o->GetRemark()) });
    }
    return table;
}

Table exchOrdersTable(const Blotter& blotter)
{
    Table table { QStringLiteral("TexchOrder"),
        { { "Exch No", "exchNo" }, { "Order No", "orderNo" }, { "Account", "account" }, { "Side", "side" },
            { "Symbol", "symbol" }, { "Qty", "quantity", true }, { "Price", "price", true },
            { "Status", "status" }, { "Filled", "fillQty", true }, { "Queued", "queueQty", true },
            { "Exch", "exchange" }, { "Created", "created" }, { "Remark", "remark" } },
        {} };
    for (const auto& e : blotter.exchOrders) {
        table.rows.push_back({ text(e->Order_No), text(e->OmsOrder_No), text(e->Account),
            text(e->GetBuySellText()), text(e->Symbol), number(e->Quantity), price(e->Price),
            text(e->statusMessage()), number(e->CalculateFillQty()), number(e->CalculateQueuQty()),
            text(e->Exch), text(e->Order_Time), text(e->GetRemark()) });
    }
    return table;
}

Table tradesTable(const Blotter& blotter)
{
    Table table { QStringLiteral("TomsTrade"),
        { { "Trade No", "tradeNo" }, { "Exch No", "exchNo" }, { "Account", "account" }, { "Side", "side" },
            { "Symbol", "symbol" }, { "Qty", "fillQty", true }, { "Price", "fillPrice", true },
            { "Status", "status" }, { "Type", "tradeType" }, { "Exch", "exchange" }, { "Time", "time" } },
        {} };
    for (const auto& t : blotter.trades) {
        table.rows.push_back({ text(t->Order_No), text(t->Exch_No), text(t->Account),
            text(t->GetBuySellText()), text(t->Symbol), number(t->Fill_Qty), price(t->Fill_Price),
            text(t->statusMessage()), text(t->getTradeType()), text(t->Exch), text(t->EXE_Time) });
    }
    return table;
}

QStringList captions(const Table& table)
{
    QStringList captions;
    for (const Column& column : table.columns)
        captions << QString::fromLatin1(column.caption);
    return captions;
}

QStringList texts(const std::vector<Cell>& row)
{
    QStringList texts;
    for (const Cell& cell : row)
        texts << cell.text;
    return texts;
}

void printAligned(const Table& table, QTextStream& out)
{
    std::vector<qsizetype> widths;
    for (const Column& column : table.columns)
        widths.push_back(qsizetype(qstrlen(column.caption)));
    for (const auto& row : table.rows) {
        for (std::size_t c = 0; c < row.size(); ++c)
            widths[c] = std::max(widths[c], row[c].text.size());
    }
    auto line = [&](const QStringList& cells) {
        QString text;
        for (qsizetype c = 0; c < cells.size(); ++c) {
            const int width = int(widths[std::size_t(c)]);
            if (c > 0)
                text += QStringLiteral("  ");
            text += table.columns[std::size_t(c)].rightAligned ? cells[c].rightJustified(width)
                                                               : cells[c].leftJustified(width);
        }
        out << QStringView(text).trimmed() << '\n';
    };
    line(captions(table));
    for (const auto& row : table.rows)
        line(texts(row));
}

QString csvField(const QString& text)
{
    if (!text.contains(u',') && !text.contains(u'"') && !text.contains(u'\n') && !text.contains(u'\r'))
        return text;
    return u'"' + QString(text).replace(QStringLiteral("\""), QStringLiteral("\"\"")) + u'"';
}

void printCsv(const Table& table, QTextStream& out)
{
    auto line = [&out](const QStringList& cells) {
        QStringList fields;
        for (const QString& cell : cells)
            fields << csvField(cell);
        out << fields.join(u',') << "\r\n";
    };
    line(captions(table));
    for (const auto& row : table.rows)
        line(texts(row));
}

// One JSON object per record, the record's class under "type".
void printJson(const Table& table, QTextStream& out)
{
    for (const auto& row : table.rows) {
        QJsonObject object { { QStringLiteral("type"), table.type } };
        for (std::size_t c = 0; c < row.size(); ++c)
            object.insert(QLatin1StringView(table.columns[c].key), row[c].value);
        writeJsonLine(out, object);
    }
}

} // namespace

int runBlotter(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Loads the day's client orders (default), exchange orders or trades from the order database and\n"
        "prints them as a blotter: status, side, instruction remark, remaining and queued quantities.\n"
        "Client orders are shown with their exchange orders and trades, so fills and queues add up.\n"
        "The configuration is OMS_INI, else config/oms.ini next to the tool."));
    const QCommandLineOption exch(
        QStringLiteral("exch-orders"), QStringLiteral("Show exchange orders instead of client orders."));
    const QCommandLineOption trades(
        QStringLiteral("trades"), QStringLiteral("Show trades instead of client orders."));
    const QCommandLineOption user(QStringLiteral("user"),
        QStringLiteral("Only what this user entered or runs (repeat for several users)."),
        QStringLiteral("id"));
    const QCommandLineOption exchange(QStringLiteral("exchange"),
        QStringLiteral("Only this exchange, %1 in any case (repeat for several).")
            .arg(knownExchanges().join(QStringLiteral(" or "))),
        QStringLiteral("code"));
    const QCommandLineOption csv(
        QStringLiteral("csv"), QStringLiteral("Comma-separated values with a header line."));
    const QCommandLineOption json(
        QStringLiteral("json"), QStringLiteral("One JSON object per order, exchange order or trade."));
    parser.addOptions({ exch, trades, user, exchange, csv, json });

    if (const std::optional<int> done
        = parseCommandLine(parser, QStringLiteral("blotter"), arguments, out, err))
        return *done;
    if (!parser.positionalArguments().isEmpty()) {
        err << "qal blotter: unexpected argument \"" << parser.positionalArguments().first() << "\"\n";
        return kUsageError;
    }
    if (parser.isSet(exch) && parser.isSet(trades)) {
        err << "qal blotter: --exch-orders and --trades exclude each other\n";
        return kUsageError;
    }
    if (parser.isSet(user) && parser.isSet(exchange)) {
        err << "qal blotter: --user and --exchange exclude each other\n";
        return kUsageError;
    }
    if (parser.isSet(csv) && parser.isSet(json)) {
        err << "qal blotter: --csv and --json exclude each other\n";
        return kUsageError;
    }
    const View view = parser.isSet(trades) ? View::Trades
        : parser.isSet(exch)               ? View::ExchOrders
                                           : View::Orders;
    Filter filter;
    for (const QString& id : parser.values(user))
        filter.users.AddItem(id, 0);
    // The order database spells exchanges in capitals and compares them
    // exactly; a misspelt one would show an empty blotter, as if the
    // exchange had had no business.
    for (const QString& name : parser.values(exchange)) {
        const std::optional<QString> code = exchangeCode(name);
        if (!code) {
            err << "qal blotter: unknown exchange \"" << name
                << "\" (known: " << knownExchanges().join(QStringLiteral(", ")) << ")\n";
            return kUsageError;
        }
        filter.exchanges.Add(*code);
    }
    filter.byUser = parser.isSet(user);
    filter.byExchange = parser.isSet(exchange);

    if (!useConfiguration(QStringLiteral("blotter"), err))
        return kFailure;
    Blotter blotter;
    Table table;
    try {
        loadTrades(filter, blotter);
        if (view != View::Trades)
            loadExchOrders(filter, blotter);
        else
            fillTradeExchanges(blotter);
        attachTrades(blotter);
        if (view == View::Orders) {
            loadOrders(filter, blotter);
            attachExchOrders(blotter);
        }
        table = view == View::Orders   ? ordersTable(blotter)
            : view == View::ExchOrders ? exchOrdersTable(blotter)
                                       : tradesTable(blotter);
    } catch (const Error& error) {
        err << "qal blotter: " << error.message() << '\n';
        return kFailure;
    }
    if (parser.isSet(csv))
        printCsv(table, out);
    else if (parser.isSet(json))
        printJson(table, out);
    else
        printAligned(table, out);
    return kSuccess;
}

} // namespace qal::tool
