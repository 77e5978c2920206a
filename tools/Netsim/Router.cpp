#include "Netsim/Router.h"

#include "LspPing/LspPingConstant.h"
#include "MplsUtils/EthPktParser.h"
#include "Netsim/Link.h"
#include "Netsim/LinkPam.h"
#include "Netsim/Network.h"
#include "Orv/Trace.h"

namespace Netsim {

namespace {

Orv::TraceSource trace("Netsim/Router");

} // namespace

Router::Router(Network &network, const std::string &name,
               const Wirx::IpAddr &addr, const Wirx::Ip6Addr &addr6,
               const ForwardingState &state)
    : network_(network), name_(name), addr_(addr), addr6_(addr6), state_(state),
      allIntfStatusDir_(Orv::make<Interface::AllIntfStatusDir>("all")),
      allIntfStatusLocalDir_(
          Orv::make<Interface::AllIntfStatusLocalDir>("local")),
      kniStatus_(Orv::make<KernelNetInfo::Status>("kni")),
      vrfIpIntfStatus_(
          Orv::make<Ip::VrfIpIntfStatus>("vrfIp", L3::VrfName("default"))),
      vrfIp6IntfStatus_(
          Orv::make<Ip6::VrfIp6IntfStatus>("vrfIp6", L3::VrfName("default"))),
      clientUdpPam_(Orv::make<UdpPam>("lspPingClient", clientUdpPort, *this)),
      responderUdpPam_(Orv::make<UdpPam>(
          "lspPingResponder", LspPing::LspPingConstant::lspPingUdpPort, *this,
          Wirx::AddrFamily::ipv4)),
      responderUdpPam6_(Orv::make<UdpPam>(
          "lspPingResponder6", LspPing::LspPingConstant::lspPingUdpPort, *this,
          Wirx::AddrFamily::ipv6)),
      utilRoot_(LspPing::lspPingUtilRootFactory(Orv::Name(name))) {
  clientRoot_ = utilRoot_->lspPingClientRootIs(
      allIntfStatusDir_, allIntfStatusLocalDir_, kniStatus_, vrfIpIntfStatus_,
      vrfIp6IntfStatus_, clientUdpPam_, network.timerWheel());
  clientRoot_->lspPingEthDevPamManager()->ethDevPamManager()->pamOpenerIs(
      [this](const Interface::EthDevPamParams &params) -> Orv::Ptr<Wirx::Pam> {
        if (!params.intfId) {
          return nullptr;
        }
        return Orv::make<LinkPam>(Orv::Name(params.deviceName), *this,
                                  params.intfId);
      });
  reqHandler_ = LspPing::lspPingReqHandlerFactory(
      state_.hardware, state_.mpls, state_.bindings, state_.lfib, state_.fib,
      state_.fib6, state_.tiLfaTunnels, responderUdpPam_, responderUdpPam6_,
      addr_, addr6_, state_.rsvp, clientRoot_->deviceIntfStatusDir());
}

// The client side goes first: its modules and timers refer to the router.
Router::~Router() {
  clientRoot_ = nullptr;
  utilRoot_->lspPingClientRootDel();
}

bool Router::ownsAddr(const Wirx::IpGenAddr &addr) const {
  if (addr.isIpv4()) {
    if (addr.v4() == addr_) {
      return true;
    }
    for (const auto &[intfId, status] : vrfIpIntfStatus_->ipIntfStatus()) {
      if (status->addr().contains(addr.v4())) {
        return true;
      }
    }
    return false;
  }
  if (addr.isIpv6()) {
    if (!!addr6_ && addr.v6() == addr6_) {
      return true;
    }
    for (const auto &[intfId, status] : vrfIp6IntfStatus_->ip6IntfStatus()) {
      if (status->addr().contains(addr.v6())) {
        return true;
      }
    }
  }
  return false;
}

void Router::intfIs(const Wirx::IntfId &intfId, const Wirx::EthAddr &ethAddr,
                    const Wirx::IpAddr &ipAddr, Orv::U8 prefixLength,
                    Orv::U32 mtu) {
  ethAddrs_[intfId] = ethAddr;
  allIntfStatusDir_->intfStatusIs(intfId)->mtuIs(mtu);
  kniStatus_->kernelIntfIs(
      intfId, KernelNetInfo::KernelIntf{
                  intfId.name(), Wirx::NamespaceName::defaultNamespace()});
  intfAddrIs(intfId, ipAddr, prefixLength);
}

void Router::intfAddrIs(const Wirx::IntfId &intfId, const Wirx::IpAddr &ipAddr,
                        Orv::U8 prefixLength) {
  vrfIpIntfStatus_->addrIs(intfId, ipAddr, prefixLength);
}

void Router::intfAddrDel(const Wirx::IntfId &intfId,
                         const Wirx::IpAddr &ipAddr) {
  vrfIpIntfStatus_->addrDel(intfId, ipAddr);
}

Wirx::EthAddr Router::ethAddr(const Wirx::IntfId &intfId) const {
  const auto it = ethAddrs_.find(intfId);
  return it == ethAddrs_.end() ? Wirx::EthAddr() : it->second;
}

Link *Router::link(const Wirx::IntfId &intfId) const {
  const auto it = links_.find(intfId);
  return it == links_.end() ? nullptr : it->second;
}

void Router::linkIs(const Wirx::IntfId &intfId, Link *link) {
  links_[intfId] = link;
}

bool Router::txFrameIs(const Wirx::IntfId &intfId,
                       const Orv::Ptr<Wirx::Pkt> &frame) {
  Link *const link = this->link(intfId);
  if (!link) {
    ORV_TRACE(trace, 9, name_, " ", intfId, ": no link, frame dropped");
    return false;
  }
  link->frameIs(*this, intfId, frame);
  return true;
}

void Router::rxFrameIs(const Wirx::IntfId &intfId,
                       const Orv::Ptr<Wirx::Pkt> &frame) {
  ++framesReceived_;
  const MplsUtils::EthPktParser eth(frame);
  if (!eth.valid()) {
    ORV_TRACE(trace, 9, name_, " ", intfId, ": not UDP: ", eth.reason());
    return;
  }
  if (eth.ethDst() != ethAddr(intfId)) {
    ORV_TRACE(trace, 9, name_, " ", intfId, ": not for us: ", eth.ethDst());
    return;
  }
  if (eth.dstPort() != LspPing::LspPingConstant::lspPingUdpPort) {
    ORV_TRACE(trace, 9, name_, " ", intfId, ": UDP port ", eth.dstPort());
    return;
  }
  if (reqHandler_->processPkt(eth)) {
    ++requestsAnswered_;
  }
}

void Router::rxDatagramsIs(std::vector<Datagram> &datagrams) {
  for (Datagram &datagram : datagrams) {
    UdpPam *const pam = udpPam(datagram.dstPort, datagram.dstAddr.af());
    if (!pam) {
      ORV_TRACE(trace, 9, name_, ": no module on UDP port ", datagram.dstPort);
      ++datagramsDropped_;
      continue;
    }
    pam->rxDatagramIs(std::move(datagram));
  }
  for (UdpPam *pam :
       {clientUdpPam_.get(), responderUdpPam_.get(), responderUdpPam6_.get()}) {
    pam->rxBurstEnd();
  }
}

UdpPam *Router::udpPam(Orv::U16 port, Wirx::AddrFamily family) const {
  for (UdpPam *pam :
       {clientUdpPam_.get(), responderUdpPam_.get(), responderUdpPam6_.get()}) {
    if (pam->receives(port, family)) {
      return pam;
    }
  }
  return nullptr;
}

} // namespace Netsim
