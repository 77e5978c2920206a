#pragma once

#include <string>

#include "Kiv/EventLoop.h"
#include "Orv/Reactor.h"
#include "Wirx/LinuxUdpPam.h"

namespace LspPingTool {

// One UDP module for both IP families, as the ping client side has one for
// all its replies: a Linux UDP socket is of one family, so this takes two
// (either may be left out), bound to the same port, and reads from both.
// Sending goes out by the socket of the destination's family.
//
// A reader may leave datagrams behind that a socket already took from the
// kernel (the client's listener works within a time budget); the socket
// would then not be reported readable again. This module looks for one
// after each reader's turn and, finding one, calls the readers again on
// the next turn of the loop.
class DualStackUdpPam : public Wirx::UdpPam, private Orv::Reactor {
public:
  // Opens the sockets of the families asked for on one port the kernel
  // chooses. Null, with `error` set, when one cannot be opened.
  static Orv::Ptr<DualStackUdpPam> open(Kiv::EventLoop &loop, bool ipv4,
                                        bool ipv6, std::string &error);

  DualStackUdpPam(Kiv::EventLoop &loop, Orv::Ptr<Wirx::LinuxUdpPam> ipv4,
                  Orv::Ptr<Wirx::LinuxUdpPam> ipv6, Orv::U16 port);

  void txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) override;

  // The family's socket, or null.
  const Orv::Ptr<Wirx::LinuxUdpPam> &socket(Wirx::AddrFamily family) const {
    return family == Wirx::AddrFamily::ipv6 ? ipv6_ : ipv4_;
  }

private:
  struct Taken {
    Orv::Ptr<Wirx::Pkt> pkt;
    Wirx::IpGenAddr src;
    Orv::U16 srcPort = 0;
    Wirx::IpGenAddr dst;
  };

  void doGetRxPkt() override;
  void handleReadable();
  Taken take();

  const Orv::Ptr<Wirx::LinuxUdpPam> ipv4_;
  const Orv::Ptr<Wirx::LinuxUdpPam> ipv6_;
  // A datagram taken after the readers' turn, handed out first.
  Taken leftOver_;
  Kiv::Timer again_;
};

} // namespace LspPingTool
