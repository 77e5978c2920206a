#include <gtest/gtest.h>

#include <string>

#include "Bytes.h"
#include "LspPing/LspPingPduParser.h"
#include "LspPing/LspPingTlvGroupParser.h"

namespace LspPing {
namespace {

using LspPingTest::hexBytes;
using LspPingTest::pktOf;

const std::string requestHdr = "0001 0000 01 02 00 00 00000007 00000001 "
                               "00000000 00000000 00000000 00000000 ";
const std::string replyHdr = "0001 0000 02 02 03 01 00000007 00000001 "
                             "00000000 00000000 00000000 00000000 ";
const std::string ldpFecTlv = "0001 000c 0001 0005 0a010101 20 000000 ";

Orv::Ptr<LspPingPduParser> parse(const std::string &hex, U32 offset = 0) {
  auto parser = lspPingPduParserFactory(pktOf(hexBytes(hex)), offset);
  parser->initializedIs(true);
  return parser;
}

TEST(LspPingPduParser, WellFormedRequestIsIndexed) {
  auto parser = parse("ffff " + requestHdr + ldpFecTlv, 2);
  ASSERT_TRUE(parser->valid()) << parser->reason();
  EXPECT_EQ(parser->reason(), "");
  ASSERT_NE(parser->lspPingHdr(), nullptr);
  EXPECT_EQ(parser->lspPingHdr()->senderHandle(), 7u);
  EXPECT_EQ(parser->tlvNum(), 1u);
  EXPECT_EQ(parser->tlvOffset(0), 34u);
  EXPECT_TRUE(parser->tlvSupported());
  const TlvTypeOffsetColl *fec = parser->tlvGroupParser()->tlvTypeOffset(1);
  ASSERT_NE(fec, nullptr);
  EXPECT_EQ(fec->offsetNum(), 1u);
  EXPECT_EQ(parser->tlvGroupParser()->tlvTypeOffset(2), nullptr);
  EXPECT_TRUE(parse(replyHdr)->valid()) << "a reply needs no TLV";
}

TEST(LspPingPduParser, DuplicateTypesKeepEveryOccurrenceInOrder) {
  auto parser = parse(requestHdr + ldpFecTlv + "0003 0000 " + ldpFecTlv);
  ASSERT_TRUE(parser->valid()) << parser->reason();
  const TlvTypeOffsetColl *fec = parser->tlvGroupParser()->tlvTypeOffset(1);
  ASSERT_NE(fec, nullptr);
  ASSERT_EQ(fec->offsetNum(), 2u);
  EXPECT_EQ(fec->offset(0), 32u);
  EXPECT_EQ(fec->offset(1), 52u);
  EXPECT_EQ(parser->tlvOffset(1), 48u);
  EXPECT_FALSE(parser->tlvSupported())
      << "Pad is mandatory-range and unhandled";
}

TEST(LspPingPduParser, OptionalRangeTypesStaySupported) {
  EXPECT_TRUE(parse(replyHdr + "8005 0000")->tlvSupported());
  EXPECT_TRUE(parse(replyHdr + "0002 0000")->tlvSupported());
  auto withIls = parse(replyHdr + "0007 0000");
  EXPECT_TRUE(withIls->valid());
  EXPECT_FALSE(withIls->tlvSupported());
}

TEST(LspPingPduParser, ReasonTexts) {
  const struct {
    std::string hex;
    const char *reason;
  } cases[] = {
      {"0001 0000 01 02", "LspPingHdr is corrupted"},
      {"0003" + requestHdr.substr(4), "Invalid lspPingHdr"},
      {requestHdr, "Request message must have Target Fec TLV"},
      {replyHdr + "0003 fffa", "Invalid totalLength in TLV hdr"},
      {replyHdr + "0003 0014 00000000 00000000",
       "Msg/Tlv is corrupted/truncated"},
      {replyHdr + "0003", "Msg/Tlv header is corrupted"},
      {replyHdr + "0003 0001 00000000 0003", "Msg/Tlv header is corrupted"},
      {replyHdr + "0003 0001 00", "Msg/Tlv is corrupted/truncated"},
  };
  for (const auto &c : cases) {
    auto parser = parse(c.hex);
    EXPECT_FALSE(parser->valid()) << c.hex;
    EXPECT_EQ(parser->reason(), c.reason) << c.hex;
  }
  EXPECT_EQ(parse(replyHdr + "0003 0000 0003 0020")->tlvNum(), 1u)
      << "a fault keeps what was indexed before it";
}

// A group of TLVs at (offset, size) of the packet, each rounded up to four
// bytes.
TEST(LspPingTlvGroupParser, Reasons) {
  const struct {
    const char *hex;
    U32 offset;
    U32 size;
    const char *reason;
  } cases[] = {
      {"0003 0005 00000000 00000000", 0, 12, ""},
      {"0003 0005 00000000 00000000", 12, 0, ""},
      {"0003 0009 00000000 00000000 00000000", 0, 12,
       "Msg/Tlv is corrupted/truncated"},
      {"0003 0005 00000000 00000000", 4, 12, "Packet is too small, size: 12"},
      {"0003 00", 0, 3, "Msg/Tlv header is corrupted"},
  };
  for (const auto &c : cases) {
    auto group =
        lspPingTlvGroupParserFactory(pktOf(hexBytes(c.hex)), c.offset, c.size);
    group->parseTlvGroup();
    EXPECT_EQ(group->reason(), c.reason) << c.hex;
    EXPECT_EQ(group->valid(), *c.reason == 0) << c.hex;
  }
}

TEST(LspPingTlvGroupParser, ManyTlvsSpillPastTheInlineIndex) {
  std::string hex;
  for (int i = 0; i < 20; ++i) {
    hex += i % 2 ? "0001 0000 " : "8001 0000 ";
  }
  auto group = lspPingTlvGroupParserFactory(pktOf(hexBytes(hex)), 0, 80);
  group->parseTlvGroup();
  ASSERT_TRUE(group->valid());
  EXPECT_EQ(group->tlvNum(), 20u);
  EXPECT_EQ(group->tlvOffset(19), 76u);
  EXPECT_EQ(group->tlvTypeOffset(0x8001)->offsetNum(), 10u);
  EXPECT_EQ(group->tlvTypeOffset(1)->offset(9), 76u);
}

TEST(LspPingPduParser, TracesProgressAndFaults) {
  TestSupport::TraceCapture log("LspPing/LspPingPktParser", 9);
  parse(replyHdr + "0003 0000 0003");
  EXPECT_EQ(log.lines,
            (std::vector<std::pair<int, std::string>>{
                {6, "Parse packet frontBytes: 38, offset: 32, size 6"},
                {6, "   Msg/TLV 0: offset 32, size 4"},
                {5, "Msg/Tlv header is corrupted"}}));
}

TEST(LspPingPduParser, NeverReadsPastTheDataForAnyTruncation) {
  const auto full = hexBytes(requestHdr + ldpFecTlv + "0002 0010 " +
                             "05dc 01 00 0a000002 0a000003 00 00 0000");
  for (std::size_t len = 0; len <= full.size(); ++len) {
    std::vector<std::uint8_t> cut(full.begin(), full.begin() + len);
    auto parser = lspPingPduParserFactory(pktOf(cut), 0);
    parser->initializedIs(true);
    const bool atTlvBoundary = len == 48 || len == full.size();
    EXPECT_EQ(parser->valid(), atTlvBoundary) << len;
    EXPECT_EQ(parser->valid(), parser->reason().empty()) << len;
  }
}

} // namespace
} // namespace LspPing
