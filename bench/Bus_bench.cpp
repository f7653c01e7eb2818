// SPDX-License-Identifier: MIT
// The desk-wide bus between two processes on loopback, on the PostgreSQL
// server scripts/bench starts:
//   bus/latency      a record published here until a peer process's
//                    subscriber has it (one way; both processes read the same
//                    monotonic clock), one record in flight at a time
//   bus/throughput   records published back to back until the peer has them
//                    all
// Ours runs TsubMgr on TPgSubTransport at both ends; "@raw" is the floor: the
// same payloads through a bare libpq NOTIFY/LISTEN loop (select() on the
// socket, PQconsumeInput, PQnotifies) at both ends. The peer is this program
// started again with --bus-peer=ours|raw; it answers a record carrying tag 9
// with the time it received it and how many records it received since its
// last answer.
#include <sys/select.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QCoreApplication>
#include <QEventLoop>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <benchmark/benchmark.h>
#include <libpq-fe.h>

#include "bench/BenchGoals.h"
#include "qalpack/omslib/PgSubTransport.h"
#include "qalpack/omslib/subMgr.h"

namespace {

std::int64_t nowNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

struct Server
{
    QString host, port, user, dbname;
};

std::optional<Server> server(std::string& whyNot)
{
    const QString host = qEnvironmentVariable("QALPACK_PG_HOST");
    if (host.isEmpty()) {
        whyNot = qEnvironmentVariableIsSet("QALPACK_PG_UNAVAILABLE")
            ? qEnvironmentVariable("QALPACK_PG_UNAVAILABLE").toStdString()
            : "QALPACK_PG_HOST is not set; scripts/bench starts a throwaway server and sets it";
        return std::nullopt;
    }
    return Server { host, qEnvironmentVariable("QALPACK_PG_PORT"), qEnvironmentVariable("QALPACK_PG_USER"),
        qEnvironmentVariable("QALPACK_PG_DBNAME") };
}

QStringList aliasLines(const Server& s)
{
    return { QStringLiteral("HOST=") + s.host, QStringLiteral("PORT=") + s.port,
        QStringLiteral("DATABASE=") + s.dbname, QStringLiteral("USER NAME=") + s.user };
}

std::string conninfo(const Server& s)
{
    return QStringLiteral("host=%1 port=%2 dbname=%3 user=%4")
        .arg(s.host, s.port, s.dbname, s.user)
        .toStdString();
}

// A logon-sized record: what the desks send each other most.
qal::TFieldMessage ping(const QString& topic, int seq, bool answer)
{
    qal::TFieldMessage message(topic);
    message.SetField(13, QStringLiteral("D001"));
    message.SetField(0, QStringLiteral("subMgr.12345.1"));
    message.SetField(10, QStringLiteral("DESK-PC-0042"));
    message.SetField(21, QStringLiteral("desk-instance-1"));
    message.SetField(1, seq);
    message.SetField(2, QString::number(nowNs()));
    if (answer)
        message.SetField(9, 1);
    return message;
}

// --- the peer process ------------------------------------------------------

int runOursPeer(const QString& pingTopic, const QString& pongTopic)
{
    std::string whyNot;
    const auto s = server(whyNot);
    if (!s)
        return 2;
    qal::TsubMgr bus(QStringLiteral("peer"),
        std::make_unique<qal::TPgSubTransport>(aliasLines(*s), QStringLiteral("BENCH")));
    int received = 0;
    (void)bus.Subscribe(pingTopic, [&](qal::TSubscription&, const qal::TFieldMessage& message) {
        const std::int64_t at = nowNs();
        ++received;
        if (message.GetFieldInt(9) != 1)
            return;
        qal::TFieldMessage pong(pongTopic);
        pong.SetField(1, message.GetField(1));
        pong.SetField(3, QString::number(at));
        pong.SetField(4, received);
        received = 0;
        bus.Publish(pong);
    });
    (void)bus.Subscribe(QStringLiteral("BENCH_QUIT"),
        [](qal::TSubscription&, const qal::TFieldMessage&) { QCoreApplication::quit(); });
    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}

int runRawPeer(const QString& pingTopic, const QString& pongTopic)
{
    std::string whyNot;
    const auto s = server(whyNot);
    if (!s)
        return 2;
    PGconn* conn = PQconnectdb(conninfo(*s).c_str());
    if (PQstatus(conn) != CONNECTION_OK)
        return 2;
    const std::string ping = pingTopic.toStdString();
    const std::string pong = pongTopic.toStdString();
    PQclear(PQexec(conn, ("LISTEN \"" + ping + "\"; LISTEN \"BENCH_QUIT\"").c_str()));
    std::puts("ready");
    std::fflush(stdout);
    int received = 0;
    const int fd = PQsocket(conn);
    for (;;) {
        fd_set readable;
        FD_ZERO(&readable);
        FD_SET(fd, &readable);
        if (select(fd + 1, &readable, nullptr, nullptr, nullptr) < 0)
            break;
        if (PQconsumeInput(conn) == 0)
            break;
        while (PGnotify* notify = PQnotifies(conn)) {
            const std::int64_t at = nowNs();
            const bool quit = std::strcmp(notify->relname, "BENCH_QUIT") == 0;
            const bool answer = std::strstr(notify->extra, "|9|1|") != nullptr;
            PQfreemem(notify);
            if (quit) {
                PQfinish(conn);
                return 0;
            }
            ++received;
            if (!answer)
                continue;
            const std::string payload
                = "image|" + pong + "|3|" + std::to_string(at) + "|4|" + std::to_string(received) + "|";
            received = 0;
            const char* values[2] = { pong.c_str(), payload.c_str() };
            PQclear(PQexecParams(conn, "select pg_notify($1, $2)", 2, nullptr, values, nullptr, nullptr, 0));
        }
    }
    PQfinish(conn);
    return 1;
}

// --- this side ---------------------------------------------------------------

// The peer process, started for one benchmark and stopped after it.
class Peer
{
public:
    Peer(const char* kind, const QString& ping, const QString& pong)
    {
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(QCoreApplication::applicationFilePath(),
            { QStringLiteral("--bus-peer=") + QLatin1StringView(kind), ping, pong });
        ready_ = process_.waitForReadyRead(30000) && process_.readLine().startsWith("ready");
    }
    ~Peer()
    {
        process_.kill();
        process_.waitForFinished(5000);
    }
    [[nodiscard]] bool ready() const { return ready_; }

private:
    QProcess process_;
    bool ready_ = false;
};

QString uniqueTopic(const char* what)
{
    static int counter = 0;
    return QStringLiteral("BENCH_%1_%2_%3")
        .arg(QLatin1StringView(what))
        .arg(QCoreApplication::applicationPid())
        .arg(++counter);
}

void reportLatency(benchmark::State& state, std::vector<double>& oneWayUs)
{
    if (oneWayUs.empty())
        return;
    std::sort(oneWayUs.begin(), oneWayUs.end());
    state.counters["p50_us"] = oneWayUs[oneWayUs.size() / 2];
    state.counters["p99_us"] = oneWayUs[std::min(oneWayUs.size() - 1, oneWayUs.size() * 99 / 100)];
    state.SetItemsProcessed(std::int64_t(oneWayUs.size()));
}

constexpr int kBurst = 5000;

// Ours at both ends: the answer arrives through this side's event loop.
struct OursSide
{
    std::unique_ptr<qal::TsubMgr> bus;
    std::optional<qal::TFieldMessage> answer;

    explicit OursSide(const Server& s, const QString& pong)
        : bus(std::make_unique<qal::TsubMgr>(QStringLiteral("bench"),
            std::make_unique<qal::TPgSubTransport>(aliasLines(s), QStringLiteral("BENCH"))))
    {
        (void)bus->Subscribe(pong, [this](qal::TSubscription&, const qal::TFieldMessage& m) { answer = m; });
    }

    qal::TFieldMessage awaitAnswer()
    {
        while (!answer)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        qal::TFieldMessage m = *answer;
        answer.reset();
        return m;
    }
};

void BusLatencyOurs(benchmark::State& state)
{
    std::string whyNot;
    const auto s = server(whyNot);
    if (!s) {
        state.SkipWithError(("PostgreSQL: " + whyNot).c_str());
        return;
    }
    const QString pingTopic = uniqueTopic("PING");
    const QString pongTopic = uniqueTopic("PONG");
    Peer peer("ours", pingTopic, pongTopic);
    OursSide side(*s, pongTopic);
    if (!peer.ready()) {
        state.SkipWithError("the peer process did not start");
        return;
    }
    std::vector<double> oneWay;
    int seq = 0;
    for (auto _ : state) {
        const qal::TFieldMessage message = ping(pingTopic, ++seq, true);
        const std::int64_t sent = message.GetField(2).toLongLong();
        side.bus->Publish(message);
        const qal::TFieldMessage answer = side.awaitAnswer();
        const double us = double(answer.GetField(3).toLongLong() - sent) / 1e3;
        oneWay.push_back(us);
        state.SetIterationTime(us / 1e6);
    }
    reportLatency(state, oneWay);
    bench::setRateGoal(state, 500); // a mean within 2 ms
    side.bus->Publish(qal::TFieldMessage(QStringLiteral("BENCH_QUIT")));
}

void BusThroughputOurs(benchmark::State& state)
{
    std::string whyNot;
    const auto s = server(whyNot);
    if (!s) {
        state.SkipWithError(("PostgreSQL: " + whyNot).c_str());
        return;
    }
    const QString pingTopic = uniqueTopic("PING");
    const QString pongTopic = uniqueTopic("PONG");
    Peer peer("ours", pingTopic, pongTopic);
    OursSide side(*s, pongTopic);
    if (!peer.ready()) {
        state.SkipWithError("the peer process did not start");
        return;
    }
    std::int64_t records = 0;
    for (auto _ : state) {
        for (int i = 1; i <= kBurst; ++i)
            side.bus->Publish(ping(pingTopic, i, i == kBurst));
        const qal::TFieldMessage answer = side.awaitAnswer();
        if (answer.GetFieldInt(4) != kBurst) {
            state.SkipWithError(
                ("the peer received " + answer.GetField(4).toStdString() + " records").c_str());
            break;
        }
        records += kBurst;
    }
    state.SetItemsProcessed(records);
    bench::setRateGoal(state, 10000);
    side.bus->Publish(qal::TFieldMessage(QStringLiteral("BENCH_QUIT")));
}

// The floor: bare libpq at this end too.
struct RawSide
{
    PGconn* conn = nullptr;
    std::string pingChannel;

    RawSide(const Server& s, const QString& ping, const QString& pong)
        : conn(PQconnectdb(conninfo(s).c_str()))
        , pingChannel(ping.toStdString())
    {
        PQclear(PQexec(conn, ("LISTEN \"" + pong.toStdString() + "\"").c_str()));
        PQclear(PQprepare(conn, "n", "select pg_notify($1, $2)", 2, nullptr));
    }
    ~RawSide()
    {
        PQclear(PQexec(conn, "NOTIFY \"BENCH_QUIT\""));
        PQfinish(conn);
    }

    void publish(const QByteArray& payload)
    {
        const char* values[2] = { pingChannel.c_str(), payload.constData() };
        PQclear(PQexecPrepared(conn, "n", 2, values, nullptr, nullptr, 0));
    }

    std::string awaitAnswer()
    {
        const int fd = PQsocket(conn);
        for (;;) {
            if (PGnotify* notify = PQnotifies(conn)) {
                std::string payload = notify->extra;
                PQfreemem(notify);
                return payload;
            }
            fd_set readable;
            FD_ZERO(&readable);
            FD_SET(fd, &readable);
            select(fd + 1, &readable, nullptr, nullptr, nullptr);
            PQconsumeInput(conn);
        }
    }
};

std::int64_t fieldOf(const std::string& payload, const char* tag)
{
    const std::string key = std::string("|") + tag + "|";
    const auto at = payload.find(key);
    return at == std::string::npos ? -1 : std::stoll(payload.substr(at + key.size()));
}

void BusLatencyRaw(benchmark::State& state)
{
    std::string whyNot;
    const auto s = server(whyNot);
    if (!s) {
        state.SkipWithError(("PostgreSQL: " + whyNot).c_str());
        return;
    }
    const QString pingTopic = uniqueTopic("PING");
    const QString pongTopic = uniqueTopic("PONG");
    Peer peer("raw", pingTopic, pongTopic);
    RawSide side(*s, pingTopic, pongTopic);
    if (!peer.ready()) {
        state.SkipWithError("the peer process did not start");
        return;
    }
    std::vector<double> oneWay;
    int seq = 0;
    for (auto _ : state) {
        const qal::TFieldMessage message = ping(pingTopic, ++seq, true);
        const std::int64_t sent = message.GetField(2).toLongLong();
        side.publish(message.ToString().toUtf8());
        const std::string answer = side.awaitAnswer();
        const double us = double(fieldOf(answer, "3") - sent) / 1e3;
        oneWay.push_back(us);
        state.SetIterationTime(us / 1e6);
    }
    reportLatency(state, oneWay);
}

void BusThroughputRaw(benchmark::State& state)
{
    std::string whyNot;
    const auto s = server(whyNot);
    if (!s) {
        state.SkipWithError(("PostgreSQL: " + whyNot).c_str());
        return;
    }
    const QString pingTopic = uniqueTopic("PING");
    const QString pongTopic = uniqueTopic("PONG");
    Peer peer("raw", pingTopic, pongTopic);
    RawSide side(*s, pingTopic, pongTopic);
    if (!peer.ready()) {
        state.SkipWithError("the peer process did not start");
        return;
    }
    // The payloads are made outside the timed loop: the floor is the wire.
    std::vector<QByteArray> payloads;
    for (int i = 1; i <= kBurst; ++i)
        payloads.push_back(ping(pingTopic, i, i == kBurst).ToString().toUtf8());
    std::int64_t records = 0;
    for (auto _ : state) {
        for (const QByteArray& payload : payloads)
            side.publish(payload);
        if (fieldOf(side.awaitAnswer(), "4") != kBurst) {
            state.SkipWithError("the raw peer missed records");
            break;
        }
        records += kBurst;
    }
    state.SetItemsProcessed(records);
}

BENCHMARK(BusLatencyOurs)->Name("bus/latency")->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BusLatencyRaw)->Name("bus/latency@raw")->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BusThroughputOurs)->Name("bus/throughput")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BusThroughputRaw)->Name("bus/throughput@raw")->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc == 4 && std::strncmp(argv[1], "--bus-peer=", 11) == 0) {
        const QString ping = QString::fromUtf8(argv[2]);
        const QString pong = QString::fromUtf8(argv[3]);
        return std::strcmp(argv[1] + 11, "raw") == 0 ? runRawPeer(ping, pong) : runOursPeer(ping, pong);
    }
    std::string whyNot;
    benchmark::AddCustomContext("postgres", server(whyNot) ? "on loopback" : "NOT RUN: " + whyNot);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
