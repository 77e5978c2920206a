#include <gtest/gtest.h>

#include <cerrno>
#include <vector>

#include "Wirx/MemUdpPam.h"

namespace {

using Wirx::IpGenAddr;
using Wirx::UdpDatagram;

Orv::Ptr<Wirx::Pkt> payload(std::vector<Orv::U8> bytes) {
  return Wirx::Pkt::copyOf(bytes.data(), Orv::U32(bytes.size()));
}

IpGenAddr addr(std::string_view text) { return *IpGenAddr::fromString(text); }

// The addressing stays until changed; what a socket would refuse is counted
// with the socket's error instead.
TEST(MemUdpPam, RecordsEachDatagramWithTheAddressingInForce) {
  auto pam = Orv::make<Wirx::MemUdpPam>("udpPam4", 3503);
  pam->txPktIs(payload({1}));
  EXPECT_EQ(pam->txErrno(), EDESTADDRREQ);
  pam->txDstAddrIs(addr("10.0.0.9"));
  pam->txPktIs(payload({1}));
  EXPECT_EQ(pam->txErrno(), EDESTADDRREQ) << "no destination port";
  pam->txDstPortIs(49152);
  pam->txSrcAddrIs(addr("2001:db8::1"));
  pam->txPktIs(payload({1}));
  EXPECT_EQ(pam->txErrno(), EAFNOSUPPORT);
  EXPECT_EQ(pam->txErrors(), 3u);

  pam->txSrcAddrIs(IpGenAddr()); // the system picks one
  pam->txPktIs(payload({1, 2, 3}));
  pam->txSrcAddrIs(addr("10.0.0.1"));
  pam->txDstPortIs(49153);
  pam->txPktIs(payload({4}));
  EXPECT_EQ(pam->datagrams(),
            (std::vector<UdpDatagram>{
                {IpGenAddr(), 3503, addr("10.0.0.9"), 49152, {1, 2, 3}},
                {addr("10.0.0.1"), 3503, addr("10.0.0.9"), 49153, {4}}}));
}

TEST(MemUdpPam, ReceivedPayloadsComeWithTheirSource) {
  auto pam = Orv::make<Wirx::MemUdpPam>("udpPam4", 3503);
  auto first = payload({1});
  auto second = payload({2});
  pam->rxPktIs(addr("10.0.0.9"), 49152, first);
  pam->rxPktIs(addr("2001:db8::9"), 3503, second);
  EXPECT_EQ(pam->readableCount(), 2u);
  EXPECT_EQ(pam->rxPkt(), first);
  EXPECT_EQ(pam->rxSrcAddr(), addr("10.0.0.9"));
  EXPECT_EQ(pam->rxSrcPort(), 49152);
  EXPECT_EQ(pam->rxPkt(), second);
  EXPECT_EQ(pam->rxSrcAddr(), addr("2001:db8::9"));
  // Nothing left: no stale source either.
  EXPECT_EQ(pam->rxPkt(), nullptr);
  EXPECT_TRUE(!pam->rxSrcAddr());
  EXPECT_EQ(pam->rxSrcPort(), 0);
}

} // namespace
