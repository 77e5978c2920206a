// `lspping demo` as a user runs it: two LSP pings through the in-process
// network, printed as ping prints them.
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
                       " reply from 10.0.0.2: repRouterEgress (subcode 1), "
                       "time=31.250 ms");
  }
  expected.insert(
      expected.end(),
      {"--- 10.0.0.2/32 LSP ping statistics ---",
       "5 requests sent, 5 replies received, 0% loss",
       "round-trip min/avg/max = 31.250/31.250/31.250 ms", "",
       "A broken LSP: pe1 sends label 1001, but pe2 bound 10.0.0.3/32 to "
       "label 1000.",
       "LSP ping 10.0.0.3/32 (LDP), label 1001, TTL 1, from pe1 on "
       "Ethernet1:"});
  for (int seq = 1; seq <= 5; ++seq) {
    expected.push_back("seq=" + std::to_string(seq) +
                       " reply from 10.0.0.2: labelMappingMismatch (subcode "
                       "1), time=31.250 ms");
  }
  expected.insert(expected.end(),
                  {"--- 10.0.0.3/32 LSP ping statistics ---",
                   "5 requests sent, 5 replies received, 0% loss",
                   "round-trip min/avg/max = 31.250/31.250/31.250 ms"});
  EXPECT_EQ(lines(run.output), expected);
}

} // namespace
