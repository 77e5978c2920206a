#pragma once

#include "Orv/Export.h"
#include "Wirx/IntfId.h"

namespace Wirx {

// Internal interfaces: links between the system's own parts (processors,
// fabric), "Internal1" or "Internal1/1", the word followed by a number.
// No one outside the system is reachable through them.
class LSPPING_EXPORT InternalIntfId {
public:
  static bool isInternalIntfId(const IntfId &intf);
};

} // namespace Wirx
