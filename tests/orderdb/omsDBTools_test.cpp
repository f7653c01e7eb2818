// SPDX-License-Identifier: MIT
// The order database's INI tools: the configuration directory from its alias,
// section values and counts, GetINIValue's read chosen by the default's
// value, stored-procedure parameters from STORPROC.INI (the shipped file
// included), plug-ins loaded, called and freed, and message layouts naming
// the pieces of a message.
#include "qalpack/orderdb/omsDBTools.h"

#include <dlfcn.h>

#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <QVariant>

#include <gtest/gtest.h>

#include "qalpack/db/Session.h"
#include "qalpack/db/StoredProc.h"
#include "qalpack/runtime/StringList.h"
#include "tests/support/QtPrinters.h"

namespace {

using qal::TCommandArray;
using qal::TSession;
using qal::TStringList;

class DBToolsTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir_.isValid());
        qal::internal::ResetDBTools();
        pointConfigAt(dir_.path());
    }
    void TearDown() override { qal::internal::ResetDBTools(); }

    static void pointConfigAt(const QString& directory)
    {
        TSession::Default().AddAlias("OMSINI", "STANDARD", { "PATH=" + directory });
    }

    QString write(const QString& name, const QString& text)
    {
        QFile file(dir_.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text.toUtf8());
        return file.fileName();
    }

    QTemporaryDir dir_;
};

TEST_F(DBToolsTest, DirStrTakesAnAliasPathOrTheNameAndEndsInASeparator)
{
    TSession::Default().AddAlias("CFGSLASH", "STANDARD", { "PATH=/srv/oms/", "EXTRA=1" });
    const struct
    {
        const char* name;
        const char* expected;
    } rows[] = {
        { "omsini", "" }, // the test's directory, filled in below
        { "CfgSlash", "/srv/oms/" },
        { "/var/tmp", "/var/tmp/" },
        { "/var/tmp/", "/var/tmp/" },
        { "C:\\cfg\\", "C:\\cfg\\" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const QString expected = *row.expected ? QString(row.expected) : dir_.path() + "/";
        EXPECT_EQ(qal::DirStr(row.name), expected);
    }
}

TEST_F(DBToolsTest, SectionValuesAndCountsFollowTheFile)
{
    const QString file = write("tools.ini",
        "[Plugins]\nfirst = lib1,Start\n; a "
        "comment\nsecond=\"a=b\"\nbare\nfirst=again\n[Other]\n[plugins]\nx=1\n");
    TStringList values;
    values.Add("stale");
    qal::INISectionValue(file, "PLUGINS", values);
    EXPECT_EQ(values.toQStringList(), QStringList({ "lib1,Start", "a=b", "", "again" }));
    EXPECT_EQ(qal::INISectionCount(file, "plugins"), 4);
    EXPECT_EQ(qal::ININoOfSectionCount(file), 2);

    const QString missing = dir_.filePath("missing.ini");
    qal::INISectionValue(missing, "Plugins", values);
    EXPECT_EQ(values.Count(), 0);
    EXPECT_EQ(qal::INISectionCount(file, "Nope"), 0);
    EXPECT_EQ(qal::ININoOfSectionCount(missing), 0);
}

TEST_F(DBToolsTest, GetINIValueChoosesTheReadByTheDefaultsValue)
{
    const QString file = write("values.ini", "[S]\nnumber=17\nflag=0\ntext=hello\n");
    const struct
    {
        const char* name;
        const char* key;
        QVariant def;
        QVariant expected;
    } rows[] = {
        { "ThreeReadsAnInteger", "number", 3, 17 },
        { "NumericTextThreeReadsAnInteger", "number", QString("3"), 17 },
        { "FloatRoundsToThree", "number", 3.4, 17 },
        { "MissingIntegerIsThree", "nope", 3, 3 },
        { "ElevenReadsABoolean", "flag", 11, false },
        { "MissingBooleanIsTrue", "nope", 11, true },
        { "TwoHundredFiftySixReadsText", "text", 256, QString("hello") },
        { "MissingTextIs256", "nope", 256, QString("256") },
        { "TrueIsMinusOne", "flag", true, QVariant() },
        { "HalfRoundsToEven", "number", 2.5, QVariant() },
        { "UnassignedIsZero", "number", QVariant(), QVariant() },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const QVariant value = qal::GetINIValue(file, "S", row.key, row.def);
        EXPECT_EQ(value.typeId(), row.expected.typeId());
        EXPECT_EQ(value, row.expected);
    }
    // Text is never a selector by its type: a word raises.
    for (const char* word : { "NONE", "hello" })
        EXPECT_THROW((void)qal::GetINIValue(file, "S", "text", QString(word)), qal::VariantTypeCastError)
            << word;
}

TEST_F(DBToolsTest, ShippedStorProcDeclaresEveryOrderParameter)
{
    pointConfigAt(QStringLiteral(QAL_CONFIG_DIR));
    qal::TStoredProc proc;
    qal::PrepareStoredProc("sp_insert_new_order", proc);
    ASSERT_EQ(proc.Params().Count(), 27);
    EXPECT_EQ(proc.Params().Items(0).Name(), "@m_account");
    for (int i = 0; i < proc.Params().Count(); ++i) {
        const qal::TParam& param = proc.Params().Items(i);
        SCOPED_TRACE(param.Name().toStdString());
        EXPECT_NE(param.DataType(), qal::TFieldType::ftUnknown);
        const auto direction = param.Name() == "@m_order_no" ? qal::TParamType::ptInputOutput
            : param.Name() == "@m_createtime"                ? qal::TParamType::ptOutput
                                                             : qal::TParamType::ptInput;
        EXPECT_EQ(param.ParamType(), direction);
    }
    EXPECT_EQ(proc.ParamByName(u"@m_createtime").DataType(), qal::TFieldType::ftDateTime);
    qal::PrepareStoredProc("sp_missing", proc);
    EXPECT_EQ(proc.Params().Count(), 27);
}

TEST_F(DBToolsTest, ShippedLayoutsNameTheirSampleMessages)
{
    const QString file = QStringLiteral(QAL_CONFIG_DIR "/OMSMESS.INI");
    const struct
    {
        const char* key;
        const char* message;
        QStringList lines;
    } rows[] = {
        { "NEWORDER", "NEWORDER|D001|0005|0|2000|35.55|",
            { "action=NEWORDER", "acct=D001", "symbol=0005", "side=0", "quantity=2000", "price=35.55" } },
        { "BASKET", "BASKET|D001|0005|2000|0011|4000|",
            { "action=BASKET", "acct=D001", "symbol=0005", "quantity=2000", "symbol=0011",
                "quantity=4000" } },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.key);
        qal::internal::CacheLayout(
            "ORDER", row.key, qal::GetINIValue(file, "ORDER", row.key, 256).toString());
        ASSERT_TRUE(qal::PrepareLayout("ORDER", row.message));
        TStringList out;
        EXPECT_TRUE(qal::PrepareMessage(row.message, qal::MainMode(), qal::RepeatMode(), out));
        EXPECT_EQ(out.toQStringList(), row.lines);
    }
}

TEST_F(DBToolsTest, PluginIsLoadedCalledAndFreed)
{
    const QString plugin = QStringLiteral(QAL_TEST_PLUGIN_PATH);
    const QString file = write("plugins.ini",
        "[Plugins]\nmain=" + plugin + ",qal_test_plugin_twice,qal_test_plugin_missing\nbare=nolibrary\n"
            + "gone=/nonexistent/libqalnothing.so,Entry\nagain=" + plugin + ",qal_test_plugin_answer\n");
    EXPECT_TRUE(qal::DLLPlugin(file, "Plugins"));

    const auto& handles = qal::LibHandle();
    ASSERT_EQ(handles.size(), 4U);
    EXPECT_NE(handles[0], nullptr);
    EXPECT_EQ(handles[1], nullptr);
    EXPECT_EQ(handles[2], nullptr);
    EXPECT_NE(handles[3], nullptr);

    const auto& entries = qal::DLLExecute();
    ASSERT_EQ(entries.size(), 5U); // two for "main", one each for the others
    EXPECT_EQ(entries[1], nullptr); // not exported by the plug-in
    EXPECT_EQ(entries[2], nullptr);
    EXPECT_EQ(entries[3], nullptr);
    ASSERT_NE(entries[0], nullptr);
    ASSERT_NE(entries[4], nullptr);
    EXPECT_EQ(reinterpret_cast<int (*)(int)>(entries[0])(21), 42);
    EXPECT_EQ(reinterpret_cast<int (*)()>(entries[4])(), 42);

    EXPECT_TRUE(qal::FreeAllHandle()); // the last slot held a library
    EXPECT_EQ(handles[0], nullptr);
    EXPECT_EQ(entries[0], nullptr);
    EXPECT_EQ(::dlopen(QFile::encodeName(plugin).constData(), RTLD_NOW | RTLD_NOLOAD), nullptr)
        << "both loads of the plug-in must be released";
    EXPECT_FALSE(qal::FreeAllHandle());
}

TEST_F(DBToolsTest, LayoutMissIsFalseAndKeepsTheCommandLists)
{
    write("OMSMESS.INI", "[ORDER]\nNEWORDER=acct|symbol|\n");
    qal::internal::CacheLayout("ORDER", "AMEND", "orderno|[qty|]");
    ASSERT_TRUE(qal::PrepareLayout("ORDER", "AMEND|1|2|"));

    EXPECT_FALSE(qal::PrepareLayout("ORDER", "NEWORDER|D001|0005|"));
    EXPECT_EQ(qal::MainMode(), TCommandArray({ "action", "orderno" }));
    EXPECT_EQ(qal::RepeatMode(), TCommandArray({ "qty" }));
    // Still a miss the second time: nothing was cached.
    EXPECT_FALSE(qal::PrepareLayout("order", "NEWORDER|D001|0005|"));
}

TEST_F(DBToolsTest, CachedLayoutGivesItsCommandLists)
{
    const struct
    {
        const char* name;
        const char* layout;
        TCommandArray main;
        TCommandArray repeat;
    } rows[] = {
        { "MainAndRepeat", "acct|symbol|[price|qty|]", { "action", "acct", "symbol" }, { "price", "qty" } },
        { "NoBracketRepeatsOneEmptyName", "acct|symbol|", { "action", "acct", "symbol" }, { "" } },
        { "UnterminatedNamesAndBracket", "acct[price|qty", { "action", "acct" }, { "price", "qty" } },
        { "EmptyRepeat", "acct|[]", { "action", "acct" }, { "" } },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        qal::internal::CacheLayout("ORDER", row.name, row.layout);
        EXPECT_TRUE(qal::PrepareLayout("order", QString(row.name) + "|rest|"));
        EXPECT_EQ(qal::MainMode(), row.main);
        EXPECT_EQ(qal::RepeatMode(), row.repeat);
    }
    qal::internal::CacheLayout("ORDER", "GONE", "NONE");
    EXPECT_FALSE(qal::PrepareLayout("ORDER", "GONE|x|"));
    EXPECT_TRUE(qal::MainMode().isEmpty());
    EXPECT_FALSE(qal::PrepareLayout("ORDER", "MainAndRepeat")) << "without a '|' the message key is empty";
}

TEST(PrepareMessage, NamesMainPiecesThenCyclesTheRepeatNames)
{
    TStringList out;
    EXPECT_TRUE(qal::PrepareMessage("A|B|C|D|E|ignored", { "action", "acct" }, { "sym", "qty" }, out));
    EXPECT_EQ(out.toQStringList(), QStringList({ "action=A", "acct=B", "sym=C", "qty=D", "sym=E" }));

    TStringList empty;
    EXPECT_FALSE(qal::PrepareMessage("no bar", { "action" }, { "" }, empty));
    EXPECT_TRUE(qal::PrepareMessage("no bar", { "action" }, { "" }, out)) << "lines already there count";

    TStringList partial;
    EXPECT_THROW(qal::PrepareMessage("A|B|C|", { "action" }, {}, partial), qal::Error);
    EXPECT_EQ(partial.toQStringList(), QStringList({ "action=A" }));
}

} // namespace
