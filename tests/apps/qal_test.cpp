// SPDX-License-Identifier: MIT
// The qal tool as a user runs it: real process, real arguments and stdin.
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include "qalpack/omslib/CodePage950.h"
#include "tests/support/QtPrinters.h"

namespace {

struct ToolRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

ToolRun qal(const QStringList& arguments, const QByteArray& input = {})
{
    QProcess process;
    process.start(QStringLiteral(QAL_TOOL_PATH), arguments);
    process.write(input);
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(30000));
    return { process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
        QString::fromUtf8(process.readAllStandardError()) };
}

TEST(QalDecode, PrintsPropertiesTextsQuantitiesAndTheMessageWrittenBack)
{
    const ToolRun run = qal({ "decode", "H|0|0005.HK|4|1000|3|12.5|11|1|5|1|40|2560|41|12.3" });
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    for (const char* line : { "RSymbol           0005.HK", "RSide             SELL", "RStatus           Pend",
             "option            AO;STP:12.300;", "queueQty          1000",
             "message           "
             "0|0005.HK|11|1|4|1000|3|12.500000|5|1|34|0|35|0|40|2560|41|12.300000|44|0|43|0|"
             "502|TRADE|" }) {
        EXPECT_TRUE(run.out.contains(QString::fromUtf8(line))) << line << "\n" << run.out.toStdString();
    }
}

TEST(QalDecode, ReadsStdinLineByLineAndGoesOnAfterABadLine)
{
    const QByteArray input = "H|8|T1|4|100|5|3\n\nnot a message\nH|8|T2|4|200\n";
    const ToolRun run = qal({ "decode", "--trade", "--json" }, input);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.contains(u"line 3: no tag|value field")) << run.err.toStdString();

    const QStringList lines = run.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3);
    const QJsonObject first = QJsonDocument::fromJson(lines[0].toUtf8()).object();
    EXPECT_EQ(first[u"type"].toString(), u"TomsTrade");
    EXPECT_EQ(first[u"status"].toString(), u"Comp");
    EXPECT_EQ(first[u"properties"].toObject()[u"RFill_Qty"].toInt(), 100);
    EXPECT_EQ(QJsonDocument::fromJson(lines[1].toUtf8()).object()[u"error"].toString(),
        u"no tag|value field in \"not a message\"");
    EXPECT_EQ(QJsonDocument::fromJson(lines[2].toUtf8()).object()[u"tradeNumber"].toString(), u"2");
}

TEST(QalDecode, DecodesWireBytesInCodePage950)
{
    const QByteArray wire = qal::cp950::encode(QStringLiteral("H|0|0005.HK|25|李四峯"));
    const ToolRun run = qal({ "decode", "--json", "--encoding", "cp950" }, wire + '\n');
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QJsonObject object = QJsonDocument::fromJson(run.out.toUtf8()).object();
    EXPECT_EQ(object[u"remark"].toString(), u"李四峯");
}

TEST(QalDecode, RejectsInvalidUtf8AndUnknownOptions)
{
    EXPECT_EQ(qal({ "decode" }, "H|0|\xff\xfe\n").exitCode, 1);
    EXPECT_EQ(qal({ "decode", "--encoding", "latin9", "H|0|A" }).exitCode, 2);
    EXPECT_EQ(qal({ "decode", "--bogus" }).exitCode, 2);
    EXPECT_EQ(qal({ "frobnicate" }).exitCode, 2);
    const ToolRun help = qal({ "decode", "--help" });
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains(u"--trade"));
}

} // namespace

namespace {

TEST(QalTick, ShowsValidityNeighboursAndTicksOnARealLadder)
{
    const ToolRun run
        = qal({ "tick", "--ladder", "sehk_securities_pre_2025", "--steps", "2", "--json", "10.01", "19.98" });
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QStringList lines = run.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2);
    const QJsonObject offLadder = QJsonDocument::fromJson(lines[0].toUtf8()).object();
    EXPECT_FALSE(offLadder[u"valid"].toBool());
    EXPECT_DOUBLE_EQ(offLadder[u"up"].toDouble(), 10.02);
    EXPECT_DOUBLE_EQ(offLadder[u"down"].toDouble(), 10.00);
    const QJsonObject acrossEdge = QJsonDocument::fromJson(lines[1].toUtf8()).object();
    EXPECT_TRUE(acrossEdge[u"valid"].toBool());
    EXPECT_DOUBLE_EQ(acrossEdge[u"above"].toDouble(), 20.05) << "19.98 -> 20.00 -> 20.05";
    EXPECT_DOUBLE_EQ(acrossEdge[u"below"].toDouble(), 19.94);
}

TEST(QalTick, ReportsBadPricesLaddersAndSpreadTexts)
{
    const ToolRun badPrice = qal({ "tick", "12.5", "1,5" });
    EXPECT_EQ(badPrice.exitCode, 1);
    EXPECT_TRUE(badPrice.err.contains(u"\"1,5\" is not a price"));
    EXPECT_TRUE(badPrice.out.contains(u"12.5 "));

    EXPECT_EQ(qal({ "tick", "--ladder", "no_such_ladder", "1" }).exitCode, 2);
    EXPECT_EQ(qal({ "tick", "--steps", "x", "1" }).exitCode, 2);

    const ToolRun badSpread = qal({ "tick", "--spread", "10,0.5,abc,1", "10.5" });
    EXPECT_EQ(badSpread.exitCode, 2);
    EXPECT_TRUE(
        badSpread.err.contains(u"Loading spread (10,0.5,abc,1) error. Reset order input spread size to 1."));
    EXPECT_TRUE(badSpread.out.isEmpty()) << "no prices on a ladder that did not load";
}

} // namespace

namespace {

TEST(QalDecode, ClientOrdersShowTheirRemarkAndRemainingQuantity)
{
    const ToolRun run = qal({ "decode", "--order", "--json",
        "H|0|0005.HK|4|1000|11|0|5|2|34|400|489|1|101|1|74|SPT:1|15|A123|40|3" });
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QJsonObject object = QJsonDocument::fromJson(run.out.toUtf8()).object();
    EXPECT_EQ(object[u"type"].toString(), u"TomsOrder");
    EXPECT_EQ(object[u"remark"].toString(), u"Work;SS;Odd;REV:A123;");
    EXPECT_EQ(object[u"remainingQty"].toInt(), 600);
    EXPECT_EQ(qal({ "decode", "--order", "--trade", "H|0|A" }).exitCode, 2);
}

} // namespace

namespace {

// Numbers that no double holds, and spreads that do not step, give a clear
// error or the lenient result, never "nan" or "inf".
TEST(QalTick, OutOfRangePricesAndSpreadsThatDoNotStepAreRefused)
{
    const ToolRun huge = qal({ "tick", "1e309" });
    EXPECT_EQ(huge.exitCode, 1);
    EXPECT_TRUE(huge.err.contains(u"\"1e309\" is not a price")) << huge.err.toStdString();
    EXPECT_FALSE(huge.out.contains(u"nan"));

    for (const char* spread : { "10,0", "10,-1", "10,1e400", "10,nan" }) {
        SCOPED_TRACE(spread);
        // A spread typed on the command line that does not load is a usage
        // error: the load error is shown and nothing is stepped.
        const ToolRun run = qal({ "tick", "--json", "--spread", spread, "5.5" });
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_TRUE(run.err.contains(u"Reset order input spread size to 1.")) << run.err.toStdString();
        EXPECT_TRUE(run.out.isEmpty()) << run.out.toStdString();
    }
}

TEST(QalTick, StepsAreBounded)
{
    const ToolRun tooMany = qal({ "tick", "--steps", "2147483647", "1" });
    EXPECT_EQ(tooMany.exitCode, 2);
    EXPECT_TRUE(tooMany.err.contains(u"--steps takes at most 100000 ticks")) << tooMany.err.toStdString();
    EXPECT_EQ(qal({ "tick", "--steps", "100001", "1" }).exitCode, 2);

    const ToolRun most
        = qal({ "tick", "--json", "--ladder", "sehk_securities", "--steps", "100000", "9995" });
    EXPECT_EQ(most.exitCode, 0) << most.err.toStdString();
    EXPECT_EQ(QJsonDocument::fromJson(most.out.toUtf8()).object()[u"above"].toDouble(), 9995 + 5 * 100000.0);
}

// The message written back holds the price in full and reads back as it.
TEST(QalDecode, LargePricesReadBackFromTheMessageWrittenBack)
{
    const auto writtenBack = [](const QString& message) {
        const ToolRun run = qal({ "decode", message });
        EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
        for (const QString& line : run.out.split(u'\n')) {
            if (const QString field = line.trimmed(); field.startsWith(u"message "))
                return field.mid(8).trimmed();
        }
        return QString();
    };
    // The double nearest 1e121, in full: 122 digits and six decimals.
    const QString first = writtenBack(QStringLiteral("H|0|X|4|1|3|1e121"));
    EXPECT_TRUE(
        first.contains(QRegularExpression(QStringLiteral("\\|3\\|10000000000000000\\d{105}\\.000000\\|"))))
        << first.toStdString();
    EXPECT_EQ(writtenBack(QStringLiteral("H|") + first), first);

    const QString beyond = writtenBack(QStringLiteral("H|0|X|4|1|3|1e400"));
    EXPECT_TRUE(beyond.contains(u"|3|0.000000|")) << beyond.toStdString();
}

} // namespace
