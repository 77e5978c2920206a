#pragma once

#include <functional>
#include <string_view>
#include <tuple>

#include "Orv/ValueText.h"
#include "Wirx/IpAddr.h"

namespace Rsvp {

// Identifies one RSVP-TE path: the session (tunnel end point, tunnel ID and
// extended tunnel ID) and the LSP of that session. The default value, all
// zero, names no path.
struct RsvpSpId {
  Wirx::IpAddr tunnelDst;
  Orv::U16 tunnelId = 0;
  Wirx::IpAddr extendedTunnelId;
  Orv::U16 lspId = 0;

  bool operator==(const RsvpSpId &) const = default;
  bool operator!() const { return *this == RsvpSpId{}; }
  std::size_t hash() const {
    return std::hash<Orv::U64>()(
        (Orv::U64(tunnelDst.value()) << 32 | extendedTunnelId.value()) ^
        (Orv::U64(tunnelId) << 16 | lspId));
  }

  static constexpr std::string_view valueTypeName = "Rsvp::RsvpSpId";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"tunnelDst", &RsvpSpId::tunnelDst},
                 Orv::Field{"tunnelId", &RsvpSpId::tunnelId},
                 Orv::Field{"extendedTunnelId", &RsvpSpId::extendedTunnelId},
                 Orv::Field{"lspId", &RsvpSpId::lspId}};
};

inline std::ostream &operator<<(std::ostream &os, const RsvpSpId &id) {
  return os << Orv::valueText(id);
}

} // namespace Rsvp

template <> struct std::hash<Rsvp::RsvpSpId> {
  std::size_t operator()(const Rsvp::RsvpSpId &id) const { return id.hash(); }
};
