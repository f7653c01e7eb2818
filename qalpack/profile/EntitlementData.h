// SPDX-License-Identifier: MIT
// The function keys one user is entitled to: trading on a market
// ("SEHKTrade", "HKFETrade") and order-entry instructions ("OEFOK", "OEAO",
// ...). The host fills it; screens and market information ask it.
#pragma once

#include <QString>

#include "qalpack/qalpack_export.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

// The keys are kept in the order they were added and looked up by binary
// search, not case-sensitively. The list is never sorted here, so the host
// must add the keys in ascending case-insensitive order ("HKFETrade",
// "OEAO", "OEFOK", ..., "SEHKTrade"); a key added out of order may not be
// found.
class QALPACK_EXPORT TEntitlement
{
public:
    // An empty entitlement of `name` (the owner, typically a user id).
    explicit TEntitlement(const QString& name = QString());
    virtual ~TEntitlement();
    TEntitlement(const TEntitlement&) = delete;
    TEntitlement& operator=(const TEntitlement&) = delete;
    TEntitlement(TEntitlement&&) noexcept = default;
    TEntitlement& operator=(TEntitlement&&) noexcept = default;

    // Appends one key; duplicates are kept.
    void AddEntitle(const QString& key);
    // Appends every string of `keys`, in their order; `keys` may be Keys().
    void AddEntitle(const TStringList& keys);

    // Whether `key` is found by a case-insensitive binary search over the
    // keys as added; false for an empty entitlement.
    [[nodiscard]] bool isEntitledCheck(const QString& key) const;

    [[nodiscard]] const QString& Name() const noexcept { return name_; }
    [[nodiscard]] const TStringList& Keys() const noexcept { return keys_; }

private:
    TStringList keys_;
    QString name_;
};

} // namespace qal
