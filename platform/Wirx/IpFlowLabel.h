#pragma once

#include <compare>

#include "Orv/RangeError.h"
#include "Orv/Types.h"

namespace Wirx {

// The 20-bit flow label of an IPv6 packet.
class IpFlowLabel {
public:
  static constexpr Orv::U32 max = 0xFFFFF;

  constexpr IpFlowLabel() noexcept = default;
  constexpr explicit IpFlowLabel(Orv::U32 value) : value_(checked(value)) {}

  constexpr Orv::U32 value() const noexcept { return value_; }
  constexpr auto operator<=>(const IpFlowLabel &) const noexcept = default;

private:
  static constexpr Orv::U32 checked(Orv::U32 value) {
    if (value > max) {
      throw Orv::RangeError("IpFlowLabel::value > IpFlowLabel::max not "
                            "allowed");
    }
    return value;
  }
  Orv::U32 value_ = 0;
};

} // namespace Wirx
