// SPDX-License-Identifier: MIT
#include "apps/desk/OrderTicket.h"

#include <algorithm>

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QMetaProperty>
#include <QPushButton>
#include <QShortcut>

#include "qalpack/controls/AcctEdit.h"
#include "qalpack/controls/OpenCloseSelect.h"
#include "qalpack/controls/PriceEntryEdit.h"
#include "qalpack/controls/PrincipalSelect.h"
#include "qalpack/controls/QuantityEditView.h"
#include "qalpack/controls/SymbolEntryEdit.h"
#include "qalpack/feedback/SystemAlert.h"
#include "qalpack/market/MarketInfo.h"
#include "qalpack/model/ResourceLabel.h"
#include "qalpack/model/omsData.h"
#include "qalpack/orderdb/orderDB.h"
#include "qalpack/profile/EntitlementData.h"
#include "qalpack/profile/UserProfile.h"
#include "qalpack/runtime/Format.h"

namespace qal {
namespace desk {

namespace {

// The instructions the ticket offers as check boxes, by the market
// information's property name, with their captions. Properties the ticket
// sets through other boxes (stop price, open/close, principal) and the
// stop-limit flag, which needs a stop price box the ticket lacks, are not
// offered.
struct InstructionCaption
{
    const char* property;
    const char* caption;
};

constexpr InstructionCaption kInstructionCaptions[] = {
    { "WManual", QT_TRANSLATE_NOOP("OrderTicket", "Manual") },
    { "WOddlot", QT_TRANSLATE_NOOP("OrderTicket", "Odd lot") },
    { "WShort_Sell", QT_TRANSLATE_NOOP("OrderTicket", "Short sell") },
    { "WFOK", QT_TRANSLATE_NOOP("OrderTicket", "Fill or kill") },
    { "WFAK", QT_TRANSLATE_NOOP("OrderTicket", "Fill and kill") },
    { "WAO", QT_TRANSLATE_NOOP("OrderTicket", "At-auction") },
    { "WEnhancedOrder", QT_TRANSLATE_NOOP("OrderTicket", "Enhanced limit") },
    { "WGoodtillWeek", QT_TRANSLATE_NOOP("OrderTicket", "Good till week") },
    { "WMarketorder", QT_TRANSLATE_NOOP("OrderTicket", "Market order") },
};

const char* captionOf(const QByteArray& property)
{
    for (const InstructionCaption& entry : kInstructionCaptions) {
        if (property == entry.property)
            return entry.caption;
    }
    return nullptr;
}

// The dealer's entitlement keys in the order TEntitlement searches them.
std::unique_ptr<TEntitlement> entitlementOf(const TUserProfile& profile)
{
    QStringList keys;
    for (int i = 0; i < profile.Entitlements().Count(); ++i)
        keys << profile.Entitlements().KeyByIndex(i);
    std::sort(keys.begin(), keys.end(),
        [](const QString& a, const QString& b) { return a.compare(b, Qt::CaseInsensitive) < 0; });
    auto entitlement = std::make_unique<TEntitlement>(profile.UserId());
    for (const QString& key : keys)
        entitlement->AddEntitle(key);
    return entitlement;
}

QMessageBox::StandardButton alert(QWidget* owner, const QString& text, QMessageBox::Icon icon,
    QMessageBox::StandardButtons buttons = QMessageBox::Ok)
{
    return ShowAlert(TAlert { owner, text, resStrSystemAlert(), icon, buttons });
}

} // namespace

OrderTicket::OrderTicket(TUserProfile& profile, InstrumentBook& book, QWidget* parent)
    : QWidget(parent)
    , profile_(profile)
    , book_(book)
{
    setObjectName(QStringLiteral("OrderTicket"));
    auto* grid = new QGridLayout(this);
    auto label = [this](const QString& text) { return new QLabel(text, this); };

    account_ = new TAccountEdit(this);
    account_->setObjectName(QStringLiteral("edtAccount"));
    exchange_ = new QComboBox(this);
    exchange_->setObjectName(QStringLiteral("cbxExchange"));
    for (const QString& code : profile_.GetExchageTradeList()) {
        if (code == QLatin1String("SEHK"))
            exchange_->addItem(QCoreApplication::translate("OrderTicket", "SEHK stocks"), code);
        else if (code == QLatin1String("HKFE"))
            exchange_->addItem(QCoreApplication::translate("OrderTicket", "HKFE futures"), code);
    }
    symbol_ = new TSymbolEntryEdit(this);
    symbol_->setObjectName(QStringLiteral("edtSymbol"));
    symbol_->setExchangeMode(true);
    price_ = new TPriceEntryEdit(this);
    price_->setObjectName(QStringLiteral("edtPrice"));
    price_->setMinValue(0);
    quantity_ = new TQuantityEdit(this);
    quantity_->setObjectName(QStringLiteral("edtQuantity"));
    openClose_ = new TOpenCloseSelect(this);
    openClose_->setObjectName(QStringLiteral("cbxOpenClose"));
    principal_ = new TPrincipalSelect(this);
    principal_->setObjectName(QStringLiteral("cbxPrincipal"));
    instrumentLabel_ = label(QString());
    instrumentLabel_->setObjectName(QStringLiteral("lblInstrument"));

    grid->addWidget(label(QCoreApplication::translate("OrderTicket", "Account")), 0, 0);
    grid->addWidget(account_, 0, 1);
    grid->addWidget(label(QCoreApplication::translate("OrderTicket", "Market")), 0, 2);
    grid->addWidget(exchange_, 0, 3);
    grid->addWidget(label(QCoreApplication::translate("OrderTicket", "Symbol")), 1, 0);
    grid->addWidget(symbol_, 1, 1);
    grid->addWidget(instrumentLabel_, 1, 2, 1, 2);
    grid->addWidget(label(QCoreApplication::translate("OrderTicket", "Price")), 2, 0);
    grid->addWidget(price_, 2, 1);
    grid->addWidget(label(QCoreApplication::translate("OrderTicket", "Quantity")), 2, 2);
    grid->addWidget(quantity_, 2, 3);
    openCloseLabel_ = label(QCoreApplication::translate("OrderTicket", "Open/Close"));
    grid->addWidget(openCloseLabel_, 3, 0);
    grid->addWidget(openClose_, 3, 1);
    principalLabel_ = label(QCoreApplication::translate("OrderTicket", "Principal"));
    grid->addWidget(principalLabel_, 3, 2);
    grid->addWidget(principal_, 3, 3);

    instructionBox_ = new QWidget(this);
    instructionBox_->setObjectName(QStringLiteral("instructions"));
    new QHBoxLayout(instructionBox_);
    instructionBox_->layout()->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(instructionBox_, 4, 0, 1, 4);

    buy_ = new QPushButton(QCoreApplication::translate("OrderTicket", "Buy"), this);
    buy_->setObjectName(QStringLiteral("btnBuy"));
    sell_ = new QPushButton(QCoreApplication::translate("OrderTicket", "Sell"), this);
    sell_->setObjectName(QStringLiteral("btnSell"));
    // Buys in the scheme's buy colour family, sells in the sell one, as the
    // blotter rows.
    buy_->setStyleSheet(
        QStringLiteral("QPushButton { background: #2a62c9; color: white; font-weight: bold; }"));
    sell_->setStyleSheet(
        QStringLiteral("QPushButton { background: #c92a2a; color: white; font-weight: bold; }"));
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(buy_);
    buttons->addWidget(sell_);
    grid->addLayout(buttons, 5, 0, 1, 4);
    result_ = label(QString());
    result_->setObjectName(QStringLiteral("lblResult"));
    result_->setWordWrap(true);
    grid->addWidget(result_, 6, 0, 1, 4);

    // The dealer's keyboard scheme's keys for the two sides.
    for (const auto& [item, side] : { std::pair { "kyBuy", 0 }, std::pair { "kySell", 1 } }) {
        const QString key = profile_.getCustomKey(QString::fromLatin1(item));
        if (!key.isEmpty()) {
            auto* shortcut = new QShortcut(QKeySequence(key), this);
            connect(shortcut, &QShortcut::activated, this, [this, s = side] { send(s); });
        }
    }

    connect(buy_, &QPushButton::clicked, this, [this] { send(0); });
    connect(sell_, &QPushButton::clicked, this, [this] { send(1); });
    connect(exchange_, &QComboBox::currentIndexChanged, this, [this] { exchangeChanged(); });
    connect(symbol_, &TSymbolEntryEdit::symbolExit, this, &OrderTicket::symbolChanged);
    exchangeChanged();
}

OrderTicket::~OrderTicket() = default;

QString OrderTicket::exchange() const
{
    return exchange_->currentData().toString();
}

void OrderTicket::setExchange(const QString& exchange)
{
    const int index = exchange_->findData(exchange);
    if (index >= 0)
        exchange_->setCurrentIndex(index);
}

void OrderTicket::exchangeChanged()
{
    const bool futures = exchange() == QLatin1String("HKFE");
    symbol_->setExchagne(exchange());
    if (futures) {
        symbol_->list()->hide();
    } else {
        symbol_->setExchagneSuffix(QStringLiteral("HK"));
        symbol_->list()->show();
    }
    for (QWidget* w : { static_cast<QWidget*>(openClose_), static_cast<QWidget*>(principal_),
             static_cast<QWidget*>(openCloseLabel_), static_cast<QWidget*>(principalLabel_) })
        w->setVisible(futures);
    symbol_->clear();
    instrument_ = book_.Find(exchange(), QString());
    price_->SetSpread(book_.Ladder(instrument_));
    quantity_->SetLotSize(instrument_.lot);
    instrumentLabel_->clear();
    rebuildInstructions();
}

void OrderTicket::symbolChanged(const QString& symbol)
{
    if (symbol.trimmed().isEmpty() || symbol.trimmed() == QLatin1String(".HK"))
        return;
    instrument_ = book_.Find(exchange(), symbol);
    if (exchange() == QLatin1String("SEHK"))
        symbol_->settext(instrument_.symbol);
    else
        symbol_->setText(instrument_.symbol);
    price_->SetSpread(book_.Ladder(instrument_));
    quantity_->SetLotSize(instrument_.lot);
    instrumentLabel_->setText(
        QCoreApplication::translate("OrderTicket", "Board lot %1").arg(instrument_.lot));
}

// The check boxes follow the market information of an order on the chosen
// exchange: one per instruction property it publishes that the dealer is
// entitled to, found by name through its meta-object.
void OrderTicket::rebuildInstructions()
{
    // The boxes sit at the left, each as wide as its caption.
    while (QLayoutItem* item = instructionBox_->layout()->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    instructions_.clear();
    TomsOrder probe;
    probe.Exch = exchange();
    const std::unique_ptr<TmarketInfo> info = MarketInfoFactory(probe);
    const std::unique_ptr<TEntitlement> entitlement = entitlementOf(profile_);
    const QMetaObject* meta = info->metaObject();
    for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i) {
        const QMetaProperty property = meta->property(i);
        const QByteArray name = property.name();
        const char* caption = captionOf(name);
        if (!caption || !property.isWritable() || !info->isEntitle(QString::fromLatin1(name), *entitlement))
            continue;
        auto* box = new QCheckBox(QCoreApplication::translate("OrderTicket", caption), instructionBox_);
        box->setObjectName(QStringLiteral("chk") + QString::fromLatin1(name));
        box->setProperty("instruction", name);
        instructionBox_->layout()->addWidget(box);
        instructions_.push_back(box);
    }
    static_cast<QHBoxLayout*>(instructionBox_->layout())->addStretch();
    const bool futures = exchange() == QLatin1String("HKFE");
    openClose_->setEnabled(futures && info->isEntitle(QStringLiteral("WOpen_Close"), *entitlement));
    principal_->setEnabled(futures && info->isEntitle(QStringLiteral("WPrincipal_Type"), *entitlement));
}

int OrderTicket::warningQuantity() const
{
    bool ok = false;
    int lots = profile_.getValue(QStringLiteral("CLIENT APP"), QStringLiteral("QtyWarningLots")).toInt(&ok);
    if (!ok || lots <= 0)
        lots = 100;
    return TQuantityEdit::WrappingProduct(lots, instrument_.lot);
}

bool OrderTicket::checkOrder(int side)
{
    Q_UNUSED(side);
    if (account_->text().trimmed().isEmpty() || !account_->ValidateAccountId()) {
        alert(this, res_InvalidAcct(), QMessageBox::Critical);
        account_->setFocus();
        return false;
    }
    const int quantity = quantity_->GetValue();
    const bool oddLot = std::any_of(instructions_.begin(), instructions_.end(), [](const QCheckBox* box) {
        return box->isChecked() && box->property("instruction").toByteArray() == "WOddlot";
    });
    if (quantity <= 0 || (!oddLot && quantity % instrument_.lot != 0)) {
        alert(this, res_invalidQty(), QMessageBox::Warning);
        quantity_->setFocus();
        return false;
    }
    const int limit = warningQuantity();
    if (quantity > limit) {
        const QString text = Format(res_QtyWarningMsg(), { instrument_.symbol, limit });
        if (alert(this, text, QMessageBox::Question, QMessageBox::Ok | QMessageBox::Cancel)
            != QMessageBox::Ok)
            return false;
    }
    return true;
}

bool OrderTicket::send(int side)
{
    symbolChanged(symbol_->getSymbolText());
    if (!checkOrder(side))
        return false;

    auto order = std::make_unique<TomsOrder>();
    order->Account = account_->text().trimmed();
    order->Symbol = instrument_.symbol;
    order->Exch = exchange();
    order->Side = side;
    order->Quantity = quantity_->GetValue();
    order->Price = price_->GetValue();
    order->User = profile_.UserId();
    order->OperatorFlag = profile_.getOperatorFlag();
    order->Status = StatusPending;
    if (order->Exch == QLatin1String("HKFE")) {
        order->OpenClose = openClose_->GetValue();
        order->PrincipalType = principal_->GetValue();
    }
    {
        const std::unique_ptr<TmarketInfo> info = MarketInfoFactory(*order);
        for (const QCheckBox* box : instructions_) {
            if (box->isChecked())
                info->setProperty(box->property("instruction").toByteArray().constData(), true);
        }
        info->syncOut();
    }

    try {
        orderSaveOrder(*order);
    } catch (const std::exception& e) {
        order->ErrorCode = TomsOrder::kSaveFailed;
        order->Message = QString::fromUtf8(e.what());
    }
    if (order->ErrorCode == TomsOrder::kSaveFailed) {
        showResult(
            QCoreApplication::translate("OrderTicket", "Order not saved: %1").arg(order->Message), true);
        return false;
    }
    showResult(QCoreApplication::translate("OrderTicket", "Order %1 saved: %2 %3 %4 @ %5")
                   .arg(order->OmsOrder_No, order->GetBuySellText(), QString::number(order->Quantity),
                       order->Symbol, TPriceEntryEdit::FormatPrice(double(order->Price))),
        false);
    account_->SaveAccountId();
    if (sent_)
        sent_(std::move(order));
    return true;
}

QString OrderTicket::resultText() const
{
    return result_->text();
}

void OrderTicket::showResult(const QString& text, bool failed)
{
    result_->setText(text);
    result_->setStyleSheet(failed ? QStringLiteral("color: #b00000;") : QStringLiteral("color: #006000;"));
}

} // namespace desk
} // namespace qal
