#include "Wirx/Checksum.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace Wirx {
namespace {

using Orv::U16;
using Orv::U32;
using Orv::U8;
using TestSupport::hexBytes;

// RFC 1071 to the letter: 16-bit big-endian words, carries folded at the
// end. The fast code sums wider native words and must agree with it.
U16 referenceChecksum(const std::vector<U8> &bytes) {
  U32 sum = 0;
  for (std::size_t i = 0; i < bytes.size(); i += 2) {
    const U32 low = i + 1 < bytes.size() ? bytes[i + 1] : 0;
    sum += U32{bytes[i]} << 8 | low;
  }
  while (sum >> 16) {
    sum = (sum & 0xFFFF) + (sum >> 16);
  }
  return static_cast<U16>(~sum);
}

std::vector<U8> randomBytes(std::mt19937 &rng, std::size_t len) {
  std::uniform_int_distribution<int> byte(0, 255);
  std::vector<U8> bytes(len);
  for (U8 &b : bytes) {
    b = static_cast<U8>(byte(rng));
  }
  return bytes;
}

TEST(ChecksumTest, AgreesWithTheWordByWordSumForEveryLength) {
  std::mt19937 rng(7);
  for (std::size_t len = 0; len <= 80; ++len) {
    const std::vector<U8> bytes = randomBytes(rng, len);
    EXPECT_EQ(checksum(bytes.data(), U32(len)), referenceChecksum(bytes))
        << len;
  }
  const std::vector<U8> ones(1500, 0xFF);
  EXPECT_EQ(checksum(ones.data(), U32(ones.size())), referenceChecksum(ones));
}

TEST(ChecksumTest, PiecesOfAnyLengthSumLikeTheWhole) {
  std::mt19937 rng(11);
  const std::vector<U8> bytes = randomBytes(rng, 61);
  const U16 whole = referenceChecksum(bytes);
  for (U32 first = 0; first <= bytes.size(); ++first) {
    for (U32 second = first; second <= bytes.size(); second += 3) {
      ChecksumAcc acc;
      acc.add(bytes.data(), first);
      acc.add(bytes.data() + first, second - first);
      acc.add(bytes.data() + second, U32(bytes.size()) - second);
      ASSERT_EQ(acc.checksum(), whole) << first << ' ' << second;
    }
  }
}

TEST(ChecksumTest, Ipv4HeaderChecksumIgnoresTheFieldAndVerifies) {
  // A captured header whose checksum is b861.
  std::vector<U8> hdr = hexBytes("4500 0073 0000 4000 4011 b861 c0a8 0001 "
                                 "c0a8 00c7");
  EXPECT_EQ(ipv4HeaderChecksum(hdr.data(), U32(hdr.size())), 0xB861);
  EXPECT_TRUE(ipv4HeaderChecksumOk(hdr.data(), U32(hdr.size())));
  hdr[8] = 0x3F; // TTL changed, checksum not
  EXPECT_FALSE(ipv4HeaderChecksumOk(hdr.data(), U32(hdr.size())));
}

TEST(ChecksumTest, AComputedZeroIsSentAsAllOnes) {
  // Putting the checksum into the payload makes the datagram sum to zero.
  const IpAddr src(0x0A000001);
  const IpAddr dst(0x0A000002);
  std::vector<U8> udp = hexBytes("1000 2000 000a 0000 0000");
  const U16 first = udpChecksumV4(src, dst, udp.data(), U32(udp.size()));
  udp[8] = static_cast<U8>(first >> 8);
  udp[9] = static_cast<U8>(first);
  EXPECT_EQ(udpChecksumV4(src, dst, udp.data(), U32(udp.size())), 0xFFFF);
  const Ip6Addr src6 = Ip6Addr::fromString("2001:db8::1").value();
  udp[8] = udp[9] = 0;
  const U16 first6 = udpChecksumV6(src6, src6, udp.data(), U32(udp.size()));
  udp[8] = static_cast<U8>(first6 >> 8);
  udp[9] = static_cast<U8>(first6);
  EXPECT_EQ(udpChecksumV6(src6, src6, udp.data(), U32(udp.size())), 0xFFFF);
}

} // namespace
} // namespace Wirx
