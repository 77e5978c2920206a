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
#include "Netsim/Datagram.h"
#include "Netsim/ForwardingState.h"
#include "Netsim/UdpPam.h"
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
// The client side reads its replies from a UDP module on `clientUdpPort`:
// clients set their source UDP port to it.
//
// Its echo responder answers from the router's forwarding state, takes
// interface MTUs from the client side's device directory and replies on two
// UDP modules on the echo port, sourced from the router's address.
//
// A frame arriving on an interface is taken if it is for the interface's
// MAC address; if it parses down to UDP and goes to the echo port, it is
// handed to the responder. The router forwards nothing: every echo request
// that reaches it is answered by it, as if its TTL had run out there or its
// path ended there.
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

  // Sends `frame` on the interface's link; false when it has none.
  bool txFrameIs(const Wirx::IntfId &intfId, const Orv::Ptr<Wirx::Pkt> &frame);
  // A frame arrived on the interface.
  void rxFrameIs(const Wirx::IntfId &intfId, const Orv::Ptr<Wirx::Pkt> &frame);
  // Datagrams arrived together for this router.
  void rxDatagramsIs(std::vector<Datagram> &datagrams);

  // Frames that arrived on the router's interfaces.
  Orv::U64 framesReceived() const { return framesReceived_; }
  // Echo requests the responder answered.
  Orv::U64 requestsAnswered() const { return requestsAnswered_; }
  // Datagrams that arrived for a port no module is bound to.
  Orv::U64 datagramsDropped() const { return datagramsDropped_; }

private:
  UdpPam *udpPam(Orv::U16 port, Wirx::AddrFamily family) const;

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
  Orv::Ptr<UdpPam> responderUdpPam_;
  Orv::Ptr<UdpPam> responderUdpPam6_;
  Orv::Ptr<LspPing::LspPingUtilRoot> utilRoot_;
  Orv::Ptr<LspPing::LspPingClientRoot> clientRoot_;
  Orv::Ptr<LspPing::LspPingReqHandler> reqHandler_;

  Orv::U64 framesReceived_ = 0;
  Orv::U64 requestsAnswered_ = 0;
  Orv::U64 datagramsDropped_ = 0;
};

} // namespace Netsim
