// SPDX-License-Identifier: MIT
// Which configuration the qal commands that use the order database run on.
#pragma once

#include <optional>

#include <QString>

class QTextStream;

namespace qal::tool {

// The OMS INI the library will read: OMS_INI when set, else the
// configuration shipped next to the tool (config/oms.ini), which is then
// made the process's OMS_INI. std::nullopt, with the reason on `err` under
// "qal <command>", when neither exists.
std::optional<QString> useConfiguration(const QString& command, QTextStream& err);

} // namespace qal::tool
