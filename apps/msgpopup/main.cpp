// SPDX-License-Identifier: MIT
// msgpopup: the message helper a desk starts, detached, to tell the dealer
// why it is closing ("Someone else is logon as ..."). The message stays on
// screen after the desk itself has gone.
//   msgpopup -ie -t <title> -m <message> [--timeout-ms N] [--print]
#include <QApplication>
#include <QCommandLineParser>
#include <QMessageBox>
#include <QTextStream>
#include <QTimer>

#include <cstdio>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("msgpopup"));
    QTextStream out(stdout);
    QTextStream err(stderr);

    QCommandLineParser parser;
    // The desk passes one-dash words ("-ie", "-t"), so they are options, not
    // bundles of letters.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setApplicationDescription(QStringLiteral("Shows a message from the desk in a window of its own."));
    const QCommandLineOption information(
        QStringLiteral("ie"), QStringLiteral("Information message (the only kind the desk sends)."));
    const QCommandLineOption title(
        QStringLiteral("t"), QStringLiteral("Window title."), QStringLiteral("title"));
    const QCommandLineOption message(
        QStringLiteral("m"), QStringLiteral("The message."), QStringLiteral("text"));
    const QCommandLineOption timeout(QStringLiteral("timeout-ms"),
        QStringLiteral("Close by itself after this many milliseconds."), QStringLiteral("ms"));
    const QCommandLineOption print(QStringLiteral("print"),
        QStringLiteral("Also write the window's title and message to standard output."));
    const QCommandLineOption help(
        { QStringLiteral("h"), QStringLiteral("help") }, QStringLiteral("Show this help."));
    parser.addOptions({ information, title, message, timeout, print, help });

    if (!parser.parse(QCoreApplication::arguments())) {
        err << "msgpopup: " << parser.errorText() << '\n';
        return 2;
    }
    if (parser.isSet(help)) {
        out << parser.helpText();
        return 0;
    }
    if (!parser.isSet(message)) {
        err << "msgpopup: no message (-m)\n";
        return 2;
    }
    int timeoutMs = 0;
    if (parser.isSet(timeout)) {
        bool ok = false;
        timeoutMs = parser.value(timeout).toInt(&ok);
        if (!ok || timeoutMs < 0) {
            err << "msgpopup: --timeout-ms takes a whole number of milliseconds, not \""
                << parser.value(timeout) << "\"\n";
            return 2;
        }
    }

    QMessageBox box(QMessageBox::Information, parser.value(title), parser.value(message), QMessageBox::Ok);
    // The desk has closed behind it: keep the message where the dealer sees it.
    box.setWindowFlag(Qt::WindowStaysOnTopHint);
    if (parser.isSet(print)) {
        out << "title: " << box.windowTitle() << "\nmessage: " << box.text() << '\n';
        out.flush();
    }
    QObject::connect(&box, &QMessageBox::finished, &app, [] { QCoreApplication::exit(0); });
    if (parser.isSet(timeout))
        QTimer::singleShot(timeoutMs, &box, &QMessageBox::accept);
    box.show();
    return app.exec();
}
