#include "tools/KernelPaths.h"

#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

#include "Wirx/LinuxFd.h"
#include "Wirx/Nbo.h"

namespace LspPingTool {

namespace {

using Clock = std::chrono::steady_clock;

// What the kernel is made to ask a neighbour with: a datagram nobody
// listens for, as ping's first echo request would.
constexpr Orv::U16 discardPort = 9;
// How often the neighbours are read while waiting, and asked again.
constexpr auto lookEvery = std::chrono::milliseconds(10);
constexpr auto askEvery = std::chrono::seconds(1);

bool isLinkLocal(const Wirx::Ip6Addr &addr) {
  return addr.bytes()[0] == 0xfe && (addr.bytes()[1] & 0xc0) == 0x80;
}

std::string familyName(Wirx::AddrFamily family) {
  return family == Wirx::AddrFamily::ipv6 ? "IPv6" : "IPv4";
}

} // namespace

struct KernelPaths::Wanted {
  Wirx::IntfId intf;
  int ifIndex = 0;
  Wirx::IpGenAddr addr;
  Wirx::EthAddr ethAddr;
};

KernelPaths::KernelPaths(KernelRoutes &routes,
                         const Interface::LinuxIntfSync &intfs,
                         const Ip::VrfIpIntfStatus &ipv4,
                         const Ip6::VrfIp6IntfStatus &ipv6)
    : routes_(routes), intfs_(intfs), ipv4_(ipv4), ipv6_(ipv6) {}

std::string KernelPaths::route(Lsp &lsp) const {
  Session::Target &target = lsp.target;
  int ifIndex = 0;
  if (!!target.intf) {
    const Interface::LinuxIntf *intf = intfs_.linuxIntf(target.intf);
    if (!intf) {
      return "-I " + target.intf.name() + ": no such interface";
    }
    ifIndex = intf->index;
  }
  const bool nexthopNamed = !!target.nexthop || !!target.nexthopEthAddr;
  if (!target.intf || !nexthopNamed) {
    std::string error;
    const auto route = routes_.route(lsp.toward, ifIndex, error);
    if (!route) {
      return error;
    }
    if (route->local) {
      return lsp.toward.stringValue() +
             ": an address of this host: the requests would not leave it";
    }
    if (!target.intf) {
      target.intf = intfOf(route->ifIndex);
      if (!target.intf) {
        return lsp.toward.stringValue() +
               ": the kernel's route leaves by "
               "interface index " +
               std::to_string(route->ifIndex) + ", which it does not list";
      }
    }
    if (!nexthopNamed) {
      target.nexthop = !!route->gateway ? route->gateway : lsp.toward;
    }
  }
  const Interface::LinuxIntf *intf = intfs_.linuxIntf(target.intf);
  if (intf->loopback || !intf->ethAddr) {
    return target.intf.name() +
           ": not an Ethernet interface: requests leave by one";
  }
  if (!target.src) {
    target.src = sourceOf(target.intf, lsp.family);
    if (!target.src) {
      return target.intf.name() + ": no " + familyName(lsp.family) +
             " address to send from (give -s)";
    }
  }
  return "";
}

std::string KernelPaths::resolve(std::vector<Lsp> &lsps, double timeout) const {
  std::vector<Wanted> wanted;
  for (const Lsp &lsp : lsps) {
    const Session::Target &target = lsp.target;
    const bool listed =
        std::any_of(wanted.begin(), wanted.end(), [&](const Wanted &w) {
          return w.intf == target.intf && w.addr == target.nexthop;
        });
    if (!target.nexthopEthAddr && !listed) {
      wanted.push_back(Wanted{target.intf, intfs_.linuxIntf(target.intf)->index,
                              target.nexthop, Wirx::EthAddr()});
    }
  }
  const auto missing = [&wanted] {
    return std::find_if(wanted.begin(), wanted.end(),
                        [](const Wanted &w) { return !w.ethAddr; });
  };
  std::string error;
  if (!look(wanted, error)) {
    return error;
  }
  const auto deadline =
      Clock::now() + std::chrono::duration_cast<Clock::duration>(
                         std::chrono::duration<double>(timeout));
  auto nextAsk = Clock::now();
  while (missing() != wanted.end() && Clock::now() < deadline) {
    if (Clock::now() >= nextAsk) {
      for (const Wanted &w : wanted) {
        if (!w.ethAddr) {
          ask(w);
        }
      }
      nextAsk = Clock::now() + askEvery;
    }
    std::this_thread::sleep_for(lookEvery);
    if (!look(wanted, error)) {
      return error;
    }
  }
  if (const auto unresolved = missing(); unresolved != wanted.end()) {
    char seconds[16];
    std::snprintf(seconds, sizeof seconds, "%g", timeout);
    return "next hop " + unresolved->addr.stringValue() + " on " +
           unresolved->intf.name() +
           ": no MAC address: no answer to the kernel's neighbour requests "
           "within " +
           seconds + " s";
  }
  for (Lsp &lsp : lsps) {
    Session::Target &target = lsp.target;
    for (const Wanted &w : wanted) {
      if (!target.nexthopEthAddr && w.intf == target.intf &&
          w.addr == target.nexthop) {
        target.nexthopEthAddr = w.ethAddr;
      }
    }
  }
  return "";
}

Wirx::IntfId KernelPaths::intfOf(int ifIndex) const {
  for (const auto &[intf, linux] : intfs_.linuxIntf()) {
    if (linux.index == ifIndex) {
      return intf;
    }
  }
  return Wirx::IntfId();
}

// The interface's first address of the family; of IPv6, a global one
// before a link-local one.
Wirx::IpGenAddr KernelPaths::sourceOf(const Wirx::IntfId &intf,
                                      Wirx::AddrFamily family) const {
  if (family == Wirx::AddrFamily::ipv4) {
    const auto status = ipv4_.ipIntfStatus(intf);
    return status && !status->addr().empty()
               ? Wirx::IpGenAddr(status->addr().begin()->first)
               : Wirx::IpGenAddr();
  }
  const auto status = ipv6_.ip6IntfStatus(intf);
  if (!status) {
    return Wirx::IpGenAddr();
  }
  Wirx::IpGenAddr linkLocal;
  for (const auto &[addr, length] : status->addr()) {
    if (!isLinkLocal(addr)) {
      return addr;
    }
    if (!linkLocal) {
      linkLocal = addr;
    }
  }
  return linkLocal;
}

bool KernelPaths::look(std::vector<Wanted> &wanted, std::string &error) const {
  for (const Wirx::AddrFamily family :
       {Wirx::AddrFamily::ipv4, Wirx::AddrFamily::ipv6}) {
    const bool asked =
        std::any_of(wanted.begin(), wanted.end(), [family](const Wanted &w) {
          return !w.ethAddr && w.addr.af() == family;
        });
    if (!asked) {
      continue;
    }
    const auto neighbours = routes_.neighbours(family, error);
    if (!neighbours) {
      return false;
    }
    for (Wanted &w : wanted) {
      for (const KernelRoutes::Neighbour &n : *neighbours) {
        if (n.usable && n.ifIndex == w.ifIndex && n.addr == w.addr) {
          w.ethAddr = n.ethAddr;
        }
      }
    }
  }
  return true;
}

// Failures are left to the wait: a next hop that cannot be asked is not
// answered either.
void KernelPaths::ask(const Wanted &wanted) {
  const bool ipv6 = wanted.addr.isIpv6();
  const Wirx::LinuxFd fd(
      socket(ipv6 ? AF_INET6 : AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (!fd) {
    return;
  }
  const std::string &device = wanted.intf.name();
  setsockopt(fd.get(), SOL_SOCKET, SO_BINDTODEVICE, device.c_str(),
             socklen_t(device.size()));
  sockaddr_in6 to{};
  socklen_t len = sizeof to;
  if (ipv6) {
    to.sin6_family = AF_INET6;
    to.sin6_port = Wirx::netOrder16(discardPort);
    wanted.addr.v6().toNbo(to.sin6_addr.s6_addr);
    to.sin6_scope_id =
        isLinkLocal(wanted.addr.v6()) ? Orv::U32(wanted.ifIndex) : 0;
  } else {
    auto &sin = reinterpret_cast<sockaddr_in &>(to);
    sin.sin_family = AF_INET;
    sin.sin_port = Wirx::netOrder16(discardPort);
    wanted.addr.v4().toNbo(reinterpret_cast<Orv::U8 *>(&sin.sin_addr));
    len = sizeof(sockaddr_in);
  }
  sendto(fd.get(), "", 0, MSG_DONTWAIT, reinterpret_cast<sockaddr *>(&to), len);
}

} // namespace LspPingTool
