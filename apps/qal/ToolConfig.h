// SPDX-License-Identifier: MIT
// Which configuration the qal commands that use the order database run on.
#pragma once

#include <optional>

#include <QString>
#include <QStringList>

class QTextStream;

namespace qal::tool {

// Where the tool looks for its OMS INI when OMS_INI is not set, in order:
// config/oms.ini next to the tool (the build tree, a desk's own directory),
// then the default configuration installed under the data directory
// (<prefix>/share/qalpack/config/oms.ini).
QStringList configurationSearchPath();

// The OMS INI the library will read: OMS_INI when set, else the first file
// of configurationSearchPath(), which is then made the process's OMS_INI.
// std::nullopt, with the reason on `err` under "qal <command>", when none
// exists.
std::optional<QString> useConfiguration(const QString& command, QTextStream& err);

// Starts the tool where a desk is started: in the desk's working directory,
// [OMS_LOCAL] CPATH of the OMS INI, taken from the INI's directory. The
// library looks for a user's omsProfile.ini there first
// (TUserProfile::GetProfilePath), so the tool sees the profile the desk sees
// (the shipped configuration has CPATH=., the directory of its oms.ini).
// OMS_INI is made absolute first, so it names the same file afterwards. Call
// after useConfiguration. Returns the directory entered; empty when CPATH is
// not set or is not a directory, and the current directory is kept.
QString enterDeskDirectory();

} // namespace qal::tool
