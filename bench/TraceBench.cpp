// A whole LSP trace through the in-process network: ten routers in a line,
// the ingress, eight transit routers that answer with their downstream
// mapping, and the egress. Each trace is a session of its own (its client
// configured, nine requests with TTL 1 to 9, each carrying the mapping the
// hop before answered with, its client removed); the network's delays cost
// nothing but their timers on virtual time, so the figure is CPU.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "Kiv/VirtualTime.h"
#include "Netsim/Network.h"
#include "Netsim/SessionHost.h"
#include "Session/TraceSession.h"

namespace {

using Orv::U32;
using Wirx::IpAddr;
using Wirx::MplsLabel;

constexpr U32 routers = 10;
const Wirx::IntfId eth1("Ethernet1");
const Wirx::IntfId eth2("Ethernet2");

IpAddr routerAddr(U32 i) { return IpAddr(0x0a000001 + i); }

Wirx::EthAddr mac(U32 router, U32 intf) {
  return Wirx::EthAddr({0x02, 0, 0, 0, Orv::U8(router), Orv::U8(intf)});
}

// Router i's Ethernet2 is linked to router i+1's Ethernet1. Router i binds
// the egress's address to label 1000 + i and swaps it for the next one's;
// the last transit router pops.
void lineIs(Netsim::Network &network, std::vector<Netsim::Router *> &line) {
  const Wirx::IpGenPrefix fec(routerAddr(routers - 1), 32);
  for (U32 i = 0; i < routers; ++i) {
    line.push_back(&network.routerIs("r" + std::to_string(i), routerAddr(i)));
  }
  for (U32 i = 0; i + 1 < routers; ++i) {
    const IpAddr subnet(0x0a010000 | i << 8);
    line[i]->intfIs(eth2, mac(i, 2), IpAddr(subnet.value() | 1), 30);
    line[i + 1]->intfIs(eth1, mac(i + 1, 1), IpAddr(subnet.value() | 2), 30);
    network.linkIs(*line[i], eth2, *line[i + 1], eth1, 0.001);
  }
  line[0]->forwardingState().fecRouteIs(fec, eth2, routerAddr(1),
                                        {MplsLabel(1001)});
  for (U32 i = 1; i + 1 < routers; ++i) {
    const Netsim::ForwardingState &state = line[i]->forwardingState();
    state.ldpBindingIs(fec, MplsLabel(1000 + i));
    std::vector<MplsLabel> out;
    if (i + 2 < routers) {
      out.push_back(MplsLabel(1001 + i));
    }
    state.labelRouteIs(MplsLabel(1000 + i), {{eth2, routerAddr(i + 1), out}});
  }
  line.back()->forwardingState().ldpBindingIs(fec, MplsLabel(3));
}

void trace(benchmark::State &state) {
  auto wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time(wheel, 1'800'000'000.0);
  Netsim::Network network(wheel);
  std::vector<Netsim::Router *> line;
  lineIs(network, line);
  Netsim::SessionHost host(*line[0]);
  Session::Target target;
  target.fec = Wirx::IpGenPrefix(routerAddr(routers - 1), 32);
  Session::TraceSession::Options options;
  options.maxTtl = routers;

  U32 hops = 0;
  bool complete = true;
  for (auto _ : state) {
    bool done = false;
    Session::TraceSession session(
        host, 1, target, options,
        {[&](const Session::Hop &) { ++hops; },
         [&](const Session::Trace &result) {
           done = true;
           complete =
               complete && result.reachedEgress() &&
               result.paths[0].hops.size() == routers - 1 &&
               result.paths[0].hops[routers - 3].reply.mappings.size() == 1;
         }});
    while (!done) {
      time.runFor(1);
    }
  }
  if (!complete) {
    state.SkipWithError("a trace did not reach the egress hop by hop");
  }
  state.counters["hops_per_s"] =
      benchmark::Counter(double(hops), benchmark::Counter::kIsRate);
}
BENCHMARK(trace)->Unit(benchmark::kMicrosecond);

} // namespace
