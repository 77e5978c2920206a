#pragma once

#include "Orv/Export.h"
#include "Orv/RangeError.h"
#include "Orv/Types.h"

#include <compare>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace Wirx {

// A 20-bit MPLS label value, plus two values outside the 20 bits that
// control planes use: `null` for "no label" (the default) and `luWithdraw`,
// the label a BGP labelled-unicast withdrawal carries.
class LSPPING_EXPORT MplsLabel {
public:
  static constexpr Orv::U32 min = 0;
  static constexpr Orv::U32 max = 0xFFFFF;
  static constexpr Orv::U32 null = 0x100000;
  static constexpr Orv::U32 luWithdraw = 0x800000;
  // Reserved label values (RFC 3032) that echo replies talk about.
  static constexpr Orv::U32 ipv4ExplicitNull = 0;
  static constexpr Orv::U32 routerAlert = 1;
  static constexpr Orv::U32 ipv6ExplicitNull = 2;
  static constexpr Orv::U32 implicitNull = 3;
  // What stringValue() prints for `null`; decimal text would hide it.
  static constexpr std::string_view nullText = "none";

  constexpr MplsLabel() noexcept = default;
  // Throws Orv::RangeError above luWithdraw.
  constexpr explicit MplsLabel(Orv::U32 value) : value_(checked(value)) {}

  constexpr Orv::U32 value() const noexcept { return value_; }
  constexpr void valueIs(Orv::U32 value) { value_ = checked(value); }
  // True for the 20-bit values that can go on the wire.
  constexpr bool isWireLabel() const noexcept { return value_ <= max; }

  constexpr bool operator!() const noexcept { return value_ == null; }
  constexpr auto operator<=>(const MplsLabel &) const noexcept = default;

  // Decimal, or nullText for `null`.
  std::string stringValue() const;
  static std::optional<MplsLabel> fromString(std::string_view text) noexcept;
  friend LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                                 const MplsLabel &label);

private:
  static constexpr Orv::U32 checked(Orv::U32 value) {
    if (value > luWithdraw) {
      throw Orv::RangeError("MplsLabel::value < MplsLabel::min or > "
                            "MplsLabel::luWithdraw not allowed");
    }
    return value;
  }

  Orv::U32 value_ = null;
};

} // namespace Wirx
