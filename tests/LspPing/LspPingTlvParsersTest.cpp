#include <gtest/gtest.h>

#include <string>

#include "Bytes.h"
#include "LspPing/LspPingDownstreamMappingTlvParser.h"
#include "LspPing/LspPingIntfAndLabelStackTlvParser.h"
#include "LspPing/LspPingTargetFecTlvParser.h"

namespace LspPing {
namespace {

using LspPingTest::hexBytes;
using LspPingTest::pktOf;

const std::string ldp = "0001 0005 0a010101 20 000000 ";
const std::string rsvp =
    "0003 0014 c0000201 0000 0007 c0000202 c0000203 0000 0009 ";
const std::string srV4 = "7c00 0006 0a000001 20 02 0000 ";
const std::string srV6 =
    "0023 0012 20010db8000000000000000000000001 80 02 0000 ";
const std::string nil = "0010 0004 00003000 ";
const std::string pw = "000a 000e 0a000001 0a000002 00000064 0005 0000 ";

// A Target FEC Stack TLV holding `subTlvs`, parsed from its value.
Orv::Ptr<LspPingTargetFecTlvParser> parseFec(const std::string &subTlvs,
                                             const std::string &type = "0001") {
  const auto value = hexBytes(subTlvs);
  char length[8];
  std::snprintf(length, sizeof length, "%04zx", value.size());
  auto parser = lspPingTargetFecTlvParserFactory(
      pktOf(hexBytes(type + length + subTlvs)), 4);
  parser->initializedIs(true);
  return parser;
}

// The prefix a request is checked against: the last usable LDP or segment-
// routing sub-TLV of the stack, as far as the parser walks.
TEST(LspPingTargetFecTlvParser, TheFecTakenFromTheStack) {
  const std::pair<std::string, const char *> cases[] = {
      {ldp, "10.1.1.1/32"},
      {srV4, "10.0.0.1/32"},
      {srV6, "2001:db8::1/128"},
      {"7c01" + srV6.substr(4), "2001:db8::1/128"},
      {rsvp + ldp, "10.1.1.1/32"},
      {ldp + "0001 0005 0a020202 18 000000", "10.2.2.2/24"},
      {"0001 0004 0a010101 20 000000 " + srV4, "10.0.0.1/32"},
      // An unknown sub-TLV hides everything behind it.
      {"0009 0000 " + ldp, nullptr},
      // /33 names no prefix.
      {"0001 0005 0a010101 21 000000", nullptr},
      {rsvp, nullptr},
      {nil, nullptr},
  };
  for (const auto &[subTlvs, prefix] : cases) {
    auto parser = parseFec(subTlvs);
    ASSERT_TRUE(parser->valid()) << subTlvs << parser->reason();
    if (prefix) {
      EXPECT_EQ(parser->targetFec().stringValue(), prefix) << subTlvs;
    } else {
      EXPECT_TRUE(!parser->targetFec()) << subTlvs;
    }
  }
}

TEST(LspPingTargetFecTlvParser, RsvpPseudowireAndNilFecs) {
  auto rsvpFec = parseFec(rsvp);
  EXPECT_EQ(rsvpFec->rsvpSpId(), (Rsvp::RsvpSpId{Wirx::IpAddr(0xc0000201), 7,
                                                 Wirx::IpAddr(0xc0000202), 9}));
  EXPECT_EQ(rsvpFec->rsvpSenderAddr().stringValue(), "192.0.2.3");
  EXPECT_EQ(parseFec(pw)->pwInfo(),
            LspPingPwInfo(Wirx::IpAddr(0x0a000001), Wirx::IpAddr(0x0a000002),
                          100, 5));
  auto nilFec = parseFec(nil);
  ASSERT_NE(nilFec->nilFecSubTlv(), nullptr);
  EXPECT_EQ(nilFec->nilFecSubTlv()->labelField.label(), 3u);
  EXPECT_TRUE(!nilFec->pwInfo());
  // A short RSVP sub-TLV is followed by more sub-TLVs: the walk advances 24
  // bytes regardless and must stop at the end of the data.
  auto shortRsvp = parseFec("0003 0000 0003 0000 0003 0000");
  EXPECT_TRUE(shortRsvp->valid());
  EXPECT_TRUE(!shortRsvp->rsvpSpId());
}

TEST(LspPingTargetFecTlvParser, Faults) {
  EXPECT_EQ(parseFec(ldp, "0002")->reason(), "TLV type is not TargetFecStack");
  EXPECT_EQ(parseFec("0001 0009 0a010101")->reason(),
            "Msg/Tlv is corrupted/truncated");
}

Orv::Ptr<LspPingIntfAndLabelStackTlvParser> parseIls(const std::string &hex) {
  auto parser =
      lspPingIntfAndLabelStackTlvParserFactory(pktOf(hexBytes(hex)), 0);
  parser->initializedIs(true);
  return parser;
}

TEST(LspPingIntfAndLabelStackTlvParser, ReadsAddressInterfaceAndLabels) {
  auto parser = parseIls("0007 0014 01 000000 0a000001 0a000002 00064 0ff "
                         "000c8 1ff");
  ASSERT_TRUE(parser->valid()) << parser->reason();
  const LspPingIntfAndLabelStackInfo &info = parser->intfAndLabelStackInfo();
  EXPECT_EQ(info.addr.stringValue(), "10.0.0.1");
  EXPECT_EQ(info.intf.name(), "10.0.0.2");
  EXPECT_EQ(info.labelStack.stringValue(), "[100/ttl=255, 200/bos/ttl=255]");
  EXPECT_TRUE(info.valid);

  auto v6 = parseIls("0007 0024 03 000000 20010db8000000000000000000000001 "
                     "20010db8000000000000000000000002");
  ASSERT_TRUE(v6->valid()) << v6->reason();
  EXPECT_EQ(v6->intfAndLabelStackInfo().addr.stringValue(), "2001:db8::1");
  EXPECT_EQ(v6->intfAndLabelStackInfo().labelStack.size(), 0u);
}

TEST(LspPingIntfAndLabelStackTlvParser, ReasonTexts) {
  const std::pair<std::string, const char *> cases[] = {
      {"0002 000c 01000000 0a000001 0a000002",
       "TLV type is not IntfAndLabelStack"},
      {"0007 0008 01000000 0a000001", "IntfAndLabelStack TLV is corrupted"},
      {"0007 000c 01000000 0a000001", "IntfAndLabelStack TLV is corrupted"},
      {"0007 000c 00000000 0a000001 0a000002",
       "Invalid address type in IntfAndLabelStack TLV"},
      {"0007 000c 05000000 0a000001 0a000002",
       "Invalid address type in IntfAndLabelStack TLV"},
      {"0007 0018 04000000 0a000001 0a000002 00000000 00000000 00000000",
       "Unnumbered IPv6 address type in IntfAndLabelStack TLV is not "
       "supported"},
      {"0007 0010 03000000 0a000001 0a000002 00000000",
       "IntfAndLabelStack TLV is corrupted"},
  };
  for (const auto &[hex, reason] : cases) {
    auto parser = parseIls(hex);
    EXPECT_FALSE(parser->valid()) << hex;
    EXPECT_EQ(parser->reason(), reason) << hex;
  }
}

Orv::Ptr<LspPingDownstreamMappingTlvParser> parseDs(const std::string &hex) {
  auto parser =
      lspPingDownstreamMappingTlvParserFactory(pktOf(hexBytes(hex)), 0);
  parser->initializedIs(true);
  return parser;
}

TEST(LspPingDownstreamMappingTlvParser, ReadsMappingMultipathAndLabels) {
  auto plain = parseDs("0002 0010 05dc 01 02 0a000002 0a000003 00 00 0000");
  ASSERT_TRUE(plain->valid()) << plain->reason();
  EXPECT_EQ(plain->downstreamMappingInfo().mtu, 1500);
  EXPECT_EQ(plain->downstreamMappingInfo().dsFlags, 2);
  EXPECT_EQ(plain->downstreamMappingInfo().labelStack.size, 0);

  auto masked = parseDs("0002 001c 05dc 01 00 0a000002 0a000003 08 05 0008 "
                        "0a000100 c0000001 00064 1 03");
  ASSERT_TRUE(masked->valid()) << masked->reason();
  const LspPingDownstreamMappingInfo &info = masked->downstreamMappingInfo();
  EXPECT_EQ(info.depthLimit, 5);
  EXPECT_EQ(info.dsMultipathBaseAddr.stringValue(), "10.0.1.0");
  EXPECT_EQ(info.dsMultipathBitset.size, 4u);
  EXPECT_EQ(info.dsMultipathBitset.bitset[0], 0xc0);
  EXPECT_EQ(info.dsMultipathBitset.bitset[3], 0x01);
  EXPECT_EQ(info.labelStack.size, 1);
  EXPECT_TRUE(info.labelStack.valid());
  EXPECT_EQ(info.labelStack.labelEntry[0].protocol(),
            LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolLdp);

  auto skipped = parseDs("0002 0018 05dc 01 00 0a000002 0a000003 05 00 0008 "
                         "ffffffff ffffffff");
  ASSERT_TRUE(skipped->valid()) << skipped->reason();
  EXPECT_TRUE(!skipped->downstreamMappingInfo().dsMultipathBaseAddr);
  EXPECT_EQ(skipped->downstreamMappingInfo().labelStack.size, 0);
}

TEST(LspPingDownstreamMappingTlvParser, ReasonTexts) {
  const std::string v4 = "05dc 01 00 0a000002 0a000003 ";
  const std::pair<std::string, const char *> cases[] = {
      {"0007 0010 " + v4 + "00 00 0000", "TLV type is not DownstreamMapping"},
      {"0002 0012 " + v4 + "00 00 0000 0000",
       "DownstreamMapping TLV is corrupted"},
      {"0002 000c " + v4, "DownstreamMapping TLV is corrupted"},
      {"0002 0010 05dc 00 00 0a000002 0a000003 00 00 0000",
       "Invalid address type in DownstreamMapping TLV"},
      {"0002 0010 05dc 04 00 0a000002 0a000003 00 00 0000",
       "Unnumbered IPv6 address type in DownstreamMapping TLV is not "
       "supported"},
      {"0002 0024 05dc 03 00 " + std::string(64, '0'),
       "DownstreamMapping multipath / label stack is corrupted"},
      {"0002 0010 " + v4 + "08 00 0004", "DownstreamMapping multipath / label "
                                         "stack is corrupted"},
      {"0002 0014 " + v4 + "08 00 0002 00000000",
       "DownstreamMapping multipath / label stack is corrupted"},
      {"0002 0014 " + v4 + "00 00 0004 00000000",
       "DownstreamMapping multipath length must be 0"},
      {"0002 0014 " + v4 + "02 00 0004 00000000",
       "IP address multipath is not supported"},
      {"0002 0014 " + v4 + "04 00 0004 00000000",
       "IP address range multipath is not supported"},
      {"0002 0014 " + v4 + "09 00 0004 00000000",
       "Bit-masked label set multipath is not supported"},
      {"0002 0014 " + v4 + "08 00 0004 00000000",
       "DownstreamMapping multipath length is too short for IPv4.  4 < 8"},
      {"0002 0038 05dc 03 00 " + std::string(64, '0') + "08 00 0010" +
           std::string(32, '0'),
       "DownstreamMapping multipath length is too short for IPv6.  16 < 20"},
  };
  for (const auto &[hex, reason] : cases) {
    auto parser = parseDs(hex);
    EXPECT_FALSE(parser->valid()) << hex;
    EXPECT_EQ(parser->reason(), reason) << hex;
  }
}

} // namespace
} // namespace LspPing
