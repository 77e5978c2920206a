#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Wirx/EthAddr.h"
#include "Wirx/IpGenAddr.h"

struct mnl_socket;
struct nlmsghdr;

namespace LspPingTool {

// The kernel's routes and neighbours as a program that sends frames itself
// needs them: where the kernel would send a packet to an address, and the
// MAC address of a neighbour. Asked over rtnetlink (libmnl), one question
// at a time; a failure is a one-line message, never an exception.
class KernelRoutes {
public:
  struct Route {
    int ifIndex = 0;
    // The router the packet goes to; unset when the destination is on the
    // link itself.
    Wirx::IpGenAddr gateway;
    // The destination is this host's own.
    bool local = false;
  };

  struct Neighbour {
    int ifIndex = 0;
    Wirx::IpGenAddr addr;
    Wirx::EthAddr ethAddr;
    // The kernel holds a MAC address that frames may be sent to: reachable,
    // stale, being checked, or set by hand.
    bool usable = false;
    // The kernel asked and nobody answered.
    bool failed = false;
  };

  // Null, with `error` set, when rtnetlink cannot be opened.
  static std::unique_ptr<KernelRoutes> open(std::string &error);

  explicit KernelRoutes(mnl_socket *socket);
  KernelRoutes(const KernelRoutes &) = delete;
  KernelRoutes &operator=(const KernelRoutes &) = delete;
  ~KernelRoutes();

  // The route the kernel takes to `dst`, out of interface `ifIndex` when it
  // is not 0; empty, with `error` set ("10.0.0.9: no route: REASON"), when
  // there is none.
  std::optional<Route> route(const Wirx::IpGenAddr &dst, int ifIndex,
                             std::string &error);
  // The kernel's neighbours of one family; empty, with `error` set, when
  // the kernel cannot be asked.
  std::optional<std::vector<Neighbour>> neighbours(Wirx::AddrFamily family,
                                                   std::string &error);

private:
  // Sends `request` and runs `handle` on each message of the answer until
  // it is complete; false, with the kernel's errno in `errnum`, when the
  // kernel refused or could not be asked.
  template <class Handle>
  bool ask(nlmsghdr *request, Handle handle, int &errnum);

  mnl_socket *const socket_;
  unsigned portId_;
  unsigned seq_ = 0;
  std::vector<char> buffer_;
};

} // namespace LspPingTool
