#pragma once

#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Export.h"

namespace LspPing {

// Point-to-multipoint FEC stack sub-TLV (type 19) with an IPv4 root address;
// an opaque value of opaqueLen bytes follows.
struct LSPPING_EXPORT LspPingP2mpFecStackSubTlv : LspPingTlvHdr {
  U16Nbo family{0};
  U8 addrLen = 0;
  U32Nbo rootAddr{0};
  U16Nbo opaqueLen{0};

  bool valid() const;
  std::string stringValue() const;
};
static_assert(sizeof(LspPingP2mpFecStackSubTlv) == 13);

} // namespace LspPing
