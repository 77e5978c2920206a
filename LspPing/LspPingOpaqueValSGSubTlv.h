#pragma once

#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Export.h"

namespace LspPing {

// Opaque-value (S,G) sub-TLV (type 3, length 8) with its short header.
struct LSPPING_EXPORT LspPingOpaqueValSGSubTlv : LspPingTlvU8Hdr {
  U32Nbo sourceAddr{0};
  U32Nbo groupAddr{0};

  bool valid() const;
  std::string stringValue() const;
};
static_assert(sizeof(LspPingOpaqueValSGSubTlv) == 11);

} // namespace LspPing
