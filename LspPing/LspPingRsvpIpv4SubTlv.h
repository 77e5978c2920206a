#pragma once

#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Export.h"

namespace LspPing {

// RSVP IPv4 LSP sub-TLV of the Target FEC Stack (type 3, length 20).
struct LSPPING_EXPORT LspPingRsvpIpv4SubTlv : LspPingTlvHdr {
  U32Nbo destination{0};
  U16Nbo mbz0{0};
  U16Nbo tunnelId{0};
  U32Nbo extendedTunnelId{0}; // an IPv4 address
  U32Nbo senderAddress{0};
  U16Nbo mbz1{0};
  U16Nbo lspId{0};

  bool valid() const;
  std::string stringValue() const;
};
static_assert(sizeof(LspPingRsvpIpv4SubTlv) == 24);

} // namespace LspPing
