// SPDX-License-Identifier: MIT
// The session "Default": the aliases read from the alias file that the OMS
// INI names, and the databases of the process, found by their DatabaseName.
// An alias is a driver (SQLITE, POSTGRES, or STANDARD for a directory of
// configuration files) and its parameter lines in file order.
#pragma once

#include <memory>
#include <vector>

#include <QPointer>
#include <QString>
#include <QStringList>

#include "qalpack/qalpack_export.h"

namespace qal {

class TDatabase;
class TStringList;

class QALPACK_EXPORT TSession
{
public:
    // The process's one session, created on first use.
    static TSession& Default();

    TSession(const TSession&) = delete;
    TSession& operator=(const TSession&) = delete;

    [[nodiscard]] QString SessionName() const;

    // Replaces every alias with those of `aliasFile`: one section per alias,
    // "DRIVER=" (SQLITE, POSTGRES or STANDARD; STANDARD when absent) and then
    // the parameter lines in order. A relative "PATH=" (any alias) or
    // "DATABASE=" (SQLITE) is made absolute against the file's directory.
    // Throws DatabaseError naming the file when it does not exist; the
    // aliases are then unchanged.
    void LoadAliases(const QString& aliasFile);
    // LoadAliases of the file named by key "AliasFile" of section
    // "OMS_LOCAL" in the OMS INI `omsIniFile` (relative to that file's
    // directory). Throws DatabaseError when the key is missing.
    void LoadAliasesFromOmsIni(const QString& omsIniFile);
    // The file the aliases came from; empty before LoadAliases.
    [[nodiscard]] const QString& AliasFile() const;

    // Adds or replaces one alias; `params` are "name=value" lines, kept as
    // given.
    void AddAlias(const QString& name, const QString& driver, const QStringList& params);
    void DeleteAlias(const QString& name);

    // Alias names match without regard to case.
    [[nodiscard]] bool IsAlias(const QString& name) const;
    [[nodiscard]] QStringList AliasNames() const;
    void GetAliasNames(TStringList& into) const;
    // The parameter lines of `alias` in order (cleared first): for a
    // directory alias the first is "PATH=<directory>". Throws DatabaseError
    // for an unknown alias.
    void GetAliasParams(const QString& alias, TStringList& into) const;
    [[nodiscard]] QStringList AliasParams(const QString& alias) const;
    // "SQLITE", "POSTGRES" or "STANDARD". Throws for an unknown alias.
    [[nodiscard]] QString GetAliasDriverName(const QString& alias) const;

    // The database whose DatabaseName is `name` (without regard to case),
    // preferring a connected one; nullptr when there is none.
    [[nodiscard]] TDatabase* FindDatabase(const QString& name) const;
    // FindDatabase, connecting it when it is not; failing that, when `name`
    // is an alias, a database of the session itself on that alias, kept open
    // until DropConnections. Throws DatabaseError when neither exists or the
    // connection fails.
    TDatabase& OpenDatabase(const QString& name);
    // Closes and frees the databases the session opened itself.
    void DropConnections();

private:
    friend class TDatabase;
    TSession();
    ~TSession();

    struct Alias
    {
        QString name;
        QString driver;
        QStringList params;
    };
    [[nodiscard]] const Alias* findAlias(const QString& name) const;
    void registerDatabase(TDatabase* database);

    std::vector<Alias> aliases_;
    QString aliasFile_;
    mutable std::vector<QPointer<TDatabase>> databases_;
    std::vector<std::unique_ptr<TDatabase>> ownDatabases_;
};

} // namespace qal
