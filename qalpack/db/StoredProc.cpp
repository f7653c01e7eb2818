// SPDX-License-Identifier: MIT
#include "qalpack/db/StoredProc.h"

#include "qalpack/db/Backend.h"
#include "qalpack/db/Database.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/Session.h"

namespace qal {

TStoredProc::TStoredProc(QObject* owner)
    : QObject(owner)
{ }

TStoredProc::~TStoredProc() = default;

const QString& TStoredProc::DatabaseName() const
{
    return databaseName_;
}

void TStoredProc::SetDatabaseName(const QString& name)
{
    databaseName_ = name;
}

const QString& TStoredProc::StoredProcName() const
{
    return procName_;
}

void TStoredProc::SetStoredProcName(const QString& name)
{
    procName_ = name;
}

TParams& TStoredProc::Params()
{
    return params_;
}

TParam& TStoredProc::ParamByName(QStringView name)
{
    if (TParam* param = params_.FindParam(name))
        return *param;
    throw DatabaseError(databaseName_,
        QStringLiteral("stored procedure \"%1\" has no parameter \"%2\"").arg(procName_, name.toString()));
}

void TStoredProc::ExecProc()
{
    if (databaseName_.isEmpty())
        throw DatabaseError(QStringLiteral("(no database name)"),
            QStringLiteral("stored procedure \"%1\" names no database").arg(procName_));
    if (procName_.trimmed().isEmpty())
        throw DatabaseError(databaseName_, QStringLiteral("no stored procedure name is set"));
    TDatabase& database = TSession::Default().OpenDatabase(databaseName_);
    database.connection().callProcedure(procName_, params_, database);
}

} // namespace qal
