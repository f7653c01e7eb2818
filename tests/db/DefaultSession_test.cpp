// SPDX-License-Identifier: MIT
// A host only sets OMS_INI: the default session then knows the aliases of
// the alias file that the OMS INI names. (Its own program: the session is
// process-wide and reads the file once, on first use.)
#include "qalpack/db/Session.h"

#include <QDir>

#include <gtest/gtest.h>

#include "qalpack/orderdb/omsDBTools.h"
#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

TEST(DefaultSession, ReadsTheAliasFileTheOmsIniNamesOnFirstUse)
{
    const QString config = qEnvironmentVariable("QALPACK_SOURCE_DIR") + QStringLiteral("/config");
    qputenv("OMS_INI", (config + QStringLiteral("/oms.ini")).toUtf8());

    const TSession& session = TSession::Default();
    EXPECT_TRUE(session.IsAlias(QStringLiteral("OMSDATA")));
    EXPECT_TRUE(session.IsAlias(QStringLiteral("omsini")));
    EXPECT_EQ(QDir(DirStr(QStringLiteral("OMSINI"))).canonicalPath(), QDir(config).canonicalPath());
}

} // namespace
} // namespace qal
