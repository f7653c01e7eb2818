// SPDX-License-Identifier: MIT
#include "qalpack/omslib/ElHashList.h"

#include <memory>
#include <utility>

#include <QStringList>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qalpack/runtime/Exception.h"

namespace {

QStringList keysOf(const qal::TElHashList<int>& list)
{
    QStringList keys;
    for (int i = 0; i < list.Count(); ++i)
        keys.append(list.KeyByIndex(i));
    return keys;
}

TEST(TElHashList, KeepsInsertionOrderAndReplacesInPlace)
{
    qal::TElHashList<int> list;
    for (const auto& [key, value] : { std::pair { u"D003"_qs, 3 }, { u"D001"_qs, 1 }, { u"d001"_qs, 10 } })
        list.AddItem(key, value);
    list.AddItem(u"D003"_qs, 30);
    EXPECT_EQ(keysOf(list), (QStringList { u"D003"_qs, u"D001"_qs, u"d001"_qs }))
        << "keys are case-sensitive";
    EXPECT_EQ(list.GetByIndex(0), 30);
    EXPECT_EQ(*list.GetItem(u"D001"_qs), 1);
    EXPECT_EQ(list.GetItem(u"D002"_qs), nullptr);
}

TEST(TElHashList, DeleteKeepsLaterItemsReachableByKeyAndIndex)
{
    qal::TElHashList<int> list;
    for (int i = 1; i <= 4; ++i)
        list.AddItem(u"D00"_qs + QString::number(i), i);
    ASSERT_TRUE(list.DeleteItem(u"D002"_qs));
    EXPECT_FALSE(list.DeleteItem(u"D002"_qs));
    EXPECT_EQ(keysOf(list), (QStringList { u"D001"_qs, u"D003"_qs, u"D004"_qs }));
    EXPECT_EQ(*list.GetItem(u"D004"_qs), 4);
    list.AddItem(u"D004"_qs, 40);
    EXPECT_EQ(list.GetByIndex(2), 40) << "replacing a moved item hits its new position";
}

TEST(TElHashList, IndexOutOfRangeThrowsNamingIndex)
{
    using testing::HasSubstr;
    qal::TElHashList<int> list;
    list.AddItem(u"D001"_qs, 1);
    EXPECT_THAT([&] { (void)list.GetByIndex(1); }, testing::ThrowsMessage<qal::Error>(HasSubstr("index 1")));
    EXPECT_THAT(
        [&] { (void)list.KeyByIndex(-1); }, testing::ThrowsMessage<qal::Error>(HasSubstr("index -1")));
}

TEST(TElHashList, OwnsMoveOnlyValues)
{
    // Each cached value holds a copy of `token`: use_count() - 1 values are alive.
    const auto token = std::make_shared<int>();
    {
        qal::TElHashList<std::unique_ptr<std::shared_ptr<int>>> cache;
        for (const auto& alias : { u"ORDERDB"_qs, u"RISKDB"_qs, u"HISTDB"_qs, u"ORDERDB"_qs })
            cache.AddItem(alias, std::make_unique<std::shared_ptr<int>>(token));
        EXPECT_EQ(token.use_count() - 1, 3) << "the replaced value is destroyed";
        ASSERT_TRUE(cache.DeleteItem(u"RISKDB"_qs));
        EXPECT_EQ(token.use_count() - 1, 2);
        EXPECT_EQ(cache.GetItem(u"HISTDB"_qs)->get(), cache.GetByIndex(1).get());
        cache.Clear();
        EXPECT_EQ(token.use_count() - 1, 0);
        cache.AddItem(u"RISKDB"_qs, std::make_unique<std::shared_ptr<int>>(token));
    }
    EXPECT_EQ(token.use_count() - 1, 0) << "the list destroys what it still holds";
}

} // namespace
