#pragma once

#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Export.h"

namespace LspPing {

// Fixed part of the detailed downstream mapping TLV (type 20); sub-TLVs of
// subTlvLen bytes follow.
struct LSPPING_EXPORT LspPingDdmapTlv : LspPingTlvHdr {
  U16Nbo mtu{0};
  U8 addrType = 0; // LspPingAddrType
  U8 dsFlags = 0;
  U32Nbo dsIpAddr{0};
  U32Nbo dsIntfAddr{0};
  U8 retCode = 0;
  U8 retSubcode = 0;
  U16Nbo subTlvLen{0};

  bool valid() const;
  std::string stringValue() const;
};
static_assert(sizeof(LspPingDdmapTlv) == 20);

} // namespace LspPing
