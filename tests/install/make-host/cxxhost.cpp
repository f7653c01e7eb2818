// SPDX-License-Identifier: MIT
// Builds an exchange order from a message with the installed headers and
// prints what a blotter shows of it.
#include <QCoreApplication>
#include <QTextStream>

#include "qalpack/model/exchData.h"
#include "qalpack/qalpack.h"
#include "qalpack/version.h"

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    qal::TexchOrder order(QStringLiteral("H|7|E1|4|1000|3|80.5|20|SEHK"));
    out << "qalpack " << QALPACK_VERSION_STRING << " / " << qalVersion() << ": " << order.Order_No << ' '
        << order.Quantity << ' ' << order.statusMessage() << '\n';
    return QString::fromLatin1(qalVersion()) == QStringLiteral(QALPACK_VERSION_STRING) ? 0 : 1;
}
