// SPDX-License-Identifier: MIT
// A realistic trading day for the order database, made up from a seed: the
// desk's users and their entitlements, accounts and shortcuts, and a few
// hundred SEHK and HKFE orders with their exchange orders, fills, cancels,
// rejects, manually booked trades and pending requests.
#pragma once

#include <map>

#include <QDate>
#include <QString>

#include "qalpack/market/SpreadTable.h"

namespace qal {
class TDatabase;
}

namespace qal::tool {

struct SampleDaySettings
{
    QDate date;
    quint64 seed = 1;
    // SEHK price ladders: securities, and exchange traded products.
    TSpreadTable securities;
    TSpreadTable etp;
};

// What went into each table.
struct SampleDaySummary
{
    int users = 0;
    int entitlements = 0;
    int destinations = 0;
    int accounts = 0;
    int shortcuts = 0;
    int sehkOrders = 0;
    int hkfeOrders = 0;
    int exchangeOrders = 0;
    int trades = 0;
    int manualTrades = 0;
    int requests = 0;
    int futuresRequests = 0;
    // Client orders by their status text ("Comp", "Part", ...).
    std::map<QString, int> ordersByStatus;
};

// Writes the day into the order database's tables on `database` (created
// before, e.g. by CreateOrderSchema) in one transaction. The same date, seed
// and ladders always give the same rows. SEHK prices lie on the ladders;
// HKFE index futures trade in whole index points. Throws DatabaseError when a
// row is refused (nothing is written then).
SampleDaySummary WriteSampleDay(TDatabase& database, const SampleDaySettings& settings);

} // namespace qal::tool
