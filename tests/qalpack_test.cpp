// SPDX-License-Identifier: MIT
// The plain exported functions as a C host calls them: opaque handles,
// callbacks with a context, and failures as -1 with a message, never an
// exception across the boundary.
#include "qalpack/qalpack.h"

#include <QRegularExpression>
#include <QTemporaryDir>

#include <functional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "qalpack/market/MarketInfo.h"
#include "qalpack/model/omsData.h"
#include "qalpack/omslib/CodePage950.h"

namespace {

using namespace std::string_literals;

// The functions that every kind of record has, so that one table of cases
// runs against orders, exchange orders and trades alike.
struct RecordApi
{
    std::string kind;
    std::string fromMessageName;
    std::function<void*(const char*, int)> fromMessage;
    std::function<const char*(void*, const char*)> get;
    std::function<int(void*, const char*, const char*)> set;
    std::function<const char*(void*)> status;
    std::function<const char*(void*)> side;
    std::function<const char*(void*, int)> image;
    std::function<void(void*)> release;
};

// Test listings name the record, not the bytes of its functions.
void PrintTo(const RecordApi& api, std::ostream* os)
{
    *os << api.kind;
}

template<class H>
RecordApi recordApi(std::string kind, std::string fromMessageName, H* (*fromMessage)(const char*, int),
    const char* (*get)(H*, const char*), int (*set)(H*, const char*, const char*), const char* (*status)(H*),
    const char* (*side)(H*), const char* (*image)(H*, int), void (*release)(H*))
{
    return { std::move(kind), std::move(fromMessageName),
        [=](const char* m, int e) -> void* { return fromMessage(m, e); },
        [=](void* h, const char* n) { return get(static_cast<H*>(h), n); },
        [=](void* h, const char* n, const char* v) { return set(static_cast<H*>(h), n, v); },
        [=](void* h) { return status(static_cast<H*>(h)); },
        [=](void* h) { return side(static_cast<H*>(h)); },
        [=](void* h, int e) { return image(static_cast<H*>(h), e); },
        [=](void* h) { release(static_cast<H*>(h)); } };
}

std::vector<RecordApi> everyRecord()
{
    return { recordApi("Order", "qalOrderFromMessage", qalOrderFromMessage, qalOrderGetProperty,
                 qalOrderSetProperty, qalOrderStatusText, qalOrderSideText, qalOrderImageMessage,
                 qalFreeOrder),
        recordApi("ExchOrder", "qalExchOrderFromMessage", qalExchOrderFromMessage, qalExchOrderGetProperty,
            qalExchOrderSetProperty, qalExchOrderStatusText, qalExchOrderSideText, qalExchOrderImageMessage,
            qalFreeExchOrder),
        recordApi("Trade", "qalTradeFromMessage", qalTradeFromMessage, qalTradeGetProperty,
            qalTradeSetProperty, qalTradeStatusText, qalTradeSideText, qalTradeImageMessage, qalFreeTrade) };
}

// A record made through the C functions, freed through them.
class Record
{
public:
    Record(const RecordApi& api, const char* message, int encoding = QAL_UTF8)
        : api_(api)
        , handle_(api.fromMessage(message, encoding))
    { }
    ~Record()
    {
        if (handle_ != nullptr)
            api_.release(handle_);
    }
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    [[nodiscard]] void* get() const { return handle_; }
    [[nodiscard]] std::string property(const char* name) const
    {
        const char* value = api_.get(handle_, name);
        return value ? value : "<null: "s + qalLastError() + ">";
    }

private:
    const RecordApi& api_;
    void* handle_;
};

class EveryRecord : public testing::TestWithParam<RecordApi>
{
};

std::string bytes(const QByteArray& data)
{
    return data.toStdString();
}

// Symbol, account (with Chinese), side (sell) and status (cancelled) share
// their tags and property names across the three records.
const QString kSharedMessage = QStringLiteral("H|0|0005.HK|10|客戶A1|11|1|4|2000|3|62.35|5|4|");

TEST_P(EveryRecord, ReadsItsMessageInEitherEncoding)
{
    const struct
    {
        const char* name;
        std::string bytes;
        int encoding;
    } cases[] = {
        { "utf-8", bytes(kSharedMessage.toUtf8()), QAL_UTF8 },
        { "code page 950", bytes(qal::cp950::encode(kSharedMessage)), QAL_CP950 },
        { "a line with its line end", bytes(kSharedMessage.chopped(1).toUtf8()) + "\r\n", QAL_UTF8 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Record record(GetParam(), c.bytes.c_str(), c.encoding);
        ASSERT_NE(record.get(), nullptr) << qalLastError();
        EXPECT_STREQ(qalLastError(), "");
        EXPECT_EQ(record.property("RSymbol"), "0005.HK");
        EXPECT_EQ(record.property("RAccount"), "客戶A1");
        EXPECT_EQ(record.property("RSide"), "SELL");
        EXPECT_STREQ(GetParam().side(record.get()), "SELL");
        EXPECT_STREQ(GetParam().status(record.get()), "Canc");
    }
}

TEST_P(EveryRecord, RefusesWhatIsNotAMessageAndSaysWhy)
{
    const struct
    {
        const char* name;
        const char* bytes;
        int encoding;
        const char* reason;
    } cases[] = {
        { "null", nullptr, QAL_UTF8, "no message" },
        { "empty", "", QAL_UTF8, "no message" },
        { "plain words", "not an order", QAL_CP950, "no tag|value field in \"not an order\"" },
        { "no numeric tag", "H|abc|def|", QAL_UTF8, "no tag|value field" },
        { "header only", "H|", QAL_UTF8, "no tag|value field" },
        { "code page 950 bytes read as UTF-8", "H|10|\xab\xc8\xa4\xe1|", QAL_UTF8, "not valid UTF-8" },
        { "unknown encoding", "H|0|0005.HK|", 2, "unknown encoding 2" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(GetParam().fromMessage(c.bytes, c.encoding), nullptr);
        EXPECT_NE(std::string(qalLastError()).find(c.reason), std::string::npos) << qalLastError();
        EXPECT_EQ(std::string(qalLastError()).rfind(GetParam().fromMessageName, 0), 0u) << qalLastError();
    }
}

TEST_P(EveryRecord, ImageMessageReadsBackIntoTheSameRecord)
{
    const Record record(GetParam(), kSharedMessage.toUtf8().constData());
    const std::string image = GetParam().image(record.get(), QAL_UTF8);
    const Record again(GetParam(), ("H|" + image).c_str());
    EXPECT_EQ(GetParam().image(again.get(), QAL_UTF8), image);

    const char* wire = GetParam().image(record.get(), QAL_CP950);
    ASSERT_NE(wire, nullptr) << qalLastError();
    EXPECT_EQ(std::string(wire), bytes(qal::cp950::encode(QString::fromUtf8(image))));

    EXPECT_EQ(GetParam().image(record.get(), 9), nullptr);
    EXPECT_NE(std::string(qalLastError()).find("unknown encoding 9"), std::string::npos) << qalLastError();

    // An emoji has no code page 950 bytes: refused by name, still fine in UTF-8.
    const Record emoji(GetParam(), "H|0|0005.HK|10|A1001 \xf0\x9f\x98\x80|");
    EXPECT_EQ(GetParam().image(emoji.get(), QAL_CP950), nullptr);
    EXPECT_NE(std::string(qalLastError()).find("U+1F600"), std::string::npos) << qalLastError();
    EXPECT_NE(std::string(GetParam().image(emoji.get(), QAL_UTF8)).find("10|A1001 \xf0\x9f\x98\x80|"),
        std::string::npos);
}

TEST_P(EveryRecord, PropertyNamesOutsideThePublishedSetAreRefused)
{
    const Record record(GetParam(), "H|0|0005.HK|");
    const struct
    {
        const char* name;
        const char* property;
        const char* reason;
    } cases[] = {
        { "unknown", "RNoSuchField", "publishes no property \"RNoSuchField\"" },
        { "QObject's own", "objectName", "publishes no property \"objectName\"" },
        { "letter case matters", "rsymbol", "publishes no property \"rsymbol\"" },
        { "null", nullptr, "no property name" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(GetParam().get(record.get(), c.property), nullptr);
        EXPECT_NE(std::string(qalLastError()).find(c.reason), std::string::npos) << qalLastError();
        EXPECT_EQ(GetParam().set(record.get(), c.property, "1"), -1);
        EXPECT_NE(std::string(qalLastError()).find(c.reason), std::string::npos) << qalLastError();
    }
    // Read-only: every R... property, on every record.
    EXPECT_EQ(GetParam().set(record.get(), "RSymbol", "0700.HK"), -1);
    EXPECT_NE(std::string(qalLastError()).find("RSymbol of T"), std::string::npos) << qalLastError();
    EXPECT_NE(std::string(qalLastError()).find("is read-only"), std::string::npos) << qalLastError();
    EXPECT_EQ(record.property("RSymbol"), "0005.HK");
}

INSTANTIATE_TEST_SUITE_P(PlainExports, EveryRecord, testing::ValuesIn(everyRecord()),
    [](const testing::TestParamInfo<RecordApi>& info) { return info.param.kind; });

TEST(PlainExports, WritablePropertiesTakeTextOfTheirType)
{
    const struct
    {
        const char* name;
        const char* property;
        const char* value;
        int rc;
        const char* readBack; // the property read afterwards
        const char* expected; // its value
        const char* reason; // in qalLastError when refused
    } cases[] = {
        { "quantity", "WQuantity", "3000", 0, "RQty", "3000", "" },
        { "quantity with blanks", "CQuantity", " 150 ", 0, "RQty", "150", "" },
        { "price", "WPrice", "62.4", 0, "RPrice", "62.4", "" },
        { "price as the editor's twin", "CPrice", "0.01", 0, "RPrice", "0.01", "" },
        { "price in the millions, never in exponent form", "WPrice", "12345678.125", 0, "RPrice",
            "12345678.125", "" },
        { "price below a ten-thousandth", "WPrice", "0.00001", 0, "RPrice", "0.00001", "" },
        { "symbol", "WSymbol", "0700.HK", 0, "RSymbol", "0700.HK", "" },
        { "account in Chinese", "WAccount", "客戶B", 0, "RAccount", "客戶B", "" },
        { "side", "WOrder_Side", "1", 0, "RSide", "SELL", "" },
        { "quantity with a group separator", "WQuantity", "2,000", -1, "RQty", "2000",
            "WQuantity of TomsOrder does not take \"2,000\"" },
        { "quantity with decimals", "WQuantity", "20.5", -1, "RQty", "2000", "WQuantity" },
        { "price in words", "WPrice", "abc", -1, "RPrice", "62.35", "WPrice of TomsOrder does not take" },
        { "empty price", "WPrice", "", -1, "RPrice", "62.35", "WPrice" },
        { "no value", "WSymbol", nullptr, -1, "RSymbol", "0005.HK", "no value for WSymbol" },
        { "value not UTF-8", "WAccount", "\xab\xc8", -1, "RAccount", "A1001", "not valid UTF-8" },
        { "read-only quantity", "RQty", "5", -1, "RQty", "2000", "RQty of TomsOrder is read-only" },
        { "read-only status", "RStatus", "Comp", -1, "RStatus", "Pend", "RStatus of TomsOrder is read-only" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QalOrder* order = qalOrderFromMessage("H|0|0005.HK|10|A1001|4|2000|3|62.35|11|0|5|1|", QAL_UTF8);
        ASSERT_NE(order, nullptr);
        EXPECT_EQ(qalOrderSetProperty(order, c.property, c.value), c.rc);
        EXPECT_NE(std::string(qalLastError()).find(c.reason), std::string::npos) << qalLastError();
        EXPECT_STREQ(qalOrderGetProperty(order, c.readBack), c.expected);
        qalFreeOrder(order);
    }
}

TEST(PlainExports, ClientOrderTextsAreTheClientOrdersOwn)
{
    const struct
    {
        const char* name;
        const char* message;
        const char* orderRemark;
        const char* exchRemark;
        const char* option;
    } cases[] = {
        { "manual fill-and-kill house order", "H|40|160|46|12|25|陳生 call back|",
            "Manual;FAK;House;陳生 call back", "陳生 call back", "House;FAK;" },
        { "short sale at auction", "H|40|512|101|1|", "SS;AO;", "", "AO;" },
        { "plain order", "H|0|0005.HK|", "", "", "" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QalOrder* order = qalOrderFromMessage(c.message, QAL_UTF8);
        QalExchOrder* exch = qalExchOrderFromMessage(c.message, QAL_UTF8);
        ASSERT_NE(order, nullptr);
        ASSERT_NE(exch, nullptr);
        EXPECT_STREQ(qalOrderRemark(order), c.orderRemark);
        EXPECT_STREQ(qalExchOrderRemark(exch), c.exchRemark);
        EXPECT_STREQ(qalOrderOptionText(order), c.option);
        EXPECT_STREQ(qalExchOrderOptionText(exch), c.option);
        qalFreeExchOrder(exch);
        qalFreeOrder(order);
    }
}

TEST(PlainExports, TextsStayValidUntilTheSameCallOnTheSameRecord)
{
    QalOrder* order = qalOrderFromMessage("H|0|0005.HK|4|2000|3|62.35|11|0|5|2|40|128|25|note|", QAL_UTF8);
    QalOrder* other = qalOrderFromMessage("H|0|0700.HK|11|1|5|4|", QAL_UTF8);
    ASSERT_NE(order, nullptr);
    ASSERT_NE(other, nullptr);
    const char* remark = qalOrderRemark(order);
    const char* status = qalOrderStatusText(order);
    const char* side = qalOrderSideText(order);
    const char* option = qalOrderOptionText(order);
    const char* image = qalOrderImageMessage(order, QAL_UTF8);
    const char* symbol = qalOrderGetProperty(order, "RSymbol");
    const char* price = qalOrderGetProperty(order, "RPrice");
    // Other records, other properties, a refused call: none touch the texts above.
    EXPECT_STREQ(qalOrderStatusText(other), "Canc");
    EXPECT_STREQ(qalOrderGetProperty(other, "RSymbol"), "0700.HK");
    EXPECT_EQ(qalOrderGetProperty(order, "RNoSuchField"), nullptr);
    EXPECT_EQ(qalOrderSetProperty(order, "WQuantity", "3000"), 0);
    EXPECT_STREQ(qalOrderGetProperty(order, "RQty"), "3000");

    EXPECT_STREQ(remark, "FAK;note");
    EXPECT_STREQ(status, "Part");
    EXPECT_STREQ(side, "BUY");
    EXPECT_STREQ(option, "FAK;");
    EXPECT_NE(std::string(image).find("|4|2000|"), std::string::npos) << image;
    EXPECT_STREQ(symbol, "0005.HK");
    EXPECT_STREQ(price, "62.35");
    qalFreeOrder(other);
    qalFreeOrder(order);
}

TEST(PlainExports, AnExchangeOrderAdoptedByAnOrderTakesItsTextsAlong)
{
    QalOrder* order = qalOrderFromMessage("H|6|O1|0|0005.HK|", QAL_UTF8);
    QalExchOrder* exch = qalExchOrderFromMessage("H|7|E1|0|0005.HK|25|first fill|", QAL_UTF8);
    ASSERT_NE(order, nullptr);
    ASSERT_NE(exch, nullptr);
    EXPECT_STREQ(qalExchOrderRemark(exch), "first fill");
    reinterpret_cast<qal::TomsOrder*>(order)->addExchOrder(reinterpret_cast<qal::TexchOrder*>(exch));
    // The order frees the exchange order it adopted, and with it the texts
    // the exchange order handed out (AddressSanitizer reports a leak or a
    // double free otherwise).
    qalFreeOrder(order);
}

TEST(PlainExports, ARecordMadeOnOneThreadCanBeReadOnAnother)
{
    QalOrder* order = qalOrderFromMessage("H|0|0005.HK|25|note|", QAL_UTF8);
    ASSERT_NE(order, nullptr);
    std::string remark;
    std::thread reader([&] { remark = qalOrderRemark(order); });
    reader.join();
    EXPECT_EQ(remark, "note");
    // Freed here with the text the other thread was handed (AddressSanitizer
    // reports the text as leaked if it never became the record's).
    qalFreeOrder(order);
}

// One row for each way a function reaches its record: a property, a text,
// the image, a setter, a trade's text.
TEST(PlainExports, ANullRecordIsRefusedWithAMessage)
{
    const struct
    {
        const char* function;
        std::function<bool()> failed;
    } cases[] = {
        { "qalExchOrderGetProperty", [] { return qalExchOrderGetProperty(nullptr, "RQty") == nullptr; } },
        { "qalOrderSetProperty", [] { return qalOrderSetProperty(nullptr, "WQuantity", "1") == -1; } },
        { "qalOrderRemark", [] { return qalOrderRemark(nullptr) == nullptr; } },
        { "qalTradeSideText", [] { return qalTradeSideText(nullptr) == nullptr; } },
        { "qalExchOrderImageMessage", [] { return qalExchOrderImageMessage(nullptr, QAL_UTF8) == nullptr; } },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.function);
        EXPECT_TRUE(c.failed());
        EXPECT_EQ(std::string(qalLastError()), c.function + ": no record"s);
    }
}

TEST(PlainExports, ListPropertiesHaveNoText)
{
    QalOrder* order = qalOrderFromMessage("H|0|0005.HK|", QAL_UTF8);
    ASSERT_NE(order, nullptr);
    EXPECT_EQ(qalOrderGetProperty(order, "RChildWorkOrder"), nullptr);
    EXPECT_NE(
        std::string(qalLastError()).find("RChildWorkOrder of TomsOrder holds records"), std::string::npos)
        << qalLastError();
    qalFreeOrder(order);
}

TEST(PlainExports, VersionIsMajorMinorPatch)
{
    const QRegularExpression form(QStringLiteral("^\\d+\\.\\d+\\.\\d+$"));
    EXPECT_TRUE(form.match(QString::fromUtf8(qalVersion())).hasMatch()) << qalVersion();
}

TEST(PlainExports, MarketInfoFactoryHandsOverAnObjectToFree)
{
    EXPECT_EQ(MarketInfoFactory(nullptr), nullptr);
    qal::TomsOrder order;
    order.Exch = QStringLiteral("HKFE");
    QalMarketInfo* info = MarketInfoFactory(reinterpret_cast<QalOrder*>(&order));
    ASSERT_NE(info, nullptr);
    EXPECT_NE(qobject_cast<qal::HKFEinfo*>(reinterpret_cast<qal::TmarketInfo*>(info)), nullptr);
    qalFreeMarketInfo(info);
}

TEST(PlainExports, FailuresComeBackAsMinusOneWithAMessage)
{
    EXPECT_EQ(orderSaveOrder(nullptr), -1);
    EXPECT_STRNE(qalLastError(), "");

    // No order database configured: the loader reports, it does not throw.
    QTemporaryDir dir;
    qputenv("OMS_INI", dir.filePath(QStringLiteral("missing.ini")).toUtf8());
    int received = 0;
    const int rc = orderLoadOrders(
        [](QalOrder* order, void* context) {
            ++*static_cast<int*>(context);
            qalFreeOrder(order);
        },
        &received);
    EXPECT_EQ(rc, -1);
    EXPECT_EQ(received, 0);
    EXPECT_STRNE(qalLastError(), "");
}

} // namespace
