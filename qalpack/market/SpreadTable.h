// SPDX-License-Identifier: MIT
// An exchange's price-spread (tick) ladder: price bands, each with the
// minimum step allowed inside it. Price entry controls use it to step a price
// by whole spreads, to snap a typed price onto the ladder and to check it.
#pragma once

#include <vector>

#include <QString>

#include "qalpack/model/ResourceLabel.h"
#include "qalpack/qalpack_export.h"

namespace qal {

// One price band: prices above the previous band's bound up to and including
// UpperBound step by Spread.
struct TSpreadRow
{
    double UpperBound = 0;
    double Spread = 0;
};

// The ladder, built from a spread text "bound,spread,bound,spread,..." with
// the bands in ascending order of bound (the table never sorts them). The
// first band also holds zero and negative prices; the last band's bound is
// always replaced by LastBandBound, and prices above it still belong to the
// last band. Inside a band the ladder points are anchored at the band's upper
// bound (bound, bound - spread, bound - 2 * spread, ...), so a band edge is a
// point of both neighbouring bands' ladders.
//
// Step-1 fallback: a table with no complete pair, or one whose text failed to
// load (LoadError()), works as a single band of spread 1 anchored at
// LastBandBound, i.e. on whole numbers, in every price operation below
// (GetUpSpread, GetDownSpread, ValidatePrice, GetNextPrice, GetNearest*).
// That is the order input's "spread size 1" the host announces with
// _res_LoadSpreadError(). Rows() and SearchPriceIndex() still report the
// rows as loaded.
//
// Prices are compared as the dealers' screens always have: exact
// floating-point equality at band edges, and "on the ladder" within 1e-6
// spreads of a ladder point, widened where the band lies so many spreads
// below its anchor that the rounding of (bound - price) / spread is larger
// than that: the tolerance is the larger of 1e-6 and 8 epsilons of
// |bound| + |price| counted in spreads. So a 0.001 band anchored at
// 10,000,000 still recognises 16000.001 (1e-6 spreads there is finer than a
// double can resolve). Only the GetNearest operations round their result
// (CorrectError).
class QALPACK_EXPORT TSpreadTable
{
public:
    // The bound that replaces the last band's bound.
    static constexpr double LastBandBound = 10000000.0;

    // Builds the rows from `text`, split on ","; a trailing odd field is
    // ignored and an empty text gives no rows. A field that is not a decimal
    // number (point as separator, no group separators, leading blanks allowed,
    // nothing after the number, not even blanks; "inf", "nan" and numbers
    // beyond the double range are not numbers) sets LoadError(); its row
    // still gets the number read with trailing blanks ignored, or 0, and
    // loading goes on. A spread of 0 or below also sets LoadError(): such a
    // band has no ladder. Never throws.
    explicit TSpreadTable(const QString& text = QString());
    virtual ~TSpreadTable();
    TSpreadTable(const TSpreadTable&) = default;
    TSpreadTable& operator=(const TSpreadTable&) = default;
    TSpreadTable(TSpreadTable&&) noexcept = default;
    TSpreadTable& operator=(TSpreadTable&&) noexcept = default;

    // The spread text of a spread file: lines whose first non-blank
    // character is "#" are comments and blank lines are skipped; every other
    // line, trimmed, holds one or more "bound,spread" pairs and the lines are
    // joined with ",". Throws qal::Error naming the file when it cannot be
    // read.
    [[nodiscard]] static QString readSpreadText(const QString& path);

    // The table of a spread file (see readSpreadText); bad numbers in the
    // file give LoadError() as with a text. Throws qal::Error when the file
    // cannot be read.
    [[nodiscard]] static TSpreadTable fromFile(const QString& path);

    // True when a number of the text failed to parse.
    [[nodiscard]] bool LoadError() const noexcept { return loadError_; }
    // The rows as loaded, in the order of the text.
    [[nodiscard]] const std::vector<TSpreadRow>& Rows() const noexcept { return rows_; }
    [[nodiscard]] int Count() const noexcept { return static_cast<int>(rows_.size()); }

    // Index into Rows() of the first band whose bound is not below `price`,
    // the last index for a price above every bound (or NaN: index 0), and -1
    // when there are no rows.
    [[nodiscard]] int SearchPriceIndex(double price) const noexcept;

    // The step for moving up from a price on the ladder: the band's spread,
    // or the next band's spread when `price` is exactly the band's bound. At
    // the last band's bound there is no next band: its own spread.
    [[nodiscard]] double GetUpSpread(double price) const noexcept;
    // The step for moving down from a price on the ladder: the spread of the
    // band that holds it (a band edge steps down with its lower band).
    [[nodiscard]] double GetDownSpread(double price) const noexcept;

    // True when `price` is within 1e-6 spreads of a ladder point of its band.
    [[nodiscard]] bool ValidatePrice(double price) const noexcept;

    // The price `steps` ladder points above (steps > 0) or below (steps < 0)
    // `price`, unrounded. From a price between ladder points the first step
    // lands on the neighbouring ladder point. steps == 0 returns `price`
    // unchanged, on the ladder or not. Prices between ticks are not rounded,
    // so a multi-tick call can arrive a hair above a band edge and take the
    // upper band's spread from there (four ticks down from 100.20 on the
    // pre-August-2025 securities ladder give 99.85); ticking one step at a
    // time from the shown price does not drift. A non-finite price comes back
    // unchanged, and a step that would leave the finite range is not taken,
    // so a finite price never gives infinity or NaN. Takes |steps| rounds.
    [[nodiscard]] double GetNextPrice(double price, int steps) const noexcept;

    // `price` itself when it is on the ladder; otherwise the ladder point
    // above (Up), below (Down) or the closer of the two, a tie going up, each
    // rounded by CorrectError.
    [[nodiscard]] double GetNearestUpPrice(double price) const noexcept;
    [[nodiscard]] double GetNearestDownPrice(double price) const noexcept;
    [[nodiscard]] double GetNearestPrice(double price) const noexcept;

    // `value` rounded to 5 decimal places, halves to the even neighbour
    // (CorrectError(0.000025) is 0.00002). Idempotent: a rounded value
    // rounds to itself. Values of 2^50 units of 1e-5 and more (about 1.1e10)
    // and non-finite values come back unchanged.
    [[nodiscard]] static double CorrectError(double value) noexcept;

private:
    // The rows the price operations work on: the loaded rows, or the step-1
    // band when there are none or the text failed.
    [[nodiscard]] const std::vector<TSpreadRow>& ladder() const noexcept;
    [[nodiscard]] static int bandIndex(const std::vector<TSpreadRow>& rows, double price) noexcept;
    // Whether `price` is within the tolerance of a ladder point of `band`.
    [[nodiscard]] static bool onLadder(const TSpreadRow& band, double price) noexcept;

    std::vector<TSpreadRow> rows_;
    bool loadError_ = false;
};

// "Loading spread (%s) error. Reset order input spread size to 1.", for the
// host to show when a table's LoadError() is set; %s takes the spread text.
inline constexpr Label _res_LoadSpreadError = res_LoadSpreadError;

} // namespace qal
