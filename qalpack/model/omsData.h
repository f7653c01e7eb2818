// SPDX-License-Identifier: MIT
// The client order record: the order as the client and the dealer see it,
// with the exchange orders that carry it to the market, its approval, basket,
// good-till-date and algorithm fields, and the instruction remark every order
// screen shows. Also the client-order instruction labels.
#pragma once

#include <memory>
#include <vector>

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringView>

#include "qalpack/model/ResourceLabel.h"
#include "qalpack/model/exchData.h"
#include "qalpack/qalpack_export.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

// Client-order instruction labels, context "omsData".
inline constexpr Label orderManualOrderLabel { "omsData", QT_TRANSLATE_NOOP("omsData", "Manual;") };
inline constexpr Label orderOddTradeLabel { "omsData", QT_TRANSLATE_NOOP("omsData", "OddTrd;") };
inline constexpr Label orderManualTradeLabel { "omsData", QT_TRANSLATE_NOOP("omsData", "ManuTrd;") };
inline constexpr Label orderBookTradeLabel { "omsData", QT_TRANSLATE_NOOP("omsData", "BookTrd;") };
inline constexpr Label orderAllocatedOrder { "omsData", QT_TRANSLATE_NOOP("omsData", "ALD;") };
inline constexpr Label orderAllocateReverse { "omsData", QT_TRANSLATE_NOOP("omsData", "REV:%s;") };
inline constexpr Label orderAllocateNewOrder { "omsData", QT_TRANSLATE_NOOP("omsData", "ALO:%s;") };
inline constexpr Label orderMarketOrderLabel { "omsData", QT_TRANSLATE_NOOP("omsData", "MO;") };
inline constexpr Label orderReqApprovalLabel { "omsData", QT_TRANSLATE_NOOP("omsData", "APP;") };
inline constexpr Label orderTTSLabel { "omsData", QT_TRANSLATE_NOOP("omsData", "Time-to-Send:<%s> <%s>;") };
inline constexpr Label orderESOLabel { "omsData",
    QT_TRANSLATE_NOOP("omsData", "STOP:PRICE %s,TOLER %s, STEP %s;") };
inline constexpr Label orderESONoStepLabel { "omsData",
    QT_TRANSLATE_NOOP("omsData", "STOP:PRICE %s,TOLER %s;") };
inline constexpr Label orderOAOLabel { "omsData", QT_TRANSLATE_NOOP("omsData", "OAO ID:%s,SEQ=%s;") };
inline constexpr Label orderOCOLabel { "omsData", QT_TRANSLATE_NOOP("omsData", "OCO ID:%s,SEQ=%s;") };

// Every label of this unit, in declaration order (for tests and translators' tools).
[[nodiscard]] QALPACK_EXPORT const std::vector<Label>& omsDataLabels();

// Bits of the order option word (tag 40) that only the client order reads;
// OrderOptionBit (exchData) has the others.
enum ClientOrderOptionBit : int {
    OptionManualOrder = 0x20,
    OptionEnhanced = 0x400,
    OptionTradeReport = 0x20000, // with an odd-lot kind: an odd-lot trade
    OptionBookedTrade = 0x40000, // with OptionTradeReport
    OptionManualTrade = 0x80000, // with OptionTradeReport
    OptionGoodTillDate = 0x100000,
    OptionApprovalRequested = 0x8000000,
};

// Bits of the second instruction word (tag 489).
enum Option489Bit : int {
    Opt489WorkOrder = 0x1,
    Opt489PreTradeAllocation = 0x8,
    Opt489Void = 0x100,
    Opt489CDOrder = 0x4000,
    Opt489StopPrice = 0x100000,
    Opt489OpenEnd = 0x800000,
    Opt489Algo = 0x8000000, // AlgoCommand applies
    Opt489ChildQueue = 0x10000000, // a work order whose queue is summed over its child orders
};

// Names looked up in an order's Attributes (tag 487), letter case ignored.
// The last four are where this library keeps those values: the OMS servers
// send them as attributes, and the order database fills them with
// TomsOrder::setAttribute.
namespace OrderAttribute {
inline constexpr QStringView InvestorID = u"InvestorID";
inline constexpr QStringView PreTradeAllocation = u"PTA";
inline constexpr QStringView MarketSequence = u"MSEQ";
inline constexpr QStringView Dealer = u"DLR";
inline constexpr QStringView GoodTillDate = u"GTC"; // "GTC=<date_time>_<original order>_<original qty>"
inline constexpr QStringView CDMRemark = u"CDMRemark";
inline constexpr QStringView BBAction = u"BBAction";
inline constexpr QStringView UUID = u"UUID";
inline constexpr QStringView OriginalOrderNum = u"OriginalOrderNum";
} // namespace OrderAttribute

// One client order.
//
// Exchange orders (ExchOrders): kept under a key, normally the exchange's
// order number. An exchange order handed over without a QObject owner (as the
// loaders and message constructors make them) is adopted: this order becomes
// its parent. An exchange order whose parent is this order is freed when it is
// replaced, nak'ed, dropped by assign or reset, or when this order is
// destroyed, so hand over an unowned record only when nothing else will
// delete it (a host may still delete it early: the entry then reads null).
// An exchange order that already has another owner stays with it and is only
// referred to. Entries are guarded pointers, so an exchange order destroyed by
// its owner reads null and is skipped everywhere.
//
// Child work orders (ChildWorkOrders): client orders in their own right, owned
// by the host like every other loaded order; a work order only refers to them.
//
// The order database's loaders fill these members from their columns; which
// column fills which member is set by the column tables of
// qalpack/orderdb/orderDB.cpp (kOrderColumns for the orders table,
// kRequestColumns, kFuturesRequestColumns).
// Saving writes ErrorCode (kSaveFailed) and Message when the database refuses the order.
class QALPACK_EXPORT TomsOrder : public TexchOrder
{
    Q_OBJECT
    Q_PROPERTY(QString RBASKET_ID READ RBASKET_ID)
    Q_PROPERTY(QString RWAVE_ID READ RWAVE_ID)
    Q_PROPERTY(QString RApproval_ID READ RApproval_ID)
    Q_PROPERTY(QString RReject_ID READ RReject_ID)
    Q_PROPERTY(QString RSysRefValue READ RSysRefValue)
    Q_PROPERTY(QString RAPPROVAL_LIMIT READ RAPPROVAL_LIMIT)
    Q_PROPERTY(QString ROrder_Source READ ROrder_Source)
    Q_PROPERTY(QString RAppReason READ RAppReason)
    Q_PROPERTY(double RHeld READ RHeld)
    Q_PROPERTY(int RReqStatus READ RReqStatus)
    Q_PROPERTY(QString RLastTrdNum READ RLastTrdNum)
    Q_PROPERTY(QString RreqNum READ RreqNum)
    Q_PROPERTY(QObjectList RChildWorkOrder READ RChildWorkOrder)
    Q_PROPERTY(QString RAlgoCommand READ RAlgoCommand)
    Q_PROPERTY(int RFill_Qty READ RFill_Qty)
    Q_PROPERTY(double RFill_Price READ RFill_Price)
    Q_PROPERTY(int RRemain READ GetRemainingQty)
    Q_PROPERTY(QString ROrder_Time READ ROrder_Time)
    Q_PROPERTY(QString ROrder_Date READ ROrder_Date)
    Q_PROPERTY(QString RCurrency READ RCurrency)
    Q_PROPERTY(QString REXE_Time READ REXE_Time)
    Q_PROPERTY(QString RRef_ID READ RRef_ID)
    Q_PROPERTY(QString RInvestor_ID READ getInvestorID)
    Q_PROPERTY(QString RBB_ACTION READ GetBBAction)
    Q_PROPERTY(QString Last_MOD_Time READ getLast_MOD_Time)
    Q_PROPERTY(QString RCDMRemark READ GetCDMRemark)
    Q_PROPERTY(QString RUUID READ GetUUID)
    Q_PROPERTY(QString ROriginalOrdNum READ GetOriginalOrderNum)

public:
    // An exchange order kept by this order. `order` reads null once the
    // exchange order is destroyed.
    struct ExchOrderEntry
    {
        QString key;
        QPointer<TexchOrder> order;
    };

    // The futures request loader skips a record whose LoadMarker holds this
    // value when it obtains it (a factory sets it to refuse a row).
    static constexpr int kSkipOnLoad = 1000;
    // ErrorCode of an order the order database refused to save.
    static constexpr int kSaveFailed = -10;

    explicit TomsOrder(QObject* owner = nullptr);
    // Parses `message` (header token first, then tag/value pairs) with this
    // class's updateField, so the client order's own tags are read too.
    explicit TomsOrder(const QString& message, QObject* owner = nullptr);
    ~TomsOrder() override;

    // Stores one tagged value: the exchange order's tags first, then this
    // order's (the tag is noted at each member below). Keys that are not
    // numbers and unknown tags are ignored; a malformed number stores 0; tag
    // 1304 replaces GTCDetails with the value read as comma text.
    void updateField(QStringView key, QStringView value) override;
    // The exchange order's image, then this order's own tags after the
    // "502|TRADE|" terminator, as every derived record writes them: each only
    // when not empty (strings, GTCDetails as comma text) or not zero (numbers,
    // extended numbers with six decimals).
    [[nodiscard]] QString DDSImageMessage() const override;
    // Returns the order to its empty state: every field of the exchange order
    // (except Field43 and Field44) and of this order; adopted exchange orders
    // are freed, child work orders forgotten.
    void reset() override;
    // A client order shows and stores the exchange order's status texts,
    // side texts and codes (statusMessage, RawStatus and GetBuySellText are
    // TexchOrder's), so that the first four characters of statusMessage,
    // which the order database keeps, decode back to the same code through
    // RawStatus; its number is its own Status.
    [[nodiscard]] int statusNumber() const override;
    // The instruction remark shown on every blotter: labels ending in ";", in
    // this fixed order: Work, SS, Manual, AO, Enhanced, Odd or OddTrd, FOK, FAK,
    // GTC (with GetGTCRemark), Open End, APP, BookTrd, Void, MO, ManuTrd, Open
    // or Close, House or RT, the option word's stop price (STU/STD/STP), the
    // second word's stop price (STP again when both are set), the bare Remark,
    // the allocation that User_Ref "SPT:0/1/2" asks for (ALD, REV or ALO with
    // ref_no), PTA (with Opt489PreTradeAllocation), mSEQ, Dealer, CD Order,
    // and GetAlgoCmdRemark.
    [[nodiscard]] QString GetRemark() const override;
    // Queued quantity: 0 unless pending (1) or partly filled (2); then the sum
    // of CalculateQueuQty over the exchange orders, or, for a work order with
    // Opt489ChildQueue, over the exchange orders of every child work order;
    // the sum wraps to 32 bits as TexchOrder::CalculateFillQty's does.
    [[nodiscard]] int CalculateQueuQty() const override;

    using TexchOrder::assign;
    // Copies every field of `other`, its trades, exchange orders and child
    // work orders. The exchange orders stay with their owner: this order only
    // refers to them. Exchange orders this order had adopted and that `other`
    // does not share are freed. Subscriptions are not copied.
    void assign(const TomsOrder& other);
    // As assign, but the market side stays this order's own: its exchange
    // orders and trades are not touched.
    void assignNoMarket(const TomsOrder& other);
    // A new order with every field of this one, referring to (not owning) the
    // same exchange orders, trades and child work orders; no subscriptions.
    [[nodiscard]] std::unique_ptr<TomsOrder> shallowCopy() const;

    // Keeps `exch` under its exchange order number (Order_No); see
    // addExchOrderbyKey. A null pointer is ignored.
    void addExchOrder(TexchOrder* exch);
    // Keeps `exch` under `key`, adopting it when it has no owner. An earlier
    // entry of the same record is re-keyed; an earlier record under the same
    // non-empty key is replaced (and freed when adopted). Entries under an
    // empty key never replace each other. Null, or this order itself, is ignored.
    void addExchOrderbyKey(TexchOrder* exch, const QString& key);
    // The first live exchange order kept under `key`, or nullptr.
    [[nodiscard]] TexchOrder* GetExchOrder(const QString& key) const;
    // The live exchange orders in the order they were kept.
    [[nodiscard]] QList<TexchOrder*> exchOrderList() const;
    // True when the negative acknowledgement `exch` refused a change to an
    // exchange order the market already holds: this order keeps `exch` (the
    // same record, or one under its non-empty Order_No) and that exchange
    // order's status is neither none (0) nor rejected (-1).
    [[nodiscard]] bool isChangeError(const TexchOrder& exch) const;
    // Applies a negative acknowledgement. A refused change leaves the exchange
    // order in place (the market still holds it). Otherwise the exchange order
    // never reached the market: its entry (the same record, or the records
    // under its non-empty Order_No) is dropped, and freed when adopted. `exch`
    // may be the kept record itself; if adopted, it is destroyed.
    void nakExchOrder(const TexchOrder& exch);

    // Keeps a reference to `child` (the host owns it). Null, this order, and a
    // child already kept are ignored.
    void AddChildWorkOrder(TomsOrder* child);
    // Replaces this order's child work orders with `other`'s.
    void CopyChildWorkOrderList(const TomsOrder& other);
    // The live child work orders, in the order they were added.
    [[nodiscard]] QList<TomsOrder*> GetChildWorkOrderList() const;

    // The remaining quantity: 0 when cancelled (4), rejected (-1) or confirmed
    // (7); otherwise Quantity less Fill_Qty, never below 0.
    [[nodiscard]] int GetRemainingQty() const;
    // FillAmount / Fill_Qty when Fill_Qty is 1 or more, else 0.
    [[nodiscard]] long double getAveragePrice() const;
    // Sets FillAmount to the value (quantity x price) of the done trades
    // (status 3) on this order's side, kept by the order itself and by its
    // exchange orders (each trade counted once), then stores getAveragePrice
    // in AveragePrice. Without any trade, FillAmount is left as it is (the
    // order database or the host may have set it).
    void calAveragePrice();
    // Sets Held to what the order still holds against the client's limit: the
    // remaining quantity at the limit price.
    void toHold();
    // Records `other` as a component of this order: its SysRefValue joins
    // CompSysRef, once; an empty reference is ignored.
    void setcompSysRef(const TomsOrder& other);

    // The value of "InvestorID" in Attributes, or empty.
    [[nodiscard]] QString getInvestorID() const;
    // Values of Attributes under the names of OrderAttribute, or empty.
    [[nodiscard]] QString GetCDMRemark() const;
    [[nodiscard]] QString GetBBAction() const;
    [[nodiscard]] QString GetUUID() const;
    [[nodiscard]] QString GetOriginalOrderNum() const;
    // Sets (or with an empty value removes) an attribute, as the order
    // database does for the original order number.
    void setAttribute(QStringView name, const QString& value);

    // The good-till-date text inside "GTC%s;": empty unless OptionGoodTillDate.
    // Without GTCDetails it is "[GTCDate]" (when set) followed by the pieces
    // of the "GTC" attribute: ";date_time[...]", ";original order number[...]",
    // ";original qty[...]". With GTCDetails d0, d1, d2 it is
    // "[" + (GTCDate + "," when set) + original + "@" + d0 + "," + d1 + "X" +
    // d2 + "]", where original is GetOriginalOrderNum or else OmsOrder_No;
    // missing items read as empty.
    [[nodiscard]] QString GetGTCRemark() const;
    // The algorithm pieces of an order with Opt489Algo and an AlgoCommand, in
    // the order OAO, OCO, stop, time-to-send, VWAP. ";" and ":" in the command
    // separate name=value pairs, so a value is cut at its first ":". The VWAP
    // piece ends without ";". Empty otherwise.
    [[nodiscard]] QString GetAlgoCmdRemark() const;

    QString BASKET_ID; // 455
    QString WAVE_ID; // 456
    QString Approval_ID; // 460: who approved
    QString Reject_ID; // 462: who rejected
    QString SysRefValue; // 486
    QString APPROVAL_LIMIT; // 458
    QString Order_Source; // 400: where the order was entered
    QString AppReason; // 188: reason given with an approval request
    long double Held = 0; // 503: held amount
    int ReqStatus = 0; // 1116: status of the pending request
    QString LastTrdNum; // 1113: last trade applied
    QString reqNum; // 530: request number
    std::vector<ExchOrderEntry> ExchOrders;
    TStringList GTCDetails; // 1304 as comma text: the three items of GetGTCRemark
    QString GTCDate; // 495
    std::vector<QPointer<TomsOrder>> ChildWorkOrders;
    QString AlgoCommand; // 440: name=value pairs separated by ";"

    // Carried in messages without meaning to this record.
    QString Field187, Field402, Field403, Field404, Field405, Field407, Field421, Field422, Field423;
    QString Field457, Field463, Field485, Field488, Field1000;
    int Field401 = 0, Field442 = 0, Field1109 = 0;
    long double Price71 = 0, Price95 = 0, Price459 = 0, Price1117 = 0;

    // Fills: the value of the fills (sum of quantity x price) and the average
    // price last stored by calAveragePrice. Not carried in messages.
    long double FillAmount = 0;
    long double AveragePrice = 0;

    // Kept by the order database, not carried in messages.
    int Origin = 0; // origin code
    int Working = 0; // working quantity
    long double CreditChange = 0;
    long double NetProceed = 0;
    QString OperatorFlag; // its first character is saved
    QString Currency;
    long double ApprovalChange = 0; // approval amounts
    long double ApprovalApplied = 0;
    QString Message; // server message, or why the save failed
    int StatusFlags = 0;
    TStringList CompSysRef; // system references of the component orders
    int ErrorCode = 0; // kSaveFailed when the database refused the order
    QString Command; // requests: the request's command
    QString LastUser; // requests: the last user
    QString SubOrderNo; // futures requests
    QString LastOperation; // futures requests
    QString ExchangeDest; // futures requests: destination exchange
    int LoadMarker = 0; // kSkipOnLoad: the futures request loader skips the record

private:
    // Copies the fields declared by this class, not its lists of orders.
    void assignOwnFields(const TomsOrder& other);
    // Forgets every exchange order entry, freeing the adopted records that
    // `keep` does not refer to.
    void releaseExchOrders(const std::vector<ExchOrderEntry>& keep = {});
    [[nodiscard]] bool adopted(const TexchOrder* exch) const;
    [[nodiscard]] QString attribute(QStringView name) const;

    QString RBASKET_ID() const { return BASKET_ID; }
    QString RWAVE_ID() const { return WAVE_ID; }
    QString RApproval_ID() const { return Approval_ID; }
    QString RReject_ID() const { return Reject_ID; }
    QString RSysRefValue() const { return SysRefValue; }
    QString RAPPROVAL_LIMIT() const { return APPROVAL_LIMIT; }
    QString ROrder_Source() const { return Order_Source; }
    QString RAppReason() const { return AppReason; }
    double RHeld() const { return double(Held); }
    int RReqStatus() const { return ReqStatus; }
    QString RLastTrdNum() const { return LastTrdNum; }
    QString RreqNum() const { return reqNum; }
    QObjectList RChildWorkOrder() const;
    QString RAlgoCommand() const { return AlgoCommand; }
    int RFill_Qty() const { return Fill_Qty; }
    double RFill_Price() const { return double(getAveragePrice()); }
    QString ROrder_Time() const { return Order_Time501; }
    QString ROrder_Date() const { return Order_Date; }
    QString RCurrency() const { return Currency; }
    QString REXE_Time() const { return EXE_Time; }
    QString RRef_ID() const { return User_Ref; }
    QString getLast_MOD_Time() const { return Last_MOD_Time; }
};

} // namespace qal
