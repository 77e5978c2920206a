#pragma once

#include "LspPing/LspPingRecord.h"

namespace LspPing {

// The header of every top-level TLV and of every Target FEC Stack sub-TLV.
struct LspPingTlvHdr {
  U16Nbo typeNbo{0};
  U16Nbo lengthNbo{0}; // value bytes, header excluded

  U16 type() const { return typeNbo.value(); }
  U16 length() const { return lengthNbo.value(); }
  // Bytes the TLV occupies in the packet: header plus value, padded to 4.
  U32 totalLength() const { return (length() + 7u) & ~3u; }
};
static_assert(sizeof(LspPingTlvHdr) == 4);

// The 3-byte header of the opaque-value sub-TLVs.
struct LspPingTlvU8Hdr {
  U8 type = 0;
  U16Nbo length{0};

  U32 totalLength() const { return (length.value() + 3u + 3u) & ~3u; }
};
static_assert(sizeof(LspPingTlvU8Hdr) == 3);

} // namespace LspPing
