#include "tools/LfibDocument.h"

#include <algorithm>
#include <utility>

namespace LspPingTool {

namespace {

using nlohmann::json;

constexpr unsigned impNull = 3;
// What a via set holds at most.
constexpr std::size_t maxVias = 128;

} // namespace

json labelVia(const std::string &interface, const std::string &nexthop,
              std::vector<unsigned> labels) {
  json via = {{"interface", interface}, {"nexthop", nexthop}};
  if (labels.empty() || labels == std::vector<unsigned>{impNull}) {
    via["action"] = "pop";
  } else {
    via["action"] = "swap";
    via["labels"] = std::move(labels);
  }
  return via;
}

void LfibDocument::add(unsigned label, const json &source,
                       std::vector<json> vias) {
  if (vias.empty() || labels_.count(label)) {
    return;
  }
  labels_.insert(label);
  const std::size_t set = viaSets_.size() + 1;
  json keys = json::array();
  vias.resize(std::min(vias.size(), maxVias));
  for (json &via : vias) {
    via["key"] = vias_.size() + 1;
    keys.push_back(via["key"]);
    vias_.push_back(std::move(via));
  }
  viaSets_.push_back({{"key", set}, {"type", "mpls"}, {"vias", keys}});
  routes_.push_back({{"label", label}, {"viaSet", set}, {"source", source}});
}

json LfibDocument::document() && {
  json lfib = json::object();
  lfib["routes"] = json(std::move(routes_));
  lfib["viaSets"] = json(std::move(viaSets_));
  lfib["vias"] = json(std::move(vias_));
  return lfib;
}

} // namespace LspPingTool
