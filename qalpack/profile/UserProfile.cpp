// SPDX-License-Identifier: MIT
#include "qalpack/profile/UserProfile.h"

#include <cstdlib>
#include <utility>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>

#include "qalpack/db/Database.h"
#include "qalpack/db/Query.h"
#include "qalpack/omslib/CodePage950.h"
#include "qalpack/omslib/FieldMessage.h"
#include "qalpack/omslib/HexToInt.h"
#include "qalpack/omslib/NTNetInfo.h"
#include "qalpack/omslib/omsIniFile.h"
#include "qalpack/omslib/omsLog.h"
#include "qalpack/omslib/subMgr.h"
#include "qalpack/orderdb/DatabaseAccess.h"
#include "qalpack/orderdb/omsSEHKManuModel.h"
#include "qalpack/profile/QalApplicationProfile.h"
#include "qalpack/runtime/Exception.h"
#include "qalpack/runtime/Format.h"

namespace qal {

namespace {

QString defaultColorScheme()
{
    return QStringLiteral("DefaultColor");
}

QString defaultSoundScheme()
{
    return QStringLiteral("DefaultSound");
}

QString defaultKeyScheme()
{
    return QStringLiteral("DefaultKey");
}

QString profileFileName()
{
    return QStringLiteral("omsProfile.ini");
}

QString lotButtonSection()
{
    return QStringLiteral("LotButtonSetting");
}

constexpr int kLotButtons = 10;

QString lotButtonKey(int button)
{
    return QStringLiteral("lotButton%1").arg(button);
}

// Tags of the single-logon record.
constexpr int kTagManager = 0;
constexpr int kTagCode = 5;
constexpr int kTagComputer = 10;
constexpr int kTagUserId = 13;
constexpr int kTagInstance = 21;
constexpr int kTagText = 25;
constexpr int kForcedLogoff = -1;

QString logonTopic(const QString& userId)
{
    return Format(QStringLiteral("USER_%s"), { userId });
}

void defaultTerminate()
{
    // Inside the event loop the desk winds down as after closing its main
    // window; before the loop runs there is nothing to wind down.
    if (QCoreApplication::instance() != nullptr && QThread::currentThread()->loopLevel() > 0) {
        QCoreApplication::exit(1);
        return;
    }
    std::exit(1);
}

void defaultLaunch(const QString& program, const QStringList& arguments)
{
    if (!QProcess::startDetached(program, arguments))
        omsLogMsg(QStringLiteral("Cannot start %1 %2").arg(program, arguments.join(u' ')), omsLogError);
}

// The unit's process-wide state.
struct UserProfileGlobals
{
    std::unique_ptr<TUserProfile> current;
    std::unique_ptr<TUserProfileList> list;
    TCustomLogin login;
    TTerminateHook terminate;
    THelperLauncher launcher;
    QPointer<TsubMgr> defaultPublisher;
};

// The manual trade list's users are the logged-on user's.
TOMSSEHKManuList::TCurrentUsers currentManuListUsers()
{
    TOMSSEHKManuList::TCurrentUsers users;
    if (const TUserProfile* const profile = TUserProfile::GetInstance()) {
        const TElHashList<TCustomRecord>& accessible = profile->GetAccessableUser();
        for (int i = 0; i < accessible.Count(); ++i)
            users.accessibleUsers << accessible.KeyByIndex(i);
        users.userNo = profile->UserId();
    }
    return users;
}

UserProfileGlobals& globals()
{
    static UserProfileGlobals instance = [] {
        TOMSSEHKManuList::SetCurrentUsersSource(currentManuListUsers);
        return UserProfileGlobals {};
    }();
    return instance;
}

// The cached section `section` of `ini`, read on first use. Section names
// are compared without regard to case, so the cache is too.
QString cachedValue(TElHashList<std::unique_ptr<TStringList>>& cache, const QString& section,
    const QString& key, const std::function<std::unique_ptr<TStringList>()>& load)
{
    const QString cacheKey = section.toUpper();
    std::unique_ptr<TStringList>* cached = cache.GetItem(cacheKey);
    if (cached == nullptr) {
        cache.AddItem(cacheKey, load());
        cached = cache.GetItem(cacheKey);
    }
    return (*cached)->Values(key);
}

} // namespace

void SetTerminateHook(TTerminateHook hook)
{
    globals().terminate = std::move(hook);
}

void TerminateApplication()
{
    // A copy: the hook may install another one.
    const TTerminateHook hook = globals().terminate;
    if (hook)
        hook();
    else
        defaultTerminate();
}

void SetHelperLauncher(THelperLauncher launcher)
{
    globals().launcher = std::move(launcher);
}

void LaunchHelper(const QString& program, const QStringList& arguments)
{
    const THelperLauncher launcher = globals().launcher;
    if (launcher)
        launcher(program, arguments);
    else
        defaultLaunch(program, arguments);
}

QString MsgPopupPath()
{
#ifdef Q_OS_WIN
    const QString name = QStringLiteral("msgpopup.exe");
#else
    const QString name = QStringLiteral("msgpopup");
#endif
    return QCoreApplication::applicationDirPath() + u'/' + name;
}

QStringList MsgPopupArguments(const QString& message)
{
    // The message is one argument of its own, however many words it has.
    return { QStringLiteral("-ie"), QStringLiteral("-t"), QStringLiteral("Halvex"), QStringLiteral("-m"),
        message };
}

namespace internal {

void ResetUserProfile()
{
    UserProfileGlobals& state = globals();
    state.current.reset();
    state.list.reset();
    state.login = nullptr;
    state.terminate = nullptr;
    state.launcher = nullptr;
}

} // namespace internal

TUserProfile::TUserProfile(const QString& userId, const QString& secondValue, QObject* parent)
    : QObject(parent)
    , userId_(userId)
    , secondValue_(secondValue)
    , ini_(omsIniFile())
    , operatorFlag_(QStringLiteral("C"))
    , mode_(QStringLiteral("Normal"))
{
    loadUser();
    MemberListToHashList(&accessibleUsers_, memberList_, userId_);
    netInfo_ = new TNTNetInfo(this);
}

TUserProfile::~TUserProfile()
{
    if (subscribedOn_)
        subscribedOn_->Unsubscribe(subscription_);
}

void TUserProfile::loadUser()
{
    TDatabase* database = TOmsDM::GetInstance()->GetDatabase(QStringLiteral("omsdata"));
    if (database == nullptr)
        throw Error(
            QStringLiteral("User profile of \"%1\": the order database \"omsdata\" cannot be opened: %2")
                .arg(userId_, TOmsDM::GetInstance()->OpenError(QStringLiteral("omsdata"))));
    TQuery query(*database);

    query.SQL().Add(QStringLiteral("Select * from User_File where User_No = :UserId"));
    query.ParamByName(u"UserId").SetAsString(userId_);
    query.Open();
    if (!query.Eof()) {
        fullName_ = query.FieldByName(u"Full_name").AsString();
        adminLevel_ = query.FieldByName(u"AdminUser").AsInteger();
        memberList_ = query.FieldByName(u"member").AsString();
        dummyAccount_ = query.FieldByName(u"DummyAc").AsString();
        active_ = query.FieldByName(u"Active").AsBoolean();
        found_ = true;
    }
    query.Close();

    query.SQL().Clear();
    query.SQL().Add(QStringLiteral(
        "Select * from AccountEntitle where account = :UserId and UserType = 0 and Enabled = 1"));
    query.ParamByName(u"UserId").SetAsString(userId_);
    query.Open();
    // A row with an empty ID adds nothing; the rows after it still count.
    for (; !query.Eof(); query.Next()) {
        const QString id = query.FieldByName(u"EntitlementID").AsString().trimmed();
        if (!id.isEmpty() && !entitlements_.Contains(id))
            entitlements_.AddItem(id, TCustomRecord(id));
    }
    query.Close();

    query.SQL().Clear();
    query.SQL().Add(QStringLiteral("Select * from orsconfig"));
    query.Open();
    for (; !query.Eof(); query.Next())
        exchangeDestinations_.append(query.FieldByName(u"Exch_dest").AsString());
    query.Close();
}

void TUserProfile::SetCustomLogin(TCustomLogin login)
{
    globals().login = std::move(login);
}

TUserProfile* TUserProfile::GetInstance()
{
    UserProfileGlobals& state = globals();
    if (!state.current && state.login) {
        QString userId, second, third, fourth, fifth;
        if (state.login(userId, second, third, fourth, fifth)) {
            auto profile = std::make_unique<TUserProfile>(userId, second);
            profile->thirdValue_ = third;
            profile->fifthValue_ = fifth;
            state.current = std::move(profile);
        }
    }
    if (!state.current) {
        omsLogMsg(QStringLiteral("No CustomLogin defined. Application quited"), omsLogError);
        TerminateApplication();
        return nullptr;
    }
    return state.current.get();
}

TUserProfile* TUserProfile::CurrentInstance() noexcept
{
    return globals().current.get();
}

void TUserProfile::setInstance(std::unique_ptr<TUserProfile> profile)
{
    // Moved out first, so that a profile whose destructor asks for the
    // singleton never sees a half-destroyed one.
    std::unique_ptr<TUserProfile> previous = std::exchange(globals().current, std::move(profile));
}

void TUserProfile::setDuplicateLogon(bool suppress)
{
    suppressDuplicateLogon_ = suppress;
    if (suppress)
        return;
    TsubMgr* manager = subscriptionManager();
    if (TsubMgr* const publisher = publisher_ ? publisher_.data() : globals().defaultPublisher.data()) {
        const QString announcement = Format(QStringLiteral("image|USER_%s|%d|%s|%d|%s|%d|%s|%d|%s|"),
            { userId_, kTagUserId, userId_, kTagManager, manager != nullptr ? manager->Name() : QString(),
                kTagComputer, netInfo_->ComputerName(), kTagInstance, instanceId_ });
        publisher->PublishText(cp950::encode(announcement));
    }
    if (subscribedOn_)
        return;
    if (manager == nullptr) {
        omsLogMsg(QStringLiteral("No subscription manager: the single-logon watch of %1 is not started")
                      .arg(userId_),
            omsLogWarning);
        return;
    }
    subscription_ = manager->Subscribe(logonTopic(userId_),
        [this](TSubscription&, const TFieldMessage& message) { onLogonUpdate(message); });
    subscribedOn_ = manager;
}

void TUserProfile::onLogonUpdate(const TFieldMessage& message)
{
    if (suppressDuplicateLogon_ || !message.IsImage())
        return;
    const QString computer = message.GetField(kTagComputer);
    const QString instance = message.GetField(kTagInstance);
    const int code = message.GetFieldInt(kTagCode);
    const QString text = message.GetField(kTagText);

    QString shown;
    if (code == kForcedLogoff) {
        shown = text.isEmpty() ? QStringLiteral("System Forced Logoff") : text;
    } else {
        if (instance != instanceId_ || computer == netInfo_->ComputerName())
            return;
        shown = Format(
            QStringLiteral("Someone else is logon as %s from machine %s. Application is Terminating"),
            { userId_, computer });
    }
    omsLogMsg(QStringLiteral("Logged off: %1").arg(shown), omsLogWarning);
    LaunchHelper(MsgPopupPath(), MsgPopupArguments(shown));
    // A logoff handler may free the profile: nothing of it is used after.
    emit logoff();
    TerminateApplication();
}

TsubMgr* TUserProfile::subscriptionManager() const
{
    return manager_ ? manager_.data() : TsubMgr::last();
}

bool TUserProfile::isMine(const QString& userId) const
{
    return userId == userId_;
}

void TUserProfile::SetDefaultPublisher(TsubMgr* publisher)
{
    globals().defaultPublisher = publisher;
}

void TUserProfile::setPublisher(TsubMgr* publisher)
{
    publisher_ = publisher;
}

void TUserProfile::setSubscriptionManager(TsubMgr* manager)
{
    manager_ = manager;
}

void TUserProfile::setInstanceId(const QString& instanceId)
{
    instanceId_ = instanceId;
}

bool TUserProfile::isAccessableUser(const QString& userId) const
{
    return accessibleUsers_.Contains(userId);
}

bool TUserProfile::CheckEntitlement(const QString&) const
{
    return true;
}

bool TUserProfile::CheckFeature_(const QString& name) const
{
    if (features_ == nullptr)
        return false;
    for (const QString& feature : *features_) {
        if (feature == name)
            return true;
    }
    return false;
}

void TUserProfile::assignFeature(const TStringList* features)
{
    if (features != nullptr)
        features_ = features;
}

const QStringList& TUserProfile::GetExchageTradeList() const
{
    if (!exchangeTradeListBuilt_) {
        exchangeTradeListBuilt_ = true;
        for (int i = 0; i < entitlements_.Count(); ++i) {
            const QString& key = entitlements_.KeyByIndex(i);
            if (const qsizetype at = key.indexOf(u"Trade"); at >= 0)
                exchangeTradeList_.append(key.left(at));
        }
    }
    return exchangeTradeList_;
}

void TUserProfile::setMode(const QString& mode)
{
    mode_ = mode;
}

bool TUserProfile::CheckDBMode() const
{
    return mode_.isEmpty() || !QStringView(u"AIai").contains(mode_.front());
}

void TUserProfile::setOperatorFlag(const QString& flag)
{
    if (!flag.isEmpty())
        operatorFlag_ = flag;
}

QString TUserProfile::GetURLAddress(const QString&, const QString&, const QString&) const
{
    return QString();
}

QString TUserProfile::getValue(const QString& section, const QString& key) const
{
    return cachedValue(sections_, section, key, [&] { return sectionValues(section); });
}

std::unique_ptr<TStringList> TUserProfile::sectionValues(const QString& section) const
{
    auto values = std::make_unique<TStringList>();
    ini_.ReadSectionValues(section, *values);
    return values;
}

QString TUserProfile::getSetting(const QString& section, const QString& key) const
{
    return cachedValue(customSettings_, section, key, [&] { return LoadCustomSetting(section); });
}

std::unique_ptr<TStringList> TUserProfile::LoadCustomSetting(const QString& section) const
{
    const TIniFile profile(profileIniPath());
    auto values = std::make_unique<TStringList>();
    profile.ReadSectionValues(section, *values);
    sectionNames_ = profile.ReadSections();
    return values;
}

QString TUserProfile::GetProfilePath(const QString& fileName)
{
    if (QFileInfo::exists(QDir::current().filePath(fileName)))
        return QDir::currentPath() + u'/' + fileName;
    return QCoreApplication::applicationDirPath() + u'/' + fileName;
}

QString TUserProfile::profileIniPath() const
{
    return GetProfilePath(profileFileName());
}

QString TUserProfile::getCurrentColorProfile() const
{
    const QString scheme = getValue(ClientAppSection(), QStringLiteral("color"));
    return scheme.isEmpty() ? defaultColorScheme() : scheme;
}

QString TUserProfile::getCurrentSoundProfile() const
{
    const QString scheme = getValue(ClientAppSection(), QStringLiteral("sound"));
    return scheme.isEmpty() ? defaultSoundScheme() : scheme;
}

QString TUserProfile::getCurrentKeyProfile() const
{
    const QString scheme = getValue(ClientAppSection(), QStringLiteral("Keyboard"));
    return scheme.isEmpty() ? defaultKeyScheme() : scheme;
}

int TUserProfile::getCustomColor(const QString& item) const
{
    const QString own = getSetting(getCurrentColorProfile(), item);
    return HexToInt(own.isEmpty() ? getSetting(defaultColorScheme(), item) : own, -1);
}

QString TUserProfile::getCustomColorString(const QString& item) const
{
    return getSetting(getCurrentColorProfile(), item);
}

int TUserProfile::getColor(const QString& item, const QString& scheme) const
{
    return HexToInt(getSetting(scheme, item), -1);
}

QString TUserProfile::getCustomSound(const QString& item) const
{
    QString file = getSetting(getCurrentSoundProfile(), item);
    if (file.isEmpty())
        file = getSetting(defaultSoundScheme(), item);
    return file.isEmpty() ? QString() : GetProfilePath(file);
}

QString TUserProfile::getSound(const QString& item, const QString& scheme) const
{
    const QString file = getSetting(scheme, item);
    return file.isEmpty() ? QString() : GetProfilePath(file);
}

QString TUserProfile::getCustomKey(const QString& item) const
{
    return getSetting(getCurrentKeyProfile(), item);
}

void TUserProfile::SaveColorProfile(const QString& value)
{
    ini_.WriteString(ClientAppSection(), QStringLiteral("color"), value);
}

void TUserProfile::SaveSoundProfile(const QString& value)
{
    ini_.WriteString(ClientAppSection(), QStringLiteral("sound"), value);
}

void TUserProfile::SaveKeyProfile(const QString& value)
{
    ini_.WriteString(ClientAppSection(), QStringLiteral("keyboard"), value);
}

QString TUserProfile::GetLotButtonValue() const
{
    QString joined;
    for (int button = 1; button <= kLotButtons; ++button)
        joined += getSetting(lotButtonSection(), lotButtonKey(button)) + u',';
    return joined;
}

void TUserProfile::SaveLotButtonSize(const QString& sizes)
{
    const QStringList fields = sizes.split(u',');
    TIniFile profile(profileIniPath());
    for (int button = 1; button <= kLotButtons; ++button) {
        const QString size = button <= fields.size() ? fields[button - 1].trimmed() : QString();
        profile.WriteString(lotButtonSection(), lotButtonKey(button), size);
    }
}

void TUserProfile::MemberListToHashList(
    TElHashList<TCustomRecord>* hash, const QString& memberList, const QString& userId)
{
    if (hash == nullptr)
        return;
    static const QRegularExpression separators(QStringLiteral("[,;\\s]+"));
    QStringList members = memberList.split(separators, Qt::SkipEmptyParts);
    members.append(userId);
    for (const QString& member : std::as_const(members)) {
        const QString id = member.trimmed();
        if (!id.isEmpty() && !hash->Contains(id))
            hash->AddItem(id, TCustomRecord(id));
    }
}

TUserProfileList::TUserProfileList() = default;

TUserProfileList::~TUserProfileList() = default;

TUserProfileList* TUserProfileList::GetInstance()
{
    UserProfileGlobals& state = globals();
    if (!state.list)
        state.list = std::make_unique<TUserProfileList>();
    return state.list.get();
}

void TUserProfileList::SetInstance(std::unique_ptr<TUserProfileList> list)
{
    std::unique_ptr<TUserProfileList> previous = std::exchange(globals().list, std::move(list));
}

TUserProfile* TUserProfileList::GetUserProfile(const QString& userId)
{
    if (std::unique_ptr<TUserProfile>* found = profiles_.GetItem(userId))
        return found->get();
    profiles_.AddItem(userId, std::make_unique<TUserProfile>(userId, QString()));
    return profiles_.GetItem(userId)->get();
}

} // namespace qal
