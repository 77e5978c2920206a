// An echo responder hosted as a router's agent hosts it, built against the
// installed library only. The agent's duties: hand the responder its
// forwarding state and UDP modules for the replies, then give it every
// received frame that parses down to UDP port 3503. Here the state is a
// router that is the egress of 10.0.0.9/32, the modules keep the replies in
// memory, and the one frame is a request built with the library's packet
// generator, as it would arrive on an interface.
#include <algorithm>
#include <cstdio>

#include "Interface/DeviceIntfStatusDir.h"
#include "LspPing/LspPingConstant.h"
#include "LspPing/LspPingHdr.h"
#include "LspPing/LspPingPktGen.h"
#include "LspPing/LspPingReqHandler.h"
#include "LspPing/LspPingReturnCode.h"
#include "LspPing/LspPingTlvType.h"
#include "MplsUtils/EthPktParser.h"
#include "Orv/Enum.h"
#include "Wirx/MemUdpPam.h"

namespace {

const Wirx::IpAddr routerAddr(0x0a000009); // 10.0.0.9
const Wirx::IpAddr senderAddr(0x0a000001); // 10.0.0.1

// An echo request for the LDP FEC 10.0.0.9/32 from 10.0.0.1, unlabelled (the
// previous hop popped the last label), as an Ethernet frame.
Orv::Ptr<Wirx::Pkt> request() {
  auto frame = Wirx::Pkt::make(0);
  auto gen = LspPing::lspPingPktGenFactory(frame);
  gen->initializedIs(true);
  gen->addEtherHdr(*Wirx::EthAddr::fromString("02:00:00:00:00:09"),
                   *Wirx::EthAddr::fromString("02:00:00:00:00:01"), 0x0800);
  gen->addIpHdr(senderAddr, Wirx::IpAddr(0x7f000001), 1, 17);
  gen->addUdpHdr(49152, LspPing::LspPingConstant::lspPingUdpPort);
  // Version 1, a request (1) to be answered by UDP (2), sender's handle 1,
  // sequence number 1, sent at NTP second 0xe0000000.
  gen->addLspPingHdr(1, 0, 1, 2, 0, 0, 1, 1, 0xe0000000, 0, 0, 0);
  gen->addLspPingTlvHdr(Orv::U16(LspPing::LspPingTlvType::TargetFecStack), 0);
  gen->addLspPingLdpIpv4SubTlv(routerAddr, 32);
  // Fills in every length and checksum, once the message is complete.
  gen->computeHdrLenChecksum();
  return frame;
}

} // namespace

int main() {
  // The router's forwarding state, as its agents publish it. Every table
  // starts empty; LDP binds 10.0.0.9/32 to implicit null (3): this router is
  // the FEC's egress.
  auto hardware = Orv::make<Mpls::Hardware::Status>("hardware");
  auto mpls = Orv::make<Mpls::Api::Status>("mpls");
  auto bindings = Orv::make<Mpls::CommonLib>("bindings");
  auto lfib = Orv::make<Mpls::LfibStatus>("lfib");
  auto fib = Orv::make<Mesk::Fib::ForwardingStatus>("fib");
  auto fib6 = Orv::make<Mesk::Fib6::ForwardingStatus>("fib6");
  auto tunnels = Orv::make<Tunnel::TunnelTable::TiLfaTunnelTable>("tunnels");
  auto rsvp = Orv::make<Rsvp::RsvpStatus>("rsvp");
  auto intfs = Orv::make<Interface::DeviceIntfStatusDir>("intfs");
  Mpls::CommonLibEntry egress;
  egress.labelIs(Wirx::MplsLabel(3), true);
  bindings->ldpTable().is(Mpls::FwdEqvClass{Wirx::IpGenPrefix(routerAddr, 32)},
                          egress);

  // The UDP modules the replies leave by, one per family: sockets bound to
  // port 3503 in a router (Wirx::LinuxUdpPam in lspping), memory here.
  auto udp4 = Orv::make<Wirx::MemUdpPam>(
      "responder4", LspPing::LspPingConstant::lspPingUdpPort);
  auto udp6 = Orv::make<Wirx::MemUdpPam>(
      "responder6", LspPing::LspPingConstant::lspPingUdpPort);

  // The responder keeps nothing between requests and reads the tables as
  // they are when a request comes: the agents may change them at any time
  // on the same thread.
  auto responder = LspPing::lspPingReqHandlerFactory(
      hardware, mpls, bindings, lfib, fib, fib6, tunnels, udp4, udp6,
      routerAddr, Wirx::Ip6Addr(), rsvp, intfs);

  // Every frame goes through the Ethernet parser; what reaches UDP port 3503
  // goes to the responder, on the agent's event-loop thread.
  const MplsUtils::EthPktParser eth(request());
  if (!eth.valid() ||
      eth.dstPort() != LspPing::LspPingConstant::lspPingUdpPort) {
    std::fprintf(stderr, "echo-responder: not an echo request: %s\n",
                 eth.reason());
    return 1;
  }
  if (!responder->processPkt(eth)) {
    std::fprintf(stderr, "echo-responder: the request was dropped\n");
    return 1;
  }

  // The reply went out on the IPv4 module: its echo header says how the
  // request fared.
  const Wirx::UdpDatagram &reply = udp4->datagrams().back();
  LspPing::LspPingHdr hdr;
  std::copy_n(reply.payload.data(), sizeof hdr,
              reinterpret_cast<Orv::U8 *>(&hdr));
  std::printf(
      "reply to %s port %u: %s (%u) subcode %u\n",
      reply.dstAddr.stringValue().c_str(), unsigned(reply.dstPort),
      Orv::stringValue(LspPing::LspPingReturnCode(hdr.returnCode)).c_str(),
      unsigned(hdr.returnCode), unsigned(hdr.returnSubcode));
  return hdr.returnCode == Orv::U8(LspPing::LspPingReturnCode::repRouterEgress)
             ? 0
             : 1;
}
