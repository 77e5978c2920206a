#pragma once

#include "Orv/Types.h"
#include "Wirx/Nbo.h"

namespace Wirx {

// Overlay of an 8-byte IPv6 Hop-by-Hop Options header that carries only the
// Router Alert option (RFC 2711), padded with a 2-byte PadN:
// next header, length 0 (8 bytes), 0x05 0x02 <value>, 0x01 0x00.
class Ipv6RouterAlertHopByHop {
public:
  static constexpr Orv::U8 optionType = 0x05;
  static constexpr Orv::U8 optionLength = 2;
  // The Router Alert value for MPLS OAM (RFC 7506).
  static constexpr Orv::U16 valueMplsOam = 69;

  // Writes all eight bytes.
  void init(Orv::U8 nextHeader, Orv::U16 value = valueMplsOam) noexcept {
    nextHeader_ = nextHeader;
    extLength_ = 0;
    optionType_ = optionType;
    optionLength_ = optionLength;
    value_.valueIs(value);
    padType_ = padNType;
    padLength_ = 0;
  }
  Orv::U8 nextHeader() const noexcept { return nextHeader_; }
  Orv::U16 value() const noexcept { return value_.value(); }

private:
  static constexpr Orv::U8 padNType = 0x01;

  Orv::U8 nextHeader_;
  Orv::U8 extLength_;
  Orv::U8 optionType_;
  Orv::U8 optionLength_;
  U16Nbo value_;
  Orv::U8 padType_;
  Orv::U8 padLength_;
};
static_assert(sizeof(Ipv6RouterAlertHopByHop) == 8 &&
              alignof(Ipv6RouterAlertHopByHop) == 1);

} // namespace Wirx
