#pragma once

#include "Orv/Export.h"
#include "Orv/Object.h"
#include "Orv/Types.h"
#include "Wirx/Pkt.h"

namespace Wirx {

// The agent-wide source of packets for what the agent sends. It draws on the
// pool and refuses (returns null) once `pktLimit` buffers are in use, as the
// router's packet memory does when it runs out: a caller that gets no packet
// drops what it was about to send.
class LSPPING_EXPORT PktManager {
public:
  static constexpr Orv::U32 unlimited = ~0u;

  static PktManager &instance();

  Orv::Ptr<Pkt> pktNew(Orv::U32 headroom = Pkt::defaultHeadroom);

  Orv::U32 pktLimit() const { return pktLimit_; }
  void pktLimitIs(Orv::U32 limit) { pktLimit_ = limit; }
  Orv::U32 pktsInUse() const;

private:
  PktManager() = default;
  Orv::U32 pktLimit_ = unlimited;
};

} // namespace Wirx
