// SPDX-License-Identifier: MIT
// The Account Explorer driven with real keys and clicks: the columns the desk
// settings choose, the user it opens on, title clicks that sort, the
// incremental search over the sorted column, closing, shortcuts, moved
// columns and the process-wide instance. Odd cases run on a small model in
// memory; the listing and the shortcut writes run on the sample trading day
// through the database model, on SQLite and PostgreSQL.
#include "qalpack/forms/AcctListView.h"

#include <functional>
#include <memory>

#include <QAbstractItemModel>
#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

#include "qalpack/profile/DbAccountModel.h"
#include "tests/support/AccountDesk.h"
#include "tests/support/MemoryAccountModel.h"
#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

using test::AccountDeskTest;
using test::Driver;

// The grid's texts of one column, top to bottom.
QStringList columnTexts(const TAccountListView& view, int column = 0)
{
    QStringList texts;
    const QAbstractItemModel* const model = view.grid()->model();
    for (int row = 0; row < model->rowCount(); ++row)
        texts << model->index(row, column).data().toString();
    return texts;
}

QString currentRowId(const TAccountListView& view)
{
    const QModelIndex current = view.grid()->currentIndex();
    return current.isValid() ? current.siblingAtColumn(0).data().toString() : QString();
}

// Clicks the title of the column showing `field`.
void clickTitle(TAccountListView& view, TAccountStringField field)
{
    QHeaderView* const header = view.grid()->horizontalHeader();
    for (int logical = 0; logical < header->count(); ++logical) {
        const int visual = header->visualIndex(logical);
        if (view.ColumnMap()[std::size_t(visual)] == field) {
            const QPoint at(header->sectionViewportPosition(logical) + header->sectionSize(logical) / 2,
                header->height() / 2);
            QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, at);
            return;
        }
    }
    ADD_FAILURE() << "no column shows field " << int(field);
}

// Clicks grid row `row` (1 for the first account).
void clickRow(TAccountListView& view, int row)
{
    const QRect cell = view.grid()->visualRect(view.grid()->model()->index(row - 1, 0));
    QTest::mouseClick(view.grid()->viewport(), Qt::LeftButton, {}, cell.center());
}

// Dealers D001 and D002 see each other's accounts; D003's are hidden from
// them. Two accounts share the name "CHAN TAI MAN".
class ExplorerTest : public AccountDeskTest
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
        model.add("C001", "D001", "CHAN TAI MAN", "Tai Man", "CL-1").Fax = "2444 0001";
        model.add("C002", "D001", "ABLE WONG");
        model.add("C003", "D002", "ALPHA LEE");
        model.add("C004", "D002", "AMY CHU");
        model.add("C005", "D001", "BOB HO");
        model.add("C006", "D002", "CHAN TAI MAN");
        model.add("C009", "D003", "ALAN HIDDEN");
        model.setCurrentUserID("D001");
        model.addShortCut("D001", "1", "C001");
        model.addShortCut("D001", "AB", "C002");
        TAccountModel::SetInstance(&model);
    }

    // Logs D001 on with these desk settings and shows a new explorer.
    std::unique_ptr<TAccountListView> showExplorer(const QString& settings = QString())
    {
        writeDeskSettings(settings);
        internal::ResetUserProfile();
        logOn("D001");
        auto view = std::make_unique<TAccountListView>();
        view->setShortcutPanelShown(true);
        view->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(view.get()));
        return view;
    }

    test::MemoryAccountModel model;
};

TEST_P(ExplorerTest, ColumnsFollowTheDesksClientIdAndHouseSettings)
{
    const struct
    {
        const char* name;
        const char* settings;
        QString key;
        std::vector<TAccountStringField> columns;
        QString faxTitle;
    } rows[] = {
        { "OneDigitIsPadded", "FieldClientID=7", "field07",
            { afAcctId, afAcctName, afChineseName, afClientID, afDayPhone, afHomePhone, afMobile, afFax,
                afShortCut },
            "Fax" },
        { "TwoDigitsAsTheyAre", "FieldClientID=12", "field12",
            { afAcctId, afAcctName, afChineseName, afClientID, afDayPhone, afHomePhone, afMobile, afFax,
                afShortCut },
            "Fax" },
        { "NotANumberNoColumn", "FieldClientID=x7", "",
            { afAcctId, afAcctName, afChineseName, afDayPhone, afHomePhone, afMobile, afFax, afShortCut },
            "Fax" },
        { "HouseModeTitlesFaxID", "FieldClientID=\npositionView=vem", "",
            { afAcctId, afAcctName, afChineseName, afDayPhone, afHomePhone, afMobile, afFax, afShortCut },
            "ID" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto view = showExplorer(QString::fromLatin1(row.settings));
        EXPECT_EQ(view->ClientIdKey(), row.key);
        EXPECT_EQ(view->ColumnMap(), row.columns);

        const QAbstractItemModel* const grid = view->grid()->model();
        QStringList titles;
        for (int column = 0; column < grid->columnCount(); ++column)
            titles << grid->headerData(column, Qt::Horizontal).toString();
        EXPECT_EQ(titles.first(), "Account ID");
        EXPECT_EQ(titles.at(int(row.columns.size()) - 2), row.faxTitle);
        const int c001 = int(columnTexts(*view).indexOf("C001"));
        ASSERT_GE(c001, 0);
        EXPECT_EQ(grid->index(c001, int(row.columns.size()) - 2).data().toString(), "2444 0001")
            << "the fax column shows the fax whatever its title";
        if (row.key == "field07") {
            EXPECT_EQ(grid->index(c001, 3).data().toString(), "CL-1") << "from the custom information";
        }
    }
}

TEST_P(ExplorerTest, OpensOnTheUserTheDeskSettingsChoose)
{
    const struct
    {
        const char* name;
        const char* settings;
        int userIndex;
        QString user;
        QStringList accounts; // sorted by name; the two "CHAN TAI MAN" last
        int loads;
    } rows[] = {
        { "ShowAllWhenSettingSaysYes", "ACCOUNTSHOWALL=yes", -1, "<SHOW ALL>",
            { "C002", "C003", "C004", "C005", "C001", "C006" }, 0 },
        { "OwnAccountsOtherwise", "ACCOUNTSHOWALL=No", -1, "D001", { "C002", "C005", "C001" }, 1 },
        { "CallersUserIndexFirst", "ACCOUNTSHOWALL=yes", 2, "D002", { "C003", "C004", "C006" }, 1 },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        model.loads = 0;
        TAccountListView::SetUserIndex(row.userIndex);
        const auto view = showExplorer(QString::fromLatin1(row.settings));
        TAccountListView::SetUserIndex(-1);

        QStringList items;
        for (int i = 0; i < view->userBox()->count(); ++i)
            items << view->userBox()->itemText(i);
        EXPECT_EQ(items, QStringList({ "<SHOW ALL>", "D001", "D002" })) << "D003 is not accessible";
        EXPECT_EQ(view->userBox()->currentText(), row.user);
        QStringList ids = columnTexts(*view);
        EXPECT_EQ(QSet<QString>(ids.end() - 2, ids.end()),
            QSet<QString>(row.accounts.end() - 2, row.accounts.end()));
        EXPECT_EQ(ids.mid(0, ids.size() - 2), row.accounts.mid(0, row.accounts.size() - 2));
        EXPECT_EQ(model.loads, row.loads) << "a user's accounts are loaded before listing";
    }
}

TEST_P(ExplorerTest, UserPickedInTheBoxRelists)
{
    const auto view = showExplorer();
    QComboBox* const users = view->userBox();
    users->setFocus();
    QTest::keyClick(users, Qt::Key_Down); // D001 -> D002
    EXPECT_EQ(users->currentText(), "D002");
    const QStringList ids = columnTexts(*view);
    EXPECT_EQ(QSet<QString>(ids.begin(), ids.end()), (QSet<QString> { "C003", "C004", "C006" }));
}

TEST_P(ExplorerTest, TitleClicksSortFlipOnTheSameColumnAndKeepTheOrderOnAnother)
{
    const auto view = showExplorer();
    clickRow(*view, 2); // BOB HO
    ASSERT_EQ(view->SelectedAccountId(), "C005");

    const struct
    {
        const char* name;
        TAccountStringField click;
        bool descending;
        QStringList ids;
    } steps[] = {
        { "AnotherColumnKeepsAscending", afAcctId, false, { "C001", "C002", "C005" } },
        { "SameColumnFlips", afAcctId, true, { "C005", "C002", "C001" } },
        { "AnotherColumnKeepsDescending", afAcctName, true, { "C001", "C005", "C002" } },
        { "SameColumnFlipsBack", afAcctName, false, { "C002", "C005", "C001" } },
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.name);
        clickTitle(*view, step.click);
        EXPECT_EQ(view->SortField(), step.click);
        EXPECT_EQ(view->SortOrder(), step.descending);
        EXPECT_EQ(columnTexts(*view), step.ids);
        EXPECT_EQ(view->SelectedAccountId(), "C005") << "the selection is found again by ID";
        EXPECT_EQ(currentRowId(*view), "C005");
        EXPECT_TRUE(view->searchBox()->hasFocus());
    }

    view->hide();
    view->show();
    EXPECT_EQ(currentRowId(*view), "C005") << "the pick survives a new showing";
}

TEST_P(ExplorerTest, TypingSelectsTheLastMatchOfTheSortedColumn)
{
    const struct
    {
        const char* name;
        std::vector<TAccountStringField> clicks;
        const char* typed;
        QString selected; // empty: the last grid row's account
    } rows[] = {
        { "LastOfSeveralNames", {}, "a", "C004" },
        { "LongerStartNarrows", {}, "al", "C003" },
        { "DescendingOrderLastIsFirstName", { afAcctName }, "a", "C002" },
        { "FollowsTheSortedColumn", { afAcctId }, "c00", "C006" },
        { "EqualNamesLastShownRowWins", {}, "chan", "" },
        { "NoMatchKeepsTheSelection", {}, "z", "C002" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto view = showExplorer(QStringLiteral("ACCOUNTSHOWALL=Y"));
        for (TAccountStringField field : row.clicks)
            clickTitle(*view, field);
        view->searchBox()->clear();
        QTest::keyClicks(view->searchBox(), QString::fromLatin1(row.typed));

        const QString expected = row.selected.isEmpty() ? columnTexts(*view).last() : row.selected;
        EXPECT_EQ(view->searchBox()->text(), QString::fromLatin1(row.typed).toUpper());
        EXPECT_EQ(view->SelectedAccountId(), expected);
        EXPECT_EQ(currentRowId(*view), expected);
        EXPECT_EQ(view->findChild<QLabel*>("SelectedAccountID")->text(), expected);
        EXPECT_EQ(view->statusPanel()->text(), "Account Selected: " + expected);
    }
}

TEST_P(ExplorerTest, SearchComparesInCapitalsWhateverTheNamesLetters)
{
    model.add("C007", "D001", QString::fromUtf8("émile ho"));
    model.add("C008", "D001", QString::fromUtf8("straße lee"));
    model.add("C010", "D001", "bobby lo");
    const struct
    {
        const char* name;
        QString typed;
        QString selected;
    } rows[] = {
        { "LowerCaseNameMatchesCapitals", "bob", "C010" }, // after "BOB HO" in ordinal order
        { "AccentedLetter", QString::fromUtf8("é"), "C007" }, { "SharpSBecomesSS", "strasse", "C008" },
        { "PastTheEndOfANameKeepsItsMatch", "bob ho and more", "C005" }, // matched up to "BOB HO"
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto view = showExplorer();
        for (const QChar c : row.typed) {
            // QTest types ASCII only; a dealer's keyboard sends the letter.
            QKeyEvent press(QEvent::KeyPress, c.unicode() < 0x80 ? QTest::asciiToKey(char(c.unicode())) : 0,
                Qt::NoModifier, QString(c));
            QApplication::sendEvent(view->searchBox(), &press);
        }
        EXPECT_EQ(view->searchBox()->text(), row.typed.toUpper());
        EXPECT_EQ(view->SelectedAccountId(), row.selected);
    }
}

TEST_P(ExplorerTest, ClosesByEnterEscapeAndDoubleClick)
{
    const struct
    {
        const char* name;
        std::function<void(TAccountListView&)> act;
        bool closed;
        int result;
        QString selected;
    } rows[] = {
        { "EnterInTheSearchBoxTakesTheShownAccount",
            [](TAccountListView& v) {
                QTest::keyClicks(v.searchBox(), "BOB");
                QTest::keyClick(v.searchBox(), Qt::Key_Return);
            },
            true, QDialog::Accepted, "C005" },
        { "EscapeCancels", [](TAccountListView& v) { QTest::keyClick(v.searchBox(), Qt::Key_Escape); }, true,
            QDialog::Rejected, "C002" },
        { "DoubleClickOnARow",
            [](TAccountListView& v) {
                const QRect cell = v.grid()->visualRect(v.grid()->model()->index(2, 1));
                QTest::mouseClick(v.grid()->viewport(), Qt::LeftButton, {}, cell.center());
                QTest::mouseDClick(v.grid()->viewport(), Qt::LeftButton, {}, cell.center());
            },
            true, QDialog::Accepted, "C001" },
        { "EnterInTheGridOnARow",
            [](TAccountListView& v) {
                clickRow(v, 2);
                QTest::keyClick(v.grid(), Qt::Key_Return);
            },
            true, QDialog::Accepted, "C005" },
        { "EnterInTheGridAfterATitleClickStaysOpen",
            [](TAccountListView& v) {
                clickTitle(v, afAcctId);
                v.grid()->setFocus();
                QTest::keyClick(v.grid(), Qt::Key_Return);
            },
            false, QDialog::Rejected, "C002" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto view = showExplorer();
        view->setResult(QDialog::Rejected);
        row.act(*view);
        EXPECT_EQ(!view->isVisible(), row.closed);
        EXPECT_EQ(view->result(), row.result);
        EXPECT_EQ(view->SelectedAccountId(), row.selected);
    }
}

TEST_P(ExplorerTest, EmptyListShowsABlankRowAndEnterGivesNoAccount)
{
    auto view = std::make_unique<TAccountListView>();
    view->setAccountFilter("nobody");
    writeDeskSettings(QString());
    logOn("D001");
    view->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
    EXPECT_EQ(columnTexts(*view), QStringList({ "" }));
    EXPECT_EQ(view->statusPanel()->text(), "Account Selected: None");
    QTest::keyClick(view->searchBox(), Qt::Key_Return);
    EXPECT_EQ(view->result(), QDialog::Accepted);
    EXPECT_EQ(view->SelectedAccountId(), "");
}

TEST_P(ExplorerTest, NamesAndFirstNamesPassTheFilter)
{
    auto view = std::make_unique<TAccountListView>();
    view->setAccountFilter("ta"); // no name begins so, but C001's first name does
    logOn("D001");
    view->show();
    EXPECT_EQ(columnTexts(*view), QStringList({ "C001" }));
    view->setAccountFilter("a");
    view->hide();
    view->show();
    EXPECT_EQ(columnTexts(*view), QStringList({ "C002" }));
}

TEST_P(ExplorerTest, ShortcutsAreSetRefusedOnConflictAndRemoved)
{
    const auto view = showExplorer();
    QLineEdit* const shortcut = view->shortcutBox();
    auto* const update = view->findChild<QPushButton*>("btnShortCutUpdate");
    auto* const remove = view->findChild<QPushButton*>("btnShortcutRemove");
    ASSERT_NE(update, nullptr);
    ASSERT_NE(remove, nullptr);
    EXPECT_TRUE(view->findChild<QWidget*>("panelShortcutEdit")->isVisible());
    const int shortcutColumn = int(view->ColumnMap().size()) - 1;

    // GIVEN BOB HO without a shortcut, WHEN the dealer types one and updates.
    clickRow(*view, 2);
    ASSERT_EQ(view->SelectedAccountId(), "C005");
    EXPECT_FALSE(remove->isEnabled());
    EXPECT_FALSE(update->isEnabled());
    QTest::keyClicks(shortcut, "b1");
    EXPECT_EQ(shortcut->text(), "B1");
    EXPECT_TRUE(update->isEnabled());
    QTest::mouseClick(update, Qt::LeftButton);
    QString account;
    EXPECT_TRUE(model.LookupShortCut("D001", "B1", account, false));
    EXPECT_EQ(account, "C005");
    EXPECT_FALSE(update->isEnabled());
    EXPECT_EQ(view->grid()->model()->index(1, shortcutColumn).data().toString(), "B1");
    EXPECT_TRUE(alerts.empty());

    // WHEN the dealer gives it a shortcut another account has.
    shortcut->selectAll();
    QTest::keyClicks(shortcut, "ab");
    QTest::mouseClick(update, Qt::LeftButton);
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(alerts[0].text, "Shortcut conflict !");
    EXPECT_EQ(alerts[0].title, "System Alert");
    EXPECT_EQ(alerts[0].icon, QMessageBox::NoIcon);
    EXPECT_EQ(alerts[0].owner, view.get());
    EXPECT_EQ(shortcut->selectedText(), "AB");
    EXPECT_TRUE(model.LookupShortCut("D001", "AB", account, false));
    EXPECT_EQ(account, "C002") << "the other account keeps it";
    EXPECT_EQ(model.GetShortCut("C005", "D001"), "B1") << "the old shortcut stays";

    // WHEN the dealer removes CHAN TAI MAN's shortcut.
    clickRow(*view, 3);
    ASSERT_EQ(view->SelectedAccountId(), "C001");
    EXPECT_EQ(shortcut->text(), "1");
    EXPECT_TRUE(remove->isEnabled());
    QTest::mouseClick(remove, Qt::LeftButton);
    EXPECT_EQ(shortcut->text(), "");
    EXPECT_EQ(model.GetShortCut("C001", "D001"), "");
    EXPECT_EQ(view->grid()->model()->index(2, shortcutColumn).data().toString(), "");
}

TEST_P(ExplorerTest, MovedColumnsKeepTheirFieldsAndWidths)
{
    const auto view = showExplorer();
    QHeaderView* const header = view->grid()->horizontalHeader();
    header->moveSection(0, 3); // the dealer drags "Account ID" to the fourth place
    EXPECT_EQ(view->ColumnMap(),
        (std::vector<TAccountStringField> {
            afAcctName, afChineseName, afDayPhone, afAcctId, afHomePhone, afMobile, afFax, afShortCut }));
    clickTitle(*view, afAcctId);
    EXPECT_EQ(view->SortField(), afAcctId);
    EXPECT_EQ(columnTexts(*view), QStringList({ "C001", "C002", "C005" }));

    view->hide();
    view->show(); // lists again
    EXPECT_EQ(header->visualIndex(0), 3) << "the moved column stays where the dealer put it";
    EXPECT_EQ(header->sectionSize(1), 111);
}

// The cases above do not depend on the database driver.
INSTANTIATE_TEST_SUITE_P(Desk, ExplorerTest, testing::Values(Driver::Sqlite), test::driverName);

// The sample trading day through the database model.
class ExplorerDatabaseTest : public AccountDeskTest
{
protected:
    void SetUp() override
    {
        AccountDeskTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        writeSampleDay();
    }
};

TEST_P(ExplorerDatabaseTest, ListsTheDealersAccountsAndWritesTheirShortcuts)
{
    logOn("D001");
    TDbAccountModel model;
    model.setCurrentUserID("D001");
    TAccountModel::SetInstance(&model);
    TAccountListView view;
    view.setShortcutPanelShown(true);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));

    EXPECT_EQ(view.userBox()->currentText(), "D001");
    EXPECT_EQ(columnTexts(view), QStringList({ "A1001", "A1012" }));
    EXPECT_EQ(columnTexts(view, 1), QStringList({ "CHAN Tai Man", "YEUNG Chi Keung" }));
    EXPECT_EQ(columnTexts(view, 7), QStringList({ "1", "2" }));

    clickRow(view, 2);
    view.shortcutBox()->selectAll();
    QTest::keyClicks(view.shortcutBox(), "yc");
    QTest::mouseClick(view.findChild<QPushButton*>("btnShortCutUpdate"), Qt::LeftButton);
    EXPECT_EQ(columnTexts(view, 7), QStringList({ "1", "YC" }));
    TDbAccountModel reread;
    QString account;
    EXPECT_TRUE(reread.LookupShortCut("D001", "YC", account, true)) << "written to Account_ShortCut";
    EXPECT_EQ(account, "A1012");

    view.shortcutBox()->selectAll();
    QTest::keyClicks(view.shortcutBox(), "1");
    QTest::mouseClick(view.findChild<QPushButton*>("btnShortCutUpdate"), Qt::LeftButton);
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(alerts[0].text, "Shortcut conflict !");
    EXPECT_EQ(columnTexts(view, 7), QStringList({ "1", "YC" }));
}

TEST_P(ExplorerDatabaseTest, ShowAllListsTheAccessibleUsersHeldAccounts)
{
    writeDeskSettings("ACCOUNTSHOWALL=Y");
    logOn("D001");
    TDbAccountModel model;
    model.setCurrentUserID("D001");
    model.LoadAllAccounts();
    TAccountModel::SetInstance(&model);
    TAccountListView view;
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));

    EXPECT_EQ(view.userBox()->currentText(), "<SHOW ALL>");
    EXPECT_EQ(columnTexts(view), QStringList({ "A1001", "A1013", "A1002", "A1012" })) << "sorted by name";
    QTest::keyClicks(view.searchBox(), "le");
    EXPECT_EQ(view.SelectedAccountId(), "A1002");
}

INSTANTIATE_TEST_SUITE_P(
    Drivers, ExplorerDatabaseTest, testing::Values(Driver::Sqlite, Driver::Postgres), test::driverName);

} // namespace
} // namespace qal
