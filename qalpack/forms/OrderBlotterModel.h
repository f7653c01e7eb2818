// SPDX-License-Identifier: MIT
// TOrderBlotterModel: the day's client orders as a table for a QTableView,
// with the columns of `qal blotter`, rows tinted by side from the dealer's
// colour scheme, and rows that change in place when their order record is
// updated (TexchOrder::NotifierUpdate).
#pragma once

#include <memory>
#include <vector>

#include <QAbstractTableModel>
#include <QColor>
#include <QHash>

#include "qalpack/model/ResourceLabel.h"
#include "qalpack/orderdb/orderDB.h"
#include "qalpack/qalpack_widgets_export.h"

namespace qal {

class TexchOrder;
class TomsOrder;

// Column captions, context "OrderBlotterModel".
inline constexpr Label resBlotterOrderNo { "OrderBlotterModel",
    QT_TRANSLATE_NOOP("OrderBlotterModel", "Order No") };
inline constexpr Label resBlotterAccount { "OrderBlotterModel",
    QT_TRANSLATE_NOOP("OrderBlotterModel", "Account") };
inline constexpr Label resBlotterSide { "OrderBlotterModel", QT_TRANSLATE_NOOP("OrderBlotterModel", "Side") };
inline constexpr Label resBlotterSymbol { "OrderBlotterModel",
    QT_TRANSLATE_NOOP("OrderBlotterModel", "Symbol") };
inline constexpr Label resBlotterQty { "OrderBlotterModel", QT_TRANSLATE_NOOP("OrderBlotterModel", "Qty") };
inline constexpr Label resBlotterPrice { "OrderBlotterModel",
    QT_TRANSLATE_NOOP("OrderBlotterModel", "Price") };
inline constexpr Label resBlotterStatus { "OrderBlotterModel",
    QT_TRANSLATE_NOOP("OrderBlotterModel", "Status") };
inline constexpr Label resBlotterFilled { "OrderBlotterModel",
    QT_TRANSLATE_NOOP("OrderBlotterModel", "Filled") };
inline constexpr Label resBlotterRemaining { "OrderBlotterModel",
    QT_TRANSLATE_NOOP("OrderBlotterModel", "Remaining") };
inline constexpr Label resBlotterQueued { "OrderBlotterModel",
    QT_TRANSLATE_NOOP("OrderBlotterModel", "Queued") };
inline constexpr Label resBlotterExch { "OrderBlotterModel", QT_TRANSLATE_NOOP("OrderBlotterModel", "Exch") };
inline constexpr Label resBlotterCreated { "OrderBlotterModel",
    QT_TRANSLATE_NOOP("OrderBlotterModel", "Created") };
inline constexpr Label resBlotterRemark { "OrderBlotterModel",
    QT_TRANSLATE_NOOP("OrderBlotterModel", "Remark") };

// Colour-scheme items of the blotter rows: buys and sells.
inline constexpr char coBuyRow[] = "coBuyRow";
inline constexpr char coSellRow[] = "coSellRow";

// The model owns its orders. One row per order, in the order they were
// loaded or added; rows are never reordered here (put a
// QSortFilterProxyModel in front to sort).
//
// Cells (DisplayRole) are what `qal blotter` prints: the order number,
// account, side text (GetBuySellText), symbol, quantity, price with three
// decimals, status text (statusMessage), filled, remaining (GetRemainingQty)
// and queued (CalculateQueuQty) quantities, exchange, creation time
// (Order_Time501) and remark (GetRemark). Texts are read when the view asks,
// so a translator installed later shows at the next repaint. Numbers are
// right-aligned (TextAlignmentRole). BackgroundRole gives the colour of
// "coBuyRow" or "coSellRow" in the logged-on dealer's colour scheme, read
// once by refreshColors (at construction); nothing when nobody is logged on
// or the scheme lacks the item, so the view's palette shows.
//
// Live rows: the model registers a callback on every order it holds; when
// the order's owner applies an update and calls NotifierUpdate, the model
// emits dataChanged for that order's row, every column. An update of an order
// the model no longer holds (after clear) reaches nothing. Orders must not be
// destroyed behind the model's back: they are the model's.
class QALPACK_WIDGETS_EXPORT TOrderBlotterModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        ColOrderNo,
        ColAccount,
        ColSide,
        ColSymbol,
        ColQty,
        ColPrice,
        ColStatus,
        ColFilled,
        ColRemaining,
        ColQueued,
        ColExch,
        ColCreated,
        ColRemark,
        ColumnCount
    };

    explicit TOrderBlotterModel(QObject* parent = nullptr);
    ~TOrderBlotterModel() override;

    // Replaces the rows with every client order of the order database
    // (orderLoadOrders), in one model reset. Database errors pass to the
    // caller (DatabaseError) and leave the rows as they were. Returns the
    // number of rows.
    int LoadOrders();
    // As LoadOrders, from any loader that hands records to a receiver (a
    // user- or exchange-filtered one, or a test's).
    int Load(const std::function<void(const TOrderReceiver& receiver)>& loader);
    // Appends `order` as the last row and watches it; returns its row, or -1
    // for a null order.
    int AddOrder(std::unique_ptr<TomsOrder> order);
    // Frees every order and empties the model.
    void clear();

    // The order of `row`, or nullptr outside the rows.
    [[nodiscard]] TomsOrder* order(int row) const;
    // The row of `order`, or -1 when the model does not hold it.
    [[nodiscard]] int rowOf(const TomsOrder* order) const;
    // The row of the order numbered `orderNo`, or -1 (a linear search).
    [[nodiscard]] int findOrderNo(const QString& orderNo) const;

    // Reads the row colours of the logged-on dealer's scheme again (after a
    // log-on or a scheme change) and repaints every row.
    void refreshColors();

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // The text of one cell, as DisplayRole gives it.
    [[nodiscard]] static QString CellText(const TomsOrder& order, int column);
    // The translated caption of `column`.
    [[nodiscard]] static QString ColumnCaption(int column);

private:
    void watch(TomsOrder* order, int row);
    void orderChanged(void* data);
    void release();

    std::vector<std::unique_ptr<TomsOrder>> orders_;
    QHash<const TexchOrder*, int> rows_; // keyed as NotifierUpdate hands the record over
    QColor buyColor_;
    QColor sellColor_;
};

} // namespace qal
