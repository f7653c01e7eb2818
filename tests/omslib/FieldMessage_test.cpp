// SPDX-License-Identifier: MIT
// Tagged records on the publish/subscribe bus: text and wire round trips,
// field order and replacement, and the texts that are not records.
#include "qalpack/omslib/FieldMessage.h"

#include <gtest/gtest.h>

#include "qalpack/runtime/Exception.h"
#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

TEST(FieldMessage, LogonAnnouncementRoundTripsThroughTextAndWire)
{
    const QString text = QStringLiteral("image|USER_D001|13|D001|0|subMgr.1|10|交易室7|21|desk-A|");
    const TFieldMessage message = TFieldMessage::Parse(text);
    EXPECT_TRUE(message.IsImage());
    EXPECT_EQ(message.Topic(), u"USER_D001");
    EXPECT_EQ(message.Tags(), (QList<int> { 13, 0, 10, 21 }));
    EXPECT_EQ(message.GetField(10), u"交易室7");
    EXPECT_EQ(message.ToString(), text);
    EXPECT_EQ(TFieldMessage::FromWire(message.ToWire()), message);
}

TEST(FieldMessage, ARepeatedTagKeepsItsPlaceAndTakesTheLastValue)
{
    const TFieldMessage message = TFieldMessage::Parse(u"UPDATE|T|5|1|25|a|5|-1");
    EXPECT_FALSE(message.IsImage());
    EXPECT_EQ(message.ToString(), u"update|T|5|-1|25|a|");
    EXPECT_EQ(message.GetFieldInt(5), -1);
    EXPECT_EQ(message.GetFieldInt(25, 7), 7) << "not a number";
    EXPECT_EQ(message.GetFieldInt(6, 7), 7) << "missing";
}

TEST(FieldMessage, TextsThatAreNotRecordsAreRefusedWithTheText)
{
    const struct
    {
        const char* name;
        const char16_t* text;
    } rows[] = {
        { "empty", u"" },
        { "unknown kind", u"snapshot|T|1|a|" },
        { "no topic", u"image" },
        { "tag without value", u"image|T|13|D001|21|" },
        { "tag not a number", u"image|T|x|1|" },
        { "negative tag", u"image|T|-5|1|" },
        { "tag with blank", u"image|T| 5|1|" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        try {
            (void)TFieldMessage::Parse(row.text);
            ADD_FAILURE() << "parsed";
        } catch (const Error& error) {
            EXPECT_TRUE(error.message().contains(QString::fromUtf16(row.text))) << error.what();
        }
    }
}

TEST(FieldMessage, ValuesAndTopicsCannotCarryTheSeparator)
{
    TFieldMessage message(QStringLiteral("T"));
    EXPECT_THROW(message.SetField(25, QStringLiteral("a|b")), Error);
    EXPECT_THROW(message.SetTopic(QStringLiteral("USER_|")), Error);
    EXPECT_EQ(message.ToString(), u"image|T|");
}

} // namespace
} // namespace qal
