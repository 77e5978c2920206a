// An independent dissector reads the example captures as this project's
// tests build them: the checksums are right and the echo messages are seen
// as such. Skipped where tshark is not installed.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "RunProgram.h"

namespace {

using LspPingTest::quoted;
using LspPingTest::runCommand;

std::filesystem::path example(const std::string &name) {
  const char *env = std::getenv("LSPPING_SOURCE_DIR");
  return std::filesystem::path(env ? env : LSPPING_SOURCE_DIR) / "examples" /
         name;
}

// Per frame: protocol column, IPv4 and UDP checksum status (1 = good).
std::string dissect(const std::string &name) {
  return runCommand("tshark -r " + quoted(example(name)) +
                    " -o ip.check_checksum:TRUE -o udp.check_checksum:TRUE"
                    " -T fields -E separator=, -e _ws.col.Protocol"
                    " -e ip.checksum.status -e udp.checksum.status"
                    " 2>/dev/null")
      .output;
}

TEST(DissectorCrossCheck, ExampleMessagesAreWellFormedOnTheWire) {
  if (runCommand("command -v tshark >/dev/null 2>&1").status != 0) {
    GTEST_SKIP() << "tshark is not installed";
  }
  EXPECT_EQ(dissect("request.pcap"), "MPLS ECHO,1,1\n");
  // IPv6 has no header checksum.
  EXPECT_EQ(dissect("reply.pcap"), "MPLS ECHO,,1\n");
}

} // namespace
