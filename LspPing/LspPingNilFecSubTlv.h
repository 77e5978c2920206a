#pragma once

#include "LspPing/LspPingNilFecSubTlvLabel.h"
#include "LspPing/LspPingTlvHdr.h"
#include "Orv/Export.h"

namespace LspPing {

// Nil FEC sub-TLV (type 16, length 4): names a label, not a path.
struct LSPPING_EXPORT LspPingNilFecSubTlv : LspPingTlvHdr {
  LspPingNilFecSubTlvLabel labelField;

  bool valid() const;
  std::string stringValue() const;
};
static_assert(sizeof(LspPingNilFecSubTlv) == 8);

} // namespace LspPing
