// SPDX-License-Identifier: MIT
// Records from arbitrary messages: an exchange order, a client order or a
// trade is built from the text, written back and read again, twice. The
// record read back from its own message must write that message again and
// the record read from that must hold the same published fields: whatever
// the writer writes, the reader takes back unchanged.
// The first byte picks the record ('O' client order, 'T' trade, anything
// else exchange order); the rest is the message, as UTF-8.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <QMetaProperty>
#include <QString>

#include "qalpack/model/exchData.h"
#include "qalpack/model/omsData.h"

namespace {

template<typename Record>
void fail(const char* what, const Record& a, const Record& b, const QString& detail)
{
    std::fprintf(stderr, "%s: %s\n  first:  %s\n  second: %s\n", what, qPrintable(detail),
        qPrintable(a.DDSImageMessage()), qPrintable(b.DDSImageMessage()));
    std::abort();
}

template<typename Record>
void roundTrip(const QString& message)
{
    // The first message may hold what the writer leaves out (a negative tag
    // 44 is not written and reads back as its default, 0); from the record
    // read back on, nothing may change.
    const Record first(message);
    const Record second(QStringLiteral("H|") + first.DDSImageMessage());
    const QString written = second.DDSImageMessage();
    const Record third(QStringLiteral("H|") + written);
    const QString again = third.DDSImageMessage();
    if (again != written)
        fail("written back differently", second, third, written + QStringLiteral(" / ") + again);
    const QMetaObject* meta = second.metaObject();
    for (int i = 0; i < meta->propertyCount(); ++i) {
        const QMetaProperty property = meta->property(i);
        if (property.read(&second) != property.read(&third))
            fail("field read back differently", second, third, QString::fromLatin1(property.name()));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QString message
        = QString::fromUtf8(reinterpret_cast<const char*>(data + 1), static_cast<qsizetype>(size - 1));
    switch (data[0]) {
    case 'O':
        roundTrip<qal::TomsOrder>(message);
        break;
    case 'T':
        roundTrip<qal::TomsTrade>(message);
        break;
    default:
        roundTrip<qal::TexchOrder>(message);
        break;
    }
    return 0;
}
