// SPDX-License-Identifier: MIT
// A desk on a sample day of its own: the shipped configuration copied into a
// temporary directory, its embedded database filled by `qal db init
// --sample`, OMS_INI pointing at it and the desk's working directory there.
#pragma once

#include <memory>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "apps/desk/Instruments.h"
#include "qalpack/feedback/SystemAlert.h"
#include "qalpack/db/Database.h"
#include "qalpack/db/Query.h"
#include "qalpack/orderdb/DatabaseAccess.h"
#include "qalpack/orderdb/orderDB.h"
#include "qalpack/profile/AccountModel.h"
#include "qalpack/profile/DbAccountModel.h"
#include "qalpack/profile/UserProfile.h"
#include "tests/support/SourceTree.h"

namespace qal::test {

class SampleDesk : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        dir_ = new QTemporaryDir;
        const QDir source(sourcePath(QStringLiteral("config")));
        QDirIterator files(source.path(), QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString from = files.next();
            const QString to = QDir(dir_->path()).filePath(source.relativeFilePath(from));
            QDir().mkpath(QFileInfo(to).path());
            QFile::copy(from, to);
        }
        qputenv("OMS_INI", QFile::encodeName(QDir(dir_->path()).filePath(QStringLiteral("oms.ini"))));
        QProcess qal;
        qal.start(QStringLiteral(QAL_TOOL_PATH),
            { QStringLiteral("db"), QStringLiteral("init"), QStringLiteral("--sample") });
        qal.waitForFinished(120000);
        initOutput_ = qal.readAllStandardError();
        initCode_ = qal.exitCode();
        QDir::setCurrent(dir_->path());
    }

    static void TearDownTestSuite()
    {
        internal::ResetUserProfile();
        internal::ResetDatabaseAccess();
        QDir::setCurrent(QDir::tempPath());
        delete dir_;
        dir_ = nullptr;
        qunsetenv("OMS_INI");
    }

    void SetUp() override
    {
        ASSERT_EQ(initCode_, 0) << initOutput_.toStdString();
        alerts_.clear();
        SetMessageBoxHook([this](const TAlert& alert) {
            alerts_.push_back(alert.text);
            return answer_;
        });
    }

    void TearDown() override
    {
        SetMessageBoxHook({});
        TAccountModel::SetInstance(nullptr);
        accounts_.reset();
        internal::ResetUserProfile();
    }

    // Logs on as `user` without the dialog and installs the account model.
    TUserProfile& logOn(const QString& user)
    {
        internal::ResetUserProfile();
        TUserProfile::SetCustomLogin([user](QString& id, QString&, QString&, QString&, QString&) {
            id = user;
            return true;
        });
        TUserProfile* profile = TUserProfile::GetInstance();
        installAccounts(*profile);
        return *profile;
    }

    void installAccounts(const TUserProfile& profile)
    {
        accounts_ = std::make_unique<TDbAccountModel>();
        accounts_->setCurrentUserID(profile.UserId());
        TAccountModel::SetInstance(accounts_.get());
    }

    static desk::InstrumentBook book() { return desk::InstrumentBook::ForConfiguration(QDir(dir_->path())); }

    static TDatabase& database() { return RequireOrderDatabase(); }

    // The first value of a one-column query, empty without a row.
    static QString scalar(const QString& sql)
    {
        TQuery query;
        query.SetDatabaseName(database().DatabaseName());
        query.SQL().Add(sql);
        query.Open();
        const QString value = query.Eof() ? QString() : query.Fields(0).AsString();
        query.Close();
        return value;
    }

    std::vector<QString> alerts_;
    QMessageBox::StandardButton answer_ = QMessageBox::Ok;
    std::unique_ptr<TDbAccountModel> accounts_;

private:
    static inline QTemporaryDir* dir_ = nullptr;
    static inline QByteArray initOutput_;
    static inline int initCode_ = -1;
};

} // namespace qal::test
