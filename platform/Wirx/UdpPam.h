#pragma once

#include "Orv/Export.h"
#include "Orv/Types.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/Pam.h"

namespace Wirx {

// A packet-access module on a UDP socket bound to a local port. Packets
// are UDP payloads: the module adds and strips the IP and UDP headers.
//
// Sending: set the addressing, then write the payload with txPktIs(). The
// addressing stays in force for every later txPktIs() until changed:
//   pam->txSrcAddrIs(localAddr);
//   pam->txDstAddrIs(peerAddr);
//   pam->txDstPortIs(peerPort);
//   pam->txPktIs(payload);
// The source port is the bound port(). An unset source address lets the
// system choose one. A send without destination address or port, or with a
// source of the other family than the destination, fails: the datagram is
// not sent and the module counts a transmit error with its errno.
//
// Receiving: the readable count goes up as datagrams arrive; rxPkt() takes
// the next payload, and rxSrcAddr() and rxSrcPort() then tell where it came
// from, and rxDstAddr() the local address it was sent to where the module
// knows it, until the next rxPkt(). After an rxPkt() that found nothing they
// read unset.
class LSPPING_EXPORT UdpPam : public Pam {
public:
  UdpPam(const Orv::Name &name, Orv::U16 port) : Pam(name), port_(port) {}

  // The local port: the source port of what is sent, the destination port
  // of what is received.
  Orv::U16 port() const { return port_; }

  const IpGenAddr &txSrcAddr() const { return txSrcAddr_; }
  void txSrcAddrIs(const IpGenAddr &addr) { txSrcAddr_ = addr; }
  const IpGenAddr &txDstAddr() const { return txDstAddr_; }
  void txDstAddrIs(const IpGenAddr &addr) { txDstAddr_ = addr; }
  Orv::U16 txDstPort() const { return txDstPort_; }
  void txDstPortIs(Orv::U16 port) { txDstPort_ = port; }

  const IpGenAddr &rxSrcAddr() const { return rxSrcAddr_; }
  Orv::U16 rxSrcPort() const { return rxSrcPort_; }
  const IpGenAddr &rxDstAddr() const { return rxDstAddr_; }

protected:
  // For doGetRxPkt(): where the payload it hands over came from, and the
  // local address it went to (unset where the module cannot tell).
  void rxSrcIs(const IpGenAddr &addr, Orv::U16 port,
               const IpGenAddr &dstAddr = IpGenAddr()) {
    rxSrcAddr_ = addr;
    rxSrcPort_ = port;
    rxDstAddr_ = dstAddr;
  }
  // 0 when the current addressing can be sent to, else the errno a socket
  // gives for it.
  int txAddressingError() const;

private:
  Orv::U16 port_;
  IpGenAddr txSrcAddr_;
  IpGenAddr txDstAddr_;
  Orv::U16 txDstPort_ = 0;
  IpGenAddr rxSrcAddr_;
  Orv::U16 rxSrcPort_ = 0;
  IpGenAddr rxDstAddr_;
};

} // namespace Wirx
