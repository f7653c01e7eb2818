// SPDX-License-Identifier: MIT
// Price ladder behaviour: building from spread text, band edges, stepping and
// snapping, and the Hong Kong exchange's ladders in config/spreads.
#include "qalpack/market/SpreadTable.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "tests/support/SourceTree.h"

#include "qalpack/runtime/Exception.h"

namespace qal {
namespace {

constexpr double kTop = TSpreadTable::LastBandBound;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

QString spreadFile(const QString& name)
{
    return test::sourcePath("config/spreads/" + name);
}

// A spread text, or the table of a spread file when the text names one.
TSpreadTable tableOf(const QString& source)
{
    return source.endsWith(".txt") ? TSpreadTable::fromFile(spreadFile(source)) : TSpreadTable(source);
}

TEST(SpreadTable, BuildsRowsFromText)
{
    const struct
    {
        const char* name;
        QString text;
        bool loadError;
        std::vector<double> rows; // bound, spread, bound, spread, ...
    } cases[] = {
        { "LastBoundOpened", "10,0.5,20,1", false, { 10, 0.5, kTop, 1 } },
        { "OddTrailingFieldIgnored", "0.25,0.001,0.5", false, { kTop, 0.001 } },
        { "EmptyTextNoRows", "", false, {} },
        { "LeadingBlanksAndExponent", " 1e1,\t0.5,20,1", false, { 10, 0.5, kTop, 1 } },
        { "WordFlagsErrorKeepsRow", "abc,0.01", true, { kTop, 0.01 } },
        { "TrailingBlankFlagsError", "10 ,0.5,20,1", true, { 10, 0.5, kTop, 1 } },
        { "TrailingNewlineFlagsError", "10,0.5,20,1\n", true, { 10, 0.5, kTop, 1 } },
        { "EmptyFieldFlagsError", "10,,20,1", true, { 10, 0, kTop, 1 } },
        { "BeyondDoubleFlagsError", "1e400,1,20,1", true, { 0, 1, kTop, 1 } },
        { "ZeroSpreadFlagsError", "10,0", true, { kTop, 0 } },
        { "NegativeSpreadFlagsError", "10,0.5,20,-1", true, { 10, 0.5, kTop, -1 } },
        { "NaNSpreadFlagsError", "10,nan", true, { kTop, 0 } },
        { "InfiniteSpreadFlagsError", "10,inf", true, { kTop, 0 } },
        { "SpreadBeyondDoubleFlagsError", "10,1e309", true, { kTop, 0 } },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const TSpreadTable table(c.text);
        EXPECT_EQ(table.LoadError(), c.loadError);
        std::vector<double> rows;
        for (const TSpreadRow& row : table.Rows())
            rows.insert(rows.end(), { row.UpperBound, row.Spread });
        EXPECT_EQ(rows, c.rows);
    }
}

enum class Op { Index, Up, Down, Valid, Next, Nearest, NearestUp, NearestDown, Correct };

double apply(const TSpreadTable& t, Op op, double price, int steps)
{
    switch (op) {
    case Op::Index:
        return t.SearchPriceIndex(price);
    case Op::Up:
        return t.GetUpSpread(price);
    case Op::Down:
        return t.GetDownSpread(price);
    case Op::Valid:
        return t.ValidatePrice(price) ? 1 : 0;
    case Op::Next:
        return t.GetNextPrice(price, steps);
    case Op::Nearest:
        return t.GetNearestPrice(price);
    case Op::NearestUp:
        return t.GetNearestUpPrice(price);
    case Op::NearestDown:
        return t.GetNearestDownPrice(price);
    case Op::Correct:
        return TSpreadTable::CorrectError(price);
    }
    return kNaN;
}

const char* const kSmall = "0.25,0.001,0.5,0.005";
const char* const kCoarse = "10,0.5,20,1";
const char* const kOld = "sehk_securities_pre_2025.txt";
const char* const kNew = "sehk_securities.txt";
const char* const kEtp = "sehk_etp.txt";

// GetNextPrice results are unrounded and compared within 1e-9; every other
// result exactly (rounded results are the nearest doubles of their decimals).
TEST(SpreadTable, LadderOperations)
{
    const struct
    {
        const char* name;
        const char* table;
        Op op;
        double price;
        int steps;
        double expected;
    } cases[] = {
        { "EdgeBelongsToLowerBand", kSmall, Op::Index, 0.25, 0, 0 },
        { "AboveLastBoundInLastBand", kSmall, Op::Index, 2e7, 0, 1 },
        { "NaNStopsAtFirstBand", kSmall, Op::Index, kNaN, 0, 0 },
        { "EmptyTableHasNoBand", "", Op::Index, 1, 0, -1 },
        { "EdgeStepsUpWithUpperBand", kSmall, Op::Up, 0.25, 0, 0.005 },
        { "EdgeStepsDownWithOwnBand", kSmall, Op::Down, 0.25, 0, 0.001 },
        { "LastBoundStepsUpWithOwnSpread", kCoarse, Op::Up, kTop, 0, 1 },
        { "OffLadderInBand", kSmall, Op::Valid, 0.252, 0, 0 },
        { "LadderAnchoredAtUpperBound", "10.05,0.1,20,1", Op::Valid, 0.35, 0, 1 },
        { "NotAnchoredAtZero", "10.05,0.1,20,1", Op::Valid, 0.3, 0, 0 },
        { "WithinMillionthOfSpread", kCoarse, Op::Valid, 9.5 + 0.4e-6, 0, 1 },
        { "BeyondMillionthOfSpread", kCoarse, Op::Valid, 9.5 - 0.6e-6, 0, 0 },
        { "AboveLastBoundOnLadder", "1,0.01", Op::Valid, 10000000.5, 0, 1 },
        { "AboveLastBoundOffLadder", "1,0.01", Op::Valid, 10000000.005, 0, 0 },
        { "NearestUpAcrossEdge", kSmall, Op::NearestUp, 0.252, 0, 0.255 },
        { "NearestToEdge", kSmall, Op::Nearest, 0.252, 0, 0.25 },
        { "NearestTieGoesUp", kCoarse, Op::Nearest, 10.5, 0, 11 },
        { "NearestBelowAcrossEdge", kCoarse, Op::Nearest, 10.25, 0, 10 },
        { "NearestKeepsValidPriceUnrounded", "1,0.01", Op::Nearest, 12.34 + 1e-9, 0, 12.34 + 1e-9 },
        { "NextUpFromEdge", kCoarse, Op::Next, 10, 1, 11 },
        { "NextDownFromEdge", kCoarse, Op::Next, 10, -1, 9.5 },
        { "NextFromOffLadderCountsNeighbour", kCoarse, Op::Next, 10.25, 2, 12 },
        { "NextZeroStepsKeepsOffLadder", kCoarse, Op::Next, 10.25, 0, 10.25 },
        { "NextSeveralAcrossEdge", kCoarse, Op::Next, 12, -4, 9 },
        { "CorrectHalfDownToEven", "", Op::Correct, 0.000025, 0, 0.00002 },
        { "CorrectHalfUpToEven", "", Op::Correct, 0.123455, 0, 0.12346 },
        { "CorrectDrift", "", Op::Correct, 10.020000000000001, 0, 10.02 },
        { "CorrectTooLargeUnchanged", "", Op::Correct, 1e15 + 0.5, 0, 1e15 + 0.5 },
        // Empty and failed tables: whole numbers.
        { "EmptyStepsByOne", "", Op::Next, 3, 2, 5 },
        { "EmptyNearestTieUp", "", Op::Nearest, 3.5, 0, 4 },
        { "FailedUpSpreadOne", "abc,0.01", Op::Up, 3, 0, 1 },
        { "FailedDownSpreadOne", "10,abc,20,0.5", Op::Down, 3, 0, 1 },
        { "FailedOffWholeNumber", "abc,0.01", Op::Valid, 3.5, 0, 0 },
        { "FailedNearestDown", "10,abc,20,0.5", Op::NearestDown, 3.2, 0, 3 },
        // The exchange's ladders on real prices.
        { "Old_10_02_OnTwoCentTicks", kOld, Op::Valid, 10.02, 0, 1 },
        { "Old_10_01_Off", kOld, Op::Valid, 10.01, 0, 0 },
        { "Old_10_01_Up", kOld, Op::NearestUp, 10.01, 0, 10.02 },
        { "Old_10_01_Down", kOld, Op::NearestDown, 10.01, 0, 10 },
        { "New_10_01_OnCentTicks", kNew, Op::Valid, 10.01, 0, 1 },
        { "New_35_03_Up", kNew, Op::NearestUp, 35.03, 0, 35.04 },
        { "New_7001_Up", kNew, Op::NearestUp, 7001, 0, 7005 },
        { "Old_9_97_FiveTicksUp", kOld, Op::Next, 9.97, 5, 10.04 },
        { "New_9_97_FiveTicksUp", kNew, Op::Next, 9.97, 5, 10.02 },
        { "New_49_96_ThreeTicksUp", kNew, Op::Next, 49.96, 3, 50.05 },
        { "Old_0_249_AcrossTwoEdges", kOld, Op::Next, 0.249, 52, 0.51 },
        { "Old_10_01_ThreeTicksDown", kOld, Op::Next, 10.01, -3, 9.98 },
        // One call does not round between ticks: 100.20, 100.10, then 100.00
        // plus drift, which steps down by the upper band's 0.10 to 99.90 and
        // on to 99.85 (tick by tick from the shown price: 99.90).
        { "Old_MultiTickCallCarriesDrift", kOld, Op::Next, 100.2, -4, 99.85 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const double result = apply(tableOf(c.table), c.op, c.price, c.steps);
        if (c.op == Op::Next)
            EXPECT_NEAR(result, c.expected, 1e-9);
        else
            EXPECT_EQ(result, c.expected);
    }
}

TEST(SpreadTable, SpreadFileDropsCommentsAndBlankLines)
{
    QTemporaryDir dir;
    QFile file(dir.filePath("ladder.txt"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("# comment, with commas\n\n  0.25,0.001  \r\n   # indented\n0.5,0.005,1,0.01\n");
    file.close();
    EXPECT_EQ(TSpreadTable::readSpreadText(file.fileName()), "0.25,0.001,0.5,0.005,1,0.01");
    EXPECT_THROW((void)TSpreadTable::fromFile(dir.filePath("missing.txt")), Error);
}

struct Ladder
{
    const char* file;
    std::vector<TSpreadRow> bands; // as published, last bound 9,995
};

const std::vector<Ladder> kLadders {
    { kOld,
        { { 0.25, 0.001 }, { 0.5, 0.005 }, { 10, 0.01 }, { 20, 0.02 }, { 100, 0.05 }, { 200, 0.1 },
            { 500, 0.2 }, { 1000, 0.5 }, { 2000, 1 }, { 5000, 2 }, { 9995, 5 } } },
    { kNew,
        { { 0.25, 0.001 }, { 0.5, 0.005 }, { 20, 0.01 }, { 50, 0.02 }, { 100, 0.05 }, { 200, 0.1 },
            { 500, 0.2 }, { 1000, 0.5 }, { 2000, 1 }, { 5000, 2 }, { 9995, 5 } } },
    { kEtp,
        { { 1, 0.001 }, { 5, 0.002 }, { 10, 0.005 }, { 20, 0.01 }, { 100, 0.02 }, { 200, 0.05 }, { 500, 0.1 },
            { 1000, 0.2 }, { 2000, 0.5 }, { 5000, 1 }, { 9995, 2 } } },
};

// The price control ticks from the price it shows, read back from its text.
double shown(double price)
{
    return QString::number(price, 'f', 3).toDouble();
}

// Around every edge b between bands of spread lo and hi, b - 2lo, b - lo, b,
// b + hi, b + 2hi are consecutive ticks both ways, and prices 0.3 of a
// spread off the edge snap to it or to its neighbour.
TEST(SpreadTable, ExchangeLaddersAroundEveryBandEdge)
{
    for (const Ladder& ladder : kLadders) {
        const TSpreadTable table = tableOf(ladder.file);
        ASSERT_FALSE(table.LoadError()) << ladder.file;
        ASSERT_EQ(table.Count(), int(ladder.bands.size())) << ladder.file;
        EXPECT_EQ(table.Rows().back().Spread, ladder.bands.back().Spread) << ladder.file;
        for (std::size_t i = 0; i + 1 < ladder.bands.size(); ++i) {
            const auto [edge, lo] = ladder.bands[i];
            const double hi = ladder.bands[i + 1].Spread;
            SCOPED_TRACE(testing::Message() << ladder.file << " edge " << edge);
            EXPECT_EQ(table.Rows()[i].UpperBound, edge);
            EXPECT_EQ(table.Rows()[i].Spread, lo);
            const double ticks[]
                = { shown(edge - 2 * lo), shown(edge - lo), edge, shown(edge + hi), shown(edge + 2 * hi) };
            double price = ticks[0];
            for (std::size_t k = 1; k < 5; ++k)
                EXPECT_EQ(price = shown(table.GetNextPrice(price, 1)), ticks[k]) << "up";
            for (std::size_t k = 4; k-- > 0;)
                EXPECT_EQ(price = shown(table.GetNextPrice(price, -1)), ticks[k]) << "down";
            EXPECT_EQ(table.GetNearestPrice(edge + 0.3 * hi), edge);
            EXPECT_EQ(table.GetNearestUpPrice(edge + 0.3 * hi), ticks[3]);
            EXPECT_EQ(table.GetNearestPrice(edge - 0.3 * lo), edge);
            EXPECT_EQ(table.GetNearestDownPrice(edge - 0.3 * lo), ticks[1]);
        }
    }
}

// n steps at once are n single steps, each from the last one's unrounded
// price, on every shipped ladder, on one whose bands are out of order (the
// table never sorts them) and on the fallback, from prices in and between
// every band, across band edges both ways.
TEST(SpreadTable, ManyStepsAreThatManySingleSteps)
{
    std::vector<TSpreadTable> tables;
    for (const char* file : { "sehk_securities.txt", "sehk_securities_pre_2025.txt", "sehk_etp.txt",
             "hkfe_index_futures.txt" })
        tables.push_back(TSpreadTable::fromFile(spreadFile(QString::fromLatin1(file))));
    tables.emplace_back(QStringLiteral("10,0.5,5,0.01,100,1"));
    tables.emplace_back(QStringLiteral("10,0"));
    std::mt19937_64 rng(10);
    for (const TSpreadTable& table : tables) {
        std::vector<double> prices { 0, -3, 0.001, kTop, kTop + 7.5 };
        for (const TSpreadRow& row : table.Rows()) {
            for (const double offset : { -3.0, -1.0, -0.4, 0.0, 0.4, 1.0, 3.0 })
                prices.push_back(row.UpperBound + offset * row.Spread);
        }
        for (int k = 0; k < 300; ++k)
            prices.push_back(std::ldexp(double(rng() % 100000), -int(rng() % 12)));
        for (const double price : prices) {
            for (const int steps : { 1, 2, 10, 37, -1, -2, -10, -37 }) {
                double single = price;
                for (int k = 0; k < std::abs(steps); ++k)
                    single = table.GetNextPrice(single, steps > 0 ? 1 : -1);
                ASSERT_EQ(table.GetNextPrice(price, steps), single)
                    << table.Count() << " bands, " << price << " by " << steps;
            }
        }
    }
}

// A table that failed to load ticks by 1 whatever its text: no NaN from a
// zero spread, and "up" never below "down" from a negative one.
TEST(SpreadTable, FailedSpreadsTickByOne)
{
    for (const char* text : { "10,0", "10,-1", "10,0.5,20,0", "10,nan" }) {
        SCOPED_TRACE(text);
        const TSpreadTable table(QString::fromLatin1(text));
        ASSERT_TRUE(table.LoadError());
        EXPECT_EQ(table.GetNextPrice(5, 1), 6);
        EXPECT_EQ(table.GetNextPrice(5, -1), 4);
        EXPECT_EQ(table.GetNearestPrice(5.3), 5);
        EXPECT_TRUE(table.ValidatePrice(12));
    }
}

// Every tick of every band is on the ladder and every midpoint between two
// ticks is not, in the shipped ladders and in ladders whose fine last band
// lies up to 1e10 spreads below its anchor at 10,000,000.
TEST(SpreadTable, EveryBandRecognisesItsTicks)
{
    // Ticks in thousandths: every spread here is a whole number of them, so
    // a tick's text is exact and reads as the price a dealer types.
    const auto price = [](long long milli) {
        const long long magnitude = milli < 0 ? -milli : milli;
        return QString::asprintf("%s%lld.%03lld", milli < 0 ? "-" : "", magnitude / 1000, magnitude % 1000)
            .toDouble();
    };
    const auto floorDiv = [](long long a, long long b) { return a / b - (a % b != 0 && (a < 0) != (b < 0)); };
    using Range = std::pair<long long, long long>; // (from, to] in thousandths
    const struct
    {
        const char* name;
        QString source;
        std::vector<Range> ranges;
    } ladders[] = {
        // From 0 up to 20,000, the published bands and the opened last band.
        { "SehkSecurities", kNew, { { 0, 20000000 } } },
        { "SehkSecuritiesBefore2025", kOld, { { 0, 20000000 } } },
        { "SehkEtp", kEtp, { { 0, 20000000 } } },
        { "FineLastBand", "10,0.01,20000,0.001",
            { { 8000, 12000 }, { 15990000, 16010000 }, { 9999990000, 10000010000 },
                { 19999990000, 20000000000 } } },
        { "FineLastBandAfterCoarse", "0.5,0.5,100,0.001", { { -5000, 1500 }, { 99000, 101000 } } },
    };
    for (const auto& ladder : ladders) {
        SCOPED_TRACE(ladder.name);
        const TSpreadTable table = tableOf(ladder.source);
        ASSERT_FALSE(table.LoadError());
        int misses = 0;
        for (const auto& [from, to] : ladder.ranges) {
            long long lower = std::numeric_limits<long long>::min();
            for (std::size_t i = 0; i < table.Rows().size(); ++i) {
                const TSpreadRow& row = table.Rows()[i];
                const long long anchor = std::llround(row.UpperBound * 1000);
                const long long spread = std::llround(row.Spread * 1000);
                // The band holds (lower, anchor]; the last one goes on above.
                const long long top = i + 1 == table.Rows().size() ? to : std::min(anchor, to);
                const long long bottom = std::max(lower, from);
                lower = anchor;
                if (top <= bottom)
                    continue;
                for (long long tick = anchor + floorDiv(top - anchor, spread) * spread; tick > bottom;
                     tick -= spread) {
                    const double p = price(tick);
                    const bool valid = table.ValidatePrice(p);
                    const bool midpointValid = table.ValidatePrice(p - row.Spread / 2);
                    if ((!valid || midpointValid) && ++misses <= 5)
                        ADD_FAILURE()
                            << "band " << i << " price " << price(tick)
                            << (valid ? ": midpoint below taken as a tick" : ": tick not recognised");
                }
            }
        }
    }
}

TEST(SpreadTable, RoundingIsIdempotentAndSteppingStaysFinite)
{
    std::vector<double> values { 0.000025, -0.000035, 12.345675, 1e10 + 0.000015, 1.1e10 + 0.000015, 9.2e13,
        1e300, -1e300, std::numeric_limits<double>::denorm_min() };
    for (int k = 0; k < 2000; ++k)
        values.push_back(std::ldexp(1.0 + k / 2000.0, k % 50 - 10));
    for (const double value : values) {
        const double once = TSpreadTable::CorrectError(value);
        EXPECT_EQ(TSpreadTable::CorrectError(once), once) << value;
    }

    const TSpreadTable huge("10,1e308");
    const double max = std::numeric_limits<double>::max();
    EXPECT_TRUE(std::isfinite(huge.GetNextPrice(1e308, 3)));
    EXPECT_TRUE(std::isfinite(huge.GetNextPrice(-1e308, -3)));
    EXPECT_TRUE(std::isfinite(huge.GetNearestUpPrice(max)));
    const TSpreadTable tiny("10,0.01,20,5e-324");
    ASSERT_FALSE(tiny.LoadError());
    EXPECT_TRUE(std::isfinite(tiny.GetNextPrice(12.5, 2)));
    EXPECT_TRUE(std::isfinite(tiny.GetNearestPrice(12.5)));
}

} // namespace
} // namespace qal
