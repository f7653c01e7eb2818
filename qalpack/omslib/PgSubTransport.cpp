// SPDX-License-Identifier: MIT
#include "qalpack/omslib/PgSubTransport.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include <QCryptographicHash>
#include <QObject>
#include <QSet>
#include <QSocketNotifier>
#include <QTimer>

#include <libpq-fe.h>

#include "qalpack/omslib/omsLog.h"
#include "qalpack/runtime/Exception.h"

namespace qal {

namespace {

// Connection lines use the order database's names ("HOST", "USER NAME");
// any other line is a libpq keyword in lower case with '_' for blanks.
QByteArray keywordFor(const QString& name)
{
    const auto is
        = [&name](QStringView expected) { return name.compare(expected, Qt::CaseInsensitive) == 0; };
    if (is(u"HOST") || is(u"SERVER NAME"))
        return "host";
    if (is(u"DATABASE") || is(u"DATABASE NAME"))
        return "dbname";
    if (is(u"USER NAME"))
        return "user";
    return name.toLower().replace(u' ', u'_').toUtf8();
}

QString oneLine(const char* text)
{
    return QString::fromUtf8(text).simplified();
}

struct ResultDeleter
{
    void operator()(PGresult* result) const noexcept { PQclear(result); }
};
using Result = std::unique_ptr<PGresult, ResultDeleter>;

constexpr char kNotifyStatement[] = "qal_bus_notify";

} // namespace

struct TPgSubTransport::Private
{
    QString busName;
    TPgBusOptions options;
    std::vector<QByteArray> keywords;
    std::vector<QByteArray> values;

    Sink sink;
    PGconn* conn = nullptr;
    bool connected = false;
    bool everConnected = false;
    QString lastFailure;

    // Channels listened on, with the topics each carries (a hashed channel
    // may carry several).
    std::map<QByteArray, QSet<QString>> channels;
    QSet<QString> topics;

    // Timers and socket notifiers hang off this object, so that none outlives
    // the transport.
    QObject context;
    QTimer reconnectTimer;
    QTimer connectDeadline;
    std::unique_ptr<QSocketNotifier> notifier;
    // Notifiers replaced from inside their own signal, freed at the next
    // attempt or at Close.
    std::vector<std::unique_ptr<QSocketNotifier>> retired;
    PostgresPollingStatusType pollState = PGRES_POLLING_FAILED;
    int nextDelayMs = 0;

    [[nodiscard]] QString value(const char* keyword) const
    {
        for (std::size_t i = 0; i < keywords.size(); ++i) {
            if (keywords[i] == keyword)
                return QString::fromUtf8(values[i]);
        }
        return QStringLiteral("default");
    }

    [[nodiscard]] QString server() const
    {
        return QStringLiteral("%1:%2/%3").arg(value("host"), value("port"), value("dbname"));
    }

    [[nodiscard]] QString who() const { return QStringLiteral("Desk bus %1 (%2)").arg(busName, server()); }

    void setParam(const QByteArray& keyword, const QByteArray& text)
    {
        for (std::size_t i = 0; i < keywords.size(); ++i) {
            if (keywords[i] == keyword) {
                values[i] = text;
                return;
            }
        }
        keywords.push_back(keyword);
        values.push_back(text);
    }

    // Null-terminated keyword and value arrays for libpq; valid while the
    // lists are unchanged.
    void paramArrays(std::vector<const char*>& k, std::vector<const char*>& v) const
    {
        for (std::size_t i = 0; i < keywords.size(); ++i) {
            k.push_back(keywords[i].constData());
            v.push_back(values[i].constData());
        }
        k.push_back(nullptr);
        v.push_back(nullptr);
    }

    // The notifier may be the one whose signal is running now: it is
    // switched off and kept until nothing of it can be running.
    void retireNotifier() noexcept
    {
        if (!notifier)
            return;
        notifier->setEnabled(false);
        retired.push_back(std::move(notifier));
    }

    void dropConnection() noexcept
    {
        retireNotifier();
        connectDeadline.stop();
        if (conn != nullptr) {
            PQfinish(conn);
            conn = nullptr;
        }
        connected = false;
    }

    void announce(bool up, const QString& detail)
    {
        omsLogMsg(detail, up ? omsLogInfo : omsLogWarning);
        if (options.onConnectionChange)
            options.onConnectionChange(up, detail);
    }

    // --- connecting -------------------------------------------------------

    // Connects now, blocking up to the connect timeout: the desk's start-up.
    void connectNow()
    {
        std::vector<const char*> k;
        std::vector<const char*> v;
        paramArrays(k, v);
        conn = PQconnectdbParams(k.data(), v.data(), 0);
        if (conn == nullptr || PQstatus(conn) != CONNECTION_OK) {
            attemptFailed(conn == nullptr ? QStringLiteral("out of memory") : oneLine(PQerrorMessage(conn)));
            return;
        }
        established();
    }

    // Starts a connection without blocking; the socket notifiers carry it on.
    void startConnect()
    {
        retired.clear();
        std::vector<const char*> k;
        std::vector<const char*> v;
        paramArrays(k, v);
        conn = PQconnectStartParams(k.data(), v.data(), 0);
        if (conn == nullptr || PQstatus(conn) == CONNECTION_BAD) {
            attemptFailed(conn == nullptr ? QStringLiteral("out of memory") : oneLine(PQerrorMessage(conn)));
            return;
        }
        pollState = PGRES_POLLING_WRITING;
        connectDeadline.start(options.connectTimeoutMs);
        watchConnect();
    }

    void watchConnect()
    {
        retireNotifier();
        const auto type = pollState == PGRES_POLLING_READING ? QSocketNotifier::Read : QSocketNotifier::Write;
        notifier = std::make_unique<QSocketNotifier>(PQsocket(conn), type);
        QObject::connect(
            notifier.get(), &QSocketNotifier::activated, &context, [this] { continueConnect(); });
    }

    void continueConnect()
    {
        pollState = PQconnectPoll(conn);
        if (pollState == PGRES_POLLING_OK) {
            established();
        } else if (pollState == PGRES_POLLING_FAILED) {
            attemptFailed(oneLine(PQerrorMessage(conn)));
        } else {
            // The socket may change between steps (another address, SSL).
            watchConnect();
        }
    }

    void attemptFailed(const QString& why)
    {
        dropConnection();
        const bool news = why != lastFailure;
        lastFailure = why;
        if (!everConnected && nextDelayMs == 0)
            announce(
                false, QStringLiteral("%1: cannot connect: %2; retrying in the background").arg(who(), why));
        else if (news)
            omsLogMsg(QStringLiteral("%1: reconnection failed: %2").arg(who(), why), omsLogDebug);
        scheduleReconnect();
    }

    void scheduleReconnect()
    {
        if (!sink)
            return;
        const int delay = nextDelayMs == 0 ? options.reconnectFirstMs : nextDelayMs;
        nextDelayMs = std::min(delay * 2, std::max(options.reconnectMaxMs, options.reconnectFirstMs));
        reconnectTimer.start(delay);
    }

    // The connection is up: listen again on every channel, and watch the
    // socket for notifications.
    void established()
    {
        connectDeadline.stop();
        PQsetNoticeProcessor(
            conn, [](void*, const char*) {}, nullptr);
        Result prepared(PQprepare(conn, kNotifyStatement, "select pg_notify($1, $2)", 2, nullptr));
        if (PQresultStatus(prepared.get()) != PGRES_COMMAND_OK) {
            attemptFailed(oneLine(PQerrorMessage(conn)));
            return;
        }
        if (!channels.empty()) {
            QByteArray sql;
            for (const auto& entry : channels)
                sql += "LISTEN " + quoted(entry.first) + ';';
            Result listened(PQexec(conn, sql.constData()));
            if (PQresultStatus(listened.get()) != PGRES_COMMAND_OK) {
                attemptFailed(oneLine(PQerrorMessage(conn)));
                return;
            }
        }
        retireNotifier();
        notifier = std::make_unique<QSocketNotifier>(PQsocket(conn), QSocketNotifier::Read);
        QObject::connect(notifier.get(), &QSocketNotifier::activated, &context, [this] { readSocket(); });
        connected = true;
        nextDelayMs = 0;
        lastFailure.clear();
        const QString listening
            = topics.isEmpty() ? QString() : QStringLiteral(", listening on %1 topic(s)").arg(topics.size());
        announce(true,
            QStringLiteral("%1: %2%3")
                .arg(who(), everConnected ? QStringLiteral("reconnected") : QStringLiteral("connected"),
                    listening));
        everConnected = true;
        // Notifications may have come in with the replies above.
        drain();
    }

    void lost(const QString& why)
    {
        dropConnection();
        lastFailure = why;
        nextDelayMs = 0;
        announce(false, QStringLiteral("%1: connection lost: %2; reconnecting").arg(who(), why));
        scheduleReconnect();
    }

    // --- traffic ------------------------------------------------------------

    QByteArray quoted(const QByteArray& channel) const
    {
        char* escaped = PQescapeIdentifier(conn, channel.constData(), std::size_t(channel.size()));
        if (escaped == nullptr)
            throw Error(QStringLiteral("%1: cannot quote channel \"%2\": %3")
                            .arg(who(), QString::fromUtf8(channel), oneLine(PQerrorMessage(conn))));
        QByteArray text(escaped);
        PQfreemem(escaped);
        return text;
    }

    // Runs `sql` while connected. Returns false when the connection was lost
    // on the way (the transport then reconnects); throws qal::Error when the
    // server refused the statement.
    bool run(const QByteArray& sql)
    {
        Result result(PQexec(conn, sql.constData()));
        if (PQresultStatus(result.get()) == PGRES_COMMAND_OK) {
            drain();
            return true;
        }
        const QString why = oneLine(PQerrorMessage(conn));
        if (PQstatus(conn) == CONNECTION_BAD) {
            lost(why);
            return false;
        }
        throw Error(QStringLiteral("%1: %2 refused: %3").arg(who(), QString::fromUtf8(sql), why));
    }

    void readSocket()
    {
        if (PQconsumeInput(conn) == 0 || PQstatus(conn) == CONNECTION_BAD) {
            // What arrived before the break is still handed on.
            drain();
            lost(oneLine(PQerrorMessage(conn)));
            return;
        }
        drain();
    }

    // Hands on every notification libpq holds.
    void drain()
    {
        if (conn == nullptr)
            return;
        while (PGnotify* notify = PQnotifies(conn)) {
            const QString payload = QString::fromUtf8(notify->extra);
            PQfreemem(notify);
            if (!sink)
                continue;
            try {
                const TFieldMessage message = TFieldMessage::Parse(payload);
                // A channel shared by several topics carries them all.
                if (topics.contains(message.Topic()))
                    sink(message);
            } catch (const Error& error) {
                omsLogMsg(QStringLiteral("%1: ignored a notification that is not a record: %2")
                              .arg(who(), error.message()),
                    omsLogWarning);
            }
        }
    }
};

TPgSubTransport::TPgSubTransport(const QStringList& params, const QString& busName, TPgBusOptions options)
    : d_(std::make_unique<Private>())
{
    d_->busName = busName;
    d_->options = std::move(options);
    d_->setParam("connect_timeout", "10");
    d_->setParam("application_name", "qalpack bus");
    for (const QString& line : params) {
        const qsizetype equals = line.indexOf(u'=');
        const QString name = line.left(equals).trimmed();
        if (equals < 0 || name.isEmpty())
            throw Error(
                QStringLiteral("Desk bus %1: connection line \"%2\" is not name=value").arg(busName, line));
        d_->setParam(keywordFor(name), line.mid(equals + 1).trimmed().toUtf8());
    }
    d_->setParam("client_encoding", "UTF8");

    d_->reconnectTimer.setSingleShot(true);
    QObject::connect(
        &d_->reconnectTimer, &QTimer::timeout, &d_->context, [d = d_.get()] { d->startConnect(); });
    d_->connectDeadline.setSingleShot(true);
    QObject::connect(&d_->connectDeadline, &QTimer::timeout, &d_->context, [d = d_.get()] {
        d->attemptFailed(QStringLiteral("no answer within %1 ms").arg(d->options.connectTimeoutMs));
    });
}

TPgSubTransport::~TPgSubTransport()
{
    Close();
}

void TPgSubTransport::Open(Sink sink)
{
    d_->sink = std::move(sink);
    d_->connectNow();
}

void TPgSubTransport::Close() noexcept
{
    d_->sink = nullptr;
    d_->reconnectTimer.stop();
    d_->dropConnection();
    d_->retired.clear();
}

void TPgSubTransport::Subscribe(const QString& topic)
{
    if (d_->topics.contains(topic))
        return;
    const QByteArray channel = ChannelName(topic);
    auto& carried = d_->channels[channel];
    const bool fresh = carried.isEmpty();
    carried.insert(topic);
    d_->topics.insert(topic);
    if (fresh && d_->connected) {
        try {
            d_->run("LISTEN " + d_->quoted(channel));
        } catch (...) {
            carried.remove(topic);
            if (carried.isEmpty())
                d_->channels.erase(channel);
            d_->topics.remove(topic);
            throw;
        }
    }
}

void TPgSubTransport::Unsubscribe(const QString& topic)
{
    if (!d_->topics.remove(topic))
        return;
    const QByteArray channel = ChannelName(topic);
    const auto found = d_->channels.find(channel);
    if (found == d_->channels.end())
        return;
    found->second.remove(topic);
    if (!found->second.isEmpty())
        return;
    d_->channels.erase(found);
    if (!d_->connected)
        return;
    try {
        d_->run("UNLISTEN " + d_->quoted(channel));
    } catch (const Error& error) {
        // Stray records of the channel are filtered out by topic anyway.
        omsLogMsg(error.message(), omsLogWarning);
    }
}

void TPgSubTransport::Publish(const TFieldMessage& message)
{
    const QByteArray payload = message.ToString().toUtf8();
    if (payload.size() > kMaxRecordBytes)
        throw Error(QStringLiteral("%1: the record for %2 is %3 bytes; a notification carries at most %4, "
                                   "so it is not sent")
                        .arg(d_->who(), message.Topic())
                        .arg(payload.size())
                        .arg(kMaxRecordBytes));
    if (!d_->connected)
        throw Error(QStringLiteral("%1: not connected (%2); the record for %3 is not sent")
                        .arg(d_->who(), d_->lastFailure, message.Topic()));
    const QByteArray channel = ChannelName(message.Topic());
    const char* values[2] = { channel.constData(), payload.constData() };
    Result result(PQexecPrepared(d_->conn, kNotifyStatement, 2, values, nullptr, nullptr, 0));
    if (PQresultStatus(result.get()) == PGRES_TUPLES_OK) {
        d_->drain();
        return;
    }
    const QString why = oneLine(PQerrorMessage(d_->conn));
    if (PQstatus(d_->conn) == CONNECTION_BAD) {
        d_->lost(why);
        throw Error(QStringLiteral("%1: connection lost while sending the record for %2, which may not have "
                                   "gone out: %3")
                        .arg(d_->who(), message.Topic(), why));
    }
    throw Error(
        QStringLiteral("%1: the server refused the record for %2: %3").arg(d_->who(), message.Topic(), why));
}

bool TPgSubTransport::IsConnected() const noexcept
{
    return d_->connected;
}

QString TPgSubTransport::ServerText() const
{
    return d_->server();
}

QByteArray TPgSubTransport::ChannelName(const QString& topic)
{
    QByteArray bytes = topic.toUtf8();
    if (bytes.size() <= kMaxChannelBytes && !bytes.contains('\0'))
        return bytes;
    const QByteArray digest = QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex().left(16);
    // Room for the prefix: the limit less "#" and the digest.
    qsizetype cut = kMaxChannelBytes - 1 - digest.size();
    // Never split a character: step back over UTF-8 continuation bytes.
    while (cut > 0 && (static_cast<unsigned char>(bytes[cut]) & 0xC0) == 0x80)
        --cut;
    QByteArray prefix = bytes.left(cut);
    prefix.replace('\0', '_');
    return prefix + '#' + digest;
}

} // namespace qal
