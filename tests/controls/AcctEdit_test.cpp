// SPDX-License-Identifier: MIT
// The account box driven as a dealer drives it: shortcuts and partial IDs
// turned into account IDs on leaving, "..", the refusal of an account the
// dealer may not trade for, and the Account Explorer opened with "." or the
// button and worked modally. The odd cases run on a small model in memory;
// the dealer's whole flow runs on the sample trading day through the
// database model, on SQLite and PostgreSQL.
#include "qalpack/controls/AcctEdit.h"

#include <functional>

#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

#include "qalpack/profile/DbAccountModel.h"
#include "tests/support/AccountDesk.h"
#include "tests/support/MemoryAccountModel.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/WidgetForm.h"

namespace qal {
namespace {

using test::AccountDeskTest;
using test::Driver;
using test::whenExplorerShown;

// D001 may trade for its own and D002's accounts, not D003's. Shortcuts:
// D001 "1" -> C001, "X" -> C003; D002 "1" -> C002.
class AcctEditTest : public AccountDeskTest
{
protected:
    void SetUp() override
    {
        AccountDeskTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        exec("insert into User_File (User_No, Full_name, AdminUser, member, DummyAc, Active) values "
             "('D001', 'Dealer One', 0, 'D002', '', TRUE), ('D002', 'Dealer Two', 0, '', '', TRUE), "
             "('D003', 'Dealer Three', 0, '', '', TRUE)");
        model.add("C001", "D001", "CHAN TAI MAN");
        model.add("C002", "D001", "ABLE WONG");
        model.add("C003", "D002", "ALPHA LEE");
        model.add("C901", "D003", "HIDDEN HO");
        model.setCurrentUserID("D001");
        model.addShortCut("D001", "1", "C001");
        model.addShortCut("D001", "X", "C003");
        model.addShortCut("D002", "1", "C002");
        TAccountModel::SetInstance(&model);
        logOn("D001");
    }

    test::MemoryAccountModel model;
};

TEST_P(AcctEditTest, LeavingTheBoxTurnsTheTextIntoAnAccountOrRefusesIt)
{
    const struct
    {
        const char* name;
        const char* typed;
        QString saved;
        QString shown;
        bool refused;
    } rows[] = {
        { "ShortcutOfTheDealer", "1", "", "C001", false },
        { "ShortcutLetterCaseIgnored", "x", "", "C003", false },
        { "AccountIDAsTyped", "c002", "", "C002", false },
        { "OnlyIDThatBeginsSo", "C00", "", "C00", true }, // three IDs begin so
        { "UniqueStartCompletes", "C9", "", "C901", true }, // D003's: refused
        { "UnknownRefused", "ZZZ", "", "ZZZ", true },
        { "TwoDotsRecallTheSavedAccount", "..", "C002", "C002", false },
        { "TwoDotsWithNothingSavedEmpty", "..", "", "", false },
        { "EmptyAccepted", "", "", "", false },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        alerts.clear();
        test::WidgetForm<TAccountEdit> form;
        ASSERT_TRUE(form.active);
        if (!row.saved.isEmpty()) {
            form.box->setText(row.saved);
            form.box->SaveAccountId();
        }
        form.box->clear();
        QSignalSpy finished(form.box, &QLineEdit::editingFinished);
        form.enter();
        form.type(QString::fromLatin1(row.typed));
        form.leave();

        EXPECT_EQ(form.box->text(), row.shown);
        EXPECT_EQ(form.box->hasFocus(), row.refused) << "a refused account keeps the focus";
        if (row.refused) {
            EXPECT_EQ(finished.count(), 0) << "the host's exit handling is skipped";
        } else if (*row.typed != '\0') {
            EXPECT_EQ(finished.count(), 1);
        }
        ASSERT_EQ(alerts.size(), row.refused ? 1u : 0u);
        if (row.refused) {
            EXPECT_EQ(alerts[0].text, "Account Invalid.");
            EXPECT_EQ(alerts[0].title, "System Alert");
            EXPECT_EQ(alerts[0].icon, QMessageBox::Critical);
            EXPECT_EQ(alerts[0].buttons, QMessageBox::Ok);
            EXPECT_EQ(alerts[0].owner, form.box);
        }
    }
}

TEST_P(AcctEditTest, ValidationCanBeTurnedOffAndNeedsALoggedOnDealer)
{
    test::WidgetForm<TAccountEdit> form;
    form.box->setValidateOnExit(false);
    form.enter();
    form.type("C901");
    form.leave();
    EXPECT_FALSE(form.box->hasFocus());
    EXPECT_TRUE(alerts.empty());
    EXPECT_FALSE(form.box->ValidateAccountId());

    form.box->setText("C001");
    EXPECT_TRUE(form.box->ValidateAccountId());
    internal::ResetUserProfile();
    EXPECT_FALSE(form.box->ValidateAccountId()) << "nobody logged on";
}

TEST_P(AcctEditTest, EnterAndTabNeverType)
{
    test::WidgetForm<TAccountEdit> form;
    form.enter();
    form.type("c1");
    QTest::keyClick(form.box, Qt::Key_Return);
    EXPECT_EQ(form.box->text(), "C1");
    EXPECT_TRUE(form.box->hasFocus());
    EXPECT_TRUE(alerts.empty()) << "Enter is not leaving the box";
}

TEST_P(AcctEditTest, DotThenEnterOpensTheExplorerAndCancelLeavesTheBoxEmpty)
{
    test::WidgetForm<TAccountEdit> form;
    QSignalSpy browsed(form.box, &TAccountEdit::browse);
    bool panelShown = true;
    whenExplorerShown([&](TAccountListView& explorer) {
        panelShown = explorer.ShortcutPanelShown();
        QTest::keyClick(explorer.searchBox(), Qt::Key_Escape);
    });
    form.enter();
    form.type(".");
    QTest::keyClick(form.box, Qt::Key_Return);

    EXPECT_EQ(browsed.count(), 1);
    EXPECT_FALSE(panelShown) << "the account box opens it without the shortcut panel";
    EXPECT_EQ(form.box->text(), "");
    EXPECT_TRUE(alerts.empty());
}

TEST_P(AcctEditTest, DoubleClickInTheExplorerPutsTheAccountInTheBox)
{
    using Form = test::WidgetForm<TAccountEdit>;
    const struct
    {
        const char* name;
        std::function<void(Form&)> open;
    } rows[] = {
        { "DotThenLeaving",
            [](Form& form) {
                form.enter();
                form.type(".");
                form.leave();
            } },
        { "BrowseButton", [](Form& form) { QTest::mouseClick(form.box->browseButton(), Qt::LeftButton); } },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Form form;
        QSignalSpy browsed(form.box, &TAccountEdit::browse);
        whenExplorerShown([](TAccountListView& explorer) {
            const QRect second = explorer.grid()->visualRect(explorer.grid()->model()->index(1, 0));
            QTest::mouseClick(explorer.grid()->viewport(), Qt::LeftButton, {}, second.center());
            QTest::mouseDClick(explorer.grid()->viewport(), Qt::LeftButton, {}, second.center());
        });
        row.open(form);
        EXPECT_EQ(form.box->text(), "C001") << "ABLE WONG, CHAN TAI MAN: the second row";
        EXPECT_EQ(browsed.count(), 1);
        EXPECT_TRUE(alerts.empty());
    }
}

INSTANTIATE_TEST_SUITE_P(Desk, AcctEditTest, testing::Values(Driver::Sqlite), test::driverName);

// A dealer's morning on the sample trading day.
class AcctEditDealerTest : public AccountDeskTest
{
};

TEST_P(AcctEditDealerTest, DealerTypesAShortcutPicksByNameAndIsStoppedOnAnotherTeamsAccount)
{
    writeSampleDay();
    logOn("D001");
    TDbAccountModel model;
    model.setCurrentUserID("D001");
    TAccountModel::SetInstance(&model);
    test::WidgetForm<TAccountEdit> form;
    ASSERT_TRUE(form.active);

    // Entering the box selects its text, so what the dealer types replaces it.
    const auto retype = [&form](const char* text) {
        form.enter();
        QTest::keyClicks(form.box, QString::fromLatin1(text));
    };

    // GIVEN D001's shortcut "2", WHEN typed and left, THEN its account shows.
    retype("2");
    form.leave();
    EXPECT_EQ(form.box->text(), "A1012");
    EXPECT_TRUE(alerts.empty());

    // WHEN "." and Enter, then the start of a name and Enter in the explorer.
    whenExplorerShown([](TAccountListView& explorer) {
        QTest::keyClicks(explorer.searchBox(), "chan");
        QTest::keyClick(explorer.searchBox(), Qt::Key_Return);
    });
    retype(".");
    QTest::keyClick(form.box, Qt::Key_Return);
    EXPECT_EQ(form.box->text(), "A1001") << "CHAN Tai Man";
    EXPECT_TRUE(alerts.empty());
    // The offscreen platform gives no window the focus back when a modal
    // dialog closes; a desktop's window manager does.
    form.form.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form.form));

    // The order is sent: ".." recalls the account.
    form.box->SaveAccountId();
    form.leave();
    retype("..");
    form.leave();
    EXPECT_EQ(form.box->text(), "A1001");

    // WHEN an account of D003, whom D001 may not access.
    retype("A1003");
    form.leave();
    EXPECT_EQ(form.box->text(), "A1003");
    EXPECT_TRUE(form.box->hasFocus()) << "the focus stays in the box";
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(alerts[0].text, "Account Invalid.");
    EXPECT_EQ(alerts[0].title, "System Alert");
}

INSTANTIATE_TEST_SUITE_P(
    Drivers, AcctEditDealerTest, testing::Values(Driver::Sqlite, Driver::Postgres), test::driverName);

} // namespace
} // namespace qal
