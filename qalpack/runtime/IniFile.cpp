// SPDX-License-Identifier: MIT
#include "qalpack/runtime/IniFile.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include <QByteArray>
#include <QFile>
#include <QSaveFile>

#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/Exception.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

namespace {

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

enum class LineKind { Other, Comment, Section, Key };

// One line of the file. `raw` holds its bytes without the line end, so a line
// nobody changes is written back exactly as it was read.
struct Line
{
    QByteArray raw;
    bool carriageReturn = false;
    LineKind kind = LineKind::Other;
    QString name; // section name or key, without surrounding blanks
    QString value; // text after '=', without surrounding blanks, still quoted
    bool hasValue = false;
};

struct Document
{
    std::vector<Line> lines;
    bool byteOrderMark = false;
    bool crlf = false;
    bool finalLineEnd = true;
};

// Where a section's first appearance lies: its header line and the line after
// its last one.
struct Span
{
    std::size_t header;
    std::size_t end;
};

bool sameName(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

void classify(Line& line)
{
    const QString text = QString::fromUtf8(line.raw).trimmed();
    line.kind = LineKind::Other;
    line.name.clear();
    line.value.clear();
    line.hasValue = false;
    if (text.isEmpty())
        return;
    if (text.front() == u';') {
        line.kind = LineKind::Comment;
        return;
    }
    if (text.front() == u'[') {
        const qsizetype close = text.lastIndexOf(u']');
        if (close > 0) {
            line.kind = LineKind::Section;
            line.name = text.mid(1, close - 1).trimmed();
            return;
        }
    }
    line.kind = LineKind::Key;
    const qsizetype equals = text.indexOf(u'=');
    if (equals < 0) {
        line.name = text;
        return;
    }
    line.name = text.left(equals).trimmed();
    line.value = text.mid(equals + 1).trimmed();
    line.hasValue = true;
}

Line makeLine(const Document& document, const QString& text)
{
    Line line;
    line.raw = text.toUtf8();
    line.carriageReturn = document.crlf;
    classify(line);
    return line;
}

void insertLine(Document& document, std::size_t at, const QString& text)
{
    if (at == document.lines.size() && !document.finalLineEnd) {
        // The old last line had no line end; it gets one of the file's own kind.
        document.lines.back().carriageReturn = document.crlf;
        document.finalLineEnd = true;
    }
    document.lines.insert(document.lines.begin() + static_cast<std::ptrdiff_t>(at), makeLine(document, text));
}

// What a key's value reads as: a value in a pair of matching quotes loses them.
QString readValue(const Line& line)
{
    const QString& value = line.value;
    if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'')
        && value.back() == value.front())
        return value.mid(1, value.size() - 2);
    return value;
}

[[noreturn]] void throwFileError(const QString& fileName, const QString& what)
{
    throw Error(QStringLiteral("INI file \"%1\": %2").arg(fileName, what));
}

Document parse(QByteArray data)
{
    Document document;
    if (data.startsWith(kByteOrderMark)) {
        document.byteOrderMark = true;
        data.remove(0, 3);
    }
    if (data.isEmpty())
        return document;
    const qsizetype firstLineEnd = data.indexOf('\n');
    document.crlf = firstLineEnd > 0 && data.at(firstLineEnd - 1) == '\r';
    document.finalLineEnd = data.endsWith('\n');
    if (document.finalLineEnd)
        data.chop(1);
    for (QByteArray& piece : data.split('\n')) {
        Line line;
        line.carriageReturn = piece.endsWith('\r');
        if (line.carriageReturn)
            piece.chop(1);
        line.raw = std::move(piece);
        classify(line);
        document.lines.push_back(std::move(line));
    }
    return document;
}

// A missing or unreadable file reads as empty, as the Windows profile
// functions return their defaults then.
Document loadForReading(const QString& fileName)
{
    if (fileName.isEmpty())
        return {};
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return parse(file.readAll());
}

// A write must keep every other line, so a file that exists but cannot be
// read is an error here rather than an empty file.
Document loadForWriting(const QString& fileName)
{
    if (fileName.isEmpty())
        throwFileError(fileName, QStringLiteral("no file name to write to"));
    QFile file(fileName);
    if (!file.exists())
        return {};
    if (!file.open(QIODevice::ReadOnly))
        throwFileError(fileName, QStringLiteral("cannot read it to update it: %1").arg(file.errorString()));
    return parse(file.readAll());
}

void save(const QString& fileName, const Document& document)
{
    QByteArray data;
    if (document.byteOrderMark)
        data.append(kByteOrderMark);
    for (std::size_t i = 0; i < document.lines.size(); ++i) {
        const Line& line = document.lines[i];
        data.append(line.raw);
        if (line.carriageReturn)
            data.append('\r');
        if (i + 1 < document.lines.size() || document.finalLineEnd)
            data.append('\n');
    }
    // Written through a temporary file and renamed over the old one, so a full
    // disk never leaves half a configuration behind; falls back to writing in
    // place when the directory does not allow new files.
    QSaveFile file(fileName);
    file.setDirectWriteFallback(true);
    if (!file.open(QIODevice::WriteOnly))
        throwFileError(fileName, QStringLiteral("cannot write it: %1").arg(file.errorString()));
    if (file.write(data) != data.size() || !file.commit())
        throwFileError(fileName, QStringLiteral("cannot write it: %1").arg(file.errorString()));
}

std::optional<Span> findSection(const Document& document, const QString& section)
{
    const std::size_t count = document.lines.size();
    for (std::size_t i = 0; i < count; ++i) {
        const Line& line = document.lines[i];
        if (line.kind != LineKind::Section || !sameName(line.name, section))
            continue;
        std::size_t end = i + 1;
        while (end < count && document.lines[end].kind != LineKind::Section)
            ++end;
        return Span { i, end };
    }
    return std::nullopt;
}

const Line* findKey(const Document& document, const QString& section, const QString& key)
{
    const std::optional<Span> span = findSection(document, section);
    if (!span)
        return nullptr;
    for (std::size_t i = span->header + 1; i < span->end; ++i) {
        const Line& line = document.lines[i];
        if (line.kind == LineKind::Key && sameName(line.name, key))
            return &line;
    }
    return nullptr;
}

template<class F>
void forEachKey(const Document& document, const QString& section, F&& visit)
{
    const std::optional<Span> span = findSection(document, section);
    if (!span)
        return;
    for (std::size_t i = span->header + 1; i < span->end; ++i) {
        if (document.lines[i].kind == LineKind::Key)
            visit(document.lines[i]);
    }
}

bool hasLineBreak(const QString& text)
{
    return text.contains(u'\n') || text.contains(u'\r');
}

void checkWritable(const QString& fileName, const QString& section, const QString& key, const QString& value)
{
    const QString trimmedSection = section.trimmed();
    const QString trimmedKey = key.trimmed();
    QString problem;
    if (trimmedSection.isEmpty())
        problem = QStringLiteral("empty section name");
    else if (hasLineBreak(section) || section.contains(u']'))
        problem = QStringLiteral("section name \"%1\" holds a line break or ']'").arg(section);
    else if (trimmedKey.isEmpty())
        problem = QStringLiteral("empty key in section [%1]").arg(section);
    else if (hasLineBreak(key) || key.contains(u'=') || trimmedKey.front() == u';'
        || trimmedKey.front() == u'[')
        problem = QStringLiteral("key \"%1\" holds a line break or '=', or starts with ';' or '['").arg(key);
    else if (hasLineBreak(value))
        problem = QStringLiteral("the value of [%1] %2 holds a line break").arg(section, key);
    if (!problem.isEmpty())
        throwFileError(fileName, QStringLiteral("cannot write: %1").arg(problem));
}

} // namespace

TIniFile::TIniFile(const QString& fileName)
    : fileName_(fileName)
{ }

const QString& TIniFile::FileName() const
{
    return fileName_;
}

QString TIniFile::ReadString(const QString& section, const QString& key, const QString& fallback) const
{
    const Document document = loadForReading(fileName_);
    const Line* line = findKey(document, section, key);
    return line != nullptr && line->hasValue ? readValue(*line) : fallback;
}

int TIniFile::ReadInteger(const QString& section, const QString& key, int fallback) const
{
    return StrToIntDef(ReadString(section, key, QString()), fallback);
}

bool TIniFile::ReadBool(const QString& section, const QString& key, bool fallback) const
{
    return ReadInteger(section, key, fallback ? 1 : 0) != 0;
}

double TIniFile::ReadFloat(const QString& section, const QString& key, double fallback) const
{
    return static_cast<double>(StrToFloatDef(ReadString(section, key, QString()), fallback));
}

void TIniFile::WriteString(const QString& section, const QString& key, const QString& value)
{
    checkWritable(fileName_, section, key, value);
    const QString trimmedSection = section.trimmed();
    const QString trimmedKey = key.trimmed();
    Document document = loadForWriting(fileName_);

    if (const std::optional<Span> span = findSection(document, trimmedSection)) {
        std::size_t insertAt = span->header + 1;
        for (std::size_t i = span->header + 1; i < span->end; ++i) {
            Line& line = document.lines[i];
            if (line.kind != LineKind::Key)
                continue;
            if (sameName(line.name, trimmedKey)) {
                const Line replacement = makeLine(document, line.name + u'=' + value);
                if (replacement.raw == line.raw)
                    return;
                line.raw = replacement.raw;
                classify(line);
                save(fileName_, document);
                return;
            }
            insertAt = i + 1;
        }
        insertLine(document, insertAt, trimmedKey + u'=' + value);
    } else {
        if (!document.lines.empty() && !document.lines.back().raw.trimmed().isEmpty())
            insertLine(document, document.lines.size(), QString());
        insertLine(document, document.lines.size(), u'[' + trimmedSection + u']');
        insertLine(document, document.lines.size(), trimmedKey + u'=' + value);
    }
    save(fileName_, document);
}

void TIniFile::WriteInteger(const QString& section, const QString& key, int value)
{
    WriteString(section, key, QString::number(value));
}

void TIniFile::WriteBool(const QString& section, const QString& key, bool value)
{
    WriteString(section, key, value ? QStringLiteral("1") : QStringLiteral("0"));
}

QStringList TIniFile::ReadSections() const
{
    const Document document = loadForReading(fileName_);
    QStringList sections;
    for (const Line& line : document.lines) {
        if (line.kind == LineKind::Section && !sections.contains(line.name, Qt::CaseInsensitive))
            sections.append(line.name);
    }
    return sections;
}

QStringList TIniFile::ReadSection(const QString& section) const
{
    QStringList keys;
    forEachKey(loadForReading(fileName_), section, [&keys](const Line& line) { keys.append(line.name); });
    return keys;
}

QStringList TIniFile::ReadSectionValues(const QString& section) const
{
    QStringList values;
    forEachKey(loadForReading(fileName_), section,
        [&values](const Line& line) { values.append(line.name + u'=' + readValue(line)); });
    return values;
}

void TIniFile::ReadSectionValues(const QString& section, TStringList& into) const
{
    const QStringList values = ReadSectionValues(section);
    into.Clear();
    for (const QString& value : values)
        into.Add(value);
}

int TIniFile::KeyCount(const QString& section) const
{
    int count = 0;
    forEachKey(loadForReading(fileName_), section, [&count](const Line&) { ++count; });
    return count;
}

bool TIniFile::SectionExists(const QString& section) const
{
    return findSection(loadForReading(fileName_), section).has_value();
}

bool TIniFile::ValueExists(const QString& section, const QString& key) const
{
    return findKey(loadForReading(fileName_), section, key) != nullptr;
}

void TIniFile::EraseSection(const QString& section)
{
    if (!QFile::exists(fileName_))
        return;
    Document document = loadForWriting(fileName_);
    bool erased = false;
    while (const std::optional<Span> span = findSection(document, section)) {
        document.lines.erase(document.lines.begin() + static_cast<std::ptrdiff_t>(span->header),
            document.lines.begin() + static_cast<std::ptrdiff_t>(span->end));
        erased = true;
    }
    if (erased)
        save(fileName_, document);
}

void TIniFile::DeleteKey(const QString& section, const QString& key)
{
    if (!QFile::exists(fileName_))
        return;
    Document document = loadForWriting(fileName_);
    const std::optional<Span> span = findSection(document, section);
    if (!span)
        return;
    const auto first = document.lines.begin() + static_cast<std::ptrdiff_t>(span->header + 1);
    const auto last = document.lines.begin() + static_cast<std::ptrdiff_t>(span->end);
    const auto kept = std::remove_if(first, last,
        [&key](const Line& line) { return line.kind == LineKind::Key && sameName(line.name, key); });
    if (kept == last)
        return;
    document.lines.erase(kept, last);
    save(fileName_, document);
}

} // namespace qal
