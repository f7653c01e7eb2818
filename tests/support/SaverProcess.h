// SPDX-License-Identifier: MIT
// A `qal save` process fed orders through a pipe, as a desk hands them over
// one at a time, and what it answered for each.
#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

namespace qal::test {

// A new SEHK order for one of 40 accounts, as one line of `qal save` input.
inline QByteArray order(int i)
{
    return QStringLiteral("H|10|A%1|0|0005.HK|11|0|4|1000|3|80.5|13|D001|20|SEHK\n").arg(i % 40).toUtf8();
}

// A `qal save` reading orders from a pipe, one line at a time, the way a desk
// hands it orders.
class Saver
{
public:
    explicit Saver(const QString& omsIni)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("OMS_INI"), omsIni);
        process_.setProcessEnvironment(environment);
        process_.start(QStringLiteral(QAL_TOOL_PATH), { "save" });
        EXPECT_TRUE(process_.waitForStarted());
    }

    void send(const QByteArray& lines) { process_.write(lines); }

    // Sends one order and waits for its answer: the number, or an empty
    // string when the saver reported a failure.
    QString saveOne(int i)
    {
        const qsizetype numbersBefore = numbers_.size();
        const qsizetype answersBefore = numbersBefore + errors_.size();
        send(order(i));
        collect();
        // An answer comes on either channel; waitForReadyRead watches only
        // standard output, so both are polled.
        QDeadlineTimer deadline(60000);
        while (numbers_.size() + errors_.size() == answersBefore) {
            if (deadline.hasExpired() || process_.state() == QProcess::NotRunning)
                return QStringLiteral("<no answer>");
            process_.waitForReadyRead(20);
            collect();
        }
        return numbers_.size() > numbersBefore ? numbers_.back() : QString();
    }

    // Closes the pipe and waits for the saver to end.
    void finish()
    {
        process_.closeWriteChannel();
        EXPECT_TRUE(process_.waitForFinished(120000));
        collect();
    }

    [[nodiscard]] const QStringList& numbers() const { return numbers_; }
    [[nodiscard]] const QStringList& errors() const { return errors_; }

private:
    void collect()
    {
        out_ += process_.readAllStandardOutput();
        err_ += process_.readAllStandardError();
        take(out_, numbers_, {});
        // The tool's own line for each order it could not save; the library's
        // log lines around it are not answers.
        take(err_, errors_, QStringLiteral("qal save: "));
    }

    static void take(QByteArray& buffer, QStringList& lines, const QString& prefix)
    {
        qsizetype end = 0;
        while ((end = buffer.indexOf('\n')) >= 0) {
            const QString line = QString::fromUtf8(buffer.left(end));
            buffer.remove(0, end + 1);
            if (line.startsWith(prefix))
                lines << line;
        }
    }

    QProcess process_;
    QByteArray out_;
    QByteArray err_;
    QStringList numbers_;
    QStringList errors_;
};

} // namespace qal::test
