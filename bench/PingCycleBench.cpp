// One complete ping cycle through the in-process network: router a's
// transmit state machine builds a request with the generator and sends it on
// its interface's module, the link carries it to router b, whose host code
// parses it and hands it to the responder, whose reply crosses back to a's
// UDP module, where the listener passes it to the receive state machine,
// which records it in the client's status. Virtual time: the figure is CPU.
#include <benchmark/benchmark.h>

#include "Kiv/VirtualTime.h"
#include "LspPing/LspPingAddrType.h"
#include "Netsim/Network.h"

namespace {

using Orv::U32;
using Wirx::IpAddr;

const Wirx::IntfId eth1("Ethernet1");

// With `transit`, the request carries a Downstream Mapping TLV and b, a
// transit router for the label, answers with its own mapping; otherwise b is
// the egress and the reply carries no TLV.
void pingCycle(benchmark::State &state, bool transit) {
  auto wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time(wheel, 1'800'000'000.0);
  Netsim::Network network(wheel);
  Netsim::Router &a = network.routerIs("a", IpAddr(0x0a000001));
  Netsim::Router &b = network.routerIs("b", IpAddr(0x0a000002));
  a.intfIs(eth1, *Wirx::EthAddr::fromString("02:00:00:00:0a:01"),
           IpAddr(0x0a010001), 30);
  b.intfIs(eth1, *Wirx::EthAddr::fromString("02:00:00:00:0b:01"),
           IpAddr(0x0a010002), 30);
  network.linkIs(a, eth1, b, eth1, 0.001);
  const Wirx::IpGenPrefix fec(IpAddr(transit ? 0x0a000003 : 0x0a000002), 32);
  const Wirx::MplsLabel label(transit ? 1000 : 3);
  b.forwardingState().ldpBindingIs(fec, label);
  b.forwardingState().swapRouteIs(Wirx::MplsLabel(1000),
                                  Wirx::IntfId("Ethernet2"), IpAddr(0x0a020002),
                                  Wirx::MplsLabel(2000));

  // An LDP ping, one request a second without end.
  auto config = a.clientConfigs()->pingClientConfigIs(1);
  config->tunnelTypeIs(LspPing::LspPingTunnelType::tunnelLdpIpv4);
  config->dstPrefixIs(fec);
  config->txIntfIdIs(eth1);
  config->srcIpAddrIs(IpAddr(0x0a010001));
  config->dstIpAddrIs(IpAddr(0x7f000001));
  config->srcUdpPortIs(Netsim::Router::clientUdpPort);
  config->srcEthAddrIs(a.ethAddr(eth1));
  config->tunnelNexthopEthAddrIs(b.ethAddr(eth1));
  config->mplsLabelIs(0, label);
  if (transit) {
    LspPing::LspPingDownstreamLabelStack labels;
    labels.labelEntryIs(0, LspPing::LspPingDownstreamLabelEntry::fromWord(
                               (1000 << 12) | 0x100));
    labels.size = 1;
    config->dsMappingInfoIs(LspPing::LspPingDownstreamMappingInfo(
        1500, Orv::U8(LspPing::LspPingAddrType::ipv4Numbered), 0,
        IpAddr(0x0a010002), IpAddr(0x0a010002), 0, 0, Wirx::IpGenAddr(), {},
        labels, true));
  }
  // b answers a transit request only when its TTL runs out there.
  config->mplsTtlIs(0, 1);
  config->txRateIs(1);
  config->pktDelayIs(0.5);
  config->txCountIs(-1);
  const auto status = a.clientStatuses()->pingClientStatus(1);

  // Each second holds one request sent and its reply recorded.
  for (auto _ : state) {
    time.runFor(1);
  }
  const U32 cycles = U32(state.iterations());
  const LspPing::LspPingReplyPktInfo &last =
      status->replyPktInfo()[Orv::U8(cycles)];
  if (b.requestsAnswered() != cycles || last.seqNum != cycles ||
      last.downstreamMappingInfo.size() != (transit ? 1u : 0u)) {
    state.SkipWithError("a cycle did not complete");
  }
  state.counters["cycles_per_s"] =
      benchmark::Counter(double(cycles), benchmark::Counter::kIsRate);
}
BENCHMARK_CAPTURE(pingCycle, egress, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(pingCycle, transitWithMapping, true)
    ->Unit(benchmark::kMicrosecond);

} // namespace
