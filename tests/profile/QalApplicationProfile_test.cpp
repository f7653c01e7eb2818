// SPDX-License-Identifier: MIT
// The application profile: the singleton's id, the settings cache, the log it
// opens, the login mode, and the date-stamped log file names.
#include "qalpack/profile/QalApplicationProfile.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtGlobal>

#include <gtest/gtest.h>

#include "qalpack/omslib/omsIniFile.h"
#include "qalpack/omslib/omsLog.h"
#include "tests/support/SourceTree.h"

namespace qal {
namespace {

class ApplicationProfileTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        qputenv("OMS_INI", QFile::encodeName(path(QStringLiteral("oms.ini"))));
        writeIni("; desk\n[OMS_LOCAL]\nCPATH=/opt/oms\n[CLIENT APP]\nKeyboard=DefaultKey\n");
    }

    void TearDown() override
    {
        internal::ResetApplicationProfile();
        omsLogSetLevel(omsLogInfo);
        qunsetenv("OMS_INI");
    }

    QString path(const QString& name) const { return dir_.filePath(name); }

    void writeIni(const QByteArray& text) const
    {
        QFile file(path(QStringLiteral("oms.ini")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
    }

private:
    QTemporaryDir dir_;
};

TEST_F(ApplicationProfileTest, FirstInstanceIdWins)
{
    TQalApplicationProfile::SetInstanceId(QStringLiteral("DEALER-A"));
    TQalApplicationProfile::SetInstanceId(QStringLiteral("DEALER-B"));
    TQalApplicationProfile* profile = TQalApplicationProfile::GetInstance();
    EXPECT_EQ(profile->ApplicationId(), QStringLiteral("DEALER-A"));
    EXPECT_EQ(TQalApplicationProfile::GetInstance(), profile);

    internal::ResetApplicationProfile(); // as a process start
    TQalApplicationProfile::SetInstanceId(QStringLiteral("DEALER-B"));
    EXPECT_EQ(TQalApplicationProfile::GetInstance()->ApplicationId(), QStringLiteral("DEALER-B"));
}

TEST_F(ApplicationProfileTest, CachedSectionsAreNeverRefreshedAndSavesKeepTheFile)
{
    TQalApplicationProfile* profile = TQalApplicationProfile::GetInstance();
    EXPECT_EQ(profile->getValue(QStringLiteral("CLIENT APP"), QStringLiteral("keyboard")),
        QStringLiteral("DefaultKey"));
    EXPECT_EQ(profile->getValue(QStringLiteral("RISK"), QStringLiteral("limit")), QString());

    profile->SaveKeyProfile(QStringLiteral("Fast Keys"));
    profile->SaveColorProfile(QStringLiteral("Night"));
    profile->SaveSoundProfile(QStringLiteral("Quiet"));
    TIniFile(path(QStringLiteral("oms.ini")))
        .WriteString(QStringLiteral("RISK"), QStringLiteral("Limit"), QStringLiteral("9"));
    TIniFile(path(QStringLiteral("oms.ini")))
        .WriteString(QStringLiteral("OMS_LOCAL"), QStringLiteral("CPATH"), QStringLiteral("/srv"));

    // Sections read before (OMS_LOCAL at construction) keep what they held,
    // however their name is spelt; a missing section was cached as empty.
    EXPECT_EQ(
        profile->getValue(QStringLiteral("oms_local"), QStringLiteral("CPATH")), QStringLiteral("/opt/oms"));
    EXPECT_EQ(profile->getValue(QStringLiteral("Client App"), QStringLiteral("color")), QString());
    EXPECT_EQ(profile->getValue(QStringLiteral("risk"), QStringLiteral("Limit")), QString());
    // sectionValues reads the file as it is now.
    EXPECT_EQ(profile->sectionValues(QStringLiteral("CLIENT APP"))->toQStringList(),
        QStringList({ "Keyboard=Fast Keys", "color=Night", "sound=Quiet" }));
}

TEST_F(ApplicationProfileTest, LoginModeFollowsTheFirstCharacterOfConnectionMode)
{
    const struct
    {
        const char* line;
        TQalLoginMode expected;
    } rows[] = { { "connectionmode=internet", lmIMode }, { "ConnectionMode=I", lmIMode },
        { "ConnectionMode=a", lmAEMode }, { "ConnectionMode=DB", lmDBMode }, { "ConnectionMode=", lmDBMode },
        { "; none", lmDBMode } };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        internal::ResetApplicationProfile();
        writeIni(QByteArray("[DESK]\n") + row.line + "\n");
        TQalApplicationProfile::SetDefaultSection(QStringLiteral("desk"));
        EXPECT_EQ(TQalApplicationProfile::GetInstance()->LoginMode(), row.expected);
    }
    // A default section set after creation changes nothing.
    internal::ResetApplicationProfile();
    TQalApplicationProfile* profile = TQalApplicationProfile::GetInstance();
    TQalApplicationProfile::SetDefaultSection(QStringLiteral("DESK"));
    EXPECT_EQ(TQalApplicationProfile::GetInstance(), profile);
    EXPECT_EQ(profile->LoginMode(), lmDBMode);
}

TEST_F(ApplicationProfileTest, ShippedConfigurationOpensTheDaysLogNextToTheIniFile)
{
    const QString shipped = qal::test::sourcePath(QStringLiteral("config/oms.ini"));
    ASSERT_TRUE(QFile::remove(path(QStringLiteral("oms.ini"))));
    ASSERT_TRUE(QFile::copy(shipped, path(QStringLiteral("oms.ini")))) << shipped.toStdString();
    TQalApplicationProfile::SetDefaultSection(QStringLiteral("QAL"));
    const QString previous = QDir::currentPath(); // run from elsewhere
    ASSERT_TRUE(QDir::setCurrent(QDir::tempPath()));
    TQalApplicationProfile* profile = TQalApplicationProfile::GetInstance();
    QDir::setCurrent(previous);

    const QString today = QDate::currentDate().toString(QStringLiteral("yyyyMMdd"));
    EXPECT_EQ(omsLogFileName(), path(QStringLiteral("logs/qal%1.txt").arg(today)));
    EXPECT_EQ(omsDumpFileName(), path(QStringLiteral("logs/qaldump.txt")));
    EXPECT_EQ(omsConfigPath(profile->getValue(QStringLiteral("OMS_LOCAL"), QStringLiteral("AliasFile"))),
        path(QStringLiteral("aliases.ini")));
    EXPECT_EQ(profile->LoginMode(), lmDBMode);
    internal::ResetApplicationProfile(); // closes the log the profile opened
    EXPECT_TRUE(omsLogFileName().isEmpty());
}

TEST(ApplicationProfile, LogfileNamesFollowTheTokenRules)
{
    const struct
    {
        const char* pattern;
        const char* expected;
    } rows[] = {
        { R"(C:\logs\oms%YYYY%MM%DD.txt)", R"(C:\logs\oms20260305.txt)" },
        { "  logs/plain name.log  ", "logs/plain name.log" },
        { "x%DD%.txt", "x05.txt" },
        { "x%YYYY-%MM", "x03" },
        { "x%dd.TXT", "x05.txt" },
        { "x%DD.log", "x05" },
        { "x%DD%day%MM", "x0503" },
        { "x%YYYY.MM.DD", "x20260305" },
        { "a.b%DD.txt.txt", "a.b05.txt" },
        { "x%", "x" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pattern);
        EXPECT_EQ(
            TQalApplicationProfile::GenerateLogfileName(QString::fromUtf8(row.pattern), QDate(2026, 3, 5)),
            QString::fromUtf8(row.expected));
    }
    EXPECT_EQ(
        TQalApplicationProfile::MapDate(QStringLiteral("YYYY"), QStringLiteral("p"), QDate(987, 11, 25)),
        QStringLiteral("p0987"));
    EXPECT_EQ(
        TQalApplicationProfile::MapDate(QStringLiteral("yyyy"), QStringLiteral("p"), QDate(987, 11, 25)),
        QStringLiteral("p"));
}

} // namespace
} // namespace qal
