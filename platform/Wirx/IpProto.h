#pragma once

#include <compare>

#include "Orv/Types.h"

namespace Wirx {

// The IPv4 protocol number of a packet (17 for UDP).
class IpProto {
public:
  constexpr IpProto() noexcept = default;
  constexpr explicit IpProto(Orv::U8 value) noexcept : value_(value) {}

  constexpr Orv::U8 value() const noexcept { return value_; }
  constexpr auto operator<=>(const IpProto &) const noexcept = default;

private:
  Orv::U8 value_ = 0;
};

} // namespace Wirx
