#pragma once

#include "LspPing/LspPingEnum.h"

namespace LspPing {

// Bytes of an interface-and-label-stack value before its label stack (address
// type and reserved bytes, address, interface), by address type.
enum class LspPingIntfAndLabelStackTlvIpAndIntfLen : U32 {
  ipv4IfLen = 12,
  ipv6NumberedIfLen = 36,
  ipv6UnnumberedIfLen = 24,
};

inline constexpr Orv::EnumEntry lspPingIntfAndLabelStackTlvIpAndIntfLenNames[] =
    {
        {"ipv4IfLen", 12},
        {"ipv6NumberedIfLen", 36},
        {"ipv6UnnumberedIfLen", 24},
};

} // namespace LspPing

template <>
struct Orv::EnumTraits<LspPing::LspPingIntfAndLabelStackTlvIpAndIntfLen> {
  static constexpr EnumType type{
      "LspPing::LspPingIntfAndLabelStackTlvIpAndIntfLen",
      LspPing::lspPingIntfAndLabelStackTlvIpAndIntfLenNames};
};

namespace LspPing {

inline LspPingIntfAndLabelStackTlvIpAndIntfLen
LspPingIntfAndLabelStackTlvIpAndIntfLenInstance(U32 value) {
  return Orv::enumInstance<LspPingIntfAndLabelStackTlvIpAndIntfLen>(value);
}
inline LspPingIntfAndLabelStackTlvIpAndIntfLen
LspPingIntfAndLabelStackTlvIpAndIntfLenInstance(std::string_view name) {
  return Orv::enumInstance<LspPingIntfAndLabelStackTlvIpAndIntfLen>(name);
}

} // namespace LspPing
