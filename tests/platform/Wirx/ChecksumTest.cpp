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

TEST(ChecksumTest, MatchesTheRfc1071Example) {
  const std::vector<U8> bytes = hexBytes("0001 f203 f4f5 f6f7");
  ChecksumAcc acc;
  acc.add(bytes.data(), U32(bytes.size()));
  EXPECT_EQ(acc.sum(), 0xDDF2);
  EXPECT_EQ(acc.checksum(), 0x220D);
  EXPECT_EQ(checksum(bytes.data(), U32(bytes.size())), 0x220D);
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

TEST(ChecksumTest, ValuesAddAsTheirNetworkOrderBytes) {
  const std::vector<U8> bytes = hexBytes("01 1234 56789abc");
  ChecksumAcc acc;
  acc.add(bytes.data(), 1);
  acc.add16(0x1234);
  acc.add32(0x56789ABC);
  EXPECT_EQ(acc.checksum(), referenceChecksum(bytes));
}

TEST(ChecksumTest, Ipv4HeaderChecksumIgnoresTheFieldAndVerifies) {
  // A captured header whose checksum is b861.
  std::vector<U8> hdr = hexBytes("4500 0073 0000 4000 4011 b861 c0a8 0001 "
                                 "c0a8 00c7");
  EXPECT_EQ(ipv4HeaderChecksum(hdr.data(), U32(hdr.size())), 0xB861);
  EXPECT_TRUE(ipv4HeaderChecksumOk(hdr.data(), U32(hdr.size())));
  hdr[8] = 0x3F; // TTL changed, checksum not
  EXPECT_FALSE(ipv4HeaderChecksumOk(hdr.data(), U32(hdr.size())));

  const std::vector<U8> withRouterAlert =
      hexBytes("4600 0028 1234 4000 0111 0000 0a00 0001 7f00 0001 9404 0000");
  EXPECT_EQ(
      ipv4HeaderChecksum(withRouterAlert.data(), U32(withRouterAlert.size())),
      0x498B);
}

TEST(ChecksumTest, UdpOverEitherFamilyIncludesThePseudoHeader) {
  const std::vector<U8> udp =
      hexBytes("c000 0daf 0010 ffff dead beef 0000 0001");
  EXPECT_EQ(udpChecksumV4(IpAddr(0x0A000001), IpAddr(0x7F000001), udp.data(),
                          U32(udp.size())),
            0x0B7E);
  const std::vector<U8> odd = hexBytes("04d2 0035 000c 0000 6162 6364");
  EXPECT_EQ(udpChecksumV4(IpAddr(0xC0A80001), IpAddr(0xC0A800C7), odd.data(),
                          U32(odd.size())),
            0xB3EF);
  const std::vector<U8> udp6 = hexBytes("0daf 0daf 000c 0000 0102 0304");
  EXPECT_EQ(udpChecksumV6(Ip6Addr::fromString("2001:db8::1").value(),
                          Ip6Addr::fromString("2001:db8::2").value(),
                          udp6.data(), U32(udp6.size())),
            0x84FD);
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
