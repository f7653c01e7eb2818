// SPDX-License-Identifier: MIT
// The logged-on user's profile: who the dealer is, what they are entitled to,
// whose orders they may see, their colour, sound and keyboard schemes and lot
// buttons, and the single-logon watch that ends the desk when the same user
// logs on from another machine or is forced off.
#pragma once

#include <functional>
#include <memory>

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include "qalpack/omslib/ElHashList.h"
#include "qalpack/qalpack_export.h"
#include "qalpack/runtime/IniFile.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

class TFieldMessage;
class TNTNetInfo;
class TSubscription;
class TsubMgr;
class TUserProfile;

// An entry of the profile's key sets (entitlements, accessible users).
class QALPACK_EXPORT TCustomRecord
{
public:
    explicit TCustomRecord(const QString& recordName = QString())
        : name(recordName)
    { }

    QString name;
    bool flag = false;
};

// The host's logon: fills (user id, second value, third, fourth, fifth) and
// returns true when the dealer logged on. The fourth value is not used.
using TCustomLogin
    = std::function<bool(QString& userId, QString& second, QString& third, QString& fourth, QString& fifth)>;

// Ends the application. The default quits the running event loop with exit
// code 1, or, when no event loop runs yet, exits the process with code 1.
// Tests install a hook that records the call instead.
using TTerminateHook = std::function<void()>;
// Installs `hook`; an empty hook restores the default.
QALPACK_EXPORT void SetTerminateHook(TTerminateHook hook);
// Calls the installed hook.
QALPACK_EXPORT void TerminateApplication();

// Starts a helper program detached from the desk. The default starts it
// with QProcess::startDetached and logs a failure; tests install a hook that
// records the command line instead.
using THelperLauncher = std::function<void(const QString& program, const QStringList& arguments)>;
// Installs `launcher`; an empty launcher restores the default.
QALPACK_EXPORT void SetHelperLauncher(THelperLauncher launcher);
// Calls the installed launcher.
QALPACK_EXPORT void LaunchHelper(const QString& program, const QStringList& arguments);

// The message helper shipped with the desk, next to the executable
// ("msgpopup", "msgpopup.exe" on Windows).
[[nodiscard]] QALPACK_EXPORT QString MsgPopupPath();

// The arguments the desk starts the message helper with to show `message`:
// "-ie", "-t", "Halvex", "-m" and the message as one argument.
[[nodiscard]] QALPACK_EXPORT QStringList MsgPopupArguments(const QString& message);

namespace internal {

// For tests: frees the profile and the profile list singletons, forgets the
// logon callback and restores the default terminate hook and launcher, as at
// process start.
QALPACK_EXPORT void ResetUserProfile();

} // namespace internal

// The profile of one user, loaded from the order database (the logical
// database "omsdata" of TOmsDM) at construction:
// - User_File: Full_name, AdminUser, member, DummyAc and Active of the row
//   whose User_No is the user id; Found() tells whether there was one.
// - AccountEntitle: the trimmed EntitlementID of every enabled user-type-0
//   row of the user, each once. A row whose trimmed ID is empty is stepped
//   past: it adds nothing and the rows after it are still read.
// - orsconfig: every Exch_dest, in the table's order.
// - The accessible users: the member list plus the user (see
//   MemberListToHashList).
//
// Settings: getValue reads the shared OMS INI file, getSetting the user's
// "omsProfile.ini" (GetProfilePath). Both cache a section on its first use
// and never refresh it, so writes made later (SaveLotButtonSize,
// Save*Profile included) are not seen through a section already read.
//
// Schemes: the current scheme names are "CLIENT APP" / "color", "sound" and
// "Keyboard" in the shared OMS INI file ("DefaultColor", "DefaultSound" and
// "DefaultKey" when empty); each scheme is a section of omsProfile.ini with
// one key per item.
//
// Single-logon watch: see setDuplicateLogon.
class QALPACK_EXPORT TUserProfile : public QObject
{
    Q_OBJECT

public:
    // Loads `userId` as above. An unknown user gives a profile with Found()
    // false and empty details. Throws qal::Error naming the user when the
    // order database cannot be opened, and the database layer's
    // DatabaseError when a query fails.
    TUserProfile(const QString& userId, const QString& secondValue, QObject* parent = nullptr);
    ~TUserProfile() override;

    // Registers the host's logon; replaces the one before.
    static void SetCustomLogin(TCustomLogin login);
    // The logged-on user's profile. On the first call (no profile yet) it
    // calls the logon callback with five empty strings and, when that
    // returns true, creates the profile with the first two values and keeps
    // the third and the fifth. With no callback, or a refused logon, it logs
    // "No CustomLogin defined. Application quited" as an error, calls
    // TerminateApplication and returns nullptr; the next call asks again.
    // The library owns the profile. Throws as the constructor.
    [[nodiscard]] static TUserProfile* GetInstance();
    // Replaces the profile that GetInstance returns, freeing the one before;
    // nullptr clears it.
    static void setInstance(std::unique_ptr<TUserProfile> profile);
    // The logged-on user's profile when there is one, else nullptr. Unlike
    // GetInstance it never asks the host to log on, never logs and never
    // terminates: controls use it at design time and before log-on.
    [[nodiscard]] static TUserProfile* CurrentInstance() noexcept;

    // The single-logon watch. Stores `suppress`; while it is true updates
    // are ignored. When false:
    // 1. With a publisher attached (setPublisher), announces this logon on
    //    topic "USER_<user id>" as the image
    //    "image|USER_<id>|13|<id>|0|<manager name>|10|<computer>|21|<instance id>|",
    //    the manager being the subscription manager below.
    // 2. Subscribes to "USER_<user id>" on the subscription manager
    //    (setSubscriptionManager, else TsubMgr::last()), once for the life of
    //    the profile; with no manager the watch cannot start and a warning is
    //    logged.
    // Each image then received (updates that are not images are ignored):
    // - tag 5 (a code, 0 when missing) is -1, a forced logoff: the message
    //   helper shows tag 25, or "System Forced Logoff" when it is empty;
    // - otherwise, when tag 21 equals this profile's instance id and tag 10
    //   (a computer name) differs from this computer's: the helper shows
    //   "Someone else is logon as <user id> from machine <tag 10>.
    //   Application is Terminating"; any other image is ignored (it is this
    //   desk's own announcement, or another application's).
    // After the helper is started (LaunchHelper(MsgPopupPath(),
    // MsgPopupArguments(text))), logoff() is emitted and the application is
    // terminated (TerminateApplication).
    virtual void setDuplicateLogon(bool suppress);
    // Whether `userId` is this profile's user (exact, case-sensitive).
    [[nodiscard]] virtual bool isMine(const QString& userId) const;

    // The publisher of the logon announcement; nullptr (the default): the
    // default publisher below, if any.
    void setPublisher(TsubMgr* publisher);
    // The publisher of every profile that has none of its own. OpenDeskBus
    // makes its manager the default, so a desk on the bus announces its logons
    // with no code of its own; nullptr (the default): none. Not owned; a
    // manager that is deleted stops being the default.
    static void SetDefaultPublisher(TsubMgr* publisher);
    // The manager the watch subscribes on; nullptr: TsubMgr::last().
    void setSubscriptionManager(TsubMgr* manager);
    [[nodiscard]] bool DuplicateLogonSuppressed() const noexcept { return suppressDuplicateLogon_; }

    // Identifies this running desk in the single-logon watch.
    void setInstanceId(const QString& instanceId);
    [[nodiscard]] const QString& InstanceId() const noexcept { return instanceId_; }

    [[nodiscard]] const QString& UserId() const noexcept { return userId_; }
    [[nodiscard]] const QString& SecondLogonValue() const noexcept { return secondValue_; }
    [[nodiscard]] const QString& ThirdLogonValue() const noexcept { return thirdValue_; }
    [[nodiscard]] const QString& FifthLogonValue() const noexcept { return fifthValue_; }
    [[nodiscard]] const QString& FullName() const noexcept { return fullName_; }
    [[nodiscard]] int AdminLevel() const noexcept { return adminLevel_; }
    [[nodiscard]] const QString& MemberList() const noexcept { return memberList_; }
    [[nodiscard]] const QString& DummyAccount() const noexcept { return dummyAccount_; }
    [[nodiscard]] bool Active() const noexcept { return active_; }
    [[nodiscard]] bool Found() const noexcept { return found_; }
    // Entitlement IDs in the order the database gave them.
    [[nodiscard]] const TElHashList<TCustomRecord>& Entitlements() const noexcept { return entitlements_; }
    [[nodiscard]] const QStringList& ExchangeDestinations() const noexcept { return exchangeDestinations_; }
    // The machine this desk runs on; owned by the profile.
    [[nodiscard]] TNTNetInfo* NetInfo() const noexcept { return netInfo_; }

    // Whether `userId` (exact) is among the users whose orders this user may
    // see.
    [[nodiscard]] bool isAccessableUser(const QString& userId) const;
    [[nodiscard]] TElHashList<TCustomRecord>& GetAccessableUser() noexcept { return accessibleUsers_; }
    [[nodiscard]] const TElHashList<TCustomRecord>& GetAccessableUser() const noexcept
    {
        return accessibleUsers_;
    }

    // Always true: function entitlements are checked through TEntitlement.
    [[nodiscard]] bool CheckEntitlement(const QString& key) const;
    // Whether `name` is in the feature list handed in (exact,
    // case-sensitive); false when none was.
    [[nodiscard]] bool CheckFeature_(const QString& name) const;
    // Keeps `features` (not owned; it must outlive the profile or be replaced)
    // when it is not null.
    void assignFeature(const TStringList* features);

    // The exchanges the user may trade: for each entitlement ID, in order,
    // that holds "Trade", the text before its first "Trade" ("SEHKTrade"
    // gives "SEHK"). Built on the first call.
    [[nodiscard]] const QStringList& GetExchageTradeList() const;

    // The logon mode, "Normal" at construction.
    [[nodiscard]] const QString& Mode() const noexcept { return mode_; }
    void setMode(const QString& mode);
    // False when the mode starts with "A", "I", "a" or "i"; true otherwise,
    // an empty mode included.
    [[nodiscard]] bool CheckDBMode() const;

    // "C" at construction; an empty flag does not replace it.
    [[nodiscard]] const QString& getOperatorFlag() const noexcept { return operatorFlag_; }
    void setOperatorFlag(const QString& flag);

    // Always empty.
    [[nodiscard]] QString GetURLAddress(
        const QString& first, const QString& second, const QString& third) const;

    // The value of `key` in `section` of the shared OMS INI file, cached per
    // section; empty when missing.
    [[nodiscard]] QString getValue(const QString& section, const QString& key) const;
    // The whole section of the shared OMS INI file, read now, as "key=value"
    // lines; the caller owns the list.
    [[nodiscard]] std::unique_ptr<TStringList> sectionValues(const QString& section) const;
    // The value of `key` in `section` of omsProfile.ini, cached per section;
    // empty when missing.
    [[nodiscard]] QString getSetting(const QString& section, const QString& key) const;
    // The whole section of omsProfile.ini, read now, as "key=value" lines;
    // also refreshes SectionNames(). The caller owns the list.
    [[nodiscard]] std::unique_ptr<TStringList> LoadCustomSetting(const QString& section) const;
    // The sections of omsProfile.ini as of the last LoadCustomSetting.
    [[nodiscard]] const QStringList& SectionNames() const noexcept { return sectionNames_; }

    // "<current directory>/<fileName>" when such a file exists there,
    // otherwise "<directory of the executable>/<fileName>".
    [[nodiscard]] static QString GetProfilePath(const QString& fileName);

    [[nodiscard]] QString getCurrentColorProfile() const;
    [[nodiscard]] QString getCurrentSoundProfile() const;
    [[nodiscard]] QString getCurrentKeyProfile() const;
    // The colour of `item` in the current colour scheme when it has a
    // non-empty value there, otherwise in "DefaultColor", read as
    // hexadecimal (HexToInt). The integer keeps the old desks' colour layout,
    // blue-green-red with red in the low byte (0x00BBGGRR: "0000FF" is red),
    // so existing profiles show the same colours; the widgets library turns
    // it into a QColor. -1 when neither has one, or the text is not
    // hexadecimal.
    [[nodiscard]] int getCustomColor(const QString& item) const;
    // The text of `item` in the current colour scheme; empty when missing.
    [[nodiscard]] QString getCustomColorString(const QString& item) const;
    // The colour of `item` in `scheme`, read as getCustomColor reads it.
    [[nodiscard]] int getColor(const QString& item, const QString& scheme) const;
    // The sound file of `item`: from the current sound scheme when it has a
    // non-empty value, otherwise from "DefaultSound", through GetProfilePath;
    // empty when neither names a file.
    [[nodiscard]] QString getCustomSound(const QString& item) const;
    // The sound file of `item` in `scheme` through GetProfilePath; empty when
    // the scheme names none.
    [[nodiscard]] QString getSound(const QString& item, const QString& scheme) const;
    // The key of `item` in the current keyboard scheme; empty when missing
    // (there is no default scheme for keys).
    [[nodiscard]] QString getCustomKey(const QString& item) const;

    // Write the value as given to "CLIENT APP" / "color", "sound",
    // "keyboard" of the shared OMS INI file. Throw qal::Error naming the file
    // when it cannot be written (OMS_INI unset included).
    void SaveColorProfile(const QString& value);
    void SaveSoundProfile(const QString& value);
    void SaveKeyProfile(const QString& value);

    // "lotButton1" to "lotButton10" of section "LotButtonSetting" of
    // omsProfile.ini, each followed by "," (ten commas when none is set).
    [[nodiscard]] QString GetLotButtonValue() const;
    // Writes the first ten comma-separated fields of `sizes` (trimmed) to
    // "lotButton1" ... "lotButton10"; missing fields are written empty,
    // fields after the tenth are ignored. Throws qal::Error naming the file
    // when it cannot be written.
    void SaveLotButtonSize(const QString& sizes);

    // Fills `hash` with the users of `memberList` and `userId` itself, each
    // trimmed and once, skipping empty ones; nothing when `hash` is null.
    // Members are separated by commas, semicolons, blanks or line breaks.
    static void MemberListToHashList(
        TElHashList<TCustomRecord>* hash, const QString& memberList, const QString& userId);

signals:
    // Emitted just before the single-logon watch terminates the application.
    void logoff();

private:
    void loadUser();
    void onLogonUpdate(const TFieldMessage& message);
    [[nodiscard]] TsubMgr* subscriptionManager() const;
    [[nodiscard]] QString profileIniPath() const;

    QString userId_;
    QString secondValue_;
    QString thirdValue_;
    QString instanceId_;
    QString fullName_;
    int adminLevel_ = 0;
    QString memberList_;
    QString dummyAccount_;
    bool active_ = false;
    bool found_ = false;
    TElHashList<TCustomRecord> entitlements_;
    QStringList exchangeDestinations_;
    QString fifthValue_;
    const TStringList* features_ = nullptr;
    TIniFile ini_;
    mutable TElHashList<std::unique_ptr<TStringList>> sections_;
    mutable TElHashList<std::unique_ptr<TStringList>> customSettings_;
    TElHashList<TCustomRecord> accessibleUsers_;
    bool suppressDuplicateLogon_ = false;
    QPointer<TsubMgr> publisher_;
    QString operatorFlag_;
    QPointer<TsubMgr> manager_;
    QPointer<TsubMgr> subscribedOn_;
    TSubscription* subscription_ = nullptr;
    TNTNetInfo* netInfo_ = nullptr;
    mutable QStringList sectionNames_;
    mutable QStringList exchangeTradeList_;
    mutable bool exchangeTradeListBuilt_ = false;
    QString mode_;
};

// Profiles of other users, by user id, created on first request. Owns them.
class QALPACK_EXPORT TUserProfileList
{
public:
    TUserProfileList();
    virtual ~TUserProfileList();
    TUserProfileList(const TUserProfileList&) = delete;
    TUserProfileList& operator=(const TUserProfileList&) = delete;

    // The process-wide list, created empty on the first call; the library
    // owns it.
    [[nodiscard]] static TUserProfileList* GetInstance();
    // Replaces the process-wide list, freeing the one before.
    static void SetInstance(std::unique_ptr<TUserProfileList> list);

    // The profile of `userId`, loaded with an empty second value on the
    // first request for that id (exact) and kept. Throws as TUserProfile's
    // constructor, keeping nothing.
    [[nodiscard]] virtual TUserProfile* GetUserProfile(const QString& userId);
    [[nodiscard]] int Count() const { return profiles_.Count(); }

private:
    TElHashList<std::unique_ptr<TUserProfile>> profiles_;
};

} // namespace qal
