// SPDX-License-Identifier: MIT
// A price box from the installed widgets library, its value set and shown.
#include <QApplication>
#include <QTextStream>

#include "qalpack/controls/PriceEntryEdit.h"

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    qal::TPriceEntryEdit price;
    price.SetValue(1234.5);
    QTextStream(stdout) << "price box shows " << price.text() << '\n';
    return price.text().isEmpty() ? 1 : 0;
}
