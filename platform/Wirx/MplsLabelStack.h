#pragma once

#include "Orv/Assert.h"
#include "Orv/Types.h"
#include "Wirx/MplsLabel.h"

#include <algorithm>
#include <array>
#include <compare>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace Wirx {

// Labels in stack order, top first. Kept inline (no heap) so that parsing a
// frame or copying a stack never allocates; real stacks are a few labels
// deep, `capacity` leaves ample room.
class MplsLabelStack {
public:
  static constexpr Orv::U32 capacity = 16;

  constexpr MplsLabelStack() noexcept = default;

  // Adds `label` below the labels already there. Throws Orv::RangeError
  // when the stack is full.
  void push(MplsLabel label);
  void clear() noexcept { size_ = 0; }

  Orv::U32 size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  bool full() const noexcept { return size_ == capacity; }
  // Whether the stack can be written to the wire: at least one label, and
  // every label a 20-bit value (neither `null` nor `luWithdraw`). The size
  // never exceeds `capacity`, as push() refuses to overfill.
  bool valid() const noexcept {
    return !empty() && std::all_of(begin(), end(), [](const MplsLabel &label) {
      return label.isWireLabel();
    });
  }
  MplsLabel operator[](Orv::U32 index) const noexcept {
    ORV_ASSERT(index < size_);
    return labels_[index];
  }
  const MplsLabel *begin() const noexcept { return labels_.data(); }
  const MplsLabel *end() const noexcept { return labels_.data() + size_; }

  bool operator!() const noexcept { return empty(); }
  bool operator==(const MplsLabelStack &other) const noexcept {
    return std::equal(begin(), end(), other.begin(), other.end());
  }
  // Lexicographic, top label first.
  std::strong_ordering operator<=>(const MplsLabelStack &other) const noexcept {
    return std::lexicographical_compare_three_way(begin(), end(), other.begin(),
                                                  other.end());
  }

  // "[100, 200]", top first; "[]" when empty.
  std::string stringValue() const;
  static std::optional<MplsLabelStack>
  fromString(std::string_view text) noexcept;
  friend std::ostream &operator<<(std::ostream &os,
                                  const MplsLabelStack &stack);

private:
  std::array<MplsLabel, capacity> labels_{};
  Orv::U32 size_ = 0;
};

} // namespace Wirx
