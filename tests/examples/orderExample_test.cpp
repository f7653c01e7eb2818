// SPDX-License-Identifier: MIT
// The example C host, run as a desk would run it: against a sample trading
// day that `qal db init --sample` puts in a configuration of the test's own,
// from a plain C main without any Qt application object. What it prints must
// be the order's real remark and status, and the order it reports saved must
// be in the order database.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <memory>

#include <gtest/gtest.h>

#include "qalpack/db/Database.h"
#include "qalpack/db/Query.h"
#include "qalpack/db/Session.h"
#include "tests/support/QtPrinters.h"

namespace {

struct ProgramRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

// The configuration the build put next to the tool, copied into a directory
// of the test's own; its embedded order database lands there too.
class SampleDay
{
public:
    SampleDay()
    {
        const QDir shipped(
            QFileInfo(QStringLiteral(QAL_TOOL_PATH)).absolutePath() + QStringLiteral("/config"));
        EXPECT_TRUE(shipped.exists(QStringLiteral("oms.ini"))) << "no config next to the tool";
        for (const QString& name : shipped.entryList(QDir::Files))
            QFile::copy(shipped.filePath(name), dir_.filePath(name));
        const ProgramRun init = run(QStringLiteral(QAL_TOOL_PATH), { "db", "init", "--sample" });
        EXPECT_EQ(init.exitCode, 0) << init.err.toStdString();
    }

    ~SampleDay() { qal::TSession::Default().DropConnections(); }

    ProgramRun run(const QString& program, const QStringList& arguments = {}) const
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("OMS_INI"), dir_.filePath(QStringLiteral("oms.ini")));
        process.setProcessEnvironment(environment);
        process.start(program, arguments);
        EXPECT_TRUE(process.waitForFinished(120000));
        return { process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()) };
    }

    // The order's row as "Account|Symbol|Quantity|Limit_Price|Status", or
    // empty when there is none.
    QString storedOrder(const QString& orderNumber) const
    {
        qal::TSession::Default().DropConnections();
        qal::TSession::Default().LoadAliases(dir_.filePath(QStringLiteral("aliases.ini")));
        qal::TDatabase db;
        db.SetAliasName(QStringLiteral("OMSDATA"));
        db.SetDatabaseName(QStringLiteral("EXAMPLECHECK"));
        db.SetLoginPrompt(false);
        db.Open();
        qal::TQuery query;
        query.SetDatabaseName(db.DatabaseName());
        query.SQL().Add(QStringLiteral("select Account, Symbol, Quantity, Limit_Price, Status from "
                                       "OMSTrade_File where Order_No = '%1'")
                            .arg(orderNumber));
        query.Open();
        if (query.Eof())
            return {};
        QStringList values;
        for (int i = 0; i < query.FieldCount(); ++i)
            values << query.Fields(i).AsString().trimmed();
        return values.join(u'|');
    }

private:
    QTemporaryDir dir_;
};

// The value after a line's label ("remark   Manual;..." gives "Manual;...").
QString line(const QString& out, QStringView label)
{
    for (const QString& l : out.split(u'\n')) {
        if (l.startsWith(label) && l.mid(label.size()).startsWith(u' '))
            return l.mid(label.size()).trimmed();
    }
    return {};
}

TEST(OrderExample, SavesTheOrderItReadAndPrintsItsBlotterTexts)
{
    const SampleDay day;
    const ProgramRun example = day.run(QStringLiteral(QAL_ORDER_EXAMPLE_PATH));
    ASSERT_EQ(example.exitCode, 0) << example.err.toStdString() << example.out.toStdString();
    // Nothing asks for the Qt application object that a C host never makes.
    EXPECT_EQ(example.err, u"");

    EXPECT_EQ(line(example.out, u"library"), u"qalpack " QALPACK_PROJECT_VERSION);
    EXPECT_EQ(line(example.out, u"order"), u"BUY 2000 0005.HK @ 62.35 for A1001");
    EXPECT_EQ(line(example.out, u"remark"), u"Manual;FAK;House;陳生 call back");
    EXPECT_EQ(line(example.out, u"status"), u"Pend");

    // "saved    order <number> at <time>, price 62.4"
    const QStringList saved = line(example.out, u"saved").split(u' ');
    ASSERT_GE(saved.size(), 6) << example.out.toStdString();
    EXPECT_EQ(saved.last(), u"62.4");
    EXPECT_EQ(day.storedOrder(saved[1]), u"A1001|0005.HK|2000|62.4|Pend");
    EXPECT_TRUE(line(example.out, u"message").startsWith(QStringLiteral("6|%1|").arg(saved[1])));
}

} // namespace
