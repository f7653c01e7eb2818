// SPDX-License-Identifier: MIT
// The exchange order and trade records: built from the OMS servers' tagged
// "|" messages, written back in the same form, read by blotters through
// their published R.../W.../C... properties, and watched through the
// change notifier. Also the instruction and trade-classification labels.
#pragma once

#include <vector>

#include <QPointer>
#include <QString>
#include <QStringView>

#include "qalpack/model/ChangeNotifier.h"
#include "qalpack/model/ResourceLabel.h"
#include "qalpack/omslib/TaggedMessage.h" // the message writers and readers the records use
#include "qalpack/qalpack_export.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

// Trade classification and order instruction labels, context "exchData", in
// one table (what exchDataLabels lists); each name below is one row of it.
inline constexpr Label exchDataLabelTable[] = {
    { "exchData", QT_TRANSLATE_NOOP("exchData", "C") }, // resStrPrincipalTypeAgent
    { "exchData", QT_TRANSLATE_NOOP("exchData", "H") }, // resStrPrincipalTypePrincipal
    { "exchData", QT_TRANSLATE_NOOP("exchData", "RT") }, // resStrPrincipalTypeRT
    { "exchData", QT_TRANSLATE_NOOP("exchData", "U") }, // resStrPrincipalTypeUnclassified
    { "exchData", QT_TRANSLATE_NOOP("exchData", "O.Lot") }, // resStrTradeTypeOddLot
    { "exchData", QT_TRANSLATE_NOOP("exchData", "Manu") }, // resStrTradeTypeManual
    { "exchData", QT_TRANSLATE_NOOP("exchData", "PO") }, // resStrTradeTypePreopen
    { "exchData", QT_TRANSLATE_NOOP("exchData", "OS") }, // resStrTradeTypeOversea
    { "exchData", QT_TRANSLATE_NOOP("exchData", "U") }, // resStrTradeTypeUnclassified
    { "exchData", QT_TRANSLATE_NOOP("exchData", "N.H.") }, // resStrNonHedge
    { "exchData", QT_TRANSLATE_NOOP("exchData", "O.H.") }, // resStrOrderHedge
    { "exchData", QT_TRANSLATE_NOOP("exchData", "L.H.") }, // resStrLiquidHedge
    { "exchData", QT_TRANSLATE_NOOP("exchData", "N") }, // resStrNotShortSell
    { "exchData", QT_TRANSLATE_NOOP("exchData", "S.S.") }, // resStrShortSell
    { "exchData", QT_TRANSLATE_NOOP("exchData", "M.S.S") }, // resStrMMShortSell
    { "exchData", QT_TRANSLATE_NOOP("exchData", "C.S.S") }, // resStrCoverShortSell
    { "exchData", QT_TRANSLATE_NOOP("exchData", "Normal") }, // resStrSettleNormal
    { "exchData", QT_TRANSLATE_NOOP("exchData", "Isolate") }, // resStrSettleIsolate
    { "exchData", QT_TRANSLATE_NOOP("exchData", "Buy In") }, // resStrSettleBuyIn
    { "exchData", QT_TRANSLATE_NOOP("exchData", "SS;") }, // orderShortSellLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "Odd;") }, // orderOddLotLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "House;") }, // orderPrincipalTypeHouse
    { "exchData", QT_TRANSLATE_NOOP("exchData", "RT;") }, // orderPrincipalTypeRT
    { "exchData", QT_TRANSLATE_NOOP("exchData", "STP:%.3f;") }, // orderStopPriceLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "STU:%.3f;") }, // orderStopPriceUpTriggerLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "STD:%.3f;") }, // orderStopPriceDownTriggerLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "Open;") }, // orderOpenLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "Close;") }, // orderCloseLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "FAK;") }, // orderFAKLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "FOK;") }, // orderFOKLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "AO;") }, // orderAOLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "Enhanced;") }, // orderEnhancedLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "Work;") }, // orderWorkLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "Void;") }, // orderVoidLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "GTC%s;") }, // orderGoodtillWeekLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "PTA:%s;") }, // orderPreTradeLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "mSEQ:%s;") }, // orderMSEQLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "PASS:%s;") }, // orderPASSLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "CD Order;") }, // orderCDOrderLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "Open End;") }, // orderOpenEndLabel
    { "exchData", QT_TRANSLATE_NOOP("exchData", "Dealer=%s;") }, // orderDealerLabel
};
inline constexpr const Label& resStrPrincipalTypeAgent = exchDataLabelTable[0];
inline constexpr const Label& resStrPrincipalTypePrincipal = exchDataLabelTable[1];
inline constexpr const Label& resStrPrincipalTypeRT = exchDataLabelTable[2];
inline constexpr const Label& resStrPrincipalTypeUnclassified = exchDataLabelTable[3];
inline constexpr const Label& resStrTradeTypeOddLot = exchDataLabelTable[4];
inline constexpr const Label& resStrTradeTypeManual = exchDataLabelTable[5];
inline constexpr const Label& resStrTradeTypePreopen = exchDataLabelTable[6];
inline constexpr const Label& resStrTradeTypeOversea = exchDataLabelTable[7];
inline constexpr const Label& resStrTradeTypeUnclassified = exchDataLabelTable[8];
inline constexpr const Label& resStrNonHedge = exchDataLabelTable[9];
inline constexpr const Label& resStrOrderHedge = exchDataLabelTable[10];
inline constexpr const Label& resStrLiquidHedge = exchDataLabelTable[11];
inline constexpr const Label& resStrNotShortSell = exchDataLabelTable[12];
inline constexpr const Label& resStrShortSell = exchDataLabelTable[13];
inline constexpr const Label& resStrMMShortSell = exchDataLabelTable[14];
inline constexpr const Label& resStrCoverShortSell = exchDataLabelTable[15];
inline constexpr const Label& resStrSettleNormal = exchDataLabelTable[16];
inline constexpr const Label& resStrSettleIsolate = exchDataLabelTable[17];
inline constexpr const Label& resStrSettleBuyIn = exchDataLabelTable[18];
inline constexpr const Label& orderShortSellLabel = exchDataLabelTable[19];
inline constexpr const Label& orderOddLotLabel = exchDataLabelTable[20];
inline constexpr const Label& orderPrincipalTypeHouse = exchDataLabelTable[21];
inline constexpr const Label& orderPrincipalTypeRT = exchDataLabelTable[22];
inline constexpr const Label& orderStopPriceLabel = exchDataLabelTable[23];
inline constexpr const Label& orderStopPriceUpTriggerLabel = exchDataLabelTable[24];
inline constexpr const Label& orderStopPriceDownTriggerLabel = exchDataLabelTable[25];
inline constexpr const Label& orderOpenLabel = exchDataLabelTable[26];
inline constexpr const Label& orderCloseLabel = exchDataLabelTable[27];
inline constexpr const Label& orderFAKLabel = exchDataLabelTable[28];
inline constexpr const Label& orderFOKLabel = exchDataLabelTable[29];
inline constexpr const Label& orderAOLabel = exchDataLabelTable[30];
inline constexpr const Label& orderEnhancedLabel = exchDataLabelTable[31];
inline constexpr const Label& orderWorkLabel = exchDataLabelTable[32];
inline constexpr const Label& orderVoidLabel = exchDataLabelTable[33];
inline constexpr const Label& orderGoodtillWeekLabel = exchDataLabelTable[34];
inline constexpr const Label& orderPreTradeLabel = exchDataLabelTable[35];
inline constexpr const Label& orderMSEQLabel = exchDataLabelTable[36];
inline constexpr const Label& orderPASSLabel = exchDataLabelTable[37];
inline constexpr const Label& orderCDOrderLabel = exchDataLabelTable[38];
inline constexpr const Label& orderOpenEndLabel = exchDataLabelTable[39];
inline constexpr const Label& orderDealerLabel = exchDataLabelTable[40];

// Every label of this unit: the rows of exchDataLabelTable in order (for tests
// and translators' tools).
[[nodiscard]] QALPACK_EXPORT const std::vector<Label>& exchDataLabels();

// Order status codes carried in tag 5.
enum OrderStatus : int {
    StatusRejected = -1,
    StatusNone = 0,
    StatusPending = 1,
    StatusPartial = 2,
    StatusCompleted = 3,
    StatusCancelled = 4,
    StatusInactive = 5,
    StatusConfirmed = 7,
};

// Bits of the order option word (tag 40). The low five bits are the order kind.
enum OrderOptionBit : int {
    OrderKindMask = 0x1f,
    OrderKindMarket = 1,
    OrderKindOddLot = 3,
    OptionFAK = 0x80,
    OptionFOK = 0x100,
    OptionAuction = 0x200,
    OptionStop = 0x800,
    OptionStopUp = 0x800000,
    OptionStopDown = 0x1000000,
};

// Orders symbol lists with the market suffix (the text after the first ".")
// as the major key and the stem as the minor key; a symbol without a suffix
// sorts before any symbol with one. Both keys compare locale-aware and
// case-sensitive. Negative, zero or positive as for string comparison.
[[nodiscard]] QALPACK_EXPORT int CompareSuffixalSymbol(const QString& a, const QString& b);

// The source of symbol names that AssignName asks: a host's symbol master.
class QALPACK_EXPORT SymbolNameSource
{
public:
    virtual ~SymbolNameSource();
    [[nodiscard]] virtual QString englishName(const QString& symbol) const = 0;
    [[nodiscard]] virtual QString chineseName(const QString& symbol) const = 0;
};

class TexchOrder;

// One execution (fill) of an exchange order. Built from a tagged message
// (header token first, then tag/value pairs), from an order, or empty.
class QALPACK_EXPORT TomsTrade : public TChangeNotifier
{
    Q_OBJECT
    Q_PROPERTY(QString RExch_No READ RExch_No)
    Q_PROPERTY(QString ROrder_No READ ROrder_No)
    Q_PROPERTY(QString RSymbol READ GetSymbol)
    Q_PROPERTY(QString RAccount READ RAccount)
    Q_PROPERTY(QString RUser READ RUser)
    Q_PROPERTY(double RFill_Price READ RFill_Price)
    Q_PROPERTY(int RFill_Qty READ RFill_Qty)
    Q_PROPERTY(QString RSide READ GetBuySellText)
    Q_PROPERTY(QString RHedge READ getHedge)
    Q_PROPERTY(QString RPrincipal READ getPrincipal)
    Q_PROPERTY(QString RShortsell READ getShortSell)
    Q_PROPERTY(QString RBrokerID READ RBrokerID)
    Q_PROPERTY(QString RTradeType READ getTradeType)
    Q_PROPERTY(QString RStatus READ statusMessage)
    Q_PROPERTY(QString RRemark READ RRemark)
    Q_PROPERTY(QString REXE_Time READ REXE_Time)
    Q_PROPERTY(QString RExch READ RExch)
    Q_PROPERTY(QString RRunner READ RRunner)
    Q_PROPERTY(int RBuyQty READ getBuyQty)
    Q_PROPERTY(int RSellQty READ getSellQty)
    Q_PROPERTY(QString RSymbolEng READ getengname)
    Q_PROPERTY(QString RSymbolChi READ getchiname)

public:
    explicit TomsTrade(QObject* owner = nullptr);
    // Parses `message` with the most-derived updateField of this class.
    explicit TomsTrade(const QString& message, QObject* owner = nullptr);
    // A trade for the whole of `order`: the order's Order_No goes into
    // Exch_No (not Order_No), its Quantity into Fill_Qty, its Price into
    // Fill_Price; Account, User, Symbol, Side and Runner are copied.
    explicit TomsTrade(const TexchOrder& order, QObject* owner = nullptr);
    ~TomsTrade() override;

    // Applies every tag/value pair of a message after its header token.
    void applyMessage(QStringView message);
    // Stores one tagged value; keys that are not numbers and unknown tags are
    // ignored, malformed numbers store 0.
    virtual void updateField(QStringView key, QStringView value);
    [[nodiscard]] virtual QString DDSImageMessage() const;

    // Copies every field of `other` (not its subscriptions).
    void assign(const TomsTrade& other);
    // Order_No without its first character ("T12345" -> "12345").
    [[nodiscard]] QString exchTradeNum() const;
    // A trade has no partial or confirmed state: 2 and 7 show "Unkn".
    [[nodiscard]] virtual QString statusMessage() const;
    [[nodiscard]] QString RawStatus(int code) const;
    [[nodiscard]] int RawStatus(const QString& text) const;
    [[nodiscard]] QString GetSymbol() const { return Symbol; }
    [[nodiscard]] QString GetBuySellText() const;
    [[nodiscard]] QString getPrincipal() const;
    [[nodiscard]] QString getTradeType() const;
    [[nodiscard]] QString getHedge() const;
    [[nodiscard]] QString getShortSell() const;
    [[nodiscard]] int getBuyQty() const { return Side == 0 ? Fill_Qty : 0; }
    [[nodiscard]] int getSellQty() const { return Side == 1 ? Fill_Qty : 0; }
    // Takes the English and Chinese names of this trade's symbol from `source`.
    void AssignName(const SymbolNameSource& source);
    [[nodiscard]] QString getengname() const { return SymbolEng; }
    [[nodiscard]] QString getchiname() const { return SymbolChi; }

    QString Exch_No; // 7
    QString Order_No; // 8: the exchange order the trade belongs to
    QString Symbol; // 0
    QString Account; // 10
    QString User; // 13
    long double Fill_Price = 0; // 3
    int Fill_Qty = 0; // 4
    int Side = -1; // 11: 0 buy, 1 sell
    int Hedge = 0; // 47: 1 non-hedge, 2 order hedge, 3 liquidation hedge
    int Principal = 0; // 46: 11 client, 12 house, 13 RT
    int ShortSell = 0; // 101: 1 short, 2 market-maker short, 3 covered short
    QString BrokerID; // 45
    int TradeType = 0; // 43: 1 odd lot, 2 manual, 3 pre-opening, 4 overseas
    int Field44 = 0; // 44
    int Status = 0; // 5: 3 is a done trade
    QString Remark; // 25
    QString EXE_Time; // 33
    QString Exch; // 20
    QString Field78; // 78
    QString OmsOrder_No; // 6
    QString Runner; // 418
    QString SymbolEng; // set by AssignName, not carried in messages
    QString SymbolChi;

private:
    QString RExch_No() const { return Exch_No; }
    QString ROrder_No() const { return Order_No; }
    QString RAccount() const { return Account; }
    QString RUser() const { return User; }
    double RFill_Price() const { return double(Fill_Price); }
    int RFill_Qty() const { return Fill_Qty; }
    QString RBrokerID() const { return BrokerID; }
    QString RRemark() const { return Remark; }
    QString REXE_Time() const { return EXE_Time; }
    QString RExch() const { return Exch; }
    QString RRunner() const { return Runner; }
};

// One order as it stands at the exchange, with the trades done against it.
class QALPACK_EXPORT TexchOrder : public TChangeNotifier
{
    Q_OBJECT
    Q_PROPERTY(QString ROmsOrder_No READ ROmsOrder_No)
    Q_PROPERTY(QString ROrder_No READ ROrder_No)
    Q_PROPERTY(QString Rref_no READ Rref_no)
    Q_PROPERTY(QString WSymbol READ WSymbol WRITE setWSymbol)
    Q_PROPERTY(QString RSymbol READ GetSymbol)
    Q_PROPERTY(QString WAccount READ RAccount WRITE setWAccount)
    Q_PROPERTY(QString RAccount READ RAccount)
    Q_PROPERTY(QString RUser READ RUser)
    Q_PROPERTY(double WPrice READ RPrice WRITE setWPrice)
    Q_PROPERTY(double CPrice READ RPrice WRITE setWPrice)
    Q_PROPERTY(double RPrice READ RPrice)
    Q_PROPERTY(int WQuantity READ RQty WRITE setWQuantity)
    Q_PROPERTY(int CQuantity READ RQty WRITE setWQuantity)
    Q_PROPERTY(int RQty READ RQty)
    Q_PROPERTY(int WOrder_Side READ WOrder_Side WRITE setWOrder_Side)
    Q_PROPERTY(QString RSide READ GetBuySellText)
    Q_PROPERTY(QString RStatus READ statusMessage)
    Q_PROPERTY(QString ROrderOptionInfo READ GetOrderOptionInfo)
    Q_PROPERTY(QString RCounterParty READ RCounterParty)
    Q_PROPERTY(QString RRemark READ GetRemark)
    Q_PROPERTY(QString ROrder_Time READ ROrder_Time)
    Q_PROPERTY(QString RExch READ RExch)
    Q_PROPERTY(QString RBrokerID READ RBrokerID)
    Q_PROPERTY(QString RUser_Ref READ RUser_Ref)
    Q_PROPERTY(QString RRunner READ RRunner)
    Q_PROPERTY(QString RriskCtrlLevel READ RriskCtrlLevel)
    Q_PROPERTY(QString RLast_MOD_Time READ RLast_MOD_Time)
    Q_PROPERTY(int RBuyQty READ getBuyQty)
    Q_PROPERTY(int RSellQty READ getSellQty)
    Q_PROPERTY(int RBuyQueuQty READ getBuyQueuQty)
    Q_PROPERTY(int RSellQueuQty READ getSellQueuQty)
    Q_PROPERTY(int RQueu_Qty READ CalculateQueuQty)
    Q_PROPERTY(QString RSymbolEng READ getengname)
    Q_PROPERTY(QString RSymbolChi READ getchiname)

public:
    // The trades kept against this order, keyed by the trade's Order_No. The
    // trades belong to the host; an entry whose trade was destroyed reads null.
    struct TradeEntry
    {
        QString key;
        QPointer<TomsTrade> trade;
    };

    explicit TexchOrder(QObject* owner = nullptr);
    // Parses `message` with this class's updateField. A derived record's own
    // message constructor starts from TexchOrder(owner) and parses in its own
    // body, so that its own tags are seen.
    explicit TexchOrder(const QString& message, QObject* owner = nullptr);
    ~TexchOrder() override;

    // Applies every tag/value pair of a message after its header token,
    // through the most-derived updateField. A key without a value is dropped.
    void applyMessage(QStringView message);

    // Stores one tagged value. Keys that are not numbers and unknown tags are
    // ignored; a malformed number stores 0; tag 487 replaces Attributes with
    // the value read as comma text. Derived records handle their own tags and
    // pass the rest here.
    virtual void updateField(QStringView key, QStringView value);
    // The record as a tagged message without header, every field "tag|value|",
    // ending with "502|TRADE|". Fields are written under their own conditions
    // (most only when set); Price and Quantity always, 43 and 44 when >= 0.
    [[nodiscard]] virtual QString DDSImageMessage() const;
    [[nodiscard]] virtual QString statusMessage() const;
    // Returns the record to its empty state; Field43 and Field44 keep their values.
    virtual void reset();
    [[nodiscard]] virtual QString GetBuySellText() const;
    [[nodiscard]] virtual QString GetRemark() const;
    // Fixed, untranslated status texts: as statusMessage but 6 and unknown
    // codes spell "Unknown".
    [[nodiscard]] virtual QString RawStatus(int code) const;
    // Status code from the first four characters of a status text, compared
    // case-sensitively ("Part Canc" -> 2, "reje" -> 0).
    [[nodiscard]] virtual int RawStatus(const QString& text) const;
    // Sum of Fill_Qty over the done trades (status 3) on this order's side.
    // Quantities are 32-bit and their sums wrap as the old desks' 32-bit
    // arithmetic did: the exact sum modulo 2^32, read as signed (fills of
    // 2,000,000,000 and 2,000,000,000 give -294,967,296). Never undefined.
    [[nodiscard]] virtual int CalculateFillQty() const;
    // For pending (1) or partly filled (2) orders, Quantity less the fills,
    // wrapped to 32 bits like CalculateFillQty; else 0.
    [[nodiscard]] virtual int CalculateQueuQty() const;
    [[nodiscard]] virtual int statusNumber() const { return Status; }
    // Tells every plain subscriber that this record changed (data = this).
    virtual void NotifierUpdate();
    [[nodiscard]] virtual QString GetSymbol() const { return Symbol; }

    // Copies every field of `other`, its trade list included (the trades stay
    // the host's); subscriptions are not copied.
    void assign(const TexchOrder& other);
    // Fills the order from a trade: the trade's Order_No, OmsOrder_No, Symbol,
    // Account, User, Side, Status, Exch, Remark and Runner; Fill_Price as
    // Price; Fill_Qty as Quantity and Fill_Qty; EXE_Time as Order_Time; and the
    // fields that share a tag (46 principal, 47 hedge, 101 short sell, 43, 44).
    void assign(const TomsTrade& trade);
    // Keeps `trade` (not owned) under its Order_No; returns it.
    TomsTrade* addTrade(TomsTrade* trade);
    // The first trade kept under `key`, or nullptr.
    [[nodiscard]] TomsTrade* GetTrade(const QString& key) const;
    void copyTradesFrom(const TexchOrder& other);
    [[nodiscard]] const std::vector<TradeEntry>& trades() const { return Trades; }
    // +1 when this order's price is better than `price` for its side (higher
    // for a buy, lower for a sell), -1 when worse, 0 within 0.0001.
    // Throws qal::InvalidOrderType when the side is neither buy nor sell.
    [[nodiscard]] int betterPrice(double price) const;
    // The order's instructions as labels: "AO;", the stop piece, "House;" or
    // "RT;", "FOK;", "FAK;", User_Ref as it stands, "Odd;".
    [[nodiscard]] QString GetOrderOptionInfo() const;
    // Takes the English and Chinese names of this order's symbol from `source`.
    void AssignName(const SymbolNameSource& source);
    [[nodiscard]] QString getengname() const { return SymbolEng; }
    [[nodiscard]] QString getchiname() const { return SymbolChi; }
    [[nodiscard]] int getBuyQty() const { return Side == 0 ? Quantity : 0; }
    [[nodiscard]] int getSellQty() const { return Side == 1 ? Quantity : 0; }
    [[nodiscard]] int getBuyQueuQty() const { return Side == 0 ? CalculateQueuQty() : 0; }
    [[nodiscard]] int getSellQueuQty() const { return Side == 1 ? CalculateQueuQty() : 0; }

    // Fields with their message tags.
    QString OmsOrder_No; // 6
    QString Order_No; // 7: given by the exchange
    QString ref_no; // 15
    QString Symbol; // 0
    QString Account; // 10
    QString User; // 13
    long double Price = 0; // 3
    int Quantity = 0; // 4
    int Side = -1; // 11: 0 buy, 1 sell, -1 not set
    int Status = 0; // 5: OrderStatus
    int OrderOption = 0; // 40: OrderOptionBit
    int Option489 = 0; // 489: second instruction word
    int Option490 = 0; // 490
    int Option491 = 0; // 491
    int Option492 = 0; // 492
    int Field47 = 0; // 47
    int PrincipalType = 0; // 46: 12 house, 13 RT
    int ShortSell = 0; // 101: non-zero is a short sale
    QString CounterParty; // 45
    QString Remark; // 25
    int Fill_Qty = 0; // 34
    int Field35 = 0; // 35: always written
    int Field48 = 0; // 48: written only while cancelled
    QString Order_Time; // 33
    QString Order_Time501; // 501
    QString Order_Date; // not in messages (the order database fills it)
    QString EXE_Time; // not in messages (the order database fills it)
    long double StopPrice = 0; // 41
    long double Price42 = 0; // 42
    long double Price493 = 0; // 493
    long double Price494 = 0; // 494
    int Field1105 = 0; // 1105
    int Field1106 = 0; // 1106
    int Field1107 = 0; // 1107
    int Field1108 = 0; // 1108
    int OpenClose = 0; // 12: 1 open, 2 close; written only when above 0
    int Field39 = 0; // 39
    int Field464 = 0; // 464
    // Marks an exchange order booked by hand; the manual trade list tests it.
    // Not carried in messages; cleared by reset.
    int ManualSelector = 0;
    QString Exch; // 20
    QString BrokerID; // 78
    std::vector<TradeEntry> Trades;
    int Field43 = 0; // 43: written when >= 0; reset leaves it
    int Field44 = 0; // 44: written when >= 0; reset leaves it
    QString User_Ref; // 74
    QString Runner; // 418
    QString riskCtrlLevel; // 2020
    QString Last_MOD_Time; // 1119
    TStringList Attributes; // 487, as comma text of name=value pairs
    QString Field191; // 191
    QString SymbolEng; // set by AssignName, not carried in messages
    QString SymbolChi;

protected:
    // Copies the fields of `other` without its trade list.
    void assignFields(const TexchOrder& other);

    // updateField for a tag already read from its key; false when the tag is
    // not one of this record's. A derived record reads a pair's tag once for
    // its own tags and these. Not exported: called inside the library only.
    Q_DECL_HIDDEN bool storeField(int tag, QStringView value);

private:
    QString ROmsOrder_No() const { return OmsOrder_No; }
    QString ROrder_No() const { return Order_No; }
    QString Rref_no() const { return ref_no; }
    QString WSymbol() const { return Symbol; }
    void setWSymbol(const QString& value) { Symbol = value; }
    QString RAccount() const { return Account; }
    void setWAccount(const QString& value) { Account = value; }
    QString RUser() const { return User; }
    double RPrice() const { return double(Price); }
    void setWPrice(double value) { Price = value; }
    int RQty() const { return Quantity; }
    void setWQuantity(int value) { Quantity = value; }
    int WOrder_Side() const { return Side; }
    void setWOrder_Side(int value) { Side = value; }
    QString RCounterParty() const { return CounterParty; }
    QString ROrder_Time() const { return Order_Time; }
    QString RExch() const { return Exch; }
    QString RBrokerID() const { return BrokerID; }
    QString RUser_Ref() const { return User_Ref; }
    QString RRunner() const { return Runner; }
    QString RriskCtrlLevel() const { return riskCtrlLevel; }
    QString RLast_MOD_Time() const { return Last_MOD_Time; }
};

// An exchange order booked by hand, with its trade number (tag 8) and two
// trade words (tags 43 and 44) of its own. Its message is the exchange
// order's followed by "43|...|44|...|", after the "502|TRADE|" terminator.
class QALPACK_EXPORT amsManualTrade : public TexchOrder
{
    Q_OBJECT
    Q_PROPERTY(QString RTrade_No READ RTrade_No)

public:
    explicit amsManualTrade(QObject* owner = nullptr);
    explicit amsManualTrade(const QString& message, QObject* owner = nullptr);
    ~amsManualTrade() override;

    void updateField(QStringView key, QStringView value) override;
    [[nodiscard]] QString DDSImageMessage() const override;
    void reset() override;
    // Trade_No without its first character.
    [[nodiscard]] QString exchTradeNum() const;

    QString Trade_No; // 8
    int TradeType = 0; // 43
    int TradeField44 = 0; // 44

private:
    QString RTrade_No() const { return Trade_No; }
};

// One step of an order's history: the exchange order as it stood, and the
// action that led to it (tag 9, e.g. "NEW", "AMEND", "CANCEL"), written
// after the "502|TRADE|" terminator.
class QALPACK_EXPORT amsOrderHistory : public TexchOrder
{
    Q_OBJECT
    Q_PROPERTY(QString RAction READ RAction)

public:
    explicit amsOrderHistory(QObject* owner = nullptr);
    explicit amsOrderHistory(const QString& message, QObject* owner = nullptr);
    ~amsOrderHistory() override;

    void updateField(QStringView key, QStringView value) override;
    [[nodiscard]] QString DDSImageMessage() const override;
    void reset() override;

    QString Action; // 9

private:
    QString RAction() const { return Action; }
};

// A cross order: both sides at this broker. The order's own Account and User
// are one side; the contra side's account (tag 110) and user (tag 113) follow
// the "502|TRADE|" terminator when set.
class QALPACK_EXPORT amsCrossOrder : public TexchOrder
{
    Q_OBJECT
    Q_PROPERTY(QString RContraAccount READ RContraAccount)
    Q_PROPERTY(QString RContraUser READ RContraUser)

public:
    explicit amsCrossOrder(QObject* owner = nullptr);
    explicit amsCrossOrder(const QString& message, QObject* owner = nullptr);
    ~amsCrossOrder() override;

    void updateField(QStringView key, QStringView value) override;
    [[nodiscard]] QString DDSImageMessage() const override;
    void reset() override;

    QString ContraAccount; // 110
    QString ContraUser; // 113

private:
    QString RContraAccount() const { return ContraAccount; }
    QString RContraUser() const { return ContraUser; }
};

// A trade done through a CTF (executing) broker, named under tag 76 after the
// "502|TRADE|" terminator when set.
class QALPACK_EXPORT amsCTFTrade : public TomsTrade
{
    Q_OBJECT
    Q_PROPERTY(QString RCTFBroker READ RCTFBroker)

public:
    explicit amsCTFTrade(QObject* owner = nullptr);
    explicit amsCTFTrade(const QString& message, QObject* owner = nullptr);
    ~amsCTFTrade() override;

    void updateField(QStringView key, QStringView value) override;
    [[nodiscard]] QString DDSImageMessage() const override;

    QString CTFBroker; // 76

private:
    QString RCTFBroker() const { return CTFBroker; }
};

// The trade of a cross order, with the contra side's account (tag 110) and
// user (tag 113) after the "502|TRADE|" terminator when set.
class QALPACK_EXPORT amsCrossTrade : public TomsTrade
{
    Q_OBJECT
    Q_PROPERTY(QString RContraAccount READ RContraAccount)
    Q_PROPERTY(QString RContraUser READ RContraUser)

public:
    explicit amsCrossTrade(QObject* owner = nullptr);
    explicit amsCrossTrade(const QString& message, QObject* owner = nullptr);
    ~amsCrossTrade() override;

    void updateField(QStringView key, QStringView value) override;
    [[nodiscard]] QString DDSImageMessage() const override;

    QString ContraAccount; // 110
    QString ContraUser; // 113

private:
    QString RContraAccount() const { return ContraAccount; }
    QString RContraUser() const { return ContraUser; }
};

} // namespace qal
