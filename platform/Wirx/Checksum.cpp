#include "Wirx/Checksum.h"

#include "Orv/Assert.h"
#include "Wirx/Ipv4Hdr.h"
#include "Wirx/Ipv6Hdr.h"
#include "Wirx/Nbo.h"
#include "Wirx/UdpHdr.h"

#include <cstring>

namespace Wirx {

namespace {

// Where the checksum fields sit in their headers.
constexpr Orv::U32 ipv4ChecksumOffset = 10;
constexpr Orv::U32 udpChecksumOffset = 6;

// Adds with the carry out of the top bit wrapped back in (one's complement
// addition), so that 64 bits can be summed at a time.
inline Orv::U64 addCarry(Orv::U64 sum, Orv::U64 word) noexcept {
  sum += word;
  return sum + (sum < word);
}

// The one's complement sum of native-order words: 2^16 = 1 modulo 0xFFFF,
// so summing wider words then folding gives the same result as summing
// 16-bit ones.
Orv::U64 sumNative(const Orv::U8 *bytes, Orv::U32 len) noexcept {
  Orv::U64 sum = 0;
  for (; len >= 8; bytes += 8, len -= 8) {
    Orv::U64 word;
    std::memcpy(&word, bytes, sizeof word);
    sum = addCarry(sum, word);
  }
  if (len >= 4) {
    Orv::U32 word;
    std::memcpy(&word, bytes, sizeof word);
    sum = addCarry(sum, word);
    bytes += 4;
    len -= 4;
  }
  if (len >= 2) {
    Orv::U16 word;
    std::memcpy(&word, bytes, sizeof word);
    sum = addCarry(sum, word);
    bytes += 2;
    len -= 2;
  }
  if (len != 0) {
    // A last odd byte goes in as a word whose second byte is zero.
    Orv::U16 word = 0;
    std::memcpy(&word, bytes, 1);
    sum = addCarry(sum, word);
  }
  return sum;
}

Orv::U16 fold(Orv::U64 sum) noexcept {
  sum = (sum & 0xFFFFFFFF) + (sum >> 32);
  sum = (sum & 0xFFFFFFFF) + (sum >> 32);
  sum = (sum & 0xFFFF) + (sum >> 16);
  sum = (sum & 0xFFFF) + (sum >> 16);
  return static_cast<Orv::U16>(sum);
}

// The checksum of a header and what follows, skipping its checksum field.
void addSkippingField(ChecksumAcc &acc, const Orv::U8 *bytes, Orv::U32 len,
                      Orv::U32 fieldOffset) noexcept {
  acc.add(bytes, fieldOffset);
  acc.add(bytes + fieldOffset + 2, len - fieldOffset - 2);
}

Orv::U16 udpFieldValue(const ChecksumAcc &acc) noexcept {
  const Orv::U16 value = acc.checksum();
  return value == 0 ? 0xFFFF : value;
}

} // namespace

void ChecksumAcc::add(const Orv::U8 *bytes, Orv::U32 len) noexcept {
  const Orv::U16 piece = fold(sumNative(bytes, len));
  sum_ += odd_ ? __builtin_bswap16(piece) : piece;
  odd_ ^= (len & 1) != 0;
}

void ChecksumAcc::add16(Orv::U16 host) noexcept {
  Orv::U8 bytes[2];
  store16(bytes, host);
  add(bytes, sizeof bytes);
}

void ChecksumAcc::add32(Orv::U32 host) noexcept {
  Orv::U8 bytes[4];
  store32(bytes, host);
  add(bytes, sizeof bytes);
}

Orv::U16 ChecksumAcc::sum() const noexcept {
  // A native-order sum is the network-order sum with its bytes swapped.
  return netOrder16(fold(sum_));
}

Orv::U16 checksum(const Orv::U8 *bytes, Orv::U32 len) noexcept {
  ChecksumAcc acc;
  acc.add(bytes, len);
  return acc.checksum();
}

Orv::U16 ipv4HeaderChecksum(const Orv::U8 *hdr, Orv::U32 hdrLen) noexcept {
  ORV_ASSERT(hdrLen >= sizeof(Ipv4Hdr));
  ChecksumAcc acc;
  addSkippingField(acc, hdr, hdrLen, ipv4ChecksumOffset);
  return acc.checksum();
}

bool ipv4HeaderChecksumOk(const Orv::U8 *hdr, Orv::U32 hdrLen) noexcept {
  return checksum(hdr, hdrLen) == 0;
}

Orv::U16 udpChecksumV4(IpAddr src, IpAddr dst, const Orv::U8 *udp,
                       Orv::U32 len) noexcept {
  ORV_ASSERT(len >= sizeof(UdpHdr));
  ChecksumAcc acc;
  acc.add32(src.value());
  acc.add32(dst.value());
  acc.add16(Ipv4Hdr::protocolUdp);
  acc.add16(static_cast<Orv::U16>(len));
  addSkippingField(acc, udp, len, udpChecksumOffset);
  return udpFieldValue(acc);
}

Orv::U16 udpChecksumV6(const Ip6Addr &src, const Ip6Addr &dst,
                       const Orv::U8 *udp, Orv::U32 len) noexcept {
  ORV_ASSERT(len >= sizeof(UdpHdr));
  ChecksumAcc acc;
  acc.add(src.bytes().data(), static_cast<Orv::U32>(src.bytes().size()));
  acc.add(dst.bytes().data(), static_cast<Orv::U32>(dst.bytes().size()));
  acc.add32(len);
  acc.add32(Ipv6Hdr::nextHeaderUdp);
  addSkippingField(acc, udp, len, udpChecksumOffset);
  return udpFieldValue(acc);
}

} // namespace Wirx
