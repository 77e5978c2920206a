#pragma once

#include <vector>

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

// A router's forwarding state: the tables its echo responder answers from
// and its data plane switches by. Every table starts empty; fill them (the
// helpers below cover the common entries), or hand over tables loaded
// elsewhere. The router keeps the same objects for its lifetime, so changes
// made to them later are what it reads from then on.
struct ForwardingState {
  // One way out of a label route: the interface and next hop, and the labels
  // that replace the incoming one, top first. No label pops it.
  struct LabelVia {
    Wirx::IntfId intfId;
    Wirx::IpAddr nexthop;
    std::vector<Wirx::MplsLabel> labels;
  };

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
  // An LDP route for incoming `label`, spread over `vias` by the packets'
  // IP destination and programmed in hardware. The via set is keyed by the
  // label's value, via i by the label's value times 256 plus i.
  void labelRouteIs(Wirx::MplsLabel label,
                    const std::vector<LabelVia> &vias) const;
  // An LDP route that swaps `label` for `outLabel` towards `nexthop` on
  // `intfId`.
  void swapRouteIs(Wirx::MplsLabel label, const Wirx::IntfId &intfId,
                   const Wirx::IpAddr &nexthop, Wirx::MplsLabel outLabel) const;
  // The ingress's route to `fec`: out of `intfId` to `nexthop`, pushing
  // `labels` (top first; none for a next hop that is the egress).
  void fecRouteIs(const Wirx::IpGenPrefix &fec, const Wirx::IntfId &intfId,
                  const Wirx::IpAddr &nexthop,
                  const std::vector<Wirx::MplsLabel> &labels) const;
  // TI-LFA repair tunnel `id`: out of `intfId` to `nexthop`, pushing
  // `labels` on top of what the packet carries. Label vias reach it through
  // the interface TiLfaTunnelTable::tunnelIntf(id).
  void tiLfaTunnelIs(Orv::U32 id, const Wirx::IntfId &intfId,
                     const Wirx::IpAddr &nexthop,
                     const std::vector<Wirx::MplsLabel> &labels) const;
};

} // namespace Netsim
