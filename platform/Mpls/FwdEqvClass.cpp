#include "Mpls/FwdEqvClass.h"

#include <ostream>

namespace Mpls {

std::size_t FwdEqvClass::hash() const noexcept {
  // FNV-1a over the family, the length and the address bytes: one pass,
  // no allocation, and prefixes that differ in any of them spread well.
  std::size_t h = 14695981039346656037ull;
  const auto mix = [&h](Orv::U8 byte) {
    h ^= byte;
    h *= 1099511628211ull;
  };
  const Wirx::IpGenAddr &addr = prefix.addr();
  mix(static_cast<Orv::U8>(addr.af()));
  mix(prefix.length());
  if (addr.isIpv4()) {
    const Orv::U32 value = addr.v4().value();
    for (int shift = 24; shift >= 0; shift -= 8) {
      mix(static_cast<Orv::U8>(value >> shift));
    }
  } else if (addr.isIpv6()) {
    for (Orv::U8 byte : addr.v6().bytes()) {
      mix(byte);
    }
  }
  return h;
}

std::ostream &operator<<(std::ostream &os, const FwdEqvClass &fec) {
  return os << Orv::valueText(fec);
}

} // namespace Mpls
