#pragma once

#include <iosfwd>
#include <string_view>
#include <tuple>

#include "Orv/Export.h"
#include "Orv/ValueText.h"
#include "Wirx/MplsLabel.h"

namespace Rsvp {

// The state RSVP-TE keeps for one path through this router: the label it
// advertised upstream for the path, on which the path's packets arrive
// (implicit null when this router is the path's egress). The default, which
// a lookup of an unknown path reads, holds the null label.
struct RsvpSpState {
  Wirx::MplsLabel label;

  bool operator==(const RsvpSpState &) const = default;
  bool operator!() const { return *this == RsvpSpState(); }

  static constexpr std::string_view valueTypeName = "Rsvp::RsvpSpState";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"label", &RsvpSpState::label}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                        const RsvpSpState &state);

} // namespace Rsvp
