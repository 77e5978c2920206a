#pragma once

#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Export.h"

namespace LspPing {

// FEC 128 pseudowire sub-TLV (type 10, length 14).
struct LSPPING_EXPORT LspPingFec128Ipv4SubTlv : LspPingTlvHdr {
  U32Nbo senderAddr{0};
  U32Nbo receiverAddr{0};
  U32Nbo pwId{0};
  U16Nbo pwType{0};
  U16Nbo mbz{0};

  // Also requires a zero byte at offset 18 and pseudowire type 4 or 5.
  bool valid() const;
  std::string stringValue() const;
};
static_assert(sizeof(LspPingFec128Ipv4SubTlv) == 20);

} // namespace LspPing
