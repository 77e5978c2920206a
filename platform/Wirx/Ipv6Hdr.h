#pragma once

#include "Orv/Types.h"
#include "Wirx/Ip6Addr.h"
#include "Wirx/Nbo.h"

namespace Wirx {

// Overlay of the fixed 40-byte IPv6 header.
class Ipv6Hdr {
public:
  static constexpr Orv::U8 nextHeaderHopByHop = 0;
  static constexpr Orv::U8 nextHeaderUdp = 17;
  static constexpr Orv::U32 flowLabelMask = 0xFFFFF;

  Orv::U8 version() const noexcept {
    return static_cast<Orv::U8>(versionClassFlow_.value() >> 28);
  }
  Orv::U8 trafficClass() const noexcept {
    return static_cast<Orv::U8>(versionClassFlow_.value() >> 20);
  }
  Orv::U32 flowLabel() const noexcept {
    return versionClassFlow_.value() & flowLabelMask;
  }
  // Writes version 6 along with the traffic class and flow label.
  void classFlowIs(Orv::U8 trafficClass, Orv::U32 flowLabel) noexcept {
    versionClassFlow_.valueIs(6U << 28 | Orv::U32{trafficClass} << 20 |
                              (flowLabel & flowLabelMask));
  }
  // Bytes after this fixed header, extension headers included.
  Orv::U16 payloadLength() const noexcept { return payloadLength_.value(); }
  void payloadLengthIs(Orv::U16 length) noexcept {
    payloadLength_.valueIs(length);
  }
  Orv::U8 nextHeader() const noexcept { return nextHeader_; }
  void nextHeaderIs(Orv::U8 nextHeader) noexcept { nextHeader_ = nextHeader; }
  Orv::U8 hopLimit() const noexcept { return hopLimit_; }
  void hopLimitIs(Orv::U8 hopLimit) noexcept { hopLimit_ = hopLimit; }
  Ip6Addr src() const noexcept { return Ip6Addr::fromNbo(src_); }
  void srcIs(const Ip6Addr &addr) noexcept { addr.toNbo(src_); }
  Ip6Addr dst() const noexcept { return Ip6Addr::fromNbo(dst_); }
  void dstIs(const Ip6Addr &addr) noexcept { addr.toNbo(dst_); }

private:
  U32Nbo versionClassFlow_;
  U16Nbo payloadLength_;
  Orv::U8 nextHeader_;
  Orv::U8 hopLimit_;
  Orv::U8 src_[16];
  Orv::U8 dst_[16];
};
static_assert(sizeof(Ipv6Hdr) == 40 && alignof(Ipv6Hdr) == 1);

// Named like the address it carries (IpAddr, Ip6Addr / IpHdr, Ip6Hdr).
using Ip6Hdr = Ipv6Hdr;

} // namespace Wirx
