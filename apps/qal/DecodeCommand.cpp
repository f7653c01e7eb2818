// SPDX-License-Identifier: MIT
#include "apps/qal/DecodeCommand.h"
#include "apps/qal/CommandLine.h"

#include <memory>

#include <QCommandLineParser>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaProperty>
#include <QStringDecoder>
#include <QTextStream>

#include "qalpack/model/exchData.h"
#include "qalpack/model/omsData.h"
#include "qalpack/omslib/CodePage950.h"
#include "qalpack/omslib/TaggedMessage.h"
#include "qalpack/runtime/Convert.h"

namespace qal::tool {
namespace {

enum class RecordKind { ExchangeOrder, ClientOrder, Trade };

struct Options
{
    RecordKind kind = RecordKind::ExchangeOrder;
    bool json = false;
    bool cp950 = false;
};

// One line of output: the record's published properties in declaration
// order, then the texts and quantities a blotter asks for.
struct Decoded
{
    QString type;
    QList<std::pair<QString, QVariant>> properties;
    QList<std::pair<QString, QVariant>> extras;
    QString message;
};

void readProperties(const QObject& record, Decoded& decoded)
{
    const QMetaObject* meta = record.metaObject();
    for (int i = TChangeNotifier::staticMetaObject.propertyCount(); i < meta->propertyCount(); ++i) {
        const QMetaProperty property = meta->property(i);
        decoded.properties.append({ QString::fromLatin1(property.name()), property.read(&record) });
    }
}

// Exchange and client orders: a client order adds its remaining quantity,
// and its remark is the full instruction remark.
Decoded describeOrder(const TexchOrder& order)
{
    Decoded decoded;
    decoded.type = QString::fromLatin1(order.metaObject()->className()).section(QStringLiteral("::"), -1);
    readProperties(order, decoded);
    decoded.extras = {
        { QStringLiteral("status"), order.statusMessage() },
        { QStringLiteral("side"), order.GetBuySellText() },
        { QStringLiteral("option"), order.GetOrderOptionInfo() },
        { QStringLiteral("remark"), order.GetRemark() },
    };
    if (const auto* client = qobject_cast<const TomsOrder*>(&order)) {
        decoded.extras.append({ QStringLiteral("remainingQty"), client->GetRemainingQty() });
        decoded.extras.append({ QStringLiteral("fillQty"), client->Fill_Qty });
    } else {
        decoded.extras.append({ QStringLiteral("fillQty"), order.CalculateFillQty() });
    }
    decoded.extras.append({ QStringLiteral("queueQty"), order.CalculateQueuQty() });
    decoded.message = order.DDSImageMessage();
    return decoded;
}

Decoded decodeTrade(const QString& message)
{
    const TomsTrade trade(message);
    Decoded decoded;
    decoded.type = QStringLiteral("TomsTrade");
    readProperties(trade, decoded);
    decoded.extras = {
        { QStringLiteral("status"), trade.statusMessage() },
        { QStringLiteral("side"), trade.GetBuySellText() },
        { QStringLiteral("tradeNumber"), trade.exchTradeNum() },
    };
    decoded.message = trade.DDSImageMessage();
    return decoded;
}

// A message is readable when it holds at least one tag/value pair whose tag
// is a number; anything else is not an order message at all.
bool hasTaggedField(const QString& message)
{
    bool found = false;
    forEachTaggedPair(message, [&found](QStringView key, QStringView) {
        int tag = 0;
        found = found || TryStrToInt(key, tag);
    });
    return found;
}

void printText(QTextStream& out, const Decoded& d)
{
    out << d.type << '\n';
    auto print = [&out](const QString& name, const QVariant& value) {
        out << "  " << qSetFieldWidth(18) << Qt::left << name << qSetFieldWidth(0) << value.toString()
            << '\n';
    };
    for (const auto& [name, value] : d.properties)
        print(name, value);
    for (const auto& [name, value] : d.extras)
        print(name, value);
    print(QStringLiteral("message"), d.message);
}

void printJson(QTextStream& out, const Decoded& d)
{
    QJsonObject properties;
    for (const auto& [name, value] : d.properties)
        properties.insert(name, QJsonValue::fromVariant(value));
    QJsonObject object { { QStringLiteral("type"), d.type }, { QStringLiteral("properties"), properties } };
    for (const auto& [name, value] : d.extras)
        object.insert(name, QJsonValue::fromVariant(value));
    object.insert(QStringLiteral("message"), d.message);
    out << QJsonDocument(object).toJson(QJsonDocument::Compact) << '\n';
}

class Decoder
{
public:
    Decoder(const Options& options, QTextStream& out, QTextStream& err)
        : options_(options)
        , out_(out)
        , err_(err)
    { }

    void decode(const QString& message, const QString& where)
    {
        if (!hasTaggedField(message)) {
            fail(where, QStringLiteral("no tag|value field in \"%1\"").arg(message));
            return;
        }
        const Decoded d = options_.kind == RecordKind::Trade ? decodeTrade(message)
            : options_.kind == RecordKind::ClientOrder       ? describeOrder(TomsOrder(message))
                                                             : describeOrder(TexchOrder(message));
        if (options_.json)
            printJson(out_, d);
        else
            printText(out_, d);
        out_.flush();
    }

    void fail(const QString& where, const QString& problem)
    {
        failed_ = true;
        err_ << "qal decode: " << where << ": " << problem << '\n';
        err_.flush();
        if (options_.json) {
            const QJsonObject object { { QStringLiteral("input"), where },
                { QStringLiteral("error"), problem } };
            out_ << QJsonDocument(object).toJson(QJsonDocument::Compact) << '\n';
            out_.flush();
        }
    }

    // One message per line; blank lines are skipped. A line that is not
    // valid text in the input encoding is reported and skipped.
    void decodeStream(QFile& input)
    {
        QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        int lineNumber = 0;
        while (!input.atEnd()) {
            QByteArray bytes = input.readLine();
            ++lineNumber;
            while (bytes.endsWith('\n') || bytes.endsWith('\r'))
                bytes.chop(1);
            if (bytes.trimmed().isEmpty())
                continue;
            const QString where = QStringLiteral("line %1").arg(lineNumber);
            QString text;
            if (options_.cp950) {
                text = cp950::decode(bytes);
            } else {
                text = utf8.decode(bytes);
                if (utf8.hasError()) {
                    utf8.resetState();
                    fail(where, QStringLiteral("not valid UTF-8 (use --encoding cp950 for wire bytes)"));
                    continue;
                }
            }
            decode(text, where);
        }
    }

    [[nodiscard]] bool failed() const { return failed_; }

private:
    Options options_;
    QTextStream& out_;
    QTextStream& err_;
    bool failed_ = false;
};

} // namespace

int runDecode(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Reads tagged messages (\"H|0|0005.HK|4|1000|3|12.5|11|1\": a header token, then tag|value pairs)\n"
        "from the arguments, or one per line from standard input, and prints for each the record's\n"
        "published properties, its status, side, option and remark texts, its fill and queue\n"
        "quantities, and the message it writes back."));
    const QCommandLineOption trade(
        QStringLiteral("trade"), QStringLiteral("Read trade messages (TomsTrade)."));
    const QCommandLineOption order(QStringLiteral("order"),
        QStringLiteral("Read client order messages (TomsOrder): adds the full instruction remark and the\n"
                       "remaining quantity."));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("One JSON object per message."));
    const QCommandLineOption encoding(QStringLiteral("encoding"),
        QStringLiteral("Encoding of standard input: utf-8 (default) or cp950 (the OMS wire code page)."),
        QStringLiteral("name"), QStringLiteral("utf-8"));
    parser.addOptions({ order, trade, json, encoding });
    parser.addPositionalArgument(
        QStringLiteral("message"), QStringLiteral("Messages to decode."), QStringLiteral("[message...]"));

    if (const std::optional<int> done
        = parseCommandLine(parser, QStringLiteral("decode"), arguments, out, err))
        return *done;
    Options options;
    if (parser.isSet(order) && parser.isSet(trade)) {
        err << "qal decode: --order and --trade exclude each other\n";
        return kUsageError;
    }
    options.kind = parser.isSet(trade) ? RecordKind::Trade
        : parser.isSet(order)          ? RecordKind::ClientOrder
                                       : RecordKind::ExchangeOrder;
    options.json = parser.isSet(json);
    const QString encodingName = parser.value(encoding).toLower();
    if (encodingName == u"cp950" || encodingName == u"950" || encodingName == u"big5") {
        options.cp950 = true;
    } else if (encodingName != u"utf-8" && encodingName != u"utf8") {
        err << "qal decode: unknown encoding \"" << parser.value(encoding) << "\" (use utf-8 or cp950)\n";
        return kUsageError;
    }

    Decoder decoder(options, out, err);
    const QStringList messages = parser.positionalArguments();
    if (messages.isEmpty()) {
        QFile input;
        if (!input.open(stdin, QIODevice::ReadOnly)) {
            err << "qal decode: cannot read standard input\n";
            return kUsageError;
        }
        decoder.decodeStream(input);
    } else {
        for (qsizetype i = 0; i < messages.size(); ++i)
            decoder.decode(messages[i], QStringLiteral("argument %1").arg(i + 1));
    }
    return decoder.failed() ? kFailure : kSuccess;
}

} // namespace qal::tool
