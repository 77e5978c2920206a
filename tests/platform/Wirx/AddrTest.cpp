#include "Wirx/EthAddr.h"
#include "Wirx/IntfId.h"
#include "Wirx/Ip6Addr.h"
#include "Wirx/IpAddr.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/IpGenPrefix.h"

#include "Orv/RangeError.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace Wirx {
namespace {

using namespace std::string_literals;
using Orv::U8;

// Every text form reads back as the value that printed it, and text that is
// not exactly a form is refused.
template <class T>
void expectText(std::initializer_list<T> values,
                std::initializer_list<std::string_view> refused) {
  for (const T &value : values) {
    const std::optional<T> back = T::fromString(value.stringValue());
    EXPECT_EQ(back, value) << value.stringValue();
    std::ostringstream os;
    os << value;
    EXPECT_EQ(os.str(), value.stringValue());
  }
  for (std::string_view text : refused) {
    EXPECT_FALSE(T::fromString(text)) << '"' << text << '"';
  }
}

// Wire bytes in network order, read back as the same value.
template <class T> std::vector<U8> wireOf(const T &value) {
  std::vector<U8> wire(sizeof(T));
  value.toNbo(wire.data());
  EXPECT_EQ(T::fromNbo(wire.data()), value);
  return wire;
}

Ip6Addr ip6(std::string_view text) { return Ip6Addr::fromString(text).value(); }

TEST(AddrText, IpAddrIsStrictDottedDecimal) {
  expectText<IpAddr>({IpAddr(0), IpAddr(0x7F000001), IpAddr(0xFFFFFFFF)},
                     {"", "1.2.3", "1.2.3.4.5", "256.1.1.1", "01.2.3.4",
                      " 1.2.3.4", "1.2.3.4 ", "1..3.4", "a.b.c.d", "1.2.3.-4",
                      "1.2.3.+4", "1.2.3.4/32", "99999999999.1.1.1", "1.2.3.",
                      "1.2.3.4\0junk"s});
  EXPECT_EQ(IpAddr(0xC0A800C7).stringValue(), "192.168.0.199");
  EXPECT_EQ(wireOf(IpAddr(0x0A000001)), (std::vector<U8>{10, 0, 0, 1}));
}

TEST(AddrText, Ip6AddrFollowsTheCanonicalForm) {
  EXPECT_EQ(ip6("2001:DB8:0:0:0:0:0:1").stringValue(), "2001:db8::1");
  EXPECT_EQ(Ip6Addr().stringValue(), "::");
  expectText<Ip6Addr>(
      {ip6("2001:db8::1"), Ip6Addr(), ip6("::ffff:127.0.0.1"),
       ip6("fe80::1:0:0:1")},
      {"", "2001:db8::1::2", "2001:db8::g", "::1 ", "1.2.3.4", "::1/128",
       "1:2:3:4:5:6:7:8:9",
       "ffff:ffff:ffff:ffff:ffff:ffff:255.255.255.255:0000000000",
       "::1\0junk"s});
  const std::vector<U8> wire = wireOf(ip6("2001:db8::100"));
  EXPECT_EQ(wire[0], 0x20);
  EXPECT_EQ(wire[14], 0x01);
}

TEST(AddrText, IpGenAddrTellsTheFamilyApart) {
  expectText<IpGenAddr>({IpAddr(0x7F000001), ip6("::ffff:127.0.0.1"),
                         IpGenAddr(), IpAddr(), Ip6Addr()},
                        {"", "1.2.3", "::g", "unspec", "none"});
  EXPECT_EQ(IpGenAddr().stringValue(), "unspecified");
  EXPECT_TRUE(IpGenAddr::fromString("::")->isIpv6());
  // 0.0.0.0 is an address, not the absence of one.
  EXPECT_FALSE(!IpGenAddr(IpAddr()));
  EXPECT_TRUE(!IpGenAddr());
  EXPECT_NE(IpGenAddr(IpAddr()), IpGenAddr(Ip6Addr()));
}

TEST(AddrTextDeathTest, AskingIpGenAddrForTheOtherFamilyIsAFault) {
  EXPECT_DEATH(IpGenAddr(IpAddr(1)).v6(), "isIpv6");
}

TEST(AddrText, IpGenPrefixKeepsTheAddressAsGivenAndFitsItsFamily) {
  EXPECT_EQ(IpGenPrefix(IpAddr(0x0A0101FF), 23).stringValue(), "10.1.1.255/23");
  for (auto [given, masked] :
       {std::pair{"10.1.1.255/23", "10.1.0.0/23"},
        {"255.255.255.255/0", "0.0.0.0/0"},
        {"255.255.255.255/32", "255.255.255.255/32"},
        {"2001:db8:ffff:ffff::1/35", "2001:db8:e000::/35"},
        {"ffff::1/128", "ffff::1/128"},
        {"ffff::1/0", "::/0"}}) {
    EXPECT_EQ(IpGenPrefix::fromString(given)->masked().stringValue(), masked)
        << given;
  }
  EXPECT_TRUE(!IpGenPrefix().masked());
  EXPECT_THROW(IpGenPrefix(IpAddr(1), 33), Orv::RangeError);
  EXPECT_THROW(IpGenPrefix(Ip6Addr(), 129), Orv::RangeError);
  EXPECT_THROW(IpGenPrefix(IpGenAddr(), 1), Orv::RangeError);
  EXPECT_FALSE(!IpGenPrefix(IpAddr(), 0));
  expectText<IpGenPrefix>({IpGenPrefix(IpAddr(0x0A010101), 32),
                           IpGenPrefix(ip6("2001:db8::"), 64), IpGenPrefix()},
                          {"", "10.0.0.0", "10.0.0.0/", "10.0.0.0/33", "::/129",
                           "10.0.0.0/-1", "10.0.0.0/8/8", "10.0.0.0/ 8", "/8",
                           "unspecified/0", "10.0.0.0/99999999999"});
}

TEST(AddrText, EthAddrIsLowerCaseColonFormAndReadsEitherCase) {
  const EthAddr addr(EthAddr::Bytes{0x02, 0, 0, 0xAB, 0xCD, 0x01});
  EXPECT_EQ(addr.stringValue(), "02:00:00:ab:cd:01");
  EXPECT_EQ(EthAddr::fromString("02:00:00:AB:Cd:01"), addr);
  expectText<EthAddr>(
      {addr, EthAddr()},
      {"", "02:00:00:ab:cd", "02:00:00:ab:cd:01:", "02-00-00-ab-cd-01",
       "02:00:00:ab:cd:0g", "2:00:00:ab:cd:01:", "02:00:00:ab:cd:011"});
  EXPECT_EQ(wireOf(addr)[3], 0xAB);
}

TEST(AddrText, IntfIdRefusesBlanks) {
  expectText<IntfId>({IntfId("Ethernet1/2"), IntfId()},
                     {"Ethernet 1", "eth0\n", "\t", "eth\0"s});
}

} // namespace
} // namespace Wirx
