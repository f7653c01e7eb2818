// SPDX-License-Identifier: MIT
#include "qalpack/runtime/Exception.h"

namespace qal {

Error::Error(const QString& message)
    : std::runtime_error(message.toStdString())
{ }

Error::~Error() = default;

QString Error::message() const
{
    return QString::fromUtf8(what());
}

InvalidOrderType::InvalidOrderType()
    : Error(QStringLiteral("Invalid order type"))
{ }

InvalidOrderType::~InvalidOrderType() = default;

EncodingError::~EncodingError() = default;

} // namespace qal
