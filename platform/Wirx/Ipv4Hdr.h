#pragma once

#include "Orv/Types.h"
#include "Wirx/IpAddr.h"
#include "Wirx/Nbo.h"

namespace Wirx {

// Overlay of the fixed 20 bytes of an IPv4 header; options, if any, follow
// it (headerLength() tells where the payload starts).
class Ipv4Hdr {
public:
  static constexpr Orv::U8 minIhl = 5;
  static constexpr Orv::U8 protocolUdp = 17;
  static constexpr Orv::U16 flagDontFragment = 0x4000;
  static constexpr Orv::U16 flagMoreFragments = 0x2000;
  static constexpr Orv::U16 fragmentOffsetMask = 0x1FFF;

  Orv::U8 version() const noexcept { return versionIhl_ >> 4; }
  // Header length in 32-bit words, options included.
  Orv::U8 ihl() const noexcept { return versionIhl_ & 0x0F; }
  Orv::U32 headerLength() const noexcept { return Orv::U32{ihl()} * 4; }
  // Writes version 4 along with the header length.
  void ihlIs(Orv::U8 ihl) noexcept {
    versionIhl_ = static_cast<Orv::U8>(0x40 | (ihl & 0x0F));
  }
  Orv::U8 tos() const noexcept { return tos_; }
  void tosIs(Orv::U8 tos) noexcept { tos_ = tos; }
  Orv::U16 totalLength() const noexcept { return totalLength_.value(); }
  void totalLengthIs(Orv::U16 length) noexcept { totalLength_.valueIs(length); }
  Orv::U16 id() const noexcept { return id_.value(); }
  void idIs(Orv::U16 id) noexcept { id_.valueIs(id); }
  // Flags and fragment offset as one field; see the flag and mask constants.
  Orv::U16 flagsFragment() const noexcept { return flagsFragment_.value(); }
  void flagsFragmentIs(Orv::U16 value) noexcept {
    flagsFragment_.valueIs(value);
  }
  bool isFragment() const noexcept {
    return (flagsFragment() & (flagMoreFragments | fragmentOffsetMask)) != 0;
  }
  Orv::U8 ttl() const noexcept { return ttl_; }
  void ttlIs(Orv::U8 ttl) noexcept { ttl_ = ttl; }
  Orv::U8 protocol() const noexcept { return protocol_; }
  void protocolIs(Orv::U8 protocol) noexcept { protocol_ = protocol; }
  Orv::U16 checksum() const noexcept { return checksum_.value(); }
  void checksumIs(Orv::U16 checksum) noexcept { checksum_.valueIs(checksum); }
  IpAddr src() const noexcept { return IpAddr(src_.value()); }
  void srcIs(IpAddr addr) noexcept { src_.valueIs(addr.value()); }
  IpAddr dst() const noexcept { return IpAddr(dst_.value()); }
  void dstIs(IpAddr addr) noexcept { dst_.valueIs(addr.value()); }

private:
  Orv::U8 versionIhl_;
  Orv::U8 tos_;
  U16Nbo totalLength_;
  U16Nbo id_;
  U16Nbo flagsFragment_;
  Orv::U8 ttl_;
  Orv::U8 protocol_;
  U16Nbo checksum_;
  U32Nbo src_;
  U32Nbo dst_;
};
static_assert(sizeof(Ipv4Hdr) == 20 && alignof(Ipv4Hdr) == 1);

// Named like the address it carries (IpAddr, Ip6Addr / IpHdr, Ip6Hdr).
using IpHdr = Ipv4Hdr;

} // namespace Wirx
