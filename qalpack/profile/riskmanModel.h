// SPDX-License-Identifier: MIT
// Risk-management parameters the order-entry screens consult: a user's CTF
// broker and account and approval limits, an account's limits and statuses,
// a symbol's restriction, all kept as text records in one keyed store.
#pragma once

#include <cstdint>
#include <memory>

#include <QString>

#include "qalpack/omslib/ElHashList.h"
#include "qalpack/qalpack_export.h"

namespace qal {

// One parameter. Created empty (State 0) when a screen first asks for it; the
// host's loader writes Value and sets State to 1 when the parameter arrives.
class QALPACK_EXPORT TRiskManRecord
{
public:
    static constexpr std::uint8_t StateNotLoaded = 0;
    static constexpr std::uint8_t StateLoaded = 1;

    QString Key; // Category, Level, Id and FieldName joined by U+0001
    std::uint8_t State = StateNotLoaded;
    QString FieldName; // "CTF_BROKER", "SELL", ...
    QString Value; // the parameter as text, written by the host
    QString Category; // "ORD" or "MARGIN"
    QString Level; // "13" user, "10" account, "0" symbol
    QString Id; // the user, account or symbol id

    // Value as a decimal number ("." separator). Not loaded: value 0 and
    // false. Loaded: true only when the whole text is a number; otherwise
    // false with the number read with trailing blanks ignored, or 0.
    [[nodiscard]] bool doubleValue(double& value) const;
    // Value as a 32-bit integer (decimal, or hexadecimal after "$" or "0x").
    // Not loaded, or not a whole integer: value 0 and false.
    [[nodiscard]] bool intValue(int& value) const;
};

// The store of every parameter asked for, keyed by Category U+0001 Level
// U+0001 Id U+0001 FieldName (parts as given, case kept). Owns its records.
class QALPACK_EXPORT TRiskManModel
{
public:
    static constexpr int LevelUser = 13;
    static constexpr int LevelAccount = 10;
    static constexpr int LevelSymbol = 0;

    TRiskManModel();
    virtual ~TRiskManModel();
    TRiskManModel(const TRiskManModel&) = delete;
    TRiskManModel& operator=(const TRiskManModel&) = delete;

    // The process-wide store the front ends below read, or nullptr until the
    // host installs one. Never creates a store.
    [[nodiscard]] static TRiskManModel* GetInstance() noexcept;
    // Installs `model` as the process-wide store, which owns it from then on
    // until it is replaced or the process ends; the store it replaces is
    // destroyed, with every record it holds (and references to them).
    // nullptr removes the store.
    static void SetInstance(std::unique_ptr<TRiskManModel> model);

    // The store key of a parameter.
    [[nodiscard]] static QString ComposeKey(
        const QString& category, int level, const QString& id, const QString& fieldName);

    // The record of a parameter, created with State 0 and its key parts when
    // absent. The reference stays valid until that record is cleared or the
    // store is cleared or destroyed.
    TRiskManRecord& GetRiskmanRecord(
        const QString& category, int level, const QString& id, const QString& fieldName);
    // Removes and frees that record; nothing happens when it is absent.
    void ClearRiskmanRecord(const QString& category, int level, const QString& id, const QString& fieldName);
    // Frees every record.
    void ClearAllRiskmanRecord();

    // The records in the order they were first asked for.
    [[nodiscard]] int Count() const { return records_.Count(); }
    [[nodiscard]] const TRiskManRecord& Record(int index) const { return *records_.GetByIndex(index); }

private:
    TElHashList<std::unique_ptr<TRiskManRecord>> records_;
};

// A user's parameters (level 13). Every getter asks the installed store,
// leaving the record there; without a store it returns the default (empty
// text, 0) and creates nothing. Values come from loaded records only.
class QALPACK_EXPORT TUserRiskManModel
{
public:
    TUserRiskManModel() = delete;

    // "ORD" "CTF_BROKER" as text.
    [[nodiscard]] static QString GetBrokerID(const QString& userId);
    // "ORD" "CTF_ACCOUNT" as text.
    [[nodiscard]] static QString GetAccountID(const QString& userId);
    // "ORD" "APPROVALLIMIT" as a number.
    [[nodiscard]] static double GetAggregateApprovalLimit(const QString& userId);
    // "ORD" "APPRLMTDW" as a number.
    [[nodiscard]] static double GetApprovalLimitLowerBound(const QString& userId);
    // "ORD" "APPRLMTUP" as a number.
    [[nodiscard]] static double GetApprovalLimitUpperBound(const QString& userId);
};

// An account's parameters (level 10). Numbers as TUserRiskManModel; a status
// is on as soon as its record is loaded, whatever its text; without a store
// every getter returns 0 or false and creates nothing.
class QALPACK_EXPORT TAccountRiskManModel
{
public:
    TAccountRiskManModel() = delete;

    // "MARGIN" "FORTHCOMELIMIT" as a number.
    [[nodiscard]] static double GetForthComeLimit(const QString& accountId);
    // "ORD" "ICL" as a number.
    [[nodiscard]] static double GetICLStatus(const QString& accountId);
    // "MARGIN" "LOTLIMIT" as a number.
    [[nodiscard]] static double GetLotLimit(const QString& accountId);
    // "ORD" "SELL" loaded: the account may only sell.
    [[nodiscard]] static bool GetSellOnlyStatus(const QString& accountId);
    // "ORD" "SUSPEND" loaded: the account is suspended.
    [[nodiscard]] static bool GetSuspendStatus(const QString& accountId);
};

// A symbol's parameters (level 0); without a store false, creating nothing.
class QALPACK_EXPORT TSymbolRiskManModel
{
public:
    TSymbolRiskManModel() = delete;

    // "ORD" "RESTRICT" loaded: the symbol is restricted.
    [[nodiscard]] static bool GetRestrictStatus(const QString& symbol);
};

} // namespace qal
