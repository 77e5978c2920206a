#pragma once

#include "Orv/Types.h"

#include <ostream>

namespace Wirx {

enum class AddrFamily : Orv::U8 { unspecified, ipv4, ipv6 };

// The families by call, so that a family test reads the same as the address
// accessors beside it: `addr.af() == Wirx::ipv4()`.
constexpr AddrFamily ipv4() noexcept { return AddrFamily::ipv4; }
constexpr AddrFamily ipv6() noexcept { return AddrFamily::ipv6; }

inline std::ostream &operator<<(std::ostream &os, AddrFamily af) {
  switch (af) {
  case AddrFamily::ipv4:
    return os << "ipv4";
  case AddrFamily::ipv6:
    return os << "ipv6";
  case AddrFamily::unspecified:
    break;
  }
  return os << "unspecified";
}

} // namespace Wirx
