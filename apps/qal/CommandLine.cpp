// SPDX-License-Identifier: MIT
#include "apps/qal/CommandLine.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

namespace qal::tool {

QString commandHelpText(const QCommandLineParser& parser, const QString& command)
{
    // The parser names the program by the path it was started by
    // ("./build/apps/qal/qal"), and knows nothing of sub-commands.
    QString text = parser.helpText();
    const QStringList arguments = QCoreApplication::arguments();
    const QString program = arguments.isEmpty() ? QString() : arguments.first();
    const QString started = QStringLiteral("Usage: ") + program;
    if (!program.isEmpty() && text.startsWith(started))
        text.replace(0, started.size(), QStringLiteral("Usage: qal ") + command);
    return text;
}

std::optional<int> parseCommandLine(QCommandLineParser& parser, const QString& command,
    const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    const QCommandLineOption help(
        { QStringLiteral("h"), QStringLiteral("help") }, QStringLiteral("Show this help."));
    parser.addOption(help);
    if (!parser.parse(QStringList { QStringLiteral("qal ") + command } + arguments)) {
        err << "qal " << command << ": " << parser.errorText() << '\n';
        return kUsageError;
    }
    if (parser.isSet(help)) {
        out << commandHelpText(parser, command);
        return kSuccess;
    }
    return std::nullopt;
}

void writeJsonLine(QTextStream& out, const QJsonObject& object)
{
    out << QJsonDocument(object).toJson(QJsonDocument::Compact) << '\n';
    out.flush();
}

QStringList knownExchanges()
{
    return { QStringLiteral("SEHK"), QStringLiteral("HKFE") };
}

std::optional<QString> exchangeCode(const QString& name)
{
    for (const QString& code : knownExchanges()) {
        if (name.trimmed().compare(code, Qt::CaseInsensitive) == 0)
            return code;
    }
    return std::nullopt;
}

} // namespace qal::tool
