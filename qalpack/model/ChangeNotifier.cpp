// SPDX-License-Identifier: MIT
#include "qalpack/model/ChangeNotifier.h"

#include <algorithm>
#include <utility>

#include "qalpack/runtime/Exception.h"

namespace qal {

TChangeNotifier::TChangeNotifier(QObject* owner)
    : QObject(owner)
{ }

TChangeNotifier::~TChangeNotifier() = default; // subscribers are not told

// A key whose count falls to 0 keeps its slot in the map: a screen that
// closes and opens again on the same record costs no allocation (see
// compact() for when such idle keys go).
inline void TChangeNotifier::drop(SubscriptionList& list, Entry& entry)
{
    if (--*entry.keyCount == 0)
        ++list.idleKeys;
    entry.state = State::Dropped;
    ++list.dropped;
    compactDue_ = true;
}

void TChangeNotifier::dropAll(SubscriptionList& list)
{
    for (std::size_t i = 0; i < list.used; ++i) {
        if (list.entries[i].state != State::Dropped)
            drop(list, list.entries[i]);
    }
}

// Keeps the live and marked subscriptions in order at the front; the dropped
// ones become spare boxes behind them. Their callbacks go while they are still
// holes in the list: a capture that reaches back into this notifier finds
// every list consistent, and what it subscribes lands behind them.
inline void TChangeNotifier::compact(SubscriptionList& list)
{
    std::uint32_t kept = 0;
    for (std::uint32_t i = 0; i < list.used && kept < list.used - list.dropped; ++i) {
        if (list.entries[i].state != State::Dropped) {
            if (i != kept)
                std::swap(list.entries[kept], list.entries[i]);
            ++kept;
        }
    }
    const std::uint32_t end = list.used;
    for (std::uint32_t i = kept; i < end; ++i)
        *list.entries[i].callback = nullptr;
    std::rotate(list.entries.begin() + kept, list.entries.begin() + end, list.entries.begin() + list.used);
    list.used -= end - kept;
    list.dropped -= end - kept;
    // Idle keys are pruned once they outnumber twice the most subscriptions
    // the list ever held: screens that come back find theirs, while a stream
    // of ever new keys cannot grow the map without bound.
    if (list.idleKeys > 2 * list.entries.size()) {
        std::erase_if(list.keys, [](const auto& key) { return key.second == 0; });
        list.idleKeys = 0;
    }
}

void TChangeNotifier::compactAll()
{
    ++walking_; // what a freed capture drops meanwhile waits for the next round
    while (compactDue_) {
        compactDue_ = false;
        if (plain_.dropped > 0)
            compact(plain_);
        for (std::size_t c = 0; c < channels_.size(); ++c) {
            if (channels_[c]->list.dropped > 0)
                compact(channels_[c]->list);
        }
    }
    --walking_;
}

inline void TChangeNotifier::compactUnlessWalking()
{
    if (walking_ == 0 && compactDue_)
        compactAll();
}

// Walks the list by index, reading its size afresh on every pass so that
// subscriptions appended by a callback are reached in the same walk. A marked
// subscription becomes a hole when the walk reaches it; holes stay in place
// until the outermost walk ends, so no walk's position ever shifts.
inline void TChangeNotifier::walk(SubscriptionList& list, void* data)
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
            --notifier.walking_;
            notifier.compactUnlessWalking();
        }
    } depth(*this);

    for (std::size_t i = 0; i < list.used; ++i) {
        Entry& entry = list.entries[i];
        if (entry.state != State::Live) {
            if (entry.state == State::Marked)
                drop(list, entry);
            continue;
        }
        TChangeNotifyEvent& callback = *entry.callback;
        if (!callback)
            throw Error(QStringLiteral("TChangeNotifier: a subscriber registered an empty callback"));
        hintList_ = &list;
        hintEntry_ = i;
        callback(data, entry.custom);
    }
}

inline TChangeNotifyEvent& TChangeNotifier::add(
    SubscriptionList& list, TChangeNotifyEvent callback, void* custom)
{
    const auto [key, added] = list.keys.try_emplace(custom, 0);
    if (!added && key->second == 0)
        --list.idleKeys; // an idle key comes back
    ++key->second;
    if (list.used == list.entries.size())
        list.entries.push_back(Entry { nullptr, std::make_unique<TChangeNotifyEvent>() });
    Entry& entry = list.entries[list.used++];
    entry = Entry { custom, std::move(entry.callback), &key->second, State::Live };
    *entry.callback = std::move(callback);
    return *entry.callback;
}

inline void TChangeNotifier::removeMatching(SubscriptionList& list, void* custom, bool markOnly)
{
    const auto remove = [&](Entry& entry) {
        if (entry.custom != custom || entry.state == State::Dropped)
            return;
        if (markOnly)
            entry.state = State::Marked;
        else
            drop(list, entry);
    };
    // A subscriber removing itself from inside its callback, under a key of
    // its own: nothing else in the list can match, so nothing is looked up.
    Entry* const hinted = hintList_ == &list && hintEntry_ < list.used ? &list.entries[hintEntry_] : nullptr;
    if (hinted && hinted->custom == custom && hinted->state != State::Dropped && *hinted->keyCount == 1) {
        remove(*hinted);
    } else {
        const auto key = list.keys.find(custom);
        if (key == list.keys.end() || key->second == 0)
            return; // nothing of this key left to remove
        std::for_each(list.entries.begin(), list.entries.begin() + list.used, remove);
    }
    compactUnlessWalking();
}

int TChangeNotifier::channelIndex(const QString& channel) const
{
    for (std::size_t i = 0; i < channels_.size(); ++i) {
        if (channels_[i]->name.compare(channel, Qt::CaseInsensitive) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

void TChangeNotifier::FireEvent(void* data)
{
    if (!enabled_)
        return;
    firing_ = true;
    walk(plain_, data);
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
    walk(channels_[static_cast<std::size_t>(index)]->list, data);
    channelFiring_ = false;
}

void TChangeNotifier::ClearAllCallback()
{
    dropAll(plain_);
    compactUnlessWalking();
}

void TChangeNotifier::ClearAllChanelCallback()
{
    for (const auto& channel : channels_)
        dropAll(channel->list);
    compactUnlessWalking();
}

void TChangeNotifier::RegisterCallback(TChangeNotifyEvent callback, void* custom)
{
    OnRegisterCallback(add(plain_, std::move(callback), custom), custom);
}

void TChangeNotifier::RemoveCallback(void* custom)
{
    removeMatching(plain_, custom, firing_);
}

void TChangeNotifier::RegisterChannelizedCallback(
    const QString& channel, TChangeNotifyEvent callback, void* custom)
{
    int index = channelIndex(channel);
    if (index < 0) {
        channels_.push_back(std::make_unique<Channel>(Channel { channel, {} }));
        index = static_cast<int>(channels_.size()) - 1;
    }
    SubscriptionList& list = channels_[static_cast<std::size_t>(index)]->list;
    OnRegisterChannelizedCallback(channel, add(list, std::move(callback), custom), custom);
}

void TChangeNotifier::RemoveChannelizedCallback(const QString& channel, void* custom)
{
    const int index = channelIndex(channel);
    if (index >= 0)
        removeMatching(channels_[static_cast<std::size_t>(index)]->list, custom, channelFiring_);
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
    return static_cast<int>(plain_.used - plain_.dropped);
}

int TChangeNotifier::channelCallbackCount(const QString& channel) const
{
    const int index = channelIndex(channel);
    if (index < 0)
        return -1;
    const SubscriptionList& list = channels_[static_cast<std::size_t>(index)]->list;
    return static_cast<int>(list.used - list.dropped);
}

void TChangeNotifier::OnRegisterCallback(const TChangeNotifyEvent& /*callback*/, void* /*custom*/) { }

void TChangeNotifier::OnRegisterChannelizedCallback(
    const QString& /*channel*/, const TChangeNotifyEvent& /*callback*/, void* /*custom*/)
{ }

} // namespace qal
