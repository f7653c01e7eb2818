// SPDX-License-Identifier: MIT
// The one exception family of qalpack. Every error the library raises derives
// from qal::Error and carries a message that names what failed.
#pragma once

#include <stdexcept>

#include <QString>

#include "qalpack/qalpack_export.h"

namespace qal {

class QALPACK_EXPORT Error : public std::runtime_error
{
public:
    explicit Error(const QString& message);
    ~Error() override;

    // The message as Unicode text; what() holds the same text in UTF-8.
    [[nodiscard]] QString message() const;
};

// betterPrice on an order whose side is neither buy nor sell.
class QALPACK_EXPORT InvalidOrderType : public Error
{
public:
    InvalidOrderType();
    ~InvalidOrderType() override;
};

// Text that cannot cross a byte boundary in the requested code page.
class QALPACK_EXPORT EncodingError : public Error
{
public:
    using Error::Error;
    ~EncodingError() override;
};

} // namespace qal
