#pragma once

#include "LspPing/LspPingRecord.h"

namespace LspPing {

// The value of a Downstream Mapping TLV begins with MTU, address type and
// flags; the addresses, the multipath header, the multipath information and
// then 4-byte downstream label entries follow.
struct LspPingDownstreamMappingHdr {
  U16Nbo mtu{0};
  U8 addrType = 0; // LspPingAddrType
  U8 dsFlags = 0;
};
static_assert(sizeof(LspPingDownstreamMappingHdr) == 4);

struct LspPingDownstreamMappingIpv4Tlv : LspPingDownstreamMappingHdr {
  U32Nbo dsIpAddr{0};
  U32Nbo dsIntfAddr{0};
  U8 multipathType = 0; // LspPingMultipathType
  U8 depthLimit = 0;
  U16Nbo multipathLength{0};
};
static_assert(sizeof(LspPingDownstreamMappingIpv4Tlv) == 16);

struct LspPingDownstreamMappingIpv6Tlv : LspPingDownstreamMappingHdr {
  Ip6AddrNbo dsIpAddr;
  Ip6AddrNbo dsIntfAddr;
  U8 multipathType = 0;
  U8 depthLimit = 0;
  U16Nbo multipathLength{0};
};
static_assert(sizeof(LspPingDownstreamMappingIpv6Tlv) == 40);

} // namespace LspPing
