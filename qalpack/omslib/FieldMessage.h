// SPDX-License-Identifier: MIT
// TFieldMessage: one tagged record as it travels on the publish/subscribe bus,
// "image|USER_D001|13|D001|10|DESK7|": its kind, its topic, then numeric tags
// with their values, in the order they were written.
#pragma once

#include <utility>
#include <vector>

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringView>

#include "qalpack/qalpack_export.h"

namespace qal {

// A record for one topic. An image carries the whole record; an update
// carries only the fields that changed, so a subscriber that needs the whole
// record (the single-logon watch) looks at images only.
//
// Text form: the kind ("image" or "update"), the topic, then tag and value
// pairs, every field followed by "|". Tags are whole numbers from 0; values
// and the topic may be empty but can never hold "|", the separator. Fields
// keep the order in which they were first set.
class QALPACK_EXPORT TFieldMessage
{
public:
    // An image with no topic and no fields.
    TFieldMessage() = default;
    // An empty record for `topic`. Throws qal::Error when the topic holds "|".
    explicit TFieldMessage(const QString& topic, bool image = true);

    // The record that `text` spells. The kind is matched without regard to
    // case; a tag that appears twice keeps its first position and its last
    // value. Throws qal::Error quoting the text when the kind is neither
    // "image" nor "update", the topic is missing, a tag is not a whole
    // number from 0, or the last tag has no value.
    [[nodiscard]] static TFieldMessage Parse(QStringView text);
    // The same from wire bytes in code page 950 (cp950::decode).
    [[nodiscard]] static TFieldMessage FromWire(QByteArrayView bytes);

    // The text form, "|" after every field: "image|T|13|D001|".
    [[nodiscard]] QString ToString() const;
    // ToString in code page 950. Throws qal::EncodingError for a character
    // the code page cannot carry.
    [[nodiscard]] QByteArray ToWire() const;

    [[nodiscard]] const QString& Topic() const noexcept { return topic_; }
    // Throws qal::Error when the topic holds "|".
    void SetTopic(const QString& topic);
    [[nodiscard]] bool IsImage() const noexcept { return image_; }
    void SetImage(bool image) noexcept { image_ = image; }

    [[nodiscard]] bool HasField(int tag) const noexcept;
    // The value of `tag`; empty when the record has no such field.
    [[nodiscard]] QString GetField(int tag) const;
    // The value read leniently as a whole number: `fallback` when the field
    // is missing or is not a number.
    [[nodiscard]] int GetFieldInt(int tag, int fallback = 0) const;
    // Sets `tag` to `value`: in place when present, else at the end. Throws
    // qal::Error for a negative tag or a value holding "|".
    void SetField(int tag, const QString& value);
    void SetField(int tag, int value);
    // Removes `tag`; false when the record has no such field.
    bool RemoveField(int tag);
    void ClearFields() noexcept { fields_.clear(); }

    [[nodiscard]] int FieldCount() const noexcept { return static_cast<int>(fields_.size()); }
    // The tags in field order.
    [[nodiscard]] QList<int> Tags() const;

    friend bool operator==(const TFieldMessage&, const TFieldMessage&) = default;

private:
    [[nodiscard]] const QString* find(int tag) const noexcept;

    QString topic_;
    std::vector<std::pair<int, QString>> fields_;
    bool image_ = true;
};

} // namespace qal
