// SPDX-License-Identifier: MIT
// The desk's main flow driven with real key and mouse events on the sample
// day: log on, fill the ticket, send, see the row; a refused save; the host
// checks of the ticket; the instructions each dealer is offered.
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include "apps/desk/DeskWindow.h"
#include "apps/desk/LogonDialog.h"
#include "apps/desk/OrderTicket.h"
#include "qalpack/controls/AcctEdit.h"
#include "qalpack/controls/PriceEntryEdit.h"
#include "qalpack/controls/QuantityEditView.h"
#include "qalpack/controls/SymbolEntryEdit.h"
#include "qalpack/forms/OrderBlotterModel.h"
#include "qalpack/model/omsData.h"
#include "tests/desk/DeskFixture.h"

namespace qal::test {
namespace {

using desk::DeskWindow;
using desk::OrderTicket;

template<class T>
T* child(QWidget& parent, const char* name)
{
    T* found = parent.findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
}

// Types into a box as a dealer does: click into it, type, leave with Tab.
void typeInto(QWidget* box, const QString& text)
{
    box->setFocus(Qt::MouseFocusReason);
    QTest::keyClicks(box, text);
    QTest::keyClick(box, Qt::Key_Tab);
}

QString cell(const TOrderBlotterModel& model, int row, int column)
{
    return model.data(model.index(row, column)).toString();
}

class DeskFlow : public SampleDesk
{
protected:
    // Logs on through the log-on dialog, picking `user` with the mouse.
    TUserProfile* logOnThroughDialog(const QString& user)
    {
        internal::ResetUserProfile();
        TUserProfile::SetCustomLogin(desk::DialogLogin());
        QTimer::singleShot(0, [user] {
            auto* dialog = qobject_cast<desk::LogonDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            QListWidget* list = dialog->userList();
            const auto items = list->findItems(user, Qt::MatchStartsWith);
            ASSERT_EQ(items.size(), 1);
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(items[0]).center());
            QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("btnLogon")), Qt::LeftButton);
        });
        TUserProfile* profile = TUserProfile::GetInstance();
        if (profile)
            installAccounts(*profile);
        return profile;
    }

    // The ticket filled as the dealer does: a shortcut, a symbol, a price
    // stepped two ticks up, a quantity with "K".
    void fillTicket(DeskWindow& window, const QString& shortcut)
    {
        typeInto(child<TAccountEdit>(window, "edtAccount"), shortcut);
        typeInto(child<TSymbolEntryEdit>(window, "edtSymbol"), QStringLiteral("5"));
        auto* price = child<TPriceEntryEdit>(window, "edtPrice");
        price->setFocus(Qt::MouseFocusReason);
        QTest::keyClicks(price, QStringLiteral("98.35"));
        QTest::keyClick(price, Qt::Key_Up);
        QTest::keyClick(price, Qt::Key_Up);
        auto* quantity = child<TQuantityEdit>(window, "edtQuantity");
        quantity->setFocus(Qt::MouseFocusReason);
        QTest::keyClicks(quantity, QStringLiteral("4K"));
    }
};

TEST_F(DeskFlow, LogOnFillTheTicketSendAndSeeTheNewRowOnTheBlotter)
{
    // GIVEN the dealer D001 logged on through the dialog, with a shortcut
    TUserProfile* profile = logOnThroughDialog(QStringLiteral("D001"));
    ASSERT_NE(profile, nullptr);
    ASSERT_EQ(profile->UserId(), QStringLiteral("D001"));
    const QString shortcut = scalar(
        QStringLiteral("select ShortCut from Account_ShortCut where User_No = 'D001' order by ShortCut"));
    const QString account = scalar(
        QStringLiteral("select Account from Account_ShortCut where User_No = 'D001' and ShortCut = '%1'")
            .arg(shortcut));
    ASSERT_FALSE(shortcut.isEmpty());
    desk::InstrumentBook instruments = book();
    DeskWindow window(*profile, instruments);
    window.show();
    QApplication::setActiveWindow(&window);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    TOrderBlotterModel& blotter = *window.blotter();
    const int before = blotter.rowCount();
    ASSERT_GT(before, 0) << "the sample day's orders";

    // WHEN the ticket is filled, FOK ticked and Buy clicked
    fillTicket(window, shortcut.toLower());
    EXPECT_EQ(child<TAccountEdit>(window, "edtAccount")->text(), account);
    EXPECT_EQ(child<TSymbolEntryEdit>(window, "edtSymbol")->getSymbolText(), QStringLiteral("0005.HK"));
    EXPECT_EQ(child<TPriceEntryEdit>(window, "edtPrice")->text(), QStringLiteral("98.45"));
    EXPECT_EQ(child<TQuantityEdit>(window, "edtQuantity")->GetValue(), 4000);
    auto* fok = child<QCheckBox>(window, "chkWFOK");
    QTest::mouseClick(fok, Qt::LeftButton);
    EXPECT_TRUE(fok->isChecked());
    QTest::mouseClick(child<QPushButton>(window, "btnBuy"), Qt::LeftButton);

    // THEN the order is saved and is the blotter's new last row
    EXPECT_TRUE(alerts_.empty()) << alerts_.front().toStdString();
    ASSERT_EQ(blotter.rowCount(), before + 1);
    const int row = before;
    const QString orderNo = cell(blotter, row, TOrderBlotterModel::ColOrderNo);
    EXPECT_FALSE(orderNo.isEmpty());
    EXPECT_EQ(cell(blotter, row, TOrderBlotterModel::ColAccount), account);
    EXPECT_EQ(cell(blotter, row, TOrderBlotterModel::ColSide), QStringLiteral("BUY"));
    EXPECT_EQ(cell(blotter, row, TOrderBlotterModel::ColSymbol), QStringLiteral("0005.HK"));
    EXPECT_EQ(cell(blotter, row, TOrderBlotterModel::ColQty), QStringLiteral("4000"));
    EXPECT_EQ(cell(blotter, row, TOrderBlotterModel::ColPrice), QStringLiteral("98.450"));
    EXPECT_EQ(cell(blotter, row, TOrderBlotterModel::ColStatus), QStringLiteral("Pend"));
    EXPECT_EQ(cell(blotter, row, TOrderBlotterModel::ColRemark), QStringLiteral("FOK;"));
    EXPECT_TRUE(window.ticket()->resultText().contains(orderNo));
    // and the database holds it as sent
    EXPECT_EQ(scalar(QStringLiteral("select Quantity from OMSTrade_File where Order_No = '%1'").arg(orderNo)),
        QStringLiteral("4000"));
}

TEST_F(DeskFlow, ARefusedSaveShowsItsFailureAndLosesNothing)
{
    TUserProfile& profile = logOn(QStringLiteral("D001"));
    desk::InstrumentBook instruments = book();
    DeskWindow window(profile, instruments);
    window.show();
    QApplication::setActiveWindow(&window);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    const int before = window.blotter()->rowCount();
    const QString account = scalar(
        QStringLiteral("select Account from Account_ShortCut where User_No = 'D001' order by ShortCut"));
    const QString shortcut = scalar(
        QStringLiteral("select ShortCut from Account_ShortCut where User_No = 'D001' order by ShortCut"));
    fillTicket(window, shortcut);

    // GIVEN an order database that refuses every new order
    database().Execute(QStringLiteral("create trigger halt_trading before insert on OMSTrade_File "
                                      "begin select raise(abort, 'trading halted'); end"));
    QTest::mouseClick(child<QPushButton>(window, "btnSell"), Qt::LeftButton);
    database().Execute(QStringLiteral("drop trigger halt_trading"));

    // THEN the failure shows, nothing joins the blotter, the ticket is intact
    EXPECT_TRUE(window.ticket()->resultText().startsWith(QStringLiteral("Order not saved:")))
        << window.ticket()->resultText().toStdString();
    EXPECT_TRUE(window.ticket()->resultText().contains(QStringLiteral("trading halted")));
    EXPECT_EQ(window.blotter()->rowCount(), before);
    EXPECT_EQ(child<TAccountEdit>(window, "edtAccount")->text(), account);
    EXPECT_EQ(child<TPriceEntryEdit>(window, "edtPrice")->text(), QStringLiteral("98.45"));
    EXPECT_EQ(child<TQuantityEdit>(window, "edtQuantity")->GetValue(), 4000);

    // and the same ticket sends once the database takes orders again
    QTest::mouseClick(child<QPushButton>(window, "btnSell"), Qt::LeftButton);
    ASSERT_EQ(window.blotter()->rowCount(), before + 1);
    EXPECT_EQ(cell(*window.blotter(), before, TOrderBlotterModel::ColSide), QStringLiteral("SELL"));
}

// The host checks before a save, one row per rule.
TEST_F(DeskFlow, TheTicketChecksTheOrderAsAHostDoes)
{
    TUserProfile& profile = logOn(QStringLiteral("D001"));
    const QString account
        = scalar(QStringLiteral("select Account from Account_File where User_No = 'D001' order by Account"));
    struct Case
    {
        const char* name;
        QString account;
        int quantity;
        QMessageBox::StandardButton answer;
        QString alert; // empty: none
        bool saved;
    };
    const QString warning
        = QStringLiteral("Order size for [0005.HK ] is more than 40000, Press OK to confirm.");
    const Case cases[] = {
        { "no account", QString(), 400, QMessageBox::Ok, QStringLiteral("Account Invalid"), false },
        { "unknown account", QStringLiteral("ZZ999"), 400, QMessageBox::Ok, QStringLiteral("Account Invalid"),
            false },
        { "zero quantity", account, 0, QMessageBox::Ok, QStringLiteral("The Quantity is Invalid."), false },
        { "not whole lots", account, 450, QMessageBox::Ok, QStringLiteral("The Quantity is Invalid."),
            false },
        { "whole lots", account, 800, QMessageBox::Ok, QString(), true },
        { "at the warning size", account, 40000, QMessageBox::Ok, QString(), true },
        { "above it, cancelled", account, 40400, QMessageBox::Cancel, warning, false },
        { "above it, confirmed", account, 40400, QMessageBox::Ok, warning, true },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        desk::InstrumentBook instruments = book();
        OrderTicket ticket(profile, instruments);
        int sent = 0;
        ticket.setSentHandler([&sent](std::unique_ptr<TomsOrder>) { ++sent; });
        child<TAccountEdit>(ticket, "edtAccount")->setText(c.account);
        auto* symbol = child<TSymbolEntryEdit>(ticket, "edtSymbol");
        symbol->settext(QStringLiteral("0005.HK"));
        child<TPriceEntryEdit>(ticket, "edtPrice")->SetValue(98.35);
        child<TQuantityEdit>(ticket, "edtQuantity")->SetValue(c.quantity);
        alerts_.clear();
        answer_ = c.answer;
        EXPECT_EQ(ticket.send(0), c.saved);
        EXPECT_EQ(sent, c.saved ? 1 : 0);
        if (c.alert.isEmpty())
            EXPECT_TRUE(alerts_.empty());
        else
            EXPECT_EQ(alerts_, std::vector<QString> { c.alert });
    }
}

// The instructions offered follow the dealer's entitlements on the market.
TEST_F(DeskFlow, InstructionsAreOfferedOnlyWhereTheDealerIsEntitled)
{
    struct Case
    {
        const char* user;
        const char* exchange;
        QStringList offered;
    };
    const Case cases[] = {
        { "D001", "SEHK", { "chkWManual", "chkWFOK" } }, // SEHKTrade, OEFOK
        { "D002", "SEHK", { "chkWManual" } }, // SEHKTrade only
        { "D009", "HKFE", { "chkWManual" } }, // HKFETrade only
        { "D012", "HKFE", { "chkWManual", "chkWFOK" } }, // HKFETrade, OEFOK
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.user);
        TUserProfile& profile = logOn(QString::fromLatin1(c.user));
        desk::InstrumentBook instruments = book();
        OrderTicket ticket(profile, instruments);
        ticket.setExchange(QString::fromLatin1(c.exchange));
        ASSERT_EQ(ticket.exchange(), QString::fromLatin1(c.exchange));
        QStringList offered;
        for (const QCheckBox* box : ticket.findChildren<QCheckBox*>())
            offered << box->objectName();
        EXPECT_EQ(offered, c.offered);
        EXPECT_EQ(child<QWidget>(ticket, "cbxOpenClose")->isVisibleTo(&ticket),
            QLatin1String(c.exchange) == QLatin1String("HKFE"));
    }
}

} // namespace
} // namespace qal::test
