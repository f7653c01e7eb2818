// SPDX-License-Identifier: MIT
// Order attributes travel as comma text of name=value strings; these tests pin
// the list's reading and writing of that text, its look-ups and its objects.
#include "qalpack/runtime/StringList.h"

#include <memory>
#include <ostream>

#include <QString>
#include <QStringList>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qalpack/runtime/Exception.h"

void PrintTo(const QString& s, std::ostream* os)
{
    *os << '"' << s.toStdString() << '"';
}

namespace {

using qal::TDuplicates;
using qal::TObjectStringList;
using qal::TStringList;

TStringList listOf(const QStringList& strings)
{
    TStringList list;
    for (const QString& s : strings)
        list.Add(s);
    return list;
}

struct Counted
{
    static inline int alive = 0;
    Counted() { ++alive; }
    ~Counted() { --alive; }
};

class StringListObjects : public testing::Test
{
protected:
    void SetUp() override { Counted::alive = 0; }
    void TearDown() override { EXPECT_EQ(Counted::alive, 0); }
};

// A text and the strings it stands for, in comma text or in lines.
struct TextCase
{
    const char* name;
    QString text;
    QStringList strings;
};

TEST(StringList, ReadsCommaText)
{
    const TextCase rows[] = {
        { "blank splits unquoted items", "a b,c", { "a", "b", "c" } },
        { "empty item between commas", "a,,b", { "a", "", "b" } },
        { "trailing comma adds empty item", "a,", { "a", "" } },
        { "blank after last comma swallows it", " , ", { "" } },
        { "quoted item keeps blank", "\"x y\",z", { "x y", "z" } },
        { "text after closing quote is next item", "\"ab\"cd", { "ab", "cd" } },
        { "doubled quote is one quote", "\"a\"\"b\"", { "a\"b" } },
        { "unterminated quote takes rest", "a,\"b c", { "a", "b c" } },
        { "empty text", "", {} },
        { "two quotes are one empty item", "\"\"", { "" } },
        { "blanks around items dropped", " \t a , b\r\n", { "a", "b" } },
        { "quote inside unquoted item", "Remark=\"a b\"", { "Remark=\"a", "b\"" } },
        { "text ends at NUL", QString("a,b") + QChar(0) + ",c", { "a", "b" } },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TStringList list = listOf({ "stale" });
        list.SetCommaText(row.text);
        EXPECT_EQ(list.toQStringList(), row.strings);
    }
}

// Attributes arrive with every order update, so comma text is read eight
// characters at a time: the rules must hold wherever in the text they apply.
TEST(StringList, ReadsLongCommaText)
{
    const TextCase rows[] = {
        { "an order's attributes", "InvestorID=77,PTA=A1/B2,MSEQ=12",
            { "InvestorID=77", "PTA=A1/B2", "MSEQ=12" } },
        { "blank after eight characters", "InvestorID=77 PTA=A1/B2", { "InvestorID=77", "PTA=A1/B2" } },
        { "control character after eight", "Remark=abcdefgh\tijk", { "Remark=abcdefgh", "ijk" } },
        { "wide characters are not blanks", "戶口=陳大文，ＡＢ＃ＣＤ,x", { "戶口=陳大文，ＡＢ＃ＣＤ", "x" } },
        { "a comma in every eight", "a,b,c,d,e,f,g,h,i,j,k,",
            { "a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "" } },
        { "text ends at a NUL after eight", QString("abcdefghij,kl") + QChar(0) + ",mn",
            { "abcdefghij", "kl" } },
        { "text ends at a NUL within eight", QString("ab,c") + QChar(0) + "defghijklmnop,q", { "ab", "c" } },
        { "long quoted item", "\"Remark=call client, then \"\"hold\"\"\",x",
            { "Remark=call client, then \"hold\"", "x" } },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TStringList list;
        list.SetCommaText(row.text);
        EXPECT_EQ(list.toQStringList(), row.strings);
    }
}

// A plain list takes an update's attributes in place: objects go, an equal
// item keeps its string, and a text that is one of the list's own strings
// still reads whole.
TEST(StringList, CommaTextRewritesAPlainListInPlace)
{
    int tag = 0;
    TStringList list;
    for (const char* s : { "InvestorID=77", "PTA=A1/B2", "MSEQ=12", "DLR=D01" })
        list.AddObject(s, &tag);
    const QString investor = list.Strings(0);
    list.SetCommaText("InvestorID=77,PTA=C3,MSEQ=12");
    EXPECT_EQ(list.toQStringList(), (QStringList { "InvestorID=77", "PTA=C3", "MSEQ=12" }));
    for (int i = 0; i < list.Count(); ++i)
        EXPECT_EQ(list.Objects(i), nullptr) << i;
    EXPECT_EQ(list.Strings(0).constData(), investor.constData());
    list.SetCommaText(list.Strings(1));
    EXPECT_EQ(list.toQStringList(), QStringList { "PTA=C3" });

    TStringList sorted;
    sorted.SetSorted(true);
    sorted.SetCommaText("c,a,b,A");
    EXPECT_EQ(sorted.toQStringList(), (QStringList { "a", "b", "c" })) << "sorted, duplicates ignored";
}

TEST(StringList, WritesCommaText)
{
    const TextCase rows[] = {
        { "empty list", "", {} },
        { "single empty string", "\"\"", { "" } },
        { "empty strings among others", "a,,b", { "a", "", "b" } },
        { "blank quotes, chinese stays bare", "ID=7,\"Remark=x y\",戶口=陳大文",
            { "ID=7", "Remark=x y", "戶口=陳大文" } },
        { "quote doubled", "\"a\"\"b\"", { "a\"b" } },
        { "control character quotes", "\"\tx\"", { "\tx" } },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(listOf(row.strings).CommaText(), row.text);
    }
}

TEST(StringList, ReadsLinesEndingInCrLfLfOrCr)
{
    const TextCase rows[] = {
        { "mixed line breaks", "a\r\nb\nc\rd", { "a", "b", "c", "d" } },
        { "final break adds no line", "a\r\n", { "a" } },
        { "empty line before final break", "a\r\n\r\n", { "a", "" } },
        { "LF CR is two breaks", "a\n\rb", { "a", "", "b" } },
        { "empty text", "", {} },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TStringList list;
        list.SetText(row.text);
        EXPECT_EQ(list.toQStringList(), row.strings);
    }
    EXPECT_EQ(listOf({ "a", "" }).Text(), "a\r\n\r\n");
}

// Every list of up to three strings from a pool of awkward ones.
TEST(StringList, CommaTextAndTextRoundTrip)
{
    const QStringList pool
        = { "", "a", "a b", "\"", "x,y", "k=v", "中文=買", " lead", "trail ", "\"q\"", "\t", "a\"\"b" };
    const auto roundTrips = [](const QStringList& strings) {
        const TStringList list = listOf(strings);
        SCOPED_TRACE(list.CommaText().toStdString());
        TStringList back;
        back.SetCommaText(list.CommaText());
        EXPECT_EQ(back.toQStringList(), strings);
        back.SetText(list.Text());
        EXPECT_EQ(back.toQStringList(), strings);
    };
    roundTrips({});
    for (const QString& a : pool)
        for (const QString& b : pool)
            for (const QString& c : pool) {
                roundTrips({ a });
                roundTrips({ a, b });
                roundTrips({ a, b, c });
            }
}

TEST(StringList, LooksUpNamesIgnoringCaseByDefault)
{
    TStringList list = listOf({ "Side=B", "Flag", "InvestorID=77", "Remark=a=b", "investorid=99" });
    EXPECT_EQ(list.Values("investorid"), "77");
    EXPECT_EQ(list.IndexOfName("INVESTORID"), 2);
    EXPECT_EQ(list.Values("Remark"), "a=b");
    EXPECT_EQ(list.IndexOfName("Flag"), -1) << "an entry without '=' has no name";
    EXPECT_EQ(list.Names(1), "");
    EXPECT_EQ(list.ValueFromIndex(1), "");
    EXPECT_EQ(list.ValueFromIndex(list.IndexOfName("Absent")), "");
    EXPECT_EQ(list.IndexOf("flag"), 1);
    list.SetCaseSensitive(true);
    EXPECT_EQ(list.Values("investorid"), "99");
    EXPECT_EQ(list.IndexOf("flag"), -1);
}

TEST(StringList, SetValueReplacesAppendsOrDeletes)
{
    const struct
    {
        const char* name;
        QString key, value;
        QStringList expected;
    } rows[] = {
        { "replaces in place, spelt as given", "investorid", "88", { "A=1", "investorid=88", "B=2" } },
        { "appends when absent", "Side", "S", { "A=1", "InvestorID=77", "B=2", "Side=S" } },
        { "empty value deletes", "investorID", "", { "A=1", "B=2" } },
        { "empty value for absent name", "Side", "", { "A=1", "InvestorID=77", "B=2" } },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TStringList list = listOf({ "A=1", "InvestorID=77", "B=2" });
        list.SetValue(row.key, row.value);
        EXPECT_EQ(list.toQStringList(), row.expected);
    }
    TStringList sorted = listOf({ "A=1", "B=2" });
    sorted.SetSorted(true);
    EXPECT_THROW(sorted.SetValue("A", "3"), qal::Error);
    sorted.SetValue("a", "");
    EXPECT_EQ(sorted.toQStringList(), QStringList { "B=2" });
}

// Find lands on the first of several equal strings only under dupAccept.
TEST(StringList, SortedAddAppliesDuplicates)
{
    const struct
    {
        TDuplicates mode;
        int expectedIndex;
        QStringList expected;
    } rows[] = {
        { TDuplicates::dupIgnore, 2, { "a", "b", "b", "b", "c" } },
        { TDuplicates::dupAccept, 1, { "a", "B", "b", "b", "b", "c" } },
        { TDuplicates::dupError, -1, { "a", "b", "b", "b", "c" } },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.mode));
        TStringList list = listOf({ "c", "b", "a", "b", "b" });
        list.SetSorted(true);
        list.SetDuplicates(row.mode);
        if (row.mode == TDuplicates::dupError)
            EXPECT_THROW(list.Add("B"), qal::Error);
        else
            EXPECT_EQ(list.Add("B"), row.expectedIndex);
        EXPECT_EQ(list.toQStringList(), row.expected);
        EXPECT_EQ(list.IndexOf("bb"), -1);
        EXPECT_EQ(list.Add("bb"), static_cast<int>(row.expected.size()) - 1);
    }
}

// Strings equal under the list's comparison keep their order of adding (the
// objects tag it), over enough strings that an unstable sort would show.
TEST(StringList, SortingIsStableAndFollowsCaseSensitivity)
{
    int tags[64] = {};
    TStringList list;
    for (int i = 0; i < 64; ++i)
        list.AddObject(QStringList { "Z", "a", "z", "A" }[i % 4], &tags[i]);
    const auto expectGroups = [&](const QStringList& groups) {
        const int size = 64 / static_cast<int>(groups.size());
        const auto cs = list.CaseSensitive() ? Qt::CaseSensitive : Qt::CaseInsensitive;
        for (int i = 0; i < 64; ++i) {
            EXPECT_EQ(list.Strings(i).compare(groups[i / size], cs), 0) << i;
            if (i % size != 0) {
                EXPECT_LT(list.Objects(i - 1), list.Objects(i)) << i;
            }
        }
    };
    list.SetSorted(true);
    expectGroups({ "a", "z" });
    list.SetCaseSensitive(true);
    expectGroups({ "A", "Z", "a", "z" });
}

TEST(StringList, RefusesBadIndexAndPositionalChangesOnSortedList)
{
    TStringList list = listOf({ "a" });
    EXPECT_THAT([&] { (void)list.Strings(1); },
        testing::ThrowsMessage<qal::Error>(testing::StrEq("List index out of bounds (1)")));
    EXPECT_THROW(list.Insert(2, "x"), qal::Error);
    list.Insert(1, "b");
    list.SetSorted(true);
    EXPECT_THROW(list.Insert(0, "a"), qal::Error);
    EXPECT_THROW(list.SetStrings(0, "a"), qal::Error);
    EXPECT_EQ(list.CommaText(), "a,b");
}

TEST_F(StringListObjects, OwningListFreesOnDeleteClearReplaceMoveAndDestruction)
{
    TObjectStringList<Counted> list(true);
    for (const char* s : { "a", "b", "c", "d" })
        list.AddObject(s, new Counted);
    list.Delete(0);
    EXPECT_EQ(Counted::alive, 3);
    list.SetObjects(0, new Counted);
    EXPECT_EQ(Counted::alive, 3);
    const std::unique_ptr<Counted> extracted(list.ExtractObject(0));
    EXPECT_EQ(Counted::alive, 3);
    list.Clear();
    EXPECT_EQ(Counted::alive, 1);
    list.AddObject("e", new Counted);
    TObjectStringList<Counted> incoming(true);
    incoming.AddObject("f", new Counted);
    list = std::move(incoming);
    EXPECT_EQ(Counted::alive, 2);
    EXPECT_EQ(list.CommaText(), "f");
}

TEST_F(StringListObjects, OwningListFreesWhatItRefuses)
{
    TObjectStringList<Counted> list(true);
    list.SetSorted(true);
    auto* kept = new Counted;
    list.AddObject("a", kept);
    EXPECT_EQ(list.AddObject("A", new Counted), 0);
    EXPECT_EQ(list.AddObject("A", kept), 0) << "the stored object is not freed";
    list.SetDuplicates(TDuplicates::dupError);
    EXPECT_THROW(list.AddObject("A", new Counted), qal::Error);
    EXPECT_THROW(list.InsertObject(0, "b", new Counted), qal::Error);
    EXPECT_EQ(Counted::alive, 1);
    EXPECT_EQ(list.Object(0), kept);
}

TEST_F(StringListObjects, CommaTextFreesTheObjectsOfAnOwningList)
{
    TObjectStringList<Counted> list(true);
    list.AddObject("a", new Counted);
    list.SetCommaText("a,b");
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_EQ(list.Object(0), nullptr);
    EXPECT_EQ(list.CommaText(), "a,b");
}

TEST_F(StringListObjects, ListsThatDoNotOwnNeverFree)
{
    const auto object = std::make_unique<Counted>();
    {
        TObjectStringList<Counted> shared;
        shared.AddObject("a", object.get());
        TStringList copy;
        copy.Assign(shared);
        EXPECT_EQ(copy.Objects(0), object.get());
        TObjectStringList<Counted> owning(true);
        EXPECT_THROW(owning.Assign(shared), qal::Error);
        TStringList noDeleter(true);
        EXPECT_THROW(noDeleter.AddObject("a", object.get()), qal::Error);
    }
    EXPECT_EQ(Counted::alive, 1);
}

} // namespace
