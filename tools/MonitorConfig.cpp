#include "tools/MonitorConfig.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <functional>
#include <set>

namespace LspPingTool {

namespace {

using nlohmann::json;

// What an entry may set, and the file's top level for every entry.
constexpr std::array<std::string_view, 9> settings = {
    "mode",    "interval",  "timeout", "window",     "loss-threshold",
    "max-ttl", "interface", "nexthop", "nexthop-mac"};

// Why a configuration is refused: the message, without the file's name.
struct Refusal {
  std::string what;
};

[[noreturn]] void refuse(const json::json_pointer &at,
                         const std::string &what) {
  throw Refusal{(at.empty() ? "" : at.to_string() + ": ") + what};
}

bool isSetting(std::string_view key) {
  return std::find(settings.begin(), settings.end(), key) != settings.end();
}

void expectKeys(const json &object, const json::json_pointer &at, bool entry) {
  if (!object.is_object()) {
    refuse(at, "expected an object");
  }
  for (const auto &item : object.items()) {
    const std::string &key = item.key();
    const bool known = isSetting(key) ||
                       (entry ? key == "name" || key == "fec" : key == "lsps");
    if (!known) {
      refuse(at / key, entry ? "unknown key (expected name, fec, mode, "
                               "interval, timeout, window, loss-threshold, "
                               "max-ttl, interface, nexthop or nexthop-mac)"
                             : "unknown key (expected lsps, mode, interval, "
                               "timeout, window, loss-threshold, max-ttl, "
                               "interface, nexthop or nexthop-mac)");
    }
  }
}

// A number from above `low` (or from it, when `inclusive`) to `high`.
double numberIn(const json &value, const json::json_pointer &at, double low,
                bool inclusive, double high, const std::string &what) {
  if (!value.is_number()) {
    refuse(at, "expected " + what);
  }
  const double number = value.get<double>();
  if (!(inclusive ? number >= low : number > low) || !(number <= high)) {
    refuse(at, value.dump() + " is not " + what);
  }
  return number;
}

std::string textOf(const json &value, const json::json_pointer &at,
                   const std::string &what) {
  if (!value.is_string() || value.get<std::string>().empty()) {
    refuse(at, "expected " + what);
  }
  return value.get<std::string>();
}

// Names go into metric labels and log lines: letters, digits and a few
// marks keep both readable.
bool goodName(const std::string &name) {
  return name.size() <= 64 && std::all_of(name.begin(), name.end(), [](char c) {
           return std::isalnum(static_cast<unsigned char>(c)) ||
                  std::strchr("._:/-", c) != nullptr;
         });
}

MonitoredLsp entryOf(const json &entry, const json &defaults,
                     const json::json_pointer &at) {
  expectKeys(entry, at, true);
  json merged = defaults;
  for (const auto &item : entry.items()) {
    merged[item.key()] = item.value();
  }
  const auto place = [&](const char *key) {
    return entry.contains(key) ? at / key
                               : json::json_pointer("/" + std::string(key));
  };
  MonitoredLsp lsp;
  if (!entry.contains("name")) {
    refuse(at, "missing key 'name'");
  }
  lsp.name = textOf(entry["name"], at / "name", "a name");
  if (!goodName(lsp.name)) {
    refuse(at / "name", "'" + lsp.name +
                            "' is not a name of up to 64 letters, digits and "
                            "._:/-");
  }
  if (!entry.contains("fec")) {
    refuse(at, "missing key 'fec'");
  }
  if (merged.contains("mode")) {
    const std::string mode = textOf(merged["mode"], place("mode"), "a mode");
    if (mode != "ping" && mode != "trace") {
      refuse(place("mode"), "'" + mode + "' is not ping or trace");
    }
    lsp.trace = mode == "trace";
  }
  if (merged.contains("interval")) {
    lsp.interval = numberIn(merged["interval"], place("interval"), 0, false,
                            86400, "a number of seconds above 0");
  }
  if (merged.contains("timeout")) {
    lsp.timeout = numberIn(merged["timeout"], place("timeout"), 0, false, 86400,
                           "a number of seconds above 0");
  }
  if (merged.contains("window")) {
    lsp.window = Orv::U32(numberIn(merged["window"], place("window"), 1, true,
                                   1000, "a number of probes, 1 to 1000"));
    if (!merged["window"].is_number_integer()) {
      refuse(place("window"), "expected a whole number of probes");
    }
  }
  if (merged.contains("loss-threshold")) {
    lsp.lossThreshold =
        numberIn(merged["loss-threshold"], place("loss-threshold"), 0, true,
                 100, "a percentage, 0 to 100");
  }
  if (merged.contains("max-ttl")) {
    if (!merged["max-ttl"].is_number_integer()) {
      refuse(place("max-ttl"), "expected a TTL, 1 to 255");
    }
    lsp.maxTtl = Orv::U8(numberIn(merged["max-ttl"], place("max-ttl"), 1, true,
                                  255, "a TTL, 1 to 255"));
  }
  LspWords words;
  const std::pair<const char *, std::string LspWords::*> paths[] = {
      {"interface", &LspWords::intf},
      {"nexthop", &LspWords::nexthop},
      {"nexthop-mac", &LspWords::nexthopMac}};
  for (const auto &[key, member] : paths) {
    if (merged.contains(key)) {
      words.*member = textOf(merged[key], place(key), "a string");
    }
  }
  std::string error;
  auto read = lspOfLine(textOf(entry["fec"], at / "fec", "a FEC's words"),
                        words, error);
  if (!read) {
    refuse(at / "fec", error);
  }
  if (lsp.trace && read->ttlsSet) {
    refuse(at / "fec", "--label: a trace sets the labels' TTL itself, hop by "
                       "hop");
  }
  lsp.lsp = std::move(*read);
  lsp.lsp.name = lsp.name;
  lsp.definitionHash = std::hash<std::string>()(merged.dump());
  return lsp;
}

std::vector<MonitoredLsp> configOf(const json &document) {
  const json::json_pointer top;
  expectKeys(document, top, false);
  if (!document.contains("lsps")) {
    refuse(top, "missing key 'lsps'");
  }
  const json &entries = document["lsps"];
  if (!entries.is_array()) {
    refuse(top / "lsps", "expected an array");
  }
  json defaults = json::object();
  for (const auto &item : document.items()) {
    if (item.key() != "lsps") {
      defaults[item.key()] = item.value();
    }
  }
  std::vector<MonitoredLsp> lsps;
  std::set<std::string> names;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const json::json_pointer at = top / "lsps" / i;
    MonitoredLsp lsp = entryOf(entries[i], defaults, at);
    if (!names.insert(lsp.name).second) {
      refuse(at / "name", "'" + lsp.name + "' names another LSP already");
    }
    lsps.push_back(std::move(lsp));
  }
  return lsps;
}

} // namespace

std::optional<std::vector<MonitoredLsp>>
monitorConfigOf(std::string_view text, const std::string &fileName,
                std::string &error) {
  json document;
  try {
    document = json::parse(text);
  } catch (const json::parse_error &e) {
    std::size_t line = 1, column = 1;
    for (std::size_t i = 0; i + 1 < e.byte && i < text.size(); ++i) {
      if (text[i] == '\n') {
        ++line;
        column = 1;
      } else {
        ++column;
      }
    }
    error = fileName + ":" + std::to_string(line) + ":" +
            std::to_string(column) + ": not JSON";
    return std::nullopt;
  }
  try {
    return configOf(document);
  } catch (const Refusal &refusal) {
    error = fileName + ": " + refusal.what;
  }
  return std::nullopt;
}

std::optional<std::vector<MonitoredLsp>>
loadMonitorConfig(const std::string &path, std::string &error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = path + ": " + std::strerror(errno);
    return std::nullopt;
  }
  const std::string text{std::istreambuf_iterator<char>(in), {}};
  if (in.bad()) {
    error = path + ": " + std::strerror(errno);
    return std::nullopt;
  }
  return monitorConfigOf(text, path, error);
}

} // namespace LspPingTool
