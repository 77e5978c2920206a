// The generator's output is checked where it matters, on the wire: whole
// frames against bytes written out by hand, and the same frames read back by
// the frame and echo parsers.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Bytes.h"
#include "LspPing/LspPingPduParser.h"
#include "LspPing/LspPingPktGen.h"
#include "LspPing/LspPingTlvHdr.h"
#include "MplsUtils/EthPktParser.h"
#include "PktGenGoldenFrames.h"

namespace LspPing {
namespace {

using LspPingTest::build;
using LspPingTest::frameBytes;
using LspPingTest::GoldenFrame;
using LspPingTest::goldenFrames;
using LspPingTest::hexBytes;
using LspPingTest::hexLines;
using LspPingTest::newPktGen;
using LspPingTest::golden::ip4;
using LspPingTest::golden::ip6;

class GoldenFrameTest : public testing::TestWithParam<GoldenFrame> {};

TEST_P(GoldenFrameTest, BytesAreThoseWrittenOutByHand) {
  EXPECT_EQ(hexLines(build(GetParam())), hexLines(hexBytes(GetParam().hex)));
}

// The receive path reads back what the transmit path wrote: the frame
// parser finds the layers where the generator says it put them, and the
// echo parser finds the header and every TLV.
TEST_P(GoldenFrameTest, ParsesBack) {
  const GoldenFrame &golden = GetParam();
  auto gen = newPktGen();
  golden.build(*gen);

  MplsUtils::EthPktParser eth(gen->pkt());
  ASSERT_TRUE(eth.valid()) << eth.reason();
  EXPECT_EQ(eth.labelStack().size() * 4, gen->mplsHeaderLength());
  EXPECT_EQ(eth.ipHdrOffset(), gen->ipHeaderOffset());
  EXPECT_EQ(eth.ipHdrLength(), gen->ipHeaderLength());
  EXPECT_EQ(eth.ipLength(), gen->pkt()->frontBytes() - gen->ipHeaderOffset());
  EXPECT_EQ(eth.udpHdrOffset(), gen->udpHeaderOffset());
  EXPECT_EQ(eth.udpLength(), gen->udpHeaderLength() + gen->udpPayloadLength());
  EXPECT_EQ(eth.udpPayloadLength(), gen->udpPayloadLength());
  EXPECT_EQ(gen->availTailRoom(), gen->pkt()->tailroom());

  auto pdu = lspPingPduParserFactory(gen->pkt(), eth.udpPayloadOffset());
  pdu->initializedIs(true);
  ASSERT_TRUE(pdu->valid()) << pdu->reason();
  ASSERT_EQ(pdu->lspPingHdr(), gen->lspPingHdr());
  EXPECT_EQ(pdu->lspPingHdr()->messageType, golden.messageType);
  EXPECT_EQ(pdu->lspPingHdr()->senderHandle(), 7u);
  EXPECT_EQ(pdu->lspPingHdr()->sequenceNumber(), 42u);
  EXPECT_EQ(pdu->lspPingHdr()->tsSentmSeconds(), 0x12345678u);

  ASSERT_EQ(pdu->tlvNum(), golden.tlvTypes.size());
  U32 offset = eth.udpPayloadOffset() + sizeof(LspPingHdr);
  for (U32 i = 0; i < pdu->tlvNum(); ++i) {
    EXPECT_EQ(pdu->tlvOffset(i), offset) << "TLV " << i;
    const auto *tlv = reinterpret_cast<const LspPingTlvHdr *>(
        gen->pkt()->data() + pdu->tlvOffset(i));
    EXPECT_EQ(tlv->type(), golden.tlvTypes[i]);
    EXPECT_EQ(tlv->length(), golden.tlvLengths[i]);
    offset += tlv->totalLength();
  }
}

INSTANTIATE_TEST_SUITE_P(LspPingPktGen, GoldenFrameTest,
                         testing::ValuesIn(goldenFrames()),
                         [](const testing::TestParamInfo<GoldenFrame> &info) {
                           return std::string(info.param.name);
                         });

// A reply handed to a UDP socket has no lower layers: only the last TLV's
// length is filled in, and no header that was not written is touched.
TEST(LspPingPktGen, EchoMessageWithoutLowerLayers) {
  auto gen = newPktGen();
  gen->addLspPingHdr(1, 0, 2, 2, 0, 0, 9, 3, 1, 2, 3, 4);
  Wirx::MplsLabelStack labels;
  labels.push(Wirx::MplsLabelEntry(Wirx::MplsLabel(16), 0, true, 0));
  gen->addLspPingIntfAndLabelStackTlv(LspPingAddrType::ipv4Unnumbered,
                                      ip4("0.0.0.0"), Wirx::IntfId(), labels);
  gen->computeHdrLenChecksum();
  EXPECT_EQ(frameBytes(*gen),
            hexBytes("0001 0000 02 02 00 00 00000009 00000003 00000001 "
                     "00000002 00000003 00000004 |"
                     "0007 0010 | 02 00 0000 | 00000000 | 00000000 | "
                     "00010 1 00"));
  EXPECT_EQ(gen->udpPayloadLength(), 52);
}

// computeHdrLenChecksum() patches only the TLV header added last: one added
// before keeps the length it was given.
TEST(LspPingPktGen, OnlyTheLastTlvHeaderIsPatched) {
  auto gen = newPktGen();
  gen->addLspPingHdr(1, 0, 1, 2, 0, 0, 7, 1, 0, 0, 0, 0);
  gen->addLspPingTlvHdr(1, 0);
  gen->addLspPingNilFecSubTlv(16);
  gen->addLspPingTlvHdr(3, 0);
  gen->computeHdrLenChecksum();
  const std::vector<U8> bytes = frameBytes(*gen);
  EXPECT_EQ(std::vector<U8>(bytes.begin() + 32, bytes.end()),
            hexBytes("0001 0000 | 0010 0004 00010 000 | 0003 0000"));
}

// Misuse by a caller is a broken invariant: the process stops, naming it.
std::string literal(const std::string &text) {
  std::string pattern;
  for (char c : text) {
    if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos) {
      pattern += '\\';
    }
    pattern += c;
  }
  return pattern;
}

TEST(LspPingPktGenDeathTest, LayersOutOfOrderOrWithoutRoom) {
  const struct {
    U32 tailRoom; // 0 for a whole packet
    void (*misuse)(LspPingPktGen &);
    std::string invariant;
  } cases[] = {
      {0,
       [](LspPingPktGen &gen) {
         gen.addEtherHdr(Wirx::EthAddr(), Wirx::EthAddr(), 0x0800);
         gen.addEtherHdr(Wirx::EthAddr(), Wirx::EthAddr(), 0x0800);
       },
       "totalTailRoom() == availTailRoom()"},
      {0,
       [](LspPingPktGen &gen) {
         gen.addUdpHdr(1, 2);
         gen.addIp6Hdr(ip6("::1"), ip6("::2"), 1, 17);
       },
       "udpHeader_ == __null"},
      {0,
       [](LspPingPktGen &gen) {
         gen.addLspPingHdr(1, 0, 1, 2, 0, 0, 7, 1, 0, 0, 0, 0);
         gen.addUdpHdr(1, 2);
       },
       "lspPingHdr_ == __null"},
      {20,
       [](LspPingPktGen &gen) {
         gen.addIpHdr(ip4("10.0.0.1"), ip4("10.0.0.2"), 1, 17);
       },
       "availTailRoom() > sizeof( Wirx::IpHdr )"},
      {8,
       [](LspPingPktGen &gen) {
         gen.addLspPingTlvHdr(1, 0);
         gen.addLspPingLdpIpv4SubTlv(ip4("10.0.0.1"), 32);
       },
       "msgGen->availTailRoom() >= tlvSize"},
  };
  for (const auto &c : cases) {
    auto gen = c.tailRoom ? lspPingPktGenFactory(Wirx::Pkt::make(
                                Wirx::Pkt::capacity - c.tailRoom))
                          : newPktGen();
    gen->initializedIs(true);
    EXPECT_DEATH(c.misuse(*gen), literal(c.invariant));
  }
}

TEST(LspPingPktGenDeathTest, UnsupportedInterfaceAndLabelStack) {
  Wirx::MplsLabelStack one;
  one.push(Wirx::MplsLabel(100));
  const struct {
    LspPingAddrType type;
    Wirx::IpGenAddr addr;
    Wirx::MplsLabelStack labels;
    std::string invariant;
  } cases[] = {
      {LspPingAddrType::ipv4Numbered,
       ip4("10.0.0.1"),
       {},
       "labelStack.valid()"},
      {LspPingAddrType::ipv4Unnumbered, ip6("::1"), one,
       "addr.af() == Wirx::ipv4()"},
      {LspPingAddrType::ipv6Unnumbered, ip6("::1"), one,
       "false && \"IPv6 unnumbered interface and label stack TLVs\" \" "
       "are currently not supported\""},
  };
  for (const auto &c : cases) {
    EXPECT_DEATH(newPktGen()->addLspPingIntfAndLabelStackTlv(
                     c.type, c.addr, Wirx::IntfId(), c.labels),
                 literal(c.invariant));
  }
}

TEST(LspPingPktGenDeathTest, UnsupportedDownstreamMapping) {
  const Wirx::IpGenAddr v4 = ip4("10.0.0.2");
  const Wirx::IpGenAddr v6 = ip6("2001:db8::2");
  LspPingDownstreamLabelStack labels;
  labels.labelEntryIs(0, LspPingDownstreamLabelEntry::fromWord(0x00190103));
  labels.size = 1;
  using Type = LspPingAddrType;
  using Multipath = LspPingMultipathType;
  const struct {
    Type type;
    Wirx::IpGenAddr dsAddr;
    Wirx::IpGenAddr intfAddr;
    Multipath multipath;
    U32 bitsetSize;
    std::string invariant;
  } cases[] = {
      {Type::ipv4Numbered, v4, v6, Multipath::noMultipath, 0,
       "dsIpAddr.af() == dsIntfAddr.af()"},
      {Type::ipv6Numbered, v4, v4, Multipath::noMultipath, 0,
       "dsIpAddr.af() == Wirx::ipv6()"},
      {Type::ipv6Unnumbered, v6, v6, Multipath::noMultipath, 0,
       "false && \"IPv6 unnumbered downstream mapping TLVs are currently\" "
       "\" not supported.\""},
      {Type::ipv4Numbered, v4, v4, Multipath::noMultipath, 4,
       "dsMultipathBitset.size() == 0"},
      {Type::ipv4Numbered, v4, v4, Multipath::maskedIpSetMultipath, 6,
       "dsMultipathBitset.size() % 4 == 0"},
      {Type::ipv4Numbered, v4, v4, Multipath::ipRangeMultipath, 0,
       "false && \"Only no multipath, and masked IP set multipath are \" "
       "\"supported\""},
  };
  for (const auto &c : cases) {
    EXPECT_DEATH(newPktGen()->addLspPingDownstreamMappingTlv(
                     1500, c.type, 0, c.dsAddr, c.intfAddr, c.multipath, 0,
                     c.dsAddr, LspPingMultipathBitset(c.bitsetSize), labels),
                 literal(c.invariant));
  }
}

} // namespace
} // namespace LspPing
