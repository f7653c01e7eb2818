// SPDX-License-Identifier: MIT
#include "apps/qal/ToolConfig.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include "qalpack/omslib/omsIniFile.h"
#include "qalpack/profile/QalApplicationProfile.h"

namespace qal::tool {

QStringList configurationSearchPath()
{
    const QString toolDir = QCoreApplication::applicationDirPath();
    return { toolDir + QStringLiteral("/config/oms.ini"),
        QDir::cleanPath(toolDir + QStringLiteral("/" QAL_INSTALLED_DATA_DIR "/config/oms.ini")) };
}

namespace {

// The library logs to the file the configuration's [QAL] section names, so
// that each failure reaches the terminal once: as the tool's own line.
QString withLog(const QString& omsIni)
{
    TQalApplicationProfile::SetDefaultSection(QStringLiteral("QAL"));
    (void)TQalApplicationProfile::GetInstance();
    return omsIni;
}

} // namespace

std::optional<QString> useConfiguration(const QString& command, QTextStream& err)
{
    if (const QString omsIni = omsIniPath(); !omsIni.isEmpty()) {
        if (QFileInfo(omsIni).isFile())
            return withLog(omsIni);
        err << "qal " << command << ": OMS_INI names " << omsIni << ", which does not exist\n";
        return std::nullopt;
    }
    const QStringList candidates = configurationSearchPath();
    for (const QString& candidate : candidates) {
        if (QFileInfo(candidate).isFile()) {
            const QString found = QFileInfo(candidate).absoluteFilePath();
            qputenv("OMS_INI", QFile::encodeName(found));
            return withLog(found);
        }
    }
    err << "qal " << command << ": no configuration: OMS_INI is not set and none of "
        << candidates.join(u", ") << " exists\n";
    return std::nullopt;
}

QString enterDeskDirectory()
{
    const QString omsIni = omsIniPath();
    if (omsIni.isEmpty())
        return QString();
    const QString deskPath = TQalApplicationProfile::GetInstance()->getValue(
        QStringLiteral("OMS_LOCAL"), QStringLiteral("CPATH"));
    if (deskPath.trimmed().isEmpty())
        return QString();
    const QFileInfo desk(omsConfigPath(deskPath.trimmed()));
    if (!desk.isDir())
        return QString();
    qputenv("OMS_INI", QFile::encodeName(omsIni));
    const QString directory = desk.absoluteFilePath();
    return QDir::setCurrent(directory) ? directory : QString();
}

} // namespace qal::tool
