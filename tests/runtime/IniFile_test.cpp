// SPDX-License-Identifier: MIT
// INI files with Windows semantics: what reads see, and what writes leave of
// the rest of the file.
#include "qalpack/runtime/IniFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "qalpack/runtime/Exception.h"
#include "qalpack/runtime/StringList.h"

namespace qal {
namespace {

class IniFileTest : public ::testing::Test
{
protected:
    QString path() const { return dir_.filePath(QStringLiteral("oms.ini")); }

    QString write(const QByteArray& bytes) const
    {
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return path();
    }

    QByteArray contents() const
    {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QTemporaryDir dir_;
};

const QByteArray kDesk = "stray=before any section\n"
                         "[OMS_LOCAL]\n"
                         "CPATH = /opt/oms \n"
                         "; the alias file\n"
                         "AliasFile=\"aliases.ini\"\n"
                         "Empty=\n"
                         "NoEquals\n"
                         "cpath=second\n"
                         "[ Client App ]\n"
                         "color='Dark'\n"
                         "[oms_local]\n"
                         "Late=1\n";

TEST_F(IniFileTest, ReadsMatchSectionsAndKeysWithoutRegardToCase)
{
    const TIniFile ini(write(kDesk));
    struct Row
    {
        const char* name;
        QString section;
        QString key;
        QString expected;
    };
    const Row rows[] = {
        { "other case, blanks dropped, first of two lines", "oms_local", "cpath", "/opt/oms" },
        { "double quotes dropped", "OMS_LOCAL", "aliasfile", "aliases.ini" },
        { "single quotes dropped, section name trimmed", "client app", "COLOR", "Dark" },
        { "empty value is not the fallback", "OMS_LOCAL", "Empty", "" },
        { "key without '=' gives the fallback", "OMS_LOCAL", "NoEquals", "fallback" },
        { "second appearance of a section is not read", "OMS_LOCAL", "Late", "fallback" },
        { "lines before the first section belong to none", "", "stray", "fallback" },
        { "missing section", "NOWHERE", "CPATH", "fallback" },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(ini.ReadString(row.section, row.key, QStringLiteral("fallback")), row.expected);
    }
    EXPECT_EQ(ini.ReadSections(), QStringList({ "OMS_LOCAL", "Client App" }));
    EXPECT_EQ(ini.ReadSectionValues(QStringLiteral("Oms_Local")),
        QStringList({ "CPATH=/opt/oms", "AliasFile=aliases.ini", "Empty=", "NoEquals=", "cpath=second" }));
    EXPECT_EQ(ini.KeyCount(QStringLiteral("oms_local")), 5);
    TStringList into;
    into.Add(QStringLiteral("left over"));
    ini.ReadSectionValues(QStringLiteral("CLIENT APP"), into);
    EXPECT_EQ(into.toQStringList(), QStringList { QStringLiteral("color=Dark") });
}

TEST_F(IniFileTest, NumbersReadLeniently)
{
    const TIniFile ini(write("[N]\nhex=0x1F\nbad=12x\nzero=0\nword=true\nfloat=12.5\n"));
    const QString n = QStringLiteral("N");
    EXPECT_EQ(ini.ReadInteger(n, QStringLiteral("hex"), -1), 31);
    EXPECT_EQ(ini.ReadInteger(n, QStringLiteral("bad"), -1), -1);
    EXPECT_TRUE(ini.ReadBool(n, QStringLiteral("hex"), false));
    EXPECT_FALSE(ini.ReadBool(n, QStringLiteral("zero"), true));
    EXPECT_TRUE(ini.ReadBool(n, QStringLiteral("word"), true)); // not a number: the fallback
    EXPECT_EQ(ini.ReadFloat(n, QStringLiteral("float"), -1), 12.5);
    EXPECT_EQ(ini.ReadFloat(n, QStringLiteral("word"), -1), -1);
}

TEST_F(IniFileTest, MissingFileReadsAsEmptyUntilTheFirstWriteCreatesIt)
{
    TIniFile ini(path());
    EXPECT_EQ(
        ini.ReadString(QStringLiteral("A"), QStringLiteral("k"), QStringLiteral("d")), QStringLiteral("d"));
    EXPECT_TRUE(ini.ReadSections().isEmpty());
    ini.EraseSection(QStringLiteral("A"));
    ini.DeleteKey(QStringLiteral("A"), QStringLiteral("k"));
    EXPECT_FALSE(QFile::exists(path()));

    ini.WriteBool(QStringLiteral("CLIENT APP"), QStringLiteral("beep"), true);
    ini.WriteString(QStringLiteral("CLIENT APP"), QStringLiteral("color"), QStringLiteral("a, \"b\" \\c"));
    EXPECT_EQ(contents(), QByteArray("[CLIENT APP]\nbeep=1\ncolor=a, \"b\" \\c\n"));
    // no list splitting, no escapes
    EXPECT_EQ(ini.ReadString(QStringLiteral("client app"), QStringLiteral("COLOR"), QString()),
        QStringLiteral("a, \"b\" \\c"));
}

TEST_F(IniFileTest, WritesKeepCommentsAndEveryOtherLine)
{
    // A line in another encoding (code page 950 bytes) must survive untouched.
    const QByteArray big5Comment = "; \xA4\xA4\xA4\xE5 client names\r\n";
    TIniFile ini(write("\xEF\xBB\xBF; desk settings\r\n"
                       "[OMS_LOCAL]\r\n"
                       "CPATH = /opt/oms\r\n"
                       "LogFile=old.txt   ; not a comment\r\n"
                       "\r\n"
        + big5Comment + "[CLIENT APP]\r\n" + "color=Dark"));
    ASSERT_TRUE(QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner));

    ini.WriteString(QStringLiteral("oms_local"), QStringLiteral("LOGFILE"), QStringLiteral("new.txt"));
    ini.WriteString(QStringLiteral("OMS_LOCAL"), QStringLiteral("DumpFile"), QStringLiteral("dump.txt"));
    ini.WriteString(QStringLiteral("Client App"), QStringLiteral("sound"), QStringLiteral("Quiet"));
    ini.WriteInteger(QStringLiteral("RISK"), QStringLiteral("Limit"), -5);

    EXPECT_EQ(contents(),
        "\xEF\xBB\xBF; desk settings\r\n"
        "[OMS_LOCAL]\r\n"
        "CPATH = /opt/oms\r\n"
        "LogFile=new.txt\r\n"
        "DumpFile=dump.txt\r\n"
        "\r\n"
            + big5Comment + "[CLIENT APP]\r\n" + "color=Dark\r\nsound=Quiet\r\n\r\n[RISK]\r\nLimit=-5\r\n");
    // Replaced through a temporary file, yet still private to its owner.
    EXPECT_EQ(QFile::permissions(path()) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

TEST_F(IniFileTest, WritesThatWouldBreakTheFileOrCannotBeMadeThrow)
{
    TIniFile ini(write("[A]\nk=1\n"));
    struct Row
    {
        const char* name;
        QString section;
        QString key;
        QString value;
    };
    const Row rows[] = { { "blank section", " ", "k", "v" }, { "']' in section", "A]", "k", "v" },
        { "empty key", "A", "", "v" }, { "'=' in key", "A", "k=x", "v" }, { "comment key", "A", ";k", "v" },
        { "line break in value", "A", "k", "v\r\n[B]" } };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_THROW(ini.WriteString(row.section, row.key, row.value), Error);
    }
    EXPECT_EQ(contents(), QByteArray("[A]\nk=1\n"));

    TIniFile nowhere(path() + QStringLiteral("/no-such-dir/oms.ini"));
    try {
        nowhere.WriteString(QStringLiteral("A"), QStringLiteral("k"), QStringLiteral("v"));
        FAIL() << "expected qal::Error";
    } catch (const Error& error) {
        EXPECT_TRUE(error.message().contains(nowhere.FileName())) << error.what();
    }
}

TEST_F(IniFileTest, EraseSectionRemovesEveryAppearanceAndDeleteKeyEveryLine)
{
    TIniFile ini(write("; top\n[A]\nk=1\n; about k\nk=2\nj=3\n[b]\nx=1\n[a]\nk=9\n"));
    ini.DeleteKey(QStringLiteral("a"), QStringLiteral("K"));
    EXPECT_EQ(contents(), QByteArray("; top\n[A]\n; about k\nj=3\n[b]\nx=1\n[a]\nk=9\n"));
    ini.EraseSection(QStringLiteral("A"));
    EXPECT_EQ(contents(), QByteArray("; top\n[b]\nx=1\n"));
}

} // namespace
} // namespace qal
