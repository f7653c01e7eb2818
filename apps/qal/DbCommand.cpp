// SPDX-License-Identifier: MIT
#include "apps/qal/DbCommand.h"
#include "apps/qal/CommandLine.h"
#include "apps/qal/ToolConfig.h"

#include <algorithm>
#include <limits>
#include <optional>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QTextStream>

#include "apps/qal/SampleDay.h"
#include "qalpack/db/Database.h"
#include "qalpack/db/Session.h"
#include "qalpack/market/SpreadTable.h"
#include "qalpack/orderdb/OrderSchema.h"
#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/Exception.h"

namespace qal::tool {
namespace {

constexpr auto kDefaultAlias = "OMSDATA";
// The sample day's default date: a Wednesday, with December 2026 the front
// month of the index futures.
constexpr auto kDefaultDate = "2026-11-18";

// The value of the parameter line `name` of an alias ("DATABASE", "HOST").
QString aliasValue(const QString& alias, QStringView name)
{
    for (const QString& line : TSession::Default().AliasParams(alias)) {
        const qsizetype equals = line.indexOf(u'=');
        if (equals > 0 && QStringView(line).left(equals).trimmed().compare(name, Qt::CaseInsensitive) == 0)
            return line.mid(equals + 1).trimmed();
    }
    return QString();
}

// Where the alias's database lives, for the report.
QString location(const QString& alias, const QString& driver)
{
    if (driver == u"SQLITE")
        return aliasValue(alias, u"DATABASE");
    return QStringLiteral("%1:%2/%3")
        .arg(aliasValue(alias, u"HOST"), aliasValue(alias, u"PORT"), aliasValue(alias, u"DATABASE"));
}

// The ladders that SEHK prices step on, from the spreads directory given,
// next to the tool (build tree) or installed beside it.
TSpreadTable ladder(const QString& name, const QString& given)
{
    QStringList dirs;
    if (!given.isEmpty())
        dirs << given;
    const QString exeDir = QCoreApplication::applicationDirPath();
    dirs << exeDir + QStringLiteral("/spreads") << exeDir + QStringLiteral("/../share/qalpack/spreads");
    for (const QString& dir : dirs) {
        const QString path = QDir(dir).filePath(name + QStringLiteral(".txt"));
        if (QFileInfo(path).isFile()) {
            TSpreadTable table = TSpreadTable::fromFile(path);
            if (table.LoadError() || table.Count() == 0)
                throw Error(QStringLiteral("the price ladder %1 does not load").arg(path));
            return table;
        }
    }
    throw Error(QStringLiteral("no price ladder %1.txt in %2").arg(name, dirs.join(u", ")));
}

QString rowsText(const std::vector<TOrderTableRows>& counts)
{
    QStringList parts;
    for (const TOrderTableRows& table : counts) {
        if (table.rows > 0)
            parts << QStringLiteral("%1 in %2").arg(table.rows).arg(table.table);
    }
    return parts.join(u", ");
}

void printLine(QTextStream& out, const char* what, int rows, const QString& table, const QString& detail = {})
{
    QString line = QStringLiteral("  %1 %2 %3 %4")
                       .arg(QLatin1StringView(what), -18)
                       .arg(rows, 5)
                       .arg(table, -16)
                       .arg(detail);
    while (line.endsWith(u' '))
        line.chop(1);
    out << line << '\n';
}

void printSample(QTextStream& out, const SampleDaySummary& day, const SampleDaySettings& settings)
{
    out << "sample trading day " << settings.date.toString(Qt::ISODate) << " (seed " << settings.seed
        << "):\n";
    QStringList statuses;
    for (const auto& [status, count] : day.ordersByStatus)
        statuses << QStringLiteral("%1 %2").arg(status).arg(count);
    printLine(out, "users", day.users, QStringLiteral("User_File"));
    printLine(out, "entitlements", day.entitlements, QStringLiteral("AccountEntitle"));
    printLine(out, "destinations", day.destinations, QStringLiteral("orsconfig"));
    printLine(out, "accounts", day.accounts, QStringLiteral("Account_File"));
    printLine(out, "shortcuts", day.shortcuts, QStringLiteral("Account_ShortCut"));
    printLine(out, "orders", day.sehkOrders + day.hkfeOrders, QStringLiteral("OMSTrade_File"),
        QStringLiteral("SEHK %1, HKFE %2; %3")
            .arg(day.sehkOrders)
            .arg(day.hkfeOrders)
            .arg(statuses.join(u", ")));
    printLine(out, "exchange orders", day.exchangeOrders, QStringLiteral("Exch_File"));
    printLine(out, "trades", day.trades, QStringLiteral("Trans_File"),
        QStringLiteral("%1 booked by hand").arg(day.manualTrades));
    printLine(out, "requests", day.requests, QStringLiteral("omsREQ"));
    printLine(out, "futures requests", day.futuresRequests, QStringLiteral("mftsorder_state"));
}

// The sample day as JSON: the rows written per table, and the breakdowns
// the text report shows beside them.
QJsonObject sampleJson(const SampleDaySummary& day, const SampleDaySettings& settings)
{
    QJsonObject statuses;
    for (const auto& [status, count] : day.ordersByStatus)
        statuses.insert(status, count);
    const QJsonObject rows { { QStringLiteral("User_File"), day.users },
        { QStringLiteral("AccountEntitle"), day.entitlements },
        { QStringLiteral("orsconfig"), day.destinations }, { QStringLiteral("Account_File"), day.accounts },
        { QStringLiteral("Account_ShortCut"), day.shortcuts },
        { QStringLiteral("OMSTrade_File"), day.sehkOrders + day.hkfeOrders },
        { QStringLiteral("Exch_File"), day.exchangeOrders }, { QStringLiteral("Trans_File"), day.trades },
        { QStringLiteral("omsREQ"), day.requests },
        { QStringLiteral("mftsorder_state"), day.futuresRequests } };
    return { { QStringLiteral("date"), settings.date.toString(Qt::ISODate) },
        { QStringLiteral("seed"),
            settings.seed <= quint64(std::numeric_limits<qint64>::max())
                ? QJsonValue(qint64(settings.seed))
                : QJsonValue(QString::number(settings.seed)) },
        { QStringLiteral("rows"), rows }, { QStringLiteral("sehkOrders"), day.sehkOrders },
        { QStringLiteral("hkfeOrders"), day.hkfeOrders }, { QStringLiteral("ordersByStatus"), statuses },
        { QStringLiteral("manualTrades"), day.manualTrades } };
}

int init(const QString& aliasName, bool sample, bool force, bool json, QTextStream& out, QTextStream& err,
    const QString& spreadsDir, SampleDaySettings& settings)
{
    const std::optional<QString> omsIni = useConfiguration(QStringLiteral("db"), err);
    if (!omsIni)
        return kFailure;
    TSession& session = TSession::Default();
    if (!session.IsAlias(aliasName)) {
        err << "qal db init: there is no database alias \"" << aliasName << "\" in "
            << (session.AliasFile().isEmpty() ? *omsIni : session.AliasFile()) << '\n';
        return kFailure;
    }
    const QString driver = session.GetAliasDriverName(aliasName).toUpper();
    if (driver != u"SQLITE" && driver != u"POSTGRES") {
        err << "qal db init: alias \"" << aliasName << "\" is a " << driver
            << " alias, not an SQLITE or POSTGRES database\n";
        return kFailure;
    }
    const QString where = location(aliasName, driver);

    TDatabase database;
    database.SetAliasName(aliasName);
    database.SetDatabaseName(aliasName + QStringLiteral("DB"));
    database.SetLoginPrompt(false);
    if (driver == u"SQLITE" && !where.startsWith(u':') && !where.startsWith(u"file:")) {
        // The embedded database is made on first use, folder and all.
        QDir().mkpath(QFileInfo(where).absolutePath());
        database.Params().Add(QStringLiteral("CREATE=TRUE"));
    }
    database.Open();
    // With --json the summary is one object, written once everything is done.
    QJsonObject summary { { QStringLiteral("alias"), aliasName }, { QStringLiteral("driver"), driver },
        { QStringLiteral("location"), where } };
    if (!json)
        out << "order database " << aliasName << " (" << driver << ") at " << where << '\n';

    const std::vector<TOrderTableRows> before = OrderTableRowCounts(database);
    const QString existing = rowsText(before);
    if (!existing.isEmpty()) {
        if (!force) {
            err << "qal db init: the database already holds data (" << existing
                << "); nothing was changed. Run again with --force to delete it all and start afresh.\n";
            return kFailure;
        }
        ClearOrderData(database);
        QJsonObject deleted;
        for (const TOrderTableRows& table : before) {
            if (table.rows > 0)
                deleted.insert(table.table, table.rows);
        }
        summary.insert(QStringLiteral("deleted"), deleted);
        if (!json)
            out << "deleted the existing data: " << existing << '\n';
    }

    CreateOrderSchema(database);
    QStringList created;
    for (const QString& table : OrderSchemaTables()) {
        const bool had = std::any_of(
            before.begin(), before.end(), [&](const TOrderTableRows& row) { return row.table == table; });
        if (!had)
            created << table;
    }
    const bool embedded = driver == u"SQLITE";
    summary.insert(QStringLiteral("createdTables"), QJsonArray::fromStringList(created));
    summary.insert(
        QStringLiteral("procedure"), embedded ? QStringLiteral("embedded") : QStringLiteral("server"));
    if (!json) {
        if (created.isEmpty())
            out << "tables: all " << OrderSchemaTables().size() << " were there already\n";
        else
            out << "created tables: " << created.join(u", ") << '\n';
        out << "procedure sp_insert_new_order: "
            << (embedded ? "built into the library (embedded database)" : "created on the server") << '\n';
    }

    if (sample) {
        settings.securities = ladder(QStringLiteral("sehk_securities"), spreadsDir);
        settings.etp = ladder(QStringLiteral("sehk_etp"), spreadsDir);
        const SampleDaySummary day = WriteSampleDay(database, settings);
        if (json)
            summary.insert(QStringLiteral("sample"), sampleJson(day, settings));
        else
            printSample(out, day, settings);
    }
    if (json)
        writeJsonLine(out, summary);
    return kSuccess;
}

} // namespace

int runDb(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "qal db init: creates the order database's tables and the procedure sp_insert_new_order where they\n"
        "are missing, on the configured database (OMS_INI, else config/oms.ini next to qal): the alias\n"
        "OMSDATA, or the one given with --alias (an SQLite file is made when it does not exist; a\n"
        "PostgreSQL alias logs on with its own lines). With --sample it then fills a trading day: users,\n"
        "entitlements, accounts, a few hundred SEHK and HKFE orders with their exchange orders, fills,\n"
        "cancels, rejects, trades booked by hand and pending requests; the same date and seed give the\n"
        "same day. A database that already holds data is left alone unless --force is given."));
    const QCommandLineOption sample(QStringLiteral("sample"), QStringLiteral("Fill a sample trading day."));
    const QCommandLineOption alias(QStringLiteral("alias"),
        QStringLiteral("Database alias (default: %1).").arg(QLatin1StringView(kDefaultAlias)),
        QStringLiteral("name"), QString::fromLatin1(kDefaultAlias));
    const QCommandLineOption force(
        QStringLiteral("force"), QStringLiteral("Delete the data already in the database first."));
    const QCommandLineOption date(QStringLiteral("date"),
        QStringLiteral("Trading day of the sample, yyyy-mm-dd (default: %1).")
            .arg(QLatin1StringView(kDefaultDate)),
        QStringLiteral("date"), QString::fromLatin1(kDefaultDate));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("Seed of the sample (default: 1)."),
        QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption spreadsDir(QStringLiteral("spreads-dir"),
        QStringLiteral("Directory of the SEHK price ladders."), QStringLiteral("dir"));
    const QCommandLineOption json(QStringLiteral("json"),
        QStringLiteral("The summary as one JSON object, written when the work is done."));
    parser.addOptions({ sample, alias, force, date, seed, spreadsDir, json });
    parser.addPositionalArgument(QStringLiteral("init"), QStringLiteral("Create the order database."));

    if (const std::optional<int> done = parseCommandLine(parser, QStringLiteral("db"), arguments, out, err))
        return *done;
    const QStringList positional = parser.positionalArguments();
    if (positional != QStringList { QStringLiteral("init") }) {
        err << "qal db: the command is \"qal db init [--sample] [--alias NAME] [--force]\" (see qal db "
               "--help)\n";
        return kUsageError;
    }
    SampleDaySettings settings;
    settings.date = QDate::fromString(parser.value(date), Qt::ISODate);
    if (!settings.date.isValid()) {
        err << "qal db: --date takes a date as yyyy-mm-dd, not \"" << parser.value(date) << "\"\n";
        return kUsageError;
    }
    if (settings.date.dayOfWeek() > 5) {
        err << "qal db: " << settings.date.toString(Qt::ISODate)
            << " is a weekend day; the exchanges do not trade\n";
        return kUsageError;
    }
    bool seedOk = false;
    settings.seed = parser.value(seed).toULongLong(&seedOk);
    if (!seedOk) {
        err << "qal db: --seed takes a whole number, not \"" << parser.value(seed) << "\"\n";
        return kUsageError;
    }
    try {
        return init(parser.value(alias), parser.isSet(sample), parser.isSet(force), parser.isSet(json), out,
            err, parser.value(spreadsDir), settings);
    } catch (const Error& e) {
        err << "qal db init: " << e.message() << '\n';
        return kFailure;
    }
}

} // namespace qal::tool
