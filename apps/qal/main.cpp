// SPDX-License-Identifier: MIT
// qal: the qalpack command-line tool. One sub-command per job.
#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

#include "apps/qal/BlotterCommand.h"
#include "apps/qal/BusCommand.h"
#include "apps/qal/DbCommand.h"
#include "apps/qal/DecodeCommand.h"
#include "apps/qal/SaveCommand.h"
#include "apps/qal/TickCommand.h"
#include "apps/qal/WhoamiCommand.h"
#include "qalpack/qalpack.h"
#include "qalpack/version.h"

namespace {

constexpr auto kUsage = R"(Usage: qal <command> [options]

Commands:
  decode   read tagged order or trade messages and show the records they make
  tick     show where prices stand on an exchange's price-spread ladder
  db       create the order database (db init [--sample])
  blotter  load orders, exchange orders or trades and show them as a blotter
  save     save a new order given as a tagged message
  whoami   show what the library knows of a user
  watch    print the records arriving on topics of the desk-wide bus (watch TOPIC... [--json])
  publish  publish records on the desk-wide bus, in text form: qal publish 'image|USER_D001|13|D001|'
  logoff   force a user's desks off (logoff --user ID [--message TEXT])

Run "qal help <command>" (or "qal <command> --help") for a command's options,
"qal --version" for the version of the tool and of the library it loaded.
)";

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("qal"));
    QTextStream out(stdout);
    QTextStream err(stderr);

    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    if (arguments.isEmpty() || arguments.first() == u"--help" || arguments.first() == u"-h") {
        (arguments.isEmpty() ? err : out) << kUsage;
        return arguments.isEmpty() ? 2 : 0;
    }
    if (arguments.first() == u"--version") {
        out << "qal " << QALPACK_VERSION_STRING << " (library " << qalVersion() << ")\n";
        return 0;
    }
    if (arguments.first() == u"help") {
        if (arguments.size() == 1) {
            out << kUsage;
            return 0;
        }
        arguments = { arguments[1], QStringLiteral("--help") };
    }
    const QString command = arguments.takeFirst();
    if (command == u"decode")
        return qal::tool::runDecode(arguments, out, err);
    if (command == u"tick")
        return qal::tool::runTick(arguments, out, err);
    if (command == u"db")
        return qal::tool::runDb(arguments, out, err);
    if (command == u"blotter")
        return qal::tool::runBlotter(arguments, out, err);
    if (command == u"save")
        return qal::tool::runSave(arguments, out, err);
    if (command == u"whoami")
        return qal::tool::runWhoami(arguments, out, err);
    if (command == u"watch")
        return qal::tool::runWatch(arguments, out, err);
    if (command == u"publish")
        return qal::tool::runPublish(arguments, out, err);
    if (command == u"logoff")
        return qal::tool::runLogoff(arguments, out, err);
    err << "qal: unknown command \"" << command << "\"\n" << kUsage;
    return 2;
}
