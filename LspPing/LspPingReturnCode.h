#pragma once

#include "LspPing/LspPingEnum.h"

namespace LspPing {

// One byte in the echo header; the return subcode beside it is the label-stack
// depth at which the code applies.
enum class LspPingReturnCode : U32 {
  noRetCode = 0,
  malFormEchoRequest = 1,
  tlvNotUnderstood = 2,
  repRouterEgress = 3,
  noMappingForFec = 4,
  dsMappingMismatch = 5,
  usIntfUnknown = 6,
  reservedRetCode = 7,
  labelSwitchedAtStackDep = 8,
  labelSwitchedNoMplsFwd = 9,
  labelMappingMismatch = 10,
  noLabelEntryAtStackDep = 11,
  protocolIntfMismatch = 12,
  premTermination = 13,
};

inline constexpr Orv::EnumEntry lspPingReturnCodeNames[] = {
    {"noRetCode", 0},
    {"malFormEchoRequest", 1},
    {"tlvNotUnderstood", 2},
    {"repRouterEgress", 3},
    {"noMappingForFec", 4},
    {"dsMappingMismatch", 5},
    {"usIntfUnknown", 6},
    {"reservedRetCode", 7},
    {"labelSwitchedAtStackDep", 8},
    {"labelSwitchedNoMplsFwd", 9},
    {"labelMappingMismatch", 10},
    {"noLabelEntryAtStackDep", 11},
    {"protocolIntfMismatch", 12},
    {"premTermination", 13},
};

} // namespace LspPing

template <> struct Orv::EnumTraits<LspPing::LspPingReturnCode> {
  static constexpr EnumType type{"LspPing::LspPingReturnCode",
                                 LspPing::lspPingReturnCodeNames};
};

namespace LspPing {

inline LspPingReturnCode LspPingReturnCodeInstance(U32 value) {
  return Orv::enumInstance<LspPingReturnCode>(value);
}
inline LspPingReturnCode LspPingReturnCodeInstance(std::string_view name) {
  return Orv::enumInstance<LspPingReturnCode>(name);
}

} // namespace LspPing
