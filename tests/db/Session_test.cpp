// SPDX-License-Identifier: MIT
// Aliases come from the alias file that the OMS INI names: driver and
// parameter lines in file order, relative paths taken from the file's
// directory, a directory alias's first line "PATH=...".
#include "qalpack/db/Session.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "qalpack/db/Database.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/runtime/StringList.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/SourceTree.h"

namespace {

using qal::DatabaseError;
using qal::TSession;

void writeFile(const QString& path, const QByteArray& text)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
}

class SessionTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir_.isValid());
        QDir(dir_.path()).mkpath("cfg");
        writeFile(dir_.filePath("cfg/aliases.ini"),
            "; the desk's databases\n"
            "[OMSDATA]\nDriver=sqlite\nDATABASE=data/oms.db\n"
            "[OMSINI]\nDRIVER=STANDARD\nPATH=.\n"
            "[Server]\nDRIVER=POSTGRES\nHOST=db1\nPORT=5433\n"
            "DATABASE=oms\nPATH=../shared\n");
        aliasFile_ = dir_.filePath("cfg/aliases.ini");
    }

    QTemporaryDir dir_;
    QString aliasFile_;
};

TEST_F(SessionTest, ReadsAliasesWithDriverAndParameterLinesInOrder)
{
    TSession& session = TSession::Default();
    session.LoadAliases(aliasFile_);
    const QString cfg = QDir(dir_.filePath("cfg")).absolutePath();
    EXPECT_EQ(session.AliasNames(), QStringList({ "OMSDATA", "OMSINI", "Server" }));
    EXPECT_TRUE(session.IsAlias("omsdata"));
    EXPECT_FALSE(session.IsAlias("OMSDATADB"));

    const struct
    {
        const char* alias;
        const char* driver;
        QStringList params;
    } rows[] = {
        { "OmsData", "SQLITE", { "DATABASE=" + cfg + "/data/oms.db" } },
        { "omsini", "STANDARD", { "PATH=" + cfg } },
        { "SERVER", "POSTGRES",
            { "HOST=db1", "PORT=5433", "DATABASE=oms", "PATH=" + QDir::cleanPath(cfg + "/../shared") } },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.alias);
        EXPECT_EQ(session.GetAliasDriverName(row.alias), row.driver);
        qal::TStringList params;
        session.GetAliasParams(row.alias, params);
        EXPECT_EQ(params.toQStringList(), row.params);
    }
    EXPECT_THROW((void)session.AliasParams("NOPE"), DatabaseError);
}

TEST_F(SessionTest, FindsTheAliasFileThroughTheOmsIni)
{
    writeFile(dir_.filePath("oms.ini"), "[OMS_LOCAL]\nAliasFile=cfg/aliases.ini\n");
    TSession::Default().LoadAliasesFromOmsIni(dir_.filePath("oms.ini"));
    EXPECT_EQ(TSession::Default().AliasFile(), QFileInfo(aliasFile_).absoluteFilePath());

    writeFile(dir_.filePath("bare.ini"), "[OMS_LOCAL]\nLogFile=x\n");
    EXPECT_THROW(TSession::Default().LoadAliasesFromOmsIni(dir_.filePath("bare.ini")), DatabaseError);
    EXPECT_THROW(TSession::Default().LoadAliases(dir_.filePath("missing.ini")), DatabaseError);
    EXPECT_TRUE(TSession::Default().IsAlias("OMSINI")); // a failed load leaves the aliases as they were
}

TEST_F(SessionTest, OpeningADirectoryAliasOrAnUnknownAliasRaises)
{
    TSession::Default().LoadAliases(aliasFile_);
    const struct
    {
        const char* alias;
        const char* says;
    } rows[] = { { "OMSINI", "directory" }, { "NOPE", "unknown alias" } };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.alias);
        qal::TDatabase db;
        db.SetAliasName(row.alias);
        db.SetDatabaseName("CHECKDB");
        db.SetLoginPrompt(false);
        try {
            db.Open();
            FAIL() << "must raise";
        } catch (const DatabaseError& error) {
            EXPECT_TRUE(error.message().contains(row.says)) << error.message().toStdString();
            EXPECT_EQ(error.Database(), "CHECKDB");
        }
    }
}

TEST(ShippedAliases, TheOmsIniLeadsToTheEmbeddedOrderDatabaseAndTheConfigDirectory)
{
    const QString config
        = qal::test::sourcePath(QStringLiteral("config"));
    TSession::Default().LoadAliasesFromOmsIni(config + "/oms.ini");
    EXPECT_EQ(TSession::Default().AliasFile(), config + "/aliases.ini");
    EXPECT_EQ(TSession::Default().GetAliasDriverName("OMSDATA"), "SQLITE");
    EXPECT_EQ(
        TSession::Default().AliasParams("OMSDATA"), QStringList({ "DATABASE=" + config + "/data/oms.db" }));
    EXPECT_EQ(TSession::Default().AliasParams("OMSINI").value(0), "PATH=" + config);
}

} // namespace
