// SPDX-License-Identifier: MIT
// TConvertSymbolMgr: the desk's symbol mapping table, which turns the code a
// dealer types into the code the order servers know ("5" typed, "00005"
// normalised, "0005.HK" sent). The process-wide table, SymbolMapCtrl, exists
// only when the configuration sets one up.
#pragma once

#include <memory>

#include <QHash>
#include <QString>

#include "qalpack/qalpack_export.h"

namespace qal {

class TIniFile;

// Codes are looked up without regard to case; mapped codes are returned as
// written.
class QALPACK_EXPORT TConvertSymbolMgr
{
public:
    TConvertSymbolMgr();
    ~TConvertSymbolMgr();
    TConvertSymbolMgr(const TConvertSymbolMgr&) = delete;
    TConvertSymbolMgr& operator=(const TConvertSymbolMgr&) = delete;

    // Adds every "code=mapped" line of `section` of `ini`; lines with an
    // empty code or mapped code are skipped. Returns the number added.
    int LoadFromIni(const TIniFile& ini, const QString& section);
    // Maps `code` to `mapped`, replacing an earlier mapping of the code.
    // Throws qal::Error when either is empty.
    void AddSymbol(const QString& code, const QString& mapped);

    // The code that `code` maps to; `code` itself when the table has none.
    [[nodiscard]] QString GetSymbol(const QString& code) const;
    [[nodiscard]] int Count() const;

private:
    QHash<QString, QString> map_; // upper-cased code -> mapped code
};

// The section of the shared OMS INI file that sets up the process-wide table,
// one "code=mapped" line per symbol.
[[nodiscard]] QALPACK_EXPORT QString SymbolMapSection();

// The process-wide mapping table, or nullptr when the service is not set up.
// The first call reads the shared OMS INI file: the table exists when the
// file has a SymbolMapSection() section (even an empty one). The answer is
// kept for the life of the process unless SetSymbolMapCtrl replaces it. The
// library owns the table.
[[nodiscard]] QALPACK_EXPORT TConvertSymbolMgr* SymbolMapCtrl();

// Installs `table` as the process-wide table (nullptr: no service), freeing
// the one before.
QALPACK_EXPORT void SetSymbolMapCtrl(std::unique_ptr<TConvertSymbolMgr> table);

namespace internal {

// For tests: frees the table so that the next SymbolMapCtrl reads the
// configuration again, as at process start.
QALPACK_EXPORT void ResetSymbolMapCtrl();

} // namespace internal

} // namespace qal
