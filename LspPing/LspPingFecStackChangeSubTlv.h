#pragma once

#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Export.h"

namespace LspPing {

// FEC stack change sub-TLV (type 3) of the detailed downstream mapping TLV.
struct LSPPING_EXPORT LspPingFecStackChangeSubTlv : LspPingTlvHdr {
  U8 operType = 0;
  U8 addrType = 0;
  U8 fecTlvLen = 0;
  U8 reserved = 0;
  U32Nbo peerAddr{0};

  bool valid() const;
};
static_assert(sizeof(LspPingFecStackChangeSubTlv) == 12);

} // namespace LspPing
