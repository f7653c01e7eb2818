// SPDX-License-Identifier: MIT
// Market information: an exchange's view of one client order's instructions.
// It unpacks the order's instruction bits into named flags that order-entry
// screens bind to by property name, tells which instructions the user is
// entitled to, and packs the choices back into the order.
#pragma once

#include <memory>

#include <QObject>
#include <QPointer>
#include <QString>

#include "qalpack/qalpack_export.h"

namespace qal {

class TEntitlement;
class TomsOrder;

// One order instruction chosen on a screen (manual, FOK, at-auction, ...).
using TOrderInstruct = bool;

// Stop-limit marker in the second instruction word (Option489) for an order
// whose trigger is handled apart from the exchange's own stop-limit bit.
inline constexpr int kStopLimitTriggerOption489 = 0x00100001;

// The base of every market's view. Each market publishes its flags as pairs of
// Q_PROPERTY: W<Flag> (read-write) for entry screens, R<Flag> (read-only) for
// display; screens and entitlement checks find them through QMetaObject.
//
// The object refers to its order without owning it. Once the order is
// destroyed, every operation that reaches the order (order(), syncIn, syncOut,
// the stop price, open/close, principal type, broker and reference number
// properties) throws qal::Error; flags alone stay readable.
//
// Flags only accumulate: syncIn never clears a flag and syncOut never clears
// an order bit, so withdrawing an instruction means starting again from a
// fresh order and object.
class QALPACK_EXPORT TmarketInfo : public QObject
{
    Q_OBJECT

public:
    ~TmarketInfo() override;

    // Sets each flag whose instruction the order carries.
    virtual void syncIn() = 0;
    // Sets in the order the instruction of each flag that is set.
    virtual void syncOut() = 0;
    // A new object of the same class viewing `order` (flags from `order`).
    // The caller owns it; `order` must outlive it.
    [[nodiscard]] virtual std::unique_ptr<TmarketInfo> createObject(TomsOrder& order) const = 0;
    // A new object of this class viewing `order`, with the flags that this
    // class carries over copied from `source`; null when `source` is not of
    // this class (or derived from it). STOP_LIMIT is never carried over: a
    // stop-limit has to be entered again on the copy.
    [[nodiscard]] virtual std::unique_ptr<TmarketInfo> deepCopy(
        const TmarketInfo& source, TomsOrder& order) const = 0;
    // Whether the user of `entitlement` may use the instruction behind the
    // published property `propertyName` (compared case-sensitively); an empty
    // name asks whether the user may trade on this market at all. Unknown
    // names give false.
    [[nodiscard]] virtual bool isEntitle(
        const QString& propertyName, const TEntitlement& entitlement) const = 0;

    // The order this object views. Throws qal::Error once it was destroyed.
    [[nodiscard]] TomsOrder& order() const;

protected:
    explicit TmarketInfo(TomsOrder& order, QObject* parent);

private:
    QPointer<TomsOrder> order_;
};

// The stock exchange's view. Besides its published flags it has two that only
// code sets before syncOut: MarketOrderManual sends a market order as manual
// too, StopLimitTrigger marks a stop-limit in the second instruction word
// (kStopLimitTriggerOption489) instead of the instruction word's stop bit.
class QALPACK_EXPORT SEHKinfo : public TmarketInfo
{
    Q_OBJECT
    Q_PROPERTY(double WStop_Price READ RStop_Price WRITE setWStop_Price)
    Q_PROPERTY(bool WSTOP_LIMIT MEMBER STOP_LIMIT)
    Q_PROPERTY(bool WManual MEMBER Manual)
    Q_PROPERTY(bool WOddlot MEMBER Oddlot)
    Q_PROPERTY(bool WShort_Sell MEMBER Short_Sell)
    Q_PROPERTY(bool WFOK MEMBER FOK)
    Q_PROPERTY(bool WFAK MEMBER FAK)
    Q_PROPERTY(bool WAO MEMBER AO)
    Q_PROPERTY(bool WEnhancedOrder MEMBER EnhancedOrder)
    Q_PROPERTY(bool WGoodtillWeek MEMBER GoodtillWeek)
    Q_PROPERTY(bool WMarketorder MEMBER Marketorder)
    Q_PROPERTY(double RStop_Price READ RStop_Price)
    Q_PROPERTY(bool RManual READ RManual)
    Q_PROPERTY(bool ROddlot READ ROddlot)
    Q_PROPERTY(bool RShort_Sell READ RShort_Sell)
    Q_PROPERTY(bool RFOK READ RFOK)
    Q_PROPERTY(bool RFAK READ RFAK)
    Q_PROPERTY(bool RAO READ RAO)
    Q_PROPERTY(bool REnhancedOrder READ REnhancedOrder)
    Q_PROPERTY(bool RGoodtillWeek READ RGoodtillWeek)
    Q_PROPERTY(bool RMarketorder READ RMarketorder)

public:
    // Views `order` (not owned; it must outlive this object) and reads its
    // instructions (syncIn).
    explicit SEHKinfo(TomsOrder& order, QObject* parent = nullptr);
    ~SEHKinfo() override;

    // Manual 0x20, FAK 0x80, FOK 0x100, AO 0x200, EnhancedOrder 0x400,
    // STOP_LIMIT 0x800, GoodtillWeek 0x100000, Marketorder for order kind 1,
    // Oddlot for kind 3, Short_Sell for a non-zero short-sell code.
    void syncIn() override;
    // The same bits back; Marketorder as kind 1 (with 0x20 under
    // MarketOrderManual), Oddlot as kind 3 (both ORed into the word);
    // Short_Sell as short-sell code 3 on a buy (side 0) and 1 on a sell
    // (side 1), any other side left alone; STOP_LIMIT as described above.
    void syncOut() override;
    [[nodiscard]] std::unique_ptr<TmarketInfo> createObject(TomsOrder& order) const override;
    // Carries over Manual, Oddlot, Short_Sell, FOK, FAK, AO, EnhancedOrder,
    // GoodtillWeek and Marketorder; not the stop price, STOP_LIMIT or the two
    // code-only flags.
    [[nodiscard]] std::unique_ptr<TmarketInfo> deepCopy(
        const TmarketInfo& source, TomsOrder& order) const override;
    // "" SEHKTrade; WStop_Price, WSTOP_LIMIT OEStopL; WOddlot OEOddLot;
    // WShort_Sell OEShortS; WManual always; WFOK OEFOK; WFAK OEFAK; WAO OEAO;
    // WEnhancedOrder OEEnhanced; WGoodtillWeek OEGoodtillWeek; WMarketorder
    // OEMarketOrder.
    [[nodiscard]] bool isEntitle(const QString& propertyName, const TEntitlement& entitlement) const override;

    TOrderInstruct Manual = false;
    TOrderInstruct Oddlot = false;
    TOrderInstruct Short_Sell = false;
    TOrderInstruct STOP_LIMIT = false;
    TOrderInstruct FOK = false;
    TOrderInstruct FAK = false;
    TOrderInstruct AO = false;
    TOrderInstruct EnhancedOrder = false;
    TOrderInstruct GoodtillWeek = false;
    TOrderInstruct Marketorder = false;
    TOrderInstruct MarketOrderManual = false; // not published
    TOrderInstruct StopLimitTrigger = false; // not published

private:
    double RStop_Price() const;
    void setWStop_Price(double value);
    bool RManual() const { return Manual; }
    bool ROddlot() const { return Oddlot; }
    bool RShort_Sell() const { return Short_Sell; }
    bool RFOK() const { return FOK; }
    bool RFAK() const { return FAK; }
    bool RAO() const { return AO; }
    bool REnhancedOrder() const { return EnhancedOrder; }
    bool RGoodtillWeek() const { return GoodtillWeek; }
    bool RMarketorder() const { return Marketorder; }
};

// The futures exchange's view. The stop price, open/close indicator and
// principal type are read and written straight in the order. Screens have
// always found RFAK showing the FOK flag and RSTOP_LIMIT writable; both stay so.
class QALPACK_EXPORT HKFEinfo : public TmarketInfo
{
    Q_OBJECT
    Q_PROPERTY(double WStop_Price READ RStop_Price WRITE setWStop_Price)
    Q_PROPERTY(int WOpen_Close READ getOC WRITE setOC)
    Q_PROPERTY(int WPrincipal_Type READ getPrinType WRITE setPrinType)
    Q_PROPERTY(bool WManual MEMBER Manual)
    Q_PROPERTY(bool WAO MEMBER AO)
    Q_PROPERTY(bool WFOK MEMBER FOK)
    Q_PROPERTY(bool WFAK MEMBER FAK)
    Q_PROPERTY(bool WSTOP_LIMIT MEMBER STOP_LIMIT)
    Q_PROPERTY(double RStop_Price READ RStop_Price)
    Q_PROPERTY(int ROpen_Close READ getOC)
    Q_PROPERTY(int RPrincipal_Type READ getPrinType)
    Q_PROPERTY(bool RManual READ RManual)
    Q_PROPERTY(bool RAO READ RAO)
    Q_PROPERTY(bool RFOK READ RFOK)
    Q_PROPERTY(bool RFAK READ RFAK)
    Q_PROPERTY(bool RSTOP_LIMIT MEMBER STOP_LIMIT)

public:
    // Views `order` (not owned; it must outlive this object) and reads its
    // instructions (syncIn).
    explicit HKFEinfo(TomsOrder& order, QObject* parent = nullptr);
    ~HKFEinfo() override;

    // Manual 0x20, FAK 0x80, FOK 0x100, AO 0x200, STOP_LIMIT 0x800, both ways.
    void syncIn() override;
    void syncOut() override;
    [[nodiscard]] std::unique_ptr<TmarketInfo> createObject(TomsOrder& order) const override;
    // Writes the source order's stop price, open/close and principal type into
    // `order`, and carries over AO, Manual, FOK and FAK.
    [[nodiscard]] std::unique_ptr<TmarketInfo> deepCopy(
        const TmarketInfo& source, TomsOrder& order) const override;
    // "" HKFETrade; WStop_Price, WSTOP_LIMIT OEStopL; WOpen_Close OEOpenC;
    // WPrincipal_Type OEPrin; WManual always; WAO OEAO; WFOK OEFOK; WFAK OEFAK.
    [[nodiscard]] bool isEntitle(const QString& propertyName, const TEntitlement& entitlement) const override;

    // The order's open/close indicator (1 open, 2 close) and principal type.
    [[nodiscard]] int getOC() const;
    void setOC(int value);
    [[nodiscard]] int getPrinType() const;
    void setPrinType(int value);

    TOrderInstruct AO = false;
    TOrderInstruct Manual = false;
    TOrderInstruct FOK = false;
    TOrderInstruct FAK = false;
    TOrderInstruct STOP_LIMIT = false;

private:
    double RStop_Price() const;
    void setWStop_Price(double value);
    bool RManual() const { return Manual; }
    bool RAO() const { return AO; }
    bool RFOK() const { return FOK; }
    bool RFAK() const { return FOK; } // the FOK flag, as screens expect
};

// The view of any exchange without its own: manual, FOK, FAK and stop-limit.
// Like HKFEinfo, RFAK shows the FOK flag and RSTOP_LIMIT is writable.
class QALPACK_EXPORT DefaultInfo : public TmarketInfo
{
    Q_OBJECT
    Q_PROPERTY(double WStop_Price READ RStop_Price WRITE setWStop_Price)
    Q_PROPERTY(bool WManual MEMBER Manual)
    Q_PROPERTY(bool WFOK MEMBER FOK)
    Q_PROPERTY(bool WFAK MEMBER FAK)
    Q_PROPERTY(bool WSTOP_LIMIT MEMBER STOP_LIMIT)
    Q_PROPERTY(bool RFOK READ RFOK)
    Q_PROPERTY(bool RFAK READ RFAK)
    Q_PROPERTY(bool RSTOP_LIMIT MEMBER STOP_LIMIT)

public:
    // Views `order` (not owned; it must outlive this object) and reads its
    // instructions (syncIn).
    explicit DefaultInfo(TomsOrder& order, QObject* parent = nullptr);
    ~DefaultInfo() override;

    // Manual 0x20, FAK 0x80, FOK 0x100, STOP_LIMIT 0x800, both ways.
    void syncIn() override;
    void syncOut() override;
    [[nodiscard]] std::unique_ptr<TmarketInfo> createObject(TomsOrder& order) const override;
    // Carries over Manual, FOK and FAK.
    [[nodiscard]] std::unique_ptr<TmarketInfo> deepCopy(
        const TmarketInfo& source, TomsOrder& order) const override;
    // WStop_Price, WSTOP_LIMIT OEStopL; WManual always; WFOK OEFOK; WFAK OEFAK.
    // No market key: an empty name gives false.
    [[nodiscard]] bool isEntitle(const QString& propertyName, const TEntitlement& entitlement) const override;

    TOrderInstruct Manual = false;
    TOrderInstruct STOP_LIMIT = false;
    TOrderInstruct FOK = false;
    TOrderInstruct FAK = false;

private:
    double RStop_Price() const;
    void setWStop_Price(double value);
    bool RFOK() const { return FOK; }
    bool RFAK() const { return FOK; } // the FOK flag, as on HKFEinfo
};

// An odd-lot trade reported on the stock exchange: no instructions, only the
// counterparty broker (the order's CounterParty) and the reference number
// (the order's ref_no), read and written straight in the order.
class QALPACK_EXPORT SEHKOddLotTradeInfo : public TmarketInfo
{
    Q_OBJECT
    Q_PROPERTY(QString RRefNum READ GetRefNum)
    Q_PROPERTY(QString RBroker READ GetBroker)
    Q_PROPERTY(QString WRefNum READ GetRefNum WRITE SetRefNum)
    Q_PROPERTY(QString WBroker READ GetBroker WRITE SetBroker)

public:
    // Views `order` (not owned; it must outlive this object).
    explicit SEHKOddLotTradeInfo(TomsOrder& order, QObject* parent = nullptr);
    ~SEHKOddLotTradeInfo() override;

    // Nothing to do: the properties work on the order itself.
    void syncIn() override;
    void syncOut() override;
    [[nodiscard]] std::unique_ptr<TmarketInfo> createObject(TomsOrder& order) const override;
    // Writes the source order's reference number and broker into `order`.
    [[nodiscard]] std::unique_ptr<TmarketInfo> deepCopy(
        const TmarketInfo& source, TomsOrder& order) const override;
    // Always true: reporting a trade needs no instruction entitlement.
    [[nodiscard]] bool isEntitle(const QString& propertyName, const TEntitlement& entitlement) const override;

    [[nodiscard]] QString GetRefNum() const;
    void SetRefNum(const QString& value);
    [[nodiscard]] QString GetBroker() const;
    void SetBroker(const QString& value);
};

// Whether every order is to be viewed as a stock exchange order when its own
// exchange code does not name a market (see MarketInfoFactory). False until
// the host sets it: `qal::GobalMarket() = true;`. Process-wide, created on
// first use; UI thread only.
[[nodiscard]] QALPACK_EXPORT bool& GobalMarket() noexcept;

// The market information for `order`, after syncIn; the caller owns it and
// `order` must outlive it. By the order's exchange code (exact, case-sensitive):
// "SEHK" gives SEHKOddLotTradeInfo when the instruction word has both the
// trade-report bit 0x20000 and the odd-lot kind bits 0x3, else SEHKinfo;
// "HKFE" gives HKFEinfo. Any other code gives SEHKinfo while GobalMarket() is
// set, DefaultInfo otherwise.
[[nodiscard]] QALPACK_EXPORT std::unique_ptr<TmarketInfo> MarketInfoFactory(TomsOrder& order);

} // namespace qal
