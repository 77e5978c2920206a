#pragma once

#include "LspPing/LspPingEnum.h"

namespace LspPing {

// Whether a client pings or traces; never on the wire.
enum class LspPingMode : U32 {
  modeLspPing = 1,
  modeLspTraceRoute = 2,
};

inline constexpr Orv::EnumEntry lspPingModeNames[] = {
    {"modeLspPing", 1},
    {"modeLspTraceRoute", 2},
};

} // namespace LspPing

template <> struct Orv::EnumTraits<LspPing::LspPingMode> {
  static constexpr EnumType type{"LspPing::LspPingMode",
                                 LspPing::lspPingModeNames};
};

namespace LspPing {

inline LspPingMode LspPingModeInstance(U32 value) {
  return Orv::enumInstance<LspPingMode>(value);
}
inline LspPingMode LspPingModeInstance(std::string_view name) {
  return Orv::enumInstance<LspPingMode>(name);
}

} // namespace LspPing
