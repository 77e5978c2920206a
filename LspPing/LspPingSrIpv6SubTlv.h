#pragma once

#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Export.h"

namespace LspPing {

// Segment-routing IPv6 prefix sub-TLV (type 35). As with the IPv4 form, the
// length field (18) leaves out the two reserved bytes.
struct LSPPING_EXPORT LspPingSrIpv6SubTlv : LspPingTlvHdr {
  Ip6AddrNbo ipPrefix;
  U8 prefixLen = 0;
  U8 protocol = 0; // LspPingSrIgpProtocol
  U16Nbo reserved{0};

  // Checks the length (18) only; the invalid text is empty.
  bool valid() const;
  std::string stringValue() const;
};
static_assert(sizeof(LspPingSrIpv6SubTlv) == 24);

} // namespace LspPing
