// SPDX-License-Identifier: MIT
// The message helper as the desk starts it: the library's own command line,
// off screen, closing by itself.
#include <QFileInfo>
#include <QProcess>

#include <gtest/gtest.h>

#include "qalpack/profile/UserProfile.h"
#include "tests/support/QtPrinters.h"

namespace {

// Built next to the qal tool.
QString helperPath()
{
    return QFileInfo(QStringLiteral(QAL_TOOL_PATH)).absolutePath() + QStringLiteral("/msgpopup");
}

struct HelperRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

HelperRun msgpopup(const QStringList& arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.start(helperPath(), arguments);
    EXPECT_TRUE(process.waitForFinished(30000));
    return { process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
        QString::fromUtf8(process.readAllStandardError()) };
}

TEST(MsgPopup, ShowsTheDesksMessageTitledFromItsArgumentAndClosesByItself)
{
    const QString message
        = QStringLiteral("Someone else is logon as D001 from machine DESK2. Application is Terminating");
    const HelperRun run
        = msgpopup(qal::MsgPopupArguments(message) + QStringList { "--timeout-ms", "50", "--print" });
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, QStringLiteral("title: Halvex\nmessage: %1\n").arg(message));
}

TEST(MsgPopup, RefusesACommandLineWithoutAMessageOrWithABadTimeout)
{
    EXPECT_EQ(msgpopup({ "-ie", "-t", "Halvex" }).exitCode, 2);
    EXPECT_EQ(msgpopup({ "-m", "x", "--timeout-ms", "soon" }).exitCode, 2);
    EXPECT_EQ(msgpopup({ "--help" }).exitCode, 0);
}

} // namespace
