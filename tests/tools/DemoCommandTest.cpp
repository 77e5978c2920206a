// `lspping demo` as a user runs it: two LSP pings through the in-process
// network, printed as ping prints them, then a trace and a tree trace.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "RunProgram.h"

namespace {

std::vector<std::string> lines(const std::string &text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    out.push_back(line);
  }
  return out;
}

// Five requests per LSP, each answered over a 15.625 ms link: the healthy
// LSP's egress says so, the broken one's label does not match the binding.
TEST(DemoCommand, PingsAHealthyAndABrokenLsp) {
  const LspPingTest::ProgramRun run = LspPingTest::runLspping("demo");
  EXPECT_EQ(run.status, 0);
  std::vector<std::string> expected{
      "Two routers in one process, on virtual time: pe1 Ethernet1 to pe2 "
      "Ethernet1, 15.625 ms each way.",
      "", "A healthy LSP: pe2 is the egress of 10.0.0.2/32.",
      "LSP ping 10.0.0.2/32 (LDP), label 3 (implicit null), from pe1 on "
      "Ethernet1:"};
  for (int seq = 1; seq <= 5; ++seq) {
    expected.push_back("seq=" + std::to_string(seq) +
                       " reply from 10.0.0.2: repRouterEgress (code 3, "
                       "subcode 1) time=31.250 ms");
  }
  expected.insert(
      expected.end(),
      {"--- 10.0.0.2/32 LSP ping statistics ---",
       "5 requests sent, 5 replies received, 0% loss",
       "round-trip min/avg/max/mdev = 31.250/31.250/31.250/0.000 ms", "",
       "A broken LSP: pe1 sends label 1001, but pe2 bound 10.0.0.3/32 to "
       "label 1000.",
       "LSP ping 10.0.0.3/32 (LDP), label 1001, TTL 1, from pe1 on "
       "Ethernet1:"});
  for (int seq = 1; seq <= 5; ++seq) {
    expected.push_back("seq=" + std::to_string(seq) +
                       " reply from 10.0.0.2: labelMappingMismatch (code "
                       "10, subcode 1) time=31.250 ms");
  }
  expected.insert(
      expected.end(),
      {"--- 10.0.0.3/32 LSP ping statistics ---",
       "5 requests sent, 5 replies received, 0% loss",
       "round-trip min/avg/max/mdev = 31.250/31.250/31.250/0.000 ms", ""});
  const std::vector<std::string> all = lines(run.output);
  ASSERT_GE(all.size(), expected.size());
  EXPECT_EQ(
      std::vector<std::string>(all.begin(), all.begin() + expected.size()),
      expected);
}

// A trace along 127.0.0.1's path reaches the egress; the tree trace finds
// the other branch, broken at p3.
TEST(DemoCommand, TracesTheHealthyPathAndTheTreeWithItsBrokenBranch) {
  const LspPingTest::ProgramRun run = LspPingTest::runLspping("demo");
  EXPECT_EQ(run.status, 0) << "a broken branch shown is not a failure";
  const std::vector<std::string> expected{
      "Five routers, 15.625 ms per link: pe1 10.0.0.1, p1 10.0.0.2, p2 "
      "10.0.0.3, p3 10.0.0.4, pe2 10.0.0.5.",
      "p1 spreads 10.0.0.5/32 over p2 and p3 (ECMP) by IP destination; both "
      "pop to pe2, its egress.",
      "The p3 branch is broken: p1 swaps to label 3006, but p3 bound "
      "10.0.0.5/32 to 3005.",
      "",
      "LSP trace 10.0.0.5/32 (LDP), label 1005, from pe1 on Ethernet1, TTL "
      "limit 8, time-out 2 s:",
      "  1  10.0.0.2         labelSwitchedAtStackDep(8/1)  mtu 1500  labels "
      "[2005 ldp]  time 31.250 ms",
      "                      downstream 10.0.0.3  mtu 1500  labels [2005 ldp]",
      "                      downstream 10.0.0.4  mtu 1500  labels [3006 ldp]",
      "  2  10.0.0.3         labelSwitchedAtStackDep(8/1)  mtu 1500  labels [3 "
      "ldp]  time 62.500 ms",
      "  3  10.0.0.5         repRouterEgress(3/1)  time 93.750 ms",
      "--- 10.0.0.5/32 LSP trace: egress 10.0.0.5 reached at TTL 3",
      "",
      "LSP tree trace 10.0.0.5/32 (LDP), label 1005, from pe1 on Ethernet1, 16 "
      "destinations 127.0.0.1-16, TTL limit 8, time-out 2 s:",
      "path 1 of 2 (127.0.0.1-2,4-5,11-12,15): egress 10.0.0.5 reached at TTL "
      "3",
      "  1  10.0.0.2         labelSwitchedAtStackDep(8/1)  mtu 1500  labels "
      "[2005 ldp]  time 31.250 ms",
      "                      downstream 10.0.0.3  mtu 1500  labels [2005 ldp]  "
      "(this path)",
      "                      downstream 10.0.0.4  mtu 1500  labels [3006 ldp]",
      "  2  10.0.0.3         labelSwitchedAtStackDep(8/1)  mtu 1500  labels [3 "
      "ldp]  time 62.500 ms",
      "  3  10.0.0.5         repRouterEgress(3/1)  time 93.750 ms",
      "path 2 of 2 (127.0.0.3,6-10,13-14,16): labelMappingMismatch(10/1) at "
      "10.0.0.4, TTL 2",
      "  1  10.0.0.2         labelSwitchedAtStackDep(8/1)  mtu 1500  labels "
      "[3006 ldp]  time 31.250 ms",
      "                      downstream 10.0.0.3  mtu 1500  labels [2005 ldp]",
      "                      downstream 10.0.0.4  mtu 1500  labels [3006 ldp]  "
      "(this path)",
      "  2  10.0.0.4         labelMappingMismatch(10/1)  time 62.500 ms",
      "--- 10.0.0.5/32 LSP tree trace: 2 paths, 1 reaches the egress, 1 does "
      "not (20 requests)",
      "broken: 10.0.0.2 -> 10.0.0.4: labelMappingMismatch(10/1) at 10.0.0.4, "
      "TTL 2, for 127.0.0.3,6-10,13-14,16"};
  const std::vector<std::string> all = lines(run.output);
  ASSERT_GE(all.size(), expected.size());
  EXPECT_EQ(std::vector<std::string>(all.end() - expected.size(), all.end()),
            expected);
}

TEST(DemoCommand, WritesTheTreeAsAGraph) {
  const LspPingTest::ProgramRun run = LspPingTest::runLspping("demo --dot -");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output.rfind("digraph \"lsp-trace\" {\n", 0), 0u)
      << "the graph alone";
  EXPECT_EQ(lines(run.output).back(), "}");

  const LspPingTest::ProgramRun failed =
      LspPingTest::runLspping("demo --dot /nonexistent/tree.dot 2>/dev/null");
  EXPECT_EQ(failed.status, 2);
  EXPECT_EQ(failed.output, "");
}

} // namespace
