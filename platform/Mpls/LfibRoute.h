#pragma once

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string_view>
#include <tuple>

#include "Mpls/LfibViaSet.h"
#include "Orv/Export.h"
#include "Orv/Types.h"
#include "Orv/ValueText.h"
#include "Wirx/MplsLabel.h"

namespace Mpls {

// The key of a label route: the incoming top label it switches.
struct RouteKey {
  Wirx::MplsLabel topLabel;

  static RouteKey fromLabel(Wirx::MplsLabel label) { return RouteKey{label}; }

  bool operator==(const RouteKey &) const = default;

  static constexpr std::string_view valueTypeName = "Mpls::RouteKey";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"topLabel", &RouteKey::topLabel}};
};

// One route of the label forwarding table. The default route, which a
// lookup of an unknown key reads, has the null label in its key and no
// source.
struct LfibRoute {
  RouteKey key;
  // Where the route's via set is in the via-set table.
  LfibViaSetKey viaSetKey;
  // The number of the protocol that installed the route (static, RSVP-TE,
  // LDP, segment routing...), as the forwarding table records it.
  Orv::U8 source = 0;

  bool operator==(const LfibRoute &) const = default;
  bool operator!() const { return *this == LfibRoute(); }

  static constexpr std::string_view valueTypeName = "Mpls::LfibRoute";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"key", &LfibRoute::key},
                 Orv::Field{"viaSetKey", &LfibRoute::viaSetKey},
                 Orv::Field{"source", &LfibRoute::source}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os, const RouteKey &key);
LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                        const LfibRoute &route);

} // namespace Mpls

template <> struct std::hash<Mpls::RouteKey> {
  std::size_t operator()(const Mpls::RouteKey &key) const noexcept {
    return std::hash<Orv::U32>()(key.topLabel.value());
  }
};
