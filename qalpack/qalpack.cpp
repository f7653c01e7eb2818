// SPDX-License-Identifier: MIT
#include "qalpack/qalpack.h"

#include <memory>
#include <string>

#include "qalpack/db/Database.h"
#include "qalpack/market/MarketInfo.h"
#include "qalpack/model/exchData.h"
#include "qalpack/model/omsData.h"
#include "qalpack/orderdb/orderDB.h"
#include "qalpack/runtime/Exception.h"
#include "qalpack/version.h"

namespace {

thread_local std::string lastError;

// The opaque handles are the C++ objects themselves.
qal::TomsOrder* cpp(QalOrder* order)
{
    return reinterpret_cast<qal::TomsOrder*>(order);
}

template<class Handle, class Record>
Handle* handle(std::unique_ptr<Record> record)
{
    return reinterpret_cast<Handle*>(record.release());
}

// Runs `body` and turns any exception into -1 and a message for qalLastError.
template<class Body>
int guarded(Body&& body) noexcept
{
    try {
        lastError.clear();
        body();
        return 0;
    } catch (const std::exception& e) {
        lastError = e.what();
    } catch (...) {
        lastError = "unknown error";
    }
    return -1;
}

template<class Handle, class Record>
auto receiverFor(void (*receiver)(Handle*, void*), void* context)
{
    return [receiver, context](std::unique_ptr<Record> record) {
        if (receiver)
            receiver(handle<Handle>(std::move(record)), context);
    };
}

} // namespace

extern "C" {

QalDatabase* orderDatabase(void)
{
    QalDatabase* result = nullptr;
    guarded([&] { result = reinterpret_cast<QalDatabase*>(&qal::RequireOrderDatabase()); });
    return result;
}

int orderLoadOrders(QalOrderReceiver receiver, void* context)
{
    return guarded([&] { qal::orderLoadOrders(receiverFor<QalOrder, qal::TomsOrder>(receiver, context)); });
}

int orderLoadExchOrders(QalExchOrderReceiver receiver, void* context)
{
    return guarded(
        [&] { qal::orderLoadExchOrders(receiverFor<QalExchOrder, qal::TexchOrder>(receiver, context)); });
}

int orderLoadTrades(QalTradeReceiver receiver, void* context)
{
    return guarded([&] { qal::orderLoadTrades(receiverFor<QalTrade, qal::TomsTrade>(receiver, context)); });
}

int orderLoadManuExches(QalExchOrderReceiver receiver, void* context)
{
    return guarded(
        [&] { qal::orderLoadManuExches(receiverFor<QalExchOrder, qal::TexchOrder>(receiver, context)); });
}

int orderLoadManuTrades(QalTradeReceiver receiver, void* context)
{
    return guarded(
        [&] { qal::orderLoadManuTrades(receiverFor<QalTrade, qal::TomsTrade>(receiver, context)); });
}

int orderSaveOrder(QalOrder* order)
{
    if (order == nullptr) {
        lastError = "orderSaveOrder: no order";
        return -1;
    }
    return guarded([&] {
        qal::TomsOrder& saved = *cpp(order);
        qal::orderSaveOrder(saved);
        if (saved.ErrorCode == qal::TomsOrder::kSaveFailed)
            throw qal::Error(saved.Message);
    });
}

QalMarketInfo* MarketInfoFactory(QalOrder* order)
{
    if (order == nullptr)
        return nullptr;
    QalMarketInfo* result = nullptr;
    guarded([&] { result = handle<QalMarketInfo>(qal::MarketInfoFactory(*cpp(order))); });
    return result;
}

void qalFreeOrder(QalOrder* order)
{
    delete cpp(order);
}

void qalFreeExchOrder(QalExchOrder* order)
{
    delete reinterpret_cast<qal::TexchOrder*>(order);
}

void qalFreeTrade(QalTrade* trade)
{
    delete reinterpret_cast<qal::TomsTrade*>(trade);
}

void qalFreeMarketInfo(QalMarketInfo* info)
{
    delete reinterpret_cast<qal::TmarketInfo*>(info);
}

const char* qalLastError(void)
{
    return lastError.c_str();
}

const char* qalVersion(void)
{
    return QALPACK_VERSION_STRING;
}

} // extern "C"
