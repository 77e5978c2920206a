#pragma once

#include "LspPing/LspPingEnum.h"

namespace LspPing {

// Bytes of a downstream-mapping value before its multipath information, by
// address type.
enum class LspPingDownstreamMappingTlvIpAndIntfLen : U32 {
  ipv4DsLen = 16,
  ipv6NumberedDsLen = 40,
  ipv6UnnumberedDsLen = 28,
};

inline constexpr Orv::EnumEntry lspPingDownstreamMappingTlvIpAndIntfLenNames[] =
    {
        {"ipv4DsLen", 16},
        {"ipv6NumberedDsLen", 40},
        {"ipv6UnnumberedDsLen", 28},
};

} // namespace LspPing

template <>
struct Orv::EnumTraits<LspPing::LspPingDownstreamMappingTlvIpAndIntfLen> {
  static constexpr EnumType type{
      "LspPing::LspPingDownstreamMappingTlvIpAndIntfLen",
      LspPing::lspPingDownstreamMappingTlvIpAndIntfLenNames};
};

namespace LspPing {

inline LspPingDownstreamMappingTlvIpAndIntfLen
LspPingDownstreamMappingTlvIpAndIntfLenInstance(U32 value) {
  return Orv::enumInstance<LspPingDownstreamMappingTlvIpAndIntfLen>(value);
}
inline LspPingDownstreamMappingTlvIpAndIntfLen
LspPingDownstreamMappingTlvIpAndIntfLenInstance(std::string_view name) {
  return Orv::enumInstance<LspPingDownstreamMappingTlvIpAndIntfLen>(name);
}

} // namespace LspPing
