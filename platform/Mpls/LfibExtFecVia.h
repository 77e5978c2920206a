#pragma once

#include <iosfwd>
#include <string_view>
#include <tuple>

#include "Mpls/FwdEqvClass.h"
#include "Orv/Export.h"
#include "Orv/Types.h"
#include "Orv/ValueText.h"
#include "Wirx/IntfId.h"

namespace Mpls {

// A via of an extended-FEC via set: instead of naming an interface and next
// hop itself, it hands the packet, after its label action, to the IP
// forwarding entry of a FEC, whose own vias (in the IPv4 or IPv6 forwarding
// status) say where it goes. The default, which a lookup of an unknown key
// reads, names no FEC.
struct LfibExtFecVia {
  // An LfibLabelAction value; pop and popAndForward are the ones that make
  // sense before an IP lookup.
  Orv::U8 labelAction = 0;
  // The FEC the packet is forwarded on.
  FwdEqvClass fec;
  // The hierarchical interface of the FEC's identifier: the tunnel
  // interface when the FEC resolves over a tunnel (a TI-LFA repair tunnel,
  // say), else empty. It is known from the identifier alone, so it holds
  // even when the FEC is missing from the forwarding status.
  Wirx::IntfId hierIntf;

  bool operator==(const LfibExtFecVia &) const = default;
  bool operator!() const { return *this == LfibExtFecVia(); }

  static constexpr std::string_view valueTypeName = "Mpls::LfibExtFecVia";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"labelAction", &LfibExtFecVia::labelAction},
                 Orv::Field{"fec", &LfibExtFecVia::fec},
                 Orv::Field{"hierIntf", &LfibExtFecVia::hierIntf}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                        const LfibExtFecVia &via);

} // namespace Mpls
