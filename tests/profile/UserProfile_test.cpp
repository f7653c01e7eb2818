// SPDX-License-Identifier: MIT
// The logged-on user's profile: logon through the host's callback (the
// terminate hook records the call, the process goes on), the user's details,
// entitlements, destinations and visible users on SQLite and PostgreSQL, the
// schemes and lot buttons of omsProfile.ini, and the single-logon watch fed
// by a real TsubMgr through the event loop, the helper's command line recorded.
#include "qalpack/profile/UserProfile.h"

#include <memory>
#include <vector>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "qalpack/omslib/subMgr.h"
#include "qalpack/orderdb/DatabaseAccess.h"
#include "qalpack/orderdb/OrderSchema.h"
#include "qalpack/profile/QalApplicationProfile.h"
#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

using test::DatabaseTest;
using test::Driver;

QStringList keysOf(const TElHashList<TCustomRecord>& hash)
{
    QStringList keys;
    for (int i = 0; i < hash.Count(); ++i)
        keys.append(hash.KeyByIndex(i));
    return keys;
}

// A desk on machine DESK1: the OMS INI sends "omsdata" to the test database,
// the working directory is the desk's own, and the order schema holds D001,
// whose enabled entitlements include a blank ID, and rows that must not
// count (disabled, an account's, another user's).
class UserProfileTest : public DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        ASSERT_TRUE(desk_.isValid());
        saved_ = { qgetenv("OMS_INI"), qgetenv("OMS_COMPUTERNAME"), QDir::currentPath().toUtf8() };
        write("oms.ini",
            QStringLiteral("[OMS_DATAMAP]\nOMSDATA=ORDERS_DSN\n[ORDERS_DSN]\nDSN_Source=TESTDB\n"
                           "DSN_user=%1\n[CLIENT APP]\ncolor=NightColor\nsound=\nKeyboard=TraderKey\n")
                .arg(user()));
        qputenv("OMS_INI", QFile::encodeName(desk_.filePath(QStringLiteral("oms.ini"))));
        qputenv("OMS_COMPUTERNAME", "DESK1");
        ASSERT_TRUE(QDir::setCurrent(desk_.path()));
        resetUnits();
        CreateOrderSchema(*database());
        exec("insert into User_File (User_No, Full_name, AdminUser, member, DummyAc, Active) values "
             "('D001', 'Chan Tai Man', 2, 'D002, D003;D004', 'D001X', TRUE);"
             "insert into AccountEntitle (account, UserType, EntitlementID, Enabled) values "
             "('D001', 0, 'SEHKTrade', 1), ('D001', 0, '  ', 1), ('D001', 0, 'OEFOK', 1), "
             "('D001', 0, ' HKFETrade ', 1), ('D001', 0, 'HKFETrade', 1), ('D001', 0, 'OEAO', 0), "
             "('D001', 1, 'OEShortS', 1), ('D002', 0, 'OEStopL', 1);"
             "insert into orsconfig (Seq, Exch_dest) values (1, 'SEHK'), (2, 'HKFE'), (3, 'SEHK_ODD')");
    }

    void TearDown() override
    {
        resetUnits();
        if (!saved_.empty()) {
            qputenv("OMS_INI", saved_[0]);
            qputenv("OMS_COMPUTERNAME", saved_[1]);
            QDir::setCurrent(QString::fromUtf8(saved_[2]));
        }
        DatabaseTest::TearDown();
    }

    static void resetUnits()
    {
        internal::ResetUserProfile();
        internal::ResetDatabaseAccess();
        internal::ResetApplicationProfile();
    }

    void write(const char* name, const QString& text)
    {
        QFile file(desk_.filePath(QString::fromLatin1(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text.toUtf8());
    }

private:
    QTemporaryDir desk_;
    std::vector<QByteArray> saved_;
};

// Cases whose outcome cannot depend on the driver run on SQLite only.
class UserProfileDeskTest : public UserProfileTest
{
};

TEST_P(UserProfileTest, LoadsDetailsEntitlementsDestinationsAndVisibleUsers)
{
    const TUserProfile profile(QStringLiteral("D001"), QStringLiteral("pw"));
    EXPECT_TRUE(profile.Found());
    EXPECT_EQ(profile.FullName(), u"Chan Tai Man");
    EXPECT_EQ(profile.AdminLevel(), 2);
    EXPECT_EQ(profile.DummyAccount(), u"D001X");
    EXPECT_TRUE(profile.Active());

    // SQLite reads the blank ID first (key order): the rows after it count.
    const QStringList entitlements = keysOf(profile.Entitlements());
    EXPECT_EQ(QSet<QString>(entitlements.begin(), entitlements.end()),
        (QSet<QString> { "SEHKTrade", "OEFOK", "HKFETrade" }));
    EXPECT_EQ(entitlements.size(), 3);
    const bool sehkFirst = entitlements.indexOf("SEHKTrade") < entitlements.indexOf("HKFETrade");
    EXPECT_EQ(profile.GetExchageTradeList(),
        (sehkFirst ? QStringList { "SEHK", "HKFE" } : QStringList { "HKFE", "SEHK" }));

    EXPECT_EQ(profile.ExchangeDestinations(), (QStringList { "SEHK", "HKFE", "SEHK_ODD" }));
    EXPECT_EQ(keysOf(profile.GetAccessableUser()), (QStringList { "D002", "D003", "D004", "D001" }));
    EXPECT_FALSE(profile.isAccessableUser(QStringLiteral("d001")));
}

TEST_P(UserProfileTest, AnUnknownUserIsNotFoundYetSeesTheirOwnOrders)
{
    const TUserProfile profile(QStringLiteral("D999"), QString());
    EXPECT_FALSE(profile.Found());
    EXPECT_EQ(profile.FullName(), QString());
    EXPECT_EQ(profile.Entitlements().Count(), 0);
    EXPECT_EQ(keysOf(profile.GetAccessableUser()), QStringList { "D999" });
}

TEST_P(UserProfileTest, LogonAcceptedRefusedOrMissing)
{
    const struct
    {
        const char* name;
        bool callback;
        bool accept;
    } rows[] = { { "accepted", true, true }, { "refused", true, false }, { "no callback", false, false } };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        resetUnits();
        int logons = 0;
        int terminations = 0;
        SetTerminateHook([&terminations] { ++terminations; });
        if (row.callback) {
            TUserProfile::SetCustomLogin([&](QString& a, QString& b, QString& c, QString& d, QString& e) {
                ++logons;
                EXPECT_TRUE(a.isEmpty() && b.isEmpty() && c.isEmpty() && d.isEmpty() && e.isEmpty());
                a = "D001", b = "pw", c = "third", d = "fourth", e = "fifth";
                return row.accept;
            });
        }
        testing::internal::CaptureStderr();
        TUserProfile* profile = TUserProfile::GetInstance();
        TUserProfile* again = TUserProfile::GetInstance();
        const std::string log = testing::internal::GetCapturedStderr();
        EXPECT_EQ(again, profile);
        EXPECT_EQ(logons, row.callback ? (row.accept ? 1 : 2) : 0) << "a refused logon is asked again";
        if (row.accept) {
            ASSERT_NE(profile, nullptr);
            EXPECT_EQ(QStringList({ profile->UserId(), profile->SecondLogonValue(),
                          profile->ThirdLogonValue(), profile->FifthLogonValue() }),
                (QStringList { "D001", "pw", "third", "fifth" }));
            EXPECT_TRUE(profile->Found());
            EXPECT_EQ(terminations, 0);
        } else {
            EXPECT_EQ(profile, nullptr);
            EXPECT_EQ(terminations, 2);
            EXPECT_NE(log.find("[error] No CustomLogin defined. Application quited"), std::string::npos)
                << log;
        }
    }
}

TEST_P(UserProfileTest, TheProfileListLoadsEachUserOnce)
{
    TUserProfileList* list = TUserProfileList::GetInstance();
    TUserProfile* d001 = list->GetUserProfile(QStringLiteral("D001"));
    exec("update User_File set Full_name = 'changed' where User_No = 'D001'");
    EXPECT_EQ(list->GetUserProfile(QStringLiteral("D001")), d001);
    EXPECT_EQ(d001->FullName(), u"Chan Tai Man");
    EXPECT_FALSE(list->GetUserProfile(QStringLiteral("d001"))->Found());
    EXPECT_EQ(list->Count(), 2);
}

TEST_P(UserProfileDeskTest, AnUnreachableOrderDatabaseIsAClearError)
{
    write("oms.ini", QStringLiteral("[OMS_DATAMAP]\nOMSDATA=DOWN_DSN\n[DOWN_DSN]\nDSN_Source=DOWNDB\n"));
    resetUnits();
    try {
        const TUserProfile profile(QStringLiteral("D001"), QString());
        ADD_FAILURE() << "loaded";
    } catch (const Error& error) {
        EXPECT_TRUE(error.message().contains(u"\"omsdata\" cannot be opened")) << error.what();
    }
}

TEST_P(UserProfileDeskTest, SingleLogonWatchEndsTheDeskOnAnotherMachinesLogonOrAForcedLogoff)
{
    const struct
    {
        const char* name;
        const char* record; // published by another machine
        bool suppressAfterStart;
        const char* shown; // nullptr: ignored
    } rows[] = {
        { "same instance from another machine", "image|USER_D001|13|D001|0|x|10|DESK2|21|desk-A|", false,
            "Someone else is logon as D001 from machine DESK2. Application is Terminating" },
        { "another instance from another machine", "image|USER_D001|10|DESK2|21|desk-B|", false, nullptr },
        { "same instance and machine", "image|USER_D001|10|DESK1|21|desk-A|", false, nullptr },
        { "forced logoff with text", "image|USER_D001|5|-1|25|Risk limit reached, call the desk head|", false,
            "Risk limit reached, call the desk head" },
        { "forced logoff without text", "image|USER_D001|5|-1|10|DESK1|21|desk-A|", false,
            "System Forced Logoff" },
        { "forced logoff as a partial update", "update|USER_D001|5|-1|", false, nullptr },
        { "forced logoff while suppressed", "image|USER_D001|5|-1|", true, nullptr },
        { "another user's topic", "image|USER_D002|5|-1|", false, nullptr },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TsubMgr otherMachine(QStringLiteral("other"));
        std::vector<TFieldMessage> announcements;
        (void)otherMachine.Subscribe(
            QStringLiteral("USER_D001"), [&announcements](TSubscription&, const TFieldMessage& message) {
                announcements.push_back(message);
            });
        TsubMgr desk(QStringLiteral("desk")); // the newest: TsubMgr::last()
        QStringList events; // what the desk did, in order
        SetHelperLauncher([&events](const QString& program, const QStringList& arguments) {
            events << program + u' ' + arguments.join(u'|');
        });
        SetTerminateHook([&events] { events << QStringLiteral("terminate"); });
        TUserProfile profile(QStringLiteral("D001"), QString());
        QObject::connect(&profile, &TUserProfile::logoff, [&events] { events << QStringLiteral("logoff"); });
        profile.setInstanceId(QStringLiteral("desk-A"));
        profile.setPublisher(&desk);
        profile.setDuplicateLogon(false);
        QCoreApplication::processEvents();
        EXPECT_TRUE(events.isEmpty()) << "its own announcement: " << events.join(u';').toStdString();
        ASSERT_EQ(announcements.size(), 1u);
        EXPECT_EQ(announcements[0].ToString(), u"image|USER_D001|13|D001|0|desk|10|DESK1|21|desk-A|");

        profile.setDuplicateLogon(row.suppressAfterStart);
        otherMachine.PublishText(row.record);
        QCoreApplication::processEvents();
        QStringList expected;
        if (row.shown != nullptr)
            expected
                = QStringList { MsgPopupPath() + " -ie|-t|Halvex|-m|" + row.shown, "logoff", "terminate" };
        EXPECT_EQ(events, expected);
        internal::ResetUserProfile();
    }
}

TEST_P(UserProfileDeskTest, TheWatchNeedsAManagerSubscribesOnceAndSurvivesItsProfilesEnd)
{
    int terminations = 0;
    SetHelperLauncher([](const QString&, const QStringList&) {});
    SetTerminateHook([&terminations] { ++terminations; });
    auto profile = std::make_unique<TUserProfile>(QStringLiteral("D001"), QString());
    testing::internal::CaptureStderr();
    profile->setDuplicateLogon(false);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(
        log.find("No subscription manager: the single-logon watch of D001 is not started"), std::string::npos)
        << log;

    TsubMgr desk;
    profile->setDuplicateLogon(false);
    profile->setDuplicateLogon(false);
    EXPECT_EQ(desk.SubscriptionCount(), 1);
    QObject::connect(profile.get(), &TUserProfile::logoff, [&profile] { profile.reset(); });
    desk.PublishText("image|USER_D001|5|-1|");
    QCoreApplication::processEvents();
    EXPECT_EQ(profile, nullptr) << "freed by its logoff handler";
    EXPECT_EQ(terminations, 1);
    EXPECT_EQ(desk.SubscriptionCount(), 0);
}

TEST_P(UserProfileDeskTest, SchemesFallBackToTheirDefaultsExceptKeys)
{
    write("omsProfile.ini",
        QStringLiteral("[DefaultColor]\ncoEntryActiveBground=FFFFC0\n"
                       "coEntryInactiveBground=FFFFFF\ncoBuyRow=E0F0FF\n"
                       "[NightColor]\ncoEntryActiveBground=404000\ncoEntryInactiveBground=\n"
                       "coSellRow=zz\n[DefaultSound]\nsnFilled=filled.wav\n"
                       "snRejected=rejected.wav\n[DefaultKey]\nkyBuy=F2\n"
                       "[TraderKey]\nkySell=F9\n"));
    write("filled.wav", QStringLiteral("RIFF"));
    const TUserProfile profile(QStringLiteral("D001"), QString());
    EXPECT_EQ(profile.getCurrentSoundProfile(), u"DefaultSound") << "an empty name is the default";
    const struct
    {
        const char* item;
        int colour;
    } colours[] = {
        { "coEntryActiveBground", 0x404000 }, // the current scheme's own
        { "coEntryInactiveBground", 0xFFFFFF }, // empty there: the default's
        { "coBuyRow", 0xE0F0FF }, // missing there: the default's
        { "coSellRow", -1 }, // not hexadecimal: no fallback
        { "coNowhere", -1 },
    };
    for (const auto& row : colours) {
        SCOPED_TRACE(row.item);
        EXPECT_EQ(profile.getCustomColor(QString::fromLatin1(row.item)), row.colour);
    }
    EXPECT_EQ(profile.getCustomSound(QStringLiteral("snFilled")), QDir::currentPath() + "/filled.wav");
    EXPECT_EQ(profile.getCustomSound(QStringLiteral("snRejected")),
        QCoreApplication::applicationDirPath() + "/rejected.wav")
        << "not in the working directory: next to the executable";
    EXPECT_EQ(profile.getCustomSound(QStringLiteral("snNowhere")), QString());
    EXPECT_EQ(profile.getCustomKey(QStringLiteral("kySell")), u"F9");
    EXPECT_EQ(profile.getCustomKey(QStringLiteral("kyBuy")), QString()) << "keys have no default scheme";
}

TEST_P(UserProfileDeskTest, LotButtonsAreSavedAsTenFieldsAndReadWithTenCommas)
{
    write("omsProfile.ini", QString()); // in the working directory, not next to the test program
    const TUserProfile before(QStringLiteral("D001"), QString());
    EXPECT_EQ(before.GetLotButtonValue(), u",,,,,,,,,,");
    const struct
    {
        const char* saved;
        const char* read;
    } rows[] = { { "1, 2,5", "1,2,5,,,,,,,," }, { "1,2,3,4,5,6,7,8,9,10,11,12", "1,2,3,4,5,6,7,8,9,10," } };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.saved);
        TUserProfile(QStringLiteral("D001"), QString()).SaveLotButtonSize(QString::fromLatin1(row.saved));
        EXPECT_EQ(TUserProfile(QStringLiteral("D001"), QString()).GetLotButtonValue(),
            QString::fromLatin1(row.read));
    }
    EXPECT_EQ(before.GetLotButtonValue(), u",,,,,,,,,,") << "a section once read is kept";
}

TEST_P(UserProfileDeskTest, ModesStartingWithAOrIAreNotDatabaseModes)
{
    TUserProfile profile(QStringLiteral("D001"), QString());
    const struct
    {
        const char* mode;
        bool database;
    } modes[] = { { "Normal", true }, { "", true }, { "ie", false }, { "AE", false }, { "auto", false } };
    for (const auto& row : modes) {
        SCOPED_TRACE(row.mode);
        profile.setMode(QString::fromLatin1(row.mode));
        EXPECT_EQ(profile.CheckDBMode(), row.database);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Drivers, UserProfileTest, testing::Values(Driver::Sqlite, Driver::Postgres), test::driverName);
INSTANTIATE_TEST_SUITE_P(Desk, UserProfileDeskTest, testing::Values(Driver::Sqlite), test::driverName);

TEST(UserProfileMembers, MemberListsAlwaysIncludeTheUser)
{
    const struct
    {
        const char* name;
        const char* members;
        const char* user;
        QStringList expected;
    } rows[] = {
        { "empty", "", "D001", { "D001" } },
        { "mixed separators and blanks", " D002 ;D003\r\nD004 ,, D005\t", "D001",
            { "D002", "D003", "D004", "D005", "D001" } },
        { "the user among them and twice", "D001,D002,D002", "D001", { "D001", "D002" } },
        { "case tells users apart", "d001", "D001", { "d001", "D001" } },
        { "blank user id", "D002", " ", { "D002" } },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TElHashList<TCustomRecord> hash;
        TUserProfile::MemberListToHashList(
            &hash, QString::fromLatin1(row.members), QString::fromLatin1(row.user));
        EXPECT_EQ(keysOf(hash), row.expected);
    }
    TUserProfile::MemberListToHashList(nullptr, QStringLiteral("D002"), QStringLiteral("D001"));
}

} // namespace
} // namespace qal
