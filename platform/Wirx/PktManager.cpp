#include "Wirx/PktManager.h"

#include "Wirx/PktPool.h"

namespace Wirx {

PktManager &PktManager::instance() {
  static PktManager manager;
  return manager;
}

Orv::Ptr<Pkt> PktManager::pktNew(Orv::U32 headroom) {
  if (pktsInUse() >= pktLimit_) {
    return nullptr;
  }
  return PktPool::instance().alloc(headroom);
}

Orv::U32 PktManager::pktsInUse() const {
  const PktPool &pool = PktPool::instance();
  return pool.totalCount() - pool.freeCount();
}

} // namespace Wirx
