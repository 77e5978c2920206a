#include "tools/KernelRoutes.h"

#include <libmnl/libmnl.h>
#include <linux/neighbour.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

namespace LspPingTool {

namespace {

// A dump's datagrams are up to 32 KiB.
constexpr std::size_t bufferBytes = 32768;

std::string reasonOf(int errnum) { return std::strerror(errnum); }

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

// An address attribute of the family's length, or unset.
Wirx::IpGenAddr addrOf(const nlattr *attr, Orv::U8 family) {
  if (attr == nullptr) {
    return Wirx::IpGenAddr();
  }
  const auto *bytes = static_cast<const Orv::U8 *>(mnl_attr_get_payload(attr));
  const std::size_t len = mnl_attr_get_payload_len(attr);
  if (family == AF_INET && len == 4) {
    return Wirx::IpAddr::fromNbo(bytes);
  }
  if (family == AF_INET6 && len == 16) {
    return Wirx::Ip6Addr::fromNbo(bytes);
  }
  return Wirx::IpGenAddr();
}

Orv::U8 familyOf(Wirx::AddrFamily family) {
  return family == Wirx::AddrFamily::ipv6 ? AF_INET6 : AF_INET;
}

} // namespace

std::unique_ptr<KernelRoutes> KernelRoutes::open(std::string &error) {
  mnl_socket *socket = mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC);
  if (socket == nullptr) {
    error = "rtnetlink: cannot open a socket: " + reasonOf(errno);
    return nullptr;
  }
  if (mnl_socket_bind(socket, 0, MNL_SOCKET_AUTOPID) != 0) {
    error = "rtnetlink: cannot bind: " + reasonOf(errno);
    mnl_socket_close(socket);
    return nullptr;
  }
  return std::make_unique<KernelRoutes>(socket);
}

KernelRoutes::KernelRoutes(mnl_socket *socket)
    : socket_(socket), portId_(mnl_socket_get_portid(socket)),
      buffer_(bufferBytes) {}

KernelRoutes::~KernelRoutes() { mnl_socket_close(socket_); }

template <class Handle>
bool KernelRoutes::ask(nlmsghdr *request, Handle handle, int &errnum) {
  request->nlmsg_seq = ++seq_;
  if (mnl_socket_sendto(socket_, request, request->nlmsg_len) < 0) {
    errnum = errno;
    return false;
  }
  const mnl_cb_t callback = [](const nlmsghdr *msg, void *data) {
    (*static_cast<Handle *>(data))(msg);
    return int(MNL_CB_OK);
  };
  for (;;) {
    const ssize_t len =
        mnl_socket_recvfrom(socket_, buffer_.data(), buffer_.size());
    if (len < 0) {
      errnum = errno;
      return false;
    }
    const int result = mnl_cb_run(buffer_.data(), std::size_t(len), seq_,
                                  portId_, callback, &handle);
    if (result < 0) {
      errnum = errno;
      return false;
    }
    // A dump ends with its done message; a single answer is complete.
    if (result == MNL_CB_STOP || !(request->nlmsg_flags & NLM_F_DUMP)) {
      return true;
    }
  }
}

std::optional<KernelRoutes::Route>
KernelRoutes::route(const Wirx::IpGenAddr &dst, int ifIndex,
                    std::string &error) {
  char request[MNL_SOCKET_BUFFER_SIZE];
  nlmsghdr *msg = mnl_nlmsg_put_header(request);
  msg->nlmsg_type = RTM_GETROUTE;
  msg->nlmsg_flags = NLM_F_REQUEST;
  auto *rtm =
      static_cast<rtmsg *>(mnl_nlmsg_put_extra_header(msg, sizeof(rtmsg)));
  rtm->rtm_family = familyOf(dst.af());
  Orv::U8 bytes[16];
  if (dst.isIpv4()) {
    dst.v4().toNbo(bytes);
    rtm->rtm_dst_len = 32;
    mnl_attr_put(msg, RTA_DST, 4, bytes);
  } else {
    dst.v6().toNbo(bytes);
    rtm->rtm_dst_len = 128;
    mnl_attr_put(msg, RTA_DST, 16, bytes);
  }
  if (ifIndex != 0) {
    mnl_attr_put_u32(msg, RTA_OIF, Orv::U32(ifIndex));
  }
  std::optional<Route> found;
  int errnum = 0;
  const bool asked = ask(
      msg,
      [&](const nlmsghdr *answer) {
        if (answer->nlmsg_type != RTM_NEWROUTE ||
            mnl_nlmsg_get_payload_len(answer) < sizeof(rtmsg)) {
          return;
        }
        const auto *got =
            static_cast<const rtmsg *>(mnl_nlmsg_get_payload(answer));
        Attrs<RTA_MAX> attrs;
        mnl_attr_parse(answer, sizeof *got, Attrs<RTA_MAX>::keep, &attrs);
        Route route;
        route.local = got->rtm_type == RTN_LOCAL;
        if (const nlattr *oif = attrs[RTA_OIF];
            oif && mnl_attr_validate(oif, MNL_TYPE_U32) == 0) {
          route.ifIndex = int(mnl_attr_get_u32(oif));
        }
        route.gateway = addrOf(attrs[RTA_GATEWAY], got->rtm_family);
        found = route;
      },
      errnum);
  if (!asked || !found) {
    error = dst.stringValue() + ": no route: " +
            (asked ? "the kernel gave none" : reasonOf(errnum));
    return std::nullopt;
  }
  return found;
}

std::optional<std::vector<KernelRoutes::Neighbour>>
KernelRoutes::neighbours(Wirx::AddrFamily family, std::string &error) {
  char request[MNL_SOCKET_BUFFER_SIZE];
  nlmsghdr *msg = mnl_nlmsg_put_header(request);
  msg->nlmsg_type = RTM_GETNEIGH;
  msg->nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  auto *ndm =
      static_cast<ndmsg *>(mnl_nlmsg_put_extra_header(msg, sizeof(ndmsg)));
  ndm->ndm_family = familyOf(family);
  std::vector<Neighbour> found;
  int errnum = 0;
  const bool asked = ask(
      msg,
      [&](const nlmsghdr *answer) {
        if (answer->nlmsg_type != RTM_NEWNEIGH ||
            mnl_nlmsg_get_payload_len(answer) < sizeof(ndmsg)) {
          return;
        }
        const auto *got =
            static_cast<const ndmsg *>(mnl_nlmsg_get_payload(answer));
        Attrs<NDA_MAX> attrs;
        mnl_attr_parse(answer, sizeof *got, Attrs<NDA_MAX>::keep, &attrs);
        Neighbour neighbour;
        neighbour.ifIndex = got->ndm_ifindex;
        neighbour.addr = addrOf(attrs[NDA_DST], got->ndm_family);
        const nlattr *mac = attrs[NDA_LLADDR];
        if (mac &&
            mnl_attr_get_payload_len(mac) == Wirx::EthAddr::Bytes().size()) {
          neighbour.ethAddr = Wirx::EthAddr::fromNbo(
              static_cast<const Orv::U8 *>(mnl_attr_get_payload(mac)));
        }
        constexpr int usable = NUD_REACHABLE | NUD_STALE | NUD_DELAY |
                               NUD_PROBE | NUD_PERMANENT | NUD_NOARP;
        neighbour.usable = (got->ndm_state & usable) && !!neighbour.ethAddr;
        neighbour.failed = got->ndm_state & NUD_FAILED;
        found.push_back(neighbour);
      },
      errnum);
  if (!asked) {
    error = "rtnetlink: cannot read the neighbours: " + reasonOf(errnum);
    return std::nullopt;
  }
  return found;
}

} // namespace LspPingTool
