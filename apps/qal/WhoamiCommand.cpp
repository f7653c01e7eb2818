// SPDX-License-Identifier: MIT
#include "apps/qal/WhoamiCommand.h"
#include "apps/qal/CommandLine.h"
#include "apps/qal/ToolConfig.h"

#include <exception>
#include <memory>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QTextStream>

#include "qalpack/omslib/omsIniFile.h"
#include "qalpack/profile/UserProfile.h"
#include "qalpack/runtime/Exception.h"

namespace qal::tool {
namespace {

QStringList keysOf(const TElHashList<TCustomRecord>& hash)
{
    QStringList keys;
    for (int i = 0; i < hash.Count(); ++i)
        keys.append(hash.KeyByIndex(i));
    return keys;
}

QString yesNo(bool value)
{
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

QString joined(const QStringList& list)
{
    return list.join(QStringLiteral(", "));
}

void printText(const TUserProfile& profile, const QString& profileFile, QTextStream& out)
{
    const auto line = [&out](const char* label, const QString& value) {
        out << QStringLiteral("%1 %2").arg(QLatin1StringView(label), -22).arg(value).trimmed() << '\n';
    };
    line("user", profile.UserId());
    line("found", yesNo(profile.Found()));
    line("full name", profile.FullName());
    line("admin level", QString::number(profile.AdminLevel()));
    line("active", yesNo(profile.Active()));
    line("dummy account", profile.DummyAccount());
    line("member list", profile.MemberList());
    line("entitlements", joined(keysOf(profile.Entitlements())));
    line("trades on", joined(profile.GetExchageTradeList()));
    line("exchange destinations", joined(profile.ExchangeDestinations()));
    line("accessible users", joined(keysOf(profile.GetAccessableUser())));
    line("color scheme", profile.getCurrentColorProfile());
    line("sound scheme", profile.getCurrentSoundProfile());
    line("key scheme", profile.getCurrentKeyProfile());
    line("profile file",
        profileFile + (QFileInfo::exists(profileFile) ? QString() : QStringLiteral(" (missing)")));
    line("lot buttons", profile.GetLotButtonValue());
}

// The same as one JSON object; lists are arrays.
void printJson(const TUserProfile& profile, const QString& profileFile, QTextStream& out)
{
    writeJsonLine(out,
        QJsonObject { { QStringLiteral("user"), profile.UserId() },
            { QStringLiteral("found"), profile.Found() }, { QStringLiteral("fullName"), profile.FullName() },
            { QStringLiteral("adminLevel"), profile.AdminLevel() },
            { QStringLiteral("active"), profile.Active() },
            { QStringLiteral("dummyAccount"), profile.DummyAccount() },
            { QStringLiteral("memberList"), profile.MemberList() },
            { QStringLiteral("entitlements"), QJsonArray::fromStringList(keysOf(profile.Entitlements())) },
            { QStringLiteral("tradesOn"), QJsonArray::fromStringList(profile.GetExchageTradeList()) },
            { QStringLiteral("exchangeDestinations"),
                QJsonArray::fromStringList(profile.ExchangeDestinations()) },
            { QStringLiteral("accessibleUsers"),
                QJsonArray::fromStringList(keysOf(profile.GetAccessableUser())) },
            { QStringLiteral("colorScheme"), profile.getCurrentColorProfile() },
            { QStringLiteral("soundScheme"), profile.getCurrentSoundProfile() },
            { QStringLiteral("keyScheme"), profile.getCurrentKeyProfile() },
            { QStringLiteral("profileFile"), profileFile },
            { QStringLiteral("profileFileFound"), QFileInfo::exists(profileFile) },
            { QStringLiteral("lotButtons"), profile.GetLotButtonValue() } });
}

} // namespace

int runWhoami(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Shows what the library knows of a user on the configured order database: details, entitlements,\n"
        "the exchanges the user trades on, exchange destinations, the users whose orders the user may see,\n"
        "colour, sound and keyboard schemes and lot buttons from omsProfile.ini. The configuration is\n"
        "OMS_INI, else config/oms.ini next to the tool; like a desk, the tool runs in the directory the\n"
        "configuration names as the desk's ([OMS_LOCAL] CPATH, the configuration's own directory when\n"
        "it is \".\"), and takes omsProfile.ini from there, else from next to the tool."));
    const QCommandLineOption user(
        QStringLiteral("user"), QStringLiteral("The user id (User_File.User_No)."), QStringLiteral("ID"));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("One JSON object for the user."));
    parser.addOptions({ user, json });

    if (const std::optional<int> done
        = parseCommandLine(parser, QStringLiteral("whoami"), arguments, out, err))
        return *done;
    if (!parser.positionalArguments().isEmpty()) {
        err << "qal whoami: unexpected argument \"" << parser.positionalArguments().first() << "\"\n";
        return kUsageError;
    }
    const QString userId = parser.value(user).trimmed();
    if (userId.isEmpty()) {
        err << "qal whoami: give the user with --user ID (see qal whoami --help)\n";
        return kUsageError;
    }
    if (!useConfiguration(QStringLiteral("whoami"), err))
        return kFailure;
    (void)enterDeskDirectory();

    std::unique_ptr<TUserProfile> profile;
    try {
        profile = std::make_unique<TUserProfile>(userId, QString());
        const QString profileFile = TUserProfile::GetProfilePath(QStringLiteral("omsProfile.ini"));
        if (parser.isSet(json))
            printJson(*profile, profileFile, out);
        else
            printText(*profile, profileFile, out);
    } catch (const Error& error) {
        err << "qal whoami: " << error.message() << '\n';
        return kFailure;
    } catch (const std::exception& error) {
        err << "qal whoami: " << QString::fromUtf8(error.what()) << '\n';
        return kFailure;
    }
    if (!profile->Found()) {
        err << "qal whoami: no user \"" << userId << "\" in User_File\n";
        return kFailure;
    }
    return kSuccess;
}

} // namespace qal::tool
