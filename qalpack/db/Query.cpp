// SPDX-License-Identifier: MIT
#include "qalpack/db/Query.h"

#include <cmath>
#include <limits>
#include <optional>

#include <QDate>
#include <QTime>

#include "qalpack/db/Database.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/RepeatedText.h"
#include "qalpack/db/Session.h"
#include "qalpack/db/ValueText.h"

namespace qal {

using backend::RawValue;
using backend::Stamp;
using backend::ValueClass;
using Kind = backend::RawValue::Kind;

namespace {

char16_t codeUnit(QChar c)
{
    return c.unicode();
}

char16_t codeUnit(char c)
{
    return char16_t(static_cast<unsigned char>(c));
}

// A hash of a name that ignores the case of ASCII letters, equal for a name
// in UTF-16, UTF-8 or Latin-1. Other characters do not take part; a look-up
// that misses compares every name in full before giving up.
quint32 foldedHash(QAnyStringView name)
{
    return name.visit([](auto view) {
        quint32 hash = 2166136261u;
        for (auto unit : view) {
            char16_t c = codeUnit(unit);
            if (c >= 128)
                continue;
            if (c >= u'A' && c <= u'Z')
                c = char16_t(c - u'A' + u'a');
            hash = (hash ^ c) * 16777619u;
        }
        return hash;
    });
}

char16_t foldAscii(char16_t c)
{
    return c >= u'A' && c <= u'Z' ? char16_t(c - u'A' + u'a') : c;
}

// Whether a field name equals `name` without regard to case. Column names
// are ASCII nearly always: those compare unit by unit, anything else through
// Qt's full case folding.
bool sameName(const QString& fieldName, QAnyStringView name)
{
    const int ascii = name.visit([&](auto view) {
        if (view.size() != fieldName.size())
            return -1;
        const QChar* field = fieldName.constData();
        qsizetype i = 0;
        for (auto unit : view) {
            const char16_t c = codeUnit(unit);
            const char16_t f = field[i++].unicode();
            if (c >= 128 || f >= 128)
                return -1;
            if (foldAscii(c) != foldAscii(f))
                return 0;
        }
        return 1;
    });
    if (ascii >= 0)
        return ascii == 1;
    return QAnyStringView::compare(fieldName, name, Qt::CaseInsensitive) == 0;
}

bool roundToInteger(double value, qint64& result)
{
    if (!std::isfinite(value))
        return false;
    const double rounded = std::nearbyint(value);
    if (rounded < -9.2233720368547e18 || rounded > 9.2233720368547e18)
        return false;
    result = qint64(rounded);
    return true;
}

bool fitsInt(qint64 value)
{
    return value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max();
}

QString rawText(const RawValue& value)
{
    switch (value.kind) {
    case Kind::Null:
        return {};
    case Kind::Integer:
        return QString::number(value.integer);
    case Kind::Real:
        return backend::formatFloat(value.real);
    case Kind::Text:
        break;
    }
    return QString::fromUtf8(value.text, value.size);
}

bool isIdentifierStart(QChar c)
{
    return c.isLetter() || c == u'_';
}

bool isIdentifierChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_';
}

// Where a dollar-quoted text ("$body$ ... $body$") starting at `at` ends, or
// -1 when `at` does not open one.
qsizetype dollarQuoteEnd(QStringView sql, qsizetype at)
{
    if (at > 0 && (isIdentifierChar(sql[at - 1]) || sql[at - 1] == u'$'))
        return -1;
    qsizetype i = at + 1;
    if (i < sql.size() && isIdentifierStart(sql[i])) {
        while (i < sql.size() && isIdentifierChar(sql[i]))
            ++i;
    }
    if (i >= sql.size() || sql[i] != u'$')
        return -1;
    const QStringView tag = sql.mid(at, i - at + 1);
    const qsizetype close = sql.indexOf(tag, i + 1);
    return close < 0 ? sql.size() : close + tag.size();
}

// Decoders of a non-null driver value into what a reader asks for; empty
// when the value is not of that kind. `kind` is the field's class: text in a
// float field may be "12.5" when an integer is asked for, in a boolean field
// "t" when a number is.
std::optional<qint64> integerOf(const RawValue& value, ValueClass kind)
{
    qint64 result = 0;
    if (value.kind == Kind::Integer)
        return value.integer;
    if (value.kind == Kind::Real)
        return roundToInteger(value.real, result) ? std::optional(result) : std::nullopt;
    if (value.kind != Kind::Text)
        return std::nullopt;
    if (backend::parseInteger(value.text, value.size, result))
        return result;
    double number = 0;
    if (kind == ValueClass::Float && backend::parseReal(value.text, value.size, number)
        && roundToInteger(number, result))
        return result;
    bool truth = false;
    if (kind == ValueClass::Boolean && backend::parseBoolean(value.text, value.size, truth))
        return truth ? 1 : 0;
    return std::nullopt;
}

std::optional<double> realOf(const RawValue& value, ValueClass kind)
{
    if (value.kind == Kind::Integer)
        return double(value.integer);
    if (value.kind == Kind::Real)
        return value.real;
    if (value.kind != Kind::Text)
        return std::nullopt;
    double number = 0;
    if (backend::parseReal(value.text, value.size, number))
        return number;
    bool truth = false;
    if (kind == ValueClass::Boolean && backend::parseBoolean(value.text, value.size, truth))
        return truth ? 1.0 : 0.0;
    return std::nullopt;
}

std::optional<bool> truthOf(const RawValue& value)
{
    bool truth = false;
    if (value.kind == Kind::Integer)
        return value.integer != 0;
    if (value.kind == Kind::Real)
        return value.real != 0;
    if (value.kind == Kind::Text && backend::parseBoolean(value.text, value.size, truth))
        return truth;
    return std::nullopt;
}

// Date-times come as text from both drivers; SQLite may also hold them as a
// Julian day number (REAL) or as seconds since 1970 (INTEGER).
std::optional<Stamp> stampOf(const RawValue& value)
{
    Stamp stamp;
    if (value.kind == Kind::Integer)
        return backend::stampFromUnixSeconds(double(value.integer));
    if (value.kind == Kind::Real)
        return backend::stampFromJulianDay(value.real);
    if (value.kind == Kind::Text && backend::parseStamp(value.text, value.size, stamp))
        return stamp;
    return std::nullopt;
}

bool isDateLike(ValueClass kind)
{
    return kind == ValueClass::Date || kind == ValueClass::Time || kind == ValueClass::DateTime;
}

// What `read` makes of `value`, or nothing when it is null.
template<class Read>
auto unlessNull(const RawValue& value, Read read) -> std::optional<decltype(read(value))>
{
    if (value.kind == Kind::Null)
        return std::nullopt;
    return read(value);
}

} // namespace

QString FormatDateTime(QStringView format, const QDateTime& value)
{
    if (!value.isValid())
        return {};
    return backend::formatStamp(format, backend::stampFromDateTime(value));
}

// --- TField ---

TField::TField(const TQuery& query, const backend::Cursor& cursor, int index)
    : query_(query)
    , cursor_(cursor)
    , name_(cursor.columnName(index))
    , type_(cursor.columnType(index))
    , class_(backend::classOf(type_))
    , index_(index)
    , hash_(foldedHash(name_))
{ }

TField::~TField() = default;

const QString& TField::FieldName() const
{
    return name_;
}

TFieldType TField::DataType() const
{
    return type_;
}

int TField::Index() const
{
    return index_;
}

RawValue TField::raw() const
{
    return cursor_.value(index_);
}

void TField::conversionFailed(const RawValue& value, const char* target) const
{
    throw DatabaseError(query_.errorName(),
        QStringLiteral("field \"%1\": \"%2\" is not a valid %3")
            .arg(name_, rawText(value), QLatin1String(target)));
}

bool TField::IsNull() const
{
    return raw().kind == Kind::Null;
}

QString TField::AsString() const
{
    return textOf(raw());
}

std::optional<QString> TField::AsOptionalString() const
{
    return unlessNull(raw(), [this](const RawValue& value) { return textOf(value); });
}

QString TField::textOf(const RawValue& value) const
{
    if (value.kind == Kind::Null)
        return {};
    if (class_ == ValueClass::Boolean) {
        if (const auto truth = truthOf(value))
            return *truth ? QStringLiteral("True") : QStringLiteral("False");
    } else if (class_ == ValueClass::Float && value.kind == Kind::Text) {
        if (const auto number = realOf(value, class_))
            return backend::formatFloat(*number);
    } else if (isDateLike(class_)) {
        if (const auto stamp = stampOf(value))
            return backend::stampText(*stamp, class_);
    }
    if (repeated_ && value.kind == Kind::Text)
        return repeated_->text(value.text, value.size);
    return rawText(value);
}

void TField::SetShareRepeatedText(bool share)
{
    if (!share)
        repeated_.reset();
    else if (!repeated_)
        repeated_ = std::make_unique<backend::RepeatedText>();
}

qint64 TField::AsLargeInt() const
{
    return integerValue(raw());
}

qint64 TField::integerValue(const RawValue& value) const
{
    if (value.kind == Kind::Null)
        return 0;
    if (const auto integer = integerOf(value, class_))
        return *integer;
    conversionFailed(value, "integer");
}

int TField::AsInteger() const
{
    return intValue(raw());
}

std::optional<int> TField::AsOptionalInteger() const
{
    return unlessNull(raw(), [this](const RawValue& value) { return intValue(value); });
}

int TField::intValue(const RawValue& value) const
{
    const qint64 integer = integerValue(value);
    if (!fitsInt(integer))
        conversionFailed(value, "32-bit integer");
    return int(integer);
}

double TField::AsFloat() const
{
    return floatValue(raw());
}

std::optional<double> TField::AsOptionalFloat() const
{
    return unlessNull(raw(), [this](const RawValue& value) { return floatValue(value); });
}

double TField::floatValue(const RawValue& value) const
{
    if (value.kind == Kind::Null)
        return 0;
    if (const auto number = realOf(value, class_))
        return *number;
    conversionFailed(value, "float");
}

bool TField::AsBoolean() const
{
    const RawValue value = raw();
    if (value.kind == Kind::Null)
        return false;
    if (const auto truth = truthOf(value))
        return *truth;
    conversionFailed(value, "boolean");
}

QDateTime TField::AsDateTime() const
{
    const RawValue value = raw();
    if (value.kind == Kind::Null)
        return {};
    if (const auto stamp = stampOf(value))
        return backend::toDateTime(*stamp);
    conversionFailed(value, "date-time");
}

QVariant TField::Value() const
{
    const RawValue value = raw();
    if (value.kind == Kind::Null)
        return {};
    switch (class_) {
    case ValueClass::Integer:
        if (const auto integer = integerOf(value, class_)) {
            if (type_ != TFieldType::ftLargeint && fitsInt(*integer))
                return int(*integer);
            return qlonglong(*integer);
        }
        break;
    case ValueClass::Float:
        if (const auto number = realOf(value, class_))
            return *number;
        break;
    case ValueClass::Boolean:
        if (const auto truth = truthOf(value))
            return *truth;
        break;
    case ValueClass::Date:
    case ValueClass::Time:
    case ValueClass::DateTime:
        if (const auto stamp = stampOf(value)) {
            const QDateTime dateTime = backend::toDateTime(*stamp);
            if (class_ == ValueClass::Date)
                return dateTime.date();
            if (class_ == ValueClass::Time)
                return dateTime.time();
            return dateTime;
        }
        break;
    case ValueClass::Text:
    case ValueClass::Binary:
        break;
    }
    // A value that does not match the column's type (SQLite stores what it
    // is given) is boxed as it is.
    if (value.kind == Kind::Integer)
        return qlonglong(value.integer);
    if (value.kind == Kind::Real)
        return value.real;
    return QString::fromUtf8(value.text, value.size);
}

const QString& TField::DisplayFormat() const
{
    return displayFormat_;
}

void TField::SetDisplayFormat(const QString& format)
{
    displayFormat_ = format;
}

QString TField::DisplayText() const
{
    const RawValue value = raw();
    if (value.kind == Kind::Null)
        return {};
    // A display format also lays out date-times kept in a text column.
    const bool dateLike = isDateLike(class_);
    if (dateLike || (class_ == ValueClass::Text && value.kind == Kind::Text && !displayFormat_.isEmpty())) {
        const auto stamp = stampOf(value);
        if (!stamp)
            return rawText(value);
        if (displayFormat_.isEmpty())
            return backend::stampText(*stamp, class_);
        return backend::formatStamp(displayFormat_, *stamp);
    }
    return AsString();
}

// --- TParam ---

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
    assign(value, fitsInt(value) ? TFieldType::ftInteger : TFieldType::ftLargeint);
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
        if (roundToInteger(*v, result))
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
    if (!fitsInt(value))
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
        QVariant operator()(qint64 v) const { return fitsInt(v) ? QVariant(int(v)) : QVariant(qlonglong(v)); }
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
        if (const auto integer = integerOf(value, kind))
            value_ = *integer;
    } else if (kind == ValueClass::Float) {
        if (const auto number = realOf(value, kind))
            value_ = *number;
    } else if (kind == ValueClass::Boolean) {
        if (const auto truth = truthOf(value))
            value_ = *truth;
    } else if (isDateLike(kind)) {
        if (const auto stamp = stampOf(value))
            value_ = backend::toDateTime(*stamp);
    }
    if (IsNull())
        value_ = rawText(value); // text, or a value that does not match the declared type
}

// --- TParams ---

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
    for (const auto& param : items_) {
        if (param->Name().compare(name, Qt::CaseInsensitive) == 0)
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

// --- TQuery ---

// The SQL text cut at its ":name" parameters.
struct TQuery::Statement
{
    QString source;
    QStringList pieces; // text before each parameter, and the text after the last
    std::vector<int> positions; // the parameter (index into names) after each piece
    QStringList names; // distinct names, in order of first use

    void parse(const QString& sql)
    {
        source = sql;
        const QStringView text(sql);
        qsizetype pieceStart = 0;
        qsizetype i = 0;
        auto skipTo = [&](QStringView close, qsizetype from) {
            const qsizetype at = text.indexOf(close, from);
            i = at < 0 ? text.size() : at + close.size();
        };
        while (i < text.size()) {
            const QChar c = text[i];
            const QChar next = i + 1 < text.size() ? text[i + 1] : QChar();
            if (c == u'\'' || c == u'"') {
                skipTo(QStringView(&c, 1), i + 1);
            } else if (c == u'-' && next == u'-') {
                skipTo(u"\n", i + 2);
            } else if (c == u'/' && next == u'*') {
                skipTo(u"*/", i + 2);
            } else if (c == u'$' && dollarQuoteEnd(text, i) >= 0) {
                i = dollarQuoteEnd(text, i);
            } else if (c == u':' && next == u':') {
                i += 2;
            } else if (c == u':' && isIdentifierStart(next)) {
                qsizetype end = i + 1;
                while (end < text.size() && isIdentifierChar(text[end]))
                    ++end;
                const QString name = text.mid(i + 1, end - i - 1).toString();
                qsizetype slot = -1;
                for (qsizetype n = 0; n < names.size(); ++n) {
                    if (names[n].compare(name, Qt::CaseInsensitive) == 0)
                        slot = n;
                }
                if (slot < 0) {
                    slot = names.size();
                    names.append(name);
                }
                pieces.append(text.mid(pieceStart, i - pieceStart).toString());
                positions.push_back(int(slot));
                pieceStart = i = end;
            } else {
                ++i;
            }
        }
        pieces.append(text.mid(pieceStart).toString());
    }

    [[nodiscard]] QString textFor(const backend::Connection& connection) const
    {
        QString text = pieces.front();
        for (std::size_t n = 0; n < positions.size(); ++n)
            text += connection.placeholder(positions[n]) + pieces[qsizetype(n) + 1];
        return text;
    }
};

TQuery::TQuery(QObject* owner)
    : QObject(owner)
{ }

TQuery::~TQuery()
{
    Close();
}

const QString& TQuery::DatabaseName() const
{
    return databaseName_;
}

void TQuery::SetDatabaseName(const QString& name)
{
    if (name == databaseName_)
        return;
    Close();
    databaseName_ = name;
}

TStringList& TQuery::SQL()
{
    return sql_;
}

const TStringList& TQuery::SQL() const
{
    return sql_;
}

const TQuery::Statement& TQuery::statement()
{
    const QString text = sql_.toQStringList().join(u'\n');
    if (statement_ && statement_->source == text)
        return *statement_;
    auto parsed = std::make_unique<Statement>();
    parsed->parse(text);
    // The parameter list follows the new text; values of names that stay are kept.
    TParams kept;
    for (const QString& name : std::as_const(parsed->names)) {
        if (TParam* old = params_.FindParam(name))
            kept.items_.push_back(std::make_unique<TParam>(std::move(*old)));
        else
            kept.CreateParam(TFieldType::ftUnknown, name, TParamType::ptInput);
    }
    params_.items_ = std::move(kept.items_);
    statement_ = std::move(parsed);
    return *statement_;
}

TParams& TQuery::Params()
{
    statement();
    return params_;
}

TParam& TQuery::ParamByName(QStringView name)
{
    statement();
    if (TParam* param = params_.FindParam(name))
        return *param;
    throw DatabaseError(errorName(), QStringLiteral("parameter \"%1\" not found in the query").arg(name));
}

QString TQuery::errorName() const
{
    return databaseName_.isEmpty() ? QStringLiteral("(no database name)") : databaseName_;
}

TDatabase& TQuery::database()
{
    if (databaseName_.isEmpty())
        throw DatabaseError(errorName(), QStringLiteral("the query names no database"));
    return TSession::Default().OpenDatabase(databaseName_);
}

std::vector<backend::Value> TQuery::boundValues(const Statement& statement) const
{
    std::vector<backend::Value> values;
    values.reserve(std::size_t(statement.names.size()));
    for (const QString& name : statement.names) {
        const TParam* param = params_.FindParam(name);
        if (!param || !param->Bound())
            throw DatabaseError(errorName(), QStringLiteral("no value for parameter \"%1\"").arg(name));
        values.push_back(param->RawValue());
    }
    return values;
}

void TQuery::Open()
{
    if (cursor_)
        return;
    const Statement& parsed = statement();
    if (parsed.source.trimmed().isEmpty())
        throw DatabaseError(errorName(), QStringLiteral("the query has no SQL statement"));
    TDatabase& db = database();
    const std::vector<backend::Value> values = boundValues(parsed);
    std::unique_ptr<backend::Cursor> cursor
        = db.connection().openCursor(parsed.textFor(db.connection()), values);
    const bool hasRow = cursor->next();
    if (cursor->columnCount() == 0)
        throw DatabaseError(
            errorName(), QStringLiteral("the statement returns no rows to open; run it with ExecSQL"));
    std::vector<std::unique_ptr<TField>> fields;
    fields.reserve(std::size_t(cursor->columnCount()));
    for (int column = 0; column < cursor->columnCount(); ++column)
        fields.push_back(std::unique_ptr<TField>(new TField(*this, *cursor, column)));
    cursor_ = std::move(cursor);
    fields_ = std::move(fields);
    eof_ = !hasRow;
    atFirst_ = true;
    database_ = &db;
    db.attach(this);
}

void TQuery::ExecSQL()
{
    const Statement& parsed = statement();
    if (parsed.source.trimmed().isEmpty())
        throw DatabaseError(errorName(), QStringLiteral("the query has no SQL statement"));
    TDatabase& db = database();
    const std::vector<backend::Value> values = boundValues(parsed);
    rowsAffected_ = db.connection().execute(parsed.textFor(db.connection()), values);
}

qint64 TQuery::RowsAffected() const
{
    return rowsAffected_;
}

void TQuery::Close()
{
    fields_.clear();
    cursor_.reset();
    nextField_ = 0;
    eof_ = true;
    atFirst_ = false;
    if (database_)
        database_->detach(this);
    database_ = nullptr;
}

bool TQuery::Active() const
{
    return cursor_ != nullptr;
}

void TQuery::First()
{
    if (!cursor_)
        throw DatabaseError(errorName(), QStringLiteral("the query is not open"));
    if (atFirst_)
        return;
    cursor_->rewind();
    eof_ = !cursor_->next();
    atFirst_ = true;
}

void TQuery::Next()
{
    if (!cursor_)
        throw DatabaseError(errorName(), QStringLiteral("the query is not open"));
    if (eof_)
        return;
    eof_ = !cursor_->next();
    atFirst_ = false;
}

bool TQuery::Eof() const
{
    return eof_;
}

int TQuery::FieldCount() const
{
    return int(fields_.size());
}

TField& TQuery::Fields(int index) const
{
    if (index < 0 || index >= FieldCount())
        throw DatabaseError(errorName(), QStringLiteral("field index %1 out of range").arg(index));
    return *fields_[std::size_t(index)];
}

TField* TQuery::FindField(QAnyStringView name) const
{
    // Loaders read the same columns in the same order on every row: the
    // field after the one found last is tried first and usually matches.
    const std::size_t count = fields_.size();
    if (count == 0)
        return nullptr;
    const std::size_t hint = nextField_ % count;
    if (sameName(fields_[hint]->name_, name)) {
        nextField_ = hint + 1;
        return fields_[hint].get();
    }
    const quint32 hash = foldedHash(name);
    for (std::size_t at = 0; at < count; ++at) {
        const TField& field = *fields_[at];
        if (field.hash_ == hash && sameName(field.name_, name)) {
            nextField_ = at + 1;
            return fields_[at].get();
        }
    }
    for (const auto& field : fields_) {
        if (sameName(field->name_, name))
            return field.get();
    }
    return nullptr;
}

TField& TQuery::FieldByName(QAnyStringView name) const
{
    if (TField* field = FindField(name))
        return *field;
    throw DatabaseError(errorName(), QStringLiteral("field \"%1\" not found").arg(name.toString()));
}

void TQuery::GetFieldNames(TStringList& into) const
{
    into.Clear();
    for (const auto& field : fields_)
        into.Add(field->name_);
}

QStringList TQuery::FieldNames() const
{
    QStringList names;
    for (const auto& field : fields_)
        names.append(field->name_);
    return names;
}

} // namespace qal
