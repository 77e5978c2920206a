#include "Netsim/ForwardingState.h"

#include "Mpls/LfibLabelAction.h"

namespace Netsim {

namespace {

// The forwarding table's number for routes that LDP installed.
constexpr Orv::U8 ldpSource = 8;

Wirx::MplsLabelStack stackOf(const std::vector<Wirx::MplsLabel> &labels) {
  Wirx::MplsLabelStack stack;
  for (const Wirx::MplsLabel &label : labels) {
    stack.push(label);
  }
  return stack;
}

} // namespace

void ForwardingState::ldpBindingIs(const Wirx::IpGenPrefix &fec,
                                   Wirx::MplsLabel label) const {
  Mpls::CommonLibEntry entry;
  entry.labelIs(label, true);
  bindings->ldpTable().is(Mpls::FwdEqvClass{fec}, entry);
}

void ForwardingState::labelRouteIs(Wirx::MplsLabel label,
                                   const std::vector<LabelVia> &vias) const {
  const Mpls::RouteKey key = Mpls::RouteKey::fromLabel(label);
  const Mpls::LfibViaSetKey viaSetKey{label.value()};
  lfib->routeIs(Mpls::LfibRoute{key, viaSetKey, ldpSource});
  Mpls::LfibViaSet viaSet;
  viaSet.viaType = Mpls::LfibViaType::viaTypeMpls;
  for (Orv::U8 i = 0; i < vias.size(); ++i) {
    const Mpls::LfibViaKey viaKey{label.value() << 8 | i};
    viaSet.viaIs(i, viaKey);
    Mpls::LfibVia via;
    via.intfId = vias[i].intfId;
    via.nexthop = vias[i].nexthop;
    via.labelAction = vias[i].labels.empty() ? Mpls::LfibLabelAction::pop
                                             : Mpls::LfibLabelAction::swap;
    via.labelOp = stackOf(vias[i].labels);
    lfib->viaIs(viaKey, via);
  }
  lfib->viaSetIs(viaSetKey, viaSet);
  hardware->routeIs(key, Mpls::Hardware::RouteStatus{0});
}

void ForwardingState::swapRouteIs(Wirx::MplsLabel label,
                                  const Wirx::IntfId &intfId,
                                  const Wirx::IpAddr &nexthop,
                                  Wirx::MplsLabel outLabel) const {
  labelRouteIs(label, {LabelVia{intfId, nexthop, {outLabel}}});
}

void ForwardingState::fecRouteIs(
    const Wirx::IpGenPrefix &fec, const Wirx::IntfId &intfId,
    const Wirx::IpAddr &nexthop,
    const std::vector<Wirx::MplsLabel> &labels) const {
  Mesk::FibVia via;
  via.intfId = intfId;
  via.nexthop = nexthop;
  via.labelAction = labels.empty() ? Mpls::LfibLabelAction::none
                                   : Mpls::LfibLabelAction::push;
  via.labelStack = stackOf(labels);
  Mesk::FibFec entry;
  entry.viaIs(0, via);
  Mesk::FibForwardingStatus &table =
      fec.af() == Wirx::AddrFamily::ipv6
          ? static_cast<Mesk::FibForwardingStatus &>(*fib6)
          : *fib;
  table.fecIs(Mpls::FwdEqvClass{fec}, entry);
}

void ForwardingState::tiLfaTunnelIs(
    Orv::U32 id, const Wirx::IntfId &intfId, const Wirx::IpAddr &nexthop,
    const std::vector<Wirx::MplsLabel> &labels) const {
  tiLfaTunnels->tunnelIs(Tunnel::TunnelId(id),
                         Tunnel::TunnelTable::TiLfaTunnelTableEntry{
                             intfId, nexthop, stackOf(labels)});
}

} // namespace Netsim
