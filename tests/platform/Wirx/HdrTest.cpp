#include "Wirx/EthHdr.h"
#include "Wirx/Ipv4Hdr.h"
#include "Wirx/Ipv4RouterAlertHdr.h"
#include "Wirx/Ipv6Hdr.h"
#include "Wirx/Ipv6RouterAlertHopByHop.h"
#include "Wirx/UdpHdr.h"
#include "Wirx/VlanTag.h"

#include <gtest/gtest.h>

#include <vector>

namespace Wirx {
namespace {

using Orv::U8;

// Overlays are written one byte past an aligned address, as headers sit at
// any offset of a frame, and compared with the wire bytes written by hand.
class HdrTest : public ::testing::Test {
protected:
  template <class Hdr> Hdr *overlay() {
    buf_.assign(sizeof(Hdr) + 1, 0xEE);
    return reinterpret_cast<Hdr *>(buf_.data() + 1);
  }
  std::vector<U8> wire() const { return {buf_.begin() + 1, buf_.end()}; }

  std::vector<U8> buf_;
};

TEST_F(HdrTest, EthernetAndVlanTag) {
  EthHdr *eth = overlay<EthHdr>();
  eth->dstIs(EthAddr({0, 0x11, 0x22, 0x33, 0x44, 0x55}));
  eth->srcIs(EthAddr({2, 0, 0, 0, 0, 1}));
  eth->etherTypeIs(EthHdr::etherTypeMpls);
  EXPECT_EQ(wire(), (std::vector<U8>{0, 0x11, 0x22, 0x33, 0x44, 0x55, 2, 0, 0,
                                     0, 0, 1, 0x88, 0x47}));
  EXPECT_EQ(eth->src().stringValue(), "02:00:00:00:00:01");

  VlanTag *tag = overlay<VlanTag>();
  tag->tciIs(0xA0C8);
  tag->etherTypeIs(EthHdr::etherTypeIpv4);
  EXPECT_EQ(wire(), (std::vector<U8>{0xA0, 0xC8, 0x08, 0x00}));
  EXPECT_EQ(tag->vlanId(), 200);
  EXPECT_EQ(tag->priority(), 5);
}

TEST_F(HdrTest, Ipv4WithRouterAlert) {
  Ipv4RouterAlertHdr *ip = overlay<Ipv4RouterAlertHdr>();
  ip->init();
  Ipv4Hdr &hdr = ip->hdr();
  hdr.tosIs(0xC0);
  hdr.totalLengthIs(40);
  hdr.idIs(0x1234);
  hdr.flagsFragmentIs(Ipv4Hdr::flagDontFragment);
  hdr.ttlIs(1);
  hdr.protocolIs(Ipv4Hdr::protocolUdp);
  hdr.checksumIs(0xABCD);
  hdr.srcIs(IpAddr(0x0A000001));
  hdr.dstIs(IpAddr(0x7F000001));
  EXPECT_EQ(wire(),
            (std::vector<U8>{0x46, 0xC0, 0,    40,   0x12, 0x34, 0x40, 0,
                             1,    17,   0xAB, 0xCD, 10,   0,    0,    1,
                             127,  0,    0,    1,    0x94, 0x04, 0,    0}));
  EXPECT_EQ(hdr.version(), 4);
  EXPECT_EQ(hdr.ihl(), 6);
  EXPECT_EQ(hdr.headerLength(), 24u);
  EXPECT_FALSE(hdr.isFragment());
  EXPECT_TRUE(ip->option().isRouterAlert());
  EXPECT_EQ(ip->option().value(), 0);
}

TEST_F(HdrTest, Ipv4FragmentsAreEveryPacketButAWholeOne) {
  Ipv4Hdr *hdr = overlay<Ipv4Hdr>();
  hdr->flagsFragmentIs(Ipv4Hdr::flagMoreFragments);
  EXPECT_TRUE(hdr->isFragment());
  hdr->flagsFragmentIs(1);
  EXPECT_TRUE(hdr->isFragment());
  hdr->flagsFragmentIs(Ipv4Hdr::flagDontFragment);
  EXPECT_FALSE(hdr->isFragment());
}

TEST_F(HdrTest, Ipv6WithHopByHopRouterAlert) {
  Ipv6Hdr *ip = overlay<Ipv6Hdr>();
  ip->classFlowIs(0xAB, 0x12345);
  ip->payloadLengthIs(20);
  ip->nextHeaderIs(Ipv6Hdr::nextHeaderHopByHop);
  ip->hopLimitIs(1);
  ip->srcIs(Ip6Addr::fromString("2001:db8::1").value());
  ip->dstIs(Ip6Addr::fromString("::ffff:127.0.0.1").value());
  const std::vector<U8> expected{
      0x6A, 0xB1, 0x23, 0x45, 0, 20, 0, 1,                                 //
      0x20, 0x01, 0x0D, 0xB8, 0, 0,  0, 0, 0, 0, 0,    0,    0,   0, 0, 1, //
      0,    0,    0,    0,    0, 0,  0, 0, 0, 0, 0xFF, 0xFF, 127, 0, 0, 1};
  EXPECT_EQ(wire(), expected);
  EXPECT_EQ(ip->version(), 6);
  EXPECT_EQ(ip->trafficClass(), 0xAB);
  EXPECT_EQ(ip->flowLabel(), 0x12345u);
  EXPECT_EQ(ip->dst().stringValue(), "::ffff:127.0.0.1");

  Ipv6RouterAlertHopByHop *hbh = overlay<Ipv6RouterAlertHopByHop>();
  hbh->init(Ipv6Hdr::nextHeaderUdp);
  EXPECT_EQ(wire(), (std::vector<U8>{17, 0, 0x05, 0x02, 0, 69, 0x01, 0}));
  EXPECT_EQ(hbh->value(), 69);
}

TEST_F(HdrTest, Udp) {
  UdpHdr *udp = overlay<UdpHdr>();
  udp->srcPortIs(49152);
  udp->dstPortIs(3503);
  udp->lengthIs(16);
  udp->checksumIs(0x0B7E);
  EXPECT_EQ(wire(), (std::vector<U8>{0xC0, 0, 0x0D, 0xAF, 0, 16, 0x0B, 0x7E}));
}

} // namespace
} // namespace Wirx
