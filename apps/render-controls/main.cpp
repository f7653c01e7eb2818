// SPDX-License-Identifier: MIT
// Draws an order-entry form built of the order-entry controls and saves it
// as a PNG: render-controls <output.png>. Run it on the offscreen platform
// (scripts/render-controls does) to get the same picture on any machine.
#include <QApplication>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLocale>
#include <QPixmap>
#include <QTextStream>
#include <QVBoxLayout>

#include "qalpack/controls/ComboEdit.h"
#include "qalpack/controls/OpenCloseSelect.h"
#include "qalpack/controls/PriceEntryEdit.h"
#include "qalpack/controls/PrincipalSelect.h"
#include "qalpack/controls/QuantityEditView.h"
#include "qalpack/controls/SymbolEntryEdit.h"
#include "qalpack/market/SpreadTable.h"

int main(int argc, char** argv)
{
    QLocale::setDefault(QLocale::c());
    QApplication app(argc, argv);
    if (argc != 2) {
        QTextStream(stderr) << "usage: render-controls <output.png>\n";
        return 2;
    }

    // The securities ladder of the stock exchange: 0.05 ticks up to 100.
    qal::TSpreadTable ladder(QStringLiteral("0.25,0.001,0.5,0.005,10,0.01,20,0.02,100,0.05,200,0.1,500,0.2,"
                                            "1000,0.5,2000,1,5000,2,9995,5"));

    QWidget form;
    form.setWindowTitle(QStringLiteral("New order"));
    auto* outer = new QVBoxLayout(&form);
    auto* box = new QGroupBox(QStringLiteral("OMS11 controls"), &form);
    outer->addWidget(box);
    auto* layout = new QFormLayout(box);

    auto* symbol = new qal::TSymbolEntryEdit(box);
    symbol->setExchagneSuffix(QStringLiteral("HK"));
    symbol->setText(QStringLiteral("00005"));
    layout->addRow(QStringLiteral("Symbol (TSymbolEntryEdit)"), symbol);

    auto* combo = new qal::TComboEdit(box);
    combo->list()->addItems({ QStringLiteral("HK"), QStringLiteral("SS"), QStringLiteral("SZ") });
    combo->setText(QStringLiteral("600000"));
    layout->addRow(QStringLiteral("Code and market (TComboEdit)"), combo);

    auto* quantity = new qal::TQuantityEdit(box);
    quantity->SetLotSize(400);
    quantity->SetValue(2000);
    layout->addRow(QStringLiteral("Quantity (TQuantityEdit)"), quantity);

    auto* price = new qal::TPriceEntryEdit(box);
    price->SetSpread(&ladder);
    price->SetValue(99.95);
    layout->addRow(QStringLiteral("Price (TPriceEntryEdit)"), price);

    auto* openClose = new qal::TOpenCloseSelect(box);
    openClose->SetValue(1);
    layout->addRow(QStringLiteral("Open/close (TOpenCloseSelect)"), openClose);

    auto* principal = new qal::TPrincipalSelect(box);
    principal->SetValue(11);
    layout->addRow(QStringLiteral("Principal (TPrincipalSelect)"), principal);

    form.resize(420, form.sizeHint().height());
    form.show();
    QApplication::processEvents();
    if (!form.grab().save(QString::fromLocal8Bit(argv[1]))) {
        QTextStream(stderr) << "render-controls: cannot write " << argv[1] << "\n";
        return 1;
    }
    return 0;
}
