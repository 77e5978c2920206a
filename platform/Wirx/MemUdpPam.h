#pragma once

#include <cstddef>
#include <deque>
#include <vector>

#include "Orv/Export.h"
#include "Wirx/UdpDatagram.h"
#include "Wirx/UdpPam.h"

namespace Wirx {

// A UDP packet-access module in memory, for tests and in-process runs.
// Each payload sent is recorded as a datagram with the addressing in force
// and a copy of its bytes, and the packet is let go at once. Received
// datagrams are handed in with rxPktIs. It is writable from the start.
class LSPPING_EXPORT MemUdpPam : public UdpPam {
public:
  MemUdpPam(const Orv::Name &name, Orv::U16 port);

  // Records the datagram, source port port(); with unusable addressing
  // counts a transmit error instead (see UdpPam).
  void txPktIs(const Orv::Ptr<Pkt> &pkt) override;

  // The datagrams sent, in order.
  const std::vector<UdpDatagram> &datagrams() const { return datagrams_; }
  void clear() { datagrams_.clear(); }

  // Queues `payload` as received from srcAddr:srcPort and raises the
  // readable count; readers take it with rxPkt() in order of arrival.
  void rxPktIs(const IpGenAddr &srcAddr, Orv::U16 srcPort,
               Orv::Ptr<Pkt> payload);
  // The received datagrams not yet read.
  std::size_t rxQueued() const { return rxQueue_.size(); }

private:
  struct Received {
    IpGenAddr srcAddr;
    Orv::U16 srcPort;
    Orv::Ptr<Pkt> payload;
  };

  void doGetRxPkt() override;

  std::vector<UdpDatagram> datagrams_;
  std::deque<Received> rxQueue_;
};

} // namespace Wirx
