// SPDX-License-Identifier: MIT
// The wire code page both ways. Bytes: decoding never fails, and text that
// decodes from the wire and encodes again decodes to the same text. Text (the
// input as UTF-8): whatever encodes, decodes and encodes to the same bytes.
// Characters the code page cannot carry must raise EncodingError, nothing
// else.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <QByteArray>
#include <QString>

#include "qalpack/omslib/CodePage950.h"
#include "qalpack/runtime/Exception.h"

namespace {

[[noreturn]] void fail(const char* what, const QByteArray& a, const QByteArray& b)
{
    std::fprintf(
        stderr, "%s\n  first:  %s\n  second: %s\n", what, a.toHex(' ').constData(), b.toHex(' ').constData());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));

    const QString decoded = qal::cp950::decode(bytes);
    try {
        const QByteArray encoded = qal::cp950::encode(decoded);
        if (qal::cp950::decode(encoded) != decoded)
            fail("wire text does not survive a round trip", bytes.toByteArray(), encoded);
    } catch (const qal::EncodingError&) {
        // A byte neither code page knows decodes to U+FFFD, which none carries.
    }

    const QString text = QString::fromUtf8(bytes);
    try {
        const QByteArray encoded = qal::cp950::encode(text);
        const QByteArray again = qal::cp950::encode(qal::cp950::decode(encoded));
        if (again != encoded)
            fail("encoded text does not survive a round trip", encoded, again);
    } catch (const qal::EncodingError&) { }
    return 0;
}
