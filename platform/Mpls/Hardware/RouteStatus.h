#pragma once

#include <iosfwd>
#include <string_view>
#include <tuple>

#include "Orv/Export.h"
#include "Orv/Types.h"
#include "Orv/ValueText.h"

namespace Mpls::Hardware {

// Where the hardware stands with one label route. Only `programmed` means
// the forwarding chip switches the label; every other state means packets
// arriving with it are dropped in hardware. The default, which a lookup of
// a route the hardware has never heard of reads, is `pending`.
struct RouteStatus {
  // The route is in the chip.
  static constexpr Orv::U8 programmed = 0;
  // The route is known to the hardware agent, not yet written to the chip.
  static constexpr Orv::U8 pending = 1;
  // The chip refused the route (its tables are full).
  static constexpr Orv::U8 failed = 2;

  Orv::U8 programState = pending;

  bool isProgrammed() const { return programState == programmed; }

  bool operator==(const RouteStatus &) const = default;
  bool operator!() const { return *this == RouteStatus(); }

  static constexpr std::string_view valueTypeName =
      "Mpls::Hardware::RouteStatus";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"programState", &RouteStatus::programState}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                        const RouteStatus &status);

} // namespace Mpls::Hardware
