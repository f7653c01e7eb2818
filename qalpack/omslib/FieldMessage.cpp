// SPDX-License-Identifier: MIT
#include "qalpack/omslib/FieldMessage.h"

#include <algorithm>
#include <optional>

#include "qalpack/omslib/CodePage950.h"
#include "qalpack/omslib/LineParser.h"
#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/Exception.h"

namespace qal {

namespace {

constexpr QChar kSeparator = u'|';

QString imageWord()
{
    return QStringLiteral("image");
}

QString updateWord()
{
    return QStringLiteral("update");
}

void requireNoSeparator(const QString& text, const char* what)
{
    if (text.contains(kSeparator))
        throw Error(QStringLiteral("TFieldMessage: %1 \"%2\" holds the field separator \"|\"")
                        .arg(QLatin1StringView(what), text));
}

[[noreturn]] void badText(QStringView text, const QString& why)
{
    throw Error(QStringLiteral("TFieldMessage: %1 in \"%2\"").arg(why, text.toString()));
}

// A tag is written in plain decimal digits; signs, blanks and hexadecimal
// forms are not tags.
std::optional<int> tagOf(QStringView token)
{
    if (token.isEmpty() || token.size() > 9)
        return std::nullopt;
    int tag = 0;
    for (const QChar c : token) {
        if (c < u'0' || c > u'9')
            return std::nullopt;
        tag = tag * 10 + (c.unicode() - u'0');
    }
    return tag;
}

} // namespace

TFieldMessage::TFieldMessage(const QString& topic, bool image)
    : image_(image)
{
    SetTopic(topic);
}

TFieldMessage TFieldMessage::Parse(QStringView text)
{
    LineParser parser(text, kSeparator);
    TFieldMessage message;
    const auto kind = parser.next();
    if (kind && kind->compare(imageWord(), Qt::CaseInsensitive) == 0)
        message.image_ = true;
    else if (kind && kind->compare(updateWord(), Qt::CaseInsensitive) == 0)
        message.image_ = false;
    else
        badText(text, QStringLiteral("the record kind is neither \"image\" nor \"update\""));
    const auto topic = parser.next();
    if (!topic)
        badText(text, QStringLiteral("no topic"));
    message.topic_ = topic->toString();
    while (const auto token = parser.next()) {
        const auto tag = tagOf(*token);
        if (!tag)
            badText(text, QStringLiteral("tag \"%1\" is not a whole number").arg(token->toString()));
        const auto value = parser.next();
        if (!value)
            badText(text, QStringLiteral("tag %1 has no value").arg(*tag));
        message.SetField(*tag, value->toString());
    }
    return message;
}

TFieldMessage TFieldMessage::FromWire(QByteArrayView bytes)
{
    return Parse(cp950::decode(bytes));
}

QString TFieldMessage::ToString() const
{
    QString text = (image_ ? imageWord() : updateWord()) + kSeparator + topic_ + kSeparator;
    for (const auto& [tag, value] : fields_)
        text += QString::number(tag) + kSeparator + value + kSeparator;
    return text;
}

QByteArray TFieldMessage::ToWire() const
{
    return cp950::encode(ToString());
}

void TFieldMessage::SetTopic(const QString& topic)
{
    requireNoSeparator(topic, "topic");
    topic_ = topic;
}

bool TFieldMessage::HasField(int tag) const noexcept
{
    return find(tag) != nullptr;
}

QString TFieldMessage::GetField(int tag) const
{
    const QString* value = find(tag);
    return value != nullptr ? *value : QString();
}

int TFieldMessage::GetFieldInt(int tag, int fallback) const
{
    const QString* value = find(tag);
    return value != nullptr ? StrToIntDef(*value, fallback) : fallback;
}

void TFieldMessage::SetField(int tag, const QString& value)
{
    if (tag < 0)
        throw Error(QStringLiteral("TFieldMessage: tag %1 is negative").arg(tag));
    requireNoSeparator(value, "value");
    const auto found = std::find_if(
        fields_.begin(), fields_.end(), [tag](const auto& field) { return field.first == tag; });
    if (found != fields_.end())
        found->second = value;
    else
        fields_.emplace_back(tag, value);
}

void TFieldMessage::SetField(int tag, int value)
{
    SetField(tag, QString::number(value));
}

bool TFieldMessage::RemoveField(int tag)
{
    const auto found = std::find_if(
        fields_.begin(), fields_.end(), [tag](const auto& field) { return field.first == tag; });
    if (found == fields_.end())
        return false;
    fields_.erase(found);
    return true;
}

QList<int> TFieldMessage::Tags() const
{
    QList<int> tags;
    tags.reserve(FieldCount());
    for (const auto& field : fields_)
        tags.append(field.first);
    return tags;
}

const QString* TFieldMessage::find(int tag) const noexcept
{
    for (const auto& field : fields_) {
        if (field.first == tag)
            return &field.second;
    }
    return nullptr;
}

} // namespace qal
