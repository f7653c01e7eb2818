// SPDX-License-Identifier: MIT
#include "qalpack/omslib/ConvertSymbolMgr.h"

#include <utility>

#include <QStringList>

#include "qalpack/omslib/omsIniFile.h"
#include "qalpack/runtime/Exception.h"
#include "qalpack/runtime/IniFile.h"

namespace qal {

namespace {

struct SymbolMapState
{
    std::unique_ptr<TConvertSymbolMgr> table;
    bool settled = false; // the configuration was read, or a table installed
};

SymbolMapState& state()
{
    static SymbolMapState instance;
    return instance;
}

} // namespace

TConvertSymbolMgr::TConvertSymbolMgr() = default;

TConvertSymbolMgr::~TConvertSymbolMgr() = default;

int TConvertSymbolMgr::LoadFromIni(const TIniFile& ini, const QString& section)
{
    int added = 0;
    const QStringList lines = ini.ReadSectionValues(section);
    for (const QString& line : lines) {
        const qsizetype equals = line.indexOf(u'=');
        const QString code = line.left(equals).trimmed();
        const QString mapped = equals < 0 ? QString() : line.mid(equals + 1).trimmed();
        if (code.isEmpty() || mapped.isEmpty())
            continue;
        AddSymbol(code, mapped);
        ++added;
    }
    return added;
}

void TConvertSymbolMgr::AddSymbol(const QString& code, const QString& mapped)
{
    if (code.isEmpty() || mapped.isEmpty())
        throw Error(QStringLiteral("TConvertSymbolMgr: cannot map \"%1\" to \"%2\"").arg(code, mapped));
    map_.insert(code.toUpper(), mapped);
}

QString TConvertSymbolMgr::GetSymbol(const QString& code) const
{
    return map_.value(code.toUpper(), code);
}

int TConvertSymbolMgr::Count() const
{
    return static_cast<int>(map_.size());
}

QString SymbolMapSection()
{
    return QStringLiteral("SYMBOL_MAP");
}

TConvertSymbolMgr* SymbolMapCtrl()
{
    SymbolMapState& unit = state();
    if (!unit.settled) {
        unit.settled = true;
        // Without a shared OMS INI file there is nothing to set the table up.
        const QString path = omsIniPath();
        const TIniFile ini(path);
        if (!path.isEmpty() && ini.SectionExists(SymbolMapSection())) {
            auto table = std::make_unique<TConvertSymbolMgr>();
            table->LoadFromIni(ini, SymbolMapSection());
            unit.table = std::move(table);
        }
    }
    return unit.table.get();
}

void SetSymbolMapCtrl(std::unique_ptr<TConvertSymbolMgr> table)
{
    SymbolMapState& unit = state();
    unit.table = std::move(table);
    unit.settled = true;
}

namespace internal {

void ResetSymbolMapCtrl()
{
    SymbolMapState& unit = state();
    unit.table.reset();
    unit.settled = false;
}

} // namespace internal

} // namespace qal
