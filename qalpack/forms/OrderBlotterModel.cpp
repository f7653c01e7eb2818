// SPDX-License-Identifier: MIT
#include "qalpack/forms/OrderBlotterModel.h"

#include "qalpack/feedback/EntryFeedback.h"
#include "qalpack/model/exchData.h"
#include "qalpack/model/omsData.h"
#include "qalpack/runtime/Format.h"

namespace qal {

TOrderBlotterModel::TOrderBlotterModel(QObject* parent)
    : QAbstractTableModel(parent)
{
    buyColor_ = EntryColor(QString::fromLatin1(coBuyRow));
    sellColor_ = EntryColor(QString::fromLatin1(coSellRow));
}

TOrderBlotterModel::~TOrderBlotterModel()
{
    release();
}

// Orders go before the hash that finds their rows, and their callbacks with
// them, so nothing can reach a half-destroyed model.
void TOrderBlotterModel::release()
{
    orders_.clear();
    rows_.clear();
}

int TOrderBlotterModel::LoadOrders()
{
    return Load([](const TOrderReceiver& receiver) { orderLoadOrders(receiver); });
}

int TOrderBlotterModel::Load(const std::function<void(const TOrderReceiver& receiver)>& loader)
{
    // Loaded aside first, so that a loader that fails half way leaves the
    // blotter the dealer was looking at.
    std::vector<std::unique_ptr<TomsOrder>> loaded;
    loader([&loaded](std::unique_ptr<TomsOrder> order) {
        if (order)
            loaded.push_back(std::move(order));
    });
    beginResetModel();
    release();
    orders_ = std::move(loaded);
    rows_.reserve(qsizetype(orders_.size()));
    for (std::size_t row = 0; row < orders_.size(); ++row)
        watch(orders_[row].get(), int(row));
    endResetModel();
    return int(orders_.size());
}

int TOrderBlotterModel::AddOrder(std::unique_ptr<TomsOrder> order)
{
    if (!order)
        return -1;
    const int row = int(orders_.size());
    beginInsertRows(QModelIndex(), row, row);
    watch(order.get(), row);
    orders_.push_back(std::move(order));
    endInsertRows();
    return row;
}

void TOrderBlotterModel::clear()
{
    beginResetModel();
    release();
    endResetModel();
}

void TOrderBlotterModel::watch(TomsOrder* order, int row)
{
    rows_.insert(static_cast<const TexchOrder*>(order), row);
    order->RegisterCallback([this](void* data, void*) { orderChanged(data); }, this);
}

void TOrderBlotterModel::orderChanged(void* data)
{
    const auto found = rows_.constFind(static_cast<const TexchOrder*>(data));
    if (found == rows_.constEnd())
        return;
    emit dataChanged(index(*found, 0), index(*found, ColumnCount - 1));
}

TomsOrder* TOrderBlotterModel::order(int row) const
{
    return row >= 0 && std::size_t(row) < orders_.size() ? orders_[std::size_t(row)].get() : nullptr;
}

int TOrderBlotterModel::rowOf(const TomsOrder* order) const
{
    return order ? rows_.value(static_cast<const TexchOrder*>(order), -1) : -1;
}

int TOrderBlotterModel::findOrderNo(const QString& orderNo) const
{
    for (std::size_t row = 0; row < orders_.size(); ++row) {
        if (orders_[row]->OmsOrder_No == orderNo)
            return int(row);
    }
    return -1;
}

void TOrderBlotterModel::refreshColors()
{
    buyColor_ = EntryColor(QString::fromLatin1(coBuyRow));
    sellColor_ = EntryColor(QString::fromLatin1(coSellRow));
    if (!orders_.empty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1), { Qt::BackgroundRole });
}

int TOrderBlotterModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(orders_.size());
}

int TOrderBlotterModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QString TOrderBlotterModel::CellText(const TomsOrder& o, int column)
{
    switch (column) {
    case ColOrderNo:
        return o.OmsOrder_No;
    case ColAccount:
        return o.Account;
    case ColSide:
        return o.GetBuySellText();
    case ColSymbol:
        return o.Symbol;
    case ColQty:
        return QString::number(o.Quantity);
    case ColPrice:
        return FixedText(double(o.Price), 3);
    case ColStatus:
        return o.statusMessage();
    case ColFilled:
        return QString::number(o.Fill_Qty);
    case ColRemaining:
        return QString::number(o.GetRemainingQty());
    case ColQueued:
        return QString::number(o.CalculateQueuQty());
    case ColExch:
        return o.Exch;
    case ColCreated:
        return o.Order_Time501;
    case ColRemark:
        return o.GetRemark();
    default:
        return QString();
    }
}

QString TOrderBlotterModel::ColumnCaption(int column)
{
    static constexpr const Label* captions[ColumnCount]
        = { &resBlotterOrderNo, &resBlotterAccount, &resBlotterSide, &resBlotterSymbol, &resBlotterQty,
              &resBlotterPrice, &resBlotterStatus, &resBlotterFilled, &resBlotterRemaining, &resBlotterQueued,
              &resBlotterExch, &resBlotterCreated, &resBlotterRemark };
    return column >= 0 && column < ColumnCount ? (*captions[column])() : QString();
}

QVariant TOrderBlotterModel::data(const QModelIndex& index, int role) const
{
    const TomsOrder* o = order(index.row());
    if (!o || index.column() < 0 || index.column() >= ColumnCount)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return CellText(*o, index.column());
    case Qt::TextAlignmentRole: {
        const int c = index.column();
        const bool number
            = c == ColQty || c == ColPrice || c == ColFilled || c == ColRemaining || c == ColQueued;
        return QVariant::fromValue(
            Qt::Alignment(Qt::AlignVCenter | (number ? Qt::AlignRight : Qt::AlignLeft)));
    }
    case Qt::BackgroundRole: {
        const QColor& colour = o->Side == 0 ? buyColor_ : (o->Side == 1 ? sellColor_ : QColor());
        return colour.isValid() ? QVariant(colour) : QVariant();
    }
    default:
        return {};
    }
}

QVariant TOrderBlotterModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return ColumnCaption(section);
    return QAbstractTableModel::headerData(section, orientation, role);
}

} // namespace qal
