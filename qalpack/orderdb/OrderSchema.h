// SPDX-License-Identifier: MIT
// The order database's tables and its "sp_insert_new_order" procedure, put in
// place on SQLite or PostgreSQL from the SQL scripts built into the library,
// and the small maintenance around them (row counts, emptying the tables).
#pragma once

#include <vector>

#include <QString>
#include <QStringList>

#include "qalpack/qalpack_export.h"

namespace qal {

class TDatabase;

// The tables of the order database, in the order they are created:
// OMSTrade_File, Exch_File, Trans_File, omsREQ, mftsorder_state (orders,
// exchange orders, trades, requests, futures request states), User_File,
// AccountEntitle, orsconfig (users, entitlements, exchange destinations),
// Account_File, Account_ShortCut (accounts and dealers' shortcuts).
//
// Constraints that make a save fail (the server's error comes back and no
// part of the order is written): OMSTrade_File.Account and Symbol NOT NULL
// and not empty, OMSTrade_File.Quantity NOT NULL and above 0, Order_No
// unique. The scripts under db/sqlite and db/postgres list every column.
[[nodiscard]] QALPACK_EXPORT const QStringList& OrderSchemaTables();

// "SQLITE" or "POSTGRES": the driver of `database`'s alias, or its
// DriverName when it has no alias, in upper case. Throws DatabaseError for an
// alias the default session does not know.
[[nodiscard]] QALPACK_EXPORT QString OrderDatabaseDriver(const TDatabase& database);

// Creates whatever is missing of the order database on `database`
// (connecting it first): the tables with their keys, constraints and
// indexes, and the order numbering. An existing table is left as it is, with
// its rows. Running it again changes nothing.
//
// The procedure "sp_insert_new_order": on PostgreSQL a function in the first
// schema of the search path (created or replaced); on SQLite the embedded
// procedure, registered for every SQLite database of the process
// (RegisterOrderProcedures). Both take the parameters of its STORPROC.INI
// section ("@m_account", ...; the "@" is optional), leave out what the
// caller does not set (numbers default to 0, "@m_status" to "Pend",
// "@m_operatorflag" to "C", texts to null), keep an order number given in
// "@m_order_no" and otherwise hand out the next free one as eight digits
// ("00000042"), and return it in "@m_order_no" with the creation time in
// "@m_createtime". The order is written in one transaction: when the insert
// fails, the error is raised and nothing of the order stays.
//
// Runs in one transaction of its own, or in the caller's when one is open.
// Throws DatabaseError when the database cannot be opened or refuses the
// script (nothing is created then), qal::Error for a driver other than
// SQLITE or POSTGRES.
QALPACK_EXPORT void CreateOrderSchema(TDatabase& database);

// Registers the embedded "sp_insert_new_order" for every SQLite database of
// the process (replacing an earlier registration). CreateOrderSchema does it;
// a program that opens an existing embedded order database calls it (once is
// enough) before saving orders.
QALPACK_EXPORT void RegisterOrderProcedures();
// The same, only when no procedure of that name is registered yet: what
// orderSaveOrder does, so that saving works on an existing embedded database
// and a host's (or a test's) own registration stays.
QALPACK_EXPORT void EnsureOrderProcedures();

struct TOrderTableRows
{
    QString table;
    qint64 rows = 0;
};

// The number of rows of every table of OrderSchemaTables that exists on
// `database`, in that order (missing tables are left out). Throws
// DatabaseError when the database cannot be read.
[[nodiscard]] QALPACK_EXPORT std::vector<TOrderTableRows> OrderTableRowCounts(TDatabase& database);

// Deletes every row of the order database's tables that exist and starts
// the order numbering again from 1, in one transaction. Throws DatabaseError
// when the database refuses; nothing is deleted then.
QALPACK_EXPORT void ClearOrderData(TDatabase& database);

} // namespace qal
