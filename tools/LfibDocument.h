#pragma once

#include <nlohmann/json.hpp>

#include <set>
#include <string>
#include <vector>

namespace LspPingTool {

// A via of a label route in a state document: pop when the stack going
// out is empty or implicit null (3), else swap to it.
nlohmann::json labelVia(const std::string &interface,
                        const std::string &nexthop,
                        std::vector<unsigned> labels);

// The label forwarding table of a state document (its `lfib` object)
// being built from a source: a route per incoming label, each with a via
// set of its own, keys numbered from 1.
class LfibDocument {
public:
  // A route without vias is left out, and so is a second route for a
  // label: the first one wins.
  void add(unsigned label, const nlohmann::json &source,
           std::vector<nlohmann::json> vias);

  bool empty() const { return routes_.empty(); }
  // The `lfib` object, its tables moved into it.
  nlohmann::json document() &&;

private:
  std::set<unsigned> labels_;
  std::vector<nlohmann::json> routes_;
  std::vector<nlohmann::json> viaSets_;
  std::vector<nlohmann::json> vias_;
};

} // namespace LspPingTool
