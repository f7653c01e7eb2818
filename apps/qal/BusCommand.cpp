// SPDX-License-Identifier: MIT
#include "apps/qal/BusCommand.h"

#include <csignal>
#include <exception>
#include <memory>
#include <optional>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QEventLoop>
#include <QSocketNotifier>
#include <QTextStream>

#ifdef Q_OS_UNIX
#include <sys/socket.h>
#include <unistd.h>
#endif

#include "apps/qal/CommandLine.h"
#include "apps/qal/ToolConfig.h"
#include "qalpack/omslib/FieldMessage.h"
#include "qalpack/omslib/omsLog.h"
#include "qalpack/omslib/subMgr.h"
#include "qalpack/profile/DeskBus.h"
#include "qalpack/runtime/Exception.h"

namespace qal::tool {
namespace {

// Tags of the single-logon record.
constexpr int kTagCode = 5;
constexpr int kTagUserId = 13;
constexpr int kTagText = 25;
constexpr int kForcedLogoff = -1;

QString jsonString(const QString& text)
{
    QString quoted = QStringLiteral("\"");
    for (const QChar c : text) {
        switch (c.unicode()) {
        case u'"':
            quoted += QStringLiteral("\\\"");
            break;
        case u'\\':
            quoted += QStringLiteral("\\\\");
            break;
        case u'\n':
            quoted += QStringLiteral("\\n");
            break;
        case u'\r':
            quoted += QStringLiteral("\\r");
            break;
        case u'\t':
            quoted += QStringLiteral("\\t");
            break;
        default:
            if (c.unicode() < 0x20)
                quoted += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
            else
                quoted += c;
        }
    }
    return quoted + u'"';
}

// {"kind":"image","topic":"USER_D001","fields":{"13":"D001",...}}, the fields
// in the record's order.
QString jsonRecord(const TFieldMessage& message)
{
    QString line
        = QStringLiteral("{\"kind\":%1,\"topic\":%2,\"fields\":{")
              .arg(jsonString(message.IsImage() ? QStringLiteral("image") : QStringLiteral("update")),
                  jsonString(message.Topic()));
    bool first = true;
    for (const int tag : message.Tags()) {
        if (!first)
            line += u',';
        first = false;
        line += jsonString(QString::number(tag)) + u':' + jsonString(message.GetField(tag));
    }
    return line + QStringLiteral("}}");
}

// The bus the configuration names, or a reason on `err`.
std::unique_ptr<TsubMgr> openBus(const QString& command, QTextStream& err)
{
    if (!useConfiguration(command, err))
        return nullptr;
    if (DeskBusAlias().isEmpty()) {
        err << "qal " << command
            << ": the OMS INI names no desk-wide bus ([OMS_LOCAL] BusAlias); the in-process bus reaches no "
               "desk\n";
        return nullptr;
    }
    try {
        return OpenDeskBus(QStringLiteral("qal.%1.%2").arg(command).arg(QCoreApplication::applicationPid()));
    } catch (const Error& error) {
        err << "qal " << command << ": " << error.message() << '\n';
        return nullptr;
    }
}

int publishAll(
    const QString& command, const QList<TFieldMessage>& records, QTextStream& out, QTextStream& err)
{
    // A one-shot send reports only what went wrong.
    omsLogSetLevel(omsLogWarning);
    const std::unique_ptr<TsubMgr> bus = openBus(command, err);
    if (!bus)
        return 1;
    for (const TFieldMessage& record : records) {
        try {
            bus->Publish(record);
        } catch (const Error& error) {
            err << "qal " << command << ": " << error.message() << '\n';
            return 1;
        }
        out << "sent " << record.ToString() << '\n';
    }
    return 0;
}

#ifdef Q_OS_UNIX
// Ctrl-C and kill end the watch through the event loop, so that the bus
// connection is closed in order.
int stopPipe[2] = { -1, -1 };

void onStopSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(stopPipe[1], &byte, 1);
}
#endif

} // namespace

int runWatch(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Prints every record arriving on the topics from the desk-wide bus, one per line in the text form\n"
        "(image|USER_D001|13|D001|...|), until interrupted. The bus is [OMS_LOCAL] BusAlias of OMS_INI,\n"
        "else of config/oms.ini next to the tool."));
    parser.addPositionalArgument(
        QStringLiteral("topic"), QStringLiteral("A topic to watch (USER_D001)."), QStringLiteral("TOPIC..."));
    const QCommandLineOption json(QStringLiteral("json"),
        QStringLiteral(
            "One JSON object a line: {\"kind\":\"image\",\"topic\":...,\"fields\":{\"13\":...}}."));
    const QCommandLineOption count(
        QStringLiteral("count"), QStringLiteral("Stop after N records."), QStringLiteral("N"));
    parser.addOptions({ json, count });
    if (const std::optional<int> done = parseCommandLine(parser, QStringLiteral("watch"), arguments, out, err))
        return *done;
    const QStringList topics = parser.positionalArguments();
    if (topics.isEmpty()) {
        err << "qal watch: give at least one topic (see qal watch --help)\n";
        return 2;
    }
    int limit = -1;
    if (parser.isSet(count)) {
        bool ok = false;
        limit = parser.value(count).toInt(&ok);
        if (!ok || limit < 1) {
            err << "qal watch: --count takes a whole number from 1, not \"" << parser.value(count) << "\"\n";
            return 2;
        }
    }

    const std::unique_ptr<TsubMgr> bus = openBus(QStringLiteral("watch"), err);
    if (!bus)
        return 1;
    QEventLoop loop;
    int seen = 0;
    const bool asJson = parser.isSet(json);
    try {
        for (const QString& topic : topics) {
            (void)bus->Subscribe(topic, [&](TSubscription&, const TFieldMessage& message) {
                out << (asJson ? jsonRecord(message) : message.ToString()) << Qt::endl;
                if (limit > 0 && ++seen >= limit)
                    loop.quit();
            });
        }
    } catch (const Error& error) {
        err << "qal watch: " << error.message() << '\n';
        return 1;
    }

#ifdef Q_OS_UNIX
    std::unique_ptr<QSocketNotifier> stop;
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, stopPipe) == 0) {
        stop = std::make_unique<QSocketNotifier>(stopPipe[0], QSocketNotifier::Read);
        QObject::connect(stop.get(), &QSocketNotifier::activated, &loop, [&loop] { loop.quit(); });
        std::signal(SIGINT, onStopSignal);
        std::signal(SIGTERM, onStopSignal);
    }
#endif
    err << "qal watch: watching " << topics.join(u' ') << " on bus " << DeskBusAlias() << Qt::endl;
    loop.exec();
#ifdef Q_OS_UNIX
    if (stop) {
        std::signal(SIGINT, SIG_DFL);
        std::signal(SIGTERM, SIG_DFL);
        stop.reset();
        ::close(stopPipe[0]);
        ::close(stopPipe[1]);
    }
#endif
    return 0;
}

int runPublish(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Publishes records on the desk-wide bus, each given in the text form: the kind (image or update),\n"
        "the topic, then tag and value pairs, every field followed by \"|\":\n"
        "  qal publish 'image|USER_D001|5|-1|25|Desk closed by support|'\n"
        "The bus is [OMS_LOCAL] BusAlias of OMS_INI, else of config/oms.ini next to the tool."));
    parser.addPositionalArgument(QStringLiteral("record"),
        QStringLiteral("A record, published in the order given."), QStringLiteral("RECORD..."));
    if (const std::optional<int> done = parseCommandLine(parser, QStringLiteral("publish"), arguments, out, err))
        return *done;
    if (parser.positionalArguments().isEmpty()) {
        err << "qal publish: give a record, e.g. 'image|USER_D001|13|D001|' (see qal publish --help)\n";
        return 2;
    }
    QList<TFieldMessage> records;
    for (const QString& text : parser.positionalArguments()) {
        try {
            records.append(TFieldMessage::Parse(text));
        } catch (const Error& error) {
            err << "qal publish: " << error.message() << '\n';
            return 2;
        }
    }
    return publishAll(QStringLiteral("publish"), records, out, err);
}

int runLogoff(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Forces a user's desks off: publishes the forced-logoff record (code -1) on USER_<ID> of the\n"
        "desk-wide bus. Every desk of that user shows the message (\"System Forced Logoff\" when none is\n"
        "given) and closes."));
    const QCommandLineOption user(
        QStringLiteral("user"), QStringLiteral("The user id (User_File.User_No)."), QStringLiteral("ID"));
    const QCommandLineOption message(
        QStringLiteral("message"), QStringLiteral("What the desks show (no \"|\")."), QStringLiteral("TEXT"));
    parser.addOptions({ user, message });
    if (const std::optional<int> done = parseCommandLine(parser, QStringLiteral("logoff"), arguments, out, err))
        return *done;
    if (!parser.positionalArguments().isEmpty()) {
        err << "qal logoff: unexpected argument \"" << parser.positionalArguments().first() << "\"\n";
        return 2;
    }
    const QString userId = parser.value(user).trimmed();
    if (userId.isEmpty()) {
        err << "qal logoff: give the user with --user ID (see qal logoff --help)\n";
        return 2;
    }
    TFieldMessage record;
    try {
        record = TFieldMessage(QStringLiteral("USER_") + userId);
        record.SetField(kTagUserId, userId);
        record.SetField(kTagCode, kForcedLogoff);
        record.SetField(kTagText, parser.value(message));
    } catch (const Error& error) {
        err << "qal logoff: " << error.message() << '\n';
        return 2;
    }
    return publishAll(QStringLiteral("logoff"), { record }, out, err);
}

} // namespace qal::tool
