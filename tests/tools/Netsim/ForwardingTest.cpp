// The routers' data plane: what leaves a router for each kind of label
// route, seen as the next router receives it.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Kiv/VirtualTime.h"
#include "LspPing/LspPingPktGen.h"
#include "LspPing/LspPingTlvType.h"
#include "MplsUtils/EthPktParser.h"
#include "Netsim/Network.h"

namespace Netsim {
namespace {

using Orv::U32;
using Orv::U8;
using Wirx::IpAddr;
using Wirx::MplsLabel;

const Wirx::IntfId eth1("Ethernet1");
const Wirx::IntfId eth2("Ethernet2");
const Wirx::IntfId eth3("Ethernet3");

Wirx::EthAddr mac(U32 router, U32 intf) {
  return *Wirx::EthAddr::fromString("02:00:00:00:0" + std::to_string(router) +
                                    ":0" + std::to_string(intf));
}

// a sends to b, which switches towards c (Ethernet2) or d (Ethernet3).
struct Lab {
  Lab() {
    a.intfIs(eth1, mac(1, 1), IpAddr(0x0a010101), 30);
    b.intfIs(eth1, mac(2, 1), IpAddr(0x0a010102), 30);
    b.intfIs(eth2, mac(2, 2), IpAddr(0x0a010201), 30);
    b.intfIs(eth3, mac(2, 3), IpAddr(0x0a010301), 30);
    c.intfIs(eth1, mac(3, 1), IpAddr(0x0a010202), 30);
    d.intfIs(eth1, mac(4, 1), IpAddr(0x0a010302), 30);
    network.linkIs(a, eth1, b, eth1);
    network.linkIs(b, eth2, c, eth1);
    network.linkIs(b, eth3, d, eth1);
    network.frameTapIs([this](const Router &to, const Wirx::IntfId &,
                              const Wirx::Pkt &pkt) {
      const MplsUtils::EthPktParser eth(pkt.data(), pkt.frontBytes());
      if (to.name() != "b") {
        arrivals.push_back(to.name() + " " + eth.labelStack().stringValue() +
                           " from " + eth.ethSrc().stringValue());
      }
    });
  }

  // An echo request to IP destination `dst` with `labels` (label, TTL),
  // from a to b.
  void send(const std::vector<std::pair<U32, U8>> &labels,
            U32 dst = 0x7f000001) {
    auto pkt = Wirx::Pkt::make();
    auto gen = LspPing::lspPingPktGenFactory(pkt);
    gen->initializedIs(true);
    gen->addEtherHdr(mac(2, 1), mac(1, 1), labels.empty() ? 0x0800 : 0x8847);
    for (std::size_t i = 0; i < labels.size(); ++i) {
      gen->addMplsHdr(labels[i].first, 0, i + 1 == labels.size(),
                      labels[i].second);
    }
    gen->addIpHdr(IpAddr(0x0a010101), IpAddr(dst), 1, 17);
    gen->addUdpHdr(49152, 3503);
    gen->addLspPingHdr(1, 0, 1, 2, 0, 0, 1, 1, 0, 0, 0, 0);
    gen->addLspPingTlvHdr(Orv::U16(LspPing::LspPingTlvType::TargetFecStack), 0);
    gen->addLspPingLdpIpv4SubTlv(IpAddr(0x0a000009), 32);
    gen->computeHdrLenChecksum();
    a.txFrameIs(eth1, pkt);
    time.runFor(1);
  }

  Orv::Ptr<Kiv::TimerWheel> wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time{wheel, 1'800'000'000.0};
  Network network{wheel};
  Router &a = network.routerIs("a", IpAddr(0x0a000001));
  Router &b = network.routerIs("b", IpAddr(0x0a000002));
  Router &c = network.routerIs("c", IpAddr(0x0a000003));
  Router &d = network.routerIs("d", IpAddr(0x0a000004));
  const ForwardingState &bState = b.forwardingState();
  std::vector<std::string> arrivals;
};

TEST(Forwarding, EachLabelRouteSendsWhatTheNextRouterExpects) {
  using Via = ForwardingState::LabelVia;
  const IpAddr cAddr(0x0a000003);
  struct Case {
    const char *name;
    std::function<void(Lab &)> setUp;
    std::vector<std::pair<U32, U8>> sent;
    std::vector<std::string> arrivals;
    // Requests answered by b and by c, frames dropped by b.
    U32 bAnswered, cAnswered, bDropped;
    U32 dst = 0x7f000001;
  };
  const std::string fromB = " from 02:00:00:00:02:02";
  const Case cases[] = {
      {"swap",
       [&](Lab &lab) {
         lab.bState.swapRouteIs(MplsLabel(100), eth2, cAddr, MplsLabel(200));
       },
       {{100, 5}, {77, 9}},
       {"c [200/ttl=4, 77/bos/ttl=9]" + fromB},
       0,
       0,
       0},
      {"penultimate-hop pop",
       [&](Lab &lab) {
         lab.bState.labelRouteIs(MplsLabel(100), {Via{eth2, cAddr, {}}});
       },
       {{100, 5}},
       {"c []" + fromB},
       0,
       1,
       0},
      {"pop exposes a label with the lower TTL",
       [&](Lab &lab) {
         lab.bState.labelRouteIs(MplsLabel(100), {Via{eth2, cAddr, {}}});
       },
       {{100, 5}, {77, 9}},
       {"c [77/bos/ttl=4]" + fromB},
       0,
       0,
       0},
      {"explicit null, answered by the egress",
       [&](Lab &lab) {
         lab.bState.swapRouteIs(MplsLabel(100), eth2, cAddr, MplsLabel(0));
       },
       {{100, 5}},
       {"c [0/bos/ttl=4]" + fromB},
       0,
       1,
       0},
      {"TTL runs out",
       [&](Lab &lab) {
         lab.bState.swapRouteIs(MplsLabel(100), eth2, cAddr, MplsLabel(200));
       },
       {{100, 1}},
       {},
       1,
       0,
       0},
      {"TI-LFA repair tunnel pushes its labels",
       [&](Lab &lab) {
         lab.bState.tiLfaTunnelIs(7, eth2, cAddr,
                                  {MplsLabel(900), MplsLabel(901)});
         lab.bState.labelRouteIs(
             MplsLabel(100),
             {Via{Tunnel::TunnelTable::TiLfaTunnelTable::tunnelIntf(
                      Tunnel::TunnelId(7)),
                  cAddr,
                  {MplsLabel(200)}}});
       },
       {{100, 5}},
       {"c [900/ttl=4, 901/ttl=4, 200/bos/ttl=4]" + fromB},
       0,
       0,
       0},
      {"no label route", [](Lab &) {}, {{555, 5}}, {}, 0, 0, 1},
      {"more labels than a stack holds",
       [&](Lab &lab) {
         lab.bState.labelRouteIs(
             MplsLabel(100),
             {Via{eth2, cAddr, {MplsLabel(200), MplsLabel(201)}}});
       },
       std::vector<std::pair<U32, U8>>(16, {100, 5}),
       {},
       0,
       0,
       1},
      {"link down",
       [&](Lab &lab) {
         lab.bState.swapRouteIs(MplsLabel(100), eth2, cAddr, MplsLabel(200));
         lab.b.link(eth2)->upIs(false);
       },
       {{100, 5}},
       {},
       0,
       0,
       1},
      {"unlabelled, for b", [](Lab &) {}, {}, {}, 1, 0, 0},
      {"unlabelled, not for b", [](Lab &) {}, {}, {}, 0, 0, 1, 0x0a090909},
  };
  for (const Case &test : cases) {
    Lab lab;
    test.setUp(lab);
    lab.send(test.sent, test.dst);
    EXPECT_EQ(lab.arrivals, test.arrivals) << test.name;
    EXPECT_EQ(lab.b.requestsAnswered(), test.bAnswered) << test.name;
    EXPECT_EQ(lab.c.requestsAnswered(), test.cAnswered) << test.name;
    EXPECT_EQ(lab.b.framesDropped(), test.bDropped) << test.name;
  }
}

// Flows are spread by their IP destination: both ways get some, and each
// destination always takes the same one.
TEST(Forwarding, EcmpHashesTheIpDestination) {
  using Via = ForwardingState::LabelVia;
  Lab lab;
  lab.bState.labelRouteIs(MplsLabel(100),
                          {Via{eth2, IpAddr(0x0a000003), {MplsLabel(200)}},
                           Via{eth3, IpAddr(0x0a000004), {MplsLabel(300)}}});
  std::vector<std::string> first;
  for (int round = 0; round < 2; ++round) {
    lab.arrivals.clear();
    for (U32 host = 1; host <= 16; ++host) {
      lab.send({{100, 64}}, 0x7f000000 | host);
    }
    std::vector<std::string> ways;
    for (const std::string &arrival : lab.arrivals) {
      ways.push_back(arrival.substr(0, 1));
    }
    if (round == 0) {
      first = ways;
      EXPECT_EQ(std::count(ways.begin(), ways.end(), "c") +
                    std::count(ways.begin(), ways.end(), "d"),
                16);
      EXPECT_GT(std::count(ways.begin(), ways.end(), "c"), 2);
      EXPECT_GT(std::count(ways.begin(), ways.end(), "d"), 2);
    } else {
      EXPECT_EQ(ways, first);
    }
  }
  EXPECT_EQ(lab.b.framesForwarded(), 32u);
}

} // namespace
} // namespace Netsim
