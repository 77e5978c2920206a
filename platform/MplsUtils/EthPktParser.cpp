#include "MplsUtils/EthPktParser.h"

#include "Wirx/EthHdr.h"
#include "Wirx/Ipv4Hdr.h"
#include "Wirx/Ipv4RouterAlertOption.h"
#include "Wirx/Ipv6Hdr.h"
#include "Wirx/Ipv6RouterAlertHopByHop.h"
#include "Wirx/Nbo.h"
#include "Wirx/UdpHdr.h"
#include "Wirx/VlanTag.h"

#include <algorithm>
#include <utility>

namespace MplsUtils {

using Orv::U16;
using Orv::U32;
using Orv::U8;

namespace {

constexpr U32 mplsEntryBytes = 4;
constexpr U32 mplsBosBit = 0x100;
constexpr U8 ipv4OptionEnd = 0;
constexpr U8 ipv4OptionNop = 1;
constexpr U8 ipv6OptionPad1 = 0;

} // namespace

EthPktParser::EthPktParser(const U8 *frame, U32 len) noexcept
    : frame_(frame), len_(frame == nullptr ? 0 : len) {
  parse();
}

EthPktParser::EthPktParser(Orv::Ptr<Wirx::Pkt> pkt) noexcept
    : pkt_(std::move(pkt)) {
  if (pkt_) {
    frame_ = pkt_->data();
    len_ = pkt_->frontBytes();
  }
  parse();
}

void EthPktParser::parse() noexcept {
  // Each step needs the one before; the first failure ends the chain.
  (void)(parseEthernet() && parseLabelStack() && parseIp() && parseUdp());
}

bool EthPktParser::fail(const char *reason) noexcept {
  reason_ = reason;
  return false;
}

bool EthPktParser::parseEthernet() noexcept {
  if (len_ < sizeof(Wirx::EthHdr)) {
    return fail("Frame too short for Ethernet header");
  }
  U16 etherType = at<Wirx::EthHdr>(0)->etherType();
  offset_ = sizeof(Wirx::EthHdr);
  while (etherType == Wirx::EthHdr::etherTypeVlan ||
         etherType == Wirx::EthHdr::etherTypeQinQ) {
    if (vlanCount_ == maxVlanTags) {
      return fail("More than two VLAN tags");
    }
    if (room(offset_, len_) < sizeof(Wirx::VlanTag)) {
      return fail("Truncated VLAN tag");
    }
    const Wirx::VlanTag *tag = at<Wirx::VlanTag>(offset_);
    vlanIds_[vlanCount_++] = tag->vlanId();
    etherType = tag->etherType();
    offset_ += sizeof(Wirx::VlanTag);
  }
  etherType_ = etherType;
  layer_ = Layer::ethernet;
  return true;
}

bool EthPktParser::parseLabelStack() noexcept {
  if (etherType_ != Wirx::EthHdr::etherTypeMpls &&
      etherType_ != Wirx::EthHdr::etherTypeMplsMulticast) {
    return true;
  }
  U32 word = 0;
  do {
    if (room(offset_, len_) < mplsEntryBytes) {
      return fail("MPLS label stack runs past the frame");
    }
    if (labels_.full()) {
      return fail("MPLS label stack too deep");
    }
    word = Wirx::load32(frame_ + offset_);
    labels_.push(Wirx::MplsLabelEntry::fromWord(word));
    offset_ += mplsEntryBytes;
  } while ((word & mplsBosBit) == 0);
  layer_ = Layer::mpls;
  return true;
}

bool EthPktParser::parseIp() noexcept {
  if (layer_ == Layer::mpls) {
    // Nothing in a label stack says what it carries: the first nibble of
    // the payload does.
    if (offset_ >= len_) {
      return fail("Frame ends after the MPLS label stack");
    }
    switch (frame_[offset_] >> 4) {
    case 4:
      return parseIpv4();
    case 6:
      return parseIpv6();
    default:
      return fail("Not an IP packet");
    }
  }
  switch (etherType_) {
  case Wirx::EthHdr::etherTypeIpv4:
    return parseIpv4();
  case Wirx::EthHdr::etherTypeIpv6:
    return parseIpv6();
  default:
    return fail("Not an IP packet");
  }
}

bool EthPktParser::parseIpv4() noexcept {
  if (room(offset_, len_) < sizeof(Wirx::Ipv4Hdr)) {
    return fail("Truncated IPv4 header");
  }
  const Wirx::Ipv4Hdr *hdr = at<Wirx::Ipv4Hdr>(offset_);
  if (hdr->version() != 4) {
    return fail("Bad IPv4 version");
  }
  if (hdr->ihl() < Wirx::Ipv4Hdr::minIhl) {
    return fail("IPv4 header length below 20 bytes");
  }
  const U32 hdrLength = hdr->headerLength();
  if (room(offset_, len_) < hdrLength) {
    return fail("Truncated IPv4 header");
  }
  if (hdr->totalLength() < hdrLength) {
    return fail("IPv4 total length shorter than its header");
  }
  if (!scanIpv4Options(offset_ + sizeof(Wirx::Ipv4Hdr), offset_ + hdrLength)) {
    return false;
  }
  ipOffset_ = offset_;
  ipHdrLength_ = hdrLength;
  ipLength_ = hdr->totalLength();
  ipEnd_ = offset_ + std::min(ipLength_, room(offset_, len_));
  family_ = Wirx::AddrFamily::ipv4;
  offset_ += hdrLength;
  layer_ = Layer::ip;
  // Only a first fragment has the UDP header, and none has the whole
  // payload: echo packets are small and never reassembled.
  if (hdr->isFragment()) {
    return fail("Fragmented IPv4 packet");
  }
  if (hdr->protocol() != Wirx::Ipv4Hdr::protocolUdp) {
    return fail("Not UDP");
  }
  return true;
}

bool EthPktParser::scanIpv4Options(U32 begin, U32 end) noexcept {
  for (U32 option = begin; option < end;) {
    const U8 type = frame_[option];
    if (type == ipv4OptionEnd) {
      break;
    }
    if (type == ipv4OptionNop) {
      ++option;
      continue;
    }
    // Every other option has a length byte that counts itself and the type.
    if (end - option < 2 || frame_[option + 1] < 2 ||
        frame_[option + 1] > end - option) {
      return fail("Malformed IPv4 options");
    }
    const U8 length = frame_[option + 1];
    if (type == Wirx::Ipv4RouterAlertOption::optionType &&
        length == Wirx::Ipv4RouterAlertOption::optionLength) {
      routerAlert_ = true;
    }
    option += length;
  }
  return true;
}

bool EthPktParser::parseIpv6() noexcept {
  if (room(offset_, len_) < sizeof(Wirx::Ipv6Hdr)) {
    return fail("Truncated IPv6 header");
  }
  const Wirx::Ipv6Hdr *hdr = at<Wirx::Ipv6Hdr>(offset_);
  if (hdr->version() != 6) {
    return fail("Bad IPv6 version");
  }
  const U32 ipOffset = offset_;
  ipLength_ = sizeof(Wirx::Ipv6Hdr) + U32{hdr->payloadLength()};
  ipEnd_ = offset_ + std::min(ipLength_, room(offset_, len_));
  offset_ += sizeof(Wirx::Ipv6Hdr);
  U8 nextHeader = hdr->nextHeader();
  if (nextHeader == Wirx::Ipv6Hdr::nextHeaderHopByHop &&
      !parseHopByHop(nextHeader)) {
    return false;
  }
  ipOffset_ = ipOffset;
  ipHdrLength_ = offset_ - ipOffset;
  family_ = Wirx::AddrFamily::ipv6;
  layer_ = Layer::ip;
  if (nextHeader != Wirx::Ipv6Hdr::nextHeaderUdp) {
    return fail("Not UDP");
  }
  return true;
}

bool EthPktParser::parseHopByHop(U8 &nextHeader) noexcept {
  // Next header and length (in 8-byte units past the first 8) come first.
  constexpr U32 fixedBytes = 2;
  if (room(offset_, ipEnd_) < fixedBytes) {
    return fail("Truncated IPv6 hop-by-hop header");
  }
  const U32 length = (U32{frame_[offset_ + 1]} + 1) * 8;
  if (room(offset_, ipEnd_) < length) {
    return fail("Truncated IPv6 hop-by-hop header");
  }
  if (!scanHopByHopOptions(offset_ + fixedBytes, offset_ + length)) {
    return false;
  }
  nextHeader = frame_[offset_];
  offset_ += length;
  return true;
}

bool EthPktParser::scanHopByHopOptions(U32 begin, U32 end) noexcept {
  for (U32 option = begin; option < end;) {
    const U8 type = frame_[option];
    if (type == ipv6OptionPad1) {
      ++option;
      continue;
    }
    // Every other option has a length byte that counts its data only.
    if (end - option < 2 || frame_[option + 1] > end - option - 2) {
      return fail("Malformed IPv6 hop-by-hop options");
    }
    const U8 length = frame_[option + 1];
    if (type == Wirx::Ipv6RouterAlertHopByHop::optionType &&
        length == Wirx::Ipv6RouterAlertHopByHop::optionLength) {
      routerAlert_ = true;
    }
    option += 2 + length;
  }
  return true;
}

bool EthPktParser::parseUdp() noexcept {
  udpOffset_ = offset_;
  if (room(offset_, ipEnd_) < sizeof(Wirx::UdpHdr)) {
    return fail("Truncated UDP header");
  }
  layer_ = Layer::udp;
  return true;
}

Wirx::EthAddr EthPktParser::ethDst() const noexcept {
  return reached(Layer::ethernet) ? at<Wirx::EthHdr>(0)->dst()
                                  : Wirx::EthAddr();
}

Wirx::EthAddr EthPktParser::ethSrc() const noexcept {
  return reached(Layer::ethernet) ? at<Wirx::EthHdr>(0)->src()
                                  : Wirx::EthAddr();
}

Wirx::IpGenAddr EthPktParser::srcIp() const noexcept {
  if (isIpv4()) {
    return at<Wirx::Ipv4Hdr>(ipOffset_)->src();
  }
  if (isIpv6()) {
    return at<Wirx::Ipv6Hdr>(ipOffset_)->src();
  }
  return Wirx::IpGenAddr();
}

Wirx::IpGenAddr EthPktParser::dstIp() const noexcept {
  if (isIpv4()) {
    return at<Wirx::Ipv4Hdr>(ipOffset_)->dst();
  }
  if (isIpv6()) {
    return at<Wirx::Ipv6Hdr>(ipOffset_)->dst();
  }
  return Wirx::IpGenAddr();
}

U8 EthPktParser::ipTtl() const noexcept {
  if (isIpv4()) {
    return at<Wirx::Ipv4Hdr>(ipOffset_)->ttl();
  }
  if (isIpv6()) {
    return at<Wirx::Ipv6Hdr>(ipOffset_)->hopLimit();
  }
  return 0;
}

U32 EthPktParser::udpPayloadOffset() const noexcept {
  return valid() ? udpOffset_ + U32{sizeof(Wirx::UdpHdr)} : 0;
}

U16 EthPktParser::udpLength() const noexcept {
  return valid() ? at<Wirx::UdpHdr>(udpOffset_)->length() : 0;
}

U32 EthPktParser::udpPayloadLength() const noexcept {
  return valid() ? ipEnd_ - udpPayloadOffset() : 0;
}

U16 EthPktParser::srcPort() const noexcept {
  return valid() ? at<Wirx::UdpHdr>(udpOffset_)->srcPort() : 0;
}

U16 EthPktParser::dstPort() const noexcept {
  return valid() ? at<Wirx::UdpHdr>(udpOffset_)->dstPort() : 0;
}

U16 EthPktParser::udpChecksum() const noexcept {
  return valid() ? at<Wirx::UdpHdr>(udpOffset_)->checksum() : 0;
}

} // namespace MplsUtils
