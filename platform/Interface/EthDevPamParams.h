#pragma once

#include <string>

#include "Orv/Types.h"
#include "Wirx/IntfId.h"
#include "Wirx/NamespaceName.h"

namespace Interface {

// What the Ethernet-device PAM manager asks to be opened: a raw module on
// one interface's kernel device, or, when not one module per interface, a
// single module on every device of the namespace (no interface, no device).
struct EthDevPamParams {
  Wirx::IntfId intfId;
  std::string deviceName;
  Wirx::NamespaceName netNs;
  // The EtherType received and sent; the module sees no other frames.
  Orv::U16 ethProtocol = 0;
  // Whether broadcast frames are received too.
  bool broadcast = false;
  // The largest frame received, in bytes; longer ones are cut.
  Orv::U32 maxRxPktData = 0;

  bool operator==(const EthDevPamParams &) const = default;
};

} // namespace Interface
