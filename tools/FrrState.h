#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace LspPingTool {

// What FRR's vtysh answered, one command's output per member (empty for a
// command that was not asked).
struct FrrOutputs {
  std::string runningConfig;
  std::string ldpBindings;
  std::string ldpDiscovery;
  std::string routes;
  std::string routes6;
  std::string mplsTable;
  std::string interfaces;
  std::string isisPrefixSids;

  bool operator==(const FrrOutputs &) const = default;
};

// A vtysh command and where its output goes.
struct FrrCommand {
  std::string_view command;
  std::string FrrOutputs::*output;
  // Asked only when the running configuration has this protocol; an FRR
  // without it answers that its daemon is not running.
  enum class Needs { nothing, ldp, isisSr } needs = Needs::nothing;
};

// In the order they are asked: the running configuration first, as it
// says which protocols run. `show isis route prefix-sid` is the only one
// without JSON in FRR 8.4, and the only place that tells the incoming
// segment-routing labels.
inline const FrrCommand frrCommands[] = {
    {"show running-config", &FrrOutputs::runningConfig},
    {"show interface json", &FrrOutputs::interfaces},
    {"show ip route json", &FrrOutputs::routes},
    {"show ipv6 route json", &FrrOutputs::routes6},
    {"show mpls table json", &FrrOutputs::mplsTable},
    {"show mpls ldp binding json", &FrrOutputs::ldpBindings,
     FrrCommand::Needs::ldp},
    {"show mpls ldp discovery detail json", &FrrOutputs::ldpDiscovery,
     FrrCommand::Needs::ldp},
    {"show isis route prefix-sid", &FrrOutputs::isisPrefixSids,
     FrrCommand::Needs::isisSr},
};

// Whether the running configuration asks for `needs`.
bool frrConfigHas(const std::string &runningConfig, FrrCommand::Needs needs);

// The forwarding state FRR's outputs describe, as a state-file document
// (docs/state-file.md, "State from FRR"): LDP bindings (each FEC's local
// label), the label forwarding table (zebra's, or, when zebra has none,
// LDP's local labels switched to the in-use remote labels along the IGP's
// next hops, and IS-IS's prefix segments), the IS-IS segment-routing
// binding tables, the IP forwarding entries and the interfaces' MTUs.
// Throws StateSourceError naming the command and the place in its output.
nlohmann::json frrState(const FrrOutputs &outputs);

} // namespace LspPingTool
