#include "tools/FrrState.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <map>
#include <optional>
#include <regex>
#include <sstream>
#include <utility>
#include <vector>

#include "Wirx/IpGenPrefix.h"
#include "tools/JsonPlace.h"
#include "tools/LfibDocument.h"
#include "tools/StateSourceError.h"

namespace LspPingTool {

namespace {

using nlohmann::json;
using Pointer = json::json_pointer;

constexpr unsigned impNull = 3;
constexpr unsigned ipv4ExplicitNull = 0;
constexpr unsigned ipv6ExplicitNull = 2;
constexpr unsigned maxLabel = 1048575;
// What an IP forwarding entry holds at most.
constexpr std::size_t maxFibVias = 512;
// FRR's segment-routing global block when the configuration sets none.
constexpr unsigned defaultSrgbBase = 16000;

std::optional<unsigned> decimal(std::string_view text) {
  unsigned value = 0;
  const auto [end, ec] =
      std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size()) {
    return std::nullopt;
  }
  return value;
}

bool isPrefix(const std::string &text) {
  return Wirx::IpGenPrefix::fromString(text).has_value();
}

// One command's output, parsed: where a value is wrong, the message names
// the command and the value's JSON pointer.
class Output {
public:
  Output(std::string_view command, const std::string &text)
      : command_(command) {
    // A command not asked (its protocol does not run) left nothing.
    if (text.find_first_not_of(" \t\r\n") == std::string::npos) {
      document_ = json::object();
      return;
    }
    try {
      document_ = json::parse(text);
    } catch (const json::exception &e) {
      const std::string what = e.what();
      const std::size_t bracket = what.find("] ");
      fail(document_,
           bracket == std::string::npos ? what : what.substr(bracket + 2));
    }
  }

  [[noreturn]] void fail(const json &at, const std::string &what) const {
    const Pointer place = jsonPlace(document_, at);
    throw StateSourceError(std::string(command_) + ": " +
                           (place.empty() ? "" : place.to_string() + ": ") +
                           what);
  }

  const json &document() const { return document_; }

private:
  std::string_view command_;
  json document_;
};

// A value of an output and where it is.
class Value {
public:
  Value(const Output &output, const json &value)
      : output_(&output), value_(&value) {}
  explicit Value(const Output &output) : Value(output, output.document()) {}

  [[noreturn]] void fail(const std::string &what) const {
    output_->fail(*value_, what);
  }

  const nlohmann::json &raw() const { return *value_; }

  // The members of an object; keys FRR adds in later versions are read
  // past.
  std::vector<std::pair<std::string, Value>> members() const {
    expect(value_->is_object(), "an object");
    std::vector<std::pair<std::string, Value>> all;
    for (const auto &item : value_->items()) {
      all.emplace_back(item.key(), child(item.key()));
    }
    return all;
  }

  std::vector<Value> elements() const {
    expect(value_->is_array(), "an array");
    std::vector<Value> all;
    for (std::size_t i = 0; i < value_->size(); ++i) {
      all.emplace_back(*output_, (*value_)[i]);
    }
    return all;
  }

  std::optional<Value> find(const std::string &key) const {
    expect(value_->is_object(), "an object");
    if (!value_->contains(key)) {
      return std::nullopt;
    }
    return child(key);
  }

  Value operator[](const std::string &key) const {
    const auto found = find(key);
    if (!found) {
      fail("missing key '" + key + "'");
    }
    return *found;
  }

  std::string text() const {
    expect(value_->is_string(), "a string");
    return value_->get<std::string>();
  }

  unsigned number(unsigned max) const {
    expect(value_->is_number_unsigned() && value_->get<std::uint64_t>() <= max,
           "a number from 0 to " + std::to_string(max));
    return unsigned(value_->get<std::uint64_t>());
  }

  // FRR writes some flags as true or false, others as 1 or 0.
  bool flag() const {
    if (value_->is_boolean()) {
      return value_->get<bool>();
    }
    return number(1) == 1;
  }

  bool flagOr(const std::string &key, bool absent) const {
    const auto found = find(key);
    return found ? found->flag() : absent;
  }

private:
  void expect(bool holds, const std::string &what) const {
    if (!holds) {
      fail("expected " + what + ", got " + value_->dump());
    }
  }

  Value child(const std::string &key) const {
    return Value(*output_, value_->at(key));
  }

  const Output *output_;
  const nlohmann::json *value_;
};

// A label as LDP shows it: a number, imp-null, exp-null, or - for none.
std::optional<unsigned> ldpLabel(const Value &value, bool ipv6) {
  const std::string text = value.text();
  if (text == "-" || text.empty()) {
    return std::nullopt;
  }
  if (text == "imp-null") {
    return impNull;
  }
  if (text == "exp-null") {
    return ipv6 ? ipv6ExplicitNull : ipv4ExplicitNull;
  }
  const auto label = decimal(text);
  if (!label || *label > maxLabel) {
    value.fail("'" + text +
               "' is not a label (a number, imp-null, exp-null "
               "or -)");
  }
  return label;
}

std::vector<unsigned> labelStack(const Value &value) {
  std::vector<unsigned> labels;
  for (const Value &label : value.elements()) {
    labels.push_back(label.number(maxLabel));
  }
  return labels;
}

// A next hop of a selected route.
struct NextHop {
  std::string address;
  std::string interface;
  std::vector<unsigned> labels;
};

// The active next hops of each prefix's selected route.
std::map<std::string, std::vector<NextHop>> selectedRoutes(const Value &all) {
  std::map<std::string, std::vector<NextHop>> routes;
  for (const auto &[prefix, entries] : all.members()) {
    for (const Value &entry : entries.elements()) {
      if (!entry.flagOr("selected", false)) {
        continue;
      }
      for (const Value &hop : entry["nexthops"].elements()) {
        const auto address = hop.find("ip");
        const auto interface = hop.find("interfaceName");
        if (!hop.flagOr("active", false) || !address || !interface) {
          continue;
        }
        NextHop next{address->text(), interface->text(), {}};
        if (const auto labels = hop.find("labels")) {
          next.labels = labelStack(*labels);
        }
        routes[prefix].push_back(std::move(next));
      }
    }
  }
  return routes;
}

// The interfaces FRR knows: their MTUs, and which has a subnet holding a
// next hop (for zebra's label entries that do not name theirs).
class Interfaces {
public:
  explicit Interfaces(const Value &all) {
    for (const auto &[name, intf] : all.members()) {
      const auto mtu = intf.find("mtu");
      // A loopback's MTU, 65536, is none an Ethernet frame has.
      if (mtu && mtu->raw().is_number_unsigned() &&
          mtu->raw().get<std::uint64_t>() <= 0xFFFF) {
        list_.push_back({{"name", name}, {"mtu", mtu->number(0xFFFF)}});
      }
      if (const auto addresses = intf.find("ipAddresses")) {
        for (const Value &address : addresses->elements()) {
          if (const auto prefix =
                  Wirx::IpGenPrefix::fromString(address["address"].text())) {
            subnets_.emplace_back(*prefix, name);
          }
        }
      }
    }
  }

  const json &list() const { return list_; }

  std::string holding(const std::string &address) const {
    const auto addr = Wirx::IpGenAddr::fromString(address);
    for (const auto &[subnet, name] : subnets_) {
      if (addr && addr->af() == subnet.af() &&
          Wirx::IpGenPrefix(*addr, subnet.length()).masked() ==
              subnet.masked()) {
        return name;
      }
    }
    return "";
  }

private:
  json list_ = json::array();
  std::vector<std::pair<Wirx::IpGenPrefix, std::string>> subnets_;
};

// The route sources zebra names in its label table.
json zebraSource(const std::string &type) {
  static const std::pair<std::string_view, std::string_view> names[] = {
      {"LDP", "ldp"}, {"SR (IS-IS)", "isis"}, {"Static", "static"}};
  for (const auto &[frr, ours] : names) {
    if (type == frr) {
      return ours;
    }
  }
  return 0;
}

// zebra's label table, where the kernel has MPLS routing (on a kernel
// without, zebra drops every label entry and the table is empty).
void zebraLfib(const Value &table, const Interfaces &interfaces,
               LfibDocument &lfib, json &hardware) {
  std::vector<std::pair<unsigned, Value>> entries;
  for (const auto &[key, entry] : table.members()) {
    entries.emplace_back(entry["inLabel"].number(maxLabel), entry);
  }
  std::sort(entries.begin(), entries.end(),
            [](const auto &a, const auto &b) { return a.first < b.first; });
  for (const auto &[label, entry] : entries) {
    std::vector<json> vias;
    json source = 0;
    for (const Value &hop : entry["nexthops"].elements()) {
      if (vias.empty()) {
        source = zebraSource(hop["type"].text());
      }
      const std::string nexthop = hop["nexthop"].text();
      const auto named = hop.find("interface");
      const std::string interface =
          named ? named->text() : interfaces.holding(nexthop);
      if (interface.empty()) {
        continue;
      }
      const auto stack = hop.find("outLabelStack");
      vias.push_back(labelVia(
          interface, nexthop,
          stack ? labelStack(*stack)
                : std::vector<unsigned>{hop["outLabel"].number(maxLabel)}));
    }
    hardware.push_back(
        {{"label", label},
         {"state",
          entry.flagOr("installed", false) ? "programmed" : "pending"}});
    lfib.add(label, source, std::move(vias));
  }
}

// A FEC's bindings as LDP shows them.
struct LdpFec {
  std::string prefix;
  std::optional<unsigned> local;
  // The in-use remote labels, by neighbour.
  std::vector<std::pair<std::string, unsigned>> remote;
};

std::vector<LdpFec> ldpFecs(const Value &document) {
  std::vector<LdpFec> fecs;
  std::map<std::string, std::size_t> index;
  const auto bindings = document.find("bindings");
  if (!bindings) {
    return fecs;
  }
  for (const Value &binding : bindings->elements()) {
    const std::string prefix = binding["prefix"].text();
    if (!isPrefix(prefix)) {
      binding["prefix"].fail("'" + prefix + "' is not a prefix");
    }
    const bool ipv6 = binding["addressFamily"].text() == "ipv6";
    const auto [at, added] = index.insert({prefix, fecs.size()});
    if (added) {
      fecs.push_back({prefix, ldpLabel(binding["localLabel"], ipv6), {}});
    }
    const auto remote = ldpLabel(binding["remoteLabel"], ipv6);
    if (remote && binding["inUse"].flag()) {
      fecs[at->second].remote.emplace_back(binding["neighborId"].text(),
                                           *remote);
    }
  }
  return fecs;
}

// LDP's adjacencies per interface: (neighbour's LSR id, hello source).
using Adjacencies =
    std::map<std::string, std::vector<std::pair<std::string, std::string>>>;

Adjacencies adjacencies(const Value &discovery) {
  Adjacencies all;
  const auto interfaces = discovery.find("interfaces");
  if (!interfaces) {
    return all;
  }
  for (const auto &[name, intf] : interfaces->members()) {
    for (const Value &adjacency : intf["adjacencies"].elements()) {
      all[name].emplace_back(adjacency["lsrId"].text(),
                             adjacency["sourceAddress"].text());
    }
  }
  return all;
}

// Whether a next hop leads to the LDP neighbour: the neighbour's hello
// came from the next hop's address on its interface, or the neighbour is
// the only one on that interface.
bool leadsTo(const NextHop &hop, const std::string &neighbour,
             const Adjacencies &adjacencies) {
  const auto on = adjacencies.find(hop.interface);
  if (on == adjacencies.end()) {
    return false;
  }
  bool onlyNeighbour = true;
  for (const auto &[lsr, source] : on->second) {
    if (lsr == neighbour && source == hop.address) {
      return true;
    }
    onlyNeighbour = onlyNeighbour && lsr == neighbour;
  }
  return onlyNeighbour;
}

// LDP's bindings as a label switch uses them: each FEC's local label in,
// swapped to (or popped for) the in-use remote label of the neighbour
// behind each of the IGP's next hops.
void ldpLfib(const std::vector<LdpFec> &fecs,
             const std::map<std::string, std::vector<NextHop>> &routes,
             const Adjacencies &adjacencies, LfibDocument &lfib) {
  for (const LdpFec &fec : fecs) {
    const auto route = routes.find(fec.prefix);
    if (!fec.local || *fec.local <= impNull || route == routes.end()) {
      continue;
    }
    std::vector<json> vias;
    for (const auto &[neighbour, label] : fec.remote) {
      for (const NextHop &hop : route->second) {
        if (leadsTo(hop, neighbour, adjacencies)) {
          vias.push_back(labelVia(hop.interface, hop.address, {label}));
        }
      }
    }
    lfib.add(*fec.local, "ldp", std::move(vias));
  }
}

json ldpBindings(const std::vector<LdpFec> &fecs) {
  json table = json::array();
  for (const LdpFec &fec : fecs) {
    if (fec.local) {
      table.push_back(
          {{"fec", fec.prefix}, {"labels", {{{"label", *fec.local}}}}});
    }
  }
  return table;
}

// IP forwarding entries: the selected routes that leave by a next hop,
// with the labels they push.
void fibEntries(const std::map<std::string, std::vector<NextHop>> &routes,
                json &fib) {
  for (const auto &[prefix, hops] : routes) {
    json vias = json::array();
    for (const NextHop &hop : hops) {
      json via = {{"interface", hop.interface}, {"nexthop", hop.address}};
      const bool pushes =
          !hop.labels.empty() && hop.labels != std::vector<unsigned>{impNull};
      via["action"] = pushes ? "push" : "none";
      if (pushes) {
        via["labels"] = hop.labels;
      }
      if (vias.size() < maxFibVias) {
        vias.push_back(std::move(via));
      }
    }
    fib.push_back({{"fec", prefix}, {"vias", std::move(vias)}});
  }
}

// A segment-routing binding of the IS-IS tables.
struct SrBinding {
  std::string prefix;
  unsigned label;
};

// An IS-IS binding table: a prefix's first label.
using SrTable = std::map<std::string, unsigned>;

json bindingTable(const SrTable &table) {
  json list = json::array();
  for (const auto &[prefix, label] : table) {
    list.push_back({{"fec", prefix}, {"labels", {{{"label", label}}}}});
  }
  return list;
}

// The IPv4 and IPv6 prefix segments this router itself announces, from
// its configuration: an egress pops, or expects an explicit null, or,
// without penultimate-hop popping, its own label of the SRGB.
std::vector<SrBinding> ownPrefixSegments(const std::string &config) {
  static const std::regex block(
      R"(^\s*segment-routing global-block (\d+) \d+)");
  static const std::regex segment(
      R"(^\s*segment-routing prefix (\S+) (index|absolute) (\d+)(.*)$)");
  unsigned base = defaultSrgbBase;
  std::vector<std::tuple<std::string, bool, unsigned, std::string>> segments;
  std::istringstream lines(config);
  for (std::string line; std::getline(lines, line);) {
    std::smatch match;
    if (std::regex_search(line, match, block)) {
      base = decimal(match[1].str()).value_or(defaultSrgbBase);
    } else if (std::regex_search(line, match, segment)) {
      segments.emplace_back(match[1].str(), match[2].str() == "index",
                            decimal(match[3].str()).value_or(0),
                            match[4].str());
    }
  }
  std::vector<SrBinding> bindings;
  for (const auto &[prefix, isIndex, value, flags] : segments) {
    const bool ipv6 = prefix.find(':') != std::string::npos;
    unsigned label = impNull;
    if (flags.find("explicit-null") != std::string::npos) {
      label = ipv6 ? ipv6ExplicitNull : ipv4ExplicitNull;
    } else if (flags.find("no-php-flag") != std::string::npos) {
      label = isIndex ? base + value : value;
    }
    bindings.push_back({prefix, label});
  }
  return bindings;
}

// IS-IS's prefix segments as `show isis route prefix-sid` tables them, one
// row per next hop, under a title naming the family:
//  Prefix        Metric  Interface  Nexthop    SID  Label Op.
//  10.0.0.3/32   30      eth1       10.1.12.2  3    Swap(16003, 16003)
// The label operation gives the incoming label and what is done to it.
void isisSegments(const std::string &table, LfibDocument &lfib, SrTable &isisV4,
                  SrTable &isisV6) {
  static const std::regex operation(R"((Pop|Swap)\((\d+)(?:, (\w+))?\))");
  std::map<unsigned, std::vector<json>> vias;
  std::vector<unsigned> order;
  bool ipv6 = false;
  std::string prefix;
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    if (line.find("routing table") != std::string::npos) {
      ipv6 = line.find("IPv6") != std::string::npos;
      prefix.clear();
      continue;
    }
    std::istringstream words(line);
    std::vector<std::string> columns{std::istream_iterator<std::string>(words),
                                     {}};
    std::size_t first = 0;
    if (!columns.empty() && isPrefix(columns[0])) {
      prefix = columns[0];
      first = 2;
    }
    std::smatch match;
    if (prefix.empty() || columns.size() < first + 2 ||
        !std::regex_search(line, match, operation)) {
      continue;
    }
    const unsigned in = decimal(match[2].str()).value_or(0);
    std::vector<unsigned> out;
    if (match[1] == "Swap") {
      const auto label = decimal(match[3].str());
      out.push_back(label  ? *label
                    : ipv6 ? ipv6ExplicitNull
                           : ipv4ExplicitNull);
    }
    if (!vias.count(in)) {
      order.push_back(in);
      (ipv6 ? isisV6 : isisV4).emplace(prefix, in);
    }
    vias[in].push_back(
        labelVia(columns[first], columns[first + 1], std::move(out)));
  }
  for (const unsigned in : order) {
    lfib.add(in, "isis", std::move(vias[in]));
  }
}

} // namespace

bool frrConfigHas(const std::string &runningConfig, FrrCommand::Needs needs) {
  bool ldp = false;
  bool isis = false;
  bool segmentRouting = false;
  std::istringstream lines(runningConfig);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t end = line.find_last_not_of(" \t\r");
    line.resize(end == std::string::npos ? 0 : end + 1);
    ldp = ldp || line == "mpls ldp";
    isis = isis || line.rfind("router isis ", 0) == 0;
    segmentRouting = segmentRouting || line == " segment-routing on";
  }
  switch (needs) {
  case FrrCommand::Needs::ldp:
    return ldp;
  case FrrCommand::Needs::isisSr:
    return isis && segmentRouting;
  case FrrCommand::Needs::nothing:
    break;
  }
  return true;
}

json frrState(const FrrOutputs &outputs) {
  const auto output = [&](std::string FrrOutputs::*member) {
    for (const FrrCommand &command : frrCommands) {
      if (command.output == member) {
        return Output(command.command, outputs.*member);
      }
    }
    return Output("", outputs.*member);
  };
  const Output interfaceOutput = output(&FrrOutputs::interfaces);
  const Interfaces interfaces{Value(interfaceOutput)};
  const Output routeOutput = output(&FrrOutputs::routes);
  const Output route6Output = output(&FrrOutputs::routes6);
  auto routes = selectedRoutes(Value(routeOutput));
  routes.merge(selectedRoutes(Value(route6Output)));
  const Output bindingOutput = output(&FrrOutputs::ldpBindings);
  const std::vector<LdpFec> fecs = ldpFecs(Value(bindingOutput));
  const Output discoveryOutput = output(&FrrOutputs::ldpDiscovery);
  const Output mplsOutput = output(&FrrOutputs::mplsTable);

  json state = {{"interfaces", interfaces.list()},
                {"bindings", {{"ldp", ldpBindings(fecs)}}}};
  LfibDocument lfib;
  json hardware = json::array();
  zebraLfib(Value(mplsOutput), interfaces, lfib, hardware);
  const bool zebraHasTable = !lfib.empty();
  if (!zebraHasTable) {
    ldpLfib(fecs, routes, adjacencies(Value(discoveryOutput)), lfib);
  }
  if (frrConfigHas(outputs.runningConfig, FrrCommand::Needs::isisSr)) {
    SrTable isisV4;
    SrTable isisV6;
    // zebra's table, when it has one, holds the segments' routes already.
    LfibDocument isisLfib;
    isisSegments(outputs.isisPrefixSids, zebraHasTable ? isisLfib : lfib,
                 isisV4, isisV6);
    for (const SrBinding &own : ownPrefixSegments(outputs.runningConfig)) {
      (own.prefix.find(':') != std::string::npos ? isisV6 : isisV4)
          .emplace(own.prefix, own.label);
    }
    state["bindings"]["isisV4"] = bindingTable(isisV4);
    state["bindings"]["isisV6"] = bindingTable(isisV6);
  }
  state["lfib"] = std::move(lfib).document();
  if (zebraHasTable) {
    state["hardware"] = std::move(hardware);
  }
  json fib = json::array();
  fibEntries(routes, fib);
  state["fib"] = std::move(fib);
  return state;
}

} // namespace LspPingTool
