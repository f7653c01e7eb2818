// SPDX-License-Identifier: MIT
// qal whoami as a user runs it: a copy of the configuration shipped next to
// the tool, the sample order database that `qal db init --sample` makes in it,
// and the shipped omsProfile.ini in the working directory.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "tests/support/QtPrinters.h"

namespace {

struct ToolRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

class QalWhoami : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(desk_.isValid());
        const QDir shipped(
            QFileInfo(QStringLiteral(QAL_TOOL_PATH)).absolutePath() + QStringLiteral("/config"));
        for (const QString& name : shipped.entryList(QDir::Files))
            ASSERT_TRUE(QFile::copy(shipped.filePath(name), desk_.filePath(name))) << name.toStdString();
        const ToolRun init = qal({ "db", "init", "--sample" });
        ASSERT_EQ(init.exitCode, 0) << init.err.toStdString();
    }

    ToolRun qal(const QStringList& arguments)
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("OMS_INI"), desk_.filePath(QStringLiteral("oms.ini")));
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(desk_.path());
        process.start(QStringLiteral(QAL_TOOL_PATH), arguments);
        EXPECT_TRUE(process.waitForFinished(60000));
        return { process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()) };
    }

    void writeAliases(const char* text)
    {
        QFile file(desk_.filePath(QStringLiteral("aliases.ini")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

private:
    QTemporaryDir desk_;
};

TEST_F(QalWhoami, ShowsASupervisorsDetailsEntitlementsUsersSchemesAndLotButtons)
{
    const ToolRun run = qal({ "whoami", "--user", "S001" });
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    for (const char* line : {
             "found                  yes",
             "full name              馮淑儀 FUNG Shuk Yee",
             "admin level            1",
             "entitlements           ApproveOrder, SEHKTrade",
             "trades on              SEHK",
             "accessible users       D001, D002, D003, D004, S001",
             "color scheme           DefaultColor",
             "key scheme             DefaultKey",
             "lot buttons            1,2,5,10,20,50,100,200,500,1000,",
         }) {
        EXPECT_TRUE(run.out.contains(QString::fromUtf8(line))) << line << "\n" << run.out.toStdString();
    }
}

TEST_F(QalWhoami, AnUnknownUserOrAMissingDatabaseFails)
{
    const ToolRun unknown = qal({ "whoami", "--user", "D999" });
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_TRUE(unknown.err.contains(u"no user \"D999\" in User_File")) << unknown.err.toStdString();
    EXPECT_TRUE(unknown.out.contains(u"found                  no"));

    writeAliases("[OMSDATA]\nDRIVER=SQLITE\nDATABASE=missing/oms.db\n");
    const ToolRun down = qal({ "whoami", "--user", "S001" });
    EXPECT_EQ(down.exitCode, 1);
    EXPECT_TRUE(down.err.contains(u"the order database \"omsdata\" cannot be opened"))
        << down.err.toStdString();
}

TEST_F(QalWhoami, UsageErrors)
{
    EXPECT_EQ(qal({ "whoami" }).exitCode, 2);
    EXPECT_EQ(qal({ "whoami", "--user", " " }).exitCode, 2);
    EXPECT_EQ(qal({ "whoami", "--user", "D001", "extra" }).exitCode, 2);
    EXPECT_EQ(qal({ "whoami", "--bogus" }).exitCode, 2);
    const ToolRun help = qal({ "whoami", "--help" });
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains(u"--user <ID>"));
}

} // namespace
