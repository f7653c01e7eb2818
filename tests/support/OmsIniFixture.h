// SPDX-License-Identifier: MIT
// A shared OMS INI of the test's own (OMS_INI points at it) naming a
// protected database settings file, and the OMS log opened on a file the test
// reads back.
#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtGlobal>

#include <gtest/gtest.h>

#include "qalpack/omslib/omsLog.h"

namespace qal::test {

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

} // namespace qal::test
