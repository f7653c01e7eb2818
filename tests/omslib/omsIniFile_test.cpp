// SPDX-License-Identifier: MIT
// Where the shared OMS INI file and the files it names are found, and the
// protected database settings that a data-map key resolves through.
#include "qalpack/omslib/omsIniFile.h"

#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtGlobal>

#include <gtest/gtest.h>

#include "qalpack/omslib/DatabaseSetting.h"
#include "qalpack/omslib/omsLog.h"

namespace qal {
namespace {

class OmsIniTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        qputenv("OMS_INI", QFile::encodeName(path(QStringLiteral("oms.ini"))));
        writeFile(QStringLiteral("oms.ini"), "[OMS_LOCAL]\nDatabaseSettings=secret/db.ini\n");
        ASSERT_TRUE(QDir(dir_.path()).mkpath(QStringLiteral("secret")));
        writeFile(QStringLiteral("secret/db.ini"),
            "[OMSDATA_LIVE]\nAlias=OMSLIVE\nUser=dealer\nPassword=s3cret\n[NOALIAS]\nUser=dealer\n");
        ASSERT_TRUE(omsLogOpen(path(QStringLiteral("test.log")), QString()));
    }

    void TearDown() override
    {
        omsLogClose();
        qunsetenv("OMS_INI");
    }

    QString path(const QString& name) const { return dir_.filePath(name); }

    void writeFile(const QString& name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        ASSERT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
    }

    // What the log received since the last look.
    QByteArray takeLog() const
    {
        QFile file(path(QStringLiteral("test.log")));
        EXPECT_TRUE(file.open(QIODevice::ReadWrite));
        const QByteArray text = file.readAll();
        file.resize(0);
        return text;
    }

private:
    QTemporaryDir dir_;
};

TEST_F(OmsIniTest, OmsIniIsReadAtEachCallAndNamesTheConfigurationDirectory)
{
    EXPECT_EQ(omsConfigPath(QStringLiteral("./db/../aliases.ini")), path(QStringLiteral("aliases.ini")));
    EXPECT_EQ(omsConfigPath(QStringLiteral("/etc/oms/aliases.ini")), QStringLiteral("/etc/oms/aliases.ini"));

    qputenv("OMS_INI", "conf/oms.ini");
    EXPECT_EQ(omsIniPath(), QDir::current().absoluteFilePath(QStringLiteral("conf/oms.ini")));

    qunsetenv("OMS_INI");
    TIniFile unset = omsIniFile();
    EXPECT_TRUE(unset.FileName().isEmpty());
    EXPECT_TRUE(takeLog().contains("[warning] OMS_INI is not set"));
}

TEST_F(OmsIniTest, DatabaseSettingComesOnlyFromAnOwnerOnlyFile)
{
    QString alias;
    QString user;
    QString password;
    ASSERT_TRUE(GetDatabaseSetting(alias, user, password, QStringLiteral("omsdata_live")));
    EXPECT_EQ(QStringList({ alias, user, password }), QStringList({ "OMSLIVE", "dealer", "s3cret" }));

    const QFile::Permissions owner = QFile::ReadOwner | QFile::WriteOwner;
    struct Row
    {
        const char* name;
        QFile::Permissions permissions;
        const char* key;
        bool warned;
    };
    const Row rows[] = { { "group can read", owner | QFile::ReadGroup, "OMSDATA_LIVE", true },
        { "others can read", owner | QFile::ReadOther, "OMSDATA_LIVE", true },
        { "group can write", owner | QFile::WriteGroup, "OMSDATA_LIVE", true },
        { "unknown key", owner, "UNKNOWN", false }, { "empty alias", owner, "NOALIAS", false } };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(QFile::setPermissions(path(QStringLiteral("secret/db.ini")), row.permissions));
        alias = QStringLiteral("a");
        user = QStringLiteral("u");
        password = QStringLiteral("p");
        EXPECT_FALSE(GetDatabaseSetting(alias, user, password, QString::fromUtf8(row.key)));
        EXPECT_EQ(alias + user + password, QStringLiteral("aup"));
        const QByteArray log = takeLog();
        EXPECT_EQ(log.contains("[warning]") && log.contains("secret/db.ini"), row.warned) << log.constData();
    }
    ASSERT_TRUE(QFile::remove(path(QStringLiteral("secret/db.ini"))));
    EXPECT_FALSE(GetDatabaseSetting(alias, alias, alias, QStringLiteral("OMSDATA_LIVE")));
}

TEST_F(OmsIniTest, DatabaseSettingOfAnotherUserIsRefusedHoweverLocked)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a file to another user";
    const QByteArray file = QFile::encodeName(path(QStringLiteral("secret/db.ini")));
    ASSERT_EQ(::chown(file.constData(), 65534, 65534), 0);
    QString alias;
    QString user;
    QString password;
    EXPECT_FALSE(GetDatabaseSetting(alias, user, password, QStringLiteral("OMSDATA_LIVE")));
    EXPECT_TRUE(alias.isEmpty());
    const QByteArray log = takeLog();
    EXPECT_TRUE(log.contains("belongs to user id 65534")) << log.constData();
}

} // namespace
} // namespace qal
