// SPDX-License-Identifier: MIT
#include "qalpack/omslib/DatabaseSetting.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QFile>

#include "qalpack/omslib/omsIniFile.h"
#include "qalpack/omslib/omsLog.h"
#include "qalpack/runtime/IniFile.h"

namespace qal {

namespace {

// Whether the file may hold passwords: a regular file of the user running the
// desk that neither its group nor anyone else can read, write or run. Missing files are not refused; they
// simply hold nothing.
bool isProtected(const QString& fileName)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(fileName).constData(), &status) != 0)
        return false;
    if (!S_ISREG(status.st_mode)) {
        omsLogMsg(QStringLiteral("Database settings \"%1\" ignored: not a regular file").arg(fileName),
            omsLogWarning);
        return false;
    }
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        omsLogMsg(QStringLiteral("Database settings \"%1\" ignored: its group or others have access to it; "
                                 "permissions should be u=rw (0600) or less")
                      .arg(fileName),
            omsLogWarning);
        return false;
    }
    // Another user's file, however tightly locked, could have been planted to
    // send the desk's login elsewhere.
    if (status.st_uid != ::geteuid()) {
        omsLogMsg(QStringLiteral("Database settings \"%1\" ignored: it belongs to user id %2, not to the "
                                 "user running the desk (%3)")
                      .arg(fileName)
                      .arg(status.st_uid)
                      .arg(::geteuid()),
            omsLogWarning);
        return false;
    }
    return true;
}

} // namespace

QString DatabaseSettingFile()
{
    if (omsIniPath().isEmpty())
        return {};
    return omsConfigPath(
        omsIniFile().ReadString(QStringLiteral("OMS_LOCAL"), QStringLiteral("DatabaseSettings"), QString()));
}

bool GetDatabaseSetting(QString& alias, QString& user, QString& password, const QString& key)
{
    const QString fileName = DatabaseSettingFile();
    if (fileName.isEmpty() || !isProtected(fileName))
        return false;
    const TIniFile settings(fileName);
    const QString foundAlias = settings.ReadString(key, QStringLiteral("Alias"), QString());
    if (foundAlias.isEmpty())
        return false;
    alias = foundAlias;
    user = settings.ReadString(key, QStringLiteral("User"), QString());
    password = settings.ReadString(key, QStringLiteral("Password"), QString());
    return true;
}

} // namespace qal
