#pragma once

#include "Orv/Export.h"
#include "Orv/Object.h"
#include "Orv/Types.h"
#include "Wirx/Pkt.h"

namespace Wirx {

// The free list of packet buffers. Single threaded like the rest of the
// agent, so it takes no locks. It grows in blocks when empty and never
// shrinks; reserve() at start-up keeps the general allocator off the hot
// path altogether.
class LSPPING_EXPORT PktPool {
public:
  static constexpr Orv::U32 blockPkts = 64;

  static PktPool &instance();

  PktPool(const PktPool &) = delete;
  PktPool &operator=(const PktPool &) = delete;

  Orv::Ptr<Pkt> alloc(Orv::U32 headroom = Pkt::defaultHeadroom) {
    if (free_ == nullptr) {
      grow();
    }
    Pkt *pkt = free_;
    free_ = pkt->nextFree_;
    --freeCount_;
    pkt->reset(headroom);
    return Orv::Ptr<Pkt>(pkt);
  }
  // Makes sure at least `count` buffers are free.
  void reserve(Orv::U32 count);

  Orv::U32 freeCount() const noexcept { return freeCount_; }
  Orv::U32 totalCount() const noexcept { return totalCount_; }

private:
  friend class Pkt;
  PktPool() = default;

  void grow();
  void recycle(Pkt *pkt) noexcept {
    pkt->nextFree_ = free_;
    free_ = pkt;
    ++freeCount_;
  }

  Pkt *free_ = nullptr;
  Orv::U32 freeCount_ = 0;
  Orv::U32 totalCount_ = 0;
};

} // namespace Wirx
