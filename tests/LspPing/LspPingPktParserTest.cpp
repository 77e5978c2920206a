#include <gtest/gtest.h>

#include <string>

#include "Bytes.h"
#include "LspPing/LspPingHdrParser.h"
#include "LspPing/LspPingPduParser.h"
#include "LspPing/LspPingTlvGroupParser.h"
#include "Orv/Trace.h"

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
}

TEST(LspPingPduParser, HeaderOnly) {
  EXPECT_TRUE(parse(replyHdr)->valid());
  auto request = parse(requestHdr);
  EXPECT_FALSE(request->valid());
  EXPECT_EQ(request->reason(), "Request message must have Target Fec TLV");
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
}

TEST(LspPingPduParser, FaultKeepsWhatWasIndexed) {
  auto parser = parse(replyHdr + "0003 0000 0003 0020");
  EXPECT_FALSE(parser->valid());
  EXPECT_EQ(parser->tlvNum(), 1u);
}

TEST(LspPingPduParser, ParsesOnlyWhenInitialized) {
  auto parser = lspPingPduParserFactory(pktOf(hexBytes(replyHdr)), 0);
  EXPECT_FALSE(parser->valid());
  EXPECT_EQ(parser->lspPingHdr(), nullptr);
  parser->initializedIs(true);
  EXPECT_TRUE(parser->valid());
}

TEST(LspPingTlvGroupParser, SizesAreRoundedPerTlv) {
  auto pkt = pktOf(hexBytes("0003 0005 00000000 00000000"));
  auto exact = lspPingTlvGroupParserFactory(pkt, 0, 12);
  exact->parseTlvGroup();
  EXPECT_TRUE(exact->valid());

  auto longer = pktOf(hexBytes("0003 0009 00000000 00000000 00000000"));
  auto cut = lspPingTlvGroupParserFactory(longer, 0, 12);
  cut->parseTlvGroup();
  EXPECT_EQ(cut->reason(), "Msg/Tlv is corrupted/truncated");

  auto empty = lspPingTlvGroupParserFactory(pkt, 12, 0);
  empty->parseTlvGroup();
  EXPECT_TRUE(empty->valid());

  auto tooBig = lspPingTlvGroupParserFactory(pkt, 4, 12);
  tooBig->parseTlvGroup();
  EXPECT_EQ(tooBig->reason(), "Packet is too small, size: 12");

  auto corrupt = lspPingTlvGroupParserFactory(pktOf(hexBytes("0003 00")), 0, 3);
  corrupt->parseTlvGroup();
  EXPECT_EQ(corrupt->reason(), "Msg/Tlv header is corrupted");
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
  struct Sink : Orv::TraceSink {
    std::vector<std::string> lines;
    void write(std::string_view, int level, std::string_view text) override {
      lines.push_back(std::to_string(level) + " " + std::string(text));
    }
  } sink;
  Orv::traceSinkIs(&sink);
  Orv::traceLevelIs("LspPing/LspPingPktParser", 9);
  parse(replyHdr + "0003 0000 0003");
  Orv::traceLevelIs("LspPing/LspPingPktParser", -1);
  Orv::traceSinkIs(nullptr);
  EXPECT_EQ(sink.lines, (std::vector<std::string>{
                            "6 Parse packet frontBytes: 38, offset: 32, size 6",
                            "6    Msg/TLV 0: offset 32, size 4",
                            "5 Msg/Tlv header is corrupted"}));
}

TEST(LspPingHdrParser, PointsAtTheHeaderUnchecked) {
  auto pkt = pktOf(hexBytes("00 " + replyHdr));
  auto parser = lspPingHdrParserFactory(pkt, 1);
  EXPECT_EQ(parser->offset(), 1u);
  EXPECT_EQ(parser->header()->returnCode, 3);
  EXPECT_EQ(reinterpret_cast<const U8 *>(parser->header()), pkt->data() + 1);
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
