// SPDX-License-Identifier: MIT
// The desk's publish/subscribe manager, built from configuration at start-up:
// the desk-wide bus on the order database's PostgreSQL server when the OMS
// INI names one, otherwise the in-process bus of the embedded setup.
#pragma once

#include <memory>

#include <QString>

#include "qalpack/omslib/PgSubTransport.h"
#include "qalpack/qalpack_export.h"

namespace qal {

class TsubMgr;

// The alias that carries the desk-wide bus: key "BusAlias" of section
// "OMS_LOCAL" in the shared OMS INI file, trimmed; empty when unset (or
// OMS_INI is unset).
[[nodiscard]] QALPACK_EXPORT QString DeskBusAlias();

// Builds the desk's manager; call it once at start-up, after OMS_INI is set
// and before the user logs on. It becomes TsubMgr::last(), so the
// single-logon watch of TUserProfile and every other component that hears
// live data use it without further set-up. The caller owns it and keeps it
// for the life of the desk. It is also the default publisher of the user
// profiles (TUserProfile::SetDefaultPublisher), so the watch's announcement
// of a logon, which ends the same desk elsewhere, goes out on it too.
//
// With a BusAlias, the manager runs on a TPgSubTransport over the parameter
// lines of that alias in the session's alias file (TSession::Default()),
// on a connection of its own, never the order database's; the alias's own
// lines give the user and password (or libpq's defaults: PGUSER, the
// password file). A server that cannot be reached at start-up is logged and
// retried in the background: the desk starts, its publishes throw until the
// connection is up. `options` tunes reconnection and reports its events.
// Without a BusAlias the manager is on the in-process bus.
//
// Throws qal::Error naming the alias when it is unknown or its driver is not
// POSTGRES. `name` is the manager's name (see TsubMgr).
[[nodiscard]] QALPACK_EXPORT std::unique_ptr<TsubMgr> OpenDeskBus(
    const QString& name = QString(), TPgBusOptions options = {});

} // namespace qal
