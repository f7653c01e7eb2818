// SPDX-License-Identifier: MIT
// `qal blotter` and `qal save` as a dealer runs them: the real tool on an
// order database of the test's own, on SQLite and on PostgreSQL.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "qalpack/db/Database.h"
#include "qalpack/db/Session.h"
#include "qalpack/orderdb/OrderSchema.h"
#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/SourceTree.h"

namespace {

using qal::TSession;
using qal::test::Driver;

struct ToolRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

class QalBlotterTest : public qal::test::DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        ASSERT_TRUE(config_.isValid());
        // The tool's own configuration: the test database as OMSDATA, reached
        // through the data map with the login the server accepts.
        TSession& session = TSession::Default();
        write("aliases.ini",
            QStringLiteral("[OMSDATA]\nDRIVER=%1\n%2\n[OMSINI]\nDRIVER=STANDARD\nPATH=.\n")
                .arg(session.GetAliasDriverName("TESTDB"), session.AliasParams("TESTDB").join(u'\n')));
        write("oms.ini",
            QStringLiteral("[OMS_LOCAL]\nAliasFile=aliases.ini\n[OMS_DATAMAP]\nOMSDATA=ORDERS\n"
                           "[ORDERS]\nDSN_Source=OMSDATA\nDSN_user=%1\n")
                .arg(user()));
        QFile shipped(
            qal::test::sourcePath(QStringLiteral("config/STORPROC.INI")));
        ASSERT_TRUE(shipped.open(QIODevice::ReadOnly));
        write("STORPROC.INI", QString::fromUtf8(shipped.readAll()));

        auto db = database();
        qal::CreateOrderSchema(*db);
        for (const char* statement : {
                 "insert into OMSTrade_File (Order_No, Account, Order_Type, Symbol, Quantity, Limit_Price, "
                 "User_No, Runner, Fill, short_sell, Exchange, Status, DateTime_Created) values "
                 "('01', 'A1', 0, '0005.HK', 1000, 80.5, 'D001', null, 400, 1, 'SEHK', 'Part', "
                 "'2024-03-01 09:31:05'),"
                 "('02', 'A2', 1, 'HSIH4', 2, 16500, 'D002', null, null, null, 'HKFE', 'Pend', "
                 "'2024-03-01 09:40:00'),"
                 "('03', 'A, \"3\"', 0, '0011.HK', 100, 120, 'O''Hara', null, null, null, 'SEHK', 'Canc', "
                 "'2024-03-01 09:50:00')",
                 "insert into Exch_File (Exch_No, Order_No, Account, Symbol, Quantity, Price, User_No, "
                 "Exchange, "
                 "Status, DateTime_Created) values "
                 "('E1', '01', 'A1', '0005.HK', 1000, 80.5, 'D001', 'SEHK', 'Part', '2024-03-01 09:31:06')",
                 "insert into Trans_File (Tran_No, Exch_No, Account, Symbol, Quantity, Trans_Price, User_No, "
                 "Order_Type, Status, DateTime_Created) values "
                 "('T1', 'E1', 'A1', '0005.HK', 400, 80.5, 'D001', 0, 'Comp', '2024-03-01 09:32:00')",
             })
            db->Execute(QString::fromUtf8(statement));
    }

    void write(const QString& name, const QString& text)
    {
        QFile file(config_.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text.toUtf8());
    }

    ToolRun qal(const QStringList& arguments, const QString& omsIni = {})
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("OMS_INI", omsIni.isEmpty() ? config_.filePath("oms.ini") : omsIni);
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(QAL_TOOL_PATH), arguments);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(30000));
        return { process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()) };
    }

    QString configPath(const QString& name) const { return config_.filePath(name); }

    // The CSV lines of a blotter, header dropped.
    QStringList csvRows(const QStringList& arguments)
    {
        const ToolRun run = qal(QStringList { "blotter", "--csv" } + arguments);
        EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
        QStringList lines = run.out.split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
        if (!lines.isEmpty())
            lines.removeFirst();
        return lines;
    }

private:
    QTemporaryDir config_;
};

TEST_P(QalBlotterTest, OrdersShowStatusSideRemarkAndTheQuantitiesLeft)
{
    const ToolRun run = qal({ "blotter" });
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QStringList lines = run.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 4) << run.out.toStdString();
    EXPECT_TRUE(lines[0].startsWith(u"Order No  Account")) << lines[0].toStdString();
    EXPECT_TRUE(lines[0].contains(u"Remaining  Queued")) << lines[0].toStdString();
    // Filled 400 of 1000 through exchange order E1: 600 remain and queue.
    EXPECT_EQ(csvRows({}),
        (QStringList { "01,A1,BUY,0005.HK,1000,80.500,Part,400,600,600,SEHK,09:31:05,SS;",
            "02,A2,SELL,HSIH4,2,16500.000,Pend,0,2,0,HKFE,09:40:00,",
            "03,\"A, \"\"3\"\"\",BUY,0011.HK,100,120.000,Canc,0,0,0,SEHK,09:50:00," }));
}

TEST_P(QalBlotterTest, FiltersByUserOrExchangeAndShowsExchangeOrdersAndTrades)
{
    const struct
    {
        const char* name;
        QStringList arguments;
        QStringList firstFields;
    } cases[] = {
        { "one user", { "--user", "D002" }, { "02" } },
        { "a quote in the user id", { "--user", "O'Hara" }, { "03" } },
        { "two users", { "--user", "D002", "--user", "D001" }, { "01", "02" } },
        { "an exchange", { "--exchange", "SEHK" }, { "01", "03" } },
        { "exchange orders", { "--exch-orders" }, { "E1" } },
        { "trades of a user", { "--trades", "--user", "D001" }, { "T1" } },
        { "trades of another exchange", { "--trades", "--exchange", "HKFE" }, {} },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QStringList first;
        for (const QString& row : csvRows(c.arguments))
            first << row.section(u',', 0, 0);
        EXPECT_EQ(first, c.firstFields);
    }
    EXPECT_EQ(csvRows({ "--exch-orders" }),
        QStringList { "E1,01,A1,BUY,0005.HK,1000,80.500,Part,400,600,SEHK,09:31:06," });
    // The trade row has no exchange of its own: it is its exchange order's.
    EXPECT_EQ(csvRows({ "--trades" }), QStringList { "T1,E1,A1,BUY,0005.HK,400,80.500,Comp,,SEHK,09:32:00" });
}

TEST_P(QalBlotterTest, SavePrintsTheNumberTheOrderGotAndTheBlotterShowsIt)
{
    const ToolRun saved = qal({ "save", "H|10|A9|0|0005.HK|11|0|4|1000|3|80.5|13|D009|20|SEHK" });
    ASSERT_EQ(saved.exitCode, 0) << saved.err.toStdString();
    const QString number = saved.out.trimmed();
    EXPECT_TRUE(QRegularExpression("^\\d{8}$").match(number).hasMatch()) << number.toStdString();
    const QStringList rows = csvRows({ "--user", "D009" });
    ASSERT_EQ(rows.size(), 1);
    EXPECT_TRUE(rows[0].startsWith(number + ",A9,BUY,0005.HK,1000,80.500,")) << rows[0].toStdString();

    const ToolRun kept = qal({ "save", "--json", "H|6|X1|10|A9|0|0005.HK|4|10" });
    EXPECT_EQ(kept.exitCode, 0) << kept.err.toStdString();
    EXPECT_TRUE(kept.out.startsWith(u"{\"created\":\"")) << kept.out.toStdString();
    EXPECT_TRUE(kept.out.contains(u"\"orderNo\":\"X1\""));
}

TEST_P(QalBlotterTest, RefusedOrdersAndBadInputFailWithAReason)
{
    const ToolRun refused = qal({ "save", "H|10||0|0005.HK|4|1000" });
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains(u"argument 1: Cannot save order: ")) << refused.err.toStdString();
    EXPECT_EQ(csvRows({}).size(), 3) << "nothing of the refused order is written";

    EXPECT_EQ(qal({ "save", "not an order" }).exitCode, 1);
    const ToolRun unconfigured = qal({ "blotter" }, configPath("missing.ini"));
    EXPECT_EQ(unconfigured.exitCode, 1);
    EXPECT_FALSE(unconfigured.err.isEmpty());
    for (const QStringList& arguments : { QStringList { "blotter", "--user", "D1", "--exchange", "SEHK" },
             QStringList { "blotter", "--trades", "--exch-orders" }, QStringList { "blotter", "extra" },
             QStringList { "save", "--bogus" } }) {
        SCOPED_TRACE(arguments.join(u' ').toStdString());
        EXPECT_EQ(qal(arguments).exitCode, 2);
    }
    const ToolRun help = qal({ "blotter", "--help" });
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains(u"--exchange"));
}

INSTANTIATE_TEST_SUITE_P(
    Drivers, QalBlotterTest, testing::Values(Driver::Sqlite, Driver::Postgres), qal::test::driverName);

} // namespace
