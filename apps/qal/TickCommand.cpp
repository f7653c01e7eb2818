// SPDX-License-Identifier: MIT
#include "apps/qal/TickCommand.h"
#include "apps/qal/CommandLine.h"

#include <optional>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

#include "qalpack/market/SpreadTable.h"
#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/Exception.h"
#include "qalpack/runtime/Format.h"

namespace qal::tool {
namespace {

constexpr auto kDefaultLadder = "sehk_securities";

// Named ladders ship as <name>.txt in a spreads directory: the one given on
// the command line, else $QALPACK_SPREADS_DIR, else next to the executable
// (build tree) or in ../share/qalpack/spreads (installed).
QStringList spreadDirectories(const QString& given)
{
    if (!given.isEmpty())
        return { given };
    QStringList dirs;
    if (const QString env = qEnvironmentVariable("QALPACK_SPREADS_DIR"); !env.isEmpty())
        dirs << env;
    const QString exeDir = QCoreApplication::applicationDirPath();
    dirs << exeDir + QStringLiteral("/spreads") << exeDir + QStringLiteral("/../share/qalpack/spreads");
    return dirs;
}

std::optional<QString> findLadder(const QString& name, const QString& dir, QTextStream& err)
{
    if (QFileInfo(name).isFile())
        return name;
    const QStringList dirs = spreadDirectories(dir);
    for (const QString& d : dirs) {
        const QString path = QDir(d).filePath(name + QStringLiteral(".txt"));
        if (QFileInfo(path).isFile())
            return path;
    }
    err << "qal tick: no ladder \"" << name << "\" (looked for " << name << ".txt in " << dirs.join(u", ")
        << ")\n";
    return std::nullopt;
}

QString priceText(double price)
{
    return FixedText(price, 3);
}

} // namespace

int runTick(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Shows where prices stand on an exchange's price-spread ladder: whether each is valid, its\n"
        "nearest, nearest-up and nearest-down ladder prices, and the prices N ticks above and below.\n"
        "Ladders: sehk_securities (default; SEHK since 4 August 2025), sehk_securities_pre_2025,\n"
        "sehk_etp, or a file of \"bound,spread\" lines."));
    const QCommandLineOption ladder(QStringLiteral("ladder"),
        QStringLiteral("Named ladder or ladder file (default: %1).").arg(QLatin1StringView(kDefaultLadder)),
        QStringLiteral("name"), QString::fromLatin1(kDefaultLadder));
    const QCommandLineOption spread(QStringLiteral("spread"),
        QStringLiteral("Spread text instead of a ladder: \"bound,spread,bound,spread,...\"."),
        QStringLiteral("text"));
    const QCommandLineOption spreadsDir(
        QStringLiteral("spreads-dir"), QStringLiteral("Directory of named ladders."), QStringLiteral("dir"));
    const QCommandLineOption steps(QStringLiteral("steps"),
        QStringLiteral("Ticks away to show (default: 1)."), QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("One JSON object per price."));
    parser.addOptions({ ladder, spread, spreadsDir, steps, json });
    parser.addPositionalArgument(
        QStringLiteral("price"), QStringLiteral("Prices to look at."), QStringLiteral("price..."));

    if (const std::optional<int> done = parseCommandLine(parser, QStringLiteral("tick"), arguments, out, err))
        return *done;
    int n = 0;
    if (!TryStrToInt(parser.value(steps), n) || n < 0) {
        err << "qal tick: --steps takes a whole number of ticks, not \"" << parser.value(steps) << "\"\n";
        return kUsageError;
    }
    const QStringList prices = parser.positionalArguments();
    if (prices.isEmpty()) {
        err << "qal tick: give at least one price (see qal tick --help)\n";
        return kUsageError;
    }

    // A spread text that does not load is a mistake on the command line; a
    // ladder file that does not load is a broken file. Either way no price is
    // shown: the one-tick ladder the library falls back on would answer for
    // an exchange that has no such ladder.
    TSpreadTable table;
    QString source;
    const bool fromText = parser.isSet(spread);
    try {
        if (fromText) {
            source = parser.value(spread);
            table = TSpreadTable(source);
        } else {
            const auto path = findLadder(parser.value(ladder), parser.value(spreadsDir), err);
            if (!path)
                return kUsageError;
            source = *path;
            table = TSpreadTable::fromFile(*path);
        }
    } catch (const Error& e) {
        err << "qal tick: " << e.message() << '\n';
        return fromText ? kUsageError : kFailure;
    }
    if (table.LoadError() || table.Count() == 0) {
        err << "qal tick: " << Format(_res_LoadSpreadError(), { source }) << '\n';
        return fromText ? kUsageError : kFailure;
    }

    const bool asJson = parser.isSet(json);
    if (!asJson) {
        out << QStringLiteral("%1 %2 %3 %4 %5 %6 %7\n")
                   .arg(u"price", -12)
                   .arg(u"valid", -6)
                   .arg(u"nearest", -12)
                   .arg(u"up", -12)
                   .arg(u"down", -12)
                   .arg(QStringLiteral("-%1").arg(n), -12)
                   .arg(QStringLiteral("+%1").arg(n));
    }
    bool failed = false;
    for (const QString& text : prices) {
        long double parsed = 0;
        if (!TryStrToFloat(text, parsed)) {
            err << "qal tick: \"" << text << "\" is not a price\n";
            failed = true;
            continue;
        }
        const double price = double(parsed);
        const bool valid = table.ValidatePrice(price);
        const double nearest = table.GetNearestPrice(price);
        const double up = table.GetNearestUpPrice(price);
        const double down = table.GetNearestDownPrice(price);
        const double below = table.GetNextPrice(price, -n);
        const double above = table.GetNextPrice(price, n);
        if (asJson) {
            const QJsonObject object { { QStringLiteral("price"), price }, { QStringLiteral("valid"), valid },
                { QStringLiteral("nearest"), nearest }, { QStringLiteral("up"), up },
                { QStringLiteral("down"), down }, { QStringLiteral("steps"), n },
                { QStringLiteral("below"), below }, { QStringLiteral("above"), above } };
            out << QJsonDocument(object).toJson(QJsonDocument::Compact) << '\n';
        } else {
            out << QStringLiteral("%1 %2 %3 %4 %5 %6 %7\n")
                       .arg(text, -12)
                       .arg(valid ? u"yes" : u"no", -6)
                       .arg(priceText(nearest), -12)
                       .arg(priceText(up), -12)
                       .arg(priceText(down), -12)
                       .arg(priceText(below), -12)
                       .arg(priceText(above));
        }
    }
    return failed ? kFailure : kSuccess;
}

} // namespace qal::tool
