#pragma once

#include "Orv/Types.h"
#include "Wirx/Nbo.h"

namespace Wirx {

// Overlay of the IPv4 Router Alert option (RFC 2113): type 0x94 (copied on
// fragmentation, number 20), length 4, value 0 ("examine this packet").
class Ipv4RouterAlertOption {
public:
  static constexpr Orv::U8 optionType = 0x94;
  static constexpr Orv::U8 optionLength = 4;

  // Writes all four bytes.
  void init(Orv::U16 value = 0) noexcept {
    type_ = optionType;
    length_ = optionLength;
    value_.valueIs(value);
  }
  bool isRouterAlert() const noexcept {
    return type_ == optionType && length_ == optionLength;
  }
  Orv::U16 value() const noexcept { return value_.value(); }

private:
  Orv::U8 type_;
  Orv::U8 length_;
  U16Nbo value_;
};
static_assert(sizeof(Ipv4RouterAlertOption) == 4 &&
              alignof(Ipv4RouterAlertOption) == 1);

} // namespace Wirx
