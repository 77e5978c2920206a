#pragma once

#include "Orv/Export.h"
#include "Orv/Types.h"
#include "Wirx/Nbo.h"

#include <compare>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace Wirx {

// An IPv4 address, kept in host order so that masks and comparisons are
// plain integer operations. 0.0.0.0 is the unset value.
class LSPPING_EXPORT IpAddr {
public:
  constexpr IpAddr() noexcept = default;
  constexpr explicit IpAddr(Orv::U32 host) noexcept : value_(host) {}

  // From and to the four wire bytes, in network order.
  static IpAddr fromNbo(const Orv::U8 *bytes) noexcept {
    return IpAddr(load32(bytes));
  }
  void toNbo(Orv::U8 *bytes) const noexcept { store32(bytes, value_); }

  constexpr Orv::U32 value() const noexcept { return value_; }
  constexpr bool operator!() const noexcept { return value_ == 0; }
  constexpr auto operator<=>(const IpAddr &) const noexcept = default;

  // Dotted decimal, "10.0.0.1".
  std::string stringValue() const;
  // Strict dotted decimal: four parts, no leading zeros, no blanks.
  static std::optional<IpAddr> fromString(std::string_view text) noexcept;
  friend LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                                 const IpAddr &addr);

private:
  Orv::U32 value_ = 0;
};

} // namespace Wirx
