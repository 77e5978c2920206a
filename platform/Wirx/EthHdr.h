#pragma once

#include "Orv/Types.h"
#include "Wirx/EthAddr.h"
#include "Wirx/Nbo.h"

namespace Wirx {

// Overlay of an Ethernet II header on wire bytes.
class EthHdr {
public:
  static constexpr Orv::U16 etherTypeIpv4 = 0x0800;
  static constexpr Orv::U16 etherTypeIpv6 = 0x86DD;
  static constexpr Orv::U16 etherTypeMpls = 0x8847;
  static constexpr Orv::U16 etherTypeMplsMulticast = 0x8848;
  // 802.1Q customer tag and 802.1ad service (outer) tag.
  static constexpr Orv::U16 etherTypeVlan = 0x8100;
  static constexpr Orv::U16 etherTypeQinQ = 0x88A8;

  EthAddr dst() const noexcept { return EthAddr::fromNbo(dst_); }
  void dstIs(const EthAddr &addr) noexcept { addr.toNbo(dst_); }
  EthAddr src() const noexcept { return EthAddr::fromNbo(src_); }
  void srcIs(const EthAddr &addr) noexcept { addr.toNbo(src_); }
  Orv::U16 etherType() const noexcept { return etherType_.value(); }
  void etherTypeIs(Orv::U16 etherType) noexcept {
    etherType_.valueIs(etherType);
  }

private:
  Orv::U8 dst_[6];
  Orv::U8 src_[6];
  U16Nbo etherType_;
};
static_assert(sizeof(EthHdr) == 14 && alignof(EthHdr) == 1);

} // namespace Wirx
