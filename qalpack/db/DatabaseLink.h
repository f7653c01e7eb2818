// SPDX-License-Identifier: MIT
// How a query or a stored procedure reaches its database: bound to one
// TDatabase, or by its DatabaseName through the default session. A bound
// database that is deleted first leaves the link reporting an error, never a
// dangling pointer.
#pragma once

#include <QPointer>
#include <QString>

namespace qal {

class TDatabase;

namespace internal {

class DatabaseLink
{
public:
    // The bound database's current name while it lives; otherwise the name
    // given to setName (or the name the bound database had when bound).
    [[nodiscard]] const QString& name() const;
    // Links by name and drops any binding.
    void setName(const QString& name);
    // Links to `database` itself.
    void bind(TDatabase& database);
    // Whether the link is by `name` already, or bound to `database` already.
    [[nodiscard]] bool isName(const QString& name) const;
    [[nodiscard]] bool isBoundTo(const TDatabase& database) const;
    // The database, connected. Throws DatabaseError when the link names no
    // database (`unnamed` says what names none), when the bound database has
    // been deleted, or when the session cannot find or open it.
    [[nodiscard]] TDatabase& open(const QString& unnamed) const;
    // The name for error messages: "(no database name)" when there is none.
    [[nodiscard]] QString errorName() const;

private:
    QString name_;
    QPointer<TDatabase> database_;
    bool bound_ = false;
};

} // namespace internal
} // namespace qal
