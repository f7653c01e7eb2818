// SPDX-License-Identifier: MIT
// The named screen texts shared by the order and trade model: side names,
// status abbreviations of the blotters, column captions and the messages of
// the order and account screens.
//
// Every text is read through Qt's translation system when a label is called,
// so a host switches every screen's language at once: load a QTranslator with
// a compiled translation (for instance qalpack_zh_HK.qm) and install it with
// QCoreApplication::installTranslator before building its screens.
// `cmake --build <dir> --target qalpack_lupdate` refreshes
// translations/qalpack_zh_HK.ts from the labels declared in the code; other
// units declare their own label sets the same way, each in its own context.
#pragma once

#include <vector>

#include <QCoreApplication>
#include <QString>

#include "qalpack/qalpack_export.h"

namespace qal {

// A named screen text, translated through Qt's translation system when read:
// calling the label returns QCoreApplication::translate(context, source), or
// the English source text when no installed translator knows it.
class Label
{
public:
    constexpr Label(const char* context, const char* source) noexcept
        : context_(context)
        , source_(source)
    { }
    [[nodiscard]] QString operator()() const { return QCoreApplication::translate(context_, source_); }
    [[nodiscard]] constexpr const char* context() const noexcept { return context_; }
    // The English text, exactly as blotters and messages expect it: "%s" and
    // "%d" are filled by the caller, and texts that end a message line carry
    // "\r\n".
    [[nodiscard]] constexpr const char* source() const noexcept { return source_; }

private:
    const char* context_;
    const char* source_;
};

// ResourceLabel's set, context "ResourceLabel".
// Side texts (buy, sell, anything else) and account movement types.
inline constexpr Label resLabelOrderTypeBuy { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "BUY") };
inline constexpr Label resLabelOrderTypeSell { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "SELL") };
inline constexpr Label resLabelOrderTypeUnknown { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "UNKNOWN") };
inline constexpr Label resLabelOrderTypeDeposit { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "DEPOSIT") };
inline constexpr Label resLabelOrderTypeWithdraw { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "WITHDRAW") };
// Order status abbreviations of the blotters; the null status shows an empty cell.
inline constexpr Label resLabelOrderStatusReject { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Reje") };
inline constexpr Label resLabelOrderStatusPending { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Pend") };
inline constexpr Label resLabelOrderStatusPartial { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Part") };
inline constexpr Label resLabelOrderStatusInactive { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Inac") };
inline constexpr Label resLabelOrderStatusQueuing { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Queu") };
inline constexpr Label resLabelOrderStatusCancel { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Canc") };
inline constexpr Label resLabelOrderStatusConfirm { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Conf") };
inline constexpr Label resLabelOrderStatusFill { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Comp") };
inline constexpr Label resLabelOrderStatusNull { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "") };
inline constexpr Label resLabelOrderStatusUnknown { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Unkn") };
inline constexpr Label resLabelOrderStatusPartCanc { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Part Canc") };
inline constexpr Label resLabelOrderStatusAlloc { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Alloc") };
// Column captions.
inline constexpr Label res_strSymbol { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "SYMBOL") };
inline constexpr Label res_strAcct { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "A/C") };
inline constexpr Label res_strExeTime { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "EXE TIME") };
inline constexpr Label res_strBS { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "B/S") };
inline constexpr Label res_strUser { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "USER") };
inline constexpr Label res_strSource { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "SOURCE") };
inline constexpr Label res_strRemark { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "REMARK") };
inline constexpr Label res_strApprID { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "APPR ID") };
// Further status captions and the messages of the order and account screens.
inline constexpr Label resLabelOrderStatusPendingCancel { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Pending Canc") };
inline constexpr Label resLabelSaveConfig_RelogonWarning { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Please logout and logon again to activate this setting") };
inline constexpr Label res_InvalidAcct { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Account Invalid") };
inline constexpr Label res_InvalidUserOrPWD { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Invalid user or password !") };
inline constexpr Label res_savingsetting { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Do you want to save these settings?") };
inline constexpr Label res_InputAP { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Please input numerical for AP!") };
inline constexpr Label res_InputBP { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "please input numerical in Cost(bp)") };
inline constexpr Label res_NoRecord { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "No Matching Record.") };
inline constexpr Label res_NotRowSelected { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "that a row is not selected") };
inline constexpr Label res_SameOldNewPWD { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "New password cannot be the same as old password.") };
inline constexpr Label res_reenterpassword { "ResourceLabel",
    QT_TRANSLATE_NOOP(
        "ResourceLabel", "The new password is not same as the re-enter password\r\nPlease enter again") };
inline constexpr Label res_passwordnotcorrect { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "The password is not correct") };
inline constexpr Label res_passwordLengthNotAccept { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Your password length should between %d to %d") };
inline constexpr Label res_PasswordChangeSuccessful { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Password change successful.") };
inline constexpr Label res_ChangeAlgoOrderFormCaption { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Change Order?") };
inline constexpr Label res_LblRemainQty { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Remaining Qty") };
inline constexpr Label res_CancelOrder { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Cancel Order") };
inline constexpr Label res_ClosePosition { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Close Position") };
inline constexpr Label res_QueuedQty { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Queued Quantity") };
inline constexpr Label res_ClientID { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Client ID") };
inline constexpr Label res_calcOrder { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Calculate this order?\r\n") };
inline constexpr Label res_addorderAcct { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Account : %s\r\n") };
inline constexpr Label res_addordersymbol { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Symbol : %s\r\n") };
inline constexpr Label res_addorderQty { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Qty : %s\r\n") };
inline constexpr Label res_addOrderprice { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Price : %s\r\n") };
inline constexpr Label res_addorderside { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Side : %s\r\n") };
inline constexpr Label res_addorderoption { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Option : %s") };
inline constexpr Label res_changeorder { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Change this order?\r\n") };
inline constexpr Label res_ordernum { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Order : %s\r\n") };
inline constexpr Label res_NewQty { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "New Qty : %s\r\n") };
inline constexpr Label res_remainQty { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Remain Qty : %s\r\n") };
inline constexpr Label res_NewPrice { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "New Price : %s\r\n") };
inline constexpr Label res_NewTotalAmt { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "New Total Amount: %s ") };
inline constexpr Label res_ErrMsgGenGroupIDFail { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Generate Group ID Fail!") };
inline constexpr Label res_ErrMsgGTCLateForActiveDay { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "%s Should be late than Active Day.") };
inline constexpr Label res_strEnhanOrderDepth { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Enhance Order Depth") };
inline constexpr Label res_QtyWarningMsg { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Order size for [%s ] is more than %d, Press OK to confirm.") };
inline constexpr Label res_BookOddLot { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Book OddLot") };
inline constexpr Label res_invalidQty { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "The Quantity is Invalid.") };
inline constexpr Label res_LoadSpreadError { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Loading spread (%s) error. Reset order input spread size to 1.") };
inline constexpr Label res_VWAP { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "VWAP") };
inline constexpr Label res_balance { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Balance") };
inline constexpr Label res_aggressive { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Aggressive") };
inline constexpr Label res_conservative { "ResourceLabel",
    QT_TRANSLATE_NOOP("ResourceLabel", "Conservative") };

// Every label of this set, in the order above. The list lives as long as the
// program.
[[nodiscard]] QALPACK_EXPORT const std::vector<Label>& resourceLabels();

} // namespace qal
