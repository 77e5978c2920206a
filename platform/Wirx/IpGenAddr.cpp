#include "Wirx/IpGenAddr.h"

#include <ostream>

namespace Wirx {

std::string IpGenAddr::stringValue() const {
  switch (af_) {
  case AddrFamily::ipv4:
    return v4_.stringValue();
  case AddrFamily::ipv6:
    return v6_.stringValue();
  case AddrFamily::unspecified:
    break;
  }
  return std::string(unspecifiedText);
}

std::optional<IpGenAddr> IpGenAddr::fromString(std::string_view text) noexcept {
  if (text == unspecifiedText) {
    return IpGenAddr();
  }
  if (text.find(':') != std::string_view::npos) {
    if (const std::optional<Ip6Addr> v6 = Ip6Addr::fromString(text)) {
      return IpGenAddr(*v6);
    }
    return std::nullopt;
  }
  if (const std::optional<IpAddr> v4 = IpAddr::fromString(text)) {
    return IpGenAddr(*v4);
  }
  return std::nullopt;
}

std::ostream &operator<<(std::ostream &os, const IpGenAddr &addr) {
  return os << addr.stringValue();
}

} // namespace Wirx
