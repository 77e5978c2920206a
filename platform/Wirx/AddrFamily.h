#pragma once

#include "Orv/Types.h"

#include <ostream>

namespace Wirx {

enum class AddrFamily : Orv::U8 { unspecified, ipv4, ipv6 };

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
