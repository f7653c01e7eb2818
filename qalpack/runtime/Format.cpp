// SPDX-License-Identifier: MIT
#include "qalpack/runtime/Format.h"

#include <string>

#include <fmt/args.h>
#include <fmt/format.h>
#include <fmt/printf.h>

#include "qalpack/runtime/Exception.h"

namespace qal {

QString Format(const QString& pattern, std::initializer_list<FormatArg> args)
{
    // The store keeps its own copies of the converted texts.
    fmt::dynamic_format_arg_store<fmt::printf_context> store;
    for (const FormatArg& arg : args) {
        std::visit(
            [&store](const auto& v) {
                using V = std::decay_t<decltype(v)>;
                if constexpr (std::is_same_v<V, QString>)
                    store.push_back(v.toStdString());
                else
                    store.push_back(v);
            },
            arg.value());
    }
    try {
        return QString::fromStdString(fmt::vsprintf(pattern.toStdString(), store));
    } catch (const fmt::format_error& e) {
        throw Error(QStringLiteral("cannot format \"%1\": %2").arg(pattern, QString::fromUtf8(e.what())));
    }
}

QString FixedText(double value, int decimals)
{
    return QString::fromStdString(fmt::format("{:.{}f}", value, decimals));
}

} // namespace qal
