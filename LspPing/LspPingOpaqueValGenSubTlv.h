#pragma once

#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Export.h"

namespace LspPing {

// Generic opaque-value sub-TLV (type 1, length 4) with its short header.
struct LSPPING_EXPORT LspPingOpaqueValGenSubTlv : LspPingTlvU8Hdr {
  U32Nbo lspId{0};

  bool valid() const;
  std::string stringValue() const;
};
static_assert(sizeof(LspPingOpaqueValGenSubTlv) == 7);

} // namespace LspPing
