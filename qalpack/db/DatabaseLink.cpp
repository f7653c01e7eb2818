// SPDX-License-Identifier: MIT
#include "qalpack/db/DatabaseLink.h"

#include "qalpack/db/Database.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/Session.h"

namespace qal::internal {

const QString& DatabaseLink::name() const
{
    return database_ ? database_->DatabaseName() : name_;
}

void DatabaseLink::setName(const QString& name)
{
    name_ = name;
    database_ = nullptr;
    bound_ = false;
}

void DatabaseLink::bind(TDatabase& database)
{
    name_ = database.DatabaseName();
    database_ = &database;
    bound_ = true;
}

bool DatabaseLink::isName(const QString& name) const
{
    return !bound_ && name_ == name;
}

bool DatabaseLink::isBoundTo(const TDatabase& database) const
{
    return bound_ && database_ == &database;
}

TDatabase& DatabaseLink::open(const QString& unnamed) const
{
    if (bound_) {
        if (!database_)
            throw DatabaseError(errorName(), QStringLiteral("the database it was bound to has been deleted"));
        database_->Open();
        return *database_;
    }
    if (name_.isEmpty())
        throw DatabaseError(errorName(), unnamed);
    return TSession::Default().OpenDatabase(name_);
}

QString DatabaseLink::errorName() const
{
    const QString& current = name();
    return current.isEmpty() ? QStringLiteral("(no database name)") : current;
}

} // namespace qal::internal
