// SPDX-License-Identifier: MIT
#include "apps/desk/Screenshots.h"

#include <cstdio>

#include <QApplication>
#include <QPainter>
#include <QPixmap>
#include <QTableView>

#include "apps/desk/DeskWindow.h"
#include "apps/desk/Instruments.h"
#include "apps/desk/LogonDialog.h"
#include "apps/desk/OrderTicket.h"
#include "qalpack/controls/AcctEdit.h"
#include "qalpack/controls/PriceEntryEdit.h"
#include "qalpack/controls/QuantityEditView.h"
#include "qalpack/controls/SymbolEntryEdit.h"
#include "qalpack/forms/AcctListView.h"
#include "qalpack/profile/DbAccountModel.h"
#include "qalpack/profile/UserProfile.h"

namespace qal {
namespace desk {

namespace {

void settle()
{
    for (int i = 0; i < 5; ++i)
        QApplication::processEvents();
}

bool save(const QPixmap& picture, const QString& path)
{
    if (picture.save(path))
        return true;
    std::fprintf(stderr, "qal-desk: cannot write %s\n", qPrintable(path));
    return false;
}

} // namespace

int RenderScreenshots(
    const QString& outDir, const QString& userId, const QLocale& locale, const QDir& configDir)
{
    const QString lang
        = locale.language() == QLocale::Chinese ? QStringLiteral("zh_HK") : QStringLiteral("en");
    QDir().mkpath(outDir);
    const QDir out(outDir);
    bool ok = true;

    {
        LogonDialog logon(LoadDeskUsers());
        logon.show();
        settle();
        ok &= save(logon.grab(), out.filePath(QStringLiteral("desk-logon-%1.png").arg(lang)));
    }

    TUserProfile::SetCustomLogin(DialogLogin(nullptr, userId));
    TUserProfile* profile = TUserProfile::GetInstance();
    if (!profile)
        return 1;
    TDbAccountModel accounts;
    accounts.setCurrentUserID(profile->UserId());
    TAccountModel::SetInstance(&accounts);
    InstrumentBook book = InstrumentBook::ForConfiguration(configDir);
    {
        DeskWindow window(*profile, book);
        window.show();
        settle();
        // A ticket half filled in, as a dealer has it when calling up the
        // explorer to find the client.
        auto* symbol = window.findChild<TSymbolEntryEdit*>(QStringLiteral("edtSymbol"));
        symbol->settext(QStringLiteral("0005.HK"));
        emit symbol->symbolExit(symbol->getSymbolText());
        window.findChild<TPriceEntryEdit*>(QStringLiteral("edtPrice"))->SetValue(98.35);
        window.findChild<TQuantityEdit*>(QStringLiteral("edtQuantity"))->SetValue(4000);
        window.blotterView()->scrollToBottom();
        settle();
        ok &= save(window.grab(), out.filePath(QStringLiteral("desk-blotter-%1.png").arg(lang)));

        TAccountListView* explorer = TAccountListView::GetInstance();
        explorer->show();
        settle();
        const QPixmap ticket = window.ticket()->grab();
        const QPixmap list = explorer->grab();
        QPixmap combined(ticket.width() + list.width() + 16, qMax(ticket.height(), list.height()));
        combined.fill(window.palette().color(QPalette::Window));
        {
            QPainter painter(&combined);
            painter.drawPixmap(0, 0, ticket);
            painter.drawPixmap(ticket.width() + 16, 0, list);
        }
        explorer->hide();
        ok &= save(combined, out.filePath(QStringLiteral("desk-ticket-%1.png").arg(lang)));
    }
    TAccountModel::SetInstance(nullptr);
    return ok ? 0 : 1;
}

} // namespace desk
} // namespace qal
