#include "MplsUtils/EthPktParser.h"

#include "TestSupport.h"

#include "Wirx/Checksum.h"
#include "Wirx/Ipv4RouterAlertHdr.h"
#include "Wirx/Pkt.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace MplsUtils {
namespace {

using Layer = EthPktParser::Layer;
using Orv::U32;
using Orv::U8;
using TestSupport::hexBytes;

// Frames written byte by byte, one layer per line.
const std::string ethMpls = "001122334455 020000000001 8847 ";
const std::string ethIpv4 = "001122334455 020000000001 0800 ";
const std::string ethIpv6 = "001122334455 020000000001 86dd ";

// Labels 100 (ttl 255) and 200 (tc 5, bottom, ttl 1), then IPv4 with a
// Router Alert from 10.0.0.1 to 127.0.0.1, UDP 49152 -> 3503, 8 bytes.
const std::vector<U8> labelledIpv4 =
    hexBytes(ethMpls + "000640ff 000c8b01 "
                       "46000028 12344000 0111498b 0a000001 7f000001 94040000 "
                       "c0000daf 00100b7e "
                       "deadbeef 00000001");

// IPv6 from 2001:db8::1 to 2001:db8::2, UDP 3503 -> 3503, 4 bytes.
const std::vector<U8> plainIpv6 =
    hexBytes(ethIpv6 + "60000000 000c1140 20010db8000000000000000000000001 "
                       "20010db8000000000000000000000002 "
                       "0daf0daf 000c84fd "
                       "01020304");

// Label 16, then IPv6 with a Hop-by-Hop Router Alert (MPLS OAM) from
// 2001:db8::a to ::ffff:127.0.0.1, UDP 49153 -> 3503, 4 bytes.
const std::vector<U8> labelledIpv6 =
    hexBytes(ethMpls + "00010101 "
                       "60000000 00140001 20010db800000000000000000000000a "
                       "00000000000000000000ffff7f000001 "
                       "11000502 00450100 "
                       "c0010daf 000c6f49 0a0b0c0d");

// Service tag 100, customer tag 200 (priority 1), IPv4 192.168.0.1 ->
// 192.168.0.199 without options, UDP 1234 -> 53, 4 bytes.
const std::vector<U8> doubleTaggedIpv4 =
    hexBytes("001122334455 020000000001 88a8 0064 8100 20c8 0800 "
             "45000020 00010000 4011f8b3 c0a80001 c0a800c7 "
             "04d20035 000cb3ef 61626364");

// Parses a copy held in a buffer of exactly the frame's size, so that the
// address sanitizer catches any read past it.
struct Parsed {
  explicit Parsed(const std::vector<U8> &frame, std::size_t len)
      : bytes(std::make_unique<U8[]>(len)) {
    std::copy_n(frame.begin(), len, bytes.get());
    parser.emplace(bytes.get(), U32(len));
  }
  explicit Parsed(const std::vector<U8> &frame) : Parsed(frame, frame.size()) {}
  const EthPktParser *operator->() const { return &*parser; }

  std::unique_ptr<U8[]> bytes;
  std::optional<EthPktParser> parser;
};

std::vector<U8> with(std::vector<U8> frame, std::size_t offset, U8 value) {
  frame.at(offset) = value;
  return frame;
}

// Where the parser found each layer and what it read there, on one line.
std::string layers(const EthPktParser &p) {
  std::ostringstream os;
  for (U32 i = 0; i < p.vlanCount(); ++i) {
    os << "vlan " << p.vlanId(i) << ' ';
  }
  os << std::hex << p.etherType() << std::dec << ' '
     << p.labelStack().stringValue() << " ip " << p.ipHdrOffset() << '+'
     << p.ipHdrLength() << '/' << p.ipLength() << ' ' << p.srcIp() << " > "
     << p.dstIp() << " ttl " << int(p.ipTtl())
     << (p.routerAlert() ? " alert" : "") << " udp " << p.udpHdrOffset() << '/'
     << p.udpLength() << ' ' << p.srcPort() << " > " << p.dstPort()
     << " payload " << p.udpPayloadLength();
  return os.str();
}

// The last four rows are what the parser tolerates: one tag with the
// multicast MPLS type, padding after the IP packet, a UDP length claiming
// more than there is, and an IP length longer than the frame.
TEST(EthPktParserTest, GoodFrames) {
  std::vector<U8> oneTag = labelledIpv4;
  const std::vector<U8> tag = hexBytes("8100 0005");
  oneTag.insert(oneTag.begin() + 12, tag.begin(), tag.end());
  oneTag[17] = 0x48;
  std::vector<U8> padded = doubleTaggedIpv4;
  padded.resize(padded.size() + 10, 0);
  std::vector<U8> longIp = with(labelledIpv4, 24, 0x03);
  longIp[25] = 0xE8;
  const std::string twoLabels = "[100/ttl=255, 200/tc=5/bos/ttl=1] ip ";
  const struct {
    std::vector<U8> frame;
    std::string layers;
    // The lengths are as sent, so the checksums verify over them.
    bool asSent = true;
  } cases[] = {
      {labelledIpv4, "8847 " + twoLabels +
                         "22+24/40 10.0.0.1 > 127.0.0.1 ttl 1 alert "
                         "udp 46/16 49152 > 3503 payload 8"},
      {plainIpv6, "86dd [] ip 14+40/52 2001:db8::1 > 2001:db8::2 ttl 64 "
                  "udp 54/12 3503 > 3503 payload 4"},
      {labelledIpv6, "8847 [16/bos/ttl=1] ip 18+48/60 2001:db8::a > "
                     "::ffff:127.0.0.1 ttl 1 alert udp 66/12 49153 > 3503 "
                     "payload 4"},
      {doubleTaggedIpv4, "vlan 100 vlan 200 800 [] ip 22+20/32 192.168.0.1 > "
                         "192.168.0.199 ttl 64 udp 42/12 1234 > 53 payload 4"},
      {oneTag, "vlan 5 8848 " + twoLabels +
                   "26+24/40 10.0.0.1 > 127.0.0.1 ttl 1 alert "
                   "udp 50/16 49152 > 3503 payload 8"},
      {padded, "vlan 100 vlan 200 800 [] ip 22+20/32 192.168.0.1 > "
               "192.168.0.199 ttl 64 udp 42/12 1234 > 53 payload 4"},
      {with(labelledIpv4, 51, 100),
       "8847 " + twoLabels +
           "22+24/40 10.0.0.1 > 127.0.0.1 ttl 1 alert "
           "udp 46/100 49152 > 3503 payload 8",
       false},
      {longIp,
       "8847 " + twoLabels +
           "22+24/1000 10.0.0.1 > 127.0.0.1 ttl 1 alert "
           "udp 46/16 49152 > 3503 payload 8",
       false},
  };
  for (const auto &c : cases) {
    const Parsed p(c.frame);
    ASSERT_TRUE(p->valid()) << p->reason();
    EXPECT_STREQ(p->reason(), "");
    EXPECT_EQ(p->parsedUpTo(), Layer::udp);
    EXPECT_EQ(layers(*p.parser), c.layers);
    EXPECT_EQ(p->ethDst().stringValue(), "00:11:22:33:44:55");
    EXPECT_EQ(p->ethSrc().stringValue(), "02:00:00:00:00:01");
    EXPECT_EQ(p->udpPayloadOffset(), p->udpHdrOffset() + 8);
    EXPECT_EQ(p->length(), c.frame.size());
    if (!c.asSent) {
      continue;
    }
    // The offsets found are the ones the checksums were computed over.
    const U8 *udp = p->frame() + p->udpHdrOffset();
    if (p->isIpv4()) {
      EXPECT_TRUE(Wirx::ipv4HeaderChecksumOk(p->frame() + p->ipHdrOffset(),
                                             p->ipHdrLength()));
      EXPECT_EQ(Wirx::udpChecksumV4(p->srcIp().v4(), p->dstIp().v4(), udp,
                                    p->udpLength()),
                p->udpChecksum());
    } else {
      EXPECT_EQ(Wirx::udpChecksumV6(p->srcIp().v6(), p->dstIp().v6(), udp,
                                    p->udpLength()),
                p->udpChecksum());
    }
  }
}

TEST(EthPktParserTest, OwnsTheReceivedPacket) {
  Orv::Ptr<Wirx::Pkt> pkt =
      Wirx::Pkt::copyOf(plainIpv6.data(), U32(plainIpv6.size()));
  const EthPktParser parser(pkt);
  EXPECT_EQ(pkt->refCount(), 2u);
  EXPECT_EQ(parser.frame(), pkt->data());
  pkt = nullptr;
  ASSERT_TRUE(parser.valid()) << parser.reason();
  EXPECT_EQ(parser.srcIp().stringValue(), "2001:db8::1");

  const EthPktParser none{Orv::Ptr<Wirx::Pkt>()};
  EXPECT_EQ(none.parsedUpTo(), Layer::none);
  EXPECT_EQ(none.length(), 0u);
}

struct BadFrame {
  std::vector<U8> frame;
  const char *reason;
  Layer reached;
};

TEST(EthPktParserTest, MalformedFramesGiveAReasonAndTheLastLayer) {
  std::vector<U8> threeTags = doubleTaggedIpv4;
  const std::vector<U8> tag = hexBytes("8100 0007");
  threeTags.insert(threeTags.begin() + 12, tag.begin(), tag.end());
  std::vector<U8> deepStack = hexBytes(ethMpls);
  for (int i = 0; i < 17; ++i) {
    const std::vector<U8> entry = hexBytes(i == 16 ? "00010140" : "00010040");
    deepStack.insert(deepStack.end(), entry.begin(), entry.end());
  }
  std::vector<U8> ipv4Fragment = labelledIpv4;
  ipv4Fragment[28] = 0x20;
  std::vector<U8> ipv4LaterFragment = labelledIpv4;
  ipv4LaterFragment[29] = 0x01;
  std::vector<U8> ipv4BadOption = labelledIpv4;
  ipv4BadOption[43] = 0x05;
  std::vector<U8> ipv4ZeroLengthOption = labelledIpv4;
  ipv4ZeroLengthOption[43] = 0x00;
  std::vector<U8> shortIpv4Total = labelledIpv4;
  shortIpv4Total[25] = 23;
  std::vector<U8> hbhOptionOverrun = labelledIpv6;
  hbhOptionOverrun[61] = 0x05;
  std::vector<U8> hbhTooLong = labelledIpv6;
  hbhTooLong[59] = 0x02;
  std::vector<U8> udpPastIpEnd = plainIpv6;
  udpPastIpEnd[19] = 0x07;

  const std::vector<BadFrame> cases = {
      {{}, "Frame too short for Ethernet header", Layer::none},
      {hexBytes("001122334455 020000000001 08"),
       "Frame too short for Ethernet header", Layer::none},
      {hexBytes("001122334455 020000000001 8100 00"), "Truncated VLAN tag",
       Layer::none},
      {threeTags, "More than two VLAN tags", Layer::none},
      {hexBytes("001122334455 020000000001 0806 0001"), "Not an IP packet",
       Layer::ethernet},
      {hexBytes(ethMpls + "000640ff 000c8b"),
       "MPLS label stack runs past the frame", Layer::ethernet},
      {deepStack, "MPLS label stack too deep", Layer::ethernet},
      {hexBytes(ethMpls + "00010140"), "Frame ends after the MPLS label stack",
       Layer::mpls},
      // A pseudowire control word starts with a zero nibble.
      {hexBytes(ethMpls + "00010140 00000000"), "Not an IP packet",
       Layer::mpls},
      {with(doubleTaggedIpv4, 22, 0x65), "Bad IPv4 version", Layer::ethernet},
      {with(doubleTaggedIpv4, 22, 0x44), "IPv4 header length below 20 bytes",
       Layer::ethernet},
      {with(doubleTaggedIpv4, 22, 0x4F), "Truncated IPv4 header",
       Layer::ethernet},
      {shortIpv4Total, "IPv4 total length shorter than its header",
       Layer::mpls},
      {ipv4BadOption, "Malformed IPv4 options", Layer::mpls},
      {ipv4ZeroLengthOption, "Malformed IPv4 options", Layer::mpls},
      {ipv4Fragment, "Fragmented IPv4 packet", Layer::ip},
      {ipv4LaterFragment, "Fragmented IPv4 packet", Layer::ip},
      {with(labelledIpv4, 31, 6), "Not UDP", Layer::ip},
      {with(plainIpv6, 14, 0x40), "Bad IPv6 version", Layer::ethernet},
      {with(plainIpv6, 20, 58), "Not UDP", Layer::ip},
      {with(labelledIpv6, 58, 58), "Not UDP", Layer::ip},
      {hbhOptionOverrun, "Malformed IPv6 hop-by-hop options", Layer::mpls},
      {hbhTooLong, "Truncated IPv6 hop-by-hop header", Layer::mpls},
      {udpPastIpEnd, "Truncated UDP header", Layer::ip},
  };
  for (const BadFrame &bad : cases) {
    const Parsed p(bad.frame);
    EXPECT_FALSE(p->valid()) << bad.reason;
    EXPECT_STREQ(p->reason(), bad.reason);
    EXPECT_EQ(p->parsedUpTo(), bad.reached) << bad.reason;
    EXPECT_EQ(p->udpPayloadLength(), 0u) << bad.reason;
    EXPECT_EQ(p->srcPort(), 0u) << bad.reason;
  }
}

TEST(EthPktParserTest, ResultsBeforeTheFailedLayerStayUsable) {
  const Parsed notUdp(with(labelledIpv4, 31, 6));
  EXPECT_EQ(notUdp->labelStack().size(), 2u);
  EXPECT_EQ(notUdp->dstIp().stringValue(), "127.0.0.1");

  const Parsed notIp(hexBytes("001122334455 020000000001 0806 0001"));
  EXPECT_FALSE(notIp->isIpv4() || notIp->isIpv6());
  EXPECT_TRUE(!notIp->srcIp());
  EXPECT_EQ(notIp->ipTtl(), 0);
  EXPECT_EQ(notIp->ethSrc().stringValue(), "02:00:00:00:00:01");

  const Parsed empty(std::vector<U8>{});
  EXPECT_TRUE(!empty->ethDst());
  EXPECT_EQ(EthPktParser(nullptr, 100).length(), 0u);
}

// Every layer boundary of every good frame, cut at each byte: frames cut
// before the UDP payload fail with a reason, frames cut inside it parse with
// the payload present, and none reads past its end.
TEST(EthPktParserTest, EveryTruncationIsHandled) {
  for (const std::vector<U8> *frame :
       {&labelledIpv4, &plainIpv6, &labelledIpv6, &doubleTaggedIpv4}) {
    const Parsed whole(*frame);
    const U32 payloadOffset = whole->udpPayloadOffset();
    for (std::size_t len = 0; len < frame->size(); ++len) {
      const Parsed p(*frame, len);
      if (len < payloadOffset) {
        EXPECT_FALSE(p->valid()) << len;
        EXPECT_STRNE(p->reason(), "") << len;
        EXPECT_LT(p->parsedUpTo(), Layer::udp) << len;
      } else {
        ASSERT_TRUE(p->valid()) << len << ' ' << p->reason();
        EXPECT_EQ(p->udpPayloadLength(), len - payloadOffset);
      }
    }
  }
}

} // namespace
} // namespace MplsUtils
