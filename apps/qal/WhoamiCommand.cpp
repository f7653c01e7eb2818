// SPDX-License-Identifier: MIT
#include "apps/qal/WhoamiCommand.h"
#include "apps/qal/ToolConfig.h"

#include <exception>
#include <memory>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
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
    line("entitlements", keysOf(profile.Entitlements()).join(QStringLiteral(", ")));
    line("trades on", profile.GetExchageTradeList().join(QStringLiteral(", ")));
    line("exchange destinations", profile.ExchangeDestinations().join(QStringLiteral(", ")));
    line("accessible users", keysOf(profile.GetAccessableUser()).join(QStringLiteral(", ")));
    line("color scheme", profile.getCurrentColorProfile());
    line("sound scheme", profile.getCurrentSoundProfile());
    line("key scheme", profile.getCurrentKeyProfile());
    line("profile file",
        profileFile + (QFileInfo::exists(profileFile) ? QString() : QStringLiteral(" (missing)")));
    line("lot buttons", profile.GetLotButtonValue());
}

} // namespace

int runWhoami(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Shows what the library knows of a user on the configured order database: details, entitlements,\n"
        "the exchanges the user trades on, exchange destinations, the users whose orders the user may see,\n"
        "colour, sound and keyboard schemes and lot buttons (from omsProfile.ini in the current directory,\n"
        "else next to the tool). The configuration is OMS_INI, else config/oms.ini next to the tool."));
    const QCommandLineOption user(
        QStringLiteral("user"), QStringLiteral("The user id (User_File.User_No)."), QStringLiteral("ID"));
    const QCommandLineOption help(
        { QStringLiteral("h"), QStringLiteral("help") }, QStringLiteral("Show this help."));
    parser.addOptions({ user, help });

    if (!parser.parse(QStringList { QStringLiteral("qal whoami") } + arguments)) {
        err << "qal whoami: " << parser.errorText() << '\n';
        return 2;
    }
    if (parser.isSet(help)) {
        out << parser.helpText();
        return 0;
    }
    if (!parser.positionalArguments().isEmpty()) {
        err << "qal whoami: unexpected argument \"" << parser.positionalArguments().first() << "\"\n";
        return 2;
    }
    const QString userId = parser.value(user).trimmed();
    if (userId.isEmpty()) {
        err << "qal whoami: give the user with --user ID (see qal whoami --help)\n";
        return 2;
    }
    if (!useConfiguration(QStringLiteral("whoami"), err))
        return 1;

    std::unique_ptr<TUserProfile> profile;
    try {
        profile = std::make_unique<TUserProfile>(userId, QString());
        const QString profileFile = TUserProfile::GetProfilePath(QStringLiteral("omsProfile.ini"));
        printText(*profile, profileFile, out);
    } catch (const Error& error) {
        err << "qal whoami: " << error.message() << '\n';
        return 1;
    } catch (const std::exception& error) {
        err << "qal whoami: " << QString::fromUtf8(error.what()) << '\n';
        return 1;
    }
    if (!profile->Found()) {
        err << "qal whoami: no user \"" << userId << "\" in User_File\n";
        return 1;
    }
    return 0;
}

} // namespace qal::tool
