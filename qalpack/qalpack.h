/* SPDX-License-Identifier: MIT */
/* The library's plain exported functions under their undecorated names, for
 * hosts that bind them by name or from C. Records are opaque handles to the
 * C++ objects (QalOrder is a qal::TomsOrder, QalExchOrder a qal::TexchOrder,
 * QalTrade a qal::TomsTrade, QalMarketInfo a qal::TmarketInfo). Callbacks
 * take a context pointer of the caller's. No exception crosses these
 * functions: a failure returns -1 (or null) and qalLastError() says why. */
#ifndef QALPACK_QALPACK_H
#define QALPACK_QALPACK_H

#include "qalpack/qalpack_export.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct QalOrder QalOrder;
typedef struct QalExchOrder QalExchOrder;
typedef struct QalTrade QalTrade;
typedef struct QalDatabase QalDatabase;
typedef struct QalMarketInfo QalMarketInfo;

/* Receivers take ownership of each record: free it with the matching
 * qalFree* function (or, from C++, delete the object it points to). */
typedef void (*QalOrderReceiver)(QalOrder* order, void* context);
typedef void (*QalExchOrderReceiver)(QalExchOrder* order, void* context);
typedef void (*QalTradeReceiver)(QalTrade* trade, void* context);

/* The "OMSDATA" connection, or null when it cannot be opened (qalLastError()
 * then gives the driver's reason). Not owned. */
QALPACK_EXPORT QalDatabase* orderDatabase(void);

/* The day's records in the order of their SQL; a null receiver loads and
 * frees them. 0 when loaded, -1 on a database error. */
QALPACK_EXPORT int orderLoadOrders(QalOrderReceiver receiver, void* context);
QALPACK_EXPORT int orderLoadExchOrders(QalExchOrderReceiver receiver, void* context);
QALPACK_EXPORT int orderLoadTrades(QalTradeReceiver receiver, void* context);
QALPACK_EXPORT int orderLoadManuExches(QalExchOrderReceiver receiver, void* context);
QALPACK_EXPORT int orderLoadManuTrades(QalTradeReceiver receiver, void* context);

/* Saves a new order: 0 once it is stored (its number and creation time are
 * in the order). -1 when nothing was stored: the order database cannot be
 * opened, or the save failed, in which case the order carries status -1 and
 * error code -10; qalLastError() gives the database's reason either way. */
QALPACK_EXPORT int orderSaveOrder(QalOrder* order);

/* The market information for an order (null for a null order); the caller
 * frees it with qalFreeMarketInfo. The order must outlive it. */
QALPACK_EXPORT QalMarketInfo* MarketInfoFactory(QalOrder* order);

QALPACK_EXPORT void qalFreeOrder(QalOrder* order);
QALPACK_EXPORT void qalFreeExchOrder(QalExchOrder* order);
QALPACK_EXPORT void qalFreeTrade(QalTrade* trade);
QALPACK_EXPORT void qalFreeMarketInfo(QalMarketInfo* info);

/* The message of the last failure on this thread, UTF-8, empty when none. */
QALPACK_EXPORT const char* qalLastError(void);

/* The version of the loaded library, "major.minor.patch" (static storage).
 * qalpack/version.h gives the version a host was compiled against. */
QALPACK_EXPORT const char* qalVersion(void);

#ifdef __cplusplus
}
#endif

#endif
