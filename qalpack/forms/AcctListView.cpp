// SPDX-License-Identifier: MIT
#include "qalpack/forms/AcctListView.h"

#include <algorithm>
#include <utility>

#include <QAbstractTableModel>
#include <QComboBox>
#include <QCoreApplication>
#include <QFontDatabase>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QStatusBar>
#include <QTableView>
#include <QValidator>

#include "qalpack/feedback/SystemAlert.h"
#include "qalpack/profile/QalApplicationProfile.h"
#include "qalpack/profile/UserProfile.h"
#include "qalpack/runtime/Exception.h"
#include "ui_AcctListView.h"

namespace qal {

namespace {

// The desk settings the explorer reads, in ClientAppSection().
const QString kFieldClientID = QStringLiteral("FieldClientID");
const QString kAccountShowAll = QStringLiteral("ACCOUNTSHOWALL");
const QString kPositionView = QStringLiteral("positionView");
const QString kHouseModeVEM = QStringLiteral("VEM");

const std::vector<TAccountStringField> kColumns8 { afAcctId, afAcctName, afChineseName, afDayPhone,
    afHomePhone, afMobile, afFax, afShortCut };
const std::vector<TAccountStringField> kColumns9 { afAcctId, afAcctName, afChineseName, afClientID,
    afDayPhone, afHomePhone, afMobile, afFax, afShortCut };
// Widths of the first eight columns; a ninth keeps the default.
constexpr int kColumnWidths[] = { 91, 111, 95, 84, 91, 80, 68, 65 };

// The user box item picked at the next showings; -1: by the desk settings.
int gUserIndex = -1;

QPointer<TAccountListView>& instance()
{
    static QPointer<TAccountListView> explorer;
    return explorer;
}

void freeInstance()
{
    delete instance().data();
}

// Frees the explorer when the library is unloaded while the application
// object still lives; once that is gone the post routine has freed it.
struct UnloadGuard
{
    ~UnloadGuard()
    {
        if (QCoreApplication::instance() != nullptr) {
            qRemovePostRoutine(freeInstance);
            freeInstance();
        }
    }
};

// Pasted text is upper-cased. (Typed letters are upper-cased as keys, see
// eventFilter: a validator that rewrites the text clears the box's modified
// mark, which the shortcut box's Update button follows.)
class UpperCaseValidator : public QValidator
{
public:
    using QValidator::QValidator;
    State validate(QString& input, int&) const override
    {
        input = input.toUpper();
        return Acceptable;
    }
};

// Whether `value` in upper case begins with `upperPrefix`, as
// value.toUpper().startsWith(upperPrefix), without making the upper-case copy
// while the characters compared are ASCII: the search runs this on every
// account at every keystroke.
bool upperStartsWith(const QString& value, const QString& upperPrefix)
{
    for (qsizetype i = 0; i < upperPrefix.size(); ++i) {
        if (i == value.size())
            return false; // all ASCII so far: its upper case is no longer
        const char16_t c = value.at(i).unicode();
        if (c >= 0x80)
            return value.toUpper().startsWith(upperPrefix);
        const char16_t upper = c >= u'a' && c <= u'z' ? char16_t(c - (u'a' - u'A')) : c;
        if (upper != upperPrefix.at(i).unicode())
            return false;
    }
    return true;
}

bool isEnter(const QKeyEvent* key)
{
    return key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
}

} // namespace

QString AccountColumnTitle(TAccountStringField field, const QString& houseMode)
{
    switch (field) {
    case afAcctId:
        return resStrAcctId();
    case afAcctName:
        return resStrAcctName();
    case afChineseName:
        return resStrChineseName();
    case afClientID:
        return resStrClientID();
    case afDayPhone:
        return resStrDayPhone();
    case afHomePhone:
        return resStrHomePhone();
    case afMobile:
        return resStrMobile();
    case afFax:
        return houseMode == kHouseModeVEM ? resStrHouseFax() : resStrFax();
    case afShortCut:
        return resStrShortCut();
    default:
        return QString();
    }
}

QString ClientIdFieldKey(const QString& setting)
{
    if (setting.isEmpty())
        return QString();
    bool ok = false;
    setting.toInt(&ok);
    if (!ok)
        return QString();
    return (setting.size() == 1 ? QStringLiteral("field0") : QStringLiteral("field")) + setting;
}

// The grid's rows over the explorer's account list. It never resets, so the
// columns the dealer moved or widened stay as they are: rows are added or
// removed to match the list, and every cell is redrawn after a sort.
class AccountListModel : public QAbstractTableModel
{
public:
    explicit AccountListModel(TAccountListView* view)
        : QAbstractTableModel(view)
        , view_(view)
    { }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : rows_;
    }
    int columnCount(const QModelIndex& parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : int(columns_.size());
    }

    QVariant data(const QModelIndex& index, int role) const override
    {
        if (role != Qt::DisplayRole || !index.isValid())
            return {};
        const auto& accounts = view_->AccountList();
        if (std::size_t(index.row()) >= accounts.size())
            return QString();
        return view_->FieldText(*accounts[std::size_t(index.row())], columns_[std::size_t(index.column())]);
    }

    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0
            || std::size_t(section) >= columns_.size())
            return QAbstractTableModel::headerData(section, orientation, role);
        return AccountColumnTitle(columns_[std::size_t(section)], view_->HouseMode());
    }

    void setColumns(std::vector<TAccountStringField> columns)
    {
        beginResetModel();
        columns_ = std::move(columns);
        endResetModel();
    }

    void titlesChanged()
    {
        if (!columns_.empty())
            emit headerDataChanged(Qt::Horizontal, 0, int(columns_.size()) - 1);
    }

    // Grows or shrinks to `rows` rows.
    void setRows(int rows)
    {
        if (rows > rows_) {
            beginInsertRows(QModelIndex(), rows_, rows - 1);
            rows_ = rows;
            endInsertRows();
        } else if (rows < rows_) {
            beginRemoveRows(QModelIndex(), rows, rows_ - 1);
            rows_ = rows;
            endRemoveRows();
        }
    }

    void rowsChanged(int first, int last)
    {
        if (rows_ > 0 && !columns_.empty())
            emit dataChanged(index(first, 0), index(last, int(columns_.size()) - 1), { Qt::DisplayRole });
    }

private:
    TAccountListView* view_;
    std::vector<TAccountStringField> columns_;
    int rows_ = 0;
};

TAccountListView::TAccountListView(QWidget* parent)
    : QDialog(parent)
    , ui_(std::make_unique<Ui::AccountListView>())
{
    ui_->setupUi(this);
    setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
        | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);

    const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    for (QLineEdit* box : { ui_->edtAccountEntry, ui_->edtAcctShortcut }) {
        box->setFont(fixed);
        box->setValidator(new UpperCaseValidator(box));
    }
    statusPanel_ = new QLabel(ui_->statAccountList);
    statusPanel_->setObjectName(QStringLiteral("statAccountListPanel0"));
    statusPanel_->setMinimumWidth(50);
    ui_->statAccountList->addWidget(statusPanel_, 1);

    model_ = new AccountListModel(this);
    QTableView* const table = ui_->gridAccountList;
    table->setModel(model_);
    QHeaderView* const header = table->horizontalHeader();
    header->setSectionsMovable(true);
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
    connect(header, &QHeaderView::sectionClicked, this, &TAccountListView::headerClicked);
    connect(table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        [this](const QModelIndex& current) { gridRowChanged(current.row() + 1); });
    connect(table, &QAbstractItemView::doubleClicked, this, &TAccountListView::closeOnDataRow);
    table->viewport()->installEventFilter(this);
    table->installEventFilter(this);
    ui_->edtAccountEntry->installEventFilter(this);
    ui_->edtAcctShortcut->installEventFilter(this);

    connect(ui_->edtAccountEntry, &QLineEdit::textChanged, this, &TAccountListView::searchChanged);
    connect(ui_->comboUserSelect, &QComboBox::activated, this, &TAccountListView::userChanged);
    connect(ui_->edtAcctShortcut, &QLineEdit::textChanged, this, &TAccountListView::shortcutChanged);
    connect(ui_->btnShortCutUpdate, &QPushButton::clicked, this, &TAccountListView::updateShortcut);
    connect(ui_->btnShortcutRemove, &QPushButton::clicked, this, &TAccountListView::removeShortcut);

    // The client-ID column is there when the desk names the custom
    // information key that holds it.
    if (const TUserProfile* profile = TUserProfile::CurrentInstance())
        clientIdKey_ = ClientIdFieldKey(profile->getValue(ClientAppSection(), kFieldClientID));
    setColumns();
    ClearGridContent();
    sortField_ = afAcctName;
    sortDescending_ = false;
}

TAccountListView::~TAccountListView()
{
    // The grid outlives this part of the dialog; it must not read the rows
    // of an explorer that is going.
    grid()->setModel(nullptr);
    delete model_;
}

TAccountListView* TAccountListView::GetInstance()
{
    if (instance().isNull()) {
        static UnloadGuard unloadGuard;
        instance() = new TAccountListView();
        qRemovePostRoutine(freeInstance);
        qAddPostRoutine(freeInstance);
    }
    return instance().data();
}

int TAccountListView::UserIndex()
{
    return gUserIndex;
}

void TAccountListView::SetUserIndex(int index)
{
    gUserIndex = index;
}

QLineEdit* TAccountListView::searchBox() const
{
    return ui_->edtAccountEntry;
}

QTableView* TAccountListView::grid() const
{
    return ui_->gridAccountList;
}

QComboBox* TAccountListView::userBox() const
{
    return ui_->comboUserSelect;
}

QLineEdit* TAccountListView::shortcutBox() const
{
    return ui_->edtAcctShortcut;
}

QLabel* TAccountListView::statusPanel() const
{
    return statusPanel_;
}

void TAccountListView::setColumns()
{
    columns_ = clientIdKey_.isEmpty() ? kColumns8 : kColumns9;
    model_->setColumns(columns_);
    QHeaderView* const header = grid()->horizontalHeader();
    for (int i = 0; i < int(std::size(kColumnWidths)) && i < header->count(); ++i)
        header->resizeSection(i, kColumnWidths[i]);
}

std::vector<TAccountStringField> TAccountListView::ColumnMap() const
{
    const QHeaderView* const header = grid()->horizontalHeader();
    std::vector<TAccountStringField> map;
    for (int visual = 0; visual < header->count(); ++visual)
        map.push_back(columns_[std::size_t(header->logicalIndex(visual))]);
    return map;
}

QString TAccountListView::FieldText(const TAccount& account, TAccountStringField field) const
{
    if (field != afClientID)
        return account.GetFieldValue(field);
    if (clientIdKey_.isEmpty())
        return QString();
    const TCustomAccountInfo* const info = account.GetCustomAccountInfo();
    return info != nullptr ? info->GetValue(clientIdKey_) : QString();
}

void TAccountListView::AccountEnumHandler(TAccount* account, bool refresh)
{
    const QString filter = filter_.toUpper();
    if (account != nullptr
        && (filter.isEmpty() || account->GetFieldValue(afAcctName).toUpper().startsWith(filter)
            || account->GetFieldValue(afFirstName).toUpper().startsWith(filter)))
        accounts_.push_back(account);
    if (refresh) {
        refreshedByEnum_ = true;
        SortAccountList();
    }
}

void TAccountListView::ClearGridContent()
{
    // The labels show no account now, but the picked account is kept so that
    // the refilled list selects it again.
    const QString keptId = selectedAccountId_;
    const QString keptName = selectedAccountName_;
    accounts_.clear();
    setGridRows(1);
    model_->rowsChanged(0, 0);
    model_->titlesChanged();
    const QModelIndex current = grid()->currentIndex();
    UpdateSelection(current.isValid() ? current.row() + 1 : 1, true);
    selectedAccountId_ = keptId;
    selectedAccountName_ = keptName;
}

void TAccountListView::RefreshRecord(int index)
{
    if (index < 0 || std::size_t(index) >= accounts_.size())
        return;
    if (model_->rowCount() < index + 1)
        setGridRows(std::max(int(accounts_.size()), 1));
    model_->rowsChanged(index, index);
}

void TAccountListView::setGridRows(int rows)
{
    // Rows going or coming move the grid's current row; that is not the
    // dealer selecting one.
    const bool wasUpdating = std::exchange(updatingSelection_, true);
    model_->setRows(rows);
    updatingSelection_ = wasUpdating;
}

void TAccountListView::RefreshAllRecord()
{
    setGridRows(std::max(int(accounts_.size()), 1));
    model_->rowsChanged(0, model_->rowCount() - 1);
    int row = 1;
    for (std::size_t i = 0; i < accounts_.size(); ++i) {
        if (accounts_[i]->AcctId == selectedAccountId_)
            row = int(i) + 1;
    }
    selectGridRow(row);
    selectedRow_ = row;
    UpdateSelection(row, !searchBox()->isModified());
}

void TAccountListView::SortAccountList()
{
    // Each account's value is read once, not once per comparison.
    std::vector<std::pair<QString, TAccount*>> keyed;
    keyed.reserve(accounts_.size());
    for (TAccount* account : accounts_)
        keyed.emplace_back(FieldText(*account, sortField_), account);
    const bool descending = sortDescending_;
    std::sort(keyed.begin(), keyed.end(), [descending](const auto& left, const auto& right) {
        const int order = QString::compare(left.first, right.first, Qt::CaseSensitive);
        return descending ? order > 0 : order < 0;
    });
    for (std::size_t i = 0; i < keyed.size(); ++i)
        accounts_[i] = keyed[i].second;

    const auto column = std::find(columns_.begin(), columns_.end(), sortField_);
    if (column != columns_.end())
        grid()->horizontalHeader()->setSortIndicator(
            int(column - columns_.begin()), descending ? Qt::DescendingOrder : Qt::AscendingOrder);
    RefreshAllRecord();
}

void TAccountListView::UpdateSelection(int row, bool resetSearchModified)
{
    if (row >= 1 && std::size_t(row) <= accounts_.size()) {
        const TAccount& account = *accounts_[std::size_t(row) - 1];
        selectedAccountId_ = account.GetFieldValue(afAcctId);
        selectedAccountName_ = account.GetFieldValue(afAcctName);
        ui_->SelectedAccountID->setText(selectedAccountId_);
        ui_->SelectedAccountName->setText(selectedAccountName_);
        statusPanel_->setText(resStrAccountSelected() + QStringLiteral(": ") + selectedAccountId_);
        if (resetSearchModified) {
            const bool wasUpdating = std::exchange(updatingSelection_, true);
            searchBox()->setModified(false);
            updatingSelection_ = wasUpdating;
        }
        const QString shortCut = account.GetFieldValue(afShortCut);
        shortcutBox()->setText(shortCut);
        shortcutBox()->setModified(false);
        ui_->btnShortcutRemove->setEnabled(!shortCut.isEmpty());
    } else {
        selectedAccountId_.clear();
        selectedAccountName_.clear();
        ui_->SelectedAccountID->clear();
        ui_->SelectedAccountName->clear();
        statusPanel_->setText(resStrAccountSelected() + QStringLiteral(": ") + resStrNone());
    }
}

void TAccountListView::selectGridRow(int row)
{
    if (row < 1 || row > model_->rowCount())
        return;
    const bool wasUpdating = std::exchange(updatingSelection_, true);
    const QModelIndex current = grid()->currentIndex();
    const QModelIndex target = model_->index(row - 1, current.isValid() ? current.column() : 0);
    grid()->selectionModel()->setCurrentIndex(
        target, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    grid()->scrollTo(target);
    updatingSelection_ = wasUpdating;
}

void TAccountListView::gridRowChanged(int row)
{
    // A row the dealer selects in the grid; rows the explorer selects itself
    // are handled where it selects them.
    if (!updatingSelection_)
        UpdateSelection(row, true);
}

void TAccountListView::headerClicked(int logicalIndex)
{
    if (logicalIndex < 0 || std::size_t(logicalIndex) >= columns_.size())
        return;
    const TAccountStringField field = columns_[std::size_t(logicalIndex)];
    // The same column flips the order; another keeps the order as it is.
    if (field == sortField_)
        sortDescending_ = !sortDescending_;
    else
        sortField_ = field;
    SortAccountList();
    grid()->viewport()->update();
    if (searchBox()->isVisible() && searchBox()->isEnabled())
        searchBox()->setFocus(Qt::MouseFocusReason);
    selectedRow_ = 0;
}

void TAccountListView::searchChanged(const QString& text)
{
    if (updatingSelection_ || text.isEmpty())
        return;
    // Every account is looked at, so the last match in the list's order is
    // the one left selected.
    int match = -1;
    for (std::size_t i = 0; i < accounts_.size(); ++i) {
        if (upperStartsWith(FieldText(*accounts_[i], sortField_), text))
            match = int(i);
    }
    if (match < 0)
        return;
    selectGridRow(match + 1);
    UpdateSelection(match + 1, false);
}

QString TAccountListView::currentUserId() const
{
    if (const TUserProfile* profile = TUserProfile::CurrentInstance())
        return profile->UserId();
    const TAccountModel* const model = TAccountModel::GetInstance();
    return model != nullptr ? model->CurrentUserID() : QString();
}

void TAccountListView::fillAccountList()
{
    ClearGridContent();
    refreshedByEnum_ = false;
    TAccountModel* const model = TAccountModel::GetInstance();
    if (model == nullptr)
        return;
    const auto handler = [this](TAccount* account, bool refresh) { AccountEnumHandler(account, refresh); };
    QComboBox* const users = userBox();
    try {
        if (users->currentIndex() <= 0) {
            for (int i = 1; i < users->count(); ++i)
                model->EnumAccounts(users->itemText(i), handler, i == users->count() - 1);
        } else {
            const QString user = users->currentText();
            model->LoadUserAccounts(user);
            model->EnumAccounts(user, handler, enumRefresh_);
        }
    } catch (const Error& error) {
        ShowAlert({ this, error.message(), resStrSystemAlert(), QMessageBox::Critical, QMessageBox::Ok });
    }
    // The enumeration sorts and redraws on its last account; when it had none
    // to give, or was asked not to, the list is still sorted and shown.
    if (!refreshedByEnum_)
        SortAccountList();
}

void TAccountListView::userChanged()
{
    fillAccountList();
}

void TAccountListView::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (parentWidget() == nullptr && screen() != nullptr)
        move(screen()->availableGeometry().center() - rect().center());
    ui_->panelShortcutEdit->setVisible(showShortcutPanel_);
    if (searchBox()->isEnabled())
        searchBox()->setFocus(Qt::OtherFocusReason);

    const TUserProfile* const profile = TUserProfile::CurrentInstance();
    if (profile == nullptr)
        return;

    QStringList userIds;
    const TElHashList<TCustomRecord>& accessible = profile->GetAccessableUser();
    for (int i = 0; i < accessible.Count(); ++i)
        userIds << accessible.KeyByIndex(i);
    // A sorted list box orders its items without regard to letter case.
    userIds.sort(Qt::CaseInsensitive);
    QComboBox* const users = userBox();
    users->clear();
    users->addItems(userIds);
    users->insertItem(0, resStrShowAll());
    const int ownIndex = users->findText(profile->UserId(), Qt::MatchFixedString | Qt::MatchCaseSensitive);

    if (gUserIndex != -1) {
        users->setCurrentIndex(gUserIndex);
        userChanged();
        return;
    }
    const QString showAll = profile->getValue(ClientAppSection(), kAccountShowAll);
    users->setCurrentIndex(showAll.startsWith(u'Y', Qt::CaseInsensitive) ? 0 : ownIndex);

    houseMode_ = profile->getValue(ClientAppSection(), kPositionView).toUpper() == kHouseModeVEM
        ? kHouseModeVEM
        : QString();
    model_->titlesChanged();

    if (!profile->UserId().isEmpty())
        fillAccountList();

    const QModelIndex current = grid()->currentIndex();
    UpdateSelection(current.isValid() ? current.row() + 1 : 1, true);
    if (searchBox()->isEnabled())
        searchBox()->setFocus(Qt::OtherFocusReason);
}

void TAccountListView::closeOnDataRow()
{
    const QModelIndex current = grid()->currentIndex();
    if (selectedRow_ >= 1 && current.isValid())
        accept();
}

bool TAccountListView::eventFilter(QObject* watched, QEvent* event)
{
    // The two boxes take upper case: a lower-case letter is typed as its
    // capital.
    if ((watched == searchBox() || watched == shortcutBox()) && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (const QString upper = key->text().toUpper(); upper != key->text()) {
            QKeyEvent capital(QEvent::KeyPress, key->key(), key->modifiers(), upper, key->isAutoRepeat(),
                ushort(key->count()));
            QCoreApplication::sendEvent(watched, &capital);
            return true;
        }
    }
    if (watched == searchBox() && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (isEnter(key)) {
            selectedAccountId_ = ui_->SelectedAccountID->text();
            accept();
            return true;
        }
        if (key->key() == Qt::Key_Escape) {
            reject();
            return true;
        }
    } else if (watched == grid() && event->type() == QEvent::KeyPress) {
        if (isEnter(static_cast<QKeyEvent*>(event))) {
            closeOnDataRow();
            return true;
        }
    } else if (watched == grid()->viewport() && event->type() == QEvent::MouseButtonPress) {
        // The row pressed becomes the selected row; a press below the last
        // row changes nothing.
        const QModelIndex pressed = grid()->indexAt(static_cast<QMouseEvent*>(event)->position().toPoint());
        if (pressed.isValid())
            selectedRow_ = pressed.row() + 1;
    }
    return QDialog::eventFilter(watched, event);
}

void TAccountListView::shortcutChanged()
{
    ui_->btnShortCutUpdate->setEnabled(shortcutBox()->isModified() && !shortcutBox()->text().isEmpty());
}

void TAccountListView::updateShortcut()
{
    TAccountModel* const model = TAccountModel::GetInstance();
    if (!shortcutBox()->isModified() || model == nullptr || selectedAccountId_.isEmpty())
        return;
    bool set = false;
    try {
        set = model->SetShortCut(selectedAccountId_, currentUserId(), shortcutBox()->text());
    } catch (const Error& error) {
        ShowAlert({ this, error.message(), resStrSystemAlert(), QMessageBox::Critical, QMessageBox::Ok });
        return;
    }
    if (set) {
        ui_->btnShortCutUpdate->setEnabled(false);
        RefreshRecord(grid()->currentIndex().row());
    } else {
        ShowAlert(
            { this, resStrShortcutConflict(), resStrSystemAlert(), QMessageBox::NoIcon, QMessageBox::Ok });
        shortcutBox()->selectAll();
    }
}

void TAccountListView::removeShortcut()
{
    TAccountModel* const model = TAccountModel::GetInstance();
    if (model == nullptr || selectedAccountId_.isEmpty())
        return;
    try {
        model->RemoveShortCut(selectedAccountId_, currentUserId());
    } catch (const Error& error) {
        ShowAlert({ this, error.message(), resStrSystemAlert(), QMessageBox::Critical, QMessageBox::Ok });
        return;
    }
    shortcutBox()->clear();
    RefreshRecord(grid()->currentIndex().row());
}

namespace internal {

void ResetAccountListView()
{
    qRemovePostRoutine(freeInstance);
    freeInstance();
    gUserIndex = -1;
}

} // namespace internal

} // namespace qal
