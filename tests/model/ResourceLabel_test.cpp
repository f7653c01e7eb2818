// SPDX-License-Identifier: MIT
// The shared screen texts: exact English texts (blotters and messages depend
// on every character) and translation through Qt's translator.
#include "qalpack/model/ResourceLabel.h"

#include <cstring>
#include <string>

#include <QCoreApplication>
#include <QTranslator>

#include <gtest/gtest.h>

namespace qal {
namespace {

struct Row
{
    const char* name;
    Label label;
    const char* text;
};

// Kept apart from the header: a character changed in either fails its row.
const Row rows[] = {
    { "resLabelOrderTypeBuy", resLabelOrderTypeBuy, "BUY" },
    { "resLabelOrderTypeSell", resLabelOrderTypeSell, "SELL" },
    { "resLabelOrderTypeUnknown", resLabelOrderTypeUnknown, "UNKNOWN" },
    { "resLabelOrderTypeDeposit", resLabelOrderTypeDeposit, "DEPOSIT" },
    { "resLabelOrderTypeWithdraw", resLabelOrderTypeWithdraw, "WITHDRAW" },
    { "resLabelOrderStatusReject", resLabelOrderStatusReject, "Reje" },
    { "resLabelOrderStatusPending", resLabelOrderStatusPending, "Pend" },
    { "resLabelOrderStatusPartial", resLabelOrderStatusPartial, "Part" },
    { "resLabelOrderStatusInactive", resLabelOrderStatusInactive, "Inac" },
    { "resLabelOrderStatusQueuing", resLabelOrderStatusQueuing, "Queu" },
    { "resLabelOrderStatusCancel", resLabelOrderStatusCancel, "Canc" },
    { "resLabelOrderStatusConfirm", resLabelOrderStatusConfirm, "Conf" },
    { "resLabelOrderStatusFill", resLabelOrderStatusFill, "Comp" },
    { "resLabelOrderStatusNull", resLabelOrderStatusNull, "" },
    { "resLabelOrderStatusUnknown", resLabelOrderStatusUnknown, "Unkn" },
    { "resLabelOrderStatusPartCanc", resLabelOrderStatusPartCanc, "Part Canc" },
    { "resLabelOrderStatusAlloc", resLabelOrderStatusAlloc, "Alloc" },
    { "res_strSymbol", res_strSymbol, "SYMBOL" },
    { "res_strAcct", res_strAcct, "A/C" },
    { "res_strExeTime", res_strExeTime, "EXE TIME" },
    { "res_strBS", res_strBS, "B/S" },
    { "res_strUser", res_strUser, "USER" },
    { "res_strSource", res_strSource, "SOURCE" },
    { "res_strRemark", res_strRemark, "REMARK" },
    { "res_strApprID", res_strApprID, "APPR ID" },
    { "resLabelOrderStatusPendingCancel", resLabelOrderStatusPendingCancel, "Pending Canc" },
    { "resLabelSaveConfig_RelogonWarning", resLabelSaveConfig_RelogonWarning,
        "Please logout and logon again to activate this setting" },
    { "res_InvalidAcct", res_InvalidAcct, "Account Invalid" },
    { "res_InvalidUserOrPWD", res_InvalidUserOrPWD, "Invalid user or password !" },
    { "res_savingsetting", res_savingsetting, "Do you want to save these settings?" },
    { "res_InputAP", res_InputAP, "Please input numerical for AP!" },
    { "res_InputBP", res_InputBP, "please input numerical in Cost(bp)" },
    { "res_NoRecord", res_NoRecord, "No Matching Record." },
    { "res_NotRowSelected", res_NotRowSelected, "that a row is not selected" },
    { "res_SameOldNewPWD", res_SameOldNewPWD, "New password cannot be the same as old password." },
    { "res_reenterpassword", res_reenterpassword,
        "The new password is not same as the re-enter password\r\nPlease enter again" },
    { "res_passwordnotcorrect", res_passwordnotcorrect, "The password is not correct" },
    { "res_passwordLengthNotAccept", res_passwordLengthNotAccept,
        "Your password length should between %d to %d" },
    { "res_PasswordChangeSuccessful", res_PasswordChangeSuccessful, "Password change successful." },
    { "res_ChangeAlgoOrderFormCaption", res_ChangeAlgoOrderFormCaption, "Change Order?" },
    { "res_LblRemainQty", res_LblRemainQty, "Remaining Qty" },
    { "res_CancelOrder", res_CancelOrder, "Cancel Order" },
    { "res_ClosePosition", res_ClosePosition, "Close Position" },
    { "res_QueuedQty", res_QueuedQty, "Queued Quantity" },
    { "res_ClientID", res_ClientID, "Client ID" },
    { "res_calcOrder", res_calcOrder, "Calculate this order?\r\n" },
    { "res_addorderAcct", res_addorderAcct, "Account : %s\r\n" },
    { "res_addordersymbol", res_addordersymbol, "Symbol : %s\r\n" },
    { "res_addorderQty", res_addorderQty, "Qty : %s\r\n" },
    { "res_addOrderprice", res_addOrderprice, "Price : %s\r\n" },
    { "res_addorderside", res_addorderside, "Side : %s\r\n" },
    { "res_addorderoption", res_addorderoption, "Option : %s" },
    { "res_changeorder", res_changeorder, "Change this order?\r\n" },
    { "res_ordernum", res_ordernum, "Order : %s\r\n" },
    { "res_NewQty", res_NewQty, "New Qty : %s\r\n" },
    { "res_remainQty", res_remainQty, "Remain Qty : %s\r\n" },
    { "res_NewPrice", res_NewPrice, "New Price : %s\r\n" },
    { "res_NewTotalAmt", res_NewTotalAmt, "New Total Amount: %s " },
    { "res_ErrMsgGenGroupIDFail", res_ErrMsgGenGroupIDFail, "Generate Group ID Fail!" },
    { "res_ErrMsgGTCLateForActiveDay", res_ErrMsgGTCLateForActiveDay, "%s Should be late than Active Day." },
    { "res_strEnhanOrderDepth", res_strEnhanOrderDepth, "Enhance Order Depth" },
    { "res_QtyWarningMsg", res_QtyWarningMsg, "Order size for [%s ] is more than %d, Press OK to confirm." },
    { "res_BookOddLot", res_BookOddLot, "Book OddLot" },
    { "res_invalidQty", res_invalidQty, "The Quantity is Invalid." },
    { "res_LoadSpreadError", res_LoadSpreadError,
        "Loading spread (%s) error. Reset order input spread size to 1." },
    { "res_VWAP", res_VWAP, "VWAP" },
    { "res_balance", res_balance, "Balance" },
    { "res_aggressive", res_aggressive, "Aggressive" },
    { "res_conservative", res_conservative, "Conservative" },
};

TEST(ResourceLabel, EveryLabelHasItsExactText)
{
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_STREQ(row.label.context(), "ResourceLabel");
        EXPECT_STREQ(row.label.source(), row.text);
        EXPECT_EQ(row.label(), QString::fromLatin1(row.text));
    }
}

TEST(ResourceLabel, StatusNullIsEmptySoAnOrderWithoutStatusShowsAnEmptyCell)
{
    EXPECT_TRUE(resLabelOrderStatusNull().isEmpty());
}

TEST(ResourceLabel, ListHoldsEveryLabelOfTheUnitOnce)
{
    const std::vector<Label>& labels = resourceLabels();
    ASSERT_EQ(labels.size(), std::size(rows));
    for (std::size_t i = 0; i < labels.size(); ++i) {
        SCOPED_TRACE(rows[i].name);
        EXPECT_STREQ(labels[i].source(), rows[i].text);
        EXPECT_STREQ(labels[i].context(), "ResourceLabel");
    }
}

// Stands in for a loaded translation of the "ResourceLabel" context.
class FakeTranslation : public QTranslator
{
public:
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(
        const char* context, const char* source, const char* /*disambiguation*/, int /*n*/) const override
    {
        if (std::strcmp(context, "ResourceLabel") == 0 && std::strcmp(source, "Canc") == 0)
            return QStringLiteral("取消");
        return {};
    }
};

TEST(ResourceLabel, LabelIsReadThroughTheInstalledTranslator)
{
    FakeTranslation translation;
    ASSERT_TRUE(QCoreApplication::installTranslator(&translation));
    EXPECT_EQ(resLabelOrderStatusCancel(), QStringLiteral("取消"));
    EXPECT_EQ(resLabelOrderStatusPending(), QStringLiteral("Pend"));
    QCoreApplication::removeTranslator(&translation);
    EXPECT_EQ(resLabelOrderStatusCancel(), QStringLiteral("Canc"));
}

} // namespace
} // namespace qal
