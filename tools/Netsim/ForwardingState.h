#pragma once

#include "Mesk/Fib/ForwardingStatus.h"
#include "Mesk/Fib6/ForwardingStatus.h"
#include "Mpls/Api/Status.h"
#include "Mpls/CommonLib.h"
#include "Mpls/Hardware/Status.h"
#include "Mpls/LfibStatus.h"
#include "Orv/Object.h"
#include "Rsvp/RsvpStatus.h"
#include "Tunnel/TunnelTable/TiLfaTunnelTable.h"
#include "Wirx/IntfId.h"
#include "Wirx/IpAddr.h"
#include "Wirx/IpGenPrefix.h"
#include "Wirx/MplsLabel.h"

namespace Netsim {

// A router's forwarding state: the tables its echo responder answers from.
// Every table starts empty; fill them (the two helpers below cover the
// common entries), or hand over tables loaded elsewhere.
// The router keeps the same objects for its lifetime, so changes made to
// them later are what the responder reads from then on.
struct ForwardingState {
  Orv::Ptr<Mpls::Hardware::Status> hardware =
      Orv::make<Mpls::Hardware::Status>("hardware");
  Orv::Ptr<Mpls::Api::Status> mpls = Orv::make<Mpls::Api::Status>("mpls");
  Orv::Ptr<Mpls::CommonLib> bindings = Orv::make<Mpls::CommonLib>("bindings");
  Orv::Ptr<Mpls::LfibStatus> lfib = Orv::make<Mpls::LfibStatus>("lfib");
  Orv::Ptr<Mesk::Fib::ForwardingStatus> fib =
      Orv::make<Mesk::Fib::ForwardingStatus>("fib");
  Orv::Ptr<Mesk::Fib6::ForwardingStatus> fib6 =
      Orv::make<Mesk::Fib6::ForwardingStatus>("fib6");
  Orv::Ptr<Tunnel::TunnelTable::TiLfaTunnelTable> tiLfaTunnels =
      Orv::make<Tunnel::TunnelTable::TiLfaTunnelTable>("tiLfaTunnels");
  Orv::Ptr<Rsvp::RsvpStatus> rsvp = Orv::make<Rsvp::RsvpStatus>("rsvp");

  // LDP binds `fec` to `label`, in use; label 3 makes the router the FEC's
  // egress.
  void ldpBindingIs(const Wirx::IpGenPrefix &fec, Wirx::MplsLabel label) const;
  // An LDP route: incoming `label` is swapped for `outLabel` towards
  // `nexthop` on `intfId`, and programmed in hardware. The route's via set and
  // its one via are keyed by the label's value.
  void swapRouteIs(Wirx::MplsLabel label, const Wirx::IntfId &intfId,
                   const Wirx::IpAddr &nexthop, Wirx::MplsLabel outLabel) const;
};

} // namespace Netsim
