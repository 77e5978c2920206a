// A ping client hosted as a router's agent hosts it, built against the
// installed library only, pinging an echo responder in the same process.
// The agent's duties: hand the client root its interface platform (interface
// status, kernel devices, the default VRF's addresses), a UDP module for the
// replies and its timer wheel, open a raw packet-access module for every
// interface the client asks for, then configure clients and read their
// statuses. Everything runs on one thread, the agent's event loop: here the
// timer wheel runs on virtual time and the modules are in memory, so that
// the program carries the request to the responder and the reply back.
#include <iostream>
#include <vector>

#include "Kiv/VirtualTime.h"
#include "LspPing/LspPingConstant.h"
#include "LspPing/LspPingReqHandler.h"
#include "LspPing/LspPingUtilRoot.h"
#include "MplsUtils/EthPktParser.h"
#include "Orv/Enum.h"
#include "Orv/Reactor.h"
#include "Wirx/MemPam.h"
#include "Wirx/MemUdpPam.h"

namespace {

const Wirx::IntfId eth1("Ethernet1");
const Wirx::IpAddr clientAddr(0x0a010001);    // 10.1.0.1, on Ethernet1
const Wirx::IpAddr responderAddr(0x0a000002); // 10.0.0.2
const Orv::U16 clientPort = 49152;

// The router at the other end of Ethernet1: the egress of its own address,
// 10.0.0.2/32, which LDP binds to implicit null (3).
struct Responder {
  Responder() {
    Mpls::CommonLibEntry egress;
    egress.labelIs(Wirx::MplsLabel(3), true);
    bindings->ldpTable().is(
        Mpls::FwdEqvClass{Wirx::IpGenPrefix(responderAddr, 32)}, egress);
  }

  Orv::Ptr<Mpls::CommonLib> bindings = Orv::make<Mpls::CommonLib>("bindings");
  Orv::Ptr<Wirx::MemUdpPam> udp4 = Orv::make<Wirx::MemUdpPam>(
      "responder4", LspPing::LspPingConstant::lspPingUdpPort);
  Orv::Ptr<LspPing::LspPingReqHandler> handler =
      LspPing::lspPingReqHandlerFactory(
          Orv::make<Mpls::Hardware::Status>("hardware"),
          Orv::make<Mpls::Api::Status>("mpls"), bindings,
          Orv::make<Mpls::LfibStatus>("lfib"),
          Orv::make<Mesk::Fib::ForwardingStatus>("fib"),
          Orv::make<Mesk::Fib6::ForwardingStatus>("fib6"),
          Orv::make<Tunnel::TunnelTable::TiLfaTunnelTable>("tunnels"), udp4,
          Orv::make<Wirx::MemUdpPam>("responder6",
                                     LspPing::LspPingConstant::lspPingUdpPort),
          responderAddr, Wirx::Ip6Addr(), Orv::make<Rsvp::RsvpStatus>("rsvp"),
          Orv::make<Interface::DeviceIntfStatusDir>("intfs"));
};

} // namespace

int main() {
  // The agent's timer wheel: run by its Kiv::EventLoop in a router, on
  // virtual time here. Orv::now() follows the virtual clock.
  auto wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time(wheel, 1'800'000'000.0);

  // The interface platform the client side reads, as the system publishes
  // it.
  auto allIntfs = Orv::make<Interface::AllIntfStatusDir>("all");
  auto localIntfs = Orv::make<Interface::AllIntfStatusLocalDir>("local");
  auto kernelIntfs = Orv::make<KernelNetInfo::Status>("kni");
  auto vrfIp = Orv::make<Ip::VrfIpIntfStatus>("vrfIp", L3::VrfName("default"));
  auto vrfIp6 =
      Orv::make<Ip6::VrfIp6IntfStatus>("vrfIp6", L3::VrfName("default"));
  // The UDP module the replies arrive on: a socket on the clients' source
  // port in a router.
  auto clientUdp = Orv::make<Wirx::MemUdpPam>("client", clientPort);

  // The library's root, created by name, starts the client side on that
  // platform.
  auto utilRoot = LspPing::lspPingUtilRootFactory(Orv::Name("embed"));
  auto clientRoot = utilRoot->lspPingClientRootIs(
      allIntfs, localIntfs, kernelIntfs, vrfIp, vrfIp6, clientUdp, wheel);
  // The raw module of each interface the client side wants one on: an
  // AF_PACKET socket on the interface's device in a router, memory here.
  std::vector<Orv::Ptr<Wirx::MemPam>> rawPams;
  clientRoot->lspPingEthDevPamManager()->ethDevPamManager()->pamOpenerIs(
      [&rawPams](const Interface::EthDevPamParams &params) {
        rawPams.push_back(
            Orv::make<Wirx::MemPam>(Orv::Name(params.deviceName)));
        return Orv::Ptr<Wirx::Pam>(rawPams.back());
      });

  // Ethernet1 comes up: its status with the MTU, its kernel device and its
  // address. An interface with an address gets a raw module.
  allIntfs->intfStatusIs(eth1)->mtuIs(1500);
  kernelIntfs->kernelIntfIs(
      eth1, KernelNetInfo::KernelIntf{"et1",
                                      Wirx::NamespaceName::defaultNamespace()});
  vrfIp->addrIs(eth1, clientAddr, 30);

  // One client: one request on Ethernet1 for the LDP FEC 10.0.0.2/32 with
  // the implicit-null label, the reply by UDP to the client's port.
  const Orv::U32 clientId = 1;
  auto config =
      clientRoot->lspPingClientConfigColl()->pingClientConfigIs(clientId);
  config->tunnelTypeIs(LspPing::LspPingTunnelType::tunnelLdpIpv4);
  config->dstPrefixIs(Wirx::IpGenPrefix(responderAddr, 32));
  config->txIntfIdIs(eth1);
  config->srcIpAddrIs(clientAddr);
  config->dstIpAddrIs(Wirx::IpAddr(0x7f000001));
  config->srcUdpPortIs(clientPort);
  config->srcEthAddrIs(*Wirx::EthAddr::fromString("02:00:00:00:01:01"));
  config->tunnelNexthopEthAddrIs(
      *Wirx::EthAddr::fromString("02:00:00:00:02:01"));
  config->mplsLabelIs(0, Wirx::MplsLabel(3));
  config->mplsTtlIs(0, 255);
  config->txRateIs(1);
  config->pktDelayIs(0);
  config->txCountIs(1);

  // The client's status records each reply; the agent watches it.
  const auto status =
      clientRoot->lspPingClientStatusColl()->pingClientStatus(clientId);
  int replies = 0;
  struct : Orv::Reactor {
  } watcher;
  watcher.watch(*status, LspPing::LspPingClientStatus::replyPktInfoAttr,
                [&](const Orv::U8 &slot) {
                  const LspPing::LspPingReplyPktInfo &info =
                      status->replyPktInfo()[slot];
                  std::cout << "seq=" << info.seqNum << " reply from "
                            << info.replyHost << ": "
                            << Orv::stringValue(info.retCode)
                            << ", time=" << info.roundTrip / 1000.0 << " ms\n"
                            << "record: " << info << "\n";
                  ++replies;
                });

  // The request leaves on Ethernet1's raw module; 10 ms later it reaches
  // the responder, whose reply reaches the client 10 ms after that.
  Responder responder;
  time.runFor(0.010);
  for (const Wirx::MemPam::Frame &frame : rawPams.front()->frames()) {
    const MplsUtils::EthPktParser eth(
        Wirx::Pkt::copyOf(frame.data(), Orv::U32(frame.size())));
    if (eth.valid() &&
        eth.dstPort() == LspPing::LspPingConstant::lspPingUdpPort) {
      responder.handler->processPkt(eth);
    }
  }
  time.runFor(0.010);
  for (const Wirx::UdpDatagram &reply : responder.udp4->datagrams()) {
    clientUdp->rxPktIs(reply.srcAddr, reply.srcPort,
                       Wirx::Pkt::copyOf(reply.payload.data(),
                                         Orv::U32(reply.payload.size())));
  }
  time.runFor(1.0);

  // The client side goes before the platform it was started on.
  clientRoot = nullptr;
  utilRoot->lspPingClientRootDel();
  return replies == 1 ? 0 : 1;
}
