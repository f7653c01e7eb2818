// SPDX-License-Identifier: MIT
// qal: the qalpack command-line tool. One sub-command per job.
#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

#include "apps/qal/DecodeCommand.h"
#include "apps/qal/TickCommand.h"

namespace {

constexpr auto kUsage = R"(Usage: qal <command> [options]

Commands:
  decode   read tagged order or trade messages and show the records they make
  tick     show where prices stand on an exchange's price-spread ladder

Run "qal <command> --help" for a command's options.
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
        out << kUsage;
        return arguments.isEmpty() ? 2 : 0;
    }
    const QString command = arguments.takeFirst();
    if (command == u"decode")
        return qal::tool::runDecode(arguments, out, err);
    if (command == u"tick")
        return qal::tool::runTick(arguments, out, err);
    err << "qal: unknown command \"" << command << "\"\n" << kUsage;
    return 2;
}
