#include "tools/KernelMplsRoutes.h"

#include <arpa/inet.h>
#include <libmnl/libmnl.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>

#include "Wirx/IpGenAddr.h"
#include "tools/LfibDocument.h"
#include "tools/StateSourceError.h"

namespace LspPingTool {

namespace {

using nlohmann::json;

// Route protocols of the kernel that have a name in a state document.
constexpr unsigned char protocolIsis = 187;

json source(unsigned char protocol) {
  switch (protocol) {
  case RTPROT_BOOT:
  case RTPROT_STATIC:
    return "static";
  case protocolIsis:
    return "isis";
  default:
    return 0;
  }
}

// The attributes of one message or next hop, by type; null where absent.
struct Attributes {
  const nlattr *at[RTA_MAX + 1] = {};

  static int keep(const nlattr *attr, void *data) {
    const int type = mnl_attr_get_type(attr);
    if (type >= 0 && type <= RTA_MAX) {
      static_cast<Attributes *>(data)->at[type] = attr;
    }
    return MNL_CB_OK;
  }
  const nlattr *operator[](int type) const { return at[type]; }
};

// A label stack attribute: 4-byte stack entries, label in the top 20 bits.
std::vector<unsigned> labels(const nlattr *attr) {
  std::vector<unsigned> stack;
  if (attr == nullptr) {
    return stack;
  }
  const auto *bytes =
      static_cast<const unsigned char *>(mnl_attr_get_payload(attr));
  for (std::size_t at = 0; at + 4 <= mnl_attr_get_payload_len(attr); at += 4) {
    std::uint32_t entry = 0;
    std::memcpy(&entry, bytes + at, 4);
    stack.push_back(ntohl(entry) >> 12);
  }
  return stack;
}

// The address of an RTA_VIA attribute (a family, then the address), empty
// when it is of no IP family.
std::string viaAddress(const nlattr *attr) {
  if (attr == nullptr || mnl_attr_get_payload_len(attr) < 2) {
    return "";
  }
  const auto *bytes =
      static_cast<const unsigned char *>(mnl_attr_get_payload(attr));
  std::uint16_t family = 0;
  std::memcpy(&family, bytes, 2);
  const std::size_t length = mnl_attr_get_payload_len(attr) - 2;
  if (family == AF_INET && length >= 4) {
    return Wirx::IpGenAddr(Wirx::IpAddr::fromNbo(bytes + 2)).stringValue();
  }
  if (family == AF_INET6 && length >= 16) {
    return Wirx::IpGenAddr(Wirx::Ip6Addr::fromNbo(bytes + 2)).stringValue();
  }
  return "";
}

class Reader {
public:
  explicit Reader(const std::function<std::string(unsigned)> &interfaceName)
      : interfaceName_(interfaceName) {}

  static int message(const nlmsghdr *msg, void *data) {
    static_cast<Reader *>(data)->route(msg);
    return MNL_CB_OK;
  }

  KernelMplsState state() && {
    json document = {{"lfib", std::move(lfib_).document()},
                     {"hardware", std::move(hardware_)}};
    return {std::move(document), sawMpls_};
  }

private:
  void route(const nlmsghdr *msg) {
    if (msg->nlmsg_type != RTM_NEWROUTE ||
        mnl_nlmsg_get_payload_len(msg) < sizeof(rtmsg)) {
      return;
    }
    const auto *info = static_cast<const rtmsg *>(mnl_nlmsg_get_payload(msg));
    // Without MPLS routing the kernel answers with every other family.
    if (info->rtm_family != AF_MPLS) {
      return;
    }
    sawMpls_ = true;
    Attributes attrs;
    if (mnl_attr_parse(msg, sizeof *info, Attributes::keep, &attrs) < 0) {
      return;
    }
    const std::vector<unsigned> in = labels(attrs[RTA_DST]);
    if (in.size() != 1) {
      return;
    }
    std::vector<json> vias;
    if (const nlattr *multipath = attrs[RTA_MULTIPATH]) {
      const auto *bytes =
          static_cast<const unsigned char *>(mnl_attr_get_payload(multipath));
      std::size_t left = mnl_attr_get_payload_len(multipath);
      while (left >= sizeof(rtnexthop)) {
        const auto *hop = reinterpret_cast<const rtnexthop *>(bytes);
        if (hop->rtnh_len < sizeof(rtnexthop) || hop->rtnh_len > left) {
          break;
        }
        Attributes hopAttrs;
        mnl_attr_parse_payload(RTNH_DATA(hop), hop->rtnh_len - sizeof *hop,
                               Attributes::keep, &hopAttrs);
        addVia(vias, unsigned(hop->rtnh_ifindex), hopAttrs);
        const std::size_t step = RTNH_ALIGN(hop->rtnh_len);
        bytes += std::min(step, left);
        left -= std::min(step, left);
      }
    } else {
      addVia(vias, attrs[RTA_OIF] ? mnl_attr_get_u32(attrs[RTA_OIF]) : 0,
             attrs);
    }
    if (!vias.empty()) {
      hardware_.push_back({{"label", in[0]}, {"state", "programmed"}});
    }
    lfib_.add(in[0], source(info->rtm_protocol), std::move(vias));
  }

  void addVia(std::vector<json> &vias, unsigned index,
              const Attributes &attrs) {
    const std::string nexthop = viaAddress(attrs[RTA_VIA]);
    const std::string interface = index ? interfaceName_(index) : "";
    if (!nexthop.empty() && !interface.empty()) {
      vias.push_back(labelVia(interface, nexthop, labels(attrs[RTA_NEWDST])));
    }
  }

  const std::function<std::string(unsigned)> &interfaceName_;
  LfibDocument lfib_;
  json hardware_ = json::array();
  bool sawMpls_ = false;
};

std::string systemError(const std::string &what) {
  return "kernel: " + what + ": " + std::strerror(errno);
}

} // namespace

KernelMplsState
kernelMplsState(const std::vector<std::string> &datagrams,
                const std::function<std::string(unsigned)> &interfaceName) {
  Reader reader(interfaceName);
  for (const std::string &datagram : datagrams) {
    mnl_cb_run(datagram.data(), datagram.size(), 0, 0, Reader::message,
               &reader);
  }
  return std::move(reader).state();
}

KernelMplsState readKernelMplsRoutes() {
  const std::unique_ptr<mnl_socket, int (*)(mnl_socket *)> socket(
      mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC), mnl_socket_close);
  if (!socket || mnl_socket_bind(socket.get(), 0, MNL_SOCKET_AUTOPID) != 0) {
    throw StateSourceError(systemError("rtnetlink"));
  }
  char request[MNL_SOCKET_BUFFER_SIZE];
  nlmsghdr *msg = mnl_nlmsg_put_header(request);
  msg->nlmsg_type = RTM_GETROUTE;
  msg->nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  msg->nlmsg_seq = 1;
  auto *route =
      static_cast<rtmsg *>(mnl_nlmsg_put_extra_header(msg, sizeof(rtmsg)));
  route->rtm_family = AF_MPLS;
  if (mnl_socket_sendto(socket.get(), msg, msg->nlmsg_len) < 0) {
    throw StateSourceError(systemError("asking for the label routes"));
  }
  // The kernel fills a dump's datagrams up to 32 KiB.
  std::vector<std::string> datagrams;
  const unsigned portId = mnl_socket_get_portid(socket.get());
  for (;;) {
    std::string buffer(32768, '\0');
    const ssize_t length =
        mnl_socket_recvfrom(socket.get(), buffer.data(), buffer.size());
    if (length < 0) {
      throw StateSourceError(systemError("reading the label routes"));
    }
    buffer.resize(std::size_t(length));
    const int status =
        mnl_cb_run(buffer.data(), buffer.size(), 1, portId, nullptr, nullptr);
    if (status < 0) {
      throw StateSourceError(systemError("reading the label routes"));
    }
    datagrams.push_back(std::move(buffer));
    if (status == MNL_CB_STOP) {
      break;
    }
  }
  KernelMplsState state = kernelMplsState(datagrams, [](unsigned index) {
    char name[IF_NAMESIZE] = {};
    return std::string(if_indextoname(index, name) ? name : "");
  });
  // A kernel with MPLS routing but no label route yet has its settings.
  std::error_code error;
  state.mplsRouting =
      state.mplsRouting || std::filesystem::exists("/proc/sys/net/mpls", error);
  return state;
}

} // namespace LspPingTool
