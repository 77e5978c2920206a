#include "Netsim/UdpPam.h"

#include <utility>

#include "Netsim/Network.h"
#include "Netsim/Router.h"

namespace Netsim {

UdpPam::UdpPam(const Orv::Name &name, Orv::U16 port, Router &router,
               Wirx::AddrFamily family)
    : Wirx::UdpPam(name, port), router_(router), family_(family) {
  writableCountInc(1);
}

void UdpPam::txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) {
  if (const int error = txAddressingError()) {
    txErrorIs(error);
    return;
  }
  Datagram datagram;
  datagram.srcAddr = txSrcAddr();
  if (!datagram.srcAddr) {
    datagram.srcAddr = txDstAddr().isIpv4() ? Wirx::IpGenAddr(router_.addr())
                                            : Wirx::IpGenAddr(router_.addr6());
  }
  datagram.srcPort = port();
  datagram.dstAddr = txDstAddr();
  datagram.dstPort = txDstPort();
  datagram.payload = Wirx::Pkt::copyOf(pkt->data(), pkt->frontBytes(), 0);
  if (!datagram.payload ||
      !router_.network().datagramIs(router_, std::move(datagram))) {
    txDropsInc();
  }
}

void UdpPam::rxDatagramIs(Datagram datagram) {
  rxQueue_.push_back(std::move(datagram));
  ++unannounced_;
}

void UdpPam::rxBurstEnd() {
  if (unannounced_ != 0) {
    const Orv::U32 arrived = unannounced_;
    unannounced_ = 0;
    readableCountInc(arrived);
  }
}

void UdpPam::doGetRxPkt() {
  if (rxQueue_.empty()) {
    rxSrcIs(Wirx::IpGenAddr(), 0);
    return;
  }
  Datagram &datagram = rxQueue_.front();
  rxSrcIs(datagram.srcAddr, datagram.srcPort);
  rxPktHolderIs(std::move(datagram.payload));
  rxQueue_.pop_front();
}

} // namespace Netsim
