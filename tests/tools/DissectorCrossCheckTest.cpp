// An independent dissector reads the frames this project writes: the example
// captures as this project's tests build them, and the echo messages of the
// packet generator. The checksums are right and the echo messages are seen
// as such, field for field. Skipped where tshark is not installed.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "../LspPing/PktGenGoldenFrames.h"
#include "MplsUtils/EthPktParser.h"
#include "RunProgram.h"
#include "tools/Pcap.h"

namespace {

using LspPingTest::quoted;
using LspPingTest::runCommand;

std::filesystem::path example(const std::string &name) {
  const char *env = std::getenv("LSPPING_SOURCE_DIR");
  return std::filesystem::path(env ? env : LSPPING_SOURCE_DIR) / "examples" /
         name;
}

bool tsharkInstalled() {
  return runCommand("command -v tshark >/dev/null 2>&1").status == 0;
}

// One line per frame: the values of `fields`, separated by ';', several
// occurrences of a field joined by '|'. The IPv4 and UDP checksums are
// validated (status 1 is good, 2 bad).
std::vector<std::string> dissect(const std::filesystem::path &capture,
                                 const std::vector<std::string> &fields) {
  std::string command =
      "tshark -r " + quoted(capture) +
      " -o ip.check_checksum:TRUE -o udp.check_checksum:TRUE"
      " -T fields -E separator=';' -E aggregator='|' -E occurrence=a";
  for (const std::string &field : fields) {
    command += " -e " + field;
  }
  std::istringstream output(runCommand(command + " 2>/dev/null").output);
  std::vector<std::string> lines;
  for (std::string line; std::getline(output, line);) {
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> split(const std::string &line, char separator) {
  std::vector<std::string> parts;
  std::istringstream in(line);
  for (std::string part; std::getline(in, part, separator);) {
    parts.push_back(part);
  }
  if (!line.empty() && line.back() == separator) {
    parts.emplace_back();
  }
  return parts;
}

template <class Numbers> std::string joined(const Numbers &numbers) {
  std::string text;
  for (const auto number : numbers) {
    text += (text.empty() ? "" : "|") + std::to_string(number);
  }
  return text;
}

TEST(DissectorCrossCheck, ExampleMessagesAreWellFormedOnTheWire) {
  if (!tsharkInstalled()) {
    GTEST_SKIP() << "tshark is not installed";
  }
  const std::vector<std::string> fields = {
      "_ws.col.Protocol", "ip.checksum.status", "udp.checksum.status"};
  EXPECT_EQ(dissect(example("request.pcap"), fields),
            std::vector<std::string>{"MPLS ECHO;1;1"});
  // IPv6 has no header checksum.
  EXPECT_EQ(dissect(example("reply.pcap"), fields),
            std::vector<std::string>{"MPLS ECHO;;1"});
}

// What the dissector says about our frames that is not a fault of theirs:
// each expert message allowed, with the reason we send what it remarks on.
const std::map<std::string, std::string> allowedExpertMessages = {
    {"\"Time To Live\" only 1",
     "requests leave with IP TTL 1, so that one that leaves its LSP is not "
     "routed on (RFC 8029)"},
    {"Incorrect address type for TLV?",
     "the dissector knows TLV type 7 only in its IPv4 form; RFC 8029 gives "
     "the one Interface and Label Stack type both families, and our IPv6 "
     "replies carry address type 3 in it"},
};

// Where we differ from the public registry on purpose, the dissector must
// read exactly what we wrote and find no fault:
// - the segment-routing IPv4 prefix sub-TLV goes out as 0x7C00 (not the
//   registry's 34), the code our peers expect; the dissector does not know
//   it and shows its value bytes undecoded;
// - the segment-routing length fields say 6 and 18, leaving out the two
//   reserved bytes, which the dissector then takes for padding.
// Besides the fields every frame is checked for, one field per frame shows
// that the dissector decoded the TLV values where we put them.
const std::map<std::string, std::pair<std::string, std::string>> decodedValue =
    {
        {"LdpIpv4OverIpv4", {"mpls_echo.tlv.fec.ldp_ipv4", "10.1.1.1"}},
        {"RsvpIpv4OverIpv4", {"mpls_echo.tlv.fec.rsvp_ipv4_ep", "192.0.2.9"}},
        // 10.1.1.1, prefix length 32, IS-IS: the 6 bytes the length counts.
        {"SrIpv4OverIpv4", {"mpls_echo.tlv.fec.value", "0a0101012002"}},
        {"SrIpv6OverIpv6", {"mpls_echo.tlv.fec.igp_ipv6", "2001:db8::9"}},
        {"NilFecOverIpv6", {"mpls_echo.tlv.fec.nil_label", "100"}},
        {"IntfAndLabelStackIpv4", {"mpls_echo.tlv.ilso_ipv4.label", "100|200"}},
        {"IntfAndLabelStackIpv6", {"mpls_echo.tlv.ilso_ipv4.label", "100|200"}},
        {"DownstreamMappingIpv4", {"mpls_echo.tlv.ds_map.mp_label", "300|400"}},
        {"DownstreamMappingIpv4MaskedIpSet",
         {"mpls_echo.tlv.ds_map_mp.ip", "127.0.0.0"}},
        {"DownstreamMappingIpv6MaskedIpSet",
         {"mpls_echo.tlv.ds_map.ds_ipv6", "2001:db8::2"}},
};

TEST(DissectorCrossCheck, GeneratedFramesAreReadFieldForField) {
  if (!tsharkInstalled()) {
    GTEST_SKIP() << "tshark is not installed";
  }
  const auto &goldens = LspPingTest::goldenFrames();
  const auto dir = std::filesystem::temp_directory_path() /
                   ("lspping-dissector-test-" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  const auto capture = dir / "generated.pcap";
  {
    LspPingTool::PcapWriter writer(capture.string());
    ASSERT_TRUE(writer.ok()) << writer.error();
    for (const auto &golden : goldens) {
      writer.write(LspPingTest::build(golden), 1763683200u, 0);
    }
  }
  std::vector<std::string> fields = {
      "_ws.col.Protocol",        "mpls_echo.msg_type",
      "mpls_echo.sender_handle", "mpls_echo.sequence",
      "mpls_echo.tlv.type",      "mpls_echo.tlv.len",
      "mpls_echo.tlv.fec.type",  "mpls_echo.tlv.fec.len",
      "ip.checksum.status",      "udp.checksum.status",
      "_ws.malformed",           "_ws.expert.severity",
      "_ws.expert.message"};
  std::map<std::string, std::size_t> column;
  for (const auto &[name, value] : decodedValue) {
    if (!column.contains(value.first)) {
      column[value.first] = fields.size();
      fields.push_back(value.first);
    }
  }
  const std::vector<std::string> lines = dissect(capture, fields);
  std::filesystem::remove_all(dir);
  ASSERT_EQ(lines.size(), goldens.size());

  // The dissector's severity levels; below an error is a note or warning.
  constexpr long errorSeverity = 0x00800000;
  for (std::size_t i = 0; i < goldens.size(); ++i) {
    const auto &golden = goldens[i];
    SCOPED_TRACE(golden.name);
    const std::vector<std::string> got = split(lines[i], ';');
    ASSERT_EQ(got.size(), fields.size()) << lines[i];
    EXPECT_EQ(got[0], "MPLS ECHO");
    EXPECT_EQ(got[1], std::to_string(golden.messageType));
    EXPECT_EQ(got[2], "0x00000007");
    EXPECT_EQ(got[3], "42");
    EXPECT_EQ(got[4], joined(golden.tlvTypes));
    EXPECT_EQ(got[5], joined(golden.tlvLengths));
    const bool hasFec = golden.fecType != 0;
    EXPECT_EQ(got[6], hasFec ? std::to_string(golden.fecType) : "");
    EXPECT_EQ(got[7], hasFec ? std::to_string(golden.fecLength) : "");
    // IPv6 has no header checksum.
    const auto frame = LspPingTest::build(golden);
    const MplsUtils::EthPktParser eth(frame.data(), Orv::U32(frame.size()));
    EXPECT_EQ(got[8], eth.isIpv4() ? "1" : "") << "IPv4 header checksum";
    EXPECT_EQ(got[9], "1") << "UDP checksum";
    EXPECT_EQ(got[10], "") << "malformed";
    for (const std::string &severity : split(got[11], '|')) {
      EXPECT_LT(std::stol(severity), errorSeverity) << got[12];
    }
    for (const std::string &message : split(got[12], '|')) {
      EXPECT_TRUE(allowedExpertMessages.contains(message)) << message;
    }
    const auto &[field, value] = decodedValue.at(golden.name);
    EXPECT_EQ(got[column.at(field)], value) << field;
  }
}

} // namespace
