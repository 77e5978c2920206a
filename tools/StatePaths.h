#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <vector>

namespace LspPingTool {

// How a router sends a FEC's packets into its LSP, as its forwarding state
// (a state document, docs/state-file.md) says: the labels it pushes, out
// of which interface, to which next hop.
struct StatePath {
  // Outermost first; none when the next hop is the egress (it advertised
  // an implicit null).
  std::vector<unsigned> labels;
  std::string interface;
  std::string nexthop;
  // Which entry said so, for the user: "LDP binding 18", "IS-IS route".
  std::string entry;
};

// The path of the FEC `fec` ("ldp=PREFIX" or "sr=PREFIX[,IGP]", as `craft
// --fec` writes it) in `state`: an IP forwarding entry's pushed labels, or
// the label route of the FEC's binding (LDP's, or IS-IS's segment), its
// first via, swapped to or popped, as a router's ingress does. Empty, with
// a one-line `error`, when the state has none.
std::optional<StatePath> statePath(const nlohmann::json &state,
                                   const std::string &fec, std::string &error);

} // namespace LspPingTool
