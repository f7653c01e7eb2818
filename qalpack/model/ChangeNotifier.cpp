// SPDX-License-Identifier: MIT
#include "qalpack/model/ChangeNotifier.h"

#include <utility>

#include "qalpack/runtime/Exception.h"

namespace qal {

TChangeNotifier::TChangeNotifier(QObject* owner)
    : QObject(owner)
{ }

TChangeNotifier::~TChangeNotifier()
{
    ClearAllCallback();
    // Subscribers are not told; the channels' lists go with the notifier.
    std::vector<Channel> channels;
    channels.swap(channels_);
}

// Walks a subscription list by index, reading its size afresh on every pass so
// that subscriptions appended by a callback are reached in the same walk.
// A marked subscription is dropped where it stands (the index stays); any
// other is called and the walk steps past it. currentList() returns the list
// anew on every pass because a callback may grow the container that holds it.
template<typename CurrentList>
void TChangeNotifier::walk(CurrentList currentList, void* data)
{
    for (std::size_t i = 0; i < currentList().size();) {
        RecordList& records = currentList();
        if (records[i]->deleted) {
            // Destroyed only after the list is consistent again: a callback's
            // captures may reach back into this notifier when they go.
            const std::shared_ptr<Record> dropped = std::move(records[i]);
            records.erase(records.begin() + static_cast<std::ptrdiff_t>(i));
            continue;
        }
        const std::shared_ptr<Record> running = records[i];
        if (!running->callback)
            throw Error(QStringLiteral("TChangeNotifier: a subscriber registered an empty callback"));
        running->callback(data, running->custom);
        ++i;
    }
}

void TChangeNotifier::removeMatching(RecordList& records, void* custom, bool markOnly)
{
    RecordList dropped;
    for (std::size_t i = 0; i < records.size();) {
        if (records[i]->custom != custom) {
            ++i;
        } else if (markOnly) {
            records[i]->deleted = true;
            ++i;
        } else {
            dropped.push_back(std::move(records[i]));
            records.erase(records.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
}

int TChangeNotifier::channelIndex(const QString& channel) const
{
    for (std::size_t i = 0; i < channels_.size(); ++i) {
        if (channels_[i].name.compare(channel, Qt::CaseInsensitive) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

void TChangeNotifier::FireEvent(void* data)
{
    if (!enabled_)
        return;
    firing_ = true;
    walk([this]() -> RecordList& { return callbacks_; }, data);
    firing_ = false;
}

void TChangeNotifier::FireChannelizedEvent(const QString& channel, void* data)
{
    if (!enabled_)
        return;
    // Set before the look-up and deliberately left set when the channel is
    // unknown: removals then keep marking until a known channel is fired.
    channelFiring_ = true;
    const int index = channelIndex(channel);
    if (index < 0)
        return;
    walk([this, index]() -> RecordList& { return channels_[static_cast<std::size_t>(index)].records; }, data);
    channelFiring_ = false;
}

void TChangeNotifier::ClearAllCallback()
{
    RecordList dropped;
    dropped.swap(callbacks_);
}

void TChangeNotifier::ClearAllChanelCallback()
{
    for (std::size_t i = 0; i < channels_.size(); ++i) {
        RecordList dropped;
        dropped.swap(channels_[i].records);
    }
}

void TChangeNotifier::RegisterCallback(TChangeNotifyEvent callback, void* custom)
{
    callbacks_.push_back(std::make_shared<Record>(Record { callback, custom }));
    OnRegisterCallback(callback, custom);
}

void TChangeNotifier::RemoveCallback(void* custom)
{
    removeMatching(callbacks_, custom, firing_);
}

void TChangeNotifier::RegisterChannelizedCallback(
    const QString& channel, TChangeNotifyEvent callback, void* custom)
{
    auto record = std::make_shared<Record>(Record { callback, custom });
    int index = channelIndex(channel);
    if (index < 0) {
        channels_.push_back(Channel { channel, {} });
        index = static_cast<int>(channels_.size()) - 1;
    }
    channels_[static_cast<std::size_t>(index)].records.push_back(std::move(record));
    OnRegisterChannelizedCallback(channel, callback, custom);
}

void TChangeNotifier::RemoveChannelizedCallback(const QString& channel, void* custom)
{
    const int index = channelIndex(channel);
    if (index < 0)
        return;
    removeMatching(channels_[static_cast<std::size_t>(index)].records, custom, channelFiring_);
}

bool TChangeNotifier::enabled() const
{
    return enabled_;
}

void TChangeNotifier::setEnabled(bool on)
{
    enabled_ = on;
}

bool TChangeNotifier::firing() const
{
    return firing_;
}

bool TChangeNotifier::channelFiring() const
{
    return channelFiring_;
}

int TChangeNotifier::callbackCount() const
{
    return static_cast<int>(callbacks_.size());
}

int TChangeNotifier::channelCallbackCount(const QString& channel) const
{
    const int index = channelIndex(channel);
    return index < 0 ? -1 : static_cast<int>(channels_[static_cast<std::size_t>(index)].records.size());
}

void TChangeNotifier::OnRegisterCallback(const TChangeNotifyEvent& /*callback*/, void* /*custom*/) { }

void TChangeNotifier::OnRegisterChannelizedCallback(
    const QString& /*channel*/, const TChangeNotifyEvent& /*callback*/, void* /*custom*/)
{ }

} // namespace qal
