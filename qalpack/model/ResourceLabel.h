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
// The labels of this set, context "ResourceLabel", in one table (what
// resourceLabels lists); each name below is one row of it.
// clang-format off
inline constexpr Label resourceLabelTable[] = {
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "BUY") }, // resLabelOrderTypeBuy
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "SELL") }, // resLabelOrderTypeSell
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "UNKNOWN") }, // resLabelOrderTypeUnknown
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "DEPOSIT") }, // resLabelOrderTypeDeposit
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "WITHDRAW") }, // resLabelOrderTypeWithdraw
    // Order status abbreviations of the blotters; the null status shows an empty cell.
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Reje") }, // resLabelOrderStatusReject
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Pend") }, // resLabelOrderStatusPending
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Part") }, // resLabelOrderStatusPartial
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Inac") }, // resLabelOrderStatusInactive
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Queu") }, // resLabelOrderStatusQueuing
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Canc") }, // resLabelOrderStatusCancel
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Conf") }, // resLabelOrderStatusConfirm
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Comp") }, // resLabelOrderStatusFill
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "") }, // resLabelOrderStatusNull
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Unkn") }, // resLabelOrderStatusUnknown
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Part Canc") }, // resLabelOrderStatusPartCanc
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Alloc") }, // resLabelOrderStatusAlloc
    // Column captions.
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "SYMBOL") }, // res_strSymbol
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "A/C") }, // res_strAcct
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "EXE TIME") }, // res_strExeTime
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "B/S") }, // res_strBS
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "USER") }, // res_strUser
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "SOURCE") }, // res_strSource
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "REMARK") }, // res_strRemark
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "APPR ID") }, // res_strApprID
    // Further status captions and the messages of the order and account screens.
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Pending Canc") }, // resLabelOrderStatusPendingCancel
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Please logout and logon again to activate this setting") }, // resLabelSaveConfig_RelogonWarning
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Account Invalid") }, // res_InvalidAcct
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Invalid user or password !") }, // res_InvalidUserOrPWD
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Do you want to save these settings?") }, // res_savingsetting
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Please input numerical for AP!") }, // res_InputAP
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "please input numerical in Cost(bp)") }, // res_InputBP
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "No Matching Record.") }, // res_NoRecord
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "that a row is not selected") }, // res_NotRowSelected
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "New password cannot be the same as old password.") }, // res_SameOldNewPWD
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "The new password is not same as the re-enter password\r\nPlease enter again") }, // res_reenterpassword
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "The password is not correct") }, // res_passwordnotcorrect
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Your password length should between %d to %d") }, // res_passwordLengthNotAccept
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Password change successful.") }, // res_PasswordChangeSuccessful
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Change Order?") }, // res_ChangeAlgoOrderFormCaption
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Remaining Qty") }, // res_LblRemainQty
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Cancel Order") }, // res_CancelOrder
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Close Position") }, // res_ClosePosition
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Queued Quantity") }, // res_QueuedQty
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Client ID") }, // res_ClientID
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Calculate this order?\r\n") }, // res_calcOrder
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Account : %s\r\n") }, // res_addorderAcct
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Symbol : %s\r\n") }, // res_addordersymbol
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Qty : %s\r\n") }, // res_addorderQty
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Price : %s\r\n") }, // res_addOrderprice
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Side : %s\r\n") }, // res_addorderside
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Option : %s") }, // res_addorderoption
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Change this order?\r\n") }, // res_changeorder
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Order : %s\r\n") }, // res_ordernum
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "New Qty : %s\r\n") }, // res_NewQty
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Remain Qty : %s\r\n") }, // res_remainQty
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "New Price : %s\r\n") }, // res_NewPrice
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "New Total Amount: %s ") }, // res_NewTotalAmt
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Generate Group ID Fail!") }, // res_ErrMsgGenGroupIDFail
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "%s Should be late than Active Day.") }, // res_ErrMsgGTCLateForActiveDay
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Enhance Order Depth") }, // res_strEnhanOrderDepth
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Order size for [%s ] is more than %d, Press OK to confirm.") }, // res_QtyWarningMsg
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Book OddLot") }, // res_BookOddLot
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "The Quantity is Invalid.") }, // res_invalidQty
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Loading spread (%s) error. Reset order input spread size to 1.") }, // res_LoadSpreadError
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "VWAP") }, // res_VWAP
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Balance") }, // res_balance
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Aggressive") }, // res_aggressive
    { "ResourceLabel", QT_TRANSLATE_NOOP("ResourceLabel", "Conservative") }, // res_conservative
};
// clang-format on
inline constexpr const Label& resLabelOrderTypeBuy = resourceLabelTable[0];
inline constexpr const Label& resLabelOrderTypeSell = resourceLabelTable[1];
inline constexpr const Label& resLabelOrderTypeUnknown = resourceLabelTable[2];
inline constexpr const Label& resLabelOrderTypeDeposit = resourceLabelTable[3];
inline constexpr const Label& resLabelOrderTypeWithdraw = resourceLabelTable[4];
inline constexpr const Label& resLabelOrderStatusReject = resourceLabelTable[5];
inline constexpr const Label& resLabelOrderStatusPending = resourceLabelTable[6];
inline constexpr const Label& resLabelOrderStatusPartial = resourceLabelTable[7];
inline constexpr const Label& resLabelOrderStatusInactive = resourceLabelTable[8];
inline constexpr const Label& resLabelOrderStatusQueuing = resourceLabelTable[9];
inline constexpr const Label& resLabelOrderStatusCancel = resourceLabelTable[10];
inline constexpr const Label& resLabelOrderStatusConfirm = resourceLabelTable[11];
inline constexpr const Label& resLabelOrderStatusFill = resourceLabelTable[12];
inline constexpr const Label& resLabelOrderStatusNull = resourceLabelTable[13];
inline constexpr const Label& resLabelOrderStatusUnknown = resourceLabelTable[14];
inline constexpr const Label& resLabelOrderStatusPartCanc = resourceLabelTable[15];
inline constexpr const Label& resLabelOrderStatusAlloc = resourceLabelTable[16];
inline constexpr const Label& res_strSymbol = resourceLabelTable[17];
inline constexpr const Label& res_strAcct = resourceLabelTable[18];
inline constexpr const Label& res_strExeTime = resourceLabelTable[19];
inline constexpr const Label& res_strBS = resourceLabelTable[20];
inline constexpr const Label& res_strUser = resourceLabelTable[21];
inline constexpr const Label& res_strSource = resourceLabelTable[22];
inline constexpr const Label& res_strRemark = resourceLabelTable[23];
inline constexpr const Label& res_strApprID = resourceLabelTable[24];
inline constexpr const Label& resLabelOrderStatusPendingCancel = resourceLabelTable[25];
inline constexpr const Label& resLabelSaveConfig_RelogonWarning = resourceLabelTable[26];
inline constexpr const Label& res_InvalidAcct = resourceLabelTable[27];
inline constexpr const Label& res_InvalidUserOrPWD = resourceLabelTable[28];
inline constexpr const Label& res_savingsetting = resourceLabelTable[29];
inline constexpr const Label& res_InputAP = resourceLabelTable[30];
inline constexpr const Label& res_InputBP = resourceLabelTable[31];
inline constexpr const Label& res_NoRecord = resourceLabelTable[32];
inline constexpr const Label& res_NotRowSelected = resourceLabelTable[33];
inline constexpr const Label& res_SameOldNewPWD = resourceLabelTable[34];
inline constexpr const Label& res_reenterpassword = resourceLabelTable[35];
inline constexpr const Label& res_passwordnotcorrect = resourceLabelTable[36];
inline constexpr const Label& res_passwordLengthNotAccept = resourceLabelTable[37];
inline constexpr const Label& res_PasswordChangeSuccessful = resourceLabelTable[38];
inline constexpr const Label& res_ChangeAlgoOrderFormCaption = resourceLabelTable[39];
inline constexpr const Label& res_LblRemainQty = resourceLabelTable[40];
inline constexpr const Label& res_CancelOrder = resourceLabelTable[41];
inline constexpr const Label& res_ClosePosition = resourceLabelTable[42];
inline constexpr const Label& res_QueuedQty = resourceLabelTable[43];
inline constexpr const Label& res_ClientID = resourceLabelTable[44];
inline constexpr const Label& res_calcOrder = resourceLabelTable[45];
inline constexpr const Label& res_addorderAcct = resourceLabelTable[46];
inline constexpr const Label& res_addordersymbol = resourceLabelTable[47];
inline constexpr const Label& res_addorderQty = resourceLabelTable[48];
inline constexpr const Label& res_addOrderprice = resourceLabelTable[49];
inline constexpr const Label& res_addorderside = resourceLabelTable[50];
inline constexpr const Label& res_addorderoption = resourceLabelTable[51];
inline constexpr const Label& res_changeorder = resourceLabelTable[52];
inline constexpr const Label& res_ordernum = resourceLabelTable[53];
inline constexpr const Label& res_NewQty = resourceLabelTable[54];
inline constexpr const Label& res_remainQty = resourceLabelTable[55];
inline constexpr const Label& res_NewPrice = resourceLabelTable[56];
inline constexpr const Label& res_NewTotalAmt = resourceLabelTable[57];
inline constexpr const Label& res_ErrMsgGenGroupIDFail = resourceLabelTable[58];
inline constexpr const Label& res_ErrMsgGTCLateForActiveDay = resourceLabelTable[59];
inline constexpr const Label& res_strEnhanOrderDepth = resourceLabelTable[60];
inline constexpr const Label& res_QtyWarningMsg = resourceLabelTable[61];
inline constexpr const Label& res_BookOddLot = resourceLabelTable[62];
inline constexpr const Label& res_invalidQty = resourceLabelTable[63];
inline constexpr const Label& res_LoadSpreadError = resourceLabelTable[64];
inline constexpr const Label& res_VWAP = resourceLabelTable[65];
inline constexpr const Label& res_balance = resourceLabelTable[66];
inline constexpr const Label& res_aggressive = resourceLabelTable[67];
inline constexpr const Label& res_conservative = resourceLabelTable[68];

// Every label of this set, in the table's order. The list lives as long as
// the program.
[[nodiscard]] QALPACK_EXPORT const std::vector<Label>& resourceLabels();

} // namespace qal
