// SPDX-License-Identifier: MIT
#include "qalpack/db/SqliteBackend.h"

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

#include <sqlite3.h>

#include "qalpack/db/Backend.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/Param.h"
#include "qalpack/db/ValueText.h"
#include "qalpack/omslib/omsLog.h"
#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

namespace {

using backend::RawValue;

std::map<QString, TSqliteProcedure>& procedures()
{
    static std::map<QString, TSqliteProcedure> registry;
    return registry;
}

TFieldType typeFromDeclaration(const char* declared)
{
    const QByteArray type = QByteArray(declared).toUpper();
    if (type.contains("BOOL"))
        return TFieldType::ftBoolean;
    if (type.contains("DATETIME") || type.contains("TIMESTAMP"))
        return TFieldType::ftDateTime;
    if (type.contains("DATE"))
        return TFieldType::ftDate;
    if (type.contains("TIME"))
        return TFieldType::ftTime;
    if (type.contains("BIGINT"))
        return TFieldType::ftLargeint;
    if (type.contains("SMALLINT"))
        return TFieldType::ftSmallint;
    if (type.contains("INT"))
        return TFieldType::ftInteger;
    if (type.contains("CHAR") || type.contains("CLOB") || type.contains("TEXT"))
        return TFieldType::ftString;
    if (type.contains("BLOB"))
        return TFieldType::ftBlob;
    if (type.contains("REAL") || type.contains("FLOA") || type.contains("DOUB") || type.contains("NUMERIC")
        || type.contains("DECIMAL") || type.contains("MONEY"))
        return TFieldType::ftFloat;
    return TFieldType::ftString;
}

TFieldType typeFromStorage(int storage)
{
    switch (storage) {
    case SQLITE_INTEGER:
        return TFieldType::ftLargeint;
    case SQLITE_FLOAT:
        return TFieldType::ftFloat;
    case SQLITE_BLOB:
        return TFieldType::ftBlob;
    default:
        return TFieldType::ftString;
    }
}

// A statement a connection keeps prepared for the next run of the same text:
// a desk runs the same few statements for every order it saves (the
// transaction's, the procedure's), and preparing one costs more than running
// it. SQLite prepares a kept statement again by itself when the schema
// changes under it. Shared with the cursor reading it, so that a cursor that
// outlives its connection still owns its statement.
struct KeptStatement
{
    explicit KeptStatement(sqlite3_stmt* s) noexcept
        : statement(s)
    { }
    ~KeptStatement() { sqlite3_finalize(statement); }
    KeptStatement(const KeptStatement&) = delete;
    KeptStatement& operator=(const KeptStatement&) = delete;

    sqlite3_stmt* const statement;
    bool busy = false; // being run or read: the same text meanwhile prepares its own
};

class SqliteCursor final : public backend::Cursor
{
public:
    SqliteCursor(sqlite3_stmt* statement, const QString& database, const QString& sql)
        : statement_(statement)
        , database_(database)
        , sql_(sql)
    { }
    // Reads a kept statement, which goes back to its connection when done.
    SqliteCursor(std::shared_ptr<KeptStatement> kept, const QString& database, const QString& sql)
        : statement_(kept->statement)
        , kept_(std::move(kept))
        , database_(database)
        , sql_(sql)
    {
        kept_->busy = true;
    }
    // The statement this cursor owns is kept by its connection from now on.
    void adopt(std::shared_ptr<KeptStatement> kept)
    {
        kept_ = std::move(kept);
        kept_->busy = true;
    }
    ~SqliteCursor() override
    {
        if (!kept_) {
            sqlite3_finalize(statement_);
            return;
        }
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
        kept_->busy = false;
    }
    SqliteCursor(const SqliteCursor&) = delete;
    SqliteCursor& operator=(const SqliteCursor&) = delete;

    bool next() override
    {
        const int rc = sqlite3_step(statement_);
        hasRow_ = rc == SQLITE_ROW;
        if (rc != SQLITE_ROW && rc != SQLITE_DONE) {
            throw DatabaseError(database_,
                QStringLiteral("query failed: %1 [%2]")
                    .arg(QString::fromUtf8(sqlite3_errmsg(sqlite3_db_handle(statement_))),
                        backend::statementSnippet(sql_)));
        }
        if (types_.empty())
            learnTypes();
        return hasRow_;
    }

    void rewind() override
    {
        sqlite3_reset(statement_);
        hasRow_ = false;
    }

    int columnCount() const override { return sqlite3_column_count(statement_); }

    QString columnName(int column) const override
    {
        return QString::fromUtf8(sqlite3_column_name(statement_, column));
    }

    TFieldType columnType(int column) const override
    {
        return std::size_t(column) < types_.size() ? types_[std::size_t(column)] : TFieldType::ftString;
    }

    RawValue value(int column) const override
    {
        RawValue value;
        if (!hasRow_)
            return value;
        // One look-up of the column's value, then the value's own readers:
        // the column readers would each look the column up again. Safe on
        // the unprotected value because the connection is opened without
        // mutexes (one thread per connection).
        sqlite3_value* cell = sqlite3_column_value(statement_, column);
        switch (sqlite3_value_type(cell)) {
        case SQLITE_NULL:
            break;
        case SQLITE_INTEGER:
            value.kind = RawValue::Kind::Integer;
            value.integer = sqlite3_value_int64(cell);
            break;
        case SQLITE_FLOAT:
            value.kind = RawValue::Kind::Real;
            value.real = sqlite3_value_double(cell);
            break;
        default:
            value.kind = RawValue::Kind::Text;
            value.text = reinterpret_cast<const char*>(sqlite3_value_text(cell));
            value.size = sqlite3_value_bytes(cell);
            break;
        }
        return value;
    }

private:
    // Declared column types where the column comes from a table; for a
    // computed column, the kind of value in the first row.
    void learnTypes()
    {
        const int count = sqlite3_column_count(statement_);
        types_.reserve(std::size_t(count));
        for (int column = 0; column < count; ++column) {
            const char* declared = sqlite3_column_decltype(statement_, column);
            if (declared)
                types_.push_back(typeFromDeclaration(declared));
            else
                types_.push_back(hasRow_ ? typeFromStorage(sqlite3_column_type(statement_, column))
                                         : TFieldType::ftString);
        }
    }

    sqlite3_stmt* statement_;
    std::shared_ptr<KeptStatement> kept_;
    QString database_;
    QString sql_;
    std::vector<TFieldType> types_;
    bool hasRow_ = false;
};

class SqliteConnection final : public backend::Connection
{
public:
    SqliteConnection(sqlite3* db, const QString& database)
        : db_(db)
        , database_(database)
    { }
    ~SqliteConnection() override
    {
        // Kept statements a cursor still reads go with that cursor; the
        // connection closes once the last of them is finalized.
        statements_.clear();
        sqlite3_close_v2(db_);
    }
    SqliteConnection(const SqliteConnection&) = delete;
    SqliteConnection& operator=(const SqliteConnection&) = delete;

    QString placeholder(int index) const override { return QStringLiteral("?%1").arg(index + 1); }

    std::unique_ptr<backend::Cursor> openCursor(
        const QString& sql, std::span<const backend::Value> params) override
    {
        if (const auto kept = idleKept(sql)) {
            auto cursor = std::make_unique<SqliteCursor>(kept, database_, sql);
            bind(kept->statement, params, sql);
            return cursor;
        }
        const QByteArray text = sql.toUtf8();
        const char* tail = nullptr;
        sqlite3_stmt* statement = prepare(text.constData(), text.constData() + text.size(), tail, sql);
        auto cursor = std::make_unique<SqliteCursor>(statement, database_, sql);
        if (!statement)
            throw DatabaseError(database_,
                QStringLiteral("the query holds no statement [%1]").arg(backend::statementSnippet(sql)));
        sqlite3_stmt* extra = prepare(tail, text.constData() + text.size(), tail, sql);
        if (extra) {
            sqlite3_finalize(extra);
            throw DatabaseError(database_,
                QStringLiteral("a query opens one statement, this text holds several [%1]")
                    .arg(backend::statementSnippet(sql)));
        }
        if (auto kept = keep(sql, statement))
            cursor->adopt(std::move(kept));
        bind(statement, params, sql);
        return cursor;
    }

    qint64 execute(const QString& sql, std::span<const backend::Value> params) override
    {
        if (const auto kept = idleKept(sql))
            return run(*kept, params, sql);
        const QByteArray text = sql.toUtf8();
        const char* end = text.constData() + text.size();
        const char* next = text.constData();
        qint64 changed = 0;
        while (next < end) {
            const char* const from = next;
            sqlite3_stmt* statement = prepare(next, end, next, sql);
            if (!statement)
                break;
            if (from == text.constData() && isBlank(next, end)) {
                if (const auto kept = keep(sql, statement))
                    return run(*kept, params, sql);
            }
            const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> owner(statement, sqlite3_finalize);
            bind(statement, params, sql);
            int rc = SQLITE_ROW;
            while (rc == SQLITE_ROW)
                rc = sqlite3_step(statement);
            if (rc != SQLITE_DONE)
                fail(QStringLiteral("statement failed"), sql);
            changed = sqlite3_changes64(db_);
        }
        return changed;
    }

    void callProcedure(const QString& name, TParams& params, TDatabase& database) override
    {
        const auto found = procedures().find(name.toUpper());
        if (found == procedures().end())
            throw DatabaseError(
                database_, QStringLiteral("stored procedure \"%1\" is not registered").arg(name));
        const TSqliteProcedure procedure = found->second;
        for (int i = 0; i < params.Count(); ++i) {
            TParam& param = params.Items(i);
            if (param.ParamType() == TParamType::ptOutput || param.ParamType() == TParamType::ptResult)
                param.Clear();
        }
        const bool outermost = sqlite3_get_autocommit(db_) != 0;
        execute(
            outermost ? QStringLiteral("BEGIN IMMEDIATE") : QStringLiteral("SAVEPOINT qal_procedure"), {});
        auto undo = [&] {
            sqlite3_exec(db_, outermost ? "ROLLBACK" : "ROLLBACK TO qal_procedure; RELEASE qal_procedure",
                nullptr, nullptr, nullptr);
        };
        auto failed = [&](const QString& why) {
            return DatabaseError(
                database_, QStringLiteral("stored procedure \"%1\" failed: %2").arg(name, why));
        };
        try {
            procedure(params, database);
        } catch (const DatabaseError& error) {
            undo();
            throw failed(error.What());
        } catch (const Error& error) {
            undo();
            throw failed(error.message());
        } catch (const std::exception& error) {
            undo();
            throw failed(QString::fromUtf8(error.what()));
        } catch (...) {
            undo();
            throw;
        }
        if (!outermost) {
            execute(QStringLiteral("RELEASE qal_procedure"), {});
            return;
        }
        // A COMMIT that fails (another connection still reading the file in
        // the old journal mode, a full disk) leaves the transaction open.
        // Roll it back so that nothing the procedure did can be committed
        // later by someone else's statement, and the write lock is let go.
        if (sqlite3_exec(db_, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK) {
            const QString why = QString::fromUtf8(sqlite3_errmsg(db_));
            undo();
            throw failed(QStringLiteral("the commit failed, nothing was saved: ") + why);
        }
    }

    void commit() override
    {
        if (sqlite3_exec(db_, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK)
            return;
        const QString why = QString::fromUtf8(sqlite3_errmsg(db_));
        if (sqlite3_get_autocommit(db_) == 0)
            sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
        throw DatabaseError(
            database_, QStringLiteral("the commit failed and the transaction was rolled back: ") + why);
    }

    bool inTransaction() const override { return sqlite3_get_autocommit(db_) == 0; }

    QStringList tableNames() override
    {
        return firstColumn(QStringLiteral(
            "select name from sqlite_master where type = 'table' and name not like 'sqlite\\_%' escape '\\' "
            "order by name"));
    }

private:
    static constexpr std::size_t kKeptStatements = 32;

    static bool isBlank(const char* from, const char* end)
    {
        return std::all_of(from, end, [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
    }

    // The statement kept for `sql`, when there is one and nobody runs or
    // reads it.
    std::shared_ptr<KeptStatement> idleKept(const QString& sql) const
    {
        const auto kept = statements_.find(sql);
        return kept != statements_.end() && !kept->second->busy ? kept->second : nullptr;
    }

    // Keeps `statement` for `sql` and returns it kept, unless the cache is
    // full (the texts a desk repeats are few; one-off texts beyond those are
    // not kept) or the text already has a kept statement (busy meanwhile).
    std::shared_ptr<KeptStatement> keep(const QString& sql, sqlite3_stmt* statement)
    {
        if (statements_.size() >= kKeptStatements || statements_.count(sql) != 0)
            return nullptr;
        return statements_.emplace(sql, std::make_shared<KeptStatement>(statement)).first->second;
    }

    qint64 run(KeptStatement& kept, std::span<const backend::Value> params, const QString& sql)
    {
        kept.busy = true;
        struct Done
        {
            KeptStatement& kept;
            ~Done()
            {
                sqlite3_reset(kept.statement);
                sqlite3_clear_bindings(kept.statement);
                kept.busy = false;
            }
        } done { kept };
        bind(kept.statement, params, sql);
        int rc = SQLITE_ROW;
        while (rc == SQLITE_ROW)
            rc = sqlite3_step(kept.statement);
        if (rc != SQLITE_DONE)
            fail(QStringLiteral("statement failed"), sql);
        return sqlite3_changes64(db_);
    }

    [[noreturn]] void fail(const QString& what, const QString& sql) const
    {
        throw DatabaseError(database_,
            QStringLiteral("%1: %2 [%3]")
                .arg(what, QString::fromUtf8(sqlite3_errmsg(db_)), backend::statementSnippet(sql)));
    }

    // The next statement in [from, end), or nullptr when only blanks and
    // comments are left; `tail` is set to where the statement ends.
    sqlite3_stmt* prepare(const char* from, const char* end, const char*& tail, const QString& sql) const
    {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(db_, from, int(end - from), &statement, &tail) != SQLITE_OK)
            fail(QStringLiteral("query failed"), sql);
        return statement;
    }

    void bind(sqlite3_stmt* statement, std::span<const backend::Value> params, const QString& sql) const
    {
        for (std::size_t i = 0; i < params.size(); ++i) {
            const QByteArray name = "?" + QByteArray::number(qulonglong(i + 1));
            const int index = sqlite3_bind_parameter_index(statement, name.constData());
            if (index == 0)
                continue;
            const backend::Value& value = params[i];
            int rc = SQLITE_OK;
            if (std::holds_alternative<std::monostate>(value)) {
                rc = sqlite3_bind_null(statement, index);
            } else if (const auto* integer = std::get_if<qint64>(&value)) {
                rc = sqlite3_bind_int64(statement, index, *integer);
            } else if (const auto* real = std::get_if<double>(&value)) {
                rc = sqlite3_bind_double(statement, index, *real);
            } else if (const auto* truth = std::get_if<bool>(&value)) {
                rc = sqlite3_bind_int(statement, index, *truth ? 1 : 0);
            } else {
                const QByteArray text = backend::valueText(value);
                rc = sqlite3_bind_text64(statement, index, text.constData(), sqlite3_uint64(text.size()),
                    SQLITE_TRANSIENT, SQLITE_UTF8);
            }
            if (rc != SQLITE_OK)
                fail(QStringLiteral("binding parameter %1 failed").arg(i + 1), sql);
        }
    }

    sqlite3* db_;
    QString database_;
    std::map<QString, std::shared_ptr<KeptStatement>> statements_;
};

// The write-ahead log lets the desk save while other programs read the file
// (a report, a second desk's blotter): readers never block a commit. The mode
// is kept in the file, so switching once is enough; a file another program
// holds locked at that moment keeps its mode until a later open.
void setJournalMode(sqlite3* db, const QString& mode, const QString& database)
{
    static const QStringList known { QStringLiteral("WAL"), QStringLiteral("DELETE"),
        QStringLiteral("TRUNCATE"), QStringLiteral("PERSIST"), QStringLiteral("MEMORY"),
        QStringLiteral("OFF") };
    if (!known.contains(mode))
        throw DatabaseError(database,
            QStringLiteral("unknown SQLite journal mode \"%1\" (known: %2)").arg(mode, known.join(u", ")));
    const QByteArray sql = "PRAGMA journal_mode=" + mode.toLatin1();
    if (sqlite3_exec(db, sql.constData(), nullptr, nullptr, nullptr) != SQLITE_OK)
        omsLogMsg(QStringLiteral("Database %1: journal mode %2 not set now: %3")
                      .arg(database, mode, QString::fromUtf8(sqlite3_errmsg(db))),
            2);
}

} // namespace

void SqliteBackend::RegisterProcedure(const QString& name, TSqliteProcedure procedure)
{
    procedures()[name.toUpper()] = std::move(procedure);
}

void SqliteBackend::UnregisterProcedure(const QString& name)
{
    procedures().erase(name.toUpper());
}

bool SqliteBackend::IsProcedureRegistered(const QString& name)
{
    return procedures().count(name.toUpper()) != 0;
}

std::unique_ptr<backend::Connection> SqliteBackend::Open(const TStringList& params, const QString& database)
{
    QString path;
    int busyTimeout = 5000;
    bool create = false;
    QString journalMode = QStringLiteral("WAL");
    for (int i = 0; i < params.Count(); ++i) {
        const QString name = params.Names(i).trimmed();
        const QString value = params.ValueFromIndex(i).trimmed();
        if (backend::isParamName(name, u"DATABASE") || backend::isParamName(name, u"DATABASE NAME")) {
            path = value;
        } else if (backend::isParamName(name, u"BUSY TIMEOUT")) {
            busyTimeout = StrToIntDef(value, busyTimeout);
        } else if (backend::isParamName(name, u"JOURNAL MODE")) {
            journalMode = value.toUpper();
        } else if (backend::isParamName(name, u"CREATE")) {
            create = backend::isParamName(value, u"TRUE") || backend::isParamName(value, u"YES")
                || value == u"1";
        } else if (!backend::isParamName(name, u"USER NAME") && !backend::isParamName(name, u"PASSWORD")) {
            throw DatabaseError(database,
                QStringLiteral("unknown SQLite connection parameter \"%1\"")
                    .arg(name.isEmpty() ? params.Strings(i) : name));
        }
    }
    if (path.isEmpty())
        throw DatabaseError(database, QStringLiteral("no SQLite database file given (DATABASE=...)"));

    // One thread uses a connection, so SQLite need not lock it on every
    // column read.
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX;
    if (create)
        flags |= SQLITE_OPEN_CREATE;
    sqlite3* db = nullptr;
    const int rc = sqlite3_open_v2(path.toUtf8().constData(), &db, flags, nullptr);
    if (rc != SQLITE_OK) {
        const QString why = QString::fromUtf8(db ? sqlite3_errmsg(db) : sqlite3_errstr(rc));
        sqlite3_close_v2(db);
        throw DatabaseError(
            database, QStringLiteral("cannot open SQLite database \"%1\": %2").arg(path, why));
    }
    auto connection = std::make_unique<SqliteConnection>(db, database);
    sqlite3_busy_timeout(db, busyTimeout);
    // A file that is not a database opens without complaint; reading the
    // schema version finds out now rather than at the first query.
    if (sqlite3_exec(db, "PRAGMA schema_version", nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw DatabaseError(database,
            QStringLiteral("cannot open SQLite database \"%1\": %2")
                .arg(path, QString::fromUtf8(sqlite3_errmsg(db))));
    }
    setJournalMode(db, journalMode, database);
    return connection;
}

} // namespace qal
