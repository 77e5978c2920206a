#include "Wirx/LinuxRawPam.h"

#include <linux/filter.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/mman.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <exception>

#include "Wirx/Nbo.h"

namespace Wirx {

namespace {

// The socket filter, classic BPF. Jumps go forward only; each names its
// targets by their index in the program, which the compiler checks below.
namespace at {
constexpr Orv::U8 secondTag = 7, thirdTag = 11, etherType = 13, ipv4 = 16,
                  ipv6 = 26, ipv6Udp = 35, ipv6Sum = 36, ports = 39,
                  reject = 43, accept = 44, end = 45;
} // namespace at

constexpr sock_filter stmt(Orv::U16 code, Orv::U32 k) {
  return sock_filter{code, 0, 0, k};
}

// A conditional jump at index `from` to `onTrue` or `onFalse`.
constexpr sock_filter jump(Orv::U8 from, Orv::U16 op, Orv::U32 k,
                           Orv::U8 onTrue, Orv::U8 onFalse) {
  return sock_filter{Orv::U16(BPF_JMP | op | BPF_K), Orv::U8(onTrue - from - 1),
                     Orv::U8(onFalse - from - 1), k};
}

// X holds the offset of the EtherType in force (after up to two in-line
// VLAN tags; a tag the kernel took off is not in the data), so the IP
// header starts at X + 2.
constexpr std::array<sock_filter, at::end> filterProgram(Orv::U16 port) {
  constexpr Orv::U16 ldAbsW = BPF_LD | BPF_W | BPF_ABS;
  constexpr Orv::U16 ldIndH = BPF_LD | BPF_H | BPF_IND;
  constexpr Orv::U16 ldIndB = BPF_LD | BPF_B | BPF_IND;
  constexpr Orv::U16 ldxImm = BPF_LDX | BPF_W | BPF_IMM;
  return {{
      /* 0 */ stmt(ldAbsW, Orv::U32(SKF_AD_OFF + SKF_AD_PKTTYPE)),
      /* 1 */ jump(1, BPF_JEQ, PACKET_OUTGOING, at::reject, 2),
      /* 2 */ jump(2, BPF_JEQ, PACKET_OTHERHOST, at::reject, 3),
      /* 3 */ stmt(ldxImm, 12),
      /* 4 */ stmt(ldIndH, 0),
      /* 5 */ jump(5, BPF_JEQ, ETH_P_8021Q, at::secondTag, 6),
      /* 6 */ jump(6, BPF_JEQ, ETH_P_8021AD, at::secondTag, at::etherType),
      /* 7 */ stmt(ldxImm, 16),
      /* 8 */ stmt(ldIndH, 0),
      /* 9 */ jump(9, BPF_JEQ, ETH_P_8021Q, at::thirdTag, 10),
      /* 10 */ jump(10, BPF_JEQ, ETH_P_8021AD, at::thirdTag, at::etherType),
      /* 11 */ stmt(ldxImm, 20),
      /* 12 */ stmt(ldIndH, 0),
      /* 13 */ jump(13, BPF_JEQ, ETH_P_MPLS_UC, at::accept, 14),
      /* 14 */ jump(14, BPF_JEQ, ETH_P_IP, at::ipv4, 15),
      /* 15 */ jump(15, BPF_JEQ, ETH_P_IPV6, at::ipv6, at::reject),
      // IPv4: UDP, first fragment, then X moves past the header's length.
      /* 16 */ stmt(ldIndB, 2 + 9),
      /* 17 */ jump(17, BPF_JEQ, IPPROTO_UDP, 18, at::reject),
      /* 18 */ stmt(ldIndH, 2 + 6),
      /* 19 */ jump(19, BPF_JSET, 0x1fff, at::reject, 20),
      /* 20 */ stmt(ldIndB, 2),
      /* 21 */ stmt(BPF_ALU | BPF_AND | BPF_K, 0x0f),
      /* 22 */ stmt(BPF_ALU | BPF_LSH | BPF_K, 2),
      /* 23 */ stmt(BPF_ALU | BPF_ADD | BPF_X, 0),
      /* 24 */ stmt(BPF_MISC | BPF_TAX, 0),
      /* 25 */ stmt(BPF_JMP | BPF_JA, at::ports - 26),
      // IPv6: UDP straight after the fixed header, or after a Hop-by-Hop
      // header (where a Router Alert travels); A is what lies between.
      /* 26 */ stmt(ldIndB, 2 + 6),
      /* 27 */ jump(27, BPF_JEQ, IPPROTO_UDP, at::ipv6Udp, 28),
      /* 28 */ jump(28, BPF_JEQ, IPPROTO_HOPOPTS, 29, at::reject),
      /* 29 */ stmt(ldIndB, 2 + 40),
      /* 30 */ jump(30, BPF_JEQ, IPPROTO_UDP, 31, at::reject),
      /* 31 */ stmt(ldIndB, 2 + 41),
      /* 32 */ stmt(BPF_ALU | BPF_ADD | BPF_K, 1),
      /* 33 */ stmt(BPF_ALU | BPF_LSH | BPF_K, 3),
      /* 34 */ stmt(BPF_JMP | BPF_JA, at::ipv6Sum - 35),
      /* 35 */ stmt(BPF_LD | BPF_W | BPF_IMM, 0),
      /* 36 */ stmt(BPF_ALU | BPF_ADD | BPF_X, 0),
      /* 37 */ stmt(BPF_ALU | BPF_ADD | BPF_K, 40),
      /* 38 */ stmt(BPF_MISC | BPF_TAX, 0),
      // UDP at X + 2: either port will do.
      /* 39 */ stmt(ldIndH, 2),
      /* 40 */ jump(40, BPF_JEQ, port, at::accept, 41),
      /* 41 */ stmt(ldIndH, 4),
      /* 42 */ jump(42, BPF_JEQ, port, at::accept, at::reject),
      /* 43 */ stmt(BPF_RET | BPF_K, 0),
      // The whole frame: one too long for a buffer is told by MSG_TRUNC.
      /* 44 */ stmt(BPF_RET | BPF_K, 0x40000),
  }};
}

constexpr bool isReturn(const sock_filter &insn, Orv::U32 k) {
  return insn.code == (BPF_RET | BPF_K) && insn.k == k;
}
static_assert(isReturn(filterProgram(0)[at::reject], 0) &&
                  isReturn(filterProgram(0)[at::accept], 0x40000) &&
                  filterProgram(0)[at::ports].k == 2 &&
                  filterProgram(0)[at::ipv6Udp].code ==
                      (BPF_LD | BPF_W | BPF_IMM),
              "a label of the filter is not where its jumps lead");

std::string reasonOf(int errnum) { return std::strerror(errnum); }

bool setIntOption(int fd, int level, int name, int value) {
  return setsockopt(fd, level, name, &value, sizeof value) == 0;
}

constexpr Orv::U32 ringBytes =
    LinuxRawPam::ringSlots * LinuxRawPam::ringSlotBytes;
// Blocks of 64 KiB: whole pages, whole slots, and few enough for the
// kernel's table of them.
constexpr Orv::U32 ringBlockBytes = 65536;

tpacket2_hdr &slotAt(Orv::U8 *ring, Orv::U32 slot) {
  return *reinterpret_cast<tpacket2_hdr *>(
      ring + std::size_t(slot) * LinuxRawPam::ringSlotBytes);
}

// Copies the frame of a filled slot into a packet buffer, with a VLAN tag
// the kernel took off put back in its place.
Orv::Ptr<Pkt> frameOf(const tpacket2_hdr &slot) {
  const auto *frame = reinterpret_cast<const Orv::U8 *>(&slot) + slot.tp_mac;
  const bool tagged = (slot.tp_status & TP_STATUS_VLAN_VALID) != 0;
  Orv::Ptr<Pkt> pkt = Pkt::make(LinuxRawPam::rxHeadroom);
  if (slot.tp_snaplen > pkt->tailroom() - (tagged ? 4 : 0)) {
    return nullptr;
  }
  if (!tagged || slot.tp_snaplen < 12) {
    std::memcpy(pkt->append(slot.tp_snaplen), frame, slot.tp_snaplen);
    return pkt;
  }
  Orv::U8 *out = pkt->append(slot.tp_snaplen + 4);
  std::memcpy(out, frame, 12);
  store16(out + 12, (slot.tp_status & TP_STATUS_VLAN_TPID_VALID)
                        ? slot.tp_vlan_tpid
                        : Orv::U16(ETH_P_8021Q));
  store16(out + 14, slot.tp_vlan_tci);
  std::memcpy(out + 16, frame + 12, slot.tp_snaplen - 12);
  return pkt;
}

} // namespace

Orv::Ptr<LinuxRawPam> LinuxRawPam::open(Kiv::EventLoop &loop,
                                        const std::string &device,
                                        Orv::U16 udpPort, std::string &error) {
  const unsigned ifIndex = if_nametoindex(device.c_str());
  if (ifIndex == 0) {
    error = device + ": no such interface";
    return nullptr;
  }
  LinuxFd fd(socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!fd) {
    const int errnum = errno;
    error = device + ": cannot open a raw socket: " + reasonOf(errnum);
    if (errnum == EPERM || errnum == EACCES) {
      error += " (raw sockets need root or CAP_NET_RAW)";
    }
    return nullptr;
  }
  auto program = filterProgram(udpPort);
  const sock_fprog fprog{Orv::U16(program.size()), program.data()};
  // The socket is bound to no protocol yet, so nothing arrives unfiltered.
  tpacket_req ring{ringBlockBytes, ringBytes / ringBlockBytes,
                   LinuxRawPam::ringSlotBytes, LinuxRawPam::ringSlots};
  if (setsockopt(fd.get(), SOL_SOCKET, SO_ATTACH_FILTER, &fprog,
                 sizeof fprog) != 0 ||
      !setIntOption(fd.get(), SOL_PACKET, PACKET_VERSION, TPACKET_V2) ||
      setsockopt(fd.get(), SOL_PACKET, PACKET_RX_RING, &ring, sizeof ring) !=
          0) {
    error = device + ": cannot set up the raw socket: " + reasonOf(errno);
    return nullptr;
  }
  // Optional: the filter refuses outgoing frames on kernels without the
  // first, and the queueing discipline is merely slower than the second.
  setIntOption(fd.get(), SOL_PACKET, PACKET_IGNORE_OUTGOING, 1);
  setIntOption(fd.get(), SOL_PACKET, PACKET_QDISC_BYPASS, 1);
  sockaddr_ll addr{};
  addr.sll_family = AF_PACKET;
  addr.sll_protocol = netOrder16(ETH_P_ALL);
  addr.sll_ifindex = int(ifIndex);
  if (bind(fd.get(), reinterpret_cast<const sockaddr *>(&addr), sizeof addr) !=
      0) {
    error = device + ": cannot bind the raw socket: " + reasonOf(errno);
    return nullptr;
  }
  void *mapped =
      mmap(nullptr, ringBytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd.get(), 0);
  if (mapped == MAP_FAILED) {
    error = device + ": cannot map the receive ring: " + reasonOf(errno);
    return nullptr;
  }
  try {
    return Orv::make<LinuxRawPam>(loop, device, int(ifIndex), std::move(fd),
                                  static_cast<Orv::U8 *>(mapped));
  } catch (const std::exception &e) {
    munmap(mapped, ringBytes);
    error = device + ": " + e.what();
    return nullptr;
  }
}

LinuxRawPam::LinuxRawPam(Kiv::EventLoop &loop, const std::string &device,
                         int ifIndex, LinuxFd fd, Orv::U8 *ring)
    : Pam(Orv::Name(device)), loop_(loop), device_(device), ifIndex_(ifIndex),
      fd_(std::move(fd)), ring_(ring) {
  loop_.fdReadableIs(fd_.get(), [this] { handleReadable(); });
  writableCountInc(1);
}

LinuxRawPam::~LinuxRawPam() {
  loop_.fdDel(fd_.get());
  munmap(ring_, ringBytes);
}

void LinuxRawPam::txPktIs(const Orv::Ptr<Pkt> &pkt) {
  if (send(fd_.get(), pkt->data(), pkt->frontBytes(), MSG_DONTWAIT) >= 0) {
    return;
  }
  const int errnum = errno;
  if (errnum == EAGAIN || errnum == EWOULDBLOCK || errnum == ENOBUFS) {
    txDropsInc();
  } else {
    txErrorIs(errnum);
  }
  errorIs("send", errnum);
}

Orv::U64 LinuxRawPam::rxKernelDrops() {
  // The kernel's counters restart from zero at each read.
  tpacket_stats stats{};
  socklen_t len = sizeof stats;
  if (getsockopt(fd_.get(), SOL_PACKET, PACKET_STATISTICS, &stats, &len) == 0) {
    rxKernelDrops_ += stats.tp_drops;
  }
  return rxKernelDrops_;
}

void LinuxRawPam::handleReadable() {
  budget_ = batchSize;
  readableCountInc(1);
}

void LinuxRawPam::doGetRxPkt() {
  while (budget_ > 0) {
    tpacket2_hdr &slot = slotAt(ring_, next_);
    // The kernel hands a slot over by its status, written last.
    if (!(__atomic_load_n(&slot.tp_status, __ATOMIC_ACQUIRE) &
          TP_STATUS_USER)) {
      if (budget_ == batchSize) {
        takeSocketError();
      }
      budget_ = 0;
      return;
    }
    --budget_;
    Orv::Ptr<Pkt> pkt = slot.tp_snaplen < slot.tp_len ? nullptr : frameOf(slot);
    __atomic_store_n(&slot.tp_status, TP_STATUS_KERNEL, __ATOMIC_RELEASE);
    next_ = (next_ + 1) % ringSlots;
    if (pkt) {
      rxPktHolderIs(std::move(pkt));
      return;
    }
    ++rxOversized_;
  }
}

// A socket that is ready with no frame has an error (its device went
// away): reading it clears it, else the loop would report it for ever.
void LinuxRawPam::takeSocketError() {
  int errnum = 0;
  socklen_t len = sizeof errnum;
  if (getsockopt(fd_.get(), SOL_SOCKET, SO_ERROR, &errnum, &len) == 0 &&
      errnum != 0) {
    rxErrorsInc();
    errorIs("receive", errnum);
  }
}

void LinuxRawPam::errorIs(const std::string &what, int errnum) {
  assign(error_, device_ + ": " + what + ": " + reasonOf(errnum), errorAttr);
}

} // namespace Wirx
