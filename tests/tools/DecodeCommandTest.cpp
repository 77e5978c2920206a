// `lspping decode` run as a user runs it, on the example captures: the
// verdicts seen here are the echo parser's, reached through the frame parser
// and the UDP-length trimming of the tool.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include "RunProgram.h"
#include "ToolTestSupport.h"
#include "tools/Pcap.h"

namespace {

using LspPingTest::jsonLines;
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
  return jsonLines(run.output);
}

class DecodeCommand : public LspPingTest::ScratchDirTest {
protected:
  DecodeCommand() : ScratchDirTest("lspping-decode-test-") {}
};

TEST_F(DecodeCommand, Requests) {
  const auto frames = decodeJson(quoted(example("request.pcap")));
  ASSERT_EQ(frames.size(), 2u);
  // Ethernet 14 + two labels 8 + IPv4 with Router Alert 24 + UDP 8 + echo
  // header 32: the Target FEC Stack starts at byte 86 of the frame.
  json expected = json::parse(R"({"frame":1,"valid":true,"reason":"",
      "header":{"version":1,"globalFlags":0,
                "messageType":1,"messageTypeName":"MplsEchoRequest",
                "replyMode":2,"replyModeName":"ReplyIpUdp",
                "returnCode":0,"returnCodeName":"noRetCode","returnSubcode":0,
                "senderHandle":7,"sequenceNumber":1,
                "tsSentSeconds":3944678400,"tsSentmSeconds":0,
                "tsRcvdSeconds":0,"tsRcvdmSeconds":0},
      "tlvs":[{"type":1,"typeName":"TargetFecStack","offset":86,"length":16,
               "decoded":{"valid":true,"reason":"",
                          "fec":{"kind":"prefix","prefix":"10.1.1.1/32"},
                          "subTlvs":["ldpIpv4"]}}],
      "tlvSupported":true})");
  expected["file"] = example("request.pcap").string();
  EXPECT_EQ(frames[0], expected);

  const json &pw = frames[1];
  EXPECT_EQ(pw["valid"], true);
  EXPECT_EQ(pw["header"]["sequenceNumber"], 2);
  EXPECT_EQ(pw["tlvs"][0]["decoded"], json::parse(R"({"valid":true,
      "reason":"","fec":{"kind":"pseudowire","senderAddr":"10.0.0.1",
                         "receiverAddr":"10.0.0.9","pwId":42,"pwType":5},
      "subTlvs":["fec128Ipv4"]})"));
}

TEST_F(DecodeCommand, Replies) {
  const auto frames = decodeJson(quoted(example("reply.pcap")));
  ASSERT_EQ(frames.size(), 2u);
  const json &v6 = frames[0];
  EXPECT_EQ(v6["valid"], true);
  EXPECT_EQ(v6["header"]["messageType"], 2);
  EXPECT_EQ(v6["header"]["returnCode"], 3);
  EXPECT_EQ(v6["header"]["returnCodeName"], "repRouterEgress");
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
      {"type":2,"typeName":"DownstreamMapping","offset":74,"length":36,
       "decoded":{"valid":true,"reason":"","mtu":1500,
                  "addrType":1,"addrTypeName":"ipv4Numbered",
                  "dsFlags":0,"dsIpAddr":"10.0.0.3","dsIntfAddr":"10.0.2.3",
                  "multipathType":8,"multipathTypeName":"maskedIpSetMultipath",
                  "depthLimit":0,"dsMultipathBaseAddr":"127.0.0.0",
                  "dsMultipathBitset":"f0000000",
                  "labelStack":[
                    {"label":300,"tc":0,"bos":false,"protocol":3,
                     "protocolName":"ldp"},
                    {"label":16009,"tc":5,"bos":true,"protocol":6,
                     "protocolName":"isis"}]}},
      {"type":7,"typeName":"IntfAndLabelStack","offset":110,"length":24,
       "decoded":{"valid":true,"reason":"","addr":"10.0.0.2",
                  "intf":"10.0.1.2","labelStack":[
                    {"label":100,"tc":0,"bos":false,"ttl":254},
                    {"label":200,"tc":0,"bos":true,"ttl":1}]}}])"));
}

TEST_F(DecodeCommand, MalformedFramesGetTheirReasons) {
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
    EXPECT_EQ(f.size(), 7u) << f.dump();
  }
  // The Interface and Label Stack TLV is the message's only one: neither
  // the bytes past the UDP length nor the trailer past the IP packet were
  // taken for a TLV, nor read by the TLV's parser, which finds it short.
  EXPECT_EQ(frames[6]["tlvs"], json::parse(R"([{"type":7,
      "typeName":"IntfAndLabelStack","offset":74,"length":8,
      "decoded":{"valid":false,
                 "reason":"IntfAndLabelStack TLV is corrupted"}}])"));
  EXPECT_EQ(frames[7]["tlvs"], json::array());
  // A message that reads, with a Target FEC Stack that does not.
  EXPECT_EQ(frames[8]["tlvs"][0]["decoded"], json::parse(R"({"valid":false,
      "reason":"Msg/Tlv is corrupted/truncated"})"));
}

// Each frame names its file and is numbered within it; a file that cannot
// be read to its end stops there, and the files after it are decoded.
TEST_F(DecodeCommand, SeveralFilesNameTheirFrames) {
  std::ifstream in(example("requests.pcap"), std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(in), {});
  // Cut inside the second frame.
  std::ofstream(path("cut.pcap"), std::ios::binary) << bytes.substr(0, 200);
  const std::vector<std::string> files = {example("request.pcap").string(),
                                          path("cut.pcap").string(),
                                          example("reply.pcap").string()};
  std::string args;
  for (const std::string &file : files) {
    args += " " + LspPingTest::quoted(file);
  }
  std::vector<std::pair<std::string, int>> seen;
  for (const json &frame : decodeJson(args + " 2>/dev/null", 2)) {
    seen.emplace_back(frame["file"], frame["frame"]);
  }
  EXPECT_EQ(seen, (std::vector<std::pair<std::string, int>>{{files[0], 1},
                                                            {files[0], 2},
                                                            {files[1], 1},
                                                            {files[2], 1},
                                                            {files[2], 2}}));
}

// What a network engineer reads: names beside numbers, the time stamps as
// UTC, one field a line.
TEST_F(DecodeCommand, TextOutput) {
  const std::pair<std::string, std::string> excerpts[] = {
      {"reply.pcap",
       "frame 2: valid\n"
       "  version:                  1\n"
       "  global flags:             0x0000\n"
       "  message type:             MplsEchoReply (2)\n"
       "  reply mode:               ReplyIpUdp (2)\n"
       "  return code:              labelSwitchedAtStackDep (8)\n"
       "  return subcode:           1\n"
       "  sender handle:            7\n"
       "  sequence number:          1\n"
       "  sent:                     2025-01-01 00:00:00.000000 "
       "UTC\n"
       "  received:                 2025-01-01 00:00:00.500000 "
       "UTC\n"
       "  TLV:                      DownstreamMapping (2), "
       "offset 74, length 36\n"
       "    MTU:                    1500\n"
       "    address type:           ipv4Numbered (1)\n"
       "    flags:                  0x00\n"
       "    downstream address:     10.0.0.3\n"
       "    interface address:      10.0.2.3\n"
       "    depth limit:            0\n"
       "    multipath type:         maskedIpSetMultipath (8)\n"
       "      base address:         127.0.0.0\n"
       "      mask:                 f0000000\n"
       "    label:                  300, traffic class 0, "
       "protocol ldp (3)\n"
       "    label:                  16009, traffic class 5, "
       "bottom of stack, protocol isis (6)\n"
       "  TLV:                      IntfAndLabelStack (7), "
       "offset 110, length 24\n"
       "    address:                10.0.0.2\n"
       "    interface:              10.0.1.2\n"
       "    label:                  100, traffic class 0, TTL 254\n"
       "    label:                  200, traffic class 0, bottom of stack, "
       "TTL 1\n"
       "  all TLVs supported:       no\n"},
      {"request.pcap", "  received:                 not set\n"
                       "  TLV:                      TargetFecStack (1), "
                       "offset 86, length 24\n"
                       "    FEC:                    pseudowire\n"
                       "      sender PE:            10.0.0.1\n"
                       "      receiver PE:          10.0.0.9\n"
                       "      PW ID:                42\n"
                       "      PW type:              5\n"
                       "    sub-TLVs:               fec128Ipv4\n"},
      {"malformed.pcap", "  received:                 2025-01-01 "
                         "00:00:00.500000 UTC\n"
                         "  TLV:                      IntfAndLabelStack (7), "
                         "offset 74, length 8\n"
                         "    invalid:                IntfAndLabelStack TLV "
                         "is corrupted\n"
                         "  all TLVs supported:       no\n"
                         "frame 8: not an MPLS echo message (Not an IP "
                         "packet)\n"},
  };
  for (const auto &[file, excerpt] : excerpts) {
    const auto run = runLspping("decode " + quoted(example(file)));
    EXPECT_EQ(run.output.rfind(example(file).string() + "\n", 0), 0u);
    EXPECT_NE(run.output.find(excerpt), std::string::npos) << run.output;
  }
}

// The example messages cut short at every byte, and with each byte in turn
// inverted, all decode: the TLV parsers meet TLVs that end early and
// lengths and types that lie, and the program neither fails nor writes a
// line that is not JSON.
TEST_F(DecodeCommand, DamagedMessagesStillDecode) {
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
  const auto capture = path("damaged.pcap");
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
}

} // namespace
