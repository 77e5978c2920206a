#include "Wirx/LinuxUdpPam.h"

#include <cerrno>
#include <cstring>
#include <exception>

#include "Wirx/Nbo.h"

namespace Wirx {

namespace {

std::string reasonOf(int errnum) { return std::strerror(errnum); }

bool setIntOption(int fd, int level, int name, int value) {
  return setsockopt(fd, level, name, &value, sizeof value) == 0;
}

std::string labelOf(AddrFamily family, Orv::U16 port) {
  return std::string(family == AddrFamily::ipv4 ? "udp4" : "udp6") + " port " +
         std::to_string(port);
}

// The socket address of `addr`:`port`, in `storage`; its length.
socklen_t sockaddrOf(const IpGenAddr &addr, Orv::U16 port,
                     sockaddr_in6 &storage) {
  storage = sockaddr_in6{};
  if (addr.isIpv4()) {
    auto &sin = reinterpret_cast<sockaddr_in &>(storage);
    sin.sin_family = AF_INET;
    sin.sin_port = netOrder16(port);
    addr.v4().toNbo(reinterpret_cast<Orv::U8 *>(&sin.sin_addr));
    return sizeof(sockaddr_in);
  }
  storage.sin6_family = AF_INET6;
  storage.sin6_port = netOrder16(port);
  if (addr.isIpv6()) {
    addr.v6().toNbo(storage.sin6_addr.s6_addr);
  }
  return sizeof(sockaddr_in6);
}

IpGenAddr addrOf(const sockaddr_in6 &storage, Orv::U16 &port) {
  if (storage.sin6_family == AF_INET) {
    const auto &sin = reinterpret_cast<const sockaddr_in &>(storage);
    port = netOrder16(sin.sin_port);
    return IpAddr::fromNbo(reinterpret_cast<const Orv::U8 *>(&sin.sin_addr));
  }
  port = netOrder16(storage.sin6_port);
  return Ip6Addr::fromNbo(storage.sin6_addr.s6_addr);
}

// The local address a datagram was sent to, from its packet information.
IpGenAddr localAddrOf(const msghdr &msg) {
  for (const cmsghdr *cmsg = CMSG_FIRSTHDR(&msg); cmsg != nullptr;
       cmsg = CMSG_NXTHDR(const_cast<msghdr *>(&msg),
                          const_cast<cmsghdr *>(cmsg))) {
    if (cmsg->cmsg_level == IPPROTO_IP && cmsg->cmsg_type == IP_PKTINFO) {
      in_pktinfo info;
      std::memcpy(&info, CMSG_DATA(cmsg), sizeof info);
      return IpAddr::fromNbo(reinterpret_cast<const Orv::U8 *>(&info.ipi_addr));
    }
    if (cmsg->cmsg_level == IPPROTO_IPV6 && cmsg->cmsg_type == IPV6_PKTINFO) {
      in6_pktinfo info;
      std::memcpy(&info, CMSG_DATA(cmsg), sizeof info);
      return Ip6Addr::fromNbo(info.ipi6_addr.s6_addr);
    }
  }
  return IpGenAddr();
}

// The wildcard address leaves the choice to the kernel, as no address does.
bool isWildcard(const IpGenAddr &addr) {
  return !addr || (addr.isIpv4() && !addr.v4()) ||
         (addr.isIpv6() && !addr.v6());
}

} // namespace

Orv::Ptr<LinuxUdpPam> LinuxUdpPam::open(Kiv::EventLoop &loop, AddrFamily family,
                                        Orv::U16 port, std::string &error) {
  const bool v4 = family == AddrFamily::ipv4;
  LinuxFd fd(socket(v4 ? AF_INET : AF_INET6,
                    SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!fd) {
    error = labelOf(family, port) +
            ": cannot open a UDP socket: " + reasonOf(errno);
    return nullptr;
  }
  const bool set =
      v4 ? setIntOption(fd.get(), IPPROTO_IP, IP_PKTINFO, 1)
         : setIntOption(fd.get(), IPPROTO_IPV6, IPV6_V6ONLY, 1) &&
               setIntOption(fd.get(), IPPROTO_IPV6, IPV6_RECVPKTINFO, 1);
  if (!set) {
    error = labelOf(family, port) +
            ": cannot set up the UDP socket: " + reasonOf(errno);
    return nullptr;
  }
  sockaddr_in6 local;
  socklen_t len =
      sockaddrOf(v4 ? IpGenAddr(IpAddr()) : IpGenAddr(Ip6Addr()), port, local);
  if (bind(fd.get(), reinterpret_cast<const sockaddr *>(&local), len) != 0) {
    error = labelOf(family, port) + ": cannot bind: " + reasonOf(errno);
    return nullptr;
  }
  len = sizeof local;
  getsockname(fd.get(), reinterpret_cast<sockaddr *>(&local), &len);
  Orv::U16 bound = port;
  addrOf(local, bound);
  try {
    return Orv::make<LinuxUdpPam>(loop, family, bound, std::move(fd));
  } catch (const std::exception &e) {
    error = labelOf(family, port) + ": " + e.what();
    return nullptr;
  }
}

LinuxUdpPam::LinuxUdpPam(Kiv::EventLoop &loop, AddrFamily family, Orv::U16 port,
                         LinuxFd fd)
    : UdpPam(Orv::Name(labelOf(family, port)), port), loop_(loop),
      family_(family), fd_(std::move(fd)), label_(labelOf(family, port)) {
  for (std::size_t i = 0; i < batchSize; ++i) {
    msghdr &hdr = msgs_[i].msg_hdr;
    hdr.msg_iov = &iovecs_[i];
    hdr.msg_iovlen = 1;
  }
  loop_.fdReadableIs(fd_.get(), [this] { handleReadable(); });
  writableCountInc(1);
}

LinuxUdpPam::~LinuxUdpPam() { loop_.fdDel(fd_.get()); }

bool LinuxUdpPam::rxBufferIs(int bytes) {
  return setIntOption(fd_.get(), SOL_SOCKET, SO_RCVBUFFORCE, bytes) ||
         setIntOption(fd_.get(), SOL_SOCKET, SO_RCVBUF, bytes);
}

void LinuxUdpPam::txPktIs(const Orv::Ptr<Pkt> &pkt) {
  int errnum = txAddressingError();
  if (errnum == 0 && txDstAddr().af() != family_) {
    errnum = EAFNOSUPPORT;
  }
  if (errnum != 0) {
    // What waits goes first, so that fates are told in order.
    txFlush();
    txErrorIs(errnum);
    errorIs("send to " + txDstAddr().stringValue(), errnum);
    if (txDone_) {
      txDone_(errnum);
    }
    return;
  }
  enqueue(pkt);
  if (!txHold_ || txQueued_ == batchSize) {
    txFlush();
  }
}

void LinuxUdpPam::txHoldIs(bool hold) {
  txHold_ = hold;
  if (!hold) {
    txFlush();
  }
}

void LinuxUdpPam::enqueue(const Orv::Ptr<Pkt> &pkt) {
  Queued &queued = txQueue_[txQueued_];
  msghdr &msg = txMsgs_[txQueued_].msg_hdr;
  ++txQueued_;
  queued.pkt = pkt;
  queued.iov = iovec{pkt->data(), pkt->frontBytes()};
  msg = msghdr{};
  msg.msg_name = &queued.dst;
  msg.msg_namelen = sockaddrOf(txDstAddr(), txDstPort(), queued.dst);
  msg.msg_iov = &queued.iov;
  msg.msg_iovlen = 1;
  if (isWildcard(txSrcAddr())) {
    return;
  }
  std::memset(queued.control, 0, sizeof queued.control);
  msg.msg_control = queued.control;
  cmsghdr *cmsg = reinterpret_cast<cmsghdr *>(queued.control);
  if (family_ == AddrFamily::ipv4) {
    in_pktinfo info{};
    txSrcAddr().v4().toNbo(reinterpret_cast<Orv::U8 *>(&info.ipi_spec_dst));
    cmsg->cmsg_level = IPPROTO_IP;
    cmsg->cmsg_type = IP_PKTINFO;
    cmsg->cmsg_len = CMSG_LEN(sizeof info);
    std::memcpy(CMSG_DATA(cmsg), &info, sizeof info);
    msg.msg_controllen = CMSG_SPACE(sizeof info);
  } else {
    in6_pktinfo info{};
    txSrcAddr().v6().toNbo(info.ipi6_addr.s6_addr);
    cmsg->cmsg_level = IPPROTO_IPV6;
    cmsg->cmsg_type = IPV6_PKTINFO;
    cmsg->cmsg_len = CMSG_LEN(sizeof info);
    std::memcpy(CMSG_DATA(cmsg), &info, sizeof info);
    msg.msg_controllen = CMSG_SPACE(sizeof info);
  }
}

// sendmmsg stops at the first payload that fails, which the next call
// then reports: each is told in turn.
void LinuxUdpPam::txFlush() {
  for (Orv::U32 next = 0; next < txQueued_;) {
    const int sent =
        sendmmsg(fd_.get(), &txMsgs_[next], txQueued_ - next, MSG_DONTWAIT);
    const int errnum = sent < 0 ? errno : 0;
    const Orv::U32 settled = sent > 0 ? Orv::U32(sent) : 1;
    if (sent < 0) {
      txFailed(txQueue_[next], errnum);
    }
    for (Orv::U32 i = next; i < next + settled; ++i) {
      txQueue_[i].pkt = nullptr;
      if (txDone_) {
        txDone_(errnum);
      }
    }
    next += settled;
  }
  txQueued_ = 0;
}

void LinuxUdpPam::txFailed(const Queued &queued, int errnum) {
  if (errnum == EAGAIN || errnum == EWOULDBLOCK || errnum == ENOBUFS) {
    txDropsInc();
  } else {
    txErrorIs(errnum);
  }
  Orv::U16 port = 0;
  const IpGenAddr to = addrOf(queued.dst, port);
  errorIs("send to " + to.stringValue() + " port " + std::to_string(port),
          errnum);
}

void LinuxUdpPam::handleReadable() {
  mayReceive_ = rxBatches_;
  readableCountInc(1);
}

void LinuxUdpPam::doGetRxPkt() {
  if (readyNext_ == readyCount_ && mayReceive_ > 0) {
    receiveBatch();
  }
  if (readyNext_ == readyCount_) {
    rxSrcIs(IpGenAddr(), 0);
    return;
  }
  Received &next = ready_[readyNext_++];
  rxSrcIs(next.srcAddr, next.srcPort, next.dstAddr);
  rxPktHolderIs(std::move(next.pkt));
}

void LinuxUdpPam::receiveBatch() {
  --mayReceive_;
  readyCount_ = 0;
  readyNext_ = 0;
  for (std::size_t i = 0; i < batchSize; ++i) {
    Slot &slot = slots_[i];
    if (!slot.pkt) {
      slot.pkt = Pkt::make(0);
    }
    iovecs_[i] = iovec{slot.pkt->data(), slot.pkt->tailroom()};
    msghdr &hdr = msgs_[i].msg_hdr;
    hdr.msg_name = &slot.src;
    hdr.msg_namelen = sizeof slot.src;
    hdr.msg_control = slot.control;
    hdr.msg_controllen = sizeof slot.control;
    hdr.msg_flags = 0;
  }
  const int count =
      recvmmsg(fd_.get(), msgs_.data(), batchSize, MSG_DONTWAIT, nullptr);
  // A batch short of full emptied the socket.
  if (count < int(batchSize)) {
    mayReceive_ = 0;
  }
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
    Received &received = ready_[readyCount_++];
    received.pkt = std::move(slots_[i].pkt);
    received.pkt->append(msgs_[i].msg_len);
    received.srcAddr = addrOf(slots_[i].src, received.srcPort);
    received.dstAddr = localAddrOf(hdr);
  }
}

void LinuxUdpPam::errorIs(const std::string &what, int errnum) {
  assign(error_, label_ + ": " + what + ": " + reasonOf(errnum), errorAttr);
}

} // namespace Wirx
