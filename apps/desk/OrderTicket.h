// SPDX-License-Identifier: MIT
// The order ticket: the library's entry controls laid out as a dealer's
// order screen. It steps prices on the instrument's ladder and quantities by
// its board lot, offers the instructions the dealer is entitled to on the
// chosen exchange, checks the order as a host does, and saves it.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QWidget>

#include "apps/desk/Instruments.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

namespace qal {
class TAccountEdit;
class TOpenCloseSelect;
class TPriceEntryEdit;
class TPrincipalSelect;
class TQuantityEdit;
class TSymbolEntryEdit;
class TUserProfile;
class TomsOrder;
} // namespace qal

namespace qal {
namespace desk {

// Child object names, for tests and hosts' style sheets: "edtAccount",
// "cbxExchange", "edtSymbol", "edtPrice", "edtQuantity", "cbxOpenClose",
// "cbxPrincipal", "chk<property>" per instruction ("chkWFOK"), "btnBuy",
// "btnSell", "lblInstrument", "lblResult".
//
// Sending (Buy or Sell): the order is checked first. An empty account, or
// one the account box refuses, brings up "Account Invalid"; a quantity of 0
// or, outside odd-lot orders, one that is not a whole number of board lots
// brings up "The Quantity is Invalid."; a quantity above the warning size
// asks for confirmation with the order-size warning and Cancel sends
// nothing. Then the order is saved (orderSaveOrder). A saved order goes to
// the sent handler, the result line shows its number and the account is
// kept for "..". A refused save shows why on the result line and leaves
// every box as it was, so the dealer can send again.
class OrderTicket : public QWidget
{
    Q_OBJECT

public:
    using SentHandler = std::function<void(std::unique_ptr<TomsOrder> order)>;

    // `profile` is the logged-on dealer's (not owned, outlives the ticket).
    OrderTicket(TUserProfile& profile, InstrumentBook& book, QWidget* parent = nullptr);
    ~OrderTicket() override;

    void setSentHandler(SentHandler handler) { sent_ = std::move(handler); }

    // The exchange the ticket is on ("SEHK", "HKFE"); only exchanges the
    // dealer may trade are offered.
    [[nodiscard]] QString exchange() const;
    void setExchange(const QString& exchange);
    // The quantity above which the dealer is asked to confirm:
    // [CLIENT APP] QtyWarningLots of the OMS INI (default 100) board lots.
    [[nodiscard]] int warningQuantity() const;
    // Sends as the Buy (side 0) or Sell (side 1) button does; true when the
    // order was saved.
    bool send(int side);
    // The result line's text.
    [[nodiscard]] QString resultText() const;

private:
    void exchangeChanged();
    void symbolChanged(const QString& symbol);
    void rebuildInstructions();
    [[nodiscard]] bool checkOrder(int side);
    void showResult(const QString& text, bool failed);

    TUserProfile& profile_;
    InstrumentBook& book_;
    SentHandler sent_;
    Instrument instrument_;
    TAccountEdit* account_ = nullptr;
    QComboBox* exchange_ = nullptr;
    TSymbolEntryEdit* symbol_ = nullptr;
    TPriceEntryEdit* price_ = nullptr;
    TQuantityEdit* quantity_ = nullptr;
    TOpenCloseSelect* openClose_ = nullptr;
    TPrincipalSelect* principal_ = nullptr;
    QLabel* openCloseLabel_ = nullptr;
    QLabel* principalLabel_ = nullptr;
    QLabel* instrumentLabel_ = nullptr;
    QWidget* instructionBox_ = nullptr;
    std::vector<QCheckBox*> instructions_;
    QPushButton* buy_ = nullptr;
    QPushButton* sell_ = nullptr;
    QLabel* result_ = nullptr;
};

} // namespace desk
} // namespace qal
