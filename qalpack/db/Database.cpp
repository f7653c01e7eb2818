// SPDX-License-Identifier: MIT
#include "qalpack/db/Database.h"

#include <algorithm>

#include "qalpack/db/Backend.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/Query.h"
#include "qalpack/db/Session.h"

namespace qal {

namespace {

// Sets the line `name=value` in `params`, replacing a line of that name
// (without regard to case) or appending one; an empty value is kept.
void overrideLine(TStringList& params, const QString& name, const QString& value)
{
    const QString line = name + u'=' + value;
    const int index = params.IndexOfName(name);
    if (index >= 0)
        params.SetStrings(index, line);
    else
        params.Add(line);
}

void overrideLines(TStringList& params, const TStringList& overrides)
{
    for (int i = 0; i < overrides.Count(); ++i) {
        const QString name = overrides.Names(i).trimmed();
        if (!name.isEmpty())
            overrideLine(params, name, overrides.ValueFromIndex(i));
    }
}

} // namespace

TDatabase::TDatabase(QObject* owner)
    : QObject(owner)
{
    TSession::Default().registerDatabase(this);
}

TDatabase::~TDatabase()
{
    Close();
}

QString TDatabase::errorName() const
{
    if (!databaseName_.isEmpty())
        return databaseName_;
    if (!alias_.isEmpty())
        return alias_;
    return driver_.isEmpty() ? QStringLiteral("(unnamed)") : driver_;
}

void TDatabase::requireClosed(const char* what) const
{
    if (connection_)
        throw DatabaseError(errorName(),
            QStringLiteral("cannot change the %1 of a connected database").arg(QLatin1String(what)));
}

const QString& TDatabase::AliasName() const
{
    return alias_;
}

void TDatabase::SetAliasName(const QString& alias)
{
    requireClosed("alias");
    alias_ = alias;
}

const QString& TDatabase::DriverName() const
{
    return driver_;
}

void TDatabase::SetDriverName(const QString& driver)
{
    requireClosed("driver");
    driver_ = driver;
}

const QString& TDatabase::DatabaseName() const
{
    return databaseName_;
}

void TDatabase::SetDatabaseName(const QString& name)
{
    requireClosed("database name");
    databaseName_ = name;
}

TStringList& TDatabase::Params()
{
    return params_;
}

const TStringList& TDatabase::Params() const
{
    return params_;
}

bool TDatabase::LoginPrompt() const
{
    return loginPrompt_;
}

void TDatabase::SetLoginPrompt(bool prompt)
{
    loginPrompt_ = prompt;
}

void TDatabase::SetOnLogin(TLoginEvent handler)
{
    onLogin_ = std::move(handler);
}

bool TDatabase::Connected() const
{
    return connection_ != nullptr;
}

void TDatabase::SetConnected(bool connected)
{
    if (connected)
        Open();
    else
        Close();
}

void TDatabase::Open()
{
    if (connection_)
        return;
    QString driver = driver_;
    TStringList params;
    if (!alias_.isEmpty()) {
        const TSession& session = TSession::Default();
        if (!session.IsAlias(alias_)) {
            throw DatabaseError(errorName(),
                QStringLiteral("unknown alias \"%1\"%2")
                    .arg(alias_,
                        session.AliasFile().isEmpty()
                            ? QStringLiteral(" (no alias file loaded)")
                            : QStringLiteral(" in \"%1\"").arg(session.AliasFile())));
        }
        driver = session.GetAliasDriverName(alias_);
        session.GetAliasParams(alias_, params);
    } else if (driver.isEmpty()) {
        throw DatabaseError(errorName(), QStringLiteral("neither an alias nor a driver is set"));
    }
    overrideLines(params, params_);

    if (loginPrompt_ && onLogin_) {
        TStringList login;
        login.Add(QStringLiteral("USER NAME=") + params.Values(QStringLiteral("USER NAME")));
        login.Add(QStringLiteral("PASSWORD=") + params.Values(QStringLiteral("PASSWORD")));
        onLogin_(*this, login);
        overrideLines(params, login);
    }

    if (driver.compare(u"STANDARD", Qt::CaseInsensitive) == 0) {
        throw DatabaseError(errorName(),
            QStringLiteral("alias \"%1\" names a directory (%2), not a database")
                .arg(alias_, params.Values(QStringLiteral("PATH"))));
    }
    connection_ = backend::openConnection(driver, params, errorName());
}

void TDatabase::Close()
{
    const std::vector<QPointer<TQuery>> queries = std::move(openQueries_);
    openQueries_.clear();
    for (const QPointer<TQuery>& query : queries) {
        if (query)
            query->Close();
    }
    connection_.reset();
}

backend::Connection& TDatabase::connection()
{
    if (!connection_)
        throw DatabaseError(errorName(), QStringLiteral("the database is not connected"));
    return *connection_;
}

void TDatabase::attach(TQuery* query)
{
    openQueries_.emplace_back(query);
}

void TDatabase::detach(TQuery* query)
{
    std::erase_if(
        openQueries_, [query](const QPointer<TQuery>& open) { return open.isNull() || open == query; });
}

qint64 TDatabase::Execute(const QString& sql)
{
    Open();
    return connection_->execute(sql, {});
}

void TDatabase::GetTableNames(TStringList& into)
{
    Open();
    into.Clear();
    for (const QString& name : connection_->tableNames())
        into.Add(name);
}

void TDatabase::StartTransaction()
{
    if (InTransaction())
        throw DatabaseError(errorName(), QStringLiteral("a transaction is already active"));
    Execute(QStringLiteral("BEGIN"));
}

void TDatabase::Commit()
{
    connection().commit();
}

void TDatabase::Rollback()
{
    connection().execute(QStringLiteral("ROLLBACK"), {});
}

bool TDatabase::InTransaction() const
{
    return connection_ && connection_->inTransaction();
}

} // namespace qal
