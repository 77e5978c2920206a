#pragma once

#include "Orv/Assert.h"
#include "Orv/Export.h"
#include "Orv/Object.h"
#include "Orv/Types.h"
#include "Wirx/AddrFamily.h"
#include "Wirx/EthAddr.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/MplsLabelEntry.h"
#include "Wirx/MplsLabelStack.h"
#include "Wirx/Pkt.h"

#include <array>

namespace MplsUtils {

// Parses a received Ethernet frame down to its UDP payload: up to two VLAN
// tags, an MPLS label stack if the EtherType says so, an IPv4 or IPv6 header
// (IPv4 options and one IPv6 Hop-by-Hop header are walked for a Router
// Alert; other IPv6 extension headers read as "Not UDP"), then UDP.
//
// Received bytes are untrusted: the parser reads nothing past the frame's
// length, never throws and never asserts on them. It stops at the first
// fault, leaving reason() and the last layer it fully parsed. It does not
// allocate and reads each field once, so it is cheap enough for every frame.
//
// The IP packet's end is the earlier of the frame's end (short frame) and
// what the IP header declares (Ethernet padding after it is ignored). The
// UDP length field is reported as is, beside the payload bytes present:
// the caller decides what a mismatch means.
class LSPPING_EXPORT EthPktParser {
public:
  enum class Layer : Orv::U8 { none, ethernet, mpls, ip, udp };
  static constexpr Orv::U32 maxVlanTags = 2;

  EthPktParser(const Orv::U8 *frame, Orv::U32 len) noexcept;
  // Keeps `pkt` alive for as long as the parser, so frame() stays valid.
  explicit EthPktParser(Orv::Ptr<Wirx::Pkt> pkt) noexcept;

  // True when the frame parsed down to a UDP header.
  bool valid() const noexcept { return layer_ == Layer::udp; }
  // Why parsing stopped; empty when valid.
  const char *reason() const noexcept { return reason_; }
  Layer parsedUpTo() const noexcept { return layer_; }
  const Orv::U8 *frame() const noexcept { return frame_; }
  // The packet the frame lives in, when the parser was made from one.
  const Orv::Ptr<Wirx::Pkt> &pkt() const noexcept { return pkt_; }
  Orv::U32 length() const noexcept { return len_; }

  // Ethernet: addresses, VLAN ids outermost first, and the EtherType that
  // follows the tags. Unset until the Ethernet layer is parsed.
  Wirx::EthAddr ethDst() const noexcept;
  Wirx::EthAddr ethSrc() const noexcept;
  Orv::U32 vlanCount() const noexcept { return vlanCount_; }
  Orv::U16 vlanId(Orv::U32 index) const noexcept {
    ORV_ASSERT(index < vlanCount_);
    return vlanIds_[index];
  }
  Orv::U16 etherType() const noexcept { return etherType_; }

  // MPLS: the label stack entries as received, top first. Empty when
  // unlabelled.
  const Wirx::MplsLabelStack &labelStack() const noexcept { return labels_; }

  // IP: meaningful once the IP layer is parsed (isIpv4() or isIpv6()).
  bool isIpv4() const noexcept { return family_ == Wirx::AddrFamily::ipv4; }
  bool isIpv6() const noexcept { return family_ == Wirx::AddrFamily::ipv6; }
  Orv::U32 ipHdrOffset() const noexcept { return ipOffset_; }
  // The IP header with its options or Hop-by-Hop header.
  Orv::U32 ipHdrLength() const noexcept { return ipHdrLength_; }
  // What the IP header declares (IPv4 total length, or 40 + IPv6 payload
  // length); past length() if the frame was cut short.
  Orv::U32 ipLength() const noexcept { return ipLength_; }
  Wirx::IpGenAddr srcIp() const noexcept;
  Wirx::IpGenAddr dstIp() const noexcept;
  // IPv4 TTL or IPv6 hop limit.
  Orv::U8 ipTtl() const noexcept;
  // An IPv4 Router Alert option or an IPv6 Hop-by-Hop Router Alert.
  bool routerAlert() const noexcept { return routerAlert_; }

  // Where the UDP header starts, set as soon as the IP header says UDP
  // follows, even when the frame ends before the UDP header does; 0 when
  // the frame carries no UDP.
  Orv::U32 udpHdrOffset() const noexcept { return udpOffset_; }
  // UDP: meaningful when valid().
  Orv::U32 udpPayloadOffset() const noexcept;
  // The UDP length field: header and payload, as the sender claims.
  Orv::U16 udpLength() const noexcept;
  // Payload bytes actually present within the IP packet.
  Orv::U32 udpPayloadLength() const noexcept;
  Orv::U16 srcPort() const noexcept;
  Orv::U16 dstPort() const noexcept;
  Orv::U16 udpChecksum() const noexcept;

private:
  void parse() noexcept;
  bool parseEthernet() noexcept;
  bool parseLabelStack() noexcept;
  bool parseIp() noexcept;
  bool parseIpv4() noexcept;
  bool scanIpv4Options(Orv::U32 begin, Orv::U32 end) noexcept;
  bool parseIpv6() noexcept;
  bool parseHopByHop(Orv::U8 &nextHeader) noexcept;
  bool scanHopByHopOptions(Orv::U32 begin, Orv::U32 end) noexcept;
  bool parseUdp() noexcept;
  bool fail(const char *reason) noexcept;
  bool reached(Layer layer) const noexcept { return layer_ >= layer; }
  // Bytes left between `offset` and `end`; 0 when `offset` is past it.
  static Orv::U32 room(Orv::U32 offset, Orv::U32 end) noexcept {
    return offset < end ? end - offset : 0;
  }
  template <class Hdr> const Hdr *at(Orv::U32 offset) const noexcept {
    return reinterpret_cast<const Hdr *>(frame_ + offset);
  }

  Orv::Ptr<Wirx::Pkt> pkt_;
  const Orv::U8 *frame_ = nullptr;
  Orv::U32 len_ = 0;
  const char *reason_ = "";
  Layer layer_ = Layer::none;
  Wirx::AddrFamily family_ = Wirx::AddrFamily::unspecified;
  bool routerAlert_ = false;
  Orv::U32 vlanCount_ = 0;
  std::array<Orv::U16, maxVlanTags> vlanIds_{};
  Orv::U16 etherType_ = 0;
  Wirx::MplsLabelStack labels_;
  // Where the next layer starts while parsing.
  Orv::U32 offset_ = 0;
  Orv::U32 ipOffset_ = 0;
  Orv::U32 ipHdrLength_ = 0;
  Orv::U32 ipLength_ = 0;
  // End of the IP packet within the frame.
  Orv::U32 ipEnd_ = 0;
  Orv::U32 udpOffset_ = 0;
};

} // namespace MplsUtils
