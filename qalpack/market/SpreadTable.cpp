// SPDX-License-Identifier: MIT
#include "qalpack/market/SpreadTable.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include <QFile>
#include <QStringList>
#include <QTextStream>

#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/Exception.h"
#include "qalpack/runtime/Format.h"

namespace qal {
namespace {

// A price is on its band's ladder when it is this close to a ladder point,
// counted in spreads ...
constexpr double kLadderTolerance = 0.000001;
// ... or, where the ladder point lies many spreads below its anchor, within
// the rounding of the arithmetic that finds it: (bound - price) / spread
// carries an error of a few units in the last place of the larger of bound
// and price, which in spreads is that many epsilons times their ratio to the
// spread (a 0.001 band anchored at 10,000,000 is 1e10 spreads deep, where
// the rounding alone is about 1e-6 spreads).
constexpr double kRoundingUlps = 8.0;

constexpr double kCorrectionScale = 100000.0;

// One spread-text field as a number: leading blanks are allowed, anything
// after the number (trailing blanks included) makes the field bad. A bad
// field still yields the number read with trailing blanks ignored, or 0.
bool parseField(QStringView field, double& value)
{
    long double parsed = 0;
    const bool isNumber = TryStrToFloat(field, parsed);
    value = isNumber ? static_cast<double>(parsed) : 0.0;
    if (!std::isfinite(value)) { // beyond the range of a double
        value = 0.0;
        return false;
    }
    const bool endsInBlank = !field.isEmpty() && field.back().unicode() <= u' ';
    return isNumber && !endsInBlank;
}

const std::vector<TSpreadRow>& stepOneLadder()
{
    static const std::vector<TSpreadRow> ladder { TSpreadRow { TSpreadTable::LastBandBound, 1.0 } };
    return ladder;
}

} // namespace

TSpreadTable::TSpreadTable(const QString& text)
{
    if (text.isEmpty())
        return;
    const QStringList fields = text.split(u',');
    const qsizetype count = fields.size() / 2;
    rows_.resize(static_cast<std::size_t>(count));
    for (qsizetype i = 0; i < count; ++i) {
        TSpreadRow& row = rows_[static_cast<std::size_t>(i)];
        if (!parseField(fields[2 * i], row.UpperBound))
            loadError_ = true;
        if (!parseField(fields[2 * i + 1], row.Spread))
            loadError_ = true;
        // A band must step: no step (0) or a negative one has no ladder.
        if (!(row.Spread > 0))
            loadError_ = true;
    }
    if (!rows_.empty())
        rows_.back().UpperBound = LastBandBound;
}

TSpreadTable::~TSpreadTable() = default;

QString TSpreadTable::readSpreadText(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        throw Error(Format("Cannot read the spread file %s: %s", { path, file.errorString() }));
    QStringList pairs;
    QTextStream in(&file);
    QString line;
    while (in.readLineInto(&line)) {
        const QString trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith(u'#'))
            continue;
        pairs.append(trimmed);
    }
    if (in.status() != QTextStream::Ok)
        throw Error(Format("Cannot read the spread file %s: %s", { path, file.errorString() }));
    return pairs.join(u',');
}

TSpreadTable TSpreadTable::fromFile(const QString& path)
{
    return TSpreadTable(readSpreadText(path));
}

const std::vector<TSpreadRow>& TSpreadTable::ladder() const noexcept
{
    return rows_.empty() || loadError_ ? stepOneLadder() : rows_;
}

bool TSpreadTable::onLadder(const TSpreadRow& band, double price) noexcept
{
    const double difference = band.UpperBound - price;
    const double q = difference / band.Spread;
    const double f = q - std::floor(q);
    const double g = std::ceil(q) - q;
    const double magnitude = std::fabs(band.UpperBound) + std::fabs(price);
    const double tolerance = std::max(
        kLadderTolerance, kRoundingUlps * std::numeric_limits<double>::epsilon() * magnitude / band.Spread);
    return f < tolerance || g < tolerance;
}

int TSpreadTable::bandIndex(const std::vector<TSpreadRow>& rows, double price) noexcept
{
    const int count = static_cast<int>(rows.size());
    if (count == 0)
        return -1;
    for (int i = 0; i < count; ++i) {
        // Not "price <= bound": a NaN price stops at the first band.
        if (!(price > rows[static_cast<std::size_t>(i)].UpperBound))
            return i;
    }
    return count - 1;
}

int TSpreadTable::SearchPriceIndex(double price) const noexcept
{
    return bandIndex(rows_, price);
}

double TSpreadTable::GetUpSpread(double price) const noexcept
{
    const std::vector<TSpreadRow>& rows = ladder();
    const auto i = static_cast<std::size_t>(bandIndex(rows, price));
    // Moving up from a band's top edge enters the next band.
    if (price == rows[i].UpperBound && i + 1 < rows.size())
        return rows[i + 1].Spread;
    return rows[i].Spread;
}

double TSpreadTable::GetDownSpread(double price) const noexcept
{
    const std::vector<TSpreadRow>& rows = ladder();
    return rows[static_cast<std::size_t>(bandIndex(rows, price))].Spread;
}

bool TSpreadTable::ValidatePrice(double price) const noexcept
{
    const std::vector<TSpreadRow>& rows = ladder();
    return onLadder(rows[static_cast<std::size_t>(bandIndex(rows, price))], price);
}

double TSpreadTable::GetNextPrice(double price, int steps) const noexcept
{
    const std::vector<TSpreadRow>& rows = ladder();
    if (!std::isfinite(price))
        return price;
    // One ladder point per round; each round starts from the previous
    // round's unrounded price. The band is found once per round; the moves
    // are GetUpSpread's and GetDownSpread's.
    while (steps != 0) {
        const auto i = static_cast<std::size_t>(bandIndex(rows, price));
        const TSpreadRow& band = rows[i];
        long double down = 0;
        long double up = 0;
        if (onLadder(band, price)) {
            down = band.Spread;
            // Moving up from a band's top edge enters the next band.
            up = price == band.UpperBound && i + 1 < rows.size() ? rows[i + 1].Spread : band.Spread;
        } else {
            // Between two ladder points: the first step goes to the neighbour.
            const long double bound = band.UpperBound;
            const long double spread = band.Spread;
            const long double c = std::ceil((bound - price) / spread);
            const long double below = bound - c * spread;
            const long double above = bound - (c - 1) * spread;
            down = price - below;
            up = above - price;
        }
        const double next = static_cast<double>(steps > 0 ? price + up : price - down);
        // The ladder ends where doubles end: a step that would leave the
        // finite range (a huge spread, or a band too fine for doubles to
        // tell its points apart) is not taken.
        if (!std::isfinite(next))
            break;
        price = next;
        steps += steps > 0 ? -1 : 1;
    }
    return price;
}

double TSpreadTable::GetNearestUpPrice(double price) const noexcept
{
    if (ValidatePrice(price))
        return price;
    return CorrectError(GetNextPrice(price, 1));
}

double TSpreadTable::GetNearestDownPrice(double price) const noexcept
{
    if (ValidatePrice(price))
        return price;
    return CorrectError(GetNextPrice(price, -1));
}

double TSpreadTable::GetNearestPrice(double price) const noexcept
{
    if (ValidatePrice(price))
        return price;
    const double up = GetNextPrice(price, 1);
    const double down = GetNextPrice(price, -1);
    // A tie goes up.
    if (std::fabs(up - price) <= std::fabs(down - price))
        return CorrectError(up);
    return CorrectError(down);
}

double TSpreadTable::CorrectError(double value) noexcept
{
    const double scaled = value * kCorrectionScale;
    // Below 2^50 units the rounded result scales back to within a quarter of
    // a unit of the same count, so rounding twice gives the same price. Above
    // that (prices from about 1.1e10, far beyond any ladder's last bound) a
    // double's own resolution is close to 1e-5 and the value stays as it is.
    constexpr double kLimit = 1125899906842624.0; // 2^50
    if (!(std::fabs(scaled) < kLimit))
        return value;
    // The default floating-point rounding mode sends halves to even.
    const auto units = static_cast<std::int64_t>(std::nearbyint(scaled));
    return static_cast<double>(units) / kCorrectionScale;
}

} // namespace qal
