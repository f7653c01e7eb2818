// SPDX-License-Identifier: MIT
#include "qalpack/profile/riskmanModel.h"

#include <cmath>

#include "qalpack/runtime/Convert.h"

namespace qal {
namespace {

constexpr QChar kKeySeparator(u'\x0001');

std::unique_ptr<TRiskManModel>& instanceSlot()
{
    static std::unique_ptr<TRiskManModel> instance;
    return instance;
}

// The record a front end reads, or nullptr when no store is installed.
const TRiskManRecord* askStore(const char* category, int level, const QString& id, const char* fieldName)
{
    TRiskManModel* const model = TRiskManModel::GetInstance();
    if (!model)
        return nullptr;
    return &model->GetRiskmanRecord(QString::fromLatin1(category), level, id, QString::fromLatin1(fieldName));
}

QString textOf(const TRiskManRecord* record)
{
    return record && record->State == TRiskManRecord::StateLoaded ? record->Value : QString();
}

double numberOf(const TRiskManRecord* record)
{
    double value = 0;
    if (record)
        (void)record->doubleValue(value);
    return value;
}

bool isOn(const TRiskManRecord* record)
{
    return record && record->State == TRiskManRecord::StateLoaded;
}

} // namespace

bool TRiskManRecord::doubleValue(double& value) const
{
    value = 0;
    if (State != StateLoaded)
        return false;
    long double parsed = 0;
    if (!TryStrToFloat(Value, parsed))
        return false;
    const double narrowed = static_cast<double>(parsed);
    if (!std::isfinite(narrowed)) // beyond the range of a double
        return false;
    value = narrowed;
    // Blanks after the number are not part of a whole number.
    return Value.back().unicode() > u' ';
}

bool TRiskManRecord::intValue(int& value) const
{
    value = 0;
    return State == StateLoaded && TryStrToInt(Value, value);
}

TRiskManModel::TRiskManModel() = default;

TRiskManModel::~TRiskManModel() = default;

TRiskManModel* TRiskManModel::GetInstance() noexcept
{
    return instanceSlot().get();
}

void TRiskManModel::SetInstance(std::unique_ptr<TRiskManModel> model)
{
    // The new store is installed before the old one, now in `model`, is freed.
    instanceSlot().swap(model);
}

QString TRiskManModel::ComposeKey(
    const QString& category, int level, const QString& id, const QString& fieldName)
{
    return category + kKeySeparator + QString::number(level) + kKeySeparator + id + kKeySeparator + fieldName;
}

TRiskManRecord& TRiskManModel::GetRiskmanRecord(
    const QString& category, int level, const QString& id, const QString& fieldName)
{
    const QString key = ComposeKey(category, level, id, fieldName);
    if (std::unique_ptr<TRiskManRecord>* found = records_.GetItem(key))
        return **found;
    auto record = std::make_unique<TRiskManRecord>();
    record->Key = key;
    record->FieldName = fieldName;
    record->Category = category;
    record->Level = QString::number(level);
    record->Id = id;
    TRiskManRecord& added = *record;
    records_.AddItem(key, std::move(record));
    return added;
}

void TRiskManModel::ClearRiskmanRecord(
    const QString& category, int level, const QString& id, const QString& fieldName)
{
    (void)records_.DeleteItem(ComposeKey(category, level, id, fieldName));
}

void TRiskManModel::ClearAllRiskmanRecord()
{
    records_.Clear();
}

QString TUserRiskManModel::GetBrokerID(const QString& userId)
{
    return textOf(askStore("ORD", TRiskManModel::LevelUser, userId, "CTF_BROKER"));
}

QString TUserRiskManModel::GetAccountID(const QString& userId)
{
    return textOf(askStore("ORD", TRiskManModel::LevelUser, userId, "CTF_ACCOUNT"));
}

double TUserRiskManModel::GetAggregateApprovalLimit(const QString& userId)
{
    return numberOf(askStore("ORD", TRiskManModel::LevelUser, userId, "APPROVALLIMIT"));
}

double TUserRiskManModel::GetApprovalLimitLowerBound(const QString& userId)
{
    return numberOf(askStore("ORD", TRiskManModel::LevelUser, userId, "APPRLMTDW"));
}

double TUserRiskManModel::GetApprovalLimitUpperBound(const QString& userId)
{
    return numberOf(askStore("ORD", TRiskManModel::LevelUser, userId, "APPRLMTUP"));
}

double TAccountRiskManModel::GetForthComeLimit(const QString& accountId)
{
    return numberOf(askStore("MARGIN", TRiskManModel::LevelAccount, accountId, "FORTHCOMELIMIT"));
}

double TAccountRiskManModel::GetICLStatus(const QString& accountId)
{
    return numberOf(askStore("ORD", TRiskManModel::LevelAccount, accountId, "ICL"));
}

double TAccountRiskManModel::GetLotLimit(const QString& accountId)
{
    return numberOf(askStore("MARGIN", TRiskManModel::LevelAccount, accountId, "LOTLIMIT"));
}

bool TAccountRiskManModel::GetSellOnlyStatus(const QString& accountId)
{
    return isOn(askStore("ORD", TRiskManModel::LevelAccount, accountId, "SELL"));
}

bool TAccountRiskManModel::GetSuspendStatus(const QString& accountId)
{
    return isOn(askStore("ORD", TRiskManModel::LevelAccount, accountId, "SUSPEND"));
}

bool TSymbolRiskManModel::GetRestrictStatus(const QString& symbol)
{
    return isOn(askStore("ORD", TRiskManModel::LevelSymbol, symbol, "RESTRICT"));
}

} // namespace qal
