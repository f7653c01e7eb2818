// SPDX-License-Identifier: MIT
// The abstract list of trades that dealers book by hand on the stock exchange,
// and the process-wide pointer to the current one, through which trade records
// find out whether they were booked against a client order.
#pragma once

#include <QObject>
#include <QString>

#include "qalpack/model/ChangeNotifier.h"
#include "qalpack/qalpack_export.h"

namespace qal {

class TomsSEHKManuTrade;

// The manual trades a blotter can walk, by position (in trade-number order)
// or by trade number. TOMSSEHKManuList (omsSEHKManuModel) is the working list.
class QALPACK_EXPORT TOMSSEHKManuBaseList : public TChangeNotifier
{
    Q_OBJECT

public:
    explicit TOMSSEHKManuBaseList(QObject* owner = nullptr);
    // A list that is still the current one stops being current: GetInstance
    // then returns nullptr instead of a dangling pointer.
    ~TOMSSEHKManuBaseList() override;

    [[nodiscard]] virtual int getTradeCount() const = 0;
    // The trade at `index` in trade-number order; nullptr when `index` is not
    // below getTradeCount(). A negative index throws qal::Error. The list
    // keeps the trade.
    [[nodiscard]] virtual TomsSEHKManuTrade* getTradeByIndex(int index) const = 0;
    // The trade stored under trade number `tradeNo`, or nullptr.
    [[nodiscard]] virtual TomsSEHKManuTrade* getTradeByTradeNum(const QString& tradeNo) const = 0;

    // The current list, nullptr until the host sets one.
    [[nodiscard]] static TOMSSEHKManuBaseList* GetInstance() noexcept;
    // Makes `list` current (nullptr: none). The host keeps ownership: the
    // library never frees the list.
    static void SetInstance(TOMSSEHKManuBaseList* list) noexcept;
};

} // namespace qal
