// An independent dissector reads the frames this project writes: the example
// captures as this project's tests build them, and the echo messages of the
// packet generator. The checksums are right and the echo messages are seen
// as such, field for field. Skipped where tshark is not installed.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <unistd.h>
#include <vector>

#include "../LspPing/PktGenGoldenFrames.h"
#include "MplsUtils/EthPktParser.h"
#include "ToolTestSupport.h"
#include "Tshark.h"

namespace {

using LspPingTest::dissect;
using LspPingTest::split;
using LspPingTest::tsharkInstalled;

std::filesystem::path example(const std::string &name) {
  const char *env = std::getenv("LSPPING_SOURCE_DIR");
  return std::filesystem::path(env ? env : LSPPING_SOURCE_DIR) / "examples" /
         name;
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
  // Besides the checksums and soundness, fields that show the TLV values
  // were read where the decode tests expect them.
  std::vector<std::string> fields = {
      "_ws.col.Protocol",
      "ip.checksum.status",
      "udp.checksum.status",
      "mpls_echo.tlv.fec.type",
      "mpls_echo.tlv.fec.l2cid_vcid",
      "mpls_echo.tlv.ds_map.ds_ip",
      "mpls_echo.tlv.ds_map.mp_label",
      "mpls_echo.tlv.ilso_ipv4.addr",
      "mpls_echo.tlv.ilso_ipv4.label",
  };
  const std::size_t first = fields.size();
  fields.insert(fields.end(), LspPingTest::soundnessFields.begin(),
                LspPingTest::soundnessFields.end());
  // The fields before the soundness ones, as dissected, one line per frame.
  const auto read = [&](const std::string &name) {
    std::vector<std::string> kept;
    for (const std::string &line : dissect(example(name), fields)) {
      SCOPED_TRACE(name + ": " + line);
      const std::vector<std::string> got = split(line, ';');
      if (got.size() != fields.size()) {
        ADD_FAILURE() << "unexpected field count";
        continue;
      }
      LspPingTest::expectSound(got[first], got[first + 1], got[first + 2]);
      std::string values = got[0];
      for (std::size_t i = 1; i < first; ++i) {
        values += ";" + got[i];
      }
      kept.push_back(values);
    }
    return kept;
  };
  EXPECT_EQ(read("request.pcap"), (std::vector<std::string>{
                                      "MPLS ECHO;1;1;1;;;;;",
                                      "MPLS ECHO;1;1;10;42;;;;",
                                  }));
  // IPv6 has no header checksum.
  EXPECT_EQ(read("reply.pcap"),
            (std::vector<std::string>{
                "MPLS ECHO;;1;;;;;;",
                "MPLS ECHO;1;1;;;10.0.0.3;300|16009;10.0.0.2;100|200",
            }));
}

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
  std::vector<std::vector<std::uint8_t>> frames;
  for (const auto &golden : goldens) {
    frames.push_back(LspPingTest::build(golden));
  }
  LspPingTest::writeCapture(capture, frames, 1763683200u);
  std::vector<std::string> fields = {
      "_ws.col.Protocol",        "mpls_echo.msg_type",
      "mpls_echo.sender_handle", "mpls_echo.sequence",
      "mpls_echo.tlv.type",      "mpls_echo.tlv.len",
      "mpls_echo.tlv.fec.type",  "mpls_echo.tlv.fec.len",
      "ip.checksum.status",      "udp.checksum.status"};
  const std::size_t soundness = fields.size();
  fields.insert(fields.end(), LspPingTest::soundnessFields.begin(),
                LspPingTest::soundnessFields.end());
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
    LspPingTest::expectSound(got[soundness], got[soundness + 1],
                             got[soundness + 2]);
    const auto &[field, value] = decodedValue.at(golden.name);
    EXPECT_EQ(got[column.at(field)], value) << field;
  }
}

} // namespace
