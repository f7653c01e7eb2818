// SPDX-License-Identifier: MIT
#include "qalpack/db/Param.h"

#include <limits>

#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/ValueText.h"

namespace qal {

using backend::Stamp;
using backend::ValueClass;
using Kind = backend::RawValue::Kind;

namespace {

[[noreturn]] void paramConversionFailed(const QString& name, const QString& text, const char* target)
{
    throw DatabaseError(QString(),
        QStringLiteral("parameter \"%1\": \"%2\" is not a valid %3").arg(name, text, QLatin1String(target)));
}

} // namespace

TParam::TParam(const QString& name, TFieldType dataType, TParamType paramType)
    : name_(name)
    , dataType_(dataType)
    , paramType_(paramType)
{ }

const QString& TParam::Name() const
{
    return name_;
}

TFieldType TParam::DataType() const
{
    return dataType_;
}

void TParam::SetDataType(TFieldType type)
{
    dataType_ = type;
}

TParamType TParam::ParamType() const
{
    return paramType_;
}

void TParam::SetParamType(TParamType type)
{
    paramType_ = type;
}

bool TParam::IsInput() const
{
    return paramType_ != TParamType::ptOutput && paramType_ != TParamType::ptResult;
}

bool TParam::IsOutput() const
{
    return paramType_ == TParamType::ptOutput || paramType_ == TParamType::ptInputOutput
        || paramType_ == TParamType::ptResult;
}

bool TParam::Bound() const
{
    return bound_;
}

bool TParam::IsNull() const
{
    return std::holds_alternative<std::monostate>(value_);
}

void TParam::Clear()
{
    value_ = std::monostate();
    bound_ = false;
}

void TParam::assign(backend::Value value, TFieldType type)
{
    value_ = std::move(value);
    bound_ = true;
    if (dataType_ == TFieldType::ftUnknown)
        dataType_ = type;
}

void TParam::SetAsString(const QString& value)
{
    assign(value, TFieldType::ftString);
}

void TParam::SetAsInteger(qint64 value)
{
    assign(value, backend::fitsInt(value) ? TFieldType::ftInteger : TFieldType::ftLargeint);
}

void TParam::SetAsFloat(double value)
{
    assign(value, TFieldType::ftFloat);
}

void TParam::SetAsBoolean(bool value)
{
    assign(value, TFieldType::ftBoolean);
}

void TParam::SetAsDateTime(const QDateTime& value)
{
    if (!value.isValid())
        assign(std::monostate(), TFieldType::ftDateTime);
    else
        assign(value, TFieldType::ftDateTime);
}

void TParam::SetValue(const QVariant& value)
{
    if (!value.isValid() || value.isNull()) {
        assign(std::monostate(), TFieldType::ftUnknown);
        return;
    }
    switch (value.typeId()) {
    case QMetaType::QString:
    case QMetaType::QChar:
        SetAsString(value.toString());
        return;
    case QMetaType::QByteArray:
        SetAsString(QString::fromUtf8(value.toByteArray()));
        return;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Char:
        SetAsInteger(value.toLongLong());
        return;
    case QMetaType::ULongLong:
        if (value.toULongLong() > qulonglong(std::numeric_limits<qint64>::max()))
            paramConversionFailed(name_, value.toString(), "64-bit integer");
        SetAsInteger(value.toLongLong());
        return;
    case QMetaType::Double:
    case QMetaType::Float:
        SetAsFloat(value.toDouble());
        return;
    case QMetaType::Bool:
        SetAsBoolean(value.toBool());
        return;
    case QMetaType::QDateTime:
        SetAsDateTime(value.toDateTime());
        return;
    case QMetaType::QDate:
        assign(value.toDate().startOfDay(), TFieldType::ftDate);
        return;
    case QMetaType::QTime:
        assign(QDateTime(QDate(1899, 12, 30), value.toTime()), TFieldType::ftTime);
        return;
    default:
        throw DatabaseError(QString(),
            QStringLiteral("parameter \"%1\": values of type %2 cannot be bound")
                .arg(name_, QString::fromLatin1(value.typeName())));
    }
}

QString TParam::AsString() const
{
    struct Visitor
    {
        QString operator()(std::monostate) const { return {}; }
        QString operator()(qint64 v) const { return QString::number(v); }
        QString operator()(double v) const { return backend::formatFloat(v); }
        QString operator()(bool v) const { return v ? QStringLiteral("True") : QStringLiteral("False"); }
        QString operator()(const QString& v) const { return v; }
        QString operator()(const QDateTime& v) const
        {
            return backend::stampText(backend::stampFromDateTime(v), ValueClass::DateTime);
        }
    };
    return std::visit(Visitor {}, value_);
}

qint64 TParam::AsLargeInt() const
{
    qint64 result = 0;
    if (const auto* v = std::get_if<qint64>(&value_))
        return *v;
    if (const auto* v = std::get_if<double>(&value_)) {
        if (backend::roundToInteger(*v, result))
            return result;
    } else if (const auto* v = std::get_if<bool>(&value_)) {
        return *v ? 1 : 0;
    } else if (const auto* v = std::get_if<QString>(&value_)) {
        const QByteArray text = v->toUtf8();
        if (backend::parseInteger(text.constData(), text.size(), result))
            return result;
    } else if (IsNull()) {
        return 0;
    }
    paramConversionFailed(name_, AsString(), "integer");
}

int TParam::AsInteger() const
{
    const qint64 value = AsLargeInt();
    if (!backend::fitsInt(value))
        paramConversionFailed(name_, AsString(), "32-bit integer");
    return int(value);
}

double TParam::AsFloat() const
{
    if (const auto* v = std::get_if<qint64>(&value_))
        return double(*v);
    if (const auto* v = std::get_if<double>(&value_))
        return *v;
    if (const auto* v = std::get_if<bool>(&value_))
        return *v ? 1 : 0;
    if (const auto* v = std::get_if<QString>(&value_)) {
        const QByteArray text = v->toUtf8();
        double result = 0;
        if (backend::parseReal(text.constData(), text.size(), result))
            return result;
    } else if (IsNull()) {
        return 0;
    }
    paramConversionFailed(name_, AsString(), "float");
}

bool TParam::AsBoolean() const
{
    if (const auto* v = std::get_if<bool>(&value_))
        return *v;
    if (const auto* v = std::get_if<qint64>(&value_))
        return *v != 0;
    if (const auto* v = std::get_if<double>(&value_))
        return *v != 0;
    if (const auto* v = std::get_if<QString>(&value_)) {
        const QByteArray text = v->toUtf8();
        bool result = false;
        if (backend::parseBoolean(text.constData(), text.size(), result))
            return result;
    } else if (IsNull()) {
        return false;
    }
    paramConversionFailed(name_, AsString(), "boolean");
}

QDateTime TParam::AsDateTime() const
{
    if (const auto* v = std::get_if<QDateTime>(&value_))
        return *v;
    if (const auto* v = std::get_if<QString>(&value_)) {
        const QByteArray text = v->toUtf8();
        Stamp stamp;
        if (backend::parseStamp(text.constData(), text.size(), stamp))
            return backend::toDateTime(stamp);
    } else if (IsNull()) {
        return {};
    }
    paramConversionFailed(name_, AsString(), "date-time");
}

QVariant TParam::Value() const
{
    struct Visitor
    {
        QVariant operator()(std::monostate) const { return {}; }
        QVariant operator()(qint64 v) const
        {
            return backend::fitsInt(v) ? QVariant(int(v)) : QVariant(qlonglong(v));
        }
        QVariant operator()(double v) const { return v; }
        QVariant operator()(bool v) const { return v; }
        QVariant operator()(const QString& v) const { return v; }
        QVariant operator()(const QDateTime& v) const { return v; }
    };
    return std::visit(Visitor {}, value_);
}

const backend::Value& TParam::RawValue() const
{
    return value_;
}

void TParam::SetFromRaw(const backend::RawValue& value, TFieldType columnType)
{
    if (dataType_ == TFieldType::ftUnknown)
        dataType_ = columnType;
    bound_ = true;
    const ValueClass kind = backend::classOf(dataType_);
    value_ = std::monostate();
    if (value.kind == Kind::Null)
        return;
    if (kind == ValueClass::Integer) {
        if (const auto integer = backend::integerOf(value, kind))
            value_ = *integer;
    } else if (kind == ValueClass::Float) {
        if (const auto number = backend::realOf(value, kind))
            value_ = *number;
    } else if (kind == ValueClass::Boolean) {
        if (const auto truth = backend::truthOf(value))
            value_ = *truth;
    } else if (backend::isDateLike(kind)) {
        if (const auto stamp = backend::stampOf(value))
            value_ = backend::toDateTime(*stamp);
    }
    if (IsNull())
        value_ = backend::rawText(value); // text, or a value that does not match the declared type
}

TParams::TParams() = default;
TParams::~TParams() = default;

int TParams::Count() const
{
    return int(items_.size());
}

TParam& TParams::Items(int index)
{
    if (index < 0 || index >= Count())
        throw DatabaseError(QString(), QStringLiteral("parameter index %1 out of range").arg(index));
    return *items_[std::size_t(index)];
}

const TParam& TParams::Items(int index) const
{
    return const_cast<TParams*>(this)->Items(index);
}

TParam& TParams::CreateParam(TFieldType dataType, const QString& name, TParamType paramType)
{
    return *items_.emplace_back(std::make_unique<TParam>(name, dataType, paramType));
}

TParam* TParams::FindParam(QStringView name)
{
    // A save looks up some forty names among forty parameters: names of
    // another length are passed over before any case folding (Qt folds case
    // one UTF-16 unit for one, so equal names have equal lengths).
    for (const auto& param : items_) {
        const QString& own = param->Name();
        if (own.size() == name.size() && (own == name || own.compare(name, Qt::CaseInsensitive) == 0))
            return param.get();
    }
    return nullptr;
}

const TParam* TParams::FindParam(QStringView name) const
{
    return const_cast<TParams*>(this)->FindParam(name);
}

TParam& TParams::ParamByName(QStringView name)
{
    if (TParam* param = FindParam(name))
        return *param;
    throw DatabaseError(QString(), QStringLiteral("parameter \"%1\" not found").arg(name));
}

void TParams::Clear()
{
    items_.clear();
}

} // namespace qal
