#pragma once

#include <map>
#include <string>
#include <vector>

#include "Interface/AllIntfStatusDir.h"
#include "Interface/AllIntfStatusLocalDir.h"
#include "Ip/VrfIpIntfStatus.h"
#include "Ip6/VrfIp6IntfStatus.h"
#include "KernelNetInfo/Status.h"
#include "LspPing/LspPingReqHandler.h"
#include "LspPing/LspPingUtilRoot.h"
#include "MplsUtils/EthPktParser.h"
#include "Netsim/Datagram.h"
#include "Netsim/ForwardingState.h"
#include "Netsim/UdpPam.h"
#include "Session/ReplyTap.h"
#include "Wirx/EthAddr.h"
#include "Wirx/Ip6Addr.h"
#include "Wirx/IpAddr.h"

namespace Netsim {

class Link;
class Network;

// One router of the network, hosting the library as an agent would.
//
// Its interfaces are published in its own interface platform: status with
// the MTU, a kernel device named after the interface in the default
// namespace, and IPv4 addresses in the default VRF. Its ping client side
// (an LspPingUtilRoot named after the router, with the client root started
// on that platform) thus opens a raw module on every interface with an
// address; the modules are LinkPams, which send over the interface's link.
// The client side reads its replies from a UDP module on `clientUdpPort`,
// through a Session::ReplyTap that notes their subcodes for sessions:
// clients set their source UDP port to it.
//
// Its echo responder answers from the router's forwarding state, takes
// interface MTUs from the client side's device directory and replies on two
// UDP modules on the echo port, sourced from the router's address.
//
// Its data plane switches the labelled frames that arrive for an
// interface's MAC address by the forwarding state: explicit null is popped
// first; a frame whose top label's TTL has run out goes to the responder;
// otherwise the label route of the top label gives the vias, one of which
// is chosen by hashing the frame's IP destination, as forwarding hardware
// spreads flows (the same destination always takes the same via). The via
// swaps, pops or pushes; the labels it puts on carry the incoming TTL less
// one, and a label exposed by a pop keeps the lower of its own TTL and that.
// A via into a TI-LFA repair tunnel leaves by the tunnel's interface with
// the tunnel's labels pushed on top. The frame leaves on the via's link
// to the MAC address at its other end. An unlabelled frame (penultimate-hop
// popping, or nothing left after the pops) addressed to the router (to one
// of its addresses, or to 127/8 or ::ffff:127/104, which never leave a
// host) goes to the responder if it is UDP to the echo port. Everything
// else, a label without route and a way out without link or with its link
// down included, is dropped and counted; routers do not forward plain IP.
class Router {
public:
  static constexpr Orv::U16 clientUdpPort = 49152;
  static constexpr Orv::U32 defaultMtu = 1500;

  // Use Network::routerIs.
  Router(Network &network, const std::string &name, const Wirx::IpAddr &addr,
         const Wirx::Ip6Addr &addr6, const ForwardingState &state);
  Router(const Router &) = delete;
  Router &operator=(const Router &) = delete;
  ~Router();

  Network &network() const { return network_; }
  const std::string &name() const { return name_; }
  // The router's own addresses: the source of its echo replies.
  const Wirx::IpAddr &addr() const { return addr_; }
  const Wirx::Ip6Addr &addr6() const { return addr6_; }
  // The router's address, or an address of one of its interfaces.
  bool ownsAddr(const Wirx::IpGenAddr &addr) const;

  // Adds the interface (or changes its MAC and MTU) with one IPv4 address.
  void intfIs(const Wirx::IntfId &intfId, const Wirx::EthAddr &ethAddr,
              const Wirx::IpAddr &ipAddr, Orv::U8 prefixLength,
              Orv::U32 mtu = defaultMtu);
  void intfAddrIs(const Wirx::IntfId &intfId, const Wirx::IpAddr &ipAddr,
                  Orv::U8 prefixLength);
  void intfAddrDel(const Wirx::IntfId &intfId, const Wirx::IpAddr &ipAddr);
  // The interface's MAC address, unset for an unknown interface.
  Wirx::EthAddr ethAddr(const Wirx::IntfId &intfId) const;

  // The interface platform the client side is started on.
  const Orv::Ptr<Interface::AllIntfStatusDir> &allIntfStatusDir() const {
    return allIntfStatusDir_;
  }
  const Orv::Ptr<KernelNetInfo::Status> &kniStatus() const {
    return kniStatus_;
  }
  const Orv::Ptr<Ip::VrfIpIntfStatus> &vrfIpIntfStatus() const {
    return vrfIpIntfStatus_;
  }
  const Orv::Ptr<Ip6::VrfIp6IntfStatus> &vrfIp6IntfStatus() const {
    return vrfIp6IntfStatus_;
  }

  const ForwardingState &forwardingState() const { return state_; }
  const Orv::Ptr<LspPing::LspPingReqHandler> &reqHandler() const {
    return reqHandler_;
  }
  const Orv::Ptr<UdpPam> &responderUdpPam() const { return responderUdpPam_; }
  const Orv::Ptr<UdpPam> &responderUdpPam6() const { return responderUdpPam6_; }

  const Orv::Ptr<LspPing::LspPingUtilRoot> &utilRoot() const {
    return utilRoot_;
  }
  const Orv::Ptr<LspPing::LspPingClientRoot> &clientRoot() const {
    return clientRoot_;
  }
  const Orv::Ptr<UdpPam> &clientUdpPam() const { return clientUdpPam_; }
  // What the client side reads its replies through.
  const Orv::Ptr<Session::ReplyTap> &replyTap() const { return replyTap_; }
  // The client side's configurations and statuses, for short.
  const Orv::Ptr<LspPing::LspPingClientConfigColl> &clientConfigs() const {
    return clientRoot_->lspPingClientConfigColl();
  }
  const Orv::Ptr<LspPing::LspPingClientStatusColl> &clientStatuses() const {
    return clientRoot_->lspPingClientStatusColl();
  }

  // The interface's link, or null.
  Link *link(const Wirx::IntfId &intfId) const;
  // For Network::linkIs.
  void linkIs(const Wirx::IntfId &intfId, Link *link);

  // Sends `frame` on the interface's link; false when it has none or it is
  // down.
  bool txFrameIs(const Wirx::IntfId &intfId, const Orv::Ptr<Wirx::Pkt> &frame);
  // A frame arrived on the interface.
  void rxFrameIs(const Wirx::IntfId &intfId, const Orv::Ptr<Wirx::Pkt> &frame);
  // Datagrams arrived together for this router.
  void rxDatagramsIs(std::vector<Datagram> &datagrams);

  // Frames that arrived on the router's interfaces.
  Orv::U64 framesReceived() const { return framesReceived_; }
  // Echo requests the responder answered.
  Orv::U64 requestsAnswered() const { return requestsAnswered_; }
  // Labelled frames switched on to a next hop.
  Orv::U64 framesForwarded() const { return framesForwarded_; }
  // Frames taken and then dropped: no label route, no way out, nothing
  // local for them.
  Orv::U64 framesDropped() const { return framesDropped_; }
  // Datagrams that arrived for a port no module is bound to.
  Orv::U64 datagramsDropped() const { return datagramsDropped_; }

private:
  UdpPam *udpPam(Orv::U16 port, Wirx::AddrFamily family) const;
  // Switches a labelled frame, `labels` being its stack from the first label
  // that is not explicit null; the payload (IP) starts at `payloadOffset`.
  void switchFrame(const MplsUtils::EthPktParser &eth,
                   const Wirx::MplsLabelStack &labels, Orv::U32 payloadOffset);
  // Sends the payload of `eth` from `payloadOffset` on with `labels` on top,
  // out of `intfId`.
  void forward(const Wirx::IntfId &intfId, const Wirx::MplsLabelStack &labels,
               const MplsUtils::EthPktParser &eth, Orv::U32 payloadOffset);
  // An unlabelled frame that arrived for this router.
  void deliverIp(const MplsUtils::EthPktParser &eth);
  // Hands an echo request to the responder.
  void answer(const MplsUtils::EthPktParser &eth);
  void drop(const char *why);

  Network &network_;
  const std::string name_;
  const Wirx::IpAddr addr_;
  const Wirx::Ip6Addr addr6_;
  const ForwardingState state_;
  std::map<Wirx::IntfId, Wirx::EthAddr> ethAddrs_;
  std::map<Wirx::IntfId, Link *> links_;

  Orv::Ptr<Interface::AllIntfStatusDir> allIntfStatusDir_;
  Orv::Ptr<Interface::AllIntfStatusLocalDir> allIntfStatusLocalDir_;
  Orv::Ptr<KernelNetInfo::Status> kniStatus_;
  Orv::Ptr<Ip::VrfIpIntfStatus> vrfIpIntfStatus_;
  Orv::Ptr<Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus_;

  Orv::Ptr<UdpPam> clientUdpPam_;
  Orv::Ptr<Session::ReplyTap> replyTap_;
  Orv::Ptr<UdpPam> responderUdpPam_;
  Orv::Ptr<UdpPam> responderUdpPam6_;
  Orv::Ptr<LspPing::LspPingUtilRoot> utilRoot_;
  Orv::Ptr<LspPing::LspPingClientRoot> clientRoot_;
  Orv::Ptr<LspPing::LspPingReqHandler> reqHandler_;

  Orv::U64 framesReceived_ = 0;
  Orv::U64 requestsAnswered_ = 0;
  Orv::U64 datagramsDropped_ = 0;
  Orv::U64 framesForwarded_ = 0;
  Orv::U64 framesDropped_ = 0;
};

} // namespace Netsim
