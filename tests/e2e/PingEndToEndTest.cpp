#include <gtest/gtest.h>

#include "Kiv/VirtualTime.h"
#include "LspPing/LspPingReturnCode.h"
#include "Netsim/Network.h"
#include "Orv/Clock.h"
#include "Orv/Reactor.h"

namespace {

using LspPing::LspPingClientConfig;
using LspPing::LspPingReplyPktInfo;
using LspPing::LspPingReturnCode;
using Orv::U32;
using Wirx::IpAddr;
using Wirx::MplsLabel;

constexpr double start = 1'800'000'000.0;
const Wirx::IntfId eth1("Ethernet1");
const Wirx::IntfId eth2("Ethernet2");
const IpAddr aIntfAddr(0x0a010001); // 10.1.0.1
const IpAddr bAddr(0x0a000002);     // 10.0.0.2, b's own FEC: b is its egress
const IpAddr farAddr(0x0a000003);   // 10.0.0.3, behind b: label 1000
const IpAddr otherAddr(0x0a000004); // 10.0.0.4, behind b: label 1001
constexpr U32 implicitNull = 3;
// Echo time stamps carry whole microseconds and the NTP clock's doubles
// resolve about half a microsecond, so a delay that is a whole number of
// microseconds and exact in binary comes back exactly: 15.625 ms.
constexpr double linkDelay = 1.0 / 64;
constexpr U32 roundTrip = 31'250;

Wirx::EthAddr mac(const char *text) { return *Wirx::EthAddr::fromString(text); }

// Router a pings over its Ethernet1, linked to b's Ethernet1. b is the egress
// of its own address and a transit router for two more FECs, whose labels it
// swaps towards Ethernet2. Labelled requests go with TTL 1, so that b
// answers them instead of switching them on.
struct TwoRouters {
  explicit TwoRouters(bool aInterfaceUp = true) {
    b.intfIs(eth1, mac("02:00:00:00:0b:01"), IpAddr(0x0a010002), 30);
    b.intfIs(eth2, mac("02:00:00:00:0b:02"), IpAddr(0x0a020001), 30, 9000);
    network.linkIs(a, eth1, b, eth1, linkDelay);
    if (aInterfaceUp) {
      aUp();
    }
    const Netsim::ForwardingState &state = b.forwardingState();
    state.ldpBindingIs(Wirx::IpGenPrefix(bAddr, 32), MplsLabel(implicitNull));
    state.ldpBindingIs(Wirx::IpGenPrefix(farAddr, 32), MplsLabel(1000));
    state.ldpBindingIs(Wirx::IpGenPrefix(otherAddr, 32), MplsLabel(1001));
    for (U32 label : {1000u, 1001u}) {
      state.swapRouteIs(MplsLabel(label), eth2, IpAddr(0x0a020002),
                        MplsLabel(label + 1000));
    }
  }

  void aUp() { a.intfIs(eth1, mac("02:00:00:00:0a:01"), aIntfAddr, 30); }
  // An LDP ping from a for `fec` with one label: `count` requests a second
  // apart, the first a second after it is enabled.
  Orv::Ptr<LspPingClientConfig> client(U32 id, U32 label, IpAddr fec,
                                       Orv::S32 count = 3) {
    auto config = a.clientConfigs()->pingClientConfigIs(id);
    config->tunnelTypeIs(LspPing::LspPingTunnelType::tunnelLdpIpv4);
    config->dstPrefixIs(Wirx::IpGenPrefix(fec, 32));
    config->txIntfIdIs(eth1);
    config->srcIpAddrIs(aIntfAddr);
    config->dstIpAddrIs(IpAddr(0x7f000001));
    config->srcUdpPortIs(Netsim::Router::clientUdpPort);
    config->srcEthAddrIs(mac("02:00:00:00:0a:01"));
    config->tunnelNexthopEthAddrIs(b.ethAddr(eth1));
    config->mplsLabelIs(0, MplsLabel(label));
    config->mplsTtlIs(0, 1);
    config->txRateIs(1);
    config->pktDelayIs(1);
    config->txCountIs(count);
    return config;
  }
  Orv::Ptr<LspPing::LspPingClientStatus> status(U32 id) const {
    return a.clientStatuses()->pingClientStatus(id);
  }
  // The record of reply `seq`, or null.
  const LspPingReplyPktInfo *reply(U32 id, U32 seq) const {
    const LspPingReplyPktInfo *info =
        status(id)->replyPktInfo().find(Orv::U8(seq));
    return info && info->seqNum == seq ? info : nullptr;
  }

  Orv::Ptr<Kiv::TimerWheel> wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time{wheel, start};
  Netsim::Network network{wheel};
  Netsim::Router &a = network.routerIs("a", IpAddr(0x0a000001));
  Netsim::Router &b = network.routerIs("b", bAddr);
};

TEST(PingEndToEnd, ClientIsEnabledOnceItsInterfaceHasAModuleAndGetsEveryReply) {
  TwoRouters net(false);
  auto config = net.client(1, implicitNull, bAddr);
  EXPECT_EQ(config->reason(), "Transmit Interface is not ready");
  net.time.runFor(5);
  EXPECT_EQ(net.b.framesReceived(), 0u);

  net.aUp();
  EXPECT_EQ(config->reason(), "Enabled");
  net.time.runFor(10);
  EXPECT_EQ(net.status(1)->sequenceNum(), 3u);
  EXPECT_EQ(net.b.requestsAnswered(), 3u);
  ASSERT_EQ(net.status(1)->replyPktInfo().size(), 3u);
  for (U32 seq = 1; seq <= 3; ++seq) {
    const LspPingReplyPktInfo *info = net.reply(1, seq);
    ASSERT_NE(info, nullptr) << seq;
    EXPECT_EQ(info->retCode, LspPingReturnCode::repRouterEgress);
    EXPECT_EQ(info->replyHost, Wirx::IpGenAddr(bAddr));
    EXPECT_EQ(info->roundTrip, roundTrip) << "the link each way";
    EXPECT_TRUE(!info->intfAndLabelStackInfo) << "unlabelled: no TLV";
    EXPECT_TRUE(info->downstreamMappingInfo.empty());
  }
}

// Every client's replies find it by its sender handle while they all run.
TEST(PingEndToEnd, ReturnCodesOfTheResponderReachTheClients) {
  struct Case {
    const char *name;
    U32 label;
    IpAddr fec;
    LspPingReturnCode code;
  };
  const Case cases[] = {
      {"egress", implicitNull, bAddr, LspPingReturnCode::repRouterEgress},
      {"transit", 1000, farAddr, LspPingReturnCode::labelSwitchedAtStackDep},
      {"another FEC's label", 1001, farAddr,
       LspPingReturnCode::labelMappingMismatch},
      {"labelled to the egress", 1000, bAddr,
       LspPingReturnCode::labelMappingMismatch},
      {"no such label", 5000, farAddr,
       LspPingReturnCode::labelSwitchedNoMplsFwd},
      {"no binding", 1000, IpAddr(0x0a000009),
       LspPingReturnCode::noMappingForFec},
  };
  TwoRouters net;
  U32 id = 0;
  for (const Case &c : cases) {
    net.client(++id, c.label, c.fec, 2);
  }
  net.time.runFor(10);
  id = 0;
  for (const Case &c : cases) {
    ++id;
    for (U32 seq = 1; seq <= 2; ++seq) {
      const LspPingReplyPktInfo *info = net.reply(id, seq);
      ASSERT_NE(info, nullptr) << c.name;
      EXPECT_EQ(info->retCode, c.code) << c.name;
    }
  }
}

TEST(PingEndToEnd, ClientStopsWhileItsInterfaceHasNoAddress) {
  TwoRouters net;
  auto config = net.client(1, implicitNull, bAddr, -1);
  net.time.runFor(3.5);
  EXPECT_EQ(net.b.framesReceived(), 3u);

  net.a.intfAddrDel(eth1, aIntfAddr);
  EXPECT_EQ(config->reason(), "Transmit Interface is not ready");
  EXPECT_FALSE(config->enabled());
  net.time.runFor(10);
  EXPECT_EQ(net.b.framesReceived(), 3u);
  EXPECT_EQ(net.status(1)->sequenceNum(), 3u);

  net.a.intfAddrIs(eth1, aIntfAddr, 30);
  EXPECT_EQ(config->reason(), "Enabled");
  net.time.runFor(1.5);
  EXPECT_EQ(net.status(1)->sequenceNum(), 4u);
  EXPECT_NE(net.reply(1, 4), nullptr);
}

TEST(PingEndToEnd, RepliesToADeletedClientAreDropped) {
  TwoRouters net;
  net.client(1, implicitNull, bAddr, 1);
  net.client(2, implicitNull, bAddr, 1);
  // Both requests are answered; the replies are on their way back.
  net.time.runFor(1 + 1.5 * linkDelay);
  EXPECT_EQ(net.b.requestsAnswered(), 2u);
  net.a.clientConfigs()->pingClientConfigDel(1);
  EXPECT_EQ(net.status(1), nullptr);
  net.time.runFor(1);
  EXPECT_EQ(net.a.clientUdpPam()->rxQueued(), 0u) << "read and dropped";
  EXPECT_EQ(net.status(1), nullptr);
  EXPECT_NE(net.reply(2, 1), nullptr);
}

// A clock that moves on each time it is read: the listener's work takes
// time, so its runs end on their budget.
struct TickingClock : Orv::Clock {
  explicit TickingClock(double t) : t(t) {}
  mutable double t;
  double now() const override { return t += 10e-6; }
};

TEST(PingEndToEnd, ThousandQueuedRepliesTakeSeveralListenerRuns) {
  TwoRouters net;
  auto config = net.client(1, implicitNull, bAddr, 1000);
  config->txRateIs(0);
  struct : Orv::Reactor {
    U32 records = 0;
  } watcher;
  net.time.runFor(1 + 1.5 * linkDelay);
  watcher.watch(*net.status(1), LspPing::LspPingClientStatus::replyPktInfoAttr,
                [&](const Orv::U8 &) { ++watcher.records; });
  EXPECT_EQ(net.b.requestsAnswered(), 1000u) << "all sent at once";

  // The replies arrive together; the listener takes them in runs of its
  // budget, each run after the first on a pass of the wheel.
  TickingClock clock(net.time.now() + linkDelay);
  Orv::clockIs(&clock);
  int runs = 0;
  do {
    net.wheel->fireExpired();
    ++runs;
  } while (net.a.clientUdpPam()->rxQueued() != 0 && runs < 100);
  Orv::clockIs(nullptr);
  EXPECT_EQ(net.a.clientUdpPam()->rxQueued(), 0u);
  EXPECT_GT(runs, 2);
  EXPECT_EQ(watcher.records, 1000u);
  EXPECT_EQ(net.status(1)->replyPktInfo().size(), 256u);
  EXPECT_EQ(net.reply(1, 1000)->retCode, LspPingReturnCode::repRouterEgress);
}

} // namespace
