// SPDX-License-Identifier: MIT
#include "apps/qal/SampleDay.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <span>
#include <vector>

#include <QDateTime>
#include <QStringList>
#include <QTime>
#include <QVariant>

#include "qalpack/db/Database.h"
#include "qalpack/db/Query.h"
#include "qalpack/model/exchData.h"

namespace qal::tool {
namespace {

// splitmix64: the same numbers for a seed on every platform and standard
// library, which the standard distributions do not promise.
class Random
{
public:
    explicit Random(quint64 seed)
        : state_(seed)
    { }

    quint64 next()
    {
        quint64 z = (state_ += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }
    // A whole number from low to high, both included.
    int between(int low, int high) { return low + int(next() % quint64(high - low + 1)); }
    double unit() { return double(next() >> 11) * 0x1.0p-53; }
    bool chance(double probability) { return unit() < probability; }
    template<typename T>
    const T& pick(std::span<const T> items)
    {
        return items[std::size_t(between(0, int(items.size()) - 1))];
    }

private:
    quint64 state_;
};

// Status texts as the order tables keep them (the first four characters of
// the status label).
const QString kPending = QStringLiteral("Pend");
const QString kPartial = QStringLiteral("Part");
const QString kCompleted = QStringLiteral("Comp");
const QString kCancelled = QStringLiteral("Canc");
const QString kRejected = QStringLiteral("Reje");

struct Stock
{
    const char* symbol;
    double reference; // the day's reference price, HKD
    int lot;
    bool etp;
    bool shortable; // a designated security for short selling
};

// Hang Seng Index heavyweights and two index trackers, with prices of the
// sort they traded at in late 2026.
constexpr Stock kStocks[] = {
    { "0005.HK", 98.35, 400, false, true },
    { "0700.HK", 612.5, 100, false, true },
    { "0388.HK", 405.2, 100, false, true },
    { "2800.HK", 26.18, 500, true, true },
    { "2828.HK", 95.84, 200, true, true },
    { "0941.HK", 84.6, 500, false, true },
    { "1299.HK", 71.85, 200, false, true },
    { "0939.HK", 7.42, 1000, false, true },
    { "9988.HK", 152.3, 100, false, true },
    { "3690.HK", 118.7, 100, false, true },
    { "0011.HK", 112.4, 100, false, true },
    { "0016.HK", 86.25, 500, false, true },
    { "0883.HK", 20.35, 1000, false, true },
    { "1810.HK", 47.9, 200, false, true },
    { "2318.HK", 55.15, 500, false, true },
    { "0001.HK", 51.6, 500, false, false },
    { "0002.HK", 66.4, 500, false, false },
};

struct Future
{
    const char* symbol;
    int reference; // index points
    int maxContracts;
};

// Hang Seng Index and HSCEI futures, standard and mini, December 2026 and
// January 2027.
constexpr Future kFutures[] = {
    { "HSIZ6", 25840, 10 },
    { "MHIZ6", 25840, 20 },
    { "HHIZ6", 9215, 10 },
    { "MCHZ6", 9215, 20 },
    { "HSIF7", 25886, 5 },
    { "MHIF7", 25886, 10 },
};

struct Staff
{
    const char* id;
    const char* name;
    int adminLevel;
    const char* member;
    const char* dummyAccount;
    bool active;
    const char* entitlements; // comma-separated
};

// Three securities teams and a futures team, their supervisors, the
// administrator, the back office and the internet clients.
constexpr Staff kStaff[] = {
    { "D001", "陳家堃 CHAN Ka Kwan", 0, "D002", "H9001", true, "SEHKTrade,OEFOK,ManualTrade" },
    { "D002", "李喆 LEE Chit", 0, "D001", "H9001", true, "SEHKTrade,ManualTrade" },
    { "D003", "黃美玲 WONG Mei Ling", 0, "D004", "H9001", true, "SEHKTrade,ShortSell" },
    { "D004", "張栢豪 CHEUNG Pak Ho", 0, "D003", "H9001", true, "SEHKTrade" },
    { "D005", "何頴琳 HO Wing Lam", 0, "D006", "H9002", true, "SEHKTrade,ShortSell,OEFOK" },
    { "D006", "林峯 LAM Fung", 0, "D005", "H9002", true, "SEHKTrade" },
    { "D007", "吳綉文 NG Sau Man", 0, "D008", "H9002", true, "SEHKTrade" },
    { "D008", "梁羣英 LEUNG Kwan Ying", 0, "D007", "H9002", true, "SEHKTrade" },
    { "D009", "周志明 CHOW Chi Ming", 0, "D010", "H9003", true, "HKFETrade" },
    { "D010", "黃瑨 WONG Chun", 0, "D009", "H9003", true, "HKFETrade" },
    { "D011", "鄭國強 CHENG Kwok Keung", 0, "D012", "H9003", true, "HKFETrade" },
    { "D012", "麥嘉欣 MAK Ka Yan", 0, "D011", "H9003", true, "HKFETrade,OEFOK" },
    { "D013", "劉德華 LAU Tak Wah", 0, "D014,D015", "H9004", true, "SEHKTrade,HKFETrade" },
    { "D014", "葉𡁻晴 YIP Sze Ching", 0, "D013,D015", "H9004", true, "SEHKTrade,HKFETrade" },
    { "D015", "蔡俊傑 CHOI Chun Kit", 0, "D013,D014", "H9004", true, "SEHKTrade,HKFETrade,ShortSell" },
    { "D016", "羅志偉 LAW Chi Wai", 0, "", "H9004", false, "SEHKTrade" },
    { "S001", "馮淑儀 FUNG Shuk Yee", 1, "D001,D002,D003,D004", "H9001", true, "SEHKTrade,ApproveOrder" },
    { "S002", "譚偉豪 TAM Wai Ho", 1, "D005,D006,D007,D008", "H9002", true, "SEHKTrade,ApproveOrder" },
    { "S003", "袁嘉堃 YUEN Ka Kwan", 1, "D009,D010,D011,D012,D013,D014,D015", "H9003", true,
        "HKFETrade,SEHKTrade,ApproveOrder" },
    { "ADMIN1", "System Administrator", 9,
        "D001,D002,D003,D004,D005,D006,D007,D008,D009,D010,D011,D012,D013,D014,D015,S001,S002,S003", "H9000",
        true, "SEHKTrade,HKFETrade,Admin" },
    { "OPS01", "Back Office 後勤", 2, "D001,D002,D003,D004,D005,D006,D007,D008", "H9000", true,
        "ManualTrade" },
    { "C1001", "鄧永康 TANG Wing Hong", 0, "", "A1023", true, "SEHKTrade" },
    { "C1002", "謝安琪 TSE On Kei", 0, "", "A1024", true, "SEHKTrade" },
    { "C1003", "曾啟榮 TSANG Kai Wing", 0, "", "A1025", true, "SEHKTrade" },
    { "C1004", "余嘉堃 YU Ka Kwan", 0, "", "A1026", true, "SEHKTrade" },
    { "C1005", "潘頴欣 POON Wing Yan", 0, "", "A1027", true, "SEHKTrade" },
    { "C1006", "郭富城 KWOK Fu Shing", 0, "", "A1028", true, "SEHKTrade" },
    { "C1007", "石栢文 SHEK Pak Man", 0, "", "A1029", true, "SEHKTrade,HKFETrade" },
    { "C1008", "施喆朗 SZE Chit Long", 0, "", "A1030", true, "SEHKTrade,HKFETrade" },
};

struct Holder
{
    const char* first;
    const char* last;
    const char* chinese;
    const char* company; // set for corporate accounts
};

// Account holders; some names carry Hong Kong supplementary characters
// (堃 喆 栢 頴 峯 綉 羣 瑨, and 𡁻 outside the basic plane).
constexpr Holder kHolders[] = {
    { "Tai Man", "CHAN", "陳大文", nullptr },
    { "Siu Ming", "LEE", "李小明", nullptr },
    { "Ka Kwan", "WONG", "黃家堃", nullptr },
    { "Chit", "LAU", "劉喆", nullptr },
    { "Pak Hei", "CHEUNG", "張栢希", nullptr },
    { "Wing Sze", "HO", "何頴詩", nullptr },
    { "Fung", "LAM", "林峯", nullptr },
    { "Sau Ying", "NG", "吳綉瑩", nullptr },
    { "Kwan Yee", "LEUNG", "梁羣儀", nullptr },
    { "Chun Hei", "CHOW", "周瑨希", nullptr },
    { "Mei Kuen", "TSANG", "曾美娟", nullptr },
    { "Chi Keung", "YEUNG", "楊志強", nullptr },
    { "Wai Ling", "CHU", "朱慧玲", nullptr },
    { "Kin Wah", "KWAN", "關健華", nullptr },
    { "Hoi Yan", "FONG", "方凱欣", nullptr },
    { "Sze Ching", "YIP", "葉𡁻晴", nullptr },
    { "Man Kit", "SIU", "蕭文傑", nullptr },
    { "Yuk Lan", "CHOI", "蔡玉蘭", nullptr },
    { "Ka Lok", "KO", "高家樂", nullptr },
    { "Shuk Fan", "MA", "馬淑芬", nullptr },
    { "Tsz Hin", "LO", "羅子軒", nullptr },
    { "Ying", "TAM", "譚瑩", nullptr },
    { "Wing Hong", "TANG", "鄧永康", nullptr },
    { "On Kei", "TSE", "謝安琪", nullptr },
    { "Kai Wing", "TSANG", "曾啟榮", nullptr },
    { "Ka Kwan", "YU", "余嘉堃", nullptr },
    { "Wing Yan", "POON", "潘頴欣", nullptr },
    { "Fu Shing", "KWOK", "郭富城", nullptr },
    { "Pak Man", "SHEK", "石栢文", nullptr },
    { "Chit Long", "SZE", "施喆朗", nullptr },
    { nullptr, nullptr, "海景資本有限公司", "Harbour View Capital Limited" },
    { nullptr, nullptr, "九龍灣貿易有限公司", "Kowloon Bay Trading Company Limited" },
    { nullptr, nullptr, "維港投資管理有限公司", "Victoria Harbour Investment Management Limited" },
    { nullptr, nullptr, "太平山家族基金", "Peak Family Fund" },
    { "Chi Wai", "LAW", "羅志偉", nullptr },
    { "Siu Fung", "MAK", "麥兆峯", nullptr },
    { "Hiu Tung", "CHAN", "陳曉彤", nullptr },
    { "Tsz Kin", "WONG", "黃梓健", nullptr },
    { "Pak Man", "SHEK", "石栢文", nullptr },
    { "Chit Long", "SZE", "施喆朗", nullptr },
};
static_assert(std::size(kHolders) == 40, "one holder per account");

// Contra brokers' participant numbers.
constexpr const char* kBrokers[] = { "1234", "2041", "3318", "4521", "5888", "6996", "7121", "8060", "9007" };

constexpr const char* kOmsRejects[] = { "Credit limit exceeded", "Insufficient stock holding",
    "Order value exceeds single order limit", "Price deviates too far from the last price" };
constexpr const char* kSehkRejects[] = { "Price outside the price band", "Invalid board lot",
    "Exceeds maximum order size", "Short sell price below best ask" };
constexpr const char* kHkfeRejects[]
    = { "Price outside the price limit", "Exceeds position limit", "Instrument suspended" };

QString text(const char* utf8)
{
    return utf8 ? QString::fromUtf8(utf8) : QString();
}

QVariant orNull(const QString& value)
{
    return value.isEmpty() ? QVariant() : QVariant(value);
}

double money(double amount)
{
    return std::round(amount * 100.0) / 100.0;
}

// One insert statement reused for every row of a table.
class TableWriter
{
public:
    TableWriter(TDatabase& database, const QString& table, const QStringList& columns)
        : columns_(columns)
    {
        query_.SetDatabase(database);
        QStringList params;
        for (const QString& column : columns)
            params << QStringLiteral(":") + column;
        query_.SQL().Add(QStringLiteral("insert into %1 (%2)").arg(table, columns.join(u", ")));
        query_.SQL().Add(QStringLiteral("values (%1)").arg(params.join(u", ")));
    }

    // `values` in the order of the columns; an invalid QVariant is NULL.
    void write(const QVariantList& values)
    {
        Q_ASSERT(values.size() == columns_.size());
        for (qsizetype i = 0; i < columns_.size(); ++i)
            query_.ParamByName(columns_[i]).SetValue(values[i]);
        query_.ExecSQL();
        ++rows_;
    }

    [[nodiscard]] int rows() const { return rows_; }

private:
    TQuery query_;
    QStringList columns_;
    int rows_ = 0;
};

struct Account
{
    QString id;
    QString owner;
    bool futures = false;
    bool suspended = false;
};

// One client order as it stands at the end of the day.
struct Order
{
    QString number;
    QDateTime created;
    QDateTime modified;
    bool futures = false;
    QString exchange;
    QString symbol;
    const Stock* stock = nullptr;
    const Future* future = nullptr;
    Account account;
    QString user;
    QString runner;
    int side = 0;
    int quantity = 0;
    double price = 0;
    int instruction = 0;
    int shortSell = 0;
    int openClose = 0;
    int filled = 0;
    double proceeds = 0; // signed: sells add, buys take
    QString status;
    QString message;
    QString reference;
};

class DayWriter
{
public:
    DayWriter(TDatabase& database, const SampleDaySettings& settings)
        : settings_(settings)
        , random_(settings.seed)
        , users_(database, QStringLiteral("User_File"),
              { "User_No", "Full_name", "AdminUser", "member", "DummyAc", "Active" })
        , entitlements_(database, QStringLiteral("AccountEntitle"),
              { "account", "UserType", "EntitlementID", "Enabled" })
        , destinations_(
              database, QStringLiteral("orsconfig"), { "Seq", "Exch_dest", "Exchange", "Description" })
        , accountRows_(database, QStringLiteral("Account_File"),
              { "Account", "User_No", "First_Name", "Last_Name", "Acct_Name", "Chinese_Name", "Day_Phone",
                  "Home_Phone", "Mobile", "Fax", "Email", "Client_ID", "CommRate", "Min_Comm", "Account_Comm",
                  "Suspended" })
        , shortcuts_(database, QStringLiteral("Account_ShortCut"), { "User_No", "ShortCut", "Account" })
        , orders_(database, QStringLiteral("OMSTrade_File"),
              { "Order_No", "Account", "Order_Type", "Symbol", "Quantity", "Limit_Price", "User_No", "Runner",
                  "Hedge", "Origin", "Open_Close", "Fill", "short_sell", "instruction", "operatorflag",
                  "DateTime_Created", "DateTime_Modified", "working", "creditchange", "netproceed",
                  "reference", "Exchange", "currency", "Message", "Status" })
        , exchOrders_(database, QStringLiteral("Exch_File"),
              { "Exch_No", "Order_No", "Account", "Symbol", "Quantity", "Price", "User_No", "Hedge", "Origin",
                  "Shortsell", "DateTime_Created", "DateTime_Modified", "Exchange", "ExchangeDest", "Remark",
                  "Status" })
        , trades_(database, QStringLiteral("Trans_File"),
              { "Tran_No", "Exch_No", "Account", "Symbol", "Quantity", "Trans_Price", "User_No", "Order_Type",
                  "Hedge", "Origin", "Shortsell", "Trade_Type", "BrokerID", "DateTime_Created", "Status" })
        , requests_(database, QStringLiteral("omsREQ"),
              { "req_No", "Order_No", "Account", "Order_Type", "Symbol", "Quantity", "Limit_Price", "User_No",
                  "command", "lastuser", "DateTime_Created", "DateTime_Modified", "instruction", "Exchange",
                  "Message", "operatorflag", "Short_sell" })
        , futuresRequests_(database, QStringLiteral("mftsorder_state"),
              { "Order_No", "SubOrderNo", "Account", "Order_Type", "Symbol", "Quantity", "Price", "User_No",
                  "Hedge", "Origin", "Last_Operation", "Shortsell", "DateTime_Created", "DateTime_Modified",
                  "Exchange", "ExchangeDest", "Status" })
    { }

    SampleDaySummary write()
    {
        writeUsers();
        writeDestinations();
        writeAccounts();
        writeOrders();
        writeRequests();
        summary_.users = users_.rows();
        summary_.entitlements = entitlements_.rows();
        summary_.destinations = destinations_.rows();
        summary_.accounts = accountRows_.rows();
        summary_.shortcuts = shortcuts_.rows();
        summary_.exchangeOrders = exchOrders_.rows();
        summary_.trades = trades_.rows();
        summary_.requests = requests_.rows();
        summary_.futuresRequests = futuresRequests_.rows();
        return summary_;
    }

private:
    QDateTime at(int hour, int minute, int second = 0, int msec = 0) const
    {
        return QDateTime(settings_.date, QTime(hour, minute, second, msec));
    }

    // A moment in [from, to), to the millisecond.
    QDateTime between(const QDateTime& from, const QDateTime& to)
    {
        const qint64 span = std::max<qint64>(1, from.msecsTo(to));
        return from.addMSecs(qint64(random_.unit() * double(span)));
    }

    // Some time after `from` (up to `maxSeconds`) at which the order's
    // exchange is matching: auction orders match at 09:20, nothing happens
    // over lunch, and nothing goes past the end of the session.
    QDateTime later(const Order& order, QDateTime from, int maxSeconds)
    {
        if (!order.futures && from < at(9, 20))
            from = at(9, 20);
        if (from >= at(12, 0) && from < at(13, 0))
            from = at(13, 0);
        if (order.futures && from >= at(16, 30) && from < at(17, 15))
            from = at(17, 15);
        QDateTime end = at(23, 59, 59);
        if (from < at(12, 0))
            end = at(12, 0);
        else if (from < at(16, 0))
            end = order.futures ? at(16, 30) : at(16, 0);
        else if (!order.futures)
            end = at(16, 10);
        const qint64 room
            = std::max<qint64>(1, std::min<qint64>(qint64(maxSeconds) * 1000, from.msecsTo(end)));
        return from.addMSecs(std::min<qint64>(room, 300) + qint64(random_.unit() * double(room)) / 2);
    }

    void writeUsers()
    {
        for (const Staff& staff : kStaff) {
            users_.write({ text(staff.id), text(staff.name), staff.adminLevel, orNull(text(staff.member)),
                text(staff.dummyAccount), staff.active });
            for (const QString& entitlement : text(staff.entitlements).split(u',', Qt::SkipEmptyParts)) {
                entitlements_.write({ text(staff.id), 0, entitlement, staff.active ? 1 : 0 });
            }
        }
    }

    void writeDestinations()
    {
        destinations_.write({ 1, QStringLiteral("SEHK"), QStringLiteral("SEHK"),
            QStringLiteral("Securities orders to the stock exchange") });
        destinations_.write({ 2, QStringLiteral("HKFE"), QStringLiteral("HKFE"),
            QStringLiteral("Futures orders to the futures exchange") });
        destinations_.write({ 3, QStringLiteral("SEHK_MANUAL"), QStringLiteral("SEHK"),
            QStringLiteral("Trades booked by hand") });
        destinations_.write({ 4, QStringLiteral("HKFE_T1"), QStringLiteral("HKFE"),
            QStringLiteral("Futures after-hours session") });
    }

    QString phone(int first)
    {
        return QStringLiteral("%1%2 %3")
            .arg(first)
            .arg(random_.between(100, 999))
            .arg(random_.between(0, 9999), 4, 10, QLatin1Char('0'));
    }

    void writeAccounts()
    {
        // Securities accounts A1001-A1030 and futures accounts F2001-F2010;
        // the last eight securities accounts and two futures accounts are the
        // internet clients' own.
        const QStringList securitiesOwners { "D001", "D002", "D003", "D004", "D005", "D006", "D007", "D008",
            "D013", "D014", "D015" };
        const QStringList futuresOwners { "D009", "D010", "D011", "D012", "D013", "D014", "D015", "D009" };
        const QStringList clients { "C1001", "C1002", "C1003", "C1004", "C1005", "C1006", "C1007", "C1008" };
        std::map<QString, int> shortcutsOf;
        std::map<QString, QString> supervisorOf { { "D001", "S001" }, { "D002", "S001" }, { "D003", "S001" },
            { "D004", "S001" }, { "D005", "S002" }, { "D006", "S002" }, { "D007", "S002" },
            { "D008", "S002" } };
        std::map<QString, QStringList> supervisorShortcuts;

        for (int i = 0; i < 40; ++i) {
            const bool futures = i >= 30;
            Account account;
            account.futures = futures;
            account.id
                = futures ? QStringLiteral("F%1").arg(2001 + i - 30) : QStringLiteral("A%1").arg(1001 + i);
            if (!futures)
                account.owner = i < 22 ? securitiesOwners[i % securitiesOwners.size()] : clients[i - 22];
            else
                account.owner = i < 38 ? futuresOwners[i - 30] : clients[i - 38 + 6];
            account.suspended = account.id == u"A1017";
            accounts_.push_back(account);

            const Holder& holder = kHolders[i];
            const bool company = holder.company != nullptr;
            const QString first = text(holder.first);
            const QString last = text(holder.last);
            const QString name = company ? text(holder.company) : last + u' ' + first;
            const QString mailName = company ? QStringLiteral("trading%1").arg(i)
                                             : QString(first).remove(u' ').toLower() + u'.' + last.toLower();
            accountRows_.write({ account.id, account.owner, orNull(first), orNull(last), name,
                text(holder.chinese), phone(2), company ? QVariant() : QVariant(phone(2)),
                company ? QVariant() : QVariant(phone(9)), company ? QVariant(phone(3)) : QVariant(),
                mailName + QStringLiteral("@example.com.hk"), QStringLiteral("CL%1").arg(300100 + i * 7),
                futures ? 0.0 : 0.0025, futures ? 0.0 : 100.0, futures ? 60.0 : 0.0,
                account.suspended ? 1 : 0 });

            // Dealers number their accounts 1, 2, 3 ...; supervisors know
            // their teams' accounts by surname.
            const int number = ++shortcutsOf[account.owner];
            shortcuts_.write({ account.owner, QString::number(number), account.id });
            if (const auto supervisor = supervisorOf.find(account.owner); supervisor != supervisorOf.end()) {
                QString shortcut = company ? QStringLiteral("CORP") : last;
                QStringList& taken = supervisorShortcuts[supervisor->second];
                if (taken.contains(shortcut))
                    shortcut += QString::number(taken.count() + 1);
                taken << shortcut;
                shortcuts_.write({ supervisor->second, shortcut, account.id });
            }
        }
        // Account-level entitlements: futures trading on futures accounts,
        // short selling on two institutional securities accounts.
        for (const Account& account : accounts_) {
            if (account.futures)
                entitlements_.write({ account.id, 1, QStringLiteral("HKFETrade"), 1 });
        }
        entitlements_.write({ QStringLiteral("A1011"), 1, QStringLiteral("ShortSell"), 1 });
        entitlements_.write({ QStringLiteral("A1021"), 1, QStringLiteral("ShortSell"), 1 });
    }

    const Account& pickAccount(bool futures)
    {
        for (;;) {
            const Account& account = random_.pick(std::span<const Account>(accounts_));
            if (account.futures == futures)
                return account;
        }
    }

    // A team mate who enters an order for the account's dealer.
    QString runnerFor(const QString& dealer)
    {
        for (const Staff& staff : kStaff) {
            if (dealer == QLatin1StringView(staff.id) && staff.member[0] != '\0')
                return text(staff.member).split(u',').first();
        }
        return QString();
    }

    double tick(const Order& order, double price, int steps) const
    {
        if (order.futures)
            return price + steps;
        const TSpreadTable& ladder = order.stock->etp ? settings_.etp : settings_.securities;
        return ladder.GetNearestPrice(ladder.GetNextPrice(price, steps));
    }

    // The order's entry time: SEHK pre-opening, morning and afternoon
    // sessions; HKFE day session and a few after hours.
    QDateTime entryTime(bool futures)
    {
        const double roll = random_.unit();
        if (!futures) {
            if (roll < 0.08)
                return between(at(9, 0), at(9, 15));
            if (roll < 0.62)
                return between(at(9, 30), at(12, 0));
            return between(at(13, 0), at(15, 58));
        }
        if (roll < 0.55)
            return between(at(9, 15), at(12, 0));
        if (roll < 0.95)
            return between(at(13, 0), at(16, 28));
        return between(at(17, 15), at(19, 30));
    }

    // The day's client orders, numbered in the order they came in: SEHK and
    // HKFE orders sent to the exchanges, and trades booked by hand (manual
    // trades, odd lots, pre-opening trades) by the back office and two
    // dealers.
    void writeOrders()
    {
        enum class Kind { Sehk, Hkfe, Manual, OddLot, Preopening };
        std::vector<std::pair<QDateTime, Kind>> entries;
        for (int i = 0; i < 240; ++i)
            entries.emplace_back(entryTime(false), Kind::Sehk);
        for (int i = 0; i < 84; ++i)
            entries.emplace_back(entryTime(true), Kind::Hkfe);
        for (int i = 0; i < 8; ++i)
            entries.emplace_back(between(at(14, 0), at(16, 30)), Kind::Manual);
        for (int i = 0; i < 2; ++i) {
            entries.emplace_back(between(at(14, 0), at(16, 30)), Kind::OddLot);
            entries.emplace_back(between(at(9, 20), at(9, 29)), Kind::Preopening);
        }
        std::stable_sort(
            entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        const QStringList bookers { "OPS01", "D001", "D002" };
        for (const auto& [created, kind] : entries) {
            Order order = newOrder(created, kind == Kind::Hkfe);
            order.number = QStringLiteral("%1").arg(++orderCount_, 8, 10, QLatin1Char('0'));
            switch (kind) {
            case Kind::Sehk:
            case Kind::Hkfe:
                playOrder(order);
                break;
            case Kind::Manual:
            case Kind::OddLot:
            case Kind::Preopening:
                order.user = bookers[summary_.manualTrades % bookers.size()];
                bookTrade(order, kind == Kind::Manual ? 2 : (kind == Kind::OddLot ? 1 : 3));
                break;
            }
            finishOrder(order);
        }
    }

    Order newOrder(const QDateTime& created, bool futures)
    {
        Order order;
        order.created = created;
        order.modified = created;
        order.futures = futures;
        order.exchange = futures ? QStringLiteral("HKFE") : QStringLiteral("SEHK");
        order.account = pickAccount(futures);
        order.user = order.account.owner;
        if (order.user.startsWith(u'D') && random_.chance(0.15))
            order.runner = runnerFor(order.user);
        order.side = random_.between(0, 1);
        if (futures) {
            order.future = &random_.pick(std::span<const Future>(kFutures));
            order.symbol = text(order.future->symbol);
            order.quantity = random_.chance(0.7) ? random_.between(1, 3)
                                                 : random_.between(4, order.future->maxContracts);
            order.price = order.future->reference + random_.between(-25, 25);
            order.openClose = random_.chance(0.7) ? 0 : 1;
            if (random_.chance(0.1))
                order.instruction = random_.chance(0.5) ? OptionFAK : OptionFOK;
        } else {
            order.stock = &random_.pick(std::span<const Stock>(kStocks));
            order.symbol = text(order.stock->symbol);
            const int lots = random_.chance(0.7) ? random_.between(1, 5) : random_.between(6, 40);
            order.quantity = lots * order.stock->lot;
            const TSpreadTable& ladder = order.stock->etp ? settings_.etp : settings_.securities;
            const double reference = ladder.GetNearestPrice(order.stock->reference);
            // Buyers bid at or under the market, sellers offer at or over it.
            const int steps = order.side == 0 ? random_.between(-6, 2) : random_.between(-2, 6);
            order.price = tick(order, reference, steps);
            if (created < at(9, 20))
                order.instruction = OptionAuction;
            if (order.side == 1 && order.stock->shortable && random_.chance(0.1))
                order.shortSell = 1;
        }
        if (random_.chance(0.2))
            order.reference = QStringLiteral("TEL %1").arg(created.toString(QStringLiteral("hhmm")));
        return order;
    }

    QString exchangeOrderNo() { return QStringLiteral("E%1").arg(++exchCount_, 7, 10, QLatin1Char('0')); }

    QString tradeNo() { return QStringLiteral("T%1").arg(++tradeCount_, 7, 10, QLatin1Char('0')); }

    void writeExchangeOrder(const Order& order, const QString& exchNo, int quantity, double price,
        const QDateTime& created, const QDateTime& modified, const QString& remark, const QString& status)
    {
        exchOrders_.write(
            { exchNo, order.number, order.account.id, order.symbol, quantity, price, order.user, 0, 0,
                order.shortSell, created, modified, order.exchange, order.exchange, orNull(remark), status });
    }

    // Fills `quantity` of the exchange order in one to three trades from
    // `after`; returns the time of the last.
    QDateTime fill(
        Order& order, const QString& exchNo, int quantity, double price, QDateTime after, int tradeType = 0)
    {
        const int unit = order.futures ? 1 : order.stock->lot;
        int units = std::max(1, quantity / unit);
        const int pieces = std::min(units, random_.chance(0.5) ? 1 : random_.between(2, 3));
        int left = quantity;
        for (int piece = 0; piece < pieces; ++piece) {
            const int take
                = piece == pieces - 1 ? left : unit * random_.between(1, units - (pieces - piece - 1));
            units -= take / unit;
            left -= take;
            // Now and then a better price than the limit.
            const double traded = random_.chance(0.2) ? tick(order, price, order.side == 0 ? -1 : 1) : price;
            after = later(order, after, 900);
            trades_.write({ tradeNo(), exchNo, order.account.id, order.symbol, take, traded, order.user,
                order.side, 0, 0, order.shortSell, tradeType,
                text(random_.pick(std::span<const char* const>(kBrokers))), after, kCompleted });
            order.filled += take;
            order.proceeds += (order.side == 1 ? 1.0 : -1.0) * take * traded;
        }
        return after;
    }

    int partOf(const Order& order)
    {
        const int unit = order.futures ? 1 : order.stock->lot;
        const int units = order.quantity / unit;
        return units <= 1 ? 0 : unit * random_.between(1, units - 1);
    }

    // What happened to the order during the day.
    void playOrder(Order& order)
    {
        const double roll = random_.unit();
        const QDateTime sent = order.created.addMSecs(random_.between(150, 1500));
        if (roll < 0.04) {
            // Refused by the desk's own checks: never reached the exchange.
            order.status = kRejected;
            order.message = order.account.suspended
                ? QStringLiteral("Account suspended")
                : text(random_.pick(std::span<const char* const>(kOmsRejects)));
            order.modified = order.created.addMSecs(random_.between(20, 400));
            return;
        }
        const QString exchNo = exchangeOrderNo();
        if (roll < 0.07 || order.account.suspended) {
            const QString reason = order.futures
                ? text(random_.pick(std::span<const char* const>(kHkfeRejects)))
                : text(random_.pick(std::span<const char* const>(kSehkRejects)));
            order.modified = sent.addMSecs(random_.between(30, 500));
            writeExchangeOrder(
                order, exchNo, order.quantity, order.price, sent, order.modified, reason, kRejected);
            order.status = kRejected;
            order.message = reason;
            return;
        }
        if (roll < 0.16) {
            // Amended: the first exchange order is replaced by one a tick
            // nearer the market, which then fills or waits.
            const QDateTime amended = later(order, sent, 1200);
            writeExchangeOrder(order, exchNo, order.quantity, order.price, sent, amended,
                QStringLiteral("Amended"), kCancelled);
            futuresState(order, 1, QStringLiteral("ADD"), sent, amended, order.price, kCancelled);
            order.price = tick(order, order.price, order.side == 0 ? 1 : -1);
            const QString second = exchangeOrderNo();
            const QDateTime resent = amended.addMSecs(random_.between(150, 900));
            const bool fills = random_.chance(0.6);
            const QDateTime done = fills ? fill(order, second, order.quantity, order.price, resent) : resent;
            order.status = fills ? kCompleted : kPending;
            order.modified = done;
            writeExchangeOrder(
                order, second, order.quantity, order.price, resent, done, QString(), order.status);
            futuresState(order, 2, QStringLiteral("AMEND"), resent, done, order.price, order.status);
            return;
        }
        QDateTime done = sent;
        QString remark;
        if (roll < 0.56) {
            done = fill(order, exchNo, order.quantity, order.price, sent);
            order.status = kCompleted;
        } else if (roll < 0.71) {
            const int part = partOf(order);
            if (part > 0)
                done = fill(order, exchNo, part, order.price, sent);
            order.status = part > 0 ? kPartial : kPending;
        } else if (roll < 0.85) {
            order.status = kPending;
        } else {
            const int part = random_.chance(0.4) ? partOf(order) : 0;
            if (part > 0)
                done = fill(order, exchNo, part, order.price, sent);
            done = later(order, done, 1800);
            order.status = kCancelled;
            remark = random_.chance(0.7) ? QStringLiteral("Cancelled by dealer")
                                         : QStringLiteral("Cancelled by client");
        }
        order.modified = done;
        writeExchangeOrder(order, exchNo, order.quantity, order.price, sent, done, remark, order.status);
        futuresState(order, 1, order.status == kCancelled ? QStringLiteral("DELETE") : QStringLiteral("ADD"),
            sent, done, order.price, order.status);
    }

    // The futures request state of one sub-order of a HKFE order.
    void futuresState(const Order& order, int subOrder, const QString& operation, const QDateTime& created,
        const QDateTime& modified, double price, const QString& status)
    {
        if (!order.futures)
            return;
        futuresRequests_.write({ order.number, QString::number(subOrder), order.account.id, order.side,
            order.symbol, order.quantity, price, order.user, 0, 0, operation, QVariant(), created, modified,
            order.exchange, order.exchange, status });
    }

    void finishOrder(const Order& order)
    {
        const bool live = order.status == kPending || order.status == kPartial;
        // The buying power a securities buy order takes up.
        const double credit = !order.futures && order.side == 0 ? -money(order.quantity * order.price) : 0.0;
        orders_.write({ order.number, order.account.id, order.side, order.symbol, order.quantity, order.price,
            order.user, orNull(order.runner), 0, 0, order.openClose, order.filled, order.shortSell,
            order.instruction, QStringLiteral("C"), order.created, order.modified,
            live ? order.quantity - order.filled : 0, credit, money(order.proceeds), orNull(order.reference),
            order.exchange, QStringLiteral("HKD"), orNull(order.message), order.status });
        ++summary_.ordersByStatus[order.status];
        if (order.futures)
            ++summary_.hkfeOrders;
        else
            ++summary_.sehkOrders;
        if (live)
            liveOrders_.push_back(order);
    }

    // A trade booked by hand (trade type 1 odd lot, 2 manual, 3 pre-opening)
    // with the exchange order it is recorded under.
    void bookTrade(Order& order, int tradeType)
    {
        order.runner.clear();
        order.shortSell = 0;
        order.instruction = 0;
        if (tradeType == 1) {
            order.quantity = std::max(1, order.stock->lot / random_.between(2, 5));
            order.instruction = OrderKindOddLot;
        }
        const QString exchNo = exchangeOrderNo();
        const QDateTime booked = order.created.addSecs(random_.between(5, 90));
        trades_.write({ tradeNo(), exchNo, order.account.id, order.symbol, order.quantity, order.price,
            order.user, order.side, 0, 0, 0, tradeType,
            text(random_.pick(std::span<const char* const>(kBrokers))), booked, kCompleted });
        order.filled = order.quantity;
        order.proceeds = (order.side == 1 ? 1.0 : -1.0) * order.quantity * order.price;
        order.status = kCompleted;
        order.modified = booked;
        exchOrders_.write({ exchNo, order.number, order.account.id, order.symbol, order.quantity, order.price,
            order.user, 0, 0, 0, order.created, booked, order.exchange, QStringLiteral("SEHK_MANUAL"),
            QStringLiteral("Manual booking"), kCompleted });
        ++summary_.manualTrades;
    }

    // Amend and cancel requests on orders still working, and new orders
    // from internet clients waiting for a dealer, numbered in time order.
    void writeRequests()
    {
        struct Request
        {
            QDateTime created;
            QVariantList values; // every column after req_No
        };
        std::vector<Request> requests;
        for (const Order& order : liveOrders_) {
            if (!random_.chance(0.25))
                continue;
            const bool cancel = random_.chance(0.5);
            const QDateTime created = later(order, order.modified, 600);
            const double price = cancel ? order.price : tick(order, order.price, order.side == 0 ? 1 : -1);
            requests.push_back({ created,
                { order.number, order.account.id, order.side, order.symbol, order.quantity, price, order.user,
                    cancel ? QStringLiteral("CANCEL") : QStringLiteral("AMEND"),
                    orNull(order.runner.isEmpty() ? order.user : order.runner), created, created,
                    order.instruction, order.exchange, QStringLiteral("Waiting for the exchange"),
                    QStringLiteral("C"), order.shortSell } });
        }
        const QStringList clients { "C1001", "C1002", "C1003", "C1004", "C1005", "C1006", "C1007", "C1008" };
        for (int i = 0; i < 10; ++i) {
            Order order = newOrder(between(at(9, 0), at(15, 50)), false);
            const QString client = clients[i % clients.size()];
            const auto own = std::find_if(accounts_.begin(), accounts_.end(),
                [&](const Account& a) { return a.owner == client && !a.futures; });
            requests.push_back({ order.created,
                { QVariant(), own->id, order.side, order.symbol, order.quantity, order.price, client,
                    QStringLiteral("NEW"), client, order.created, order.created, order.instruction,
                    order.exchange, QStringLiteral("Pending dealer approval"), QStringLiteral("C"), 0 } });
        }
        std::stable_sort(requests.begin(), requests.end(),
            [](const Request& a, const Request& b) { return a.created < b.created; });
        int number = 0;
        for (Request& request : requests) {
            request.values.prepend(QStringLiteral("R%1").arg(++number, 7, 10, QLatin1Char('0')));
            requests_.write(request.values);
        }
    }

    const SampleDaySettings& settings_;
    Random random_;
    TableWriter users_;
    TableWriter entitlements_;
    TableWriter destinations_;
    TableWriter accountRows_;
    TableWriter shortcuts_;
    TableWriter orders_;
    TableWriter exchOrders_;
    TableWriter trades_;
    TableWriter requests_;
    TableWriter futuresRequests_;
    std::vector<Account> accounts_;
    std::vector<Order> liveOrders_;
    SampleDaySummary summary_;
    int orderCount_ = 0;
    int exchCount_ = 0;
    int tradeCount_ = 0;
};

} // namespace

SampleDaySummary WriteSampleDay(TDatabase& database, const SampleDaySettings& settings)
{
    database.Open();
    const bool own = !database.InTransaction();
    if (own)
        database.StartTransaction();
    try {
        SampleDaySummary summary = DayWriter(database, settings).write();
        if (own)
            database.Commit();
        return summary;
    } catch (...) {
        if (own && database.InTransaction())
            database.Rollback();
        throw;
    }
}

} // namespace qal::tool
