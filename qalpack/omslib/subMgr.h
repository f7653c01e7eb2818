// SPDX-License-Identifier: MIT
// TsubMgr: the desk's publish/subscribe manager. Subscribers name a topic
// ("USER_D001") and are called back with every tagged record published on it;
// what carries the records (this process, or a broker linking several
// machines) is a transport behind the manager, invisible to subscribers.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include <QByteArrayView>
#include <QObject>
#include <QString>

#include "qalpack/omslib/AttrObject.h"
#include "qalpack/omslib/FieldMessage.h"
#include "qalpack/qalpack_export.h"

namespace qal {

class TsubMgr;
class TSubscription;

// Called with the subscription and the record, on the manager's thread.
using TSubUpdateEvent = std::function<void(TSubscription& item, const TFieldMessage& message)>;

// One subscriber's interest in one topic. The manager owns it, from
// TsubMgr::Subscribe until TsubMgr::Unsubscribe or the manager's end; its
// attributes are the subscriber's own (a key to tell its items apart).
class QALPACK_EXPORT TSubscription : public TAttrObject
{
public:
    ~TSubscription() override;
    TSubscription(const TSubscription&) = delete;
    TSubscription& operator=(const TSubscription&) = delete;

    [[nodiscard]] const QString& Topic() const noexcept { return topic_; }
    [[nodiscard]] TsubMgr* Manager() const noexcept { return manager_; }

private:
    friend class TsubMgr;
    TSubscription(TsubMgr* manager, QString topic, TSubUpdateEvent onUpdate, std::uint64_t id);

    TsubMgr* manager_;
    QString topic_;
    TSubUpdateEvent onUpdate_;
    std::uint64_t id_;
    bool removed_ = false; // unsubscribed while records were being handed out
};

// What moves records between managers. The in-process transport
// (MakeLocalSubTransport) links every manager of this process; a broker
// transport links managers on several machines. A manager owns its
// transport and is its only user.
class QALPACK_EXPORT TSubTransport
{
public:
    // Takes each record that arrives for a subscribed topic. It may be
    // called from any thread (a network reader's, say) and returns at once:
    // the manager queues the record for its own thread.
    using Sink = std::function<void(const TFieldMessage& message)>;

    virtual ~TSubTransport();

    // Starts handing records to `sink`. Called once, before anything else.
    virtual void Open(Sink sink) = 0;
    // Stops for good: once it returns, `sink` is never called again.
    virtual void Close() noexcept = 0;
    // The manager asks for a topic when its first subscriber of that topic
    // comes and drops it when its last one goes; records of topics not
    // asked for need not arrive.
    virtual void Subscribe(const QString& topic) = 0;
    virtual void Unsubscribe(const QString& topic) = 0;
    // Sends `message` to every manager that asked for its topic, this one
    // included. Throws qal::Error when it cannot be sent.
    virtual void Publish(const TFieldMessage& message) = 0;
};

// A transport on the process's own bus: what one manager publishes reaches
// every manager of this process (the publisher too) that subscribed to the
// topic. Single-threaded, like the desk.
[[nodiscard]] QALPACK_EXPORT std::unique_ptr<TSubTransport> MakeLocalSubTransport();

// Records published on a topic reach that topic's subscribers in the order
// they subscribed, always later, through the Qt event loop of the thread the
// manager lives in (the user-interface thread), never inside Publish. A
// subscriber may subscribe, unsubscribe (itself included) or delete the
// manager from inside its callback; an item unsubscribed during a delivery
// is not called again. An exception thrown by a callback is logged and the
// other subscribers are still called. Topics are compared exactly.
class QALPACK_EXPORT TsubMgr : public QObject
{
    Q_OBJECT

public:
    // A manager named `name` on the in-process bus. An empty name gives one
    // unique to the manager ("subMgr.<process id>.<n>").
    explicit TsubMgr(const QString& name = QString(), QObject* parent = nullptr);
    // A manager on `transport`, which it owns and opens now. Throws
    // qal::Error when the transport is null.
    TsubMgr(const QString& name, std::unique_ptr<TSubTransport> transport, QObject* parent = nullptr);
    // Closes the transport and frees every subscription without calling
    // anyone; records still queued for it are dropped.
    ~TsubMgr() override;

    // The manager created last among those still alive, or nullptr when
    // there is none. Components that hear live data take it at their
    // construction.
    [[nodiscard]] static TsubMgr* last();

    // The manager's name, which it announces itself by.
    [[nodiscard]] const QString& Name() const noexcept { return name_; }

    // Calls `onUpdate` with every record published on `topic` from now on.
    // The returned item is owned by the manager (see TSubscription). Throws
    // qal::Error for an empty topic or callback.
    TSubscription* Subscribe(const QString& topic, TSubUpdateEvent onUpdate);
    // Ends `item` and frees it (at once, or when the delivery running now
    // ends). Nothing happens for nullptr or an item this manager does not
    // hold.
    void Unsubscribe(TSubscription* item);
    // Subscriptions held, those on the way out excluded.
    [[nodiscard]] int SubscriptionCount() const;

    // Publishes `message` on its topic. Throws qal::Error for a record
    // without a topic, or when the transport cannot send it.
    void Publish(const TFieldMessage& message);
    // Publishes the record that the 8-bit `wireText` spells in code page
    // 950 ("image|USER_D001|13|D001|"). Throws qal::Error, publishing
    // nothing, when the text is not a record.
    void PublishText(QByteArrayView wireText);

private:
    void open();
    void receive(const TFieldMessage& message);
    void deliver(const TFieldMessage& message);
    void dropTopic(const QString& topic);
    void purgeRemoved();

    QString name_;
    std::unique_ptr<TSubTransport> transport_;
    std::vector<std::unique_ptr<TSubscription>> items_;
    std::uint64_t nextId_ = 1;
    int delivering_ = 0;
};

} // namespace qal
