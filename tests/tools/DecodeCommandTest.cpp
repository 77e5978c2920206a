// `lspping decode` run as a user runs it, on the example captures: the
// verdicts seen here are the echo parser's, reached through the frame parser
// and the UDP-length trimming of the tool.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "RunProgram.h"
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

std::vector<json> decodeJson(const std::string &args) {
  const auto run = runLspping("decode --json " + args);
  EXPECT_EQ(run.status, 0) << run.output;
  std::vector<json> frames;
  std::istringstream lines(run.output);
  for (std::string line; std::getline(lines, line);) {
    frames.push_back(json::parse(line));
  }
  return frames;
}

TEST(DecodeCommand, LabelledRequest) {
  const auto frames = decodeJson(quoted(example("request.pcap")));
  ASSERT_EQ(frames.size(), 1u);
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
  EXPECT_EQ(f["tlvs"], json::parse(R"([{"type":1,"offset":86,"length":16}])"));
}

TEST(DecodeCommand, Ipv6Reply) {
  const auto frames = decodeJson(quoted(example("reply.pcap")));
  ASSERT_EQ(frames.size(), 1u);
  const json &f = frames[0];
  EXPECT_EQ(f["valid"], true);
  EXPECT_EQ(f["header"]["messageType"], 2);
  EXPECT_EQ(f["header"]["returnCode"], 3);
  EXPECT_EQ(f["header"]["returnSubcode"], 1);
  EXPECT_EQ(f["tlvs"], json::array());
  EXPECT_EQ(f["tlvSupported"], true);
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
  };
  const auto frames = decodeJson(quoted(example("malformed.pcap")));
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
  // The unknown TLV is the message's only one: neither the bytes past the
  // UDP length nor the trailer past the IP packet were taken for a TLV.
  EXPECT_EQ(frames[6]["tlvs"],
            json::parse(R"([{"type":7,"offset":74,"length":8}])"));
  EXPECT_EQ(frames[7]["tlvs"], json::array());
}

TEST(DecodeCommand, SeveralFilesNumberFramesPerFile) {
  const auto frames = decodeJson(quoted(example("request.pcap")) + " " +
                                 quoted(example("malformed.pcap")) + " " +
                                 quoted(example("reply.pcap")));
  ASSERT_EQ(frames.size(), 10u);
  EXPECT_EQ(frames[0]["frame"], 1);
  EXPECT_EQ(frames[1]["frame"], 1);
  EXPECT_EQ(frames[8]["frame"], 8);
  EXPECT_EQ(frames[9]["frame"], 1);
}

TEST(DecodeCommand, TextOutput) {
  const auto run = runLspping("decode " + quoted(example("malformed.pcap")));
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.output.find("frame 1: invalid: LspPingHdr is corrupted\n"),
            std::string::npos)
      << run.output;
  EXPECT_NE(run.output.find("frame 7: valid\n  header: "), std::string::npos)
      << run.output;
  EXPECT_NE(run.output.find("  tlv type 7 offset 74 length 8\n"),
            std::string::npos)
      << run.output;
  EXPECT_NE(
      run.output.find("frame 8: not an MPLS echo message (Not an IP packet)\n"),
      std::string::npos)
      << run.output;
}

TEST(DecodeCommand, RefusesWhatItCannotRead) {
  const auto dir = std::filesystem::temp_directory_path() /
                   ("lspping-decode-test-" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  const auto raw = dir / "raw-ip.pcap";
  {
    LspPingTool::PcapWriter writer(raw.string(), DLT_RAW);
    ASSERT_TRUE(writer.ok()) << writer.error();
  }
  // A file cut short inside its only frame.
  const auto cut = dir / "cut.pcap";
  {
    LspPingTool::PcapWriter writer(cut.string());
    ASSERT_TRUE(writer.ok()) << writer.error();
    const std::vector<std::uint8_t> frame(60, 0);
    writer.write(frame, 0, 0);
  }
  std::filesystem::resize_file(cut, 24 + 16 + 10);

  auto run = runLspping("decode " + quoted(raw) + " 2>&1");
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.output.find("is not Ethernet"), std::string::npos)
      << run.output;
  EXPECT_EQ(run.output.find('\n'), run.output.size() - 1) << run.output;

  run = runLspping("decode " + quoted(dir / "missing.pcap") + " 2>/dev/null");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "");

  // The other files are still decoded.
  run = runLspping("decode --json " + quoted(cut) + " " +
                   quoted(example("reply.pcap")) + " 2>/dev/null");
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.output.find("\"valid\":true"), std::string::npos) << run.output;

  EXPECT_EQ(runLspping("decode --bogus 2>/dev/null").status, 1);
  EXPECT_EQ(runLspping("decode 2>/dev/null").status, 1);
  EXPECT_EQ(runLspping("2>/dev/null").status, 1);
  std::filesystem::remove_all(dir);
}

TEST(DecodeCommand, HelpDocumentsTheOptions) {
  const auto run = runLspping("decode --help");
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.output.find("--json"), std::string::npos) << run.output;
  EXPECT_NE(run.output.find("FILE"), std::string::npos) << run.output;
}

} // namespace
