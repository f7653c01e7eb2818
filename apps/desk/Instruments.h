// SPDX-License-Identifier: MIT
// What the ticket needs to know of an instrument: its exchange, its kind
// (which price ladder it steps on) and its board lot. Read from the desk's
// instrument list, config/instruments.ini, next to the OMS INI.
#pragma once

#include <map>

#include <QDir>
#include <QHash>
#include <QString>

#include "qalpack/market/SpreadTable.h"

namespace qal {
namespace desk {

struct Instrument
{
    QString symbol; // as the order database keeps it: "0005.HK", "HSIZ6"
    QString exchange; // "SEHK", "HKFE"
    QString kind; // "securities", "etp", "index_futures": names the ladder
    int lot = 1; // shares or contracts per board lot
};

// The instrument list and the ladders of config/spreads
// ("<exchange>_<kind>.txt", lower case). Unknown symbols get the exchange's
// first kind and a lot of 1; a missing ladder file gives the tables' step-1
// fallback, so the price box still steps.
class InstrumentBook
{
public:
    // Reads `iniPath` (section [Instruments]: symbol=exchange,kind,lot) and
    // the ladders under `spreadDir`. Missing files leave the book empty.
    InstrumentBook(const QString& iniPath, const QString& spreadDir);
    // The book of the configuration in `configDir`: its instruments.ini, and
    // the ladders in its spreads/ (the build tree) or in ../spreads beside it
    // (an installed share/qalpack).
    [[nodiscard]] static InstrumentBook ForConfiguration(const QDir& configDir);

    // The instrument of `symbol`, normalised first (see Normalise).
    [[nodiscard]] Instrument Find(const QString& exchange, const QString& symbol) const;
    // The ladder of `instrument`'s kind; the book owns it.
    [[nodiscard]] TSpreadTable* Ladder(const Instrument& instrument);
    // The symbol as the order database keeps it: an SEHK code is its stock
    // number in four digits or more and ".HK" ("5", "00005" and "5.HK" give
    // "0005.HK"); a futures code is upper-cased and kept.
    [[nodiscard]] static QString Normalise(const QString& exchange, const QString& symbol);

private:
    QHash<QString, Instrument> instruments_;
    QString spreadDir_;
    std::map<QString, TSpreadTable> ladders_;
};

} // namespace desk
} // namespace qal
