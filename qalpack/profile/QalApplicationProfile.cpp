// SPDX-License-Identifier: MIT
#include "qalpack/profile/QalApplicationProfile.h"

#include <utility>

#include <QStringList>

#include "qalpack/omslib/NTNetInfo.h"
#include "qalpack/omslib/omsIniFile.h"
#include "qalpack/omslib/omsLog.h"
#include "qalpack/runtime/Convert.h"

namespace qal {

namespace {

QString localSection()
{
    return QStringLiteral("OMS_LOCAL");
}

// The process-wide state: the singleton and what the host set before
// creating it.
struct ProfileGlobals
{
    TQalApplicationProfile* current = nullptr;
    QString instanceId;
    QString defaultSection;

    ProfileGlobals() = default;
    ProfileGlobals(const ProfileGlobals&) = delete;
    ProfileGlobals& operator=(const ProfileGlobals&) = delete;
    ~ProfileGlobals() { delete std::exchange(current, nullptr); }
};

ProfileGlobals& globals()
{
    static ProfileGlobals instance;
    return instance;
}

TQalLoginMode loginModeOf(const QString& connectionMode)
{
    if (connectionMode.startsWith(u'I', Qt::CaseInsensitive))
        return lmIMode;
    if (connectionMode.startsWith(u'A', Qt::CaseInsensitive))
        return lmAEMode;
    return lmDBMode;
}

// The pattern after its first '%', cut at each '%' and, once none is left,
// at each '.'.
QStringList logfileTokens(QString rest)
{
    QStringList tokens;
    for (;;) {
        qsizetype cut = rest.indexOf(u'%');
        if (cut < 0)
            cut = rest.indexOf(u'.');
        if (cut < 0) {
            tokens.append(rest);
            return tokens;
        }
        tokens.append(rest.left(cut));
        rest.remove(0, cut + 1);
    }
}

} // namespace

TQalApplicationProfile::TQalApplicationProfile(const QString& applicationId, QObject* parent)
    : QObject(parent)
    , applicationId_(applicationId)
    , ini_(omsIniFile())
    , netInfo_(new TNTNetInfo(this))
{
    (void)getValue(localSection(), QStringLiteral("CPATH"));

    const QString section = globals().defaultSection;
    if (!section.isEmpty()) {
        const QString logfile = getValue(section, QStringLiteral("logfile"));
        const QString dumpfile = getValue(section, QStringLiteral("dumpfile"));
        int level = omsLogInfo;
        if (TryStrToInt(getValue(section, QStringLiteral("LogLevel")), level))
            omsLogSetLevel(level);
        if (!logfile.isEmpty())
            openedLog_ = omsLogOpen(omsConfigPath(GenerateLogfileName(logfile)), omsConfigPath(dumpfile));
    }
    loginMode_ = loginModeOf(getValue(section, QStringLiteral("ConnectionMode")));
}

TQalApplicationProfile::~TQalApplicationProfile()
{
    ProfileGlobals& state = globals();
    if (state.current == this)
        state.current = nullptr;
}

TQalApplicationProfile* TQalApplicationProfile::GetInstance()
{
    ProfileGlobals& state = globals();
    if (state.current == nullptr)
        state.current = new TQalApplicationProfile(state.instanceId);
    return state.current;
}

void TQalApplicationProfile::SetInstanceId(const QString& id)
{
    ProfileGlobals& state = globals();
    if (state.instanceId.isEmpty())
        state.instanceId = id;
}

void TQalApplicationProfile::SetDefaultSection(const QString& section)
{
    globals().defaultSection = section;
}

QString TQalApplicationProfile::InstanceId()
{
    return globals().instanceId;
}

QString TQalApplicationProfile::DefaultSection()
{
    return globals().defaultSection;
}

QString TQalApplicationProfile::getValue(const QString& section, const QString& key) const
{
    // INI section names are compared without regard to case, so the cache is too.
    const QString cacheKey = section.toUpper();
    const std::unique_ptr<TStringList>* cached = sections_.GetItem(cacheKey);
    if (cached == nullptr) {
        sections_.AddItem(cacheKey, sectionValues(section));
        cached = sections_.GetItem(cacheKey);
    }
    return (*cached)->Values(key);
}

std::unique_ptr<TStringList> TQalApplicationProfile::sectionValues(const QString& section) const
{
    auto values = std::make_unique<TStringList>();
    ini_.ReadSectionValues(section, *values);
    return values;
}

void TQalApplicationProfile::SaveColorProfile(const QString& value)
{
    ini_.WriteString(ClientAppSection(), QStringLiteral("color"), value);
}

void TQalApplicationProfile::SaveKeyProfile(const QString& value)
{
    ini_.WriteString(ClientAppSection(), QStringLiteral("keyboard"), value);
}

void TQalApplicationProfile::SaveSoundProfile(const QString& value)
{
    ini_.WriteString(ClientAppSection(), QStringLiteral("sound"), value);
}

QString TQalApplicationProfile::GenerateLogfileName(const QString& pattern)
{
    return GenerateLogfileName(pattern, QDate::currentDate());
}

QString TQalApplicationProfile::GenerateLogfileName(const QString& pattern, const QDate& today)
{
    const QString trimmed = pattern.trimmed();
    const qsizetype percent = trimmed.indexOf(u'%');
    if (percent < 0)
        return trimmed;
    QString result = trimmed.left(percent);
    const QStringList tokens = logfileTokens(trimmed.mid(percent + 1));
    for (const QString& token : tokens)
        result = MapDate(token.toUpper(), result, today);
    if (tokens.back().toUpper() == u"TXT")
        result += QStringLiteral(".txt");
    return result;
}

QString TQalApplicationProfile::MapDate(const QString& token, const QString& prefix)
{
    return MapDate(token, prefix, QDate::currentDate());
}

QString TQalApplicationProfile::MapDate(const QString& token, const QString& prefix, const QDate& today)
{
    if (token == u"YYYY")
        return prefix + QStringLiteral("%1").arg(today.year(), 4, 10, QLatin1Char('0'));
    if (token == u"MM")
        return prefix + QStringLiteral("%1").arg(today.month(), 2, 10, QLatin1Char('0'));
    if (token == u"DD")
        return prefix + QStringLiteral("%1").arg(today.day(), 2, 10, QLatin1Char('0'));
    return prefix;
}

namespace internal {

void ResetApplicationProfile()
{
    ProfileGlobals& state = globals();
    if (state.current != nullptr && state.current->openedLog_)
        omsLogClose();
    delete std::exchange(state.current, nullptr);
    state.instanceId.clear();
    state.defaultSection.clear();
}

} // namespace internal

} // namespace qal
