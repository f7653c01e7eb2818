// SPDX-License-Identifier: MIT
#include "qalpack/omslib/omsIniFile.h"

#include <QDir>
#include <QFileInfo>
#include <QtGlobal>

#include "qalpack/omslib/omsLog.h"

namespace qal {

namespace {

constexpr char kOmsIniVariable[] = "OMS_INI";

} // namespace

QString omsIniPath()
{
    const QString path = qEnvironmentVariable(kOmsIniVariable);
    return path.isEmpty() ? QString() : QFileInfo(path).absoluteFilePath();
}

TIniFile omsIniFile(const QString& fileName)
{
    if (!fileName.isEmpty())
        return TIniFile(fileName);
    const QString path = omsIniPath();
    if (path.isEmpty())
        omsLogMsg(QStringLiteral("OMS_INI is not set: the shared OMS settings read as empty"), omsLogWarning);
    return TIniFile(path);
}

QString omsConfigPath(const QString& path)
{
    if (path.isEmpty() || QDir::isAbsolutePath(path))
        return path;
    const QString ini = omsIniPath();
    const QDir base = ini.isEmpty() ? QDir::current() : QFileInfo(ini).absoluteDir();
    return QDir::cleanPath(base.absoluteFilePath(path));
}

} // namespace qal
