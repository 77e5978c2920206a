#pragma once

#include <compare>

#include "Orv/Types.h"
#include "Wirx/EthAddr.h"

namespace PacketTracer {

// The Ethernet header of a traced packet, EtherType in host order. A VLAN id
// of 0 means an untagged frame.
struct L2Header {
  Wirx::EthAddr dstMac;
  Wirx::EthAddr srcMac;
  Orv::U16 etherType = 0;
  Orv::U16 vlanId = 0;
  Orv::U8 vlanPriority = 0;

  auto operator<=>(const L2Header &) const noexcept = default;
};

} // namespace PacketTracer
