// SPDX-License-Identifier: MIT
#include "qalpack/model/ChangeNotifier.h"

#include <utility>

#include "qalpack/runtime/Exception.h"

namespace qal {

TChangeNotifier::TChangeNotifier(QObject* owner)
    : QObject(owner)
{ }

TChangeNotifier::~TChangeNotifier() = default; // subscribers are not told

void TChangeNotifier::retire(RecordList& records, std::size_t first, std::size_t last)
{
    const auto begin = records.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end = records.begin() + static_cast<std::ptrdiff_t>(last);
    // Out of the list before anything is freed: a callback's captures may
    // reach back into this notifier when they go.
    RecordList taken(std::make_move_iterator(begin), std::make_move_iterator(end));
    records.erase(begin, end);
    if (walking_ > 0)
        retired_.insert(
            retired_.end(), std::make_move_iterator(taken.begin()), std::make_move_iterator(taken.end()));
}

// Walks a subscription list by index, reading its size afresh on every pass
// so that subscriptions appended by a callback are reached in the same walk.
// A marked subscription is dropped where it stands (the index stays); any
// other is called and the walk steps past it.
template<typename CurrentList>
void TChangeNotifier::walk(CurrentList currentList, void* data)
{
    struct Depth
    {
        TChangeNotifier& notifier;
        explicit Depth(TChangeNotifier& n)
            : notifier(n)
        {
            ++notifier.walking_;
        }
        ~Depth()
        {
            if (--notifier.walking_ == 0) {
                RecordList freed;
                freed.swap(notifier.retired_);
            }
        }
    } depth(*this);

    for (std::size_t i = 0; i < currentList().size();) {
        // The record itself stays put while its list grows, and is only
        // retired, not freed, while this walk runs.
        Record* const record = currentList()[i].get();
        if (record->deleted) {
            retire(currentList(), i, i + 1);
            continue;
        }
        if (!record->callback)
            throw Error(QStringLiteral("TChangeNotifier: a subscriber registered an empty callback"));
        record->callback(data, record->custom);
        ++i;
    }
}

void TChangeNotifier::removeMatching(RecordList& records, void* custom, bool markOnly)
{
    for (std::size_t i = 0; i < records.size();) {
        if (records[i]->custom != custom) {
            ++i;
        } else if (markOnly) {
            records[i]->deleted = true;
            ++i;
        } else {
            retire(records, i, i + 1);
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
    retire(callbacks_, 0, callbacks_.size());
}

void TChangeNotifier::ClearAllChanelCallback()
{
    for (Channel& channel : channels_)
        retire(channel.records, 0, channel.records.size());
}

void TChangeNotifier::RegisterCallback(TChangeNotifyEvent callback, void* custom)
{
    callbacks_.push_back(std::make_unique<Record>(Record { std::move(callback), custom }));
    OnRegisterCallback(callbacks_.back()->callback, custom);
}

void TChangeNotifier::RemoveCallback(void* custom)
{
    removeMatching(callbacks_, custom, firing_);
}

void TChangeNotifier::RegisterChannelizedCallback(
    const QString& channel, TChangeNotifyEvent callback, void* custom)
{
    int index = channelIndex(channel);
    if (index < 0) {
        channels_.push_back(Channel { channel, {} });
        index = static_cast<int>(channels_.size()) - 1;
    }
    RecordList& records = channels_[static_cast<std::size_t>(index)].records;
    records.push_back(std::make_unique<Record>(Record { std::move(callback), custom }));
    OnRegisterChannelizedCallback(channel, records.back()->callback, custom);
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
