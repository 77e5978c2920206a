#include "tools/DemoCommand.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <string>
#include <utility>

#include "Kiv/VirtualTime.h"
#include "LspPing/LspPingHdr.h"
#include "LspPing/LspPingReturnCode.h"
#include "Netsim/Network.h"
#include "Orv/Enum.h"
#include "Orv/Reactor.h"

namespace LspPingTool {

namespace {

using Orv::U32;
using Orv::U8;
using Wirx::IpAddr;
using Wirx::MplsLabel;

constexpr double start = 1'800'000'000.0;
// Whole microseconds and exact in binary, so that the echo time stamps,
// which carry whole microseconds, measure it exactly.
constexpr double linkDelay = 1.0 / 64;
constexpr U32 requests = 5;
// How long the last request's reply is waited for.
constexpr double timeout = 2.0;
constexpr U32 implicitNull = 3;

const Wirx::IntfId eth1("Ethernet1");
const Wirx::IntfId eth2("Ethernet2");
const IpAddr pe1Eth1(0x0a010001);   // 10.1.0.1
const IpAddr pe2Addr(0x0a000002);   // 10.0.0.2
const IpAddr farAddr(0x0a000003);   // 10.0.0.3, behind pe2: label 1000
const IpAddr otherAddr(0x0a000004); // 10.0.0.4, behind pe2: label 1001

Wirx::EthAddr mac(const char *text) { return *Wirx::EthAddr::fromString(text); }

std::string ms(U32 micros) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", micros / 1000.0);
  return text;
}

// pe1's Ethernet1 is linked to pe2's Ethernet1. pe2 is the egress of its own
// address and swaps labels 1000 (10.0.0.3/32) and 1001 (10.0.0.4/32)
// towards its Ethernet2.
class Lab {
public:
  Lab() {
    pe1_.intfIs(eth1, mac("02:00:00:00:01:01"), pe1Eth1, 30);
    pe2_.intfIs(eth1, mac("02:00:00:00:02:01"), IpAddr(0x0a010002), 30);
    pe2_.intfIs(eth2, mac("02:00:00:00:02:02"), IpAddr(0x0a020001), 30);
    network_.linkIs(pe1_, eth1, pe2_, eth1, linkDelay);
    const Netsim::ForwardingState &state = pe2_.forwardingState();
    state.ldpBindingIs(Wirx::IpGenPrefix(pe2Addr, 32), MplsLabel(implicitNull));
    state.ldpBindingIs(Wirx::IpGenPrefix(farAddr, 32), MplsLabel(1000));
    state.ldpBindingIs(Wirx::IpGenPrefix(otherAddr, 32), MplsLabel(1001));
    state.swapRouteIs(MplsLabel(1000), eth2, IpAddr(0x0a020002),
                      MplsLabel(2000));
    state.swapRouteIs(MplsLabel(1001), eth2, IpAddr(0x0a020002),
                      MplsLabel(2001));
    // The client's status has no subcode: it is read off the wire.
    network_.datagramTapIs(
        [this](const Netsim::Router &, const Netsim::Datagram &datagram) {
          LspPing::LspPingHdr hdr;
          if (datagram.payload->frontBytes() >= sizeof hdr) {
            std::memcpy(&hdr, datagram.payload->data(), sizeof hdr);
            subcodes_[{hdr.senderHandle(), hdr.sequenceNumber()}] =
                hdr.returnSubcode;
          }
        });
  }

  // Pings `fec` from pe1 with one label, printing each reply as it comes
  // and the summary after the last request's timeout.
  void ping(U32 id, const IpAddr &fec, U32 label, U8 ttl, std::ostream &out) {
    const Wirx::IpGenPrefix prefix(fec, 32);
    out << "LSP ping " << prefix.stringValue() << " (LDP), label " << label
        << (label == implicitNull ? " (implicit null)" : "")
        << (ttl == 255 ? "" : ", TTL " + std::to_string(ttl)) << ", from "
        << pe1_.name() << " on " << eth1 << ":\n";
    auto config = pe1_.clientConfigs()->pingClientConfigIs(id);
    config->tunnelTypeIs(LspPing::LspPingTunnelType::tunnelLdpIpv4);
    config->dstPrefixIs(prefix);
    config->txIntfIdIs(eth1);
    config->srcIpAddrIs(pe1Eth1);
    config->dstIpAddrIs(IpAddr(0x7f000001));
    config->srcUdpPortIs(Netsim::Router::clientUdpPort);
    config->srcEthAddrIs(pe1_.ethAddr(eth1));
    config->tunnelNexthopEthAddrIs(pe2_.ethAddr(eth1));
    config->mplsLabelIs(0, MplsLabel(label));
    config->mplsTtlIs(0, ttl);
    config->txRateIs(1);
    config->pktDelayIs(0);
    config->txCountIs(requests);

    const auto status = pe1_.clientStatuses()->pingClientStatus(id);
    Stats stats;
    struct : Orv::Reactor {
    } watcher;
    watcher.watch(*status, LspPing::LspPingClientStatus::replyPktInfoAttr,
                  [&](const U8 &slot) {
                    const LspPing::LspPingReplyPktInfo &info =
                        status->replyPktInfo()[slot];
                    out << "seq=" << info.seqNum << " reply from "
                        << info.replyHost << ": "
                        << Orv::stringValue(info.retCode) << " (subcode "
                        << U32(subcodes_[{id, info.seqNum}])
                        << "), time=" << ms(info.roundTrip) << " ms\n";
                    stats.add(info.roundTrip);
                  });
    time_.runFor((requests - 1) * config->txRate() + timeout);
    summary(prefix, status->sequenceNum(), stats, out);
  }

private:
  struct Stats {
    U32 received = 0;
    U32 min = 0;
    U32 max = 0;
    double sum = 0;
    void add(U32 roundTrip) {
      min = received == 0 ? roundTrip : std::min(min, roundTrip);
      max = std::max(max, roundTrip);
      sum += roundTrip;
      ++received;
    }
  };

  static void summary(const Wirx::IpGenPrefix &prefix, U32 sent,
                      const Stats &stats, std::ostream &out) {
    const U32 lost = sent - std::min(sent, stats.received);
    out << "--- " << prefix.stringValue() << " LSP ping statistics ---\n"
        << sent << " requests sent, " << stats.received << " replies received, "
        << (sent ? lost * 100 / sent : 0) << "% loss\n";
    if (stats.received != 0) {
      out << "round-trip min/avg/max = " << ms(stats.min) << "/"
          << ms(U32(stats.sum / stats.received + 0.5)) << "/" << ms(stats.max)
          << " ms\n";
    }
  }

  Orv::Ptr<Kiv::TimerWheel> wheel_ = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time_{wheel_, start};
  Netsim::Network network_{wheel_};
  Netsim::Router &pe1_ = network_.routerIs("pe1", IpAddr(0x0a000001));
  Netsim::Router &pe2_ = network_.routerIs("pe2", pe2Addr);
  // Each reply's subcode, by sender handle and sequence number.
  std::map<std::pair<U32, U32>, U8> subcodes_;
};

void runDemo(std::ostream &out) {
  Lab lab;
  out << "Two routers in one process, on virtual time: pe1 Ethernet1 to pe2 "
         "Ethernet1, "
      << ms(U32(linkDelay * 1e6)) << " ms each way.\n\n"
      << "A healthy LSP: pe2 is the egress of 10.0.0.2/32.\n";
  lab.ping(1, pe2Addr, implicitNull, 255, out);
  out << "\nA broken LSP: pe1 sends label 1001, but pe2 bound 10.0.0.3/32 to "
         "label 1000.\n";
  // pe2 would switch label 1001 on: with TTL 1 it answers for itself.
  lab.ping(2, farAddr, 1001, 1, out);
}

} // namespace

void addDemoCommand(CLI::App &app, int &status) {
  CLI::App *cmd = app.add_subcommand(
      "demo",
      "Ping two LSPs, a healthy one and a broken one, through an in-process "
      "network of two routers that run the library's ping client and echo "
      "responder on virtual time: no root, no setup. Prints a line per reply "
      "(sequence number, return code and subcode, replying address, round "
      "trip) and a summary per LSP.");
  cmd->callback([&status] {
    runDemo(std::cout);
    status = 0;
  });
}

} // namespace LspPingTool
