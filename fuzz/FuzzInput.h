#pragma once

#include <cstddef>
#include <cstdint>

#include "Wirx/Pkt.h"

namespace FuzzInput {

// Keeps the optimizer from dropping reads whose results are otherwise unused.
inline volatile std::uint64_t sink;

inline void consume(std::uint64_t v) { sink = sink + v; }

// The input as a packet whose data ends where the buffer does, so that a read
// past the data leaves the buffer instead of landing in unused tail room.
// For the packet the pool hands out (the last of its block) that is past the
// end of a heap block, where the address sanitizer sees it. Null when the
// input does not fit a packet buffer.
inline Orv::Ptr<Wirx::Pkt> packetOf(const std::uint8_t *data,
                                    std::size_t size) {
  if (size > Wirx::Pkt::capacity) {
    return nullptr;
  }
  const auto len = static_cast<Orv::U32>(size);
  return Wirx::Pkt::copyOf(data, len, Wirx::Pkt::capacity - len);
}

} // namespace FuzzInput
