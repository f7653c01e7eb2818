// SPDX-License-Identifier: MIT
// Spread tables from arbitrary text, and their price operations. The input's
// first line is the spread text; the bytes after it choose prices and steps.
// Any table: finite prices give finite results, and rounding is idempotent.
// A usable ladder (loaded cleanly, bounds ascending, spreads a double can
// resolve at the band's prices): from a ladder point with neighbours in its
// own band, a step up then down, and down then up, comes back to it.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <fuzzer/FuzzedDataProvider.h>

#include <QString>

#include "qalpack/market/SpreadTable.h"

namespace {

using qal::TSpreadTable;

[[noreturn]] void fail(const char* what, const QString& text, double price, double result)
{
    std::fprintf(
        stderr, "%s: table \"%s\", price %.17g gives %.17g\n", what, qPrintable(text), price, result);
    std::abort();
}

// Bands ascending, each spread positive and coarse enough that its ladder
// points are distinct doubles far apart (a billionth of the band's price
// scale at least).
bool usable(const TSpreadTable& table)
{
    if (table.LoadError() || table.Count() == 0)
        return false;
    double lower = -std::numeric_limits<double>::infinity();
    for (const qal::TSpreadRow& row : table.Rows()) {
        if (!(row.UpperBound > lower) || !(row.Spread > 0) || !std::isfinite(row.Spread))
            return false;
        if (row.Spread < 1e-9 * (std::fabs(row.UpperBound) + 1) || row.Spread > 1e6)
            return false;
        lower = row.UpperBound;
    }
    return true;
}

// Close enough to be the same ladder point: the table's own tolerance.
bool same(double a, double b, double spread)
{
    const double scale = std::fabs(a) + std::fabs(b);
    return std::fabs(a - b) <= std::max(1e-6 * spread, 16 * std::numeric_limits<double>::epsilon() * scale);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto* begin = reinterpret_cast<const char*>(data);
    const auto* newline = static_cast<const char*>(std::memchr(begin, '\n', size));
    const std::size_t textSize = newline ? std::size_t(newline - begin) : size;
    const QString text = QString::fromUtf8(begin, static_cast<qsizetype>(textSize));
    const TSpreadTable table(text);
    FuzzedDataProvider rest(data + std::min(size, textSize + 1), size - std::min(size, textSize + 1));

    const bool ladderUsable = usable(table);
    for (int round = 0; ladderUsable && round < 4 && rest.remaining_bytes() > 0; ++round) {
        const auto band = rest.ConsumeIntegralInRange<std::size_t>(0, table.Rows().size() - 1);
        const qal::TSpreadRow& row = table.Rows()[band];
        const double lower
            = band == 0 ? -std::numeric_limits<double>::infinity() : table.Rows()[band - 1].UpperBound;
        // A point two or more spreads below the anchor, whose neighbour below
        // is inside the band too and at least half a spread off its lower
        // edge. Neighbours on a band edge are left out: a step computed to a
        // hair beyond an edge takes the other band's spread back (see
        // TSpreadTable::GetNextPrice).
        const long long k = rest.ConsumeIntegralInRange<long long>(2, 1000000);
        const double price = row.UpperBound - double(k) * row.Spread;
        if (!(price - 1.5 * row.Spread > lower) || std::fabs(price) > 1e9)
            continue;
        if (!table.ValidatePrice(price))
            fail("ladder point not valid", text, price, price);
        const double upDown = table.GetNextPrice(table.GetNextPrice(price, 1), -1);
        if (!same(upDown, price, row.Spread))
            fail("up then down", text, price, upDown);
        const double downUp = table.GetNextPrice(table.GetNextPrice(price, -1), 1);
        if (!same(downUp, price, row.Spread))
            fail("down then up", text, price, downUp);
        if (table.GetNearestPrice(price) != price)
            fail("nearest of a ladder point", text, price, table.GetNearestPrice(price));
    }
    for (int round = 0; round < 8 && rest.remaining_bytes() > 0; ++round) {
        const double price = rest.ConsumeFloatingPoint<double>();
        const int steps = rest.ConsumeIntegralInRange(-40, 40);
        const double rounded = TSpreadTable::CorrectError(price);
        if (TSpreadTable::CorrectError(rounded) != rounded && !std::isnan(rounded))
            fail("rounding twice differs", text, price, TSpreadTable::CorrectError(rounded));
        if (!std::isfinite(price))
            continue;
        for (const double result :
            { table.GetNextPrice(price, steps), table.GetNearestPrice(price), table.GetNearestUpPrice(price),
                table.GetNearestDownPrice(price), table.GetUpSpread(price), table.GetDownSpread(price) }) {
            if (!std::isfinite(result))
                fail("not finite", text, price, result);
        }
    }
    return 0;
}
