#pragma once

#include "LspPing/LspPingEnum.h"

namespace LspPing {

// Type of a Target FEC Stack sub-TLV, two bytes on the wire. The segment-
// routing codes are ours and must stay: IPv4 is sent and recognised as 0x7C00,
// IPv6 uses 35, and 0x7C01 is the older IPv6 code, kept only to be named.
enum class LspPingTargetFecSubTlvType : U32 {
  LDPIpv4 = 1,
  LDPIpv6 = 2,
  RSVPIpv4Lsp = 3,
  RSVPIpv6Lsp = 4,
  NotAssigned = 5,
  VPNIpv4 = 6,
  VPNIpv6 = 7,
  L2VPNEndpoint = 8,
  FEC128Pseudowire = 10,
  FEC129Pseudowire = 11,
  BGPLabeledIpv4 = 12,
  BGPLabeledIpv6 = 13,
  GenericIpv4 = 14,
  GenericIpv6 = 15,
  NilFec = 16,
  SRIpv4 = 0x7C00,
  SRIpv6 = 35,
  SRIpv6Deprecated = 0x7C01,
};

inline constexpr Orv::EnumEntry lspPingTargetFecSubTlvTypeNames[] = {
    {"LDPIpv4", 1},           {"LDPIpv6", 2},
    {"RSVPIpv4Lsp", 3},       {"RSVPIpv6Lsp", 4},
    {"NotAssigned", 5},       {"VPNIpv4", 6},
    {"VPNIpv6", 7},           {"L2VPNEndpoint", 8},
    {"FEC128Pseudowire", 10}, {"FEC129Pseudowire", 11},
    {"BGPLabeledIpv4", 12},   {"BGPLabeledIpv6", 13},
    {"GenericIpv4", 14},      {"GenericIpv6", 15},
    {"NilFec", 16},           {"SRIpv4", 0x7C00},
    {"SRIpv6", 35},           {"SRIpv6Deprecated", 0x7C01},
};

} // namespace LspPing

template <> struct Orv::EnumTraits<LspPing::LspPingTargetFecSubTlvType> {
  static constexpr EnumType type{"LspPing::LspPingTargetFecSubTlvType",
                                 LspPing::lspPingTargetFecSubTlvTypeNames};
};

namespace LspPing {

inline LspPingTargetFecSubTlvType
LspPingTargetFecSubTlvTypeInstance(U32 value) {
  return Orv::enumInstance<LspPingTargetFecSubTlvType>(value);
}
inline LspPingTargetFecSubTlvType
LspPingTargetFecSubTlvTypeInstance(std::string_view name) {
  return Orv::enumInstance<LspPingTargetFecSubTlvType>(name);
}

} // namespace LspPing
