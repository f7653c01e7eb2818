// SPDX-License-Identifier: MIT
#include "qalpack/omslib/subMgr.h"

#include <algorithm>
#include <exception>
#include <utility>

#include <QCoreApplication>
#include <QMetaObject>
#include <QPointer>
#include <QSet>

#include "qalpack/omslib/omsLog.h"
#include "qalpack/runtime/Exception.h"

namespace qal {

namespace {

class LocalTransport;

// The process's own bus: the transports of this process's managers. Used on
// the user-interface thread only.
class LocalBus
{
public:
    static LocalBus& instance()
    {
        static LocalBus bus;
        return bus;
    }

    void attach(LocalTransport* transport) { transports_.push_back(transport); }
    void detach(LocalTransport* transport) { std::erase(transports_, transport); }
    void publish(const TFieldMessage& message) const;

private:
    std::vector<LocalTransport*> transports_;
};

class LocalTransport final : public TSubTransport
{
public:
    ~LocalTransport() override { Close(); }

    void Open(Sink sink) override
    {
        sink_ = std::move(sink);
        LocalBus::instance().attach(this);
    }

    void Close() noexcept override
    {
        if (!sink_)
            return;
        LocalBus::instance().detach(this);
        sink_ = nullptr;
    }

    void Subscribe(const QString& topic) override { topics_.insert(topic); }
    void Unsubscribe(const QString& topic) override { topics_.remove(topic); }
    void Publish(const TFieldMessage& message) override { LocalBus::instance().publish(message); }

    // Hands `message` on when its topic was asked for. The sink only queues
    // the record, so nothing runs inside the publisher's call.
    void offer(const TFieldMessage& message) const
    {
        if (sink_ && topics_.contains(message.Topic()))
            sink_(message);
    }

private:
    Sink sink_;
    QSet<QString> topics_;
};

void LocalBus::publish(const TFieldMessage& message) const
{
    for (const LocalTransport* transport : transports_)
        transport->offer(message);
}

// The live managers in order of creation, for TsubMgr::last().
std::vector<TsubMgr*>& managers()
{
    static std::vector<TsubMgr*> list;
    return list;
}

QString uniqueName()
{
    static int counter = 0;
    return QStringLiteral("subMgr.%1.%2").arg(QCoreApplication::applicationPid()).arg(++counter);
}

} // namespace

TSubscription::TSubscription(TsubMgr* manager, QString topic, TSubUpdateEvent onUpdate, std::uint64_t id)
    : manager_(manager)
    , topic_(std::move(topic))
    , onUpdate_(std::move(onUpdate))
    , id_(id)
{ }

TSubscription::~TSubscription() = default;

TSubTransport::~TSubTransport() = default;

std::unique_ptr<TSubTransport> MakeLocalSubTransport()
{
    return std::make_unique<LocalTransport>();
}

TsubMgr::TsubMgr(const QString& name, QObject* parent)
    : TsubMgr(name, MakeLocalSubTransport(), parent)
{ }

TsubMgr::TsubMgr(const QString& name, std::unique_ptr<TSubTransport> transport, QObject* parent)
    : QObject(parent)
    , name_(name.isEmpty() ? uniqueName() : name)
    , transport_(std::move(transport))
{
    if (!transport_)
        throw Error(QStringLiteral("TsubMgr \"%1\": no transport").arg(name_));
    setObjectName(name_);
    open();
    managers().push_back(this);
}

TsubMgr::~TsubMgr()
{
    std::erase(managers(), this);
    transport_->Close();
}

TsubMgr* TsubMgr::last()
{
    const auto& list = managers();
    return list.empty() ? nullptr : list.back();
}

void TsubMgr::open()
{
    // The transport may call from any thread; the record is copied into an
    // event for this manager's thread, and dropped by Qt if the manager is
    // gone by then.
    transport_->Open([this](const TFieldMessage& message) {
        QMetaObject::invokeMethod(
            this, [this, message] { deliver(message); }, Qt::QueuedConnection);
    });
}

TSubscription* TsubMgr::Subscribe(const QString& topic, TSubUpdateEvent onUpdate)
{
    if (topic.isEmpty())
        throw Error(QStringLiteral("TsubMgr \"%1\": cannot subscribe without a topic").arg(name_));
    if (!onUpdate)
        throw Error(QStringLiteral("TsubMgr \"%1\": no update callback for topic \"%2\"").arg(name_, topic));
    const bool known = std::any_of(items_.begin(), items_.end(),
        [&topic](const auto& item) { return !item->removed_ && item->topic_ == topic; });
    if (!known)
        transport_->Subscribe(topic);
    items_.push_back(
        std::unique_ptr<TSubscription>(new TSubscription(this, topic, std::move(onUpdate), nextId_++)));
    return items_.back().get();
}

void TsubMgr::Unsubscribe(TSubscription* item)
{
    const auto found = std::find_if(items_.begin(), items_.end(),
        [item](const auto& held) { return held.get() == item && !held->removed_; });
    if (found == items_.end())
        return;
    (*found)->removed_ = true;
    dropTopic((*found)->topic_);
    if (delivering_ == 0)
        purgeRemoved();
}

int TsubMgr::SubscriptionCount() const
{
    return static_cast<int>(
        std::count_if(items_.begin(), items_.end(), [](const auto& item) { return !item->removed_; }));
}

void TsubMgr::Publish(const TFieldMessage& message)
{
    if (message.Topic().isEmpty())
        throw Error(QStringLiteral("TsubMgr \"%1\": cannot publish a record without a topic (%2)")
                        .arg(name_, message.ToString()));
    transport_->Publish(message);
}

void TsubMgr::PublishText(QByteArrayView wireText)
{
    Publish(TFieldMessage::FromWire(wireText));
}

void TsubMgr::deliver(const TFieldMessage& message)
{
    // Items are called by id, looked up afresh before each call, so that
    // callbacks may change the subscriptions as they please.
    std::vector<std::uint64_t> ids;
    for (const auto& item : items_) {
        if (!item->removed_ && item->topic_ == message.Topic())
            ids.push_back(item->id_);
    }
    const QPointer<TsubMgr> alive(this);
    ++delivering_;
    for (const std::uint64_t id : ids) {
        const auto found = std::find_if(items_.begin(), items_.end(),
            [id](const auto& item) { return item->id_ == id && !item->removed_; });
        if (found == items_.end())
            continue;
        // A copy, so that the callback survives the end of its own item.
        const TSubUpdateEvent callback = (*found)->onUpdate_;
        try {
            callback(**found, message);
        } catch (const std::exception& error) {
            omsLogMsg(QStringLiteral("TsubMgr \"%1\": a subscriber of %2 failed: %3")
                          .arg(name_, message.Topic(), QString::fromUtf8(error.what())),
                omsLogError);
        } catch (...) {
            omsLogMsg(QStringLiteral("TsubMgr \"%1\": a subscriber of %2 failed").arg(name_, message.Topic()),
                omsLogError);
        }
        if (!alive)
            return;
    }
    if (--delivering_ == 0)
        purgeRemoved();
}

void TsubMgr::dropTopic(const QString& topic)
{
    const bool stillWanted = std::any_of(items_.begin(), items_.end(),
        [&topic](const auto& item) { return !item->removed_ && item->topic_ == topic; });
    if (!stillWanted)
        transport_->Unsubscribe(topic);
}

void TsubMgr::purgeRemoved()
{
    std::erase_if(items_, [](const auto& item) { return item->removed_; });
}

} // namespace qal
