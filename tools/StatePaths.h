#pragma once

#include <nlohmann/json.hpp>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/Lsp.h"

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

  bool operator==(const StatePath &) const = default;
  // "label 18 out e1 to 10.1.12.1", as a line of the log tells it.
  std::string text() const;
};

// The paths into a router's LSPs, from its forwarding state: the document
// indexed once, so that the thousands of LSPs of a monitor find theirs in
// a few look-ups each. Refers to `state`, which must outlive it.
class StatePaths {
public:
  explicit StatePaths(const nlohmann::json &state);

  // The path of the FEC `fec` ("ldp=PREFIX" or "sr=PREFIX[,IGP]", as
  // `craft --fec` writes it): an IP forwarding entry's pushed labels, or
  // the label route of the FEC's binding (LDP's, or IS-IS's segment), its
  // first via, swapped to or popped, as a router's ingress does. Empty,
  // with a one-line `error`, when the state has none.
  std::optional<StatePath> path(const std::string &fec,
                                std::string &error) const;

private:
  using Index = std::map<nlohmann::json, const nlohmann::json *>;

  std::optional<StatePath> pathOf(const std::string &fec,
                                  std::string &error) const;
  std::optional<StatePath> pushed(const std::string &prefix) const;
  std::optional<StatePath> switched(const char *table,
                                    const std::string &prefix,
                                    std::string &error,
                                    const std::string &name) const;

  // FIB entries and bindings by their normalised prefix, the binding
  // tables by name; label routes by label, via sets and vias by key. The
  // first entry of a key is the one used.
  std::map<std::string, const nlohmann::json *> fib_;
  std::map<std::string, std::map<std::string, const nlohmann::json *>>
      bindings_;
  Index routes_;
  Index viaSets_;
  Index vias_;
};

// Whether `lsp` takes its path from a forwarding state: an LDP or
// segment-routing FEC given no label.
bool wantsStatePath(const Lsp &lsp);

// Gives `lsp` the labels of `path`, and its interface and next hop unless
// it names them. False, with `error`, when the path's next hop is no
// address.
bool takeStatePath(Lsp &lsp, const StatePath &path, std::string &error);

} // namespace LspPingTool
