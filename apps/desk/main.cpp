// SPDX-License-Identifier: MIT
// qal-desk: a dealer's order desk built on qalpack. Log on as one of the
// day's users, enter orders on the ticket, watch them on the blotter.
//
//   qal-desk [--lang zh_HK] [--alias KEY] [--user D001] [--screenshots DIR]
//
// The configuration is the OMS INI named by OMS_INI, else config/oms.ini next
// to the program, else the qal tool's beside it in the build tree, else the
// installed default; the desk works in its [OMS_LOCAL] CPATH, where the
// dealers' omsProfile.ini lies.
#include <cstdio>
#include <memory>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>

#include "apps/desk/DeskWindow.h"
#include "apps/desk/Instruments.h"
#include "apps/desk/LogonDialog.h"
#include "apps/desk/Screenshots.h"
#include "qalpack/model/Translations.h"
#include "qalpack/orderdb/DatabaseAccess.h"
#include "qalpack/profile/DbAccountModel.h"
#include "qalpack/profile/UserProfile.h"
#include "qalpack/runtime/IniFile.h"

namespace {

QString findConfiguration()
{
    const QString fromEnvironment = qEnvironmentVariable("OMS_INI");
    if (!fromEnvironment.isEmpty())
        return QFileInfo(fromEnvironment).absoluteFilePath();
    const QDir here(QCoreApplication::applicationDirPath());
    for (const QString& candidate : { here.filePath(QStringLiteral("config/oms.ini")),
             here.filePath(QStringLiteral("../qal/config/oms.ini")),
             here.filePath(QStringLiteral("../share/qalpack/config/oms.ini")) }) {
        if (QFileInfo::exists(candidate))
            return QFileInfo(candidate).absoluteFilePath();
    }
    return {};
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("qal-desk"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("A dealer's order desk on qalpack."));
    parser.addHelpOption();
    const QCommandLineOption lang(QStringLiteral("lang"),
        QStringLiteral("Language of the screens (zh_HK, en); default: the system's."),
        QStringLiteral("locale"));
    const QCommandLineOption alias(QStringLiteral("alias"),
        QStringLiteral("Order database: a data-map key of the OMS INI (its DSN_Source names the alias) "
                       "instead of OMSDATA."),
        QStringLiteral("key"));
    const QCommandLineOption user(QStringLiteral("user"),
        QStringLiteral("Log on as this user without the dialog."), QStringLiteral("id"));
    const QCommandLineOption screenshots(QStringLiteral("screenshots"),
        QStringLiteral("Draw the log-on dialog, the ticket and the blotter into DIR as PNG and quit."),
        QStringLiteral("dir"));
    parser.addOptions({ lang, alias, user, screenshots });
    parser.process(app);

    const QLocale locale = parser.isSet(lang) ? QLocale(parser.value(lang)) : QLocale::system();
    QLocale::setDefault(locale);
    qal::LoadTranslations(locale);

    const QString ini = findConfiguration();
    if (ini.isEmpty()) {
        std::fprintf(stderr, "qal-desk: no OMS INI (set OMS_INI, or run scripts/desk)\n");
        return 2;
    }
    qputenv("OMS_INI", QFile::encodeName(ini));
    const QDir configDir = QFileInfo(ini).absoluteDir();
    const QString cpath
        = qal::TIniFile(ini).ReadString(QStringLiteral("OMS_LOCAL"), QStringLiteral("CPATH"), {});
    if (!cpath.isEmpty())
        QDir::setCurrent(configDir.absoluteFilePath(cpath));
    if (parser.isSet(alias))
        qal::TOmsDM::GetInstance()->AddDataMap(QStringLiteral("omsdata"), parser.value(alias));

    try {
        if (parser.isSet(screenshots))
            return qal::desk::RenderScreenshots(parser.value(screenshots),
                parser.value(user).isEmpty() ? QStringLiteral("D001") : parser.value(user), locale,
                configDir);

        qal::TUserProfile::SetCustomLogin(qal::desk::DialogLogin(nullptr, parser.value(user)));
        qal::TUserProfile* profile = qal::TUserProfile::GetInstance();
        if (!profile)
            return 1;
        qal::TDbAccountModel accounts;
        accounts.setCurrentUserID(profile->UserId());
        qal::TAccountModel::SetInstance(&accounts);
        qal::desk::InstrumentBook book = qal::desk::InstrumentBook::ForConfiguration(configDir);
        qal::desk::DeskWindow window(*profile, book);
        window.show();
        const int code = QApplication::exec();
        qal::TAccountModel::SetInstance(nullptr);
        return code;
    } catch (const std::exception& e) {
        QMessageBox::critical(nullptr, QStringLiteral("qal-desk"), QString::fromUtf8(e.what()));
        std::fprintf(stderr, "qal-desk: %s\n", e.what());
        return 1;
    }
}
