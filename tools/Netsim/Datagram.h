#pragma once

#include "Orv/Object.h"
#include "Orv/Types.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/Pkt.h"

namespace Netsim {

// A UDP datagram under way between two routers: its addressing and its
// payload, a packet of its own.
struct Datagram {
  Wirx::IpGenAddr srcAddr;
  Orv::U16 srcPort = 0;
  Wirx::IpGenAddr dstAddr;
  Orv::U16 dstPort = 0;
  Orv::Ptr<Wirx::Pkt> payload;
};

} // namespace Netsim
