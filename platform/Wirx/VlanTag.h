#pragma once

#include "Orv/Types.h"
#include "Wirx/Nbo.h"

namespace Wirx {

// Overlay of the four bytes that follow an EtherType of 0x8100 or 0x88A8:
// the tag control information and the EtherType of what the tag carries.
class VlanTag {
public:
  static constexpr Orv::U16 vlanIdMask = 0x0FFF;

  Orv::U16 tci() const noexcept { return tci_.value(); }
  void tciIs(Orv::U16 tci) noexcept { tci_.valueIs(tci); }
  Orv::U16 vlanId() const noexcept { return tci() & vlanIdMask; }
  Orv::U8 priority() const noexcept {
    return static_cast<Orv::U8>(tci() >> 13);
  }
  Orv::U16 etherType() const noexcept { return etherType_.value(); }
  void etherTypeIs(Orv::U16 etherType) noexcept {
    etherType_.valueIs(etherType);
  }

private:
  U16Nbo tci_;
  U16Nbo etherType_;
};
static_assert(sizeof(VlanTag) == 4 && alignof(VlanTag) == 1);

} // namespace Wirx
