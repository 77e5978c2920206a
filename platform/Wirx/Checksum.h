#pragma once

#include "Orv/Export.h"
#include "Orv/Types.h"
#include "Wirx/Ip6Addr.h"
#include "Wirx/IpAddr.h"

namespace Wirx {

// The Internet checksum (RFC 1071), built up over several pieces, such as a
// pseudo-header and a datagram. Pieces may have any length: a piece that
// starts at an odd offset of the checksummed whole is folded in with its
// bytes swapped, as the sum's byte-order independence allows.
class LSPPING_EXPORT ChecksumAcc {
public:
  void add(const Orv::U8 *bytes, Orv::U32 len) noexcept;
  // Adds a value as the 2 or 4 network-order bytes it would occupy.
  void add16(Orv::U16 host) noexcept;
  void add32(Orv::U32 host) noexcept;

  // The folded one's complement sum, host order.
  Orv::U16 sum() const noexcept;
  // Its complement: the value a checksum field holds, host order.
  Orv::U16 checksum() const noexcept { return static_cast<Orv::U16>(~sum()); }

private:
  // Sums of native-order words; folded only when read.
  Orv::U64 sum_ = 0;
  bool odd_ = false;
};

// The checksum of `len` bytes, host order.
LSPPING_EXPORT Orv::U16 checksum(const Orv::U8 *bytes, Orv::U32 len) noexcept;

// The checksum to store in an IPv4 header of `hdrLen` bytes (options
// included), whatever its checksum field holds now.
LSPPING_EXPORT Orv::U16 ipv4HeaderChecksum(const Orv::U8 *hdr,
                                           Orv::U32 hdrLen) noexcept;
// Whether a received IPv4 header's checksum field is right.
LSPPING_EXPORT bool ipv4HeaderChecksumOk(const Orv::U8 *hdr,
                                         Orv::U32 hdrLen) noexcept;

// The checksum to store in a UDP header, over the pseudo-header and `len`
// bytes of UDP header and payload, whatever the checksum field holds now. A
// computed 0 comes back as 0xFFFF, since 0 on the wire means "no checksum"
// (IPv4) or is invalid (IPv6). A received datagram is right when this equals
// its checksum field.
LSPPING_EXPORT Orv::U16 udpChecksumV4(IpAddr src, IpAddr dst,
                                      const Orv::U8 *udp,
                                      Orv::U32 len) noexcept;
LSPPING_EXPORT Orv::U16 udpChecksumV6(const Ip6Addr &src, const Ip6Addr &dst,
                                      const Orv::U8 *udp,
                                      Orv::U32 len) noexcept;

} // namespace Wirx
