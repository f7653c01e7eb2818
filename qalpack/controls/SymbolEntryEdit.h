// SPDX-License-Identifier: MIT
// TSymbolEntryEdit: the box a dealer types an order's instrument code into.
// Leaving it normalises the code (stock codes zero-padded to five digits),
// maps it through the desk's symbol mapping table when there is one, and
// keeps an exchange suffix from its drop-down list beside the code, so that
// the full symbol reads "00005.HK".
#pragma once

#include "qalpack/controls/ComboEdit.h"
#include "qalpack/qalpack_widgets_export.h"

namespace qal {

// The list starts hidden and the box upper-cases what is typed.
//
// Leaving the box paints the user's colour "coEntryInactiveBground" on the
// box and the list, replaces the text by the normalised full symbol
// (IsValidSymbol of getSymbolText(), then the process-wide SymbolMapCtrl's
// mapping when that is set up), and emits symbolExit() with getSymbolText()
// of the new text. Entering paints "coEntryActiveBground" and selects all.
// With nobody logged on the box keeps the palette's colours.
//
// The suffix takes part in the full symbol even with ExchangeMode off, so
// with a suffix set the padding sees "5.HK" and leaves it as it is.
class QALPACK_WIDGETS_EXPORT TSymbolEntryEdit : public TComboEdit
{
    Q_OBJECT
    Q_PROPERTY(bool ExchangeMode READ ExchangeMode WRITE setExchangeMode)
    Q_PROPERTY(QString Exchange READ getExchange WRITE setExchagne)
    Q_PROPERTY(QString ExchangeSuffix READ getExchangeSuffix WRITE setExchagneSuffix)

public:
    explicit TSymbolEntryEdit(QWidget* parent = nullptr);
    ~TSymbolEntryEdit() override;

    // Whether the exchange and suffix decide the padding (see IsValidSymbol).
    [[nodiscard]] bool ExchangeMode() const { return exchangeMode_; }
    void setExchangeMode(bool on) { exchangeMode_ = on; }

    // The exchange code ("SEHK", "HKFE"). The setter's spelling is the
    // desks' own interface; keep it.
    void setExchagne(const QString& exchange) { exchange_ = exchange; }
    [[nodiscard]] QString getExchange() const { return exchange_; }

    // Stores `suffix` ("HK") and selects it in the list, appending it first
    // when the list lacks it. The getter returns the stored suffix trimmed.
    void setExchagneSuffix(const QString& suffix);
    [[nodiscard]] QString getExchangeSuffix() const { return suffix_.trimmed(); }

    // The full symbol: the text, "." and the suffix when the trimmed suffix
    // is not empty and the text holds no "."; the text as it is otherwise.
    [[nodiscard]] QString getSymbolText() const;

    // Puts the part of `symbol` before its first "." into the box and
    // selects the part after it, upper-cased, in the list when the list
    // holds it.
    void settext(const QString& symbol);
    [[nodiscard]] QString gettext() const { return text(); }

    // With ExchangeMode on and a "." in `symbol`, selects the upper-cased
    // part after the dot in the list when it holds it; then shows `symbol`
    // as it is.
    void setSymbol(const QString& symbol);

    // IsValidSymbol of the text.
    [[nodiscard]] QString getsym() const { return IsValidSymbol(text()); }

    // The normalised code: when ExchangeMode is off, or the exchange is
    // "SEHK", or the suffix is "HK", a code that reads as an integer is
    // zero-padded on the left to five characters ("5" gives "00005", "700"
    // "00700", "12345" stays); anything else comes back unchanged.
    [[nodiscard]] QString IsValidSymbol(const QString& symbol) const;

    // Empties the box.
    void ClearView() { clear(); }

signals:
    // On every exit, with the full symbol after normalising.
    void symbolExit(const QString& symbol);

protected:
    void EnterBox() override;
    void ExitBox() override;

private:
    void selectSuffix(const QString& suffix);

    bool exchangeMode_ = false;
    QString exchange_;
    QString suffix_;
};

namespace SymbolEntryEdit {
// Adds TSymbolEntryEdit to the palette page "OMS11".
QALPACK_WIDGETS_EXPORT void Register();
} // namespace SymbolEntryEdit

} // namespace qal
