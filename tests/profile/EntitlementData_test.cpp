// SPDX-License-Identifier: MIT
// Entitlement look-up: a binary search over the keys in the order they were
// added, so only keys handed over in ascending order are reliably found.
#include "qalpack/profile/EntitlementData.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace qal {
namespace {

TEST(Entitlement, AnswersByBinarySearchOverKeysAsAdded)
{
    const QStringList ascending { "HKFETrade", "OEAO", "OEEnhanced", "OEFAK", "OEFOK", "OEGoodtillWeek",
        "OEMarketOrder", "OEOddLot", "OEOpenC", "OEPrin", "OEShortS", "OEStopL", "SEHKTrade" };
    const QStringList descending { "SEHKTrade", "OEAO", "HKFETrade" };
    const struct
    {
        const char* name;
        QStringList keys;
        QString question;
        bool entitled;
    } cases[] = {
        { "FirstKey", ascending, "HKFETrade", true },
        { "LastKey", ascending, "SEHKTrade", true },
        { "LowerCaseQuestion", ascending, "oefok", true },
        { "KeyNotGranted", ascending, "OEIOC", false },
        { "EmptyEntitlement", {}, "SEHKTrade", false },
        // Keys out of order: the search walks past all but the middle one.
        { "OutOfOrderFirstKeyMissed", descending, "SEHKTrade", false },
        { "OutOfOrderMiddleKeyFound", descending, "OEAO", true },
        { "OutOfOrderLastKeyMissed", descending, "HKFETrade", false },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TEntitlement entitlement("D001");
        for (const QString& key : c.keys)
            entitlement.AddEntitle(key);
        EXPECT_EQ(entitlement.isEntitledCheck(c.question), c.entitled);
    }
}

TEST(Entitlement, ListIsAppendedInItsOwnOrderNeverSorted)
{
    TEntitlement entitlement("D001");
    entitlement.AddEntitle("OEFOK");
    TStringList more;
    more.SetCommaText("SEHKTrade,HKFETrade");
    entitlement.AddEntitle(more);
    entitlement.AddEntitle(entitlement.Keys());
    EXPECT_EQ(entitlement.Keys().CommaText(), "OEFOK,SEHKTrade,HKFETrade,OEFOK,SEHKTrade,HKFETrade");
}

} // namespace
} // namespace qal
