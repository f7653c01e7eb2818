// SPDX-License-Identifier: MIT
// The desk-wide bus on a real PostgreSQL server: topics become channel names
// that the server accepts whatever their length and case, records reach
// every listening manager through the event loop and only on their own
// topic, a record too large for one notification is refused whole, and a
// dropped connection is noticed, reported and mended without losing the
// subscriptions or delivering anything twice.
#include "qalpack/omslib/PgSubTransport.h"

#include <atomic>
#include <memory>
#include <string>
#include <utility>

#include <QCoreApplication>
#include <QStringList>
#include <QTest>

#include <gtest/gtest.h>

#include "qalpack/db/Database.h"
#include "qalpack/runtime/Exception.h"
#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

TEST(PgSubTransportChannel, TopicsBecomeChannelsTheServerAccepts)
{
    const QString longA = QString(60, u'A') + QStringLiteral("_one");
    const QString longB = QString(60, u'A') + QStringLiteral("_two");
    const QString chinese = QString(30, QChar(0x6E2F)); // 90 bytes in UTF-8
    struct Row
    {
        const char* name;
        QString topic;
        bool kept;
    };
    const Row rows[] = {
        { "short topic kept with its case", QStringLiteral("USER_D001"), true },
        { "63 bytes kept", QString(63, u'x'), true },
        { "64 bytes hashed", QString(64, u'x'), false },
        { "long with shared prefix", longA, false },
        { "long non-ASCII", chinese, false },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const QByteArray channel = TPgSubTransport::ChannelName(row.topic);
        EXPECT_LE(channel.size(), TPgSubTransport::kMaxChannelBytes);
        if (row.kept) {
            EXPECT_EQ(channel, row.topic.toUtf8());
        } else {
            EXPECT_EQ(channel.at(channel.size() - 17), '#');
            EXPECT_TRUE(row.topic.toUtf8().startsWith(channel.left(channel.size() - 17)));
            // Cut at a character boundary: the name is still valid UTF-8.
            EXPECT_FALSE(QString::fromUtf8(channel).contains(QChar::ReplacementCharacter));
        }
    }
    EXPECT_NE(TPgSubTransport::ChannelName(longA), TPgSubTransport::ChannelName(longB));
    EXPECT_NE(TPgSubTransport::ChannelName(QStringLiteral("USER_D001")),
        TPgSubTransport::ChannelName(QStringLiteral("user_d001")));
}

class PgSubTransportTest : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string whyNot;
        server_ = test::postgresServer(whyNot);
        if (!server_)
            GTEST_SKIP() << "*** PostgreSQL server tests skipped: " << whyNot << " ***";
        static std::atomic<int> counter { 0 };
        tag_ = QStringLiteral("t%1_%2").arg(QCoreApplication::applicationPid()).arg(++counter);
        admin_ = std::make_unique<TDatabase>();
        admin_->SetDriverName(QStringLiteral("POSTGRES"));
        for (const QString& line : lines(QStringLiteral("admin")))
            admin_->Params().Add(line);
        admin_->SetLoginPrompt(false);
        admin_->SetConnected(true);
    }

    // Connection lines with an application name of this test's own, so
    // that the test can find the bus's server session.
    [[nodiscard]] QStringList lines(const QString& who) const
    {
        return { QStringLiteral("HOST=") + server_->host, QStringLiteral("PORT=") + server_->port,
            QStringLiteral("DATABASE=") + server_->dbname, QStringLiteral("USER NAME=") + server_->user,
            QStringLiteral("APPLICATION_NAME=qal_%1_%2").arg(tag_, who) };
    }

    // A manager on its own bus connection; `events` collects its connection
    // reports ("up", "down").
    std::unique_ptr<TsubMgr> manager(const QString& who, QStringList* events = nullptr)
    {
        TPgBusOptions options;
        options.reconnectFirstMs = 50;
        options.reconnectMaxMs = 400;
        if (events != nullptr)
            options.onConnectionChange = [events](bool up, const QString&) {
                events->append(up ? QStringLiteral("up") : QStringLiteral("down"));
            };
        auto transport = std::make_unique<TPgSubTransport>(lines(who), who, std::move(options));
        transports_.append(transport.get());
        return std::make_unique<TsubMgr>(who, std::move(transport));
    }

    // A topic of this test alone, so that tests running side by side on
    // the server never hear each other.
    [[nodiscard]] QString topic(const QString& name) const { return name + u'_' + tag_; }

    void notifyRaw(const QString& channel, const QString& payload) const
    {
        admin_->Execute(QStringLiteral("select pg_notify('%1', '%2')").arg(channel, payload));
    }

    // Ends the server session of the bus connection named `who`, as a
    // server restart or a network cut does.
    void dropSession(const QString& who) const
    {
        admin_->Execute(QStringLiteral("select pg_terminate_backend(pid) from pg_stat_activity "
                                       "where application_name = 'qal_%1_%2'")
                            .arg(tag_, who));
    }

    std::optional<test::PostgresServer> server_;
    QString tag_;
    std::unique_ptr<TDatabase> admin_;
    QList<TPgSubTransport*> transports_;
};

// Collects "<topic>:<tag 10>" for every record heard.
TSubUpdateEvent into(QStringList& heard)
{
    return [&heard](TSubscription&, const TFieldMessage& message) {
        heard << message.Topic() + u':' + message.GetField(10);
    };
}

TFieldMessage record(const QString& topic, const QString& value)
{
    TFieldMessage message(topic);
    message.SetField(10, value);
    return message;
}

TEST_F(PgSubTransportTest, RecordsReachEveryListenerInOrderOnTheirOwnTopicOnly)
{
    auto desk = manager(QStringLiteral("desk"));
    auto other = manager(QStringLiteral("other"));
    const QString upper = topic(QStringLiteral("USER_D001"));
    const QString lower = topic(QStringLiteral("user_d001"));
    const QString longTopic = topic(QString(80, u'L'));
    QStringList heard;
    for (const QString& t : { upper, lower, longTopic })
        (void)desk->Subscribe(t, into(heard));

    other->Publish(record(upper, QStringLiteral("first")));
    other->Publish(record(lower, QStringLiteral("second")));
    desk->Publish(record(longTopic, QStringLiteral("third")));
    other->Publish(record(topic(QStringLiteral("USER_D002")), QStringLiteral("not asked for")));
    EXPECT_TRUE(heard.isEmpty()) << "never inside Publish";
    ASSERT_TRUE(QTest::qWaitFor([&] { return heard.size() >= 3; }, 5000)) << heard.join(u' ').toStdString();
    QTest::qWait(100);
    EXPECT_EQ(heard,
        (QStringList { upper + QStringLiteral(":first"), lower + QStringLiteral(":second"),
            longTopic + QStringLiteral(":third") }));
}

TEST_F(PgSubTransportTest, ForeignTopicsAndNonRecordsOnAChannelAreDropped)
{
    auto desk = manager(QStringLiteral("desk"));
    const QString mine = topic(QStringLiteral("USER_D001"));
    QStringList heard;
    (void)desk->Subscribe(mine, into(heard));

    // What another topic hashed to the same channel would look like.
    notifyRaw(mine, QStringLiteral("image|OTHER_TOPIC|10|stray|"));
    notifyRaw(mine, QStringLiteral("not a record"));
    notifyRaw(mine, QStringLiteral("image|%1|10|raw|").arg(mine));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !heard.isEmpty(); }, 5000));
    QTest::qWait(100);
    EXPECT_EQ(heard, QStringList { mine + QStringLiteral(":raw") });
}

TEST_F(PgSubTransportTest, ARecordTooLargeForOneNotificationIsRefusedWhole)
{
    auto desk = manager(QStringLiteral("desk"));
    const QString t = topic(QStringLiteral("BIG"));
    QStringList heard;
    (void)desk->Subscribe(t, into(heard));
    const int overhead = record(t, QString()).ToString().toUtf8().size();

    const TFieldMessage fits = record(t, QString(TPgSubTransport::kMaxRecordBytes - overhead, u'x'));
    ASSERT_EQ(fits.ToString().toUtf8().size(), TPgSubTransport::kMaxRecordBytes);
    desk->Publish(fits);
    // One byte more, made of a three-byte character: counted in bytes.
    const TFieldMessage tooBig
        = record(t, QString(TPgSubTransport::kMaxRecordBytes - overhead - 2, u'x') + QChar(0x6E2F));
    try {
        desk->Publish(tooBig);
        FAIL() << "an 8000-byte record was sent";
    } catch (const Error& error) {
        EXPECT_TRUE(error.message().contains(QStringLiteral("8000 bytes"))) << error.message().toStdString();
        EXPECT_TRUE(error.message().contains(QStringLiteral("at most 7999")))
            << error.message().toStdString();
    }
    ASSERT_TRUE(QTest::qWaitFor([&] { return !heard.isEmpty(); }, 5000));
    QTest::qWait(100);
    ASSERT_EQ(heard.size(), 1);
    EXPECT_EQ(heard.first().size(), t.size() + 1 + TPgSubTransport::kMaxRecordBytes - overhead)
        << "delivered whole";
}

TEST_F(PgSubTransportTest, ADroppedConnectionIsReportedMendedAndListensAgain)
{
    QStringList events;
    auto desk = manager(QStringLiteral("desk"), &events);
    auto other = manager(QStringLiteral("other"));
    const QString t = topic(QStringLiteral("USER_D001"));
    QStringList heard;
    (void)desk->Subscribe(t, into(heard));
    EXPECT_EQ(events, QStringList { QStringLiteral("up") });

    other->Publish(record(t, QStringLiteral("before")));
    ASSERT_TRUE(QTest::qWaitFor([&] { return heard.size() == 1; }, 5000));

    dropSession(QStringLiteral("desk"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return events.size() >= 2; }, 5000)) << "the loss is noticed";
    EXPECT_EQ(events.at(1), QStringLiteral("down"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return events.size() >= 3; }, 10000)) << "and mended";
    EXPECT_EQ(events, (QStringList { "up", "down", "up" }));

    other->Publish(record(t, QStringLiteral("after")));
    ASSERT_TRUE(QTest::qWaitFor([&] { return heard.size() >= 2; }, 5000)) << "listening again";
    QTest::qWait(200);
    EXPECT_EQ(heard, (QStringList { t + QStringLiteral(":before"), t + QStringLiteral(":after") }))
        << "each record once";
}

TEST_F(PgSubTransportTest, APublishWhileDownThrowsAndTheDeskKeepsItsSubscriptions)
{
    QStringList events;
    TPgBusOptions options;
    options.reconnectFirstMs = 50;
    options.onConnectionChange = [&events](bool up, const QString& detail) {
        events << (up ? QStringLiteral("up ") : QStringLiteral("down ")) + detail;
    };
    // A loopback port where nothing listens.
    TsubMgr desk(QStringLiteral("desk"),
        std::make_unique<TPgSubTransport>(QStringList { QStringLiteral("HOST=127.0.0.1"),
                                              QStringLiteral("PORT=1"), QStringLiteral("DATABASE=x") },
            QStringLiteral("DOWNBUS"), std::move(options)));
    ASSERT_EQ(events.size(), 1);
    EXPECT_TRUE(
        events.first().startsWith(QStringLiteral("down Desk bus DOWNBUS (127.0.0.1:1/x): cannot connect")))
        << events.first().toStdString();

    EXPECT_NO_THROW((void)desk.Subscribe(
        topic(QStringLiteral("USER_D001")), [](TSubscription&, const TFieldMessage&) {}));
    try {
        desk.Publish(record(topic(QStringLiteral("USER_D001")), QStringLiteral("x")));
        FAIL() << "published while down";
    } catch (const Error& error) {
        EXPECT_TRUE(error.message().contains(QStringLiteral("not connected")))
            << error.message().toStdString();
    }
    // Attempts go on in the background without blocking the event loop.
    QTest::qWait(300);
    EXPECT_EQ(desk.SubscriptionCount(), 1);
}

} // namespace
} // namespace qal
