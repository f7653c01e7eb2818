// SPDX-License-Identifier: MIT
#include "apps/qal/BlotterCommand.h"
#include "apps/qal/ToolConfig.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QHash>
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

// One printed column: its caption, whether numbers line it up on the right,
// and each row's text.
struct Table
{
    QStringList captions;
    std::vector<bool> rightAligned;
    std::vector<QStringList> rows;
};

QString price(long double value)
{
    return FixedText(double(value), 3);
}

QString number(int value)
{
    return QString::number(value);
}

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
    Table table { { "Order No", "Account", "Side", "Symbol", "Qty", "Price", "Status", "Filled", "Remaining",
                      "Queued", "Exch", "Created", "Remark" },
        { false, false, false, false, true, true, false, true, true, true, false, false, false }, {} };
    for (const auto& o : blotter.orders) {
        table.rows.push_back(
            { o->OmsOrder_No, o->Account, o->GetBuySellText(), o->Symbol, number(o->Quantity),
                price(o->Price), o->statusMessage(), number(o->Fill_Qty), number(o->GetRemainingQty()),
                number(o->CalculateQueuQty()), o->Exch, o->Order_Time501, o->GetRemark() });
    }
    return table;
}

Table exchOrdersTable(const Blotter& blotter)
{
    Table table { { "Exch No", "Order No", "Account", "Side", "Symbol", "Qty", "Price", "Status", "Filled",
                      "Queued", "Exch", "Created", "Remark" },
        { false, false, false, false, false, true, true, false, true, true, false, false, false }, {} };
    for (const auto& e : blotter.exchOrders) {
        table.rows.push_back({ e->Order_No, e->OmsOrder_No, e->Account, e->GetBuySellText(), e->Symbol,
            number(e->Quantity), price(e->Price), e->statusMessage(), number(e->CalculateFillQty()),
            number(e->CalculateQueuQty()), e->Exch, e->Order_Time, e->GetRemark() });
    }
    return table;
}

Table tradesTable(const Blotter& blotter)
{
    Table table { { "Trade No", "Exch No", "Account", "Side", "Symbol", "Qty", "Price", "Status", "Type",
                      "Exch", "Time" },
        { false, false, false, false, false, true, true, false, false, false, false }, {} };
    for (const auto& t : blotter.trades) {
        table.rows.push_back(
            { t->Order_No, t->Exch_No, t->Account, t->GetBuySellText(), t->Symbol, number(t->Fill_Qty),
                price(t->Fill_Price), t->statusMessage(), t->getTradeType(), t->Exch, t->EXE_Time });
    }
    return table;
}

void printAligned(const Table& table, QTextStream& out)
{
    std::vector<qsizetype> widths;
    for (const QString& caption : table.captions)
        widths.push_back(caption.size());
    for (const QStringList& row : table.rows) {
        for (qsizetype c = 0; c < row.size(); ++c)
            widths[std::size_t(c)] = std::max(widths[std::size_t(c)], row[c].size());
    }
    auto line = [&](const QStringList& cells) {
        QString text;
        for (qsizetype c = 0; c < cells.size(); ++c) {
            const int width = int(widths[std::size_t(c)]);
            if (c > 0)
                text += QStringLiteral("  ");
            text += table.rightAligned[std::size_t(c)] ? cells[c].rightJustified(width)
                                                       : cells[c].leftJustified(width);
        }
        out << QStringView(text).trimmed() << '\n';
    };
    line(table.captions);
    for (const QStringList& row : table.rows)
        line(row);
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
    line(table.captions);
    for (const QStringList& row : table.rows)
        line(row);
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
        QStringLiteral("Only this exchange, e.g. SEHK or HKFE (repeat for several)."),
        QStringLiteral("code"));
    const QCommandLineOption csv(
        QStringLiteral("csv"), QStringLiteral("Comma-separated values with a header line."));
    const QCommandLineOption help(
        { QStringLiteral("h"), QStringLiteral("help") }, QStringLiteral("Show this help."));
    parser.addOptions({ exch, trades, user, exchange, csv, help });

    if (!parser.parse(QStringList { QStringLiteral("qal blotter") } + arguments)) {
        err << "qal blotter: " << parser.errorText() << '\n';
        return 2;
    }
    if (parser.isSet(help)) {
        out << parser.helpText();
        return 0;
    }
    if (!parser.positionalArguments().isEmpty()) {
        err << "qal blotter: unexpected argument \"" << parser.positionalArguments().first() << "\"\n";
        return 2;
    }
    if (parser.isSet(exch) && parser.isSet(trades)) {
        err << "qal blotter: --exch-orders and --trades exclude each other\n";
        return 2;
    }
    if (parser.isSet(user) && parser.isSet(exchange)) {
        err << "qal blotter: --user and --exchange exclude each other\n";
        return 2;
    }
    const View view = parser.isSet(trades) ? View::Trades
        : parser.isSet(exch)               ? View::ExchOrders
                                           : View::Orders;
    Filter filter;
    for (const QString& id : parser.values(user))
        filter.users.AddItem(id, 0);
    for (const QString& code : parser.values(exchange))
        filter.exchanges.Add(code);
    filter.byUser = parser.isSet(user);
    filter.byExchange = parser.isSet(exchange);

    if (!useConfiguration(QStringLiteral("blotter"), err))
        return 1;
    Blotter blotter;
    Table table;
    try {
        loadTrades(filter, blotter);
        if (view != View::Trades)
            loadExchOrders(filter, blotter);
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
        return 1;
    }
    if (parser.isSet(csv))
        printCsv(table, out);
    else
        printAligned(table, out);
    return 0;
}

} // namespace qal::tool
