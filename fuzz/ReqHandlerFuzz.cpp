// Feeds arbitrary frames through the Ethernet parser into the echo
// responder, against a router with bindings, a transit label with vias of
// both kinds and a TI-LFA tunnel. Nothing a packet holds may crash it, read
// outside the packet, leak or reach a fatal assertion.
#include <cstddef>
#include <cstdint>

#include "LspPing/LspPingReqHandler.h"
#include "Mpls/LfibLabelAction.h"
#include "Wirx/MemUdpPam.h"
#include "fuzz/FuzzInput.h"

namespace {

using Wirx::IpAddr;
using Wirx::MplsLabel;

Mpls::LfibVia via(const char *intf, Orv::U32 nexthop, Orv::U32 outLabel) {
  Mpls::LfibVia v;
  v.intfId = Wirx::IntfId(intf);
  v.nexthop = IpAddr(nexthop);
  v.labelAction = Mpls::LfibLabelAction::swap;
  v.labelOp.push(MplsLabel(outLabel));
  return v;
}

struct Router {
  Router() {
    const Mpls::FwdEqvClass fec{Wirx::IpGenPrefix(IpAddr(0x0a090909), 32)};
    Mpls::CommonLibEntry binding;
    binding.labelIs(MplsLabel(1000), true);
    binding.labelIs(MplsLabel(3), true);
    lib->ldpTable().is(fec, binding);
    lib->tableIs("isisV4").is(fec, binding);

    for (Orv::U32 label : {1000u, 1001u}) {
      lfib->routeIs(Mpls::LfibRoute{Mpls::RouteKey::fromLabel(MplsLabel(label)),
                                    Mpls::LfibViaSetKey{label}, 8});
      hw->routeIs(Mpls::RouteKey::fromLabel(MplsLabel(label)),
                  Mpls::Hardware::RouteStatus{0});
    }
    Mpls::LfibViaSet plain;
    plain.viaType = Mpls::LfibViaType::viaTypeMpls;
    plain.viaIs(0, Mpls::LfibViaKey{10});
    plain.viaIs(1, Mpls::LfibViaKey{11});
    plain.viaIs(2, Mpls::LfibViaKey{12});
    lfib->viaSetIs(Mpls::LfibViaSetKey{1000}, plain);
    lfib->viaIs(Mpls::LfibViaKey{10}, via("Ethernet1", 0x0a010002, 2000));
    lfib->viaIs(Mpls::LfibViaKey{12}, via("TiLfaTunnel4", 0x0a020002, 3000));
    Tunnel::TunnelTable::TiLfaTunnelTableEntry tunnel;
    tunnel.intfId = Wirx::IntfId("Ethernet2");
    tunnel.nexthop = IpAddr(0x0a030002);
    tunnel.labelStack.push(MplsLabel(4000));
    tiLfa->tunnelIs(Tunnel::TunnelId(4), tunnel);

    Mpls::LfibViaSet extFec;
    extFec.viaType = Mpls::LfibViaType::viaTypeExtFec;
    extFec.viaIs(0, Mpls::LfibViaKey{20});
    extFec.viaIs(1, Mpls::LfibViaKey{21});
    lfib->viaSetIs(Mpls::LfibViaSetKey{1001}, extFec);
    lfib->extFecViaIs(Mpls::LfibViaKey{20},
                      Mpls::LfibExtFecVia{Mpls::LfibLabelAction::pop, fec,
                                          Wirx::IntfId("Ethernet1")});
    Mesk::FibFec fibFec;
    Mesk::FibVia fibVia;
    fibVia.intfId = Wirx::IntfId("Ethernet1");
    fibVia.nexthop = IpAddr(0x0a010002);
    fibVia.labelAction = Mpls::LfibLabelAction::swap;
    fibVia.labelStack.push(MplsLabel(5000));
    fibFec.viaIs(0, fibVia);
    fib->fecIs(fec, fibFec);
  }

  Orv::Ptr<Mpls::Hardware::Status> hw = Orv::make<Mpls::Hardware::Status>("hw");
  Orv::Ptr<Mpls::CommonLib> lib = Orv::make<Mpls::CommonLib>("lib");
  Orv::Ptr<Mpls::LfibStatus> lfib = Orv::make<Mpls::LfibStatus>("lfib");
  Orv::Ptr<Mesk::Fib::ForwardingStatus> fib =
      Orv::make<Mesk::Fib::ForwardingStatus>("fib");
  Orv::Ptr<Tunnel::TunnelTable::TiLfaTunnelTable> tiLfa =
      Orv::make<Tunnel::TunnelTable::TiLfaTunnelTable>("tilfa");
  Orv::Ptr<Wirx::MemUdpPam> pam4 = Orv::make<Wirx::MemUdpPam>("udp4", 3503);
  Orv::Ptr<Wirx::MemUdpPam> pam6 = Orv::make<Wirx::MemUdpPam>("udp6", 3503);
  Orv::Ptr<LspPing::LspPingReqHandler> handler =
      LspPing::lspPingReqHandlerFactory(
          hw, Orv::make<Mpls::Api::Status>("api"), lib, lfib, fib,
          Orv::make<Mesk::Fib6::ForwardingStatus>("fib6"), tiLfa, pam4, pam6,
          IpAddr(0x0a0000fe), Wirx::Ip6Addr(),
          Orv::make<Rsvp::RsvpStatus>("rsvp"),
          Orv::make<Interface::DeviceIntfStatusDir>("intfs"));
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  static Router router;
  auto pkt = FuzzInput::packetOf(data, size);
  if (!pkt) {
    return -1;
  }
  MplsUtils::EthPktParser eth(pkt);
  FuzzInput::consume(router.handler->processPkt(eth));
  router.pam4->clear();
  router.pam6->clear();
  return 0;
}
