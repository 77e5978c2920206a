#pragma once

#include <linux/if_packet.h>
#include <sys/socket.h>

#include <array>
#include <string>
#include <vector>

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
// Readiness of the socket raises the readable count by one; readers then
// take frames with rxPkt() until it returns null, which it does after at
// most one batch (one system call for up to batchSize frames). When more
// are waiting the loop reports the socket readable again, so one busy
// device does not starve the loop's other descriptors.
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

  // Opens a module on the device named `device`; the loop must outlive
  // it. Null, with `error` set, when the socket cannot be set up.
  static Orv::Ptr<LinuxRawPam> open(Kiv::EventLoop &loop,
                                    const std::string &device, Orv::U16 udpPort,
                                    std::string &error);

  LinuxRawPam(Kiv::EventLoop &loop, const std::string &device, int ifIndex,
              LinuxFd fd);
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
  // Frames the filter passed that the kernel dropped because the socket's
  // buffer was full, up to now.
  Orv::U64 rxKernelDrops();

private:
  struct Slot {
    Orv::Ptr<Pkt> pkt;
    alignas(cmsghdr) Orv::U8 control[CMSG_SPACE(sizeof(tpacket_auxdata))];
  };

  void doGetRxPkt() override;
  void handleReadable();
  void receiveBatch();
  void errorIs(const std::string &what, int errnum);
  static void restoreVlanTag(Pkt &pkt, const msghdr &msg);

  Kiv::EventLoop &loop_;
  const std::string device_;
  const int ifIndex_;
  LinuxFd fd_;
  std::string error_;
  // Set by readiness, cleared by the batch received after it.
  bool mayReceive_ = false;
  std::array<Slot, batchSize> slots_;
  std::array<iovec, batchSize> iovecs_{};
  std::array<mmsghdr, batchSize> msgs_{};
  // Frames of the last batch not yet handed out, from `readyNext_`.
  std::vector<Orv::Ptr<Pkt>> ready_;
  std::size_t readyNext_ = 0;
  Orv::U64 rxOversized_ = 0;
  Orv::U64 rxKernelDrops_ = 0;
};

} // namespace Wirx
