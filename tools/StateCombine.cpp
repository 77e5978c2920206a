#include "tools/StateCombine.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "Wirx/IpGenPrefix.h"

namespace LspPingTool {

namespace {

using nlohmann::json;
using Identity = std::function<json(const json &)>;

// A FEC as written, "10.0.0.9/32" or "10.0.0.9", in one form.
json fecIdentity(const json &entry) {
  const std::string text = entry.at("fec").get<std::string>();
  if (text.find('/') == std::string::npos) {
    return text + (text.find(':') == std::string::npos ? "/32" : "/128");
  }
  const auto prefix = Wirx::IpGenPrefix::fromString(text);
  return prefix ? prefix->stringValue() : text;
}

Identity keyIdentity(const char *key) {
  return [key](const json &entry) { return entry.at(key); };
}

json rsvpIdentity(const json &entry) {
  return json::array({entry.at("tunnelDst"), entry.at("tunnelId"),
                      entry.at("extendedTunnelId"), entry.at("lspId")});
}

// Adds to the list `into` the entries of `from` whose identity it lacks.
void combineList(json &into, json &from, const Identity &identity) {
  if (!into.is_array()) {
    into = json::array();
  }
  std::set<json> known;
  for (const json &entry : into) {
    known.insert(identity(entry));
  }
  for (json &entry : from) {
    if (known.insert(identity(entry)).second) {
      into.push_back(std::move(entry));
    }
  }
}

// The entries of a keyed table by key, looked up once per route rather
// than searched for.
using Keyed = std::map<json, const json *>;

Keyed keyed(const json &lfib, const char *table) {
  Keyed entries;
  if (lfib.contains(table)) {
    for (const json &entry : lfib.at(table)) {
      entries.emplace(entry.at("key"), &entry);
    }
  }
  return entries;
}

const json *find(const Keyed &entries, const json &key) {
  const auto found = entries.find(key);
  return found == entries.end() ? nullptr : found->second;
}

std::uint64_t nextKey(const json &lfib, const char *table) {
  std::uint64_t last = 0;
  if (lfib.contains(table)) {
    for (const json &entry : lfib.at(table)) {
      last = std::max(last, entry.at("key").get<std::uint64_t>());
    }
  }
  return last + 1;
}

// The label routes of `from` for labels `into` has no route for, each
// with copies of its via set and vias under keys of `into`'s own.
void combineLfib(json &into, const json &from) {
  if (!into.is_object()) {
    into = json::object();
  }
  for (const char *table : {"routes", "viaSets", "vias", "extFecVias"}) {
    if (!into.contains(table)) {
      into[table] = json::array();
    }
  }
  std::set<json> labels;
  for (const json &route : into["routes"]) {
    labels.insert(route.at("label"));
  }
  std::uint64_t setKey = nextKey(into, "viaSets");
  std::uint64_t viaKey = nextKey(into, "vias");
  std::uint64_t extFecViaKey = nextKey(into, "extFecVias");
  const Keyed sets = keyed(from, "viaSets");
  const Keyed vias = keyed(from, "vias");
  const Keyed extFecVias = keyed(from, "extFecVias");
  const json noRoutes = json::array();
  const auto routes = from.find("routes");
  for (const json &route : routes == from.end() ? noRoutes : *routes) {
    const json *set = find(sets, route.at("viaSet"));
    if (!labels.insert(route.at("label")).second || set == nullptr) {
      continue;
    }
    const bool extFec = set->at("type") == "extFec";
    const char *viaTable = extFec ? "extFecVias" : "vias";
    const Keyed &viasOfTable = extFec ? extFecVias : vias;
    std::uint64_t &key = extFec ? extFecViaKey : viaKey;
    json newSet = *set;
    newSet["key"] = setKey++;
    newSet["vias"] = json::array();
    for (const json &old : set->at("vias")) {
      if (const json *via = find(viasOfTable, old)) {
        json copy = *via;
        copy["key"] = key++;
        newSet["vias"].push_back(copy["key"]);
        into[viaTable].push_back(std::move(copy));
      }
    }
    json newRoute = route;
    newRoute["viaSet"] = newSet["key"];
    into["viaSets"].push_back(std::move(newSet));
    into["routes"].push_back(std::move(newRoute));
  }
}

} // namespace

json combineStates(json winner, json other) {
  const std::map<std::string, Identity> lists = {
      {"interfaces", keyIdentity("name")},
      {"tiLfaTunnels", keyIdentity("id")},
      {"hardware", keyIdentity("label")},
      {"rsvp", rsvpIdentity},
      {"fib", fecIdentity},
  };
  for (auto &&[key, value] : other.items()) {
    json &mine = winner[key];
    // Most often a table is the source's alone: taken whole.
    if (mine.is_null()) {
      mine = std::move(value);
    } else if (key == "lfib") {
      combineLfib(mine, value);
    } else if (key == "bindings") {
      for (auto &&[table, entries] : value.items()) {
        combineList(mine[table], entries, fecIdentity);
      }
    } else if (lists.count(key)) {
      combineList(mine, value, lists.at(key));
    } else if (mine.is_object()) {
      for (const auto &[field, setting] : value.items()) {
        mine.emplace(field, setting);
      }
    }
  }
  return winner;
}

} // namespace LspPingTool
