#include "tools/StateFile.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

#include "Mesk/ViaIndex.h"
#include "Mpls/LfibLabelAction.h"
#include "Mpls/LfibViaIndexRange.h"
#include "Wirx/IpGenPrefix.h"
#include "tools/JsonPlace.h"

namespace LspPingTool {

namespace {

using nlohmann::json;
using Pointer = json::json_pointer;
using Orv::U16;
using Orv::U32;
using Orv::U8;

// What a value is, for "expected X, got Y".
std::string typeName(const json &value) {
  switch (value.type()) {
  case json::value_t::object:
    return "an object";
  case json::value_t::array:
    return "an array";
  case json::value_t::string:
    return "a string";
  case json::value_t::boolean:
    return "a boolean";
  case json::value_t::null:
    return "null";
  default:
    return "a number";
  }
}

std::string quotedList(std::span<const std::string_view> names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    text += i == 0 ? "" : i + 1 == names.size() ? " or " : ", ";
    text += names[i];
  }
  return text;
}

// The text with each control character written as \xNN, so that a key or
// value of the file cannot break the message's one line.
std::string oneLine(const std::string &text) {
  std::string line;
  for (const char c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
      static constexpr char hex[] = "0123456789abcdef";
      line += {'\\', 'x', hex[(c >> 4) & 0xf], hex[c & 0xf]};
    } else {
      line += c;
    }
  }
  return line;
}

// A text of the file as a message shows it: whole when short, else its
// start, so that a value of any size makes a line to read.
std::string shortened(const std::string &text) {
  constexpr std::size_t longest = 64;
  constexpr std::size_t kept = 48;
  if (text.size() <= longest) {
    return text;
  }
  // Not inside a UTF-8 sequence.
  std::size_t cut = kept;
  while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xc0) == 0x80) {
    --cut;
  }
  return text.substr(0, cut) + "... (" + std::to_string(text.size()) +
         " bytes)";
}

std::string quoted(const std::string &text) {
  return "'" + shortened(text) + "'";
}

// A JSON pointer as a message shows it, each key shortened.
std::string pointerText(const Pointer &at) {
  if (at.empty()) {
    return "";
  }
  return pointerText(at.parent_pointer()) +
         (Pointer() / shortened(at.back())).to_string();
}

// One value of the file and where it is. Every reader fails with the
// value's place in the file and what is wrong with it.
class Node {
public:
  // `value`, read from `root`; its mistakes are told at `place`, its own
  // address unless given.
  Node(const std::string &file, const json &root, const json &value,
       const json *place = nullptr)
      : file_(file), root_(root), value_(value),
        place_(place ? place : &value) {}

  const json &value() const { return value_; }
  // Where it is: an address in the document, which placeText() tells.
  const json *at() const { return place_; }

  [[noreturn]] void fail(const std::string &what) const {
    const std::string place = placeText(place_);
    throw StateFileError(
        oneLine(file_ + ": " + (place.empty() ? "" : place + ": ") + what));
  }

  std::string placeText(const json *at) const {
    return pointerText(jsonPlace(root_, *at));
  }

  // An object whose keys are all among `keys`, the first `required` of
  // which must be there.
  void expectObject(std::span<const std::string_view> keys,
                    std::size_t required) const {
    if (!value_.is_object()) {
      fail("expected an object, got " + typeName(value_));
    }
    for (const auto &item : value_.items()) {
      if (std::find(keys.begin(), keys.end(), item.key()) == keys.end()) {
        child(item.key())
            .fail("unknown key (expected " + quotedList(keys) + ")");
      }
    }
    for (std::size_t i = 0; i < required; ++i) {
      if (!value_.contains(keys[i])) {
        fail("missing key '" + std::string(keys[i]) + "'");
      }
    }
  }

  std::optional<Node> find(std::string_view key) const {
    const auto it = value_.find(key);
    if (it == value_.end()) {
      return std::nullopt;
    }
    return child(std::string(key));
  }
  // A key expectObject() has made sure of.
  Node operator[](std::string_view key) const { return *find(key); }

  std::vector<Node> elements() const {
    if (!value_.is_array()) {
      fail("expected an array, got " + typeName(value_));
    }
    std::vector<Node> nodes;
    for (std::size_t i = 0; i < value_.size(); ++i) {
      nodes.emplace_back(file_, root_, value_[i]);
    }
    return nodes;
  }

  // A whole number from 0 to `max`, `what` saying which.
  U32 number(U32 max, const std::string &what) const {
    if (!value_.is_number()) {
      fail("expected " + what + ", got " + typeName(value_));
    }
    if (!value_.is_number_unsigned() || value_.get<std::uint64_t>() > max) {
      fail(value_.dump() + " is not " + what);
    }
    return static_cast<U32>(value_.get<std::uint64_t>());
  }

  std::string text(const std::string &what) const {
    if (!value_.is_string()) {
      fail("expected " + what + ", got " + typeName(value_));
    }
    return value_.get<std::string>();
  }

  bool boolean() const {
    if (!value_.is_boolean()) {
      fail("expected true or false, got " + typeName(value_));
    }
    return value_.get<bool>();
  }

private:
  Node child(const std::string &key) const {
    return Node(file_, root_, value_.at(key));
  }

  const std::string &file_;
  const json &root_;
  const json &value_;
  const json *place_;
};

// A name from a fixed table of names and values.
template <class T, std::size_t N>
T named(const Node &node, const std::pair<std::string_view, T> (&names)[N],
        const std::string &what) {
  const std::string text = node.text(what);
  for (const auto &[name, value] : names) {
    if (name == text) {
      return value;
    }
  }
  std::string_view all[N];
  std::transform(std::begin(names), std::end(names), all,
                 [](const auto &entry) { return entry.first; });
  node.fail("unknown " + what + " " + quoted(text) + " (expected " +
            quotedList(all) + ")");
}

const std::pair<std::string_view, Mpls::LfibViaType> viaTypes[] = {
    {"mpls", Mpls::LfibViaType::viaTypeMpls},
    {"extFec", Mpls::LfibViaType::viaTypeExtFec},
};

const std::pair<std::string_view, U8> labelActions[] = {
    {"none", Mpls::LfibLabelAction::none},
    {"pop", Mpls::LfibLabelAction::pop},
    {"swap", Mpls::LfibLabelAction::swap},
    {"popAndForward", Mpls::LfibLabelAction::popAndForward},
    {"push", Mpls::LfibLabelAction::push},
};

// The route sources that have a name; others are given as numbers.
const std::pair<std::string_view, U8> routeSources[] = {
    {"static", 2},
    {"rsvp", 6},
    {"ldp", 8},
    {"isis", 10},
};

const std::pair<std::string_view, U8> programStates[] = {
    {"programmed", Mpls::Hardware::RouteStatus::programmed},
    {"pending", Mpls::Hardware::RouteStatus::pending},
    {"failed", Mpls::Hardware::RouteStatus::failed},
};

const std::pair<std::string_view, std::string_view> bindingTables[] = {
    {Mpls::CommonLib::ldpTableName, Mpls::CommonLib::ldpTableName},
    {Mpls::CommonLib::isisV4TableName, Mpls::CommonLib::isisV4TableName},
    {Mpls::CommonLib::isisV6TableName, Mpls::CommonLib::isisV6TableName},
};

constexpr U32 maxKey = 0xFFFFFFFF;
const std::string labelText = "a label (0 to 1048575)";

Wirx::MplsLabel label(const Node &node) {
  return Wirx::MplsLabel(node.number(Wirx::MplsLabel::max, labelText));
}

Wirx::MplsLabelStack labelStack(const Node &node) {
  const std::vector<Node> labels = node.elements();
  if (labels.size() > Wirx::MplsLabelStack::capacity) {
    node.fail(std::to_string(labels.size()) + " labels, more than the " +
              std::to_string(Wirx::MplsLabelStack::capacity) +
              " a label stack holds");
  }
  Wirx::MplsLabelStack stack;
  for (const Node &entry : labels) {
    stack.push(label(entry));
  }
  return stack;
}

Wirx::IpGenAddr address(const Node &node) {
  const std::string what = "an IPv4 or IPv6 address";
  const std::string text = node.text(what);
  const auto addr = Wirx::IpGenAddr::fromString(text);
  if (!addr || !*addr) {
    node.fail(quoted(text) + " is not " + what);
  }
  return *addr;
}

Wirx::IpAddr ipv4(const Node &node) {
  const std::string what = "an IPv4 address";
  const std::string text = node.text(what);
  const auto addr = Wirx::IpAddr::fromString(text);
  if (!addr) {
    node.fail(quoted(text) + " is not " + what);
  }
  return *addr;
}

Wirx::Ip6Addr ipv6(const Node &node) {
  const std::string what = "an IPv6 address";
  const std::string text = node.text(what);
  const auto addr = Wirx::Ip6Addr::fromString(text);
  if (!addr) {
    node.fail(quoted(text) + " is not " + what);
  }
  return *addr;
}

// A prefix, "10.0.0.9/32"; an address alone is a host prefix.
Mpls::FwdEqvClass fec(const Node &node) {
  const std::string what = "a prefix (ADDRESS/LENGTH, IPv4 or IPv6)";
  const std::string text = node.text(what);
  std::optional<Wirx::IpGenPrefix> prefix;
  if (text.find('/') != std::string::npos) {
    prefix = Wirx::IpGenPrefix::fromString(text);
  } else if (const auto addr = Wirx::IpGenAddr::fromString(text)) {
    if (!!*addr) {
      prefix =
          Wirx::IpGenPrefix(*addr, Wirx::IpGenPrefix::maxLength(addr->af()));
    }
  }
  if (!prefix || !*prefix) {
    node.fail(quoted(text) + " is not " + what);
  }
  return Mpls::FwdEqvClass{*prefix};
}

Wirx::IntfId interface(const Node &node) {
  const std::string what = "an interface name";
  const std::string text = node.text(what);
  const auto intf = Wirx::IntfId::fromString(text);
  if (!intf || !*intf) {
    node.fail(quoted(text) + " is not " + what +
              " (printable characters, no blanks)");
  }
  return *intf;
}

U8 routeSource(const Node &node) {
  if (node.value().is_number()) {
    return U8(node.number(255, "a route source (0 to 255)"));
  }
  return named(node, routeSources, "route source");
}

// Reads a whole state file into fresh objects. Cross references (a route's
// via set, a via set's vias, a TI-LFA tunnel interface's tunnel) are noted
// while reading and checked at the end, when every table is known.
class Loader {
public:
  explicit Loader(const std::string &file) : file_(file) {
    state_.hardware = Orv::make<Mpls::Hardware::Status>("hardware");
    state_.mpls = Orv::make<Mpls::Api::Status>("mpls");
    state_.bindings = Orv::make<Mpls::CommonLib>("bindings");
    state_.lfib = Orv::make<Mpls::LfibStatus>("lfib");
    state_.fib = Orv::make<Mesk::Fib::ForwardingStatus>("fib");
    state_.fib6 = Orv::make<Mesk::Fib6::ForwardingStatus>("fib6");
    state_.tiLfaTunnels =
        Orv::make<Tunnel::TunnelTable::TiLfaTunnelTable>("tiLfaTunnels");
    state_.rsvp = Orv::make<Rsvp::RsvpStatus>("rsvp");
    state_.interfaces = Orv::make<Interface::DeviceIntfStatusDir>("interfaces");
    // A router whose forwarding state is being asked about runs MPLS.
    state_.mpls->mplsEnabledIs(true);
  }

  RouterState load(const json &document) {
    document_ = &document;
    const Node root(file_, document, document);
    if (!document.is_object()) {
      root.fail("expected an object at the top level, got " +
                typeName(document));
    }
    static constexpr std::string_view keys[] = {
        "responder", "interfaces", "lfib", "hardware",
        "bindings",  "rsvp",       "fib",  "tiLfaTunnels",
    };
    root.expectObject(keys, 0);
    const auto section = [&](std::string_view key, auto read) {
      if (const auto node = root.find(key)) {
        (this->*read)(*node);
      }
    };
    section("responder", &Loader::responder);
    section("interfaces", &Loader::interfaces);
    section("tiLfaTunnels", &Loader::tiLfaTunnels);
    section("lfib", &Loader::lfib);
    section("hardware", &Loader::hardware);
    section("bindings", &Loader::bindings);
    section("rsvp", &Loader::rsvp);
    section("fib", &Loader::fib);
    checkReferences();
    return std::move(state_);
  }

private:
  // A key that refers to an entry of another table, and where it was read.
  struct Reference {
    const json *at;
    U32 key;
  };

  [[noreturn]] void failAt(const json *at, const std::string &what) const {
    Node(file_, *document_, *at).fail(what);
  }

  // Refuses a second entry of one table under the same key; `first`
  // remembers where each key was read first.
  template <class Key>
  void unique(std::map<Key, const json *> &first, const Key &key,
              const Node &node, const std::string &what) const {
    const auto [it, added] = first.emplace(key, node.at());
    if (!added) {
      node.fail(what + " is already at " + node.placeText(it->second));
    }
  }

  void responder(const Node &node) {
    static constexpr std::string_view keys[] = {"ipv4", "ipv6"};
    node.expectObject(keys, 0);
    if (const auto v4 = node.find("ipv4")) {
      state_.ipv4 = ipv4(*v4);
    }
    if (const auto v6 = node.find("ipv6")) {
      state_.ipv6 = ipv6(*v6);
    }
  }

  void interfaces(const Node &node) {
    static constexpr std::string_view keys[] = {"name", "mtu", "device"};
    std::map<Wirx::IntfId, const json *> seen;
    for (const Node &entry : node.elements()) {
      entry.expectObject(keys, 2);
      const Wirx::IntfId intf = interface(entry["name"]);
      unique(seen, intf, entry["name"], "interface " + shortened(intf.name()));
      auto status = Orv::make<Interface::IntfStatus>(intf);
      status->mtuIs(entry["mtu"].number(0xFFFF, "an MTU (0 to 65535)"));
      const auto device = entry.find("device");
      state_.interfaces->entryIs(
          intf, {status, device ? device->text("a device name") : ""});
    }
  }

  void tiLfaTunnels(const Node &node) {
    static constexpr std::string_view keys[] = {"id", "interface", "nexthop",
                                                "labels"};
    std::map<U32, const json *> seen;
    for (const Node &entry : node.elements()) {
      entry.expectObject(keys, 3);
      const U32 id = entry["id"].number(Tunnel::TunnelId::maxValue,
                                        "a tunnel id (0 to 65535)");
      unique(seen, id, entry["id"], "tunnel " + std::to_string(id));
      Tunnel::TunnelTable::TiLfaTunnelTableEntry tunnel;
      tunnel.intfId = interface(entry["interface"]);
      tunnel.nexthop = address(entry["nexthop"]);
      if (const auto labels = entry.find("labels")) {
        tunnel.labelStack = labelStack(*labels);
      }
      state_.tiLfaTunnels->tunnelIs(Tunnel::TunnelId(id), tunnel);
    }
  }

  // An interface that may be a TI-LFA tunnel's: its id is read and its
  // tunnel checked for at the end.
  Wirx::IntfId viaInterface(const Node &node) {
    const Wirx::IntfId intf = interface(node);
    if (!Tunnel::TunnelTable::TiLfaTunnelTable::isTiLfaTunnelIntf(intf)) {
      return intf;
    }
    const std::string_view digits =
        std::string_view(intf.name())
            .substr(
                Tunnel::TunnelTable::TiLfaTunnelTable::intfNamePrefix.size());
    std::uint64_t id = 0;
    const auto [end, ec] =
        std::from_chars(digits.data(), digits.data() + digits.size(), id);
    if (ec != std::errc() || id > Tunnel::TunnelId::maxValue) {
      node.fail(quoted(intf.name()) +
                " names a TI-LFA tunnel beyond the last id, 65535");
    }
    tunnelReferences_.push_back({node.at(), U32(id)});
    return intf;
  }

  bool isTunnel(const Wirx::IntfId &intf) const {
    return Tunnel::TunnelTable::TiLfaTunnelTable::isTiLfaTunnelIntf(intf);
  }

  void lfib(const Node &node) {
    static constexpr std::string_view keys[] = {"routes", "viaSets", "vias",
                                                "extFecVias"};
    node.expectObject(keys, 0);
    if (const auto vias = node.find("vias")) {
      lfibVias(*vias);
    }
    if (const auto vias = node.find("extFecVias")) {
      extFecVias(*vias);
    }
    if (const auto sets = node.find("viaSets")) {
      viaSets(*sets);
    }
    if (const auto routes = node.find("routes")) {
      lfibRoutes(*routes);
    }
  }

  void lfibVias(const Node &node) {
    static constexpr std::string_view keys[] = {"key", "interface", "action",
                                                "nexthop", "labels"};
    for (const Node &entry : node.elements()) {
      entry.expectObject(keys, 3);
      const U32 key = entry["key"].number(maxKey, "a via key");
      unique(viaKeys_, key, entry["key"], "via " + std::to_string(key));
      Mpls::LfibVia via;
      via.intfId = viaInterface(entry["interface"]);
      via.labelAction = named(entry["action"], labelActions, "label action");
      if (const auto nexthop = entry.find("nexthop")) {
        via.nexthop = address(*nexthop);
      } else if (!isTunnel(via.intfId)) {
        // Only a tunnel via takes its next hop from the tunnel.
        entry.fail("missing key 'nexthop'");
      }
      if (const auto labels = entry.find("labels")) {
        via.labelOp = labelStack(*labels);
      }
      state_.lfib->viaIs(Mpls::LfibViaKey{key}, via);
    }
  }

  void extFecVias(const Node &node) {
    static constexpr std::string_view keys[] = {"key", "action", "fec",
                                                "hierInterface"};
    for (const Node &entry : node.elements()) {
      entry.expectObject(keys, 3);
      const U32 key = entry["key"].number(maxKey, "a via key");
      unique(extFecViaKeys_, key, entry["key"],
             "extended-FEC via " + std::to_string(key));
      Mpls::LfibExtFecVia via;
      via.labelAction = named(entry["action"], labelActions, "label action");
      via.fec = fec(entry["fec"]);
      if (const auto hier = entry.find("hierInterface")) {
        via.hierIntf = viaInterface(*hier);
      }
      state_.lfib->extFecViaIs(Mpls::LfibViaKey{key}, via);
    }
  }

  void viaSets(const Node &node) {
    static constexpr std::string_view keys[] = {"key", "type", "vias"};
    for (const Node &entry : node.elements()) {
      entry.expectObject(keys, 3);
      const U32 key = entry["key"].number(maxKey, "a via set key");
      unique(viaSetKeys_, key, entry["key"], "via set " + std::to_string(key));
      Mpls::LfibViaSet set;
      set.viaType = named(entry["type"], viaTypes, "via type");
      const std::vector<Node> vias = entry["vias"].elements();
      constexpr std::size_t maxVias = Mpls::LfibViaIndexRange::max + 1;
      if (vias.size() > maxVias) {
        entry["vias"].fail(std::to_string(vias.size()) +
                           " vias, more than the " + std::to_string(maxVias) +
                           " a via set holds");
      }
      auto &references = set.viaType == Mpls::LfibViaType::viaTypeExtFec
                             ? extFecViaReferences_
                             : viaReferences_;
      for (std::size_t i = 0; i < vias.size(); ++i) {
        const U32 via = vias[i].number(maxKey, "a via key");
        references.push_back({vias[i].at(), via});
        set.viaIs(U8(i), Mpls::LfibViaKey{via});
      }
      state_.lfib->viaSetIs(Mpls::LfibViaSetKey{key}, set);
    }
  }

  void lfibRoutes(const Node &node) {
    static constexpr std::string_view keys[] = {"label", "viaSet", "source"};
    std::map<U32, const json *> seen;
    for (const Node &entry : node.elements()) {
      entry.expectObject(keys, 3);
      const Wirx::MplsLabel in = label(entry["label"]);
      unique(seen, in.value(), entry["label"],
             "a route for label " + in.stringValue());
      const U32 set = entry["viaSet"].number(maxKey, "a via set key");
      viaSetReferences_.push_back({entry["viaSet"].at(), set});
      state_.lfib->routeIs(Mpls::LfibRoute{Mpls::RouteKey::fromLabel(in),
                                           Mpls::LfibViaSetKey{set},
                                           routeSource(entry["source"])});
    }
  }

  void hardware(const Node &node) {
    static constexpr std::string_view keys[] = {"label", "state"};
    std::map<U32, const json *> seen;
    for (const Node &entry : node.elements()) {
      entry.expectObject(keys, 2);
      const Wirx::MplsLabel in = label(entry["label"]);
      unique(seen, in.value(), entry["label"],
             "the state of label " + in.stringValue());
      state_.hardware->routeIs(
          Mpls::RouteKey::fromLabel(in),
          Mpls::Hardware::RouteStatus{
              named(entry["state"], programStates, "programming state")});
    }
  }

  void bindings(const Node &node) {
    if (!node.value().is_object()) {
      node.fail("expected an object, got " + typeName(node.value()));
    }
    for (const auto &item : node.value().items()) {
      const Node table = *node.find(item.key());
      const std::string_view tableName =
          named(Node(file_, *document_, json(item.key()), table.at()),
                bindingTables, "binding table");
      bindingTable(table, tableName == Mpls::CommonLib::ldpTableName
                              ? state_.bindings->ldpTable()
                              : state_.bindings->tableIs(tableName));
    }
  }

  void bindingTable(const Node &node, Mpls::CommonLib::BindingTable &table) {
    static constexpr std::string_view keys[] = {"fec", "labels"};
    static constexpr std::string_view labelKeys[] = {"label", "inUse"};
    std::map<Mpls::FwdEqvClass, const json *> seen;
    for (const Node &entry : node.elements()) {
      entry.expectObject(keys, 2);
      const Mpls::FwdEqvClass bound = fec(entry["fec"]);
      unique(seen, bound, entry["fec"],
             "the bindings of " + bound.prefix.stringValue());
      Mpls::CommonLibEntry labels;
      std::map<U32, const json *> seenLabels;
      for (const Node &binding : entry["labels"].elements()) {
        binding.expectObject(labelKeys, 1);
        const Wirx::MplsLabel value = label(binding["label"]);
        unique(seenLabels, value.value(), binding["label"],
               "label " + value.stringValue());
        const auto inUse = binding.find("inUse");
        labels.labelIs(value, inUse ? inUse->boolean() : true);
      }
      table.is(bound, labels);
    }
  }

  void rsvp(const Node &node) {
    static constexpr std::string_view keys[] = {
        "tunnelDst", "tunnelId", "extendedTunnelId", "lspId", "label"};
    // The path-state table exists once the section does, even empty.
    state_.rsvp->spStateTableIs();
    std::map<std::tuple<U32, U32, U32, U32>, const json *> seen;
    for (const Node &entry : node.elements()) {
      entry.expectObject(keys, 5);
      Rsvp::RsvpSpId id;
      id.tunnelDst = ipv4(entry["tunnelDst"]);
      id.tunnelId =
          U16(entry["tunnelId"].number(0xFFFF, "a tunnel id (0 to 65535)"));
      id.extendedTunnelId = ipv4(entry["extendedTunnelId"]);
      id.lspId = U16(entry["lspId"].number(0xFFFF, "an LSP id (0 to 65535)"));
      unique(seen,
             std::tuple<U32, U32, U32, U32>{id.tunnelDst.value(), id.tunnelId,
                                            id.extendedTunnelId.value(),
                                            id.lspId},
             entry, "this path");
      state_.rsvp->spStateIs(id, Rsvp::RsvpSpState{label(entry["label"])});
    }
  }

  void fib(const Node &node) {
    static constexpr std::string_view keys[] = {"fec", "vias"};
    static constexpr std::string_view viaKeys[] = {"interface", "nexthop",
                                                   "action", "labels"};
    std::map<Mpls::FwdEqvClass, const json *> seen;
    for (const Node &entry : node.elements()) {
      entry.expectObject(keys, 2);
      const Mpls::FwdEqvClass forwarded = fec(entry["fec"]);
      unique(seen, forwarded, entry["fec"],
             "the entry of " + forwarded.prefix.stringValue());
      const std::vector<Node> vias = entry["vias"].elements();
      constexpr std::size_t maxVias = Mesk::ViaIndex::max + 1;
      if (vias.size() > maxVias) {
        entry["vias"].fail(std::to_string(vias.size()) +
                           " vias, more than the " + std::to_string(maxVias) +
                           " a forwarding entry holds");
      }
      Mesk::FibFec fibFec;
      for (std::size_t i = 0; i < vias.size(); ++i) {
        vias[i].expectObject(viaKeys, 3);
        Mesk::FibVia via;
        via.intfId = interface(vias[i]["interface"]);
        via.nexthop = address(vias[i]["nexthop"]);
        via.labelAction =
            named(vias[i]["action"], labelActions, "label action");
        if (const auto labels = vias[i].find("labels")) {
          via.labelStack = labelStack(*labels);
        }
        fibFec.viaIs(U16(i), via);
      }
      if (forwarded.prefix.addr().isIpv4()) {
        state_.fib->fecIs(forwarded, fibFec);
      } else {
        state_.fib6->fecIs(forwarded, fibFec);
      }
    }
  }

  void checkReferences() const {
    const auto check = [this](const std::vector<Reference> &references,
                              const std::map<U32, const json *> &keys,
                              const std::string &what,
                              const std::string &table) {
      for (const Reference &ref : references) {
        if (!keys.contains(ref.key)) {
          failAt(ref.at,
                 "no " + what + " " + std::to_string(ref.key) + " in " + table);
        }
      }
    };
    check(viaSetReferences_, viaSetKeys_, "via set", "/lfib/viaSets");
    check(viaReferences_, viaKeys_, "via", "/lfib/vias");
    check(extFecViaReferences_, extFecViaKeys_, "extended-FEC via",
          "/lfib/extFecVias");
    for (const Reference &ref : tunnelReferences_) {
      if (!state_.tiLfaTunnels->tunnelTable().find(Tunnel::TunnelId(ref.key))) {
        failAt(ref.at, "no TI-LFA tunnel " + std::to_string(ref.key) +
                           " in /tiLfaTunnels");
      }
    }
  }

  const std::string &file_;
  const json *document_ = nullptr;
  RouterState state_;
  std::map<U32, const json *> viaKeys_;
  std::map<U32, const json *> extFecViaKeys_;
  std::map<U32, const json *> viaSetKeys_;
  std::vector<Reference> viaSetReferences_;
  std::vector<Reference> viaReferences_;
  std::vector<Reference> extFecViaReferences_;
  std::vector<Reference> tunnelReferences_;
};

// "LINE:COLUMN" of the byte a parse error names, counted from 1; the byte
// is nlohmann's count of the characters read, the offending one included.
std::string lineColumn(std::string_view text, std::size_t byte) {
  const std::string_view read = text.substr(0, std::min(byte, text.size()));
  const std::size_t line = 1 + std::count(read.begin(), read.end(), '\n');
  const std::size_t lastNewline = read.rfind('\n');
  const std::size_t column =
      lastNewline == std::string_view::npos ? byte : byte - lastNewline - 1;
  return std::to_string(line) + ":" + std::to_string(column);
}

// `text` with the token quoted after `marker` shortened: nlohmann quotes
// what it read, whatever its size.
std::string shortenedToken(std::string text, const std::string &marker) {
  const std::size_t at = text.find(marker);
  const std::size_t end = text.rfind('\'');
  if (at != std::string::npos && end > at + marker.size()) {
    const std::size_t start = at + marker.size();
    text.replace(start, end - start,
                 shortened(text.substr(start, end - start)));
  }
  return text;
}

// nlohmann's message without its own prefix and position: "syntax error
// while parsing object - unexpected '}'; expected string literal".
std::string parseErrorText(const json::parse_error &e) {
  const std::string what = e.what();
  const std::size_t column = what.find(", column ");
  const std::size_t colon =
      column == std::string::npos ? std::string::npos : what.find(": ", column);
  return shortenedToken(colon == std::string::npos ? what
                                                   : what.substr(colon + 2),
                        "last read: '");
}

// nlohmann's message of another error, without its prefix: "number
// overflow parsing '1e999'".
std::string exceptionText(const json::exception &e) {
  const std::string what = e.what();
  const std::size_t bracket = what.find("] ");
  return shortenedToken(
      bracket == std::string::npos ? what : what.substr(bracket + 2), " '");
}

// Follows the parse to find the first key an object repeats: nlohmann
// keeps the last value of such a key, and a file that says two things in
// one place is refused rather than read by half.
class DuplicateKeyFinder {
public:
  bool operator()(int, json::parse_event_t event, json &parsed) {
    switch (event) {
    case json::parse_event_t::object_start:
      elementBegins();
      levels_.emplace_back(false);
      break;
    case json::parse_event_t::array_start:
      elementBegins();
      levels_.emplace_back(true);
      break;
    case json::parse_event_t::key: {
      Level &object = levels_.back();
      object.key = parsed.get<std::string>();
      if (!object.keys.insert(object.key).second && !found_) {
        found_ = here();
      }
      break;
    }
    case json::parse_event_t::value:
      elementBegins();
      break;
    case json::parse_event_t::object_end:
    case json::parse_event_t::array_end:
      levels_.pop_back();
      break;
    }
    return true;
  }

  // Where the second of two equal keys is.
  const std::optional<Pointer> &found() const { return found_; }

private:
  // An object, at its latest key, or an array, at its latest element.
  struct Level {
    explicit Level(bool isArray) : array(isArray) {}

    bool array;
    std::size_t elements = 0;
    std::string key;
    std::set<std::string> keys;
  };

  void elementBegins() {
    if (!levels_.empty() && levels_.back().array) {
      ++levels_.back().elements;
    }
  }

  Pointer here() const {
    Pointer at;
    for (const Level &level : levels_) {
      at = level.array ? at / (level.elements - 1) : at / level.key;
    }
    return at;
  }

  std::vector<Level> levels_;
  std::optional<Pointer> found_;
};

// The document `text` holds: one JSON value, each key once in its object,
// and nothing after it but white space.
json parseDocument(std::string_view text, const std::string &fileName) {
  // nlohmann takes a NUL byte for the end of its input, so whatever
  // follows one would go unread: the document is what comes before it.
  const std::size_t nul = text.find('\0');
  const std::string_view document = text.substr(0, nul);
  DuplicateKeyFinder duplicates;
  json parsed;
  try {
    parsed = json::parse(document, std::ref(duplicates));
  } catch (const json::parse_error &e) {
    if (nul != std::string_view::npos && e.byte > nul) {
      throw StateFileError(fileName + ":" + lineColumn(text, nul + 1) +
                           ": unexpected NUL byte");
    }
    throw StateFileError(oneLine(fileName + ":" + lineColumn(text, e.byte) +
                                 ": " + parseErrorText(e)));
  } catch (const json::exception &e) {
    throw StateFileError(oneLine(fileName + ": " + exceptionText(e)));
  }
  if (nul != std::string_view::npos) {
    throw StateFileError(fileName + ": bytes after the document, from offset " +
                         std::to_string(nul));
  }
  if (const auto &at = duplicates.found()) {
    throw StateFileError(
        oneLine(fileName + ": " + pointerText(*at) + ": duplicate key"));
  }
  return parsed;
}

} // namespace

RouterState loadState(std::string_view text, const std::string &fileName) {
  return Loader(fileName).load(parseDocument(text, fileName));
}

RouterState loadStateDocument(const nlohmann::json &document,
                              const std::string &name) {
  return Loader(name).load(document);
}

nlohmann::json readStateDocument(std::string_view text,
                                 const std::string &fileName) {
  json document = parseDocument(text, fileName);
  Loader(fileName).load(document);
  return document;
}

namespace {

std::string fileText(const std::string &path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    throw StateFileError(path + ": " + std::strerror(EISDIR));
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    throw StateFileError(path + ": " + std::strerror(errno));
  }
  std::string text{std::istreambuf_iterator<char>(in), {}};
  if (in.bad()) {
    throw StateFileError(path + ": " + std::strerror(errno));
  }
  return text;
}

} // namespace

RouterState loadStateFile(const std::string &path) {
  return loadState(fileText(path), path);
}

nlohmann::json readStateFile(const std::string &path) {
  return readStateDocument(fileText(path), path);
}

std::string stateDocumentText(const nlohmann::json &document) {
  return document.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace LspPingTool
