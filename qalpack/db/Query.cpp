// SPDX-License-Identifier: MIT
#include "qalpack/db/Query.h"

#include "qalpack/db/Database.h"
#include "qalpack/db/DatabaseError.h"

namespace qal {

namespace {

bool isIdentifierStart(QChar c)
{
    return c.isLetter() || c == u'_';
}

bool isIdentifierChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_';
}

// Where a dollar-quoted text ("$body$ ... $body$") starting at `at` ends, or
// -1 when `at` does not open one.
qsizetype dollarQuoteEnd(QStringView sql, qsizetype at)
{
    if (at > 0 && (isIdentifierChar(sql[at - 1]) || sql[at - 1] == u'$'))
        return -1;
    qsizetype i = at + 1;
    if (i < sql.size() && isIdentifierStart(sql[i])) {
        while (i < sql.size() && isIdentifierChar(sql[i]))
            ++i;
    }
    if (i >= sql.size() || sql[i] != u'$')
        return -1;
    const QStringView tag = sql.mid(at, i - at + 1);
    const qsizetype close = sql.indexOf(tag, i + 1);
    return close < 0 ? sql.size() : close + tag.size();
}

} // namespace

// The SQL text cut at its ":name" parameters.
struct TQuery::Statement
{
    QStringList lines; // the SQL lines it was parsed from
    QString source;
    QStringList pieces; // text before each parameter, and the text after the last
    std::vector<int> positions; // the parameter (index into names) after each piece
    QStringList names; // distinct names, in order of first use

    void parse(const QString& sql)
    {
        source = sql;
        const QStringView text(sql);
        qsizetype pieceStart = 0;
        qsizetype i = 0;
        auto skipTo = [&](QStringView close, qsizetype from) {
            const qsizetype at = text.indexOf(close, from);
            i = at < 0 ? text.size() : at + close.size();
        };
        while (i < text.size()) {
            const QChar c = text[i];
            const QChar next = i + 1 < text.size() ? text[i + 1] : QChar();
            if (c == u'\'' || c == u'"') {
                skipTo(QStringView(&c, 1), i + 1);
            } else if (c == u'-' && next == u'-') {
                skipTo(u"\n", i + 2);
            } else if (c == u'/' && next == u'*') {
                skipTo(u"*/", i + 2);
            } else if (c == u'$' && dollarQuoteEnd(text, i) >= 0) {
                i = dollarQuoteEnd(text, i);
            } else if (c == u':' && next == u':') {
                i += 2;
            } else if (c == u':' && isIdentifierStart(next)) {
                qsizetype end = i + 1;
                while (end < text.size() && isIdentifierChar(text[end]))
                    ++end;
                const QString name = text.mid(i + 1, end - i - 1).toString();
                qsizetype slot = -1;
                for (qsizetype n = 0; n < names.size(); ++n) {
                    if (names[n].compare(name, Qt::CaseInsensitive) == 0)
                        slot = n;
                }
                if (slot < 0) {
                    slot = names.size();
                    names.append(name);
                }
                pieces.append(text.mid(pieceStart, i - pieceStart).toString());
                positions.push_back(int(slot));
                pieceStart = i = end;
            } else {
                ++i;
            }
        }
        pieces.append(text.mid(pieceStart).toString());
    }

    [[nodiscard]] QString textFor(const backend::Connection& connection) const
    {
        QString text = pieces.front();
        for (std::size_t n = 0; n < positions.size(); ++n)
            text += connection.placeholder(positions[n]) + pieces[qsizetype(n) + 1];
        return text;
    }
};

TQuery::TQuery(QObject* owner)
    : QObject(owner)
{ }

TQuery::TQuery(TDatabase& database, QObject* owner)
    : QObject(owner)
{
    link_.bind(database);
}

TQuery::~TQuery()
{
    Close();
}

const QString& TQuery::DatabaseName() const
{
    return link_.name();
}

void TQuery::SetDatabase(TDatabase& database)
{
    if (link_.isBoundTo(database))
        return;
    Close();
    link_.bind(database);
}

void TQuery::SetDatabaseName(const QString& name)
{
    if (link_.isName(name))
        return;
    Close();
    link_.setName(name);
}

TStringList& TQuery::SQL()
{
    return sql_;
}

const TStringList& TQuery::SQL() const
{
    return sql_;
}

const TQuery::Statement& TQuery::statement()
{
    // Every ParamByName asks: the lines are compared as they stand, without
    // joining them into a new text each time.
    if (statement_ && statement_->lines.size() == sql_.Count()) {
        bool same = true;
        for (int i = 0; same && i < sql_.Count(); ++i)
            same = sql_.Strings(i) == statement_->lines[i];
        if (same)
            return *statement_;
    }
    auto parsed = std::make_unique<Statement>();
    parsed->lines = sql_.toQStringList();
    parsed->parse(parsed->lines.join(u'\n'));
    // The parameter list follows the new text; values of names that stay are kept.
    TParams kept;
    for (const QString& name : std::as_const(parsed->names)) {
        if (TParam* old = params_.FindParam(name))
            kept.items_.push_back(std::make_unique<TParam>(std::move(*old)));
        else
            kept.CreateParam(TFieldType::ftUnknown, name, TParamType::ptInput);
    }
    params_.items_ = std::move(kept.items_);
    statement_ = std::move(parsed);
    return *statement_;
}

TParams& TQuery::Params()
{
    statement();
    return params_;
}

TParam& TQuery::ParamByName(QStringView name)
{
    statement();
    if (TParam* param = params_.FindParam(name))
        return *param;
    throw DatabaseError(errorName(), QStringLiteral("parameter \"%1\" not found in the query").arg(name));
}

QString TQuery::errorName() const
{
    return link_.errorName();
}

std::vector<backend::Value> TQuery::boundValues(const Statement& statement) const
{
    std::vector<backend::Value> values;
    values.reserve(std::size_t(statement.names.size()));
    for (const QString& name : statement.names) {
        const TParam* param = params_.FindParam(name);
        if (!param || !param->Bound())
            throw DatabaseError(errorName(), QStringLiteral("no value for parameter \"%1\"").arg(name));
        values.push_back(param->RawValue());
    }
    return values;
}

void TQuery::Open()
{
    if (cursor_)
        return;
    const Statement& parsed = statement();
    if (parsed.source.trimmed().isEmpty())
        throw DatabaseError(errorName(), QStringLiteral("the query has no SQL statement"));
    TDatabase& db = link_.open(QStringLiteral("the query names no database"));
    const std::vector<backend::Value> values = boundValues(parsed);
    std::unique_ptr<backend::Cursor> cursor
        = db.connection().openCursor(parsed.textFor(db.connection()), values);
    const bool hasRow = cursor->next();
    if (cursor->columnCount() == 0)
        throw DatabaseError(
            errorName(), QStringLiteral("the statement returns no rows to open; run it with ExecSQL"));
    std::vector<std::unique_ptr<TField>> fields;
    fields.reserve(std::size_t(cursor->columnCount()));
    for (int column = 0; column < cursor->columnCount(); ++column)
        fields.push_back(std::unique_ptr<TField>(new TField(*this, *cursor, column)));
    cursor_ = std::move(cursor);
    fields_ = std::move(fields);
    eof_ = !hasRow;
    atFirst_ = true;
    database_ = &db;
    db.attach(this);
}

void TQuery::ExecSQL()
{
    const Statement& parsed = statement();
    if (parsed.source.trimmed().isEmpty())
        throw DatabaseError(errorName(), QStringLiteral("the query has no SQL statement"));
    TDatabase& db = link_.open(QStringLiteral("the query names no database"));
    const std::vector<backend::Value> values = boundValues(parsed);
    rowsAffected_ = db.connection().execute(parsed.textFor(db.connection()), values);
}

qint64 TQuery::RowsAffected() const
{
    return rowsAffected_;
}

void TQuery::Close()
{
    fields_.clear();
    cursor_.reset();
    nextField_ = 0;
    eof_ = true;
    atFirst_ = false;
    if (database_)
        database_->detach(this);
    database_ = nullptr;
}

bool TQuery::Active() const
{
    return cursor_ != nullptr;
}

void TQuery::First()
{
    if (!cursor_)
        throw DatabaseError(errorName(), QStringLiteral("the query is not open"));
    if (atFirst_)
        return;
    cursor_->rewind();
    eof_ = !cursor_->next();
    atFirst_ = true;
}

void TQuery::Next()
{
    if (!cursor_)
        throw DatabaseError(errorName(), QStringLiteral("the query is not open"));
    if (eof_)
        return;
    eof_ = !cursor_->next();
    atFirst_ = false;
}

bool TQuery::Eof() const
{
    return eof_;
}

int TQuery::FieldCount() const
{
    return int(fields_.size());
}

TField& TQuery::Fields(int index) const
{
    if (index < 0 || index >= FieldCount())
        throw DatabaseError(errorName(), QStringLiteral("field index %1 out of range").arg(index));
    return *fields_[std::size_t(index)];
}

TField* TQuery::FindField(QAnyStringView name) const
{
    // Loaders read the same columns in the same order on every row: the
    // field after the one found last is tried first and usually matches.
    const std::size_t count = fields_.size();
    if (count == 0)
        return nullptr;
    const std::size_t hint = nextField_ % count;
    if (internal::sameName(fields_[hint]->name_, name)) {
        nextField_ = hint + 1;
        return fields_[hint].get();
    }
    const quint32 hash = internal::foldedHash(name);
    for (std::size_t at = 0; at < count; ++at) {
        const TField& field = *fields_[at];
        if (field.hash_ == hash && internal::sameName(field.name_, name)) {
            nextField_ = at + 1;
            return fields_[at].get();
        }
    }
    for (const auto& field : fields_) {
        if (internal::sameName(field->name_, name))
            return field.get();
    }
    return nullptr;
}

TField& TQuery::FieldByName(QAnyStringView name) const
{
    if (TField* field = FindField(name))
        return *field;
    throw DatabaseError(errorName(), QStringLiteral("field \"%1\" not found").arg(name.toString()));
}

void TQuery::GetFieldNames(TStringList& into) const
{
    into.Clear();
    for (const auto& field : fields_)
        into.Add(field->name_);
}

QStringList TQuery::FieldNames() const
{
    QStringList names;
    for (const auto& field : fields_)
        names.append(field->name_);
    return names;
}

} // namespace qal
