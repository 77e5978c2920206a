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

namespace Wirx {
namespace {

using namespace std::string_literals;
using Orv::U8;

// Every text form must read back as the value that printed it.
template <class T> void expectRoundTrip(const T &value) {
  const std::optional<T> back = T::fromString(value.stringValue());
  ASSERT_TRUE(back) << value.stringValue();
  EXPECT_EQ(*back, value) << value.stringValue();
  std::ostringstream os;
  os << value;
  EXPECT_EQ(os.str(), value.stringValue());
}

template <class T>
void expectRejected(std::initializer_list<std::string_view> texts) {
  for (std::string_view text : texts) {
    EXPECT_FALSE(T::fromString(text)) << '"' << text << '"';
  }
}

Ip6Addr ip6(std::string_view text) { return Ip6Addr::fromString(text).value(); }

TEST(IpAddrTest, KeepsHostOrderAndConvertsToWireBytes) {
  const IpAddr addr(0x0A000001);
  EXPECT_EQ(addr.stringValue(), "10.0.0.1");
  U8 wire[4];
  addr.toNbo(wire);
  EXPECT_EQ(wire[0], 10);
  EXPECT_EQ(wire[3], 1);
  EXPECT_EQ(IpAddr::fromNbo(wire), addr);
  EXPECT_LT(IpAddr(0x09FFFFFF), addr);
  EXPECT_TRUE(!IpAddr());
  EXPECT_FALSE(!addr);
}

TEST(IpAddrTest, TextIsStrictDottedDecimal) {
  for (Orv::U32 value : {0u, 0x7F000001u, 0xC0A800C7u, 0xFFFFFFFFu}) {
    expectRoundTrip(IpAddr(value));
  }
  EXPECT_EQ(IpAddr::fromString("255.255.255.255"), IpAddr(0xFFFFFFFF));
  expectRejected<IpAddr>({"", "1.2.3", "1.2.3.4.5", "256.1.1.1", "01.2.3.4",
                          " 1.2.3.4", "1.2.3.4 ", "1..3.4", "a.b.c.d",
                          "1.2.3.-4", "1.2.3.+4", "1.2.3.4/32",
                          "99999999999.1.1.1", "1.2.3."});
  EXPECT_FALSE(IpAddr::fromString("1.2.3.4\0junk"s));
}

TEST(Ip6AddrTest, TextFollowsTheCanonicalForm) {
  const Ip6Addr addr = ip6("2001:DB8:0:0:0:0:0:1");
  EXPECT_EQ(addr.stringValue(), "2001:db8::1");
  EXPECT_EQ(addr.bytes()[0], 0x20);
  EXPECT_EQ(addr.bytes()[15], 0x01);
  expectRoundTrip(addr);
  expectRoundTrip(Ip6Addr());
  expectRoundTrip(ip6("::ffff:127.0.0.1"));
  expectRoundTrip(ip6("fe80::1:0:0:1"));
  EXPECT_EQ(Ip6Addr().stringValue(), "::");
  expectRejected<Ip6Addr>(
      {"", "2001:db8::1::2", "2001:db8::g", "::1 ", "1.2.3.4", "::1/128",
       "1:2:3:4:5:6:7:8:9",
       "ffff:ffff:ffff:ffff:ffff:ffff:255.255.255.255:0000000000"});
  EXPECT_FALSE(Ip6Addr::fromString("::1\0junk"s));
}

TEST(Ip6AddrTest, WireBytesAndOrderFollowNetworkOrder) {
  const Ip6Addr low = ip6("2001:db8::1");
  const Ip6Addr high = ip6("2001:db8::100");
  EXPECT_LT(low, high);
  U8 wire[16];
  high.toNbo(wire);
  EXPECT_EQ(wire[14], 0x01);
  EXPECT_EQ(Ip6Addr::fromNbo(wire), high);
  EXPECT_TRUE(!Ip6Addr());
  EXPECT_FALSE(!low);
}

TEST(IpGenAddrTest, CarriesEitherFamilyOrNone) {
  const IpGenAddr v4 = IpAddr(0x0A000001);
  const IpGenAddr v6 = ip6("2001:db8::1");
  EXPECT_TRUE(v4.isIpv4());
  EXPECT_EQ(v4.af(), AddrFamily::ipv4);
  EXPECT_EQ(v4.v4(), IpAddr(0x0A000001));
  EXPECT_TRUE(v6.isIpv6());
  EXPECT_EQ(v6.v6(), ip6("2001:db8::1"));
  EXPECT_EQ(IpGenAddr().af(), AddrFamily::unspecified);
  EXPECT_TRUE(!IpGenAddr());
  // 0.0.0.0 is an address, not the absence of one.
  EXPECT_FALSE(!IpGenAddr(IpAddr()));
  EXPECT_NE(IpGenAddr(IpAddr()), IpGenAddr(Ip6Addr()));
  EXPECT_LT(IpGenAddr(), IpGenAddr(IpAddr()));
  EXPECT_LT(IpGenAddr(IpAddr(0xFFFFFFFF)), IpGenAddr(Ip6Addr()));
}

TEST(IpGenAddrTest, TextTellsTheFamilyApart) {
  expectRoundTrip(IpGenAddr(IpAddr(0x7F000001)));
  expectRoundTrip(IpGenAddr(ip6("::ffff:127.0.0.1")));
  expectRoundTrip(IpGenAddr());
  EXPECT_EQ(IpGenAddr().stringValue(), "unspecified");
  EXPECT_TRUE(IpGenAddr::fromString("1.2.3.4")->isIpv4());
  EXPECT_TRUE(IpGenAddr::fromString("::")->isIpv6());
  expectRejected<IpGenAddr>({"", "1.2.3", "::g", "unspec", "none"});
  std::ostringstream os;
  os << AddrFamily::ipv6 << ' ' << AddrFamily::unspecified;
  EXPECT_EQ(os.str(), "ipv6 unspecified");
}

TEST(IpGenAddrDeathTest, AskingForTheOtherFamilyIsAFault) {
  EXPECT_DEATH(IpGenAddr(IpAddr(1)).v6(), "isIpv6");
  EXPECT_DEATH(IpGenAddr().v4(), "isIpv4");
}

TEST(IpGenPrefixTest, KeepsTheAddressAsGivenAndMasksOnRequest) {
  const IpGenPrefix v4(IpAddr(0x0A0101FF), 23);
  EXPECT_EQ(v4.stringValue(), "10.1.1.255/23");
  EXPECT_EQ(v4.masked().stringValue(), "10.1.0.0/23");
  EXPECT_EQ(IpGenPrefix(IpAddr(0xFFFFFFFF), 0).masked().stringValue(),
            "0.0.0.0/0");
  EXPECT_EQ(IpGenPrefix(IpAddr(0xFFFFFFFF), 32).masked().addr(),
            IpGenAddr(IpAddr(0xFFFFFFFF)));
  const IpGenPrefix v6(ip6("2001:db8:ffff:ffff::1"), 35);
  EXPECT_EQ(v6.masked().stringValue(), "2001:db8:e000::/35");
  EXPECT_EQ(IpGenPrefix(ip6("ffff::1"), 128).masked().addr(),
            IpGenAddr(ip6("ffff::1")));
  EXPECT_EQ(IpGenPrefix(ip6("ffff::1"), 0).masked().addr(),
            IpGenAddr(Ip6Addr()));
  EXPECT_TRUE(!IpGenPrefix().masked());
}

TEST(IpGenPrefixTest, LengthMustFitTheFamily) {
  EXPECT_NO_THROW(IpGenPrefix(IpAddr(1), 32));
  EXPECT_NO_THROW(IpGenPrefix(Ip6Addr(), 128));
  EXPECT_THROW(IpGenPrefix(IpAddr(1), 33), Orv::RangeError);
  EXPECT_THROW(IpGenPrefix(Ip6Addr(), 129), Orv::RangeError);
  EXPECT_THROW(IpGenPrefix(IpGenAddr(), 1), Orv::RangeError);
  EXPECT_TRUE(!IpGenPrefix());
  EXPECT_FALSE(!IpGenPrefix(IpAddr(), 0));
}

TEST(IpGenPrefixTest, TextRoundTripsAndRefusesBadLengths) {
  expectRoundTrip(IpGenPrefix(IpAddr(0x0A010101), 32));
  expectRoundTrip(IpGenPrefix(ip6("2001:db8::"), 64));
  expectRoundTrip(IpGenPrefix());
  EXPECT_LT(IpGenPrefix(IpAddr(1), 8), IpGenPrefix(IpAddr(1), 16));
  expectRejected<IpGenPrefix>({"", "10.0.0.0", "10.0.0.0/", "10.0.0.0/33",
                               "::/129", "10.0.0.0/-1", "10.0.0.0/8/8",
                               "10.0.0.0/ 8", "/8", "unspecified/0",
                               "10.0.0.0/99999999999"});
}

TEST(EthAddrTest, TextIsLowerCaseColonFormAndReadsEitherCase) {
  const EthAddr addr(EthAddr::Bytes{0x02, 0, 0, 0xAB, 0xCD, 0x01});
  EXPECT_EQ(addr.stringValue(), "02:00:00:ab:cd:01");
  EXPECT_EQ(EthAddr::fromString("02:00:00:AB:Cd:01"), addr);
  expectRoundTrip(addr);
  expectRoundTrip(EthAddr());
  EXPECT_TRUE(!EthAddr());
  expectRejected<EthAddr>(
      {"", "02:00:00:ab:cd", "02:00:00:ab:cd:01:", "02-00-00-ab-cd-01",
       "02:00:00:ab:cd:0g", "2:00:00:ab:cd:01:", "02:00:00:ab:cd:011"});
  U8 wire[6];
  addr.toNbo(wire);
  EXPECT_EQ(wire[3], 0xAB);
  EXPECT_EQ(EthAddr::fromNbo(wire), addr);
}

TEST(IntfIdTest, NamesAnInterfaceAndRefusesBlanks) {
  const IntfId intf("Ethernet1/2");
  EXPECT_EQ(intf.stringValue(), "Ethernet1/2");
  expectRoundTrip(intf);
  expectRoundTrip(IntfId());
  EXPECT_TRUE(!IntfId());
  EXPECT_LT(IntfId("Ethernet1"), IntfId("Ethernet2"));
  expectRejected<IntfId>({"Ethernet 1", "eth0\n", "\t"});
  EXPECT_FALSE(IntfId::fromString("eth\0"s));
}

} // namespace
} // namespace Wirx
