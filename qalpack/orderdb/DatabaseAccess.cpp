// SPDX-License-Identifier: MIT
#include "qalpack/orderdb/DatabaseAccess.h"

#include <exception>
#include <map>
#include <memory>

#include "qalpack/db/Database.h"
#include "qalpack/db/Session.h"
#include "qalpack/omslib/DatabaseSetting.h"
#include "qalpack/omslib/ElHashList.h"
#include "qalpack/omslib/omsIniFile.h"
#include "qalpack/runtime/Exception.h"
#include "qalpack/runtime/IniFile.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

namespace {

// The login the desk has always used when nothing else is configured.
QString defaultUser()
{
    return QStringLiteral("sa");
}

// The unit's state. The data module owns the connections; the cache only
// points at them. The redirection map holds "LOGICAL NAME=data-map key".
struct DatabaseAccessState
{
    std::unique_ptr<TOmsDM> dmOms;
    TElHashList<TDatabase*> DbHash;
    TStringList redirectDBMap;
    // Upper-cased logical name to the message of its last failed open.
    std::map<QString, QString> openErrors;
};

DatabaseAccessState& state()
{
    // The session must outlive the data module: its connections are closed
    // when the data module goes at process exit.
    (void)TSession::Default();
    static DatabaseAccessState instance;
    return instance;
}

} // namespace

namespace internal {

void ResetDatabaseAccess()
{
    DatabaseAccessState& unit = state();
    unit.DbHash.Clear();
    unit.dmOms.reset();
    unit.redirectDBMap.Clear();
    unit.openErrors.clear();
}

} // namespace internal

TOmsDM::TOmsDM()
{
    setObjectName(QStringLiteral("OmsDM"));
}

TOmsDM::~TOmsDM() = default;

TOmsDM* TOmsDM::GetInstance()
{
    DatabaseAccessState& unit = state();
    if (!unit.dmOms)
        unit.dmOms.reset(new TOmsDM);
    return unit.dmOms.get();
}

TDatabase* TOmsDM::GetDatabase(const QString& name)
{
    DatabaseAccessState& unit = state();
    const QString cacheKey = name.toUpper();
    if (TDatabase* const* cached = unit.DbHash.GetItem(cacheKey))
        return *cached;

    QString connectionName = cacheKey;
    QString user = defaultUser();
    QString password;
    auto* database = new TDatabase(this);
    unit.DbHash.AddItem(cacheKey, database);

    // The data map and DSN keys are read from the shared OMS INI, the file
    // the application profile reads, straight through the OMS library: the
    // connection layer sits below the profiles that use it.
    const TIniFile omsIni = omsIniFile();
    const auto setting = [&omsIni](const QString& section, const QString& key) {
        return omsIni.ReadString(section, key, QString());
    };
    QString mapKey = unit.redirectDBMap.Values(cacheKey);
    if (mapKey.isEmpty())
        mapKey = setting(QStringLiteral("OMS_DATAMAP"), cacheKey);
    if (!mapKey.isEmpty()) {
        QString alias;
        if (GetDatabaseSetting(alias, user, password, mapKey)) {
            connectionName = alias;
            AddDataMap(alias, mapKey);
        } else if (const QString dsnSource = setting(mapKey, QStringLiteral("DSN_Source"));
                   !dsnSource.isEmpty()) {
            connectionName = dsnSource;
            AddDataMap(dsnSource, mapKey);
            user = setting(mapKey, QStringLiteral("DSN_user"));
            password = setting(mapKey, QStringLiteral("DSN_password"));
        }
    }
    // A password without a user is never sent: the desk logs on as "sa".
    if (user.isEmpty()) {
        user = defaultUser();
        password.clear();
    }

    try {
        database->SetAliasName(connectionName);
        // Both lines are always present so that they override the alias's
        // own login lines, an empty password included.
        database->Params().Clear();
        database->Params().Add(QStringLiteral("user name=") + user);
        database->Params().Add(QStringLiteral("password=") + password);
        database->SetDatabaseName(connectionName + QStringLiteral("DB"));
        database->SetLoginPrompt(false);
        database->SetConnected(true);
    } catch (const Error& error) {
        return forget(cacheKey, database, error.message());
    } catch (const std::exception& error) {
        return forget(cacheKey, database, QString::fromLocal8Bit(error.what()));
    }
    unit.openErrors.erase(cacheKey);
    return database;
}

// An unreachable database is not thrown at the caller: it gets nullptr, the
// reason is kept for OpenError, and the next request starts afresh.
TDatabase* TOmsDM::forget(const QString& cacheKey, TDatabase* database, const QString& why)
{
    DatabaseAccessState& unit = state();
    unit.DbHash.DeleteItem(cacheKey);
    delete database;
    unit.openErrors[cacheKey] = why;
    return nullptr;
}

QString TOmsDM::OpenError(const QString& name) const
{
    const DatabaseAccessState& unit = state();
    const auto found = unit.openErrors.find(name.toUpper());
    return found == unit.openErrors.end() ? QString() : found->second;
}

void TOmsDM::AddDataMap(const QString& name, const QString& mapKey)
{
    TStringList& redirect = state().redirectDBMap;
    const QString key = name.toUpper();
    if (redirect.Values(key).isEmpty())
        redirect.SetValue(key, mapKey);
}

} // namespace qal
