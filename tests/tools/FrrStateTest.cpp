// FRR's outputs mapped to a router's forwarding state, on outputs recorded
// from r2 of the frr3 lab (FRR 8.4; keys the mapping does not read cut
// out), with one output changed per case; a state file's entries win over
// a source's; a route dump keeps the label routes only.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <libmnl/libmnl.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "tools/FrrState.h"
#include "tools/KernelMplsRoutes.h"
#include "tools/StateCombine.h"
#include "tools/StateFile.h"
#include "tools/StatePaths.h"
#include "tools/StateSourceError.h"

namespace {

using LspPingTool::FrrOutputs;
using nlohmann::json;

std::string recorded(const std::string &name) {
  const char *env = std::getenv("LSPPING_SOURCE_DIR");
  const auto path = std::filesystem::path(env ? env : LSPPING_SOURCE_DIR) /
                    "tests" / "tools" / "data" / "frr-r2" / name;
  std::ifstream in(path);
  return {std::istreambuf_iterator<char>(in), {}};
}

// r2 of r1 - r2 - r3: zebra's label table empty, as on this kernel.
FrrOutputs r2() {
  FrrOutputs outputs;
  outputs.runningConfig = recorded("running-config.txt");
  outputs.interfaces = recorded("interface.json");
  outputs.routes = recorded("ip-route.json");
  outputs.mplsTable = "{}";
  outputs.ldpBindings = recorded("ldp-binding.json");
  outputs.ldpDiscovery = recorded("ldp-discovery-detail.json");
  return outputs;
}

// "LABEL: ACTION [LABELS] via IF NEXTHOP, ..." for each label route.
std::vector<std::string> routes(const json &state) {
  const json &lfib = state.at("lfib");
  std::vector<std::string> lines;
  for (const json &route : lfib.at("routes")) {
    std::string line = route.at("label").dump() + ":";
    for (const json &set : lfib.at("viaSets")) {
      if (set.at("key") != route.at("viaSet")) {
        continue;
      }
      for (const json &key : set.at("vias")) {
        for (const json &via : lfib.at("vias")) {
          if (via.at("key") == key) {
            line += " " + via.at("action").get<std::string>() +
                    (via.contains("labels") ? " " + via["labels"].dump() : "") +
                    " via " + via.at("interface").get<std::string>() + " " +
                    via.at("nexthop").get<std::string>();
          }
        }
      }
    }
    lines.push_back(line);
  }
  return lines;
}

std::map<std::string, unsigned> ldpBindings(const json &state) {
  std::map<std::string, unsigned> table;
  for (const json &binding : state.at("bindings").at("ldp")) {
    table[binding.at("fec")] = binding.at("labels").at(0).at("label");
  }
  return table;
}

TEST(FrrState, RecordedRouterWithoutZebraLabelTable) {
  const json state = LspPingTool::frrState(r2());
  // imp-null (3) for the FECs r2 is the egress of.
  const std::map<std::string, unsigned> bindings = {{"10.0.0.1/32", 16},
                                                    {"10.0.0.2/32", 3},
                                                    {"10.0.0.3/32", 17},
                                                    {"10.1.12.0/24", 3},
                                                    {"10.1.23.0/24", 3}};
  EXPECT_EQ(ldpBindings(state), bindings);
  // Each FEC is bound by both neighbours; the in-use one is the IGP's next
  // hop, and both advertised an implicit null: pop.
  EXPECT_EQ(routes(state),
            (std::vector<std::string>{"16: pop via e1 10.1.12.1",
                                      "17: pop via e2 10.1.23.3"}));
  EXPECT_FALSE(state.contains("hardware"));
  EXPECT_EQ(state.at("fib").size(), 2u);
  EXPECT_FALSE(state.at("bindings").contains("isisV4")) << "no IS-IS here";
  EXPECT_NO_THROW(LspPingTool::loadStateDocument(state, "r2"));
}

TEST(FrrState, VariantsOfOneOutput) {
  struct Case {
    const char *what;
    std::function<void(FrrOutputs &)> change;
    std::vector<std::string> routes;
  };
  // r2's binding from `neighbour` for `fec`, advertising `label`.
  const auto remote = [](FrrOutputs &o, const std::string &fec,
                         const std::string &neighbour,
                         const std::string &label) {
    json document = json::parse(o.ldpBindings);
    for (json &binding : document.at("bindings")) {
      if (binding.at("prefix") == fec &&
          binding.at("neighborId") == neighbour) {
        binding["remoteLabel"] = label;
      }
    }
    o.ldpBindings = document.dump();
  };
  const Case cases[] = {
      {"zebra's table, where the kernel routes MPLS, is used as it is",
       [](FrrOutputs &o) {
         o.mplsTable = R"({"17":{"inLabel":17,"installed":true,"nexthops":[
           {"type":"LDP","outLabel":20,"outLabelStack":[20],"distance":150,
            "nexthop":"10.1.23.3"}]}})";
       },
       {"17: swap [20] via e2 10.1.23.3"}},
      {"a numbered remote label is swapped to",
       [&](FrrOutputs &o) { remote(o, "10.0.0.3/32", "10.0.0.3", "30"); },
       {"16: pop via e1 10.1.12.1", "17: swap [30] via e2 10.1.23.3"}},
      {"an explicit null is swapped to, not popped",
       [&](FrrOutputs &o) { remote(o, "10.0.0.3/32", "10.0.0.3", "exp-null"); },
       {"16: pop via e1 10.1.12.1", "17: swap [0] via e2 10.1.23.3"}},
      {"the label of a neighbour not in use is not switched to",
       [&](FrrOutputs &o) { remote(o, "10.0.0.3/32", "10.0.0.1", "40"); },
       {"16: pop via e1 10.1.12.1", "17: pop via e2 10.1.23.3"}},
      {"no IGP route, no label route",
       [](FrrOutputs &o) { o.routes = "{}"; },
       {}},
      {"nothing from LDP", [](FrrOutputs &o) { o.ldpBindings = ""; }, {}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.what);
    FrrOutputs outputs = r2();
    c.change(outputs);
    const json state = LspPingTool::frrState(outputs);
    EXPECT_EQ(routes(state), c.routes);
    EXPECT_NO_THROW(LspPingTool::loadStateDocument(state, "r2"));
  }
}

TEST(FrrState, BadOutputIsOneLineNamingCommandAndPlace) {
  const std::pair<std::function<void(FrrOutputs &)>, std::string> cases[] = {
      {[](FrrOutputs &o) { o.ldpBindings = "{\"bindings\":["; },
       "show mpls ldp binding json: parse error at line 1, column 14: syntax "
       "error while parsing value - "
       "unexpected end of input; expected '[', '{', or a literal"},
      {[](FrrOutputs &o) {
         o.ldpBindings = R"({"bindings":[{"addressFamily":"ipv4",
           "prefix":"10.0.0.9/32","neighborId":"10.0.0.1",
           "localLabel":"lots","remoteLabel":"-","inUse":0}]})";
       },
       "show mpls ldp binding json: /bindings/0/localLabel: 'lots' is not "
       "a label (a number, imp-null, exp-null or -)"},
      {[](FrrOutputs &o) { o.routes = R"({"10.0.0.3/32":{}})"; },
       "show ip route json: /10.0.0.3~132: expected an array, got {}"},
  };
  for (const auto &[change, message] : cases) {
    FrrOutputs outputs = r2();
    change(outputs);
    try {
      LspPingTool::frrState(outputs);
      ADD_FAILURE() << "no error, expected " << message;
    } catch (const LspPingTool::StateSourceError &e) {
      EXPECT_EQ(e.what(), message);
    }
  }
}

TEST(StateCombine, TheFileWinsAndRoutesKeepTheirVias) {
  const json frr = LspPingTool::frrState(r2());
  const json file = json::parse(R"({
    "bindings": {"ldp": [{"fec": "10.0.0.3/32", "labels": [{"label": 99}]}]},
    "lfib": {
      "routes": [{"label": 16, "viaSet": 1, "source": "static"}],
      "viaSets": [{"key": 1, "type": "mpls", "vias": [1]}],
      "vias": [{"key": 1, "interface": "e2", "nexthop": "10.1.23.3",
                "action": "swap", "labels": [40]}]}})");
  const json state = LspPingTool::combineStates(file, frr);
  EXPECT_EQ(ldpBindings(state).at("10.0.0.3/32"), 99u) << state.dump();
  EXPECT_EQ(ldpBindings(state).at("10.0.0.1/32"), 16u);
  EXPECT_EQ(routes(state),
            (std::vector<std::string>{"16: swap [40] via e2 10.1.23.3",
                                      "17: pop via e2 10.1.23.3"}));
  EXPECT_NO_THROW(LspPingTool::loadStateDocument(state, "combined"));
}

// The path an ingress takes into a FEC's LSP, from r2's state: a label
// route's first via, or why there is none.
TEST(StatePaths, TheIngressFollowsTheBindingsLabelRoute) {
  json state = LspPingTool::frrState(r2());
  state["fib"].push_back(json::parse(R"({"fec": "10.0.0.9/32", "vias": [
    {"interface": "e1", "nexthop": "10.1.12.1", "action": "push",
     "labels": [16009]}]})"));
  state["bindings"]["ldp"].push_back(
      json::parse(R"({"fec": "10.0.0.8/32", "labels": ["x"]})"));
  const std::pair<std::string, std::string> cases[] = {
      {"ldp=10.0.0.3/32", "[] e2 10.1.23.3 LDP binding 17"},
      {"ldp=10.0.0.1", "[] e1 10.1.12.1 LDP binding 16"},
      {"sr=10.0.0.9/32,isis", "[16009] e1 10.1.12.1 IP route"},
      {"ldp=10.0.0.2/32", "10.0.0.2/32: this router is its egress (LDP "
                          "binding: implicit null)"},
      {"ldp=10.0.0.9/32", "no LDP binding for 10.0.0.9/32"},
      {"sr=10.0.0.3/32", "no IS-IS binding for 10.0.0.3/32"},
      {"ldp=10.0.0.8/32",
       "ldp=10.0.0.8/32: the state's entries for it are malformed ("},
  };
  const LspPingTool::StatePaths paths(state);
  for (const auto &[fec, expected] : cases) {
    std::string error;
    const auto path = paths.path(fec, error);
    const std::string said = path ? json(path->labels).dump() + " " +
                                        path->interface + " " + path->nexthop +
                                        " " + path->entry
                                  : error;
    EXPECT_EQ(said.substr(0, expected.size()), expected) << fec;
  }
}

// A route message of `family` to `label` (MPLS) or 10.0.0.0/8, out of
// interface 7 to 10.1.23.3, swapping to 20.
void putRoute(char *buffer, unsigned char family) {
  nlmsghdr *msg = mnl_nlmsg_put_header(buffer);
  msg->nlmsg_type = RTM_NEWROUTE;
  msg->nlmsg_flags = NLM_F_MULTI;
  auto *route =
      static_cast<rtmsg *>(mnl_nlmsg_put_extra_header(msg, sizeof(rtmsg)));
  route->rtm_family = family;
  route->rtm_protocol = RTPROT_STATIC;
  if (family == AF_MPLS) {
    route->rtm_dst_len = 20;
    mnl_attr_put_u32(msg, RTA_DST, htonl((17u << 12) | 0x100));
    mnl_attr_put_u32(msg, RTA_NEWDST, htonl((20u << 12) | 0x100));
    const unsigned char via[] = {AF_INET, 0, 10, 1, 23, 3};
    mnl_attr_put(msg, RTA_VIA, sizeof via, via);
  } else {
    route->rtm_dst_len = 8;
    mnl_attr_put_u32(msg, RTA_DST, htonl(0x0a000000));
    mnl_attr_put_u32(msg, RTA_GATEWAY, htonl(0x0a011703));
  }
  mnl_attr_put_u32(msg, RTA_OIF, 7);
}

TEST(KernelMplsRoutes, OnlyLabelRoutesAreTaken) {
  const auto name = [](unsigned index) {
    return index == 7 ? std::string("e2") : std::string();
  };
  std::string buffer(MNL_SOCKET_BUFFER_SIZE, '\0');
  putRoute(buffer.data(), AF_INET);
  const std::string ipv4(
      buffer.data(), reinterpret_cast<nlmsghdr *>(buffer.data())->nlmsg_len);
  putRoute(buffer.data(), AF_MPLS);
  const std::string mpls(
      buffer.data(), reinterpret_cast<nlmsghdr *>(buffer.data())->nlmsg_len);

  const auto withoutMpls = LspPingTool::kernelMplsState({ipv4, ipv4}, name);
  EXPECT_FALSE(withoutMpls.mplsRouting);
  EXPECT_TRUE(routes(withoutMpls.document).empty());

  const auto withMpls =
      LspPingTool::kernelMplsState({ipv4 + mpls, "short"}, name);
  EXPECT_TRUE(withMpls.mplsRouting);
  EXPECT_EQ(routes(withMpls.document),
            (std::vector<std::string>{"17: swap [20] via e2 10.1.23.3"}));
  EXPECT_NO_THROW(LspPingTool::loadStateDocument(withMpls.document, "kernel"));
}

} // namespace
