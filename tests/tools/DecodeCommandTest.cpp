// `lspping decode` run as a user runs it, on the example captures: the
// verdicts seen here are the echo parser's, reached through the frame parser
// and the UDP-length trimming of the tool.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <span>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "RunProgram.h"
#include "ToolTestSupport.h"
#include "tools/Pcap.h"

namespace {

using LspPingTest::quoted;
using LspPingTest::runLspping;
using nlohmann::json;

std::filesystem::path example(const std::string &name) {
  const char *env = std::getenv("LSPPING_SOURCE_DIR");
  return std::filesystem::path(env ? env : LSPPING_SOURCE_DIR) / "examples" /
         name;
}

// `status` is 1 when a frame is no valid echo message.
std::vector<json> decodeJson(const std::string &args, int status = 0) {
  const auto run = runLspping("decode --json " + args);
  EXPECT_EQ(run.status, status) << run.output;
  std::vector<json> frames;
  std::istringstream lines(run.output);
  for (std::string line; std::getline(lines, line);) {
    frames.push_back(json::parse(line));
  }
  return frames;
}

TEST(DecodeCommand, Requests) {
  const auto frames = decodeJson(quoted(example("request.pcap")));
  ASSERT_EQ(frames.size(), 2u);
  const json &f = frames[0];
  EXPECT_EQ(f["frame"], 1);
  EXPECT_EQ(f["valid"], true);
  EXPECT_EQ(f["reason"], "");
  EXPECT_EQ(f["tlvSupported"], true);
  const json header = {
      {"version", 1},
      {"globalFlags", 0},
      {"messageType", 1},
      {"replyMode", 2},
      {"returnCode", 0},
      {"returnSubcode", 0},
      {"senderHandle", 7},
      {"sequenceNumber", 1},
      {"tsSentSeconds", 3944678400u},
      {"tsSentmSeconds", 0},
      {"tsRcvdSeconds", 0},
      {"tsRcvdmSeconds", 0},
  };
  EXPECT_EQ(f["header"], header);
  // Ethernet 14 + two labels 8 + IPv4 with Router Alert 24 + UDP 8 + echo
  // header 32: the Target FEC Stack starts at byte 86 of the frame.
  EXPECT_EQ(f["tlvs"], json::parse(R"([{"type":1,"offset":86,"length":16,
      "decoded":{"valid":true,"reason":"",
                 "fec":{"kind":"prefix","prefix":"10.1.1.1/32"},
                 "subTlvs":["ldpIpv4"]}}])"));

  const json &pw = frames[1];
  EXPECT_EQ(pw["valid"], true);
  EXPECT_EQ(pw["header"]["sequenceNumber"], 2);
  EXPECT_EQ(pw["tlvs"], json::parse(R"([{"type":1,"offset":86,"length":24,
      "decoded":{"valid":true,"reason":"",
                 "fec":{"kind":"pseudowire","senderAddr":"10.0.0.1",
                        "receiverAddr":"10.0.0.9","pwId":42,"pwType":5},
                 "subTlvs":["fec128Ipv4"]}}])"));
}

TEST(DecodeCommand, Replies) {
  const auto frames = decodeJson(quoted(example("reply.pcap")));
  ASSERT_EQ(frames.size(), 2u);
  const json &v6 = frames[0];
  EXPECT_EQ(v6["valid"], true);
  EXPECT_EQ(v6["header"]["messageType"], 2);
  EXPECT_EQ(v6["header"]["returnCode"], 3);
  EXPECT_EQ(v6["header"]["returnSubcode"], 1);
  EXPECT_EQ(v6["tlvs"], json::array());
  EXPECT_EQ(v6["tlvSupported"], true);

  // Label switched, with where the request came from and where it goes on.
  // The Interface and Label Stack is a TLV the echo parser leaves to
  // others, so the message is not one of supported TLVs only.
  const json &switched = frames[1];
  EXPECT_EQ(switched["valid"], true);
  EXPECT_EQ(switched["header"]["returnCode"], 8);
  EXPECT_EQ(switched["tlvSupported"], false);
  // Ethernet 14 + IPv4 20 + UDP 8 + echo header 32: the mapping at 74.
  EXPECT_EQ(switched["tlvs"], json::parse(R"([
      {"type":2,"offset":74,"length":36,
       "decoded":{"valid":true,"reason":"","mtu":1500,"addrType":1,
                  "dsFlags":0,"dsIpAddr":"10.0.0.3","dsIntfAddr":"10.0.2.3",
                  "multipathType":8,"depthLimit":0,
                  "dsMultipathBaseAddr":"127.0.0.0",
                  "dsMultipathBitset":"f0000000",
                  "labelStack":[
                    {"label":300,"tc":0,"bos":false,"protocol":3},
                    {"label":16009,"tc":5,"bos":true,"protocol":6}]}},
      {"type":7,"offset":110,"length":24,
       "decoded":{"valid":true,"reason":"","addr":"10.0.0.2",
                  "intf":"10.0.1.2","labelStack":[100,200]}}])"));
}

TEST(DecodeCommand, MalformedFramesGetTheirReasons) {
  struct Verdict {
    bool valid;
    std::string reason;
    bool tlvSupported;
    bool hasHeader;
  };
  const std::vector<Verdict> expected = {
      {false, "LspPingHdr is corrupted", false, false},
      {false, "Invalid lspPingHdr", false, false},
      {false, "Request message must have Target Fec TLV", false, true},
      {false, "Invalid totalLength in TLV hdr", false, true},
      {false, "Msg/Tlv is corrupted/truncated", false, true},
      {false, "Msg/Tlv header is corrupted", false, true},
      {true, "", false, true},
      {false, "not an MPLS echo message: Not an IP packet", false, false},
      {true, "", true, true},
  };
  const auto frames = decodeJson(quoted(example("malformed.pcap")), 1);
  ASSERT_EQ(frames.size(), expected.size());
  for (std::size_t i = 0; i < frames.size(); ++i) {
    SCOPED_TRACE("frame " + std::to_string(i + 1));
    const json &f = frames[i];
    EXPECT_EQ(f["frame"], i + 1);
    EXPECT_EQ(f["valid"], expected[i].valid);
    EXPECT_EQ(f["reason"], expected[i].reason);
    EXPECT_EQ(f["tlvSupported"], expected[i].tlvSupported);
    EXPECT_EQ(!f["header"].is_null(), expected[i].hasHeader);
    EXPECT_EQ(f.size(), 6u) << f.dump();
  }
  // The Interface and Label Stack TLV is the message's only one: neither
  // the bytes past the UDP length nor the trailer past the IP packet were
  // taken for a TLV, nor read by the TLV's parser, which finds it short.
  EXPECT_EQ(frames[6]["tlvs"], json::parse(R"([{"type":7,"offset":74,
      "length":8,"decoded":{"valid":false,
                            "reason":"IntfAndLabelStack TLV is corrupted"}}])"));
  EXPECT_EQ(frames[7]["tlvs"], json::array());
  // A message that reads, with a Target FEC Stack that does not.
  EXPECT_EQ(frames[8]["tlvs"], json::parse(R"([{"type":1,"offset":78,
      "length":12,"decoded":{"valid":false,
                             "reason":"Msg/Tlv is corrupted/truncated"}}])"));
}

TEST(DecodeCommand, SeveralFilesNumberFramesPerFile) {
  const auto frames = decodeJson(quoted(example("request.pcap")) + " " +
                                     quoted(example("malformed.pcap")) + " " +
                                     quoted(example("reply.pcap")),
                                 1);
  ASSERT_EQ(frames.size(), 13u);
  EXPECT_EQ(frames[1]["frame"], 2);
  EXPECT_EQ(frames[2]["frame"], 1);
  EXPECT_EQ(frames[10]["frame"], 9);
  EXPECT_EQ(frames[11]["frame"], 1);
}

TEST(DecodeCommand, TextOutput) {
  auto run = runLspping("decode " + quoted(example("malformed.pcap")));
  EXPECT_EQ(run.status, 1);
  for (const char *line : {
           "frame 1: invalid: LspPingHdr is corrupted\n",
           "frame 7: valid\n  header: ",
           "  tlv type 7 offset 74 length 8\n"
           "    interface and label stack: invalid: IntfAndLabelStack TLV is "
           "corrupted\n",
           "frame 8: not an MPLS echo message (Not an IP packet)\n",
           "  tlv type 1 offset 78 length 12\n"
           "    target FEC: invalid: Msg/Tlv is corrupted/truncated\n"
           "  tlvSupported: true\n",
       }) {
    EXPECT_NE(run.output.find(line), std::string::npos) << line << run.output;
  }

  run = runLspping("decode " + quoted(example("request.pcap")) + " " +
                   quoted(example("reply.pcap")));
  EXPECT_EQ(run.status, 0);
  for (const char *line : {
           "  tlv type 1 offset 86 length 16\n"
           "    target FEC: prefix 10.1.1.1/32\n"
           "    sub-TLVs: ldpIpv4\n",
           "    target FEC: pseudowire senderAddr 10.0.0.1 receiverAddr "
           "10.0.0.9 pwId 42 pwType 5\n"
           "    sub-TLVs: fec128Ipv4\n",
           "  tlv type 2 offset 74 length 36\n"
           "    downstream mapping: mtu 1500 addrType 1 dsFlags 0 dsIpAddr "
           "10.0.0.3 dsIntfAddr 10.0.2.3 depthLimit 0\n"
           "    multipath: type 8 base 127.0.0.0 bitset f0000000\n"
           "    label 300 tc 0 bos false protocol 3\n"
           "    label 16009 tc 5 bos true protocol 6\n"
           "  tlv type 7 offset 110 length 24\n"
           "    interface and label stack: addr 10.0.0.2 intf 10.0.1.2 "
           "labelStack [100, 200]\n"
           "  tlvSupported: false\n",
       }) {
    EXPECT_NE(run.output.find(line), std::string::npos) << line << run.output;
  }
}

// The example messages cut short at every byte, and with each byte in turn
// inverted, all decode: the TLV parsers meet TLVs that end early and
// lengths and types that lie, and the program neither fails nor writes a
// line that is not JSON.
TEST(DecodeCommand, DamagedMessagesStillDecode) {
  std::vector<std::vector<std::uint8_t>> damaged;
  for (const char *name : {"request.pcap", "reply.pcap"}) {
    LspPingTool::PcapReader reader(example(name).string());
    ASSERT_TRUE(reader.ok()) << reader.error();
    std::span<const std::uint8_t> frame;
    while (reader.next(frame)) {
      for (std::size_t n = 0; n < frame.size(); ++n) {
        damaged.emplace_back(frame.begin(), frame.begin() + n);
        damaged.emplace_back(frame.begin(), frame.end());
        damaged.back()[n] ^= 0xff;
      }
    }
  }
  const auto dir = std::filesystem::temp_directory_path() /
                   ("lspping-damaged-test-" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  const auto capture = dir / "damaged.pcap";
  LspPingTest::writeCapture(capture, damaged);
  const auto run = runLspping("decode --json " + quoted(capture));
  EXPECT_EQ(run.status, 1);
  std::istringstream lines(run.output);
  std::size_t count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_TRUE(json::accept(line)) << line;
  }
  EXPECT_EQ(count, damaged.size());
  EXPECT_EQ(runLspping("decode " + quoted(capture) + " >/dev/null").status, 1);
  std::filesystem::remove_all(dir);
}

TEST(DecodeCommand, HelpDocumentsTheOptions) {
  const auto run = runLspping("decode --help");
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.output.find("--json"), std::string::npos) << run.output;
  EXPECT_NE(run.output.find("FILE"), std::string::npos) << run.output;
}

} // namespace
