#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Bytes.h"
#include "LspPing/LspPingDdmapTlv.h"
#include "LspPing/LspPingDownstreamMappingTlvContainer.h"
#include "LspPing/LspPingEchoJitterTlv.h"
#include "LspPing/LspPingFec128Ipv4SubTlv.h"
#include "LspPing/LspPingHdr.h"
#include "LspPing/LspPingLdpIpv4SubTlv.h"
#include "LspPing/LspPingNilFecSubTlv.h"
#include "LspPing/LspPingNodeAddrSubTlv.h"
#include "LspPing/LspPingOpaqueValGenSubTlv.h"
#include "LspPing/LspPingOpaqueValSGSubTlv.h"
#include "LspPing/LspPingP2mpFecStackSubTlv.h"
#include "LspPing/LspPingRsvpIpv4SubTlv.h"
#include "LspPing/LspPingSrIpv4SubTlv.h"
#include "LspPing/LspPingSrIpv6SubTlv.h"
#include "LspPing/NtpTime.h"
#include "LspPing/PktHexDump.h"
#include "Orv/Clock.h"

namespace LspPing {
namespace {

using LspPingTest::hexBytes;
using LspPingTest::overlay;

using Breaks = std::vector<std::pair<std::size_t, U8>>;

// The record's trace text (unless `valid` is null), and its invalid text
// once the bytes are changed as `breaks` says.
template <class Record>
void expectTexts(const std::string &hex, const char *valid,
                 const Breaks &breaks, const char *invalid) {
  auto bytes = hexBytes(hex);
  if (valid) {
    EXPECT_EQ(overlay<Record>(bytes).stringValue(), valid);
  }
  for (const auto &[offset, value] : breaks) {
    bytes.at(offset) = value;
  }
  EXPECT_EQ(overlay<Record>(bytes).stringValue(), invalid) << hex;
}

// What validity looks at, and what it leaves alone: an LDP sub-TLV's type is
// not looked at.
TEST(LspPingRecords, TextsAndWhatMakesThemInvalid) {
  const std::string hdr = "0001 0000 01 02 00 00 00000007 0000002a "
                          "e5f1a2b3 80000000 00000000 00000000";
  expectTexts<LspPingHdr>(
      hdr,
      "LspPingHdr:\tver(1),\tflag(0),\tmsgType(1),\treplyMode(2),"
      "\treturnCode(0),\treturnSubcode(0),\tsenderHandle(0x7),"
      "\tseqNum(0x2a),\ttsSenSeconds(0xe5f1a2b3),\ttsSentmSeconds(0x80000000),"
      "\ttsRcvdSeconds(0x0),\ttsRcvdmSeconds(0x0)",
      {{1, 3}}, "Invalid LspPingHdr");
  for (const Breaks &versionOrType : {Breaks{{1, 0}}, {{4, 0}}, {{4, 3}}}) {
    expectTexts<LspPingHdr>(hdr, nullptr, versionOrType, "Invalid LspPingHdr");
  }
  expectTexts<LspPingLdpIpv4SubTlv>("0003 0005 0a010101 20 00 0000",
                                    "LdpIpv4( '10.1.1.1/32' )", {{3, 6}},
                                    "Invalid LdpIpv4SubTlv");
  expectTexts<LspPingRsvpIpv4SubTlv>(
      "0003 0014 c0000201 0000 0007 c0000202 c0000203 0000 0009",
      "RsvpIpv4:\tdestination(192.0.2.1),\ttunnelId(7),"
      "\textendedTunnelId(192.0.2.2),\tsenderAddress(192.0.2.3),\tlspId(9)",
      {{1, 1}}, "Invalid RsvpIpv4SubTlv");
  expectTexts<LspPingSrIpv4SubTlv>("7c00 0006 0a000001 20 02 0000",
                                   "SrIpv4( '10.0.0.1/32' )", {{3, 8}}, "");
  expectTexts<LspPingSrIpv6SubTlv>(
      "0023 0012 20010db8000000000000000000000001 80 02 0000",
      "SrIpv6( '2001:db8::1/128' )", {{3, 20}}, "");
  expectTexts<LspPingNilFecSubTlv>("0010 0004 00003000", "NilFec( '0x3' )",
                                   {{1, 17}}, "Invailid NilFecSunTlv");
  const std::string pw = "000a 000e 0a000001 0a000002 00000064 0005 0000";
  expectTexts<LspPingFec128Ipv4SubTlv>(
      pw,
      "Fec128Ipv4:\tsender(10.0.0.1),\treceiver(10.0.0.2),\tpwId(100),"
      "\tpwType(5)",
      {{17, 11}}, "Invalid Fec128Ipv4SubTlv");
  expectTexts<LspPingFec128Ipv4SubTlv>(pw, nullptr, {{17, 4}, {18, 1}},
                                       "Invalid Fec128Ipv4SubTlv");
  expectTexts<LspPingNodeAddrSubTlv>("000b 0008 0003 0004 0a000009",
                                     "NodeAddr( Addr: '10.0.0.9' )", {{5, 4}},
                                     "Invalid NodeAddrSubTlv");
  expectTexts<LspPingP2mpFecStackSubTlv>(
      "0013 0009 0001 04 0a000001 0000",
      "P2mpFecStackSubTlv( RootAddr: '10.0.0.1' )", {{1, 18}},
      "Invalid LspPingP2mpFecStackSubTlv");
  expectTexts<LspPingOpaqueValSGSubTlv>(
      "03 0008 0a000001 e0000001",
      "OpaqueValSGSubTlv( SourceAddr: '10.0.0.1' GroupAddr: '224.0.0.1' )",
      {{2, 9}}, "Invalid LspPingOpaqueValSGSubTlv");
  expectTexts<LspPingOpaqueValGenSubTlv>(
      "01 0004 0000002a", "OpaqueValGenSubTlv( lspId: 42 )", {{0, 2}},
      "Invalid LspPingOpaqueValGenSubTlv");
  expectTexts<LspPingEchoJitterTlv>("000c 0004 000003e8",
                                    "EchoJitterTlv( jittertime(1000) )",
                                    {{3, 5}}, "Invalid EchoJitterTlv");
  expectTexts<LspPingDdmapTlv>(
      "0014 0010 05dc 01 00 0a000002 0a000003 08 01 0000",
      "DDMAPTlv( Downstream Address: '10.0.0.2', Downstream Interface "
      "Address: '10.0.0.3', RetCode: 8, RetSubCode: 1 )",
      {{1, 2}}, "Invalid LspPingDdmapTlv");
}

TEST(LspPingTlvHdrRecord, TotalLengthIsPaddedToFourBytes) {
  for (auto [length, total] : {std::pair{0u, 4u},
                               {5u, 12u},
                               {8u, 12u},
                               {65528u, 65532u},
                               {65529u, 65536u}}) {
    LspPingTlvHdr tlv;
    tlv.lengthNbo = static_cast<U16>(length);
    EXPECT_EQ(tlv.totalLength(), total) << length;
  }
  LspPingTlvU8Hdr shortHdr;
  shortHdr.length = 8;
  EXPECT_EQ(shortHdr.totalLength(), 8u + 3u + 1u);
}

TEST(LspPingNilFecSubTlvLabel, KeepsTheLowBitsWhenTheLabelChanges) {
  auto bytes = hexBytes("00000abc");
  auto label = overlay<LspPingNilFecSubTlvLabel>(bytes);
  label.labelIs(0xFFFFF);
  EXPECT_EQ(label.label(), 0xFFFFFu);
  EXPECT_EQ(label.labelNbo.value(), 0xFFFFFABCu);
}

TEST(LspPingTlvContainersDeathTest, GettersRequireAValidView) {
  auto ds = lspPingDownstreamMappingTlvContainerFactory();
  EXPECT_DEATH(ds->getMtu(), "valid\\(\\)");
}

TEST(NtpTime, MicrosecondRoundingAndElapsedTime) {
  EXPECT_EQ(NtpTime::fractionToU32(0.5), 2147483648u);
  EXPECT_EQ(NtpTime::fractionToU32(0.0000015), 4294u);
  EXPECT_EQ(NtpTime::fractionToU32(0.0), 0u);
  const NtpTimeU64 before{0xFFFFFFFFu, 0xC0000000u};
  const NtpTimeU64 after{0u, 0x40000000u};
  EXPECT_DOUBLE_EQ(NtpTime::elapsedTime(before, after), 0.5);
  EXPECT_DOUBLE_EQ(NtpTime::elapsedTime(NtpTimeU64{5, 0}, NtpTimeU64{7, 0}),
                   2.0);
}

TEST(NtpTime, ReadsTheRuntimeClockOnTheNtpEpoch) {
  Orv::VirtualClock clock(1700000000.25);
  Orv::clockIs(&clock);
  const NtpTimeU64 now = NtpTime::ntpTime();
  EXPECT_EQ(now.seconds, 1700000000u + 2208988800u);
  EXPECT_EQ(now.microSeconds, 1073741824u);
  EXPECT_EQ(NtpTime::ntpSeconds(), now.seconds);
  EXPECT_EQ(NtpTime::ntpFraction(), now.microSeconds);
  // The seconds field wraps in February 2036: the count goes on modulo 2^32.
  Orv::VirtualClock nextEra(4294967296.0 - 2208988800.0 + 1.5);
  Orv::clockIs(&nextEra);
  EXPECT_EQ(NtpTime::ntpTime(), (NtpTimeU64{1, 2147483648u}));
  Orv::clockIs(nullptr);
  EXPECT_EQ(Orv::valueText(now),
            "Value('LspPing::NtpTimeU64', ** {'seconds': 3908988800, "
            "'microSeconds': 1073741824})");
  EXPECT_EQ(Orv::valueFromText<NtpTimeU64>(Orv::valueText(now)), now);
}

TEST(PktHexDump, FourCharactersPerByte) {
  const U8 bytes[] = {0x45, 0x00, 0xab};
  EXPECT_EQ(pktHexDump(bytes, 3), "\\x45\\x00\\xab");
  EXPECT_EQ(pktHexDump(bytes, 0), "");
}

} // namespace
} // namespace LspPing
