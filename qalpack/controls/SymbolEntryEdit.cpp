// SPDX-License-Identifier: MIT
#include "qalpack/controls/SymbolEntryEdit.h"

#include <QComboBox>

#include "qalpack/controls/ComponentPalette.h"
#include "qalpack/feedback/EntryFeedback.h"
#include "qalpack/omslib/ConvertSymbolMgr.h"
#include "qalpack/runtime/Convert.h"

namespace qal {

namespace {

// Stock codes are shown with this many digits.
constexpr int kStockCodeDigits = 5;

} // namespace

TSymbolEntryEdit::TSymbolEntryEdit(QWidget* parent)
    : TComboEdit(parent)
{
    setAutoSelect(true);
    setComboVisible(false);
    setCharCase(ecUpperCase);
}

TSymbolEntryEdit::~TSymbolEntryEdit() = default;

void TSymbolEntryEdit::selectSuffix(const QString& suffix)
{
    const int index = list()->findText(suffix, Qt::MatchFixedString | Qt::MatchCaseSensitive);
    if (index >= 0)
        list()->setCurrentIndex(index);
}

void TSymbolEntryEdit::setExchagneSuffix(const QString& suffix)
{
    suffix_ = suffix;
    const int index = list()->findText(suffix, Qt::MatchFixedString | Qt::MatchCaseSensitive);
    if (index < 0) {
        list()->addItem(suffix);
        list()->setCurrentIndex(list()->count() - 1);
    } else {
        list()->setCurrentIndex(index);
    }
}

QString TSymbolEntryEdit::getSymbolText() const
{
    const QString suffix = suffix_.trimmed();
    if (!suffix.isEmpty() && !text().contains(u'.'))
        return text() + u'.' + suffix;
    return text();
}

void TSymbolEntryEdit::settext(const QString& symbol)
{
    const qsizetype dot = symbol.indexOf(u'.');
    if (dot < 0) {
        setText(symbol);
        return;
    }
    setText(symbol.left(dot));
    selectSuffix(symbol.mid(dot + 1).toUpper());
}

void TSymbolEntryEdit::setSymbol(const QString& symbol)
{
    const qsizetype dot = symbol.indexOf(u'.');
    if (exchangeMode_ && dot >= 0)
        selectSuffix(symbol.mid(dot + 1).toUpper());
    setText(symbol);
}

QString TSymbolEntryEdit::IsValidSymbol(const QString& symbol) const
{
    const bool pad = !exchangeMode_ || exchange_ == QLatin1String("SEHK") || suffix_ == QLatin1String("HK");
    int number = 0;
    if (!pad || !TryStrToInt(symbol, number))
        return symbol;
    const qsizetype zeros = kStockCodeDigits - symbol.size();
    return zeros > 0 ? QString(zeros, u'0') + symbol : symbol;
}

void TSymbolEntryEdit::EnterBox()
{
    ApplyEntryColor(this, QString::fromLatin1(coEntryActiveBground));
    ApplyEntryColor(list(), QString::fromLatin1(coEntryActiveBground));
    selectAll();
}

void TSymbolEntryEdit::ExitBox()
{
    ApplyEntryColor(this, QString::fromLatin1(coEntryInactiveBground));
    ApplyEntryColor(list(), QString::fromLatin1(coEntryInactiveBground));
    QString symbol = IsValidSymbol(getSymbolText());
    if (const TConvertSymbolMgr* map = SymbolMapCtrl())
        symbol = map->GetSymbol(symbol);
    setText(symbol);
    emit symbolExit(getSymbolText());
}

namespace SymbolEntryEdit {

void Register()
{
    RegisterComponent({ QString::fromLatin1(PalettePageOMS11), QStringLiteral("qal::TSymbolEntryEdit"),
        QStringLiteral("qalpack/controls/SymbolEntryEdit.h"),
        QStringLiteral("Instrument code: pads stock codes, keeps the exchange suffix"),
        [](QWidget* parent) { return new TSymbolEntryEdit(parent); } });
}

} // namespace SymbolEntryEdit

} // namespace qal
