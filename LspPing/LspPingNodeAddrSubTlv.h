#pragma once

#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Export.h"

namespace LspPing {

// Node address sub-TLV (type 11) holding an IPv4 node address.
struct LSPPING_EXPORT LspPingNodeAddrSubTlv : LspPingTlvHdr {
  U16Nbo subType{0};
  U16Nbo subTypeLen{0};
  U32Nbo addr{0};

  bool valid() const;
  std::string stringValue() const;
};
static_assert(sizeof(LspPingNodeAddrSubTlv) == 12);

} // namespace LspPing
