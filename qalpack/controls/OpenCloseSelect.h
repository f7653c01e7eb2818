// SPDX-License-Identifier: MIT
// TOpenCloseSelect: the drop-down that says whether a futures order opens or
// closes a position, as the order record's code.
#pragma once

#include <QComboBox>

#include "qalpack/model/ResourceLabel.h"
#include "qalpack/qalpack_widgets_export.h"

namespace qal {

// The selector's texts, context "OpenCloseSelect".
inline constexpr Label resOpenCloseNotSpecify { "OpenCloseSelect",
    QT_TRANSLATE_NOOP("OpenCloseSelect", "Not Specify") };
inline constexpr Label resOpenCloseOpen { "OpenCloseSelect", QT_TRANSLATE_NOOP("OpenCloseSelect", "Open") };
inline constexpr Label resOpenCloseClose { "OpenCloseSelect", QT_TRANSLATE_NOOP("OpenCloseSelect", "Close") };

// Items and codes: "Not Specify" 0, "Open" 1, "Close" 2. Every time the
// selector gets a parent the items are rebuilt and "Not Specify" selected,
// so items typed in a form are lost and a choice is reset. Value is the
// code of the selected item; no selection reads 0, and an unknown code
// selects "Not Specify".
class QALPACK_WIDGETS_EXPORT TOpenCloseSelect : public QComboBox
{
    Q_OBJECT
    Q_PROPERTY(int Value READ GetValue WRITE SetValue NOTIFY ValueChanged USER true)

public:
    explicit TOpenCloseSelect(QWidget* parent = nullptr);
    ~TOpenCloseSelect() override;

    [[nodiscard]] int GetValue() const;
    void SetValue(int code);

signals:
    void ValueChanged(int value);

protected:
    bool event(QEvent* event) override;

private:
    void rebuildItems();
};

namespace OpenCloseSelect {
// Adds TOpenCloseSelect to the palette page "OMS11".
QALPACK_WIDGETS_EXPORT void Register();
} // namespace OpenCloseSelect

} // namespace qal
