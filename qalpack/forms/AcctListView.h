// SPDX-License-Identifier: MIT
// TAccountListView: the Account Explorer, the modal dialog in which a dealer
// finds a client account by the start of a name (or of whatever column the
// list is sorted by), sorts by any column, sets or removes their own shortcut
// for it, and picks it for an order.
#pragma once

#include <memory>
#include <vector>

#include <QDialog>
#include <QString>

#include "qalpack/model/ResourceLabel.h"
#include "qalpack/profile/AccountModel.h"
#include "qalpack/qalpack_widgets_export.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QStatusBar;
class QTableView;
class QWidget;

namespace Ui {
class AccountListView;
}

namespace qal {

// Texts of the explorer, context "AcctListView".
inline constexpr Label resStrAcctId { "AcctListView", QT_TRANSLATE_NOOP("AcctListView", "Account ID") };
inline constexpr Label resStrAcctName { "AcctListView", QT_TRANSLATE_NOOP("AcctListView", "English Name") };
inline constexpr Label resStrChineseName { "AcctListView",
    QT_TRANSLATE_NOOP("AcctListView", "Chinese Name") };
inline constexpr Label resStrClientID { "AcctListView", QT_TRANSLATE_NOOP("AcctListView", "Client ID") };
inline constexpr Label resStrDayPhone { "AcctListView", QT_TRANSLATE_NOOP("AcctListView", "Day Phone") };
inline constexpr Label resStrHomePhone { "AcctListView", QT_TRANSLATE_NOOP("AcctListView", "Home Phone") };
inline constexpr Label resStrMobile { "AcctListView", QT_TRANSLATE_NOOP("AcctListView", "Mobile") };
inline constexpr Label resStrFax { "AcctListView", QT_TRANSLATE_NOOP("AcctListView", "Fax") };
inline constexpr Label resStrHouseFax { "AcctListView", QT_TRANSLATE_NOOP("AcctListView", "ID") };
inline constexpr Label resStrShortCut { "AcctListView", QT_TRANSLATE_NOOP("AcctListView", "Shortcut") };
inline constexpr Label resStrShowAll { "AcctListView", QT_TRANSLATE_NOOP("AcctListView", "<SHOW ALL>") };
inline constexpr Label resStrAccountSelected { "AcctListView",
    QT_TRANSLATE_NOOP("AcctListView", "Account Selected") };
inline constexpr Label resStrNone { "AcctListView", QT_TRANSLATE_NOOP("AcctListView", "None") };
inline constexpr Label resStrShortcutConflict { "AcctListView",
    QT_TRANSLATE_NOOP("AcctListView", "Shortcut conflict !") };

// The title of a column showing `field`; the fax column is titled "ID" in
// the house display mode "VEM".
[[nodiscard]] QALPACK_WIDGETS_EXPORT QString AccountColumnTitle(
    TAccountStringField field, const QString& houseMode = QString());

// The custom-information key of the client-ID column for the desk setting
// "CLIENT APP"/"FieldClientID": "field0" and a one-character number
// ("7" gives "field07"), "field" and a longer one ("12" gives "field12"),
// empty when the setting is empty or not a whole number (no client-ID
// column then).
[[nodiscard]] QALPACK_WIDGETS_EXPORT QString ClientIdFieldKey(const QString& setting);

class AccountListModel;

// Rows. The grid's rows are counted as the dealer sees them: row 0 is the
// title row and row i (from 1) shows account i - 1 of AccountList(). An
// empty list shows one blank row.
//
// Showing the dialog (showEvent) fills the user box with the logged-on
// dealer's accessible users, sorted, after "<SHOW ALL>", picks the item
// (UserIndex() when set, else "<SHOW ALL>" when "CLIENT APP"/"ACCOUNTSHOWALL"
// begins with "Y" or "y", else the dealer's own) and fills the list: for
// "<SHOW ALL>" the accounts the model holds for every listed user, for a
// user the accounts the model loads for that user. With nobody logged on the
// list is left as it was. The list is sorted and the grid refreshed after
// every fill, and the selection (kept across showings) is found again by
// account ID.
//
// Closing: Enter in the search box closes with Accepted and the ID shown
// in the selection label (empty when nothing is selected); Enter in the grid
// and a double click close with Accepted only while a data row is selected;
// Escape closes with Rejected.
//
// Sorting: a click on a column title sorts by that column; a second click on
// the same column flips the order, and a click on another column keeps the
// order as it was. Equal values come out in no defined order.
class QALPACK_WIDGETS_EXPORT TAccountListView : public QDialog
{
    Q_OBJECT

public:
    // Reads "CLIENT APP"/"FieldClientID" of the logged-on dealer's desk
    // settings (none when nobody is logged on) to choose 8 or 9 columns.
    explicit TAccountListView(QWidget* parent = nullptr);
    ~TAccountListView() override;

    // The process-wide explorer, made on the first call with no parent. It is
    // freed before the application object goes and at the library's unload,
    // whichever comes first; the next call then makes a new one.
    [[nodiscard]] static TAccountListView* GetInstance();

    // The user-box item to open on at the next showings (-1: choose by the
    // desk settings). Shared by every explorer, as the caller sets it
    // before showing the process-wide one.
    [[nodiscard]] static int UserIndex();
    static void SetUserIndex(int index);

    // Whether the shortcut panel is shown; set before showing. Default off.
    [[nodiscard]] bool ShortcutPanelShown() const { return showShortcutPanel_; }
    void setShortcutPanelShown(bool shown) { showShortcutPanel_ = shown; }
    // The refresh flag handed to the account model's enumeration of one
    // user's accounts; set before showing. The list is sorted and refreshed
    // after the enumeration either way.
    [[nodiscard]] bool EnumRefresh() const { return enumRefresh_; }
    void setEnumRefresh(bool refresh) { enumRefresh_ = refresh; }
    // Only accounts whose name or first name begins with this (letter case
    // ignored) are listed; empty lists all.
    [[nodiscard]] const QString& AccountFilter() const { return filter_; }
    void setAccountFilter(const QString& filter) { filter_ = filter; }

    // The picked account: set by every selection, read by the caller after
    // an Accepted close.
    [[nodiscard]] const QString& SelectedAccountId() const { return selectedAccountId_; }
    [[nodiscard]] const QString& SelectedAccountName() const { return selectedAccountName_; }
    // The grid row last selected (0: the title row).
    [[nodiscard]] int SelectedRow() const { return selectedRow_; }

    [[nodiscard]] TAccountStringField SortField() const { return sortField_; }
    // True: descending.
    [[nodiscard]] bool SortOrder() const { return sortDescending_; }
    // The field shown in each column, in the order the columns are shown
    // (after any the dealer moved).
    [[nodiscard]] std::vector<TAccountStringField> ColumnMap() const;
    // The client-ID column's custom-information key ("field07"), or empty.
    [[nodiscard]] const QString& ClientIdKey() const { return clientIdKey_; }
    // "VEM" or empty, read at every showing from "CLIENT APP"/"positionView".
    [[nodiscard]] const QString& HouseMode() const { return houseMode_; }
    // The listed accounts in their current order; the model owns them.
    [[nodiscard]] const std::vector<TAccount*>& AccountList() const { return accounts_; }

    // The value the explorer shows and sorts by for `field`: the account's
    // own field, or for afClientID its custom information under
    // ClientIdKey() (empty without one).
    [[nodiscard]] QString FieldText(const TAccount& account, TAccountStringField field) const;

    // Adds `account` when it passes the filter; with `refresh`, then sorts and
    // refreshes the grid whether or not it was added.
    void AccountEnumHandler(TAccount* account, bool refresh);
    // Empties the list and shows the title row and one blank row; the
    // selection labels go blank, but the picked account ID is kept for the
    // next fill to select again.
    void ClearGridContent();
    // Redraws the grid row of account `index` of the list (nothing for an
    // index outside it).
    void RefreshRecord(int index);
    // Redraws every row and selects the row of the selected account ID (row
    // 1 when it is not listed).
    void RefreshAllRecord();
    // Sorts the list by SortField() and SortOrder(), then RefreshAllRecord.
    void SortAccountList();
    // Makes the account of grid `row` the selection, or clears it when the
    // row shows no account; `resetSearchModified` clears the search box's
    // modified mark.
    void UpdateSelection(int row, bool resetSearchModified);

    // The inner widgets, for hosts' screens and tests.
    [[nodiscard]] QLineEdit* searchBox() const;
    [[nodiscard]] QTableView* grid() const;
    [[nodiscard]] QComboBox* userBox() const;
    [[nodiscard]] QLineEdit* shortcutBox() const;
    [[nodiscard]] QLabel* statusPanel() const;

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void fillAccountList();
    void setColumns();
    void selectGridRow(int row);
    void setGridRows(int rows);
    void headerClicked(int logicalIndex);
    void searchChanged(const QString& text);
    void userChanged();
    void gridRowChanged(int row);
    void closeOnDataRow();
    void shortcutChanged();
    void updateShortcut();
    void removeShortcut();
    [[nodiscard]] QString currentUserId() const;

    std::unique_ptr<Ui::AccountListView> ui_;
    AccountListModel* model_ = nullptr;
    QLabel* statusPanel_ = nullptr;

    QString selectedAccountId_;
    QString selectedAccountName_;
    QString filter_;
    std::vector<TAccount*> accounts_;
    TAccountStringField sortField_ = afAcctName;
    bool sortDescending_ = false;
    std::vector<TAccountStringField> columns_; // by the grid's own (logical) column
    int selectedRow_ = 0;
    bool showShortcutPanel_ = false;
    bool enumRefresh_ = false;
    bool updatingSelection_ = false;
    bool refreshedByEnum_ = false;
    QString houseMode_;
    QString clientIdKey_;
};

namespace internal {
// For tests: frees the process-wide explorer (if any) and sets UserIndex()
// back to -1, as at load.
QALPACK_WIDGETS_EXPORT void ResetAccountListView();
} // namespace internal

} // namespace qal
