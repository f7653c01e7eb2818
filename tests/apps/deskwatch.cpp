// SPDX-License-Identifier: MIT
// deskwatch: the smallest desk, for tests that run several desks as real
// processes. It opens the desk's bus from OMS_INI as a host does, logs on as
// --user with --instance, starts the single-logon watch and runs until the
// watch ends it. OMS_COMPUTERNAME plays the machine. It prints, one a line:
//   ready                       the watch is on
//   heard <record>              each record on USER_<user> (after the watch saw it)
//   helper <program> <args>     the message helper it would start, the message quoted
//   logoff                      the profile's logoff event
// and exits with the event loop's code (1 when the watch ended it).
#include <cstdio>
#include <memory>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QTextStream>

#include "qalpack/omslib/subMgr.h"
#include "qalpack/profile/DeskBus.h"
#include "qalpack/profile/UserProfile.h"
#include "qalpack/runtime/Exception.h"

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QCommandLineParser parser;
    const QCommandLineOption user(QStringLiteral("user"), QStringLiteral("User id."), QStringLiteral("ID"));
    const QCommandLineOption instance(
        QStringLiteral("instance"), QStringLiteral("Instance id."), QStringLiteral("ID"));
    parser.addOptions({ user, instance });
    parser.process(app);
    const QString userId = parser.value(user);

    int code = 0;
    try {
        const std::unique_ptr<qal::TsubMgr> bus = qal::OpenDeskBus();
        qal::SetHelperLauncher([&out](const QString& program, const QStringList& arguments) {
            QStringList shown = arguments;
            if (!shown.isEmpty())
                shown.last() = u'"' + shown.last() + u'"';
            out << "helper " << QFileInfo(program).fileName() << ' ' << shown.join(u' ') << Qt::endl;
        });
        qal::TUserProfile::SetCustomLogin([userId](QString& id, QString&, QString&, QString&, QString&) {
            id = userId;
            return true;
        });
        qal::TUserProfile* profile = qal::TUserProfile::GetInstance();
        profile->setInstanceId(parser.value(instance));
        QObject::connect(profile, &qal::TUserProfile::logoff, [&out] { out << "logoff" << Qt::endl; });
        profile->setDuplicateLogon(false);
        (void)bus->Subscribe(
            QStringLiteral("USER_") + userId, [&out](qal::TSubscription&, const qal::TFieldMessage& message) {
                out << "heard " << message.ToString() << Qt::endl;
            });
        out << "ready" << Qt::endl;
        code = QCoreApplication::exec();
        qal::TUserProfile::setInstance(nullptr);
    } catch (const qal::Error& error) {
        QTextStream(stderr) << "deskwatch: " << error.message() << Qt::endl;
        return 3;
    }
    return code;
}
