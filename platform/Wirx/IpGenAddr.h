#pragma once

#include "Orv/Assert.h"
#include "Orv/Export.h"
#include "Wirx/AddrFamily.h"
#include "Wirx/Ip6Addr.h"
#include "Wirx/IpAddr.h"

#include <compare>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace Wirx {

// An IPv4 or IPv6 address, or none at all. Ordered by family first, so all
// IPv4 addresses sort before all IPv6 ones.
class LSPPING_EXPORT IpGenAddr {
public:
  // What stringValue() prints for the unset address, and fromString() takes
  // back. An empty text would vanish from traces.
  static constexpr std::string_view unspecifiedText = "unspecified";

  constexpr IpGenAddr() noexcept = default;
  constexpr IpGenAddr(IpAddr v4) noexcept : af_(AddrFamily::ipv4), v4_(v4) {}
  constexpr IpGenAddr(const Ip6Addr &v6) noexcept
      : af_(AddrFamily::ipv6), v6_(v6) {}

  constexpr AddrFamily af() const noexcept { return af_; }
  constexpr bool isIpv4() const noexcept { return af_ == AddrFamily::ipv4; }
  constexpr bool isIpv6() const noexcept { return af_ == AddrFamily::ipv6; }
  IpAddr v4() const noexcept {
    ORV_ASSERT(isIpv4());
    return v4_;
  }
  const Ip6Addr &v6() const noexcept {
    ORV_ASSERT(isIpv6());
    return v6_;
  }

  // True only when no family is set: 0.0.0.0 and :: are addresses here.
  constexpr bool operator!() const noexcept {
    return af_ == AddrFamily::unspecified;
  }
  // The member of the other family is always left at its default, so the
  // memberwise comparison is the right one.
  constexpr auto operator<=>(const IpGenAddr &) const noexcept = default;

  std::string stringValue() const;
  // Either family's text, or unspecifiedText.
  static std::optional<IpGenAddr> fromString(std::string_view text) noexcept;
  friend LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                                 const IpGenAddr &addr);

private:
  AddrFamily af_ = AddrFamily::unspecified;
  IpAddr v4_;
  Ip6Addr v6_;
};

} // namespace Wirx
