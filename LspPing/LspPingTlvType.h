#pragma once

#include "LspPing/LspPingEnum.h"

namespace LspPing {

// Type of a top-level TLV, two bytes on the wire. It stops at 10: the detailed
// downstream mapping (20) and echo jitter (12) records have no enumerator.
enum class LspPingTlvType : U32 {
  TargetFecStack = 1,
  DownstreamMapping = 2,
  Pad = 3,
  NotAssigned4 = 4,
  VendorEnterpriseNum = 5,
  NotAssigned6 = 6,
  IntfAndLabelStack = 7,
  NotAssigned8 = 8,
  ErrorTlv = 9,
  ReplyTosByte = 10,
};

inline constexpr Orv::EnumEntry lspPingTlvTypeNames[] = {
    {"TargetFecStack", 1},    {"DownstreamMapping", 2},   {"Pad", 3},
    {"NotAssigned4", 4},      {"VendorEnterpriseNum", 5}, {"NotAssigned6", 6},
    {"IntfAndLabelStack", 7}, {"NotAssigned8", 8},        {"ErrorTlv", 9},
    {"ReplyTosByte", 10},
};

} // namespace LspPing

template <> struct Orv::EnumTraits<LspPing::LspPingTlvType> {
  static constexpr EnumType type{"LspPing::LspPingTlvType",
                                 LspPing::lspPingTlvTypeNames};
};

namespace LspPing {

inline LspPingTlvType LspPingTlvTypeInstance(U32 value) {
  return Orv::enumInstance<LspPingTlvType>(value);
}
inline LspPingTlvType LspPingTlvTypeInstance(std::string_view name) {
  return Orv::enumInstance<LspPingTlvType>(name);
}

} // namespace LspPing
