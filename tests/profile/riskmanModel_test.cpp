// SPDX-License-Identifier: MIT
// Risk parameters: the keyed store, its placeholder records for parameters
// asked before they are loaded, and the user, account and symbol front ends.
#include "qalpack/profile/riskmanModel.h"

#include <functional>
#include <memory>

#include <gtest/gtest.h>

namespace qal {
namespace {

QString keyOf(const char* category, const char* level, const QString& id, const char* field)
{
    const QChar sep(u'\x0001');
    return QString(category) + sep + level + sep + id + sep + field;
}

class RiskManModelTest : public testing::Test
{
protected:
    static TRiskManModel& installFresh()
    {
        TRiskManModel::SetInstance(std::make_unique<TRiskManModel>());
        return *TRiskManModel::GetInstance();
    }
    void TearDown() override { TRiskManModel::SetInstance(nullptr); }

    TRiskManModel& store = installFresh();
};

TEST(RiskManRecord, ConvertsLoadedValueOnly)
{
    const struct
    {
        const char* name;
        std::uint8_t state;
        QString text;
        bool doubleOk;
        double doubleValue;
        bool intOk;
        int intValue;
    } cases[] = {
        { "NotLoadedIgnoresText", 0, "12", false, 0, false, 0 },
        { "WholeNumber", 1, "12", true, 12, true, 12 },
        { "Fraction", 1, "-1234.5", true, -1234.5, false, 0 },
        { "TrailingBlankIsNotWhole", 1, "7 ", false, 7, false, 0 },
        { "TrailingText", 1, "7kg", false, 0, false, 0 },
        { "Empty", 1, "", false, 0, false, 0 },
        { "HexInteger", 1, "$1F", false, 0, true, 31 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TRiskManRecord record;
        record.State = c.state;
        record.Value = c.text;
        double d = -1;
        int i = -1;
        EXPECT_EQ(record.doubleValue(d), c.doubleOk);
        EXPECT_EQ(d, c.doubleValue);
        EXPECT_EQ(record.intValue(i), c.intOk);
        EXPECT_EQ(i, c.intValue);
    }
}

TEST_F(RiskManModelTest, RecordsAreKeyedByExactPartsAndCleared)
{
    TRiskManRecord& record = store.GetRiskmanRecord("ORD", 10, " a1", "SELL");
    EXPECT_EQ(record.Key, keyOf("ORD", "10", " a1", "SELL"));
    EXPECT_EQ(QStringList({ record.Category, record.Level, record.Id, record.FieldName }),
        QStringList({ "ORD", "10", " a1", "SELL" }));
    EXPECT_EQ(&store.GetRiskmanRecord("ORD", 10, " a1", "SELL"), &record);
    EXPECT_NE(&store.GetRiskmanRecord("ORD", 10, " A1", "SELL"), &record);
    store.ClearRiskmanRecord("ORD", 10, " a1", "SELL");
    store.ClearRiskmanRecord("ORD", 10, "absent", "SELL");
    ASSERT_EQ(store.Count(), 1);
    EXPECT_EQ(store.Record(0).Id, " A1");
    store.ClearAllRiskmanRecord();
    EXPECT_EQ(store.Count(), 0);
}

// Every front end, its record, and its answer (as text) before and after the
// record is loaded with `value`.
const struct FrontEnd
{
    const char* name;
    std::function<QString(const QString&)> ask;
    const char* category;
    const char* level;
    const char* field;
    const char* unloaded;
    const char* value;
    const char* loaded;
} kFrontEnds[] = {
    { "BrokerID", &TUserRiskManModel::GetBrokerID, "ORD", "13", "CTF_BROKER", "", "2500.5", "2500.5" },
    { "AccountID", &TUserRiskManModel::GetAccountID, "ORD", "13", "CTF_ACCOUNT", "", "2500.5", "2500.5" },
    { "AggregateApprovalLimit",
        [](auto& id) { return QString::number(TUserRiskManModel::GetAggregateApprovalLimit(id)); }, "ORD",
        "13", "APPROVALLIMIT", "0", "2500.5", "2500.5" },
    { "ApprovalLimitLowerBound",
        [](auto& id) { return QString::number(TUserRiskManModel::GetApprovalLimitLowerBound(id)); }, "ORD",
        "13", "APPRLMTDW", "0", "2500.5", "2500.5" },
    { "ApprovalLimitUpperBound",
        [](auto& id) { return QString::number(TUserRiskManModel::GetApprovalLimitUpperBound(id)); }, "ORD",
        "13", "APPRLMTUP", "0", "2500.5", "2500.5" },
    { "ForthComeLimit", [](auto& id) { return QString::number(TAccountRiskManModel::GetForthComeLimit(id)); },
        "MARGIN", "10", "FORTHCOMELIMIT", "0", "2500.5", "2500.5" },
    { "ICLStatus", [](auto& id) { return QString::number(TAccountRiskManModel::GetICLStatus(id)); }, "ORD",
        "10", "ICL", "0", "2500.5", "2500.5" },
    { "LotLimit", [](auto& id) { return QString::number(TAccountRiskManModel::GetLotLimit(id)); }, "MARGIN",
        "10", "LOTLIMIT", "0", "2500.5", "2500.5" },
    // A status is on once loaded, whatever the text ("0" included).
    { "SellOnly", [](auto& id) { return QString::number(TAccountRiskManModel::GetSellOnlyStatus(id)); },
        "ORD", "10", "SELL", "0", "0", "1" },
    { "Suspend", [](auto& id) { return QString::number(TAccountRiskManModel::GetSuspendStatus(id)); }, "ORD",
        "10", "SUSPEND", "0", "0", "1" },
    { "Restrict", [](auto& id) { return QString::number(TSymbolRiskManModel::GetRestrictStatus(id)); }, "ORD",
        "0", "RESTRICT", "0", "0", "1" },
};

TEST_F(RiskManModelTest, FrontEndReadsPlaceholderThenLoadedRecord)
{
    for (const FrontEnd& f : kFrontEnds) {
        SCOPED_TRACE(f.name);
        store.ClearAllRiskmanRecord();
        EXPECT_EQ(f.ask("X1"), f.unloaded);
        ASSERT_EQ(store.Count(), 1);
        EXPECT_EQ(store.Record(0).Key, keyOf(f.category, f.level, "X1", f.field));
        EXPECT_EQ(store.Record(0).State, TRiskManRecord::StateNotLoaded);
        TRiskManRecord& record = store.GetRiskmanRecord(f.category, QString(f.level).toInt(), "X1", f.field);
        record.Value = f.value;
        record.State = TRiskManRecord::StateLoaded;
        EXPECT_EQ(f.ask("X1"), f.loaded);
        EXPECT_EQ(store.Count(), 1);
    }
}

TEST(RiskManModel, WithoutStoreGettersGiveDefaultsAndCreateNone)
{
    for (const FrontEnd& f : kFrontEnds) {
        SCOPED_TRACE(f.name);
        EXPECT_EQ(f.ask("X1"), f.unloaded);
    }
    EXPECT_EQ(TRiskManModel::GetInstance(), nullptr);
}

TEST(RiskManModel, InstallingStoreFreesThePrevious)
{
    TRiskManModel::SetInstance(std::make_unique<TRiskManModel>());
    TRiskManModel::GetInstance()->GetRiskmanRecord("ORD", 10, "A1", "SELL").State
        = TRiskManRecord::StateLoaded;
    EXPECT_TRUE(TAccountRiskManModel::GetSellOnlyStatus("A1"));
    TRiskManModel::SetInstance(std::make_unique<TRiskManModel>());
    EXPECT_FALSE(TAccountRiskManModel::GetSellOnlyStatus("A1"));
    TRiskManModel::SetInstance(nullptr);
}

} // namespace
} // namespace qal
