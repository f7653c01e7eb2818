// SPDX-License-Identifier: MIT
#include "qalpack/forms/OrderBlotterModel.h"

#include <stdexcept>

#include <QSignalSpy>
#include <gtest/gtest.h>

#include "qalpack/model/omsData.h"

namespace qal::test {
namespace {

std::unique_ptr<TomsOrder> makeOrder(const QString& number, int side, int status)
{
    auto order = std::make_unique<TomsOrder>();
    order->OmsOrder_No = number;
    order->Account = QStringLiteral("A1023");
    order->Side = side;
    order->Symbol = QStringLiteral("0005.HK");
    order->Quantity = 4000;
    order->Price = 98.45L;
    order->Status = status;
    order->Exch = QStringLiteral("SEHK");
    order->Order_Time501 = QStringLiteral("09:31:05");
    order->OrderOption = OptionFOK;
    return order;
}

// A loader that hands over `count` orders numbered from 1.
auto loaderOf(int count)
{
    return [count](const TOrderReceiver& receive) {
        for (int i = 1; i <= count; ++i)
            receive(makeOrder(QString::number(i), i % 2, StatusPending));
    };
}

TEST(OrderBlotterModel, CellsAreWhatTheBlotterCommandPrints)
{
    TOrderBlotterModel model;
    model.AddOrder(makeOrder(QStringLiteral("00000042"), 0, StatusPending));
    const struct
    {
        int column;
        const char* text;
    } cells[] = {
        { TOrderBlotterModel::ColOrderNo, "00000042" },
        { TOrderBlotterModel::ColAccount, "A1023" },
        { TOrderBlotterModel::ColSide, "BUY" },
        { TOrderBlotterModel::ColSymbol, "0005.HK" },
        { TOrderBlotterModel::ColQty, "4000" },
        { TOrderBlotterModel::ColPrice, "98.450" },
        { TOrderBlotterModel::ColStatus, "Pend" },
        { TOrderBlotterModel::ColFilled, "0" },
        { TOrderBlotterModel::ColRemaining, "4000" },
        { TOrderBlotterModel::ColQueued, "0" }, // a client order queues through its exchange orders
        { TOrderBlotterModel::ColExch, "SEHK" },
        { TOrderBlotterModel::ColCreated, "09:31:05" },
        { TOrderBlotterModel::ColRemark, "FOK;" },
    };
    for (const auto& c : cells) {
        SCOPED_TRACE(TOrderBlotterModel::ColumnCaption(c.column).toStdString());
        EXPECT_EQ(model.data(model.index(0, c.column)).toString(), QString::fromUtf8(c.text));
    }
    EXPECT_EQ(model.columnCount(), int(std::size(cells)));
}

TEST(OrderBlotterModel, AnUpdatedOrderRepaintsOnlyItsOwnRow)
{
    TOrderBlotterModel model;
    ASSERT_EQ(model.Load(loaderOf(5)), 5);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);

    TomsOrder* order = model.order(3);
    order->Status = StatusCancelled;
    order->NotifierUpdate();

    ASSERT_EQ(changed.size(), 1);
    EXPECT_EQ(changed[0][0].toModelIndex(), model.index(3, 0));
    EXPECT_EQ(changed[0][1].toModelIndex(), model.index(3, TOrderBlotterModel::ColumnCount - 1));
    EXPECT_EQ(model.data(model.index(3, TOrderBlotterModel::ColStatus)).toString(), QStringLiteral("Canc"));
}

TEST(OrderBlotterModel, AnAddedOrderIsInsertedLastAndWatched)
{
    TOrderBlotterModel model;
    model.Load(loaderOf(2));
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);

    const int row = model.AddOrder(makeOrder(QStringLiteral("99"), 1, StatusPending));
    model.order(row)->NotifierUpdate();

    EXPECT_EQ(row, 2);
    ASSERT_EQ(inserted.size(), 1);
    EXPECT_EQ(inserted[0][1].toInt(), 2);
    ASSERT_EQ(changed.size(), 1);
    EXPECT_EQ(changed[0][0].toModelIndex().row(), 2);
    EXPECT_EQ(model.findOrderNo(QStringLiteral("99")), 2);
    EXPECT_EQ(model.rowOf(model.order(2)), 2);
    EXPECT_EQ(model.AddOrder(nullptr), -1);
}

TEST(OrderBlotterModel, ALoadThatFailsKeepsTheRowsShown)
{
    TOrderBlotterModel model;
    model.Load(loaderOf(3));
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);

    EXPECT_THROW(model.Load([](const TOrderReceiver& receive) {
        receive(makeOrder(QStringLiteral("x"), 0, 0));
        throw std::runtime_error("connection lost");
    }),
        std::runtime_error);

    EXPECT_EQ(model.rowCount(), 3);
    EXPECT_EQ(reset.size(), 0);
    // and the kept rows are still live
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    model.order(0)->NotifierUpdate();
    EXPECT_EQ(changed.size(), 1);
}

TEST(OrderBlotterModel, RowsHaveNoSchemeColourWithNobodyLoggedOn)
{
    TOrderBlotterModel model;
    model.Load(loaderOf(2));
    EXPECT_FALSE(model.data(model.index(0, 0), Qt::BackgroundRole).isValid());
    EXPECT_EQ(
        model.data(model.index(0, TOrderBlotterModel::ColQty), Qt::TextAlignmentRole).value<Qt::Alignment>()
            & Qt::AlignRight,
        Qt::AlignRight);
}

} // namespace
} // namespace qal::test
