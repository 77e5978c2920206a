#include "Interface/LinuxIntfSync.h"

#include <libmnl/libmnl.h>
#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <exception>

namespace Interface {

namespace {

// Notifications come in bursts (a device going away takes its addresses
// with it); the socket keeps room for a large one.
constexpr int rxBufferBytes = 1 << 20;
// The kernel fills a dump's datagrams up to 32 KiB; a smaller buffer would
// cut them.
constexpr std::size_t bufferBytes = 32768;
// Buffers read per readiness, so that a storm does not hold the loop.
constexpr int buffersPerReadiness = 16;
// Dumps cut short by lost notifications are begun again this many times.
constexpr int dumpAttempts = 3;

std::string reasonOf(int errnum) { return std::strerror(errnum); }

// The attributes of one message, by type; null where absent.
template <std::size_t Max> struct Attrs {
  const nlattr *at[Max + 1] = {};

  static int keep(const nlattr *attr, void *data) {
    const int type = mnl_attr_get_type(attr);
    if (type >= 0 && std::size_t(type) <= Max) {
      static_cast<Attrs *>(data)->at[type] = attr;
    }
    return MNL_CB_OK;
  }
  const nlattr *operator[](int type) const { return at[type]; }
};

} // namespace

Orv::Ptr<LinuxIntfSync> LinuxIntfSync::open(Kiv::EventLoop &loop,
                                            Platform platform,
                                            std::string &error) {
  mnl_socket *socket = mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC);
  if (socket == nullptr) {
    error = "rtnetlink: cannot open a socket: " + reasonOf(errno);
    return nullptr;
  }
  const int size = rxBufferBytes;
  if (setsockopt(mnl_socket_get_fd(socket), SOL_SOCKET, SO_RCVBUFFORCE, &size,
                 sizeof size) != 0) {
    setsockopt(mnl_socket_get_fd(socket), SOL_SOCKET, SO_RCVBUF, &size,
               sizeof size);
  }
  if (mnl_socket_bind(socket,
                      RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR,
                      MNL_SOCKET_AUTOPID) != 0) {
    error = "rtnetlink: cannot join the interface groups: " + reasonOf(errno);
    mnl_socket_close(socket);
    return nullptr;
  }
  Orv::Ptr<LinuxIntfSync> sync;
  try {
    sync = Orv::make<LinuxIntfSync>(loop, std::move(platform), socket);
  } catch (const std::exception &e) {
    error = std::string("rtnetlink: ") + e.what();
    return nullptr;
  }
  if (!sync->resync()) {
    error = sync->error();
    return nullptr;
  }
  return sync;
}

LinuxIntfSync::LinuxIntfSync(Kiv::EventLoop &loop, Platform platform,
                             mnl_socket *socket)
    : loop_(loop), platform_(std::move(platform)), socket_(socket),
      portId_(mnl_socket_get_portid(socket)), buffer_(bufferBytes) {
  try {
    loop_.fdReadableIs(mnl_socket_get_fd(socket_),
                       [this] { handleReadable(); });
  } catch (...) {
    mnl_socket_close(socket_);
    throw;
  }
}

LinuxIntfSync::~LinuxIntfSync() {
  loop_.fdDel(mnl_socket_get_fd(socket_));
  mnl_socket_close(socket_);
}

int LinuxIntfSync::handleMessage(const nlmsghdr *msg, void *self) {
  auto &sync = *static_cast<LinuxIntfSync *>(self);
  switch (msg->nlmsg_type) {
  case RTM_NEWLINK:
  case RTM_DELLINK:
    sync.handleLink(msg);
    break;
  case RTM_NEWADDR:
  case RTM_DELADDR:
    sync.handleAddr(msg);
    break;
  default:
    break;
  }
  return MNL_CB_OK;
}

void LinuxIntfSync::handleLink(const nlmsghdr *msg) {
  if (mnl_nlmsg_get_payload_len(msg) < sizeof(ifinfomsg)) {
    return;
  }
  const auto *info = static_cast<const ifinfomsg *>(mnl_nlmsg_get_payload(msg));
  // A bridge tells of its ports with the same messages in its own family:
  // those are not the devices coming or going.
  if (info->ifi_family != AF_UNSPEC) {
    return;
  }
  const int index = info->ifi_index;
  touched_.insert(index);
  if (msg->nlmsg_type == RTM_DELLINK) {
    kernel_.erase(index);
    return;
  }
  Attrs<IFLA_MAX> attrs;
  mnl_attr_parse(msg, sizeof *info, Attrs<IFLA_MAX>::keep, &attrs);
  Link &link = kernel_[index];
  if (const nlattr *name = attrs[IFLA_IFNAME];
      name && mnl_attr_validate(name, MNL_TYPE_NUL_STRING) == 0) {
    link.name = mnl_attr_get_str(name);
  }
  if (const nlattr *mtu = attrs[IFLA_MTU];
      mtu && mnl_attr_validate(mtu, MNL_TYPE_U32) == 0) {
    link.intf.mtu = mnl_attr_get_u32(mtu);
  }
  link.intf.ethAddr = Wirx::EthAddr();
  if (const nlattr *mac = attrs[IFLA_ADDRESS];
      mac && mnl_attr_get_payload_len(mac) == Wirx::EthAddr::Bytes().size()) {
    link.intf.ethAddr = Wirx::EthAddr::fromNbo(
        static_cast<const Orv::U8 *>(mnl_attr_get_payload(mac)));
  }
  link.intf.index = index;
  link.intf.up = (info->ifi_flags & IFF_UP) != 0;
  link.intf.running = (info->ifi_flags & IFF_RUNNING) != 0;
  link.intf.loopback = (info->ifi_flags & IFF_LOOPBACK) != 0;
  link.described = true;
}

void LinuxIntfSync::handleAddr(const nlmsghdr *msg) {
  if (mnl_nlmsg_get_payload_len(msg) < sizeof(ifaddrmsg)) {
    return;
  }
  const auto *info = static_cast<const ifaddrmsg *>(mnl_nlmsg_get_payload(msg));
  Attrs<IFA_MAX> attrs;
  mnl_attr_parse(msg, sizeof *info, Attrs<IFA_MAX>::keep, &attrs);
  // On a point-to-point link IFA_ADDRESS is the peer's; IFA_LOCAL, where
  // present, is always this host's.
  const nlattr *attr = attrs[IFA_LOCAL] ? attrs[IFA_LOCAL] : attrs[IFA_ADDRESS];
  if (attr == nullptr) {
    return;
  }
  const auto *bytes = static_cast<const Orv::U8 *>(mnl_attr_get_payload(attr));
  const std::size_t len = mnl_attr_get_payload_len(attr);
  const bool added = msg->nlmsg_type == RTM_NEWADDR;
  const int index = int(info->ifa_index);
  // The addresses of a device that is gone went with it.
  if (!added && !kernel_.count(index)) {
    return;
  }
  if (info->ifa_family == AF_INET && len == 4 &&
      info->ifa_prefixlen <= Ip::VrfIpIntfStatus::maxPrefixLength) {
    auto &addrs = kernel_[index].ipv4;
    const auto addr = Wirx::IpAddr::fromNbo(bytes);
    added ? void(addrs[addr] = info->ifa_prefixlen) : void(addrs.erase(addr));
  } else if (info->ifa_family == AF_INET6 && len == 16 &&
             info->ifa_prefixlen <= Ip6::VrfIp6IntfStatus::maxPrefixLength) {
    auto &addrs = kernel_[index].ipv6;
    const auto addr = Wirx::Ip6Addr::fromNbo(bytes);
    added ? void(addrs[addr] = info->ifa_prefixlen) : void(addrs.erase(addr));
  } else {
    return;
  }
  touched_.insert(index);
}

void LinuxIntfSync::handleReadable() {
  const int fd = mnl_socket_get_fd(socket_);
  for (int i = 0; i < buffersPerReadiness; ++i) {
    const ssize_t len = recv(fd, buffer_.data(), buffer_.size(), MSG_DONTWAIT);
    if (len < 0) {
      const int errnum = errno;
      if (errnum == ENOBUFS) {
        errorIs("notifications lost, reading every interface anew", errnum);
        resync();
      } else if (errnum != EAGAIN && errnum != EWOULDBLOCK && errnum != EINTR) {
        errorIs("receive", errnum);
      }
      return;
    }
    if (mnl_cb_run(buffer_.data(), std::size_t(len), 0, 0, handleMessage,
                   this) < 0) {
      errorIs("a notification", errno);
    }
    const std::set<int> touched = std::move(touched_);
    touched_.clear();
    for (const int index : touched) {
      sync(index);
    }
  }
}

bool LinuxIntfSync::resync() {
  for (int attempt = 0; attempt < dumpAttempts; ++attempt) {
    kernel_.clear();
    if (!dump(RTM_GETLINK) || !dump(RTM_GETADDR)) {
      if (errno == ENOBUFS || errno == EINTR) {
        continue;
      }
      return false;
    }
    std::set<int> indexes;
    for (const auto &[index, link] : published_) {
      indexes.insert(index);
    }
    for (const auto &[index, link] : kernel_) {
      indexes.insert(index);
    }
    touched_.clear();
    for (const int index : indexes) {
      sync(index);
    }
    return true;
  }
  return false;
}

bool LinuxIntfSync::dump(Orv::U16 type) {
  char request[MNL_SOCKET_BUFFER_SIZE];
  nlmsghdr *msg = mnl_nlmsg_put_header(request);
  msg->nlmsg_type = type;
  msg->nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  msg->nlmsg_seq = ++seq_;
  // Both requests start with the family: unspecified asks for all.
  auto *family = static_cast<Orv::U8 *>(mnl_nlmsg_put_extra_header(
      msg, type == RTM_GETLINK ? sizeof(ifinfomsg) : sizeof(ifaddrmsg)));
  *family = AF_UNSPEC;
  const char *what =
      type == RTM_GETLINK ? "reading the interfaces" : "reading the addresses";
  if (mnl_socket_sendto(socket_, msg, msg->nlmsg_len) < 0) {
    errorIs(what, errno);
    return false;
  }
  // Notifications may come between the parts of the answer: they are
  // taken in as they come, being no older than what the answer tells.
  for (;;) {
    const ssize_t len =
        mnl_socket_recvfrom(socket_, buffer_.data(), buffer_.size());
    if (len < 0) {
      const int errnum = errno;
      errorIs(what, errnum);
      errno = errnum;
      return false;
    }
    const int result = mnl_cb_run(buffer_.data(), std::size_t(len), seq_,
                                  portId_, handleMessage, this);
    if (result == MNL_CB_STOP) {
      return true;
    }
    if (result < 0) {
      const int errnum = errno;
      errorIs(what, errnum);
      errno = errnum;
      return false;
    }
  }
}

void LinuxIntfSync::sync(int index) {
  const auto now = kernel_.find(index);
  // A kernel name is an interface id unless it could garble a line.
  const bool usable = now != kernel_.end() && now->second.described &&
                      !now->second.name.empty() &&
                      Wirx::IntfId::fromString(now->second.name).has_value();
  const auto before = published_.find(index);
  if (before != published_.end() &&
      (!usable || before->second.name != now->second.name)) {
    unpublish(before->second);
    published_.erase(before);
  }
  if (!usable) {
    return;
  }
  const auto kept = published_.find(index);
  publish(now->second, kept == published_.end() ? nullptr : &kept->second);
  published_[index] = now->second;
}

void LinuxIntfSync::publish(const Link &now, const Link *before) {
  const Wirx::IntfId intf(now.name);
  platform_.allIntfStatusDir->intfStatusIs(intf)->mtuIs(now.intf.mtu);
  platform_.kniStatus->kernelIntfIs(
      intf, KernelNetInfo::KernelIntf{now.name, platform_.netNs});
  if (before) {
    for (const auto &[addr, length] : before->ipv4) {
      if (!now.ipv4.count(addr)) {
        platform_.vrfIpIntfStatus->addrDel(intf, addr);
      }
    }
    for (const auto &[addr, length] : before->ipv6) {
      if (!now.ipv6.count(addr)) {
        platform_.vrfIp6IntfStatus->addrDel(intf, addr);
      }
    }
  }
  for (const auto &[addr, length] : now.ipv4) {
    platform_.vrfIpIntfStatus->addrIs(intf, addr, length);
  }
  for (const auto &[addr, length] : now.ipv6) {
    platform_.vrfIp6IntfStatus->addrIs(intf, addr, length);
  }
  linuxIntf_.is(intf, now.intf);
}

// The host's own table goes first, so that it lets go of the device before
// the device's state goes.
void LinuxIntfSync::unpublish(const Link &before) {
  const Wirx::IntfId intf(before.name);
  linuxIntf_.del(intf);
  platform_.vrfIpIntfStatus->ipIntfStatusDel(intf);
  platform_.vrfIp6IntfStatus->ip6IntfStatusDel(intf);
  platform_.kniStatus->kernelIntfDel(intf);
  platform_.allIntfStatusDir->intfStatusDel(intf);
}

void LinuxIntfSync::errorIs(const std::string &what, int errnum) {
  assign(error_, "rtnetlink: " + what + ": " + reasonOf(errnum), errorAttr);
}

} // namespace Interface
