#pragma once

#include <cstddef>
#include <deque>

#include "Netsim/Datagram.h"
#include "Wirx/AddrFamily.h"
#include "Wirx/UdpPam.h"

namespace Netsim {

class Router;

// A UDP packet-access module of a router of the network, bound to a local
// port. What is sent goes to the router that owns the destination address
// and arrives there, after the path's delay, at its module bound to the
// destination port. A datagram to an address nobody owns is lost as a
// transmit drop here; one to a port nobody is bound to is counted by the
// receiving router. The payload is copied when sent, as a socket would copy
// it.
//
// The datagrams of one burst are queued first and announced once, the
// readable count going up by their number, so that a reader finds them all
// waiting. Without a source address, the router's own address of the
// destination's family is the source.
class UdpPam : public Wirx::UdpPam {
public:
  // `family` unspecified receives both families.
  UdpPam(const Orv::Name &name, Orv::U16 port, Router &router,
         Wirx::AddrFamily family = Wirx::AddrFamily::unspecified);

  Router &router() const { return router_; }
  Wirx::AddrFamily family() const { return family_; }
  bool receives(Orv::U16 port, Wirx::AddrFamily family) const {
    return port == this->port() &&
           (family_ == Wirx::AddrFamily::unspecified || family_ == family);
  }

  void txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) override;

  // Queues an arrived datagram without telling the readers yet.
  void rxDatagramIs(Datagram datagram);
  // Tells the readers of the datagrams queued since the last call.
  void rxBurstEnd();
  // Datagrams arrived and not yet read.
  std::size_t rxQueued() const { return rxQueue_.size(); }

private:
  void doGetRxPkt() override;

  Router &router_;
  const Wirx::AddrFamily family_;
  std::deque<Datagram> rxQueue_;
  Orv::U32 unannounced_ = 0;
};

} // namespace Netsim
