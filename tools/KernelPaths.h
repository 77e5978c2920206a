#pragma once

#include <string>
#include <vector>

#include "Interface/LinuxIntfSync.h"
#include "Ip/VrfIpIntfStatus.h"
#include "Ip6/VrfIp6IntfStatus.h"
#include "tools/KernelRoutes.h"
#include "tools/Lsp.h"

namespace LspPingTool {

// Fills in, from the kernel, what the command line leaves out of the paths
// of LSPs, before their sessions start: the interface and next hop of the
// kernel's route towards the FEC, the interface's source address of the
// requests' family, and the next hop's MAC address from the kernel's
// neighbours. A next hop the kernel has no MAC address for is found as
// ping would have the kernel find it: a datagram to its discard port, sent
// out of the interface, makes the kernel ask (ARP, neighbour discovery),
// and the neighbours are read again until the answer is in.
class KernelPaths {
public:
  // Each must outlive this.
  KernelPaths(KernelRoutes &routes, const Interface::LinuxIntfSync &intfs,
              const Ip::VrfIpIntfStatus &ipv4,
              const Ip6::VrfIp6IntfStatus &ipv6);

  // Completes the interface, next hop and source of `lsp`'s target. The
  // reason it cannot, naming the interface, option or address, or "".
  std::string route(Lsp &lsp) const;

  // Completes the next hops' MAC addresses of `lsps`, each (interface, next
  // hop) asked once, waiting at most `timeout` seconds for the kernel's
  // answers. The reason one is missing, naming the next hop and interface,
  // or "".
  std::string resolve(std::vector<Lsp> &lsps, double timeout) const;

private:
  struct Wanted;

  // The kernel's name of the interface of index `ifIndex`; empty when
  // there is none.
  Wirx::IntfId intfOf(int ifIndex) const;
  Wirx::IpGenAddr sourceOf(const Wirx::IntfId &intf,
                           Wirx::AddrFamily family) const;
  // Reads the neighbours into `wanted`; false, with `error`, when the
  // kernel cannot be asked.
  bool look(std::vector<Wanted> &wanted, std::string &error) const;
  // Has the kernel ask the neighbour for its MAC address.
  static void ask(const Wanted &wanted);

  KernelRoutes &routes_;
  const Interface::LinuxIntfSync &intfs_;
  const Ip::VrfIpIntfStatus &ipv4_;
  const Ip6::VrfIp6IntfStatus &ipv6_;
};

} // namespace LspPingTool
