// SPDX-License-Identifier: MIT
// A dealer's desk for the account box and explorer tests: the OMS INI sends
// the order database "omsdata" to the test database and carries the desk's
// "CLIENT APP" settings, the order schema is made, a dealer logs on, and the
// desk's message boxes are recorded instead of shown.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QApplication>
#include <QByteArray>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include "apps/qal/SampleDay.h"
#include "qalpack/feedback/SystemAlert.h"
#include "qalpack/forms/AcctListView.h"
#include "qalpack/orderdb/DatabaseAccess.h"
#include "qalpack/orderdb/OrderSchema.h"
#include "qalpack/profile/AccountModel.h"
#include "qalpack/profile/QalApplicationProfile.h"
#include "qalpack/profile/UserProfile.h"
#include "tests/support/DatabaseFixture.h"

namespace qal::test {

// Runs `act` on the explorer as soon as the next modal exec() shows it,
// from inside that exec's event loop, the way a dealer would use it. An
// explorer `act` leaves open is closed with Cancel and the test fails, so a
// broken case never hangs the run.
inline void whenExplorerShown(std::function<void(TAccountListView&)> act)
{
    QTimer::singleShot(0, [act = std::move(act)] {
        auto* explorer = qobject_cast<TAccountListView*>(QApplication::activeModalWidget());
        if (explorer == nullptr) {
            ADD_FAILURE() << "the Account Explorer was not shown modally";
            return;
        }
        act(*explorer);
        if (explorer->isVisible()) {
            ADD_FAILURE() << "the Account Explorer was left open";
            explorer->reject();
        }
    });
}

class AccountDeskTest : public DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        ASSERT_TRUE(desk_.isValid());
        savedOmsIni_ = qgetenv("OMS_INI");
        restoreOmsIni_ = true;
        qputenv("OMS_INI", QFile::encodeName(desk_.filePath(QStringLiteral("oms.ini"))));
        resetUnits();
        writeDeskSettings(QString());
        CreateOrderSchema(*database());
        SetMessageBoxHook([this](const TAlert& alert) {
            alerts.push_back(alert);
            return QMessageBox::Ok;
        });
    }

    void TearDown() override
    {
        SetMessageBoxHook({});
        resetUnits();
        TAccountModel::SetInstance(nullptr);
        if (restoreOmsIni_)
            qputenv("OMS_INI", savedOmsIni_);
        DatabaseTest::TearDown();
    }

    static void resetUnits()
    {
        internal::ResetAccountListView();
        internal::ResetUserProfile();
        internal::ResetDatabaseAccess();
        internal::ResetApplicationProfile();
    }

    // The desk's OMS INI with these lines ("KEY=value") in "CLIENT APP".
    // Read by a profile when it first needs the section: write it before
    // logOn.
    void writeDeskSettings(const QString& clientAppLines)
    {
        QFile file(desk_.filePath(QStringLiteral("oms.ini")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(QStringLiteral("[OMS_DATAMAP]\nOMSDATA=ORDERS_DSN\n[ORDERS_DSN]\nDSN_Source=TESTDB\n"
                                  "DSN_user=%1\n[CLIENT APP]\n%2\n")
                       .arg(user(), clientAppLines)
                       .toUtf8());
    }

    // The sample trading day of `qal db init --sample`: dealers D001 and
    // D002 see each other's accounts, D003 is another team's; D001 owns
    // A1001 "CHAN Tai Man" and A1012 "YEUNG Chi Keung" with shortcuts "1"
    // and "2", D002 owns A1002 "LEE Siu Ming" and A1013 "CHU Wai Ling".
    void writeSampleDay()
    {
        const QString spreads
            = qEnvironmentVariable("QALPACK_SOURCE_DIR") + QStringLiteral("/config/spreads/");
        tool::SampleDaySettings settings;
        settings.date = QDate(2026, 11, 18);
        settings.seed = 1;
        settings.securities = TSpreadTable::fromFile(spreads + QStringLiteral("sehk_securities.txt"));
        settings.etp = TSpreadTable::fromFile(spreads + QStringLiteral("sehk_etp.txt"));
        tool::WriteSampleDay(*database(), settings);
    }

    // Logs `userId` on, as the host's logon would.
    void logOn(const QString& userId)
    {
        TUserProfile::setInstance(std::make_unique<TUserProfile>(userId, QString()));
    }

    std::vector<TAlert> alerts;

private:
    QTemporaryDir desk_;
    QByteArray savedOmsIni_;
    bool restoreOmsIni_ = false;
};

} // namespace qal::test
