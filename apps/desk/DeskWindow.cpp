// SPDX-License-Identifier: MIT
#include "apps/desk/DeskWindow.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QSplitter>
#include <QStatusBar>
#include <QTableView>

#include "apps/desk/OrderTicket.h"
#include "qalpack/forms/OrderBlotterModel.h"
#include "qalpack/model/omsData.h"
#include "qalpack/profile/UserProfile.h"

namespace qal {
namespace desk {

DeskWindow::DeskWindow(TUserProfile& profile, InstrumentBook& book, QWidget* parent)
    : QMainWindow(parent)
{
    setObjectName(QStringLiteral("DeskWindow"));
    setWindowTitle(QCoreApplication::translate("DeskWindow", "Order Desk - %1 %2")
                       .arg(profile.UserId(), profile.FullName()));

    auto* splitter = new QSplitter(Qt::Vertical, this);
    // The ticket keeps a form's width at the left; the blotter takes the rest.
    auto* top = new QWidget(splitter);
    auto* row = new QHBoxLayout(top);
    ticket_ = new OrderTicket(profile, book, top);
    ticket_->setMaximumWidth(640);
    row->addWidget(ticket_);
    row->addStretch();
    blotter_ = new TOrderBlotterModel(this);
    blotter_->LoadOrders();
    view_ = new QTableView(splitter);
    view_->setObjectName(QStringLiteral("tblBlotter"));
    view_->setModel(blotter_);
    view_->setSelectionBehavior(QAbstractItemView::SelectRows);
    view_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view_->verticalHeader()->hide();
    view_->verticalHeader()->setDefaultSectionSize(view_->fontMetrics().height() + 6);
    view_->horizontalHeader()->setStretchLastSection(true);
    view_->resizeColumnsToContents();
    splitter->addWidget(top);
    splitter->addWidget(view_);
    splitter->setStretchFactor(1, 1);
    setCentralWidget(splitter);

    // A saved order becomes the blotter's last row, shown and selected.
    ticket_->setSentHandler([this](std::unique_ptr<TomsOrder> order) {
        const int row = blotter_->AddOrder(std::move(order));
        view_->scrollToBottom();
        view_->selectRow(row);
    });
    statusBar()->showMessage(QCoreApplication::translate("DeskWindow", "Logged on as %1 (%2 orders today)")
                                 .arg(profile.UserId())
                                 .arg(blotter_->rowCount()));
    resize(1100, 720);
}

DeskWindow::~DeskWindow() = default;

} // namespace desk
} // namespace qal
