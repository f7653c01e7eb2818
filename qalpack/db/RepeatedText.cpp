// SPDX-License-Identifier: MIT
#include "qalpack/db/RepeatedText.h"

namespace qal::backend {

namespace {

bool sameAscii(const QString& text, const char* bytes, qsizetype size)
{
    if (text.size() != size)
        return false;
    const QChar* chars = text.constData();
    for (qsizetype i = 0; i < size; ++i) {
        if (chars[i].unicode() != char16_t(static_cast<unsigned char>(bytes[i])))
            return false;
    }
    return true;
}

} // namespace

QString RepeatedText::text(const char* bytes, qsizetype size)
{
    if (!looking_ || size == 0 || size > kLongest)
        return QString::fromUtf8(bytes, size);

    // FNV-1a over the bytes; any byte above 0x7f marks text that is not
    // plain ASCII, which is converted and not kept.
    std::uint32_t hash = 2166136261U;
    unsigned char high = 0;
    for (qsizetype i = 0; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        high |= byte;
        hash = (hash ^ byte) * 16777619U;
    }
    if (high & 0x80)
        return QString::fromUtf8(bytes, size);

    ++looks_;
    QString& slot = slots_[(hash ^ (hash >> 16)) % kSlots];
    QString text = sameAscii(slot, bytes, size) ? slot : QString::fromLatin1(bytes, size);
    if (text.constData() == slot.constData())
        ++hits_;
    else
        slot = text;
    if (looks_ == kTrialLooks && hits_ < kTrialHits) {
        looking_ = false;
        slots_ = {};
    }
    return text;
}

} // namespace qal::backend
