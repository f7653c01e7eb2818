// SPDX-License-Identifier: MIT
#include "qalpack/db/PostgresBackend.h"

#include <deque>
#include <optional>
#include <vector>

#include <libpq-fe.h>

#include "qalpack/db/Backend.h"
#include "qalpack/db/ValueText.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/Query.h"
#include "qalpack/omslib/omsLog.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

namespace {

using backend::RawValue;
using Result = std::unique_ptr<PGresult, decltype(&PQclear)>;

// Date-times come back as "yyyy-mm-dd hh:nn:ss" whatever the server's default;
// set on every new session, a reconnected one included.
constexpr const char* datestyle = "SET datestyle TO 'ISO, YMD'";

QString snippet(const QString& sql)
{
    const QString text = sql.simplified();
    return text.size() > 80 ? text.left(77) + QStringLiteral("...") : text;
}

// libpq's messages span lines ("...failed: Connection refused\n\tIs the
// server running..."): one line reads better in a log and a status bar.
QString oneLine(const char* message)
{
    return QString::fromUtf8(message).simplified();
}

// Type OIDs of the built-in types (pg_type.h).
TFieldType typeFromOid(Oid oid)
{
    switch (oid) {
    case 16:
        return TFieldType::ftBoolean;
    case 17:
        return TFieldType::ftBlob;
    case 20:
        return TFieldType::ftLargeint;
    case 21:
        return TFieldType::ftSmallint;
    case 23:
    case 26:
        return TFieldType::ftInteger;
    case 700:
    case 701:
    case 1700:
        return TFieldType::ftFloat;
    case 1042:
        return TFieldType::ftFixedChar;
    case 1082:
        return TFieldType::ftDate;
    case 1083:
    case 1266:
        return TFieldType::ftTime;
    case 1114:
    case 1184:
        return TFieldType::ftDateTime;
    default:
        return TFieldType::ftString;
    }
}

class PostgresConnection;

// The rows of one statement as the server sends them, one result per row
// (libpq's single-row mode): the desk starts reading while the server is
// still producing, and no whole result is held in memory. While the cursor
// streams, the connection is busy; before the connection runs anything else
// it has the cursor take in the rest of its rows (settle()).
class PostgresCursor final : public backend::Cursor
{
public:
    PostgresCursor(
        PostgresConnection& connection, QByteArray sql, std::vector<std::optional<QByteArray>> params);
    ~PostgresCursor() override;
    PostgresCursor(const PostgresCursor&) = delete;
    PostgresCursor& operator=(const PostgresCursor&) = delete;

    bool next() override;
    void rewind() override;
    int columnCount() const override { return int(types_.size()); }
    QString columnName(int column) const override { return names_[std::size_t(column)]; }
    TFieldType columnType(int column) const override { return types_[std::size_t(column)]; }

    RawValue value(int column) const override
    {
        RawValue value;
        const PGresult* row = row_.get();
        if (!row || PQgetisnull(row, 0, column))
            return value;
        value.kind = RawValue::Kind::Text;
        value.text = PQgetvalue(row, 0, column);
        value.size = PQgetlength(row, 0, column);
        return value;
    }

    // Takes in every row the server has still to send, so that the
    // connection is free for another statement.
    void settle();

private:
    void start();
    // The next row from the server, or null once the statement is done.
    Result receive();
    void describe(const PGresult* result);

    PostgresConnection& connection_;
    QByteArray sql_;
    std::vector<std::optional<QByteArray>> params_;
    std::vector<QString> names_;
    std::vector<TFieldType> types_;
    Result row_ { nullptr, &PQclear };
    // The first row, read when the statement starts, and rows taken in by
    // settle(); handed out before any more are received.
    std::deque<Result> waiting_;
    // A failure the server reported while the cursor settled: raised once
    // the rows before it have been read.
    std::optional<DatabaseError> failure_;
    bool streaming_ = false;
};

// A plain SQL identifier, which is all a procedure or argument name may be:
// nothing that could end the call's text.
bool isIdentifier(QStringView name)
{
    if (name.isEmpty())
        return false;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const char16_t c = name[i].unicode();
        const bool letter = (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_';
        const bool digit = (c >= u'0' && c <= u'9') || c == u'$';
        if (!letter && !(i > 0 && digit))
            return false;
    }
    return true;
}

QString argumentName(const TParam& param)
{
    QString name = param.Name().trimmed();
    if (name.startsWith(u'@'))
        name.remove(0, 1);
    return name;
}

bool isOutput(const TParam& param)
{
    return param.ParamType() == TParamType::ptOutput || param.ParamType() == TParamType::ptInputOutput
        || param.ParamType() == TParamType::ptResult;
}

bool isInput(const TParam& param)
{
    return param.ParamType() != TParamType::ptOutput && param.ParamType() != TParamType::ptResult;
}

class PostgresConnection final : public backend::Connection
{
public:
    PostgresConnection(PGconn* connection, const QString& database)
        : connection_(connection)
        , database_(database)
    { }
    ~PostgresConnection() override
    {
        settle();
        PQfinish(connection_);
    }
    PostgresConnection(const PostgresConnection&) = delete;
    PostgresConnection& operator=(const PostgresConnection&) = delete;

    QString placeholder(int index) const override { return QStringLiteral("$%1").arg(index + 1); }

    std::unique_ptr<backend::Cursor> openCursor(
        const QString& sql, std::span<const backend::Value> params) override
    {
        return std::make_unique<PostgresCursor>(*this, sql.toUtf8(), paramTexts(params));
    }

    qint64 execute(const QString& sql, std::span<const backend::Value> params) override
    {
        const Result result = run(sql, params, QStringLiteral("statement failed"));
        const char* changed = PQcmdTuples(result.get());
        qint64 count = 0;
        return backend::parseInteger(changed, qsizetype(qstrlen(changed)), count) ? count : 0;
    }

    void callProcedure(const QString& name, TParams& params, TDatabase&) override
    {
        const QStringList parts = name.trimmed().split(u'.');
        for (const QString& part : parts) {
            if (!isIdentifier(part))
                throw DatabaseError(
                    database_, QStringLiteral("\"%1\" is not a valid stored procedure name").arg(name));
        }
        QStringList arguments;
        std::vector<backend::Value> values;
        for (int i = 0; i < params.Count(); ++i) {
            const TParam& param = params.Items(i);
            if (!isInput(param) || !param.Bound())
                continue;
            const QString argument = argumentName(param);
            if (!isIdentifier(argument)) {
                throw DatabaseError(database_,
                    QStringLiteral("\"%1\" is not a valid parameter name of stored procedure \"%2\"")
                        .arg(param.Name(), name));
            }
            values.push_back(param.RawValue());
            arguments.append(QStringLiteral("%1 => $%2").arg(argument).arg(values.size()));
        }
        const QString sql
            = QStringLiteral("select * from %1(%2)").arg(parts.join(u'.'), arguments.join(u", "));
        const Result result
            = run(sql, values, QStringLiteral("stored procedure \"%1\" failed").arg(name), false);

        const int columns = PQnfields(result.get());
        const bool hasRow = PQntuples(result.get()) > 0;
        for (int i = 0; i < params.Count(); ++i) {
            TParam& param = params.Items(i);
            if (!isOutput(param))
                continue;
            const QString wanted = argumentName(param);
            int column = -1;
            for (int c = 0; c < columns && column < 0; ++c) {
                if (wanted.compare(QString::fromUtf8(PQfname(result.get(), c)), Qt::CaseInsensitive) == 0)
                    column = c;
            }
            if (column < 0 && param.ParamType() == TParamType::ptResult && columns > 0)
                column = 0;
            if (column < 0) {
                throw DatabaseError(database_,
                    QStringLiteral("stored procedure \"%1\" returned no value for output parameter \"%2\"")
                        .arg(name, param.Name()));
            }
            RawValue value;
            if (hasRow && !PQgetisnull(result.get(), 0, column)) {
                value.kind = RawValue::Kind::Text;
                value.text = PQgetvalue(result.get(), 0, column);
                value.size = PQgetlength(result.get(), 0, column);
            }
            param.SetFromRaw(value, typeFromOid(PQftype(result.get(), column)));
        }
    }

    bool inTransaction() const override
    {
        // While rows stream the server reports the connection as busy; a
        // query does not change whether a transaction is open.
        if (stream_)
            return statusBeforeStream_ != PQTRANS_IDLE;
        return PQtransactionStatus(connection_) != PQTRANS_IDLE;
    }

    void commit() override
    {
        try {
            const Result result = run(QStringLiteral("COMMIT"), {}, QStringLiteral("commit failed"));
            // A transaction that had already failed answers COMMIT with a
            // rollback and no error: nothing was stored, and the caller must know.
            if (qstrcmp(PQcmdStatus(result.get()), "ROLLBACK") == 0)
                throw DatabaseError(database_,
                    QStringLiteral("commit failed: an earlier statement of the transaction failed, "
                                   "so the server rolled it back"));
        } catch (const DatabaseError&) {
            if (PQstatus(connection_) == CONNECTION_OK && PQtransactionStatus(connection_) != PQTRANS_IDLE)
                drop(PQexec(connection_, "ROLLBACK"));
            throw;
        }
    }

    QStringList tableNames() override
    {
        return firstColumn(QStringLiteral("select table_name from information_schema.tables "
                                          "where table_schema = current_schema() order by table_name"));
    }

    // Sends one statement for `cursor` to read row by row.
    void startStream(
        PostgresCursor& cursor, const QByteArray& sql, const std::vector<std::optional<QByteArray>>& params)
    {
        settle();
        reconnectIfLost();
        std::vector<const char*> values;
        values.reserve(params.size());
        for (const std::optional<QByteArray>& param : params)
            values.push_back(param ? param->constData() : nullptr);
        statusBeforeStream_ = PQtransactionStatus(connection_);
        if (!PQsendQueryParams(
                connection_, sql.constData(), int(values.size()), nullptr, values.data(), nullptr, nullptr, 0)
            || !PQsetSingleRowMode(connection_)) {
            drain();
            fail(nullptr, PGRES_FATAL_ERROR, QStringLiteral("query failed"), sql);
        }
        stream_ = &cursor;
    }

    // The next result of the statement `cursor` streams; null when it is done.
    Result receive(const PostgresCursor& cursor)
    {
        if (stream_ != &cursor)
            return { nullptr, &PQclear };
        Result result(PQgetResult(connection_), &PQclear);
        if (!result)
            stream_ = nullptr;
        return result;
    }

    // Reads what is left of the statement `cursor` streams and drops it.
    void endStream(const PostgresCursor& cursor)
    {
        if (stream_ == &cursor) {
            stream_ = nullptr;
            drain();
        }
    }

    // Raises the failure of `result` (or the connection's, without one) as a
    // DatabaseError prefixed by `what`.
    [[noreturn]] void fail(const PGresult* result, ExecStatusType status, const QString& what,
        QAnyStringView sql, bool showSql = true) const
    {
        QString why;
        QString state;
        if (result) {
            if (const char* primary = PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY))
                why = oneLine(primary);
            if (const char* code = PQresultErrorField(result, PG_DIAG_SQLSTATE))
                state = QString::fromLatin1(code);
        }
        if (why.isEmpty())
            why = oneLine(PQerrorMessage(connection_));
        if (why.isEmpty())
            why = QString::fromUtf8(PQresStatus(status));
        if (PQstatus(connection_) == CONNECTION_BAD)
            why = QStringLiteral("the connection to the server is lost: ") + why;
        QString message = what + QStringLiteral(": ") + why;
        if (!state.isEmpty())
            message += QStringLiteral(" (SQLSTATE %1)").arg(state);
        if (showSql)
            message += QStringLiteral(" [%1]").arg(snippet(sql.toString()));
        throw DatabaseError(database_, message);
    }

private:
    // Frees the connection of a cursor still streaming: its rows are taken
    // into the cursor.
    void settle()
    {
        if (stream_)
            stream_->settle();
    }

    static void drop(PGresult* result) { PQclear(result); }

    // A connection the server dropped (a restart, a network cut) is opened
    // again before the next statement, waiting at most the alias's connect
    // timeout. The statement that met the drop has already failed; a
    // transaction that was open then is gone with the old session.
    void reconnectIfLost()
    {
        if (PQstatus(connection_) != CONNECTION_BAD)
            return;
        omsLogMsg(QStringLiteral("Database %1: the connection to the server was lost, reconnecting").arg(database_), 1);
        PQreset(connection_);
        if (PQstatus(connection_) != CONNECTION_OK) {
            throw DatabaseError(database_,
                QStringLiteral("no connection to the server, reconnecting failed: %1")
                    .arg(oneLine(PQerrorMessage(connection_))));
        }
        drop(PQexec(connection_, datestyle));
        omsLogMsg(QStringLiteral("Database %1: reconnected to the server").arg(database_), 1);
    }

    void drain()
    {
        while (PGresult* result = PQgetResult(connection_))
            PQclear(result);
    }

    static std::vector<std::optional<QByteArray>> paramTexts(std::span<const backend::Value> params)
    {
        std::vector<std::optional<QByteArray>> texts;
        texts.reserve(params.size());
        for (const backend::Value& value : params) {
            if (std::holds_alternative<std::monostate>(value))
                texts.emplace_back();
            else
                texts.emplace_back(backend::valueText(value));
        }
        return texts;
    }

    // Runs `sql` to its end; without parameters through the simple protocol,
    // which takes several statements at once. Throws DatabaseError prefixed
    // by `what`.
    Result run(
        const QString& sql, std::span<const backend::Value> params, const QString& what, bool showSql = true)
    {
        settle();
        reconnectIfLost();
        const QByteArray text = sql.toUtf8();
        Result result(nullptr, &PQclear);
        if (params.empty()) {
            result.reset(PQexec(connection_, text.constData()));
        } else {
            const std::vector<std::optional<QByteArray>> texts = paramTexts(params);
            std::vector<const char*> values;
            values.reserve(texts.size());
            for (const std::optional<QByteArray>& param : texts)
                values.push_back(param ? param->constData() : nullptr);
            result.reset(PQexecParams(connection_, text.constData(), int(values.size()), nullptr,
                values.data(), nullptr, nullptr, 0));
        }
        const ExecStatusType status = result ? PQresultStatus(result.get()) : PGRES_FATAL_ERROR;
        if (status == PGRES_TUPLES_OK || status == PGRES_COMMAND_OK)
            return result;
        fail(result.get(), status, what, sql, showSql);
    }

    PGconn* connection_;
    QString database_;
    PostgresCursor* stream_ = nullptr;
    PGTransactionStatusType statusBeforeStream_ = PQTRANS_IDLE;
};

PostgresCursor::PostgresCursor(
    PostgresConnection& connection, QByteArray sql, std::vector<std::optional<QByteArray>> params)
    : connection_(connection)
    , sql_(std::move(sql))
    , params_(std::move(params))
{
    start();
}

PostgresCursor::~PostgresCursor()
{
    // A cursor closed before its last row leaves the rest to be read and
    // dropped; one that is done no longer touches the connection, which its
    // database closes after its queries.
    if (streaming_)
        connection_.endStream(*this);
}

void PostgresCursor::start()
{
    connection_.startStream(*this, sql_, params_);
    streaming_ = true;
    // The first result tells the columns, or the failure: a statement that
    // fails does so when it opens.
    if (Result first = receive())
        waiting_.push_back(std::move(first));
}

Result PostgresCursor::receive()
{
    while (streaming_) {
        Result result = connection_.receive(*this);
        if (!result) {
            streaming_ = false;
            break;
        }
        const ExecStatusType status = PQresultStatus(result.get());
        if (names_.empty() && types_.empty())
            describe(result.get());
        if (status == PGRES_SINGLE_TUPLE)
            return result;
        if (status == PGRES_TUPLES_OK || status == PGRES_COMMAND_OK)
            continue;
        streaming_ = false;
        connection_.endStream(*this);
        connection_.fail(result.get(), status, QStringLiteral("query failed"), sql_);
    }
    return { nullptr, &PQclear };
}

void PostgresCursor::describe(const PGresult* result)
{
    const int columns = PQnfields(result);
    names_.reserve(std::size_t(columns));
    types_.reserve(std::size_t(columns));
    for (int column = 0; column < columns; ++column) {
        names_.push_back(QString::fromUtf8(PQfname(result, column)));
        types_.push_back(typeFromOid(PQftype(result, column)));
    }
}

bool PostgresCursor::next()
{
    if (!waiting_.empty()) {
        row_ = std::move(waiting_.front());
        waiting_.pop_front();
        return true;
    }
    if (failure_) {
        row_.reset();
        const DatabaseError failure = std::move(*failure_);
        failure_.reset();
        throw failure;
    }
    row_ = receive();
    return row_ != nullptr;
}

void PostgresCursor::rewind()
{
    connection_.endStream(*this);
    streaming_ = false;
    row_.reset();
    waiting_.clear();
    failure_.reset();
    start();
}

void PostgresCursor::settle()
{
    try {
        while (Result result = receive())
            waiting_.push_back(std::move(result));
    } catch (const DatabaseError& error) {
        failure_ = error;
    }
}

bool isNamed(const QString& name, QStringView expected)
{
    return name.compare(expected, Qt::CaseInsensitive) == 0;
}

QByteArray keywordFor(const QString& name)
{
    if (isNamed(name, u"HOST") || isNamed(name, u"SERVER NAME"))
        return "host";
    if (isNamed(name, u"DATABASE") || isNamed(name, u"DATABASE NAME"))
        return "dbname";
    if (isNamed(name, u"USER NAME"))
        return "user";
    return name.toLower().replace(u' ', u'_').toUtf8();
}

} // namespace

std::unique_ptr<backend::Connection> PostgresBackend::Open(const TStringList& params, const QString& database)
{
    std::vector<QByteArray> keywords;
    std::vector<QByteArray> values;
    auto set = [&](const QByteArray& keyword, const QByteArray& value) {
        for (std::size_t i = 0; i < keywords.size(); ++i) {
            if (keywords[i] == keyword) {
                values[i] = value;
                return;
            }
        }
        keywords.push_back(keyword);
        values.push_back(value);
    };
    set("connect_timeout", "10");
    set("application_name", "qalpack");
    for (int i = 0; i < params.Count(); ++i) {
        const QString name = params.Names(i).trimmed();
        if (name.isEmpty())
            throw DatabaseError(
                database, QStringLiteral("connection parameter \"%1\" has no name").arg(params.Strings(i)));
        set(keywordFor(name), params.ValueFromIndex(i).trimmed().toUtf8());
    }
    set("client_encoding", "UTF8");

    std::vector<const char*> keywordList;
    std::vector<const char*> valueList;
    for (std::size_t i = 0; i < keywords.size(); ++i) {
        keywordList.push_back(keywords[i].constData());
        valueList.push_back(values[i].constData());
    }
    keywordList.push_back(nullptr);
    valueList.push_back(nullptr);

    PGconn* raw = PQconnectdbParams(keywordList.data(), valueList.data(), 0);
    if (!raw)
        throw DatabaseError(
            database, QStringLiteral("cannot connect to the PostgreSQL server: out of memory"));
    if (PQstatus(raw) != CONNECTION_OK) {
        const QString why = oneLine(PQerrorMessage(raw));
        PQfinish(raw);
        auto valueOf = [&](const char* keyword) {
            for (std::size_t i = 0; i < keywords.size(); ++i) {
                if (keywords[i] == keyword)
                    return QString::fromUtf8(values[i]);
            }
            return QStringLiteral("default");
        };
        throw DatabaseError(database,
            QStringLiteral("cannot connect to the PostgreSQL server (host %1, port %2, database %3): %4")
                .arg(valueOf("host"), valueOf("port"), valueOf("dbname"), why));
    }
    // Server notices ("table does not exist, skipping") are not the desk's business.
    PQsetNoticeProcessor(
        raw, [](void*, const char*) {}, nullptr);
    auto connection = std::make_unique<PostgresConnection>(raw, database);
    connection->execute(QString::fromLatin1(datestyle), {});
    return connection;
}

} // namespace qal
