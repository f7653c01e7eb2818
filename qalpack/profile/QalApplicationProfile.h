// SPDX-License-Identifier: MIT
// The application profile: the one object a desk application asks for its
// settings from the shared OMS INI file. It opens the day's log, decides how
// the application logs on, and saves the user's colour, keyboard and sound
// schemes.
#pragma once

#include <memory>

#include <QDate>
#include <QObject>
#include <QString>

#include "qalpack/omslib/ElHashList.h"
#include "qalpack/qalpack_export.h"
#include "qalpack/runtime/IniFile.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

class TNTNetInfo;

namespace internal {

// For tests: deletes the singleton (closing the log when it opened one) and
// clears the instance id and the default section, as at process start, so
// the next GetInstance reads the configuration afresh.
QALPACK_EXPORT void ResetApplicationProfile();

} // namespace internal

// The OMS INI section of the desk's own settings: the schemes the user chose
// ("color", "sound", "keyboard") and the account explorer's options.
[[nodiscard]] inline QString ClientAppSection()
{
    return QStringLiteral("CLIENT APP");
}

// How the application connects: the first character of "ConnectionMode" in
// the application's default section, "I"/"i" and "A"/"a", anything else
// (empty included) the database mode.
enum TQalLoginMode { lmDBMode = 0, lmIMode = 1, lmAEMode = 2 };

// The host calls SetInstanceId and SetDefaultSection, then GetInstance. The
// profile reads the shared OMS INI file (omsIniFile, so the OMS_INI
// environment variable names it) at construction:
// - section "OMS_LOCAL" is read, and cached, at once (its "CPATH" key);
// - from the default section, when set: "logfile", a log file name pattern
//   (GenerateLogfileName; no log is opened when empty), "dumpfile", the dump
//   file opened with it, and "LogLevel", the omsLogMsg threshold when it is a
//   number; relative log and dump names are taken from the INI file's
//   directory (omsConfigPath);
// - "ConnectionMode" from the default section, for LoginMode.
// A default section set after the singleton exists therefore changes
// nothing for it.
//
// Settings cache: getValue reads a whole section on its first use and keeps
// it for the life of the profile. It is never refreshed: later changes to
// the file, this profile's own Save*Profile writes included, are not seen
// through getValue for a section already read.
class QALPACK_EXPORT TQalApplicationProfile : public QObject
{
    Q_OBJECT

public:
    // A profile for `applicationId` that reads the configuration as described
    // above (and so may open the log). Hosts use GetInstance; a profile of
    // their own is theirs to delete.
    explicit TQalApplicationProfile(const QString& applicationId, QObject* parent = nullptr);
    ~TQalApplicationProfile() override;

    // The process-wide profile, created on the first call with the id given to
    // SetInstanceId. The library owns it (do not delete it); it lives until the
    // process ends.
    [[nodiscard]] static TQalApplicationProfile* GetInstance();
    // Sets the id the singleton is created with, only while none is set: the
    // first id wins, later calls are ignored.
    static void SetInstanceId(const QString& id);
    // Sets the section holding this application's own keys; always replaces
    // the one set before.
    static void SetDefaultSection(const QString& section);
    [[nodiscard]] static QString InstanceId();
    [[nodiscard]] static QString DefaultSection();

    // The value of `key` in `section` (text after the first '=' of the first
    // line of that name, names compared without regard to case), or empty
    // when the key or the section is missing. Reads and caches the whole
    // section on first use; a missing section is cached as empty.
    [[nodiscard]] QString getValue(const QString& section, const QString& key) const;

    // The whole `section`, read from the file now (not from the cache), as
    // "key=value" lines in file order; empty when missing. The caller owns it.
    [[nodiscard]] std::unique_ptr<TStringList> sectionValues(const QString& section) const;

    // Write `value` as given to "CLIENT APP" / "color", "keyboard" and
    // "sound". Throw qal::Error naming the file when it cannot be written
    // (OMS_INI unset included).
    void SaveColorProfile(const QString& value);
    void SaveKeyProfile(const QString& value);
    void SaveSoundProfile(const QString& value);

    // The log file name for `pattern` on `today` (the local date when not
    // given). The pattern, trimmed of blanks, is returned as it is when it
    // holds no '%'. Otherwise the text before the first '%' is the prefix and
    // the rest is cut into tokens at each '%' and then, once no '%' is left,
    // at each '.'; every token, upper-cased, goes through MapDate in order,
    // and ".txt" is appended when the last token is "TXT". So
    // "C:\logs\oms%YYYY%MM%DD.txt" gives "C:\logs\oms20261115.txt" on
    // 15 November 2026, while any other extension after a '%' is dropped
    // ("x%DD.log" gives "x15"), as is literal text between two '%' signs.
    [[nodiscard]] static QString GenerateLogfileName(const QString& pattern);
    [[nodiscard]] static QString GenerateLogfileName(const QString& pattern, const QDate& today);

    // `prefix` followed by `today`'s year in four digits for "YYYY", its month
    // in two for "MM", its day in two for "DD"; `prefix` alone for any other
    // token (tokens are compared as given: "yyyy" is another token).
    [[nodiscard]] static QString MapDate(const QString& token, const QString& prefix);
    [[nodiscard]] static QString MapDate(const QString& token, const QString& prefix, const QDate& today);

    [[nodiscard]] TQalLoginMode LoginMode() const { return loginMode_; }
    [[nodiscard]] const QString& ApplicationId() const { return applicationId_; }
    // The machine's name and addresses, for the host's use; owned by the
    // profile.
    [[nodiscard]] TNTNetInfo* NetInfo() const { return netInfo_; }
    // The shared OMS INI file this profile reads and writes.
    [[nodiscard]] const TIniFile& IniFile() const { return ini_; }

private:
    friend void internal::ResetApplicationProfile();

    QString applicationId_;
    mutable TElHashList<std::unique_ptr<TStringList>> sections_;
    TIniFile ini_;
    TQalLoginMode loginMode_ = lmDBMode;
    TNTNetInfo* netInfo_ = nullptr;
    bool openedLog_ = false;
};
} // namespace qal
