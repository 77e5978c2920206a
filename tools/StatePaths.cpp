#include "tools/StatePaths.h"

#include "Wirx/IpGenPrefix.h"

namespace LspPingTool {

namespace {

using nlohmann::json;

constexpr unsigned impNull = 3;

// A prefix in one form, so that "10.0.0.3" and "10.0.0.3/32" match.
std::string normal(const std::string &text) {
  std::string prefix = text;
  if (prefix.find('/') == std::string::npos) {
    prefix += prefix.find(':') == std::string::npos ? "/32" : "/128";
  }
  const auto parsed = Wirx::IpGenPrefix::fromString(prefix);
  return parsed ? parsed->stringValue() : text;
}

// A table of a document, empty when absent; a reference into the document.
const json &member(const json &object, const char *key) {
  static const json none = json::array();
  const auto it = object.find(key);
  return it == object.end() ? none : *it;
}

template <typename Key, typename KeyOf>
void index(std::map<Key, const json *> &map, const json &table, KeyOf keyOf) {
  for (const json &entry : table) {
    if (entry.is_object()) {
      map.emplace(keyOf(entry), &entry);
    }
  }
}

template <typename Key>
const json *lookUp(const std::map<Key, const json *> &map, const Key &key) {
  const auto it = map.find(key);
  return it == map.end() ? nullptr : it->second;
}

} // namespace

std::string StatePath::text() const {
  std::string words =
      labels.empty() ? "no label (the next hop is the egress)" : "label";
  for (const unsigned label : labels) {
    words += " " + std::to_string(label);
  }
  return words + " out " + interface + " to " + nexthop;
}

StatePaths::StatePaths(const json &state) {
  const auto prefixOf = [](const json &entry) {
    const json fec = entry.value("fec", json());
    return normal(fec.is_string() ? fec.get<std::string>() : "");
  };
  const auto keyed = [](const char *key) {
    return [key](const json &entry) { return entry.value(key, json()); };
  };
  index(fib_, member(state, "fib"), prefixOf);
  for (const auto &[table, entries] : member(state, "bindings").items()) {
    index(bindings_[table], entries, prefixOf);
  }
  const json &lfib = member(state, "lfib");
  index(routes_, member(lfib, "routes"), keyed("label"));
  index(viaSets_, member(lfib, "viaSets"), keyed("key"));
  index(vias_, member(lfib, "vias"), keyed("key"));
}

// The labels an IP forwarding entry pushes: segment routing's way in.
std::optional<StatePath> StatePaths::pushed(const std::string &prefix) const {
  const json *entry = lookUp(fib_, prefix);
  if (!entry) {
    return std::nullopt;
  }
  for (const json &via : member(*entry, "vias")) {
    if (via.value("action", "") == "push" && via.contains("labels")) {
      return StatePath{via["labels"].get<std::vector<unsigned>>(),
                       via.value("interface", ""), via.value("nexthop", ""),
                       "IP route"};
    }
  }
  return std::nullopt;
}

// The first via of the route for the FEC's label in `table`.
std::optional<StatePath> StatePaths::switched(const char *table,
                                              const std::string &prefix,
                                              std::string &error,
                                              const std::string &name) const {
  const auto bindings = bindings_.find(table);
  const json *binding =
      bindings == bindings_.end() ? nullptr : lookUp(bindings->second, prefix);
  if (!binding || member(*binding, "labels").empty()) {
    error = "no " + name + " binding for " + prefix;
    return std::nullopt;
  }
  const json label = binding->at("labels").at(0).at("label");
  if (label == impNull) {
    error = prefix + ": this router is its egress (" + name +
            " binding: implicit null)";
    return std::nullopt;
  }
  const json *route = lookUp(routes_, label);
  const json *set =
      route ? lookUp(viaSets_, route->value("viaSet", json())) : nullptr;
  const json *via =
      set && set->value("type", "") == "mpls" && !member(*set, "vias").empty()
          ? lookUp(vias_, set->at("vias").at(0))
          : nullptr;
  if (!via || !via->contains("interface") || !via->contains("nexthop")) {
    error = prefix + ": no label route for its " + name + " binding " +
            label.dump();
    return std::nullopt;
  }
  StatePath path{{},
                 via->at("interface"),
                 via->at("nexthop"),
                 name + " binding " + label.dump()};
  if (via->value("action", "") == "swap") {
    path.labels = via->value("labels", std::vector<unsigned>{});
  }
  return path;
}

// A hand-written state may hold values of the wrong type where the walk
// goes: the FEC gets no path, with the reason.
std::optional<StatePath> StatePaths::path(const std::string &fec,
                                          std::string &error) const {
  try {
    return pathOf(fec, error);
  } catch (const json::exception &e) {
    error = fec + ": the state's entries for it are malformed (" +
            std::string(e.what()) + ")";
    return std::nullopt;
  }
}

std::optional<StatePath> StatePaths::pathOf(const std::string &fec,
                                            std::string &error) const {
  const std::size_t equals = fec.find('=');
  const std::string kind = fec.substr(0, equals);
  const std::string prefix =
      normal(fec.substr(equals + 1, fec.find(',') - equals - 1));
  if (kind == "ldp") {
    return switched("ldp", prefix, error, "LDP");
  }
  if (kind == "sr") {
    if (auto path = pushed(prefix)) {
      return path;
    }
    const bool ipv6 = prefix.find(':') != std::string::npos;
    return switched(ipv6 ? "isisV6" : "isisV4", prefix, error, "IS-IS");
  }
  error = fec + ": only LDP and segment-routing FECs have labels from a "
                "control plane (give --label)";
  return std::nullopt;
}

bool wantsStatePath(const Lsp &lsp) {
  return lsp.target.labels.empty() &&
         (lsp.fec.starts_with("ldp=") || lsp.fec.starts_with("sr="));
}

bool takeStatePath(Lsp &lsp, const StatePath &path, std::string &error) {
  const auto nexthop = Wirx::IpGenAddr::fromString(path.nexthop);
  if (!nexthop) {
    error = lsp.fec + ": no next hop";
    return false;
  }
  Session::Target &target = lsp.target;
  for (const unsigned label : path.labels) {
    target.labels.push_back(Wirx::MplsLabel(label));
    lsp.ttls.push_back(255);
  }
  if (!target.intf) {
    target.intf = Wirx::IntfId(path.interface);
  }
  if (!target.nexthop && !target.nexthopEthAddr) {
    target.nexthop = *nexthop;
  }
  return true;
}

} // namespace LspPingTool
