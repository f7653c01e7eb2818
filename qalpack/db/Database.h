// SPDX-License-Identifier: MIT
// A connection to one database of the default session, opened through an
// alias (driver and parameter lines from the alias file) or a driver name,
// with its own "user name" and "password" lines on top. Queries and stored
// procedures reach it by its DatabaseName.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QObject>
#include <QPointer>
#include <QString>

#include "qalpack/qalpack_export.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

class TQuery;
class TStoredProc;
class TSession;

namespace backend {
class Connection;
}

class QALPACK_EXPORT TDatabase : public QObject
{
    Q_OBJECT

public:
    // Asked for the login lines ("USER NAME=...", "PASSWORD=...") before
    // connecting when LoginPrompt is on; what it leaves in the list is used.
    using TLoginEvent = std::function<void(TDatabase& database, TStringList& loginParams)>;

    // Every database belongs to the default session, which finds it by
    // DatabaseName for as long as it lives.
    explicit TDatabase(QObject* owner = nullptr);
    ~TDatabase() override;

    // The alias, driver and database name cannot change while connected
    // (DatabaseError).
    [[nodiscard]] const QString& AliasName() const;
    void SetAliasName(const QString& alias);
    // Used only without an alias: "SQLITE" or "POSTGRES", with Params as the
    // whole parameter list.
    [[nodiscard]] const QString& DriverName() const;
    void SetDriverName(const QString& driver);
    [[nodiscard]] const QString& DatabaseName() const;
    void SetDatabaseName(const QString& name);

    // "name=value" lines that override the alias's lines of the same name
    // (without regard to case), typically "user name" and "password"; an
    // empty value overrides too. Names the driver does not know fail the
    // connection.
    [[nodiscard]] TStringList& Params();
    [[nodiscard]] const TStringList& Params() const;

    // This layer shows no dialog: with LoginPrompt on, the OnLogin handler
    // (if any) supplies the login lines.
    [[nodiscard]] bool LoginPrompt() const;
    void SetLoginPrompt(bool prompt);
    void SetOnLogin(TLoginEvent handler);

    [[nodiscard]] bool Connected() const;
    void SetConnected(bool connected);
    // Connects; nothing when connected already. Throws DatabaseError naming
    // the database and the cause when the alias is unknown or a directory
    // alias, the driver or a parameter is unknown, or the server or file
    // cannot be reached; the database then stays disconnected.
    void Open();
    // Closes every query open on this database, then the connection.
    void Close();

    // Runs SQL that returns no rows (several statements allowed), connecting
    // first if needed; returns the rows the last statement changed.
    qint64 Execute(const QString& sql);

    // Fills `into` with the names of the tables this database holds (in the
    // first schema of a server's search path), connecting first if needed.
    void GetTableNames(TStringList& into);

    // Begins a transaction; throws when one is already open.
    void StartTransaction();
    // Commits the open transaction. A failed commit (the file locked by a
    // reader, the connection lost) rolls the transaction back before it
    // throws, so the connection is never left inside a dead transaction.
    void Commit();
    void Rollback();
    [[nodiscard]] bool InTransaction() const;

private:
    friend class TQuery;
    friend class TStoredProc;

    // The open connection; throws DatabaseError when not connected.
    [[nodiscard]] backend::Connection& connection();
    void attach(TQuery* query);
    void detach(TQuery* query);
    [[nodiscard]] QString errorName() const;
    void requireClosed(const char* what) const;

    QString alias_;
    QString driver_;
    QString databaseName_;
    TStringList params_;
    TLoginEvent onLogin_;
    std::unique_ptr<backend::Connection> connection_;
    std::vector<QPointer<TQuery>> openQueries_;
    bool loginPrompt_ = true;
};

} // namespace qal
