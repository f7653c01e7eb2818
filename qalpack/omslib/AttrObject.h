// SPDX-License-Identifier: MIT
// TAttrObject: named attributes that a subscriber, a transport or a host tags
// an object with ("Owner=blotter", "Channel=SEHK"), read back as text or as a
// number.
#pragma once

#include <utility>
#include <vector>

#include <QString>
#include <QStringList>

#include "qalpack/qalpack_export.h"

namespace qal {

// Attributes in the order they were first set. Names are compared without
// regard to case, as INI keys are; values are kept as given. Copyable.
class QALPACK_EXPORT TAttrObject
{
public:
    TAttrObject() = default;
    virtual ~TAttrObject();
    TAttrObject(const TAttrObject&) = default;
    TAttrObject& operator=(const TAttrObject&) = default;
    TAttrObject(TAttrObject&&) noexcept = default;
    TAttrObject& operator=(TAttrObject&&) noexcept = default;

    // Sets `name` to `value` (an empty value is a value, not a removal); a
    // name already present keeps its place and its first spelling. Throws
    // qal::Error for an empty name.
    void SetAttr(const QString& name, const QString& value);
    // The value of `name`, or `fallback` when there is none.
    [[nodiscard]] QString GetAttr(const QString& name, const QString& fallback = QString()) const;
    // The value read leniently as a whole number; `fallback` when missing or
    // not a number.
    [[nodiscard]] int GetAttrInt(const QString& name, int fallback = 0) const;
    [[nodiscard]] bool HasAttr(const QString& name) const;
    // False when there is no such attribute.
    bool RemoveAttr(const QString& name);
    void ClearAttrs() noexcept { attrs_.clear(); }

    [[nodiscard]] int AttrCount() const noexcept { return static_cast<int>(attrs_.size()); }
    // The names in order, spelt as first set.
    [[nodiscard]] QStringList AttrNames() const;

private:
    [[nodiscard]] int indexOf(const QString& name) const;

    std::vector<std::pair<QString, QString>> attrs_;
};

} // namespace qal
