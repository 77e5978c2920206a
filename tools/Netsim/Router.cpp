#include "Netsim/Router.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "LspPing/LspPingConstant.h"
#include "Mpls/LfibLabelAction.h"
#include "Netsim/Link.h"
#include "Netsim/LinkPam.h"
#include "Netsim/Network.h"
#include "Orv/RangeError.h"
#include "Orv/Trace.h"
#include "Wirx/EthHdr.h"

namespace Netsim {

namespace {

Orv::TraceSource trace("Netsim/Router");

constexpr Orv::U32 vlanTagSize = 4;
constexpr Orv::U32 labelEntrySize = 4;

bool explicitNull(const Wirx::MplsLabelEntry &entry) {
  const Orv::U32 label = entry.label().value();
  return label == Wirx::MplsLabel::ipv4ExplicitNull ||
         label == Wirx::MplsLabel::ipv6ExplicitNull;
}

// Addresses that never leave a host: a frame to one is for the router that
// receives it. Echo requests go to them so that they are never forwarded
// as plain IP.
bool hostLocal(const Wirx::IpGenAddr &addr) {
  if (addr.isIpv4()) {
    return addr.v4().value() >> 24 == 127;
  }
  if (!addr.isIpv6()) {
    return false;
  }
  static constexpr Orv::U8 mapped127[] = {0, 0, 0, 0,    0,    0,  0,
                                          0, 0, 0, 0xff, 0xff, 127};
  return std::memcmp(addr.v6().bytes().data(), mapped127, sizeof mapped127) ==
         0;
}

// The same destination always hashes alike; different ones spread evenly.
// Seeded per router, as forwarding hardware is, so that splits one after
// the other do not all choose alike.
Orv::U32 flowHash(const Wirx::IpGenAddr &dst, Orv::U32 seed) {
  Orv::U32 h = seed;
  if (dst.isIpv4()) {
    h ^= dst.v4().value();
  } else if (dst.isIpv6()) {
    for (Orv::U8 byte : dst.v6().bytes()) {
      h = h * 31 + byte;
    }
  }
  h ^= h >> 16;
  h *= 0x85ebca6bu;
  h ^= h >> 13;
  h *= 0xc2b2ae35u;
  h ^= h >> 16;
  return h;
}

// `labels` above `rest`, each pushed label with the TTL `ttl` and the
// traffic class `tc`.
Wirx::MplsLabelStack pushed(const Wirx::MplsLabelStack &labels, Orv::U8 tc,
                            Orv::U8 ttl, const Wirx::MplsLabelStack &rest) {
  Wirx::MplsLabelStack out;
  for (const Wirx::MplsLabelEntry &entry : labels) {
    out.push(Wirx::MplsLabelEntry(entry.label(), tc, false, ttl));
  }
  for (const Wirx::MplsLabelEntry &entry : rest) {
    out.push(entry);
  }
  return out;
}

// `stack` with the TTL of its top entry replaced by `ttl`.
Wirx::MplsLabelStack withTopTtl(const Wirx::MplsLabelStack &stack,
                                Orv::U8 ttl) {
  Wirx::MplsLabelStack out;
  for (Wirx::MplsLabelEntry entry : stack) {
    if (out.empty()) {
      entry.ttlIs(ttl);
    }
    out.push(entry);
  }
  return out;
}

// The labels `via` sends a frame that came with `labels` on with, top
// first: what it puts on carries the incoming TTL less one, and so does a
// label that a pop exposes, if that is lower. None for an action that does
// not switch. Throws Orv::RangeError for more labels than a stack holds.
std::optional<Wirx::MplsLabelStack>
switched(const Mpls::LfibVia &via, const Wirx::MplsLabelStack &labels) {
  const Wirx::MplsLabelEntry top = labels[0];
  const Orv::U8 ttl = top.ttl() - 1;
  Wirx::MplsLabelStack below;
  for (Orv::U32 i = 1; i < labels.size(); ++i) {
    below.push(labels[i]);
  }
  switch (via.labelAction) {
  case Mpls::LfibLabelAction::swap:
    return pushed(via.labelOp, top.tc(), ttl, below);
  case Mpls::LfibLabelAction::pop:
    return below.empty() ? below
                         : withTopTtl(below, std::min(below[0].ttl(), ttl));
  case Mpls::LfibLabelAction::push:
    return pushed(via.labelOp, top.tc(), ttl, withTopTtl(labels, ttl));
  default:
    return std::nullopt;
  }
}

// The frame `eth` arrived as, with `labels` in place of its label stack and
// new Ethernet addresses; null when what follows the labels is not IP and
// no label is left to carry it.
Orv::Ptr<Wirx::Pkt> rewritten(const MplsUtils::EthPktParser &eth,
                              Orv::U32 payloadOffset,
                              const Wirx::MplsLabelStack &labels,
                              const Wirx::EthAddr &dst,
                              const Wirx::EthAddr &src) {
  Orv::U16 etherType = Wirx::EthHdr::etherTypeMpls;
  if (labels.empty()) {
    if (!eth.isIpv4() && !eth.isIpv6()) {
      return nullptr;
    }
    etherType = eth.isIpv4() ? Wirx::EthHdr::etherTypeIpv4
                             : Wirx::EthHdr::etherTypeIpv6;
  }
  const Orv::U32 payload = eth.length() - payloadOffset;
  if (sizeof(Wirx::EthHdr) + labelEntrySize * labels.size() + payload >
      Wirx::Pkt::capacity - Wirx::Pkt::defaultHeadroom) {
    return nullptr;
  }
  Orv::Ptr<Wirx::Pkt> pkt = Wirx::Pkt::make();
  auto *hdr = pkt->appendAs<Wirx::EthHdr>();
  hdr->dstIs(dst);
  hdr->srcIs(src);
  hdr->etherTypeIs(etherType);
  for (Orv::U32 i = 0; i < labels.size(); ++i) {
    Wirx::MplsLabelEntry entry = labels[i];
    entry.bosIs(i + 1 == labels.size());
    entry.toNbo(pkt->append(labelEntrySize));
  }
  std::memcpy(pkt->append(payload), eth.frame() + payloadOffset, payload);
  return pkt;
}

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
      replyTap_(Orv::make<Session::ReplyTap>(clientUdpPam_)),
      responderUdpPam_(Orv::make<UdpPam>(
          "lspPingResponder", LspPing::LspPingConstant::lspPingUdpPort, *this,
          Wirx::AddrFamily::ipv4)),
      responderUdpPam6_(Orv::make<UdpPam>(
          "lspPingResponder6", LspPing::LspPingConstant::lspPingUdpPort, *this,
          Wirx::AddrFamily::ipv6)),
      utilRoot_(LspPing::lspPingUtilRootFactory(Orv::Name(name))) {
  clientRoot_ = utilRoot_->lspPingClientRootIs(
      allIntfStatusDir_, allIntfStatusLocalDir_, kniStatus_, vrfIpIntfStatus_,
      vrfIp6IntfStatus_, replyTap_, network.timerWheel());
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
  return link->frameIs(*this, intfId, frame);
}

void Router::rxFrameIs(const Wirx::IntfId &intfId,
                       const Orv::Ptr<Wirx::Pkt> &frame) {
  ++framesReceived_;
  if (network_.frameTap()) {
    network_.frameTap()(*this, intfId, *frame);
  }
  const MplsUtils::EthPktParser eth(frame);
  if (eth.parsedUpTo() == MplsUtils::EthPktParser::Layer::none) {
    ORV_TRACE(trace, 9, name_, " ", intfId, ": not Ethernet: ", eth.reason());
    return;
  }
  if (eth.ethDst() != ethAddr(intfId)) {
    ORV_TRACE(trace, 9, name_, " ", intfId, ": not for us: ", eth.ethDst());
    return;
  }
  const Wirx::MplsLabelStack &received = eth.labelStack();
  if (received.empty()) {
    deliverIp(eth);
    return;
  }
  const Orv::U32 payloadOffset = sizeof(Wirx::EthHdr) +
                                 vlanTagSize * eth.vlanCount() +
                                 labelEntrySize * received.size();
  Wirx::MplsLabelStack labels;
  for (const Wirx::MplsLabelEntry &entry : received) {
    if (!labels.empty() || !explicitNull(entry)) {
      labels.push(entry);
    }
  }
  if (labels.size() == received.size()) {
    switchFrame(eth, labels, payloadOffset);
    return;
  }
  // Explicit null popped: the frame goes on as if it had come without.
  const Orv::Ptr<Wirx::Pkt> popped =
      rewritten(eth, payloadOffset, labels, eth.ethDst(), eth.ethSrc());
  if (!popped) {
    drop("explicit null above no IP");
    return;
  }
  const MplsUtils::EthPktParser inner(popped);
  if (labels.empty()) {
    deliverIp(inner);
  } else {
    switchFrame(inner, labels,
                sizeof(Wirx::EthHdr) + labelEntrySize * labels.size());
  }
}

void Router::switchFrame(const MplsUtils::EthPktParser &eth,
                         const Wirx::MplsLabelStack &labels,
                         Orv::U32 payloadOffset) {
  const Wirx::MplsLabelEntry top = labels[0];
  if (top.ttl() <= 1) {
    answer(eth);
    return;
  }
  const Mpls::LfibStatus &lfib = *state_.lfib;
  const Mpls::LfibRoute *route =
      lfib.routeTable().find(Mpls::RouteKey::fromLabel(top.label()));
  const Mpls::LfibViaSet *viaSet =
      route ? lfib.viaSetTable().find(route->viaSetKey) : nullptr;
  if (!viaSet || viaSet->via.empty() ||
      viaSet->viaType != Mpls::LfibViaType::viaTypeMpls) {
    drop("no label route");
    return;
  }
  auto chosen = viaSet->via.begin();
  std::advance(chosen, flowHash(eth.dstIp(), addr_.value()) %
                           Orv::U32(viaSet->via.size()));
  const Mpls::LfibVia *via = lfib.viaTable().find(chosen->value);
  if (!via) {
    drop("via missing");
    return;
  }
  try {
    std::optional<Wirx::MplsLabelStack> out = switched(*via, labels);
    if (!out) {
      drop("unsupported label action");
      return;
    }
    Wirx::IntfId intf = via->intfId;
    if (Tunnel::TunnelTable::TiLfaTunnelTable::isTiLfaTunnelIntf(intf)) {
      const Tunnel::TunnelTable::TiLfaTunnelTableEntry *tunnel =
          state_.tiLfaTunnels->tunnelTable().find(
              Tunnel::TunnelTable::TiLfaTunnelTable::tunnelId(intf));
      if (!tunnel) {
        drop("TI-LFA tunnel missing");
        return;
      }
      out = pushed(tunnel->labelStack, top.tc(), top.ttl() - 1, *out);
      intf = tunnel->intfId;
    }
    forward(intf, *out, eth, payloadOffset);
  } catch (const Orv::RangeError &error) {
    // More labels than a stack holds, or a tunnel number out of range.
    drop(error.what());
  }
}

void Router::forward(const Wirx::IntfId &intfId,
                     const Wirx::MplsLabelStack &labels,
                     const MplsUtils::EthPktParser &eth,
                     Orv::U32 payloadOffset) {
  Link *const link = this->link(intfId);
  if (!link || !link->up()) {
    drop("no way out");
    return;
  }
  const Link::End &peer = link->peer(*this, intfId);
  const Orv::Ptr<Wirx::Pkt> frame =
      rewritten(eth, payloadOffset, labels, peer.router->ethAddr(peer.intfId),
                ethAddr(intfId));
  if (!frame) {
    drop("no IP under the last label");
    return;
  }
  link->frameIs(*this, intfId, frame);
  ++framesForwarded_;
}

void Router::deliverIp(const MplsUtils::EthPktParser &eth) {
  if (!eth.isIpv4() && !eth.isIpv6()) {
    drop("not IP");
    return;
  }
  const Wirx::IpGenAddr dst = eth.dstIp();
  if (!hostLocal(dst) && !ownsAddr(dst)) {
    drop("IP not for us");
    return;
  }
  answer(eth);
}

void Router::answer(const MplsUtils::EthPktParser &eth) {
  if (!eth.valid()) {
    drop(eth.reason());
    return;
  }
  if (eth.dstPort() != LspPing::LspPingConstant::lspPingUdpPort) {
    ORV_TRACE(trace, 9, name_, ": UDP port ", eth.dstPort());
    ++framesDropped_;
    return;
  }
  if (reqHandler_->processPkt(eth)) {
    ++requestsAnswered_;
  }
}

void Router::drop(const char *why) {
  ORV_TRACE(trace, 9, name_, ": frame dropped: ", why);
  ++framesDropped_;
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
