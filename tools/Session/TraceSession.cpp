#include "Session/TraceSession.h"

#include <algorithm>
#include <utility>

#include "LspPing/LspPingAddrType.h"
#include "LspPing/LspPingDownstreamSignalingProtocol.h"
#include "LspPing/LspPingMultipathType.h"
#include "Orv/Clock.h"
#include "Session/PingSession.h"

namespace Session {

namespace {

using LspPing::LspPingAddrType;
using LspPing::LspPingDownstreamMappingInfo;
using LspPing::LspPingDownstreamSignalingProtocol;
using LspPing::LspPingReturnCode;

constexpr Orv::U32 implicitNull = 3;
constexpr Orv::U8 maskedIpSet =
    Orv::U8(LspPing::LspPingMultipathType::maskedIpSetMultipath);

LspPingDownstreamSignalingProtocol protocolOf(LspPing::LspPingTunnelType type) {
  using LspPing::LspPingTunnelType;
  switch (type) {
  case LspPingTunnelType::tunnelLdpIpv4:
    return LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolLdp;
  case LspPingTunnelType::tunnelRsvpIpv4:
    return LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolRsvpTe;
  case LspPingTunnelType::tunnelSrIpv4:
  case LspPingTunnelType::tunnelSrIpv6:
    return LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolIsis;
  case LspPingTunnelType::tunnelModeRaw:
  case LspPingTunnelType::tunnelStaticConfig:
    return LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolStatic;
  default:
    return LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolUnknown;
  }
}

// The ingress's own downstream mapping: its next hop and the labels it
// pushes. Invalid, and so not sent, when the host knows no next hop.
LspPingDownstreamMappingInfo
ingressMapping(const IngressPath &path,
               LspPingDownstreamSignalingProtocol protocol) {
  LspPingDownstreamMappingInfo mapping;
  if (!path.nexthop) {
    return mapping;
  }
  std::vector<Wirx::MplsLabel> labels = path.labels;
  if (labels.empty()) {
    labels.push_back(Wirx::MplsLabel(implicitNull));
  }
  mapping.mtu = Orv::U16(std::min<Orv::U32>(path.mtu, 0xFFFF));
  mapping.addrType =
      Orv::U8(path.nexthop.isIpv6() ? LspPingAddrType::ipv6Numbered
                                    : LspPingAddrType::ipv4Numbered);
  mapping.dsIpAddr = path.nexthop;
  mapping.dsIntfAddr = path.nexthop;
  for (Orv::U8 i = 0; i < labels.size(); ++i) {
    mapping.labelStack.labelEntryIs(
        i, LspPing::LspPingDownstreamLabelEntry::fromLabel(
               labels[i], 0, i + 1u == labels.size(), protocol));
  }
  mapping.labelStack.size = Orv::U8(labels.size());
  mapping.valid = true;
  return mapping;
}

// A mapping from a reply as the next request carries it, or an invalid one
// (no mapping sent) when it could not be written: what a responder sends is
// not trusted to be well formed. The question about destinations is the
// trace's own, so the reply's multipath is left behind.
LspPingDownstreamMappingInfo
carried(const LspPingDownstreamMappingInfo &mapping) {
  const LspPingAddrType type = LspPingAddrType(mapping.addrType);
  const bool ipv4 =
      mapping.dsIpAddr.isIpv4() && (type == LspPingAddrType::ipv4Numbered ||
                                    type == LspPingAddrType::ipv4Unnumbered);
  const bool ipv6 =
      mapping.dsIpAddr.isIpv6() && type == LspPingAddrType::ipv6Numbered;
  if ((!ipv4 && !ipv6) || mapping.dsIntfAddr.af() != mapping.dsIpAddr.af() ||
      !mapping.labelStack.valid()) {
    return LspPingDownstreamMappingInfo();
  }
  return LspPingDownstreamMappingInfo(
      mapping.mtu, mapping.addrType, mapping.dsFlags, mapping.dsIpAddr,
      mapping.dsIntfAddr, 0, 0, Wirx::IpGenAddr(), {}, mapping.labelStack,
      true);
}

// Destinations are 127.0.0.x (or ::ffff:127.0.0.x): they differ in their
// last byte only.
Orv::U8 lastByte(const Wirx::IpGenAddr &addr) {
  return addr.isIpv4() ? Orv::U8(addr.v4().value()) : addr.v6().bytes()[15];
}

Wirx::IpGenAddr withLastByte(const Wirx::IpGenAddr &addr, Orv::U8 byte) {
  if (addr.isIpv4()) {
    return Wirx::IpAddr((addr.v4().value() & ~0xFFu) | byte);
  }
  Wirx::Ip6Addr::Bytes bytes = addr.v6().bytes();
  bytes[15] = byte;
  return Wirx::Ip6Addr(bytes);
}

bool sameButLastByte(const Wirx::IpGenAddr &a, const Wirx::IpGenAddr &b) {
  return a.af() == b.af() && withLastByte(a, 0) == withLastByte(b, 0);
}

// Asks about `destinations` with a masked IP set: bit k of the mask, the
// first byte's top bit first, stands for the set's base plus k.
void multipathIs(LspPingDownstreamMappingInfo &mapping,
                 const std::vector<Wirx::IpGenAddr> &destinations) {
  if (!mapping.valid || mapping.dsIpAddr.af() != destinations[0].af()) {
    return;
  }
  Orv::U32 highest = 0;
  for (const Wirx::IpGenAddr &dst : destinations) {
    highest = std::max<Orv::U32>(highest, lastByte(dst));
  }
  LspPing::LspPingMultipathBitset bitset(4 * (highest / 32 + 1));
  for (const Wirx::IpGenAddr &dst : destinations) {
    const Orv::U32 bit = lastByte(dst);
    bitset.bitsetIs(bit / 8, Orv::U8(bitset.bitset[bit / 8] | 0x80 >> bit % 8));
  }
  mapping.multipathType = maskedIpSet;
  mapping.dsMultipathBaseAddr = withLastByte(destinations[0], 0);
  mapping.dsMultipathBitset = bitset;
}

// Whether the mapping's masked IP set names `dst`.
bool names(const LspPingDownstreamMappingInfo &mapping,
           const Wirx::IpGenAddr &dst) {
  const Wirx::IpGenAddr &base = mapping.dsMultipathBaseAddr;
  const Orv::U32 bit = lastByte(dst);
  return mapping.multipathType == maskedIpSet && sameButLastByte(dst, base) &&
         lastByte(base) == 0 && bit < 8 * mapping.dsMultipathBitset.size &&
         (mapping.dsMultipathBitset.bitset[bit / 8] & 0x80 >> bit % 8) != 0;
}

// The index of the first of `mappings` not `taken` whose address is
// `router`'s, or -1.
int mappingOf(const std::vector<LspPingDownstreamMappingInfo> &mappings,
              const Wirx::IpGenAddr &router, const std::vector<bool> &taken) {
  for (std::size_t i = 0; i < mappings.size() && !!router; ++i) {
    if (!taken[i] &&
        (mappings[i].dsIpAddr == router || mappings[i].dsIntfAddr == router)) {
      return int(i);
    }
  }
  return -1;
}

} // namespace

TraceSession::TraceSession(const Host &host, Orv::U32 clientId,
                           const Target &target, const Options &options,
                           Events events)
    : options_(options), events_(std::move(events)),
      timer_(host.timerWheel(), [this] { handleTimer(); }) {
  trace_.target = target;
  trace_.tree = options_.tree;
  trace_.ingress = host.ingressPath(target);
  trace_.error = unusable(trace_.ingress);
  if (!trace_.error.empty()) {
    finish();
    return;
  }
  const Wirx::IpGenAddr first =
      !options_.dst ? loopbackDestination(trace_.ingress.src) : options_.dst;
  // They stay within the last byte of the first.
  const Orv::U32 count =
      options_.tree ? std::clamp<Orv::U32>(
                          options_.destinations, 1,
                          std::min(maxDestinations, 256u - lastByte(first)))
                    : 1;
  for (Orv::U32 i = 0; i < count; ++i) {
    branch_.path.destinations.push_back(
        withLastByte(first, Orv::U8(lastByte(first) + i)));
  }
  trace_.ingressMapping =
      ingressMapping(trace_.ingress, protocolOf(target.tunnelType));
  branch_.dsMapping = trace_.ingressMapping;
  client_.emplace(host, clientId, LspPing::LspPingMode::modeLspTraceRoute,
                  target, trace_.ingress,
                  [this](const Reply &reply) { handleReply(reply); });
  sendHop();
}

void TraceSession::handleReply(const Reply &reply) {
  if (waiting_ == Waiting::nothing || reply.seq != seq_) {
    return;
  }
  const Waiting was = waiting_;
  waiting_ = Waiting::nothing;
  timer_.timeMinIs(Kiv::Timer::never);
  if (was == Waiting::hop) {
    hopAnswered(reply);
  } else {
    routerFound(reply.from);
  }
}

// Also where a finished trace reports, from the wheel rather than from
// within the library's reactions, so that its owner may destroy it.
void TraceSession::handleTimer() {
  if (finished_) {
    client_.reset();
    if (events_.done) {
      events_.done(trace_);
    }
    return;
  }
  const Waiting was = waiting_;
  waiting_ = Waiting::nothing;
  if (was == Waiting::hop) {
    hopLost();
  } else if (was == Waiting::router) {
    routerFound(Wirx::IpGenAddr());
  }
}

void TraceSession::sendHop() {
  LspPingDownstreamMappingInfo ds = branch_.dsMapping;
  if (options_.tree) {
    multipathIs(ds, branch_.path.destinations);
  }
  send(branch_.ttl, ds, branch_.path.destinations.front(), Waiting::hop);
}

// Only who answers matters here: no mapping is asked for.
void TraceSession::sendFinder() {
  send(Orv::U8(branch_.ttl + 1), LspPingDownstreamMappingInfo(),
       branch_.path.destinations[routers_.size()], Waiting::router);
}

void TraceSession::send(Orv::U8 ttl, const LspPingDownstreamMappingInfo &ds,
                        const Wirx::IpGenAddr &dst, Waiting waiting) {
  seq_ = client_->requestIs(ttl, ds, dst);
  if (seq_ == 0) {
    trace_.error = client_->reason();
    finish();
    return;
  }
  ++trace_.requests;
  waiting_ = waiting;
  timer_.timeMinIs(Orv::now() + options_.timeout);
}

void TraceSession::hopAnswered(const Reply &reply) {
  wayIn(reply.from);
  Hop hop;
  hop.ttl = branch_.ttl;
  hop.reply = reply;
  branch_.path.hops.push_back(hop);
  branch_.lost = 0;
  if (events_.hop) {
    events_.hop(hop);
  }
  if (reply.code == LspPingReturnCode::repRouterEgress) {
    endBranch(Path::End::egress);
  } else if (reply.code != LspPingReturnCode::labelSwitchedAtStackDep &&
             reply.code != LspPingReturnCode::noRetCode) {
    endBranch(Path::End::failed);
  } else if (branch_.ttl >= options_.maxTtl) {
    endBranch(Path::End::ttlLimit);
  } else {
    goOn();
  }
}

// The mapping of the hop before that names the router that answered is
// the way the path went, whichever the request carried.
void TraceSession::wayIn(const Wirx::IpGenAddr &router) {
  if (branch_.path.hops.empty()) {
    return;
  }
  Hop &before = branch_.path.hops.back();
  const int mapping =
      mappingOf(before.reply.mappings, router,
                std::vector<bool>(before.reply.mappings.size()));
  if (mapping >= 0) {
    before.next = mapping;
  }
}

void TraceSession::hopLost() {
  Hop hop;
  hop.ttl = branch_.ttl;
  hop.lost = true;
  branch_.path.hops.push_back(hop);
  if (events_.hop) {
    events_.hop(hop);
  }
  if (++branch_.lost >= options_.maxLost) {
    endBranch(Path::End::lost);
  } else if (branch_.ttl >= options_.maxTtl) {
    endBranch(Path::End::ttlLimit);
  } else {
    ++branch_.ttl;
    sendHop();
  }
}

// One hop on from an answered hop: down its only mapping, or down each of
// its branches in a tree trace.
void TraceSession::goOn() {
  const Reply &reply = branch_.path.hops.back().reply;
  const std::vector<Wirx::IpGenAddr> &asked = branch_.path.destinations;
  if (options_.tree && reply.mappings.size() >= 2 && asked.size() >= 2) {
    std::vector<Group> groups;
    std::vector<int> ways(asked.size(), 0);
    for (std::size_t i = 0; i < reply.mappings.size(); ++i) {
      Group group;
      group.mapping = int(i);
      for (std::size_t j = 0; j < asked.size(); ++j) {
        if (names(reply.mappings[i], asked[j])) {
          group.destinations.push_back(asked[j]);
          ++ways[j];
        }
      }
      if (!group.destinations.empty()) {
        groups.push_back(std::move(group));
      }
    }
    // Taken as told only when each destination goes exactly one way and not
    // all the same: echoing the question on one mapping tells nothing.
    if (groups.size() >= 2 &&
        std::all_of(ways.begin(), ways.end(), [](int n) { return n == 1; })) {
      branchesIs(std::move(groups));
      return;
    }
    routers_.clear();
    sendFinder();
    return;
  }
  // With several mappings the request goes on with the first, and the
  // router that answers next tells which one it took.
  if (reply.mappings.size() == 1) {
    branch_.path.hops.back().next = 0;
  }
  if (!reply.mappings.empty()) {
    branch_.dsMapping = carried(reply.mappings[0]);
  }
  ++branch_.ttl;
  sendHop();
}

void TraceSession::routerFound(const Wirx::IpGenAddr &router) {
  routers_.push_back(router);
  const std::vector<Wirx::IpGenAddr> &asked = branch_.path.destinations;
  if (routers_.size() < asked.size()) {
    sendFinder();
    return;
  }
  std::vector<Group> groups;
  for (std::size_t i = 0; i < asked.size(); ++i) {
    auto group =
        std::find_if(groups.begin(), groups.end(),
                     [&](const Group &g) { return g.router == routers_[i]; });
    if (group == groups.end()) {
      groups.push_back(Group{routers_[i], {}, -1});
      group = groups.end() - 1;
    }
    group->destinations.push_back(asked[i]);
  }
  // A router is matched to the mapping that names its address, else to the
  // only mapping left for the only router left.
  const std::vector<LspPingDownstreamMappingInfo> &mappings =
      branch_.path.hops.back().reply.mappings;
  std::vector<bool> taken(mappings.size(), false);
  for (Group &group : groups) {
    group.mapping = mappingOf(mappings, group.router, taken);
    if (group.mapping >= 0) {
      taken[std::size_t(group.mapping)] = true;
    }
  }
  const auto unmatched = [](const Group &g) {
    return !!g.router && g.mapping < 0;
  };
  if (std::count_if(groups.begin(), groups.end(), unmatched) == 1 &&
      std::count(taken.begin(), taken.end(), false) == 1) {
    std::find_if(groups.begin(), groups.end(), unmatched)->mapping =
        int(std::find(taken.begin(), taken.end(), false) - taken.begin());
  }
  branchesIs(std::move(groups));
}

void TraceSession::branchesIs(std::vector<Group> groups) {
  Branch parent = std::move(branch_);
  const std::size_t open = trace_.paths.size() + pending_.size();
  const std::size_t room = std::min<std::size_t>(
      options_.maxFanout,
      open < options_.maxPaths ? options_.maxPaths - open : 0);
  const std::size_t followed = std::max<std::size_t>(1, room);
  if (groups.size() > followed) {
    trace_.branchesNotFollowed += Orv::U32(groups.size() - followed);
    groups.resize(followed);
  }
  const std::vector<LspPingDownstreamMappingInfo> &mappings =
      parent.path.hops.back().reply.mappings;
  for (auto group = groups.rbegin(); group != groups.rend(); ++group) {
    Branch child;
    child.path.hops = parent.path.hops;
    child.path.hops.back().next = group->mapping;
    child.path.destinations = std::move(group->destinations);
    if (group->mapping >= 0) {
      child.dsMapping = carried(mappings[std::size_t(group->mapping)]);
    }
    child.ttl = Orv::U8(parent.ttl + 1);
    pending_.push_back(std::move(child));
  }
  nextBranch();
}

void TraceSession::endBranch(Path::End end) {
  branch_.path.end = end;
  trace_.paths.push_back(std::move(branch_.path));
  nextBranch();
}

void TraceSession::nextBranch() {
  if (pending_.empty()) {
    finish();
    return;
  }
  branch_ = std::move(pending_.back());
  pending_.pop_back();
  sendHop();
}

void TraceSession::finish() {
  finished_ = true;
  waiting_ = Waiting::nothing;
  timer_.timeMinIs(Orv::now());
}

} // namespace Session
