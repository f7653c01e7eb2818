// SPDX-License-Identifier: MIT
#include "qalpack/omslib/NTNetInfo.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <sys/socket.h>

#include <memory>

#include <QSysInfo>
#include <QtGlobal>

namespace qal {

namespace {

constexpr char kComputerNameVariable[] = "OMS_COMPUTERNAME";

struct FreeInterfaces
{
    void operator()(ifaddrs* list) const { freeifaddrs(list); }
};

} // namespace

TNTNetInfo::TNTNetInfo(QObject* parent)
    : QObject(parent)
{ }

TNTNetInfo::~TNTNetInfo() = default;

QString TNTNetInfo::ComputerName() const
{
    const QString overridden = qEnvironmentVariable(kComputerNameVariable);
    if (!overridden.isEmpty())
        return overridden;
    const QString host = HostName();
    return host.left(host.indexOf(u'.'));
}

QString TNTNetInfo::HostName() const
{
    return QSysInfo::machineHostName();
}

QStringList TNTNetInfo::IPAddresses() const
{
    ifaddrs* raw = nullptr;
    if (getifaddrs(&raw) != 0)
        return {};
    const std::unique_ptr<ifaddrs, FreeInterfaces> interfaces(raw);

    QStringList groups[3]; // IPv4, IPv6, loopback
    for (const ifaddrs* entry = interfaces.get(); entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_addr == nullptr || (entry->ifa_flags & IFF_UP) == 0)
            continue;
        const int family = entry->ifa_addr->sa_family;
        if (family != AF_INET && family != AF_INET6)
            continue;
        const socklen_t length = family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
        char text[NI_MAXHOST] = {};
        if (getnameinfo(entry->ifa_addr, length, text, sizeof text, nullptr, 0, NI_NUMERICHOST) != 0)
            continue;
        const int group = (entry->ifa_flags & IFF_LOOPBACK) != 0 ? 2 : family == AF_INET ? 0 : 1;
        const QString address = QString::fromLatin1(text);
        if (!groups[group].contains(address))
            groups[group].append(address);
    }
    return groups[0] + groups[1] + groups[2];
}

QString TNTNetInfo::IPAddress() const
{
    const QStringList addresses = IPAddresses();
    return addresses.isEmpty() ? QString() : addresses.front();
}

} // namespace qal
