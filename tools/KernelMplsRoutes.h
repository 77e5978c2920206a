#pragma once

#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

namespace LspPingTool {

// The kernel's label routes, as a state document.
struct KernelMplsState {
  // Its `lfib` and `hardware` (what the kernel has, it forwards).
  nlohmann::json document;
  // Whether the kernel routes MPLS at all: one without MPLS routing
  // answers a dump of label routes with its IPv4 and IPv6 routes.
  bool mplsRouting = false;
};

// The label routes among the messages of a route dump (datagrams as read
// from rtnetlink): those of the MPLS family only. Interfaces are named by
// `interfaceName` from their index. Messages that do not read are passed
// over.
KernelMplsState
kernelMplsState(const std::vector<std::string> &datagrams,
                const std::function<std::string(unsigned)> &interfaceName);

// Dumps this network namespace's label routes over rtnetlink; throws
// StateSourceError when the kernel cannot be asked.
KernelMplsState readKernelMplsRoutes();

} // namespace LspPingTool
