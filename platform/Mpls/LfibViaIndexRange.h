#pragma once

#include <compare>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "Orv/Export.h"
#include "Orv/RangeError.h"
#include "Orv/Types.h"

namespace Mpls {

// The index of a via within a via set. A via set holds at most 128 vias;
// the set's array is indexed by a byte, so a reader that turns a stored
// index into this type is the one that finds an out-of-range via.
class LSPPING_EXPORT LfibViaIndexRange {
public:
  static constexpr Orv::U8 min = 0;
  static constexpr Orv::U8 max = 127;

  constexpr LfibViaIndexRange() noexcept = default;
  // Throws Orv::RangeError above max.
  constexpr explicit LfibViaIndexRange(Orv::U32 value)
      : value_(checked(value)) {}

  constexpr Orv::U8 value() const noexcept { return value_; }
  constexpr auto
  operator<=>(const LfibViaIndexRange &) const noexcept = default;

  // Decimal.
  std::string stringValue() const;
  static std::optional<LfibViaIndexRange>
  fromString(std::string_view text) noexcept;
  friend LSPPING_EXPORT std::ostream &
  operator<<(std::ostream &os, const LfibViaIndexRange &index);

private:
  static constexpr Orv::U8 checked(Orv::U32 value) {
    if (value > max) {
      throw Orv::RangeError("LfibViaIndexRange::value < LfibViaIndexRange::min "
                            "or > LfibViaIndexRange::max not allowed");
    }
    return static_cast<Orv::U8>(value);
  }

  Orv::U8 value_ = min;
};

} // namespace Mpls
