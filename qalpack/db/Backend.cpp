// SPDX-License-Identifier: MIT
#include "qalpack/db/Backend.h"

#include <array>

#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/PostgresBackend.h"
#include "qalpack/db/SqliteBackend.h"

namespace qal {

namespace {

constexpr std::array fieldTypeNames {
    u"ftUnknown",
    u"ftString",
    u"ftSmallint",
    u"ftInteger",
    u"ftWord",
    u"ftBoolean",
    u"ftFloat",
    u"ftCurrency",
    u"ftBCD",
    u"ftDate",
    u"ftTime",
    u"ftDateTime",
    u"ftBytes",
    u"ftVarBytes",
    u"ftAutoInc",
    u"ftBlob",
    u"ftMemo",
    u"ftFixedChar",
    u"ftWideString",
    u"ftLargeint",
    u"ftTimeStamp",
    u"ftFMTBcd",
    u"ftWideMemo",
    u"ftLongWord",
    u"ftShortint",
    u"ftByte",
    u"ftExtended",
    u"ftSingle",
};
static_assert(fieldTypeNames.size() == std::size_t(TFieldType::ftSingle) + 1);

constexpr std::array paramTypeNames { u"ptUnknown", u"ptInput", u"ptOutput", u"ptInputOutput", u"ptResult" };
static_assert(paramTypeNames.size() == std::size_t(TParamType::ptResult) + 1);

template<class Enum, std::size_t N>
Enum enumFromName(const std::array<const char16_t*, N>& names, QStringView name)
{
    for (std::size_t i = 0; i < N; ++i) {
        if (name.compare(QStringView(names[i]), Qt::CaseInsensitive) == 0)
            return Enum(i);
    }
    return Enum(0);
}

} // namespace

TFieldType FieldTypeFromName(QStringView name)
{
    return enumFromName<TFieldType>(fieldTypeNames, name.trimmed());
}

QString FieldTypeName(TFieldType type)
{
    return QString::fromUtf16(fieldTypeNames.at(std::size_t(type)));
}

TParamType ParamTypeFromName(QStringView name)
{
    return enumFromName<TParamType>(paramTypeNames, name.trimmed());
}

QString ParamTypeName(TParamType type)
{
    return QString::fromUtf16(paramTypeNames.at(std::size_t(type)));
}

namespace backend {

ValueClass classOf(TFieldType type)
{
    switch (type) {
    case TFieldType::ftSmallint:
    case TFieldType::ftInteger:
    case TFieldType::ftWord:
    case TFieldType::ftAutoInc:
    case TFieldType::ftLargeint:
    case TFieldType::ftLongWord:
    case TFieldType::ftShortint:
    case TFieldType::ftByte:
        return ValueClass::Integer;
    case TFieldType::ftFloat:
    case TFieldType::ftCurrency:
    case TFieldType::ftBCD:
    case TFieldType::ftFMTBcd:
    case TFieldType::ftExtended:
    case TFieldType::ftSingle:
        return ValueClass::Float;
    case TFieldType::ftBoolean:
        return ValueClass::Boolean;
    case TFieldType::ftDate:
        return ValueClass::Date;
    case TFieldType::ftTime:
        return ValueClass::Time;
    case TFieldType::ftDateTime:
    case TFieldType::ftTimeStamp:
        return ValueClass::DateTime;
    case TFieldType::ftBytes:
    case TFieldType::ftVarBytes:
    case TFieldType::ftBlob:
        return ValueClass::Binary;
    default:
        return ValueClass::Text;
    }
}

Cursor::~Cursor() = default;
Connection::~Connection() = default;

QStringList Connection::firstColumn(const QString& sql)
{
    QStringList values;
    const std::unique_ptr<Cursor> cursor = openCursor(sql, {});
    while (cursor->next()) {
        const RawValue value = cursor->value(0);
        values.append(QString::fromUtf8(value.text, value.size));
    }
    return values;
}

std::unique_ptr<Connection> openConnection(
    const QString& driver, const TStringList& params, const QString& database)
{
    if (driver.compare(u"SQLITE", Qt::CaseInsensitive) == 0)
        return SqliteBackend::Open(params, database);
    if (driver.compare(u"POSTGRES", Qt::CaseInsensitive) == 0)
        return PostgresBackend::Open(params, database);
    throw DatabaseError(database, QStringLiteral("unknown database driver \"%1\"").arg(driver));
}

} // namespace backend
} // namespace qal
