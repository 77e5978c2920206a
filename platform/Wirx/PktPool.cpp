#include "Wirx/PktPool.h"

#include <new>

namespace Wirx {

PktPool &PktPool::instance() {
  // Deliberately never destroyed: a packet still referenced by another
  // static object at exit would otherwise return to a dead pool.
  static PktPool *const pool = new PktPool;
  return *pool;
}

void PktPool::reserve(Orv::U32 count) {
  while (freeCount_ < count) {
    grow();
  }
}

void PktPool::grow() {
  // Blocks stay reachable through the free list and the live packets, and
  // are never given back, so their addresses need not be kept.
  void *block =
      ::operator new (sizeof(Pkt) * blockPkts, std::align_val_t{alignof(Pkt)});
  Pkt *pkts = static_cast<Pkt *>(block);
  for (Orv::U32 i = 0; i < blockPkts; ++i) {
    recycle(new (pkts + i) Pkt);
  }
  totalCount_ += blockPkts;
}

} // namespace Wirx
