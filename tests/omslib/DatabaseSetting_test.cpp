// SPDX-License-Identifier: MIT
// The protected database settings a data-map key resolves through: read only
// from a regular file of the desk's own user that nobody else may read.
#include "qalpack/omslib/DatabaseSetting.h"

#include <unistd.h>

#include <QFile>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include "tests/support/OmsIniFixture.h"

namespace qal {
namespace {

using DatabaseSettingTest = test::OmsIniTest;

TEST_F(DatabaseSettingTest, DatabaseSettingComesOnlyFromAnOwnerOnlyFile)
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

TEST_F(DatabaseSettingTest, DatabaseSettingOfAnotherUserIsRefusedHoweverLocked)
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
