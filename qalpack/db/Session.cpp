// SPDX-License-Identifier: MIT
#include "qalpack/db/Session.h"

#include <algorithm>

#include <QDir>
#include <QFileInfo>

#include "qalpack/db/Database.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/omslib/omsIniFile.h"
#include "qalpack/omslib/omsLog.h"
#include "qalpack/runtime/IniFile.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

namespace {

QString nameOf(const QString& line)
{
    return line.section(u'=', 0, 0).trimmed();
}

QString valueOf(const QString& line)
{
    const qsizetype equals = line.indexOf(u'=');
    return equals < 0 ? QString() : line.mid(equals + 1);
}

bool isNamed(const QString& line, QStringView name)
{
    return nameOf(line).compare(name, Qt::CaseInsensitive) == 0;
}

// A file or directory named relative to the alias file lies next to it. An
// SQLite in-memory database or URI is left as it is.
QString resolved(const QDir& base, const QString& path)
{
    if (path.isEmpty() || path == u":memory:" || path.startsWith(u"file:", Qt::CaseInsensitive))
        return path;
    return QDir::cleanPath(base.absoluteFilePath(path));
}

} // namespace

// The default session reads the alias file that the shared OMS INI names
// the first time anyone asks for it, so a host only sets OMS_INI. Without
// OMS_INI, or when the file names no alias file, the session starts empty
// and the host adds its aliases itself; a broken alias file is logged.
TSession& TSession::Default()
{
    static TSession session;
    [[maybe_unused]] static const bool aliasesRead = [] {
        const QString omsIni = omsIniPath();
        if (omsIni.isEmpty() || !QFileInfo::exists(omsIni))
            return false;
        try {
            session.LoadAliasesFromOmsIni(omsIni);
            return true;
        } catch (const Error& e) {
            omsLogMsg(QStringLiteral("Database aliases not loaded: %1").arg(e.message()), omsLogWarning);
            return false;
        }
    }();
    return session;
}

TSession::TSession() = default;
TSession::~TSession() = default;

QString TSession::SessionName() const
{
    return QStringLiteral("Default");
}

void TSession::LoadAliases(const QString& aliasFile)
{
    const QFileInfo info(aliasFile);
    if (!info.isFile())
        throw DatabaseError(QString(), QStringLiteral("alias file \"%1\" not found").arg(aliasFile));
    const QDir base = info.absoluteDir();
    const TIniFile ini(info.absoluteFilePath());
    std::vector<Alias> aliases;
    for (const QString& section : ini.ReadSections()) {
        Alias alias { section, QStringLiteral("STANDARD"), {} };
        for (const QString& line : ini.ReadSectionValues(section)) {
            if (isNamed(line, u"DRIVER")) {
                alias.driver = valueOf(line).trimmed().toUpper();
                continue;
            }
            alias.params.append(line);
        }
        for (QString& line : alias.params) {
            if (isNamed(line, u"PATH") || (alias.driver == u"SQLITE" && isNamed(line, u"DATABASE")))
                line = nameOf(line) + u'=' + resolved(base, valueOf(line));
        }
        aliases.push_back(std::move(alias));
    }
    aliases_ = std::move(aliases);
    aliasFile_ = info.absoluteFilePath();
}

void TSession::LoadAliasesFromOmsIni(const QString& omsIniFile)
{
    const QFileInfo info(omsIniFile);
    const QString aliasFile
        = TIniFile(omsIniFile).ReadString(QStringLiteral("OMS_LOCAL"), QStringLiteral("AliasFile"), {});
    if (aliasFile.isEmpty())
        throw DatabaseError(QString(),
            QStringLiteral("OMS INI \"%1\" names no alias file ([OMS_LOCAL] AliasFile)").arg(omsIniFile));
    LoadAliases(info.absoluteDir().absoluteFilePath(aliasFile));
}

const QString& TSession::AliasFile() const
{
    return aliasFile_;
}

void TSession::AddAlias(const QString& name, const QString& driver, const QStringList& params)
{
    DeleteAlias(name);
    aliases_.push_back({ name, driver.trimmed().toUpper(), params });
}

void TSession::DeleteAlias(const QString& name)
{
    std::erase_if(
        aliases_, [&](const Alias& alias) { return alias.name.compare(name, Qt::CaseInsensitive) == 0; });
}

const TSession::Alias* TSession::findAlias(const QString& name) const
{
    const auto it = std::find_if(aliases_.begin(), aliases_.end(),
        [&](const Alias& alias) { return alias.name.compare(name, Qt::CaseInsensitive) == 0; });
    return it == aliases_.end() ? nullptr : &*it;
}

bool TSession::IsAlias(const QString& name) const
{
    return findAlias(name) != nullptr;
}

QStringList TSession::AliasNames() const
{
    QStringList names;
    for (const Alias& alias : aliases_)
        names.append(alias.name);
    return names;
}

void TSession::GetAliasNames(TStringList& into) const
{
    into.Clear();
    for (const Alias& alias : aliases_)
        into.Add(alias.name);
}

QStringList TSession::AliasParams(const QString& alias) const
{
    const Alias* found = findAlias(alias);
    if (!found)
        throw DatabaseError(alias, QStringLiteral("unknown alias \"%1\"").arg(alias));
    return found->params;
}

void TSession::GetAliasParams(const QString& alias, TStringList& into) const
{
    const QStringList params = AliasParams(alias);
    into.Clear();
    for (const QString& line : params)
        into.Add(line);
}

QString TSession::GetAliasDriverName(const QString& alias) const
{
    const Alias* found = findAlias(alias);
    if (!found)
        throw DatabaseError(alias, QStringLiteral("unknown alias \"%1\"").arg(alias));
    return found->driver;
}

void TSession::registerDatabase(TDatabase* database)
{
    std::erase_if(databases_, [](const QPointer<TDatabase>& known) { return known.isNull(); });
    databases_.emplace_back(database);
}

TDatabase* TSession::FindDatabase(const QString& name) const
{
    std::erase_if(databases_, [](const QPointer<TDatabase>& known) { return known.isNull(); });
    TDatabase* found = nullptr;
    for (const QPointer<TDatabase>& database : databases_) {
        if (database->DatabaseName().compare(name, Qt::CaseInsensitive) != 0)
            continue;
        if (database->Connected())
            return database;
        if (!found)
            found = database;
    }
    return found;
}

TDatabase& TSession::OpenDatabase(const QString& name)
{
    if (TDatabase* database = FindDatabase(name)) {
        database->Open();
        return *database;
    }
    if (!IsAlias(name)) {
        throw DatabaseError(name,
            QStringLiteral("no database of that name and no such alias%1")
                .arg(aliasFile_.isEmpty() ? QStringLiteral(" (no alias file loaded)")
                                          : QStringLiteral(" in \"%1\"").arg(aliasFile_)));
    }
    auto database = std::make_unique<TDatabase>();
    database->SetAliasName(name);
    database->SetDatabaseName(name);
    database->SetLoginPrompt(false);
    database->Open();
    return *ownDatabases_.emplace_back(std::move(database));
}

void TSession::DropConnections()
{
    ownDatabases_.clear();
}

} // namespace qal
