// SPDX-License-Identifier: MIT
#include "qalpack/db/DatabaseError.h"

namespace qal {

namespace {

QString messageOf(const QString& database, const QString& what)
{
    if (database.isEmpty())
        return what;
    return QStringLiteral("Database %1: %2").arg(database, what);
}

} // namespace

DatabaseError::DatabaseError(const QString& database, const QString& what)
    : Error(messageOf(database, what))
    , database_(database)
    , what_(what)
{ }

DatabaseError::~DatabaseError() = default;

const QString& DatabaseError::Database() const
{
    return database_;
}

const QString& DatabaseError::What() const
{
    return what_;
}

} // namespace qal
