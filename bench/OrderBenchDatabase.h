// SPDX-License-Identifier: MIT
// The order database the loading, saving and memory benchmarks run on: one
// SQLite file and one PostgreSQL schema (on the server scripts/bench starts),
// each seeded once per program with a day of orders, exchange orders and
// trades, and the connection details the raw-driver peers need.
#pragma once

#include <cstdlib>
#include <ctime>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include "qalpack/db/Database.h"
#include "qalpack/db/Session.h"
#include "qalpack/orderdb/DatabaseAccess.h"
#include "qalpack/orderdb/OrderSchema.h"
#include "qalpack/profile/QalApplicationProfile.h"

namespace bench {

enum class Backend { Sqlite, Postgres };

inline const char* backendName(Backend backend)
{
    return backend == Backend::Sqlite ? "sqlite" : "postgres";
}

// Which tables a program needs filled.
struct SeedRows
{
    int orders = 0; // OMSTrade_File
    int exchOrders = 0; // Exch_File, one per client order (at most `orders`)
    int trades = 0; // Trans_File, one per exchange order (at most `exchOrders`)
};

// The process's time-zone setting as the output states it: TZ, else the
// zone the C library resolved (/etc/localtime).
inline std::string timeZoneText()
{
    tzset();
    const char* tz = std::getenv("TZ");
    std::string text = tz ? std::string("TZ=") + tz : std::string("TZ unset");
    text += std::string(" (local zone ") + tzname[0] + ")";
    return text;
}

class OrderBenchDatabases
{
public:
    // Creates both databases and seeds them; PostgreSQL only when
    // scripts/bench named a server. The SQLite file goes in a temporary
    // directory next to the program, or with `inMemoryFileSystem` on
    // /dev/shm (where there is one), so that a commit costs no disk flush.
    explicit OrderBenchDatabases(const SeedRows& rows, bool inMemoryFileSystem = false)
        : dir_(QDir(inMemoryFileSystem && QDir(QStringLiteral("/dev/shm")).exists()
                ? QStringLiteral("/dev/shm")
                : QCoreApplication::applicationDirPath())
                   .filePath(QStringLiteral("qalpack-orderdb-XXXXXX")))
    {
        if (!dir_.isValid())
            throw std::runtime_error("cannot create the benchmark's database directory");
        sqlitePath_ = dir_.filePath(QStringLiteral("orders.db"));
        QString aliases
            = QStringLiteral("[BENCHSQLITE]\nDRIVER=SQLITE\nDATABASE=%1\nCREATE=TRUE\n\n").arg(sqlitePath_);

        const QString host = qEnvironmentVariable("QALPACK_PG_HOST");
        if (host.isEmpty()) {
            pgWhyNot_ = qEnvironmentVariableIsSet("QALPACK_PG_UNAVAILABLE")
                ? qEnvironmentVariable("QALPACK_PG_UNAVAILABLE").toStdString()
                : std::string(
                    "QALPACK_PG_HOST is not set; scripts/bench starts a throwaway server and sets it");
        } else {
            const QString port = qEnvironmentVariable("QALPACK_PG_PORT");
            const QString user = qEnvironmentVariable("QALPACK_PG_USER");
            const QString dbname = qEnvironmentVariable("QALPACK_PG_DBNAME");
            schema_ = QStringLiteral("qal_bench_%1").arg(QCoreApplication::applicationPid());
            pgLines_ = { QStringLiteral("HOST=") + host, QStringLiteral("PORT=") + port,
                QStringLiteral("DATABASE=") + dbname, QStringLiteral("USER NAME=") + user };
            pgConnInfo_ = QStringLiteral("host=%1 port=%2 dbname=%3 user=%4 options='-c search_path=%5'")
                              .arg(host, port, dbname, user, schema_)
                              .toStdString();
            pgUser_ = user;
            aliases += QStringLiteral("[BENCHPG]\nDRIVER=POSTGRES\n%1\nOPTIONS=-c search_path=%2\n")
                           .arg(pgLines_.join(u'\n'), schema_);
        }
        write(QStringLiteral("aliases.ini"), aliases);
        write(QStringLiteral("oms.ini"),
            QStringLiteral(
                "[OMS_LOCAL]\nAliasFile=aliases.ini\n[SQLITE]\nDSN_Source=BENCHSQLITE\nDSN_user=sa\n"
                "[POSTGRES]\nDSN_Source=BENCHPG\nDSN_user=%1\n")
                .arg(pgUser_));
        QFile shipped(QStringLiteral(QALPACK_SOURCE_DIR "/config/STORPROC.INI"));
        if (!shipped.open(QIODevice::ReadOnly))
            throw std::runtime_error("cannot read config/STORPROC.INI");
        write(QStringLiteral("STORPROC.INI"), QString::fromUtf8(shipped.readAll()));
        qputenv("OMS_INI", dir_.filePath(QStringLiteral("oms.ini")).toLocal8Bit());
        qal::TSession::Default().LoadAliases(dir_.filePath(QStringLiteral("aliases.ini")));
        qal::TSession::Default().AddAlias(
            QStringLiteral("OMSINI"), QStringLiteral("STANDARD"), { QStringLiteral("PATH=") + dir_.path() });

        seed(Backend::Sqlite, rows);
        if (pgWhyNot_.empty()) {
            try {
                admin()->Execute(QStringLiteral("create schema %1").arg(schema_));
                schemaCreated_ = true;
                seed(Backend::Postgres, rows);
            } catch (const std::exception& e) {
                pgWhyNot_ = std::string("the server refused the benchmark's schema: ") + e.what();
            }
        }
    }

    OrderBenchDatabases(const OrderBenchDatabases&) = delete;
    OrderBenchDatabases& operator=(const OrderBenchDatabases&) = delete;

    ~OrderBenchDatabases()
    {
        qal::internal::ResetDatabaseAccess();
        qal::internal::ResetApplicationProfile();
        qal::TSession::Default().DropConnections();
        if (schemaCreated_) {
            try {
                admin()->Execute(QStringLiteral("drop schema %1 cascade").arg(schema_));
            } catch (const std::exception&) {
                // The throwaway server goes with its data directory anyway.
            }
        }
    }

    // Points the order database ("omsdata") at `backend`. Returns false, with
    // the benchmark marked as not run and why, when PostgreSQL is not there.
    bool use(Backend backend, benchmark::State& state)
    {
        if (backend == Backend::Postgres && !pgWhyNot_.empty()) {
            state.SkipWithError(("PostgreSQL: " + pgWhyNot_).c_str());
            return false;
        }
        if (current_ != backend) {
            qal::internal::ResetDatabaseAccess();
            qal::TOmsDM::GetInstance()->AddDataMap(QStringLiteral("OMSDATA"),
                QString::fromLatin1(backend == Backend::Sqlite ? "SQLITE" : "POSTGRES"));
            current_ = backend;
        }
        return true;
    }

    // A new, unconnected database on `backend`'s alias.
    [[nodiscard]] std::unique_ptr<qal::TDatabase> database(Backend backend) const
    {
        auto db = std::make_unique<qal::TDatabase>();
        db->SetAliasName(QString::fromLatin1(backend == Backend::Sqlite ? "BENCHSQLITE" : "BENCHPG"));
        db->SetDatabaseName(db->AliasName() + QStringLiteral("DB"));
        db->Params().Add(
            QStringLiteral("user name=") + (backend == Backend::Sqlite ? QStringLiteral("sa") : pgUser_));
        db->Params().Add(QStringLiteral("password="));
        db->SetLoginPrompt(false);
        return db;
    }

    [[nodiscard]] const QString& sqlitePath() const { return sqlitePath_; }
    // libpq's connection string, the schema first on the search path.
    [[nodiscard]] const std::string& pgConnInfo() const { return pgConnInfo_; }
    [[nodiscard]] bool hasPostgres() const { return pgWhyNot_.empty(); }
    [[nodiscard]] const std::string& pgWhyNot() const { return pgWhyNot_; }

private:
    void write(const QString& name, const QString& text) const
    {
        QFile file(dir_.filePath(name));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            throw std::runtime_error("cannot write " + name.toStdString());
        file.write(text.toUtf8());
    }

    [[nodiscard]] std::unique_ptr<qal::TDatabase> admin() const
    {
        auto db = std::make_unique<qal::TDatabase>();
        db->SetDriverName(QStringLiteral("POSTGRES"));
        for (const QString& line : pgLines_)
            db->Params().Add(line);
        db->SetLoginPrompt(false);
        return db;
    }

    // The rows are made up in SQL from their row number, so seeding 100,000
    // of each takes a few seconds: accounts, users and symbols repeat, a
    // tenth of the orders are short sales, some carry a message, and times
    // spread over the trading day.
    void seed(Backend backend, const SeedRows& rows) const
    {
        const bool lite = backend == Backend::Sqlite;
        const auto numbers = [lite](int count) {
            return lite ? QStringLiteral(
                       "(with recursive n(i) as (select 0 union all select i + 1 from n where i < %1) "
                       "select i from n) s")
                              .arg(count - 1)
                        : QStringLiteral("generate_series(0, %1) as s(i)").arg(count - 1);
        };
        const auto digits = [lite](const char* prefix) {
            return lite ? QStringLiteral("'%1' || printf('%08d', i)").arg(QLatin1String(prefix))
                        : QStringLiteral("'%1' || lpad(i::text, 8, '0')").arg(QLatin1String(prefix));
        };
        const auto at = [lite](int offsetSeconds) {
            return lite ? QStringLiteral("strftime('%Y-%m-%d %H:%M:%f', '2026-11-20 09:30:00', "
                                         "'+' || ((i * 7 + %1) % 23400) || ' seconds')")
                              .arg(offsetSeconds)
                        : QStringLiteral(
                            "timestamp '2026-11-20 09:30:00' + ((i * 7 + %1) % 23400) * interval '1 second'")
                              .arg(offsetSeconds);
        };
        const QString account = QStringLiteral("'AC' || (i % 500)");
        const QString user = QStringLiteral("'D' || (i % 40)");
        const QString symbol = QStringLiteral("'' || (1 + i % 3000)");
        const QString price = QStringLiteral("(10 + (i % 997) * 0.05)");
        const QString status = QStringLiteral("case i % 5 when 0 then 'Comp' when 1 then 'Part' when 2 then "
                                              "'Pend' when 3 then 'Canc' else 'Work' end");

        const std::unique_ptr<qal::TDatabase> db = database(backend);
        qal::CreateOrderSchema(*db);
        db->StartTransaction();
        if (rows.orders > 0)
            db->Execute(
                QStringLiteral(
                    "insert into OMSTrade_File (Order_No, Account, Order_Type, Symbol, Quantity, "
                    "Limit_Price, User_No, "
                    "Runner, Hedge, Origin, Fill, short_sell, instruction, instruction1, price1, "
                    "operatorflag, "
                    "DateTime_Created, DateTime_Modified, working, creditchange, netproceed, reference, "
                    "Exchange, "
                    "Message, currency, held, reqStatus, Status, StatusFlags) "
                    "select %1, %2, i % 2, %3, 1000 * (1 + i % 20), %4, %5, %5, 1, 11, (i % 3) * 500, "
                    "case when i % 10 = 0 then 1 end, i % 4, 0, case when i % 50 = 0 then %4 end, 'C', %6, "
                    "%7, "
                    "1000 * (i % 3), %4 * 1000, %4 * -1000, 'REF' || i, case when i % 4 = 0 then 'HKFE' else "
                    "'SEHK' end, "
                    "case when i % 25 = 0 then 'Price out of range of the spread table' end, 'HKD', 0, 0, "
                    "%8, 0 from ")
                    .arg(digits(""), account, symbol, price, user, at(0), at(60), status)
                + numbers(rows.orders));
        if (rows.exchOrders > 0)
            db->Execute(QStringLiteral(
                            "insert into Exch_File (Exch_No, Order_No, Account, Symbol, Quantity, Price, "
                            "User_No, Hedge, Origin, "
                            "Shortsell, DateTime_Created, DateTime_Modified, Exchange, ExchangeDest, Status) "
                            "select %1, %2, %3, %4, 1000 * (1 + i % 20), %5, %6, 1, 11, case when i % 10 = 0 "
                            "then 1 end, %7, %8, "
                            "'SEHK', case when i % 3 = 0 then 'SEHK-ORS' end, %9 from ")
                            .arg(digits("E"), digits(""), account, symbol, price, user, at(1), at(61), status)
                + numbers(rows.exchOrders));
        if (rows.trades > 0)
            db->Execute(
                QStringLiteral("insert into Trans_File (Tran_No, Exch_No, Account, Symbol, Quantity, "
                               "Trans_Price, User_No, Order_Type, "
                               "Hedge, Origin, Shortsell, Trade_Type, BrokerID, DateTime_Created, Status) "
                               "select %1, %2, %3, %4, 500 * (1 + i % 20), %5, %6, i % 2, 1, 11, case when i "
                               "% 10 = 0 then 1 end, 0, "
                               "case when i % 2 = 0 then '1234' end, %7, 'Comp' from ")
                    .arg(digits("T"), digits("E"), account, symbol, price, user, at(2))
                + numbers(rows.trades));
        db->Commit();
    }

    QTemporaryDir dir_;
    QString sqlitePath_;
    QString schema_;
    QStringList pgLines_;
    QString pgUser_;
    std::string pgConnInfo_;
    std::string pgWhyNot_;
    bool schemaCreated_ = false;
    std::optional<Backend> current_;
};

} // namespace bench
