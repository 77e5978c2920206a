// vtysh's outputs of a router with many LDP prefixes, generated: what the
// programs that time reading FRR's state feed it.
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <tuple>
#include <utility>

namespace LspPingBench {

// vtysh's `show mpls ldp binding json` and `show ip route json` of a
// transit router with `prefixes` LDP prefixes 10.100.0.0 and up, each
// bound by two neighbours, the one behind the IGP's next hop `nexthop`
// (out of e2) in use; `shift` moves every local label.
inline std::pair<std::string, std::string>
ldpOutputs(int prefixes, int shift, const std::string &nexthop) {
  using nlohmann::json;
  json bindings = json::array();
  json routes = json::object();
  for (int i = 0; i < prefixes; ++i) {
    const std::string prefix = "10." + std::to_string(100 + i / 65536) + "." +
                               std::to_string(i / 256 % 256) + "." +
                               std::to_string(i % 256) + "/32";
    const std::string local = std::to_string(16 + shift + i);
    for (const auto &[neighbour, label, inUse] :
         {std::tuple{"10.0.0.1", std::to_string(100016 + i), 0},
          std::tuple{"10.0.0.3", std::to_string(200016 + i), 1}}) {
      bindings.push_back({{"addressFamily", "ipv4"},
                          {"prefix", prefix},
                          {"neighborId", neighbour},
                          {"localLabel", local},
                          {"remoteLabel", label},
                          {"inUse", inUse}});
    }
    routes[prefix] = {
        {{"prefix", prefix},
         {"protocol", "ospf"},
         {"selected", true},
         {"nexthops",
          {{{"ip", nexthop}, {"interfaceName", "e2"}, {"active", true}}}}}};
  }
  return {json{{"bindings", bindings}}.dump(), routes.dump()};
}

} // namespace LspPingBench
