#include "Wirx/Pkt.h"

#include "Wirx/PktPool.h"

#include <cstring>

namespace Wirx {

Orv::Ptr<Pkt> Pkt::make(Orv::U32 headroom) {
  return PktPool::instance().alloc(headroom);
}

Orv::Ptr<Pkt> Pkt::copyOf(const Orv::U8 *bytes, Orv::U32 len,
                          Orv::U32 headroom) {
  if (headroom > capacity || len > capacity - headroom) {
    return nullptr;
  }
  Orv::Ptr<Pkt> pkt = PktPool::instance().alloc(headroom);
  if (len != 0) {
    std::memcpy(pkt->append(len), bytes, len);
  }
  return pkt;
}

void Pkt::release() const noexcept {
  // Only the pool creates packets, so every packet goes back to it.
  PktPool::instance().recycle(const_cast<Pkt *>(this));
}

} // namespace Wirx
