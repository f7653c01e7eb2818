// SPDX-License-Identifier: MIT
#include "apps/desk/Instruments.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include "qalpack/runtime/IniFile.h"
#include "qalpack/runtime/StringList.h"

namespace qal {
namespace desk {

InstrumentBook::InstrumentBook(const QString& iniPath, const QString& spreadDir)
    : spreadDir_(spreadDir)
{
    if (!QFileInfo::exists(iniPath))
        return;
    TIniFile ini(iniPath);
    TStringList lines;
    ini.ReadSectionValues(QStringLiteral("Instruments"), lines);
    for (int i = 0; i < lines.Count(); ++i) {
        const QString symbol = lines.Names(i).trimmed().toUpper();
        const QStringList fields = lines.ValueFromIndex(i).split(u',');
        if (symbol.isEmpty() || fields.size() < 3)
            continue;
        instruments_.insert(symbol,
            Instrument { symbol, fields[0].trimmed().toUpper(), fields[1].trimmed().toLower(),
                qMax(1, fields[2].trimmed().toInt()) });
    }
}

InstrumentBook InstrumentBook::ForConfiguration(const QDir& configDir)
{
    QString spreads = configDir.filePath(QStringLiteral("spreads"));
    if (!QFileInfo(spreads).isDir())
        spreads = configDir.filePath(QStringLiteral("../spreads"));
    return InstrumentBook(configDir.filePath(QStringLiteral("instruments.ini")), spreads);
}

QString InstrumentBook::Normalise(const QString& exchange, const QString& symbol)
{
    QString code = symbol.trimmed().toUpper();
    if (exchange != QLatin1String("SEHK"))
        return code;
    const qsizetype dot = code.indexOf(u'.');
    if (dot >= 0)
        code.truncate(dot);
    bool number = false;
    const int stock = code.toInt(&number);
    if (!number || stock <= 0)
        return symbol.trimmed().toUpper();
    return QStringLiteral("%1.HK").arg(stock, 4, 10, QLatin1Char('0'));
}

Instrument InstrumentBook::Find(const QString& exchange, const QString& symbol) const
{
    const QString normal = Normalise(exchange, symbol);
    const auto found = instruments_.constFind(normal);
    if (found != instruments_.constEnd() && found->exchange == exchange)
        return *found;
    return Instrument { normal, exchange,
        exchange == QLatin1String("HKFE") ? QStringLiteral("index_futures") : QStringLiteral("securities"),
        1 };
}

TSpreadTable* InstrumentBook::Ladder(const Instrument& instrument)
{
    const QString name = instrument.exchange.toLower() + u'_' + instrument.kind;
    auto found = ladders_.find(name);
    if (found == ladders_.end()) {
        const QString path = QDir(spreadDir_).filePath(name + QStringLiteral(".txt"));
        TSpreadTable table;
        try {
            table = TSpreadTable::fromFile(path);
        } catch (const std::exception&) {
            // No ladder for this kind: the table's step-1 fallback.
        }
        found = ladders_.emplace(name, std::move(table)).first;
    }
    return &found->second;
}

} // namespace desk
} // namespace qal
