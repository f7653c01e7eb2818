/* SPDX-License-Identifier: MIT */
/* The library's plain exported functions under their undecorated names, for
 * hosts that bind them by name or from C (Python's ctypes, C#'s P/Invoke,
 * Delphi). Records are opaque handles to the C++ objects (QalOrder is a
 * qal::TomsOrder, QalExchOrder a qal::TexchOrder, QalTrade a qal::TomsTrade,
 * QalMarketInfo a qal::TmarketInfo). Callbacks take a context pointer of the
 * caller's. No exception crosses these functions: a failure returns -1 (or
 * null) and qalLastError() says why.
 *
 * Texts. Every text passed in is NUL-terminated UTF-8, unless a function
 * takes an encoding; every text handed back is NUL-terminated UTF-8 (or code
 * page 950 bytes where the caller asked for them) and is never freed by the
 * caller:
 *   - A text read from a record (a property value, the status, side, option
 *     and remark texts, the image message) belongs to the record. It stays
 *     valid until the same function is called again on the same record, or
 *     until the record is freed, whichever comes first; a property value
 *     stays valid until the same property is read again. Each function (and
 *     each property) keeps its own text, so a remark and a status, or two
 *     property values, can be printed together. Copy a text to keep it
 *     longer.
 *   - qalLastError() belongs to the calling thread and stays valid until the
 *     next call into the library on that thread.
 *   - qalVersion() is a constant.
 *
 * Application object. None is needed: a plain C main may call every function
 * here. The status, side and remark texts are then the English ones. A host
 * that wants them translated creates Qt's application object and installs
 * the translation (qalpack_zh_HK.qm) before reading them, as the desktop
 * applications do.
 *
 * Threads. The library starts none; a record is used by one thread at a time,
 * normally the host's user-interface thread. */
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

/* Encodings of a tagged message: UTF-8 as a host keeps text, or code page
 * 950 bytes as the OMS servers send them (Big5-HKSCS for the Hong Kong
 * characters 950 lacks). */
enum { QAL_UTF8 = 0, QAL_CP950 = 1 };

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

/* A new record from a tagged message ("H|0|0005.HK|4|2000|3|62.35|11|0": a
 * header token, then tag|value pairs) in the given encoding; the caller frees
 * it. Null, with the reason in qalLastError(), for a null or empty message,
 * a text without a single numeric tag, bytes that are not valid UTF-8 when
 * QAL_UTF8 is given, or an unknown encoding. Values are read as the servers'
 * messages are: a malformed number stores 0, unknown tags are skipped; a
 * line end ("\r\n" or "\n") after the last value is not part of it. */
QALPACK_EXPORT QalOrder* qalOrderFromMessage(const char* message, int encoding);
QALPACK_EXPORT QalExchOrder* qalExchOrderFromMessage(const char* message, int encoding);
QALPACK_EXPORT QalTrade* qalTradeFromMessage(const char* message, int encoding);

/* A published property by its name ("RQty", "WPrice", "RStatus": the R...,
 * W... and C... names the blotters use) as text: numbers in plain decimal
 * with a "." ("62.35", "2000"). Null, with the reason in qalLastError(), for
 * a null record or name, a name the record does not publish, or a property
 * that holds records rather than text (RChildWorkOrder). */
QALPACK_EXPORT const char* qalOrderGetProperty(QalOrder* order, const char* name);
QALPACK_EXPORT const char* qalExchOrderGetProperty(QalExchOrder* order, const char* name);
QALPACK_EXPORT const char* qalTradeGetProperty(QalTrade* trade, const char* name);

/* Sets a writable published property (WSymbol, WAccount, WPrice, CPrice,
 * WQuantity, CQuantity, WOrder_Side) from text: 0 when set. -1, with
 * qalLastError() naming the property, when the name is not published, the
 * property is read-only, or the text is not a number the property takes
 * (surrounding blanks are allowed); the record is then unchanged. Setting
 * does not notify the record's watchers. A trade publishes nothing writable. */
QALPACK_EXPORT int qalOrderSetProperty(QalOrder* order, const char* name, const char* value);
QALPACK_EXPORT int qalExchOrderSetProperty(QalExchOrder* order, const char* name, const char* value);
QALPACK_EXPORT int qalTradeSetProperty(QalTrade* trade, const char* name, const char* value);

/* The texts a blotter shows: the status ("Pend", "Part", "Comp", "Canc",
 * "Reje", ...; empty for no status), the side ("BUY", "SELL", "UNKNOWN"), the
 * order's instructions as labels ("AO;FOK;") and the remark. A client order's
 * remark is its full instruction remark ("Manual;FAK;House;" then its own
 * remark); an exchange order's is the remark it carries. Null only for a null
 * record. A trade's own remark is its property "RRemark". */
QALPACK_EXPORT const char* qalOrderStatusText(QalOrder* order);
QALPACK_EXPORT const char* qalOrderSideText(QalOrder* order);
QALPACK_EXPORT const char* qalOrderOptionText(QalOrder* order);
QALPACK_EXPORT const char* qalOrderRemark(QalOrder* order);
QALPACK_EXPORT const char* qalExchOrderStatusText(QalExchOrder* order);
QALPACK_EXPORT const char* qalExchOrderSideText(QalExchOrder* order);
QALPACK_EXPORT const char* qalExchOrderOptionText(QalExchOrder* order);
QALPACK_EXPORT const char* qalExchOrderRemark(QalExchOrder* order);
QALPACK_EXPORT const char* qalTradeStatusText(QalTrade* trade);
QALPACK_EXPORT const char* qalTradeSideText(QalTrade* trade);

/* The record written as a tagged message without header (every field
 * "tag|value|", the exchange order's fields ending with "502|TRADE|"), in the
 * given encoding; prefixing a header token such as "H|" gives a message the
 * *FromMessage functions read back into an equal record. Null, with the reason
 * in qalLastError(), for a null record, an unknown encoding, or, with
 * QAL_CP950, a character code page 950 cannot carry (an emoji: the message
 * names it as "U+1F600"). */
QALPACK_EXPORT const char* qalOrderImageMessage(QalOrder* order, int encoding);
QALPACK_EXPORT const char* qalExchOrderImageMessage(QalExchOrder* order, int encoding);
QALPACK_EXPORT const char* qalTradeImageMessage(QalTrade* trade, int encoding);

/* Free a record and every text it handed out; null is ignored. */
QALPACK_EXPORT void qalFreeOrder(QalOrder* order);
QALPACK_EXPORT void qalFreeExchOrder(QalExchOrder* order);
QALPACK_EXPORT void qalFreeTrade(QalTrade* trade);
QALPACK_EXPORT void qalFreeMarketInfo(QalMarketInfo* info);

/* The message of the last failure on this thread, UTF-8; every function that
 * can fail clears it when it succeeds. */
QALPACK_EXPORT const char* qalLastError(void);

/* The version of the loaded library, "major.minor.patch" (static storage).
 * qalpack/version.h gives the version a host was compiled against. */
QALPACK_EXPORT const char* qalVersion(void);

#ifdef __cplusplus
}
#endif

#endif
