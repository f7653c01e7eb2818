// SPDX-License-Identifier: MIT
// The desk-wide bus: a TsubMgr transport that carries records between the
// desks of several machines as PostgreSQL notifications (LISTEN/NOTIFY) on
// the desk's server, over a connection of its own.
#pragma once

#include <functional>
#include <memory>

#include <QByteArray>
#include <QString>
#include <QStringList>

#include "qalpack/omslib/subMgr.h"
#include "qalpack/qalpack_export.h"

namespace qal {

struct TPgBusOptions
{
    // The first wait before reconnecting after the connection dropped, then
    // doubled after each failed attempt up to reconnectMaxMs.
    int reconnectFirstMs = 250;
    int reconnectMaxMs = 8000;
    // A reconnection attempt that has not finished in this time is given up
    // and tried again after the next wait.
    int connectTimeoutMs = 10000;
    // Called on the transport's thread when the connection comes up (true)
    // or is lost (false), with a line naming the server and the reason. The
    // same events are logged with omsLogMsg whether or not this is set.
    std::function<void(bool connected, const QString& detail)> onConnectionChange;
};

// Records travel as notifications: a topic becomes a channel name
// (ChannelName) and a record its text form in UTF-8 as the payload, which
// also carries the real topic, so that topics sharing a channel are told
// apart on arrival. A record reaches the managers that listen on its topic,
// the publishing one included, in the order the server committed them.
//
// Connection: the parameter lines of a POSTGRES alias ("HOST", "PORT",
// "DATABASE", "USER NAME", "PASSWORD", or any libpq keyword, as the order
// database reads them). Open connects at once, blocking up to the connect
// timeout (10 s unless the lines say otherwise); when that fails, or later
// when the connection drops, the failure is logged and the transport
// reconnects in the background (a timer and socket notifiers on the event
// loop, never a blocking wait; only a host name's look-up goes through the
// system's resolver, which may block: give HOSTADDR to spare it), listens
// again on every topic and logs that it is back. Records published while the connection is down are refused
// (Publish throws); records sent by others meanwhile are not received. No
// record is delivered twice.
//
// Single-threaded: call it, and run its event loop, on one thread.
class QALPACK_EXPORT TPgSubTransport final : public TSubTransport
{
public:
    // The largest payload a notification carries, in bytes (the server's
    // limit is "shorter than 8000 bytes").
    static constexpr int kMaxRecordBytes = 7999;
    // The longest channel name, in bytes (the server's identifier length).
    static constexpr int kMaxChannelBytes = 63;

    // `params`: the alias's parameter lines; `busName` names the bus in log
    // lines and errors (the alias name, say).
    TPgSubTransport(const QStringList& params, const QString& busName, TPgBusOptions options = {});
    ~TPgSubTransport() override;
    TPgSubTransport(const TPgSubTransport&) = delete;
    TPgSubTransport& operator=(const TPgSubTransport&) = delete;

    void Open(Sink sink) override;
    void Close() noexcept override;
    // Listens on the topic's channel, at once when connected, else when the
    // connection is back. Throws qal::Error when the server refuses.
    void Subscribe(const QString& topic) override;
    void Unsubscribe(const QString& topic) override;
    // Sends the record and returns once the server has taken it. Throws
    // qal::Error, sending nothing, when the record's text is longer than
    // kMaxRecordBytes in UTF-8 or the connection is down; when the
    // connection drops during the call the record may or may not have gone
    // out, and the error says so.
    void Publish(const TFieldMessage& message) override;

    [[nodiscard]] bool IsConnected() const noexcept;
    // "host:port/database" as the connection lines give them.
    [[nodiscard]] QString ServerText() const;

    // The channel that carries `topic`: its UTF-8 bytes when they fit in
    // kMaxChannelBytes, otherwise a prefix cut at a character boundary, "#"
    // and 16 hexadecimal digits of the topic's SHA-1, so that long topics
    // sharing a prefix still get channels of their own. Case is kept: the
    // channel is always sent as a quoted identifier.
    [[nodiscard]] static QByteArray ChannelName(const QString& topic);

private:
    struct Private;
    std::unique_ptr<Private> d_;
};

} // namespace qal
