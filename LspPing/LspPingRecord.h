#pragma once

#include <string>

#include "LspPing/LspPingEnum.h"
#include "Wirx/Ip6Addr.h"
#include "Wirx/IpAddr.h"
#include "Wirx/Nbo.h"

namespace LspPing {

// Wire records are packed overlays read in place over packet bytes: every
// field has alignment 1 and multi-byte fields stay in network order
// (Wirx::U16Nbo and U32Nbo read them in host order).
using Wirx::U16Nbo;
using Wirx::U32Nbo;

// An IPv6 address field as it stands on the wire.
struct Ip6AddrNbo {
  U8 bytes[16] = {};
  Wirx::Ip6Addr value() const { return Wirx::Ip6Addr::fromNbo(bytes); }
  void valueIs(const Wirx::Ip6Addr &addr) { addr.toNbo(bytes); }
};
static_assert(sizeof(Ip6AddrNbo) == 16 && alignof(Ip6AddrNbo) == 1);

// The dotted text of an IPv4 address field.
inline std::string ipv4Text(const U32Nbo &field) {
  return Wirx::IpAddr(field.value()).stringValue();
}

} // namespace LspPing
