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

namespace Mesk {

// One way out of an IP forwarding entry: interface, next hop, and the
// label action with the labels it imposes (an IP route resolving over a
// labelled path pushes them; a plain IP route has action none and no
// labels).
struct FibVia {
  Wirx::IntfId intfId;
  Wirx::IpGenAddr nexthop;
  // An Mpls::LfibLabelAction value.
  Orv::U8 labelAction = 0;
  // The outgoing labels, top first.
  Wirx::MplsLabelStack labelStack;

  bool operator==(const FibVia &) const = default;
  bool operator!() const { return *this == FibVia(); }

  static constexpr std::string_view valueTypeName = "Mesk::FibVia";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"intfId", &FibVia::intfId},
                 Orv::Field{"nexthop", &FibVia::nexthop},
                 Orv::Field{"labelAction", &FibVia::labelAction},
                 Orv::Field{"labelStack", &FibVia::labelStack}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os, const FibVia &via);

} // namespace Mesk
