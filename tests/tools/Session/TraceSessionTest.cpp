// Traces through the five routers of a TraceLab, as a user reads them.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "Kiv/VirtualTime.h"
#include "Netsim/SessionHost.h"
#include "Netsim/TraceLab.h"
#include "Session/Format.h"
#include "Session/TraceDot.h"
#include "Session/TraceSession.h"

namespace {

using Session::Path;
using Session::Trace;
using Session::TraceSession;

const Wirx::IntfId eth2("Ethernet2");
const Wirx::IntfId eth3("Ethernet3");

std::vector<std::string> lines(const std::string &text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    out.push_back(line);
  }
  return out;
}

// pe1 traces 10.0.0.5/32 across the lab, 15.625 ms per link.
struct Net {
  static TraceSession::Options options(bool tree = false) {
    TraceSession::Options options;
    options.maxTtl = 8;
    options.tree = tree;
    return options;
  }

  // Runs a trace to its end: what it printed hop by hop, then its summary.
  std::vector<std::string> run(const TraceSession::Options &options) {
    std::string printed;
    bool done = false;
    TraceSession::Events events;
    events.hop = [&](const Session::Hop &hop) {
      printed += Session::hopText(hop) + "\n";
    };
    events.done = [&](const Trace &result) {
      trace = result;
      printed += Session::traceSummary(result, result.target.fec.stringValue());
      done = true;
    };
    Session::Target target;
    target.fec = Netsim::TraceLab::fec();
    TraceSession session(host, 1, target, options, events);
    while (!done) {
      time.runFor(1);
    }
    return lines(printed);
  }
  std::vector<std::string> run() { return run(options()); }

  Orv::Ptr<Kiv::TimerWheel> wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time{wheel, 1'800'000'000.0};
  Netsim::Network network{wheel};
  Netsim::TraceLab lab{network, 1.0 / 64};
  Netsim::SessionHost host{lab.pe1};
  Trace trace;
};

const std::string p1Hop = "  1  10.0.0.2         labelSwitchedAtStackDep(8/1)  "
                          "mtu 1500  labels [2005 ldp]  time 31.250 ms";
const std::string p1Mappings[] = {
    "                      downstream 10.0.0.3  mtu 1500  labels [2005 ldp]",
    "                      downstream 10.0.0.4  mtu 1500  labels [3006 ldp]"};

// 127.0.0.1 hashes to the p2 branch at p1.
TEST(TraceSession, HealthyLspIsTracedToItsEgress) {
  Net net;
  EXPECT_EQ(
      net.run(),
      (std::vector<std::string>{
          p1Hop, p1Mappings[0], p1Mappings[1],
          "  2  10.0.0.3         labelSwitchedAtStackDep(8/1)  mtu 1500 "
          " labels [3 ldp]  time 62.500 ms",
          "  3  10.0.0.5         repRouterEgress(3/1)  time 93.750 ms",
          "--- 10.0.0.5/32 LSP trace: egress 10.0.0.5 reached at TTL 3"}));
  EXPECT_TRUE(net.trace.reachedEgress());
  EXPECT_EQ(net.trace.requests, 3u);
  EXPECT_EQ(net.trace.paths[0].hops[0].next, 0) << "the mapping to 10.0.0.3";
}

TEST(TraceSession, StopsAtTheBrokenHopWithItsCode) {
  Net net;
  net.lab.p1.forwardingState().swapRouteIs(Wirx::MplsLabel(1005), eth3,
                                           Wirx::IpAddr(0x0a000004),
                                           Wirx::MplsLabel(3006));
  EXPECT_EQ(net.run(),
            (std::vector<std::string>{
                "  1  10.0.0.2         labelSwitchedAtStackDep(8/1)  mtu 1500 "
                " labels [3006 ldp]  time 31.250 ms",
                "  2  10.0.0.4         labelMappingMismatch(10/1)  time 62.500 "
                "ms",
                "--- 10.0.0.5/32 LSP trace: labelMappingMismatch(10/1) at "
                "10.0.0.4, TTL 2"}));
  EXPECT_FALSE(net.trace.reachedEgress());
}

// p2 cannot reach pe2: the hops after it stay silent, until three in a row
// have or the TTL limit is reached.
TEST(TraceSession, SilentHopsEndThePath) {
  struct Case {
    Orv::U8 maxTtl;
    std::vector<std::string> after;
    Path::End end;
  };
  const Case cases[] = {
      {8,
       {"  3  *", "  4  *", "  5  *",
        "--- 10.0.0.5/32 LSP trace: no reply up to TTL 5"},
       Path::End::lost},
      {3,
       {"  3  *", "--- 10.0.0.5/32 LSP trace: TTL limit 3 reached"},
       Path::End::ttlLimit},
  };
  for (const Case &test : cases) {
    Net net;
    net.lab.p2pe2.upIs(false);
    TraceSession::Options options = Net::options();
    options.maxTtl = test.maxTtl;
    const std::vector<std::string> printed = net.run(options);
    ASSERT_GT(printed.size(), 4u);
    EXPECT_EQ(std::vector<std::string>(printed.begin() + 4, printed.end()),
              test.after);
    EXPECT_EQ(net.trace.paths[0].end, test.end);
  }
}

// p1 spreads the 16 destinations over p2 and p3: one path each. p1 answers
// with both mappings but does not tell which destination takes which, so
// the trace asks one hop further for each destination.
TEST(TreeTrace, FollowsBothBranchesAndFindsTheBrokenOne) {
  Net net;
  const std::vector<std::string> printed = net.run(Net::options(true));
  ASSERT_EQ(net.trace.paths.size(), 2u);
  const Path &healthy = net.trace.paths[0];
  const Path &broken = net.trace.paths[1];
  EXPECT_EQ(Session::routeText(healthy), "10.0.0.2 -> 10.0.0.3 -> 10.0.0.5");
  EXPECT_EQ(Session::endText(healthy), "egress 10.0.0.5 reached at TTL 3");
  EXPECT_EQ(Session::routeText(broken), "10.0.0.2 -> 10.0.0.4");
  EXPECT_EQ(Session::endText(broken),
            "labelMappingMismatch(10/1) at 10.0.0.4, TTL 2");
  EXPECT_EQ(Session::hopText(broken.hops[0]),
            "  1  10.0.0.2         labelSwitchedAtStackDep(8/1)  mtu 1500  "
            "labels [3006 ldp]  time 31.250 ms\n" +
                p1Mappings[0] + "\n" + p1Mappings[1] + "  (this path)");

  std::vector<Wirx::IpGenAddr> all = healthy.destinations;
  all.insert(all.end(), broken.destinations.begin(), broken.destinations.end());
  std::sort(all.begin(), all.end());
  EXPECT_EQ(Session::destinationsText(all), "127.0.0.1-16")
      << "each destination on exactly one path";
  EXPECT_FALSE(healthy.destinations.empty());
  EXPECT_FALSE(broken.destinations.empty());
  EXPECT_EQ(net.trace.requests, 4u + 16u) << "4 hops, 16 to find the split";
  EXPECT_EQ(printed.end()[-2],
            "--- 10.0.0.5/32 LSP tree trace: 2 paths, 1 reaches the egress, "
            "1 does not (20 requests)");
  EXPECT_EQ(printed.back(), "broken: 10.0.0.2 -> 10.0.0.4: "
                            "labelMappingMismatch(10/1) at 10.0.0.4, TTL 2, "
                            "for " +
                                Session::destinationsText(broken.destinations));
}

TEST(TreeTrace, CapsLeaveBranchesOut) {
  for (Orv::U32 cap : {0u, 1u}) {
    Net net;
    TraceSession::Options options = Net::options(true);
    (cap == 0 ? options.maxPaths : options.maxFanout) = 1;
    net.run(options);
    EXPECT_EQ(net.trace.paths.size(), 1u);
    EXPECT_EQ(net.trace.branchesNotFollowed, 1u);
  }
}

// What `dot` reads: each node once with its label and style, each edge
// with its label and whether it is red.
struct DotGraph {
  explicit DotGraph(const std::string &text) {
    const std::regex node(R"re(^  "([^"]+)" \[label="([^"]*)"(.*)\];$)re");
    const std::regex edge(
        R"re(^  "([^"]+)" -> "([^"]+)" \[label="([^"]*)"(.*)\];$)re");
    for (const std::string &line : lines(text)) {
      std::smatch m;
      if (std::regex_match(line, m, edge)) {
        edges.push_back(
            m[1].str() + " -> " + m[2].str() + " " +
            m[3].str().substr(0, m[3].str().find("\\n")) +
            (m[4].str().find("red") != std::string::npos ? " red" : ""));
      } else if (std::regex_match(line, m, node)) {
        nodes.push_back(m[1].str() + " " + m[2].str() +
                        (m[3].str().find("red") != std::string::npos ? " red"
                         : m[3].str().find("green") != std::string::npos
                             ? " green"
                             : ""));
      }
    }
  }
  std::vector<std::string> nodes;
  std::vector<std::string> edges;
};

TEST(TreeTrace, DotGraphShowsTheTreeWithItsBrokenBranchInRed) {
  Net net;
  net.run(Net::options(true));
  std::ostringstream dot;
  Session::writeDot(net.trace, dot);
  ASSERT_EQ(dot.str().rfind("digraph ", 0), 0u);
  const DotGraph graph(dot.str());
  EXPECT_EQ(
      graph.nodes,
      (std::vector<std::string>{
          "10.1.1.1 ingress\\n10.1.1.1", "10.0.0.2 10.0.0.2",
          "10.0.0.3 10.0.0.3", "10.0.0.5 10.0.0.5\\nrepRouterEgress(3/1) green",
          "10.0.0.4 10.0.0.4\\nlabelMappingMismatch(10/1) red"}));
  EXPECT_EQ(graph.edges,
            (std::vector<std::string>{"10.1.1.1 -> 10.0.0.2 [1005 ldp]",
                                      "10.0.0.2 -> 10.0.0.3 [2005 ldp]",
                                      "10.0.0.3 -> 10.0.0.5 [3 ldp]",
                                      "10.0.0.2 -> 10.0.0.4 [3006 ldp] red"}));
  EXPECT_NE(dot.str().find("[label=\"[1005 ldp]\\n127.0.0.1-16\"]"),
            std::string::npos)
      << "the first edge carries every destination";
}

} // namespace
