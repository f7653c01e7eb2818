// SPDX-License-Identifier: MIT
#include "qalpack/omslib/AttrObject.h"

#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/Exception.h"

namespace qal {

TAttrObject::~TAttrObject() = default;

void TAttrObject::SetAttr(const QString& name, const QString& value)
{
    if (name.isEmpty())
        throw Error(QStringLiteral("TAttrObject: an attribute needs a name (value \"%1\")").arg(value));
    if (const int index = indexOf(name); index >= 0)
        attrs_[static_cast<std::size_t>(index)].second = value;
    else
        attrs_.emplace_back(name, value);
}

QString TAttrObject::GetAttr(const QString& name, const QString& fallback) const
{
    const int index = indexOf(name);
    return index >= 0 ? attrs_[static_cast<std::size_t>(index)].second : fallback;
}

int TAttrObject::GetAttrInt(const QString& name, int fallback) const
{
    const int index = indexOf(name);
    return index >= 0 ? StrToIntDef(attrs_[static_cast<std::size_t>(index)].second, fallback) : fallback;
}

bool TAttrObject::HasAttr(const QString& name) const
{
    return indexOf(name) >= 0;
}

bool TAttrObject::RemoveAttr(const QString& name)
{
    const int index = indexOf(name);
    if (index < 0)
        return false;
    attrs_.erase(attrs_.begin() + index);
    return true;
}

QStringList TAttrObject::AttrNames() const
{
    QStringList names;
    names.reserve(AttrCount());
    for (const auto& attr : attrs_)
        names.append(attr.first);
    return names;
}

int TAttrObject::indexOf(const QString& name) const
{
    for (std::size_t i = 0; i < attrs_.size(); ++i) {
        if (attrs_[i].first.compare(name, Qt::CaseInsensitive) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

} // namespace qal
