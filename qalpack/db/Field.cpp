// SPDX-License-Identifier: MIT
#include "qalpack/db/Field.h"

#include <QDate>
#include <QTime>

#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/Query.h"
#include "qalpack/db/RepeatedText.h"
#include "qalpack/db/ValueText.h"

namespace qal {

using backend::RawValue;
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

char16_t foldAscii(char16_t c)
{
    return c >= u'A' && c <= u'Z' ? char16_t(c - u'A' + u'a') : c;
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

namespace internal {

quint32 foldedHash(QAnyStringView name)
{
    return name.visit([](auto view) {
        quint32 hash = 2166136261u;
        for (auto unit : view) {
            const char16_t c = codeUnit(unit);
            if (c < 128)
                hash = (hash ^ foldAscii(c)) * 16777619u;
        }
        return hash;
    });
}

// Column names are ASCII nearly always: those compare unit by unit, anything else through
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

} // namespace internal

QString FormatDateTime(QStringView format, const QDateTime& value)
{
    if (!value.isValid())
        return {};
    return backend::formatStamp(format, backend::stampFromDateTime(value));
}

TField::TField(const TQuery& query, const backend::Cursor& cursor, int index)
    : query_(query)
    , cursor_(cursor)
    , name_(cursor.columnName(index))
    , type_(cursor.columnType(index))
    , class_(backend::classOf(type_))
    , index_(index)
    , hash_(internal::foldedHash(name_))
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
            .arg(name_, backend::rawText(value), QLatin1String(target)));
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
        if (const auto truth = backend::truthOf(value))
            return *truth ? QStringLiteral("True") : QStringLiteral("False");
    } else if (class_ == ValueClass::Float && value.kind == Kind::Text) {
        if (const auto number = backend::realOf(value, class_))
            return backend::formatFloat(*number);
    } else if (backend::isDateLike(class_)) {
        if (const auto stamp = backend::stampOf(value))
            return backend::stampText(*stamp, class_);
    }
    if (repeated_ && value.kind == Kind::Text)
        return repeated_->text(value.text, value.size);
    return backend::rawText(value);
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
    if (const auto integer = backend::integerOf(value, class_))
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
    if (!backend::fitsInt(integer))
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
    if (const auto number = backend::realOf(value, class_))
        return *number;
    conversionFailed(value, "float");
}

bool TField::AsBoolean() const
{
    const RawValue value = raw();
    if (value.kind == Kind::Null)
        return false;
    if (const auto truth = backend::truthOf(value))
        return *truth;
    conversionFailed(value, "boolean");
}

QDateTime TField::AsDateTime() const
{
    const RawValue value = raw();
    if (value.kind == Kind::Null)
        return {};
    if (const auto stamp = backend::stampOf(value))
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
        if (const auto integer = backend::integerOf(value, class_)) {
            if (type_ != TFieldType::ftLargeint && backend::fitsInt(*integer))
                return int(*integer);
            return qlonglong(*integer);
        }
        break;
    case ValueClass::Float:
        if (const auto number = backend::realOf(value, class_))
            return *number;
        break;
    case ValueClass::Boolean:
        if (const auto truth = backend::truthOf(value))
            return *truth;
        break;
    case ValueClass::Date:
    case ValueClass::Time:
    case ValueClass::DateTime:
        if (const auto stamp = backend::stampOf(value)) {
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
    const bool dateLike = backend::isDateLike(class_);
    if (dateLike || (class_ == ValueClass::Text && value.kind == Kind::Text && !displayFormat_.isEmpty())) {
        const auto stamp = backend::stampOf(value);
        if (!stamp)
            return backend::rawText(value);
        if (displayFormat_.isEmpty())
            return backend::stampText(*stamp, class_);
        return backend::formatStamp(displayFormat_, *stamp);
    }
    return AsString();
}

} // namespace qal
