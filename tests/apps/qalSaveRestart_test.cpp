// SPDX-License-Identifier: MIT
// A desk that runs all day outlives a restart of its PostgreSQL server: a
// `qal save` process keeps saving across a real restart of the test server.
// The order that meets the dropped connection fails aloud; the next one
// reconnects and is stored. This program restarts the shared server, so CTest
// runs it alone.
#include <QFile>
#include <QFileInfo>
#include <QDir>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "qalpack/db/Query.h"
#include "qalpack/db/Session.h"
#include "qalpack/orderdb/OrderSchema.h"
#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/SaverProcess.h"
#include "tests/support/SourceTree.h"

namespace {

using qal::TQuery;
using qal::TSession;
using qal::test::Saver;

// Restarts the server scripts/test started, dropping every connection.
bool restartServer(std::string& output)
{
    const QString pgCtl = qEnvironmentVariable("QALPACK_PG_CTL");
    const QString data = qEnvironmentVariable("QALPACK_PG_DATA");
    const QString runAs = qEnvironmentVariable("QALPACK_PG_RUNAS");
    // The server's output goes to its log, never to this test's pipe: a
    // server left writing into a closed pipe would not outlive the test.
    QStringList command { pgCtl, "-D", data, "-l", qEnvironmentVariable("QALPACK_PG_LOG"), "restart", "-m",
        "fast", "-w", "-t", "60" };
    if (!runAs.isEmpty())
        command = QStringList { "runuser", "-u", runAs, "--" } + command;
    QProcess process;
    process.start(command.takeFirst(), command);
    const bool done = process.waitForFinished(90000);
    output = (process.readAllStandardOutput() + process.readAllStandardError()).toStdString();
    return done && process.exitCode() == 0;
}

class QalSaveRestartTest : public qal::test::DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        if (qEnvironmentVariableIsEmpty("QALPACK_PG_CTL"))
            GTEST_SKIP() << "*** no pg_ctl of the test server (QALPACK_PG_CTL): scripts/test sets it ***";
        TSession& session = TSession::Default();
        write("aliases.ini",
            QStringLiteral("[OMSDATA]\nDRIVER=POSTGRES\n%1\nCONNECT TIMEOUT=20\n[OMSINI]\nDRIVER=STANDARD\nPATH=.\n")
                .arg(session.AliasParams("TESTDB").join(u'\n')));
        write("oms.ini",
            QStringLiteral("[OMS_LOCAL]\nAliasFile=aliases.ini\n[OMS_DATAMAP]\nOMSDATA=ORDERS\n"
                           "[ORDERS]\nDSN_Source=OMSDATA\nDSN_user=%1\n")
                .arg(user()));
        QFile shipped(
            qal::test::sourcePath(QStringLiteral("config/STORPROC.INI")));
        ASSERT_TRUE(shipped.open(QIODevice::ReadOnly));
        write("STORPROC.INI", QString::fromUtf8(shipped.readAll()));
        qal::CreateOrderSchema(*database());
    }

    void write(const QString& name, const QString& text)
    {
        QFile file(config_.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text.toUtf8());
    }

    [[nodiscard]] QString omsIni() const { return config_.filePath(QStringLiteral("oms.ini")); }

    QSet<QString> storedNumbers()
    {
        auto db = database();
        TQuery query;
        query.SetDatabaseName(db->DatabaseName());
        query.SQL().Add(QStringLiteral("select Order_No from OMSTrade_File"));
        query.Open();
        QSet<QString> numbers;
        for (; !query.Eof(); query.Next())
            numbers.insert(query.Fields(0).AsString());
        return numbers;
    }

private:
    QTemporaryDir config_;
};

TEST_P(QalSaveRestartTest, ARunningDeskSavesAgainAfterTheServerRestarts)
{
    Saver saver(omsIni());
    const QString before = saver.saveOne(1);
    ASSERT_FALSE(before.isEmpty()) << saver.errors().join(u'\n').toStdString();

    std::string output;
    ASSERT_TRUE(restartServer(output)) << output;
    TSession::Default().DropConnections();

    const QString metTheDrop = saver.saveOne(2);
    QStringList after;
    for (int i = 3; i < 8; ++i)
        after << saver.saveOne(i);
    saver.finish();

    EXPECT_TRUE(metTheDrop.isEmpty()) << "saved " << metTheDrop.toStdString() << " on a dropped connection?";
    ASSERT_EQ(saver.errors().size(), 1) << saver.errors().join(u'\n').toStdString();
    EXPECT_TRUE(saver.errors()[0].contains(u"connection")) << saver.errors()[0].toStdString();
    QSet<QString> acknowledged { before };
    for (const QString& number : after) {
        EXPECT_FALSE(number.isEmpty()) << "a save after the reconnect failed";
        acknowledged.insert(number);
    }
    EXPECT_EQ(storedNumbers(), acknowledged);
}

INSTANTIATE_TEST_SUITE_P(Postgres, QalSaveRestartTest, testing::Values(qal::test::Driver::Postgres),
    qal::test::driverName);

} // namespace
