#pragma once

#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Export.h"

namespace LspPing {

// Segment-routing IPv4 prefix sub-TLV (type 0x7C00). Its length field says
// 6 although 8 value bytes follow: the two reserved bytes are carried but not
// counted, and peers of ours expect exactly that.
struct LSPPING_EXPORT LspPingSrIpv4SubTlv : LspPingTlvHdr {
  U32Nbo ipPrefix{0};
  U8 prefixLen = 0;
  U8 protocol = 0; // LspPingSrIgpProtocol
  U16Nbo reserved{0};

  // Checks the length (6) only; the invalid text is empty.
  bool valid() const;
  std::string stringValue() const;
};
static_assert(sizeof(LspPingSrIpv4SubTlv) == 12);

} // namespace LspPing
