// SPDX-License-Identifier: MIT
#include "qalpack/profile/EntitlementData.h"

namespace qal {

TEntitlement::TEntitlement(const QString& name)
    : name_(name)
{ }

TEntitlement::~TEntitlement() = default;

void TEntitlement::AddEntitle(const QString& key)
{
    keys_.Add(key);
}

void TEntitlement::AddEntitle(const TStringList& keys)
{
    // Counted and copied up front: `keys` may be this entitlement's own list.
    const int count = keys.Count();
    for (int i = 0; i < count; ++i) {
        const QString key = keys.Strings(i);
        keys_.Add(key);
    }
}

bool TEntitlement::isEntitledCheck(const QString& key) const
{
    int index = 0;
    return keys_.Find(key, index);
}

} // namespace qal
