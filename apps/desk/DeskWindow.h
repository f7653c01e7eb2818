// SPDX-License-Identifier: MIT
// The desk's main window: the order ticket above the day's blotter. Orders
// the ticket saves join the blotter at once.
#pragma once

#include <memory>

#include <QMainWindow>

#include "apps/desk/Instruments.h"

class QTableView;

namespace qal {
class TOrderBlotterModel;
class TUserProfile;
} // namespace qal

namespace qal {
namespace desk {

class OrderTicket;

// Child object names: "OrderTicket", "tblBlotter".
class DeskWindow : public QMainWindow
{
    Q_OBJECT

public:
    // Loads the day's orders into the blotter (database errors pass to the
    // caller). `book` outlives the window.
    DeskWindow(TUserProfile& profile, InstrumentBook& book, QWidget* parent = nullptr);
    ~DeskWindow() override;

    [[nodiscard]] OrderTicket* ticket() const { return ticket_; }
    [[nodiscard]] TOrderBlotterModel* blotter() const { return blotter_; }
    [[nodiscard]] QTableView* blotterView() const { return view_; }

private:
    OrderTicket* ticket_ = nullptr;
    TOrderBlotterModel* blotter_ = nullptr;
    QTableView* view_ = nullptr;
};

} // namespace desk
} // namespace qal
