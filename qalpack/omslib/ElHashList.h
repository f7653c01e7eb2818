// SPDX-License-Identifier: MIT
// TElHashList: a string-keyed list that keeps insertion order, with hashed
// look-up by key. Used for caches (database connections) and key sets (users).
#pragma once

#include <utility>
#include <vector>

#include <QHash>
#include <QString>

#include "qalpack/runtime/Exception.h"

namespace qal {

// Items are kept in the order they were first added and reached either by key
// (hashed) or by position. Keys are compared case-sensitively: "D001" and
// "d001" are two items. V may be move-only (std::unique_ptr<X> for a cache
// that owns its objects); the list owns its values and destroys them when
// they are replaced, deleted or cleared.
//
// Pointers and references handed out stay valid until the next AddItem of a
// new key, DeleteItem or Clear.
template<class V>
class TElHashList
{
public:
    // Adds `value` under `key` at the end. A key already present has its value
    // replaced in place: the item keeps its position and the old value is destroyed.
    void AddItem(const QString& key, V value)
    {
        if (const auto found = index_.constFind(key); found != index_.cend()) {
            items_[static_cast<std::size_t>(*found)].value = std::move(value);
            return;
        }
        items_.push_back(Item { key, std::move(value) });
        index_.insert(key, Count() - 1);
    }

    // The value under `key`, or nullptr when absent.
    [[nodiscard]] V* GetItem(const QString& key)
    {
        const auto found = index_.constFind(key);
        return found == index_.cend() ? nullptr : &items_[static_cast<std::size_t>(*found)].value;
    }
    [[nodiscard]] const V* GetItem(const QString& key) const
    {
        const auto found = index_.constFind(key);
        return found == index_.cend() ? nullptr : &items_[static_cast<std::size_t>(*found)].value;
    }

    // Removes the item under `key` and destroys its value; the items after it
    // move up one place and keep their order. False when `key` is absent.
    bool DeleteItem(const QString& key)
    {
        const auto found = index_.constFind(key);
        if (found == index_.cend())
            return false;
        const int position = *found;
        index_.erase(found);
        items_.erase(items_.begin() + position);
        for (int i = position; i < Count(); ++i)
            index_[items_[static_cast<std::size_t>(i)].key] = i;
        return true;
    }

    // The value at `index` in insertion order. Throws qal::Error naming the
    // index when it is outside 0 .. Count() - 1.
    [[nodiscard]] V& GetByIndex(int index) { return items_[checked(index)].value; }
    [[nodiscard]] const V& GetByIndex(int index) const { return items_[checked(index)].value; }

    // The key at `index` in insertion order; out of range throws as GetByIndex.
    [[nodiscard]] const QString& KeyByIndex(int index) const { return items_[checked(index)].key; }

    [[nodiscard]] int Count() const { return static_cast<int>(items_.size()); }
    [[nodiscard]] bool Contains(const QString& key) const { return index_.contains(key); }

    // Removes every item and destroys every value.
    void Clear()
    {
        index_.clear();
        items_.clear();
    }

private:
    struct Item
    {
        QString key;
        V value;
    };

    [[nodiscard]] std::size_t checked(int index) const
    {
        if (index < 0 || index >= Count())
            throw Error(
                QStringLiteral("TElHashList: index %1 out of range (count %2)").arg(index).arg(Count()));
        return static_cast<std::size_t>(index);
    }

    std::vector<Item> items_;
    QHash<QString, int> index_;
};

} // namespace qal
