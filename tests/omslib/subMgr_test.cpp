// SPDX-License-Identifier: MIT
// Publish/subscribe: records reach subscribers later, through the event loop,
// in subscription order, on exact topics; subscribers may change the
// subscriptions (or end the manager) while records are handed out; and a
// transport that receives on a thread of its own, as a network broker does,
// still delivers on the manager's thread.
#include "qalpack/omslib/subMgr.h"

#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include <QCoreApplication>
#include <QStringList>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include "qalpack/omslib/CodePage950.h"
#include "qalpack/runtime/Exception.h"
#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

TFieldMessage record(const QString& topic, const QString& computer = QStringLiteral("DESK1"))
{
    TFieldMessage message(topic);
    message.SetField(10, computer);
    return message;
}

void runEventLoop()
{
    QCoreApplication::processEvents();
}

TEST(SubMgr, RecordsArriveThroughTheEventLoopOnExactTopicsOnly)
{
    TsubMgr desk(QStringLiteral("desk"));
    TsubMgr other(QStringLiteral("other"));
    QStringList heard;
    for (const char* topic : { "USER_D001", "USER_D0011", "user_d001" }) {
        (void)desk.Subscribe(
            QString::fromLatin1(topic), [&heard](TSubscription& item, const TFieldMessage& message) {
                heard << item.Topic() + u'=' + message.GetField(10);
            });
    }

    other.Publish(record(QStringLiteral("USER_D001"), QStringLiteral("DESK2")));
    desk.Publish(record(QStringLiteral("USER_D001")));
    EXPECT_TRUE(heard.isEmpty()) << "never inside Publish";
    runEventLoop();
    EXPECT_EQ(heard, (QStringList { "USER_D001=DESK2", "USER_D001=DESK1" }))
        << "the publisher hears itself too";
}

TEST(SubMgr, SubscribersMayChangeTheSubscriptionsWhileARecordIsHandedOut)
{
    TsubMgr manager;
    QStringList calls;
    TSubscription* third = nullptr;
    TSubscription* second = nullptr;
    const QString topic = QStringLiteral("T");
    (void)manager.Subscribe(topic, [&](TSubscription&, const TFieldMessage&) {
        calls << QStringLiteral("first");
        manager.Unsubscribe(third);
        if (third != nullptr)
            (void)manager.Subscribe(topic, [&](TSubscription&, const TFieldMessage&) { calls << "late"; });
        third = nullptr;
    });
    second = manager.Subscribe(topic, [&](TSubscription& item, const TFieldMessage&) {
        calls << QStringLiteral("second");
        manager.Unsubscribe(&item);
    });
    third = manager.Subscribe(topic, [&](TSubscription&, const TFieldMessage&) { calls << "third"; });
    ASSERT_NE(second, nullptr);

    manager.Publish(record(topic));
    runEventLoop();
    EXPECT_EQ(calls, (QStringList { "first", "second" }));
    EXPECT_EQ(manager.SubscriptionCount(), 2);

    calls.clear();
    manager.Publish(record(topic));
    runEventLoop();
    EXPECT_EQ(calls, (QStringList { "first", "late" }));
}

TEST(SubMgr, ASubscriberMayEndTheManagerAndRecordsQueuedForItAreDropped)
{
    TsubMgr publisher;
    auto manager = std::make_unique<TsubMgr>();
    int laterCalls = 0;
    (void)manager->Subscribe(
        QStringLiteral("T"), [&manager](TSubscription&, const TFieldMessage&) { manager.reset(); });
    (void)manager->Subscribe(
        QStringLiteral("T"), [&laterCalls](TSubscription&, const TFieldMessage&) { ++laterCalls; });
    publisher.Publish(record(QStringLiteral("T")));
    publisher.Publish(record(QStringLiteral("T")));
    runEventLoop();
    EXPECT_EQ(manager, nullptr);
    EXPECT_EQ(laterCalls, 0);
}

TEST(SubMgr, AFailingSubscriberIsLoggedAndTheOthersStillHear)
{
    TsubMgr manager(QStringLiteral("desk"));
    int calls = 0;
    (void)manager.Subscribe(QStringLiteral("T"),
        [](TSubscription&, const TFieldMessage&) { throw Error(QStringLiteral("blotter row missing")); });
    (void)manager.Subscribe(QStringLiteral("T"), [&calls](TSubscription&, const TFieldMessage&) { ++calls; });
    manager.Publish(record(QStringLiteral("T")));
    testing::internal::CaptureStderr();
    runEventLoop();
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(calls, 1);
    EXPECT_NE(log.find("TsubMgr \"desk\": a subscriber of T failed: blotter row missing"), std::string::npos)
        << log;
}

TEST(SubMgr, LastIsTheNewestManagerStillAlive)
{
    ASSERT_EQ(TsubMgr::last(), nullptr);
    auto first = std::make_unique<TsubMgr>();
    auto second = std::make_unique<TsubMgr>();
    EXPECT_EQ(TsubMgr::last(), second.get());
    EXPECT_NE(first->Name(), second->Name());
    second.reset();
    EXPECT_EQ(TsubMgr::last(), first.get());
    first.reset();
    EXPECT_EQ(TsubMgr::last(), nullptr);
}

TEST(SubMgr, WireTextIsPublishedAsItsRecordAndBadInputIsRefused)
{
    TsubMgr manager;
    std::vector<TFieldMessage> heard;
    (void)manager.Subscribe(QStringLiteral("USER_D001"),
        [&heard](TSubscription&, const TFieldMessage& message) { heard.push_back(message); });
    manager.PublishText(cp950::encode(QStringLiteral("image|USER_D001|13|D001|10|交易室|")));
    EXPECT_THROW(manager.PublishText("image|USER_D001|13|"), Error);
    EXPECT_THROW(manager.Publish(TFieldMessage()), Error);
    EXPECT_THROW((void)manager.Subscribe(QString(), [](TSubscription&, const TFieldMessage&) {}), Error);
    EXPECT_THROW((void)manager.Subscribe(QStringLiteral("T"), nullptr), Error);
    runEventLoop();
    ASSERT_EQ(heard.size(), 1u);
    EXPECT_EQ(heard[0].GetField(10), u"交易室");
    EXPECT_EQ(manager.SubscriptionCount(), 1);
}

// A broker's transport as the manager sees it: records arrive on reader
// threads of its own; "+T" / "-T" log the topics asked for and dropped.
class ThreadedTransport : public TSubTransport
{
public:
    explicit ThreadedTransport(QStringList& log)
        : log_(log)
    { }
    ~ThreadedTransport() override { Close(); }
    void Open(Sink sink) override { sink_ = std::move(sink); }
    void Close() noexcept override
    {
        for (std::thread& reader : std::exchange(readers_, {}))
            reader.join();
    }
    void Subscribe(const QString& topic) override { log_ << u'+' + topic; }
    void Unsubscribe(const QString& topic) override { log_ << u'-' + topic; }
    void Publish(const TFieldMessage& message) override
    {
        readers_.emplace_back([this, message] { sink_(message); });
    }

private:
    QStringList& log_;
    Sink sink_;
    std::vector<std::thread> readers_;
};

TEST(SubMgr, ARecordFromATransportThreadIsDeliveredOnTheManagersThread)
{
    QStringList topics;
    TsubMgr manager(QStringLiteral("broker"), std::make_unique<ThreadedTransport>(topics));
    QThread* calledOn = nullptr;
    TSubscription* first = manager.Subscribe(QStringLiteral("T"),
        [&calledOn](TSubscription&, const TFieldMessage&) { calledOn = QThread::currentThread(); });
    TSubscription* second
        = manager.Subscribe(QStringLiteral("T"), [](TSubscription&, const TFieldMessage&) {});
    manager.Publish(record(QStringLiteral("T")));
    EXPECT_TRUE(QTest::qWaitFor([&calledOn] { return calledOn != nullptr; }, 5000));
    EXPECT_EQ(calledOn, QThread::currentThread());
    manager.Unsubscribe(first);
    manager.Unsubscribe(second);
    EXPECT_EQ(topics, (QStringList { "+T", "-T" })) << "asked for once, dropped with the last subscriber";
}

} // namespace
} // namespace qal
