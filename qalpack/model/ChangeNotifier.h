// SPDX-License-Identifier: MIT
// TChangeNotifier: the base of every watched record and model (orders, trades,
// account lists). Blotters and screens subscribe with a key of their own and
// are called back when the record changes, either on every change (plain
// callbacks) or on one named channel only (channelized callbacks).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <memory>
#include <vector>

#include <QObject>
#include <QString>

#include "qalpack/qalpack_export.h"

namespace qal {

// data: what the firer passes (a record fires itself); custom: the subscriber's own key.
using TChangeNotifyEvent = std::function<void(void* data, void* custom)>;

// Keeps subscriptions in registration order and calls them back on a fire.
//
// Subscriptions may be added or removed from inside a callback while the
// notifier fires: a removal during a fire only marks the subscription, and
// the walk drops marked subscriptions as it reaches them (a mark the walk has
// already passed is dropped by the next fire of that list). A subscription
// added during a fire is called in the same walk. A callback may even clear
// all subscriptions; the callback that is running stays alive until it
// returns. Deleting the notifier itself from inside one of its callbacks is
// the caller's bug and is not supported.
//
// A subscription that is no longer counted frees its callback (and what the
// callback captured) at once, or, while a fire of this notifier runs, when the
// outermost fire ends. Registering counts the subscriptions of each key, so
// that a subscriber that removes its own key from inside its callback is
// found without a search; registering n subscribers costs time linear in n.
//
// An exception thrown by a callback propagates to the firer and leaves the
// corresponding firing flag set (see channelFiring()). Single-threaded: call
// it on the user-interface thread only.
class QALPACK_EXPORT TChangeNotifier : public QObject
{
    Q_OBJECT
public:
    // owner becomes the QObject parent and deletes the notifier with itself.
    // A new notifier is enabled and has no subscriptions.
    explicit TChangeNotifier(QObject* owner = nullptr);
    // Frees every subscription, plain and channelized, without calling anyone.
    ~TChangeNotifier() override;

    // Calls every plain callback with (data, its custom key), in registration
    // order. Does nothing while disabled. A subscription whose callback is
    // empty raises qal::Error when its turn comes.
    void FireEvent(void* data);
    // Calls the callbacks of `channel` (letter case ignored) the same way.
    // Does nothing while disabled. On a channel nobody ever registered, calls
    // nobody and leaves channelFiring() set: until a known channel is fired,
    // channelized removals only mark their subscriptions.
    void FireChannelizedEvent(const QString& channel, void* data);
    // Frees every plain subscription.
    void ClearAllCallback();
    // Frees the subscriptions of every channel; the channels stay known (an
    // emptied channel is not "unknown" to FireChannelizedEvent).
    void ClearAllChanelCallback();

    // Appends a plain subscription, then calls OnRegisterCallback with the same
    // arguments. The same custom key may be registered several times; each
    // registration is called on every fire.
    virtual void RegisterCallback(TChangeNotifyEvent callback, void* custom);
    // Removes every plain subscription whose key is `custom` (pointer
    // identity). During FireEvent they are only marked and never called again.
    // An unknown key is ignored.
    virtual void RemoveCallback(void* custom);
    // Appends a subscription to `channel` (letter case ignored; a new channel
    // is created on first use), then calls OnRegisterChannelizedCallback with
    // the same arguments.
    virtual void RegisterChannelizedCallback(
        const QString& channel, TChangeNotifyEvent callback, void* custom);
    // Removes every subscription of `channel` whose key is `custom`; while
    // channelFiring() is set they are only marked. An unknown channel or key is
    // ignored. The channel stays known even when it becomes empty.
    virtual void RemoveChannelizedCallback(const QString& channel, void* custom);

    // While disabled, both fires do nothing and leave the firing flags alone.
    [[nodiscard]] bool enabled() const;
    void setEnabled(bool on);
    // True while FireEvent walks the plain callbacks.
    [[nodiscard]] bool firing() const;
    // True while FireChannelizedEvent walks a channel, and also after a fire
    // on an unknown channel, until a known channel has been fired. The two
    // flags are independent of each other.
    [[nodiscard]] bool channelFiring() const;
    // Plain subscriptions held, marked ones included.
    [[nodiscard]] int callbackCount() const;
    // Subscriptions held by `channel`, marked ones included; -1 when nobody
    // ever registered on that channel.
    [[nodiscard]] int channelCallbackCount(const QString& channel) const;

protected:
    // Called after each plain registration; does nothing here.
    virtual void OnRegisterCallback(const TChangeNotifyEvent& callback, void* custom);
    // Called after each channelized registration; does nothing here.
    virtual void OnRegisterChannelizedCallback(
        const QString& channel, const TChangeNotifyEvent& callback, void* custom);

private:
    enum class State : unsigned char {
        Live,
        Marked, // removed while its list was being fired; never called again
        Dropped, // no longer counted: a hole until no walk of this notifier runs
    };
    struct Entry
    {
        void* custom = nullptr;
        // On the heap, so that a running callback stays put while its list grows.
        std::unique_ptr<TChangeNotifyEvent> callback;
        // The count of `custom` in its list's keys (map nodes stay put).
        std::uint32_t* keyCount = nullptr;
        State state = State::Live;
    };
    // entries[0, used) are the subscriptions, dropped ones included; behind
    // them are spare boxes, their callbacks freed, for later subscriptions.
    struct SubscriptionList
    {
        std::vector<Entry> entries;
        std::uint32_t used = 0;
        std::uint32_t dropped = 0;
        // How many subscriptions that are not dropped each key has: a
        // subscriber removing its own key from inside its callback is found
        // without a scan when the key is its alone. Keys counted 0 (idle)
        // stay until compact() prunes them.
        std::unordered_map<void*, std::uint32_t> keys;
        std::uint32_t idleKeys = 0;
    };
    struct Channel
    {
        QString name;
        SubscriptionList list;
    };

    [[nodiscard]] int channelIndex(const QString& channel) const;
    // Calls the subscriptions of `list` in order; see the class comment.
    void walk(SubscriptionList& list, void* data);
    TChangeNotifyEvent& add(SubscriptionList& list, TChangeNotifyEvent callback, void* custom);
    void removeMatching(SubscriptionList& list, void* custom, bool markOnly);
    void drop(SubscriptionList& list, Entry& entry);
    void dropAll(SubscriptionList& list);
    // Frees the dropped subscriptions of every list, unless a walk runs: a
    // running callback never loses its own function object, and a walk's
    // position never moves under it.
    void compactUnlessWalking();
    void compactAll();
    void compact(SubscriptionList& list);

    SubscriptionList plain_;
    // Channels in order of first registration; never removed, and each stays
    // at its address while callbacks register new channels.
    std::vector<std::unique_ptr<Channel>> channels_;
    // The subscription called last: where a subscriber that removes itself
    // is found without a scan. Only a hint; the entry it names is checked.
    const SubscriptionList* hintList_ = nullptr;
    std::size_t hintEntry_ = 0;
    int walking_ = 0; // fires of this notifier in progress (nested fires count)
    bool enabled_ = true;
    bool firing_ = false;
    bool channelFiring_ = false;
    bool compactDue_ = false; // some list holds dropped subscriptions
};

} // namespace qal
