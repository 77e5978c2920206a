#pragma once

#include "Orv/Assert.h"
#include "Orv/Export.h"
#include "Orv/Types.h"
#include "Wirx/MplsLabel.h"
#include "Wirx/MplsLabelEntry.h"

#include <algorithm>
#include <array>
#include <compare>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace Wirx {

// Label stack entries in stack order, top first: the label with its traffic
// class, bottom-of-stack bit and TTL, so that a stack read off the wire can
// be written back exactly as it came. A control plane's stack names labels
// only, and its other fields stay zero. Kept inline (no heap) so that parsing
// a frame or copying a stack never allocates; real stacks are a few labels
// deep, `capacity` leaves ample room.
class LSPPING_EXPORT MplsLabelStack {
public:
  static constexpr Orv::U32 capacity = 16;

  constexpr MplsLabelStack() noexcept = default;

  // Adds `entry` below the entries already there. Throws Orv::RangeError
  // when the stack is full.
  void push(const MplsLabelEntry &entry);
  // Adds `label` with traffic class, bottom-of-stack bit and TTL zero.
  void push(MplsLabel label) { push(MplsLabelEntry(label, 0, false, 0)); }
  void clear() noexcept { size_ = 0; }

  Orv::U32 size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  bool full() const noexcept { return size_ == capacity; }
  // Whether the stack can be written to the wire: at least one label, and
  // every label a 20-bit value (neither `null` nor `luWithdraw`). The size
  // never exceeds `capacity`, as push() refuses to overfill.
  bool valid() const noexcept {
    return !empty() &&
           std::all_of(begin(), end(), [](const MplsLabelEntry &entry) {
             return entry.label().isWireLabel();
           });
  }
  const MplsLabelEntry &operator[](Orv::U32 index) const noexcept {
    ORV_ASSERT(index < size_);
    return entries_[index];
  }
  const MplsLabelEntry *begin() const noexcept { return entries_.data(); }
  const MplsLabelEntry *end() const noexcept { return entries_.data() + size_; }

  bool operator!() const noexcept { return empty(); }
  bool operator==(const MplsLabelStack &other) const noexcept {
    return std::equal(begin(), end(), other.begin(), other.end());
  }
  // Lexicographic, top label first.
  std::strong_ordering operator<=>(const MplsLabelStack &other) const noexcept {
    return std::lexicographical_compare_three_way(begin(), end(), other.begin(),
                                                  other.end());
  }

  // Top first, each entry as its label followed by the fields that are not
  // zero: "[100, 200]", "[77/tc=3/ttl=5, 200/bos/ttl=1]"; "[]" when empty.
  std::string stringValue() const;
  static std::optional<MplsLabelStack>
  fromString(std::string_view text) noexcept;
  friend LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                                 const MplsLabelStack &stack);

private:
  std::array<MplsLabelEntry, capacity> entries_{};
  Orv::U32 size_ = 0;
};

} // namespace Wirx
