// SPDX-License-Identifier: MIT
#include "qalpack/db/StoredProc.h"

#include "qalpack/db/Backend.h"
#include "qalpack/db/Database.h"
#include "qalpack/db/DatabaseError.h"

namespace qal {

TStoredProc::TStoredProc(QObject* owner)
    : QObject(owner)
{ }

TStoredProc::TStoredProc(TDatabase& database, QObject* owner)
    : QObject(owner)
{
    link_.bind(database);
}

TStoredProc::~TStoredProc() = default;

const QString& TStoredProc::DatabaseName() const
{
    return link_.name();
}

void TStoredProc::SetDatabase(TDatabase& database)
{
    link_.bind(database);
}

void TStoredProc::SetDatabaseName(const QString& name)
{
    link_.setName(name);
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
    throw DatabaseError(link_.errorName(),
        QStringLiteral("stored procedure \"%1\" has no parameter \"%2\"").arg(procName_, name.toString()));
}

void TStoredProc::ExecProc()
{
    const QString unnamed = QStringLiteral("stored procedure \"%1\" names no database").arg(procName_);
    if (link_.isName(QString()))
        throw DatabaseError(link_.errorName(), unnamed);
    if (procName_.trimmed().isEmpty())
        throw DatabaseError(link_.errorName(), QStringLiteral("no stored procedure name is set"));
    TDatabase& database = link_.open(unnamed);
    database.connection().callProcedure(procName_, params_, database);
}

} // namespace qal
