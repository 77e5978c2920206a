#pragma once

#include "LspPing/LspPingRecord.h"

namespace LspPing {

// The value of an Interface and Label Stack TLV begins with its address
// type; the address, the interface and then 4-byte label entries follow.
struct LspPingIntfAndLabelStackHdr {
  U8 addrType = 0; // LspPingAddrType
  U8 mbz0 = 0;
  U16Nbo mbz1{0};
};
static_assert(sizeof(LspPingIntfAndLabelStackHdr) == 4);

struct LspPingIntfAndLabelStackIpv4Tlv : LspPingIntfAndLabelStackHdr {
  U32Nbo addr{0};
  U32Nbo intf{0};
};
static_assert(sizeof(LspPingIntfAndLabelStackIpv4Tlv) == 12);

struct LspPingIntfAndLabelStackIpv6Tlv : LspPingIntfAndLabelStackHdr {
  Ip6AddrNbo addr;
  Ip6AddrNbo intf;
};
static_assert(sizeof(LspPingIntfAndLabelStackIpv6Tlv) == 36);

} // namespace LspPing
