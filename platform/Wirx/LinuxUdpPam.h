#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <string>

#include "Kiv/EventLoop.h"
#include "Orv/Types.h"
#include "Wirx/AddrFamily.h"
#include "Wirx/LinuxFd.h"
#include "Wirx/UdpPam.h"

namespace Wirx {

// The UDP packet-access module on a Linux socket of one family, bound to a
// port on every address of that family (an IPv6 module takes IPv6 only).
// The local address each datagram arrived on is read with it, and each
// payload goes out from the source address set (see UdpPam), or from the
// address the kernel picks by route when it is unset or the wildcard.
//
// Readiness of the socket raises the readable count by one; readers then
// take payloads with rxPkt() until it returns null, which it does after at
// most one batch (one system call for up to batchSize datagrams).
//
// Nothing here throws or aborts on a system call's failure: open() returns
// null with a one-line message naming the port and the reason; a failed
// send or receive is counted (Pam's counters) and described in error().
class LinuxUdpPam : public UdpPam {
public:
  static constexpr Orv::Attr<std::string> errorAttr{3};
  static constexpr Orv::U32 batchSize = 32;

  // Opens a module bound to `port` (0: a port the kernel chooses, which
  // port() then tells); the loop must outlive it. Null, with `error` set,
  // when the socket cannot be set up.
  static Orv::Ptr<LinuxUdpPam> open(Kiv::EventLoop &loop, AddrFamily family,
                                    Orv::U16 port, std::string &error);

  LinuxUdpPam(Kiv::EventLoop &loop, AddrFamily family, Orv::U16 port,
              LinuxFd fd);
  ~LinuxUdpPam() override;

  // Sends the payload with the addressing in force. A full socket buffer
  // counts a transmit drop, any other failure a transmit error.
  void txPktIs(const Orv::Ptr<Pkt> &pkt) override;

  AddrFamily family() const { return family_; }
  // The last failure, "udp4 port 3503: WHAT: REASON"; empty until one.
  const std::string &error() const { return error_; }
  // Datagrams longer than a packet buffer holds, dropped on arrival.
  Orv::U64 rxOversized() const { return rxOversized_; }

private:
  struct Slot {
    Orv::Ptr<Pkt> pkt;
    sockaddr_in6 src;
    alignas(cmsghdr) Orv::U8 control[CMSG_SPACE(sizeof(in6_pktinfo))];
  };
  struct Received {
    Orv::Ptr<Pkt> pkt;
    IpGenAddr srcAddr;
    Orv::U16 srcPort;
    IpGenAddr dstAddr;
  };

  void doGetRxPkt() override;
  void handleReadable();
  void receiveBatch();
  void errorIs(const std::string &what, int errnum);

  Kiv::EventLoop &loop_;
  const AddrFamily family_;
  LinuxFd fd_;
  const std::string label_;
  std::string error_;
  bool mayReceive_ = false;
  std::array<Slot, batchSize> slots_;
  std::array<iovec, batchSize> iovecs_{};
  std::array<mmsghdr, batchSize> msgs_{};
  std::array<Received, batchSize> ready_;
  std::size_t readyCount_ = 0;
  std::size_t readyNext_ = 0;
  Orv::U64 rxOversized_ = 0;
};

} // namespace Wirx
