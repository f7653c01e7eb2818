// SPDX-License-Identifier: MIT
// Focus colours: the profile's byte order, the shipped profile's colours,
// and a box taking focus with and without a logged-on user.
#include "qalpack/feedback/EntryFeedback.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "qalpack/controls/PriceEntryEdit.h"
#include "qalpack/omslib/HexToInt.h"
#include "qalpack/orderdb/DatabaseAccess.h"
#include "qalpack/orderdb/OrderSchema.h"
#include "qalpack/profile/QalApplicationProfile.h"
#include "qalpack/profile/UserProfile.h"
#include "qalpack/runtime/IniFile.h"
#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/WidgetForm.h"

namespace qal {
namespace {

const QColor kPaleYellow(255, 255, 192);

TEST(EntryFeedback, ProfileColoursKeepRedInTheLowByte)
{
    const struct
    {
        const char* name;
        int stored;
        QColor color;
    } rows[] = {
        { "red", 0x0000FF, QColor(255, 0, 0) },
        { "blue", 0xFF0000, QColor(0, 0, 255) },
        { "pale yellow", 0xC0FFFF, kPaleYellow },
        { "olive", 0x004040, QColor(0x40, 0x40, 0) },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(ColorFromProfile(row.stored), row.color);
        EXPECT_EQ(ProfileFromColor(row.color), row.stored);
    }
    EXPECT_FALSE(ColorFromProfile(-1).isValid()) << "the profile's 'no such item'";
}

TEST(EntryFeedback, TheShippedProfileHighlightsTheActiveBoxPaleYellow)
{
    const TIniFile profile(qEnvironmentVariable("QALPACK_SOURCE_DIR") + "/config/omsProfile.ini");
    const QString stored = profile.ReadString(QStringLiteral("DefaultColor"), QString::fromLatin1(coEntryActiveBground), {});
    EXPECT_EQ(ColorFromProfile(HexToInt(stored, -1)), kPaleYellow);
    EXPECT_EQ(QString::number(ProfileFromColor(kPaleYellow), 16).toUpper(), stored);
}

TEST(EntryFeedback, WithNobodyLoggedOnABoxKeepsThePalettesColoursAndTheHostRuns)
{
    internal::ResetUserProfile();
    int terminations = 0;
    SetTerminateHook([&terminations] { ++terminations; });
    test::WidgetForm<TPriceEntryEdit> form;
    const QColor base = form.form.palette().color(QPalette::Base);
    form.enter();
    EXPECT_EQ(form.box->palette().color(QPalette::Base), base);
    form.leave();
    EXPECT_EQ(form.box->palette().color(QPalette::Base), base);
    EXPECT_EQ(terminations, 0);
    EXPECT_EQ(TUserProfile::CurrentInstance(), nullptr) << "nobody was asked to log on";
    SetTerminateHook({});
}

// A logged-on dealer whose desk has the shipped omsProfile.ini.
class EntryFeedbackDeskTest : public test::DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        ASSERT_TRUE(desk_.isValid());
        savedIni_ = qgetenv("OMS_INI");
        savedDir_ = QDir::currentPath();
        QFile ini(desk_.filePath(QStringLiteral("oms.ini")));
        ASSERT_TRUE(ini.open(QIODevice::WriteOnly));
        ini.write(QStringLiteral("[OMS_DATAMAP]\nOMSDATA=ORDERS_DSN\n[ORDERS_DSN]\nDSN_Source=TESTDB\n"
                                 "DSN_user=%1\n[CLIENT APP]\ncolor=\n")
                      .arg(user())
                      .toUtf8());
        ini.close();
        ASSERT_TRUE(QFile::copy(qEnvironmentVariable("QALPACK_SOURCE_DIR") + "/config/omsProfile.ini",
            desk_.filePath(QStringLiteral("omsProfile.ini"))));
        qputenv("OMS_INI", QFile::encodeName(ini.fileName()));
        ASSERT_TRUE(QDir::setCurrent(desk_.path()));
        resetUnits();
        CreateOrderSchema(*database());
        TUserProfile::setInstance(std::make_unique<TUserProfile>(QStringLiteral("D001"), QString()));
    }

    void TearDown() override
    {
        resetUnits();
        qputenv("OMS_INI", savedIni_);
        QDir::setCurrent(savedDir_);
        DatabaseTest::TearDown();
    }

    static void resetUnits()
    {
        internal::ResetUserProfile();
        internal::ResetDatabaseAccess();
        internal::ResetApplicationProfile();
    }

private:
    QTemporaryDir desk_;
    QByteArray savedIni_;
    QString savedDir_;
};

TEST_P(EntryFeedbackDeskTest, TheBoxBeingTypedInShowsTheDealersColour)
{
    test::WidgetForm<TPriceEntryEdit> form;
    form.enter();
    EXPECT_EQ(form.box->palette().color(QPalette::Base), kPaleYellow);
    form.leave();
    EXPECT_EQ(form.box->palette().color(QPalette::Base), QColor(Qt::white));
}

INSTANTIATE_TEST_SUITE_P(Sqlite, EntryFeedbackDeskTest, testing::Values(test::Driver::Sqlite), test::driverName);

} // namespace
} // namespace qal
