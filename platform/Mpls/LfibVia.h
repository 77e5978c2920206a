#pragma once

#include <iosfwd>
#include <string_view>
#include <tuple>

#include "Orv/Export.h"
#include "Orv/Types.h"
#include "Orv/ValueText.h"
#include "Wirx/IntfId.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/MplsLabelStack.h"

namespace Mpls {

// One way out for a labelled packet: the interface and next hop it leaves
// by, and what happens to its labels on the way. The default, which a lookup
// of an unknown via key reads, leaves by no interface.
struct LfibVia {
  Wirx::IntfId intfId;
  Wirx::IpGenAddr nexthop;
  // An LfibLabelAction value.
  Orv::U8 labelAction = 0;
  // The outgoing labels the action puts on the packet, top first; empty for
  // a pop.
  Wirx::MplsLabelStack labelOp;

  bool operator==(const LfibVia &) const = default;
  bool operator!() const { return *this == LfibVia(); }

  static constexpr std::string_view valueTypeName = "Mpls::LfibVia";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"intfId", &LfibVia::intfId},
                 Orv::Field{"nexthop", &LfibVia::nexthop},
                 Orv::Field{"labelAction", &LfibVia::labelAction},
                 Orv::Field{"labelOp", &LfibVia::labelOp}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os, const LfibVia &via);

} // namespace Mpls
