#include <benchmark/benchmark.h>

#include "LspPing/LspPingPktGen.h"
#include "LspPing/LspPingReqHandler.h"
#include "LspPing/LspPingTlvType.h"
#include "Mpls/LfibLabelAction.h"
#include "Wirx/UdpPam.h"

namespace {

using namespace LspPing;
using Wirx::IpAddr;
using Wirx::MplsLabel;

constexpr U32 routes = 100'000;
constexpr U32 firstLabel = 100'000;

// Takes replies and lets them go: the figure is the responder's own cost.
class CountingUdpPam : public Wirx::UdpPam {
public:
  CountingUdpPam() : UdpPam("count", 3503) {}
  void txPktIs(const Orv::Ptr<Wirx::Pkt> &) override { ++replies; }
  Orv::U64 replies = 0;

private:
  void doGetRxPkt() override {}
};

Mpls::FwdEqvClass fecOf(U32 i) {
  return Mpls::FwdEqvClass{Wirx::IpGenPrefix(IpAddr(0x0a000000 + i), 32)};
}

// A transit router: every label has an LDP binding, a route and two vias.
struct Router {
  Router() {
    for (U32 i = 0; i < routes; ++i) {
      const MplsLabel label(firstLabel + i);
      Mpls::CommonLibEntry binding;
      binding.labelIs(label, true);
      lib->ldpTable().is(fecOf(i), binding);
      lfib->routeIs(Mpls::LfibRoute{Mpls::RouteKey::fromLabel(label),
                                    Mpls::LfibViaSetKey{i}, 8});
      Mpls::LfibViaSet ecmp;
      ecmp.viaType = Mpls::LfibViaType::viaTypeMpls;
      ecmp.viaIs(0, Mpls::LfibViaKey{2 * i});
      ecmp.viaIs(1, Mpls::LfibViaKey{2 * i + 1});
      lfib->viaSetIs(Mpls::LfibViaSetKey{i}, ecmp);
      for (U32 v = 0; v < 2; ++v) {
        Mpls::LfibVia via;
        via.intfId = Wirx::IntfId(v ? "Ethernet2" : "Ethernet1");
        via.nexthop = IpAddr(0x0a010002 + v);
        via.labelAction = Mpls::LfibLabelAction::swap;
        via.labelOp.push(MplsLabel(200'000 + i));
        lfib->viaIs(Mpls::LfibViaKey{2 * i + v}, via);
      }
      hw->routeIs(Mpls::RouteKey::fromLabel(label),
                  Mpls::Hardware::RouteStatus{0});
    }
  }

  Orv::Ptr<Mpls::Hardware::Status> hw = Orv::make<Mpls::Hardware::Status>("hw");
  Orv::Ptr<Mpls::CommonLib> lib = Orv::make<Mpls::CommonLib>("lib");
  Orv::Ptr<Mpls::LfibStatus> lfib = Orv::make<Mpls::LfibStatus>("lfib");
  Orv::Ptr<CountingUdpPam> pam = Orv::make<CountingUdpPam>();
  Orv::Ptr<LspPingReqHandler> handler = lspPingReqHandlerFactory(
      hw, Orv::make<Mpls::Api::Status>("api"), lib, lfib,
      Orv::make<Mesk::Fib::ForwardingStatus>("fib"),
      Orv::make<Mesk::Fib6::ForwardingStatus>("fib6"),
      Orv::make<Tunnel::TunnelTable::TiLfaTunnelTable>("tilfa"), pam, pam,
      IpAddr(0x0a0000fe), Wirx::Ip6Addr(), Orv::make<Rsvp::RsvpStatus>("rsvp"),
      Orv::make<Interface::DeviceIntfStatusDir>("intfs"));
};

// A labelled LDP request for route `i` asking for downstream mappings.
Orv::Ptr<Wirx::Pkt> transitRequest(U32 i) {
  auto pkt = Wirx::Pkt::make(0);
  auto gen = lspPingPktGenFactory(pkt);
  gen->initializedIs(true);
  gen->addEtherHdr(Wirx::EthAddr(), Wirx::EthAddr(), 0x8847);
  gen->addMplsHdr(firstLabel + i, 0, true, 255);
  gen->addIpHdr(IpAddr(0x0a000009), IpAddr(0x7f000001), 1, 17);
  gen->addUdpHdr(49152, 3503);
  gen->addLspPingHdr(1, 0, 1, 2, 0, 0, 7, i, 0xe0000000, 0, 0, 0);
  gen->addLspPingTlvHdr(U16(LspPingTlvType::TargetFecStack), 0);
  gen->addLspPingLdpIpv4SubTlv(IpAddr(0x0a000000 + i), 32);
  gen->computeHdrLenChecksum();
  LspPingDownstreamLabelStack stack;
  stack.labelEntryIs(0, LspPingDownstreamLabelEntry::fromWord(
                            ((firstLabel + i) << 12) | 0x100));
  stack.size = 1;
  gen->addLspPingDownstreamMappingTlv(
      1500, LspPingAddrType::ipv4Numbered, 0, IpAddr(0x0a000009),
      IpAddr(0x0a000009), LspPingMultipathType::noMultipath, 0, IpAddr(),
      LspPingMultipathBitset(), stack);
  gen->computeHdrLenChecksum();
  return pkt;
}

void transitWithDownstreamMapping(benchmark::State &state) {
  static Router router;
  constexpr U32 distinct = 1024;
  std::vector<Orv::Ptr<Wirx::Pkt>> requests;
  for (U32 i = 0; i < distinct; ++i) {
    requests.push_back(transitRequest((i * 7919) % routes));
  }
  U32 next = 0;
  for (auto _ : state) {
    MplsUtils::EthPktParser eth(requests[next++ % distinct]);
    benchmark::DoNotOptimize(router.handler->processPkt(eth));
  }
  state.counters["requests_per_s"] = benchmark::Counter(
      double(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(transitWithDownstreamMapping);

} // namespace
