#pragma once

#include <compare>

#include "Orv/Types.h"

namespace Wirx {

// The time to live of an IPv4 packet.
class IpTtl {
public:
  constexpr IpTtl() noexcept = default;
  constexpr explicit IpTtl(Orv::U8 value) noexcept : value_(value) {}

  constexpr Orv::U8 value() const noexcept { return value_; }
  constexpr auto operator<=>(const IpTtl &) const noexcept = default;

private:
  Orv::U8 value_ = 0;
};

} // namespace Wirx
