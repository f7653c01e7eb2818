// SPDX-License-Identifier: MIT
#include "qalpack/qalpack.h"

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include <QByteArray>
#include <QLocale>
#include <QMetaProperty>
#include <QObject>
#include <QStringDecoder>

#include "qalpack/db/Database.h"
#include "qalpack/market/MarketInfo.h"
#include "qalpack/model/exchData.h"
#include "qalpack/model/omsData.h"
#include "qalpack/omslib/CodePage950.h"
#include "qalpack/omslib/TaggedMessage.h"
#include "qalpack/orderdb/orderDB.h"
#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/Exception.h"
#include "qalpack/version.h"

namespace {

thread_local std::string lastError;

// The opaque handles are the C++ objects themselves.
qal::TomsOrder* cpp(QalOrder* order)
{
    return reinterpret_cast<qal::TomsOrder*>(order);
}

qal::TexchOrder* cpp(QalExchOrder* order)
{
    return reinterpret_cast<qal::TexchOrder*>(order);
}

qal::TomsTrade* cpp(QalTrade* trade)
{
    return reinterpret_cast<qal::TomsTrade*>(trade);
}

template<class Handle, class Record>
Handle* handle(std::unique_ptr<Record> record)
{
    return reinterpret_cast<Handle*>(record.release());
}

// Runs `body` and turns any exception into -1 and a message for qalLastError.
template<class Body>
int guarded(Body&& body) noexcept
{
    try {
        lastError.clear();
        body();
        return 0;
    } catch (const std::exception& e) {
        lastError = e.what();
    } catch (...) {
        lastError = "unknown error";
    }
    return -1;
}

// Runs `body` and gives its result, or `failed` with a message for
// qalLastError when it throws.
template<class T, class Body>
T guardedOr(T failed, Body&& body) noexcept
{
    try {
        lastError.clear();
        return body();
    } catch (const std::exception& e) {
        lastError = e.what();
    } catch (...) {
        lastError = "unknown error";
    }
    return failed;
}

[[noreturn]] void fail(const QString& message)
{
    throw qal::Error(message);
}

// The record's class without its namespace, for messages ("TomsOrder").
QString className(const QObject& record)
{
    return QString::fromLatin1(record.metaObject()->className()).section(QStringLiteral("::"), -1);
}

// NUL-terminated UTF-8 from a host; nothing when it is not valid UTF-8.
std::optional<QString> fromUtf8(const char* text)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString decoded = utf8.decode(QByteArrayView(text));
    if (utf8.hasError())
        return std::nullopt;
    return decoded;
}

QString messageText(const char* message, int encoding, const char* function)
{
    if (message == nullptr || *message == '\0')
        fail(QStringLiteral("%1: no message").arg(QLatin1StringView(function)));
    switch (encoding) {
    case QAL_CP950:
        return qal::cp950::decode(QByteArrayView(message));
    case QAL_UTF8:
        if (std::optional<QString> text = fromUtf8(message))
            return *text;
        fail(QStringLiteral("%1: the message is not valid UTF-8 (QAL_CP950 reads the servers' bytes)")
                 .arg(QLatin1StringView(function)));
    default:
        fail(QStringLiteral("%1: unknown encoding %2 (QAL_UTF8 or QAL_CP950)")
                 .arg(QLatin1StringView(function))
                 .arg(encoding));
    }
}

// A text is a message when at least one tag/value pair after its header has
// a numeric tag; anything else (a log line, a blank, a file name) is refused
// rather than turned into an empty record.
bool hasTaggedField(const QString& message)
{
    bool found = false;
    qal::forEachTaggedPair(message, [&found](QStringView key, QStringView) {
        int tag = 0;
        found = found || qal::TryStrToInt(key, tag);
    });
    return found;
}

template<class Handle, class Record>
Handle* fromMessage(const char* message, int encoding, const char* function) noexcept
{
    return guardedOr<Handle*>(nullptr, [&] {
        QString text = messageText(message, encoding, function);
        // A host that reads messages line by line may pass the line's end
        // along; left on, it would turn the last value into a malformed number.
        while (text.endsWith(u'\n') || text.endsWith(u'\r'))
            text.chop(1);
        if (!hasTaggedField(text))
            fail(QStringLiteral("%1: no tag|value field in \"%2\"").arg(QLatin1StringView(function), text));
        return handle<Handle>(std::make_unique<Record>(text));
    });
}

// The texts a record has handed to C hosts: one for each function that hands
// one out, and one for each property read by name, so that a host may hold
// the remark and the status, or two property values, at the same time. A
// child of the record, so it goes when the record goes, whoever frees it (the
// host, or the client order that adopted an exchange order).
enum class HandedText { Status, Side, Option, Remark, Image, Count };

class HandedTexts : public QObject
{
public:
    std::array<QByteArray, std::size_t(HandedText::Count)> texts;
    std::map<QByteArray, QByteArray> properties;
};

HandedTexts& handedTexts(QObject& record)
{
    for (QObject* child : record.children()) {
        if (auto* handed = dynamic_cast<HandedTexts*>(child))
            return *handed;
    }
    // A host may read a record on another thread than the one that made it
    // (a binding's worker thread); a child must live in its parent's thread.
    auto* handed = new HandedTexts;
    handed->moveToThread(record.thread());
    handed->setParent(&record);
    return *handed;
}

const char* keep(QByteArray& slot, QByteArray bytes)
{
    slot = std::move(bytes);
    return slot.constData();
}

const char* handOut(QObject& record, HandedText which, QByteArray bytes)
{
    return keep(handedTexts(record).texts[std::size_t(which)], std::move(bytes));
}

template<class Record>
Record& require(Record* record, const char* function)
{
    if (record == nullptr)
        fail(QStringLiteral("%1: no record").arg(QLatin1StringView(function)));
    return *record;
}

// One of the record's texts, kept by the record until the same function asks again.
template<class Record, class Read>
const char* recordText(Record* record, HandedText which, const char* function, Read&& read) noexcept
{
    return guardedOr<const char*>(nullptr, [&] {
        Record& r = require(record, function);
        return handOut(r, which, read(r).toUtf8());
    });
}

template<class Record>
const char* imageMessage(Record* record, int encoding, const char* function) noexcept
{
    return guardedOr<const char*>(nullptr, [&] {
        Record& r = require(record, function);
        const QString image = r.DDSImageMessage();
        switch (encoding) {
        case QAL_UTF8:
            return handOut(r, HandedText::Image, image.toUtf8());
        case QAL_CP950:
            return handOut(r, HandedText::Image, qal::cp950::encode(image));
        default:
            fail(QStringLiteral("%1: unknown encoding %2 (QAL_UTF8 or QAL_CP950)")
                     .arg(QLatin1StringView(function))
                     .arg(encoding));
        }
    });
}

// The published property `name`: one of the record classes' own R.../W.../C...
// properties. QObject's objectName is not one of them.
QMetaProperty publishedProperty(const QObject& record, const char* name, const char* function)
{
    if (name == nullptr)
        fail(QStringLiteral("%1: no property name").arg(QLatin1StringView(function)));
    const int index = record.metaObject()->indexOfProperty(name);
    if (index < qal::TChangeNotifier::staticMetaObject.propertyCount())
        fail(QStringLiteral("%1: %2 publishes no property \"%3\"")
                 .arg(QLatin1StringView(function), className(record), QString::fromUtf8(name)));
    return record.metaObject()->property(index);
}

QString propertyText(const QObject& record, const char* name, const char* function)
{
    const QMetaProperty property = publishedProperty(record, name, function);
    const QVariant value = property.read(&record);
    switch (value.typeId()) {
    case QMetaType::QString:
        return value.toString();
    case QMetaType::Int:
        return QString::number(value.toInt());
    case QMetaType::Double:
        // The shortest text that reads back as the same number (62.35, not
        // 62.350000000000001), and never in exponent form (0.00001, not 1e-05),
        // which a host's price fields would not read.
        return QString::number(value.toDouble(), 'f', QLocale::FloatingPointShortest);
    default:
        fail(QStringLiteral("%1: %2 of %3 holds records, not text")
                 .arg(QLatin1StringView(function), QLatin1StringView(property.name()), className(record)));
    }
}

void setPropertyText(QObject& record, const char* name, const char* value, const char* function)
{
    const QMetaProperty property = publishedProperty(record, name, function);
    const QString propertyName = QLatin1StringView(property.name());
    if (!property.isWritable())
        fail(QStringLiteral("%1: %2 of %3 is read-only")
                 .arg(QLatin1StringView(function), propertyName, className(record)));
    if (value == nullptr)
        fail(QStringLiteral("%1: no value for %2").arg(QLatin1StringView(function), propertyName));
    const std::optional<QString> utf8 = fromUtf8(value);
    if (!utf8)
        fail(QStringLiteral("%1: the value for %2 is not valid UTF-8")
                 .arg(QLatin1StringView(function), propertyName));
    const QString& text = *utf8;
    QVariant typed;
    bool ok = true;
    switch (property.typeId()) {
    case QMetaType::QString:
        typed = text;
        break;
    case QMetaType::Int:
        typed = text.trimmed().toInt(&ok);
        break;
    case QMetaType::Double:
        // Always "." as the decimal point, whatever the host's locale.
        typed = text.trimmed().toDouble(&ok);
        break;
    default:
        ok = false;
    }
    if (!ok)
        fail(QStringLiteral("%1: %2 of %3 does not take \"%4\"")
                 .arg(QLatin1StringView(function), propertyName, className(record), text));
    if (!property.write(&record, typed))
        fail(QStringLiteral("%1: %2 of %3 refused \"%4\"")
                 .arg(QLatin1StringView(function), propertyName, className(record), text));
}

template<class Record>
const char* getProperty(Record* record, const char* name, const char* function) noexcept
{
    return guardedOr<const char*>(nullptr, [&] {
        Record& r = require(record, function);
        QByteArray text = propertyText(r, name, function).toUtf8();
        return keep(handedTexts(r).properties[QByteArray(name)], std::move(text));
    });
}

template<class Record>
int setProperty(Record* record, const char* name, const char* value, const char* function) noexcept
{
    return guarded([&] { setPropertyText(require(record, function), name, value, function); });
}

template<class Handle, class Record>
auto receiverFor(void (*receiver)(Handle*, void*), void* context)
{
    return [receiver, context](std::unique_ptr<Record> record) {
        if (receiver)
            receiver(handle<Handle>(std::move(record)), context);
    };
}

} // namespace

extern "C" {

QalDatabase* orderDatabase(void)
{
    QalDatabase* result = nullptr;
    guarded([&] { result = reinterpret_cast<QalDatabase*>(&qal::RequireOrderDatabase()); });
    return result;
}

int orderLoadOrders(QalOrderReceiver receiver, void* context)
{
    return guarded([&] { qal::orderLoadOrders(receiverFor<QalOrder, qal::TomsOrder>(receiver, context)); });
}

int orderLoadExchOrders(QalExchOrderReceiver receiver, void* context)
{
    return guarded(
        [&] { qal::orderLoadExchOrders(receiverFor<QalExchOrder, qal::TexchOrder>(receiver, context)); });
}

int orderLoadTrades(QalTradeReceiver receiver, void* context)
{
    return guarded([&] { qal::orderLoadTrades(receiverFor<QalTrade, qal::TomsTrade>(receiver, context)); });
}

int orderLoadManuExches(QalExchOrderReceiver receiver, void* context)
{
    return guarded(
        [&] { qal::orderLoadManuExches(receiverFor<QalExchOrder, qal::TexchOrder>(receiver, context)); });
}

int orderLoadManuTrades(QalTradeReceiver receiver, void* context)
{
    return guarded(
        [&] { qal::orderLoadManuTrades(receiverFor<QalTrade, qal::TomsTrade>(receiver, context)); });
}

int orderSaveOrder(QalOrder* order)
{
    if (order == nullptr) {
        lastError = "orderSaveOrder: no order";
        return -1;
    }
    return guarded([&] {
        qal::TomsOrder& saved = *cpp(order);
        qal::orderSaveOrder(saved);
        if (saved.ErrorCode == qal::TomsOrder::kSaveFailed)
            throw qal::Error(saved.Message);
    });
}

QalMarketInfo* MarketInfoFactory(QalOrder* order)
{
    if (order == nullptr)
        return nullptr;
    QalMarketInfo* result = nullptr;
    guarded([&] { result = handle<QalMarketInfo>(qal::MarketInfoFactory(*cpp(order))); });
    return result;
}

QalOrder* qalOrderFromMessage(const char* message, int encoding)
{
    return fromMessage<QalOrder, qal::TomsOrder>(message, encoding, "qalOrderFromMessage");
}

QalExchOrder* qalExchOrderFromMessage(const char* message, int encoding)
{
    return fromMessage<QalExchOrder, qal::TexchOrder>(message, encoding, "qalExchOrderFromMessage");
}

QalTrade* qalTradeFromMessage(const char* message, int encoding)
{
    return fromMessage<QalTrade, qal::TomsTrade>(message, encoding, "qalTradeFromMessage");
}

const char* qalOrderGetProperty(QalOrder* order, const char* name)
{
    return getProperty(cpp(order), name, "qalOrderGetProperty");
}

const char* qalExchOrderGetProperty(QalExchOrder* order, const char* name)
{
    return getProperty(cpp(order), name, "qalExchOrderGetProperty");
}

const char* qalTradeGetProperty(QalTrade* trade, const char* name)
{
    return getProperty(cpp(trade), name, "qalTradeGetProperty");
}

int qalOrderSetProperty(QalOrder* order, const char* name, const char* value)
{
    return setProperty(cpp(order), name, value, "qalOrderSetProperty");
}

int qalExchOrderSetProperty(QalExchOrder* order, const char* name, const char* value)
{
    return setProperty(cpp(order), name, value, "qalExchOrderSetProperty");
}

int qalTradeSetProperty(QalTrade* trade, const char* name, const char* value)
{
    return setProperty(cpp(trade), name, value, "qalTradeSetProperty");
}

// The client order's overrides give its own texts: the full instruction remark
// and the status texts it stores.
const char* qalOrderStatusText(QalOrder* order)
{
    return recordText(cpp(order), HandedText::Status, "qalOrderStatusText",
        [](const qal::TomsOrder& r) { return r.statusMessage(); });
}

const char* qalOrderSideText(QalOrder* order)
{
    return recordText(cpp(order), HandedText::Side, "qalOrderSideText",
        [](const qal::TomsOrder& r) { return r.GetBuySellText(); });
}

const char* qalOrderOptionText(QalOrder* order)
{
    return recordText(cpp(order), HandedText::Option, "qalOrderOptionText",
        [](const qal::TomsOrder& r) { return r.GetOrderOptionInfo(); });
}

const char* qalOrderRemark(QalOrder* order)
{
    return recordText(cpp(order), HandedText::Remark, "qalOrderRemark",
        [](const qal::TomsOrder& r) { return r.GetRemark(); });
}

const char* qalExchOrderStatusText(QalExchOrder* order)
{
    return recordText(cpp(order), HandedText::Status, "qalExchOrderStatusText",
        [](const qal::TexchOrder& r) { return r.statusMessage(); });
}

const char* qalExchOrderSideText(QalExchOrder* order)
{
    return recordText(cpp(order), HandedText::Side, "qalExchOrderSideText",
        [](const qal::TexchOrder& r) { return r.GetBuySellText(); });
}

const char* qalExchOrderOptionText(QalExchOrder* order)
{
    return recordText(cpp(order), HandedText::Option, "qalExchOrderOptionText",
        [](const qal::TexchOrder& r) { return r.GetOrderOptionInfo(); });
}

const char* qalExchOrderRemark(QalExchOrder* order)
{
    return recordText(cpp(order), HandedText::Remark, "qalExchOrderRemark",
        [](const qal::TexchOrder& r) { return r.GetRemark(); });
}

const char* qalTradeStatusText(QalTrade* trade)
{
    return recordText(cpp(trade), HandedText::Status, "qalTradeStatusText",
        [](const qal::TomsTrade& r) { return r.statusMessage(); });
}

const char* qalTradeSideText(QalTrade* trade)
{
    return recordText(cpp(trade), HandedText::Side, "qalTradeSideText",
        [](const qal::TomsTrade& r) { return r.GetBuySellText(); });
}

const char* qalOrderImageMessage(QalOrder* order, int encoding)
{
    return imageMessage(cpp(order), encoding, "qalOrderImageMessage");
}

const char* qalExchOrderImageMessage(QalExchOrder* order, int encoding)
{
    return imageMessage(cpp(order), encoding, "qalExchOrderImageMessage");
}

const char* qalTradeImageMessage(QalTrade* trade, int encoding)
{
    return imageMessage(cpp(trade), encoding, "qalTradeImageMessage");
}

void qalFreeOrder(QalOrder* order)
{
    delete cpp(order);
}

void qalFreeExchOrder(QalExchOrder* order)
{
    delete cpp(order);
}

void qalFreeTrade(QalTrade* trade)
{
    delete cpp(trade);
}

void qalFreeMarketInfo(QalMarketInfo* info)
{
    delete reinterpret_cast<qal::TmarketInfo*>(info);
}

const char* qalLastError(void)
{
    return lastError.c_str();
}

const char* qalVersion(void)
{
    return QALPACK_VERSION_STRING;
}

} // extern "C"
