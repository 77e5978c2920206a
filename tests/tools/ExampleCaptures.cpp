#include "ExampleCaptures.h"

#include <array>
#include <initializer_list>

namespace LspPingTest {

namespace {

// Network-order writers, kept apart from the library's own so that the
// examples check it rather than repeat it.
void put8(Bytes &b, std::uint8_t v) { b.push_back(v); }
void put16(Bytes &b, std::uint16_t v) {
  b.push_back(static_cast<std::uint8_t>(v >> 8));
  b.push_back(static_cast<std::uint8_t>(v));
}
void put32(Bytes &b, std::uint32_t v) {
  put16(b, static_cast<std::uint16_t>(v >> 16));
  put16(b, static_cast<std::uint16_t>(v));
}
void put(Bytes &b, const Bytes &more) {
  b.insert(b.end(), more.begin(), more.end());
}
void putLe32(Bytes &b, std::uint32_t v) {
  for (int shift = 0; shift < 32; shift += 8) {
    b.push_back(static_cast<std::uint8_t>(v >> shift));
  }
}
void putLe16(Bytes &b, std::uint16_t v) {
  b.push_back(static_cast<std::uint8_t>(v));
  b.push_back(static_cast<std::uint8_t>(v >> 8));
}

using Ip4 = std::array<std::uint8_t, 4>;
using Ip6 = std::array<std::uint8_t, 16>;

constexpr std::uint16_t echoPort = 3503;
constexpr std::uint16_t senderPort = 49152;
constexpr std::uint16_t etherIpv4 = 0x0800;
constexpr std::uint16_t etherIpv6 = 0x86dd;
constexpr std::uint16_t etherArp = 0x0806;
constexpr std::uint16_t etherMpls = 0x8847;
constexpr std::uint8_t protoUdp = 17;
constexpr std::uint8_t request = 1;
constexpr std::uint8_t reply = 2;
// NTP seconds of 2025-01-01, an arbitrary fixed send time.
constexpr std::uint32_t sentSeconds = 3944678400u;

// RFC 1071 one's-complement sum, folded.
std::uint32_t sum16(const Bytes &b, std::uint32_t sum = 0) {
  for (std::size_t i = 0; i < b.size(); i += 2) {
    std::uint32_t word = std::uint32_t{b[i]} << 8;
    if (i + 1 < b.size()) {
      word |= b[i + 1];
    }
    sum += word;
  }
  return sum;
}
std::uint16_t fold(std::uint32_t sum) {
  while (sum >> 16) {
    sum = (sum & 0xffff) + (sum >> 16);
  }
  return static_cast<std::uint16_t>(~sum);
}
// UDP sends an all-zero checksum as all ones: zero means "none".
std::uint16_t udpChecksum(std::uint32_t sum) {
  const std::uint16_t c = fold(sum);
  return c == 0 ? 0xffff : c;
}

Bytes udp(std::uint16_t src, std::uint16_t dst, const Bytes &payload) {
  Bytes b;
  put16(b, src);
  put16(b, dst);
  put16(b, static_cast<std::uint16_t>(8 + payload.size()));
  put16(b, 0);
  put(b, payload);
  return b;
}
void setChecksum(Bytes &b, std::size_t at, std::uint16_t c) {
  b[at] = static_cast<std::uint8_t>(c >> 8);
  b[at + 1] = static_cast<std::uint8_t>(c);
}

struct Ipv4Opts {
  bool routerAlert = false;
  std::uint8_t ttl = 64;
  // Bytes inside the IP packet but past the UDP datagram's own length.
  Bytes slack = {};
};

Bytes ipv4Udp(Ip4 src, Ip4 dst, std::uint16_t sport, std::uint16_t dport,
              const Bytes &payload, Ipv4Opts opts = {}) {
  Bytes seg = udp(sport, dport, payload);
  Bytes pseudo(src.begin(), src.end());
  pseudo.insert(pseudo.end(), dst.begin(), dst.end());
  put8(pseudo, 0);
  put8(pseudo, protoUdp);
  put16(pseudo, static_cast<std::uint16_t>(seg.size()));
  setChecksum(seg, 6, udpChecksum(sum16(seg, sum16(pseudo))));

  const std::uint8_t ihl = opts.routerAlert ? 6 : 5;
  Bytes ip;
  put8(ip, static_cast<std::uint8_t>(0x40 | ihl));
  put8(ip, 0); // DSCP/ECN
  put16(ip,
        static_cast<std::uint16_t>(ihl * 4 + seg.size() + opts.slack.size()));
  put16(ip, 1);      // identification
  put16(ip, 0x4000); // don't fragment
  put8(ip, opts.ttl);
  put8(ip, protoUdp);
  put16(ip, 0);
  ip.insert(ip.end(), src.begin(), src.end());
  ip.insert(ip.end(), dst.begin(), dst.end());
  if (opts.routerAlert) {
    // Router Alert: copied, option 20, length 4, value 0 ("examine").
    put32(ip, 0x94040000);
  }
  setChecksum(ip, 10, fold(sum16(ip)));
  put(ip, seg);
  put(ip, opts.slack);
  return ip;
}

Bytes ipv6Udp(Ip6 src, Ip6 dst, std::uint16_t sport, std::uint16_t dport,
              const Bytes &payload) {
  Bytes seg = udp(sport, dport, payload);
  Bytes pseudo(src.begin(), src.end());
  pseudo.insert(pseudo.end(), dst.begin(), dst.end());
  put32(pseudo, static_cast<std::uint32_t>(seg.size()));
  put32(pseudo, protoUdp);
  setChecksum(seg, 6, udpChecksum(sum16(seg, sum16(pseudo))));

  Bytes ip;
  put32(ip, 0x60000000); // version 6, no traffic class, no flow label
  put16(ip, static_cast<std::uint16_t>(seg.size()));
  put8(ip, protoUdp);
  put8(ip, 64); // hop limit
  ip.insert(ip.end(), src.begin(), src.end());
  ip.insert(ip.end(), dst.begin(), dst.end());
  put(ip, seg);
  return ip;
}

struct Label {
  std::uint32_t value;
  std::uint8_t ttl;
};

// Bytes past the network packet stand for a trailer that some capture
// hardware leaves on a frame (the frame check sequence, say).
Bytes ethernet(std::uint16_t etherType, const Bytes &payload,
               std::initializer_list<Label> labels = {},
               const Bytes &trailer = {}) {
  Bytes b{0x02, 0, 0, 0, 0, 0x02, 0x02, 0, 0, 0, 0, 0x01};
  put16(b, etherType);
  std::size_t left = labels.size();
  for (const Label &label : labels) {
    const std::uint32_t bottom = --left == 0 ? 1 : 0;
    put32(b, label.value << 12 | bottom << 8 | label.ttl);
  }
  put(b, payload);
  put(b, trailer);
  // Frames shorter than Ethernet's minimum go out padded with zeros.
  if (b.size() < 60) {
    b.resize(60, 0);
  }
  return b;
}

struct EchoFields {
  std::uint16_t version = 1;
  std::uint8_t messageType = request;
  std::uint8_t replyMode = 2; // reply by UDP
  std::uint8_t returnCode = 0;
  std::uint8_t returnSubcode = 0;
  std::uint32_t senderHandle = 7;
  std::uint32_t sequenceNumber = 1;
};

Bytes echoHeader(const EchoFields &f) {
  Bytes b;
  put16(b, f.version);
  put16(b, 0); // global flags
  put8(b, f.messageType);
  put8(b, f.replyMode);
  put8(b, f.returnCode);
  put8(b, f.returnSubcode);
  put32(b, f.senderHandle);
  put32(b, f.sequenceNumber);
  put32(b, sentSeconds);
  put32(b, 0); // sent, fraction of a second
  put32(b, f.messageType == reply ? sentSeconds : 0);
  put32(b, f.messageType == reply ? 0x80000000 : 0); // half a second later
  return b;
}

// A TLV whose length field says `length` and whose value is `value`, as
// given: the malformed examples give one that disagrees.
Bytes tlv(std::uint16_t type, std::uint16_t length, const Bytes &value) {
  Bytes b;
  put16(b, type);
  put16(b, length);
  put(b, value);
  return b;
}

Bytes ldpIpv4TargetFec() {
  const Bytes subTlv =
      tlv(1, 5, {10, 1, 1, 1, 32, 0, 0, 0}); // LDP IPv4 prefix 10.1.1.1/32
  return tlv(1, static_cast<std::uint16_t>(subTlv.size()), subTlv);
}

// A FEC 128 pseudowire (sub-TLV 10, 14 bytes and 2 of padding): sender and
// receiver PE, pseudowire ID 42, type 5 (Ethernet).
Bytes pseudowireTargetFec() {
  Bytes value{10, 0, 0, 1, 10, 0, 0, 9};
  put32(value, 42);
  put16(value, 5);
  put16(value, 0);
  const Bytes subTlv = tlv(10, 14, value);
  return tlv(1, static_cast<std::uint16_t>(subTlv.size()), subTlv);
}

// A label stack entry as the label stack TLVs carry it: label, traffic
// class, bottom of stack and, in the last byte, a TTL or a protocol.
std::uint32_t labelWord(std::uint32_t label, std::uint8_t tc, bool bottom,
                        std::uint8_t last) {
  return label << 12 | std::uint32_t{tc} << 9 |
         std::uint32_t{bottom ? 1u : 0u} << 8 | last;
}

// How the request reached the responder, router 10.0.0.2: at its numbered
// IPv4 interface 10.0.1.2, with labels 100 and 200.
Bytes intfAndLabelStack() {
  Bytes value{1, 0, 0, 0, 10, 0, 0, 2, 10, 0, 1, 2};
  put32(value, labelWord(100, 0, false, 254));
  put32(value, labelWord(200, 0, true, 1));
  return tlv(7, static_cast<std::uint16_t>(value.size()), value);
}

// Where the responder sends it on: MTU 1500 to router 10.0.0.3 at its
// numbered IPv4 interface 10.0.2.3; the masked IP set 127.0.0.0 to
// 127.0.0.3 takes that path; labels 300 (LDP) and 16009 (IS-IS), traffic
// class 5.
Bytes downstreamMapping() {
  Bytes value;
  put16(value, 1500);
  put8(value, 1); // IPv4 numbered
  put8(value, 0); // flags
  put(value, {10, 0, 0, 3, 10, 0, 2, 3});
  put8(value, 8); // masked IP set
  put8(value, 0); // depth limit
  put16(value, 8);
  put(value, {127, 0, 0, 0});
  put32(value, 0xf0000000);
  put32(value, labelWord(300, 0, false, 3));
  put32(value, labelWord(16009, 5, true, 6));
  return tlv(2, static_cast<std::uint16_t>(value.size()), value);
}

Bytes cat(Bytes a, const Bytes &b) {
  put(a, b);
  return a;
}

constexpr Ip4 sender4{10, 0, 0, 1};
constexpr Ip4 loopback4{127, 0, 0, 1};
constexpr Ip4 responder4{10, 0, 0, 2};

// Most malformed messages are plain IPv4 echo requests or replies: the
// framing is right, only the echo message is wrong.
Bytes ipv4Request(const Bytes &payload) {
  return ethernet(etherIpv4, ipv4Udp(sender4, loopback4, senderPort, echoPort,
                                     payload, {.routerAlert = true, .ttl = 1}));
}
Bytes ipv4Reply(const Bytes &payload, const Bytes &slack = {},
                const Bytes &trailer = {}) {
  return ethernet(etherIpv4,
                  ipv4Udp(responder4, sender4, echoPort, senderPort, payload,
                          {.slack = slack}),
                  {}, trailer);
}

Bytes arpRequest() {
  Bytes b;
  put16(b, 1);         // Ethernet
  put16(b, etherIpv4); // resolving IPv4
  put8(b, 6);
  put8(b, 4);
  put16(b, 1); // request
  put(b, {0x02, 0, 0, 0, 0, 0x01});
  put(b, {10, 0, 0, 1});
  put(b, {0, 0, 0, 0, 0, 0});
  put(b, {10, 0, 0, 2});
  return ethernet(etherArp, b);
}

} // namespace

std::vector<ExampleCapture> exampleCaptures() {
  const Bytes labelledRequest =
      ethernet(etherMpls,
               ipv4Udp(sender4, loopback4, senderPort, echoPort,
                       cat(echoHeader({}), ldpIpv4TargetFec()),
                       {.routerAlert = true, .ttl = 1}),
               {{100, 255}, {200, 255}});

  const Ip6 sender6{0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
  const Ip6 responder6{0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0,
                       0,    0,    0,    0,    0, 0, 0, 2};
  const Bytes ipv6Reply =
      ethernet(etherIpv6, ipv6Udp(responder6, sender6, echoPort, senderPort,
                                  echoHeader({.messageType = reply,
                                              .returnCode = 3,
                                              .returnSubcode = 1})));

  // Label switched at stack depth 1, with where from and where to.
  const Bytes switchedReply = ipv4Reply(
      cat(cat(echoHeader(
                  {.messageType = reply, .returnCode = 8, .returnSubcode = 1}),
              downstreamMapping()),
          intfAndLabelStack()));

  const Bytes pseudowireRequest = ethernet(
      etherMpls,
      ipv4Udp(sender4, loopback4, senderPort, echoPort,
              cat(echoHeader({.sequenceNumber = 2}), pseudowireTargetFec()),
              {.routerAlert = true, .ttl = 1}),
      {{100, 255}, {1000, 1}});

  const EchoFields replyFields{
      .messageType = reply, .returnCode = 3, .returnSubcode = 1};
  const Bytes header = echoHeader({});
  return {
      {"request.pcap", {labelledRequest, pseudowireRequest}},
      {"reply.pcap", {ipv6Reply, switchedReply}},
      {"malformed.pcap",
       {
           // Shorter than an echo header.
           ipv4Request(Bytes(header.begin(), header.begin() + 20)),
           ipv4Request(echoHeader({.version = 3})),
           // A request must say which FEC it tests.
           ipv4Request(cat(header, tlv(3, 4, {0, 0, 0, 0}))),
           ipv4Request(cat(header, tlv(1, 65530, {0, 0, 0, 0}))),
           ipv4Request(cat(header, tlv(1, 20, Bytes(8, 0)))),
           ipv4Reply(cat(echoHeader(replyFields), {0, 0})),
           // An Interface and Label Stack TLV, which the parser does not
           // know. Behind the message, 4 bytes inside the IP packet that the
           // UDP length leaves out, then a 4-byte trailer behind the IP
           // packet: neither may be read as another TLV.
           ipv4Reply(cat(echoHeader(replyFields), tlv(7, 4, {10, 0, 0, 2})),
                     {0, 3, 0, 4}, {0xde, 0xad, 0xbe, 0xef}),
           arpRequest(),
           // A Target FEC Stack whose only sub-TLV claims more bytes than
           // the stack holds: the message reads, its FEC does not.
           ipv4Request(cat(header, tlv(1, 8, tlv(1, 100, {10, 1, 1, 1})))),
       }},
  };
}

Bytes pcapFile(const ExampleCapture &capture) {
  Bytes b;
  putLe32(b, 0xa1b2c3d4); // microsecond time stamps
  putLe16(b, 2);          // format version 2.4
  putLe16(b, 4);
  putLe32(b, 0);     // time zone offset
  putLe32(b, 0);     // time stamp accuracy
  putLe32(b, 65535); // snap length
  putLe32(b, 1);     // Ethernet
  // 2025-01-01T00:00:00Z, one millisecond between frames.
  constexpr std::uint32_t startSeconds = 1735689600u;
  std::uint32_t micros = 0;
  for (const Bytes &frame : capture.frames) {
    putLe32(b, startSeconds);
    putLe32(b, micros);
    putLe32(b, static_cast<std::uint32_t>(frame.size()));
    putLe32(b, static_cast<std::uint32_t>(frame.size()));
    put(b, frame);
    micros += 1000;
  }
  return b;
}

} // namespace LspPingTest
