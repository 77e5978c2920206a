#include "Wirx/LinuxRawPam.h"

#include <linux/filter.h>
#include <linux/if_ether.h>
#include <net/if.h>
#include <netinet/in.h>

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

// Room for bursts while the loop is busy elsewhere; forced past the
// system's limit when the process may, else as large as the limit allows.
constexpr int rxBufferBytes = 8 << 20;

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
  if (setsockopt(fd.get(), SOL_SOCKET, SO_ATTACH_FILTER, &fprog,
                 sizeof fprog) != 0 ||
      !setIntOption(fd.get(), SOL_PACKET, PACKET_AUXDATA, 1)) {
    error = device + ": cannot set up the raw socket: " + reasonOf(errno);
    return nullptr;
  }
  // Optional: the filter refuses outgoing frames on kernels without the
  // first, and the queueing discipline is merely slower than the second.
  setIntOption(fd.get(), SOL_PACKET, PACKET_IGNORE_OUTGOING, 1);
  setIntOption(fd.get(), SOL_PACKET, PACKET_QDISC_BYPASS, 1);
  if (!setIntOption(fd.get(), SOL_SOCKET, SO_RCVBUFFORCE, rxBufferBytes)) {
    setIntOption(fd.get(), SOL_SOCKET, SO_RCVBUF, rxBufferBytes);
  }
  sockaddr_ll addr{};
  addr.sll_family = AF_PACKET;
  addr.sll_protocol = netOrder16(ETH_P_ALL);
  addr.sll_ifindex = int(ifIndex);
  if (bind(fd.get(), reinterpret_cast<const sockaddr *>(&addr), sizeof addr) !=
      0) {
    error = device + ": cannot bind the raw socket: " + reasonOf(errno);
    return nullptr;
  }
  try {
    return Orv::make<LinuxRawPam>(loop, device, int(ifIndex), std::move(fd));
  } catch (const std::exception &e) {
    error = device + ": " + e.what();
    return nullptr;
  }
}

LinuxRawPam::LinuxRawPam(Kiv::EventLoop &loop, const std::string &device,
                         int ifIndex, LinuxFd fd)
    : Pam(Orv::Name(device)), loop_(loop), device_(device), ifIndex_(ifIndex),
      fd_(std::move(fd)) {
  ready_.reserve(batchSize);
  for (std::size_t i = 0; i < batchSize; ++i) {
    msgs_[i].msg_hdr.msg_iov = &iovecs_[i];
    msgs_[i].msg_hdr.msg_iovlen = 1;
  }
  loop_.fdReadableIs(fd_.get(), [this] { handleReadable(); });
  writableCountInc(1);
}

LinuxRawPam::~LinuxRawPam() { loop_.fdDel(fd_.get()); }

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
  mayReceive_ = true;
  readableCountInc(1);
}

void LinuxRawPam::doGetRxPkt() {
  if (readyNext_ == ready_.size() && mayReceive_) {
    receiveBatch();
  }
  if (readyNext_ < ready_.size()) {
    rxPktHolderIs(std::move(ready_[readyNext_++]));
  }
}

void LinuxRawPam::receiveBatch() {
  mayReceive_ = false;
  ready_.clear();
  readyNext_ = 0;
  for (std::size_t i = 0; i < batchSize; ++i) {
    Slot &slot = slots_[i];
    if (!slot.pkt) {
      slot.pkt = Pkt::make(rxHeadroom);
    }
    iovecs_[i] = iovec{slot.pkt->data(), slot.pkt->tailroom()};
    msghdr &hdr = msgs_[i].msg_hdr;
    hdr.msg_control = slot.control;
    hdr.msg_controllen = sizeof slot.control;
    hdr.msg_flags = 0;
  }
  const int count =
      recvmmsg(fd_.get(), msgs_.data(), batchSize, MSG_DONTWAIT, nullptr);
  if (count < 0) {
    const int errnum = errno;
    if (errnum != EAGAIN && errnum != EWOULDBLOCK && errnum != EINTR) {
      rxErrorsInc();
      errorIs("receive", errnum);
    }
    return;
  }
  for (int i = 0; i < count; ++i) {
    const msghdr &hdr = msgs_[i].msg_hdr;
    if (hdr.msg_flags & MSG_TRUNC) {
      ++rxOversized_;
      continue;
    }
    Orv::Ptr<Pkt> pkt = std::move(slots_[i].pkt);
    pkt->append(msgs_[i].msg_len);
    restoreVlanTag(*pkt, hdr);
    ready_.push_back(std::move(pkt));
  }
}

void LinuxRawPam::restoreVlanTag(Pkt &pkt, const msghdr &msg) {
  for (const cmsghdr *cmsg = CMSG_FIRSTHDR(&msg); cmsg != nullptr;
       cmsg = CMSG_NXTHDR(const_cast<msghdr *>(&msg),
                          const_cast<cmsghdr *>(cmsg))) {
    if (cmsg->cmsg_level != SOL_PACKET || cmsg->cmsg_type != PACKET_AUXDATA) {
      continue;
    }
    tpacket_auxdata aux;
    std::memcpy(&aux, CMSG_DATA(cmsg), sizeof aux);
    if (!(aux.tp_status & TP_STATUS_VLAN_VALID) || pkt.frontBytes() < 12) {
      return;
    }
    const Orv::U16 tpid = (aux.tp_status & TP_STATUS_VLAN_TPID_VALID)
                              ? aux.tp_vlan_tpid
                              : Orv::U16(ETH_P_8021Q);
    Orv::U8 *frame = pkt.prepend(4);
    std::memmove(frame, frame + 4, 12);
    store16(frame + 12, tpid);
    store16(frame + 14, aux.tp_vlan_tci);
    return;
  }
}

void LinuxRawPam::errorIs(const std::string &what, int errnum) {
  assign(error_, device_ + ": " + what + ": " + reasonOf(errnum), errorAttr);
}

} // namespace Wirx
