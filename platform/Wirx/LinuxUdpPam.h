#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <functional>
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
// take payloads with rxPkt() until it returns null, which it does once the
// socket is empty or after at most rxBatches() batches (one system call
// for up to batchSize datagrams each; one batch unless the host says
// more), so that a busy socket does not starve the loop's other work.
//
// Sending is one system call per payload, unless the host holds the module
// (txHoldIs): payloads then wait, up to batchSize, and leave together with
// one system call when the hold ends or the queue is full. Either way the
// fate of each payload is told to the handler set with txDoneIs, in the
// order they were sent.
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

  // Told of each payload sent, once it left (0) or failed (its errno).
  using TxDone = std::function<void(int errnum)>;

  // Sends the payload with the addressing in force, or queues it while
  // held. A full socket buffer counts a transmit drop, any other failure a
  // transmit error.
  void txPktIs(const Orv::Ptr<Pkt> &pkt) override;
  bool txHold() const { return txHold_; }
  // Ending a hold sends what waits.
  void txHoldIs(bool hold);
  void txDoneIs(TxDone done) { txDone_ = std::move(done); }

  Orv::U32 rxBatches() const { return rxBatches_; }
  // How many batches one readiness lets readers take: a host whose other
  // work comes in large turns (many requests sent per timer pass) reads
  // more per turn, or its socket overflows. At least one.
  void rxBatchesIs(Orv::U32 batches) { rxBatches_ = std::max(batches, 1u); }

  // Asks for a kernel receive buffer of `bytes`, past the system's limit
  // where the process may (root may); false when the kernel refuses. What
  // arrives while the buffer is full is dropped by the kernel.
  bool rxBufferIs(int bytes);

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
  struct Queued {
    Orv::Ptr<Pkt> pkt;
    sockaddr_in6 dst;
    iovec iov;
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
  // Fills the next queue entry for `pkt` with the addressing in force.
  void enqueue(const Orv::Ptr<Pkt> &pkt);
  void txFlush();
  void txFailed(const Queued &queued, int errnum);
  void errorIs(const std::string &what, int errnum);

  Kiv::EventLoop &loop_;
  const AddrFamily family_;
  LinuxFd fd_;
  const std::string label_;
  std::string error_;
  // Batches readers may still take since the last readiness.
  Orv::U32 mayReceive_ = 0;
  Orv::U32 rxBatches_ = 1;
  std::array<Slot, batchSize> slots_;
  std::array<iovec, batchSize> iovecs_{};
  std::array<mmsghdr, batchSize> msgs_{};
  std::array<Received, batchSize> ready_;
  std::size_t readyCount_ = 0;
  std::size_t readyNext_ = 0;
  Orv::U64 rxOversized_ = 0;
  bool txHold_ = false;
  TxDone txDone_;
  std::array<Queued, batchSize> txQueue_;
  std::array<mmsghdr, batchSize> txMsgs_{};
  Orv::U32 txQueued_ = 0;
};

} // namespace Wirx
