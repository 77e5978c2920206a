#pragma once

#include "LspPing/LspPingEnum.h"
#include "Orv/Export.h"

namespace LspPing {

// The special values of a client's transmit count.
struct LspPingTxCountConstants {
  // Not set: the client stays disabled.
  static constexpr S32 invalid = -2;
  // Send until the configuration goes away.
  static constexpr S32 infinite = -1;

  bool operator==(const LspPingTxCountConstants &) const = default;
};

LSPPING_EXPORT LspPingTxCountConstants lspPingTxCountConstantsFactory();

} // namespace LspPing
