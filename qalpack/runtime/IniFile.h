// SPDX-License-Identifier: MIT
// INI files as the OMS desktop has always kept them (the shared OMS INI, the
// stored-procedure and message-layout files): sections and keys without regard
// to case, keys in file order, comments kept, every write straight to disk.
#pragma once

#include <QString>
#include <QStringList>

#include "qalpack/qalpack_export.h"

namespace qal {

class TStringList;

// An INI file with Windows semantics: sections and keys matched without regard
// to case, keys kept in file order, ';' comment lines kept, writes go straight
// to the file and keep every other line as it was. A missing file reads as
// empty (every read returns its default); the first write creates it.
//
// Why not QSettings: it lists keys in alphabetical order, compares keys with
// regard to case on Unix, reads "a, b" as a list of two, takes '\' and '"' as
// escapes, percent-encodes key names and rewrites the whole file without its
// comments. Configuration files shared with the OMS servers need the text
// exactly as written, so this class reads and writes the lines itself.
//
// File format, as the Windows profile functions read it:
// - "[name]" starts a section; the name is the text up to the last ']',
//   without surrounding blanks. A line with '[' but no ']' is not a header.
// - "key=value" inside a section; blanks around the key and the value are
//   dropped, and a value enclosed in a pair of matching '"' or '\'' quotes is
//   read without them. A line without '=' is a key without a value: it is
//   listed, but reads return their default (and "key=" in ReadSectionValues).
// - Lines whose first non-blank character is ';' are comments; blank lines
//   and lines before the first section belong to no section. All are kept.
// - A section that appears twice is read (and written) at its first
//   appearance; a key that appears twice reads as its first line.
// - The text is UTF-8 (a byte-order mark is kept); lines a write does not
//   touch are written back byte for byte, whatever their encoding, and the
//   file's line ends (LF or CR LF) are kept.
//
// Every call reads the file afresh: nothing is cached, so writes by other
// programs are seen at once. Not for use from several threads at a time.
class QALPACK_EXPORT TIniFile
{
public:
    // The file need not exist; an empty name gives a file that reads as empty
    // and refuses writes.
    explicit TIniFile(const QString& fileName);

    [[nodiscard]] const QString& FileName() const;

    // The value of `key` in `section`, or `fallback` when the file, the
    // section or the key is missing or the key has no '='. An empty value
    // ("key=") is returned as empty, not as the fallback.
    [[nodiscard]] QString ReadString(
        const QString& section, const QString& key, const QString& fallback) const;
    // The value read leniently as a whole number (decimal, "$1F" or "0x1F");
    // `fallback` when missing or not a number.
    [[nodiscard]] int ReadInteger(const QString& section, const QString& key, int fallback) const;
    // The value read as a whole number: "0" is false, any other number true;
    // `fallback` when missing or not a number ("true" is not a number).
    [[nodiscard]] bool ReadBool(const QString& section, const QString& key, bool fallback) const;
    // The value read as a number with '.' as the decimal point, whatever the
    // locale; `fallback` when missing or not a number.
    [[nodiscard]] double ReadFloat(const QString& section, const QString& key, double fallback) const;

    // Sets `key` in `section` to `value`: the key's line is rewritten in place
    // (keeping the key's spelling in the file), a new key goes after the last
    // key of the section, a new section is appended at the end of the file.
    // Creates the file (not its directory) when it is missing. Throws
    // qal::Error naming the file when it cannot be read or written, and when
    // a name or value would break the file: a line break anywhere, an empty
    // section or key, ']' in a section name, '=' in a key, or a key that
    // starts with ';' or '['.
    void WriteString(const QString& section, const QString& key, const QString& value);
    // Writes the number in decimal; throws as WriteString.
    void WriteInteger(const QString& section, const QString& key, int value);
    // Writes "1" or "0"; throws as WriteString.
    void WriteBool(const QString& section, const QString& key, bool value);

    // Section names in file order, each once, spelt as at its first
    // appearance; empty when the file is missing.
    [[nodiscard]] QStringList ReadSections() const;
    // The keys of `section` in file order, duplicates included; empty when
    // the section is missing.
    [[nodiscard]] QStringList ReadSection(const QString& section) const;
    // "key=value" for every key line of `section`, in file order, with the
    // value as ReadString reads it (unquoted; empty for a key without '=').
    [[nodiscard]] QStringList ReadSectionValues(const QString& section) const;
    // The same lines, into `into` (cleared first; added with Add, so a sorted
    // list sorts them).
    void ReadSectionValues(const QString& section, TStringList& into) const;
    // The number of key lines in `section`: ReadSection(section).size().
    [[nodiscard]] int KeyCount(const QString& section) const;

    [[nodiscard]] bool SectionExists(const QString& section) const;
    // Whether `section` holds a line for `key`, with or without a value.
    [[nodiscard]] bool ValueExists(const QString& section, const QString& key) const;

    // Removes every appearance of `section`: its header and all lines up to
    // the next section, comments inside it included. Nothing happens (and no
    // file is created) when it is missing. Throws as WriteString when the
    // file cannot be written.
    void EraseSection(const QString& section);
    // Removes every line of `key` from `section`; nothing happens when it is
    // missing. Throws as WriteString when the file cannot be written.
    void DeleteKey(const QString& section, const QString& key);

private:
    QString fileName_;
};

} // namespace qal
