// SPDX-License-Identifier: MIT
// TChangeNotifier: the base of every watched record and model (orders, trades,
// account lists). Blotters and screens subscribe with a key of their own and
// are called back when the record changes, either on every change (plain
// callbacks) or on one named channel only (channelized callbacks).
#pragma once

#include <functional>
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
    struct Record
    {
        TChangeNotifyEvent callback;
        void* custom = nullptr;
        bool deleted = false; // removed while its list was being fired
    };
    using RecordList = std::vector<std::unique_ptr<Record>>;
    struct Channel
    {
        QString name;
        RecordList records;
    };

    [[nodiscard]] int channelIndex(const QString& channel) const;
    // Calls the subscriptions of the list that `currentList()` returns (anew
    // on every step: a callback may grow the container that holds it).
    template<typename CurrentList>
    void walk(CurrentList currentList, void* data);
    // Frees records, or, while a walk of this notifier is running, keeps
    // them until it ends, so that a running callback never loses its own
    // function object.
    void retire(RecordList& records, std::size_t first, std::size_t last);
    void removeMatching(RecordList& records, void* custom, bool markOnly);

    RecordList callbacks_;
    bool enabled_ = true;
    // Channels in order of first registration; never removed, so an index
    // into this list stays valid while callbacks register new channels.
    std::vector<Channel> channels_;
    bool firing_ = false;
    bool channelFiring_ = false;
    int walking_ = 0; // fires of this notifier in progress (nested fires count)
    RecordList retired_;
};

} // namespace qal
