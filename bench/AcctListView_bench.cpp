// SPDX-License-Identifier: MIT
// The Account Explorer on a large desk: 20,000 accounts over 30 dealers, all
// of them visible to the logged-on dealer, opened on "<SHOW ALL>". Timed:
// showing it (enumerating, sorting by name and filling the grid, painted once)
// and one keystroke of the incremental search, which looks at every account.
#include <memory>
#include <stdexcept>

#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>

#include <benchmark/benchmark.h>

#include "bench/BenchGoals.h"
#include "qalpack/db/Database.h"
#include "qalpack/db/Session.h"
#include "qalpack/forms/AcctListView.h"
#include "qalpack/orderdb/OrderSchema.h"
#include "qalpack/profile/UserProfile.h"
#include "tests/support/MemoryAccountModel.h"

namespace {

constexpr int kAccounts = 20000;
constexpr int kUsers = 30;
// Goals: medians of at most 150 ms a showing and 8 ms a keystroke.
constexpr double kShowsPerSecond = 1.0 / 0.150;
constexpr double kKeystrokesPerSecond = 1.0 / 0.008;

QString userId(int i)
{
    return QStringLiteral("U%1").arg(i + 1, 2, 10, QLatin1Char('0'));
}

// The desk: an embedded order database holding the 30 dealers, U01 logged on
// and seeing the other 29, the explorer opening on "<SHOW ALL>", and the
// accounts in a model held in memory, named from common Hong Kong surnames
// and given names so that many share their first letters.
class Desk
{
public:
    Desk()
    {
        if (!dir_.isValid())
            throw std::runtime_error("cannot create the benchmark's desk directory");
        write("aliases.ini",
            QStringLiteral("[BENCHDB]\nDRIVER=SQLITE\nDATABASE=%1\nCREATE=TRUE\n")
                .arg(dir_.filePath(QStringLiteral("orders.db"))));
        write("oms.ini",
            QStringLiteral(
                "[OMS_DATAMAP]\nOMSDATA=ORDERS_DSN\n[ORDERS_DSN]\nDSN_Source=BENCHDB\nDSN_user=sa\n"
                "[CLIENT APP]\nACCOUNTSHOWALL=Y\n"));
        qputenv("OMS_INI", QFile::encodeName(dir_.filePath(QStringLiteral("oms.ini"))));
        qal::TSession::Default().LoadAliases(dir_.filePath(QStringLiteral("aliases.ini")));

        qal::TDatabase database;
        database.SetAliasName(QStringLiteral("BENCHDB"));
        database.SetDatabaseName(QStringLiteral("BENCHSEED"));
        database.SetLoginPrompt(false);
        qal::CreateOrderSchema(database);
        QStringList members;
        for (int i = 1; i < kUsers; ++i)
            members << userId(i);
        for (int i = 0; i < kUsers; ++i) {
            database.Execute(QStringLiteral("insert into User_File (User_No, Full_name, AdminUser, member, "
                                            "DummyAc, Active) values ('%1', 'Dealer %1', 0, '%2', '', 1)")
                                 .arg(userId(i), i == 0 ? members.join(u',') : QString()));
        }
        database.Close();
        qal::TUserProfile::setInstance(std::make_unique<qal::TUserProfile>(userId(0), QString()));

        static const char* const surnames[] = { "CHAN", "CHEUNG", "CHOW", "CHU", "HO", "KWOK", "LAI", "LAM",
            "LAU", "LEE", "LEUNG", "LI", "LO", "MA", "MAK", "NG", "POON", "SIU", "TAM", "TANG", "TSANG",
            "WONG", "WU", "YEUNG", "YIP" };
        static const char* const given[] = { "Tai Man", "Siu Ming", "Ka Kwan", "Chit", "Pak Hei", "Wing Sze",
            "Fung", "Sau Ying", "Kwan Yee", "Chun Hei", "Mei Kuen", "Chi Keung", "Wai Ling", "Kin Wah",
            "Hoi Yan", "Sze Ching", "Man Kit", "Yuk Lan", "Ka Lok", "Shuk Fan" };
        model_.setCurrentUserID(userId(0));
        for (int i = 0; i < kAccounts; ++i) {
            const QString id = QStringLiteral("A%1").arg(100000 + i * 7919 % 900000);
            const QString first = QString::fromLatin1(given[(i / 25) % std::size(given)]);
            qal::TAccount& account = model_.add(id, userId(i % kUsers),
                QString::fromLatin1(surnames[i % std::size(surnames)]) + u' ' + first, first);
            account.DayPhone = QStringLiteral("2%1").arg(i * 37 % 10000000, 7, 10, QLatin1Char('0'));
            account.Mobile = QStringLiteral("9%1").arg(i * 53 % 10000000, 7, 10, QLatin1Char('0'));
            if (i % kUsers == 0)
                model_.addShortCut(userId(0), QString::number(i / kUsers), id);
        }
        qal::TAccountModel::SetInstance(&model_);
    }

    ~Desk()
    {
        qal::TAccountModel::SetInstance(nullptr);
        qal::TUserProfile::setInstance(nullptr);
    }

private:
    void write(const char* name, const QString& text)
    {
        QFile file(dir_.filePath(QString::fromLatin1(name)));
        if (!file.open(QIODevice::WriteOnly))
            throw std::runtime_error("cannot write the benchmark's desk settings");
        file.write(text.toUtf8());
    }

    QTemporaryDir dir_;
    qal::test::MemoryAccountModel model_;
};

void BM_ShowAll(benchmark::State& state)
{
    qal::TAccountListView* const explorer = qal::TAccountListView::GetInstance();
    for (auto _ : state) {
        explorer->show();
        QApplication::processEvents(); // the first paint
        state.PauseTiming();
        if (explorer->AccountList().size() != std::size_t(kAccounts))
            state.SkipWithError("the explorer does not list every account");
        explorer->hide();
        QApplication::processEvents();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations());
    bench::setRateGoal(state, kShowsPerSecond);
}
BENCHMARK(BM_ShowAll)->Name("explorer/show/20000")->Unit(benchmark::kMillisecond);

// The first letter typed into an empty search box: "C" starts over a fifth
// of the names (CHAN, CHEUNG, CHOW, CHU), so the search moves the selection
// far down the list.
void BM_SearchKeystroke(benchmark::State& state)
{
    qal::TAccountListView* const explorer = qal::TAccountListView::GetInstance();
    explorer->show();
    QApplication::processEvents();
    QLineEdit* const search = explorer->searchBox();
    for (auto _ : state) {
        state.PauseTiming();
        search->clear();
        QApplication::processEvents();
        state.ResumeTiming();
        QTest::keyClick(search, Qt::Key_C, Qt::NoModifier);
        QApplication::processEvents(); // the repaint of the moved selection
    }
    if (!explorer->SelectedAccountName().startsWith(QLatin1String("CHU")))
        state.SkipWithError("the keystroke did not select the last name beginning with C");
    explorer->hide();
    state.SetItemsProcessed(state.iterations());
    bench::setRateGoal(state, kKeystrokesPerSecond);
}
BENCHMARK(BM_SearchKeystroke)->Name("explorer/keystroke/20000")->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    {
        const Desk desk;
        benchmark::RunSpecifiedBenchmarks();
        qal::internal::ResetAccountListView();
    }
    benchmark::Shutdown();
    return 0;
}
