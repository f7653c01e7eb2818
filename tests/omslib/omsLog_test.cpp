// SPDX-License-Identifier: MIT
// The OMS log: where messages go, which levels are kept, and the dump file.
#include "qalpack/omslib/omsLog.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace qal {
namespace {

class OmsLogTest : public ::testing::Test
{
protected:
    void TearDown() override
    {
        omsLogClose();
        omsLogSetLevel(omsLogInfo);
    }

    QString path(const QString& name) const { return dir_.filePath(name); }

    QByteArray takeFile(const QString& name) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::ReadWrite))
            return {};
        const QByteArray text = file.readAll();
        file.resize(0);
        return text;
    }

private:
    QTemporaryDir dir_;
};

TEST_F(OmsLogTest, MessagesAboveTheThresholdAreDropped)
{
    testing::internal::CaptureStderr();
    omsLogMsg(QStringLiteral("Cannot save order: no connection"), omsLogError);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("[error] Cannot save order: no connection"),
        std::string::npos);

    ASSERT_TRUE(omsLogOpen(path(QStringLiteral("logs/day.txt")), QString()));
    const struct
    {
        int threshold;
        const char* kept; // for the levels -1 .. 5
    } rows[] = { { omsLogError, "YYNNNNN" }, { omsLogInfo, "YYYYNNN" }, { -3, "YYNNNNN" }, { 9, "YYYYYYY" } };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.threshold);
        omsLogSetLevel(row.threshold);
        for (int level = -1; level <= 5; ++level) {
            SCOPED_TRACE(level);
            omsLogMsg(QStringLiteral("客戶 %1").arg(level), level);
            const QByteArray line = takeFile(QStringLiteral("logs/day.txt"));
            EXPECT_EQ(
                line.endsWith(QStringLiteral("] 客戶 %1\n").arg(level).toUtf8()), row.kept[level + 1] == 'Y')
                << line.constData();
        }
    }
}

TEST_F(OmsLogTest, DumpsGoToTheDumpFileWhateverTheThreshold)
{
    omsLogSetLevel(omsLogError);
    ASSERT_TRUE(omsLogOpen(path(QStringLiteral("day.txt")), path(QStringLiteral("dump.txt"))));
    omsDumpMsg(QStringLiteral("H|6|OMS000123|"));
    EXPECT_TRUE(takeFile(QStringLiteral("dump.txt")).endsWith(" H|6|OMS000123|\n"));
    EXPECT_TRUE(takeFile(QStringLiteral("day.txt")).isEmpty());

    // Without a dump file a dump is a debugging message of the log.
    ASSERT_TRUE(omsLogOpen(path(QStringLiteral("day.txt")), QString()));
    omsLogSetLevel(omsLogDebug);
    omsDumpMsg(QStringLiteral("H|7|T1|"));
    EXPECT_TRUE(takeFile(QStringLiteral("day.txt")).endsWith("[debug] H|7|T1|\n"));
}

TEST_F(OmsLogTest, AFailedOpenKeepsTheCurrentLog)
{
    ASSERT_TRUE(omsLogOpen(path(QStringLiteral("day.txt")), QString()));
    // No directory can be made under a regular file.
    EXPECT_FALSE(omsLogOpen(path(QStringLiteral("other.txt")), path(QStringLiteral("day.txt/dump.txt"))));
    EXPECT_EQ(omsLogFileName(), path(QStringLiteral("day.txt")));
    EXPECT_TRUE(omsDumpFileName().isEmpty());
    omsLogMsg(QStringLiteral("still here"), omsLogInfo);
    const QByteArray log = takeFile(QStringLiteral("day.txt"));
    EXPECT_TRUE(log.contains("[error] Cannot open the log")) << log.constData();
    EXPECT_TRUE(log.contains("still here"));
}

} // namespace
} // namespace qal
