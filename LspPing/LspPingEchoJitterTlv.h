#pragma once

#include "LspPing/LspPingTlvHdr.h"

namespace LspPing {

// Echo jitter TLV (type 12, length 4).
struct LspPingEchoJitterTlv : LspPingTlvHdr {
  U32Nbo jitter{0};

  bool valid() const;
  std::string stringValue() const;
};
static_assert(sizeof(LspPingEchoJitterTlv) == 8);

} // namespace LspPing
