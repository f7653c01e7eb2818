// SPDX-License-Identifier: MIT
#include "qalpack/db/PostgresBackend.h"

#include <vector>

#include <libpq-fe.h>

#include "qalpack/db/Backend.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/Query.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

namespace {

using backend::RawValue;
using Result = std::unique_ptr<PGresult, decltype(&PQclear)>;

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

class PostgresCursor final : public backend::Cursor
{
public:
    explicit PostgresCursor(Result result)
        : result_(std::move(result))
        , rows_(PQntuples(result_.get()))
    {
        const int columns = PQnfields(result_.get());
        types_.reserve(std::size_t(columns));
        for (int column = 0; column < columns; ++column)
            types_.push_back(typeFromOid(PQftype(result_.get(), column)));
    }

    bool next() override
    {
        if (row_ < rows_)
            ++row_;
        return row_ < rows_;
    }

    void rewind() override { row_ = -1; }

    int columnCount() const override { return int(types_.size()); }

    QString columnName(int column) const override
    {
        return QString::fromUtf8(PQfname(result_.get(), column));
    }

    TFieldType columnType(int column) const override { return types_[std::size_t(column)]; }

    RawValue value(int column) const override
    {
        RawValue value;
        if (row_ < 0 || row_ >= rows_ || PQgetisnull(result_.get(), row_, column))
            return value;
        value.kind = RawValue::Kind::Text;
        value.text = PQgetvalue(result_.get(), row_, column);
        value.size = PQgetlength(result_.get(), row_, column);
        return value;
    }

private:
    Result result_;
    std::vector<TFieldType> types_;
    int rows_;
    int row_ = -1;
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
    ~PostgresConnection() override { PQfinish(connection_); }
    PostgresConnection(const PostgresConnection&) = delete;
    PostgresConnection& operator=(const PostgresConnection&) = delete;

    QString placeholder(int index) const override { return QStringLiteral("$%1").arg(index + 1); }

    std::unique_ptr<backend::Cursor> openCursor(
        const QString& sql, std::span<const backend::Value> params) override
    {
        return std::make_unique<PostgresCursor>(run(sql, params, QStringLiteral("query failed")));
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

    bool inTransaction() const override { return PQtransactionStatus(connection_) != PQTRANS_IDLE; }

private:
    // Runs `sql`; without parameters through the simple protocol, which takes
    // several statements at once. Throws DatabaseError prefixed by `what`.
    Result run(
        const QString& sql, std::span<const backend::Value> params, const QString& what, bool showSql = true)
    {
        const QByteArray text = sql.toUtf8();
        Result result(nullptr, &PQclear);
        if (params.empty()) {
            result.reset(PQexec(connection_, text.constData()));
        } else {
            std::vector<QByteArray> texts;
            std::vector<const char*> values;
            texts.reserve(params.size());
            values.reserve(params.size());
            for (const backend::Value& value : params) {
                if (std::holds_alternative<std::monostate>(value)) {
                    values.push_back(nullptr);
                    continue;
                }
                texts.push_back(backend::valueText(value));
                values.push_back(texts.back().constData());
            }
            result.reset(PQexecParams(connection_, text.constData(), int(params.size()), nullptr,
                values.data(), nullptr, nullptr, 0));
        }
        const ExecStatusType status = result ? PQresultStatus(result.get()) : PGRES_FATAL_ERROR;
        if (status == PGRES_TUPLES_OK || status == PGRES_COMMAND_OK)
            return result;

        QString why;
        QString state;
        if (result) {
            if (const char* primary = PQresultErrorField(result.get(), PG_DIAG_MESSAGE_PRIMARY))
                why = oneLine(primary);
            if (const char* code = PQresultErrorField(result.get(), PG_DIAG_SQLSTATE))
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
            message += QStringLiteral(" [%1]").arg(snippet(sql));
        throw DatabaseError(database_, message);
    }

    PGconn* connection_;
    QString database_;
};

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
    // Date-times come back as "yyyy-mm-dd hh:nn:ss" whatever the server's default.
    connection->execute(QStringLiteral("SET datestyle TO 'ISO, YMD'"), {});
    return connection;
}

} // namespace qal
