// SPDX-License-Identifier: MIT
#include "apps/qal/SaveCommand.h"
#include "apps/qal/CommandLine.h"

#include <QCommandLineParser>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

#include "apps/qal/ToolConfig.h"
#include "qalpack/model/omsData.h"
#include "qalpack/omslib/TaggedMessage.h"
#include "qalpack/orderdb/OrderSchema.h"
#include "qalpack/orderdb/orderDB.h"
#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/Exception.h"

namespace qal::tool {
namespace {

// A message is an order when it holds at least one tag/value pair whose tag
// is a number.
bool hasTaggedField(const QString& message)
{
    bool found = false;
    forEachTaggedPair(message, [&found](QStringView key, QStringView) {
        int tag = 0;
        found = found || TryStrToInt(key, tag);
    });
    return found;
}

// The record reads a price that is not a number ("1e400", "12,5") as 0, as
// every message reader does; a new order must not go to the database at a
// price nobody typed. The text of the first such price (tag 3 or the stop
// price, 41), or an empty text when every price reads.
QString badPriceField(const QString& message)
{
    QString bad;
    forEachTaggedPair(message, [&bad](QStringView key, QStringView value) {
        int tag = 0;
        long double price = 0;
        if (bad.isEmpty() && TryStrToInt(key, tag) && (tag == 3 || tag == 41) && !TryStrToFloat(value, price))
            bad = QStringLiteral("tag %1: \"%2\" is not a price").arg(tag).arg(value);
    });
    return bad;
}

class Saver
{
public:
    Saver(bool json, QTextStream& out, QTextStream& err)
        : json_(json)
        , out_(out)
        , err_(err)
    { }

    // Saves one order; false when it was not saved.
    bool save(const QString& message, const QString& where)
    {
        if (!hasTaggedField(message))
            return fail(where, QStringLiteral("no tag|value field in \"%1\"").arg(message));
        if (const QString bad = badPriceField(message); !bad.isEmpty())
            return fail(where, bad);
        TomsOrder order(message);
        try {
            orderSaveOrder(order);
        } catch (const Error& error) {
            return fail(where, error.message());
        }
        if (order.ErrorCode == TomsOrder::kSaveFailed)
            return fail(where, order.Message);
        if (json_) {
            const QJsonObject object { { QStringLiteral("orderNo"), order.OmsOrder_No },
                { QStringLiteral("created"), order.Order_Time501 },
                { QStringLiteral("modified"), order.Last_MOD_Time } };
            out_ << QJsonDocument(object).toJson(QJsonDocument::Compact) << '\n';
        } else {
            out_ << order.OmsOrder_No << '\n';
        }
        out_.flush();
        return true;
    }

private:
    bool fail(const QString& where, const QString& problem)
    {
        err_ << "qal save: " << where << ": " << problem << '\n';
        err_.flush();
        if (json_) {
            const QJsonObject object { { QStringLiteral("input"), where },
                { QStringLiteral("error"), problem } };
            out_ << QJsonDocument(object).toJson(QJsonDocument::Compact) << '\n';
            out_.flush();
        }
        return false;
    }

    bool json_;
    QTextStream& out_;
    QTextStream& err_;
};

} // namespace

int runSave(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Saves new client orders given as tagged messages "
        "(\"H|10|AC1|0|0005.HK|11|0|4|1000|3|80.5|13|D001\":\n"
        "a header token, then tag|value pairs) from the arguments, or one per line from standard input,\n"
        "and prints the order number each got. An order that carries a number (tag 6) keeps it.\n"
        "The configuration is OMS_INI, else config/oms.ini next to the tool."));
    const QCommandLineOption json(QStringLiteral("json"),
        QStringLiteral(
            "One JSON object per order: its number, creation and modification times, or the error."));
    parser.addOptions({ json });
    parser.addPositionalArgument(
        QStringLiteral("message"), QStringLiteral("Orders to save."), QStringLiteral("[message...]"));

    if (const std::optional<int> done = parseCommandLine(parser, QStringLiteral("save"), arguments, out, err))
        return *done;
    if (!useConfiguration(QStringLiteral("save"), err))
        return kFailure;
    // An embedded order database has its procedure in this process.
    RegisterOrderProcedures();

    Saver saver(parser.isSet(json), out, err);
    bool allSaved = true;
    const QStringList messages = parser.positionalArguments();
    if (messages.isEmpty()) {
        QTextStream input(stdin);
        int lineNumber = 0;
        QString line;
        while (input.readLineInto(&line)) {
            ++lineNumber;
            if (!line.trimmed().isEmpty())
                allSaved = saver.save(line.trimmed(), QStringLiteral("line %1").arg(lineNumber)) && allSaved;
        }
    } else {
        for (qsizetype i = 0; i < messages.size(); ++i)
            allSaved = saver.save(messages[i], QStringLiteral("argument %1").arg(i + 1)) && allSaved;
    }
    return allSaved ? 0 : 1;
}

} // namespace qal::tool
