#include "Netsim/ForwardingState.h"

#include "Mpls/LfibLabelAction.h"

namespace Netsim {

namespace {

// The forwarding table's number for routes that LDP installed.
constexpr Orv::U8 ldpSource = 8;

} // namespace

void ForwardingState::ldpBindingIs(const Wirx::IpGenPrefix &fec,
                                   Wirx::MplsLabel label) const {
  Mpls::CommonLibEntry entry;
  entry.labelIs(label, true);
  bindings->ldpTable().is(Mpls::FwdEqvClass{fec}, entry);
}

void ForwardingState::swapRouteIs(Wirx::MplsLabel label,
                                  const Wirx::IntfId &intfId,
                                  const Wirx::IpAddr &nexthop,
                                  Wirx::MplsLabel outLabel) const {
  const Mpls::RouteKey key = Mpls::RouteKey::fromLabel(label);
  const Mpls::LfibViaSetKey viaSetKey{label.value()};
  const Mpls::LfibViaKey viaKey{label.value()};
  lfib->routeIs(Mpls::LfibRoute{key, viaSetKey, ldpSource});
  Mpls::LfibViaSet viaSet;
  viaSet.viaType = Mpls::LfibViaType::viaTypeMpls;
  viaSet.viaIs(0, viaKey);
  lfib->viaSetIs(viaSetKey, viaSet);
  Mpls::LfibVia via;
  via.intfId = intfId;
  via.nexthop = nexthop;
  via.labelAction = Mpls::LfibLabelAction::swap;
  via.labelOp.push(outLabel);
  lfib->viaIs(viaKey, via);
  hardware->routeIs(key, Mpls::Hardware::RouteStatus{0});
}

} // namespace Netsim
