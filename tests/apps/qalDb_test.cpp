// SPDX-License-Identifier: MIT
// qal db init as a user runs it: the real tool on a copy of the configuration
// shipped next to it, checked through the library's own database layer. The
// sample day must hang together as a trading day (fills add up, prices on
// the ladder, trades inside the sessions), come out the same for the same
// seed, and come out the same on PostgreSQL as on SQLite.
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <cmath>
#include <map>
#include <memory>

#include <gtest/gtest.h>

#include "qalpack/db/Database.h"
#include "qalpack/db/Query.h"
#include "qalpack/db/Session.h"
#include "qalpack/market/SpreadTable.h"
#include "qalpack/omslib/CodePage950.h"
#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"

namespace {

using qal::TDatabase;
using qal::TQuery;
using qal::TSession;

struct ToolRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

QString toolDir()
{
    return QFileInfo(QStringLiteral(QAL_TOOL_PATH)).absolutePath();
}

ToolRun qal(const QStringList& arguments, const QString& omsIni)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("OMS_INI"), omsIni);
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(QAL_TOOL_PATH), arguments);
    EXPECT_TRUE(process.waitForFinished(120000));
    return { process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
        QString::fromUtf8(process.readAllStandardError()) };
}

// A copy of the configuration the build put next to the tool, in a
// directory of the test's own; the embedded database lands in its data/.
class ShippedConfig
{
public:
    ShippedConfig()
    {
        const QDir source(toolDir() + QStringLiteral("/config"));
        EXPECT_TRUE(source.exists(QStringLiteral("oms.ini"))) << "no config next to the tool";
        for (const QString& name : source.entryList(QDir::Files))
            QFile::copy(source.filePath(name), dir_.filePath(name));
    }

    [[nodiscard]] QString omsIni() const { return dir_.filePath(QStringLiteral("oms.ini")); }
    [[nodiscard]] QString aliasFile() const { return dir_.filePath(QStringLiteral("aliases.ini")); }

    void addAlias(const QString& text) const
    {
        QFile file(aliasFile());
        ASSERT_TRUE(file.open(QIODevice::Append));
        file.write(text.toUtf8());
    }

private:
    QTemporaryDir dir_;
};

// The database behind `alias` of `config`, opened from the test process.
std::unique_ptr<TDatabase> open(const ShippedConfig& config, const QString& alias = QStringLiteral("OMSDATA"))
{
    TSession::Default().DropConnections();
    TSession::Default().LoadAliases(config.aliasFile());
    auto db = std::make_unique<TDatabase>();
    db->SetAliasName(alias);
    db->SetDatabaseName(QStringLiteral("CHECKDB"));
    db->SetLoginPrompt(false);
    db->Open();
    return db;
}

// Every row of the query as "value|value|...", for comparing whole tables.
QStringList dump(const QString& sql)
{
    TQuery query;
    query.SetDatabaseName(QStringLiteral("CHECKDB"));
    query.SQL().Add(sql);
    query.Open();
    QStringList rows;
    for (; !query.Eof(); query.Next()) {
        QStringList values;
        for (int i = 0; i < query.FieldCount(); ++i)
            values << (query.Fields(i).IsNull() ? QStringLiteral("<null>") : query.Fields(i).AsString());
        rows << values.join(u'|');
    }
    return rows;
}

qint64 scalar(const QString& sql)
{
    const QStringList rows = dump(sql);
    return rows.isEmpty() ? -1 : rows.first().toLongLong();
}

const QStringList kOrderTables { "OMSTrade_File", "Exch_File", "Trans_File", "omsREQ", "mftsorder_state" };

QString orderedDump(const QString& table)
{
    const std::map<QString, QString> keys { { "OMSTrade_File", "Order_No" }, { "Exch_File", "Exch_No" },
        { "Trans_File", "Tran_No" }, { "omsREQ", "req_No" }, { "mftsorder_state", "Order_No, SubOrderNo" } };
    return QStringLiteral("select * from %1 order by %2").arg(table, keys.at(table));
}

TEST(QalDbInit, SampleDayFromTheShippedConfigurationHangsTogether)
{
    const ShippedConfig config;
    const ToolRun run = qal({ "db", "init", "--sample" }, config.omsIni());
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(run.out.contains(u"created tables: OMSTrade_File")) << run.out.toStdString();
    EXPECT_TRUE(run.out.contains(u"sample trading day 2026-11-18 (seed 1)")) << run.out.toStdString();
    const auto db = open(config);

    // A few dozen users and accounts, a few hundred orders on both
    // exchanges, every kind of ending.
    EXPECT_GE(scalar("select count(*) from User_File"), 24);
    EXPECT_GE(
        scalar("select count(distinct account) from AccountEntitle where UserType = 0 and Enabled = 1"), 20);
    EXPECT_GE(scalar("select count(*) from Account_File"), 30);
    EXPECT_GE(scalar("select count(*) from Account_ShortCut"), 30);
    EXPECT_GE(scalar("select count(*) from OMSTrade_File where Exchange = 'SEHK'"), 150);
    EXPECT_GE(scalar("select count(*) from OMSTrade_File where Exchange = 'HKFE'"), 50);
    for (const char* status : { "Comp", "Part", "Pend", "Canc", "Reje" }) {
        EXPECT_GE(
            scalar(QStringLiteral("select count(*) from OMSTrade_File where Status = '%1'").arg(status)), 5)
            << status;
    }
    EXPECT_GE(scalar("select count(*) from Trans_File where Trade_Type <> 0"), 5);
    EXPECT_GE(scalar("select count(*) from omsREQ"), 10);
    EXPECT_GE(scalar("select count(*) from mftsorder_state"), 20);

    // Fills add up: the trades of an order's exchange orders are its Fill,
    // a working order still works the rest, and nothing trades without a
    // client order behind it.
    EXPECT_EQ(
        dump("select o.Order_No from OMSTrade_File o where o.Fill <> (select coalesce(sum(t.Quantity), 0) "
             "from Trans_File t, Exch_File e where t.Exch_No = e.Exch_No and e.Order_No = o.Order_No)"),
        QStringList {});
    EXPECT_EQ(dump("select Order_No from OMSTrade_File where Fill > Quantity or (Status in ('Pend', 'Part') "
                   "and working <> Quantity - Fill)"),
        QStringList {});
    EXPECT_EQ(dump("select Exch_No from Exch_File e where not exists (select 1 from OMSTrade_File o where "
                   "o.Order_No = e.Order_No)"),
        QStringList {});
    EXPECT_EQ(
        dump("select Tran_No from Trans_File t where not exists (select 1 from Exch_File e where e.Exch_No "
             "= t.Exch_No)"),
        QStringList {});
}

TEST(QalDbInit, SamplePricesAndTimesAreTheMarketsOwn)
{
    const ShippedConfig config;
    ASSERT_EQ(qal({ "db", "init", "--sample", "--seed", "7" }, config.omsIni()).exitCode, 0);
    const auto db = open(config);
    const auto securities = qal::TSpreadTable::fromFile(toolDir() + "/spreads/sehk_securities.txt");
    const auto etp = qal::TSpreadTable::fromFile(toolDir() + "/spreads/sehk_etp.txt");

    const struct
    {
        const char* name;
        const char* sql;
    } prices[] = {
        { "order prices", "select Symbol, Limit_Price, Exchange from OMSTrade_File" },
        { "exchange order prices", "select Symbol, Price, Exchange from Exch_File" },
        { "trade prices",
            "select t.Symbol, t.Trans_Price, e.Exchange from Trans_File t, Exch_File e where "
            "t.Exch_No = e.Exch_No" },
    };
    for (const auto& table : prices) {
        SCOPED_TRACE(table.name);
        for (const QString& row : dump(table.sql)) {
            const QStringList fields = row.split(u'|');
            const double price = fields[1].toDouble();
            if (fields[2] == u"HKFE") {
                EXPECT_EQ(price, std::floor(price)) << row.toStdString();
            } else {
                const bool tracker = fields[0] == u"2800.HK" || fields[0] == u"2828.HK";
                EXPECT_TRUE((tracker ? etp : securities).ValidatePrice(price)) << row.toStdString();
            }
        }
    }

    // Exchange trades happen while the exchange matches: SEHK from the
    // opening auction to the close, never over lunch.
    for (const QString& row :
        dump("select t.DateTime_Created, e.Exchange from Trans_File t, Exch_File e where "
             "t.Exch_No = e.Exch_No and t.Trade_Type = 0")) {
        const QStringList fields = row.split(u'|');
        const QTime time
            = QDateTime::fromString(fields[0].left(19), QStringLiteral("yyyy-MM-dd hh:mm:ss")).time();
        EXPECT_FALSE(time >= QTime(12, 0) && time < QTime(13, 0)) << row.toStdString();
        if (fields[1] == u"SEHK") {
            EXPECT_GE(time, QTime(9, 20)) << row.toStdString();
            EXPECT_LE(time, QTime(16, 10)) << row.toStdString();
        }
    }

    // Chinese names keep their Hong Kong supplementary characters through
    // the wire code page.
    const QStringList names = dump("select Chinese_Name from Account_File");
    bool supplementary = false;
    for (const QString& name : names) {
        EXPECT_EQ(qal::cp950::decode(qal::cp950::encode(name)), name);
        for (const QString hkscs : { "堃", "喆", "栢", "頴", "𡁻" })
            supplementary = supplementary || name.contains(hkscs);
    }
    EXPECT_TRUE(supplementary);
}

TEST(QalDbInit, SameSeedSameDayAnotherSeedAnotherDay)
{
    const ShippedConfig first;
    const ShippedConfig second;
    const ShippedConfig third;
    ASSERT_EQ(qal({ "db", "init", "--sample", "--seed", "42" }, first.omsIni()).exitCode, 0);
    ASSERT_EQ(qal({ "db", "init", "--sample", "--seed", "42" }, second.omsIni()).exitCode, 0);
    ASSERT_EQ(qal({ "db", "init", "--sample", "--seed", "43" }, third.omsIni()).exitCode, 0);
    std::map<QString, QStringList> day;
    {
        const auto db = open(first);
        for (const QString& table : kOrderTables)
            day[table] = dump(orderedDump(table));
    }
    {
        const auto db = open(second);
        for (const QString& table : kOrderTables)
            EXPECT_EQ(dump(orderedDump(table)), day[table]) << table.toStdString();
    }
    const auto db = open(third);
    EXPECT_NE(dump(orderedDump("OMSTrade_File")), day["OMSTrade_File"]);
}

TEST(QalDbInit, RefusesToOverwriteDataUnlessForced)
{
    const ShippedConfig config;
    ASSERT_EQ(qal({ "db", "init", "--sample" }, config.omsIni()).exitCode, 0);
    qint64 orders = 0;
    {
        const auto db = open(config);
        orders = scalar("select count(*) from OMSTrade_File");
        db->Execute("insert into Account_File (Account) values ('EXTRA')");
    }

    const ToolRun refused = qal({ "db", "init", "--sample" }, config.omsIni());
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains(u"nothing was changed")) << refused.err.toStdString();
    EXPECT_TRUE(refused.err.contains(u"--force")) << refused.err.toStdString();
    {
        const auto db = open(config);
        EXPECT_EQ(scalar("select count(*) from Account_File where Account = 'EXTRA'"), 1);
    }

    const ToolRun forced = qal({ "db", "init", "--sample", "--force" }, config.omsIni());
    EXPECT_EQ(forced.exitCode, 0) << forced.err.toStdString();
    EXPECT_TRUE(forced.out.contains(u"deleted the existing data")) << forced.out.toStdString();
    const auto db = open(config);
    EXPECT_EQ(scalar("select count(*) from OMSTrade_File"), orders);
    EXPECT_EQ(scalar("select count(*) from Account_File where Account = 'EXTRA'"), 0);
}

TEST(QalDbInit, BadCommandLinesAndAliasesAreRefusedClearly)
{
    const ShippedConfig config;
    const struct
    {
        const char* name;
        QStringList arguments;
        int exitCode;
        const char* says;
    } cases[] = {
        { "no sub-command", { "db" }, 2, "qal db init" },
        { "unknown sub-command", { "db", "drop" }, 2, "qal db init" },
        { "unknown option", { "db", "init", "--bogus" }, 2, "bogus" },
        { "bad date", { "db", "init", "--date", "2026-13-01" }, 2, "yyyy-mm-dd" },
        { "weekend", { "db", "init", "--date", "2026-11-21" }, 2, "weekend" },
        { "bad seed", { "db", "init", "--seed", "x1" }, 2, "--seed" },
        { "unknown alias", { "db", "init", "--alias", "NOSUCH" }, 1, "no database alias \"NOSUCH\"" },
        { "directory alias", { "db", "init", "--alias", "OMSINI" }, 1, "not an SQLITE or POSTGRES" },
    };
    for (const auto& bad : cases) {
        SCOPED_TRACE(bad.name);
        const ToolRun run = qal(bad.arguments, config.omsIni());
        EXPECT_EQ(run.exitCode, bad.exitCode);
        EXPECT_TRUE(run.err.contains(QString::fromUtf8(bad.says))) << run.err.toStdString();
        EXPECT_TRUE(run.out.isEmpty()) << run.out.toStdString();
    }
    const ToolRun help = qal({ "db", "--help" }, config.omsIni());
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains(u"--sample"));
}

// A new order is not saved at a price nobody typed: a price that is not a
// number (or beyond the double range) is refused with the field named.
TEST(QalSave, RefusesPricesThatAreNotNumbers)
{
    const ShippedConfig config;
    for (const char* price : { "1e400", "12,5", "inf" }) {
        SCOPED_TRACE(price);
        const ToolRun run
            = qal({ "save", QStringLiteral("H|10|AC1|0|0005.HK|11|0|4|1000|3|%1|13|D001").arg(price) },
                config.omsIni());
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_TRUE(run.err.contains(QStringLiteral("tag 3: \"%1\" is not a price").arg(price)))
            << run.err.toStdString();
    }
}

TEST(QalDbInit, PostgresAliasGetsTheSameDayAsTheEmbeddedDatabase)
{
    std::string whyNot;
    const auto server = qal::test::postgresServer(whyNot);
    if (!server)
        GTEST_SKIP() << "*** PostgreSQL server tests skipped: " << whyNot << " ***";
    const QStringList serverLines { "HOST=" + server->host, "PORT=" + server->port,
        "DATABASE=" + server->dbname, "USER NAME=" + server->user };
    TDatabase admin;
    admin.SetDriverName("POSTGRES");
    for (const QString& line : serverLines)
        admin.Params().Add(line);
    admin.SetLoginPrompt(false);
    const QString schema = QStringLiteral("qal_db_%1").arg(QCoreApplication::applicationPid());
    admin.Execute("create schema " + schema);

    const ShippedConfig config;
    config.addAlias(QStringLiteral("\n[OMSPG]\nDRIVER=POSTGRES\n%1\nOPTIONS=-c search_path=%2\n")
                        .arg(serverLines.join(u'\n'), schema));
    const ToolRun pg = qal({ "db", "init", "--sample", "--alias", "OMSPG" }, config.omsIni());
    EXPECT_EQ(pg.exitCode, 0) << pg.err.toStdString();
    EXPECT_TRUE(pg.out.contains(u"created on the server")) << pg.out.toStdString();
    ASSERT_EQ(qal({ "db", "init", "--sample" }, config.omsIni()).exitCode, 0);

    std::map<QString, QStringList> embedded;
    {
        const auto db = open(config);
        for (const QString& table : kOrderTables)
            embedded[table] = dump(orderedDump(table));
    }
    {
        const auto db = open(config, "OMSPG");
        for (const QString& table : kOrderTables)
            EXPECT_EQ(dump(orderedDump(table)), embedded[table]) << table.toStdString();
    }
    TSession::Default().DropConnections();
    admin.Execute("drop schema " + schema + " cascade");
}

} // namespace
