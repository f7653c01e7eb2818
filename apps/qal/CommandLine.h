// SPDX-License-Identifier: MIT
// What every qal sub-command shares on the command line: exit codes, the
// help text that names the sub-command, JSON lines, and the exchanges a
// dealer may name.
#pragma once

#include <optional>

#include <QString>
#include <QStringList>

class QCommandLineParser;
class QJsonObject;
class QTextStream;

namespace qal::tool {

// The exit codes of every sub-command.
enum ExitCode : int {
    kSuccess = 0,
    // The command ran and something failed: no configuration, a database
    // that does not open, a record that was not read or saved.
    kFailure = 1,
    // The command line itself is wrong: an unknown option or argument, a
    // value that does not parse, a name that is not known.
    kUsageError = 2,
};

// The parser's help text with the usage line naming the tool and the
// sub-command ("Usage: qal blotter [options]") instead of the path the
// program was started by.
[[nodiscard]] QString commandHelpText(const QCommandLineParser& parser, const QString& command);

// Adds -h/--help to `parser` and parses the arguments that follow
// "qal <command>". std::nullopt when the command is to go on; otherwise the
// exit code to end with: kSuccess after printing the help on `out`,
// kUsageError after printing the parser's complaint on `err` under
// "qal <command>: ". Positional arguments are left to the command.
[[nodiscard]] std::optional<int> parseCommandLine(QCommandLineParser& parser, const QString& command,
    const QStringList& arguments, QTextStream& out, QTextStream& err);

// Writes `object` as one compact JSON line and flushes, so that a reader
// piping the output sees each record as it comes.
void writeJsonLine(QTextStream& out, const QJsonObject& object);

// The exchanges of the desk, as the order database spells them.
[[nodiscard]] QStringList knownExchanges();

// `name` as the order database spells it, whatever its case ("hkfe" ->
// "HKFE"); std::nullopt when it is not one of knownExchanges().
[[nodiscard]] std::optional<QString> exchangeCode(const QString& name);

} // namespace qal::tool
