#pragma once

#include "Orv/Export.h"
#include "Orv/Types.h"
#include "Wirx/IpGenAddr.h"

#include <compare>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace Wirx {

// An address with a prefix length, "10.1.1.0/24". The address is kept as
// given, host bits and all (a FEC names 10.1.1.1/32, a route 10.1.1.0/24);
// masked() clears them. The unset prefix has no address and length 0.
class LSPPING_EXPORT IpGenPrefix {
public:
  constexpr IpGenPrefix() noexcept = default;
  // Throws Orv::RangeError for a length beyond the family's bits, or a
  // non-zero length without an address.
  IpGenPrefix(const IpGenAddr &addr, Orv::U8 length);

  static constexpr Orv::U8 maxLength(AddrFamily af) noexcept {
    return af == AddrFamily::ipv4 ? 32 : af == AddrFamily::ipv6 ? 128 : 0;
  }

  const IpGenAddr &addr() const noexcept { return addr_; }
  Orv::U8 length() const noexcept { return length_; }
  AddrFamily af() const noexcept { return addr_.af(); }
  // The same prefix with the bits past the length cleared.
  IpGenPrefix masked() const noexcept;

  bool operator!() const noexcept { return !addr_; }
  auto operator<=>(const IpGenPrefix &) const noexcept = default;

  // "<address>/<length>", or IpGenAddr::unspecifiedText when unset.
  std::string stringValue() const;
  static std::optional<IpGenPrefix> fromString(std::string_view text) noexcept;
  friend LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                                 const IpGenPrefix &prefix);

private:
  IpGenAddr addr_;
  Orv::U8 length_ = 0;
};

} // namespace Wirx
