#pragma once

#include <compare>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "Orv/Export.h"
#include "Orv/RangeError.h"
#include "Orv/Types.h"

namespace Mesk {

// The index of a via within an IP forwarding entry, which holds at most 512
// vias. Entries store their vias under 16-bit indices, so a reader that
// turns a stored index into this type is the one that finds an
// out-of-range via.
class LSPPING_EXPORT ViaIndex {
public:
  static constexpr Orv::U16 min = 0;
  static constexpr Orv::U16 max = 511;

  constexpr ViaIndex() noexcept = default;
  // Throws Orv::RangeError above max.
  constexpr explicit ViaIndex(Orv::U32 value) : value_(checked(value)) {}

  constexpr Orv::U16 value() const noexcept { return value_; }
  constexpr auto operator<=>(const ViaIndex &) const noexcept = default;

  // Decimal.
  std::string stringValue() const;
  static std::optional<ViaIndex> fromString(std::string_view text) noexcept;
  friend LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                                 const ViaIndex &index);

private:
  static constexpr Orv::U16 checked(Orv::U32 value) {
    if (value > max) {
      throw Orv::RangeError(
          "ViaIndex::value < ViaIndex::min or > ViaIndex::max not allowed");
    }
    return static_cast<Orv::U16>(value);
  }

  Orv::U16 value_ = min;
};

} // namespace Mesk
