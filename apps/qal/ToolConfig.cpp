// SPDX-License-Identifier: MIT
#include "apps/qal/ToolConfig.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include "qalpack/omslib/omsIniFile.h"

namespace qal::tool {

std::optional<QString> useConfiguration(const QString& command, QTextStream& err)
{
    if (const QString omsIni = omsIniPath(); !omsIni.isEmpty()) {
        if (QFileInfo(omsIni).isFile())
            return omsIni;
        err << "qal " << command << ": OMS_INI names " << omsIni << ", which does not exist\n";
        return std::nullopt;
    }
    const QString shipped = QCoreApplication::applicationDirPath() + QStringLiteral("/config/oms.ini");
    if (!QFileInfo(shipped).isFile()) {
        err << "qal " << command << ": no configuration: OMS_INI is not set and there is no " << shipped
            << '\n';
        return std::nullopt;
    }
    qputenv("OMS_INI", QFile::encodeName(QFileInfo(shipped).absoluteFilePath()));
    return QFileInfo(shipped).absoluteFilePath();
}

} // namespace qal::tool
