#include "Wirx/Pkt.h"
#include "Wirx/PktPool.h"
#include "Wirx/UdpHdr.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace Wirx {
namespace {

using Orv::U8;

TEST(PktTest, FreshPacketIsEmptyWithTheRequestedHeadroom) {
  Orv::Ptr<Pkt> pkt = Pkt::make(64);
  EXPECT_EQ(pkt->frontBytes(), 0u);
  EXPECT_EQ(pkt->headroom(), 64u);
  EXPECT_EQ(pkt->tailroom(), Pkt::capacity - 64);
  EXPECT_EQ(Pkt::make()->headroom(), Pkt::defaultHeadroom);
}

TEST(PktTest, HeadersPrependedBeforePayloadMakeOneContiguousFrame) {
  Orv::Ptr<Pkt> pkt = Pkt::make(16);
  std::memcpy(pkt->append(3), "abc", 3);
  std::memcpy(pkt->append(2), "de", 2);
  std::memcpy(pkt->prepend(2), "12", 2);
  U8 *front = pkt->prepend(1);
  *front = '0';
  EXPECT_EQ(front, pkt->data());
  ASSERT_EQ(pkt->frontBytes(), 8u);
  EXPECT_EQ(std::memcmp(pkt->data(), "012abcde", 8), 0);
  EXPECT_EQ(pkt->headroom(), 13u);
  EXPECT_EQ(pkt->tailroom(), Pkt::capacity - 16 - 5);
}

TEST(PktTest, TypedPrependPlacesTheOverlayAtTheFront) {
  Orv::Ptr<Pkt> pkt = Pkt::make();
  UdpHdr *udp = pkt->prependAs<UdpHdr>();
  udp->dstPortIs(3503);
  EXPECT_EQ(reinterpret_cast<U8 *>(udp), pkt->data());
  EXPECT_EQ(pkt->frontBytes(), sizeof(UdpHdr));
  EXPECT_EQ(pkt->data()[2], 0x0D);
  EXPECT_EQ(pkt->data()[3], 0xAF);
  UdpHdr *tail = pkt->appendAs<UdpHdr>();
  EXPECT_EQ(reinterpret_cast<U8 *>(tail), pkt->data() + sizeof(UdpHdr));
}

TEST(PktTest, TrimmingAndResetMoveTheDataBounds) {
  Orv::Ptr<Pkt> pkt = Pkt::copyOf(reinterpret_cast<const U8 *>("hello"), 5, 0);
  pkt->trimFront(1);
  pkt->trimBack(1);
  ASSERT_EQ(pkt->frontBytes(), 3u);
  EXPECT_EQ(std::memcmp(pkt->data(), "ell", 3), 0);
  EXPECT_EQ(pkt->headroom(), 1u);
  pkt->reset(100);
  EXPECT_EQ(pkt->frontBytes(), 0u);
  EXPECT_EQ(pkt->headroom(), 100u);
}

TEST(PktTest, CopyOfTakesFramesThatFitAndRefusesLargerOnes) {
  const std::vector<U8> frame(Pkt::capacity - 128, 0x5A);
  Orv::Ptr<Pkt> pkt = Pkt::copyOf(frame.data(), Orv::U32(frame.size()), 128);
  ASSERT_TRUE(pkt);
  EXPECT_EQ(pkt->frontBytes(), frame.size());
  EXPECT_EQ(pkt->tailroom(), 0u);
  EXPECT_EQ(std::memcmp(pkt->data(), frame.data(), frame.size()), 0);
  EXPECT_FALSE(Pkt::copyOf(frame.data(), Orv::U32(frame.size()), 129));
  EXPECT_FALSE(Pkt::copyOf(frame.data(), 0, Pkt::capacity + 1));
  EXPECT_TRUE(Pkt::copyOf(nullptr, 0));
}

TEST(PktTest, LastUnrefReturnsTheBufferForReuse) {
  PktPool &pool = PktPool::instance();
  pool.reserve(4);
  const Orv::U32 freeBefore = pool.freeCount();
  const Orv::U32 totalBefore = pool.totalCount();
  const Pkt *first = nullptr;
  {
    Orv::Ptr<Pkt> pkt = Pkt::make();
    first = pkt.get();
    Orv::Ptr<Pkt> copy = pkt;
    pkt = nullptr;
    EXPECT_EQ(pool.freeCount(), freeBefore - 1);
  }
  EXPECT_EQ(pool.freeCount(), freeBefore);
  EXPECT_EQ(Pkt::make().get(), first);
  EXPECT_EQ(pool.totalCount(), totalBefore);
}

TEST(PktTest, PoolGrowsWhenEmptyAndKeepsEveryBuffer) {
  PktPool &pool = PktPool::instance();
  std::vector<Orv::Ptr<Pkt>> held;
  const Orv::U32 total = pool.totalCount();
  for (Orv::U32 i = 0; i <= total; ++i) {
    held.push_back(pool.alloc());
  }
  EXPECT_EQ(pool.totalCount(), total + PktPool::blockPkts);
  held.clear();
  EXPECT_EQ(pool.freeCount(), pool.totalCount());
}

TEST(PktDeathTest, GrowingPastTheBufferIsAFault) {
  EXPECT_DEATH(Pkt::make(4)->prepend(5), "n <= headroom");
  EXPECT_DEATH(Pkt::make(Pkt::capacity)->append(1), "n <= tailroom");
  EXPECT_DEATH(Pkt::make()->trimFront(1), "n <= frontBytes");
}

} // namespace
} // namespace Wirx
