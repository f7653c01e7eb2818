// SPDX-License-Identifier: MIT
#include "qalpack/orderdb/omsSEHKManuBaseModel.h"

namespace qal {
namespace {

TOMSSEHKManuBaseList*& currentManuTrades()
{
    static TOMSSEHKManuBaseList* current = nullptr;
    return current;
}

} // namespace

TOMSSEHKManuBaseList::TOMSSEHKManuBaseList(QObject* owner)
    : TChangeNotifier(owner)
{ }

TOMSSEHKManuBaseList::~TOMSSEHKManuBaseList()
{
    if (currentManuTrades() == this)
        currentManuTrades() = nullptr;
}

TOMSSEHKManuBaseList* TOMSSEHKManuBaseList::GetInstance() noexcept
{
    return currentManuTrades();
}

void TOMSSEHKManuBaseList::SetInstance(TOMSSEHKManuBaseList* list) noexcept
{
    currentManuTrades() = list;
}

} // namespace qal
