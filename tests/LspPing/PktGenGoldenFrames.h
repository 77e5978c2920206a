#pragma once

// Echo messages built with the packet generator, each beside the bytes it
// must come out as. The bytes are written out by hand from the wire layouts,
// one layer per line; the IPv4 and UDP checksums were computed once by a
// separate program and are written here literally, so that nothing in this
// file repeats the generator's arithmetic. Shared by the generator's tests
// and by the cross-check against an independent dissector.

#include <cstdint>
#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

#include "Bytes.h"
#include "LspPing/LspPingDownstreamLabelEntry.h"
#include "LspPing/LspPingDownstreamLabelStack.h"
#include "LspPing/LspPingDownstreamSignalingProtocol.h"
#include "LspPing/LspPingMultipathBitset.h"
#include "LspPing/LspPingPktGen.h"
#include "Wirx/EthHdr.h"
#include "Wirx/MplsLabel.h"

namespace LspPingTest {

struct GoldenFrame {
  const char *name;
  void (*build)(LspPing::LspPingPktGen &gen);
  const char *hex;
  // What a reader must find in it: the message type, the type and value
  // length of each top-level TLV, and the first Target FEC Stack sub-TLV's
  // type and length (0 and 0 when there is none).
  std::uint8_t messageType;
  std::vector<std::uint16_t> tlvTypes;
  std::vector<std::uint16_t> tlvLengths;
  std::uint16_t fecType;
  std::uint16_t fecLength;
};

// Test output names the frame rather than dumping the structure.
inline void PrintTo(const GoldenFrame &frame, std::ostream *os) {
  *os << frame.name;
}

// Bytes as hex, 16 to a line, so that a mismatch shows as a line diff.
inline std::string hexLines(const std::vector<std::uint8_t> &bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    char byte[4];
    std::snprintf(byte, sizeof byte, "%02x", bytes[i]);
    text += byte;
    text += (i % 16 == 15 || i + 1 == bytes.size()) ? "\n" : " ";
  }
  return text;
}

namespace golden {

using LspPing::LspPingPktGen;

inline Wirx::IpAddr ip4(const char *text) {
  return *Wirx::IpAddr::fromString(text);
}
inline Wirx::Ip6Addr ip6(const char *text) {
  return *Wirx::Ip6Addr::fromString(text);
}

// The peers' reference request: sender 02:00:00:00:00:01 / 10.0.0.1 to
// 02:00:00:00:00:02 / 127.0.0.1, labels 100 and 200, UDP 49152 -> 3503.
inline const Wirx::EthAddr senderMac{{0x02, 0, 0, 0, 0, 0x01}};
inline const Wirx::EthAddr responderMac{{0x02, 0, 0, 0, 0, 0x02}};
constexpr std::uint16_t senderPort = 49152;
constexpr std::uint16_t echoPort = 3503;
constexpr std::uint8_t udp = 17;
// 2025-11-21 00:00:00 UTC in NTP seconds, and a fraction.
constexpr std::uint32_t sentSeconds = 3972672000u;
constexpr std::uint32_t sentFraction = 0x12345678;

inline void labelledEthernet(LspPingPktGen &gen) {
  gen.addEtherHdr(responderMac, senderMac, Wirx::EthHdr::etherTypeMpls);
  gen.addMplsHdr(100, 0, false, 255);
  gen.addMplsHdr(200, 0, true, 255);
}

inline void requestHeader(LspPingPktGen &gen) {
  gen.addUdpHdr(senderPort, echoPort);
  gen.addLspPingHdr(1, 0, 1, 2, 0, 0, 7, 42, sentSeconds, sentFraction, 0, 0);
}

inline void ipv4Request(LspPingPktGen &gen) {
  labelledEthernet(gen);
  gen.addIpHdr(ip4("10.0.0.1"), ip4("127.0.0.1"), 1, udp);
  requestHeader(gen);
}

inline void ipv6Request(LspPingPktGen &gen) {
  labelledEthernet(gen);
  gen.addIp6Hdr(ip6("2001:db8::1"), ip6("::ffff:127.0.0.1"), 1, udp);
  requestHeader(gen);
}

// Return code 3 at depth 1, received one and a half seconds after sending.
inline void replyHeader(LspPingPktGen &gen) {
  gen.addUdpHdr(echoPort, senderPort);
  gen.addLspPingHdr(1, 0, 2, 2, 3, 1, 7, 42, sentSeconds, sentFraction,
                    sentSeconds + 1, 0x80000000);
}

// As a transmitter adds it: a length of 0, filled in at the end.
inline void ldpFec(LspPingPktGen &gen) {
  gen.addLspPingTlvHdr(1, 0);
  gen.addLspPingLdpIpv4SubTlv(ip4("10.1.1.1"), 32);
}

inline void srIpv6Fec(LspPingPktGen &gen) {
  gen.addLspPingTlvHdr(1, 0);
  gen.addLspPingSrIpv6SubTlv(ip6("2001:db8::9"), 128,
                             LspPing::LspPingSrIgpProtocol::isis);
}

inline LspPing::LspPingDownstreamLabelEntry
dsLabel(std::uint32_t label, std::uint8_t tc, bool bos,
        LspPing::LspPingDownstreamSignalingProtocol protocol) {
  return LspPing::LspPingDownstreamLabelEntry::fromLabel(Wirx::MplsLabel(label),
                                                         tc, bos, protocol);
}

// The requests below carry a Downstream Mapping TLV the way a transmitter
// adds one: after the lengths of the FEC stack were filled in once.
inline void addDsIpv4(LspPingPktGen &gen, LspPing::LspPingMultipathType type,
                      const LspPing::LspPingMultipathBitset &bitset,
                      const LspPing::LspPingDownstreamLabelStack &labels) {
  gen.addLspPingDownstreamMappingTlv(
      1500, LspPing::LspPingAddrType::ipv4Numbered, 0, ip4("10.0.0.2"),
      ip4("10.0.1.2"), type, 0, ip4("127.0.0.0"), bitset, labels);
}

inline const std::vector<GoldenFrame> &goldenFrames() {
  using LspPing::LspPingDownstreamSignalingProtocol;
  using LspPing::LspPingMultipathType;
  constexpr auto ldp =
      LspPingDownstreamSignalingProtocol::dsInfoSignalingProtocolLdp;
  static const std::vector<GoldenFrame> frames = {
      {"LdpIpv4OverIpv4",
       [](LspPingPktGen &gen) {
         ipv4Request(gen);
         ldpFec(gen);
         gen.computeHdrLenChecksum();
       },
       // Ethernet: destination, source, MPLS unicast
       "020000000002 020000000001 8847 |"
       // label 100, tc 0, not bottom, TTL 255 | label 200, bottom, TTL 255
       "00064 0 ff | 000c8 1 ff |"
       // IPv4: IHL 6, tos, total length 80, id 0, DF, TTL 1, UDP, checksum,
       // 10.0.0.1, 127.0.0.1, Router Alert option
       "46 00 0050 0000 4000 01 11 5b97 0a000001 7f000001 94040000 |"
       // UDP: 49152 -> 3503, length 56, checksum
       "c000 0daf 0038 fd0b |"
       // echo header: version 1, flags 0, request, reply by UDP, return code
       // and subcode 0, handle 7, sequence 42, sent, received
       "0001 0000 01 02 00 00 00000007 0000002a ecca2a00 12345678 "
       "00000000 00000000 |"
       // Target FEC Stack, length 12 | LDP IPv4, length 5, 10.1.1.1/32, mbz
       "0001 000c | 0001 0005 0a010101 20 00 0000",
       1,
       {1},
       {12},
       1,
       5},
      {"RsvpIpv4OverIpv4",
       [](LspPingPktGen &gen) {
         ipv4Request(gen);
         gen.addLspPingTlvHdr(1, 0);
         gen.addLspPingRsvpIpv4SubTlv(ip4("192.0.2.9"), 17, ip4("192.0.2.1"),
                                      ip4("192.0.2.1"), 5);
         gen.computeHdrLenChecksum();
       },
       "020000000002 020000000001 8847 | 00064 0 ff | 000c8 1 ff |"
       // total length 92
       "46 00 005c 0000 4000 01 11 5b8b 0a000001 7f000001 94040000 |"
       // length 68
       "c000 0daf 0044 e1b5 |"
       "0001 0000 01 02 00 00 00000007 0000002a ecca2a00 12345678 "
       "00000000 00000000 |"
       // Target FEC Stack, length 24 | RSVP IPv4 LSP, length 20: end point
       // 192.0.2.9, mbz, tunnel 17, extended tunnel id 192.0.2.1, sender
       // 192.0.2.1, mbz, LSP 5
       "0001 0018 | 0003 0014 c0000209 0000 0011 c0000201 c0000201 0000 0005",
       1,
       {1},
       {24},
       3,
       20},
      {"SrIpv4OverIpv4",
       [](LspPingPktGen &gen) {
         ipv4Request(gen);
         gen.addLspPingTlvHdr(1, 0);
         gen.addLspPingSrIpv4SubTlv(ip4("10.1.1.1"), 32,
                                    LspPing::LspPingSrIgpProtocol::isis);
         gen.computeHdrLenChecksum();
       },
       "020000000002 020000000001 8847 | 00064 0 ff | 000c8 1 ff |"
       "46 00 0050 0000 4000 01 11 5b97 0a000001 7f000001 94040000 |"
       "c000 0daf 0038 8109 |"
       "0001 0000 01 02 00 00 00000007 0000002a ecca2a00 12345678 "
       "00000000 00000000 |"
       // Target FEC Stack, length 12 | SR IPv4 0x7C00, length 6 (the two
       // reserved bytes not counted), 10.1.1.1/32, IS-IS, reserved
       "0001 000c | 7c00 0006 0a010101 20 02 0000",
       1,
       {1},
       {12},
       0x7C00,
       6},
      {"SrIpv6OverIpv6",
       [](LspPingPktGen &gen) {
         ipv6Request(gen);
         srIpv6Fec(gen);
         gen.computeHdrLenChecksum();
       },
       "020000000002 020000000001 8847 | 00064 0 ff | 000c8 1 ff |"
       // IPv6: version 6, no class or flow, payload 68, UDP, hop limit 1,
       // 2001:db8::1, ::ffff:127.0.0.1
       "60000000 0044 11 01 | 20010db8000000000000000000000001 |"
       "00000000000000000000ffff7f000001 |"
       "c000 0daf 0044 563d |"
       "0001 0000 01 02 00 00 00000007 0000002a ecca2a00 12345678 "
       "00000000 00000000 |"
       // Target FEC Stack, length 24 | SR IPv6 35, length 18 (reserved bytes
       // not counted), 2001:db8::9/128, IS-IS, reserved
       "0001 0018 | 0023 0012 20010db8000000000000000000000009 80 02 0000",
       1,
       {1},
       {24},
       35,
       18},
      {"NilFecOverIpv6",
       [](LspPingPktGen &gen) {
         ipv6Request(gen);
         gen.addLspPingTlvHdr(1, 0);
         gen.addLspPingNilFecSubTlv(100);
         gen.computeHdrLenChecksum();
       },
       "020000000002 020000000001 8847 | 00064 0 ff | 000c8 1 ff |"
       // payload 52
       "60000000 0034 11 01 | 20010db8000000000000000000000001 |"
       "00000000000000000000ffff7f000001 |"
       "c000 0daf 0034 c44c |"
       "0001 0000 01 02 00 00 00000007 0000002a ecca2a00 12345678 "
       "00000000 00000000 |"
       // Target FEC Stack, length 8 | Nil FEC, length 4, label 100, mbz
       "0001 0008 | 0010 0004 00064 000",
       1,
       {1},
       {8},
       16,
       4},
      {"IntfAndLabelStackIpv4",
       [](LspPingPktGen &gen) {
         gen.addEtherHdr(senderMac, responderMac, Wirx::EthHdr::etherTypeIpv4);
         gen.addIpHdr(ip4("10.0.0.2"), ip4("10.0.0.1"), 255, udp);
         replyHeader(gen);
         ldpFec(gen);
         Wirx::MplsLabelStack labels;
         labels.push(Wirx::MplsLabelEntry(Wirx::MplsLabel(100), 2, false, 64));
         labels.push(Wirx::MplsLabelEntry(Wirx::MplsLabel(200), 0, true, 1));
         gen.addLspPingIntfAndLabelStackTlv(
             LspPing::LspPingAddrType::ipv4Numbered, ip4("10.0.0.1"),
             Wirx::IntfId("Ethernet1"), labels);
         gen.computeHdrLenChecksum();
       },
       // unlabelled, IPv4
       "020000000001 020000000002 0800 |"
       // total length 104, TTL 255, 10.0.0.2 -> 10.0.0.1
       "46 00 0068 0000 4000 ff 11 d27d 0a000002 0a000001 94040000 |"
       "0daf c000 0050 109f |"
       // echo reply, return code 3, subcode 1, received 1.5 s after sending
       "0001 0000 02 02 03 01 00000007 0000002a ecca2a00 12345678 "
       "ecca2a01 80000000 |"
       // Target FEC Stack keeps its own length 12
       "0001 000c | 0001 0005 0a010101 20 00 0000 |"
       // Interface and Label Stack, length 20: IPv4 numbered, mbz, address
       // and interface left zero, each entry as given: 100 tc 2 TTL 64, 200
       // bottom of stack TTL 1
       "0007 0014 | 01 00 0000 | 00000000 | 00000000 | 00064 4 40 | "
       "000c8 1 01",
       2,
       {1, 7},
       {12, 20},
       1,
       5},
      {"IntfAndLabelStackIpv6",
       [](LspPingPktGen &gen) {
         gen.addEtherHdr(senderMac, responderMac, Wirx::EthHdr::etherTypeIpv6);
         gen.addIp6Hdr(ip6("2001:db8::2"), ip6("2001:db8::1"), 255, udp);
         replyHeader(gen);
         Wirx::MplsLabelStack labels;
         labels.push(Wirx::MplsLabelEntry(Wirx::MplsLabel(100), 2, false, 64));
         labels.push(Wirx::MplsLabelEntry(Wirx::MplsLabel(200), 0, true, 1));
         gen.addLspPingIntfAndLabelStackTlv(
             LspPing::LspPingAddrType::ipv6Numbered, ip6("2001:db8::2"),
             Wirx::IntfId("Ethernet1"), labels);
         gen.computeHdrLenChecksum();
       },
       "020000000001 020000000002 86dd |"
       // payload 88, hop limit 255, 2001:db8::2 -> 2001:db8::1
       "60000000 0058 11 ff | 20010db8000000000000000000000002 |"
       "20010db8000000000000000000000001 |"
       "0daf c000 0058 f219 |"
       "0001 0000 02 02 03 01 00000007 0000002a ecca2a00 12345678 "
       "ecca2a01 80000000 |"
       // Interface and Label Stack, length 44: IPv6 numbered, mbz, address
       // and interface left zero, labels 100 and 200 (bottom) as given
       "0007 002c | 03 00 0000 | 00000000000000000000000000000000 |"
       "00000000000000000000000000000000 | 00064 4 40 | 000c8 1 01",
       2,
       {7},
       {44},
       0,
       0},
      {"DownstreamMappingIpv4",
       [](LspPingPktGen &gen) {
         ipv4Request(gen);
         ldpFec(gen);
         gen.computeHdrLenChecksum();
         LspPing::LspPingDownstreamLabelStack labels;
         labels.labelEntryIs(0, dsLabel(300, 0, false, ldp));
         labels.labelEntryIs(1, dsLabel(400, 0, true, ldp));
         labels.size = 2;
         addDsIpv4(gen, LspPingMultipathType::noMultipath,
                   LspPing::LspPingMultipathBitset(), labels);
         gen.computeHdrLenChecksum();
       },
       "020000000002 020000000001 8847 | 00064 0 ff | 000c8 1 ff |"
       // total length 108
       "46 00 006c 0000 4000 01 11 5b7b 0a000001 7f000001 94040000 |"
       "c000 0daf 0054 1fa8 |"
       "0001 0000 01 02 00 00 00000007 0000002a ecca2a00 12345678 "
       "00000000 00000000 |"
       "0001 000c | 0001 0005 0a010101 20 00 0000 |"
       // Downstream Mapping, length 24: MTU 1500, IPv4 numbered, flags 0,
       // 10.0.0.2, interface 10.0.1.2, no multipath, depth 0, multipath
       // length 0, label 300 and label 400 (bottom), both signalled by LDP
       "0002 0018 | 05dc 01 00 | 0a000002 | 0a000102 | 00 00 0000 |"
       "0012c 0 03 | 00190 1 03",
       1,
       {1, 2},
       {12, 24},
       1,
       5},
      {"DownstreamMappingIpv4MaskedIpSet",
       [](LspPingPktGen &gen) {
         ipv4Request(gen);
         ldpFec(gen);
         gen.computeHdrLenChecksum();
         LspPing::LspPingDownstreamLabelStack labels;
         labels.labelEntryIs(0, dsLabel(400, 0, true, ldp));
         labels.size = 1;
         // Bytes 1 and 2 are not stored: they go out as zeros.
         LspPing::LspPingMultipathBitset bitset(4);
         bitset.bitsetIs(0, 0x80);
         bitset.bitsetIs(3, 0x01);
         addDsIpv4(gen, LspPingMultipathType::maskedIpSetMultipath, bitset,
                   labels);
         gen.computeHdrLenChecksum();
       },
       "020000000002 020000000001 8847 | 00064 0 ff | 000c8 1 ff |"
       // total length 112
       "46 00 0070 0000 4000 01 11 5b77 0a000001 7f000001 94040000 |"
       "c000 0daf 0058 d8a7 |"
       "0001 0000 01 02 00 00 00000007 0000002a ecca2a00 12345678 "
       "00000000 00000000 |"
       "0001 000c | 0001 0005 0a010101 20 00 0000 |"
       // Downstream Mapping, length 28: masked IP set, multipath length 8:
       // base 127.0.0.0, mask 80000001 | label 400 (bottom), LDP
       "0002 001c | 05dc 01 00 | 0a000002 | 0a000102 | 08 00 0008 |"
       "7f000000 | 80000001 | 00190 1 03",
       1,
       {1, 2},
       {12, 28},
       1,
       5},
      {"DownstreamMappingIpv6MaskedIpSet",
       [](LspPingPktGen &gen) {
         ipv6Request(gen);
         srIpv6Fec(gen);
         gen.computeHdrLenChecksum();
         LspPing::LspPingDownstreamLabelStack labels;
         labels.labelEntryIs(0, dsLabel(500, 5, true,
                                        LspPingDownstreamSignalingProtocol::
                                            dsInfoSignalingProtocolIsis));
         labels.size = 1;
         LspPing::LspPingMultipathBitset bitset(4);
         bitset.bitsetIs(0, 0x40);
         gen.addLspPingDownstreamMappingTlv(
             1500, LspPing::LspPingAddrType::ipv6Numbered, 0,
             ip6("2001:db8::2"), ip6("2001:db8:1::2"),
             LspPingMultipathType::maskedIpSetMultipath, 0,
             ip6("::ffff:127.0.0.0"), bitset, labels);
         gen.computeHdrLenChecksum();
       },
       "020000000002 020000000001 8847 | 00064 0 ff | 000c8 1 ff |"
       // payload 136
       "60000000 0088 11 01 | 20010db8000000000000000000000001 |"
       "00000000000000000000ffff7f000001 |"
       "c000 0daf 0088 dee5 |"
       "0001 0000 01 02 00 00 00000007 0000002a ecca2a00 12345678 "
       "00000000 00000000 |"
       "0001 0018 | 0023 0012 20010db8000000000000000000000009 80 02 0000 |"
       // Downstream Mapping, length 64: MTU 1500, IPv6 numbered, flags 0,
       // 2001:db8::2, interface 2001:db8:1::2, masked IP set, depth 0,
       // multipath length 20: base ::ffff:127.0.0.0, mask 40000000 |
       // label 500, tc 5, bottom, IS-IS
       "0002 0040 | 05dc 03 00 | 20010db8000000000000000000000002 |"
       "20010db8000100000000000000000002 | 08 00 0014 |"
       "00000000000000000000ffff7f000000 | 40000000 | 001f4 b 06",
       1,
       {1, 2},
       {24, 64},
       35,
       18},
  };
  return frames;
}

} // namespace golden

using golden::goldenFrames;

// A pooled packet with a generator over it, initialized as its owner does.
inline Orv::Ptr<LspPing::LspPingPktGen> newPktGen() {
  auto gen = LspPing::lspPingPktGenFactory(Wirx::Pkt::make());
  gen->initializedIs(true);
  return gen;
}

inline std::vector<std::uint8_t> frameBytes(const LspPing::LspPingPktGen &gen) {
  const Wirx::Pkt &pkt = *gen.pkt();
  return {pkt.data(), pkt.data() + pkt.frontBytes()};
}

// The frame `golden` builds, as bytes.
inline std::vector<std::uint8_t> build(const GoldenFrame &golden) {
  auto gen = newPktGen();
  golden.build(*gen);
  return frameBytes(*gen);
}

} // namespace LspPingTest
