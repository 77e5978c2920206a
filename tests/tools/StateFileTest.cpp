// The state file loader: the shipped examples load, every section lands in
// the object the responder reads it from, and a file with a mistake gets one
// message that names the file, the place and the mistake.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include "tools/StateFile.h"

namespace {

using LspPingTool::loadState;
using LspPingTool::loadStateFile;
using LspPingTool::RouterState;
using LspPingTool::StateFileError;
using nlohmann::json;

std::filesystem::path example(const std::string &name) {
  const char *env = std::getenv("LSPPING_SOURCE_DIR");
  return std::filesystem::path(env ? env : LSPPING_SOURCE_DIR) / "examples" /
         name;
}

json exampleJson(const std::string &name) {
  std::ifstream in(example(name));
  return json::parse(in);
}

// The message loading `text` fails with, or "" when it loads.
std::string loadError(const std::string &text) {
  try {
    loadState(text, "router.json");
  } catch (const StateFileError &e) {
    return e.what();
  }
  return "";
}

Mpls::FwdEqvClass fec(const char *text) {
  return Mpls::FwdEqvClass{*Wirx::IpGenPrefix::fromString(text)};
}

Wirx::MplsLabel label(Orv::U32 value) { return Wirx::MplsLabel(value); }

// What they hold is seen in what `lspping respond` answers from them.
TEST(StateFile, ExamplesLoad) {
  for (const char *name : {"egress.json", "transit.json", "tilfa.json"}) {
    EXPECT_NO_THROW(loadStateFile(example(name).string())) << name;
  }
}

// What no example holds: every optional key, the IPv6 forms, and the
// values that are not the usual ones.
TEST(StateFile, EverySectionLandsWhereTheResponderReadsIt) {
  json state = exampleJson("tilfa.json");
  state["responder"]["ipv6"] = "2001:db8::2";
  state["interfaces"].push_back({{"name", "Ethernet9"}, {"mtu", 0}});
  state["lfib"]["routes"].push_back(
      {{"label", 16009}, {"viaSet", 2}, {"source", 12}});
  state["hardware"].push_back({{"label", 2222}, {"state", "failed"}});
  state["bindings"]["isisV6"] = json::array();
  state["bindings"]["ldp"][0]["labels"].push_back(
      {{"label", 1001}, {"inUse", false}});
  state["rsvp"] = json::parse(R"([{"tunnelDst": "10.0.0.7", "tunnelId": 7,
      "extendedTunnelId": "10.0.0.1", "lspId": 9, "label": 1000}])");
  state["fib"].push_back(json::parse(R"({"fec": "2001:db8::8",
      "vias": [{"interface": "Ethernet1", "nexthop": "fe80::1",
                "action": "none"}]})"));
  const RouterState loaded = loadState(state.dump(), "router.json");

  EXPECT_EQ(loaded.ipv6.stringValue(), "2001:db8::2");
  const Interface::DeviceIntfStatusEntry &unnamed =
      loaded.interfaces->entry(Wirx::IntfId("Ethernet9"));
  ASSERT_TRUE(unnamed.intfStatus);
  EXPECT_EQ(unnamed.intfStatus->mtu(), 0u);
  EXPECT_EQ(unnamed.deviceName, "");
  EXPECT_EQ(loaded.lfib->routeTable()
                .get(Mpls::RouteKey::fromLabel(label(16009)))
                .source,
            12);
  EXPECT_EQ(loaded.hardware->routeTable()
                .get(Mpls::RouteKey::fromLabel(label(2222)))
                .programState,
            Mpls::Hardware::RouteStatus::failed);
  ASSERT_NE(loaded.bindings->table("isisV6"), nullptr) << "there, if empty";
  EXPECT_TRUE(loaded.bindings->table("isisV6")->empty());
  const Mpls::CommonLibEntry &ldp =
      loaded.bindings->ldpTable().get(fec("10.0.0.9/32"));
  EXPECT_TRUE(ldp.labelInUse(label(1000)));
  EXPECT_TRUE(ldp.hasLabel(label(1001)));
  EXPECT_FALSE(ldp.labelInUse(label(1001)));
  const Rsvp::RsvpSpId path{*Wirx::IpAddr::fromString("10.0.0.7"), 7,
                            *Wirx::IpAddr::fromString("10.0.0.1"), 9};
  ASSERT_NE(loaded.rsvp->spState(), nullptr);
  EXPECT_EQ(loaded.rsvp->spState()->get(path).label, label(1000));
  EXPECT_EQ(loaded.fib->fecTable().find(fec("2001:db8::8/128")), nullptr);
  const Mesk::FibFec *v6 = loaded.fib6->fecTable().find(fec("2001:db8::8/128"));
  ASSERT_NE(v6, nullptr) << "an address alone is a host prefix";
  EXPECT_EQ(v6->via[0].nexthop.stringValue(), "fe80::1");
  EXPECT_TRUE(loaded.mpls->mplsEnabled());

  const RouterState empty = loadState("{}", "empty.json");
  EXPECT_TRUE(empty.lfib->routeTable().empty());
  EXPECT_EQ(empty.rsvp->spState(), nullptr) << "a router without RSVP";
  EXPECT_EQ(empty.bindings->tableCount(), 0u);
}

// Each mistake is made in transit.json by a JSON patch.
TEST(StateFile, MistakesAreNamedWithTheirPlace) {
  struct Case {
    const char *patch;
    const char *message;
  };
  const Case cases[] = {
      {R"({"op": "replace", "path": "/lfib/routes/0/label", "value": "1000"})",
       "/lfib/routes/0/label: expected a label (0 to 1048575), got a string"},
      {R"({"op": "replace", "path": "/lfib/vias/1/labels/0",
           "value": 1048576})",
       "/lfib/vias/1/labels/0: 1048576 is not a label (0 to 1048575)"},
      {R"({"op": "replace", "path": "/hardware/0/label", "value": -3})",
       "/hardware/0/label: -3 is not a label (0 to 1048575)"},
      {R"({"op": "replace", "path": "/interfaces/1/mtu", "value": 1500.5})",
       "/interfaces/1/mtu: 1500.5 is not an MTU (0 to 65535)"},
      {R"({"op": "replace", "path": "/lfib/viaSets/0/type", "value": "ip"})",
       "/lfib/viaSets/0/type: unknown via type 'ip' (expected mpls or "
       "extFec)"},
      {R"({"op": "replace", "path": "/lfib/vias/0/action", "value": "swop"})",
       "/lfib/vias/0/action: unknown label action 'swop' (expected none, "
       "pop, swap, popAndForward or push)"},
      {R"({"op": "replace", "path": "/lfib/routes/0/source", "value": "bgp"})",
       "/lfib/routes/0/source: unknown route source 'bgp' (expected static, "
       "rsvp, ldp or isis)"},
      {R"({"op": "replace", "path": "/lfib/vias/0/nexthop",
           "value": "10.1.0.300"})",
       "/lfib/vias/0/nexthop: '10.1.0.300' is not an IPv4 or IPv6 address"},
      {R"({"op": "replace", "path": "/responder/ipv4",
           "value": "2001:db8::2"})",
       "/responder/ipv4: '2001:db8::2' is not an IPv4 address"},
      {R"({"op": "replace", "path": "/bindings/ldp/0/fec",
           "value": "10.0.0.9/33"})",
       "/bindings/ldp/0/fec: '10.0.0.9/33' is not a prefix (ADDRESS/LENGTH, "
       "IPv4 or IPv6)"},
      {R"({"op": "replace", "path": "/lfib/vias/0/interface",
           "value": "Ethernet 1"})",
       "/lfib/vias/0/interface: 'Ethernet 1' is not an interface name "
       "(printable characters, no blanks)"},
      {R"({"op": "replace", "path": "/lfib/vias/0/labels",
           "value": [1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17]})",
       "/lfib/vias/0/labels: 17 labels, more than the 16 a label stack "
       "holds"},
      {R"({"op": "replace", "path": "/lfib/vias", "value": {}})",
       "/lfib/vias: expected an array, got an object"},
      {R"({"op": "remove", "path": "/lfib/vias/0/action"})",
       "/lfib/vias/0: missing key 'action'"},
      {R"({"op": "remove", "path": "/lfib/vias/0/nexthop"})",
       "/lfib/vias/0: missing key 'nexthop'"},
      {R"({"op": "add", "path": "/lfib/vias/0/nexhop", "value": "10.1.0.3"})",
       "/lfib/vias/0/nexhop: unknown key (expected key, interface, action, "
       "nexthop or labels)"},
      {R"({"op": "add", "path": "/lfib/vias/0/next\nhop", "value": ""})",
       "/lfib/vias/0/next\\x0ahop: unknown key (expected key, interface, "
       "action, nexthop or labels)"},
      {R"({"op": "add", "path": "/lfb", "value": {}})",
       "/lfb: unknown key (expected responder, interfaces, lfib, hardware, "
       "bindings, rsvp, fib or tiLfaTunnels)"},
      {R"({"op": "move", "from": "/bindings/ldp", "path": "/bindings/isis"})",
       "/bindings/isis: unknown binding table 'isis' (expected ldp, isisV4 "
       "or isisV6)"},
      {R"({"op": "add", "path": "/lfib/routes/-",
           "value": {"label": 1001, "viaSet": 7, "source": "ldp"}})",
       "/lfib/routes/1/viaSet: no via set 7 in /lfib/viaSets"},
      {R"({"op": "replace", "path": "/lfib/viaSets/0/vias/1", "value": 12})",
       "/lfib/viaSets/0/vias/1: no via 12 in /lfib/vias"},
      {R"({"op": "replace", "path": "/lfib/viaSets/0/type",
           "value": "extFec"})",
       "/lfib/viaSets/0/vias/0: no extended-FEC via 10 in /lfib/extFecVias"},
      {R"({"op": "replace", "path": "/lfib/vias/1/interface",
           "value": "TiLfaTunnel4"})",
       "/lfib/vias/1/interface: no TI-LFA tunnel 4 in /tiLfaTunnels"},
      {R"({"op": "replace", "path": "/lfib/vias/1/interface",
           "value": "TiLfaTunnel65536"})",
       "/lfib/vias/1/interface: 'TiLfaTunnel65536' names a TI-LFA tunnel "
       "beyond the last id, 65535"},
      {R"({"op": "replace", "path": "/lfib/vias/1/key", "value": 10})",
       "/lfib/vias/1/key: via 10 is already at /lfib/vias/0/key"},
      {R"({"op": "copy", "from": "/lfib/routes/0",
           "path": "/lfib/routes/-"})",
       "/lfib/routes/1/label: a route for label 1000 is already at "
       "/lfib/routes/0/label"},
  };
  const json transit = exampleJson("transit.json");
  ASSERT_EQ(loadError(transit.dump()), "");
  for (const Case &c : cases) {
    SCOPED_TRACE(c.patch);
    const json patched = transit.patch(json::array({json::parse(c.patch)}));
    EXPECT_EQ(loadError(patched.dump(2)),
              std::string("router.json: ") + c.message);
  }
}

// What JSON alone refuses, or a document that does not say one thing in
// each place, named with the line and column, the place or the offset; a
// value of any size is quoted in a line to read.
TEST(StateFile, DocumentsThatAreNotOneJsonValue) {
  const std::string huge(10'000'000, 'x');
  const std::pair<std::string, std::string> cases[] = {
      {"{\n  \"lfib\": {\n    \"routes\": [ { \"label\": 1000, } ]\n  }\n}\n",
       "3:34: syntax error while parsing object key - unexpected '}'; "
       "expected string literal"},
      {"", "1:1: syntax error while parsing value - unexpected end of input; "
           "expected '[', '{', or a literal"},
      {"[]", " expected an object at the top level, got an array"},
      {R"({"responder": {"ipv4": "10.0.0.1"}, "responder": {}})",
       " /responder: duplicate key"},
      {R"({"hardware": [{"label": 7, "state": "pending", "label": 8}]})",
       " /hardware/0/label: duplicate key"},
      {std::string(R"({"responder": {}})") + '\0' + "garbage",
       " bytes after the document, from offset 17"},
      {std::string(R"({"responder": )") + '\0' + "{}}",
       "1:15: unexpected NUL byte"},
      {R"({"hardware": [{"label": 1e99999, "state": "pending"}]})",
       " number overflow parsing '1e99999'"},
      {R"({"responder": {"ipv4": ")" + huge + "\"}}",
       " /responder/ipv4: 'xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx... "
       "(10000000 bytes)' is not an IPv4 address"},
      {R"({"lfib": {")" + huge + "\": {}}}",
       " /lfib/xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx... (10000000 "
       "bytes): unknown key (expected routes, viaSets, vias or extFecVias)"},
      {R"({"responder": {"ipv4": ")" + huge,
       "1:10000025: syntax error while parsing value - invalid string: "
       "missing closing quote; last read: "
       "'\"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx... (10000001 "
       "bytes)'"},
  };
  for (const auto &[text, message] : cases) {
    SCOPED_TRACE(text.substr(0, 80));
    EXPECT_EQ(loadError(text), "router.json:" + message);
  }
}

} // namespace
