#pragma once

#include "LspPing/LspPingEnum.h"

namespace LspPing {

// Multipath type of a downstream mapping, one byte.
enum class LspPingMultipathType : U32 {
  noMultipath = 0,
  ipMultipath = 2,
  ipRangeMultipath = 4,
  maskedIpSetMultipath = 8,
  maskedLabelSetMultipath = 9,
};

inline constexpr Orv::EnumEntry lspPingMultipathTypeNames[] = {
    {"noMultipath", 0},
    {"ipMultipath", 2},
    {"ipRangeMultipath", 4},
    {"maskedIpSetMultipath", 8},
    {"maskedLabelSetMultipath", 9},
};

} // namespace LspPing

template <> struct Orv::EnumTraits<LspPing::LspPingMultipathType> {
  static constexpr EnumType type{"LspPing::LspPingMultipathType",
                                 LspPing::lspPingMultipathTypeNames};
};

namespace LspPing {

inline LspPingMultipathType LspPingMultipathTypeInstance(U32 value) {
  return Orv::enumInstance<LspPingMultipathType>(value);
}
inline LspPingMultipathType
LspPingMultipathTypeInstance(std::string_view name) {
  return Orv::enumInstance<LspPingMultipathType>(name);
}

} // namespace LspPing
