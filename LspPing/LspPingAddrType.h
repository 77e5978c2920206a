#pragma once

#include "LspPing/LspPingEnum.h"

namespace LspPing {

// Address type of the interface-and-label-stack and downstream-mapping TLVs,
// one byte.
enum class LspPingAddrType : U32 {
  ipv4Numbered = 1,
  ipv4Unnumbered = 2,
  ipv6Numbered = 3,
  ipv6Unnumbered = 4,
};

inline constexpr Orv::EnumEntry lspPingAddrTypeNames[] = {
    {"ipv4Numbered", 1},
    {"ipv4Unnumbered", 2},
    {"ipv6Numbered", 3},
    {"ipv6Unnumbered", 4},
};

} // namespace LspPing

template <> struct Orv::EnumTraits<LspPing::LspPingAddrType> {
  static constexpr EnumType type{"LspPing::LspPingAddrType",
                                 LspPing::lspPingAddrTypeNames};
};

namespace LspPing {

inline LspPingAddrType LspPingAddrTypeInstance(U32 value) {
  return Orv::enumInstance<LspPingAddrType>(value);
}
inline LspPingAddrType LspPingAddrTypeInstance(std::string_view name) {
  return Orv::enumInstance<LspPingAddrType>(name);
}

} // namespace LspPing
