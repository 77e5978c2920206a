#pragma once

#include "Orv/Export.h"
#include "Wirx/IntfId.h"

namespace Wirx {

// Management interfaces: the out-of-band ports of the processor,
// "Management1" or "Management1/1", the word followed by a port number.
// They carry the operators' sessions, never data-plane traffic.
class LSPPING_EXPORT MgmtIntfId {
public:
  static bool isMgmtIntfId(const IntfId &intf);
};

} // namespace Wirx
