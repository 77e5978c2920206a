#pragma once

#include <vector>

#include "Orv/Types.h"
#include "Wirx/IpGenAddr.h"

namespace Wirx {

// One UDP datagram as it went out or came in: the addressing of its IP and
// UDP headers and a copy of its payload.
struct UdpDatagram {
  IpGenAddr srcAddr;
  Orv::U16 srcPort = 0;
  IpGenAddr dstAddr;
  Orv::U16 dstPort = 0;
  std::vector<Orv::U8> payload;

  bool operator==(const UdpDatagram &) const = default;
};

} // namespace Wirx
