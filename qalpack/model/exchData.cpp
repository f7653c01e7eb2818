// SPDX-License-Identifier: MIT
#include "qalpack/model/exchData.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <functional>
#include <type_traits>

#include "qalpack/omslib/LineParser.h"
#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/Exception.h"
#include "qalpack/runtime/Format.h"

namespace qal {
namespace {

constexpr int kTerminatorTag = 502;
constexpr QStringView kTerminatorValue = u"TRADE";

// StrToIntDef for a message value: plain digits are read in place.
int messageInt(QStringView value)
{
    const int number = internal::plainNumber(value);
    return number >= 0 ? number : StrToIntDef(value);
}

// AssignMessageText. A changed text of no more characters than the field
// holds is copied into the field's own string when nothing shares it.
void assignText(QString& field, QStringView value)
{
    const qsizetype size = value.size();
    if (size > 0 && field.size() == size && field == value)
        return;
    if (size > 0 && size <= field.capacity() && field.isDetached()) {
        field.resize(size);
        std::memmove(static_cast<void*>(field.data()), value.utf16(), std::size_t(size) * sizeof(char16_t));
        return;
    }
    field = value.toString();
}

// A comma-text field (attributes) read without copying the message first:
// SetCommaText makes a string of its own for every item.
void assignCommaText(TStringList& list, QStringView value)
{
    list.SetCommaText(QString::fromRawData(reinterpret_cast<const QChar*>(value.utf16()), value.size()));
}

// Zeroes extended prices with plain stores. Their member initialisers zero
// them already, but the compiler writes each through the x87 unit and reads
// it back for the next, and the processor cannot forward an 80-bit store to
// a load: every fresh record stalls on the chain. Stores here make the
// initialisers' ones dead, and the compiler drops them, as long as no call
// comes between (the string lists' constructor is inline for that reason).
template<class... T>
void zeroPrices(T&... prices) noexcept
{
    static_assert((std::is_same_v<T, long double> && ...));
    (std::memset(&prices, 0, sizeof prices), ...);
}

// Writes "tag|value|" fields at the end of a message, in place. The text is
// grown ahead of the fields (by `ahead` characters whenever a field does not
// fit) and cut back to what was written when the writer goes, so a whole
// record costs a couple of allocations rather than a few per field.
class MessageWriter
{
public:
    explicit MessageWriter(QString& s, qsizetype ahead = 0)
        : s_(s)
        , used_(s.size())
        , ahead_(ahead)
    { }
    ~MessageWriter()
    {
        if (s_.size() != used_)
            s_.resize(used_);
    }
    MessageWriter(const MessageWriter&) = delete;
    MessageWriter& operator=(const MessageWriter&) = delete;

    void addInteger(int tag, int value)
    {
        std::array<char, 16> text {};
        const char* end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
        addAscii(tag, text.data(), end);
    }

    // Six decimals, the text of FixedText(value, 6): std::to_chars in fixed
    // notation rounds exactly as printf does, as {fmt} does for FixedText.
    void addDouble(int tag, double value)
    {
        // Room for the longest double in fixed notation: 309 digits, sign, point, six decimals.
        std::array<char, 352> text {};
        const char* end
            = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 6).ptr;
        addAscii(tag, text.data(), end);
    }

    void addString(int tag, QStringView value)
    {
        // A value that is a piece of this very message would move when the
        // message grows: write a copy.
        const std::less<const char16_t*> before;
        const auto* own = reinterpret_cast<const char16_t*>(s_.constData());
        if (!before(value.utf16(), own) && before(value.utf16(), own + s_.size())) {
            const QString copy = value.toString();
            addString(tag, copy);
            return;
        }
        Tag t(tag);
        char16_t* out = room(t.size() + 1 + value.size() + 1);
        out = std::copy(t.begin(), t.end(), out);
        *out++ = u'|';
        out = std::copy_n(value.utf16(), value.size(), out);
        *out = u'|';
    }

    void addStringIfSet(int tag, QStringView value)
    {
        if (!value.isEmpty())
            addString(tag, value);
    }
    void addIntegerIfSet(int tag, int value)
    {
        if (value != 0)
            addInteger(tag, value);
    }
    // A negative price too small for six decimals is written as "-0.000000"
    // and reads back as -0: that is set too, or the record read back would
    // write less than the one it came from.
    void addDoubleIfSet(int tag, long double value)
    {
        if (value != 0.0L || std::signbit(value))
            addDouble(tag, double(value));
    }

private:
    class Tag
    {
    public:
        explicit Tag(int tag)
            : end_(std::to_chars(text_.data(), text_.data() + text_.size(), tag).ptr)
        { }
        [[nodiscard]] const char* begin() const { return text_.data(); }
        [[nodiscard]] const char* end() const { return end_; }
        [[nodiscard]] qsizetype size() const { return end_ - text_.data(); }

    private:
        std::array<char, 16> text_ {};
        const char* end_;
    };

    void addAscii(int tag, const char* value, const char* valueEnd)
    {
        Tag t(tag);
        char16_t* out = room(t.size() + 1 + (valueEnd - value) + 1);
        out = std::copy(t.begin(), t.end(), out);
        *out++ = u'|';
        out = std::copy(value, valueEnd, out);
        *out = u'|';
    }

    // Where the next `count` characters go.
    char16_t* room(qsizetype count)
    {
        if (used_ + count > s_.size())
            s_.resize(used_ + count + ahead_);
        char16_t* out = reinterpret_cast<char16_t*>(s_.data()) + used_;
        used_ += count;
        return out;
    }

    QString& s_;
    qsizetype used_;
    qsizetype ahead_;
};

// Texts shared by orders and trades: the untranslated status words, and the
// side labels.
QString rawStatusText(int code)
{
    switch (code) {
    case StatusRejected:
        return QStringLiteral("Reje");
    case StatusNone:
        return QString();
    case StatusPending:
        return QStringLiteral("Pend");
    case StatusPartial:
        return QStringLiteral("Part");
    case StatusCompleted:
        return QStringLiteral("Comp");
    case StatusCancelled:
        return QStringLiteral("Canc");
    case StatusInactive:
        return QStringLiteral("Inac");
    case StatusConfirmed:
        return QStringLiteral("Conf");
    default:
        return QStringLiteral("Unknown");
    }
}

int rawStatusCode(const QString& text)
{
    if (text.isEmpty())
        return StatusNone;
    const QStringView head = QStringView(text).left(4);
    static constexpr std::array<std::pair<QStringView, int>, 7> kWords { {
        { u"Reje", StatusRejected },
        { u"Pend", StatusPending },
        { u"Part", StatusPartial },
        { u"Comp", StatusCompleted },
        { u"Canc", StatusCancelled },
        { u"Inac", StatusInactive },
        { u"Conf", StatusConfirmed },
    } };
    for (const auto& [word, code] : kWords) {
        if (head == word)
            return code;
    }
    return StatusNone;
}

QString sideText(int side)
{
    switch (side) {
    case 0:
        return resLabelOrderTypeBuy();
    case 1:
        return resLabelOrderTypeSell();
    default:
        return resLabelOrderTypeUnknown();
    }
}

// The stop-price label an order's option word asks for, or none.
const Label* stopLabel(int orderOption)
{
    if (!(orderOption & OptionStop))
        return nullptr;
    if (orderOption & OptionStopUp)
        return &orderStopPriceUpTriggerLabel;
    if (orderOption & OptionStopDown)
        return &orderStopPriceDownTriggerLabel;
    return &orderStopPriceLabel;
}

// The contra side of a cross order or cross trade: account (110) and user (113).
void updateContra(QStringView key, QStringView value, QString& account, QString& user)
{
    switch (internal::messageTag(key)) {
    case 110:
        assignText(account, value);
        break;
    case 113:
        assignText(user, value);
        break;
    default:
        break;
    }
}

void addContra(QString& s, const QString& account, const QString& user)
{
    DDSAddStringIfSet(s, 110, account);
    DDSAddStringIfSet(s, 113, user);
}

} // namespace

const std::vector<Label>& exchDataLabels()
{
    static const std::vector<Label> labels(std::begin(exchDataLabelTable), std::end(exchDataLabelTable));
    return labels;
}

void DDSAddInteger(QString& s, int tag, int value)
{
    MessageWriter(s).addInteger(tag, value);
}

void DDSAddDouble(QString& s, int tag, double value)
{
    MessageWriter(s).addDouble(tag, value);
}

void DDSAddString(QString& s, int tag, QStringView value)
{
    MessageWriter(s).addString(tag, value);
}

void DDSAddStringIfSet(QString& s, int tag, QStringView value)
{
    MessageWriter(s).addStringIfSet(tag, value);
}

void DDSAddIntegerIfSet(QString& s, int tag, int value)
{
    MessageWriter(s).addIntegerIfSet(tag, value);
}

void DDSAddDoubleIfSet(QString& s, int tag, long double value)
{
    MessageWriter(s).addDoubleIfSet(tag, value);
}

int MessageTag(QStringView key)
{
    const int tag = internal::plainNumber(key);
    return tag >= 0 ? tag : StrToIntDef(key, -1);
}

void AssignMessageText(QString& field, QStringView value)
{
    assignText(field, value);
}

int CompareSuffixalSymbol(const QString& a, const QString& b)
{
    const qsizetype dotA = a.indexOf(u'.');
    const qsizetype dotB = b.indexOf(u'.');
    if (dotA < 0 && dotB < 0)
        return QString::localeAwareCompare(a, b);
    if (dotA < 0)
        return -1;
    if (dotB < 0)
        return 1;
    const int bySuffix = QStringView(a).mid(dotA + 1).localeAwareCompare(QStringView(b).mid(dotB + 1));
    if (bySuffix != 0)
        return bySuffix;
    return QStringView(a).left(dotA).localeAwareCompare(QStringView(b).left(dotB));
}

SymbolNameSource::~SymbolNameSource() = default;

// ---------------------------------------------------------------- TomsTrade

TomsTrade::TomsTrade(QObject* owner)
    : TChangeNotifier(owner)
{ }

TomsTrade::TomsTrade(const QString& message, QObject* owner)
    : TomsTrade(owner)
{
    applyMessage(message);
}

TomsTrade::TomsTrade(const TexchOrder& order, QObject* owner)
    : TomsTrade(owner)
{
    Exch_No = order.Order_No;
    Account = order.Account;
    User = order.User;
    Symbol = order.Symbol;
    Side = order.Side;
    Fill_Qty = order.Quantity;
    Fill_Price = order.Price;
    Runner = order.Runner;
}

TomsTrade::~TomsTrade() = default;

void TomsTrade::applyMessage(QStringView message)
{
    forEachTaggedPair(message, [this](QStringView key, QStringView value) { updateField(key, value); });
}

void TomsTrade::updateField(QStringView key, QStringView value)
{
    switch (internal::messageTag(key)) {
    case 7:
        assignText(Exch_No, value);
        break;
    case 8:
        assignText(Order_No, value);
        break;
    case 0:
        assignText(Symbol, value);
        break;
    case 10:
        assignText(Account, value);
        break;
    case 13:
        assignText(User, value);
        break;
    case 3:
        Fill_Price = StrToFloatDef(value);
        break;
    case 4:
        Fill_Qty = messageInt(value);
        break;
    case 11:
        Side = messageInt(value);
        break;
    case 47:
        Hedge = messageInt(value);
        break;
    case 46:
        Principal = messageInt(value);
        break;
    case 101:
        ShortSell = messageInt(value);
        break;
    case 45:
        assignText(BrokerID, value);
        break;
    case 43:
        TradeType = messageInt(value);
        break;
    case 44:
        Field44 = messageInt(value);
        break;
    case 5:
        Status = messageInt(value);
        break;
    case 25:
        assignText(Remark, value);
        break;
    case 33:
        assignText(EXE_Time, value);
        break;
    case 20:
        assignText(Exch, value);
        break;
    case 78:
        assignText(Field78, value);
        break;
    case 6:
        assignText(OmsOrder_No, value);
        break;
    case 418:
        assignText(Runner, value);
        break;
    default:
        break;
    }
}

QString TomsTrade::DDSImageMessage() const
{
    QString s;
    {
        // The writer cuts the text to length when it goes, before the return.
        MessageWriter w(s, 256);
        w.addString(7, Exch_No);
        w.addString(8, Order_No);
        w.addString(6, OmsOrder_No);
        w.addString(0, Symbol);
        w.addString(10, Account);
        w.addInteger(11, Side);
        w.addString(13, User);
        w.addInteger(4, Fill_Qty);
        w.addDouble(3, double(Fill_Price));
        w.addIntegerIfSet(5, Status);
        w.addIntegerIfSet(47, Hedge);
        w.addIntegerIfSet(46, Principal);
        w.addIntegerIfSet(101, ShortSell);
        w.addStringIfSet(45, BrokerID);
        w.addInteger(43, TradeType);
        if (Field44 > 0)
            w.addInteger(44, Field44);
        w.addStringIfSet(33, EXE_Time);
        w.addStringIfSet(20, Exch);
        w.addStringIfSet(78, Field78);
        w.addStringIfSet(25, Remark);
        w.addStringIfSet(418, Runner);
        w.addString(kTerminatorTag, kTerminatorValue);
    }
    return s;
}

void TomsTrade::assign(const TomsTrade& other)
{
    Exch_No = other.Exch_No;
    Order_No = other.Order_No;
    Symbol = other.Symbol;
    Account = other.Account;
    User = other.User;
    Fill_Price = other.Fill_Price;
    Fill_Qty = other.Fill_Qty;
    Side = other.Side;
    Hedge = other.Hedge;
    Principal = other.Principal;
    ShortSell = other.ShortSell;
    BrokerID = other.BrokerID;
    TradeType = other.TradeType;
    Field44 = other.Field44;
    Status = other.Status;
    Remark = other.Remark;
    EXE_Time = other.EXE_Time;
    Exch = other.Exch;
    Field78 = other.Field78;
    OmsOrder_No = other.OmsOrder_No;
    Runner = other.Runner;
    SymbolEng = other.SymbolEng;
    SymbolChi = other.SymbolChi;
}

QString TomsTrade::exchTradeNum() const
{
    return Order_No.mid(1);
}

QString TomsTrade::statusMessage() const
{
    switch (Status) {
    case StatusRejected:
        return resLabelOrderStatusReject();
    case StatusNone:
        return resLabelOrderStatusNull();
    case StatusPending:
        return resLabelOrderStatusPending();
    case StatusCompleted:
        return resLabelOrderStatusFill();
    case StatusCancelled:
        return resLabelOrderStatusCancel();
    case StatusInactive:
        return resLabelOrderStatusInactive();
    default:
        return resLabelOrderStatusUnknown();
    }
}

QString TomsTrade::RawStatus(int code) const
{
    return rawStatusText(code);
}

int TomsTrade::RawStatus(const QString& text) const
{
    return rawStatusCode(text);
}

QString TomsTrade::GetBuySellText() const
{
    return sideText(Side);
}

QString TomsTrade::getPrincipal() const
{
    switch (Principal) {
    case 11:
        return resStrPrincipalTypeAgent();
    case 12:
        return resStrPrincipalTypePrincipal();
    case 13:
        return resStrPrincipalTypeRT();
    default:
        return resStrPrincipalTypeUnclassified();
    }
}

QString TomsTrade::getTradeType() const
{
    switch (TradeType) {
    case 0:
        return QString();
    case 1:
        return resStrTradeTypeOddLot();
    case 2:
        return resStrTradeTypeManual();
    case 3:
        return resStrTradeTypePreopen();
    case 4:
        return resStrTradeTypeOversea();
    default:
        return resStrTradeTypeUnclassified();
    }
}

QString TomsTrade::getHedge() const
{
    switch (Hedge) {
    case 1:
        return resStrNonHedge();
    case 2:
        return resStrOrderHedge();
    case 3:
        return resStrLiquidHedge();
    default:
        return QString();
    }
}

QString TomsTrade::getShortSell() const
{
    switch (ShortSell) {
    case 0:
        return resStrNotShortSell();
    case 1:
        return resStrShortSell();
    case 2:
        return resStrMMShortSell();
    case 3:
        return resStrCoverShortSell();
    default:
        return QString();
    }
}

void TomsTrade::AssignName(const SymbolNameSource& source)
{
    SymbolEng = source.englishName(Symbol);
    SymbolChi = source.chineseName(Symbol);
}

// --------------------------------------------------------------- TexchOrder

TexchOrder::TexchOrder(QObject* owner)
    : TChangeNotifier(owner)
{
    zeroPrices(Price, StopPrice, Price42, Price493, Price494);
}

TexchOrder::TexchOrder(const QString& message, QObject* owner)
    : TexchOrder(owner)
{
    applyMessage(message);
}

TexchOrder::~TexchOrder() = default;

void TexchOrder::applyMessage(QStringView message)
{
    forEachTaggedPair(message, [this](QStringView key, QStringView value) { updateField(key, value); });
}

void TexchOrder::updateField(QStringView key, QStringView value)
{
    storeField(internal::messageTag(key), value);
}

bool TexchOrder::storeField(int tag, QStringView value)
{
    switch (tag) {
    case 6:
        assignText(OmsOrder_No, value);
        break;
    case 7:
        assignText(Order_No, value);
        break;
    case 15:
        assignText(ref_no, value);
        break;
    case 0:
        assignText(Symbol, value);
        break;
    case 10:
        assignText(Account, value);
        break;
    case 13:
        assignText(User, value);
        break;
    case 3:
        Price = StrToFloatDef(value);
        break;
    case 4:
        Quantity = messageInt(value);
        break;
    case 11:
        Side = messageInt(value);
        break;
    case 5:
        Status = messageInt(value);
        break;
    case 40:
        OrderOption = messageInt(value);
        break;
    case 489:
        Option489 = messageInt(value);
        break;
    case 490:
        Option490 = messageInt(value);
        break;
    case 491:
        Option491 = messageInt(value);
        break;
    case 492:
        Option492 = messageInt(value);
        break;
    case 47:
        Field47 = messageInt(value);
        break;
    case 46:
        PrincipalType = messageInt(value);
        break;
    case 101:
        ShortSell = messageInt(value);
        break;
    case 45:
        assignText(CounterParty, value);
        break;
    case 25:
        assignText(Remark, value);
        break;
    case 34:
        Fill_Qty = messageInt(value);
        break;
    case 35:
        Field35 = messageInt(value);
        break;
    case 48:
        Field48 = messageInt(value);
        break;
    case 33:
        assignText(Order_Time, value);
        break;
    case 501:
        assignText(Order_Time501, value);
        break;
    case 41:
        StopPrice = StrToFloatDef(value);
        break;
    case 42:
        Price42 = StrToFloatDef(value);
        break;
    case 493:
        Price493 = StrToFloatDef(value);
        break;
    case 494:
        Price494 = StrToFloatDef(value);
        break;
    case 1105:
        Field1105 = messageInt(value);
        break;
    case 1106:
        Field1106 = messageInt(value);
        break;
    case 1107:
        Field1107 = messageInt(value);
        break;
    case 1108:
        Field1108 = messageInt(value);
        break;
    case 12:
        OpenClose = messageInt(value);
        break;
    case 39:
        Field39 = messageInt(value);
        break;
    case 464:
        Field464 = messageInt(value);
        break;
    case 20:
        assignText(Exch, value);
        break;
    case 78:
        assignText(BrokerID, value);
        break;
    case 43:
        Field43 = messageInt(value);
        break;
    case 44:
        Field44 = messageInt(value);
        break;
    case 74:
        assignText(User_Ref, value);
        break;
    case 418:
        assignText(Runner, value);
        break;
    case 2020:
        assignText(riskCtrlLevel, value);
        break;
    case 1119:
        assignText(Last_MOD_Time, value);
        break;
    case 487:
        assignCommaText(Attributes, value);
        break;
    case 191:
        assignText(Field191, value);
        break;
    default:
        return false;
    }
    return true;
}

QString TexchOrder::DDSImageMessage() const
{
    QString s;
    {
        // The writer cuts the text to length when it goes, before the return.
        MessageWriter w(s, 512);
        w.addStringIfSet(6, OmsOrder_No);
        w.addStringIfSet(7, Order_No);
        w.addString(0, Symbol);
        w.addStringIfSet(10, Account);
        if (Side >= 0)
            w.addInteger(11, Side);
        w.addStringIfSet(13, User);
        w.addInteger(4, Quantity);
        w.addDouble(3, double(Price));
        w.addStringIfSet(15, ref_no);
        w.addIntegerIfSet(5, Status);
        w.addIntegerIfSet(39, Field39);
        w.addIntegerIfSet(464, Field464);
        w.addStringIfSet(33, Order_Time);
        w.addStringIfSet(501, Order_Time501);
        w.addStringIfSet(25, Remark);
        w.addInteger(34, Fill_Qty);
        w.addInteger(35, Field35);
        if (Status == StatusCancelled)
            w.addInteger(48, Field48);
        w.addIntegerIfSet(40, OrderOption);
        w.addIntegerIfSet(489, Option489);
        w.addIntegerIfSet(490, Option490);
        w.addIntegerIfSet(491, Option491);
        w.addIntegerIfSet(492, Option492);
        w.addDoubleIfSet(41, StopPrice);
        w.addDoubleIfSet(42, Price42);
        w.addDoubleIfSet(493, Price493);
        w.addDoubleIfSet(494, Price494);
        if (OpenClose > 0)
            w.addInteger(12, OpenClose);
        w.addIntegerIfSet(47, Field47);
        w.addIntegerIfSet(46, PrincipalType);
        w.addIntegerIfSet(101, ShortSell);
        w.addStringIfSet(45, CounterParty);
        w.addStringIfSet(20, Exch);
        w.addStringIfSet(78, BrokerID);
        w.addIntegerIfSet(1105, Field1105);
        w.addIntegerIfSet(1106, Field1106);
        w.addIntegerIfSet(1107, Field1107);
        w.addIntegerIfSet(1108, Field1108);
        if (Field44 >= 0)
            w.addInteger(44, Field44);
        if (Field43 >= 0)
            w.addInteger(43, Field43);
        w.addStringIfSet(74, User_Ref);
        w.addStringIfSet(418, Runner);
        w.addStringIfSet(2020, riskCtrlLevel);
        w.addStringIfSet(487, Attributes.CommaText());
        w.addStringIfSet(191, Field191);
        w.addString(kTerminatorTag, kTerminatorValue);
    }
    return s;
}

QString TexchOrder::statusMessage() const
{
    switch (Status) {
    case StatusRejected:
        return resLabelOrderStatusReject();
    case StatusNone:
        return resLabelOrderStatusNull();
    case StatusPending:
        return resLabelOrderStatusPending();
    case StatusPartial:
        return resLabelOrderStatusPartial();
    case StatusCompleted:
        return resLabelOrderStatusFill();
    case StatusCancelled:
        return resLabelOrderStatusCancel();
    case StatusInactive:
        return resLabelOrderStatusInactive();
    case StatusConfirmed:
        return resLabelOrderStatusConfirm();
    default:
        return resLabelOrderStatusUnknown();
    }
}

void TexchOrder::reset()
{
    const int keep43 = Field43;
    const int keep44 = Field44;
    assignFields(TexchOrder());
    Trades.clear();
    Field43 = keep43;
    Field44 = keep44;
}

QString TexchOrder::GetBuySellText() const
{
    return sideText(Side);
}

QString TexchOrder::GetRemark() const
{
    return Remark;
}

QString TexchOrder::RawStatus(int code) const
{
    return rawStatusText(code);
}

int TexchOrder::RawStatus(const QString& text) const
{
    return rawStatusCode(text);
}

namespace {
// A 64-bit quantity cut to 32 bits as the old desks' 32-bit arithmetic left
// it: modulo 2^32, read as signed (4,000,000,000 gives -294,967,296).
int wrapQuantity(std::int64_t quantity)
{
    return static_cast<int>(static_cast<std::int32_t>(static_cast<std::uint32_t>(quantity)));
}
} // namespace

int TexchOrder::CalculateFillQty() const
{
    // Summed wide and wrapped once: a trade list cannot overflow 64 bits.
    std::int64_t filled = 0;
    for (const TradeEntry& entry : Trades) {
        if (entry.trade && entry.trade->Status == StatusCompleted && entry.trade->Side == Side)
            filled += entry.trade->Fill_Qty;
    }
    return wrapQuantity(filled);
}

int TexchOrder::CalculateQueuQty() const
{
    if (Status == StatusPending || Status == StatusPartial)
        return wrapQuantity(std::int64_t(Quantity) - std::int64_t(CalculateFillQty()));
    return 0;
}

void TexchOrder::NotifierUpdate()
{
    FireEvent(this);
}

void TexchOrder::assignFields(const TexchOrder& other)
{
    OmsOrder_No = other.OmsOrder_No;
    Order_No = other.Order_No;
    ref_no = other.ref_no;
    Symbol = other.Symbol;
    Account = other.Account;
    User = other.User;
    Price = other.Price;
    Quantity = other.Quantity;
    Side = other.Side;
    Status = other.Status;
    OrderOption = other.OrderOption;
    Option489 = other.Option489;
    Option490 = other.Option490;
    Option491 = other.Option491;
    Option492 = other.Option492;
    Field47 = other.Field47;
    PrincipalType = other.PrincipalType;
    ShortSell = other.ShortSell;
    CounterParty = other.CounterParty;
    Remark = other.Remark;
    Fill_Qty = other.Fill_Qty;
    Field35 = other.Field35;
    Field48 = other.Field48;
    Order_Time = other.Order_Time;
    Order_Time501 = other.Order_Time501;
    Order_Date = other.Order_Date;
    EXE_Time = other.EXE_Time;
    StopPrice = other.StopPrice;
    Price42 = other.Price42;
    Price493 = other.Price493;
    Price494 = other.Price494;
    Field1105 = other.Field1105;
    Field1106 = other.Field1106;
    Field1107 = other.Field1107;
    Field1108 = other.Field1108;
    OpenClose = other.OpenClose;
    Field39 = other.Field39;
    Field464 = other.Field464;
    ManualSelector = other.ManualSelector;
    Exch = other.Exch;
    BrokerID = other.BrokerID;
    Field43 = other.Field43;
    Field44 = other.Field44;
    User_Ref = other.User_Ref;
    Runner = other.Runner;
    riskCtrlLevel = other.riskCtrlLevel;
    Last_MOD_Time = other.Last_MOD_Time;
    Attributes.Assign(other.Attributes);
    Field191 = other.Field191;
    SymbolEng = other.SymbolEng;
    SymbolChi = other.SymbolChi;
}

void TexchOrder::assign(const TexchOrder& other)
{
    if (&other == this)
        return;
    assignFields(other);
    Trades = other.Trades;
}

void TexchOrder::assign(const TomsTrade& trade)
{
    OmsOrder_No = trade.OmsOrder_No;
    Order_No = trade.Order_No;
    Symbol = trade.Symbol;
    Account = trade.Account;
    User = trade.User;
    Side = trade.Side;
    Status = trade.Status;
    Price = trade.Fill_Price;
    Quantity = trade.Fill_Qty;
    Fill_Qty = trade.Fill_Qty;
    PrincipalType = trade.Principal;
    Field47 = trade.Hedge;
    ShortSell = trade.ShortSell;
    Field43 = trade.TradeType;
    Field44 = trade.Field44;
    Exch = trade.Exch;
    Remark = trade.Remark;
    Order_Time = trade.EXE_Time;
    Runner = trade.Runner;
}

TomsTrade* TexchOrder::addTrade(TomsTrade* trade)
{
    if (trade)
        Trades.push_back({ trade->Order_No, trade });
    return trade;
}

TomsTrade* TexchOrder::GetTrade(const QString& key) const
{
    for (const TradeEntry& entry : Trades) {
        if (entry.key == key)
            return entry.trade.data();
    }
    return nullptr;
}

void TexchOrder::copyTradesFrom(const TexchOrder& other)
{
    if (&other == this)
        return;
    for (const TradeEntry& entry : other.Trades) {
        if (entry.trade)
            addTrade(entry.trade.data());
    }
}

int TexchOrder::betterPrice(double price) const
{
    const double d = double(Price) - price;
    const int r = d > 0.0001 ? 1 : (d < -0.0001 ? -1 : 0);
    switch (Side) {
    case 0:
        return r;
    case 1:
        return -r;
    default:
        throw InvalidOrderType();
    }
}

QString TexchOrder::GetOrderOptionInfo() const
{
    QString s;
    if (OrderOption & OptionAuction)
        s += orderAOLabel();
    if (const Label* stop = stopLabel(OrderOption))
        s += Format((*stop)(), { StopPrice });
    if (PrincipalType == 12)
        s += orderPrincipalTypeHouse();
    else if (PrincipalType == 13)
        s += orderPrincipalTypeRT();
    if (OrderOption & OptionFOK)
        s += orderFOKLabel();
    if (OrderOption & OptionFAK)
        s += orderFAKLabel();
    s += User_Ref;
    if ((OrderOption & OrderKindMask) == OrderKindOddLot)
        s += orderOddLotLabel();
    return s;
}

void TexchOrder::AssignName(const SymbolNameSource& source)
{
    SymbolEng = source.englishName(Symbol);
    SymbolChi = source.chineseName(Symbol);
}

// ----------------------------------------------------------- amsManualTrade

amsManualTrade::amsManualTrade(QObject* owner)
    : TexchOrder(owner)
{ }

amsManualTrade::amsManualTrade(const QString& message, QObject* owner)
    : TexchOrder(owner)
{
    applyMessage(message);
}

amsManualTrade::~amsManualTrade() = default;

void amsManualTrade::updateField(QStringView key, QStringView value)
{
    TexchOrder::updateField(key, value);
    switch (internal::messageTag(key)) {
    case 8:
        assignText(Trade_No, value);
        break;
    case 43:
        TradeType = messageInt(value);
        break;
    case 44:
        TradeField44 = messageInt(value);
        break;
    default:
        break;
    }
}

QString amsManualTrade::DDSImageMessage() const
{
    QString s = TexchOrder::DDSImageMessage();
    DDSAddInteger(s, 43, TradeType);
    DDSAddInteger(s, 44, TradeField44);
    return s;
}

void amsManualTrade::reset()
{
    TexchOrder::reset();
    Trade_No.clear();
    TradeType = 0;
    TradeField44 = 0;
}

QString amsManualTrade::exchTradeNum() const
{
    return Trade_No.mid(1);
}

// ---------------------------------------------------------- amsOrderHistory

amsOrderHistory::amsOrderHistory(QObject* owner)
    : TexchOrder(owner)
{ }

amsOrderHistory::amsOrderHistory(const QString& message, QObject* owner)
    : TexchOrder(owner)
{
    applyMessage(message);
}

amsOrderHistory::~amsOrderHistory() = default;

void amsOrderHistory::updateField(QStringView key, QStringView value)
{
    TexchOrder::updateField(key, value);
    if (internal::messageTag(key) == 9)
        assignText(Action, value);
}

QString amsOrderHistory::DDSImageMessage() const
{
    QString s = TexchOrder::DDSImageMessage();
    DDSAddString(s, 9, Action);
    return s;
}

void amsOrderHistory::reset()
{
    TexchOrder::reset();
    Action.clear();
}

// ------------------------------------------------------------ amsCrossOrder

amsCrossOrder::amsCrossOrder(QObject* owner)
    : TexchOrder(owner)
{ }

amsCrossOrder::amsCrossOrder(const QString& message, QObject* owner)
    : TexchOrder(owner)
{
    applyMessage(message);
}

amsCrossOrder::~amsCrossOrder() = default;

void amsCrossOrder::updateField(QStringView key, QStringView value)
{
    TexchOrder::updateField(key, value);
    updateContra(key, value, ContraAccount, ContraUser);
}

QString amsCrossOrder::DDSImageMessage() const
{
    QString s = TexchOrder::DDSImageMessage();
    addContra(s, ContraAccount, ContraUser);
    return s;
}

void amsCrossOrder::reset()
{
    TexchOrder::reset();
    ContraAccount.clear();
    ContraUser.clear();
}

// -------------------------------------------------------------- amsCTFTrade

amsCTFTrade::amsCTFTrade(QObject* owner)
    : TomsTrade(owner)
{ }

amsCTFTrade::amsCTFTrade(const QString& message, QObject* owner)
    : TomsTrade(owner)
{
    applyMessage(message);
}

amsCTFTrade::~amsCTFTrade() = default;

void amsCTFTrade::updateField(QStringView key, QStringView value)
{
    TomsTrade::updateField(key, value);
    if (internal::messageTag(key) == 76)
        assignText(CTFBroker, value);
}

QString amsCTFTrade::DDSImageMessage() const
{
    QString s = TomsTrade::DDSImageMessage();
    DDSAddStringIfSet(s, 76, CTFBroker);
    return s;
}

// ------------------------------------------------------------ amsCrossTrade

amsCrossTrade::amsCrossTrade(QObject* owner)
    : TomsTrade(owner)
{ }

amsCrossTrade::amsCrossTrade(const QString& message, QObject* owner)
    : TomsTrade(owner)
{
    applyMessage(message);
}

amsCrossTrade::~amsCrossTrade() = default;

void amsCrossTrade::updateField(QStringView key, QStringView value)
{
    TomsTrade::updateField(key, value);
    updateContra(key, value, ContraAccount, ContraUser);
}

QString amsCrossTrade::DDSImageMessage() const
{
    QString s = TomsTrade::DDSImageMessage();
    addContra(s, ContraAccount, ContraUser);
    return s;
}

} // namespace qal
