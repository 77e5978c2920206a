#include "Wirx/MemUdpPam.h"

#include <utility>

namespace Wirx {

MemUdpPam::MemUdpPam(const Orv::Name &name, Orv::U16 port)
    : UdpPam(name, port) {
  writableCountInc(1);
}

void MemUdpPam::txPktIs(const Orv::Ptr<Pkt> &pkt) {
  if (const int error = txAddressingError()) {
    txErrorIs(error);
    return;
  }
  datagrams_.push_back(UdpDatagram{
      txSrcAddr(), port(), txDstAddr(), txDstPort(),
      std::vector<Orv::U8>(pkt->data(), pkt->data() + pkt->frontBytes())});
}

void MemUdpPam::rxPktIs(const IpGenAddr &srcAddr, Orv::U16 srcPort,
                        Orv::Ptr<Pkt> payload) {
  rxQueue_.push_back(Received{srcAddr, srcPort, std::move(payload)});
  readableCountInc(1);
}

void MemUdpPam::doGetRxPkt() {
  if (rxQueue_.empty()) {
    rxSrcIs(IpGenAddr(), 0);
    return;
  }
  Received &next = rxQueue_.front();
  rxSrcIs(next.srcAddr, next.srcPort);
  rxPktHolderIs(std::move(next.payload));
  rxQueue_.pop_front();
}

} // namespace Wirx
