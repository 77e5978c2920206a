#pragma once

#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Export.h"

namespace LspPing {

// Echo jitter TLV (type 12, length 4).
struct LSPPING_EXPORT LspPingEchoJitterTlv : LspPingTlvHdr {
  U32Nbo jitter{0};

  bool valid() const;
  std::string stringValue() const;
};
static_assert(sizeof(LspPingEchoJitterTlv) == 8);

} // namespace LspPing
