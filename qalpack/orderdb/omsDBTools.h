// SPDX-License-Identifier: MIT
// Small services around the order database, driven by INI files in the
// configuration directory: sections and values, stored-procedure parameters
// from STORPROC.INI, plug-in libraries and their entry points, and message
// layouts from OMSMESS.INI that name the pieces of a "|"-separated message.
#pragma once

#include <vector>

#include <QString>
#include <QStringList>
#include <QVariant>

#include "qalpack/qalpack_export.h"
#include "qalpack/runtime/Exception.h"

namespace qal {

class TStoredProc;
class TStringList;

// A list of command names, in message order.
using TCommandArray = QStringList;
// A loaded plug-in library (a dlopen handle); nullptr where nothing is loaded.
using TLibHandle = void*;
// A plug-in entry point. Its real signature is the host's affair: cast it
// with reinterpret_cast before calling it.
using TPluginEntry = void (*)();

// A value that cannot be taken as the number GetINIValue needs, such as the
// text "NONE".
class QALPACK_EXPORT VariantTypeCastError : public Error
{
public:
    using Error::Error;
    ~VariantTypeCastError() override;
};

namespace internal {

// For tests: frees every plug-in (FreeAllHandle), empties LibHandle,
// DLLExecute, MainMode, RepeatMode and the layout cache, as at process start.
QALPACK_EXPORT void ResetDBTools();

// For tests: puts the layout `layoutText` of `key` in `section` into the
// layout cache, parsed as a value read from OMSMESS.INI would be, so that
// PrepareLayout finds it. Replaces a layout cached before under that key.
QALPACK_EXPORT void CacheLayout(const QString& section, const QString& key, const QString& layoutText);

} // namespace internal

// The plug-in libraries loaded by DLLPlugin: one slot per entry of the
// plug-in section, in entry order; nullptr where nothing was loaded.
[[nodiscard]] QALPACK_EXPORT const std::vector<TLibHandle>& LibHandle();
// The plug-in entry points in the order they are listed across all entries
// (and across calls of DLLPlugin: the list only grows); nullptr where none was
// found.
[[nodiscard]] QALPACK_EXPORT const std::vector<TPluginEntry>& DLLExecute();
// The command lists of the layout PrepareLayout found last.
[[nodiscard]] QALPACK_EXPORT const TCommandArray& MainMode();
[[nodiscard]] QALPACK_EXPORT const TCommandArray& RepeatMode();

// The directory named by `name`, ending in a separator. When `name` is an
// alias of the default session, its first parameter line without its first
// five characters ("PATH=/etc/oms" gives "/etc/oms"); otherwise `name`
// itself. A "/" is appended unless the text ends with "/" or "\" already.
[[nodiscard]] QALPACK_EXPORT QString DirStr(const QString& name);

// Replaces the content of `list` with the values of `section` in `file`, in
// file order (each key line's text after its first "="). A missing file or
// section gives an empty list. `list` must not be sorted.
QALPACK_EXPORT void INISectionValue(const QString& file, const QString& section, TStringList& list);
// The number of key lines in `section` of `file`; 0 when either is missing.
[[nodiscard]] QALPACK_EXPORT int INISectionCount(const QString& file, const QString& section);
// The number of sections in `file`; 0 when it is missing.
[[nodiscard]] QALPACK_EXPORT int ININoOfSectionCount(const QString& file);

// Reads `key` of `section` in `file`, choosing the read by the VALUE of
// `def` taken as a whole number, not by its type (the desk's configuration
// depends on this): 3 reads an integer (3 when absent), 11 a boolean (true
// when absent), 256 a text ("256" when absent); any other number gives an
// invalid QVariant. `def` is taken as a number the way the desk's variants
// always were: an invalid QVariant is 0, true is -1, a float or numeric text
// is rounded to even. Throws VariantTypeCastError when it is not a number
// (text such as "NONE", or a type with no number).
[[nodiscard]] QALPACK_EXPORT QVariant GetINIValue(
    const QString& file, const QString& section, const QString& key, const QVariant& def);

// Appends to `proc`'s parameters one parameter per value of section
// `procName` in STORPROC.INI of the configuration directory
// (DirStr("OMSINI")), in file order. A value reads "name,direction,type",
// for example "@m_account,ptInput,ftString"; the direction and type are
// looked up by name without regard to case, and an unknown name gives
// ptUnknown or ftUnknown (nothing is checked). A missing file or section adds
// nothing.
QALPACK_EXPORT void PrepareStoredProc(const QString& procName, TStoredProc& proc);

// Loads the plug-ins listed in `section` of `file`, one entry each, whose
// value reads "library,entry1,entry2,...". LibHandle is resized to the
// section's entry count (slots beyond the old size start empty) and slot i
// gets entry i's library, loaded by its file name (dlopen's search rules
// apply). Every entry then appends its entry points to DLLExecute in order:
// each named function of its library, or nullptr when the library did not
// load or lacks it. A value without a "," loads nothing and still appends one
// empty slot. Failures are silent. Always returns true.
QALPACK_EXPORT bool DLLPlugin(const QString& file, const QString& section);

// Unloads the library of every LibHandle slot and empties the slot; the
// entry points in DLLExecute are set to nullptr, as they would point into
// unloaded code. Returns whether the last slot's library was unloaded
// (false for an empty slot, and when there is no slot).
QALPACK_EXPORT bool FreeAllHandle();

// Looks up the layout of the message key, the part of `keyAndRest` before its
// first "|" (empty when there is none), in the layout cache under `section`.
// Returns true when a layout is found and it is not "NONE"; a found layout's
// command lists become MainMode and RepeatMode.
//
// A layout that is not cached yet is looked up in OMSMESS.INI of the
// configuration directory through GetINIValue with the default "NONE", which
// is not a number: the read raises, so a cache miss always ends in false,
// caches nothing and leaves MainMode and RepeatMode as they were, whatever
// OMSMESS.INI holds. Hosts rely on this outcome, so it is kept.
//
// A layout's text names the message's pieces: the main list is "action"
// followed by the "|"-separated names before the first "[", the repeat list
// the "|"-separated names between "[" and "]" (to the end without "]"), or
// one empty name when there are none. A trailing "|" adds no name:
// "acct|symbol|[price|qty|]" gives main (action, acct, symbol) and repeat
// (price, qty).
[[nodiscard]] QALPACK_EXPORT bool PrepareLayout(const QString& section, const QString& keyAndRest);

// Names the pieces of the "|"-terminated message `text` and adds them to
// `out` as "name=value" lines: the first pieces take `mainNames` in order,
// the rest take `repeatNames`, starting over after the last. Text after the
// last "|" is ignored. Returns whether `out` holds any line afterwards (lines
// it held before count). "A|B|C|D|E|" with main (action, acct) and repeat
// (sym, qty) adds action=A, acct=B, sym=C, qty=D, sym=E. Throws qal::Error
// when pieces are left over for an empty `repeatNames`; the lines added
// before stay.
QALPACK_EXPORT bool PrepareMessage(
    const QString& text, const TCommandArray& mainNames, const TCommandArray& repeatNames, TStringList& out);

} // namespace qal
