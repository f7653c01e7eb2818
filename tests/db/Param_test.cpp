// SPDX-License-Identifier: MIT
// Parameters take their type from the first value set, convert on read like
// a field does, and name themselves when a value cannot be converted.
#include "qalpack/db/Param.h"

#include <QString>
#include <QVariant>

#include <gtest/gtest.h>

#include "qalpack/db/DatabaseError.h"
#include "tests/support/QtPrinters.h"

namespace {

using qal::DatabaseError;
using qal::TFieldType;

TEST(Param, ConvertsOnReadAndTakesItsTypeFromTheFirstValue)
{
    const struct
    {
        const char* name;
        QVariant value;
        TFieldType type;
        const char* text;
        qint64 integer;
    } rows[] = {
        { "text", QString("42"), TFieldType::ftString, "42", 42 },
        { "integer", 7, TFieldType::ftInteger, "7", 7 },
        { "large integer", qlonglong(5000000000LL), TFieldType::ftLargeint, "5000000000", 5000000000LL },
        { "float", 2.5, TFieldType::ftFloat, "2.5", 2 },
        { "boolean", true, TFieldType::ftBoolean, "True", 1 },
        { "null", QVariant(), TFieldType::ftUnknown, "", 0 },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        qal::TParam param("@p", TFieldType::ftUnknown, qal::TParamType::ptInput);
        EXPECT_FALSE(param.Bound());
        param.SetValue(row.value);
        EXPECT_TRUE(param.Bound());
        EXPECT_EQ(param.IsNull(), !row.value.isValid());
        EXPECT_EQ(param.DataType(), row.type);
        EXPECT_EQ(param.AsString(), QString::fromUtf8(row.text));
        EXPECT_EQ(param.AsLargeInt(), row.integer);
    }
    qal::TParam text("@m_quantity", TFieldType::ftInteger, qal::TParamType::ptInput);
    text.SetAsString("12x");
    EXPECT_EQ(text.DataType(), TFieldType::ftInteger); // a declared type stays
    try {
        (void)text.AsInteger();
        FAIL() << "text that is not a number must raise";
    } catch (const DatabaseError& error) {
        EXPECT_TRUE(error.message().contains("@m_quantity")) << error.message().toStdString();
    }
}

// A stored procedure is given its input and input-output parameters (and
// those declared without a direction) and sets its output, input-output and
// result parameters.
TEST(Param, DirectionSaysWhatAProcedureReadsAndSets)
{
    using qal::TParamType;
    const struct
    {
        TParamType type;
        bool input;
        bool output;
    } rows[] = {
        { TParamType::ptUnknown, true, false },
        { TParamType::ptInput, true, false },
        { TParamType::ptOutput, false, true },
        { TParamType::ptInputOutput, true, true },
        { TParamType::ptResult, false, true },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(qal::ParamTypeName(row.type).toStdString());
        const qal::TParam param("@p", TFieldType::ftInteger, row.type);
        EXPECT_EQ(param.IsInput(), row.input);
        EXPECT_EQ(param.IsOutput(), row.output);
    }
}

} // namespace
