#pragma once

#include "Wirx/Ipv4Hdr.h"
#include "Wirx/Ipv4RouterAlertOption.h"

namespace Wirx {

// Overlay of an IPv4 header carrying only the Router Alert option: 24 bytes,
// IHL 6, the shape of every echo request sent over IPv4.
class Ipv4RouterAlertHdr {
public:
  static constexpr Orv::U8 ihl = 6;

  Ipv4Hdr &hdr() noexcept { return hdr_; }
  const Ipv4Hdr &hdr() const noexcept { return hdr_; }
  Ipv4RouterAlertOption &option() noexcept { return option_; }
  const Ipv4RouterAlertOption &option() const noexcept { return option_; }

  // Writes the version, the IHL and the option; the other fields are the
  // caller's.
  void init() noexcept {
    hdr_.ihlIs(ihl);
    option_.init();
  }

private:
  Ipv4Hdr hdr_;
  Ipv4RouterAlertOption option_;
};
static_assert(sizeof(Ipv4RouterAlertHdr) == 24 &&
              alignof(Ipv4RouterAlertHdr) == 1);

} // namespace Wirx
