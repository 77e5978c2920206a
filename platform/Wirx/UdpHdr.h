#pragma once

#include "Orv/Types.h"
#include "Wirx/Nbo.h"

namespace Wirx {

// Overlay of a UDP header.
class UdpHdr {
public:
  Orv::U16 srcPort() const noexcept { return srcPort_.value(); }
  void srcPortIs(Orv::U16 port) noexcept { srcPort_.valueIs(port); }
  Orv::U16 dstPort() const noexcept { return dstPort_.value(); }
  void dstPortIs(Orv::U16 port) noexcept { dstPort_.valueIs(port); }
  // Header and payload bytes.
  Orv::U16 length() const noexcept { return length_.value(); }
  void lengthIs(Orv::U16 length) noexcept { length_.valueIs(length); }
  Orv::U16 checksum() const noexcept { return checksum_.value(); }
  void checksumIs(Orv::U16 checksum) noexcept { checksum_.valueIs(checksum); }

private:
  U16Nbo srcPort_;
  U16Nbo dstPort_;
  U16Nbo length_;
  U16Nbo checksum_;
};
static_assert(sizeof(UdpHdr) == 8 && alignof(UdpHdr) == 1);

} // namespace Wirx
