#pragma once

#include "LspPing/LspPingEnum.h"

namespace LspPing {

// The kind of path a ping client tests; never on the wire.
enum class LspPingTunnelType : U32 {
  tunnelUnknown = 0,
  tunnelModeRaw = 1,
  tunnelStaticConfig = 2,
  tunnelLdpIpv4 = 3,
  tunnelRsvpIpv4 = 4,
  tunnelSrIpv4 = 5,
  tunnelSrIpv6 = 6,
  tunnelPwLdp = 7,
};

inline constexpr Orv::EnumEntry lspPingTunnelTypeNames[] = {
    {"tunnelUnknown", 0}, {"tunnelModeRaw", 1},  {"tunnelStaticConfig", 2},
    {"tunnelLdpIpv4", 3}, {"tunnelRsvpIpv4", 4}, {"tunnelSrIpv4", 5},
    {"tunnelSrIpv6", 6},  {"tunnelPwLdp", 7},
};

} // namespace LspPing

template <> struct Orv::EnumTraits<LspPing::LspPingTunnelType> {
  static constexpr EnumType type{"LspPing::LspPingTunnelType",
                                 LspPing::lspPingTunnelTypeNames};
};

namespace LspPing {

inline LspPingTunnelType LspPingTunnelTypeInstance(U32 value) {
  return Orv::enumInstance<LspPingTunnelType>(value);
}
inline LspPingTunnelType LspPingTunnelTypeInstance(std::string_view name) {
  return Orv::enumInstance<LspPingTunnelType>(name);
}

} // namespace LspPing
