// SPDX-License-Identifier: MIT
// This machine as the other desks see it: its computer name (announced with a
// logon so that a second logon elsewhere can be told apart), host name and
// network addresses.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include "qalpack/qalpack_export.h"

namespace qal {

// Every value is gathered when asked for, so a changed address is seen at
// once. Nothing here throws.
class QALPACK_EXPORT TNTNetInfo : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString ComputerName READ ComputerName)
    Q_PROPERTY(QString HostName READ HostName)
    Q_PROPERTY(QStringList IPAddresses READ IPAddresses)

public:
    explicit TNTNetInfo(QObject* parent = nullptr);
    ~TNTNetInfo() override;

    // This computer's name: the OMS_COMPUTERNAME environment variable when it
    // is set and not empty (read on every call; tests use it to play a second
    // machine, and a desk behind address translation to name itself),
    // otherwise the host name up to its first '.'.
    [[nodiscard]] QString ComputerName() const;

    // The host name as the system reports it, possibly fully qualified.
    [[nodiscard]] QString HostName() const;

    // The numeric addresses of the interfaces that are up, IPv4 before IPv6,
    // each once, loopback addresses last; empty when none can be read.
    [[nodiscard]] QStringList IPAddresses() const;

    // The first of IPAddresses, or empty.
    [[nodiscard]] QString IPAddress() const;
};

} // namespace qal
