// SPDX-License-Identifier: MIT
#include "qalpack/profile/DeskBus.h"

#include <utility>

#include "qalpack/db/Session.h"
#include "qalpack/omslib/omsIniFile.h"
#include "qalpack/omslib/subMgr.h"
#include "qalpack/profile/UserProfile.h"
#include "qalpack/runtime/Exception.h"

namespace qal {

QString DeskBusAlias()
{
    if (omsIniPath().isEmpty())
        return {};
    return omsIniFile()
        .ReadString(QStringLiteral("OMS_LOCAL"), QStringLiteral("BusAlias"), QString())
        .trimmed();
}

namespace {

std::unique_ptr<TsubMgr> openManager(const QString& name, TPgBusOptions options)
{
    const QString alias = DeskBusAlias();
    if (alias.isEmpty())
        return std::make_unique<TsubMgr>(name);
    TSession& session = TSession::Default();
    if (!session.IsAlias(alias))
        throw Error(
            QStringLiteral("Desk bus: [OMS_LOCAL] BusAlias names \"%1\", which is not an alias of %2")
                .arg(alias,
                    session.AliasFile().isEmpty() ? QStringLiteral("the session") : session.AliasFile()));
    const QString driver = session.GetAliasDriverName(alias);
    if (driver != u"POSTGRES")
        throw Error(
            QStringLiteral("Desk bus: alias \"%1\" has driver %2; the desk-wide bus needs a POSTGRES alias")
                .arg(alias, driver));
    return std::make_unique<TsubMgr>(
        name, std::make_unique<TPgSubTransport>(session.AliasParams(alias), alias, std::move(options)));
}

} // namespace

std::unique_ptr<TsubMgr> OpenDeskBus(const QString& name, TPgBusOptions options)
{
    std::unique_ptr<TsubMgr> manager = openManager(name, std::move(options));
    TUserProfile::SetDefaultPublisher(manager.get());
    return manager;
}

} // namespace qal
