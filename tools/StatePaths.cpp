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

const json *find(const json &table, const char *key, const json &value) {
  for (const json &entry : table) {
    if (entry.value(key, json()) == value) {
      return &entry;
    }
  }
  return nullptr;
}

const json *fecEntry(const json &table, const std::string &prefix) {
  for (const json &entry : table) {
    if (normal(entry.value("fec", "")) == prefix) {
      return &entry;
    }
  }
  return nullptr;
}

// The labels an IP forwarding entry pushes: segment routing's way in.
std::optional<StatePath> pushed(const json &state, const std::string &prefix) {
  const json *entry = fecEntry(member(state, "fib"), prefix);
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
std::optional<StatePath> switched(const json &state, const char *table,
                                  const std::string &prefix, std::string &error,
                                  const std::string &name) {
  const json *binding =
      fecEntry(member(member(state, "bindings"), table), prefix);
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
  const json &lfib = member(state, "lfib");
  const json *route = find(member(lfib, "routes"), "label", label);
  const json *set =
      route ? find(member(lfib, "viaSets"), "key", route->at("viaSet"))
            : nullptr;
  const json *via =
      set && set->value("type", "") == "mpls" && !set->at("vias").empty()
          ? find(member(lfib, "vias"), "key", set->at("vias").at(0))
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

} // namespace

std::optional<StatePath> statePath(const json &state, const std::string &fec,
                                   std::string &error) {
  const std::size_t equals = fec.find('=');
  const std::string kind = fec.substr(0, equals);
  const std::string prefix =
      normal(fec.substr(equals + 1, fec.find(',') - equals - 1));
  if (kind == "ldp") {
    return switched(state, "ldp", prefix, error, "LDP");
  }
  if (kind == "sr") {
    if (auto path = pushed(state, prefix)) {
      return path;
    }
    const bool ipv6 = prefix.find(':') != std::string::npos;
    return switched(state, ipv6 ? "isisV6" : "isisV4", prefix, error, "IS-IS");
  }
  error = fec + ": only LDP and segment-routing FECs have labels from a "
                "control plane (give --label)";
  return std::nullopt;
}

} // namespace LspPingTool
