// SPDX-License-Identifier: MIT
// What every qal sub-command shares, as a user meets it: help that names the
// sub-command, the same exit codes everywhere, JSON lines, exchange names in
// any case. The real tool runs on a copy of the shipped configuration with
// the sample trading day that `qal db init --sample` makes in it.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>

#include <gtest/gtest.h>

#include "tests/support/QtPrinters.h"

namespace {

struct ToolRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

struct RunOptions
{
    QString omsIni; // empty: the desk's oms.ini
    QString workingDirectory; // empty: the desk
};

QList<QJsonObject> jsonLines(const QString& out)
{
    QList<QJsonObject> objects;
    for (const QString& line : out.split(u'\n', Qt::SkipEmptyParts)) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(line.toUtf8(), &error);
        EXPECT_EQ(error.error, QJsonParseError::NoError) << line.toStdString();
        EXPECT_TRUE(document.isObject()) << line.toStdString();
        objects << document.object();
    }
    return objects;
}

// The fields of one CSV line: commas split, double quotes enclose, a doubled
// quote inside quotes is one quote.
QStringList csvFields(const QString& line)
{
    QStringList fields { QString() };
    bool quoted = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line[i];
        if (quoted && c == u'"' && i + 1 < line.size() && line[i + 1] == u'"')
            fields.last() += line[++i];
        else if (c == u'"')
            quoted = !quoted;
        else if (c == u',' && !quoted)
            fields << QString();
        else
            fields.last() += c;
    }
    return fields;
}

class QalCommandLine : public testing::Test
{
protected:
    // One desk for the suite: making the sample day is the slow part.
    static void SetUpTestSuite()
    {
        desk_ = std::make_unique<QTemporaryDir>();
        ASSERT_TRUE(desk_->isValid());
        const QDir shipped(
            QFileInfo(QStringLiteral(QAL_TOOL_PATH)).absolutePath() + QStringLiteral("/config"));
        for (const QString& name : shipped.entryList(QDir::Files))
            ASSERT_TRUE(QFile::copy(shipped.filePath(name), desk_->filePath(name))) << name.toStdString();
        // A second, empty database for `db init` to succeed on.
        QFile aliases(desk_->filePath(QStringLiteral("aliases.ini")));
        ASSERT_TRUE(aliases.open(QIODevice::Append));
        aliases.write("\n[SCRATCH]\nDRIVER=SQLITE\nDATABASE=data/scratch.db\n");
        aliases.close();
        const ToolRun init = qal({ "db", "init", "--sample" });
        ASSERT_EQ(init.exitCode, 0) << init.err.toStdString();
    }

    static void TearDownTestSuite() { desk_.reset(); }

    static QString deskFile(const QString& name) { return desk_->filePath(name); }

    static ToolRun qal(const QStringList& arguments, const RunOptions& options = {})
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("OMS_INI"),
            options.omsIni.isEmpty() ? desk_->filePath(QStringLiteral("oms.ini")) : options.omsIni);
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(
            options.workingDirectory.isEmpty() ? desk_->path() : options.workingDirectory);
        process.start(QStringLiteral(QAL_TOOL_PATH), arguments);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(60000));
        return { process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()) };
    }

    // The CSV lines of a blotter, header dropped.
    static QStringList csvRows(const QStringList& arguments)
    {
        const ToolRun run = qal(QStringList { "blotter", "--csv" } + arguments);
        EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
        QStringList lines = run.out.split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
        if (!lines.isEmpty())
            lines.removeFirst();
        return lines;
    }

private:
    static std::unique_ptr<QTemporaryDir> desk_;
};

std::unique_ptr<QTemporaryDir> QalCommandLine::desk_;

TEST_F(QalCommandLine, HelpNamesTheSubCommandNotTheProgramPath)
{
    const struct
    {
        const char* command;
        const char* usage;
    } cases[] = {
        { "decode", "Usage: qal decode [options] [message...]" },
        { "tick", "Usage: qal tick [options] price..." },
        { "db", "Usage: qal db [options] init" },
        { "blotter", "Usage: qal blotter [options]" },
        { "save", "Usage: qal save [options] [message...]" },
        { "whoami", "Usage: qal whoami [options]" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        const ToolRun help = qal({ c.command, "--help" });
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_EQ(help.out.section(u'\n', 0, 0), QString::fromLatin1(c.usage));
        EXPECT_EQ(qal({ "help", c.command }).out, help.out);
    }
}

TEST_F(QalCommandLine, ExitCodesAreTwoForUsageOneForFailureZeroForSuccess)
{
    const QString missingIni = deskFile(QStringLiteral("missing.ini"));
    QFile badLadder(deskFile(QStringLiteral("bad_ladder.txt")));
    ASSERT_TRUE(badLadder.open(QIODevice::WriteOnly));
    badLadder.write("0.01,x\n");
    badLadder.close();
    const struct
    {
        const char* name;
        QStringList arguments;
        int exitCode;
        QString omsIni;
    } cases[] = {
        { "no command", {}, 2, {} },
        { "unknown command", { "frobnicate" }, 2, {} },
        { "version", { "--version" }, 0, {} },

        { "decode: a message", { "decode", "H|0|0005.HK" }, 0, {} },
        { "decode: not a message", { "decode", "not a message" }, 1, {} },
        { "decode: unknown option", { "decode", "--bogus" }, 2, {} },

        { "tick: a price", { "tick", "10.01" }, 0, {} },
        { "tick: not a price", { "tick", "ten" }, 1, {} },
        { "tick: spread text that does not load", { "tick", "--spread", "a,b", "10" }, 2, {} },
        { "tick: ladder file that does not load", { "tick", "--ladder", badLadder.fileName(), "10" }, 1, {} },
        { "tick: unknown ladder", { "tick", "--ladder", "no_such_ladder", "10" }, 2, {} },
        { "tick: no price", { "tick" }, 2, {} },

        { "db: a database that holds data", { "db", "init" }, 1, {} },
        { "db: no configuration", { "db", "init" }, 1, missingIni },
        { "db: unknown sub-command", { "db", "drop" }, 2, {} },
        { "db: a weekend", { "db", "init", "--date", "2026-11-21" }, 2, {} },

        { "blotter: the day", { "blotter", "--exchange", "hkfe" }, 0, {} },
        { "blotter: no configuration", { "blotter" }, 1, missingIni },
        { "blotter: unknown exchange", { "blotter", "--exchange", "NYSE" }, 2, {} },
        { "blotter: csv and json", { "blotter", "--csv", "--json" }, 2, {} },

        { "save: not an order", { "save", "not an order" }, 1, {} },
        { "save: no configuration", { "save", "H|10|A9|0|0005.HK|4|10" }, 1, missingIni },
        { "save: unknown option", { "save", "--bogus" }, 2, {} },

        { "whoami: a user", { "whoami", "--user", "S001" }, 0, {} },
        { "whoami: an unknown user", { "whoami", "--user", "D999" }, 1, {} },
        { "whoami: no user", { "whoami" }, 2, {} },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const ToolRun run = qal(c.arguments, { c.omsIni, {} });
        EXPECT_EQ(run.exitCode, c.exitCode) << run.err.toStdString();
        if (c.exitCode != 0) {
            EXPECT_FALSE(run.err.isEmpty()) << "a failing command says why";
        }
    }
}

TEST_F(QalCommandLine, ASpreadTextThatDoesNotLoadShowsNoPrices)
{
    const ToolRun run = qal({ "tick", "--spread", "10,0.5,abc,1", "10.5" });
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(run.err.contains(u"Loading spread (10,0.5,abc,1) error.")) << run.err.toStdString();
    EXPECT_TRUE(run.out.isEmpty()) << run.out.toStdString();
}

TEST_F(QalCommandLine, BlotterJsonCarriesEachRecordOfTheCsvView)
{
    const struct
    {
        const char* name;
        QStringList view;
        const char* type;
        // JSON keys of the CSV columns, in order; numbers are compared as numbers.
        QStringList keys;
        const char* numberKey;
    } cases[] = {
        { "client orders", {}, "TomsOrder",
            { "orderNo", "account", "side", "symbol", "quantity", "price", "status", "fillQty",
                "remainingQty", "queueQty", "exchange", "created", "remark" },
            "quantity" },
        { "exchange orders", { "--exch-orders" }, "TexchOrder",
            { "exchNo", "orderNo", "account", "side", "symbol", "quantity", "price", "status", "fillQty",
                "queueQty", "exchange", "created", "remark" },
            "price" },
        { "trades", { "--trades" }, "TomsTrade",
            { "tradeNo", "exchNo", "account", "side", "symbol", "fillQty", "fillPrice", "status", "tradeType",
                "exchange", "time" },
            "fillQty" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QStringList arguments = c.view + QStringList { "--user", "D001" };
        const QStringList rows = csvRows(arguments);
        const ToolRun run = qal(QStringList { "blotter", "--json" } + arguments);
        ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        const QList<QJsonObject> records = jsonLines(run.out);
        ASSERT_EQ(records.size(), rows.size());
        ASSERT_FALSE(rows.isEmpty());
        for (qsizetype r = 0; r < rows.size(); ++r) {
            const QJsonObject& record = records[r];
            EXPECT_EQ(record[u"type"].toString(), QString::fromLatin1(c.type));
            EXPECT_EQ(record.size(), c.keys.size() + 1) << "type and one key per column";
            const QStringList cells = csvFields(rows[r]);
            ASSERT_EQ(cells.size(), c.keys.size()) << rows[r].toStdString();
            for (qsizetype k = 0; k < c.keys.size(); ++k) {
                const QJsonValue value = record[c.keys[k]];
                // Exactly: a price is the price entered, not 112.30000000000001.
                if (value.isDouble())
                    EXPECT_EQ(value.toDouble(), cells[k].toDouble()) << c.keys[k].toStdString();
                else
                    EXPECT_EQ(value.toString(), cells[k]) << c.keys[k].toStdString();
            }
            EXPECT_TRUE(record[QLatin1StringView(c.numberKey)].isDouble()) << c.numberKey;
        }
    }
}

TEST_F(QalCommandLine, ExchangeNamesAreTakenInAnyCaseAndUnknownOnesNamed)
{
    const QStringList upper = csvRows({ "--exchange", "HKFE" });
    ASSERT_FALSE(upper.isEmpty());
    EXPECT_EQ(csvRows({ "--exchange", "hkfe" }), upper);
    EXPECT_EQ(csvRows({ "--exchange", "Hkfe", "--exchange", "sehk" }).size(), csvRows({}).size());

    const ToolRun unknown = qal({ "blotter", "--exchange", "HKEX" });
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_TRUE(unknown.err.contains(u"unknown exchange \"HKEX\" (known: SEHK, HKFE)"))
        << unknown.err.toStdString();
    EXPECT_TRUE(unknown.out.isEmpty());
}

TEST_F(QalCommandLine, TradesShowTheExchangeOfTheirExchangeOrder)
{
    const struct
    {
        const char* name;
        QStringList filter;
    } cases[] = {
        { "every trade", {} },
        { "a dealer's trades", { "--user", "D001" } },
        { "an exchange's trades", { "--exchange", "hkfe" } },
    };
    QHash<QString, QString> exchangeOfExchOrder;
    for (const QJsonObject& exch : jsonLines(qal({ "blotter", "--exch-orders", "--json" }).out))
        exchangeOfExchOrder.insert(exch[u"exchNo"].toString(), exch[u"exchange"].toString());
    ASSERT_FALSE(exchangeOfExchOrder.isEmpty());
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const ToolRun run = qal(QStringList { "blotter", "--trades", "--json" } + c.filter);
        ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        const QList<QJsonObject> trades = jsonLines(run.out);
        ASSERT_FALSE(trades.isEmpty());
        for (const QJsonObject& trade : trades) {
            const QString exchange = trade[u"exchange"].toString();
            EXPECT_FALSE(exchange.isEmpty()) << trade[u"tradeNo"].toString().toStdString();
            EXPECT_EQ(exchange, exchangeOfExchOrder.value(trade[u"exchNo"].toString()));
        }
    }
    for (const QJsonObject& trade :
        jsonLines(qal({ "blotter", "--trades", "--json", "--exchange", "HKFE" }).out))
        EXPECT_EQ(trade[u"exchange"].toString(), u"HKFE");
}

TEST_F(QalCommandLine, WhoamiReadsTheDesksProfileWhereverItIsStarted)
{
    // Started elsewhere, with OMS_INI naming the desk's configuration: the
    // desk's omsProfile.ini is the one read, not one beside the tool.
    QTemporaryDir elsewhere;
    ASSERT_TRUE(elsewhere.isValid());
    const ToolRun run = qal({ "whoami", "--user", "S001", "--json" }, { {}, elsewhere.path() });
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QList<QJsonObject> lines = jsonLines(run.out);
    ASSERT_EQ(lines.size(), 1);
    const QJsonObject& user = lines[0];
    EXPECT_EQ(QFileInfo(user[u"profileFile"].toString()).canonicalFilePath(),
        QFileInfo(deskFile(QStringLiteral("omsProfile.ini"))).canonicalFilePath());
    EXPECT_TRUE(user[u"profileFileFound"].toBool());
    EXPECT_EQ(user[u"lotButtons"].toString(), u"1,2,5,10,20,50,100,200,500,1000,");
    EXPECT_TRUE(user[u"found"].toBool());
    EXPECT_EQ(user[u"adminLevel"].toInt(), 1);
    EXPECT_EQ(user[u"entitlements"].toArray(), (QJsonArray { "ApproveOrder", "SEHKTrade" }));
    EXPECT_EQ(user[u"tradesOn"].toArray(), QJsonArray { "SEHK" });
    EXPECT_EQ(user[u"colorScheme"].toString(), u"DefaultColor");

    const ToolRun unknown = qal({ "whoami", "--user", "D999", "--json" });
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_FALSE(jsonLines(unknown.out).value(0)[u"found"].toBool(true));
}

TEST_F(QalCommandLine, DbInitJsonIsOneSummaryObject)
{
    const ToolRun run = qal({ "db", "init", "--alias", "SCRATCH", "--sample", "--force", "--json" });
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QList<QJsonObject> lines = jsonLines(run.out);
    ASSERT_EQ(lines.size(), 1) << run.out.toStdString();
    const QJsonObject& summary = lines[0];
    EXPECT_EQ(summary[u"alias"].toString(), u"SCRATCH");
    EXPECT_EQ(summary[u"driver"].toString(), u"SQLITE");
    EXPECT_EQ(summary[u"procedure"].toString(), u"embedded");
    const QJsonObject sample = summary[u"sample"].toObject();
    EXPECT_EQ(sample[u"date"].toString(), u"2026-11-18");
    EXPECT_EQ(sample[u"seed"].toInt(), 1);
    const QJsonObject rows = sample[u"rows"].toObject();
    EXPECT_EQ(rows[u"OMSTrade_File"].toInt(), sample[u"sehkOrders"].toInt() + sample[u"hkfeOrders"].toInt());
    int byStatus = 0;
    for (const QJsonValue count : sample[u"ordersByStatus"].toObject())
        byStatus += count.toInt();
    EXPECT_EQ(byStatus, rows[u"OMSTrade_File"].toInt());
    // The CSV blotter of the desk's own copy of the same day has as many orders.
    EXPECT_EQ(rows[u"OMSTrade_File"].toInt(), csvRows({}).size());

    // Again over the same day: every table is there, and what was deleted is listed.
    const ToolRun again = qal({ "db", "init", "--alias", "SCRATCH", "--force", "--json" });
    ASSERT_EQ(again.exitCode, 0) << again.err.toStdString();
    const QJsonObject second = jsonLines(again.out).value(0);
    EXPECT_TRUE(second[u"createdTables"].toArray().isEmpty());
    EXPECT_EQ(second[u"deleted"].toObject()[u"OMSTrade_File"].toInt(), rows[u"OMSTrade_File"].toInt());
    EXPECT_FALSE(second.contains(u"sample"));
}

} // namespace
