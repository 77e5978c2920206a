#pragma once

#include "Orv/Assert.h"
#include "Orv/Export.h"
#include "Orv/Object.h"
#include "Orv/Types.h"

namespace Wirx {

class PktPool;

// A packet buffer of fixed capacity with room kept free before and after the
// data, so that headers are prepended and payload appended in place while a
// frame is built. Buffers come from PktPool and go back to it at the last
// unref: the hot path never calls the general allocator.
class LSPPING_EXPORT Pkt final : public Orv::Object {
public:
  // A full untagged Ethernet frame (1518 bytes) or one with two VLAN tags
  // fits after the default head room.
  static constexpr Orv::U32 capacity = 2048;
  static constexpr Orv::U32 defaultHeadroom = 128;

  // A pooled, empty packet whose data starts after `headroom` bytes.
  static Orv::Ptr<Pkt> make(Orv::U32 headroom = defaultHeadroom);
  // A pooled packet holding a copy of `len` bytes, or null when they do not
  // fit: an oversized received frame is dropped, not a fault.
  static Orv::Ptr<Pkt> copyOf(const Orv::U8 *bytes, Orv::U32 len,
                              Orv::U32 headroom = defaultHeadroom);

  Orv::U8 *data() noexcept { return buf_ + begin_; }
  const Orv::U8 *data() const noexcept { return buf_ + begin_; }
  // The packet's data length.
  Orv::U32 frontBytes() const noexcept { return end_ - begin_; }
  Orv::U32 headroom() const noexcept { return begin_; }
  Orv::U32 tailroom() const noexcept { return capacity - end_; }

  // Grows the data by `n` bytes at the front; returns the new first byte.
  Orv::U8 *prepend(Orv::U32 n) noexcept {
    ORV_ASSERT(n <= headroom());
    begin_ -= n;
    return data();
  }
  // Grows the data by `n` bytes at the back; returns the first new byte.
  Orv::U8 *append(Orv::U32 n) noexcept {
    ORV_ASSERT(n <= tailroom());
    Orv::U8 *tail = buf_ + end_;
    end_ += n;
    return tail;
  }
  // Typed forms for packed header overlays (alignment 1).
  template <class Hdr> Hdr *prependAs() noexcept {
    static_assert(alignof(Hdr) == 1, "only packed overlays");
    return reinterpret_cast<Hdr *>(prepend(sizeof(Hdr)));
  }
  template <class Hdr> Hdr *appendAs() noexcept {
    static_assert(alignof(Hdr) == 1, "only packed overlays");
    return reinterpret_cast<Hdr *>(append(sizeof(Hdr)));
  }

  void trimFront(Orv::U32 n) noexcept {
    ORV_ASSERT(n <= frontBytes());
    begin_ += n;
  }
  void trimBack(Orv::U32 n) noexcept {
    ORV_ASSERT(n <= frontBytes());
    end_ -= n;
  }
  // Empties the packet, its data starting after `headroom` bytes.
  void reset(Orv::U32 headroom) noexcept {
    ORV_ASSERT(headroom <= capacity);
    begin_ = headroom;
    end_ = headroom;
  }

private:
  friend class PktPool;
  Pkt() noexcept = default;
  ~Pkt() override = default;
  void release() const noexcept override;

  Orv::U32 begin_ = 0;
  Orv::U32 end_ = 0;
  Pkt *nextFree_ = nullptr;
  // Left uninitialised: every byte of data is written before it is read,
  // and clearing 2 KiB per packet would dominate the cost of a small frame.
  alignas(8) Orv::U8 buf_[capacity];
};

} // namespace Wirx
