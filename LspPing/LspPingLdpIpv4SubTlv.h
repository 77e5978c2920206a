#pragma once

#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Export.h"

namespace LspPing {

// LDP IPv4 prefix sub-TLV of the Target FEC Stack (type 1, length 5).
struct LSPPING_EXPORT LspPingLdpIpv4SubTlv : LspPingTlvHdr {
  U32Nbo ipPrefix{0};
  U8 prefixLen = 0;
  U8 mbz0 = 0;
  U16Nbo mbz1{0};

  // Checks the length only: the type field is not looked at.
  bool valid() const;
  std::string stringValue() const;
};
static_assert(sizeof(LspPingLdpIpv4SubTlv) == 12);

} // namespace LspPing
