#pragma once

#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Export.h"

namespace LspPing {

// Multipath sub-TLV (type 1) of the detailed downstream mapping TLV.
struct LSPPING_EXPORT LspPingMultipathSubTlv : LspPingTlvHdr {
  U8 multipathType = 0; // LspPingMultipathType
  U16Nbo multipathLength{0};
  U8 mbz = 0;

  bool valid() const;
};
static_assert(sizeof(LspPingMultipathSubTlv) == 8);

} // namespace LspPing
