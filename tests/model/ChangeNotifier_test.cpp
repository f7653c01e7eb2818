// SPDX-License-Identifier: MIT
// Subscriptions on watched records: call order, removal and registration from
// inside a fire, the channel rules, and that removed subscriptions are freed.
#include "qalpack/model/ChangeNotifier.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qalpack/runtime/Exception.h"

namespace qal {
namespace {

// A notifier and the keys of three subscribers.
class ChangeNotifierRules : public testing::Test
{
protected:
    // Subscriber i logs its letter ('A' + i), then runs `extra`; alive[i]
    // expires once the notifier has freed the subscription.
    TChangeNotifyEvent logger(int i, std::function<void()> extra = {})
    {
        auto sentinel = std::make_shared<int>(0);
        alive[i] = sentinel;
        return [this, i, sentinel, extra](void*, void*) {
            log += char('A' + i);
            if (extra)
                extra();
        };
    }

    std::unique_ptr<TChangeNotifier> n = std::make_unique<TChangeNotifier>();
    std::string log;
    int keys[3] {};
    std::weak_ptr<int> alive[3];
};

// Runs the rules shared by the plain list and a channel ("Orders") on each.
class EachList : public ChangeNotifierRules, public testing::WithParamInterface<bool>
{
protected:
    bool channel() const { return GetParam(); }
    void add(int i, std::function<void()> extra = {}) { add(logger(i, std::move(extra)), &keys[i]); }
    void add(TChangeNotifyEvent cb, void* key)
    {
        channel() ? n->RegisterChannelizedCallback("Orders", std::move(cb), key)
                  : n->RegisterCallback(std::move(cb), key);
    }
    // Subscribers that log nothing, each under a key of its own.
    void addQuiet(int count)
    {
        quietKeys.resize(std::size_t(count));
        for (int& key : quietKeys)
            add([](void*, void*) {}, &key);
    }
    void remove(int i) { removeKey(&keys[i]); }
    void removeKey(void* key)
    {
        channel() ? n->RemoveChannelizedCallback("Orders", key) : n->RemoveCallback(key);
    }
    void clearAll() { channel() ? n->ClearAllChanelCallback() : n->ClearAllCallback(); }
    void fire(void* data = nullptr)
    {
        channel() ? n->FireChannelizedEvent("Orders", data) : n->FireEvent(data);
    }
    int count() const { return channel() ? n->channelCallbackCount("Orders") : n->callbackCount(); }
    bool flag() const { return channel() ? n->channelFiring() : n->firing(); }

    std::vector<int> quietKeys;
};
INSTANTIATE_TEST_SUITE_P(ChangeNotifier, EachList, testing::Bool(),
    [](const testing::TestParamInfo<bool>& info) { return info.param ? "Channel" : "Plain"; });

TEST_P(EachList, FireHandsDataAndOwnKeyToEachSubscriberInRegistrationOrder)
{
    int data = 0;
    std::vector<std::pair<void*, void*>> calls;
    const auto record = [&calls](void* d, void* c) { calls.emplace_back(d, c); };
    add(record, &keys[1]);
    add(record, &keys[0]);
    fire(&data);
    const std::vector<std::pair<void*, void*>> expected { { &data, &keys[1] }, { &data, &keys[0] } };
    EXPECT_EQ(calls, expected);
    EXPECT_FALSE(flag());
}

// GIVEN subscribers A, B, C WHEN one of them removes a subscriber during the
// first fire THEN the removed one is never called again and is freed when a
// walk reaches it: in the same walk if it lies ahead, else on the next fire.
TEST_P(EachList, RemovalDuringFireMarksAndTheWalkFreesLater)
{
    struct Row
    {
        const char* name;
        int remover, target;
        const char* firstCalls;
        bool freedByFirstFire;
        const char* secondCalls;
    };
    const Row rows[] = {
        { "removes itself", 1, 1, "ABC", false, "AC" },
        { "removes a later one", 0, 2, "AB", true, "AB" },
        { "removes an earlier one", 2, 0, "ABC", false, "BC" },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        n = std::make_unique<TChangeNotifier>();
        log.clear();
        for (int i = 0; i < 3; ++i)
            add(i, i == row.remover ? std::function<void()>([this, &row] { remove(row.target); }) : nullptr);
        fire();
        EXPECT_EQ(log, row.firstCalls);
        EXPECT_EQ(alive[row.target].expired(), row.freedByFirstFire);
        EXPECT_EQ(count(), row.freedByFirstFire ? 2 : 3);

        log.clear();
        fire();
        EXPECT_EQ(log, row.secondCalls);
        EXPECT_TRUE(alive[row.target].expired());
        EXPECT_EQ(count(), 2);
    }
}

// A key removed during a fire and registered again in the same fire: the new
// subscription is called and kept, the removed one is not. Short lists and
// long ones (which keep removed keys aside during a walk) alike.
TEST_P(EachList, KeyRemovedAndRegisteredAgainInOneFireKeepsTheNewSubscription)
{
    for (const int quiet : { 0, 40 }) {
        SCOPED_TRACE(testing::Message() << quiet << " quiet subscribers");
        n = std::make_unique<TChangeNotifier>();
        log.clear();
        addQuiet(quiet);
        add(0, [this] {
            if (log != "A")
                return;
            remove(0);
            add(logger(2), &keys[0]);
        });
        add(1);
        fire();
        EXPECT_EQ(log, "ABC");
        log.clear();
        fire();
        EXPECT_EQ(log, "BC");
        EXPECT_TRUE(alive[0].expired());
        EXPECT_FALSE(alive[2].expired());
        EXPECT_EQ(count(), quiet + 2);
    }
}

// A fire from inside a callback sees the removals made before it.
TEST_P(EachList, NestedFireSkipsSubscriptionsRemovedBeforeIt)
{
    for (const int quiet : { 0, 40 }) {
        SCOPED_TRACE(testing::Message() << quiet << " quiet subscribers");
        n = std::make_unique<TChangeNotifier>();
        log.clear();
        addQuiet(quiet);
        add(0, [this] {
            if (log != "A")
                return;
            remove(2);
            fire();
        });
        add(1);
        add(2);
        fire();
        EXPECT_EQ(log, "AABB");
        EXPECT_TRUE(alive[2].expired());
        EXPECT_EQ(count(), quiet + 2);
    }
}

// Every screen watching a record closes on the same change.
TEST_P(EachList, ManySubscribersRemovingThemselvesAreEachCalledOnceThenFreed)
{
    constexpr int kScreens = 50;
    std::vector<int> calls(kScreens);
    std::vector<std::weak_ptr<int>> screensAlive;
    for (int& c : calls) {
        auto sentinel = std::make_shared<int>(0);
        screensAlive.push_back(sentinel);
        add(
            [this, sentinel](void*, void* custom) {
                ++*static_cast<int*>(custom);
                removeKey(custom);
            },
            &c);
    }
    fire();
    EXPECT_EQ(count(), kScreens) << "marked, freed by the next fire";
    fire();
    EXPECT_EQ(calls, std::vector<int>(kScreens, 1));
    EXPECT_EQ(count(), 0);
    for (const auto& screen : screensAlive)
        EXPECT_TRUE(screen.expired());
}

// GIVEN A (key 0) and B (key 1) WHEN A does something to the list on the
// first fire THEN the right subscriptions are called and counted, inside the
// callback and after each of two fires, and A goes when it is dropped.
TEST_P(EachList, ChangesFromInsideAFireKeepCountsAndCalls)
{
    struct Row
    {
        const char* name;
        bool sharedWithC; // C (key 0, like A) registered after B
        std::function<void()> action;
        const char* firstCalls;
        int countInside, countAfterFirst;
        bool aFreedByFirstFire;
        const char* secondCalls;
        int countAfterSecond;
    };
    const Row rows[] = {
        { "removes its key, shared with a later subscriber", true, [this] { remove(0); }, "AB", 3, 2, false,
            "B", 1 },
        { "subscribes again under its key, then removes it", false,
            [this] {
                add(logger(2), &keys[0]);
                remove(0);
            },
            "AB", 3, 2, false, "B", 1 },
        { "clears all, then subscribes", false,
            [this] {
                clearAll();
                add(logger(2), &keys[2]);
            },
            "AC", 1, 1, true, "C", 1 },
        // The nested fire resets the firing flag, so this removal drops A at
        // once; B must still be called by the outer walk.
        { "fires again, then removes itself", false,
            [this] {
                fire();
                remove(0);
            },
            "AABB", 1, 1, true, "B", 1 },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        n = std::make_unique<TChangeNotifier>();
        log.clear();
        int countInside = -1;
        add(0, [this, &row, &countInside] {
            if (log != "A")
                return;
            row.action();
            countInside = count();
        });
        add(1);
        if (row.sharedWithC)
            add(logger(2), &keys[0]);
        fire();
        EXPECT_EQ(log, row.firstCalls);
        EXPECT_EQ(countInside, row.countInside);
        EXPECT_EQ(count(), row.countAfterFirst);
        EXPECT_EQ(alive[0].expired(), row.aFreedByFirstFire);

        log.clear();
        fire();
        EXPECT_EQ(log, row.secondCalls);
        EXPECT_EQ(count(), row.countAfterSecond);
        EXPECT_TRUE(alive[0].expired());
    }
}

// A capture may own a screen that unsubscribes another and subscribes anew
// when it goes, which is when the notifier frees its subscription.
TEST_P(EachList, CaptureFreedOnRemovalMaySubscribeAndUnsubscribe)
{
    struct OnFree
    {
        std::function<void()> run;
        ~OnFree() { run(); }
    };
    auto screen = std::make_shared<OnFree>();
    screen->run = [this] {
        removeKey(&keys[1]);
        add(logger(2), &keys[2]);
    };
    add([screen](void*, void*) {}, &keys[0]);
    screen.reset();
    add(1);
    remove(0);
    EXPECT_EQ(count(), 1);
    EXPECT_TRUE(alive[1].expired());
    fire();
    EXPECT_EQ(log, "C");
}

TEST_P(EachList, SubscriberRegisteredDuringFireIsCalledInTheSameWalk)
{
    add(0, [this] {
        if (log == "A")
            add(1);
    });
    fire();
    EXPECT_EQ(log, "AB");
}

TEST_P(EachList, SameKeyRegisteredTwiceIsCalledTwiceAndRemovedTogether)
{
    add(0);
    add(1);
    add(0);
    fire();
    EXPECT_EQ(log, "ABA");
    remove(0);
    log.clear();
    fire();
    EXPECT_EQ(log, "B");
    EXPECT_EQ(count(), 1);
}

// A screen that closed and opened twice on the same record: its key counts
// two subscriptions again, so removing itself from inside a fire takes both.
TEST_P(EachList, KeyBackAfterItsRemovalIsCountedAfresh)
{
    add(0);
    remove(0);
    fire();
    for (int round = 0; round < 2; ++round)
        add([this](void*, void* key) { log += 'S'; removeKey(key); }, &keys[0]);
    add(1);
    fire();
    EXPECT_EQ(log, "SB") << "the second subscription of the key was removed with the first";
    log.clear();
    fire();
    EXPECT_EQ(log, "B");
    EXPECT_EQ(count(), 1);
}

// The running callback touches its own capture after the clear it triggers;
// ASan reports it if the clear freed the callback under its feet.
TEST_P(EachList, ClearingAllSubscriptionsFromInsideACallbackIsSafe)
{
    auto counter = std::make_shared<int>(0);
    const std::weak_ptr<int> clearerAlive = counter;
    add([this, counter](void*, void*) { clearAll(), ++*counter; }, &keys[0]);
    counter.reset();
    add(1);
    fire();
    EXPECT_EQ(log, "");
    EXPECT_EQ(count(), 0) << "an emptied channel stays known";
    EXPECT_TRUE(clearerAlive.expired());
    EXPECT_TRUE(alive[1].expired());
    EXPECT_FALSE(flag());
}

TEST_P(EachList, ExceptionFromCallbackPropagatesAndLeavesFlagSet)
{
    add([](void*, void*) { throw std::runtime_error("blotter failed"); }, &keys[0]);
    EXPECT_THROW(fire(), std::runtime_error);
    EXPECT_TRUE(flag());
    remove(0);
    EXPECT_EQ(count(), 1) << "removal only marks while the flag is set";
}

TEST_P(EachList, EmptyCallbackRaisesWhenItsTurnComes)
{
    add(TChangeNotifyEvent {}, &keys[0]);
    EXPECT_THROW(fire(), Error);
}

// A fire on an unknown channel leaves channelFiring set, so removals on any
// channel only mark until a known channel is fired.
TEST_F(ChangeNotifierRules, FireOnUnknownChannelKeepsRemovalsMarkingUntilKnownChannelFires)
{
    n->RegisterChannelizedCallback("Trades", logger(0), &keys[0]);
    n->FireChannelizedEvent("NoSuchChannel", nullptr);
    EXPECT_TRUE(n->channelFiring());
    EXPECT_EQ(n->channelCallbackCount("NoSuchChannel"), -1);

    n->RemoveChannelizedCallback("Trades", &keys[0]);
    EXPECT_EQ(n->channelCallbackCount("Trades"), 1);
    EXPECT_FALSE(alive[0].expired());

    n->FireChannelizedEvent("Trades", nullptr);
    EXPECT_EQ(log, "");
    EXPECT_EQ(n->channelCallbackCount("Trades"), 0);
    EXPECT_TRUE(alive[0].expired());
    EXPECT_FALSE(n->channelFiring());
}

TEST_F(ChangeNotifierRules, FiringFlagsAreIndependent)
{
    n->RegisterChannelizedCallback("Orders", logger(0), &keys[0]);
    n->RegisterCallback([this](void*, void*) { n->RemoveChannelizedCallback("Orders", &keys[0]); }, &keys[1]);
    n->RegisterChannelizedCallback(
        "Trades", [this](void*, void*) { n->RemoveCallback(&keys[1]); }, &keys[2]);
    n->FireEvent(nullptr);
    EXPECT_EQ(n->channelCallbackCount("Orders"), 0) << "a plain fire must not mark channel removals";
    n->FireChannelizedEvent("Trades", nullptr);
    EXPECT_EQ(n->callbackCount(), 0) << "a channel fire must not mark plain removals";
}

TEST_F(ChangeNotifierRules, DisabledNotifierCallsNobodyAndLeavesFlagsAlone)
{
    n->RegisterCallback(logger(0), &keys[0]);
    n->RegisterChannelizedCallback("Orders", logger(1), &keys[1]);
    n->setEnabled(false);
    n->FireEvent(nullptr);
    n->FireChannelizedEvent("Orders", nullptr);
    n->FireChannelizedEvent("NoSuchChannel", nullptr);
    EXPECT_EQ(log, "");
    EXPECT_FALSE(n->firing());
    EXPECT_FALSE(n->channelFiring());

    n->setEnabled(true);
    n->FireEvent(nullptr);
    n->FireChannelizedEvent("Orders", nullptr);
    EXPECT_EQ(log, "AB");
}

TEST_F(ChangeNotifierRules, ChannelNamesIgnoreLetterCase)
{
    n->RegisterChannelizedCallback("Orders", logger(0), &keys[0]);
    n->RegisterChannelizedCallback("ORDERS", logger(1), &keys[1]);
    EXPECT_EQ(n->channelCallbackCount("orders"), 2);
    n->FireChannelizedEvent("oRdErS", nullptr);
    EXPECT_EQ(log, "AB");
    n->RemoveChannelizedCallback("orders", &keys[0]);
    EXPECT_EQ(n->channelCallbackCount("Orders"), 1);
}

class HookedNotifier : public TChangeNotifier
{
public:
    std::vector<std::string> hooks;

protected:
    void OnRegisterCallback(const TChangeNotifyEvent& callback, void* custom) override
    {
        hooks.push_back("plain count=" + std::to_string(callbackCount()) + describe(callback, custom));
    }
    void OnRegisterChannelizedCallback(
        const QString& channel, const TChangeNotifyEvent& callback, void* custom) override
    {
        hooks.push_back(channel.toStdString() + " count=" + std::to_string(channelCallbackCount(channel))
            + describe(callback, custom));
    }

private:
    static std::string describe(const TChangeNotifyEvent& callback, void* custom)
    {
        return (custom ? " key=" + *static_cast<std::string*>(custom) : " no key")
            + (callback ? " callback" : " empty");
    }
};

TEST(ChangeNotifier, RegistrationHooksRunAfterTheSubscriptionIsAdded)
{
    HookedNotifier notifier;
    std::string key = "blotter";
    notifier.RegisterCallback([](void*, void*) {}, &key);
    notifier.RegisterChannelizedCallback(
        "Orders", [](void*, void*) {}, &key);
    notifier.RegisterChannelizedCallback("ORDERS", {}, nullptr);
    const std::vector<std::string> expected {
        "plain count=1 key=blotter callback",
        "Orders count=1 key=blotter callback",
        "ORDERS count=2 no key empty",
    };
    EXPECT_EQ(notifier.hooks, expected);
}

} // namespace
} // namespace qal
