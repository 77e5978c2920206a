#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Kiv/VirtualTime.h"
#include "LspPing/LspPingPktGen.h"
#include "LspPing/LspPingTlvType.h"
#include "Netsim/LinkPam.h"
#include "Netsim/Network.h"
#include "Orv/Reactor.h"

namespace Netsim {
namespace {

using Orv::U16;
using Orv::U32;
using Orv::U8;
using Wirx::IpAddr;

constexpr double start = 1'800'000'000.0;
const Wirx::IntfId eth1("Ethernet1");
const Wirx::IntfId eth2("Ethernet2");
const Wirx::EthAddr macA = *Wirx::EthAddr::fromString("02:00:00:00:0a:01");
const Wirx::EthAddr macB = *Wirx::EthAddr::fromString("02:00:00:00:0b:01");

// An Ethernet frame to `dst` carrying an IPv4 UDP datagram to `port`: an
// echo request.
Orv::Ptr<Wirx::Pkt> frame(const Wirx::EthAddr &dst, U16 port) {
  auto pkt = Wirx::Pkt::make();
  auto gen = LspPing::lspPingPktGenFactory(pkt);
  gen->initializedIs(true);
  gen->addEtherHdr(dst, macA, 0x0800);
  gen->addIpHdr(IpAddr(0x0a010001), IpAddr(0x0a010002), 64, 17);
  gen->addUdpHdr(49152, port);
  gen->addLspPingHdr(1, 0, 1, 2, 0, 0, 1, 1, 0, 0, 0, 0);
  gen->addLspPingTlvHdr(Orv::U16(LspPing::LspPingTlvType::TargetFecStack), 0);
  gen->addLspPingLdpIpv4SubTlv(IpAddr(0x0a000002), 32);
  gen->computeHdrLenChecksum();
  return pkt;
}

Orv::Ptr<Wirx::Pkt> payload(U8 byte) {
  auto pkt = Wirx::Pkt::make();
  *pkt->append(1) = byte;
  return pkt;
}

// Two routers with their Ethernet1 interfaces linked.
struct Net {
  Net() {
    a.intfIs(eth1, macA, IpAddr(0x0a010001), 30);
    b.intfIs(eth1, macB, IpAddr(0x0a010002), 30);
  }
  Wirx::Pam &aPam(const Wirx::IntfId &intf = eth1) const {
    return *a.clientRoot()->ethDevPamCollection()->intfPam(intf);
  }

  Orv::Ptr<Kiv::TimerWheel> wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time{wheel, start};
  Network network{wheel};
  Router &a = network.routerIs("a", IpAddr(0x0a000001));
  Router &b = network.routerIs("b", IpAddr(0x0a000002));
  Link &link = network.linkIs(a, eth1, b, eth1, 0.002);
};

// Each interface with an address gets a module that sends over its link;
// one without a link drops what is sent on it.
TEST(Network, InterfacesWithAnAddressSendOverTheirLink) {
  Net net;
  auto *pam = dynamic_cast<LinkPam *>(&net.aPam());
  ASSERT_NE(pam, nullptr);
  EXPECT_EQ(pam->intfId(), eth1);
  EXPECT_EQ(pam->name().stringValue(), "Ethernet1");
  EXPECT_EQ(pam->writableCount(), 1u);

  net.a.intfIs(eth2, macA, IpAddr(0x0a020001), 30);
  net.aPam(eth2).txPktIs(frame(macB, 3503));
  EXPECT_EQ(net.aPam(eth2).txDrops(), 1u);
  net.time.runFor(1);
  EXPECT_EQ(net.b.framesReceived(), 0u);
}

// Frames arrive after the link's delay, in order, as copies of what was
// sent; a shorter delay set meanwhile lets no frame overtake another.
TEST(Network, FramesArriveInOrderAfterTheDelay) {
  Net net;
  auto sent = frame(macB, 3503);
  net.aPam().txPktIs(sent);
  *sent->data() = 0xff; // changed after sending: the link took a copy
  net.time.runFor(0.001);
  net.link.delayIs(0.0005);
  net.aPam().txPktIs(frame(macB, 3503));
  EXPECT_EQ(net.link.framesInFlight(), 2u);
  net.time.runUntil(start + 0.0019);
  EXPECT_EQ(net.b.framesReceived(), 0u);
  net.time.runUntil(start + 0.002);
  EXPECT_EQ(net.b.framesReceived(), 2u) << "the second waited for the first";
  EXPECT_EQ(net.b.requestsAnswered(), 2u);
  EXPECT_EQ(net.link.framesInFlight(), 0u);
  EXPECT_EQ(net.link.framesSent(), 2u);

  // Back the other way.
  net.b.clientRoot()->ethDevPamCollection()->intfPam(eth1)->txPktIs(
      frame(macA, 3503));
  net.time.runFor(0.0005);
  EXPECT_EQ(net.a.framesReceived(), 1u);
}

// Only echo requests for the interface's MAC address reach the responder.
TEST(Network, OnlyEchoRequestsForTheInterfaceAreAnswered) {
  Net net;
  net.aPam().txPktIs(frame(macA, 3503));
  net.aPam().txPktIs(frame(macB, 53));
  net.aPam().txPktIs(Wirx::Pkt::copyOf(frame(macB, 3503)->data(), 20));
  net.time.runFor(1);
  EXPECT_EQ(net.b.framesReceived(), 3u);
  EXPECT_EQ(net.b.requestsAnswered(), 0u);
}

// Datagrams go to the module bound to their port at the router that owns
// their destination, after the quickest link's delay, past the tap; one
// burst is announced once.
TEST(Network, DatagramsReachTheOwnerOfTheirDestination) {
  Net net;
  UdpPam &tx = *net.a.clientUdpPam();
  UdpPam &rx = *net.b.responderUdpPam();
  struct : Orv::Reactor {
    std::vector<U32> counts;
  } readable;
  std::vector<std::string> tapped;
  net.network.datagramTapIs([&](const Router &to, const Datagram &datagram) {
    tapped.push_back(to.name() + " " + datagram.dstAddr.stringValue());
  });
  readable.watch(rx, Wirx::Pam::readableCountAttr,
                 [&] { readable.counts.push_back(rx.readableCount()); });
  tx.txDstAddrIs(IpAddr(0x0a000002));
  tx.txDstPortIs(3503);
  for (U8 i = 0; i < 3; ++i) {
    tx.txPktIs(payload(i));
  }
  net.time.runUntil(start + 0.0019);
  EXPECT_EQ(rx.rxQueued(), 0u);
  net.time.runUntil(start + 0.002);
  EXPECT_EQ(readable.counts, std::vector<U32>{3});
  EXPECT_EQ(tapped, std::vector<std::string>(3, "b 10.0.0.2"));
  for (U8 i = 0; i < 3; ++i) {
    const Orv::Ptr<Wirx::Pkt> pkt = rx.rxPkt();
    ASSERT_TRUE(pkt);
    EXPECT_EQ(*pkt->data(), i);
    EXPECT_EQ(rx.rxSrcAddr(), Wirx::IpGenAddr(IpAddr(0x0a000001)))
        << "the router's address when no source is set";
    EXPECT_EQ(rx.rxSrcPort(), Router::clientUdpPort);
  }
  EXPECT_FALSE(rx.rxPkt());
  EXPECT_FALSE(rx.rxSrcAddr());
}

// Datagrams take the quickest path over links that are up, hop by hop.
TEST(Network, DatagramsTakeTheQuickestPathOverLinksThatAreUp) {
  Net net;
  Router &c = net.network.routerIs("c", IpAddr(0x0a000003));
  net.network.linkIs(net.b, eth2, c, eth1, 0.003);
  Link &direct = net.network.linkIs(net.a, eth2, c, eth2, 0.010);
  EXPECT_EQ(net.network.pathDelay(net.a, c), 0.005) << "over b";
  net.link.upIs(false);
  EXPECT_EQ(net.network.pathDelay(c, net.a), 0.010) << "direct";
  direct.upIs(false);
  EXPECT_EQ(net.network.pathDelay(net.a, c), net.network.defaultDelay());
}

TEST(Network, DatagramsNobodyTakesAreLost) {
  Net net;
  UdpPam &tx = *net.a.clientUdpPam();
  tx.txPktIs(payload(0));
  EXPECT_EQ(tx.txErrors(), 1u) << "no destination";
  tx.txDstAddrIs(IpAddr(0x0a0000ff));
  tx.txDstPortIs(3503);
  tx.txPktIs(payload(0));
  EXPECT_EQ(tx.txDrops(), 1u) << "nobody owns the address";
  tx.txDstAddrIs(IpAddr(0x0a010002));
  tx.txDstPortIs(7);
  tx.txPktIs(payload(0));
  net.time.runFor(1);
  EXPECT_EQ(net.b.datagramsDropped(), 1u) << "nobody on the port";
}

} // namespace
} // namespace Netsim
