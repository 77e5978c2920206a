#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "Orv/Export.h"
#include "Orv/RangeError.h"
#include "Orv/Types.h"

namespace Tunnel {

// The number of a tunnel in its tunnel table: 0..65535.
class LSPPING_EXPORT TunnelId {
public:
  static constexpr Orv::U32 minValue = 0;
  static constexpr Orv::U32 maxValue = 0xFFFF;

  constexpr TunnelId() noexcept = default;
  // Throws Orv::RangeError above maxValue.
  constexpr explicit TunnelId(Orv::U64 value) : value_(checked(value)) {}

  constexpr Orv::U32 value() const noexcept { return value_; }
  constexpr auto operator<=>(const TunnelId &) const noexcept = default;

  // Decimal.
  std::string stringValue() const;
  static std::optional<TunnelId> fromString(std::string_view text) noexcept;
  friend LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                                 const TunnelId &id);

private:
  static constexpr Orv::U32 checked(Orv::U64 value) {
    if (value > maxValue) {
      throw Orv::RangeError("TunnelId::value < TunnelId::minValue or > "
                            "TunnelId::maxValue not allowed");
    }
    return static_cast<Orv::U32>(value);
  }

  Orv::U32 value_ = minValue;
};

} // namespace Tunnel

template <> struct std::hash<Tunnel::TunnelId> {
  std::size_t operator()(const Tunnel::TunnelId &id) const noexcept {
    return std::hash<Orv::U32>()(id.value());
  }
};
