// SPDX-License-Identifier: MIT
// The plain exported functions as a C host calls them: opaque handles,
// callbacks with a context, and failures as -1 with a message, never an
// exception across the boundary.
#include "qalpack/qalpack.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "qalpack/market/MarketInfo.h"
#include "qalpack/model/omsData.h"

namespace {

TEST(PlainExports, MarketInfoFactoryHandsOverAnObjectToFree)
{
    EXPECT_EQ(MarketInfoFactory(nullptr), nullptr);
    qal::TomsOrder order;
    order.Exch = QStringLiteral("HKFE");
    QalMarketInfo* info = MarketInfoFactory(reinterpret_cast<QalOrder*>(&order));
    ASSERT_NE(info, nullptr);
    EXPECT_NE(qobject_cast<qal::HKFEinfo*>(reinterpret_cast<qal::TmarketInfo*>(info)), nullptr);
    qalFreeMarketInfo(info);
}

TEST(PlainExports, FailuresComeBackAsMinusOneWithAMessage)
{
    EXPECT_EQ(orderSaveOrder(nullptr), -1);
    EXPECT_STRNE(qalLastError(), "");

    // No order database configured: the loader reports, it does not throw.
    QTemporaryDir dir;
    qputenv("OMS_INI", dir.filePath(QStringLiteral("missing.ini")).toUtf8());
    int received = 0;
    const int rc = orderLoadOrders(
        [](QalOrder* order, void* context) {
            ++*static_cast<int*>(context);
            qalFreeOrder(order);
        },
        &received);
    EXPECT_EQ(rc, -1);
    EXPECT_EQ(received, 0);
    EXPECT_STRNE(qalLastError(), "");
}

} // namespace
