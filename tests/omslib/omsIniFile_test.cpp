// SPDX-License-Identifier: MIT
// Where the shared OMS INI file and the files it names are found.
#include "qalpack/omslib/omsIniFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtGlobal>

#include <gtest/gtest.h>

#include "qalpack/omslib/omsLog.h"
#include "tests/support/OmsIniFixture.h"

namespace qal {
namespace {

using test::OmsIniTest;

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

} // namespace
} // namespace qal
