// SPDX-License-Identifier: MIT
// TPrincipalSelect: the drop-down that picks an order's principal (client,
// house or RT), as the order record's code.
#pragma once

#include <QComboBox>

#include "qalpack/model/ResourceLabel.h"
#include "qalpack/qalpack_widgets_export.h"

namespace qal {

// The selector's texts, context "PrincipalSelect".
inline constexpr Label resPrincipalNotSpecify { "PrincipalSelect",
    QT_TRANSLATE_NOOP("PrincipalSelect", "Not Specify") };
inline constexpr Label resPrincipalClient { "PrincipalSelect",
    QT_TRANSLATE_NOOP("PrincipalSelect", "Client") };
inline constexpr Label resPrincipalHouse { "PrincipalSelect", QT_TRANSLATE_NOOP("PrincipalSelect", "House") };
inline constexpr Label resPrincipalRT { "PrincipalSelect", QT_TRANSLATE_NOOP("PrincipalSelect", "RT") };

// Items and codes: "Not Specify" 0, "Client" 11, "House" 12, "RT" 13 (the
// codes order records carry; not 1 to 3). Rebuilt with "Not Specify"
// selected every time the selector gets a parent, as TOpenCloseSelect.
// Value is the selected item's code; no selection reads 0, and an unknown
// code (5, say) selects "Not Specify".
class QALPACK_WIDGETS_EXPORT TPrincipalSelect : public QComboBox
{
    Q_OBJECT
    Q_PROPERTY(int Value READ GetValue WRITE SetValue NOTIFY ValueChanged USER true)

public:
    explicit TPrincipalSelect(QWidget* parent = nullptr);
    ~TPrincipalSelect() override;

    [[nodiscard]] int GetValue() const;
    void SetValue(int code);

signals:
    void ValueChanged(int value);

protected:
    bool event(QEvent* event) override;

private:
    void rebuildItems();
};

namespace PrincipalSelect {
// Adds TPrincipalSelect to the palette page "OMS11".
QALPACK_WIDGETS_EXPORT void Register();
} // namespace PrincipalSelect

} // namespace qal
