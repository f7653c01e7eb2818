// SPDX-License-Identifier: MIT
// The message wire code page: OMS servers send and receive code page 950
// (Traditional Chinese) bytes; inside the process messages are Unicode. Hong
// Kong supplementary characters in client names, which 950 lacks, travel as
// Big5-HKSCS so that they are never turned into "?".
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include "qalpack/qalpack_export.h"

namespace qal::cp950 {

// Bytes from the wire to Unicode. Each character is decoded as code page 950
// and, where 950 has no mapping, as Big5-HKSCS (which may give a character
// outside the BMP, or a letter with a combining mark as two code points).
// A byte sequence neither knows becomes one U+FFFD and decoding goes on: a
// bad lead byte takes a following non-ASCII byte with it, but an ASCII byte
// (a "|" separator above all) is never swallowed, so nothing after a bad byte
// is lost. A lead byte cut off at the end becomes U+FFFD.
// Never throws on bad input.
[[nodiscard]] QALPACK_EXPORT QString decode(QByteArrayView bytes);

// Unicode to wire bytes: code page 950 first, Big5-HKSCS for characters 950
// lacks. A character that neither can carry (an emoji, a lone surrogate)
// throws qal::EncodingError naming the character ("U+1F600") and its
// position in `text` (0-based, in UTF-16 code units as QString counts them);
// nothing is returned then.
[[nodiscard]] QALPACK_EXPORT QByteArray encode(QStringView text);

} // namespace qal::cp950
