#pragma once

#include "Orv/Export.h"
#include "Orv/Types.h"

#include <array>
#include <compare>
#include <cstring>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace Wirx {

// An IPv6 address: its 16 bytes in network order. :: is the unset value.
class LSPPING_EXPORT Ip6Addr {
public:
  using Bytes = std::array<Orv::U8, 16>;

  constexpr Ip6Addr() noexcept = default;
  constexpr explicit Ip6Addr(const Bytes &bytes) noexcept : bytes_(bytes) {}

  static Ip6Addr fromNbo(const Orv::U8 *bytes) noexcept {
    Ip6Addr addr;
    std::memcpy(addr.bytes_.data(), bytes, addr.bytes_.size());
    return addr;
  }
  void toNbo(Orv::U8 *bytes) const noexcept {
    std::memcpy(bytes, bytes_.data(), bytes_.size());
  }

  constexpr const Bytes &bytes() const noexcept { return bytes_; }
  constexpr bool operator!() const noexcept { return bytes_ == Bytes{}; }
  constexpr auto operator<=>(const Ip6Addr &) const noexcept = default;

  // RFC 5952 text, "2001:db8::1".
  std::string stringValue() const;
  static std::optional<Ip6Addr> fromString(std::string_view text) noexcept;
  friend LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                                 const Ip6Addr &addr);

private:
  Bytes bytes_{};
};

} // namespace Wirx
