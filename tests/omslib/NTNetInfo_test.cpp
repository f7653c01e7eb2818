// SPDX-License-Identifier: MIT
// This machine as the other desks see it: the computer name a logon announces
// (OMS_COMPUTERNAME lets a test or a desk behind address translation play
// another machine) and the addresses in the order the desk reports them.
#include "qalpack/omslib/NTNetInfo.h"

#include <arpa/inet.h>

#include <QSet>

#include <gtest/gtest.h>

namespace qal {
namespace {

class ComputerNameTest : public ::testing::Test
{
protected:
    void SetUp() override { saved_ = qgetenv("OMS_COMPUTERNAME"); }
    void TearDown() override { qputenv("OMS_COMPUTERNAME", saved_); }

private:
    QByteArray saved_;
};

TEST_F(ComputerNameTest, TheEnvironmentNamesTheMachineElseTheHostNameUpToItsFirstDot)
{
    const TNTNetInfo info;
    qputenv("OMS_COMPUTERNAME", "DESK-07");
    EXPECT_EQ(info.ComputerName(), QStringLiteral("DESK-07")) << "read on every call";

    qputenv("OMS_COMPUTERNAME", "");
    const QString host = info.HostName();
    EXPECT_EQ(info.ComputerName(), host.section(u'.', 0, 0));
    EXPECT_FALSE(info.ComputerName().contains(u'.'));
}

TEST(NTNetInfo, AddressesAreNumericOnceEachIPv4FirstLoopbackLast)
{
    const TNTNetInfo info;
    const QStringList addresses = info.IPAddresses();
    EXPECT_EQ(QSet<QString>(addresses.begin(), addresses.end()).size(), addresses.size());
    bool loopbackSeen = false;
    bool ipv6Seen = false;
    for (const QString& text : addresses) {
        SCOPED_TRACE(text.toStdString());
        // A link-local IPv6 address carries its interface: "fe80::1%eth0".
        const QByteArray latin = text.section(u'%', 0, 0).toLatin1();
        unsigned char buffer[16];
        const bool ipv4 = ::inet_pton(AF_INET, latin.constData(), buffer) == 1;
        const bool ipv6 = !ipv4 && ::inet_pton(AF_INET6, latin.constData(), buffer) == 1;
        ASSERT_TRUE(ipv4 || ipv6) << "not a numeric address";
        if (text.startsWith(u"127.") || text == u"::1") {
            loopbackSeen = true;
            continue;
        }
        EXPECT_FALSE(loopbackSeen) << "a loopback address before a real one";
        if (ipv6)
            ipv6Seen = true;
        else
            EXPECT_FALSE(ipv6Seen) << "an IPv4 address after an IPv6 one";
    }
    EXPECT_EQ(info.IPAddress(), addresses.value(0));
}

} // namespace
} // namespace qal
