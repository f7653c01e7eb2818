// SPDX-License-Identifier: MIT
// Desks on several machines, as real processes on the desk-wide bus of a real
// PostgreSQL server: a second logon of the same desk elsewhere ends the
// first, `qal logoff` ends a user's desk, `qal watch` and `qal publish` show
// and steer the traffic, and the watch survives a server restart. Each
// "machine" is a deskwatch process with its own OMS_COMPUTERNAME.
#include <memory>
#include <string>
#include <vector>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"

namespace {

constexpr int kWaitMs = 30000;

struct ToolRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

// A running program whose output is read line by line as it comes.
class Running
{
public:
    Running(const QString& program, const QStringList& arguments, const QProcessEnvironment& environment,
        const QString& directory)
    {
        process_.setProcessEnvironment(environment);
        process_.setWorkingDirectory(directory);
        process_.start(program, arguments);
    }

    ~Running()
    {
        if (process_.state() != QProcess::NotRunning) {
            process_.kill();
            process_.waitForFinished(5000);
        }
    }

    // Waits until standard output (or error) holds `text`; false after the
    // time is up or when the program ended without it.
    bool waitFor(const QString& text, bool onError = false)
    {
        const QDeadlineTimer deadline(kWaitMs);
        while (!(onError ? err() : out()).contains(text)) {
            if (deadline.hasExpired() || process_.state() == QProcess::NotRunning)
                return (onError ? err() : out()).contains(text);
            process_.waitForReadyRead(100);
        }
        return true;
    }

    bool finish()
    {
        const bool ended = process_.waitForFinished(kWaitMs);
        out();
        err();
        return ended;
    }

    [[nodiscard]] bool running() const { return process_.state() == QProcess::Running; }
    [[nodiscard]] int exitCode() const { return process_.exitCode(); }

    const QString& out()
    {
        out_ += QString::fromUtf8(process_.readAllStandardOutput());
        return out_;
    }
    const QString& err()
    {
        err_ += QString::fromUtf8(process_.readAllStandardError());
        return err_;
    }

private:
    QProcess process_;
    QString out_;
    QString err_;
};

class QalBus : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string whyNot;
        server_ = qal::test::postgresServer(whyNot);
        if (!server_)
            GTEST_SKIP() << "*** PostgreSQL server tests skipped: " << whyNot << " ***";
        ASSERT_TRUE(desk_.isValid());
        const QDir shipped(
            QFileInfo(QStringLiteral(QAL_TOOL_PATH)).absolutePath() + QStringLiteral("/config"));
        for (const QString& name : shipped.entryList(QDir::Files))
            ASSERT_TRUE(QFile::copy(shipped.filePath(name), desk_.filePath(name))) << name.toStdString();
        const ToolRun init = qal({ "db", "init", "--sample" });
        ASSERT_EQ(init.exitCode, 0) << init.err.toStdString();
        useBus(true);
    }

    // Names the test server's bus in the desk's configuration, or none.
    void useBus(bool on)
    {
        QFile aliases(desk_.filePath(QStringLiteral("aliases.ini")));
        ASSERT_TRUE(aliases.open(QIODevice::Append));
        aliases.write(
            QStringLiteral("\n[DESKBUS]\nDRIVER=POSTGRES\nHOST=%1\nPORT=%2\nDATABASE=%3\nUSER NAME=%4\n")
                .arg(server_->host, server_->port, server_->dbname, server_->user)
                .toUtf8());
        aliases.close();
        QFile ini(desk_.filePath(QStringLiteral("oms.ini")));
        ASSERT_TRUE(ini.open(QIODevice::ReadOnly));
        QString text = QString::fromUtf8(ini.readAll());
        ini.close();
        ASSERT_TRUE(text.contains(u";BusAlias=OMSBUS")) << "the shipped oms.ini documents the key";
        if (on)
            text.replace(QStringLiteral(";BusAlias=OMSBUS"), QStringLiteral("BusAlias=DESKBUS"));
        ASSERT_TRUE(ini.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ini.write(text.toUtf8());
    }

    [[nodiscard]] QProcessEnvironment environment(const QString& computer = QString()) const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("OMS_INI"), desk_.filePath(QStringLiteral("oms.ini")));
        if (!computer.isEmpty())
            environment.insert(QStringLiteral("OMS_COMPUTERNAME"), computer);
        return environment;
    }

    ToolRun qal(const QStringList& arguments)
    {
        QProcess process;
        process.setProcessEnvironment(environment());
        process.setWorkingDirectory(desk_.path());
        process.start(QStringLiteral(QAL_TOOL_PATH), arguments);
        EXPECT_TRUE(process.waitForFinished(kWaitMs));
        return { process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()) };
    }

    std::unique_ptr<Running> startQal(const QStringList& arguments)
    {
        return std::make_unique<Running>(
            QStringLiteral(QAL_TOOL_PATH), arguments, environment(), desk_.path());
    }

    // A desk of `user` logged on from `computer` as `instance`, its watch on.
    std::unique_ptr<Running> logOn(const QString& user, const QString& instance, const QString& computer)
    {
        auto desk = std::make_unique<Running>(QStringLiteral(QAL_DESKWATCH_PATH),
            QStringList { QStringLiteral("--user"), user, QStringLiteral("--instance"), instance },
            environment(computer), desk_.path());
        EXPECT_TRUE(desk->waitFor(QStringLiteral("ready\n")))
            << desk->out().toStdString() << desk->err().toStdString();
        return desk;
    }

    // Whether `desk` is still on after all it heard so far: a probe record
    // published now is heard only once the records before it were handled.
    bool stillOn(Running& desk, const QString& user)
    {
        const QString probe = QStringLiteral("update|USER_%1|10|probe|").arg(user);
        const ToolRun sent = qal({ "publish", probe });
        EXPECT_EQ(sent.exitCode, 0) << sent.err.toStdString();
        return desk.waitFor(QStringLiteral("heard ") + probe) && desk.running();
    }

    std::optional<qal::test::PostgresServer> server_;
    QTemporaryDir desk_;
};

TEST_F(QalBus, ASecondLogonOfTheSameDeskOnAnotherMachineEndsTheFirst)
{
    struct Row
    {
        const char* name;
        QString instance;
        QString computer;
        bool firstEnds;
    };
    const Row rows[] = {
        { "same instance, another machine", QStringLiteral("desk-1"), QStringLiteral("PC-B"), true },
        { "another instance, another machine", QStringLiteral("desk-2"), QStringLiteral("PC-B"), false },
        { "same instance, same machine", QStringLiteral("desk-1"), QStringLiteral("PC-A"), false },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        auto first = logOn(QStringLiteral("D001"), QStringLiteral("desk-1"), QStringLiteral("PC-A"));
        auto second = logOn(QStringLiteral("D001"), row.instance, row.computer);
        if (row.firstEnds) {
            ASSERT_TRUE(first->finish());
            EXPECT_EQ(first->exitCode(), 1);
            EXPECT_TRUE(first->out().contains(QStringLiteral(
                "helper msgpopup -ie -t Halvex -m \"Someone else is logon as D001 from machine PC-B. "
                "Application is Terminating\"\nlogoff\n")))
                << first->out().toStdString() << first->err().toStdString();
            EXPECT_TRUE(stillOn(*second, QStringLiteral("D001"))) << "the new logon stays";
        } else {
            EXPECT_TRUE(first->waitFor(QStringLiteral("|10|%1|21|%2|").arg(row.computer, row.instance)))
                << first->out().toStdString();
            EXPECT_TRUE(stillOn(*first, QStringLiteral("D001"))) << first->out().toStdString();
            EXPECT_FALSE(first->out().contains(u"helper")) << first->out().toStdString();
        }
        EXPECT_FALSE(second->out().contains(u"helper")) << second->out().toStdString();
    }
}

TEST_F(QalBus, QalLogoffEndsEveryDeskOfTheUserWithItsMessage)
{
    struct Row
    {
        const char* name;
        QStringList arguments;
        QString shown;
    };
    const Row rows[] = {
        { "no message", { "logoff", "--user", "D001" }, QStringLiteral("System Forced Logoff") },
        { "a message", { "logoff", "--user", "D001", "--message", "Desk closed by support" },
            QStringLiteral("Desk closed by support") },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        auto desk = logOn(QStringLiteral("D001"), QStringLiteral("desk-1"), QStringLiteral("PC-A"));
        auto otherUser = logOn(QStringLiteral("D002"), QStringLiteral("desk-1"), QStringLiteral("PC-A"));
        const ToolRun sent = qal(row.arguments);
        ASSERT_EQ(sent.exitCode, 0) << sent.err.toStdString();
        EXPECT_TRUE(sent.out.startsWith(u"sent image|USER_D001|13|D001|5|-1|25|")) << sent.out.toStdString();
        ASSERT_TRUE(desk->finish());
        EXPECT_EQ(desk->exitCode(), 1);
        EXPECT_TRUE(desk->out().contains(
            QStringLiteral("helper msgpopup -ie -t Halvex -m \"%1\"\nlogoff\n").arg(row.shown)))
            << desk->out().toStdString();
        EXPECT_TRUE(stillOn(*otherUser, QStringLiteral("D002")));
    }
}

TEST_F(QalBus, QalWatchPrintsEveryRecordOnItsTopicsAsTextOrJson)
{
    auto text = startQal({ "watch", "--count", "2", "USER_D001", "USER_D002" });
    auto json = startQal({ "watch", "--json", "--count", "1", "USER_D002" });
    ASSERT_TRUE(text->waitFor(QStringLiteral("watching USER_D001 USER_D002 on bus DESKBUS"), true))
        << text->err().toStdString();
    ASSERT_TRUE(json->waitFor(QStringLiteral("watching"), true)) << json->err().toStdString();

    const ToolRun sent = qal({ "publish", "image|USER_D003|13|D003|", "image|USER_D001|13|D001|10|PC-A|",
        "update|USER_D002|25|港股 \"quoted\"|" });
    ASSERT_EQ(sent.exitCode, 0) << sent.err.toStdString();
    ASSERT_TRUE(text->finish());
    EXPECT_EQ(text->exitCode(), 0);
    EXPECT_EQ(text->out(),
        QStringLiteral("image|USER_D001|13|D001|10|PC-A|\nupdate|USER_D002|25|港股 \"quoted\"|\n"));
    ASSERT_TRUE(json->finish());
    EXPECT_EQ(json->out(),
        QStringLiteral(
            "{\"kind\":\"update\",\"topic\":\"USER_D002\",\"fields\":{\"25\":\"港股 \\\"quoted\\\"\"}}\n"));
}

TEST_F(QalBus, UsageAndConfigurationErrors)
{
    struct Row
    {
        const char* name;
        QStringList arguments;
        int exitCode;
        QString err;
    };
    const Row rows[] = {
        { "watch without a topic", { "watch" }, 2, QStringLiteral("give at least one topic") },
        { "a record that is not one", { "publish", "hello|USER_D001|" }, 2, QStringLiteral("hello") },
        { "logoff without a user", { "logoff" }, 2, QStringLiteral("--user ID") },
        { "a message holding the separator", { "logoff", "--user", "D001", "--message", "a|b" }, 2,
            QStringLiteral("|") },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const ToolRun run = qal(row.arguments);
        EXPECT_EQ(run.exitCode, row.exitCode);
        EXPECT_TRUE(run.err.contains(row.err)) << run.err.toStdString();
    }
    // Without a command the usage is an error, on standard error.
    const ToolRun help = qal({});
    EXPECT_TRUE(help.err.contains(u"watch") && help.err.contains(u"logoff")) << help.err.toStdString();
}

TEST_F(QalBus, ABusConfigurationThatReachesNoDeskIsRefused)
{
    struct Row
    {
        const char* name;
        QString line;
        QString err;
    };
    const Row rows[] = {
        { "no bus alias: the in-process bus", QStringLiteral(";BusAlias=DESKBUS"),
            QStringLiteral("names no desk-wide bus") },
        { "an unknown alias", QStringLiteral("BusAlias=NOSUCHBUS"),
            QStringLiteral("\"NOSUCHBUS\", which is not an alias") },
        { "the embedded database's alias", QStringLiteral("BusAlias=OMSDATA"),
            QStringLiteral("alias \"OMSDATA\" has driver SQLITE; the desk-wide bus needs a POSTGRES alias") },
    };
    QFile ini(QFileInfo(environment().value(QStringLiteral("OMS_INI"))).filePath());
    ASSERT_TRUE(ini.open(QIODevice::ReadOnly));
    const QString original = QString::fromUtf8(ini.readAll());
    ini.close();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(ini.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ini.write(QString(original).replace(QStringLiteral("BusAlias=DESKBUS"), row.line).toUtf8());
        ini.close();
        const ToolRun run = qal({ "logoff", "--user", "D001" });
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_TRUE(run.err.contains(row.err)) << run.err.toStdString();
    }
}

TEST_F(QalBus, TheWatchStillWorksAfterTheServerRestarts)
{
    const QString pgCtl = qEnvironmentVariable("QALPACK_PG_CTL");
    if (pgCtl.isEmpty())
        GTEST_SKIP() << "*** server restart skipped: QALPACK_PG_CTL is not set (scripts/pg.sh sets it) ***";
    auto first = logOn(QStringLiteral("D001"), QStringLiteral("desk-1"), QStringLiteral("PC-A"));

    QStringList command { pgCtl, QStringLiteral("-D"), qEnvironmentVariable("QALPACK_PG_DATA"),
        QStringLiteral("-l"), qEnvironmentVariable("QALPACK_PG_LOG"), QStringLiteral("-w"),
        QStringLiteral("-t"), QStringLiteral("60"), QStringLiteral("restart"), QStringLiteral("-m"),
        QStringLiteral("fast") };
    if (const QString runAs = qEnvironmentVariable("QALPACK_PG_RUNAS"); !runAs.isEmpty())
        command = QStringList { QStringLiteral("runuser"), QStringLiteral("-u"), runAs, QStringLiteral("--") }
            + command;
    QProcess restart;
    restart.start(command.takeFirst(), command);
    ASSERT_TRUE(restart.waitForFinished(90000));
    ASSERT_EQ(restart.exitCode(), 0) << restart.readAllStandardError().toStdString();

    EXPECT_TRUE(first->waitFor(QStringLiteral("connection lost"), true)) << first->err().toStdString();
    ASSERT_TRUE(first->waitFor(QStringLiteral("reconnected, listening on 1 topic"), true))
        << first->err().toStdString();
    auto second = logOn(QStringLiteral("D001"), QStringLiteral("desk-1"), QStringLiteral("PC-B"));
    ASSERT_TRUE(first->finish());
    EXPECT_EQ(first->exitCode(), 1);
    EXPECT_TRUE(first->out().contains(u"Someone else is logon as D001 from machine PC-B"))
        << first->out().toStdString();
}

} // namespace
