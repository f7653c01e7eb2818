// SPDX-License-Identifier: MIT
// Lets GoogleTest print Qt texts readably in failure messages.
#pragma once

#include <ostream>

#include <QString>
#include <QStringView>

inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

inline void PrintTo(QStringView text, std::ostream* os)
{
    *os << '"' << text.toString().toStdString() << '"';
}
