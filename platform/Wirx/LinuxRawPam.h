#pragma once

#include <string>

#include "Kiv/EventLoop.h"
#include "Orv/Types.h"
#include "Wirx/LinuxFd.h"
#include "Wirx/Pam.h"

namespace Wirx {

// A raw Ethernet packet-access module on one Linux device: an AF_PACKET
// socket bound to the device. It sends whole frames as given, past the
// device's queueing discipline where the kernel allows. A socket filter in
// the kernel lets through only what an LSP ping responder or client can
// want: MPLS unicast frames, and IPv4 or IPv6 UDP to or from `udpPort`
// (behind up to two VLAN tags, an IPv6 Hop-by-Hop header allowed); frames
// the host sends, and frames for other hosts' MAC addresses, never arrive.
// A VLAN tag that the kernel took off into the packet's metadata is put
// back, so a frame reads as it was on the wire.
//
// The kernel writes received frames into a ring shared with this process
// (PACKET_RX_RING), so that taking one costs no system call: only its copy
// into a packet buffer. Readiness of the socket raises the readable count
// by one; readers then take frames with rxPkt() until it returns null,
// which it does after at most batchSize frames. When more are waiting the
// loop reports the socket readable again, so one busy device does not
// starve the loop's other descriptors.
//
// Nothing here throws or aborts on a system call's failure: open() returns
// null with a one-line message naming the device and the reason; a failed
// send or receive is counted (Pam's counters) and described in error().
class LinuxRawPam : public Pam {
public:
  static constexpr Orv::Attr<std::string> errorAttr{3};
  static constexpr Orv::U32 batchSize = 32;
  // Room before a received frame for a VLAN tag put back.
  static constexpr Orv::U32 rxHeadroom = 64;
  // The ring: its slots, each a header and a frame of up to about 1980
  // bytes (longer ones count as oversized), 4 MiB in all.
  static constexpr Orv::U32 ringSlotBytes = 2048;
  static constexpr Orv::U32 ringSlots = 2048;

  // Opens a module on the device named `device`; the loop must outlive
  // it. Null, with `error` set, when the socket cannot be set up.
  static Orv::Ptr<LinuxRawPam> open(Kiv::EventLoop &loop,
                                    const std::string &device, Orv::U16 udpPort,
                                    std::string &error);

  // Takes over the socket and its mapped ring.
  LinuxRawPam(Kiv::EventLoop &loop, const std::string &device, int ifIndex,
              LinuxFd fd, Orv::U8 *ring);
  ~LinuxRawPam() override;

  // Sends the frame; a full device queue counts a transmit drop, any other
  // failure a transmit error.
  void txPktIs(const Orv::Ptr<Pkt> &pkt) override;

  const std::string &device() const { return device_; }
  int ifIndex() const { return ifIndex_; }
  // The last failure, "DEVICE: WHAT: REASON"; empty until one happens.
  const std::string &error() const { return error_; }
  // Frames longer than a packet buffer holds, dropped on arrival.
  Orv::U64 rxOversized() const { return rxOversized_; }
  // Frames the filter passed that the kernel dropped because the ring was
  // full, up to now.
  Orv::U64 rxKernelDrops();

private:
  void doGetRxPkt() override;
  void handleReadable();
  void takeSocketError();
  void errorIs(const std::string &what, int errnum);

  Kiv::EventLoop &loop_;
  const std::string device_;
  const int ifIndex_;
  LinuxFd fd_;
  std::string error_;
  Orv::U8 *const ring_;
  // The slot the kernel fills after the last one taken.
  Orv::U32 next_ = 0;
  // Frames that may still be taken since the last readiness.
  Orv::U32 budget_ = 0;
  Orv::U64 rxOversized_ = 0;
  Orv::U64 rxKernelDrops_ = 0;
};

} // namespace Wirx
