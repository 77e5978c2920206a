// `lspping craft` run as a user runs it: what it writes reads back through
// `lspping decode`, bad values are refused with one line and nothing
// written, and the help names every option.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <filesystem>
#include <span>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "../LspPing/PktGenGoldenFrames.h"
#include "RunProgram.h"
#include "ToolTestSupport.h"
#include "tools/Pcap.h"

namespace {

using LspPingTest::quoted;
using LspPingTest::runLspping;
using nlohmann::json;

using LspPingTest::jsonLines;

// What `lspping decode --json` reads in the frames craft writes with `args`.
std::vector<json> craftedAndDecoded(const std::string &args) {
  const auto run =
      runLspping("craft " + args + " - | '" + std::string(LSPPING_PROGRAM) +
                 "' decode --json -");
  EXPECT_EQ(run.status, 0) << run.output;
  return jsonLines(run.output);
}

class CraftCommand : public LspPingTest::ScratchDirTest {
protected:
  CraftCommand() : ScratchDirTest("lspping-craft-test-") {}

  std::vector<std::vector<std::uint8_t>> frames(const std::string &name) {
    LspPingTool::PcapReader reader(path(name).string());
    EXPECT_TRUE(reader.ok()) << reader.error();
    std::vector<std::vector<std::uint8_t>> frames;
    std::span<const std::uint8_t> frame;
    while (reader.next(frame)) {
      frames.emplace_back(frame.begin(), frame.end());
    }
    return frames;
  }
};

TEST_F(CraftCommand, PipedIntoDecode) {
  const auto lines = craftedAndDecoded(
      "--label 100 --label 200/ttl=64/tc=3 --fec ldp=10.1.1.1/32 "
      "--sender-handle 9 --sequence 4294967295 --count 3 "
      "--timestamp 3972672000");
  ASSERT_EQ(lines.size(), 3u);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    SCOPED_TRACE(i);
    const json &f = lines[i];
    EXPECT_EQ(f["valid"], true) << f.dump();
    EXPECT_EQ(f["tlvSupported"], true);
    EXPECT_EQ(f["header"]["messageType"], 1);
    EXPECT_EQ(f["header"]["replyMode"], 2);
    EXPECT_EQ(f["header"]["senderHandle"], 9);
    // The sequence number wraps like the 32-bit field it is.
    EXPECT_EQ(f["header"]["sequenceNumber"], (4294967295u + i) & 0xffffffffu);
    EXPECT_EQ(f["header"]["tsSentSeconds"], 3972672000u + i);
    // Ethernet 14, two labels 8, IPv4 with Router Alert 24, UDP 8, echo
    // header 32: the Target FEC Stack starts at 86.
    EXPECT_EQ(f["tlvs"], json::parse(R"([{"type":1,"typeName":"TargetFecStack",
        "offset":86,"length":16,"decoded":{"valid":true,"reason":"",
                   "fec":{"kind":"prefix","prefix":"10.1.1.1/32"},
                   "subTlvs":["ldpIpv4"]}}])"));
  }
}

// Each kind of FEC comes back from the Target FEC Stack parser as given.
TEST_F(CraftCommand, EveryFecReadsBack) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"none", R"({"fec":{"kind":"none"},"subTlvs":[]})"},
      {"ldp=10.1.0.0/16",
       R"({"fec":{"kind":"prefix","prefix":"10.1.0.0/16"},
           "subTlvs":["ldpIpv4"]})"},
      {"rsvp=192.0.2.9,17,192.0.2.1,192.0.2.2,5",
       R"({"fec":{"kind":"rsvp","tunnelDst":"192.0.2.9","tunnelId":17,
                  "extendedTunnelId":"192.0.2.1","lspId":5,
                  "senderAddr":"192.0.2.2"},
           "subTlvs":["rsvpIpv4"]})"},
      {"sr=10.1.1.1/32,ospf",
       R"({"fec":{"kind":"prefix","prefix":"10.1.1.1/32"},
           "subTlvs":["srIpv4"]})"},
      {"sr=2001:db8::9/128",
       R"({"fec":{"kind":"prefix","prefix":"2001:db8::9/128"},
           "subTlvs":["srIpv6"]})"},
      {"nil=16", R"({"fec":{"kind":"nil","label":16},"subTlvs":["nilFec"]})"},
  };
  for (const auto &[fec, expected] : cases) {
    SCOPED_TRACE(fec);
    const auto lines = craftedAndDecoded("--label 100 --fec " + fec);
    ASSERT_EQ(lines.size(), 1u);
    json decoded = json::parse(expected);
    decoded["valid"] = true;
    decoded["reason"] = "";
    EXPECT_EQ(lines[0]["tlvs"][0]["decoded"], decoded) << lines[0].dump();
  }
}

// With the fields of the reference request, the frame is the generator's
// reference frame but for the sent time's fraction, which craft leaves 0.
TEST_F(CraftCommand, ReferenceRequest) {
  const auto out = path("reference.pcap");
  const auto run = runLspping(
      "craft --label 100 --label 200 --sender-handle 7 --sequence 42 "
      "--fec ldp=10.1.1.1 --timestamp 3972672000 " +
      quoted(out));
  ASSERT_EQ(run.status, 0) << run.output;
  const auto written = frames("reference.pcap");
  ASSERT_EQ(written.size(), 1u);
  auto expected =
      LspPingTest::hexBytes(LspPingTest::goldenFrames().front().hex);
  // The fraction 0x12345678 becomes 0, and the UDP checksum goes up by the
  // one's complement sum of the two words it leaves out, 0x68ac.
  for (std::size_t at = 74; at < 78; ++at) {
    expected[at] = 0;
  }
  expected[52] = 0x65;
  expected[53] = 0xb8;
  EXPECT_EQ(LspPingTest::hexLines(written[0]), LspPingTest::hexLines(expected));
}

TEST_F(CraftCommand, Ipv6WithSegmentRoutingFecAndDownstreamMapping) {
  const auto lines = craftedAndDecoded(
      "--src 2001:db8::1 --label 16009/ttl=64 --fec sr=2001:db8::9/128 "
      "--ds-map 2001:db8::2 --ds-label 300/tc=5/proto=isis "
      "--ds-label 3/proto=isis --ds-multipath ::ffff:127.0.0.0,40000000");
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0]["valid"], true) << lines[0].dump();
  // Ethernet 14, one label 4, IPv6 40, UDP 8, echo header 32: the FEC
  // stack (4 + 24) at 98, then the mapping: 4 + 40 + 16 + 4 + 4 + 4 + 4.
  const json &tlvs = lines[0]["tlvs"];
  ASSERT_EQ(tlvs.size(), 2u);
  EXPECT_EQ(tlvs[0]["type"], 1);
  EXPECT_EQ(tlvs[0]["offset"], 98);
  EXPECT_EQ(tlvs[0]["length"], 28);
  EXPECT_EQ(tlvs[0]["decoded"]["fec"]["prefix"], "2001:db8::9/128");
  EXPECT_EQ(tlvs[1]["decoded"], json::parse(R"({"valid":true,"reason":"",
      "mtu":1500,"addrType":3,"addrTypeName":"ipv6Numbered","dsFlags":0,
      "dsIpAddr":"2001:db8::2","dsIntfAddr":"2001:db8::2",
      "multipathType":8,"multipathTypeName":"maskedIpSetMultipath",
      "depthLimit":0,"dsMultipathBaseAddr":"::ffff:127.0.0.0",
      "dsMultipathBitset":"40000000",
      "labelStack":[
        {"label":300,"tc":5,"bos":false,"protocol":6,"protocolName":"isis"},
        {"label":3,"tc":0,"bos":true,"protocol":6,"protocolName":"isis"}]})"));
  EXPECT_EQ(tlvs[1]["offset"], 126);
  EXPECT_EQ(tlvs[1]["length"], 72);
}

TEST_F(CraftCommand, BadValuesAreRefusedWithOneLine) {
  const std::vector<std::string> bad = {
      "--label 1048576",
      "--label 100/ttl=256",
      "--label 100/tc=8",
      "--label 100/hops=2",
      "--label 100/ttl",
      "--src 10.0.0.256",
      "--src 10.0.0.1 --dst 2001:db8::1",
      "--src-mac 02:00:00:00:00",
      "--src-port 65536",
      "--sequence -1",
      "--count 0",
      "--timestamp soon",
      "--fec ldp=2001:db8::/32",
      "--fec ldp=10.1.1.1/33",
      "--fec rsvp=192.0.2.9,17,192.0.2.1,192.0.2.1",
      "--fec rsvp=192.0.2.9,65536,192.0.2.1,192.0.2.1,5",
      "--fec sr=10.1.1.1/32,bgp",
      "--fec nil",
      "--fec mpls=16",
      "--ds-map 10.0.0.2",
      "--ds-map 10.0.0.2 --ds-intf 2001:db8::2 --ds-label 3",
      "--ds-map 10.0.0.2 --ds-label 3/proto=rip",
      "--ds-map 10.0.0.2 --ds-label 3 --ds-multipath 127.0.0.0,800000",
      "--ds-map 10.0.0.2 --ds-label 3 --ds-multipath 127.0.0.0,8000000g",
      "--ds-map 10.0.0.2 --ds-label 3 --ds-multipath ::1,80000000",
      "--ds-label 3",
  };
  for (const std::string &options : bad) {
    SCOPED_TRACE(options);
    const auto out = path("bad.pcap");
    const auto run =
        runLspping("craft " + options + " " + quoted(out) + " 2>&1 >/dev/null");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.output.rfind("lspping: ", 0), 0u) << run.output;
    EXPECT_EQ(run.output.find('\n'), run.output.size() - 1) << run.output;
    EXPECT_FALSE(std::filesystem::exists(out));
  }
}

} // namespace
