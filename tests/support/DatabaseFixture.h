// SPDX-License-Identifier: MIT
// The database tests run the same cases on SQLite and on a real PostgreSQL
// server. scripts/test starts a throwaway server and names it in
// QALPACK_PG_HOST/PORT/USER/DBNAME; each test works in a schema of its own
// there (tests run in parallel), or in a fresh SQLite file.
#pragma once

#include <ostream>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include <QCoreApplication>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "qalpack/db/Database.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/Session.h"

namespace qal::test {

enum class Driver { Sqlite, Postgres };

// Names the driver in test listings instead of its bytes.
inline void PrintTo(Driver driver, std::ostream* os)
{
    *os << (driver == Driver::Sqlite ? "SQLite" : "PostgreSQL");
}

inline std::string driverName(const testing::TestParamInfo<Driver>& info)
{
    return info.param == Driver::Sqlite ? "Sqlite" : "Postgres";
}

struct PostgresServer
{
    QString host;
    QString port;
    QString user;
    QString dbname;
};

// The server scripts/test started, or nothing with the reason in `whyNot`.
inline std::optional<PostgresServer> postgresServer(std::string& whyNot)
{
    const QString host = qEnvironmentVariable("QALPACK_PG_HOST");
    if (host.isEmpty()) {
        whyNot = qEnvironmentVariableIsSet("QALPACK_PG_UNAVAILABLE")
            ? qEnvironmentVariable("QALPACK_PG_UNAVAILABLE").toStdString()
            : "QALPACK_PG_HOST is not set; scripts/test starts a throwaway server and sets it";
        return std::nullopt;
    }
    return PostgresServer { host, qEnvironmentVariable("QALPACK_PG_PORT"),
        qEnvironmentVariable("QALPACK_PG_USER"), qEnvironmentVariable("QALPACK_PG_DBNAME") };
}

// Aliases written to an alias file of the test's own and loaded into the
// default session:
//   TESTDB   the test database (SQLite file, or the server with the test's
//            schema first on the search path)
//   DOWNDB   a database that cannot be reached (a missing directory, or a
//            loopback port where nothing listens)
class DatabaseTest : public testing::TestWithParam<Driver>
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir_.isValid());
        QString aliases;
        if (driver() == Driver::Sqlite) {
            aliases = QStringLiteral("[TESTDB]\nDRIVER=SQLITE\nDATABASE=test.db\nCREATE=TRUE\n\n"
                                     "[DOWNDB]\nDRIVER=SQLITE\nDATABASE=missing/test.db\n");
        } else {
            std::string whyNot;
            server_ = postgresServer(whyNot);
            if (!server_)
                GTEST_SKIP() << "*** PostgreSQL server tests skipped: " << whyNot << " ***";
            static std::atomic<int> counter { 0 };
            schema_ = QStringLiteral("qal_t%1_%2").arg(QCoreApplication::applicationPid()).arg(++counter);
            admin_ = std::make_unique<TDatabase>();
            admin_->SetDriverName(QStringLiteral("POSTGRES"));
            for (const QString& line : serverLines())
                admin_->Params().Add(line);
            admin_->SetLoginPrompt(false);
            admin_->Execute(QStringLiteral("create schema %1").arg(schema_));
            aliases = QStringLiteral("[TESTDB]\nDRIVER=POSTGRES\n%1\nOPTIONS=-c search_path=%2\n\n"
                                     "[DOWNDB]\nDRIVER=POSTGRES\nHOST=127.0.0.1\nPORT=1\nDATABASE=%3\n")
                          .arg(serverLines().join(u'\n'), schema_, server_->dbname);
        }
        QFile file(dir_.filePath(QStringLiteral("aliases.ini")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(aliases.toUtf8());
        file.close();
        TSession::Default().LoadAliases(file.fileName());
    }

    void TearDown() override
    {
        TSession::Default().DropConnections();
        if (!admin_)
            return;
        const QString drop = QStringLiteral("drop schema %1 cascade").arg(schema_);
        try {
            admin_->Execute(drop);
        } catch (const DatabaseError&) {
            // A test that restarted the server dropped this connection; the
            // next statement reconnects.
            admin_->Execute(drop);
        }
    }

    [[nodiscard]] Driver driver() const { return GetParam(); }

    // The login user the server accepts ("sa" is as good as any on SQLite).
    [[nodiscard]] QString user() const { return server_ ? server_->user : QStringLiteral("sa"); }

    // A database on `alias`, not yet connected, named `alias` + "DB" as the
    // order database names its connections.
    [[nodiscard]] std::unique_ptr<TDatabase> database(const QString& alias = QStringLiteral("TESTDB")) const
    {
        auto db = std::make_unique<TDatabase>();
        db->SetAliasName(alias);
        db->SetDatabaseName(alias + QStringLiteral("DB"));
        db->Params().Add(QStringLiteral("user name=") + user());
        db->Params().Add(QStringLiteral("password="));
        db->SetLoginPrompt(false);
        return db;
    }

    // Runs SQL on the test database through a connection of its own.
    void exec(const QString& sql) const { database()->Execute(sql); }

private:
    [[nodiscard]] QStringList serverLines() const
    {
        return { QStringLiteral("HOST=") + server_->host, QStringLiteral("PORT=") + server_->port,
            QStringLiteral("DATABASE=") + server_->dbname, QStringLiteral("USER NAME=") + server_->user };
    }

    QTemporaryDir dir_;
    std::optional<PostgresServer> server_;
    QString schema_;
    std::unique_ptr<TDatabase> admin_;
};

} // namespace qal::test
